#pragma once

#include "kalvio/Export.h"

#include <list>
#include <utility>
#include <vector>

namespace Kalvio::Math {

class Angle;
class Arc2D;
class Arc3D;
class BoundingBox2D;
class BoundingBox3D;
class BoundingBoxND;
class Circle2D;
class Circle3D;
class Clothoid;
class IGeometry;
class IndexedFaceSet2D;
class IndexedFaceSet3D;
class IndexedTriangleSet2D;
class IndexedTriangleSet3D;
class Line2D;
class Line3D;
class LineString2D;
class LineString3D;
class Matrix2D;
class Parabola;
class Plane3D;
class Point2D;
class Point2DM;
class Point3D;
class PointND;
class Polygon2D;
class Polygon3D;
class PolygonCurve2D;
class PolygonCurve3D;
class Polyline2D;
class Polyline3D;
class Spiral2D;
class TinSurfacePatch3D;
class Triangle3D;
class TriangleStrip3D;
class Vec2D;
class Vec3D;
class VecND;

/// Static operations over any geometry.
class KALVIO_MATH_API Geometry {
public:
    /// Tolerant equality, declared below for the pairs that have one.
    ///
    /// Coordinates are compared strictly, |a - b| < tolerance, so values exactly `tolerance` apart are different
    /// (unlike `Numbers::Compare` with `Equal`), and equality of points is a square test, not a distance test.
    template <class First, class Second>
    static bool AreEqual(const First& a, const Second& b, double tolerance) = delete;
    /// x and y only.
    static bool AreEqual2D(const Point3D& a, const Point3D& b, double tolerance);
    /// The same after reversing a copy of b if need be: a curve equals its reverse.
    static bool AreEqualEitherWay(const IGeometry& a, const IGeometry& b, double tolerance);

    /// True when the turn a -> b -> c is counter-clockwise by more than 4e-10 of doubled signed area.
    static bool ArePointsCCW(const Point2D& a, const Point2D& b, const Point2D& c);
    static bool ArePointsCCW(const Point2DM& a, const Point2DM& b, const Point2DM& c);

    /// Start (end) of a point, line, arc, line string or polyline, in plan or space; a plan form drops z, a 3D form
    /// takes z = 0 from plan geometries. @return false, the point untouched, for an empty chain and any other type
    [[nodiscard]] static bool GetStartPoint(const IGeometry& geometry, Point2D& point);
    [[nodiscard]] static bool GetStartPoint(const IGeometry& geometry, Point3D& point);
    [[nodiscard]] static bool GetEndPoint(const IGeometry& geometry, Point2D& point);
    [[nodiscard]] static bool GetEndPoint(const IGeometry& geometry, Point3D& point);
    /// The first (last) line or arc of a line, arc or chain, through nested chains; it stays owned by `geometry`. Null
    /// for any other type and for an empty chain.
    static const IGeometry* GetStartSegment(const IGeometry& geometry);
    static const IGeometry* GetEndSegment(const IGeometry& geometry);
    /// Appends points, corners of triangles, vertices of line strings, of the rings of polygons and of meshes (all they
    /// hold), and end points of elements as 3D points (z = 0 in plan); a vertex that two consecutive elements share is
    /// taken once.
    /// @return false, nothing appended, for any other type; for several geometries, when any of them has none
    [[nodiscard]] static bool GetVertices(const IGeometry& geometry, std::vector<Point3D>& vertices);
    [[nodiscard]] static bool GetVertices(std::vector<const IGeometry*>& geometries, std::vector<Point3D>& vertices);

    /// Convex hull, counter-clockwise from the lowest (of those the leftmost) point, not closed, by a Graham scan (R.
    /// L. Graham, 1972). Collinear points keep only the two extremes; no points give an empty polygon. n log n.
    static void ConvexHull(const std::vector<Point2D>& points, Polygon2D& hull);
    static void ConvexHull(const std::list<Point2D>& points, Polygon2D& hull);
    /// The measures play no part and are kept.
    static void ConvexHull(std::vector<Point2DM>& points, Polygon2D& hull);

