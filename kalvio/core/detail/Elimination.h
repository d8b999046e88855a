#pragma once

#include "kalvio/core/detail/Expansion.h"
#include "kalvio/core/detail/Workspace.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <utility>

namespace Kalvio::Math::detail {

/// A product that neither overflows nor vanishes on the way: mantissa 2^exponent.
class ScaledProduct {
public:
    void Multiply(double factor) {
        const double product = mantissa * factor;
        if (IsModerate(product) && IsModerate(factor)) {
            mantissa = product;
            return;
        }
        Normalize(factor);
        Normalize(mantissa);
        mantissa *= factor;
    }
    double Times(double factor) const {
        ScaledProduct product(*this);
        product.Normalize(product.mantissa);
        return std::ldexp(product.mantissa * factor, static_cast<int>(std::clamp(product.exponent, -limit, limit)));
    }

private:
    static bool IsModerate(double value) { return std::abs(value) > 1e-150 && std::abs(value) < 1e150; }
    void Normalize(double& value) {
        int power = 0;
        if (std::isfinite(value)) value = std::frexp(value, &power);
        exponent += power;
    }

    static constexpr std::int64_t limit = 1 << 20;
    double mantissa = 1.0;
    std::int64_t exponent = 0;
};

/// Gaussian elimination with partial pivoting, P A = L U, by panels of four columns, in one flat array of rows: on the
/// stack up to 20 rows.
///
/// The matrix is padded with the identity to whole panels, so that every inner loop runs over whole groups of four; its
/// rows stay as they are.
/// Each element receives its updates one after the other in the order of the pivots, in a panel and outside: of two
/// equal rows the second becomes exactly 0 when the first is the pivot. Source: Golub, Van Loan, Matrix Computations,
/// 4th ed. 2013, section 3.4 and, by blocks, 3.2.11.
///
///     Elimination elimination(n);
///     for (std::size_t i = 0; i < n; ++i) std::copy_n(row i of A, n, elimination.Row(i));
///     elimination.Run();
class Elimination {
    static constexpr std::size_t panel = 4;
    static constexpr std::size_t fewRows = 20;  // a multiple of the panel

public:
    /// Room for a matrix with `Stride()` values per row.
    using Matrix = Workspace<double, fewRows * fewRows>;

    /// @param rightSides  columns after those of A, which are eliminated with it
    explicit Elimination(std::size_t n, std::size_t rightSides = 0)
        : size(n), padded((n + rightSides + panel - 1) / panel * panel), lu(padded * padded), source(size) {
        std::fill_n(lu.Get(), padded * padded, 0.0);
        for (std::size_t i = size; i < padded; ++i) Row(i)[i] = 1.0;
    }
    /// Row i of A, to fill; after `Run` of both factors: the multipliers of L left of the diagonal,
    /// U from it on.
    double* Row(std::size_t i) { return lu.Get() + i * padded; }
    const double* Row(std::size_t i) const { return lu.Get() + i * padded; }
    std::size_t Stride() const { return padded; }
    void Run() {
        std::iota(source.Get(), source.Get() + size, std::size_t{0});
        for (std::size_t start = 0; start < padded; start += panel) {
            const std::size_t end = start + panel;
            EliminateInPanel<0>(start);
            EliminateInPanel<1>(start);
            EliminateInPanel<2>(start);
            EliminateInPanel<3>(start);
            for (std::size_t k = start; k < end; ++k) {
                for (std::size_t i = k + 1; i < end; ++i) Subtract(Row(i), Row(i)[k], Row(k), end, padded);
            }
            for (std::size_t i = end; i < size; ++i) SubtractPanel(Row(i), Row(i) + start, Row(start), end, padded);
        }
    }

    /// `Run`, and the determinant by which a system counts as solvable (`IsInvertible`): by expansion up to 8 rows, the
    /// product of the pivots above.
    double RunForDeterminant() {
        const double expanded = size <= largestExpanded ? ExpandedDeterminant(Row(0), size, padded) : 0.0;
        Run();
        return size <= largestExpanded ? expanded : PivotProduct(size).Times(1.0);
    }

    /// First pivot that is exactly 0; the size when there is none.
    std::size_t FirstZeroPivot() const {
        std::size_t k = 0;
        while (k < size && Pivot(k) != 0.0) ++k;
        return k;
    }
    /// Product of the first `count` pivots and of the sign of the row exchanges.
    ScaledProduct PivotProduct(std::size_t count) const {
        ScaledProduct product;
        for (std::size_t k = 0; k < count; ++k) product.Multiply(Pivot(k));
        if (odd) product.Multiply(-1.0);
        return product;
    }
    double Pivot(std::size_t k) const { return Row(k)[k]; }
    /// The column of the inverse that column j of U^-1 L^-1 is: the row of A that came to place j.
    std::size_t Source(std::size_t j) const { return source.Get()[j]; }

