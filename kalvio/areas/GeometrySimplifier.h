#pragma once

#include "kalvio/Export.h"

#include <vector>

namespace Kalvio::Math {

class LineString2D;
class LineString3D;
class Polygon2D;
class Polyline2D;

/// Static functions that leave out the points of chains and borders that a tolerance can spare.
///
/// What stays are points of the source in their order, the ends of chains among them; equal points in a row become one.
/// Distances and triangles are those of the plan for plan chains and borders, those of space for chains in space. The
/// result may be the source itself. All answer false, the result untouched, for a tolerance that is negative or not a
/// number, and for coordinates that are not finite or beyond 1e100.
///
/// Borders keep their topology: no ring comes to cross or to touch itself or another one, no hole or other ring changes
/// sides, none falls below three points, and what several rings had in common they still have: equal runs of points are
/// simplified as one. To this end more points stay than the tolerance asks for where borders come near each other.
/// Points that belong to several rings stay where these part. Faults that borders had before stay as they are; rings of
/// fewer than three different points are copied.
///
///     std::vector<Polygon2D> lighter;
///     if (GeometrySimplifier::SimplifyByDistance(parcels, 0.05, lighter)) Draw(lighter);
class KALVIO_MATH_API GeometrySimplifier {
public:
    /// Every point left out lies within `tolerance`, inclusive, of the segment that stands for it (D. H. Douglas, T. K.
    /// Peucker, 1973, with distances from segments in place of lines). About n log n.
    /// @param keepSimple  true: no crossing or contact of segments comes in that the chain did not have
    [[nodiscard]] static bool SimplifyByDistance(const LineString2D& chain, double tolerance, LineString2D& result,
                                                 bool keepSimple = false);
    [[nodiscard]] static bool SimplifyByDistance(const LineString3D& chain, double tolerance, LineString3D& result);
    [[nodiscard]] static bool SimplifyByDistance(const Polygon2D& polygon, double tolerance, Polygon2D& result);
    /// Areas with common borders; the polygons keep their places.
    [[nodiscard]] static bool SimplifyByDistance(const std::vector<Polygon2D>& areas, double tolerance,
                                                 std::vector<Polygon2D>& result);

    /// Takes the point away whose triangle with its neighbours is the smallest, the first of equals, as long as the
    /// triangle is smaller than `area`, in square units (M. Visvalingam, J. D. Whyatt, 1993). n log n.
    [[nodiscard]] static bool SimplifyByArea(const LineString2D& chain, double area, LineString2D& result,
                                             bool keepSimple = false);
    [[nodiscard]] static bool SimplifyByArea(const LineString3D& chain, double area, LineString3D& result);
    [[nodiscard]] static bool SimplifyByArea(const Polygon2D& polygon, double area, Polygon2D& result);
    [[nodiscard]] static bool SimplifyByArea(const std::vector<Polygon2D>& areas, double area,
                                             std::vector<Polygon2D>& result);

    /// The inverse of sampling: replaces a digitised chain by lines and arcs of at most half a turn that join at points
    /// of the chain. Chain and result lie within `tolerance`, inclusive, of each other. Each element reaches as far
    /// along the chain as one can, a line before an arc, so that there are few of them; they join at any angle. About
    /// n log n.
    /// @return false also for fewer than two different points
    [[nodiscard]] static bool ToLinesAndArcs(const LineString2D& chain, double tolerance, Polyline2D& result);
};

}  // namespace Kalvio::Math
