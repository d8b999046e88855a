#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kalvio::Math::detail {

/// A function value with its derivative.
struct ValueAndSlope {
    double value = 0.0;
    double slope = 0.0;
};

/// Root of a function that is negative at `low` and positive at `high`: Newton steps, and a bisection wherever a step
/// would leave the bracket or gains too little. Exact to the spacing of doubles at the larger bound, or to within
/// `coarse` where that is more; always ends.
///
/// @param evaluate  ValueAndSlope(double); a slope of 0 or NaN costs a bisection
template <class Evaluate>
double BracketedNewton(double low, double high, Evaluate&& evaluate, double coarse = 0.0) {
    constexpr int mostSteps = 200;
    const double resolution =
        std::max(std::numeric_limits<double>::epsilon() * std::max(std::abs(low), std::abs(high)), coarse);
    double x = 0.5 * (low + high);
    double lastStep = high - low;
    for (int i = 0; i < mostSteps; ++i) {
        const ValueAndSlope f = evaluate(x);
        if (f.value == 0.0) break;
        (f.value < 0.0 ? low : high) = x;
        double next = x - f.value / f.slope;
        if (!(next > low && next < high) || !(2.0 * std::abs(next - x) < lastStep)) next = 0.5 * (low + high);
        lastStep = std::abs(next - x);
        x = next;
        if (lastStep <= resolution) break;
    }
    return x;
}

}  // namespace Kalvio::Math::detail
