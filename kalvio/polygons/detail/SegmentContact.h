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

/// The sides of each other on which the ends of the segments a1 -> a2 and b1 -> b2 lie, as doubled areas.
struct SegmentSides {
    SegmentSides(const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2)
        : b1Side((a2 - a1).PerpDotProduct(b1 - a1)),
          b2Side((a2 - a1).PerpDotProduct(b2 - a1)),
          a1Side((b2 - b1).PerpDotProduct(a1 - b1)),
          a2Side((b2 - b1).PerpDotProduct(a2 - b1)) {}

    /// The segments cross between their ends.
    bool AreCrossing() const { return AreOpposite(b1Side, b2Side) && AreOpposite(a1Side, a2Side); }
    SegmentContact Crossing(const Point2D& a1, const Point2D& a2) const {
        const double onFirst = a1Side / (a1Side - a2Side);
        return {a1 + (a2 - a1) * onFirst, onFirst, b1Side / (b1Side - b2Side)};
    }

    double b1Side, b2Side, a1Side, a2Side;

private:
    static bool AreOpposite(double u, double v) { return (u < 0.0 && v > 0.0) || (u > 0.0 && v < 0.0); }
};

/// Calls visit(contact) for the ends of one segment that lie at most `tolerance` from the other: up to four.
template <class Visit>
void ForEachTouchingEnd(const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2, double tolerance,
                        Visit&& visit) {
    const auto offer = [&](const Point2D& end, const Point2D& from, const Point2D& to, auto&& place) {
        const SegmentFoot foot(end, from, to, 0.0);
        if (foot.squaredDistance <= tolerance * tolerance) visit(place(end, foot.parameter));
    };
    offer(a1, b1, b2, [](const Point2D& p, double t) { return SegmentContact{p, 0.0, t}; });
    offer(b1, a1, a2, [](const Point2D& p, double t) { return SegmentContact{p, t, 0.0}; });
    offer(b2, a1, a2, [](const Point2D& p, double t) { return SegmentContact{p, t, 1.0}; });
    offer(a2, b1, b2, [](const Point2D& p, double t) { return SegmentContact{p, 1.0, t}; });
}

/// Finds where the segment a1 -> a2 meets b1 -> b2: the point where they cross, or else an end of one that lies at most
/// `tolerance` from the other, and of several such ends (segments that overlap, or meet at their ends) the first along
/// a1 -> a2.
/// @return false, `contact` untouched, when they come no nearer than the tolerance
inline bool FindContact(const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2, double tolerance,
                        SegmentContact& contact) {
    const SegmentSides sides(a1, a2, b1, b2);
    const bool isCrossing = sides.AreCrossing();
    // Segments that run along each other cross by the noise of their coordinates, anywhere: they meet at their ends.
    const double limit = tolerance * tolerance * (a2 - a1).NormSquared();
    const bool isAlong = sides.b1Side * sides.b1Side <= limit && sides.b2Side * sides.b2Side <= limit;
    bool found = isCrossing && !isAlong;
    if (isCrossing) contact = sides.Crossing(a1, a2);
    if (found) return true;
    ForEachTouchingEnd(a1, a2, b1, b2, tolerance, [&](const SegmentContact& candidate) {
        if (!found || candidate.onFirst < contact.onFirst) contact = candidate;
        found = true;
    });
    return found || isCrossing;
}

}  // namespace Kalvio::Math::detail
