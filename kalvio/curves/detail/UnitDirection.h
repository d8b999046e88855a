#pragma once

#include "kalvio/core/detail/Constants.h"

#include <algorithm>
#include <cmath>

namespace Kalvio::Math::detail {

/// The unit vector along a vector in the plane or in space, however short it is: `Normalize` leaves vectors of at most
/// 1e-10 as they are. The zero vector stays.
template <class Vector>
Vector UnitDirection(Vector v) {
    if (v.Length() <= numericalZero) {
        double largest = 0.0;
        for (int axis = 0; axis < 3; ++axis) largest = std::max(largest, std::abs(v[axis]));  // [2] is x in the plane
        if (largest > 0.0) v = v / largest;
    }
    return v.Normalize();
}

}  // namespace Kalvio::Math::detail
