#include "kalvio/queries/IntersectionExt.h"

#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/queries/Distance.h"
#include "kalvio/queries/Intersection.h"
#include "kalvio/queries/detail/ElementPath.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <variant>

namespace Kalvio::Math {

namespace {

using Location = IntersectionExt::PointLocation;

Location LocationAt(double station, const detail::ChainExtent& extent, double nearness) {
    if (station <= nearness) return Location::Start;
    if (station < extent.length - nearness) return Location::Interior;
    return extent.isClosed ? Location::Start : Location::End;
}

}  // namespace

/// What goes on from an end of an operand.
class IntersectionExt::Extension {
public:
    Extension(const Line2D& straight, bool isBeyondEnd) : curve(straight), atEnd(isBeyondEnd) {}
    Extension(const Arc2D& round, bool isBeyondEnd) : curve(round), atEnd(isBeyondEnd) {}

    const IPolyline2DElement& GetCurve() const {
        return std::visit([](const auto& c) -> const IPolyline2DElement& { return c; }, curve);
    }
    /// Null for an arc.
    const Line2D* AsLine() const { return std::get_if<Line2D>(&curve); }
    void SetLength(double length) {
        if (Line2D* const line = std::get_if<Line2D>(&curve))
            *line = Line2D(line->GetStart(), line->GetDirection() * length);
    }
    Location GetLocation() const { return atEnd ? Location::BeyondEnd : Location::BeforeStart; }

private:
    std::variant<Line2D, Arc2D> curve;
    bool atEnd;
};

/// An operand with the extensions of its ends.
class IntersectionExt::Operand {
public:
    Operand(const IPolyline2DElement& element, const Tolerances& tolerances)
        : path(element, tolerances), nearness(detail::NearnessOf(tolerances)) {
        if (!path.IsUsable() || path.GetExtent().isClosed) return;
        const auto isLong = [](const detail::ElementPath::Piece& piece) {
            return piece.element->GetLength() > detail::numericalZero;
        };
        const auto& pieces = path.GetPieces();
        const auto start = std::find_if(pieces.begin(), pieces.end(), isLong);
        const auto end = std::find_if(pieces.rbegin(), pieces.rend(), isLong);
        if (start == pieces.end()) return;
        Extend(*start->element, false);
        Extend(*end->element, true);
    }

    const detail::ElementPath& GetPath() const { return path; }
    const std::vector<Extension>& GetExtensions() const { return extensions; }
    /// Lets the straight extensions reach across an extent that holds their starts.
    void SetReach(const detail::Extent& extent) {
        const double length = 2.0 * std::hypot(extent.maxX - extent.minX, extent.maxY - extent.minY);
        for (Extension& extension : extensions) extension.SetLength(length);
    }
    /// The extent of the operand and of the circles of its extensions.
    detail::Extent GetExtent() const {
        const auto& boxes = path.GetBoxes();
        detail::Extent extent = boxes.GetExtent(0, boxes.GetCount());
        for (const Extension& extension : extensions) {
            const BoundingBox2D box = extension.GetCurve().GetBoundingBox2D();
            extent.Add(box.GetMinPoint());
            extent.Add(box.GetMaxPoint());
        }
        return extent;
    }
    bool Holds(const Point2D& point) const {
        detail::Extent there;
        there.Add(point);
        return path.GetBoxes().ForEachNear(there, nearness, [&](std::size_t i) {
            const IPolyline2DElement& element = *path.GetPieces()[i].element;
            return detail::NearestOnElement(element, point, Tolerances(nearness)).point.Distance(point) <= nearness;
        });
    }
    Location LocationOf(const Point2D& point) const {
        if (point.Distance(path.GetPieces().front().element->GetStart()) <= nearness) return Location::Start;
        if (point.Distance(path.GetPieces().back().element->GetEnd()) <= nearness) return Location::End;
        return Location::Interior;
    }

private:
    void Extend(const IPolyline2DElement& element, bool atEnd) {
        if (element.GetType() == MathTypes::Arc2D) {
            const auto& arc = static_cast<const Arc2D&>(element);
            const double sweep = arc.GetAngle().GetRadians();
            const double rest = std::copysign(detail::twoPi - std::abs(sweep), atEnd ? sweep : -sweep);
            extensions.emplace_back(Arc2D(atEnd ? arc.GetEnd() : arc.GetStart(), arc.GetCenter(), Angle(rest)), atEnd);
            return;
        }
        detail::ElementPoint end;
        if (!detail::EvaluateElement(element, atEnd ? element.GetLength() : 0.0, end)) return;
        extensions.emplace_back(Line2D(end.point, atEnd ? end.tangent : -end.tangent), atEnd);
    }

