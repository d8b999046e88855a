#pragma once

#include "kalvio/Export.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/queries/IntersectionResult.h"

#include <vector>

namespace Kalvio::Math {
class Circle2D;
class IPolyline2DElement;
class Line2D;
class Tolerances;
}  // namespace Kalvio::Math

namespace Kalvio::Math::detail {

/// A common point of two curves, with its station on each.
struct ElementCrossing {
    Point2D point;
    double onFirst = 0.0;
    double onSecond = 0.0;
};

/// A stretch along which two curves coincide, in the direction of the first. On the second the stations fall where it
/// runs the other way. A stretch across the seam of a full circle begins at the larger station.
struct ElementOverlap {
    ElementCrossing from;
    ElementCrossing to;
    bool isAllAround = false;  // its ends are one point
};

/// One of two curves to be intersected: a plan element that is no chain, a full circle, or a whole line. It refers to
/// its geometry.
class KALVIO_MATH_API CrossingOperand {
public:
    CrossingOperand(const IPolyline2DElement& single) : element(&single) {}
    /// Stations run counter-clockwise from the easternmost point.
    CrossingOperand(const Circle2D& full) : circle(&full) {}
    /// The infinite line; stations before its start are negative.
    static CrossingOperand InfiniteLine(const Line2D& line);

    const IPolyline2DElement* GetElement() const { return element; }
    const Circle2D* GetCircle() const { return circle; }
    bool IsInfinite() const { return isInfinite; }
    double GetLength() const;

private:
    const IPolyline2DElement* element = nullptr;
    const Circle2D* circle = nullptr;
    bool isInfinite = false;
};

/// Finds all common points of two curves, none twice, none outside a curve by more than the user tolerance.
///
/// Where the curves come within the user tolerance of each other without crossing - ends that lie on the other curve,
/// near misses of curves that would touch - the nearest point of that stretch counts, once; an end is reported as it
/// is. Two crossings nearer than the user tolerance are one. Curves that lie within the user tolerance of each other
/// from an end to an end (longer than that tolerance and parallel within the angle tolerance) overlap: such a stretch
/// is reported as an overlap, and its ends not as crossings.
///
/// Lines and arcs are solved in closed form, all other pairs by bounds on pieces that exclude a common point or allow
/// exactly one, found by Newton's method to the rounding of the station.
///
/// @param crossings,overlaps  appended to, each in the order of the stations on the first curve
/// @return `Coincident` with overlaps, else `Intersecting` with crossings, else `NoIntersection`. `Degenerate`, nothing
///         appended, for a curve that is not longer than the user tolerance or not finite
IntersectionResult CrossElements(const CrossingOperand& first, const CrossingOperand& second,
                                 const Tolerances& tolerances, std::vector<ElementCrossing>& crossings,
                                 std::vector<ElementOverlap>& overlaps);

}  // namespace Kalvio::Math::detail
