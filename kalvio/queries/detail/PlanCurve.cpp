#include "kalvio/queries/detail/PlanCurve.h"

#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/queries/detail/ElementCrossings.h"

#include <algorithm>
#include <cmath>

namespace Kalvio::Math::detail {

PlanState RoundCurve::At(double p) const {
    const double angle = p * curvature;
    const double sine = std::sin(angle);
    const double half = std::sin(0.5 * angle);
    const double versine = 2.0 * half * half;
    const Vec2D side = radial.GetNormalVector(true);
    return {start + (side * sine - radial * versine), (side * (1.0 - versine) - radial * sine) * curvature};
}

double RoundCurve::ParameterOf(const Vec2D& point, double length) const {
    const Vec2D step = point - start;  // keeps the accuracy of flat arcs
    const double p = std::atan2(radial.PerpDotProduct(step), radial.DotProduct(radial + step)) / curvature;
    const double perimeter = twoPi * GetRadius();
    const double ahead = p < 0.0 ? p + perimeter : p;
    return ahead - length > perimeter - ahead ? ahead - perimeter : ahead;
}

PlanState ClothoidCurve::At(double p) const {
    PlanState at;
    (void)clothoid->MakeOffsetAndTangentAt(p, at.position, at.velocity);
    at.position += start;
    return at;
}

PlanState SpiralCurve::At(double p) const {
    PlanState at;
    (void)spiral->MakeOffsetAndTangentAt(p, at.position, at.velocity);
    at.position += start;
    return at;
}

PlanState ParabolaCurve::At(double p) const {
    const double run = sign * p;
    return {start + Vec2D(run, (slope + quadratic * run) * run), Vec2D(sign, sign * GetSlope(p))};
}

double ParabolaCurve::GetCurvature(double p) const {
    const double u = GetSlope(p);
    const double secant = std::sqrt(1.0 + u * u);
    return sign * 2.0 * quadratic / (secant * secant * secant);
}

std::optional<PlanCurve> PlanCurve::Make(const CrossingOperand& operand, const Point2D& origin) {
    PlanCurve made;
    made.to = operand.GetLength();
    made.isInfinite = operand.IsInfinite();
    if (const Circle2D* const circle = operand.GetCircle()) {
        const double radius = std::abs(circle->GetRadius());
        const Vec2D radial(radius, 0.0);
        made.curve = RoundCurve{(circle->GetCenter() - origin) + radial, radial, 1.0 / radius};
        made.isClosed = true;
    } else if (!made.SetCurve(*operand.GetElement(), operand.GetElement()->GetStart() - origin)) {
        return std::nullopt;
    }
    const Vec2D first = made.At(made.from).position;
    const Vec2D last = made.At(made.to).position;
    if (!std::isfinite((first - last).NormSquared())) return std::nullopt;
    made.discCenter = (first + last) * 0.5;
    made.discRadius = 0.5 * operand.GetLength();
    return made;
}

bool PlanCurve::SetCurve(const IPolyline2DElement& element, const Vec2D& start) {
    Vec2D offset;
    Vec2D tangent;
    switch (element.GetType()) {
        case MathTypes::Line2D:
            curve = StraightCurve{start, (element.GetEnd() - element.GetStart()) / to};
            return true;
        case MathTypes::Arc2D: {
            const auto& arc = static_cast<const Arc2D&>(element);
            curve = RoundCurve{start, arc.GetStart() - arc.GetCenter(), 1.0 / arc.GetSignedRadius()};
            isClosed = arc.GetAngle().GetRadians() >= twoPi;
            return true;
        }
        case MathTypes::Clothoid: {
            const auto& clothoid = static_cast<const Clothoid&>(element);
            curve = ClothoidCurve{start, &clothoid};
            return clothoid.MakeOffsetAndTangentAt(0.0, offset, tangent);
        }
        case MathTypes::Spiral2D: {
            const auto& spiral = static_cast<const Spiral2D&>(element);
            curve = SpiralCurve{start, &spiral};
            return spiral.MakeOffsetAndTangentAt(0.0, offset, tangent);
        }
        case MathTypes::Parabola: {
            const auto& parabola = static_cast<const Parabola&>(element);
            auto& moved = curve.emplace<ParabolaCurve>();
            double linear = 0.0;
            double constant = 0.0;
            parabola.GetParameters(moved.quadratic, linear, constant);
            const double x = parabola.GetStart().GetX();
            const double run = parabola.GetEnd().GetX() - x;
            moved.start = start + Vec2D(0.0, parabola.Evaluate(x) - parabola.GetStart().GetY());
            moved.slope = 2.0 * moved.quadratic * x + linear;
            moved.sign = run < 0.0 ? -1.0 : 1.0;
            moved.original = &parabola;
            to = std::abs(run);
            return true;
        }
        default:
            return false;
    }
}

PlanState PlanCurve::At(double p) const {
    return std::visit([p](const auto& known) { return known.At(p); }, curve);
}

double PlanCurve::GetCurvature(double p) const {
    return std::visit([p](const auto& known) { return known.GetCurvature(p); }, curve);
}

void PlanCurve::ClipTo(const Vec2D& center, double radius) {
    const StraightCurve& line = std::get<StraightCurve>(curve);
    const double middle = (center - line.start).DotProduct(line.direction);
    from = middle - radius;
    to = middle + radius;
    discCenter = line.At(middle).position;
    discRadius = radius;
}

double PlanCurve::StationOf(double p) const {
    const auto* const parabola = std::get_if<ParabolaCurve>(&curve);
    if (parabola == nullptr) return p;
    const Point2D& start = parabola->original->GetStart();
    return parabola->original->GetLength(start, start + Vec2D(parabola->sign * p, 0.0), 0.0);
}

double PlanCurve::GetBend(const Knot& a, const Knot& b) const {
    if (const auto* const parabola = std::get_if<ParabolaCurve>(&curve)) return std::abs(2.0 * parabola->quadratic);
    return std::max(std::abs(a.curvature), std::abs(b.curvature));  // it is monotone
}

PlanCurve::Interval PlanCurve::GetCurvatures(const Knot& a, const Knot& b) const {
    Interval range{std::min(a.curvature, b.curvature), std::max(a.curvature, b.curvature)};
    const auto* const parabola = std::get_if<ParabolaCurve>(&curve);
    if (parabola != nullptr && parabola->GetSlope(a.parameter) * parabola->GetSlope(b.parameter) < 0.0) {
        const double atSummit = parabola->sign * 2.0 * parabola->quadratic;
        range = {std::min(range.low, atSummit), std::max(range.high, atSummit)};
    }
    return range;
}

CurvePiece::CurvePiece(const PlanCurve& curve, const PlanCurve::Knot& a, const PlanCurve::Knot& b)
    : from(a), to(b), chord(b.position - a.position), chordLength(chord.Length()) {
    const double span = b.parameter - a.parameter;
    height = 0.125 * curve.GetBend(a, b) * span * span;
}

}  // namespace Kalvio::Math::detail
