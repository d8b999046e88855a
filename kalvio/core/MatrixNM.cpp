#include "kalvio/core/MatrixNM.h"

#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/SquareMatrix.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <limits>
#include <numeric>
#include <utility>

namespace Kalvio::Math {

namespace {

constexpr std::size_t largestExpanded = 4;  // rows; larger matrices are eliminated

bool IsZero(double value) { return !(std::abs(value) >= detail::numericalZero); }

bool AreFinite(const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
}

// A product that neither overflows nor vanishes on the way: mantissa 2^exponent.
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

// The minors of a matrix of at most 4 rows.
class Expansion {
public:
    explicit Expansion(const std::vector<VecND>& rows) : size(static_cast<unsigned int>(rows.size())) {
        for (unsigned int i = 0; i < size; ++i) {
            const std::vector<double>& row = rows[i].GetCoordinates();
            std::copy(row.begin(), row.end(), values.begin() + Offset(i));
        }
    }
    // Equal rows are looked for, as the expansion may leave their rounding.
    double Determinant() const {
        for (unsigned int i = 0; i < size; ++i) {
            for (unsigned int j = 0; j < i; ++j) {
                if (std::equal(Row(i), Row(i) + size, Row(j))) return 0.0;
            }
        }
        return detail::Minor(values.data(), size, All(), All());
    }
    double CoFactor(unsigned int row, unsigned int column) const {
        const double minor = detail::Minor(values.data(), size, All() & ~(1U << row), All() & ~(1U << column));
        return (row + column) % 2 == 0 ? minor : -minor;
    }

private:
    std::ptrdiff_t Offset(unsigned int i) const { return static_cast<std::ptrdiff_t>(i) * size; }
    const double* Row(unsigned int i) const { return values.data() + Offset(i); }
    unsigned int All() const { return (1U << size) - 1; }

    unsigned int size;
    std::array<double, largestExpanded * largestExpanded> values{};
};

// Gaussian elimination with partial pivoting, P A = L U, by panels of four columns, in one flat array of rows.
//
// The matrix is padded with the identity to whole panels, so that every inner loop runs over whole groups of four. Each
// element receives its updates one after the other in the order of the pivots, in a panel and outside: of two equal
// rows the second becomes exactly 0 when the first is the pivot. Source: Golub, Van Loan, Matrix Computations, 4th ed.
// 2013, section 3.4 and, by blocks, 3.2.11.
class Elimination {
public:
    explicit Elimination(const std::vector<VecND>& rows)
        : size(rows.size()), padded((size + panel - 1) / panel * panel), lu(padded * padded), source(size) {
        for (std::size_t i = 0; i < size; ++i) {
            const std::vector<double>& row = rows[i].GetCoordinates();
            std::copy(row.begin(), row.end(), Row(lu, i));
        }
        for (std::size_t i = size; i < padded; ++i) Row(lu, i)[i] = 1.0;
        std::iota(source.begin(), source.end(), std::size_t{0});
        Run();
    }

    // First pivot that is exactly 0; the size when there is none.
    std::size_t FirstZeroPivot() const {
        std::size_t k = 0;
        while (k < size && Pivot(k) != 0.0) ++k;
        return k;
    }
    // Product of the first `count` pivots and of the sign of the row exchanges.
    ScaledProduct PivotProduct(std::size_t count) const {
        ScaledProduct product;
        for (std::size_t k = 0; k < count; ++k) product.Multiply(Pivot(k));
        if (odd) product.Multiply(-1.0);
        return product;
    }
    double Pivot(std::size_t k) const { return Row(lu, k)[k]; }
    // The column of the inverse that column j of U^-1 L^-1 is: the row of A that came to place j.
    std::size_t Source(std::size_t j) const { return source[j]; }
    std::size_t Stride() const { return padded; }

