#include "kalvio/statistics/ExponentialVariogramModel.h"

#include <cmath>

namespace Kalvio::Math {

double ExponentialVariogramModel::Evaluate(double h) const { return GetSill() * -std::expm1(-h / GetRange()); }

}  // namespace Kalvio::Math
