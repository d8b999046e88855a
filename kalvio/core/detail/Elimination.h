#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// A product that neither overflows nor vanishes on the way: mantissa 2^exponent.
class ScaledProduct {
public:
    void Multiply(double factor) {
        Normalize(factor);
        Normalize(mantissa);
        mantissa *= factor;
    }
    double Times(double factor) const {
        return std::ldexp(mantissa * factor, static_cast<int>(std::clamp(exponent, -limit, limit)));
    }

private:
    void Normalize(double& value) {
        int power = 0;
        if (std::isfinite(value)) value = std::frexp(value, &power);
        exponent += power;
    }

    static constexpr std::int64_t limit = 1 << 20;
    double mantissa = 1.0;
    std::int64_t exponent = 0;
};

/// Gaussian elimination with partial pivoting, P A = L U, by panels of four columns, in one flat array of rows.
///
/// The matrix is padded with the identity to whole panels, so that every inner loop runs over whole groups of four.
/// Each element receives its updates one after the other in the order of the pivots, in a panel and outside: of two
/// equal rows the second becomes exactly 0 when the first is the pivot. Source: Golub, Van Loan, Matrix Computations,
/// 4th ed. 2013, section 3.4 and, by blocks, 3.2.11.
class Elimination {
public:
    /// The first n elements of the first n rows: anything whose `[i].GetCoordinates()` is row i.
    template <class Rows>
    Elimination(const Rows& rows, std::size_t n)
        : size(n), padded((size + panel - 1) / panel * panel), lu(padded * padded), source(size) {
        for (std::size_t i = 0; i < size; ++i) {
            const std::vector<double>& row = rows[static_cast<unsigned int>(i)].GetCoordinates();
            std::copy_n(row.begin(), n, Row(lu, i));
        }
        for (std::size_t i = size; i < padded; ++i) Row(lu, i)[i] = 1.0;
        std::iota(source.begin(), source.end(), std::size_t{0});
        Run();
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
    double Pivot(std::size_t k) const { return Row(lu, k)[k]; }
    /// Row i of both factors: the multipliers of L left of the diagonal, U from it on.
    const double* Factors(std::size_t i) const { return Row(lu, i); }
    /// The column of the inverse that column j of U^-1 L^-1 is: the row of A that came to place j.
    std::size_t Source(std::size_t j) const { return source[j]; }
    std::size_t Stride() const { return padded; }

    /// U^-1 L^-1, row-major with `Stride()` values per row. No pivot may be 0.
    std::vector<double> Inverse() const {
        std::vector<double> x = LowerInverse();
        DivideByUpper(lu, x);
        return x;
    }
    /// (last pivot) U^-1 L^-1 without a division by the last pivot, which may be 0; no other may.
    std::vector<double> ScaledInverse() const {
        std::vector<double> x = LowerInverse();
        const std::size_t last = size - 1;
        std::for_each(Row(x, 0), Row(x, last), [pivot = Pivot(last)](double& value) { value *= pivot; });
        std::vector<double> upper(lu);
        Row(upper, last)[last] = 1.0;
        DivideByUpper(upper, x);
        return x;
    }

private:
    static constexpr std::size_t panel = 4;

    double* Row(std::vector<double>& a, std::size_t i) const { return a.data() + i * padded; }
    const double* Row(const std::vector<double>& a, std::size_t i) const { return a.data() + i * padded; }

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

    void Run() {
        for (std::size_t start = 0; start < padded; start += panel) {
            const std::size_t end = start + panel;
            for (std::size_t k = start; k < end; ++k) EliminateInPanel(k, end);
            for (std::size_t k = start; k < end; ++k) {
                for (std::size_t i = k + 1; i < end; ++i) Subtract(Row(lu, i), Row(lu, i)[k], Row(lu, k), end, padded);
            }
            for (std::size_t i = end; i < padded; ++i) {
                SubtractPanel(Row(lu, i), Row(lu, i) + start, Row(lu, start), end, padded);
            }
        }
    }
    // Finds the pivot of column k and eliminates below it, on the columns up to `end`.
    void EliminateInPanel(std::size_t k, std::size_t end) {
        std::size_t best = k;
        for (std::size_t i = k + 1; i < size; ++i) {
            if (std::abs(Row(lu, i)[k]) > std::abs(Row(lu, best)[k])) best = i;
        }
        if (best != k) {
            std::swap_ranges(Row(lu, k), Row(lu, k) + padded, Row(lu, best));
            std::swap(source[k], source[best]);
            odd = !odd;
        }
        const double* const pivotRow = Row(lu, k);
        if (pivotRow[k] == 0.0) return;
        for (std::size_t i = k + 1; i < size; ++i) {
            double* const row = Row(lu, i);
            row[k] /= pivotRow[k];
            for (std::size_t j = k + 1; j < end; ++j) row[j] -= row[k] * pivotRow[j];
        }
    }
    std::vector<double> LowerInverse() const {
        std::vector<double> x(padded * padded);
        for (std::size_t i = 0; i < padded; ++i) Row(x, i)[i] = 1.0;
        for (std::size_t start = 0; start < padded; start += panel) {
            const std::size_t end = start + panel;
            for (std::size_t k = start; k < end; ++k) {
                for (std::size_t i = k + 1; i < end; ++i) Subtract(Row(x, i), Row(lu, i)[k], Row(x, k), 0, end);
            }
            for (std::size_t i = end; i < padded; ++i) {
                SubtractPanel(Row(x, i), Row(lu, i) + start, Row(x, start), 0, end);
            }
        }
        return x;
    }
    // x := U^-1 x.
    void DivideByUpper(const std::vector<double>& upper, std::vector<double>& x) const {
        for (std::size_t end = padded; end > 0; end -= panel) {
            const std::size_t start = end - panel;
            for (std::size_t i = end; i-- > start;) {
                double* const row = Row(x, i);
                for (std::size_t k = i + 1; k < end; ++k) Subtract(row, Row(upper, i)[k], Row(x, k), 0, padded);
                const double pivot = Row(upper, i)[i];
                for (std::size_t j = 0; j < padded; ++j) row[j] /= pivot;
            }
            for (std::size_t i = 0; i < start; ++i) {
                SubtractPanel(Row(x, i), Row(upper, i) + start, Row(x, start), 0, padded);
            }
        }
    }

    std::size_t size;
    std::size_t padded;
    std::vector<double> lu;           // L below the diagonal, U on and above it
    std::vector<std::size_t> source;  // row of A in each place
    bool odd = false;                 // number of row exchanges
};

}  // namespace Kalvio::Math::detail
