#pragma once

#include "kalvio/core/IMathObject.h"
#include "kalvio/core/VecND.h"
#include "kalvio/core/detail/MovedNumber.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Kalvio::Math {

/// How `MatrixNM::LUDecomposition` factorises A = L U. None of them pivots.
enum class LUDecompositionMethod : std::uint32_t {
    Crout = 0,      ///< unit diagonal on U
    Doolittle = 1,  ///< unit diagonal on L
    Cholesky = 2,   ///< U = L^T, for symmetric positive matrices
};

/// Dense matrix of any size.
///
/// The rows are vectors of as many coordinates as there are columns. They are handed out for writing; a matrix in which
/// one was given another length fails in every operation that returns false, and its products and transpose are empty.
/// Failing operations leave their outputs untouched. An output may be this matrix.
class KALVIO_MATH_API MatrixNM final : public IMathObject {
public:
    /// No rows, no columns.
    MatrixNM() = default;
    /// All elements 0.
    MatrixNM(unsigned int rowCount, unsigned int columnCount) { Resize(rowCount, columnCount); }

    MathTypes GetType() const override;

    unsigned int GetNumRows() const { return numRows; }
    unsigned int GetNumCols() const { return numCols; }
    /// The matrix of the new size, all elements 0.
    void Resize(unsigned int rowCount, unsigned int columnCount);
    /// A row, unchecked.
    const VecND& operator[](unsigned int row) const { return rows[row]; }
    VecND& operator[](unsigned int row) { return rows[row]; }

    /// Empty when this has not as many columns as the other has rows.
    MatrixNM operator*(const MatrixNM& other) const;
    MatrixNM& operator*=(double factor);
    /// The same size and exactly equal elements.
    bool operator==(const MatrixNM& other) const;

    MatrixNM& Transpose();
    [[nodiscard]] MatrixNM GetTranspose() const;

    /// Up to 8 x 8 expanded by minors along the first row, each minor computed once; above, the product of the pivots
    /// of an elimination with partial pivoting, cubic in the size. Two equal rows give exactly 0; elements that are not
    /// finite give NaN or an infinity.
    /// @return false for a matrix that is not square or has no rows
    [[nodiscard]] bool Determinant(double& determinant) const;
    /// The matrix of the signed minors, right also for singular matrices; that of a 1 x 1 matrix is 1. Same methods and
    /// cost as `Determinant`.
    /// @return false for a matrix that is not square, has no rows, or elements or minors that are not finite
    [[nodiscard]] bool CoFactor(MatrixNM& cofactors) const;
    /// The transpose of the cofactors. To rounding: A Adjoint(A) = det(A) I.
    [[nodiscard]] bool Adjoint(MatrixNM& adjoint) const;
    /// The adjoint divided by the determinant; above 4 x 4 by elimination. An output of the same size keeps its memory.
    /// @return false also when the determinant is 0 within 1e-10 (strictly: |det| < 1e-10) or not finite, whatever the
    ///         condition of the matrix: scale systems of tiny or huge numbers; and where elimination meets a pivot of 0
    [[nodiscard]] bool GetInverse(MatrixNM& inverse) const;

    /// Lower and upper triangle with L U = this. Cholesky reads a matrix as symmetric when its halves agree within
    /// 1e-10 of their elements (of 1 for smaller ones).
    /// @return false for a matrix that is not square, has no rows or has elements that are not finite, for a pivot that
    ///         equals 0 within 1e-10 (strict) where it must divide, for another method, and with Cholesky for a matrix
    ///         that is not symmetric or has a negative pivot
    [[nodiscard]] bool LUDecomposition(MatrixNM& lower, MatrixNM& upper, LUDecompositionMethod method) const;
    /// The solution x of A x = b: L y = b forward, U x = y backward.
    /// @return false when the decomposition fails, b has another size, a pivot is 0 within 1e-10 or x is not finite
    [[nodiscard]] bool SolveLinearSystem(const VecND& b, VecND& x, LUDecompositionMethod method) const;

    /// Writes each row as its elements in the format "%f " and a line break, replacing the file.
    /// @return false when the file cannot be written
    bool DumpToFile(const std::string& path) const;

private:
    bool IsWellFormed() const;
    bool IsUsable() const;

    detail::MovedNumber<std::uint32_t> numRows;
    detail::MovedNumber<std::uint32_t> numCols;
    std::vector<VecND> rows;
};

/// Matrix times column vector; empty when the sizes do not match.
KALVIO_MATH_API VecND operator*(const MatrixNM& matrix, const VecND& v);

}  // namespace Kalvio::Math
