#pragma once

#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Spiral2D.h"
#include "kalvio/polygons/LineString2D.h"

#include "fuzz/Bytes.h"

#include <cmath>
#include <memory>

namespace Kalvio::Math {

/// An element of an alignment of any type, valid or not.
inline std::unique_ptr<IPolyline2DElement> TakeElement(Bytes& bytes) {
    const Point2D a = bytes.TakePoint();
    const Point2D b = bytes.TakePoint();
    const double first = bytes.TakeDouble();
    const double second = bytes.TakeDouble();
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
        case 5: {
            const auto type = static_cast<Spiral2D::Spiral2DType>(bytes.TakeCount(7));
            return std::make_unique<Spiral2D>(type, first, second, b.GetX(), a, tangent);
        }
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

}  // namespace Kalvio::Math
