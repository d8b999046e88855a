#pragma once

#include "kalvio/core/detail/Constants.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace Kalvio::Math::detail {

/// More samples than this are not asked for in earnest: the sampling answers false instead of running out of memory.
inline constexpr double mostSamples = 1e9;

/// True for a length along which a point can be placed: at least 1e-10, and finite.
inline bool IsUsableLength(double length) { return length >= numericalZero && length <= largestDouble; }

/// i steps: 0 for i = 0 even where the step is infinite, so that a range longer than nothing keeps its first sample.
inline double Steps(std::int64_t i, double step) { return i == 0 ? 0.0 : static_cast<double>(i) * step; }

/// Calls `emit(station)` at from, from + step, from + 2 step ... up to the smaller of `to` and `length`, both inclusive
/// within 1e-10; stations are multiplied out, so they do not drift. With `closeAtEnd` the station `length` follows when
/// `to` exceeds the length by more than 1e-10 and it was not emitted already.
///
/// @return false, without any call, when from lies beyond the length, to < 0, step is not positive, the length is not
/// finite, or a value is NaN
template <class Emit>
bool ForEachStation(double from, double to, double step, double length, bool closeAtEnd, Emit&& emit) {
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
    const bool endEmitted = from <= last && std::abs(station - length) <= numericalZero;
    if (closeAtEnd && to > length + numericalZero && !endEmitted) emit(length);
    return true;
}

}  // namespace Kalvio::Math::detail
