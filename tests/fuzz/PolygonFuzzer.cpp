#include "fuzz/Elements.h"

using namespace Kalvio::Math;

namespace {

constexpr double rounding = 1e-6;

bool IsOnBorder(const Polygon2D& polygon, const Point2D& p) {
    return p.Distance(Projection::NearestPointOnPolygonWithHoles(p, polygon, tolerance)) <= 4.0 * tolerance;
}

// Either order tells the same, common points lie on both borders, and no gap is left where areas meet.
void CheckPair(const Polygon2D& a, const Polygon2D& b, bool tame) {
    std::vector<Point2D> common, swapped;
    constexpr auto apart = IntersectionResult::NoIntersection;
    const bool meet = Intersection::PolygonPolygon(a, b, common, tolerances) != apart;
    const bool meetSwapped = Intersection::PolygonPolygon(b, a, swapped, tolerances) != apart;
    const bool collide = Intersection::Collides(a, b, tolerance);
    const double gap = Distance::PolygonToPolygon(a, b, tolerance);
    Require(gap >= 0.0 || std::isnan(gap) || !tame);
    See(common);
    int hole = -1;
    (void)a.CheckPositionOf(b, hole, tolerance);
    const bool isInside = Polygon2D::IsPolygonInsideNotCrossing(a, b, tolerance);
    if (!tame) return;
    Require(meet == meetSwapped && common.empty() == swapped.empty());
    Require(meet == collide && collide == Intersection::Collides(b, a, tolerance));
    RequireNear(gap, Distance::PolygonToPolygon(b, a, tolerance), rounding);
    Require(!meet || gap == 0.0);
    for (const Point2D& p : common) Require(IsOnBorder(a, p) && IsOnBorder(b, p));
    if (isInside) RequireNear(a.GetArea(), 0.0, std::abs(Polygon2D(b.GetPoints()).GetArea()) + 1.0);
}

void CheckLines(const Polygon2D& polygon, const std::vector<Point2D>& chain, bool tame) {
    const LineString2D line(chain);
    const BoundingBox2D box = line.GetBoundingBox2D();
    std::vector<Point2D> onLine, onBox;
    (void)Intersection::LineStringPolygon(line, polygon, onLine, tolerances);
    (void)Intersection::PolygonBoundingBox(polygon, box, onBox, tolerances);
    std::vector<GeometryClipper::Part<LineString2D>> parts;
    const bool isClipped = GeometryClipper::Clip(line, polygon, parts, tolerances);
    Require(isClipped != parts.empty());
    See(onLine);
    See(onBox);
    if (!tame) return;
    Require(parts.empty() || (parts.front().from == 0.0 && std::abs(parts.back().to - line.GetLength()) <= rounding));
    for (std::size_t i = 1; i < parts.size(); ++i) {
        Require(parts[i].from == parts[i - 1].to && parts[i].isInside != parts[i - 1].isInside);
        Require(IsOnBorder(polygon, parts[i].chain.GetStart()));
    }
    for (const Point2D& p : onLine)
        Require(IsOnBorder(polygon, p) && Distance::PointToLineString(line, p, 0.0) <= 4.0 * tolerance);
    for (const Point2D& p : onBox) Require(IsOnBorder(polygon, p) && box.IsPointInside(p, tolerance));
}

// The strips on both sides of a line have the area of a valid polygon together.
void CheckStrips(const Polygon2D& polygon, double at, bool tame) {
    Point2D where;
    const bool isValid = polygon.Validate(where, true, tolerance);
    for (const auto clip : {PointInPolygon::PolygonClipVertStrip, PointInPolygon::PolygonClipHoriStrip}) {
        double rest = std::abs(polygon.GetArea());
        const double allowed = rounding * (1.0 + rest);
        for (const auto& [low, high] : {std::pair(-4096.0, at), std::pair(at, 4096.0)}) {
            std::vector<Polygon2D> pieces;
            clip(polygon, pieces, low, high, 0.0);
            See(pieces);
            for (const Polygon2D& piece : pieces) rest -= std::abs(piece.GetArea());
        }
        if (tame && isValid) RequireNear(rest, 0.0, allowed);
    }
}

// Tame points lie on a grid on which products are exact.
void CheckHull(const std::vector<Point2D>& points, bool tame) {
    Polygon2D ring, ofMeasured;
    std::vector<Point2DM> measured;
    for (const Point2D& p : points) measured.emplace_back(p.GetX(), p.GetY(), static_cast<double>(measured.size()));
    Geometry::ConvexHull(points, ring);
    Geometry::ConvexHull(measured, ofMeasured);
    const std::vector<Point2D>& hull = ring.GetPoints();
    See(hull);
    if (!tame) return;
    Require(ofMeasured.GetPoints() == hull);
    for (std::size_t i = 0; i < hull.size() && hull.size() > 2; ++i) {
        const Point2D &a = hull[i], &b = hull[(i + 1) % hull.size()];
        Require((b - a).PerpDotProduct(hull[(i + 2) % hull.size()] - b) > 0.0);
        for (const Point2D& p : points) Require((b - a).PerpDotProduct(p - a) >= 0.0);
    }
    for (std::size_t i = 0; i < measured.size(); ++i) Require(measured[i].GetM() == static_cast<double>(i));
}

}  // namespace

void Kalvio::Math::FuzzPolygon(Bytes& bytes) {
    const bool tame = bytes.Tame();
    const double at = bytes.TakeDouble();
    const Polygon2D a = bytes.TakePolygon(3, 8), b = bytes.TakePolygon(3, 8);
    const std::vector<Point2D> chain = bytes.TakePoints();
    Point2D where;
    const bool areValid = a.Validate(where, true, tolerance) && b.Validate(where, true, tolerance);
    CheckPair(a, b, tame && areValid);
    CheckLines(a, chain, tame && areValid);
    CheckStrips(a, at, tame);
    CheckHull(a.GetPoints(), tame);
    CheckHull(chain, tame);
}
