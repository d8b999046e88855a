#pragma once

#include "kalvio/core/OrientedBoundingBox2D.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/Constants.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace Kalvio::Math::detail {

/// Convex hull of the finite points relative to the first of them, counter-clockwise from the leftmost (of those the
/// lowest), without collinear points (A. M. Andrew, 1979). n log n.
inline std::vector<Vec2D> RelativeHull(const std::vector<Point2D>& points, Point2D& origin) {
    std::vector<Vec2D> sorted;
    for (const Point2D& point : points) {
        if (!std::isfinite(point.GetX()) || !std::isfinite(point.GetY())) continue;
        if (sorted.empty()) origin = point;
        sorted.push_back(point - origin);
    }
    std::sort(sorted.begin(), sorted.end(), [](const Vec2D& a, const Vec2D& b) {
        return a.GetX() < b.GetX() || (a.GetX() == b.GetX() && a.GetY() < b.GetY());
    });
    std::vector<Vec2D> hull;
    const auto add = [&hull](const Vec2D& p, std::size_t fixed) {
        while (hull.size() > fixed) {
            const Vec2D& before = hull[hull.size() - 2];
            if ((hull.back() - before).PerpDotProduct(p - before) > 0.0) break;
            hull.pop_back();
        }
        hull.push_back(p);
    };
    for (const Vec2D& p : sorted) add(p, 1);
    const std::size_t lower = hull.size();
    for (std::size_t i = sorted.size() > 1 ? sorted.size() - 1 : 0; i-- > 0;) add(sorted[i], lower);
    if (hull.size() > 1) hull.pop_back();
    return hull;
}

/// The rectangle of the smallest area around the points: one of its sides lies along an edge of the convex hull (H.
/// Freeman, R. Shapira, 1975), so the edges are tried in turn while the touching points move on around the hull.
inline OrientedBoundingBox2D SmallestBox(const std::vector<Point2D>& points) {
    Point2D origin;
    const std::vector<Vec2D> hull = RelativeHull(points, origin);
    if (hull.empty()) return {};
    OrientedBoundingBox2D box(origin + hull[0], Vec2D(), Vec2D(1.0, 0.0), Vec2D(0.0, 1.0));
    double smallest = std::numeric_limits<double>::infinity();
    std::size_t right = 0;
    std::size_t top = 0;
    std::size_t left = 0;
    for (std::size_t i = 0; i < hull.size(); ++i) {
        const auto at = [&hull](std::size_t k) -> const Vec2D& { return hull[k % hull.size()]; };
        Vec2D along = at(i + 1) - hull[i];
        const double length = along.Length();
        if (!(length > 0.0)) continue;
        along = along * (1.0 / length);
        const Vec2D across = along.GetNormalVector(true);
        const auto advance = [&](std::size_t& k, std::size_t from, const Vec2D& direction) {
            k = std::max(k, from);
            while (k < from + hull.size() && at(k + 1).DotProduct(direction) > at(k).DotProduct(direction)) ++k;
        };
        advance(right, i + 1, along);
        advance(top, right, across);
        advance(left, top, -along);
        const double low = at(left).DotProduct(along);
        const double high = at(right).DotProduct(along);
        const double base = hull[i].DotProduct(across);
        const double height = at(top).DotProduct(across) - base;
        if (!((high - low) * height < smallest)) continue;
        smallest = (high - low) * height;
        const Vec2D center = along * ((low + high) * 0.5) + across * (base + height * 0.5);
        box = OrientedBoundingBox2D(origin + center, Vec2D(high - low, height), along, across);
    }
    return box;
}

}  // namespace Kalvio::Math::detail