    detail::ElementPath path;
    double nearness;
    std::vector<Extension> extensions;
};

void IntersectionExt::UpdateClosest(const UndershootPoint<Point2D>& candidate, UndershootPoint<Point2D>& closest,
                                    bool& isFound) {
    if (isFound && !(candidate.distance < closest.distance)) return;
    closest = candidate;
    isFound = true;
}

/// @param closest  located on the extended operand as its first
bool IntersectionExt::FindUndershoot(const Extension& extension, const Operand& other,
                                     UndershootPoint<Point2D>& closest, const Tolerances& tolerances) {
    const IPolyline2DElement& curve = extension.GetCurve();
    const Line2D* const line = extension.AsLine();
    const double nearness = detail::NearnessOf(tolerances);
    bool isFound = false;
    std::map<double, Point2D, compareDouble> onOther;
    const auto& pieces = other.GetPath().GetPieces();
    const BoundingBox2D box = curve.GetBoundingBox2D();
    detail::Extent extent;
    extent.Add(box.GetMinPoint());
    extent.Add(box.GetMaxPoint());
    extent = extent.Widened(nearness);
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const detail::Extent& there = other.GetPath().GetBoxes().GetExtent(i);
        if (!extent.Meets(there) || (line != nullptr && !detail::ComesNear(*line, there, nearness))) continue;
        std::map<double, Point2D> solutions;
        Intersection::IPolyline2DElementIPolyline2DElement(curve, *pieces[i].element, 0.0, solutions, tolerances);
        Intersection::AddSolutions(solutions, onOther);
    }
    if (!onOther.empty()) {
        const auto& [distance, point] = *onOther.begin();
        UpdateClosest({point, extension.GetLocation(), other.LocationOf(point), distance}, closest, isFound);
    }
    for (const Extension& otherExtension : other.GetExtensions()) {
        const Line2D* const otherLine = otherExtension.AsLine();
        std::map<double, Point2D> solutions;
        if (line != nullptr && otherLine != nullptr) {  // they may meet anywhere
            Point2D point;
            const bool isMeeting =
                Intersection::LineLine(*line, *otherLine, point, tolerances) == IntersectionResult::Intersecting &&
                line->GetDistanceFromStartPoint(point) > 0.0 && otherLine->GetDistanceFromStartPoint(point) > 0.0;
            if (isMeeting) solutions.emplace(line->GetDistanceFromStartPoint(point), point);
        } else {
            Intersection::IPolyline2DElementIPolyline2DElement(curve, otherExtension.GetCurve(), 0.0, solutions,
                                                               tolerances);
        }
        // Rounding must not decide between the operand and its extension: within the tolerance it is the operand.
        const auto next = solutions.upper_bound(nearness);
        if (next == solutions.end() || !(onOther.empty() || next->first < onOther.begin()->first - nearness)) continue;
        const auto& [distance, point] = *next;
        const Location onSecond = other.Holds(point) ? other.LocationOf(point) : otherExtension.GetLocation();
        UpdateClosest({point, extension.GetLocation(), onSecond, distance}, closest, isFound);
    }
    return isFound;
}

IntersectionResult IntersectionExt::Intersect(const IGeometry& first, const IGeometry& second,
                                              std::vector<IntersectionPoint<Point2D>>& out,
                                              const Tolerances& tolerances) {
    const IPolyline2DElement* const a = detail::AsPlanElement(first);
    const IPolyline2DElement* const b = detail::AsPlanElement(second);
    if (a == nullptr || b == nullptr) return IntersectionResult::Degenerate;
    const detail::ElementPath path(*a, tolerances);
    const detail::ElementPath otherPath(*b, tolerances);
    if (!path.IsUsable() || !otherPath.IsUsable()) return IntersectionResult::Degenerate;
    const detail::CommonPlaces common = FindCommonPlaces(path, otherPath, tolerances);
    const double nearness = detail::NearnessOf(tolerances);
    for (const detail::ChainPlace& place : common.places) {
        out.push_back({place.point, LocationAt(place.onFirst, path.GetExtent(), nearness),
                       LocationAt(place.onSecond, otherPath.GetExtent(), nearness), place.onFirst, place.onSecond});
    }
    if (common.places.empty()) return IntersectionResult::NoIntersection;
    return common.isSame ? IntersectionResult::Coincident : IntersectionResult::Intersecting;
}

