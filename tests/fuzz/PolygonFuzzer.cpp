#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/polygons/PointInPolygon.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/queries/Distance.h"
#include "kalvio/queries/Intersection.h"

#include "fuzz/Bytes.h"

#include <algorithm>
#include <cmath>

using namespace Kalvio::Math;

namespace {

constexpr double tolerance = 1e-4;
constexpr double rounding = 1e-6;
const Tolerances tolerances(tolerance, 1e-10);

Polygon2D TakePolygon(Bytes& bytes) {
    const std::size_t corners = 3 + bytes.TakeCount(8), holeCorners = bytes.TakeCount(6);
    Polygon2D polygon(bytes.TakePoints(corners));
    if (holeCorners > 2) polygon.AppendHoleBoundary(LineString2D(bytes.TakePoints(holeCorners)));
    return polygon;
}

bool IsOnBorder(const Polygon2D& polygon, const Point2D& p, double reach) {
    const auto isOn = [&](Polygon2D ring) {
        ring.Close();
        return Distance::PointToLineString(LineString2D(ring.GetPoints()), p, 0.0) <= reach;
    };
    if (isOn(Polygon2D(polygon.GetPoints()))) return true;
    for (unsigned int i = 0; i < polygon.GetNumHoleBoundaries(); ++i) {
        if (isOn(Polygon2D(polygon.GetHoleBoundary(i)))) return true;
    }
    return false;
}

// Either order tells the same, common points lie on both borders, and no gap is left where areas meet.
void CheckPair(const Polygon2D& a, const Polygon2D& b, bool tame) {
    std::vector<Point2D> common;
    std::vector<Point2D> swapped;
    const bool meet = Intersection::PolygonPolygon(a, b, common, tolerances) != IntersectionResult::NoIntersection;
    const bool meetSwapped =
        Intersection::PolygonPolygon(b, a, swapped, tolerances) != IntersectionResult::NoIntersection;
    const bool collide = Intersection::Collides(a, b, tolerance);
    const double gap = Distance::PolygonToPolygon(a, b, tolerance);
    Require(gap >= 0.0 || std::isnan(gap) || !tame);
    int hole = -1;
    (void)a.CheckPositionOf(b, hole, tolerance);
    const bool isInside = Polygon2D::IsPolygonInsideNotCrossing(a, b, tolerance);
    if (!tame) return;
    Require(meet == meetSwapped && common.empty() == swapped.empty());
    Require(meet == collide && collide == Intersection::Collides(b, a, tolerance));
    Require(std::abs(gap - Distance::PolygonToPolygon(b, a, tolerance)) <= rounding);
    Require(!meet || gap == 0.0);
    for (const Point2D& p : common) Require(IsOnBorder(a, p, 4.0 * tolerance) && IsOnBorder(b, p, 4.0 * tolerance));
    if (isInside) Require(std::abs(a.GetArea()) <= std::abs(Polygon2D(b.GetPoints()).GetArea()) + 1.0);
}

void CheckLines(const Polygon2D& polygon, const std::vector<Point2D>& chain, bool tame) {
    const LineString2D line(chain);
    const BoundingBox2D box = line.GetBoundingBox2D();
    std::vector<Point2D> onLine;
    std::vector<Point2D> onBox;
    (void)Intersection::LineStringPolygon(line, polygon, onLine, tolerances);
    (void)Intersection::PolygonBoundingBox(polygon, box, onBox, tolerances);
    if (!tame) return;
    for (const Point2D& p : onLine) {
        Require(IsOnBorder(polygon, p, 4.0 * tolerance));
        Require(Distance::PointToLineString(line, p, 0.0) <= 4.0 * tolerance);
    }
    for (const Point2D& p : onBox) Require(IsOnBorder(polygon, p, 4.0 * tolerance) && box.IsPointInside(p, tolerance));
}

double AreaBetween(const Polygon2D& polygon, double low, double high, bool isUpright) {
    std::vector<Polygon2D> pieces;
    if (isUpright) {
        PointInPolygon::PolygonClipVertStrip(polygon, pieces, low, high, 0.0);
    } else {
        PointInPolygon::PolygonClipHoriStrip(polygon, pieces, low, high, 0.0);
    }
    double area = 0.0;
    for (const Polygon2D& piece : pieces) area += std::abs(piece.GetArea());
    return area;
}

// The strips on both sides of a line have the area of a valid polygon together.
void CheckStrips(const Polygon2D& polygon, double at, bool tame) {
    Point2D where;
    const bool isValid = polygon.Validate(where, true, tolerance);
    const double area = std::abs(polygon.GetArea());
    for (const bool isUpright : {false, true}) {
        const double sum = AreaBetween(polygon, -4096.0, at, isUpright) + AreaBetween(polygon, at, 4096.0, isUpright);
        if (tame && isValid) Require(std::abs(sum - area) <= rounding * (1.0 + area));
    }
}

void CheckHull(const std::vector<Point2D>& points, bool tame) {
    Polygon2D hull;
    Geometry::ConvexHull(points, hull);
    if (!tame || hull.GetSize() < 3) return;
    for (const Point2D& p : points) Require(hull.IsPointInsideAndBorders(p, rounding, true));
    Require(hull.GetArea() >= -rounding);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 400) return 0;
    Bytes bytes(data, size);
    const bool tame = bytes.Tame();
    const double at = bytes.TakeDouble();
    const Polygon2D a = TakePolygon(bytes);
    const Polygon2D b = TakePolygon(bytes);
    const std::vector<Point2D> chain = bytes.TakePoints();
    Point2D where;
    const bool areValid = a.Validate(where, true, tolerance) && b.Validate(where, true, tolerance);
    CheckPair(a, b, tame && areValid);
    CheckLines(a, chain, tame && areValid);
    CheckStrips(a, at, tame);
    CheckHull(a.GetPoints(), tame);
    return 0;
}
