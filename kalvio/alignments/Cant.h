#pragma once

#include "kalvio/Export.h"
#include "kalvio/curves/Spiral2D.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Kalvio::Math {

/// Cross slopes of an alignment by station: the superelevation of a road, the cant of a railway.
///
/// A slope is the rise over a horizontal length, towards the right: positive where the right side is higher, as in
/// curves to the left. For rails it is the cant over the distance of the rails. Left and right of the axis have a slope
/// each: a road with a crown has a positive one to its left and a negative one to its right. Between two knots the
/// slopes change by one of the laws of `Spiral2D`, so that they keep pace with the curvature; before the first and
/// behind the last they stay.
///
///     Cant rails;  // 90 mm over 1500 mm, along a Bloss transition of 70 m
///     const Cant::Knot knots[] = {{1025.5, 0.0, 0.0, Spiral2D::Spiral2DType::Bloss}, {1095.5, -0.06, -0.06}};
///     if (!rails.Set(knots, Cant::Pivot::Inner, 0.75)) return false;
class KALVIO_MATH_API Cant final {
public:
    /// How slopes change between two knots.
    using Law = Spiral2D::Spiral2DType;

    /// What keeps the height of the profile when the cross section turns.
    enum class Pivot : std::uint32_t {
        Axis = 0,   ///< the axis
        Left = 1,   ///< the edge to the left
        Right = 2,  ///< the edge to the right
        Inner = 3,  ///< the lower edge, on the inside of curves
        Outer = 4,  ///< the higher edge, on the outside of curves
    };

    /// Slopes at a station.
    struct Knot {
        double station = 0.0;     ///< along the plan
        double left = 0.0;        ///< slope to the left of the axis
        double right = 0.0;       ///< slope to the right of it
        Law law = Law::Clothoid;  ///< to the next knot; a clothoid's is linear, and so is `Cubic`
    };

    /// The cross section at a station.
    struct Place {
        double left = 0.0;   ///< slope to the left of the axis
        double right = 0.0;  ///< slope to the right of it
        double lift = 0.0;   ///< of the axis above the profile

        /// Height above the profile at an offset, positive to the right.
        double GetHeight(double offset) const { return lift + (offset < 0.0 ? left : right) * offset; }
    };

    /// Level everywhere.
    Cant() = default;

    /// @param arm  horizontal distance of the edges from the axis; for rails half that of the rails
    /// @return false, nothing changed, for stations that do not ascend, a negative arm, and values not finite
    [[nodiscard]] bool Set(std::span<const Knot> added, Pivot edge, double arm);
    const std::vector<Knot>& GetKnots() const { return knots; }
    Pivot GetPivot() const { return pivot; }
    double GetArm() const { return arm; }

    Place GetPlace(double station) const;

private:
    std::vector<Knot> knots;
    Pivot pivot = Pivot::Axis;
    double arm = 0.0;
};

}  // namespace Kalvio::Math
