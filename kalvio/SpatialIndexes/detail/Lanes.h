#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

#if defined(__SSE2__) || defined(_M_X64)
#define KALVIO_LANES_SSE2
#include <emmintrin.h>
#endif

namespace Kalvio::Math::SpatialIndexes::detail {

#ifdef KALVIO_LANES_SSE2

/// Answers of one comparison on two neighbouring numbers.
struct LaneMask {
    __m128d value;
    unsigned int Bits() const { return static_cast<unsigned int>(_mm_movemask_pd(value)); }
};
inline LaneMask operator&(LaneMask a, LaneMask b) { return {_mm_and_pd(a.value, b.value)}; }

/// Two neighbouring numbers that are worked on at once. Comparisons with NaN are false, as between single numbers.
struct Lanes {
    __m128d value;
    static Lanes Load(const double* first) { return {_mm_loadu_pd(first)}; }
    static Lanes Load(const float* first) {
        return {_mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(first))))};
    }
    static Lanes Of(double first, double second) { return {_mm_set_pd(second, first)}; }
    static Lanes Repeat(double number) { return {_mm_set1_pd(number)}; }
};
inline LaneMask operator<=(Lanes a, Lanes b) { return {_mm_cmple_pd(a.value, b.value)}; }
inline Lanes operator+(Lanes a, Lanes b) { return {_mm_add_pd(a.value, b.value)}; }
inline Lanes operator-(Lanes a, Lanes b) { return {_mm_sub_pd(a.value, b.value)}; }
inline Lanes operator*(Lanes a, Lanes b) { return {_mm_mul_pd(a.value, b.value)}; }
inline Lanes Min(Lanes a, Lanes b) { return {_mm_min_pd(a.value, b.value)}; }
inline Lanes Max(Lanes a, Lanes b) { return {_mm_max_pd(a.value, b.value)}; }
inline void Store(Lanes a, double* first) { _mm_storeu_pd(first, a.value); }

/// Four neighbouring numbers of single precision, compared at once.
struct FourMask {
    __m128 value;
    unsigned int Bits() const { return static_cast<unsigned int>(_mm_movemask_ps(value)); }
};
inline FourMask operator&(FourMask a, FourMask b) { return {_mm_and_ps(a.value, b.value)}; }
struct FourLanes {
    __m128 value;
    static FourLanes Load(const float* first) { return {_mm_loadu_ps(first)}; }
    static FourLanes Repeat(float number) { return {_mm_set1_ps(number)}; }
};
inline FourMask operator<=(FourLanes a, FourLanes b) { return {_mm_cmple_ps(a.value, b.value)}; }
inline FourMask operator<(FourLanes a, FourLanes b) { return {_mm_cmplt_ps(a.value, b.value)}; }

#else

struct LaneMask {
    unsigned int bits;
    unsigned int Bits() const { return bits; }
};
inline LaneMask operator&(LaneMask a, LaneMask b) { return {a.bits & b.bits}; }

struct Lanes {
    double first;
    double second;
    static Lanes Load(const double* numbers) { return {numbers[0], numbers[1]}; }
    static Lanes Load(const float* numbers) {
        return {static_cast<double>(numbers[0]), static_cast<double>(numbers[1])};
    }
    static Lanes Of(double one, double two) { return {one, two}; }
    static Lanes Repeat(double number) { return {number, number}; }
};
inline LaneMask operator<=(Lanes a, Lanes b) {
    return {static_cast<unsigned int>(a.first <= b.first) | static_cast<unsigned int>(a.second <= b.second) << 1U};
}
inline Lanes operator+(Lanes a, Lanes b) { return {a.first + b.first, a.second + b.second}; }
inline Lanes operator-(Lanes a, Lanes b) { return {a.first - b.first, a.second - b.second}; }
inline Lanes operator*(Lanes a, Lanes b) { return {a.first * b.first, a.second * b.second}; }
inline Lanes Min(Lanes a, Lanes b) {
    return {a.first < b.first ? a.first : b.first, a.second < b.second ? a.second : b.second};
}
inline Lanes Max(Lanes a, Lanes b) {
    return {a.first > b.first ? a.first : b.first, a.second > b.second ? a.second : b.second};
}
inline void Store(Lanes a, double* numbers) {
    numbers[0] = a.first;
    numbers[1] = a.second;
}

struct FourMask {
    unsigned int bits;
    unsigned int Bits() const { return bits; }
};
inline FourMask operator&(FourMask a, FourMask b) { return {a.bits & b.bits}; }
struct FourLanes {
    std::array<float, 4> numbers;
    static FourLanes Load(const float* first) { return {{first[0], first[1], first[2], first[3]}}; }
    static FourLanes Repeat(float number) { return {{number, number, number, number}}; }
};
inline FourMask operator<=(const FourLanes& a, const FourLanes& b) {
    unsigned int bits = 0;
    for (unsigned int i = 0; i < 4; ++i) bits |= static_cast<unsigned int>(a.numbers[i] <= b.numbers[i]) << i;
    return {bits};
}
inline FourMask operator<(const FourLanes& a, const FourLanes& b) {
    unsigned int bits = 0;
    for (unsigned int i = 0; i < 4; ++i) bits |= static_cast<unsigned int>(a.numbers[i] < b.numbers[i]) << i;
    return {bits};
}

#endif

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

/// Asks for a cache line that will be read soon.
inline void Prefetch([[maybe_unused]] const void* address) {
#ifdef KALVIO_LANES_SSE2
    _mm_prefetch(static_cast<const char*>(address), _MM_HINT_T0);
#endif
}

/// The same where the page, too, may not have been used for long: processors drop a prefetch then, but not a load. What
/// does not depend on it goes on meanwhile.
inline void ReadAhead(const void* address) { static_cast<void>(*static_cast<const volatile char*>(address)); }

}  // namespace Kalvio::Math::SpatialIndexes::detail