    /// Appends `count` pseudo-random points at the corner `min` plus up to the size of the box less one per axis. The
    /// generator is seeded from the time in seconds: two calls within a second give the same points.
    static void RandomPoints(const Point2D& min, const Point2D& max, unsigned int count, std::list<Point2D>& out);

    /// Joins, in place, line strings whose ends meet strictly within the tolerance per coordinate, reversing strings
    /// where that is needed; junction points are not doubled. The first string grows first at its end, then at its
    /// start, always by the first of the strings that fit. `MergeLineStringsAs2D` compares plan positions only. n log
    /// n.
    static void MergeLineStrings(std::vector<LineString2D>& lineStrings, double tolerance);
    static void MergeLineStrings(std::vector<LineString3D>& lineStrings, double tolerance);
    static void MergeLineStringsAs2D(std::vector<LineString3D>& lineStrings, double tolerance);
    /// Joins `other` onto an end of `lineString`. @return false, nothing changed, when no ends meet
    static bool MergeLineStrings(LineString3D& lineString, const LineString3D& other, double tolerance);
    /// Chains loose segments into line strings by the same rule; appends them to `lineStrings`.
    static void LineSegmentsToLineStrings(const std::list<std::pair<Point3D, Point3D>>& segments,
                                          std::vector<LineString3D>& lineStrings, double tolerance);

    /// Clips the range of stations [from, to] to an element that reaches from `elementStart` to `elementEnd`.
    /// @param start,end  the clipped range on the same scale; untouched when there is none
    /// @return false when the range and the element do not overlap by more than the tolerance
    [[nodiscard]] static bool ComputeStartEndLengthOnElement(double elementStart, double elementEnd, double from,
                                                             double to, double& start, double& end, double tolerance);
};

// Two objects of one class compare by that class's own IsEqualTo; a curve is equal to a chain that holds just its
// equal.
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const double& a, const double& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const double& a, const int& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Angle& a, const Angle& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Arc2D& a, const Arc2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Arc2D& a, const Polyline2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Arc3D& a, const Arc3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const BoundingBox2D& a, const BoundingBox2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const BoundingBox3D& a, const BoundingBox3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const BoundingBoxND& a, const BoundingBoxND& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Circle2D& a, const Circle2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Circle3D& a, const Circle3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Clothoid& a, const Clothoid& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Clothoid& a, const Polyline2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const IGeometry& a, const IGeometry& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const IndexedFaceSet2D& a, const IndexedFaceSet2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const IndexedFaceSet3D& a, const IndexedFaceSet3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const IndexedTriangleSet2D& a, const IndexedTriangleSet2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const IndexedTriangleSet3D& a, const IndexedTriangleSet3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Line2D& a, const Line2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Line2D& a, const LineString2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Line2D& a, const Polyline2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Line3D& a, const Line3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Line3D& a, const LineString3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const LineString2D& a, const LineString2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const LineString2D& a, const Polyline2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const LineString3D& a, const LineString3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Matrix2D& a, const Matrix2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Parabola& a, const Parabola& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Parabola& a, const Polyline2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Plane3D& a, const Plane3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Point2D& a, const Point2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Point2DM& a, const Point2DM& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Point3D& a, const Point3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const PointND& a, const PointND& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Polygon2D& a, const Polygon2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Polygon3D& a, const Polygon3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const PolygonCurve2D& a, const PolygonCurve2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const PolygonCurve3D& a, const PolygonCurve3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Polyline2D& a, const Polyline2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Polyline3D& a, const Polyline3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Spiral2D& a, const Polyline2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Spiral2D& a, const Spiral2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const TinSurfacePatch3D& a, const TinSurfacePatch3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Triangle3D& a, const Triangle3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const TriangleStrip3D& a, const TriangleStrip3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Vec2D& a, const Vec2D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const Vec3D& a, const Vec3D& b, double tolerance);
template <>
KALVIO_MATH_API bool Geometry::AreEqual(const VecND& a, const VecND& b, double tolerance);

}  // namespace Kalvio::Math
