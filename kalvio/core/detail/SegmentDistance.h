#pragma once

#include "kalvio/core/Point3D.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kalvio::Math::detail {

/// The point of the segment a -> b nearest to p, found in the plane or in space: the foot of the perpendicular when it
/// lies on the segment, or beyond an end by at most `tolerance` (a length), else the nearer end. A segment of zero
/// length has its start only.
template <class PointType>
struct SegmentFoot {
    SegmentFoot(const PointType& p, const PointType& a, const PointType& b, double tolerance)
        : parameter((p - a).DotProduct(b - a) / (b - a).NormSquared()) {
        const double inside = parameter < 0.0 ? 0.0 : parameter > 1.0 ? 1.0 : parameter;
        const double beyond = parameter - inside;
        isFoot = beyond * beyond * (b - a).NormSquared() <= tolerance * tolerance;
        if (!isFoot) parameter = inside >= 1.0 ? 1.0 : 0.0;
        // The difference to an end is taken directly: segments that share a vertex measure the same distance to it.
        const auto offset = isFoot ? (p - a) - (b - a) * parameter : parameter == 1.0 ? p - b : p - a;
        squaredDistance = offset.NormSquared();
    }

    PointType PointOn(const PointType& a, const PointType& b) const {
        if (parameter == 0.0) return a;  // b may be infinite
        return parameter == 1.0 ? b : a + (b - a) * parameter;
    }

    double parameter;  // 0 at a, 1 at b
    bool isFoot;       // false: an end is nearest
    double squaredDistance;
};

/// The foot of the perpendicular from p on the infinite line a -> b, in the plane or in space; a for a line of no
/// length.
template <class PointType>
PointType FootOnLine(const PointType& p, const PointType& a, const PointType& b) {
    const auto d = b - a;
    const double squared = d.NormSquared();
    return squared > 0.0 ? a + d * ((p - a).DotProduct(d) / squared) : a;
}

/// The square of a distance widened by `margin`, never below the square itself: far away the margin is less than the
/// rounding of the root. The factor covers the rounding of the squares that are compared with it.
inline double WidenedSquare(double squared, double margin) {
    constexpr double rounding = 8.0 * std::numeric_limits<double>::epsilon();
    const double reach = std::sqrt(squared) + margin;
    return (std::max)(reach * reach, squared) * (1.0 + rounding);
}

/// True when p lies on the segment a -> b in space: inside its box widened by |tolerance| and at most that far from its
/// line, both inclusive. A segment of zero length holds a point within |tolerance| of it in each coordinate.
inline bool IsPointOnSegment(const Point3D& p, const Point3D& a, const Point3D& b, double tolerance) {
    const double t = std::abs(tolerance);
    for (int axis = 0; axis < 3; ++axis) {
        if (!(p[axis] >= (std::min)(a[axis], b[axis]) - t && p[axis] <= (std::max)(a[axis], b[axis]) + t)) return false;
    }
    const Vec3D d = b - a;
    const double squared = d.NormSquared();
    return squared == 0.0 || (p - a).CrossProduct(d).Length() / std::sqrt(squared) <= t;
}

}  // namespace Kalvio::Math::detail