IntersectionResult IntersectionExt::Intersect(const Line3D& first, const Line3D& second,
                                              std::vector<IntersectionPoint<Point3D>>& out,
                                              const Tolerances& tolerances) {
    const double nearness = detail::NearnessOf(tolerances);
    const double length = first.GetLength();
    const double otherLength = second.GetLength();
    const auto isUsable = [nearness](double l) { return l > nearness && l <= detail::largestDouble; };
    if (!isUsable(length) || !isUsable(otherLength)) return IntersectionResult::Degenerate;
    const Vec3D along = first.GetDirection();
    const Vec3D otherAlong = second.GetDirection();
    const auto add = [&](const Point3D& point) {
        const double station = std::clamp((point - first.GetStart()).DotProduct(along), 0.0, length);
        const double otherStation = std::clamp((point - second.GetStart()).DotProduct(otherAlong), 0.0, otherLength);
        out.push_back({point, LocationAt(station, {length, false}, nearness),
                       LocationAt(otherStation, {otherLength, false}, nearness), station, otherStation});
    };
    // Ends on the other segment: of a stretch along which both run, the two outer ones.
    std::map<double, Point3D> ends;
    const auto offer = [&](const Point3D& end, const Line3D& segment) {
        if (Distance::PointToLineSegment(segment, end, 0.0) <= nearness)
            ends.emplace((end - first.GetStart()).DotProduct(along), end);
    };
    offer(first.GetStart(), second);
    offer(first.GetEnd(), second);
    offer(second.GetStart(), first);
    offer(second.GetEnd(), first);
    if (!ends.empty() && ends.rbegin()->first - ends.begin()->first > 2.0 * nearness) {
        add(ends.begin()->second);
        add(ends.rbegin()->second);
        const bool coversBoth =
            ends.rbegin()->first - ends.begin()->first >= std::max(length, otherLength) - 2.0 * nearness;
        return coversBoth ? IntersectionResult::Coincident : IntersectionResult::Intersecting;
    }
    Line3D shortest;
    if (Intersection::ShortestLineBetweenLineSegments(first, second, shortest, tolerances) !=
            IntersectionResult::Intersecting ||
        !(shortest.GetLength() <= nearness)) {
        return IntersectionResult::NoIntersection;
    }
    add(shortest.GetStart() + (shortest.GetEnd() - shortest.GetStart()) * 0.5);
    return IntersectionResult::Intersecting;
}

IntersectionResult IntersectionExt::GetUndershoots(const IGeometry& first, const IGeometry& second,
                                                   std::vector<UndershootPoint<Point2D>>& out,
                                                   const Tolerances& tolerances) {
    const IPolyline2DElement* const elements[] = {detail::AsPlanElement(first), detail::AsPlanElement(second)};
    if (elements[0] == nullptr || elements[1] == nullptr) return IntersectionResult::Degenerate;
    Operand operands[] = {Operand(*elements[0], tolerances), Operand(*elements[1], tolerances)};
    if (!operands[0].GetPath().IsUsable() || !operands[1].GetPath().IsUsable()) return IntersectionResult::Degenerate;
    detail::Extent extent = operands[0].GetExtent();
    extent.Add(operands[1].GetExtent());
    for (Operand& operand : operands) operand.SetReach(extent);

    const std::size_t before = out.size();
    for (int i = 0; i < 2; ++i) {
        const Operand& other = operands[1 - i];
        for (const Extension& extension : operands[i].GetExtensions()) {
            UndershootPoint<Point2D> closest;
            if (other.Holds(extension.GetCurve().GetStart())) continue;
            if (!FindUndershoot(extension, other, closest, tolerances)) continue;
            if (i == 1) std::swap(closest.onFirst, closest.onSecond);
            out.push_back(closest);
        }
    }
    return out.size() > before ? IntersectionResult::Intersecting : IntersectionResult::NoIntersection;
}

}  // namespace Kalvio::Math
