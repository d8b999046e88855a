#include "kalvio/core/detail/StandardTolerances.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Spiral2D.h"
#include "kalvio/queries/Intersection.h"
#include "kalvio/queries/detail/ChainContacts.h"
#include "kalvio/queries/detail/ElementCrossings.h"

#include <algorithm>
#include <cmath>

// The intersections of `Intersection` that involve curves.
namespace Kalvio::Math {

namespace {

IntersectionResult AppendCrossings(const detail::CrossingOperand& a, const detail::CrossingOperand& b,
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

int CountCrossings(const detail::CrossingOperand& a, const detail::CrossingOperand& b, std::vector<Point2D>& out,
                   double tolerance) {
    const std::size_t before = out.size();
    AppendCrossings(a, b, out, detail::TolerancesFor(tolerance));
    return static_cast<int>(out.size() - before);
}

}  // namespace

IntersectionResult Intersection::LineArc(const Line2D& line, const Arc2D& arc, std::vector<Point2D>& out,
                                         const Tolerances& tolerances) {
    return AppendCrossings(detail::CrossingOperand::InfiniteLine(line), arc, out, tolerances);
}

int Intersection::LineArc(const Line2D& line, const Arc2D& arc, std::vector<Point2D>& out, double tolerance) {
    return CountCrossings(detail::CrossingOperand::InfiniteLine(line), arc, out, tolerance);
}

IntersectionResult Intersection::LineCircle(const Line2D& line, const Circle2D& circle, std::vector<Point2D>& out,
                                            const Tolerances& tolerances) {
    return AppendCrossings(detail::CrossingOperand::InfiniteLine(line), circle, out, tolerances);
}

int Intersection::LineCircle(const Line2D& line, const Circle2D& circle, std::vector<Point2D>& out, double tolerance) {
    return CountCrossings(detail::CrossingOperand::InfiniteLine(line), circle, out, tolerance);
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

IntersectionResult Intersection::LineClothoid(const Line2D& line, const Clothoid& clothoid, std::vector<Point2D>& out,
                                              const Tolerances& tolerances) {
    return AppendCrossings(detail::CrossingOperand::InfiniteLine(line), clothoid, out, tolerances);
}

int Intersection::LineClothoid(const Line2D& line, const Clothoid& clothoid, std::vector<Point2D>& out,
                               double tolerance) {
    return CountCrossings(detail::CrossingOperand::InfiniteLine(line), clothoid, out, tolerance);
}

IntersectionResult Intersection::LineSpiral(const Line2D& line, const Spiral2D& spiral, std::vector<Point2D>& out,
                                            const Tolerances& tolerances) {
    return AppendCrossings(detail::CrossingOperand::InfiniteLine(line), spiral, out, tolerances);
}

int Intersection::LineSpiral(const Line2D& line, const Spiral2D& spiral, std::vector<Point2D>& out, double tolerance) {
    return CountCrossings(detail::CrossingOperand::InfiniteLine(line), spiral, out, tolerance);
}

IntersectionResult Intersection::LineParabola(const Line2D& line, const Parabola& parabola, std::vector<Point2D>& out,
                                              const Tolerances& tolerances) {
    return AppendCrossings(detail::CrossingOperand::InfiniteLine(line), parabola, out, tolerances);
}

int Intersection::LineParabola(const Line2D& line, const Parabola& parabola, std::vector<Point2D>& out,
                               double tolerance) {
    return CountCrossings(detail::CrossingOperand::InfiniteLine(line), parabola, out, tolerance);
}

IntersectionResult Intersection::LineSegmentArc(const Line2D& segment, const Arc2D& arc, std::vector<Point2D>& out,
                                                const Tolerances& tolerances) {
    return AppendCrossings(segment, arc, out, tolerances);
}

int Intersection::LineSegmentArc(const Line2D& segment, const Arc2D& arc, std::vector<Point2D>& out, double tolerance) {
    return CountCrossings(segment, arc, out, tolerance);
}

IntersectionResult Intersection::LineSegmentCircle(const Line2D& segment, const Circle2D& circle,
                                                   std::vector<Point2D>& out, const Tolerances& tolerances) {
    return AppendCrossings(segment, circle, out, tolerances);
}

int Intersection::LineSegmentCircle(const Line2D& segment, const Circle2D& circle, std::vector<Point2D>& out,
                                    double tolerance) {
    return CountCrossings(segment, circle, out, tolerance);
}

IntersectionResult Intersection::LineSegmentClothoid(const Line2D& segment, const Clothoid& clothoid,
                                                     std::vector<Point2D>& out, const Tolerances& tolerances) {
    return AppendCrossings(segment, clothoid, out, tolerances);
}

int Intersection::LineSegmentClothoid(const Line2D& segment, const Clothoid& clothoid, std::vector<Point2D>& out,
                                      double tolerance) {
    return CountCrossings(segment, clothoid, out, tolerance);
}

IntersectionResult Intersection::LineSegmentSpiral(const Line2D& segment, const Spiral2D& spiral,
                                                   std::vector<Point2D>& out, const Tolerances& tolerances) {
    return AppendCrossings(segment, spiral, out, tolerances);
}

int Intersection::LineSegmentSpiral(const Line2D& segment, const Spiral2D& spiral, std::vector<Point2D>& out,
                                    double tolerance) {
    return CountCrossings(segment, spiral, out, tolerance);
}

IntersectionResult Intersection::LineSegmentParabola(const Line2D& segment, const Parabola& parabola,
                                                     std::vector<Point2D>& out, const Tolerances& tolerances) {
    return AppendCrossings(segment, parabola, out, tolerances);
}

int Intersection::LineSegmentParabola(const Line2D& segment, const Parabola& parabola, std::vector<Point2D>& out,
                                      double tolerance) {
    return CountCrossings(segment, parabola, out, tolerance);
}

IntersectionResult Intersection::ArcArc(const Arc2D& a, const Arc2D& b, std::vector<Point2D>& out,
                                        const Tolerances& tolerances) {
    return AppendCrossings(a, b, out, tolerances);
}

int Intersection::ArcArc(const Arc2D& a, const Arc2D& b, std::vector<Point2D>& out, double tolerance) {
    return CountCrossings(a, b, out, tolerance);
}

IntersectionResult Intersection::ArcCircle(const Arc2D& arc, const Circle2D& circle, std::vector<Point2D>& out,
                                           const Tolerances& tolerances) {
    return AppendCrossings(arc, circle, out, tolerances);
}

int Intersection::ArcCircle(const Arc2D& arc, const Circle2D& circle, std::vector<Point2D>& out, double tolerance) {
    return CountCrossings(arc, circle, out, tolerance);
}

IntersectionResult Intersection::ArcClothoid(const Arc2D& arc, const Clothoid& clothoid, std::vector<Point2D>& out,
                                             const Tolerances& tolerances) {
    return AppendCrossings(arc, clothoid, out, tolerances);
}

int Intersection::ArcClothoid(const Arc2D& arc, const Clothoid& clothoid, std::vector<Point2D>& out, double tolerance) {
    return CountCrossings(arc, clothoid, out, tolerance);
}

IntersectionResult Intersection::ArcSpiral(const Arc2D& arc, const Spiral2D& spiral, std::vector<Point2D>& out,
                                           const Tolerances& tolerances) {
    return AppendCrossings(arc, spiral, out, tolerances);
}

int Intersection::ArcSpiral(const Arc2D& arc, const Spiral2D& spiral, std::vector<Point2D>& out, double tolerance) {
    return CountCrossings(arc, spiral, out, tolerance);
}

IntersectionResult Intersection::ArcParabola(const Arc2D& arc, const Parabola& parabola, std::vector<Point2D>& out,
                                             const Tolerances& tolerances) {
    return AppendCrossings(arc, parabola, out, tolerances);
}

int Intersection::ArcParabola(const Arc2D& arc, const Parabola& parabola, std::vector<Point2D>& out, double tolerance) {
    return CountCrossings(arc, parabola, out, tolerance);
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
    const double along = (r0 * r0 - r1 * r1 + distance * distance) / (2.0 * distance);
    // r0^2 - along^2, taken apart so that circles as far apart as their radii add up to have none of it.
    const double squared = ((r0 + r1) - distance) * ((distance + (r1 - r0)) / (2.0 * distance)) *
                           (((r0 + r1) + distance) * ((distance + (r0 - r1)) / (2.0 * distance)));
    const double half = std::sqrt(std::abs(squared));
    const Vec2D ahead = centers / distance;
    const Vec2D right = ahead.GetNormalVector(false);
    out.push_back(a.GetCenter() + (ahead * along + right * half));
    if (!(epsilon > half)) out.push_back(a.GetCenter() + (ahead * along - right * half));
    return IntersectionResult::Intersecting;
}

int Intersection::CircleCircle(const Circle2D& a, const Circle2D& b, std::vector<Point2D>& out, double tolerance) {
    const std::size_t before = out.size();
    CircleCircle(a, b, out, detail::TolerancesFor(tolerance));
    return static_cast<int>(out.size() - before);
}

IntersectionResult Intersection::CircleClothoid(const Circle2D& circle, const Clothoid& clothoid,
                                                std::vector<Point2D>& out, const Tolerances& tolerances) {
    return AppendCrossings(circle, clothoid, out, tolerances);
}

int Intersection::CircleClothoid(const Circle2D& circle, const Clothoid& clothoid, std::vector<Point2D>& out,
                                 double tolerance) {
    return CountCrossings(circle, clothoid, out, tolerance);
}

IntersectionResult Intersection::CircleSpiral(const Circle2D& circle, const Spiral2D& spiral, std::vector<Point2D>& out,
                                              const Tolerances& tolerances) {
    return AppendCrossings(circle, spiral, out, tolerances);
}

int Intersection::CircleSpiral(const Circle2D& circle, const Spiral2D& spiral, std::vector<Point2D>& out,
                               double tolerance) {
    return CountCrossings(circle, spiral, out, tolerance);
}

IntersectionResult Intersection::CircleParabola(const Circle2D& circle, const Parabola& parabola,
                                                std::vector<Point2D>& out, const Tolerances& tolerances) {
    return AppendCrossings(circle, parabola, out, tolerances);
}

int Intersection::CircleParabola(const Circle2D& circle, const Parabola& parabola, std::vector<Point2D>& out,
                                 double tolerance) {
    return CountCrossings(circle, parabola, out, tolerance);
}

IntersectionResult Intersection::ClothoidClothoid(const Clothoid& a, const Clothoid& b, std::vector<Point2D>& out,
                                                  const Tolerances& tolerances) {
    return AppendCrossings(a, b, out, tolerances);
}

int Intersection::ClothoidClothoid(const Clothoid& a, const Clothoid& b, std::vector<Point2D>& out, double tolerance) {
    return CountCrossings(a, b, out, tolerance);
}

IntersectionResult Intersection::ClothoidParabola(const Clothoid& clothoid, const Parabola& parabola,
                                                  std::vector<Point2D>& out, const Tolerances& tolerances) {
    return AppendCrossings(clothoid, parabola, out, tolerances);
}

int Intersection::ClothoidParabola(const Clothoid& clothoid, const Parabola& parabola, std::vector<Point2D>& out,
                                   double tolerance) {
    return CountCrossings(clothoid, parabola, out, tolerance);
}

IntersectionResult Intersection::SpiralClothoid(const Spiral2D& spiral, const Clothoid& clothoid,
                                                std::vector<Point2D>& out, const Tolerances& tolerances) {
    return AppendCrossings(spiral, clothoid, out, tolerances);
}

int Intersection::SpiralClothoid(const Spiral2D& spiral, const Clothoid& clothoid, std::vector<Point2D>& out,
                                 double tolerance) {
    return CountCrossings(spiral, clothoid, out, tolerance);
}

IntersectionResult Intersection::SpiralSpiral(const Spiral2D& a, const Spiral2D& b, std::vector<Point2D>& out,
                                              const Tolerances& tolerances) {
    return AppendCrossings(a, b, out, tolerances);
}

int Intersection::SpiralSpiral(const Spiral2D& a, const Spiral2D& b, std::vector<Point2D>& out, double tolerance) {
    return CountCrossings(a, b, out, tolerance);
}

IntersectionResult Intersection::SpiralParabola(const Spiral2D& spiral, const Parabola& parabola,
                                                std::vector<Point2D>& out, const Tolerances& tolerances) {
    return AppendCrossings(spiral, parabola, out, tolerances);
}

int Intersection::SpiralParabola(const Spiral2D& spiral, const Parabola& parabola, std::vector<Point2D>& out,
                                 double tolerance) {
    return CountCrossings(spiral, parabola, out, tolerance);
}

IntersectionResult Intersection::ParabolaParabola(const Parabola& a, const Parabola& b, std::vector<Point2D>& out,
                                                  const Tolerances& tolerances) {
    return AppendCrossings(a, b, out, tolerances);
}

int Intersection::ParabolaParabola(const Parabola& a, const Parabola& b, std::vector<Point2D>& out, double tolerance) {
    return CountCrossings(a, b, out, tolerance);
}

}  // namespace Kalvio::Math
