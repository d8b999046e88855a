#pragma once

#include "kalvio/core/detail/Constants.h"

#include <cmath>

namespace Kalvio::Math::detail {

/// Unsigned angle [rad, 0 ... pi] of two vectors from their dot product and the product of their lengths; 0 when that
/// product is at most 1e-10. One rule for two and three dimensions.
inline double AngleFromProducts(double dotProduct, double lengthProduct) {
    if (!(std::abs(lengthProduct) > numericalZero)) return 0.0;
    const double cosine = dotProduct / lengthProduct;
    if (cosine > 1.0) return 0.0;
    if (cosine < -1.0) return pi;
    return std::acos(cosine);
}

}  // namespace Kalvio::Math::detail
