#pragma once

#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/SquareMatrix.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>

/// Determinants and cofactors of small matrices by expansion along the first row. All sums run over the columns from
/// left to right: the results are those of the plain recursion, to the last bit.
namespace Kalvio::Math::detail {

inline constexpr std::size_t largestExpanded = 8;  // rows; larger matrices are eliminated

/// The test that decides whether a matrix has an inverse, whatever its condition.
inline bool IsInvertible(double determinant) {
    return std::isfinite(determinant) && std::abs(determinant) >= numericalZero;
}

/// Minors of a matrix of 5 to 8 rows. Each is computed once and kept by its set of columns: n 2^(n-1) products.
class MinorsByColumns {
public:
    /// @param rows  n rows of n values, from the last to the first; the minors of k columns are those of the first k
    MinorsByColumns(const std::array<const double*, largestExpanded>& rows, std::size_t n) : free(n - 2) {
        for (unsigned int chosen = 0; chosen < (1U << free); ++chosen) {
            const auto count = static_cast<std::size_t>(std::popcount(chosen));
            const double* const r0 = rows[std::max<std::size_t>(count, 1) - 1];
            const double* const r1 = rows[count];
            const double* const r2 = rows[count + 1];
            Group sum{};
            double sign = 1.0;
            for (unsigned int rest = chosen; rest != 0; rest &= rest - 1) {
                const auto j = static_cast<std::size_t>(std::countr_zero(rest));
                const Group& below = minors[chosen & ~(1U << j)];
                const Group factors{sign * r0[j], sign * r1[j], sign * r1[j], sign * r2[j]};
                for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += factors[i] * below[i];
                sign = -sign;
            }
            if (chosen == 0) sum[0] = 1.0;
            sum[1] += sign * r1[free] * sum[0];
            sum[2] += sign * r1[free + 1] * sum[0];
            sum[3] += sign * r2[free] * sum[2];
            sum[3] -= sign * r2[free + 1] * sum[1];
            minors[chosen] = sum;
        }
    }
    /// Of all columns.
    double Whole() const { return minors[(1U << free) - 1][3]; }
    /// Of all columns but one, and the first n - 1 of the rows given.
    double Without(std::size_t column) const {
        const unsigned int all = (1U << free) - 1;
        if (column >= free) return minors[all][column == free ? 2 : 1];
        return minors[all & ~(1U << column)][3];
    }

private:
    // Those of four sets that differ in the last two columns a, b: neither, a, b, both. The rest of the sums is alike.
    using Group = std::array<double, 4>;

    std::size_t free;  // number of the columns before the last two
    std::array<Group, std::size_t{1} << (largestExpanded - 2)> minors;
};

/// A matrix of up to 4 rows, with the rows and columns of the identity after its own.
/// @param stride  values from one row to the next
inline SquareMatrix<4> Bordered(const double* values, std::size_t n, std::size_t stride) {
    SquareMatrix<4> m = SquareMatrix<4>::Identity();
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) m(i, j) = values[i * stride + j];
    }
    return m;
}

/// Looked for apart, as the expansion may leave their rounding.
inline bool HasEqualRows(const double* values, std::size_t n, std::size_t stride) {
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (std::equal(values + i * stride, values + i * stride + n, values + j * stride)) return true;
        }
    }
    return false;
}

/// Of a matrix of up to 8 rows; 0 for two equal rows.
inline double ExpandedDeterminant(const double* values, std::size_t n, std::size_t stride) {
    if (HasEqualRows(values, n, stride)) return 0.0;
    if (n <= 4) {
        const SquareMatrix<4> m = Bordered(values, n, stride);
        return Determinant(m, Cofactors(m));
    }
    std::array<const double*, largestExpanded> rows{};
    for (std::size_t i = 0; i < n; ++i) rows[i] = values + (n - 1 - i) * stride;
    return MinorsByColumns(rows, n).Whole();
}

/// The signed minors of a matrix of up to 8 rows, handed to `store(row, column, value)`.
template <class Store>
void ExpandCofactors(const double* values, std::size_t n, std::size_t stride, const Store& store) {
    if (n <= 4) {
        const SquareMatrix<4> cofactors = Cofactors(Bordered(values, n, stride));
        for (std::size_t i = 0; i < n; ++i) {
            for (std::size_t j = 0; j < n; ++j) store(i, j, cofactors(i, j));
        }
        return;
    }
    for (std::size_t i = 0; i < n; ++i) {
        std::array<const double*, largestExpanded> rows{};
        for (std::size_t k = 0, r = n; r-- > 0;) {
            if (r != i) rows[k++] = values + r * stride;
        }
        rows[n - 1] = values + i * stride;  // a minor of all columns is not asked for
        const MinorsByColumns minors(rows, n);
        for (std::size_t j = 0; j < n; ++j) store(i, j, (i + j) % 2 == 0 ? minors.Without(j) : -minors.Without(j));
    }
}

}  // namespace Kalvio::Math::detail
