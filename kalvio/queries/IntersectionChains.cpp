#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/detail/LineCrossings.h"
#include "kalvio/queries/Intersection.h"
#include "kalvio/queries/detail/ChainContacts.h"
#include "kalvio/queries/detail/CountAppended.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kalvio::Math {

namespace {

using Closing = detail::ChainSegments::Closing;
using detail::NearnessOf;

bool IsUsable(double length, const Tolerances& tolerances) {
    return length > NearnessOf(tolerances) && length <= detail::largestDouble;
}

bool IsLine(const Line2D& line) {
    const double length = line.GetLength();
    return length > detail::numericalZero && length <= detail::largestDouble;
}

/// Adds the rings of a polygon. Holes too short to be one are left out.
/// @return false for a polygon without an outer ring, or with a ring whose length is not finite
bool AddRings(const Polygon2D& polygon, const Tolerances& tolerances, detail::ChainSet& rings) {
    if (!IsUsable(rings.Add(polygon.GetPoints(), Closing::Ring), tolerances)) return false;
    for (unsigned int i = 0; i < polygon.GetNumHoleBoundaries(); ++i) {
        if (!(rings.Add(polygon.GetHoleBoundary(i).GetPoints(), Closing::Ring) <= detail::largestDouble)) return false;
    }
    return true;
}

Polygon2D PolygonOf(const BoundingBox2D& box) {
    const Point2D low = box.GetMinPoint();
    const Point2D high = box.GetMaxPoint();
    return {low, Point2D(high.GetX(), low.GetY()), high, Point2D(low.GetX(), high.GetY())};
}

/// The number of points appended by a form that answers with a result.
template <class A, class B>
int CountPoints(IntersectionResult (*form)(const A&, const B&, std::vector<Point2D>&, const Tolerances&), const A& a,
                const B& b, std::vector<Point2D>& out, double tolerance) {
    return detail::CountAppended(out, tolerance, [&](const Tolerances& t) { form(a, b, out, t); });
}

}  // namespace

IntersectionResult Intersection::LineStringLineString(const LineString2D& a, const LineString2D& b,
                                                      std::vector<Point2D>& out, const Tolerances& tolerances) {
    detail::ChainSet first(NearnessOf(tolerances));
    detail::ChainSet second(NearnessOf(tolerances));
    if (!IsUsable(first.Add(a.GetPoints(), Closing::Chain), tolerances) ||
        !IsUsable(second.Add(b.GetPoints(), Closing::Chain), tolerances)) {
        return IntersectionResult::Degenerate;
    }
    const detail::ChainSet::Common common = first.FindCommonWith(second);
    if (common.points.empty()) return IntersectionResult::NoIntersection;
    AddSolutions(common.points, out, out.size(), tolerances);
    return common.pairsOfSame > 0 ? IntersectionResult::Coincident : IntersectionResult::Intersecting;
}

int Intersection::LineStringLineString(const LineString2D& a, const LineString2D& b, std::vector<Point2D>& out,
                                       double tolerance) {
    return CountPoints<LineString2D, LineString2D>(LineStringLineString, a, b, out, tolerance);
}

IntersectionResult Intersection::LineStringLineSegment(const LineString2D& lineString, const Line2D& segment,
                                                       std::vector<Point2D>& out, const Tolerances& tolerances) {
    return LineStringLineString(lineString, LineString2D(segment), out, tolerances);
}

int Intersection::LineStringLineSegment(const LineString2D& lineString, const Line2D& segment,
                                        std::vector<Point2D>& out, double tolerance) {
    return CountPoints<LineString2D, Line2D>(LineStringLineSegment, lineString, segment, out, tolerance);
}

IntersectionResult Intersection::LineStringLine(const LineString2D& lineString, const Line2D& line,
                                                std::vector<Point2D>& out, const Tolerances& tolerances) {
    const std::vector<Point2D>& points = lineString.GetPoints();
    if (!IsLine(line) || !IsUsable(lineString.GetLength(), tolerances)) return IntersectionResult::Degenerate;
    const detail::LineCrossings found =
        detail::CrossLine(points, line.GetStart(), line.GetEnd(), tolerances.UserTolerance());
    AddSolutions(found.points, out, out.size(), tolerances);
    if (found.points.empty()) return IntersectionResult::NoIntersection;
    return found.isOnLine ? IntersectionResult::Coincident : IntersectionResult::Intersecting;
}

