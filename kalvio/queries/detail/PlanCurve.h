#pragma once

#include "kalvio/core/Vec2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Spiral2D.h"

#include <optional>
#include <variant>

namespace Kalvio::Math::detail {

class CrossingOperand;

/// State of a curve at a parameter.
struct PlanState {
    Vec2D position;  // from a local origin, so that survey coordinates lose nothing
    Vec2D velocity;  // derivative by the parameter, never 0
};

// The parameter of all curves is the station, but for the parabola, where it is the horizontal distance from the start.

struct StraightCurve {
    PlanState At(double p) const { return {start + direction * p, direction}; }
    double GetCurvature(double) const { return 0.0; }

    Vec2D start;
    Vec2D direction;  // unit
};

struct RoundCurve {
    PlanState At(double p) const;
    double GetCurvature(double) const { return curvature; }
    /// The parameter of the direction from the centre to a point, the nearest to [0, length].
    double ParameterOf(const Vec2D& point, double length) const;
    double GetRadius() const { return 1.0 / std::abs(curvature); }

    Vec2D start;
    Vec2D radial;  // from the centre to the start
    double curvature = 1.0;
};

struct ClothoidCurve {
    PlanState At(double p) const;
    double GetCurvature(double p) const { return clothoid->GetCurvature(p); }

    Vec2D start;
    const Clothoid* clothoid;
};

struct SpiralCurve {
    PlanState At(double p) const;
    double GetCurvature(double p) const { return spiral->GetCurvature(p); }

    Vec2D start;
    const Spiral2D* spiral;
};

struct ParabolaCurve {
    PlanState At(double p) const;
    double GetCurvature(double p) const;
    double GetSlope(double p) const { return slope + 2.0 * quadratic * (sign * p); }

    Vec2D start;
    double quadratic = 0.0;
    double slope = 0.0;  // at the start
    double sign = 1.0;   // -1 where it runs towards smaller x
    const Parabola* original = nullptr;
};

/// A curve between two parameters, relative to a local origin.
class PlanCurve {
public:
    /// A point of the curve, as an end of a piece.
    struct Knot {
        double parameter = 0.0;
        Vec2D position;
        double curvature = 0.0;
    };
    struct Interval {
        double low = 0.0;
        double high = 0.0;
    };

    /// @return nothing for a curve that is not finite, and for chains
    static std::optional<PlanCurve> Make(const CrossingOperand& operand, const Point2D& origin);

    PlanState At(double p) const;
    double GetCurvature(double p) const;
    Knot KnotAt(double p) const { return {p, At(p).position, GetCurvature(p)}; }
    double GetFrom() const { return from; }
    double GetTo() const { return to; }
    /// A full circle, which has no ends.
    bool IsClosed() const { return isClosed; }
    bool IsInfinite() const { return isInfinite; }
    /// Restricts an infinite line to what can meet a disc.
    void ClipTo(const Vec2D& center, double radius);
    /// Holds the curve: the middle of its ends, and half its length as the radius.
    Vec2D GetDiscCenter() const { return discCenter; }
    double GetDiscRadius() const { return discRadius; }
    double StationOf(double p) const;

    const StraightCurve* AsStraight() const { return std::get_if<StraightCurve>(&curve); }
    const RoundCurve* AsRound() const { return std::get_if<RoundCurve>(&curve); }

    /// Bound of the second derivative by the parameter over a piece.
    double GetBend(const Knot& a, const Knot& b) const;
    /// Bounds of the curvature over a piece.
    Interval GetCurvatures(const Knot& a, const Knot& b) const;

private:
    bool SetCurve(const IPolyline2DElement& element, const Vec2D& start);

    std::variant<StraightCurve, RoundCurve, ClothoidCurve, SpiralCurve, ParabolaCurve> curve;
    double from = 0.0;
    double to = 0.0;
    Vec2D discCenter;
    double discRadius = 0.0;
    bool isClosed = false;
    bool isInfinite = false;
};

/// A piece of a curve lies no further than `height` from its chord, and its velocity differs from that of the chord by
/// at most `steering` of it.
struct CurvePiece {
    CurvePiece(const PlanCurve& curve, const PlanCurve::Knot& a, const PlanCurve::Knot& b);

    const PlanCurve::Knot& from;
    const PlanCurve::Knot& to;
    Vec2D chord;
    double chordLength;
    double height;
    double GetSteering() const { return 4.0 * height / chordLength; }
};

}  // namespace Kalvio::Math::detail
