#include "fuzz/Elements.h"

using namespace Kalvio::Math;

namespace {

constexpr double rounding = 1e-5;  // planes through tame points tilt by up to 1e-9 over 4096

bool IsOn(const Plane3D& plane, const Point3D& p) { return Distance::PointToPlane(p, plane) <= tolerance + rounding; }

void CheckLines(const Line3D& a, const Line3D& b, const Plane3D& plane, bool tame) {
    Point3D point;
    Line3D shortest;
    (void)Intersection::LineLine(a, b, point, tolerances);
    (void)Intersection::LineLine(a, b, ProjectionPlane::XZ, point, tolerances);
    (void)Intersection::ShortestLineBetweenLines(a, b, shortest, tolerances);
    const bool hasShortest =
        Intersection::ShortestLineBetweenLineSegments(a, b, shortest, tolerances) == IntersectionResult::Intersecting;
    if (tame && hasShortest) {
        for (const double share : {0.0, 0.25, 0.5, 1.0}) {
            const Point3D p = a.GetStart() + (a.GetEnd() - a.GetStart()) * share;
            Require(shortest.GetLength() <= p.Distance(b.GetNearestPoint(p, tolerances)) + rounding);
        }
    }
    const IntersectionResult result = Intersection::LineSegmentPlane(a, plane, point, tolerances);
    See({point.GetX(), point.GetY(), point.GetZ(), shortest.GetLength()});
    if (!tame || result != IntersectionResult::Intersecting) return;
    Require(IsOn(plane, point) && Distance::PointToLineSegment(a, point, tolerance) <= tolerance + rounding);
}

// Pieces lie on the plane; what two triangles have in common is found in either order.
void CheckTriangles(const Triangle3D& a, const Triangle3D& b, const Plane3D& plane, bool tame) {
    Line3D piece;
    const bool isCut = Intersection::TrianglePlane(a, plane, piece, tolerances) == IntersectionResult::Intersecting;
    if (tame && isCut) Require(IsOn(plane, piece.GetStart()) && IsOn(plane, piece.GetEnd()));
    std::vector<Point3D> common, swapped;
    (void)Intersection::TriangleTriangle(a, b, piece, tolerances);
    (void)Intersection::TriangleTriangle(a, b, common, tolerances);
    (void)Intersection::TriangleTriangle(b, a, swapped, tolerances);
    const bool collide = Intersection::Collides(a, b, tolerance);
    const BoundingBox3D box = b.GetBoundingBox3D();
    (void)Intersection::Collides(a, box, tolerance);
    See(common);
    if (tame) Require(collide == Intersection::Collides(b, a, tolerance) && common.empty() == swapped.empty());
}

void CheckAreas(const std::vector<Point3D>& points, const Plane3D& plane, const Point3D& p, bool tame) {
    const Polygon3D polygon(points);
    std::vector<Line3D> pieces;
    (void)Intersection::PolygonPlane(polygon, plane, pieces, tolerances);
    RingCurve3D ring;
    (void)ring.AppendElement(LineString3D(points));
    const PolygonCurve3D area(ring);
    (void)Intersection::RingCurvePlane(ring, plane, pieces, tolerances);
    (void)Intersection::PolygonCurvePlane(area, plane, pieces, tolerances);
    (void)area.IsPointInside(p, tolerance);
    (void)Projection::PolygonOnPlane(polygon, p - Point3D(), plane);
    const Polygon3D foot = Projection::NormalPolygonOnPlane(polygon, plane);
    if (!tame) return;
    See(foot);
    const double reach = 1e-3;  // of planes of best fit, in which rings need not lie
    for (const Line3D& piece : pieces) {
        Require(piece.GetLength() >= 0.0 && Distance::PointToPlane(piece.GetStart(), plane) <= reach + 1e4 * tolerance);
    }
    for (const Point3D& corner : foot.GetPoints()) Require(Distance::PointToPlane(corner, plane) <= rounding);
}

void CheckStrip(const std::vector<Point3D>& points, const Plane3D& plane, bool tame) {
    const TriangleStrip3D strip(points);
    std::vector<unsigned int> corners;
    std::vector<Vec3D> normals;
    Require(strip.ComputeIndexes(corners) == (points.size() % 2 == 0));
    strip.ComputeNormals(true, normals);
    std::vector<LineString3D> sections;
    (void)Intersection::TriangleStripPlane(strip, plane, sections, tolerances);
    if (!tame) return;
    for (const LineString3D& section : sections) {
        for (const Point3D& p : section.GetPoints()) Require(IsOn(plane, p));
    }
}

}  // namespace

void Kalvio::Math::FuzzSpace(Bytes& bytes) {
    const bool tame = bytes.Tame();
    const Point3D p = bytes.TakePoint3D();
    const Plane3D plane(p, bytes.TakeVector3D());
    const Angle sweep(bytes.TakeDouble());
    std::vector<Point3D> points = bytes.TakePoints3D();
    while (points.size() < 6) points.push_back(p);
    const Line3D first(points[0], points[1]);
    const Arc3D arc(points[0], points[1], sweep, plane);
    Polyline3D chain;
    (void)(chain.AppendElement(first) && chain.AppendElement(arc));
    const auto check = [&](const auto&... elements) {
        (CheckElement(elements, p, elements.GetBoundingBox3D(), rounding, tame), ...);
    };
    check(first, arc, LineString3D(points), chain);
    std::vector<Polyline3D::PolylinePoint> samples;
    (void)chain.MakePointsAndTangents(0.0, chain.GetLength(), samples, chain.GetLength() / 16.0, tolerance);
    (void)Circle3D(points[0], sweep.GetRadians(), plane).IsPointInside(p, tolerance);
    CheckLines(first, Line3D(points[2], points[3]), plane, tame);
    const Triangle3D upper(points[3], points[4], points[5]);
    CheckTriangles(Triangle3D(points[0], points[1], points[2]), upper, plane, tame);
    CheckAreas(points, plane, p, tame);
    CheckStrip(points, plane, tame);
    std::vector<Point3D> vertices;
    Require(Geometry::GetVertices(chain, vertices));
}
