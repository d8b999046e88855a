#pragma once

#include "kalvio/core/Angle.h"
#include "kalvio/core/IMathObject.h"
#include "kalvio/core/Vec2D.h"
#include "kalvio/core/detail/HomogeneousMatrix.h"

#include <array>
#include <complex>

namespace Kalvio::Math {

class Polynomial;

/// Transformation of the plane: 3 x 3 values for row vectors, [x y 1] M, translation in row 2.
///
/// Products apply from left to right: p (A B) is A first, then B. See `detail::HomogeneousMatrix` for the flag.
class KALVIO_MATH_API Matrix2D final : public IMathObject, public detail::HomogeneousMatrix<Matrix2D, 3> {
public:
    static const Matrix2D identity;  ///< flag 1

    /// The identity, flag 1.
    constexpr Matrix2D() = default;
    /// Nine values, row-major, flag 0; the undefined identity for null.
    explicit Matrix2D(double const (*rows)[3]) : Matrix2D(rows != nullptr ? rows[0] : nullptr) {}
    explicit Matrix2D(double const* source) : HomogeneousMatrix(source) {}

    MathTypes GetType() const override;

    /// True when both flags are 1, otherwise when all values are exactly equal.
    bool operator==(const Matrix2D& other) const { return IsSame(other); }
    /// Strict comparison of all values: |a - b| < tolerance.
    bool IsEqualTo(const Matrix2D& other, double tolerance) const { return IsNear(other, tolerance); }

    /// Determinant of the linear part: m00 m11 - m10 m01.
    double Determinant() const { return elements(0, 0) * elements(1, 1) - elements(1, 0) * elements(0, 1); }
    /// Inverse of the matrix taken as affine; column 2 and the flag stay as they are. A determinant of exactly 0 gives
    /// the identity with flag 2.
    Matrix2D& Invert();

    /// Moves after this transformation. On flag 1 an offset of (0, 0) does nothing and any other clears the flag; on
    /// other matrices the flag stays.
    Matrix2D& Translate(double tx, double ty) { return TranslateBy({tx, ty}); }
    Matrix2D& Translate(const Vec2D& offset) { return Translate(offset.GetX(), offset.GetY()); }
    /// Moves before this transformation.
    Matrix2D& PreTranslate(double tx, double ty) { return PreTranslateBy({tx, ty}); }
    Matrix2D& PreTranslate(const Vec2D& offset) { return PreTranslate(offset.GetX(), offset.GetY()); }
    /// Scales about the origin after this transformation.
    Matrix2D& Scale(double factor) { return Scale(factor, factor); }
    Matrix2D& Scale(double sx, double sy) { return ScaleBy({sx, sy}); }
    Matrix2D& Scale(const Vec2D& factors) { return Scale(factors.GetX(), factors.GetY()); }
    /// Scales about the origin before this transformation.
    Matrix2D& PreScale(double factor) { return PreScale(factor, factor); }
    Matrix2D& PreScale(double sx, double sy) { return PreScaleBy({sx, sy}); }
    Matrix2D& PreScale(const Vec2D& factors) { return PreScale(factors.GetX(), factors.GetY()); }
    /// Inserts a rotation, counter-clockwise for positive angles, between the linear part and the translation: rows 0
    /// and 1 are turned, m02 and m12 are multiplied by the cosine, the translation stays.
    ///
    /// The flag stays too: a rotated identity keeps flag 1, and products with it are short-cut as if it were the
    /// identity. Where the rotation shall count in products or turn the translation, build the rotation from its nine
    /// values and multiply.
    Matrix2D& Rotate(const Angle& angle);

    /// Direction of the image of the X axis, in (-pi, pi]: the rotation of a matrix without shear.
    Angle GetRotation() const { return {elements(0, 0), elements(0, 1)}; }

    /// det(x I - M), degree 3, leading coefficient 1.
    Polynomial GetCharacteristicPolynomial() const;
    /// Eigenvalues of the whole 3 x 3 matrix by descending real part; of a conjugate pair the positive imaginary part
    /// first. An affine matrix has the eigenvalues of its linear part and 1.
    /// @return false, outputs untouched, for elements or eigenvalues that are not finite, and in the real form when one
    /// is complex
    [[nodiscard]] bool GetEigenValues(std::array<double, 3>& eigenValues) const;
    [[nodiscard]] bool GetEigenValues(std::array<std::complex<double>, 3>& eigenValues) const;
    /// Row eigenvectors, v M = lambda v: the homogeneous vectors whose direction this transformation keeps. Unit rows
    /// of `eigenVectors` in the order of the eigenvalues; orthonormal when the matrix is symmetric. The columns of the
    /// usual form M v = lambda v are those of the transpose.
    /// @return false, outputs untouched, when an eigenvalue is complex or no three independent vectors can be told
    [[nodiscard]] bool GetEigenVectors(std::array<double, 3>& eigenValues, Matrix2D& eigenVectors) const;
    /// M = U S V^T with orthogonal U, V and the singular values on the diagonal of S, descending, none negative.
    /// @return false, outputs untouched, for elements or singular values that are not finite
    [[nodiscard]] bool SingularValueDecomposition(Matrix2D& u, Matrix2D& s, Matrix2D& v) const;
};

}  // namespace Kalvio::Math
