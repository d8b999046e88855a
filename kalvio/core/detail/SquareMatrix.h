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

/// The signed minors of a 4 x 4 matrix, each expanded along its first row. A smaller matrix is taken with the rows and
/// columns of the identity after its own; that rounds nothing.
inline SquareMatrix<4> Cofactors(const SquareMatrix<4>& m) {
    SquareMatrix<4> result;
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t r0 = i == 0 ? 1 : 0;
        const std::size_t r1 = i < 2 ? 2 : 1;
        const std::size_t r2 = i < 3 ? 3 : 2;
        const auto pair = [&m, r1, r2](std::size_t a, std::size_t b) {
            return m(r1, a) * m(r2, b) - m(r1, b) * m(r2, a);
        };
        const double p01 = pair(0, 1);
        const double p02 = pair(0, 2);
        const double p03 = pair(0, 3);
        const double p12 = pair(1, 2);
        const double p13 = pair(1, 3);
        const double p23 = pair(2, 3);
        const double sign = i % 2 == 0 ? 1.0 : -1.0;
        result(i, 0) = sign * (m(r0, 1) * p23 - m(r0, 2) * p13 + m(r0, 3) * p12);
        result(i, 1) = -sign * (m(r0, 0) * p23 - m(r0, 2) * p03 + m(r0, 3) * p02);
        result(i, 2) = sign * (m(r0, 0) * p13 - m(r0, 1) * p03 + m(r0, 3) * p01);
        result(i, 3) = -sign * (m(r0, 0) * p12 - m(r0, 1) * p02 + m(r0, 2) * p01);
    }
    return result;
}
/// From the cofactors of the first row.
inline double Determinant(const SquareMatrix<4>& m, const SquareMatrix<4>& cofactors) {
    return m(0, 0) * cofactors(0, 0) + m(0, 1) * cofactors(0, 1) + m(0, 2) * cofactors(0, 2) +
           m(0, 3) * cofactors(0, 3);
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
