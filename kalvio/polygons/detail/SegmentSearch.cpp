#include "kalvio/polygons/detail/SegmentSearch.h"

#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/polygons/detail/PointInRing.h"
#include "kalvio/polygons/detail/Ring.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kalvio::Math::detail {

namespace {

bool IsFinite(const Point2D& p) { return std::isfinite(p.GetX()) && std::isfinite(p.GetY()); }

// The tolerance, and what the rounding of coordinates may add to it.
double ReachOf(const Point2D& p, double tolerance) {
    const double t = std::abs(tolerance);
    return t + 8.0 * std::numeric_limits<double>::epsilon() * (t + std::abs(p.GetX()) + std::abs(p.GetY()));
}

}  // namespace

struct SegmentSearch::Index {
    explicit Index(const Points& points)
        : boxes(points),
          first(points.data()),
          rounding(8.0 * std::numeric_limits<double>::epsilon() * boxes.GetSpread()),
          isFinite(std::all_of(points.begin(), points.end(), [](const Point2D& p) { return IsFinite(p); })) {}

    /// Calls visit(i) in ascending order for the segments that hold p (`IsPointOnSegment`), until it returns true.
    template <class Visit>
    bool VisitHolding(const Point2D& p, double tolerance, Visit&& visit) const {
        const auto holds = [&](std::size_t i) {
            return IsPointOnSegment(p, boxes.GetStart(i), boxes.GetEnd(i), tolerance) && visit(i);
        };
        const double reach = ReachOf(p, tolerance);
        if (std::isfinite(reach)) {
            Extent place;
            place.Add(p);
            return boxes.ForEachNear(place, reach, holds);
        }
        for (std::size_t i = 0; i < boxes.GetCount(); ++i) {
            if (holds(i)) return true;
        }
        return false;
    }

    const std::vector<double>& LengthsFromStart(const Points& points) const {
        return fromStart.Get([&points] { return LengthsAtPoints(points, lengthOf); });
    }
    const std::vector<double>& LengthsFromEnd(const Points& points) const {
        return fromEnd.Get([&points] {
            std::vector<double> lengths(points.size(), 0.0);
            for (std::size_t i = points.size() - 1; i > 0; --i) {
                lengths[i - 1] = lengths[i] + points[i].Distance(points[i - 1]);
            }
            return lengths;
        });
    }

    SegmentBoxes boxes;
    const Point2D* first;
    double rounding;  // of feet
    bool isFinite;
    Lazy<std::vector<double>> fromStart;
    Lazy<std::vector<double>> fromEnd;
};

const SegmentSearch::Index* SegmentSearch::Ask(const Points& points) const {
    if (questions.Ask() || points.size() < 2) return nullptr;
    const Index* const prepared = index.Get([&points] { return std::make_shared<const Index>(points); }).get();
    // Not where points were added through a reference that is no longer valid for it.
    return prepared->first == points.data() && prepared->boxes.GetCount() + 1 == points.size() ? prepared : nullptr;
}

bool SegmentSearch::FindNearest(const Points& points, const Point2D& p, double tolerance, ChainFoot<Point2D>& foot,
                                bool withClosing) const {
    const Index* const prepared = IsFinite(p) ? Ask(points) : nullptr;
    if (prepared == nullptr) return detail::FindNearest(points, p, tolerance, foot, withClosing);
    NearestSegment<Point2D> nearest(p, tolerance, prepared->rounding);
    if (withClosing) nearest.Offer(points.back(), points.front(), points.size() - 1);
    const SegmentBoxes& boxes = prepared->boxes;
    boxes.ForEachNearest(p, nearest.GetSquaredReach(),
                         [&](std::size_t i) { nearest.Offer(boxes.GetStart(i), boxes.GetEnd(i), i); });
    return nearest.Place(points, foot);
}

bool SegmentSearch::LengthFromStart(const Points& points, const Point2D& p, double& length, double tolerance) const {
    const Index* const prepared = Ask(points);
    if (prepared == nullptr) return detail::LengthFromStart(points, p, length, tolerance);
    length = 0.0;
    return prepared->VisitHolding(p, tolerance, [&](std::size_t i) {
        return Store(prepared->LengthsFromStart(points)[i] + points[i].Distance(p), length);
    });
}

bool SegmentSearch::LengthFromEnd(const Points& points, const Point2D& p, double& length, double tolerance) const {
    const Index* const prepared = Ask(points);
    if (prepared == nullptr) return detail::LengthFromEnd(points, p, length, tolerance);
    std::size_t end = 0;
    prepared->VisitHolding(p, tolerance, [&end](std::size_t i) {
        end = i + 1;
        return false;
    });
    length = 0.0;
    return end > 0 && Store(prepared->LengthsFromEnd(points)[end] + points[end].Distance(p), length);
}

void SegmentSearch::LengthsAlong(const Points& points, const Point2D& p, double tolerance,
                                 std::vector<double>& lengths) const {
    const Index* const prepared = Ask(points);
    if (prepared == nullptr) return detail::LengthsAlong(points, p, tolerance, lengths);
    lengths.clear();
    prepared->VisitHolding(p, tolerance, [&](std::size_t i) {
        AddPassage(prepared->LengthsFromStart(points)[i] + points[i].Distance(p), tolerance, lengths);
        return false;
    });
}

bool SegmentSearch::TangentAt(const Points& points, const Point2D& p, double tolerance, Vec2D& tangent) const {
    const Index* const prepared = Ask(points);
    if (prepared == nullptr) return detail::TangentAt(points, p, tolerance, tangent);
    return prepared->VisitHolding(p, tolerance,
                                  [&](std::size_t i) { return DirectionOf(points[i], points[i + 1], tangent); });
}

RingSide SegmentSearch::FindRingSide(const Points& ring, const Point2D& p, double tolerance) const {
    const double reach = ReachOf(p, tolerance);
    const Index* const prepared = std::isfinite(reach) ? Ask(ring) : nullptr;
    if (prepared == nullptr || !prepared->isFinite) return detail::FindRingSide(ring, p, tolerance);
    RingAroundPoint around(p, tolerance);
    if (HasClosingEdge(ring) && !around.Take(ring.back(), ring.front())) return RingSide::Border;
    Extent level;
    level.Add(Point2D(-std::numeric_limits<double>::infinity(), p.GetY()));
    level.Add(Point2D(std::numeric_limits<double>::infinity(), p.GetY()));
    const bool isBorder =
        prepared->boxes.ForEachNear(level, reach, [&](std::size_t i) { return !around.Take(ring[i], ring[i + 1]); });
    if (isBorder) return RingSide::Border;
    return around.Side([&ring] { return DoubledArea(ring, ring.front()) > 0.0; });
}

double SegmentSearch::LengthTo(const Points& points, std::size_t point) const {
    const Index* const prepared = questions.AreOver() ? Ask(points) : nullptr;
    if (prepared != nullptr) return prepared->LengthsFromStart(points)[point];
    double length = 0.0;
    for (std::size_t i = 0; i < point; ++i) length += points[i].Distance(points[i + 1]);
    return length;
}

}  // namespace Kalvio::Math::detail
