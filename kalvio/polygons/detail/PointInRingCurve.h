#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/polygons/detail/PointInRing.h"

namespace Kalvio::Math::detail {

/// How the lines and arcs of a ring go around a point, collected element by element: the winding number of the chords,
/// and whether the point lies between an arc and its chord.
class CurvesAroundPoint {
public:
    explicit CurvesAroundPoint(const Point2D& point) : p(point), around(point, 0.0) {}

    void AddLine(const Point2D& a, const Point2D& b) { around.Count(a, b); }

    /// A point between an arc and its chord lies on the arc's side of the chord: right of it for a counter-clockwise
    /// arc. On the chord itself that is decided by the arc, so that a bulge and the ring behind it leave no seam.
    void AddArc(const Arc2D& arc) {
        const Point2D& a = arc.GetStart();
        const Point2D& b = arc.GetEnd();
        if (!arc.IsPointInside(p, numericalZero)) return AddLine(a, b);
        isBesideArc = true;
        const bool isLeft = arc.GetAngle().GetRadians() < 0.0;
        if (a.GetY() <= p.GetY() && b.GetY() > p.GetY()) winding += isLeft ? 1 : 0;
        if (a.GetY() > p.GetY() && b.GetY() <= p.GetY()) winding -= isLeft ? 0 : 1;
    }

    /// Enclosed by the chords and beside no arc, or not enclosed and beside one.
    bool IsInside() const { return (around.Forward() + winding != 0) != isBesideArc; }

private:
    Point2D p;
    RingAroundPoint around;
    int winding = 0;  // of the arcs beside the point
    bool isBesideArc = false;
};

}  // namespace Kalvio::Math::detail
