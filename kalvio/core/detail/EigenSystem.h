#pragma once

#include "kalvio/core/detail/SquareMatrix.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <numeric>
#include <utility>

/// Eigenvalues, eigenvectors and singular values of small real matrices.
///
/// Sources: G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed. 2013: balancing 7.5.7, Hessenberg form 7.4.2,
/// Francis QR steps 7.5.1, symmetric Jacobi 8.5, one-sided Jacobi 8.6.3.
namespace Kalvio::Math::detail {

inline constexpr double machineEpsilon = std::numeric_limits<double>::epsilon();
inline constexpr int mostSweeps = 60;                // Jacobi converges quadratically: 6 to 10 sweeps are usual
inline constexpr int mostQrSteps = 300;              // for one eigenvalue; 2 to 4 are usual
inline constexpr int patientQrSteps = 20;            // later, what is small beside the whole matrix counts as 0
inline constexpr int leastColumnPower = -960;        // of 2, times the largest element: smaller columns count as 0
inline constexpr double doubleRootMargin = 16.0;     // in units of rounding: a discriminant this near 0 is 0
inline constexpr double sameEigenValue = 1e-12;      // times the largest one: values this near share a null space
inline constexpr double negligibleResidual = 1e-12;  // times the largest element: of v M - lambda v
inline constexpr double largestResidual = 1e-13;     // the same of unit vectors, in the matrix as it was given
inline constexpr double leastIndependence = 1e-7;    // of unit eigenvectors: their least singular value

template <std::size_t N>
double LargestMagnitude(const SquareMatrix<N>& m) {
    double largest = 0.0;
    for (const double value : m.values) largest = std::max(largest, std::abs(value));
    return largest;
}

/// Divides by a power of 2 so that the largest magnitude lies in [0.5, 1): squares neither overflow nor vanish.
/// @return the power
template <std::size_t N>
int ScaleToOne(SquareMatrix<N>& m) {
    int power = 0;
    (void)std::frexp(LargestMagnitude(m), &power);
    for (double& value : m.values) value = std::ldexp(value, -power);
    return power;
}

/// The rotation tan phi = t (|phi| <= pi/4) that makes two vectors with squared norms a, b and product g orthogonal.
struct JacobiRotation {
    double c, s;
    JacobiRotation(double a, double b, double g) {
        const double zeta = (b - a) / (2.0 * g);
        const double t = std::copysign(1.0, zeta) / (std::abs(zeta) + std::hypot(1.0, zeta));
        c = 1.0 / std::hypot(1.0, t);
        s = c * t;
    }
    void Apply(double& x, double& y) const {
        const double old = x;
        x = c * old - s * y;
        y = s * old + c * y;
    }
};

/// A column in units of a power of 2 of its own: its products keep their digits however small it is.
template <std::size_t N>
struct ScaledColumn {
    std::array<double, N> values{};
    int power = 0;

