#pragma once

#include "kalvio/core/detail/Constants.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>

namespace Kalvio::Math::detail {

/// More samples than this are not asked for in earnest, as by a step or a height of almost nothing: what would make
/// them answers false before it takes memory for them.
inline constexpr double mostSamples = 1e7;

/// True for a length along which a point can be placed: at least 1e-10, and finite.
inline bool IsUsableLength(double length) { return length >= numericalZero && length <= largestDouble; }

/// Hands a result on, a number, point, vector or sample, where it is finite. @return false, `out` untouched, where not
template <class Result>
bool Store(const Result& result, Result& out) {
    const auto isFinite = [](const auto& v) {
        if constexpr (requires { v.GetZ(); }) {
            if (!std::isfinite(v.GetZ())) return false;
        }
        return std::isfinite(v.GetX()) && std::isfinite(v.GetY());
    };
    if constexpr (std::is_same_v<Result, double>) {
        if (!std::isfinite(result)) return false;
    } else if constexpr (requires { result.station; }) {
        if (!isFinite(result.point) || !isFinite(result.tangent) || !std::isfinite(result.station)) return false;
    } else {
        if (!isFinite(result)) return false;
    }
    out = result;
    return true;
}

/// i steps: 0 for i = 0 even where the step is infinite, so that a range longer than nothing keeps its first sample.
inline double Steps(std::int64_t i, double step) { return i == 0 ? 0.0 : static_cast<double>(i) * step; }

/// What a sampling adds at the end of a curve when it was to go on beyond it.
enum class EndSample : std::uint32_t {
    None = 0,
    Once = 1,    // the end, unless a step fell on it
    Always = 2,  // the end, also where a step fell on it
};

/// Calls `emit(station)` at from, from + step, from + 2 step ... up to the smaller of `to` and `length`, both inclusive
/// within 1e-10; stations are multiplied out, so they do not drift. The station `length` follows as `atEnd` says when
/// `to` exceeds the length by more than 1e-10.
///
/// @return false, without any call, when from lies beyond the length, to < 0, step is not positive, the length is not
/// finite, or a value is NaN
template <class Emit>
bool ForEachStation(double from, double to, double step, double length, EndSample atEnd, Emit&& emit) {
    if (!(from <= length + numericalZero) || !(to >= 0.0) || !(step > 0.0) || !(length <= largestDouble)) {
        return false;
    }
    const double last = (std::min)(to, length) + numericalZero;
    const double count = std::floor((last - from) / step);
    if (!(count < mostSamples)) return false;
    double station = from;
    for (std::int64_t i = 0; from + Steps(i, step) <= last; ++i) {
        station = from + Steps(i, step);
        emit(station);
    }
    const bool isOnEnd = from <= last && std::abs(station - length) <= numericalZero;
    const bool isMissing = atEnd == EndSample::Always || (atEnd == EndSample::Once && !isOnEnd);
    if (isMissing && to > length + numericalZero) emit(length);
    return true;
}

/// The same for the `MakePoints` of lines and arcs.
template <class Emit>
bool ForEachStation(double from, double to, double step, double length, bool closeAtEnd, Emit&& emit) {
    return ForEachStation(from, to, step, length, closeAtEnd ? EndSample::Always : EndSample::None, emit);
}

}  // namespace Kalvio::Math::detail
