#pragma once

#include <array>

#if defined(__SSE2__) || defined(_M_X64)
#define KALVIO_LANES_SSE2
#include <emmintrin.h>
#endif

namespace Kalvio::Math::detail {

#ifdef KALVIO_LANES_SSE2

/// Answers of one comparison on two neighbouring numbers.
struct LaneMask {
    __m128d value;
    unsigned int Bits() const { return static_cast<unsigned int>(_mm_movemask_pd(value)); }
};
inline LaneMask operator&(LaneMask a, LaneMask b) { return {_mm_and_pd(a.value, b.value)}; }
inline LaneMask operator|(LaneMask a, LaneMask b) { return {_mm_or_pd(a.value, b.value)}; }

/// Two neighbouring numbers that are worked on at once. Comparisons with NaN are false, as between single numbers.
struct Lanes {
    __m128d value;
    static Lanes Load(const double* first) { return {_mm_loadu_pd(first)}; }
    static Lanes Load(const float* first) {
        return {_mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(first))))};
    }
    static Lanes Of(double first, double second) { return {_mm_set_pd(second, first)}; }
    static Lanes Repeat(double number) { return {_mm_set1_pd(number)}; }
    double First() const { return _mm_cvtsd_f64(value); }
    double Second() const { return _mm_cvtsd_f64(_mm_unpackhi_pd(value, value)); }
    Lanes Swapped() const { return {_mm_shuffle_pd(value, value, 1)}; }
};
inline LaneMask operator<=(Lanes a, Lanes b) { return {_mm_cmple_pd(a.value, b.value)}; }
inline LaneMask operator<(Lanes a, Lanes b) { return {_mm_cmplt_pd(a.value, b.value)}; }
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
inline FourLanes operator+(FourLanes a, FourLanes b) { return {_mm_add_ps(a.value, b.value)}; }
inline FourLanes operator-(FourLanes a, FourLanes b) { return {_mm_sub_ps(a.value, b.value)}; }
inline FourLanes operator*(FourLanes a, FourLanes b) { return {_mm_mul_ps(a.value, b.value)}; }

#else

struct LaneMask {
    unsigned int bits;
    unsigned int Bits() const { return bits; }
};
inline LaneMask operator&(LaneMask a, LaneMask b) { return {a.bits & b.bits}; }
inline LaneMask operator|(LaneMask a, LaneMask b) { return {a.bits | b.bits}; }

struct Lanes {
    double first;
    double second;
    static Lanes Load(const double* numbers) { return {numbers[0], numbers[1]}; }
    static Lanes Load(const float* numbers) {
        return {static_cast<double>(numbers[0]), static_cast<double>(numbers[1])};
    }
    static Lanes Of(double one, double two) { return {one, two}; }
    static Lanes Repeat(double number) { return {number, number}; }
    double First() const { return first; }
    double Second() const { return second; }
    Lanes Swapped() const { return {second, first}; }
};
inline LaneMask operator<=(Lanes a, Lanes b) {
    return {static_cast<unsigned int>(a.first <= b.first) | static_cast<unsigned int>(a.second <= b.second) << 1U};
}
inline LaneMask operator<(Lanes a, Lanes b) {
    return {static_cast<unsigned int>(a.first < b.first) | static_cast<unsigned int>(a.second < b.second) << 1U};
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
inline FourLanes operator+(FourLanes a, const FourLanes& b) {
    for (unsigned int i = 0; i < 4; ++i) a.numbers[i] += b.numbers[i];
    return a;
}
inline FourLanes operator-(FourLanes a, const FourLanes& b) {
    for (unsigned int i = 0; i < 4; ++i) a.numbers[i] -= b.numbers[i];
    return a;
}
inline FourLanes operator*(FourLanes a, const FourLanes& b) {
    for (unsigned int i = 0; i < 4; ++i) a.numbers[i] *= b.numbers[i];
    return a;
}

#endif

}  // namespace Kalvio::Math::detail
