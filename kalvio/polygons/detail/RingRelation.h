#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/polygons/detail/PointInRing.h"
#include "kalvio/polygons/detail/Ring.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"
#include "kalvio/polygons/detail/SegmentContact.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace Kalvio::Math::detail {

/// How one ring runs past another. Where they come within the tolerance of each other the first ring is cut; each of
/// its stretches between two cuts lies inside the other ring, outside it, or along it.
struct RingRelation {
    bool touches = false;      // there is a cut
    bool goesInside = false;   // some stretch lies inside
    bool goesOutside = false;  // some stretch lies outside
    Point2D inside;            // a point of such a stretch
    Point2D outside;           // a point of such a stretch

    bool IsAlong() const { return !goesInside && !goesOutside; }
};

/// Relates a ring to another by boxes over runs of edges, and one pass over the other ring for every stretch until both
/// sides are known. The middle of its longest piece stands for a stretch; where that is on the border too, as in a
/// narrow gap between borders that part slowly, a corner between the cuts, none of which is. A stretch without either,
/// and no piece longer than two tolerances, counts as along.
inline RingRelation RelateRings(const std::vector<Point2D>& ring, const std::vector<Point2D>& other, double tolerance) {
    struct Cut {
        std::size_t edge;
        double parameter;
    };
    RingRelation relation;
    const std::vector<Point2D> open(ring.begin(), ring.begin() + static_cast<std::ptrdiff_t>(OpenRingSize(ring)));
    if (open.empty()) return relation;
    const double t = std::max(std::abs(tolerance), numericalZero);
    const SegmentBoxes edges(open, SegmentBoxes::Closing::Ring);
    const SegmentBoxes otherEdges(other, SegmentBoxes::Closing::Ring);

    std::vector<Cut> cuts;
    edges.ForEachPair(otherEdges, t, [&](std::size_t i, std::size_t j) {
        SegmentContact contact;
        if (FindContact(edges.GetStart(i), edges.GetEnd(i), otherEdges.GetStart(j), otherEdges.GetEnd(j), t, contact)) {
            cuts.push_back({i, contact.onFirst});
        }
        return false;
    });
    std::sort(cuts.begin(), cuts.end(), [](const Cut& a, const Cut& b) {
        return a.edge < b.edge || (a.edge == b.edge && a.parameter < b.parameter);
    });
    relation.touches = !cuts.empty();

    bool isDecided = false;
    const auto examine = [&](const Point2D& p, double reach) {
        const RingSide side = FindRingSideByRay(other, p, reach);
        isDecided = side != RingSide::Border;
        if (side == RingSide::Inside && !relation.goesInside) {
            relation.goesInside = true;
            relation.inside = p;
        } else if (side == RingSide::Outside && !relation.goesOutside) {
            relation.goesOutside = true;
            relation.outside = p;
        }
        return relation.goesInside && relation.goesOutside;
    };
    if (cuts.empty()) examine(open.front(), 0.0);  // nothing is nearer than t: a border wider than that decides nothing
    for (std::size_t k = 0; k < cuts.size(); ++k) {
        const bool isLast = k + 1 == cuts.size();
        const Cut& from = cuts[k];
        const Cut& to = cuts[isLast ? 0 : k + 1];
        // The middle of the longest piece between the cuts stands for the stretch.
        double longest = 2.0 * t;
        Point2D middle;
        const auto offer = [&](std::size_t edge, double start, double end) {
            const Vec2D along = edges.GetEnd(edge) - edges.GetStart(edge);
            const double length = along.Length() * (end - start);
            if (!(length > longest)) return;
            longest = length;
            middle = edges.GetStart(edge) + along * (0.5 * (start + end));
        };
        std::size_t edge = from.edge;
        double start = from.parameter;
        const Point2D* corner = nullptr;
        if (isLast || edge != to.edge) {
            do {
                offer(edge, start, 1.0);
                edge = edge + 1 == open.size() ? 0 : edge + 1;
                start = 0.0;
                if (edge != to.edge || to.parameter > 0.0) corner = &open[edge];
            } while (edge != to.edge);
        }
        offer(edge, start, to.parameter);
        isDecided = false;
        if (longest > 2.0 * t && examine(middle, t)) break;
        if (!isDecided && corner != nullptr && examine(*corner, t)) break;
    }
    return relation;
}

}  // namespace Kalvio::Math::detail