int Intersection::LineStringLine(const LineString2D& lineString, const Line2D& line, std::vector<Point2D>& out,
                                 double tolerance) {
    const std::vector<Point2D>& points = lineString.GetPoints();
    const bool isPoint = !points.empty() && lineString.GetLength() <= NearnessOf(Tolerances(tolerance));
    if (!isPoint) return CountPoints<LineString2D, Line2D>(LineStringLine, lineString, line, out, tolerance);
    if (!IsLine(line) || !detail::IsPointOnLine(points[0], line.GetStart(), line.GetEnd(), tolerance)) return 0;
    out.push_back(points[0]);
    return 1;
}

IntersectionResult Intersection::LineStrings(const std::vector<LineString2D>& lineStrings, std::vector<Point2D>& out,
                                             const Tolerances& tolerances) {
    detail::ChainSet set(NearnessOf(tolerances));
    std::size_t usable = 0;
    for (const LineString2D& lineString : lineStrings) {
        usable += IsUsable(set.Add(lineString.GetPoints(), Closing::Chain), tolerances) ? 1 : 0;
    }
    if (usable < 2) return IntersectionResult::Degenerate;
    const detail::ChainSet::Common common = set.FindCommonWithin();
    if (common.points.empty()) return IntersectionResult::NoIntersection;
    AddSolutions(common.points, out, out.size(), tolerances);
    return common.pairsOfSame == usable * (usable - 1) / 2 ? IntersectionResult::Coincident
                                                           : IntersectionResult::Intersecting;
}

int Intersection::LineStrings(const std::vector<LineString2D>& lineStrings, std::vector<Point2D>& out,
                              double tolerance) {
    return detail::CountAppended(out, tolerance, [&](const Tolerances& t) { LineStrings(lineStrings, out, t); });
}

IntersectionResult Intersection::LineStringPolygon(const LineString2D& lineString, const Polygon2D& polygon,
                                                   std::vector<Point2D>& out, const Tolerances& tolerances) {
    detail::ChainSet string(NearnessOf(tolerances));
    detail::ChainSet rings(NearnessOf(tolerances));
    if (!IsUsable(string.Add(lineString.GetPoints(), Closing::Chain), tolerances) ||
        !AddRings(polygon, tolerances, rings)) {
        return IntersectionResult::Degenerate;
    }
    const detail::ChainSet::Common common = string.FindCommonWith(rings);
    if (common.points.empty()) {
        return polygon.IsPointInside(lineString.GetStart(), NearnessOf(tolerances))
                   ? IntersectionResult::Intersecting
                   : IntersectionResult::NoIntersection;
    }
    AddSolutions(common.points, out, out.size(), tolerances);
    return IntersectionResult::Intersecting;
}

int Intersection::LineStringPolygon(const LineString2D& lineString, const Polygon2D& polygon, std::vector<Point2D>& out,
                                    double tolerance) {
    return CountPoints<LineString2D, Polygon2D>(LineStringPolygon, lineString, polygon, out, tolerance);
}

IntersectionResult Intersection::PolygonPolygon(const Polygon2D& a, const Polygon2D& b, std::vector<Point2D>& out,
                                                const Tolerances& tolerances) {
    const double nearness = NearnessOf(tolerances);
    detail::ChainSet rings(nearness);
    detail::ChainSet otherRings(nearness);
    if (!AddRings(a, tolerances, rings) || !AddRings(b, tolerances, otherRings)) return IntersectionResult::Degenerate;
    const detail::ChainSet::Common common = rings.FindCommonWith(otherRings);
    if (common.points.empty()) {
        // Each ring lies wholly on one side of the others: one point decides.
        const bool isInside = b.IsPointInside(a.GetPoint(0), nearness) || a.IsPointInside(b.GetPoint(0), nearness);
        return isInside ? IntersectionResult::Intersecting : IntersectionResult::NoIntersection;
    }
    AddSolutions(common.points, out, out.size(), tolerances);
    return common.pairsOfSame == rings.GetCount() && common.pairsOfSame == otherRings.GetCount()
               ? IntersectionResult::Coincident
               : IntersectionResult::Intersecting;
}

