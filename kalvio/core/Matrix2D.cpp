#include "kalvio/core/Matrix2D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/detail/EigenSystem.h"

#include <cmath>

namespace Kalvio::Math {

constinit const Matrix2D Matrix2D::identity{};

MathTypes Matrix2D::GetType() const { return MathTypes::Matrix2D; }

Matrix2D& Matrix2D::Invert() {
    const double d = Determinant();
    if (d == 0.0) return SetUndefined();
    const auto old = elements;
    elements(0, 0) = old(1, 1) / d;
    elements(0, 1) = -old(0, 1) / d;
    elements(1, 0) = -old(1, 0) / d;
    elements(1, 1) = old(0, 0) / d;
    elements(2, 0) = (old(2, 1) * old(1, 0) - old(2, 0) * old(1, 1)) / d;
    elements(2, 1) = (old(2, 0) * old(0, 1) - old(2, 1) * old(0, 0)) / d;
    return *this;
}

Matrix2D& Matrix2D::Rotate(const Angle& angle) {
    const double c = std::cos(angle.GetRadians());
    const double s = std::sin(angle.GetRadians());
    for (const std::size_t i : {0U, 1U}) {
        const double x = elements(i, 0);
        const double y = elements(i, 1);
        elements(i, 0) = x * c - y * s;
        elements(i, 1) = y * c + x * s;
        elements(i, 2) *= c;
    }
    return *this;
}

bool Matrix2D::GetEigenValues(std::array<double, 3>& eigenValues) const {
    return detail::ComputeEigenValues(elements, eigenValues);
}

bool Matrix2D::GetEigenValues(std::array<std::complex<double>, 3>& eigenValues) const {
    return detail::ComputeEigenValues(elements, eigenValues);
}

bool Matrix2D::GetEigenVectors(std::array<double, 3>& eigenValues, Matrix2D& eigenVectors) const {
    return detail::ComputeEigenVectors(elements, eigenValues, eigenVectors);
}

bool Matrix2D::SingularValueDecomposition(Matrix2D& u, Matrix2D& s, Matrix2D& v) const {
    return detail::StoreSingularValues(elements, u, s, v);
}

template <>
bool Geometry::AreEqual(const Matrix2D& a, const Matrix2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
