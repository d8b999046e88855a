#pragma once

#include "kalvio/core/OrientedBoundingBox2D.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/polygons/detail/ExactPredicates.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace Kalvio::Math::detail {

/// Convex hull of the finite points relative to the first of them, counter-clockwise from the leftmost (of those the
/// lowest), without collinear points (A. M. Andrew, 1979). Its turns are exact, so that points on sides leave it
/// convex, and corners that only the last digits tell apart are one. n log n.
inline std::vector<Vec2D> RelativeHull(const std::vector<Point2D>& points, Point2D& origin) {
    std::vector<Vec2D> sorted;
    for (const Point2D& point : points) {
        if (!std::isfinite(point.GetX()) || !std::isfinite(point.GetY())) continue;
        if (sorted.empty()) origin = point;
        // Their products would leave the range of exact arithmetic.
        const auto flushed = [](double difference) { return std::abs(difference) < 1e-150 ? 0.0 : difference; };
        sorted.emplace_back(flushed(point.GetX() - origin.GetX()), flushed(point.GetY() - origin.GetY()));
    }
    std::sort(sorted.begin(), sorted.end(), [](const Vec2D& a, const Vec2D& b) {
        return a.GetX() < b.GetX() || (a.GetX() == b.GetX() && a.GetY() < b.GetY());
    });
    std::vector<Vec2D> hull;
    const auto add = [&hull](const Vec2D& p, std::size_t fixed) {
        const auto at = [](const Vec2D& v) { return PlanePoint{v.GetX(), v.GetY()}; };
        while (hull.size() > fixed && !(ExactTurn(at(hull[hull.size() - 2]), at(hull.back()), at(p)) > 0.0)) {
            hull.pop_back();
        }
        hull.push_back(p);
    };
    for (const Vec2D& p : sorted) add(p, 1);
    const std::size_t lower = hull.size();
    for (std::size_t i = sorted.size() > 1 ? sorted.size() - 1 : 0; i-- > 0;) add(sorted[i], lower);
    double extent = 0.0;
    for (const Vec2D& p : hull) extent = (std::max)(extent, p.Length());
    const double rounding = 16.0 * std::numeric_limits<double>::epsilon() * extent;
    std::size_t kept = 0;
    for (const Vec2D& p : hull) {  // the last one is the first again
        if (kept == 0 || (p - hull[kept - 1]).Length() > rounding) hull[kept++] = p;
    }
    if (kept > 1 && (hull[kept - 1] - hull[0]).Length() <= rounding) --kept;
    hull.resize(kept);
    return hull;
}

/// Calipers around a convex hull (M. I. Shamos, 1978): the corners that touch as a direction turns once round.
class Calipers {
public:
    explicit Calipers(const std::vector<Vec2D>& convexHull) : hull(convexHull) {}

    /// Counted on beyond the last corner.
    const Vec2D& At(std::size_t corner) const { return hull[corner % hull.size()]; }
    Vec2D Edge(std::size_t corner) const { return At(corner + 1) - At(corner); }

    /// Moves a corner on, from `first` at the earliest, to the one farthest in the direction, while the edges run that
    /// way. They decide, not the corners: of those, rounding makes two equally far.
    void Advance(std::size_t& corner, std::size_t first, const Vec2D& direction) const {
        corner = (std::max)(corner, first);
        while (corner < first + hull.size() && Edge(corner).DotProduct(direction) > 0.0) ++corner;
    }

private:
    const std::vector<Vec2D>& hull;
};

/// The smallest width of the points over all directions: across an edge of the convex hull. 0 for points on one line.
inline double SmallestWidth(const std::vector<Point2D>& points) {
    Point2D origin;
    const std::vector<Vec2D> hull = RelativeHull(points, origin);
    if (hull.size() < 3) return 0.0;
    const Calipers calipers(hull);
    double narrowest = std::numeric_limits<double>::infinity();
    std::size_t right = 0;
    std::size_t far = 0;
    for (std::size_t i = 0; i < hull.size(); ++i) {
        const Vec2D side = calipers.Edge(i);
        calipers.Advance(right, i + 1, side);
        calipers.Advance(far, right, side.GetNormalVector(true));
        narrowest = (std::min)(narrowest, side.PerpDotProduct(calipers.At(far) - hull[i]) / side.Length());
    }
    return std::isfinite(narrowest) ? narrowest : 0.0;
}

/// The rectangle of the smallest area around the points: one of its sides lies along an edge of the convex hull (H.
/// Freeman, R. Shapira, 1975), so the edges are tried in turn while the touching points move on around the hull.
inline OrientedBoundingBox2D SmallestBox(const std::vector<Point2D>& points) {
    Point2D origin;
    const std::vector<Vec2D> hull = RelativeHull(points, origin);
    if (hull.empty()) return {};
    const Calipers calipers(hull);
    OrientedBoundingBox2D box(origin + hull[0], Vec2D(), Vec2D(1.0, 0.0), Vec2D(0.0, 1.0));
    double smallest = std::numeric_limits<double>::infinity();
    std::size_t right = 0;
    std::size_t top = 0;
    std::size_t left = 0;
    for (std::size_t i = 0; i < hull.size(); ++i) {
        Vec2D along = calipers.Edge(i);
        const double length = along.Length();
        if (!(length > 0.0)) continue;
        along = along * (1.0 / length);
        const Vec2D across = along.GetNormalVector(true);
        calipers.Advance(right, i + 1, along);
        calipers.Advance(top, right, across);
        calipers.Advance(left, top, -along);
        const double low = calipers.At(left).DotProduct(along);
        const double high = calipers.At(right).DotProduct(along);
        const double base = hull[i].DotProduct(across);
        const double height = calipers.At(top).DotProduct(across) - base;
        if (!((high - low) * height < smallest)) continue;
        smallest = (high - low) * height;
        const Vec2D center = along * ((low + high) * 0.5) + across * (base + height * 0.5);
        box = OrientedBoundingBox2D(origin + center, Vec2D(high - low, height), along, across);
    }
    return box;
}

}  // namespace Kalvio::Math::detail