int Intersection::PolygonPolygon(const Polygon2D& a, const Polygon2D& b, std::vector<Point2D>& out, double tolerance) {
    return CountPoints<Polygon2D, Polygon2D>(PolygonPolygon, a, b, out, tolerance);
}

IntersectionResult Intersection::PolygonBoundingBox(const Polygon2D& polygon, const BoundingBox2D& box,
                                                    std::vector<Point2D>& out, const Tolerances& tolerances) {
    return PolygonPolygon(polygon, PolygonOf(box), out, tolerances);
}

int Intersection::PolygonBoundingBox(const Polygon2D& polygon, const BoundingBox2D& box, std::vector<Point2D>& out,
                                     double tolerance) {
    return CountPoints<Polygon2D, BoundingBox2D>(PolygonBoundingBox, polygon, box, out, tolerance);
}

IntersectionResult Intersection::LineBoundingBox(const Line2D& line, const BoundingBox2D& box,
                                                 std::vector<Point2D>& out, const Tolerances& tolerances) {
    LineString2D border(PolygonOf(box).GetPoints());
    border.AppendPoint(border.GetStart());
    std::vector<Point2D> found;
    const IntersectionResult result = LineStringLine(border, line, found, tolerances);
    if (found.empty()) return result;
    const Vec2D along = line.GetDirection();
    std::stable_sort(found.begin(), found.end(),
                     [&along](const Point2D& p, const Point2D& q) { return (q - p).DotProduct(along) > 0.0; });
    AddSolutions(found, out, out.size(), tolerances);
    return IntersectionResult::Intersecting;
}

int Intersection::LineBoundingBox(const Line2D& line, const BoundingBox2D& box, std::vector<Point2D>& out,
                                  double tolerance) {
    return CountPoints<Line2D, BoundingBox2D>(LineBoundingBox, line, box, out, tolerance);
}

bool Intersection::PointOnLineString(const Point2D& point, const LineString2D& lineString, double tolerance) {
    const std::vector<Point2D>& points = lineString.GetPoints();
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (detail::IsPointOnSegment(point, points[i - 1], points[i], tolerance)) return true;
    }
    return false;
}

bool Intersection::PointOnLineString(const Point3D& point, const LineString3D& lineString, double tolerance) {
    const std::vector<Point3D>& points = lineString.GetPoints();
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (detail::IsPointOnSegment(point, points[i - 1], points[i], tolerance)) return true;
    }
    return false;
}

bool Intersection::IsBoundingBoxInsideBoundingBox(const BoundingBox2D& inner, const BoundingBox2D& outer,
                                                  double tolerance) {
    const double t = std::abs(tolerance);
    return outer.IsPointInside(inner.GetMinPoint(), t) && outer.IsPointInside(inner.GetMaxPoint(), t);
}

bool Intersection::IsBoundingBoxInsideBoundingBox(const BoundingBox3D& inner, const BoundingBox3D& outer,
                                                  double tolerance) {
    const double t = std::abs(tolerance);
    const Point3D low = inner.GetMinPoint(), high = inner.GetMaxPoint();
    const Point3D outerLow = outer.GetMinPoint(), outerHigh = outer.GetMaxPoint();
    for (int axis = 0; axis < 3; ++axis) {
        if (!(low[axis] >= outerLow[axis] - t && high[axis] <= outerHigh[axis] + t)) return false;
    }
    return true;
}

void Intersection::AddSolutions(const std::vector<Point2D>& source, std::vector<Point2D>& target, std::size_t from,
                                const Tolerances& tolerances) {
    detail::AppendDistinct(source, target, from, NearnessOf(tolerances));
}

void Intersection::RemovePointsInSegments(std::vector<Point2D>& points, const std::vector<Line2D>& segments,
                                          const Tolerances& tolerances) {
    const double tolerance = tolerances.UserTolerance();
    std::erase_if(points, [&](const Point2D& point) {
        return std::any_of(segments.begin(), segments.end(), [&](const Line2D& segment) {
            return PointOnLineSegment(point, segment, tolerance) && !point.IsEqualTo(segment.GetStart(), tolerance) &&
                   !point.IsEqualTo(segment.GetEnd(), tolerance);
        });
    });
}

}  // namespace Kalvio::Math