    /// The solution of A x = b for the b in column n. No pivot may be 0.
    void Solve(double* x) const {
        for (std::size_t i = 0; i < size; ++i) x[i] = Row(i)[size];
        for (std::size_t k = size; k-- > 0;) {
            x[k] /= Pivot(k);
            for (std::size_t i = 0; i < k; ++i) x[i] -= Row(i)[k] * x[k];
        }
    }
    /// U^-1 L^-1. No pivot may be 0.
    Matrix Inverse() const {
        Matrix x = LowerInverse();
        DivideByUpper(lu.Get(), x.Get());
        return x;
    }
    /// (last pivot) U^-1 L^-1 without a division by the last pivot, which may be 0; no other may.
    Matrix ScaledInverse() const {
        Matrix x = LowerInverse();
        const std::size_t last = size - 1;
        std::for_each(x.Get(), x.Get() + last * padded, [pivot = Pivot(last)](double& value) { value *= pivot; });
        Matrix upper(lu);
        upper.Get()[last * padded + last] = 1.0;
        DivideByUpper(upper.Get(), x.Get());
        return x;
    }

private:
    // target -= factor rowToSubtract on columns from ... to - 1.
    static void Subtract(double* target, double factor, const double* rowToSubtract, std::size_t from, std::size_t to) {
        for (std::size_t j = from; j < to; ++j) target[j] -= factor * rowToSubtract[j];
    }
    // target -= factors[k] row k for the four rows of a panel, in this order; `from` and `to` are multiples of 4.
    void SubtractPanel(double* target, const double* factors, const double* panelRows, std::size_t from,
                       std::size_t to) const {
        const double f0 = factors[0];
        const double f1 = factors[1];
        const double f2 = factors[2];
        const double f3 = factors[3];
        const double* const r0 = panelRows;
        const double* const r1 = r0 + padded;
        const double* const r2 = r1 + padded;
        const double* const r3 = r2 + padded;
        for (std::size_t j = from; j < to; j += panel) {
            double t[panel];
            for (std::size_t c = 0; c < panel; ++c) {
                t[c] = (((target[j + c] - f0 * r0[j + c]) - f1 * r1[j + c]) - f2 * r2[j + c]) - f3 * r3[j + c];
            }
            for (std::size_t c = 0; c < panel; ++c) target[j + c] = t[c];
        }
    }

    // Finds the pivot of one column and eliminates below it, on the columns of its panel.
    template <std::size_t place>
    void EliminateInPanel(std::size_t start) {
        const std::size_t k = start + place;
        std::size_t best = k;
        for (std::size_t i = k + 1; i < size; ++i) {
            if (std::abs(Row(i)[k]) > std::abs(Row(best)[k])) best = i;
        }
        if (best != k) {
            std::swap_ranges(Row(k), Row(k) + padded, Row(best));
            std::swap(source.Get()[k], source.Get()[best]);
            odd = !odd;
        }
        const double* const pivotRow = Row(k);
        if (pivotRow[k] == 0.0) return;
        for (std::size_t i = k + 1; i < size; ++i) {
            double* const row = Row(i);
            row[k] /= pivotRow[k];
            for (std::size_t j = 1; place + j < panel; ++j) row[k + j] -= row[k] * pivotRow[k + j];
        }
    }
    Matrix LowerInverse() const {
        Matrix inverse(padded * padded);
        double* const x = inverse.Get();
        std::fill_n(x, padded * padded, 0.0);
        for (std::size_t i = 0; i < padded; ++i) x[i * padded + i] = 1.0;
        for (std::size_t start = 0; start < padded; start += panel) {
            const std::size_t end = start + panel;
            for (std::size_t k = start; k < end; ++k) {
                for (std::size_t i = k + 1; i < end; ++i) {
                    Subtract(x + i * padded, Row(i)[k], x + k * padded, 0, end);
                }
            }
            for (std::size_t i = end; i < size; ++i) {
                SubtractPanel(x + i * padded, Row(i) + start, x + start * padded, 0, end);
            }
        }
        return inverse;
    }
    // x := U^-1 x.
    void DivideByUpper(const double* upper, double* x) const {
        for (std::size_t end = padded; end > 0; end -= panel) {
            const std::size_t start = end - panel;
            for (std::size_t i = std::min(end, size); i-- > start;) {
                double* const row = x + i * padded;
                const double* const factors = upper + i * padded;
                for (std::size_t k = i + 1; k < end; ++k) Subtract(row, factors[k], x + k * padded, 0, padded);
                for (std::size_t j = 0; j < padded; ++j) row[j] /= factors[i];
            }
            for (std::size_t i = 0; i < start; ++i) {
                SubtractPanel(x + i * padded, upper + i * padded + start, x + start * padded, 0, padded);
            }
        }
    }

    std::size_t size;
    std::size_t padded;
    Matrix lu;                               // L below the diagonal, U on and above it
    Workspace<std::size_t, fewRows> source;  // row of A in each place
    bool odd = false;                        // number of row exchanges
};

}  // namespace Kalvio::Math::detail
