#pragma once

#include "kalvio/core/Angle.h"
#include "kalvio/core/IMathObject.h"
#include "kalvio/core/Vec3D.h"
#include "kalvio/core/detail/HomogeneousMatrix.h"

#include <array>
#include <complex>
#include <cstdint>

namespace Kalvio::Math {

class Matrix2D;
class Polynomial;
class Quaternion;

/// Transformation of space: 4 x 4 values for row vectors, [x y z 1] M, translation in row 3.
///
/// Products apply from left to right: p (A B) is A first, then B. See `detail::HomogeneousMatrix` for the flag.
/// Rotations are right-handed: seen from the tip of the axis a positive angle turns counter-clockwise. An axis is
/// normalised; one of length at most 1e-10 or not finite gives no rotation, and so does a coordinate axis other than
/// 0 (x), 1 (y) or 2 (z).
class KALVIO_MATH_API Matrix3D final : public IMathObject, public detail::HomogeneousMatrix<Matrix3D, 4> {
public:
    /// Chooses the constructor that turns.
    enum class RotateType : std::uint32_t {
        Rotation = 0,  ///< turns about an axis through the origin
    };
    /// Chooses the constructor that scales.
    enum class ScaleType : std::uint32_t {
        Scaling = 0,  ///< scales about the origin
    };
    /// Chooses the constructor that moves.
    enum class TranslateType : std::uint32_t {
        Translation = 0,  ///< moves
    };
    /// Matrices that have a name.
    enum class SpecialMatrix : std::uint32_t {
        Identity = 0,   ///< flag 1; any other value counts as this
        Zero = 1,       ///< all values 0, flag 0
        Undefined = 2,  ///< the values of the identity, flag 2
    };

    static const Matrix3D identity;  ///< flag 1

    /// The identity, flag 1.
    constexpr Matrix3D() = default;
    /// Sixteen values, row-major, flag 0; the undefined identity for null.
    explicit Matrix3D(double const (*rows)[4]) : Matrix3D(rows != nullptr ? rows[0] : nullptr) {}
    explicit Matrix3D(double const* source) : HomogeneousMatrix(source) {}
    /// The transformation in plan; heights stay. The flag becomes 0 unless the values are those of the identity; an
    /// undefined matrix stays undefined.
    explicit Matrix3D(const Matrix2D& plan);
    /// The rotation of `Vec3D::operator*=`; the quaternion is not normalised.
    explicit Matrix3D(const Quaternion& rotation);
    explicit Matrix3D(SpecialMatrix special);

    /// Rotations about an axis or a coordinate axis, by an angle or by its cosine and sine, which are taken as they
    /// are.
    Matrix3D(RotateType, const Vec3D& axis, const Angle& angle);
    Matrix3D(RotateType, const Vec3D& axis, double cosine, double sine);
    Matrix3D(RotateType, double x, double y, double z, const Angle& angle);
    Matrix3D(RotateType, double x, double y, double z, double cosine, double sine);
    Matrix3D(RotateType, int axis, const Angle& angle);
    Matrix3D(RotateType, int axis, double cosine, double sine);
    Matrix3D(ScaleType, const Vec3D& factors) { Scale(factors); }
    Matrix3D(ScaleType, double factor) { Scale(factor); }
    Matrix3D(ScaleType, double sx, double sy, double sz) { Scale(sx, sy, sz); }
    Matrix3D(TranslateType, const Vec3D& offset) { Translate(offset); }
    Matrix3D(TranslateType, double tx, double ty, double tz) { Translate(tx, ty, tz); }

    MathTypes GetType() const override;

    /// True when both flags are 1, otherwise when all values are exactly equal.
    bool operator==(const Matrix3D& other) const { return IsSame(other); }
    /// Strict comparison of all values: |a - b| < tolerance.
    bool Equal(const Matrix3D& other, double tolerance) const { return IsNear(other, tolerance); }