    ScaledColumn() = default;
    ScaledColumn(const SquareMatrix<N>& m, std::size_t column) {
        double largest = 0.0;
        for (std::size_t i = 0; i < N; ++i) largest = std::max(largest, std::abs(m(i, column)));
        (void)std::frexp(largest, &power);
        power = std::max(power, leastColumnPower);
        for (std::size_t i = 0; i < N; ++i) values[i] = m(i, column) * std::ldexp(1.0, -power);
    }
    double Dot(const ScaledColumn& other) const {
        return std::inner_product(values.begin(), values.end(), other.values.begin(), 0.0);
    }
};

/// M = U diag(singular) V^T with orthogonal U and V; singular values descending, none negative.
template <std::size_t N>
struct SingularValues {
    SquareMatrix<N> u, v;
    std::array<double, N> singular{};
};

/// @param m  finite
template <std::size_t N>
SingularValues<N> DecomposeSingular(SquareMatrix<N> m) {
    const int power = ScaleToOne(m);
    SquareMatrix<N> v = SquareMatrix<N>::Identity();
    bool rotated = true;
    for (int sweep = 0; rotated && sweep < mostSweeps; ++sweep) {
        rotated = false;
        for (std::size_t p = 0; p < N; ++p) {
            for (std::size_t q = p + 1; q < N; ++q) {
                const ScaledColumn<N> x(m, p);
                const ScaledColumn<N> y(m, q);
                const double a = x.Dot(x);
                const double b = y.Dot(y);
                const double g = x.Dot(y);
                if (std::abs(g) <= machineEpsilon * std::sqrt(a) * std::sqrt(b)) continue;
                const int apart = x.power - y.power;
                const JacobiRotation rotation(std::ldexp(a, apart), std::ldexp(b, -apart), g);
                for (std::size_t i = 0; i < N; ++i) {
                    rotation.Apply(m(i, p), m(i, q));
                    rotation.Apply(v(i, p), v(i, q));
                }
                rotated = true;
            }
        }
    }
    std::array<ScaledColumn<N>, N> columns;
    std::array<double, N> norms{};
    std::array<std::size_t, N> order{};
    for (std::size_t j = 0; j < N; ++j) {
        columns[j] = ScaledColumn<N>(m, j);
        norms[j] = std::ldexp(std::sqrt(columns[j].Dot(columns[j])), columns[j].power);
    }
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&norms](std::size_t a, std::size_t b) { return norms[a] > norms[b]; });

    SingularValues<N> result;
    for (std::size_t j = 0; j < N; ++j) {
        const ScaledColumn<N>& column = columns[order[j]];
        const bool hasDirection = column.power > leastColumnPower && norms[order[j]] > 0.0;
        const double scaledNorm = std::sqrt(column.Dot(column));
        result.singular[j] = std::ldexp(norms[order[j]], power);
        for (std::size_t i = 0; i < N; ++i) {
            result.v(i, j) = v(i, order[j]);
            result.u(i, j) = hasDirection ? column.values[i] / scaledNorm : 0.0;
        }
        if (hasDirection) continue;
        // A vanished column: the coordinate axis that is farthest from the columns so far, made orthogonal to them.
        double best = 0.0;
        for (std::size_t axis = 0; axis < N; ++axis) {
            std::array<double, N> candidate{};
            candidate[axis] = 1.0;
            for (int pass = 0; pass < 2; ++pass) {
                for (std::size_t k = 0; k < j; ++k) {
                    double along = 0.0;
                    for (std::size_t i = 0; i < N; ++i) along += candidate[i] * result.u(i, k);
                    for (std::size_t i = 0; i < N; ++i) candidate[i] -= along * result.u(i, k);
                }
            }
            const double length =
                std::sqrt(std::inner_product(candidate.begin(), candidate.end(), candidate.begin(), 0.0));
            if (!(length > best)) continue;
            best = length;
            for (std::size_t i = 0; i < N; ++i) result.u(i, j) = candidate[i] / length;
        }
    }
    return result;
}

template <std::size_t N>
bool IsSymmetric(const SquareMatrix<N>& m) {
    return Transposed(m).values == m.values;
}

/// Jacobi's method.
/// @param m        symmetric, finite
/// @param vectors  receives the orthonormal eigenvectors as columns
/// @return the eigenvalues, in the order of the columns
template <std::size_t N>
std::array<double, N> SymmetricEigenSystem(SquareMatrix<N> m, SquareMatrix<N>& vectors) {
    const int power = ScaleToOne(m);
    vectors = SquareMatrix<N>::Identity();
    bool rotated = true;
    for (int sweep = 0; rotated && sweep < mostSweeps; ++sweep) {
        rotated = false;
        for (std::size_t p = 0; p < N; ++p) {
            for (std::size_t q = p + 1; q < N; ++q) {
                if (std::abs(m(p, q)) <= machineEpsilon * std::sqrt(std::abs(m(p, p))) * std::sqrt(std::abs(m(q, q)))) {
                    continue;
                }
                const JacobiRotation rotation(m(p, p), m(q, q), m(p, q));
                for (std::size_t i = 0; i < N; ++i) rotation.Apply(m(i, p), m(i, q));
                for (std::size_t i = 0; i < N; ++i) rotation.Apply(m(p, i), m(q, i));
                for (std::size_t i = 0; i < N; ++i) rotation.Apply(vectors(i, p), vectors(i, q));
                m(p, q) = m(q, p) = 0.0;
                rotated = true;
            }
        }
    }
    std::array<double, N> values{};
    for (std::size_t i = 0; i < N; ++i) values[i] = std::ldexp(m(i, i), power);
    return values;
}

