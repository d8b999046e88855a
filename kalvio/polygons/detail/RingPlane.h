#pragma once

#include "kalvio/core/Point3D.h"
#include "kalvio/curves/detail/PlaneFrame.h"
#include "kalvio/polygons/detail/Ring.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace Kalvio::Math::detail {

/// Twice the vector area (M. E. Newell; I. E. Sutherland et al., 1974), relative to `origin`; the zero vector when it
/// is no more than the rounding of the sum. The ring runs counter-clockwise seen from its tip.
inline Vec3D DoubledVectorArea(const std::vector<Point3D>& ring, const Point3D& origin) {
    Vec3D sum;
    double magnitude = 0.0;
    WalkRing(ring, [&](const Point3D& a, const Point3D& b) {
        const Vec3D part = (a - origin).CrossProduct(b - origin);
        sum += part;
        magnitude += part.Length();
        return false;
    });
    const double noise = std::numeric_limits<double>::epsilon() * magnitude * static_cast<double>(ring.size());
    return sum.Length() > noise ? sum : Vec3D();
}

/// Axes u and v in the plane with the unit normal n, so that u x v = n.
struct PlaneAxes {
    explicit PlaneAxes(const Vec3D& n) {
        Vec3D smallest;
        const int axis = std::abs(n.GetX()) <= std::abs(n.GetY()) && std::abs(n.GetX()) <= std::abs(n.GetZ()) ? 0
                         : std::abs(n.GetY()) <= std::abs(n.GetZ())                                           ? 1
                                                                                                              : 2;
        smallest[axis] = 1.0;
        u = smallest.CrossProduct(n).Normalize();
        v = n.CrossProduct(u);
    }

    Vec3D u;
    Vec3D v;
};

/// The plane of best fit through the mean of the points.
/// @return false, `frame` untouched, for a ring without area
inline bool FrameOfRing(const std::vector<Point3D>& ring, PlaneFrame& frame) {
    if (ring.empty()) return false;
    const Vec3D area = DoubledVectorArea(ring, ring.front());
    const double length = area.Length();
    if (!(length > 0.0) || !std::isfinite(length)) return false;
    Vec3D toMean;
    for (const Point3D& point : ring) toMean += (point - ring.front()) / static_cast<double>(ring.size());
    const Vec3D normal = area / length;
    const PlaneAxes axes(normal);
    frame = {ring.front() + toMean, axes.u, axes.v, normal};
    return true;
}

}  // namespace Kalvio::Math::detail
