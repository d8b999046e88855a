#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/PointOnLine.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace Kalvio::Math::detail {

/// What a chain of points has in common with an infinite line.
struct LineCrossings {
    std::vector<Point2D> points;  // in the order of the chain, not merged; of a run along the line its outermost ones
    bool isOnLine = false;        // every vertex lies on the line
};

/// Crosses the chain with the line a -> b, which has a length. Vertices within |tolerance| of the line lie on it; of
/// the vertices in a row that do, only those no nearer than the tolerance to the outermost two in each coordinate stay.
inline LineCrossings CrossLine(const std::vector<Point2D>& points, const Point2D& a, const Point2D& b,
                               double tolerance) {
    LineCrossings crossings;
    const Vec2D along = b - a;
    const double reach = std::abs(tolerance);
    std::vector<Point2D> run;
    const auto endRun = [&] {
        if (run.size() > 2) {
            const auto isBefore = [&](const Point2D& p, const Point2D& q) { return (q - p).DotProduct(along) > 0.0; };
            const auto [lowest, highest] = std::minmax_element(run.begin(), run.end(), isBefore);
            const Point2D low = *lowest;
            const Point2D high = *highest;
            std::erase_if(run, [&](const Point2D& p) {
                return IsPointOnSegment(p, low, high, reach) && !p.IsEqualTo(low, reach) && !p.IsEqualTo(high, reach);
            });
        }
        crossings.points.insert(crossings.points.end(), run.begin(), run.end());
        run.clear();
    };
    std::size_t countOn = 0;
    double from = 0.0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const double to = SignedDistanceToLine(points[i], a, b);
        const bool wasOn = i == 0 || std::abs(from) <= reach;
        if (std::abs(to) <= reach) {
            run.push_back(points[i]);
            ++countOn;
        } else {
            endRun();
            if (!wasOn && ((from < 0.0 && to > 0.0) || (from > 0.0 && to < 0.0))) {
                crossings.points.push_back(points[i - 1] + (points[i] - points[i - 1]) * (from / (from - to)));
            }
        }
        from = to;
    }
    endRun();
    crossings.isOnLine = countOn == points.size();
    return crossings;
}

}  // namespace Kalvio::Math::detail
