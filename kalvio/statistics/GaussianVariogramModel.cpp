#include "kalvio/statistics/GaussianVariogramModel.h"

#include <cmath>

namespace Kalvio::Math {

double GaussianVariogramModel::Evaluate(double h) const {
    const double r = h / GetRange();
    return -GetSill() * std::expm1(-r * r);
}

}  // namespace Kalvio::Math
