#include "kalvio/statistics/PowerVariogramModel.h"

#include <cmath>

namespace Kalvio::Math {

double PowerVariogramModel::Evaluate(double h) const {
    const double r = h / GetRange();
    return GetSill() * (exponent == 1.0 ? r : std::pow(r, exponent));
}

}  // namespace Kalvio::Math
