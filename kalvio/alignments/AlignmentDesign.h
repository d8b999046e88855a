#pragma once

#include "kalvio/Export.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/curves/Spiral2D.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Kalvio::Math {

class Arc2D;
class Circle2D;
class Line2D;
class Polyline2D;

/// Static functions that build plans of alignments: from a polygon of tangents, and arcs and transitions between given
/// lines and circles.
///
/// What is built is continuous in position and direction, and in curvature wherever a transition was asked for. A
/// circle is travelled to the left for a positive radius and to the right for a negative one.
///
///     using Corner = AlignmentDesign::Corner;
///     const Corner corners[] = {{Point2D(0, 0)}, {Point2D(300, 0), 200.0, 60.0, 80.0}, {Point2D(500, 250)}};
///     Polyline2D plan;
///     AlignmentDesign::Fault fault;
///     if (!AlignmentDesign::MakePlan(corners, plan, fault)) return false;  // line, clothoid, arc, clothoid, line
class KALVIO_MATH_API AlignmentDesign {
public:
    /// Curvature law of a transition.
    using Law = Spiral2D::Spiral2DType;

    /// A corner of the tangent polygon with the curve that rounds it; the first and the last one are ends.
    struct Corner {
        Point2D point;          ///< where the tangents meet
        double radius = 0.0;    ///< of the arc, without sign; not used at an end, and where the tangents go straight on
        double lengthIn = 0.0;  ///< of the transition from the tangent to the arc; 0 for none
        double lengthOut = 0.0;   ///< of the transition from the arc to the tangent; 0 for none
        Law law = Law::Clothoid;  ///< of both transitions

        /// The same by the parameters A of clothoids: lengths A^2 / radius.
        static Corner ByParameters(const Point2D& point, double radius, double parameterIn, double parameterOut) {
            return {point, radius, parameterIn * parameterIn / radius, parameterOut * parameterOut / radius};
        }
    };

    /// Why there is no plan.
    enum class FaultKind : std::uint32_t {
        None = 0,         ///< there is one
        NotFinite = 1,    ///< a value is not finite, or there are fewer than two corners
        SamePoint = 2,    ///< the corner lies on the one before
        NotACurve = 3,    ///< the radius is not positive, or a length negative, or there is no such transition
        TurnsBack = 4,    ///< the tangents lie on each other
        Transitions = 5,  ///< both transitions turn further than the tangents
        Tangent = 6,      ///< the curve does not fit between this corner and the one before
    };
    /// The first fault along the polygon.
    struct Fault {
        FaultKind kind = FaultKind::None;  ///< what is wrong
        std::size_t corner = 0;            ///< index of the corner
        /// Length that is missing: of the arc between the transitions (`Transitions`), of the tangent (`Tangent`).
        double amount = 0.0;
    };

    /// The plan through a polygon of tangents: the straights that are left between the curves, and for each corner a
    /// transition, an arc and a transition, those of no length left out. Curves may touch: reverse curves without a
    /// straight are a polygon whose tangent lengths add up, to 2e-9. Transitions by clothoids are elements of class
    /// `Clothoid` where its series serves, up to a turn of 1 rad; else `Spiral2D`.
    /// @param fault  what does not fit; kind `None` when all does
    /// @return false, `plan` untouched, when something does not
    [[nodiscard]] static bool MakePlan(std::span<const Corner> corners, Polyline2D& plan, Fault& fault);

    // The curve of one corner, for `MakePlan`. Its tangents come from `before` and lead to `after`; how long they are,
    // and the corner's own radius and lengths where they are what is looked for, does not matter.

