#include "kalvio/core/MatrixNM.h"

#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/Elimination.h"
#include "kalvio/core/detail/Expansion.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <limits>
#include <utility>

namespace Kalvio::Math {

namespace {

bool IsZero(double value) { return !(std::abs(value) >= detail::numericalZero); }

// The elements in an elimination that has not been run.
detail::Elimination Load(const MatrixNM& m) {
    const std::size_t n = m.GetNumRows();
    detail::Elimination elimination(n);
    for (unsigned int i = 0; i < n; ++i) std::copy_n(m[i].GetCoordinates().begin(), n, elimination.Row(i));
    return elimination;
}

bool IsFinite(const double* values, std::size_t n, std::size_t stride) {
    for (std::size_t i = 0; i < n; ++i) {
        const double* const row = values + i * stride;
        if (!std::all_of(row, row + n, [](double value) { return std::isfinite(value); })) return false;
    }
    return true;
}

// Gives a matrix n rows and columns, in the memory it has when it fits.
void MakeSquare(MatrixNM& m, unsigned int n) {
    if (m.GetNumRows() != n || m.GetNumCols() != n) m.Resize(n, n);
    for (unsigned int i = 0; i < n; ++i) m[i].SetDimension(n);
}

bool AreFinite(const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
}

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
            // The pivot is the value under the root; the last one divides nothing here.
            if (j == i && (!(rest >= 0.0) || (i + 1 < n && IsZero(rest)))) return false;
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
    detail::Elimination elimination = Load(*this);
    if (numRows <= detail::largestExpanded) {
        determinant = detail::ExpandedDeterminant(elimination.Row(0), numRows, elimination.Stride());
    } else if (IsFinite(elimination.Row(0), numRows, elimination.Stride())) {
        determinant = elimination.RunForDeterminant();
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
    const std::size_t n = numRows;
    detail::Elimination elimination = Load(*this);
    MatrixNM made(numRows, numCols);
    const auto store = [&] {
        if (!made.IsUsable()) return false;
        cofactors = std::move(made);
        return true;
    };
    if (n <= detail::largestExpanded) {
        detail::ExpandCofactors(
            elimination.Row(0), n, elimination.Stride(),
            [&](std::size_t i, std::size_t j, double value) { made.rows[i][static_cast<int>(j)] = value; });
        return store();
    }
    const detail::Elimination unchanged(elimination);
    const std::size_t last = n - 1;
    elimination.Run();
    const std::size_t dependent = std::min(elimination.FirstZeroPivot(), last);
    if (dependent < last) {
        elimination = unchanged;
        for (std::size_t i = 0; i < n; ++i) std::swap(elimination.Row(i)[dependent], elimination.Row(i)[last]);
        elimination.Run();
    }
    if (elimination.FirstZeroPivot() < last) return store();
    detail::ScaledProduct factor = elimination.PivotProduct(last);
    if (dependent < last) factor.Multiply(-1.0);
    const detail::Elimination::Matrix inverse = elimination.ScaledInverse();
    for (std::size_t i = 0; i < n; ++i) {
        const std::size_t column = i == dependent ? last : i == last ? dependent : i;
        const double* const row = inverse.Get() + i * elimination.Stride();
        for (std::size_t j = 0; j < n; ++j) {
            made.rows[elimination.Source(j)][static_cast<int>(column)] = factor.Times(row[j]);
        }
    }
    return store();
}

bool MatrixNM::Adjoint(MatrixNM& adjoint) const {
    MatrixNM cofactors;
    if (!CoFactor(cofactors)) return false;
    adjoint = cofactors.GetTranspose();
    return true;
}

bool MatrixNM::GetInverse(MatrixNM& inverse) const {
    if (numRows == 0 || numRows != numCols || !IsWellFormed()) return false;
    const std::size_t n = numRows;
    detail::Elimination elimination = Load(*this);
    if (!IsFinite(elimination.Row(0), n, elimination.Stride())) return false;
    if (n <= 4) {
        const detail::SquareMatrix<4> m = detail::Bordered(elimination.Row(0), n, elimination.Stride());
        detail::SquareMatrix<4> values = detail::Cofactors(m);
        const double determinant = detail::Determinant(m, values);
        if (!detail::IsInvertible(determinant)) return false;
        if (detail::HasEqualRows(elimination.Row(0), n, elimination.Stride())) return false;
        for (double& value : values.values) value *= 1.0 / determinant;
        if (!detail::IsFinite(values)) return false;
        MakeSquare(inverse, numRows);
        for (std::size_t i = 0; i < n; ++i) {
            for (std::size_t j = 0; j < n; ++j) inverse.rows[i][static_cast<int>(j)] = values(j, i);
        }
        return true;
    }
    if (!detail::IsInvertible(elimination.RunForDeterminant())) return false;
    const detail::Elimination::Matrix values = elimination.Inverse();
    if (!IsFinite(values.Get(), n, elimination.Stride())) return false;
    MakeSquare(inverse, numRows);
    for (std::size_t i = 0; i < n; ++i) {
        const double* const row = values.Get() + i * elimination.Stride();
        for (std::size_t j = 0; j < n; ++j) inverse.rows[i][static_cast<int>(elimination.Source(j))] = row[j];
    }
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
    if (!decompose() || !l.IsUsable() || !u.IsUsable()) return false;
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
        if (IsZero(row[i] * u[static_cast<unsigned int>(i)][i])) return false;  // the pivot, wherever it stands
        for (int k = 0; k < i; ++k) solution[i] -= row[k] * solution[k];
        solution[i] /= row[i];
    }
    for (int i = n - 1; i >= 0; --i) {
        const VecND& row = u[static_cast<unsigned int>(i)];
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
