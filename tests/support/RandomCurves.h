#pragma once

#include "kalvio/Math.h"
#include "support/Testing.h"

#include <variant>

namespace Kalvio::Math {

using Curve = std::variant<Line2D, Arc2D, Clothoid, Spiral2D, Parabola>;

inline constexpr int kKinds = 5;

inline const IPolyline2DElement& ElementOf(const Curve& curve) {
    return std::visit([](const auto& known) -> const IPolyline2DElement& { return known; }, curve);
}

inline bool IsMade(const IPolyline2DElement& element) {
    return element.IsPointOnGeometry(element.GetStart(), kTolerances);
}

/// A chain of copies of the elements.
template <class Chain = Polyline2D, class... Elements>
Chain ChainOf(const Elements&... elements) {
    Chain chain;
    (chain.AppendElement(elements), ...);
    return chain;
}

/// A curve of a kind, 0 to 4 as in the variant, some 100 long, that starts near the origin.
inline Curve RandomCurve(RandomNumbers& random, int kind, const Point2D& origin) {
    const Point2D start = origin + Vec2D(random(-30, 30), random(-30, 30));
    const Vec2D tangent = Point2D(Angle(random(-kPi, kPi)), 1.0) - Point2D();
    const double side = random(-1, 1) < 0.0 ? -1.0 : 1.0;
    const double radius = side * random(25, 300), length = random(20, 150);
    switch (kind) {
        case 0:
            return Line2D(start, tangent * length);
        case 1:
            return Arc2D(start, start + tangent * std::abs(radius),
                         Angle(random(0, 1) < 0.1 ? 2 * kPi : side * random(0.1, 6.2)));
        case 2: {
            const double parameter = std::sqrt(std::abs(radius) * std::min(length, 2.0 * std::abs(radius)));
            const double other = random(0, 1) < 0.5 ? 0.0 : radius * random(1.5, 5);
            const bool grows = random(0, 1) < 0.5;
            return Clothoid(grows ? other : radius, grows ? radius : other, parameter, start, tangent);
        }
        case 3: {
            const auto type = static_cast<Spiral2D::Spiral2DType>(static_cast<std::uint32_t>(random(0, 5)));
            const double other = random(-1, 1) < 0.0 ? 0.0 : std::copysign(random(25, 200), random(-1, 1));
            return Spiral2D(type, other, radius, 1.5 * length, start, tangent);
        }
        default: {
            const double a = random(-0.03, 0.03), middle = start.GetX() + random(-50, 50);
            const double from = start.GetX(), to = from + side * length, b = -2 * a * middle, c = a * middle * middle;
            const auto at = [&](double x) { return Point2D(x, (a * x + b) * x + c); };
            return Parabola(at(from), at(to), a, b, c).Translate(Vec2D(0, start.GetY()));
        }
    }
}

/// A chain of lines, clothoids, arcs and line strings in turn, each of which goes on in the direction of the one
/// before.
inline Polyline2D RandomRoad(RandomNumbers& random, int count, Point2D at) {
    Polyline2D road;
    Vec2D along = Point2D(Angle(random(-kPi, kPi)), 1.0) - Point2D();
    for (int i = 0; i < count; ++i) {
        const double radius = std::copysign(random(30, 200), random(-1, 1)),
                     sweep = random(0.2, i % 10 < 5 ? 4.0 : 1.0);
        const Vec2D left = along.GetNormalVector(true);
        const Point2D ahead = at + along * random(10, 60);
        if (i % 5 == 0) road.AppendElement(Line2D(at, ahead));
        if (i % 5 == 1) road.AppendElement(Clothoid(0.0, radius, std::abs(radius) * 0.6, at, along));
        if (i % 5 == 2) road.AppendElement(Arc2D(at, at + left * radius, Angle(std::copysign(sweep, radius))));
        if (i % 5 == 3) road.AppendElement(LineString2D{at, ahead, ahead + along * 10 + left * 7});
        if (i % 5 == 4) road.AppendElement(Clothoid(radius, 0.0, std::abs(radius) * 0.6, at, along));
        at = road.GetEnd();
        Polyline2D::PolylinePoint end;
        if (road.MakePointAndTangentAt(road.GetLength(), end)) along = end.tangent;
    }
    return road;
}

}  // namespace Kalvio::Math
