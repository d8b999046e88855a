#include "kalvio/core/Geometry.h"

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point2DM.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/polygons/Polygon2D.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <list>
#include <vector>

namespace Kalvio::Math {

namespace {

// Graham scan over points whose measure is free to hold the polar angle about the pivot.
void GrahamScan(std::vector<Point2DM> points, Polygon2D& hull) {
    std::erase_if(points, [](const Point2DM& p) { return !std::isfinite(p.GetX()) || !std::isfinite(p.GetY()); });
    hull.Clear();
    if (points.empty()) return;

    const auto isBefore = [](const Point2DM& a, const Point2DM& b) {
        return std::abs(a.GetY() - b.GetY()) < detail::numericalZero ? a.GetX() < b.GetX() : a.GetY() < b.GetY();
    };
    std::size_t lowest = 0;
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (isBefore(points[i], points[lowest])) lowest = i;
    }
    std::swap(points.front(), points[lowest]);
    const Point2DM pivot = points.front();

    for (Point2DM& p : points) p.SetM(std::atan2(p.GetY() - pivot.GetY(), p.GetX() - pivot.GetX()));
    std::sort(points.begin() + 1, points.end(),
              [](const Point2DM& a, const Point2DM& b) { return a.GetM() < b.GetM(); });

    // Of points in one direction from the pivot the farthest stays; copies of the pivot go.
    std::vector<Point2DM> directions;
    for (std::size_t i = 1; i < points.size(); ++i) {
        const Point2DM& p = points[i];
        const double distance = p.Distance(pivot);
        if (distance < detail::numericalZero) continue;
        if (directions.empty() || !(std::abs(p.GetM() - directions.back().GetM()) < detail::numericalZero)) {
            directions.push_back(p);
        } else if (directions.back().Distance(pivot) < distance) {
            directions.back() = p;
        }
    }

    std::vector<Point2D> stack{Point2D(pivot.GetX(), pivot.GetY())};
    for (const Point2DM& p : directions) {
        const Point2D next(p.GetX(), p.GetY());
        while (stack.size() > 1 && !detail::ArePointsCCW(stack[stack.size() - 2], stack.back(), next)) {
            stack.pop_back();
        }
        stack.push_back(next);
    }
    hull.AppendPoints(stack);
}

template <class Points>
std::vector<Point2DM> WithMeasure(const Points& points) {
    std::vector<Point2DM> result;
    result.reserve(points.size());
    for (const Point2D& p : points) result.emplace_back(p.GetX(), p.GetY(), 0.0);
    return result;
}

}  // namespace

void Geometry::ConvexHull(const std::vector<Point2D>& points, Polygon2D& hull) {
    GrahamScan(WithMeasure(points), hull);
}

void Geometry::ConvexHull(const std::list<Point2D>& points, Polygon2D& hull) { GrahamScan(WithMeasure(points), hull); }

void Geometry::ConvexHull(std::vector<Point2DM>& points, Polygon2D& hull) { GrahamScan(points, hull); }

}  // namespace Kalvio::Math
