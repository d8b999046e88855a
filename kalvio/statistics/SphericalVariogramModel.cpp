#include "kalvio/statistics/SphericalVariogramModel.h"

namespace Kalvio::Math {

double SphericalVariogramModel::Evaluate(double h) const {
    const double r = h / GetRange();
    return GetSill() * (1.0 + r * (0.5 * r * r - 1.5));
}

}  // namespace Kalvio::Math
