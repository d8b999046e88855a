#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>

/// Small square matrices of fixed size, the numbers behind the transformation matrices.
namespace Kalvio::Math::detail {

/// N x N values, row-major.
template <std::size_t N>
struct SquareMatrix {
    std::array<double, N * N> values{};

    constexpr double operator()(std::size_t row, std::size_t column) const { return values[row * N + column]; }
    constexpr double& operator()(std::size_t row, std::size_t column) { return values[row * N + column]; }

    static constexpr SquareMatrix Identity() {
        SquareMatrix result;
        for (std::size_t i = 0; i < N; ++i) result(i, i) = 1.0;
        return result;
    }
};

template <std::size_t N>
SquareMatrix<N> Product(const SquareMatrix<N>& a, const SquareMatrix<N>& b) {
    SquareMatrix<N> result;
    for (std::size_t i = 0; i < N; ++i) {
        for (std::size_t k = 0; k < N; ++k) {
            for (std::size_t j = 0; j < N; ++j) result(i, j) += a(i, k) * b(k, j);
        }
    }
    return result;
}

template <std::size_t N>
SquareMatrix<N> Transposed(const SquareMatrix<N>& a) {
    SquareMatrix<N> result;
    for (std::size_t i = 0; i < N; ++i) {
        for (std::size_t j = 0; j < N; ++j) result(j, i) = a(i, j);
    }
    return result;
}

template <std::size_t N>
bool IsFinite(const SquareMatrix<N>& a) {
    for (const double value : a.values) {
        if (!std::isfinite(value)) return false;
    }
    return true;
}

/// Determinant of the submatrix that the bit masks select (equally many rows and columns), expanded along its first
/// row; 1 for empty masks. `values` is row-major with `stride` values per row.
inline double Minor(const double* values, std::size_t stride, unsigned int rows, unsigned int columns) {
    if (rows == 0) return 1.0;
    const double* const row = values + static_cast<std::size_t>(std::countr_zero(rows)) * stride;
    const unsigned int below = rows & (rows - 1);
    if (below == 0) return row[std::countr_zero(columns)];
    double sum = 0.0;
    double sign = 1.0;
    for (unsigned int rest = columns; rest != 0; rest &= rest - 1) {
        const unsigned int column = rest & ~(rest - 1);
        sum += sign * row[std::countr_zero(column)] * Minor(values, stride, below, columns & ~column);
        sign = -sign;
    }
    return sum;
}

/// Coefficients of det(x I - M), index i that of x^i: sums of the principal minors with alternating sign.
template <std::size_t N>
std::array<double, N + 1> CharacteristicCoefficients(const SquareMatrix<N>& m) {
    std::array<double, N + 1> coefficients{};
    for (unsigned int chosen = 0; chosen < (1U << N); ++chosen) {
        const auto size = static_cast<std::size_t>(std::popcount(chosen));
        const double minor = Minor(m.values.data(), N, chosen, chosen);
        coefficients[N - size] += size % 2 == 0 ? minor : -minor;
    }
    return coefficients;
}

}  // namespace Kalvio::Math::detail
