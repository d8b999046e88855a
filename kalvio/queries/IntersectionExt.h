#pragma once

#include "kalvio/Export.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/queries/IntersectionResult.h"

#include <concepts>
#include <cstdint>
#include <vector>

namespace Kalvio::Math {

class Arc2D;
class IGeometry;
class Line2D;
class Line3D;
class LineString2D;
class Polyline2D;
class Tolerances;

/// The plan elements for which intersections tell their places without a look at type codes.
template <class Element>
concept LocatedElement = std::same_as<Element, Line2D> || std::same_as<Element, Arc2D> ||
    std::same_as<Element, LineString2D> || std::same_as<Element, Polyline2D>;

/// Intersections that tell where they lie on the operands, and undershoots: ends that stop short of the other operand
/// and would meet it when extended.
///
///     std::vector<IntersectionExt::UndershootPoint<Point2D>> gaps;
///     IntersectionExt::GetUndershoots(kerb, border, gaps, tolerances);
///     for (const auto& gap : gaps) {
///         if (gap.distance < 0.05 && gap.onFirst == IntersectionExt::PointLocation::BeyondEnd) {
///             kerb.ExtendEnd(gap.point, tolerances);
///         }
///     }
class KALVIO_MATH_API IntersectionExt {
public:
    /// Place of a point on an operand, within the user tolerance. A closed operand has no ends but a start.
    enum class PointLocation : std::uint32_t {
        Interior = 0,     ///< between the ends
        Start = 1,        ///< the start point
        End = 2,          ///< the end point
        BeforeStart = 3,  ///< on the extension backwards from the start
        BeyondEnd = 4,    ///< on the extension onwards from the end
    };

    /// A common point of two operands.
    template <class PointType>
    struct IntersectionPoint {
        PointType point;                                   ///< the place
        PointLocation onFirst = PointLocation::Interior;   ///< where it lies on the first operand
        PointLocation onSecond = PointLocation::Interior;  ///< where it lies on the second operand
        double firstStation = 0.0;                         ///< length along the first operand from its start
        double secondStation = 0.0;                        ///< length along the second operand from its start
    };

    /// The point that an end meets when it is extended.
    template <class PointType>
    struct UndershootPoint {
        PointType point;                                   ///< the place
        PointLocation onFirst = PointLocation::Interior;   ///< where it lies on the first operand
        PointLocation onSecond = PointLocation::Interior;  ///< where it lies on the second operand
        double distance = 0.0;                             ///< length by which the end must be extended
    };

    /// Appends the common points of two elements in order along the first, as `Intersection::PolylinePolyline` finds
    /// them: of a stretch along which both run, the two ends; a point that an operand passes more than once, for every
    /// passage.
    /// @return `Coincident` when both run along each other from end to end; `Degenerate`, nothing appended, for an
    ///         operand not longer than the user tolerance or not finite, and for a geometry that is no plan element
    template <LocatedElement First, LocatedElement Second>
    static IntersectionResult Intersect(const First& first, const Second& second,
                                        std::vector<IntersectionPoint<Point2D>>& out, const Tolerances& tolerances) {
        return Intersect(static_cast<const IGeometry&>(first), static_cast<const IGeometry&>(second), out, tolerances);
    }
    static IntersectionResult Intersect(const IGeometry& first, const IGeometry& second,
                                        std::vector<IntersectionPoint<Point2D>>& out, const Tolerances& tolerances);
    /// The same for segments in space, which meet where they come within the user tolerance of each other: in the
    /// middle of the shortest line between them.
    static IntersectionResult Intersect(const Line3D& first, const Line3D& second,
                                        std::vector<IntersectionPoint<Point3D>>& out, const Tolerances& tolerances);

    /// Extends each end of an operand that is further than the user tolerance from the other operand, and appends the
    /// first point at which the extension meets the other operand or an extension of that.
    ///
    /// Lines go straight on without limit; arcs go on around their circle until it is full; line strings and polylines
    /// extend their first and last segment or element. An element of another kind (clothoid, spiral, parabola) goes
    /// straight on along its tangent. A closed operand has no ends. The extensions of the other operand start at both
    /// of its ends, whether or not these reach the first operand. Of points equally near within the user tolerance the
    /// one on the other operand itself counts, and what is that near to the operand is on it. Crossings of the operands
    /// elsewhere do not matter. That an undershoot is short enough to be closed is for the caller to judge, by its
    /// distance.
    ///
    /// Undershoots come in the order: start and end of the first, start and end of the second operand. The location on
    /// the extended operand is `BeforeStart` or `BeyondEnd`, on the other any.
    /// @return `Intersecting` when any was found, else `NoIntersection`; `Degenerate`, nothing appended, as above
    template <LocatedElement First, LocatedElement Second>
    static IntersectionResult GetUndershoots(const First& first, const Second& second,
                                             std::vector<UndershootPoint<Point2D>>& out, const Tolerances& tolerances) {
        return GetUndershoots(static_cast<const IGeometry&>(first), static_cast<const IGeometry&>(second), out,
                              tolerances);
    }
    static IntersectionResult GetUndershoots(const IGeometry& first, const IGeometry& second,
                                             std::vector<UndershootPoint<Point2D>>& out, const Tolerances& tolerances);

private:
    class Extension;
    class Operand;

    static void UpdateClosest(const UndershootPoint<Point2D>& candidate, UndershootPoint<Point2D>& closest,
                              bool& isFound);
    static bool FindUndershoot(const Extension& extension, const Operand& other, UndershootPoint<Point2D>& closest,
                               const Tolerances& tolerances);
};

}  // namespace Kalvio::Math
