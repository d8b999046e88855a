#pragma once

#include "kalvio/polygons/Polygon2D.h"

#include <cmath>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace Kalvio::Math {

/// A polygon from its coordinates, "x y x y ... / x y ...": the outer ring, then the holes.
inline Polygon2D MakePolygon(const std::string& coordinates) {
    std::istringstream rings(coordinates);
    std::vector<LineString2D> made;
    for (std::string ring; std::getline(rings, ring, '/');) {
        made.emplace_back();
        std::istringstream numbers(ring);
        for (double x, y; numbers >> x >> y;) made.back().AppendPoint(Point2D(x, y));
    }
    Polygon2D polygon(made.empty() ? LineString2D() : made.front());
    for (std::size_t i = 1; i < made.size(); ++i) polygon.AppendHoleBoundary(made[i]);
    return polygon;
}

/// Simple ring of `count` points at random distances of at most `radius` around the center, counter-clockwise.
template <class Random>
std::vector<Point2D> RandomStar(Random& random, const Point2D& center, double radius, int count) {
    std::uniform_real_distribution<double> distance(0.2 * radius, radius);
    std::vector<Point2D> ring;
    for (int i = 0; i < count; ++i) {
        ring.push_back(center + (Point2D(Angle(6.283185307179586 * i / count), distance(random)) - Point2D()));
    }
    return ring;
}

}  // namespace Kalvio::Math