/// Brings the sums of row i and column i of the first `size` rows, without the diagonal, within a factor of 2 of each
/// other by the similarity D^-1 M D, D of powers of 2. Sums below `leastSum` count as that.
/// @return the powers
template <std::size_t N>
std::array<int, N> Balance(SquareMatrix<N>& m, std::size_t size, double leastSum) {
    std::array<int, N> powers{};
    bool changed = true;
    for (int pass = 0; changed && pass < 100; ++pass) {
        changed = false;
        for (std::size_t i = 0; i < size; ++i) {
            double row = 0.0;
            double column = 0.0;
            for (std::size_t j = 0; j < size; ++j) {
                if (j == i) continue;
                row += std::abs(m(i, j));
                column += std::abs(m(j, i));
            }
            row = std::max(row, leastSum);
            column = std::max(column, leastSum);
            const double ratio = std::log2(row) - std::log2(column);
            if (!std::isfinite(ratio)) continue;  // a sum of 0
            const int shift = static_cast<int>(std::lround(0.5 * ratio));
            if (shift == 0 || std::ldexp(column, shift) + std::ldexp(row, -shift) >= 0.95 * (row + column)) continue;
            changed = true;
            powers[i] += shift;
            for (std::size_t j = 0; j < size; ++j) {
                if (j == i) continue;
                m(i, j) = std::ldexp(m(i, j), -shift);
                m(j, i) = std::ldexp(m(j, i), shift);
            }
        }
    }
    return powers;
}

/// Eigenvalues of a general real matrix: rows and columns that decouple are taken off exactly, the rest is balanced,
/// brought to Hessenberg form and iterated with Francis's double shift, all in real arithmetic.
template <std::size_t N>
class GeneralEigenValues {
public:
    using Values = std::array<std::complex<double>, N>;

    /// @param m  finite
    explicit GeneralEigenValues(const SquareMatrix<N>& m) : h(m), power(ScaleToOne(h)) {
        Isolate();
        power += ScaleToOne(h);  // what is left may be far smaller than what was taken off
        Balance(h, size, 0.0);
        power += ScaleToOne(h);
        ReduceToHessenberg();
        converged = Iterate();
    }
    /// @return false when the iteration did not converge
    bool Get(Values& out) const {
        if (converged) out = found;
        return converged;
    }

private:
    void Store(double real, double imaginary) {
        found[count++] = {std::ldexp(real, power), std::ldexp(imaginary, power)};
    }

    void Isolate() {
        for (std::size_t i = 0; i < size;) {
            bool rowIsZero = true;
            bool columnIsZero = true;
            for (std::size_t j = 0; j < size; ++j) {
                if (j == i) continue;
                rowIsZero = rowIsZero && h(i, j) == 0.0;
                columnIsZero = columnIsZero && h(j, i) == 0.0;
            }
            if (!rowIsZero && !columnIsZero) {
                ++i;
                continue;
            }
            Store(h(i, i), 0.0);
            Remove(i);
            i = 0;
        }
    }
    void Remove(std::size_t index) {
        SquareMatrix<N> left;
        --size;
        for (std::size_t i = 0; i < size; ++i) {
            for (std::size_t j = 0; j < size; ++j) {
                const std::size_t row = i < index ? i : i + 1;
                const std::size_t column = j < index ? j : j + 1;
                left(i, j) = h(row, column);
            }
        }
        h = left;
    }

    // Reflects rows first ... first + length - 1 so that x becomes a multiple of the first unit vector, and the columns
    // likewise: a similarity transformation.
    void Reflect(std::array<double, N> x, std::size_t first, std::size_t length) {
        double norm = 0.0;
        for (std::size_t i = 0; i < length; ++i) norm = std::hypot(norm, x[i]);
        if (norm == 0.0) return;
        x[0] += std::copysign(norm, x[0]);
        double square = 0.0;
        for (std::size_t i = 0; i < length; ++i) {
            x[i] /= norm;
            square += x[i] * x[i];
        }
        const double factor = 2.0 / square;
        for (std::size_t j = 0; j < size; ++j) {
            double sum = 0.0;
            for (std::size_t i = 0; i < length; ++i) sum += x[i] * h(first + i, j);
            for (std::size_t i = 0; i < length; ++i) h(first + i, j) -= factor * sum * x[i];
        }
        for (std::size_t j = 0; j < size; ++j) {
            double sum = 0.0;
            for (std::size_t i = 0; i < length; ++i) sum += x[i] * h(j, first + i);
            for (std::size_t i = 0; i < length; ++i) h(j, first + i) -= factor * sum * x[i];
        }
    }
    // Zeroes column `column` from row first + 1 on by a reflection that starts in row `first`.
    void EliminateColumn(std::size_t column, std::size_t first, std::size_t length) {
        std::array<double, N> x{};
        for (std::size_t i = 0; i < length; ++i) x[i] = h(first + i, column);
        Reflect(x, first, length);
        for (std::size_t i = 1; i < length; ++i) h(first + i, column) = 0.0;
    }
    void ReduceToHessenberg() {
        for (std::size_t k = 0; k + 2 < size; ++k) EliminateColumn(k, k + 1, size - k - 1);
    }

