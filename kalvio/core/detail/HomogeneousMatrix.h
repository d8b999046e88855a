#pragma once

#include "kalvio/core/detail/SquareMatrix.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace Kalvio::Math::detail {

/// What the transformation matrices of plane and space share: N x N values for row vectors, translation in the last
/// row, and a state flag.
///
/// Flag: 1 = identity, 0 = general, 2 = undefined (the result of inverting a singular matrix). It is a short cut of the
/// products and comparisons. `Translate`, `Invert` and the products treat it as they say; every other change of a value
/// clears it to 0.
template <class MatrixType, std::size_t N>
class HomogeneousMatrix {
public:
    using Row = std::array<double, N>;

    std::uint16_t GetFlag() const { return flag; }
    bool IsUndefined() const { return flag == undefinedFlag; }

    /// NaN outside the matrix.
    double Get(int row, int column) const {
        return IsInside(row, column) ? elements(Index(row), Index(column)) : std::numeric_limits<double>::quiet_NaN();
    }
    /// @return false outside the matrix, which stays as it is
    bool Set(int row, int column, double value) {
        if (!IsInside(row, column)) return false;
        elements(Index(row), Index(column)) = value;
        flag = generalFlag;
        return true;
    }
    /// All NaN outside the matrix.
    Row GetRow(int row) const {
        Row result{};
        for (std::size_t i = 0; i < N; ++i) result[i] = Get(row, static_cast<int>(i));
        return result;
    }
    Row GetColumn(int column) const {
        Row result{};
        for (std::size_t i = 0; i < N; ++i) result[i] = Get(static_cast<int>(i), column);
        return result;
    }
    /// @return false outside the matrix, which stays as it is
    bool SetRow(int row, const Row& content) {
        if (!IsInside(row, 0)) return false;
        for (std::size_t i = 0; i < N; ++i) elements(Index(row), i) = content[i];
        flag = generalFlag;
        return true;
    }
    bool SetColumn(int column, const Row& content) {
        if (!IsInside(0, column)) return false;
        for (std::size_t i = 0; i < N; ++i) elements(i, Index(column)) = content[i];
        flag = generalFlag;
        return true;
    }
    /// The values, row-major. Taking the writable pointer counts as a change and clears the flag.
    const double* Ptr() const { return elements.values.data(); }
    double* Ptr() {
        flag = generalFlag;
        return elements.values.data();
    }
    double GetTrace() const {
        double trace = 0.0;
        for (std::size_t i = 0; i < N; ++i) trace += elements(i, i);
        return trace;
    }

    /// This matrix times the other: the other is applied after this one. Nothing happens when the other's flag is 1;
    /// the other is copied when only this flag is 1; otherwise the flag stays as it is.
    MatrixType& operator*=(const MatrixType& other) { return MultiplyBy(other, false); }
    /// The other times this matrix: the other is applied before this one. Same short cuts.
    MatrixType& PreMultiply(const MatrixType& other) { return MultiplyBy(other, true); }
    /// All values times the factor.
    MatrixType& operator*=(double factor) {
        return Change([factor](double& value) { value *= factor; });
    }
    /// Nothing changes for a divisor of 0 or NaN.
    MatrixType& operator/=(double divisor) {
        if (!(divisor < 0.0 || divisor > 0.0)) return Self();
        return Change([divisor](double& value) { value /= divisor; });
    }
    MatrixType& operator+=(const MatrixType& other) { return Add(1.0, other); }
    MatrixType& operator-=(const MatrixType& other) { return Add(-1.0, other); }

    MatrixType& Transpose() {
        elements = Transposed(elements);
        flag = generalFlag;
        return Self();
    }
    [[nodiscard]] MatrixType GetTranspose() const {
        MatrixType result(Self());
        return result.Transpose();
    }
    /// The copy is undefined when this matrix is singular; see `Invert`.
    [[nodiscard]] MatrixType GetInverse() const {
        MatrixType result(Self());
        return result.Invert();
    }

protected:
    static constexpr std::uint16_t generalFlag = 0;
    static constexpr std::uint16_t identityFlag = 1;
    static constexpr std::uint16_t undefinedFlag = 2;

