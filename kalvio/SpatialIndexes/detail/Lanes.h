#pragma once

#include "kalvio/core/detail/Lanes.h"
#include "kalvio/core/detail/Prefetch.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace Kalvio::Math::SpatialIndexes::detail {

using Math::detail::FourLanes;
using Math::detail::FourMask;
using Math::detail::LaneMask;
using Math::detail::Lanes;
using Math::detail::Prefetch;

/// Squared gaps along one axis between boxes and the bounds of another; NaN, at equal infinities, is no gap.
inline Lanes SquaredGap(Lanes boxLow, Lanes boxHigh, Lanes low, Lanes high) {
    const Lanes gap = Max(boxLow - high, Max(low - boxHigh, Lanes::Repeat(0.0)));
    return gap * gap;
}

/// Bit i: number i is at most the limit; for up to 64 numbers.
inline std::uint64_t NotAbove(const double* numbers, unsigned int n, double limit) {
    std::uint64_t bits = 0;
    unsigned int i = 0;
    for (; i + 2 <= n; i += 2) bits |= std::uint64_t{(Lanes::Load(numbers + i) <= Lanes::Repeat(limit)).Bits()} << i;
    if (i < n && numbers[i] <= limit) bits |= std::uint64_t{1} << i;
    return bits;
}

/// The least of the numbers, infinity when there is none.
inline double Least(const double* numbers, unsigned int n) {
    Lanes least = Lanes::Repeat(std::numeric_limits<double>::infinity());
    for (unsigned int i = 0; i + 2 <= n; i += 2) least = Min(least, Lanes::Load(numbers + i));
    double both[2];
    Store(least, both);
    if (n % 2 != 0) both[0] = (std::min)(both[0], numbers[n - 1]);
    return (std::min)(both[0], both[1]);
}

/// The same where the page, too, may not have been used for long: processors drop a prefetch then, but not a load. What
/// does not depend on it goes on meanwhile.
inline void ReadAhead(const void* address) { static_cast<void>(*static_cast<const volatile char*>(address)); }

}  // namespace Kalvio::Math::SpatialIndexes::detail