    bool Iterate() {
        const double norm = LargestMagnitude(h);
        std::size_t end = size;  // the rows from `end` on are done
        int steps = 0;
        while (end > 0) {
            std::size_t start = end - 1;  // first row of the last block that does not split
            for (; start > 0; --start) {
                const double around = std::abs(h(start, start)) + std::abs(h(start - 1, start - 1));
                const bool isAbsolute = around == 0.0 || steps > patientQrSteps;
                if (std::abs(h(start, start - 1)) <= machineEpsilon * (isAbsolute ? norm : around)) {
                    h(start, start - 1) = 0.0;
                    break;
                }
            }
            if (end - start <= 2) {
                if (end - start == 1) {
                    Store(h(start, start), 0.0);
                } else {
                    StorePair(start, norm);
                }
                end = start;
                steps = 0;
            } else if (++steps <= mostQrSteps) {
                FrancisStep(start, end, steps % 10 == 0);
            } else {
                return false;
            }
        }
        return true;
    }
    void StorePair(std::size_t i, double norm) {
        const double b = h(i, i + 1);
        const double c = h(i + 1, i);
        const double d = h(i + 1, i + 1);
        const double p = 0.5 * (h(i, i) - d);
        double discriminant = p * p + b * c;
        // A double real root must not part into a complex pair by rounding: of the products alone where nothing else
        // was computed, of the size of the norm in every element after reflections.
        const double uncertain =
            size == 2 ? p * p + std::abs(b * c) : norm * std::max({std::abs(p), std::abs(b), std::abs(c)});
        if (discriminant < 0.0 && -discriminant > doubleRootMargin * machineEpsilon * uncertain) {
            const double imaginary = std::sqrt(-discriminant);
            Store(d + p, imaginary);
            Store(d + p, -imaginary);
            return;
        }
        discriminant = std::max(discriminant, 0.0);
        const double z = p + std::copysign(std::sqrt(discriminant), p);
        Store(d + z, 0.0);
        Store(discriminant > 0.0 ? d - b * c / z : d + z, 0.0);
    }
    void FrancisStep(std::size_t start, std::size_t end, bool exceptional) {
        const std::size_t m = end - 2;
        double sum = h(m, m) + h(m + 1, m + 1);
        double product = h(m, m) * h(m + 1, m + 1) - h(m, m + 1) * h(m + 1, m);
        if (exceptional) {  // breaks the rare cycles: 0.75 w +- i sqrt(7) / 4 w off the last diagonal element
            const double d = h(m + 1, m + 1);
            const double w = std::abs(h(m + 1, m)) + std::abs(h(m, m - 1));
            sum = 1.5 * w + 2.0 * d;
            product = w * w + 1.5 * w * d + d * d;
        }
        const double h10 = h(start + 1, start);
        std::array<double, N> x{};
        x[0] = h(start, start) * (h(start, start) - sum) + h(start, start + 1) * h10 + product;
        x[1] = h10 * (h(start, start) + h(start + 1, start + 1) - sum);
        x[2] = h10 * h(start + 2, start + 1);
        Reflect(x, start, 3);
        for (std::size_t k = start; k + 2 < end; ++k) {
            EliminateColumn(k, k + 1, std::min<std::size_t>(3, end - k - 1));
        }
    }

    SquareMatrix<N> h;
    int power;
    std::size_t size = N;
    std::size_t count = 0;
    Values found{};
    bool converged = false;
};

/// Eigenvalues by descending real part, of a conjugate pair the one with the positive imaginary part first.
/// @return false, `out` untouched, for elements or eigenvalues that are not finite
template <std::size_t N>
bool ComputeEigenValues(const SquareMatrix<N>& m, std::array<std::complex<double>, N>& out) {
    if (!IsFinite(m)) return false;
    std::array<std::complex<double>, N> found;
    if (IsSymmetric(m)) {
        SquareMatrix<N> vectors;
        const std::array<double, N> real = SymmetricEigenSystem(m, vectors);
        std::copy(real.begin(), real.end(), found.begin());
    } else if (!GeneralEigenValues<N>(m).Get(found)) {
        return false;
    }
    const auto isFinite = [](const auto& value) { return std::isfinite(value.real()) && std::isfinite(value.imag()); };
    if (!std::all_of(found.begin(), found.end(), isFinite)) return false;
    std::stable_sort(found.begin(), found.end(), [](const std::complex<double>& a, const std::complex<double>& b) {
        return a.real() != b.real() ? a.real() > b.real() : a.imag() > b.imag();
    });
    out = found;
    return true;
}

