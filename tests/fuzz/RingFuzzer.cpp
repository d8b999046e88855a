#include "fuzz/Bytes.h"

using namespace Kalvio::Math;

namespace {

constexpr double tolerance = 1e-9;

void CheckString(const LineString2D& string, bool tame) {
    LineString2D reversed(string);
    reversed.Reverse();
    std::vector<Point2D> crossings;
    const bool isCrossing = string.IsSelfCrossing(crossings, tolerance);
    See(crossings);
    Require(isCrossing == string.IsSelfCrossing(tolerance) && isCrossing == !crossings.empty());
    if (tame) Require(isCrossing == reversed.IsSelfCrossing(tolerance));
    const double length = string.GetLength();
    LineString2D part;
    const bool found = string.ExtractLineString(0.25 * length, 0.75 * length, part);
    if (tame && found) Require(part.GetLength() <= 0.5 * length + 1e-6);
}

void CheckArea(const Polygon2D& polygon, bool isValid, bool tame) {
    const double area = std::abs(polygon.GetArea());
    std::vector<unsigned int> corners;
    const Polygon3D lifted(polygon, 0.0);
    const bool triangulated = lifted.TriangulateByProjection(ProjectionPlane::XY, corners, tolerance);
    See(corners);
    if (!tame) return;
    if (isValid) Require(triangulated);
    double sum = 0.0;
    for (std::size_t i = 0; i + 2 < corners.size(); i += 3) {
        const auto corner = [&](std::size_t k) { return lifted.GetPointOfAll(corners[i + k]); };
        sum += Triangle3D(corner(0), corner(1), corner(2)).GetArea();
    }
    if (isValid) RequireNear(sum, area, 1e-6 * (1.0 + area));
}

// The polygon, its prepared form and its position test agree off the borders.
void CheckPosition(const Polygon2D& polygon, const PointInPolygon& prepared, const Point2D& p, bool tame) {
    const bool inside = polygon.IsPointInsideAndBorders(p, tolerance, true);
    const bool within = polygon.IsPointInsideAndBorders(p, tolerance, false);
    Require(inside || !within);
    if (tame) Require(prepared.IsPointInsideAndBorders(p, tolerance, true) == inside);
    int hole = -1;
    const Polygon2D::PositionResult position = polygon.CheckPositionOf(p, hole, tolerance);
    See(static_cast<int>(position));
    if (tame && position == Polygon2D::PositionResult::OnOuterBorder) Require(inside);
}

// A ring of lines with an arc on each tells of chord polygons what they tell themselves.
void CheckCurve(const std::vector<Point2D>& points, bool isSimple) {
    RingCurve2D lines, arcs;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Point2D &a = points[i], &b = points[(i + 1) % points.size()];
        (void)lines.AppendElement(Line2D(a, b));
        (void)arcs.AppendElement(Arc2D(a, a + (b - a) * 0.5, Angle(i % 2 == 0 ? 3.0 : -3.0)));
    }
    const PolygonCurve2D area(arcs);
    const Polygon2D polygon(points);
    const double doubt = 1e-9 * (1.0 + lines.GetLength() * lines.GetLength());
    if (isSimple) Require(std::abs(lines.GetArea() - polygon.GetArea()) <= doubt);
    arcs.Reverse();
    if (isSimple) Require(std::abs(arcs.GetArea() + area.GetArea()) <= doubt);
    for (const Point2D& p : points) {
        const Point2D q = p + (polygon.GetCentroid() - p) * 0.3;
        (void)area.IsPointInside(q, tolerance);
        const bool isInside = lines.IsPointInside(q, tolerance);
        const bool isOffBorder =
            polygon.IsPointInside(q, tolerance) == polygon.IsPointInsideAndBorders(q, tolerance, false);
        if (isSimple && isOffBorder) Require(isInside == polygon.IsPointInside(q, tolerance));
    }
}

}  // namespace

void Kalvio::Math::FuzzRing(Bytes& bytes) {
    const bool tame = bytes.Tame();
    const std::vector<Point2D> ring = bytes.TakePoints(3 + bytes.TakeCount(12));
    const std::vector<Point2D> hole = bytes.TakePoints();
    CheckString(LineString2D(ring), tame);
    Polygon2D polygon(ring);
    if (!hole.empty()) polygon.AppendHoleBoundary(LineString2D(hole));
    Point2D where;
    const bool isValid = polygon.Validate(where, true, tolerance);
    CheckArea(polygon, isValid, tame);
    PointInPolygon prepared(polygon, 6, tolerance);
    for (const Point2D& p : ring) {
        CheckPosition(polygon, prepared, p, tame);
        CheckPosition(polygon, prepared, p + (polygon.GetCentroid() - p) * 0.3, tame);
    }
    Point2D inner;
    if (polygon.GetPointInsideBoundary(inner, tolerance) && tame && isValid) {
        Require(polygon.IsPointInsideAndBorders(inner, tolerance, false));
    }
    CheckCurve(ring, tame && hole.empty() && isValid);
    See(polygon.GetMaxWidth(tolerance));
    See(std::vector{inner, polygon.GetCentroid(), polygon.GetOrientedBoundingBox2D().GetCenter()});
    polygon.ReducePoints(tolerance);
}
