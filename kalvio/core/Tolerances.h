#pragma once

#include "kalvio/core/Angle.h"
#include "kalvio/core/IMathObject.h"
#include "kalvio/core/detail/Constants.h"

namespace Kalvio::Math {

/// The tolerances against which geometric decisions are taken. All are absolute. Immutable after construction.
///
/// - user tolerance: geometric coincidence, in the caller's length unit (typically 0.0001);
/// - system epsilon: the numerical zero (typically 1e-10), never larger than the user tolerance; its square for squared
///   lengths and its tenfold where a looser zero is wanted;
/// - angle tolerance: parallelism and angular equality.
class KALVIO_MATH_API Tolerances : public IMathObject {
public:
    /// The standard of the library, with which everything decides that receives no tolerances: user tolerance 1e-4,
    /// system epsilon 1e-10, angle tolerance 1e-4 rad.
    [[nodiscard]] static Tolerances Standard() { return Tolerances(detail::standardUserTolerance); }

    /// A user tolerance with the standard system epsilon, 1e-10: what functions that take a single tolerance decide by.
    explicit Tolerances(double user) : Tolerances(user, detail::numericalZero) {}
    /// The angle tolerance becomes `user` radians. A `system` epsilon that is not a number counts as `user`.
    Tolerances(double user, double system) : Tolerances(user, Angle(user), system) {}
    /// Mind the order: the system epsilon comes last here.
    Tolerances(double user, Angle angle, double system)
        : userTolerance(user),
          systemEpsilon(system < user ? system : user),
          systemEpsilonSquared(systemEpsilon * systemEpsilon),
          systemEpsilonLess(systemEpsilon * 10.0),
          angleTolerance(angle) {}
    Tolerances(const Tolerances&) = default;
    Tolerances(Tolerances&&) = default;
    Tolerances& operator=(const Tolerances&) = delete;

    MathTypes GetType() const override;

    double UserTolerance() const { return userTolerance; }
    double SystemEpsilon() const { return systemEpsilon; }
    double SystemEpsilonSquared() const { return systemEpsilonSquared; }
    double SystemEpsilonLess() const { return systemEpsilonLess; }
    const Angle AngleTolerance() const { return angleTolerance; }

private:
    double userTolerance;
    double systemEpsilon;
    double systemEpsilonSquared;
    double systemEpsilonLess;
    Angle angleTolerance;
};

}  // namespace Kalvio::Math