/// The same for matrices whose eigenvalues are all real; false, `out` untouched, for all others.
template <std::size_t N>
bool ComputeEigenValues(const SquareMatrix<N>& m, std::array<double, N>& out) {
    std::array<std::complex<double>, N> found;
    if (!ComputeEigenValues(m, found)) return false;
    if (std::any_of(found.begin(), found.end(), [](const auto& value) { return value.imag() != 0.0; })) return false;
    std::transform(found.begin(), found.end(), out.begin(), [](const auto& value) { return value.real(); });
    return true;
}

/// Unit row vectors v with v M = lambda v, one row for each real eigenvalue; orthonormal for a symmetric matrix.
/// @return false, outputs untouched, when an eigenvalue is complex, there are fewer than N independent vectors, or
///         elements are so far apart that they cannot be told
template <class MatrixType, std::size_t N>
bool ComputeEigenVectors(const SquareMatrix<N>& m, std::array<double, N>& values, MatrixType& vectors) {
    std::array<double, N> found{};
    if (!ComputeEigenValues(m, found)) return false;
    SquareMatrix<N> rows;
    if (IsSymmetric(m)) {
        SquareMatrix<N> columns;
        const std::array<double, N> unsorted = SymmetricEigenSystem(m, columns);
        std::array<std::size_t, N> order{};
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::stable_sort(order.begin(), order.end(),
                         [&unsorted](std::size_t a, std::size_t b) { return unsorted[a] > unsorted[b]; });
        for (std::size_t i = 0; i < N; ++i) {
            for (std::size_t j = 0; j < N; ++j) rows(i, j) = columns(j, order[i]);
        }
    } else {
        const double radius = std::max(std::abs(found[0]), std::abs(found[N - 1]));
        const double same = sameEigenValue * radius;
        // In units of their own, large offsets do not hide how independent the vectors are; the eigenvalues as the
        // least sums keep small offsets from growing.
        SquareMatrix<N> balanced = m;
        const std::array<int, N> powers = Balance(balanced, N, radius);
        const double negligible = negligibleResidual * LargestMagnitude(balanced);
        std::size_t first = 0;  // of the eigenvalues that are one value within rounding
        SingularValues<N> null;
        for (std::size_t i = 0; i < N; ++i) {
            if (i == 0 || found[first] - found[i] > same) {
                first = i;
                SquareMatrix<N> shifted = Transposed(balanced);
                for (std::size_t k = 0; k < N; ++k) shifted(k, k) -= found[i];
                null = DecomposeSingular(shifted);
            }
            const std::size_t column = N - 1 - (i - first);
            if (!(null.singular[column] <= negligible)) return false;
            for (std::size_t j = 0; j < N; ++j) rows(i, j) = null.v(j, column);
        }
        if (!(DecomposeSingular(rows).singular[N - 1] > leastIndependence)) return false;
        const double allowed = largestResidual * LargestMagnitude(m);
        for (std::size_t i = 0; i < N; ++i) {
            for (std::size_t j = 0; j < N; ++j) rows(i, j) = std::ldexp(rows(i, j), -powers[j]);
            const ScaledColumn<N> row(Transposed(rows), i);
            for (std::size_t j = 0; j < N; ++j) rows(i, j) = row.values[j] / std::sqrt(row.Dot(row));
            // Where elements are a hundred powers of ten apart, what is negligible in those units may not be here.
            for (std::size_t j = 0; j < N; ++j) {
                double residual = -found[i] * rows(i, j);
                for (std::size_t k = 0; k < N; ++k) residual += rows(i, k) * m(k, j);
                if (!(std::abs(residual) <= allowed)) return false;
            }
        }
    }
    values = found;
    vectors = MatrixType(rows.values.data());
    return true;
}

/// The decomposition as matrices, S diagonal.
/// @return false, outputs untouched, for elements or singular values that are not finite
template <class MatrixType, std::size_t N>
bool StoreSingularValues(const SquareMatrix<N>& m, MatrixType& u, MatrixType& s, MatrixType& v) {
    if (!IsFinite(m)) return false;
    const SingularValues<N> found = DecomposeSingular(m);
    SquareMatrix<N> diagonal;
    for (std::size_t i = 0; i < N; ++i) diagonal(i, i) = found.singular[i];
    if (!IsFinite(diagonal)) return false;
    u = MatrixType(found.u.values.data());
    s = MatrixType(diagonal.values.data());
    v = MatrixType(found.v.values.data());
    return true;
}

}  // namespace Kalvio::Math::detail
