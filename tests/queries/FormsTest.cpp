#include "kalvio/Math.h"

#include <concepts>
#include <vector>

// The compiler checks that every pair of operands has its forms, with the answers they are to give; nothing runs.
namespace Kalvio::Math::forms {

using I = Intersection;
using D = Distance;
using J = Projection;

template <class Answer, std::same_as<Answer>... Forms>
Answer Answers(Forms...);

[[maybe_unused]] void Forms(const Line2D& l, const Line3D& m, const Arc2D& a, const Circle2D& c, const Clothoid& k,
                            const Spiral2D& s, const Parabola& b, const Polyline2D& y, const LineString2D& t,
                            const LineString3D& u, const Polygon2D& g, const Polygon3D& h, const PolygonCurve3D& pc,
                            const RingCurve3D& rc, const TriangleStrip3D& ts, const Triangle3D& d, const Plane3D& e,
                            const BoundingBox2D& x, const BoundingBox3D& x3, const OrientedBoundingBox2D& ox,
                            const ProjectionPlane& xy, Vec2D& v, const Vec3D& v3, Point2D& p, Point3D& q, Line3D& o,
                            Polyline2D::PolylinePoint& n, std::vector<Point2D>& pts, std::vector<Point3D>& pts3,
                            std::vector<Line3D>& cuts, std::vector<LineString3D>& strings,
                            std::vector<Polyline2D::PolylinePoint>& on,
                            std::vector<GeometryDistancePair<Point2D>>& pairs, double& r, unsigned int& i,
                            const long double& f) {
    // With tolerances and with a plain one.
    const auto both = [](const auto& z, auto answer) {
        static_assert(sizeof(Answers<decltype(answer)>(
            I::LineLine(l, l, p, z), I::LineLine(m, m, q, z), I::LineLine(p, p, p, p, p, z),
            I::LineLine(p, v, p, v, p, z), I::LineSegmentLineSegment(l, l, pts, z),
            I::LineSegmentLineSegment(p, p, p, p, pts, z), I::LineSegmentLine(l, l, p, z),
            I::ShortestLineBetweenLines(m, m, o, z), I::LineArc(l, a, pts, z), I::LineCircle(l, c, pts, z),
            I::LineClothoid(l, k, pts, z), I::LineSegmentArc(l, a, pts, z), I::LineSegmentClothoid(l, k, pts, z),
            I::ArcArc(a, a, pts, z), I::ArcClothoid(a, k, pts, z), I::ArcParabola(a, b, pts, z),
            I::CircleCircle(c, c, pts, z), I::CircleClothoid(c, k, pts, z), I::CircleParabola(c, b, pts, z),
            I::ClothoidClothoid(k, k, pts, z), I::SpiralClothoid(s, k, pts, z), I::ParabolaParabola(b, b, pts, z),
            I::PolylineArc(y, a, on, z), I::PolylineClothoid(y, k, on, z), I::PolylineLine(y, l, on, z),
            I::PolylineLineSegment(y, l, on, z), I::PolylinePolyline(y, y, on, z),
            I::LineStringLineString(t, t, pts, z), I::LineStringLineSegment(t, l, pts, z),
            I::LineStringLine(t, l, pts, z), I::LineStrings({t}, pts, z), I::LineStringPolygon(t, g, pts, z),
            I::PolygonPolygon(g, g, pts, z), I::PolygonBoundingBox(g, x, pts, z), I::LineBoundingBox(l, x, pts, z),
            I::LineSegmentPlane(m, e, q, z), I::PolygonPlane(h, e, cuts, z), I::PolygonCurvePlane(pc, e, cuts, z),
            I::RingCurvePlane(rc, e, cuts, z), I::TrianglePlane(d, e, o, z), I::TriangleStripPlane(ts, e, strings, z),
            I::TriangleTriangle(d, d, o, z), I::TriangleTriangle(d, d, pts3, z))));
    };
    both(Tolerances(1e-4, 1e-10), IntersectionResult());
    both(1e-4, 0);

    static_assert(sizeof(Answers<bool>(
        I::PointOnLine(p, l, r), I::PointOnLineSegment(p, l, r), I::PointOnLineString(p, t, r), I::PointOnArc(p, a, r),
        I::IsPointInsideLineBounds(p, l, r), I::IsPointInsideTriangle(p, p, p, p, r),
        I::IsBoundingBoxInsideBoundingBox(x, x, r), I::Collides(d, d, r), J::NormalPointOnLineSegment(p, l, p, r),
        J::NormalPointOnLineSegment2(p, l, p, r), J::NearestPointOnPolyline(p, y, n, r), J::PointOnPlane(q, v3, e, q),
        J::OrientedBoundingBoxOnAxis(ox, v, p, r, r))));
    static_assert(sizeof(Answers<double>(
        D::PointToPoint(p, p), D::PointToPoint(Point2DM(), Point2DM()), D::PointToPoint(q, q),
        D::PointToPoint(q, q, xy), D::PointToPoint(PointND(), PointND()), D::PointToPoint(f, f, f, f),
        D::PointToPoint(f, f, f, f, f, f), D::PointToPointSquare(p, p), D::PointToPointSquare(Point2DM(), Point2DM()),
        D::PointToPointSquare(q, q), D::PointToPointSquare(q, q, xy), D::PointToPointSquare(PointND(), PointND()),
        D::PointToPointSquare(f, f, f, f), D::PointToPointSquare(f, f, f, f, f, f), D::PointToPoint2D(q, q),
        D::PointToLine(p, l), D::PointToLine(p, p, p), D::PointToLine(q, m), D::PointToLine(q, m, xy),
        D::PointToLine(f, f, f, f, f, f), D::LineToPoint(l, p), D::LineToPoint(p, p, p), D::LineToPoint(m, q),
        D::LineToPoint(m, q, xy), D::LineToPoint(f, f, f, f, f, f), D::PointToLine2D(q, q, q),
        D::PointToLineSegment(l, p, r), D::PointToLineSegment(m, q, r), D::PointToLineString(t, p, r),
        D::PointToLineString(u, q, r), D::PointToPolygon(p, g), D::PolygonToPolygon(g, g, r), D::PointToArc(p, a),
        D::PointToCircle(p, c), D::CircleToPoint(c, p), D::PointToClothoid(p, k), D::PointToParabola(p, b),
        D::PointToPolyline(p, y), D::CircleToCircle(c, c), D::LineToCircle(l, c), D::PointToPlane(q, e),
        D::PlaneToPoint(e, q), D::PointToBoundingBox(p, x), D::PointToBoundingBox(q, x3),
        D::BoundingBoxToBoundingBox(x, x))));
    static_assert(sizeof(Answers<Point2D>(
        J::NormalPointOnLine(p, l), J::NearestPointOnLineSegment(p, l, r), J::NearestPoint(p, t, r),
        J::NearestPointOnArc(p, a, r), J::NearestPointOnPolygon(p, g, r), J::NearestPointOnPolygonWithHoles(p, g, r),
        J::NearestPointOnPolyline(p, y, r), J::NearestPointOnLineString(p, t, r).point)));
    static_assert(
        sizeof(Answers<Point3D>(J::NormalPointOnLine(q, m), J::NearestPointOnLineSegment(q, m, r),
                                J::NearestPoint(q, u, r), J::NearestPointOnLineString(q, u, i, r),
                                J::PolygonOnPlane(h, v3, e).GetPoint(0), J::NormalPolygonOnPlane(h, e).GetPoint(0))));
    static_assert(
        sizeof(Answers<int>(J::NormalPointOnLineString(p, t, p, r, r), J::NormalPointOnArc(p, a, p, r),
                            J::NormalPointOnCircle(p, c, p, r), J::NormalPointOnClothoid(p, k, p, r, v, r),
                            J::NormalPointOnSpiral(p, s, p, r, v, r), J::NormalPointOnParabola(p, b, p, r, v, r),
                            J::NormalPointOnPolyline(p, y, p, r, r), J::NormalPointOnPolyline(p, y, n, r),
                            J::NormalPointOnPolyline2(p, y, p, r, r), J::NormalPointOnPolyline2(p, y, n, r))));
    static_assert(sizeof(Answers<std::uint64_t>(J::NearestPointsOnLineString(p, t, pairs, r),
                                                J::NearestPointsOnPolygon(p, g, pairs, r))));
}

}  // namespace Kalvio::Math::forms