    // U^-1 L^-1, row-major with `Stride()` values per row. No pivot may be 0.
    std::vector<double> Inverse() const {
        std::vector<double> x = LowerInverse();
        DivideByUpper(lu, x);
        return x;
    }
    // (last pivot) U^-1 L^-1 without a division by the last pivot, which may be 0; no other may.
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

// The three factorisations work by rows: `row` is the row of A that is being reduced by the finished rows above it.

bool DecomposeCrout(const MatrixNM& a, MatrixNM& l, MatrixNM& u) {
    const int n = static_cast<int>(a.GetNumRows());
    for (int i = 0; i < n; ++i) {
        VecND& lower = l[static_cast<unsigned int>(i)];
        VecND row(a[static_cast<unsigned int>(i)]);
        for (int k = 0; k < i; ++k) {
            const VecND& above = u[static_cast<unsigned int>(k)];
            lower[k] = row[k];
            for (int j = k + 1; j < n; ++j) row[j] -= row[k] * above[j];
        }
        VecND& upper = u[static_cast<unsigned int>(i)];
        lower[i] = row[i];
        upper[i] = 1.0;
        if (i + 1 < n && IsZero(row[i])) return false;
        for (int j = i + 1; j < n; ++j) upper[j] = row[j] / row[i];
    }
    return true;
}

bool DecomposeDoolittle(const MatrixNM& a, MatrixNM& l, MatrixNM& u) {
    const int n = static_cast<int>(a.GetNumRows());
    for (int i = 0; i < n; ++i) {
        VecND& lower = l[static_cast<unsigned int>(i)];
        VecND& row = u[static_cast<unsigned int>(i)];
        row = a[static_cast<unsigned int>(i)];
        for (int k = 0; k < i; ++k) {
            const VecND& above = u[static_cast<unsigned int>(k)];
            if (IsZero(above[k])) return false;
            lower[k] = row[k] / above[k];
            row[k] = 0.0;
            for (int j = k + 1; j < n; ++j) row[j] -= lower[k] * above[j];
        }
        lower[i] = 1.0;
    }
    return true;
}

bool DecomposeCholesky(const MatrixNM& a, MatrixNM& l, MatrixNM& u) {
    const int n = static_cast<int>(a.GetNumRows());
    for (int i = 0; i < n; ++i) {
        const VecND& row = a[static_cast<unsigned int>(i)];
        VecND& lower = l[static_cast<unsigned int>(i)];
        for (int j = 0; j <= i; ++j) {
            const double mirrored = a[static_cast<unsigned int>(j)][i];
            const double size = std::max({1.0, std::abs(row[j]), std::abs(mirrored)});
            if (!(std::abs(row[j] - mirrored) < detail::numericalZero * size)) return false;
            const VecND& above = l[static_cast<unsigned int>(j)];
            double rest = row[j];
            for (int k = 0; k < j; ++k) rest -= lower[k] * above[k];
            if (j < i ? IsZero(above[j]) : !(rest >= 0.0)) return false;
            lower[j] = j < i ? rest / above[j] : std::sqrt(rest);
        }
    }
    u = l.GetTranspose();
    return true;
}

}  // namespace

MathTypes MatrixNM::GetType() const { return MathTypes::MatrixNM; }

void MatrixNM::Resize(unsigned int rowCount, unsigned int columnCount) {
    rows.assign(rowCount, VecND(columnCount));
    numRows = rowCount;
    numCols = columnCount;
}

bool MatrixNM::IsWellFormed() const {
    return rows.size() == numRows &&
           std::all_of(rows.begin(), rows.end(), [this](const VecND& row) { return row.GetDimension() == numCols; });
}

// Square, not empty, finite.
bool MatrixNM::IsUsable() const {
    return numRows > 0 && numRows == numCols && IsWellFormed() &&
           std::all_of(rows.begin(), rows.end(), [](const VecND& row) { return AreFinite(row.GetCoordinates()); });
}

MatrixNM MatrixNM::operator*(const MatrixNM& other) const {
    if (numCols != other.numRows || !IsWellFormed() || !other.IsWellFormed()) return {};
    MatrixNM product(numRows, other.numCols);
    const int columns = static_cast<int>(other.numCols);
    for (std::size_t i = 0; i < numRows; ++i) {
        VecND& row = product.rows[i];
        const std::vector<double>& factors = rows[i].GetCoordinates();
        for (std::size_t k = 0; k < numCols; ++k) {
            const VecND& added = other.rows[k];
            for (int j = 0; j < columns; ++j) row[j] += factors[k] * added[j];
        }
    }
    return product;
}

MatrixNM& MatrixNM::operator*=(double factor) {
    for (VecND& row : rows) row *= factor;
    return *this;
}

bool MatrixNM::operator==(const MatrixNM& other) const {
    return numRows == other.numRows && numCols == other.numCols &&
           std::equal(rows.begin(), rows.end(), other.rows.begin(), other.rows.end(),
                      [](const VecND& a, const VecND& b) { return a.GetCoordinates() == b.GetCoordinates(); });
}

MatrixNM& MatrixNM::Transpose() { return *this = GetTranspose(); }

MatrixNM MatrixNM::GetTranspose() const {
    if (!IsWellFormed()) return {};
    MatrixNM result(numCols, numRows);
    for (std::size_t i = 0; i < numRows; ++i) {
        for (std::size_t j = 0; j < numCols; ++j) result.rows[j][static_cast<int>(i)] = rows[i][static_cast<int>(j)];
    }
    return result;
}

bool MatrixNM::Determinant(double& determinant) const {
    if (numRows == 0 || numRows != numCols || !IsWellFormed()) return false;
    if (numRows <= largestExpanded) {
        determinant = Expansion(rows).Determinant();
    } else if (IsUsable()) {
        determinant = Elimination(rows).PivotProduct(numRows).Times(1.0);
    } else {
        determinant = std::numeric_limits<double>::quiet_NaN();
    }
    return true;
}

// With P A Q = L U and U = (V, u; 0, e) the adjoint det(A) A^-1 is det(V) det(P) det(Q) Q (e U^-1) L^-1 P, and
// e U^-1 = (e V^-1, -V^-1 u; 0, 1) needs no division by the last pivot e, which is 0 for a singular matrix. An earlier
// pivot of 0 means a column that depends on those before it; it is exchanged with the last one (Q). A second such
// column leaves a rank of at most n - 2, and all minors are 0.
bool MatrixNM::CoFactor(MatrixNM& cofactors) const {
    if (!IsUsable()) return false;
    MatrixNM result(numRows, numCols);
    if (numRows <= largestExpanded) {
        const Expansion expansion(rows);
        for (unsigned int i = 0; i < numRows; ++i) {
            for (unsigned int j = 0; j < numCols; ++j) result.rows[i][static_cast<int>(j)] = expansion.CoFactor(i, j);
        }
        cofactors = std::move(result);
        return true;
    }
    const std::size_t last = numRows - 1;
    Elimination elimination(rows);
    const std::size_t dependent = std::min(elimination.FirstZeroPivot(), last);
    if (dependent < last) {
        std::vector<VecND> exchanged(rows);
        for (VecND& row : exchanged) std::swap(row[static_cast<int>(dependent)], row[static_cast<int>(last)]);
        elimination = Elimination(exchanged);
    }
    if (elimination.FirstZeroPivot() >= last) {
        ScaledProduct factor = elimination.PivotProduct(last);
        if (dependent < last) factor.Multiply(-1.0);
        const std::vector<double> inverse = elimination.ScaledInverse();
        for (std::size_t i = 0; i < numRows; ++i) {
            const std::size_t column = i == dependent ? last : i == last ? dependent : i;
            const double* const row = inverse.data() + i * elimination.Stride();
            for (std::size_t j = 0; j < numRows; ++j) {
                result.rows[elimination.Source(j)][static_cast<int>(column)] = factor.Times(row[j]);
            }
        }
    }
    cofactors = std::move(result);
    return true;
}

bool MatrixNM::Adjoint(MatrixNM& adjoint) const {
    MatrixNM cofactors;
    if (!CoFactor(cofactors)) return false;
    adjoint = cofactors.GetTranspose();
    return true;
}

bool MatrixNM::GetInverse(MatrixNM& inverse) const {
    const auto usable = [](double determinant) { return std::isfinite(determinant) && !IsZero(determinant); };
    MatrixNM result;
    if (numRows <= largestExpanded) {
        double determinant = 0.0;
        if (!Determinant(determinant) || !usable(determinant) || !Adjoint(result)) return false;
        result *= 1.0 / determinant;
    } else {
        if (!IsUsable()) return false;
        const Elimination elimination(rows);
        if (!usable(elimination.PivotProduct(numRows).Times(1.0))) return false;
        result.Resize(numRows, numCols);
        const std::vector<double> values = elimination.Inverse();
        for (std::size_t i = 0; i < numRows; ++i) {
            const double* const row = values.data() + i * elimination.Stride();
            VecND& out = result.rows[i];
            for (std::size_t j = 0; j < numRows; ++j) out[static_cast<int>(elimination.Source(j))] = row[j];
        }
    }
    if (!result.IsUsable()) return false;
    inverse = std::move(result);
    return true;
}

bool MatrixNM::LUDecomposition(MatrixNM& lower, MatrixNM& upper, LUDecompositionMethod method) const {
    if (!IsUsable()) return false;
    MatrixNM l(numRows, numCols);
    MatrixNM u(numRows, numCols);
    const auto decompose = [&] {
        switch (method) {
            case LUDecompositionMethod::Crout:
                return DecomposeCrout(*this, l, u);
            case LUDecompositionMethod::Doolittle:
                return DecomposeDoolittle(*this, l, u);
            case LUDecompositionMethod::Cholesky:
                return DecomposeCholesky(*this, l, u);
        }
        return false;
    };
    if (!decompose()) return false;
    lower = std::move(l);
    upper = std::move(u);
    return true;
}

bool MatrixNM::SolveLinearSystem(const VecND& b, VecND& x, LUDecompositionMethod method) const {
    MatrixNM l;
    MatrixNM u;
    if (b.GetDimension() != numRows || !LUDecomposition(l, u, method)) return false;
    const int n = static_cast<int>(numRows);
    VecND solution(b);
    for (int i = 0; i < n; ++i) {
        const VecND& row = l[static_cast<unsigned int>(i)];
        if (IsZero(row[i])) return false;
        for (int k = 0; k < i; ++k) solution[i] -= row[k] * solution[k];
        solution[i] /= row[i];
    }
    for (int i = n - 1; i >= 0; --i) {
        const VecND& row = u[static_cast<unsigned int>(i)];
        if (IsZero(row[i])) return false;
        for (int k = i + 1; k < n; ++k) solution[i] -= row[k] * solution[k];
        solution[i] /= row[i];
    }
    if (!AreFinite(solution.GetCoordinates())) return false;
    x = solution;
    return true;
}

bool MatrixNM::DumpToFile(const std::string& path) const {
    std::FILE* const file = std::fopen(path.c_str(), "w+");
    if (file == nullptr) return false;
    bool written = true;
    for (const VecND& row : rows) {
        for (const double value : row.GetCoordinates()) written = std::fprintf(file, "%f ", value) > 0 && written;
        written = std::fputc('\n', file) != EOF && written;
    }
    return std::fclose(file) == 0 && written;
}

VecND operator*(const MatrixNM& matrix, const VecND& v) {
    if (matrix.GetNumCols() != v.GetDimension()) return {};
    VecND product(matrix.GetNumRows());
    for (unsigned int i = 0; i < matrix.GetNumRows(); ++i) {
        if (matrix[i].GetDimension() != v.GetDimension()) return {};
        product[static_cast<int>(i)] = matrix[i].DotProduct(v);
    }
    return product;
}

}  // namespace Kalvio::Math
