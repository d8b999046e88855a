#include "queries/QueryNames.h"

#include <concepts>

// The compiler checks that the forms exist which no other test calls, with the answers they are to give; nothing runs.
namespace Kalvio::Math::forms {

template <class Answer, std::same_as<Answer>... Forms>
Answer Answers(Forms...);

[[maybe_unused]] void Forms(const Line2D& l, const Line3D& m, const Arc2D& a, const Clothoid& k, const Parabola& b,
                            const Polyline2D& y, const LineString2D& t, const LineString3D& u, const Polygon2D& g,
                            const PolygonCurve3D& pc, const Triangle3D& d, const Plane3D& e, const BoundingBox2D& x,
                            const Vec2D& v, const long double& f, Point2D& p, Point3D& q, Line3D& o,
                            std::vector<Point2D>& pts, std::vector<Point3D>& pts3, std::vector<Line3D>& cuts,
                            std::vector<Polyline2D::PolylinePoint>& on) {
    // With tolerances and with a plain one.
    const auto both = [](const auto& z, auto answer) {
        static_assert(sizeof(Answers<decltype(answer)>(
            I::LineLine(p, p, p, p, p, z), I::LineLine(p, v, p, v, p, z), I::ShortestLineBetweenLines(m, m, o, z),
            I::LineSegmentLineSegment(p, p, p, p, pts, z), I::PolylineClothoid(y, k, on, z),
            I::LineStringLineSegment(t, l, pts, z), I::LineStringPolygon(t, g, pts, z),
            I::LineBoundingBox(l, x, pts, z), I::PolygonCurvePlane(pc, e, cuts, z), I::TrianglePlane(d, e, o, z),
            I::TriangleTriangle(d, d, pts3, z))));
    };
    both(Tolerances(1e-4, 1e-10), IntersectionResult());
    both(1e-4, 0);
    const double r = 1e-4;
    static_assert(sizeof(Answers<bool>(I::PointOnLine(p, l, r), I::PointOnLineSegment(p, l, r), I::PointOnArc(p, a, r),
                                       I::Collides(d, d, r))));
    static_assert(sizeof(Answers<double>(
        D::PointToPoint(p, p), D::PointToPoint(Point2DM(), Point2DM()), D::PointToPoint(PointND(), PointND()),
        D::PointToPoint(f, f, f, f, f, f), D::PointToPointSquare(f, f, f, f), D::PointToLine(p, p, p),
        D::PointToLine(q, m), D::PointToArc(p, a), D::PointToClothoid(p, k), D::PointToParabola(p, b))));
    static_assert(sizeof(Answers<Point2D>(J::NormalPointOnLine(p, l), J::NearestPoint(p, t, r))));
    static_assert(sizeof(Answers<Point3D>(J::NormalPointOnLine(q, m), J::NearestPoint(q, u, r))));
}

}  // namespace Kalvio::Math::forms
