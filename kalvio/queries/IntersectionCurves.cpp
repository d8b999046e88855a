#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/detail/Stations.h"
#include "kalvio/queries/Intersection.h"
#include "kalvio/queries/detail/ChainContacts.h"
#include "kalvio/queries/detail/CountAppended.h"
#include "kalvio/queries/detail/ElementCrossings.h"

#include <algorithm>
#include <cmath>

// The intersections of `Intersection` that involve single curves.
namespace Kalvio::Math {

IntersectionResult Intersection::Meet(const detail::CrossingOperand& a, const detail::CrossingOperand& b,
                                      std::vector<Point2D>& out, const Tolerances& tolerances) {
    std::vector<detail::ElementCrossing> crossings;
    std::vector<detail::ElementOverlap> overlaps;
    const IntersectionResult result = detail::CrossElements(a, b, tolerances, crossings, overlaps);
    const auto isolated = static_cast<std::ptrdiff_t>(crossings.size());
    for (const detail::ElementOverlap& overlap : overlaps) {
        crossings.push_back(overlap.from);
        if (!overlap.isAllAround) crossings.push_back(overlap.to);
    }
    const auto isBefore = [](const detail::ElementCrossing& p, const detail::ElementCrossing& q) {
        return p.onFirst < q.onFirst;
    };
    std::inplace_merge(crossings.begin(), crossings.begin() + isolated, crossings.end(), isBefore);
    // A point that a curve passes twice, where it closes or crosses itself, is one.
    std::vector<Point2D> points;
    for (const detail::ElementCrossing& crossing : crossings) points.push_back(crossing.point);
    detail::AppendDistinct(points, out, out.size(), detail::NearnessOf(tolerances));
    return result;
}

int Intersection::Meet(const detail::CrossingOperand& a, const detail::CrossingOperand& b, std::vector<Point2D>& out,
                       double tolerance) {
    return detail::CountAppended(out, tolerance, [&](const Tolerances& t) { Meet(a, b, out, t); });
}

// Weisstein, "Circle-Line Intersection", MathWorld.
int Intersection::LineCircle(const Line2D& line, const Circle2D& circle, Point2D& p1, Point2D& p2, double tolerance) {
    const Vec2D d = line.GetEnd() - line.GetStart();
    const Vec2D first = line.GetStart() - circle.GetCenter();
    const Vec2D second = first + d;
    const double squared = d.NormSquared();
    const double cross = first.PerpDotProduct(second);
    double discriminant = circle.GetRadius() * circle.GetRadius() * squared - cross * cross;
    if (!(squared > 0.0) || !std::isfinite(discriminant)) return 0;
    if (discriminant < 0.0) {
        if (std::abs(discriminant) > tolerance) return 0;
        discriminant = 0.0;
    }
    const double root = std::sqrt(discriminant);
    const double sign = d.GetY() > 0.0 ? 1.0 : -1.0;
    const Vec2D foot(cross * d.GetY(), -cross * d.GetX());
    const Vec2D half(sign * d.GetX() * root, std::abs(d.GetY()) * root);
    p1 = circle.GetCenter() + (foot + half) / squared;
    p2 = circle.GetCenter() + (foot - half) / squared;
    return tolerance > std::abs(discriminant) ? 1 : 2;
}

IntersectionResult Intersection::CircleCircle(const Circle2D& a, const Circle2D& b, std::vector<Point2D>& out,
                                              const Tolerances& tolerances) {
    const double epsilon = tolerances.SystemEpsilon();
    const double r0 = a.GetRadius();
    const double r1 = b.GetRadius();
    const Vec2D centers = b.GetCenter() - a.GetCenter();
    const double distance = centers.Length();
    if (!(r0 >= epsilon) || !(r1 >= epsilon)) return IntersectionResult::Degenerate;
    const double difference = std::abs(r0 - r1);
    const bool areSame = distance == 0.0 && difference == 0.0;  // whatever the epsilon
    if (areSame || (epsilon > distance && epsilon > difference)) return IntersectionResult::Coincident;
    if (!(distance <= r0 + r1) || !(difference <= distance)) return IntersectionResult::NoIntersection;
    // The squares are taken apart: circles that are nearly the same keep their digits, and those as far apart as their
    // radii add up have nothing of r0^2 - along^2.
    const double along = ((r0 - r1) * (r0 + r1) + distance * distance) / (2.0 * distance);
    const double squared = ((r0 + r1) - distance) * ((distance + (r1 - r0)) / (2.0 * distance)) *
                           (((r0 + r1) + distance) * ((distance + (r0 - r1)) / (2.0 * distance)));
    const double half = std::sqrt(std::abs(squared));
    const Vec2D ahead = centers / distance;
    const Vec2D right = ahead.GetNormalVector(false);
    Point2D points[2];
    if (!detail::Store(a.GetCenter() + (ahead * along + right * half), points[0]) ||
        !detail::Store(a.GetCenter() + (ahead * along - right * half), points[1])) {
        return IntersectionResult::NoIntersection;
    }
    out.insert(out.end(), points, points + (epsilon > half ? 1 : 2));
    return IntersectionResult::Intersecting;
}

int Intersection::CircleCircle(const Circle2D& a, const Circle2D& b, std::vector<Point2D>& out, double tolerance) {
    return detail::CountAppended(out, tolerance, [&](const Tolerances& t) { CircleCircle(a, b, out, t); });
}

}  // namespace Kalvio::Math
