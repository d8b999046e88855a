#pragma once

#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/detail/Stations.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace Kalvio::Math::detail {

inline constexpr double partRounding = 1e-9;  // of a step: a remainder below it makes no step of its own

/// Number of equal parts, each at most `part` long, that make up `whole`: at least 1.
/// @return 0 for a part that is not positive, a negative whole, NaN, or more parts than are asked for in earnest
inline std::int64_t NumberOfParts(double whole, double part) {
    if (!(part > 0.0) || !(whole >= 0.0)) return 0;
    const double parts = std::ceil(whole / part - partRounding);
    return parts < mostSamples ? std::max(std::int64_t{1}, static_cast<std::int64_t>(parts)) : 0;
}

/// Calls `emit(station)` at from, from + step, from + 2 step ... and at `to` itself, which always comes last.
/// @return false, without any call, when from > to, step is not positive, or a value is NaN
template <class Emit>
bool ForEachStationTo(double from, double to, double step, Emit&& emit) {
    const std::int64_t parts = NumberOfParts(to - from, step);
    if (parts == 0) return false;
    if (from < to) {
        for (std::int64_t i = 0; i < parts; ++i) emit(from + Steps(i, step));
    }
    emit(to);
    return true;
}

/// Longest arc of the radius whose chord stays within `height` of it, but at most a quarter of the circle:
/// height = 2 r sin^2(angle / 4). @return its central angle; 0 for a height that is not positive
inline double AngleForHeight(double radius, double height) {
    constexpr double quarterTurn = 0.25 * twoPi;
    if (!(height > 0.0)) return 0.0;
    const double squaredSine = height / (2.0 * radius);
    return squaredSine < 1.0 ? std::min(quarterTurn, 4.0 * std::asin(std::sqrt(squaredSine))) : quarterTurn;
}

}  // namespace Kalvio::Math::detail