    /// Replaces the corner's lengths by those of two transitions that meet without an arc between them.
    /// @param ratio    lengthOut / lengthIn, positive
    /// @param tangent  length from the start of the curve to the corner, to which its radius is set; 0: the radius
    /// stays
    /// @return false, `corner` untouched, for tangents without a turn or that lie on each other, values that make no
    ///         curve, and a turn that cubic parabolas do not reach
    [[nodiscard]] static bool WithoutArc(const Point2D& before, const Point2D& after, double ratio, double tangent,
                                         Corner& corner);
    /// Replaces the corner's radius by the one whose curve, with the corner's lengths, passes through a point.
    /// @param misfit  on failure by how much the point lies beyond the sharpest such curve, or beyond a tangent
    ///                (negative); 0 for values that make none
    /// @return false, `corner` untouched, when there is none
    [[nodiscard]] static bool ThroughPoint(const Point2D& before, const Point2D& after, const Point2D& through,
                                           Corner& corner, double& misfit);

    // Between given lines, which have no ends for this, and circles.

    /// Replaces `arcs` by all arcs of a radius, positive to the left, that leave a line and run into a circle in their
    /// directions of travel: at most two, the shorter one first. One that touches where the line and the circle touch
    /// is no arc.
    /// @param misfit  on failure by how much the circle lies too far away (positive) or too near (negative) for such an
    ///                arc; 0 for values that make none
    /// @return false, `arcs` untouched, when there is none
    [[nodiscard]] static bool ArcBetween(const Line2D& from, const Circle2D& to, double radius,
                                         std::vector<Arc2D>& arcs, double& misfit);
    [[nodiscard]] static bool ArcBetween(const Circle2D& from, const Line2D& to, double radius,
                                         std::vector<Arc2D>& arcs, double& misfit);
    [[nodiscard]] static bool ArcBetween(const Circle2D& from, const Circle2D& to, double radius,
                                         std::vector<Arc2D>& arcs, double& misfit);

    /// The transition from a line to a circle. Its length follows from the distance of the
    /// circle from the line.
    /// @param misfit  on failure by how much the circle lies too near to the line (negative: it crosses it) or too far
    ///                away (positive) for a transition that turns at most a quarter circle; 0 for values that make none
    /// @return false, `transition` untouched, when there is none
    [[nodiscard]] static bool TransitionBetween(const Line2D& from, const Circle2D& to, Law law, Spiral2D& transition,
                                                double& misfit);
    /// From a circle to a line.
    [[nodiscard]] static bool TransitionBetween(const Circle2D& from, const Line2D& to, Law law, Spiral2D& transition,
                                                double& misfit);
    /// From circle to circle. Of the same sense the smaller one lies inside the larger one and is joined by a part of a
    /// transition (an egg curve); of opposite senses they lie outside of each other and are joined through a point
    /// without curvature (an S curve, for clothoids of one parameter on both sides).
    /// @param misfit  as above, for the distance of the centres
    [[nodiscard]] static bool TransitionBetween(const Circle2D& from, const Circle2D& to, Law law, Spiral2D& transition,
                                                double& misfit);
    /// From circle to circle of the same sense by two transitions that meet where they have no curvature (a C curve;
    /// lengths that are inverse to the radii, for clothoids one parameter). Neither circle lies inside the other.
    /// @param misfit  as above, for the distance of the centres
    [[nodiscard]] static bool TransitionsBetween(const Circle2D& from, const Circle2D& to, Law law, Spiral2D& first,
                                                 Spiral2D& second, double& misfit);

    // Cubic parabolas y = c x^3 are stated by other radii than those of curvature, which `Spiral2D` has. These replace
    // stated radii, signed and 0 where it is straight, by true ones. False, the radii untouched, for a length that is
    // not positive, values not finite, and a parabola whose curvature culminates before its end.

    /// Of radii 1 / y'': a whole one is y = x^3 / (6 R X), X its length along the tangent.
    /// @param length  of the curve
    [[nodiscard]] static bool FromSecondDerivatives(double length, double& startRadius, double& endRadius);
    /// Of the radii of the clothoid with the same length: a whole one is y = x^3 / (6 R L), L the length of the curve.
    [[nodiscard]] static bool FromClothoid(double length, double& startRadius, double& endRadius);
};

}  // namespace Kalvio::Math
