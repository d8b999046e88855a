#pragma once

#include "fuzz/Bytes.h"

namespace Kalvio::Math {

inline constexpr double tolerance = 1e-4;
inline const Tolerances tolerances(tolerance, 1e-10);

/// Stations, nearest points, boxes and reversal of an element in plan or in space; tame ones are good to the rounding.
template <class Point>
void CheckElement(const auto& element, const Point& p, const auto& box, double rounding, bool tame) {
    const double length = element.GetLength();
    const Point nearest = element.GetNearestPoint(p, tolerances);
    const std::unique_ptr<IGeometry> reversed(element.CloneAsReverse());
    See(std::vector{nearest, element.GetStart(), element.GetEnd(), Point(box.GetMinPoint()), Point(box.GetMaxPoint())});
    for (const Point& q : {p, nearest, element.GetStart(), element.GetEnd()}) {
        double station = -1.0;
        const bool found = element.GetLengthFromStartPoint(q, station, tolerance);
        See(station);
        if (tame && found) Require(station >= -tolerance && station <= length + tolerance);
    }
    if (!tame) return;
    Require(std::isfinite(length) && length >= 0.0);
    RequireNear(reversed->GetLength(), length, rounding * (1.0 + length));
    for (const Point& end : {element.GetStart(), element.GetEnd()}) {
        Require(p.Distance(nearest) <= p.Distance(end) + rounding);
        for (int axis = 0; axis < (std::is_same_v<Point, Point2D> ? 2 : 3); ++axis) {
            Require(end[axis] >= box.GetMinPoint()[axis] - 0.005 - rounding);
            Require(end[axis] <= box.GetMaxPoint()[axis] + 0.005 + rounding);
        }
    }
}

/// An element of an alignment of any type, valid or not.
inline std::unique_ptr<IPolyline2DElement> TakeElement(Bytes& bytes) {
    const Point2D a = bytes.TakePoint(), b = bytes.TakePoint();
    const double first = bytes.TakeDouble(), second = bytes.TakeDouble();
    const Vec2D tangent(b.GetY(), 1.0, 1.0);
    switch (bytes.TakeCount(8)) {
        case 0:
            return std::make_unique<Line2D>(a, b);
        case 1:
            return std::make_unique<Arc2D>(a, b, Angle(first));
        case 2:
            return std::make_unique<Arc2D>(a, first, b);
        case 3:
            return std::make_unique<Clothoid>(first, second, b.GetX(), a, tangent);
        case 4:
        case 5:
            return std::make_unique<Spiral2D>(bytes.TakeOne<Spiral2D::Spiral2DType>(8), first, second, b.GetX(), a,
                                              tangent);
        case 6: {
            const double slope = second - (a.GetX() + b.GetX()) * first / 64.0;
            const Parabola curve(first / 64.0, slope, a.GetY());
            const auto on = [&curve](double x) { return Point2D(x, curve.Evaluate(x)); };
            return std::make_unique<Parabola>(on(a.GetX()), on(b.GetX()), first / 64.0, slope, a.GetY());
        }
        default:
            return std::make_unique<LineString2D>(LineString2D{a, b, Point2D(first, second), bytes.TakePoint()});
    }
}

/// Of tame bytes: whether the values make a curve, of a size at which coordinates are good to a micrometre. Radii of
/// opposite sign are no clothoid, and beyond tau = 2 its series ends.
inline bool HasLaws(const IPolyline2DElement& element) {
    const double length = element.GetLength();
    const double extent = std::abs(element.GetStart().GetX()) + std::abs(element.GetStart().GetY()) +
                          std::abs(element.GetEnd().GetX()) + std::abs(element.GetEnd().GetY());
    if (!(length >= 0.0 && length < 1e5 && extent < 1e6)) return false;
    if (element.GetType() != MathTypes::Clothoid) return true;
    const auto& clothoid = static_cast<const Clothoid&>(element);
    const double a = clothoid.GetParameter();
    const auto tau = [a](double radius) { return Clothoid::ComputeTauFromRadius(radius, a, 1e-10); };
    return a > 0.0 && clothoid.GetStartRadius() * clothoid.GetEndRadius() >= 0.0 &&
           tau(clothoid.GetStartRadius()) <= 2.0 && tau(clothoid.GetEndRadius()) <= 2.0;
}

/// A chain of at most so many elements, after `visit(element, tame)` of each; tame while all of them have laws.
template <class Visit>
std::pair<Polyline2D, bool> TakeChain(Bytes& bytes, unsigned int most, Visit&& visit) {
    Polyline2D chain;
    bool tame = bytes.Tame();
    while (!bytes.Empty() && chain.GetSize() < most) {
        std::unique_ptr<IPolyline2DElement> element = TakeElement(bytes);
        tame = tame && HasLaws(*element);
        visit(*element, tame);
        (void)chain.AppendElement(std::move(element));
    }
    return {std::move(chain), tame};
}

}  // namespace Kalvio::Math
