#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/queries/Intersection.h"
#include "kalvio/queries/detail/CountAppended.h"
#include "kalvio/queries/detail/ElementPath.h"

#include <cmath>

namespace Kalvio::Math {

namespace {

using PolylinePoints = std::vector<Polyline2D::PolylinePoint>;
using ElementPoints = std::vector<IPolyline2DElement::PolylineElementPoint>;

void AppendOnFirst(const detail::CommonPlaces& common, const detail::ElementPath& path, PolylinePoints& out) {
    for (const detail::ChainPlace& place : common.places) out.push_back(path.At(place.point, place.onFirst));
}

/// The same, where the second path passes a place more than once, only one of them.
void AppendOncePerStation(const detail::CommonPlaces& common, const detail::ElementPath& path, double nearness,
                          PolylinePoints& out) {
    const std::size_t before = out.size();
    for (const detail::ChainPlace& place : common.places) {
        const bool isKnown = out.size() > before && place.onFirst - out.back().station <= nearness &&
                             place.point.IsEqualTo(out.back().point, nearness);
        if (!isKnown) out.push_back(path.At(place.point, place.onFirst));
    }
}

void AppendOnSecond(const detail::CommonPlaces& common, const detail::ElementPath& path, PolylinePoints& out) {
    for (const detail::ChainPlace& place : common.places) out.push_back(path.At(place.point, place.onSecond));
}

void AppendOnSecond(const detail::CommonPlaces& common, const detail::ElementPath& path, ElementPoints& out) {
    for (const detail::ChainPlace& place : common.places) {
        out.push_back({place.point, path.At(place.point, place.onSecond).tangent, place.onSecond});
    }
}

IntersectionResult ResultOf(const detail::CommonPlaces& common, bool isSame) {
    if (common.places.empty()) return IntersectionResult::NoIntersection;
    return isSame ? IntersectionResult::Coincident : IntersectionResult::Intersecting;
}

/// @param onSecond  null: one point per station of the first
template <class Points>
IntersectionResult Cross(const IPolyline2DElement& a, const IPolyline2DElement& b, PolylinePoints& out,
                         Points* onSecond, const Tolerances& tolerances) {
    const detail::ElementPath first(a, tolerances);
    const detail::ElementPath second(b, tolerances);
    if (!first.IsUsable() || !second.IsUsable()) return IntersectionResult::Degenerate;
    const detail::CommonPlaces common = FindCommonPlaces(first, second, tolerances);
    if (onSecond == nullptr) {
        AppendOncePerStation(common, first, detail::NearnessOf(tolerances), out);
    } else {
        AppendOnFirst(common, first, out);
        AppendOnSecond(common, second, *onSecond);
    }
    return ResultOf(common, common.isSame);
}

IntersectionResult CrossLine(const Polyline2D& polyline, const Line2D& line, PolylinePoints& out, ElementPoints* onLine,
                             const Tolerances& tolerances) {
    const detail::ElementPath path(polyline, tolerances);
    if (!path.IsUsable() || !detail::ElementPath(line, tolerances).IsUsable()) return IntersectionResult::Degenerate;
    const detail::CommonPlaces common = FindCommonPlaces(path, line, tolerances);
    AppendOnFirst(common, path, out);
    if (onLine != nullptr) {
        const Vec2D along = line.GetDirection();
        for (const detail::ChainPlace& place : common.places) onLine->push_back({place.point, along, place.onSecond});
    }
    return ResultOf(common, common.coversFirst);
}

}  // namespace

IntersectionResult Intersection::Meet(const IPolyline2DElement& a, const IPolyline2DElement& b, PolylinePoints& out,
                                      const Tolerances& tolerances) {
    return Cross<PolylinePoints>(a, b, out, nullptr, tolerances);
}

int Intersection::Meet(const IPolyline2DElement& a, const IPolyline2DElement& b, PolylinePoints& out,
                       double tolerance) {
    return detail::CountAppended(out, tolerance, [&](const Tolerances& t) { Meet(a, b, out, t); });
}

IntersectionResult Intersection::MeetLine(const Polyline2D& polyline, const Line2D& line, PolylinePoints& out,
                                          const Tolerances& tolerances) {
    return CrossLine(polyline, line, out, nullptr, tolerances);
}

int Intersection::MeetLine(const Polyline2D& polyline, const Line2D& line, PolylinePoints& out, double tolerance) {
    return detail::CountAppended(out, tolerance, [&](const Tolerances& t) { MeetLine(polyline, line, out, t); });
}

IntersectionResult Intersection::PolylineArc(const Polyline2D& polyline, const Arc2D& arc, PolylinePoints& out,
                                             ElementPoints& onArc, const Tolerances& tolerances) {
    return Cross(polyline, arc, out, &onArc, tolerances);
}

IntersectionResult Intersection::PolylineClothoid(const Polyline2D& polyline, const Clothoid& clothoid,
                                                  PolylinePoints& out, ElementPoints& onClothoid,
                                                  const Tolerances& tolerances) {
    return Cross(polyline, clothoid, out, &onClothoid, tolerances);
}

IntersectionResult Intersection::PolylineLine(const Polyline2D& polyline, const Line2D& line, PolylinePoints& out,
                                              ElementPoints& onLine, const Tolerances& tolerances) {
    return CrossLine(polyline, line, out, &onLine, tolerances);
}

IntersectionResult Intersection::PolylineLineSegment(const Polyline2D& polyline, const Line2D& segment,
                                                     PolylinePoints& out, ElementPoints& onSegment,
                                                     const Tolerances& tolerances) {
    return Cross(polyline, segment, out, &onSegment, tolerances);
}

IntersectionResult Intersection::PolylinePolyline(const Polyline2D& a, const Polyline2D& b, PolylinePoints& out,
                                                  PolylinePoints& onSecond, const Tolerances& tolerances) {
    return Cross(a, b, out, &onSecond, tolerances);
}

void Intersection::AddSolution(std::map<double, Point2D>& solutions, const IPolyline2DElement& element,
                               const Point2D& p, double offset, const Tolerances& tolerances) {
    const double tolerance = detail::NearnessOf(tolerances);
    if (p.IsEqualTo(element.GetStart(), tolerance) || p.IsEqualTo(element.GetEnd(), tolerance)) return;
    double station = 0.0;
    if (!element.GetLengthFromStartPoint(p, station, tolerance)) {
        station = detail::NearestOnElement(element, p, tolerances).station;
    }
    solutions.insert_or_assign(station + offset, p);
}

void Intersection::AddSolutions(std::map<double, Point2D>& solutions, const IPolyline2DElement& element,
                                const std::vector<Point2D>& points, double offset, const Tolerances& tolerances) {
    for (const Point2D& point : points) AddSolution(solutions, element, point, offset, tolerances);
}

void Intersection::AddSolutions(const std::map<double, Point2D>& source,
                                std::map<double, Point2D, compareDouble>& target) {
    target.insert(source.begin(), source.end());
}

void Intersection::IPolyline2DElementIPolyline2DElement(const IPolyline2DElement& a, const IPolyline2DElement& b,
                                                        double offset, std::map<double, Point2D>& solutions,
                                                        const Tolerances& tolerances) {
    const auto crossWith = [&](const auto& first) {
        if (b.GetType() == MathTypes::Line2D) {
            IPolyline2DElementIPolyline2DElement(first, static_cast<const Line2D&>(b), offset, solutions, tolerances);
        } else if (b.GetType() == MathTypes::Arc2D) {
            IPolyline2DElementIPolyline2DElement(first, static_cast<const Arc2D&>(b), offset, solutions, tolerances);
        } else {
            return false;
        }
        return true;
    };
    if (a.GetType() == MathTypes::Line2D && crossWith(static_cast<const Line2D&>(a))) return;
    if (a.GetType() == MathTypes::Arc2D && crossWith(static_cast<const Arc2D&>(a))) return;
    const detail::CommonPlaces common =
        detail::FindCommonPlaces(detail::ElementPath(a, tolerances), detail::ElementPath(b, tolerances), tolerances);
    for (const detail::ChainPlace& place : common.places) AddSolution(solutions, a, place.point, offset, tolerances);
}

void Intersection::IPolyline2DElementIPolyline2DElement(const Line2D& a, const Line2D& b, double offset,
                                                        std::map<double, Point2D>& solutions,
                                                        const Tolerances& tolerances) {
    std::vector<Point2D> points;
    LineSegmentLineSegment(a, b, points, tolerances);
    AddSolutions(solutions, a, points, offset, tolerances);
}

void Intersection::IPolyline2DElementIPolyline2DElement(const Line2D& a, const Arc2D& b, double offset,
                                                        std::map<double, Point2D>& solutions,
                                                        const Tolerances& tolerances) {
    std::vector<Point2D> points;
    LineSegmentArc(a, b, points, tolerances);
    AddSolutions(solutions, a, points, offset, tolerances);
}

void Intersection::IPolyline2DElementIPolyline2DElement(const Arc2D& a, const Line2D& b, double offset,
                                                        std::map<double, Point2D>& solutions,
                                                        const Tolerances& tolerances) {
    std::vector<Point2D> points;
    LineSegmentArc(b, a, points, tolerances);
    AddSolutions(solutions, a, points, offset, tolerances);
}

void Intersection::IPolyline2DElementIPolyline2DElement(const Arc2D& a, const Arc2D& b, double offset,
                                                        std::map<double, Point2D>& solutions,
                                                        const Tolerances& tolerances) {
    std::vector<Point2D> points;
    ArcArc(a, b, points, tolerances);
    AddSolutions(solutions, a, points, offset, tolerances);
}

}  // namespace Kalvio::Math
