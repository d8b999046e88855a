#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/SegmentDistance.h"

namespace Kalvio::Math::detail {

/// Where two segments meet.
struct SegmentContact {
    Point2D point;
    double onFirst = 0.0;   // 0 at the start, 1 at the end of the first segment
    double onSecond = 0.0;  // the same on the second
};

/// Finds where the segment a1 -> a2 meets b1 -> b2: the point where they cross, or else an end of one that lies at most
/// `tolerance` from the other, and of several such ends (segments that overlap, or meet at their ends) the first along
/// a1 -> a2.
/// @return false, `contact` untouched, when they come no nearer than the tolerance
inline bool FindContact(const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2, double tolerance,
                        SegmentContact& contact) {
    const Vec2D a = a2 - a1;
    const Vec2D b = b2 - b1;
    // Doubled areas: the sides of a on which the ends of b lie, and the other way round.
    const double b1Side = a.PerpDotProduct(b1 - a1);
    const double b2Side = a.PerpDotProduct(b2 - a1);
    const double a1Side = b.PerpDotProduct(a1 - b1);
    const double a2Side = b.PerpDotProduct(a2 - b1);
    const auto areOpposite = [](double u, double v) { return (u < 0.0 && v > 0.0) || (u > 0.0 && v < 0.0); };
    const bool isCrossing = areOpposite(b1Side, b2Side) && areOpposite(a1Side, a2Side);
    const double crossing = a1Side / (a1Side - a2Side);
    // Segments that run along each other cross by the noise of their coordinates, anywhere: they meet at their ends.
    const double limit = tolerance * tolerance * a.NormSquared();
    const bool isAlong = b1Side * b1Side <= limit && b2Side * b2Side <= limit;
    bool found = isCrossing && !isAlong;
    if (isCrossing) contact = {a1 + a * crossing, crossing, b1Side / (b1Side - b2Side)};
    if (found) return true;
    const auto offer = [&](const Point2D& end, const Point2D& from, const Point2D& to, auto&& place) {
        const SegmentFoot foot(end, from, to, 0.0);
        if (!(foot.squaredDistance <= tolerance * tolerance)) return;
        const SegmentContact candidate = place(end, foot.parameter);
        if (!found || candidate.onFirst < contact.onFirst) contact = candidate;
        found = true;
    };
    offer(a1, b1, b2, [](const Point2D& p, double t) { return SegmentContact{p, 0.0, t}; });
    offer(b1, a1, a2, [](const Point2D& p, double t) { return SegmentContact{p, t, 0.0}; });
    offer(b2, a1, a2, [](const Point2D& p, double t) { return SegmentContact{p, t, 1.0}; });
    offer(a2, b1, b2, [](const Point2D& p, double t) { return SegmentContact{p, 1.0, t}; });
    return found || isCrossing;
}

}  // namespace Kalvio::Math::detail