    constexpr HomogeneousMatrix() = default;
    /// The undefined identity for null.
    explicit HomogeneousMatrix(const double* source) : flag(source != nullptr ? generalFlag : undefinedFlag) {
        for (std::size_t i = 0; source != nullptr && i < N * N; ++i) elements.values[i] = source[i];
    }

    MatrixType& Self() { return static_cast<MatrixType&>(*this); }
    const MatrixType& Self() const { return static_cast<const MatrixType&>(*this); }

    bool IsSame(const HomogeneousMatrix& other) const {
        return (flag == identityFlag && other.flag == identityFlag) || elements.values == other.elements.values;
    }
    /// Strict comparison of all values; the flags are not looked at.
    bool IsNear(const HomogeneousMatrix& other, double tolerance) const {
        for (std::size_t i = 0; i < N * N; ++i) {
            if (!(std::abs(elements.values[i] - other.elements.values[i]) < tolerance)) return false;
        }
        return true;
    }
    MatrixType& SetUndefined() {
        elements = SquareMatrix<N>::Identity();
        flag = undefinedFlag;
        return Self();
    }

    // One offset or factor for each coordinate.
    using Coordinates = std::array<double, N - 1>;

    MatrixType& TranslateBy(const Coordinates& offset) {
        if (flag == identityFlag) {
            if (offset == Coordinates{}) return Self();
            for (std::size_t j = 0; j + 1 < N; ++j) elements(N - 1, j) = offset[j];
            flag = generalFlag;
            return Self();
        }
        for (std::size_t i = 0; i < N; ++i) {
            const double weight = elements(i, N - 1);
            if (weight == 0.0) continue;
            for (std::size_t j = 0; j + 1 < N; ++j) elements(i, j) += weight * offset[j];
        }
        return Self();
    }
    MatrixType& PreTranslateBy(const Coordinates& offset) {
        for (std::size_t i = 0; i + 1 < N; ++i) {
            for (std::size_t j = 0; j < N; ++j) elements(N - 1, j) += offset[i] * elements(i, j);
        }
        flag = generalFlag;
        return Self();
    }
    MatrixType& ScaleBy(const Coordinates& factors) {
        for (std::size_t i = 0; i < N; ++i) {
            for (std::size_t j = 0; j + 1 < N; ++j) elements(i, j) *= factors[j];
        }
        flag = generalFlag;
        return Self();
    }
    MatrixType& PreScaleBy(const Coordinates& factors) {
        for (std::size_t i = 0; i + 1 < N; ++i) {
            for (std::size_t j = 0; j < N; ++j) elements(i, j) *= factors[i];
        }
        flag = generalFlag;
        return Self();
    }

    SquareMatrix<N> elements = SquareMatrix<N>::Identity();
    std::uint16_t flag = identityFlag;

private:
    static constexpr std::size_t Index(int i) { return static_cast<std::size_t>(i); }
    static constexpr bool IsInside(int row, int column) {
        return row >= 0 && column >= 0 && Index(row) < N && Index(column) < N;
    }
    template <class Operation>
    MatrixType& Change(Operation operation) {
        for (double& value : elements.values) operation(value);
        flag = generalFlag;
        return Self();
    }
    MatrixType& Add(double factor, const HomogeneousMatrix& other) {
        for (std::size_t i = 0; i < N * N; ++i) elements.values[i] += factor * other.elements.values[i];
        flag = generalFlag;
        return Self();
    }
    MatrixType& MultiplyBy(const HomogeneousMatrix& other, bool before) {
        if (other.flag == identityFlag) return Self();
        if (flag == identityFlag) {
            *this = other;
        } else {
            elements = before ? Product(other.elements, elements) : Product(elements, other.elements);
        }
        return Self();
    }
};

}  // namespace Kalvio::Math::detail