    /// Determinant of all sixteen values; that of the linear part for an affine matrix (column 3 is 0, 0, 0, 1).
    double Determinant() const;
    /// General inverse; an affine matrix stays exactly affine. A determinant of exactly 0 or not finite gives the
    /// identity with flag 2; otherwise the flag stays.
    Matrix3D& Invert();

    Vec3D GetTranslation() const { return {elements(3, 0), elements(3, 1), elements(3, 2)}; }
    /// Moves after this transformation. On flag 1 an offset of (0, 0, 0) does nothing and any other clears the flag; on
    /// other matrices the flag stays.
    Matrix3D& Translate(double tx, double ty, double tz) { return TranslateBy({tx, ty, tz}); }
    Matrix3D& Translate(const Vec3D& t) { return Translate(t.GetX(), t.GetY(), t.GetZ()); }
    /// Moves before this transformation.
    Matrix3D& PreTranslate(double tx, double ty, double tz) { return PreTranslateBy({tx, ty, tz}); }
    Matrix3D& PreTranslate(const Vec3D& t) { return PreTranslate(t.GetX(), t.GetY(), t.GetZ()); }
    /// Scales about the origin after this transformation.
    Matrix3D& Scale(double factor) { return Scale(factor, factor, factor); }
    Matrix3D& Scale(double sx, double sy, double sz) { return ScaleBy({sx, sy, sz}); }
    Matrix3D& Scale(const Vec3D& s) { return Scale(s.GetX(), s.GetY(), s.GetZ()); }
    /// Scales about the origin before this transformation.
    Matrix3D& PreScale(double factor) { return PreScale(factor, factor, factor); }
    Matrix3D& PreScale(double sx, double sy, double sz) { return PreScaleBy({sx, sy, sz}); }
    Matrix3D& PreScale(const Vec3D& s) { return PreScale(s.GetX(), s.GetY(), s.GetZ()); }
    /// Turns about an axis through the origin after this transformation: the product with the rotation matrix, which
    /// turns the translation too and, unlike `Matrix2D::Rotate`, clears the flag of an identity. Angles in radians.
    Matrix3D& Rotate(int axis, double angle);
    Matrix3D& Rotate(const Vec3D& axis, double angle);
    Matrix3D& Rotate(double x, double y, double z, double angle) { return Rotate(Vec3D(x, y, z), angle); }
    /// Turns about an axis through the origin before this transformation.
    Matrix3D& PreRotate(int axis, double angle);
    Matrix3D& PreRotate(const Vec3D& axis, double angle);
    Matrix3D& PreRotate(double x, double y, double z, double angle) { return PreRotate(Vec3D(x, y, z), angle); }

    /// The three angles that turn about x, then about y, then about z: x and z in (-pi, pi], y in [-pi/2, pi/2], and 0
    /// for z where the turn about y is a quarter. Scaling and shear that come before the rotation do not matter: the X
    /// axis turns with row 0, the XY plane with rows 0 and 1.
    /// @return false, outputs untouched, when the linear part mirrors, is singular or is not finite
    [[nodiscard]] bool GetRotation(Angle& aboutX, Angle& aboutY, Angle& aboutZ) const;

    /// det(x I - M), degree 4, leading coefficient 1.
    Polynomial GetCharacteristicPolynomial() const;
    /// Eigenvalues of the whole 4 x 4 matrix; order and failure as in `Matrix2D`.
    [[nodiscard]] bool GetEigenValues(std::array<double, 4>& eigenValues) const;
    [[nodiscard]] bool GetEigenValues(std::array<std::complex<double>, 4>& eigenValues) const;
    /// Unit row eigenvectors, v M = lambda v, as rows; order and failure as in `Matrix2D`.
    [[nodiscard]] bool GetEigenVectors(std::array<double, 4>& eigenValues, Matrix3D& eigenVectors) const;
    /// M = U S V^T, as in `Matrix2D`.
    [[nodiscard]] bool SingularValueDecomposition(Matrix3D& u, Matrix3D& s, Matrix3D& v) const;

private:
    void SetRotation(Vec3D axis, double cosine, double sine);
};

}  // namespace Kalvio::Math
