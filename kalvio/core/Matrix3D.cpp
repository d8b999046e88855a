#include "kalvio/core/Matrix3D.h"

#include "kalvio/core/Matrix2D.h"
#include "kalvio/core/Quaternion.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/EigenSystem.h"

#include <cmath>

namespace Kalvio::Math {

namespace {

// A vector of length 0, which is no axis, for any other index.
Vec3D CoordinateAxis(int index) {
    Vec3D axis;
    if (index >= 0 && index <= 2) axis[index] = 1.0;
    return axis;
}

}  // namespace

constinit const Matrix3D Matrix3D::identity{};

Matrix3D::Matrix3D(const Matrix2D& plan) {
    const double* const m = plan.Ptr();
    elements.values = {m[0], m[1], 0.0, m[2], m[3], m[4], 0.0, m[5], 0.0, 0.0, 1.0, 0.0, m[6], m[7], 0.0, m[8]};
    if (plan.IsUndefined()) {
        flag = undefinedFlag;
    } else if (elements.values != identity.elements.values) {
        flag = generalFlag;
    }
}

Matrix3D::Matrix3D(const Quaternion& q) {
    elements(0, 0) = 1.0 - 2.0 * (q[1] * q[1] + q[2] * q[2]);
    elements(1, 0) = 2.0 * (q[0] * q[1] - q[2] * q[3]);
    elements(2, 0) = 2.0 * (q[0] * q[2] + q[1] * q[3]);
    elements(0, 1) = 2.0 * (q[0] * q[1] + q[2] * q[3]);
    elements(1, 1) = 1.0 - 2.0 * (q[0] * q[0] + q[2] * q[2]);
    elements(2, 1) = 2.0 * (q[1] * q[2] - q[0] * q[3]);
    elements(0, 2) = 2.0 * (q[0] * q[2] - q[1] * q[3]);
    elements(1, 2) = 2.0 * (q[1] * q[2] + q[0] * q[3]);
    elements(2, 2) = 1.0 - 2.0 * (q[0] * q[0] + q[1] * q[1]);
    flag = generalFlag;
}

Matrix3D::Matrix3D(SpecialMatrix special) {
    if (special == SpecialMatrix::Zero) *this *= 0.0;
    if (special == SpecialMatrix::Undefined) SetUndefined();
}

Matrix3D::Matrix3D(RotateType, const Vec3D& axis, const Angle& angle) {
    SetRotation(axis, std::cos(angle.GetRadians()), std::sin(angle.GetRadians()));
}

Matrix3D::Matrix3D(RotateType, const Vec3D& axis, double cosine, double sine) { SetRotation(axis, cosine, sine); }

Matrix3D::Matrix3D(RotateType type, double x, double y, double z, const Angle& angle)
    : Matrix3D(type, Vec3D(x, y, z), angle) {}

Matrix3D::Matrix3D(RotateType, double x, double y, double z, double cosine, double sine) {
    SetRotation(Vec3D(x, y, z), cosine, sine);
}

Matrix3D::Matrix3D(RotateType type, int axis, const Angle& angle) : Matrix3D(type, CoordinateAxis(axis), angle) {}

Matrix3D::Matrix3D(RotateType, int axis, double cosine, double sine) {
    SetRotation(CoordinateAxis(axis), cosine, sine);
}

// Rodrigues' formula for row vectors: c I + (1 - c) k^T k + s [k], with [k] the matrix of v -> k x v.
void Matrix3D::SetRotation(Vec3D axis, double cosine, double sine) {
    const double length = std::hypot(std::hypot(axis.GetX(), axis.GetY()), axis.GetZ());
    if (!(length > detail::numericalZero) || !std::isfinite(length)) return;
    axis /= length;
    const double x = axis.GetX();
    const double y = axis.GetY();
    const double z = axis.GetZ();
    const double rest = 1.0 - cosine;
    elements.values = {cosine + rest * x * x,
                       rest * x * y + sine * z,
                       rest * x * z - sine * y,
                       0.0,
                       rest * x * y - sine * z,
                       cosine + rest * y * y,
                       rest * y * z + sine * x,
                       0.0,
                       rest * x * z + sine * y,
                       rest * y * z - sine * x,
                       cosine + rest * z * z,
                       0.0,
                       0.0,
                       0.0,
                       0.0,
                       1.0};
    flag = generalFlag;
}

MathTypes Matrix3D::GetType() const { return MathTypes::Matrix3D; }

double Matrix3D::Determinant() const { return detail::Determinant(elements, detail::Cofactors(elements)); }

Matrix3D& Matrix3D::Invert() {
    const double d = Determinant();
    if (d == 0.0 || !std::isfinite(d)) return SetUndefined();
    const bool affine =
        elements(0, 3) == 0.0 && elements(1, 3) == 0.0 && elements(2, 3) == 0.0 && elements(3, 3) == 1.0;
    const std::size_t size = affine ? 3 : 4;  // the translation of an affine matrix is inverted apart, without loss
    detail::SquareMatrix<4> inverse = elements;
    for (std::size_t j = 0; affine && j < 3; ++j) inverse(3, j) = 0.0;
    const detail::SquareMatrix<4> cofactors = detail::Cofactors(inverse);
    for (std::size_t i = 0; i < size; ++i) {
        for (std::size_t j = 0; j < size; ++j) inverse(i, j) = cofactors(j, i) / d;
    }
    for (std::size_t j = 0; affine && j < 3; ++j) {
        for (std::size_t k = 0; k < 3; ++k) inverse(3, j) -= elements(3, k) * inverse(k, j);
    }
    elements = inverse;
    return *this;
}

Matrix3D& Matrix3D::Rotate(int axis, double angle) { return Rotate(CoordinateAxis(axis), angle); }

Matrix3D& Matrix3D::Rotate(const Vec3D& axis, double angle) {
    return *this *= Matrix3D(RotateType::Rotation, axis, std::cos(angle), std::sin(angle));
}

Matrix3D& Matrix3D::PreRotate(int axis, double angle) { return PreRotate(CoordinateAxis(axis), angle); }

Matrix3D& Matrix3D::PreRotate(const Vec3D& axis, double angle) {
    return PreMultiply(Matrix3D(RotateType::Rotation, axis, std::cos(angle), std::sin(angle)));
}

// With row vectors Rx Ry Rz has row 0 = (cy cz, cy sz, -sy) and column 2 = (-sy, sx cy, cx cy).
bool Matrix3D::GetRotation(Angle& aboutX, Angle& aboutY, Angle& aboutZ) const {
    Vec3D first(elements(0, 0), elements(0, 1), elements(0, 2));
    Vec3D second(elements(1, 0), elements(1, 1), elements(1, 2));
    const Vec3D third(elements(2, 0), elements(2, 1), elements(2, 2));
    const double firstLength = first.Length();
    Vec3D normal = first.CrossProduct(second);
    const double normalLength = normal.Length();
    if (!(firstLength > 0.0 && normalLength > 0.0 && normal.DotProduct(third) > 0.0)) return false;
    if (!std::isfinite(firstLength) || !std::isfinite(normalLength)) return false;
    first /= firstLength;
    normal /= normalLength;
    second = normal.CrossProduct(first);

    const double cosY = std::hypot(first.GetX(), first.GetY());
    aboutY = Angle(cosY, -first.GetZ());
    const bool quarter = cosY < detail::numericalZero;
    aboutX = quarter ? Angle(second.GetY(), -normal.GetY()) : Angle(normal.GetZ(), second.GetZ());
    aboutZ = quarter ? Angle() : Angle(first.GetX(), first.GetY());
    return true;
}

bool Matrix3D::GetEigenValues(std::array<double, 4>& eigenValues) const {
    return detail::ComputeEigenValues(elements, eigenValues);
}

bool Matrix3D::GetEigenValues(std::array<std::complex<double>, 4>& eigenValues) const {
    return detail::ComputeEigenValues(elements, eigenValues);
}

bool Matrix3D::GetEigenVectors(std::array<double, 4>& eigenValues, Matrix3D& eigenVectors) const {
    return detail::ComputeEigenVectors(elements, eigenValues, eigenVectors);
}

bool Matrix3D::SingularValueDecomposition(Matrix3D& u, Matrix3D& s, Matrix3D& v) const {
    return detail::StoreSingularValues(elements, u, s, v);
}

}  // namespace Kalvio::Math
