#pragma once

#include "kalvio/Export.h"
#include "kalvio/areas/detail/Kept.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/Polygon2D.h"

#include <utility>
#include <vector>

namespace Kalvio::Math {

class BoundingBox2D;
class IndexedTriangleSet3D;
class PolygonCurve2D;
class Tolerances;

/// Static functions that cut chains at the border of an area and tell the parts inside from those outside, and cut out
/// the part of a mesh inside.
///
///     const Polygon2D parcel{Point2D(0, 0), Point2D(40, 0), Point2D(40, 30), Point2D(0, 30)};
///     std::vector<GeometryClipper::Part<LineString2D>> parts;
///     if (!GeometryClipper::Clip({Point2D(-10, 10), Point2D(60, 10)}, parcel, parts, Tolerances(0.001))) return false;
///     parts[1].isInside;  // true: from station 10 to station 50
class KALVIO_MATH_API GeometryClipper {
public:
    /// An area in plan, borders and holes included; refers to it, but takes over temporaries.
    class Area {
    public:
        Area(const Polygon2D& polygon) : straight(&polygon) {}
        Area(const PolygonCurve2D& polygon) : curved(&polygon) {}
        Area(Polygon2D&& polygon) : corners(std::move(polygon)) {}
        Area(PolygonCurve2D&& polygon);
        Area(const BoundingBox2D& box);

    private:
        friend class GeometryClipper;

        const Polygon2D& GetStraight() const { return straight != nullptr ? *straight : corners; }

        detail::Kept kept;
        Polygon2D corners;  // of a box or taken over
        const Polygon2D* straight = nullptr;
        const PolygonCurve2D* curved = nullptr;
    };

    /// A part of a chain, which lies on one side of the border as a whole.
    template <class ChainType>
    struct Part {
        ChainType chain;        ///< the part, in the direction of the chain
        double from = 0.0;      ///< station of its start along the chain, in plan
        double to = 0.0;        ///< station of its end
        bool isInside = false;  ///< inside the area or on its border
    };

    /// Replaces `parts` by the parts of the chain, in order, by turns inside and outside: what runs along a border
    /// within the user tolerance is inside, and where the chain only touches a border it is not cut. No part is shorter
    /// than the user tolerance, unless the chain is. Heights of chains in space are kept.
    ///
    /// A border is met where `IntersectionExt::Intersect` finds it; which side a part is on is decided in its middle.
    /// @return false, `parts` untouched, for an empty chain, and where chain or border are not finite
    [[nodiscard]] static bool Clip(const LineString2D& chain, const Area& area, std::vector<Part<LineString2D>>& parts,
                                   const Tolerances& tolerances);
    [[nodiscard]] static bool Clip(const LineString3D& chain, const Area& area, std::vector<Part<LineString3D>>& parts,
                                   const Tolerances& tolerances);
    [[nodiscard]] static bool Clip(const Polyline2D& chain, const Area& area, std::vector<Part<Polyline2D>>& parts,
                                   const Tolerances& tolerances);

    /// The part of a mesh inside an area in plan, as a terrain that ends at the border of a site; walls are cut too.
    /// Vertices keep their numbers' order, those at the border follow; heights are those of the triangles, which keep
    /// their winding. A side that two triangles share is cut once: the part is as tight as the mesh, wherever its
    /// vertices and the corners of the border lie farther apart than some 128 roundings of the largest coordinate (1e-7
    /// at 6,000,000).
    ///
    /// Near n log n for n triangles and corners of the border. Arcs are replaced by chords within the user tolerance.
    /// @return false, `inside` untouched, for a mesh without a triangle, and where mesh or border are not finite (or
    ///         beyond 1e100)
    [[nodiscard]] static bool Clip(const IndexedTriangleSet3D& mesh, const Area& area, IndexedTriangleSet3D& inside,
                                   const Tolerances& tolerances);
};

}  // namespace Kalvio::Math
