#pragma once

#include "fuzz/Bytes.h"

#include <array>
#include <complex>

namespace Kalvio::Math {

/// Residuals of every decomposition, relative to the size of the matrix.
inline void CheckDecompositions(const Matrix3D& m, double size, bool hasVectors) {
    Matrix3D u, s, v;
    Require(m.SingularValueDecomposition(u, s, v));
    Require(((Matrix3D(u) *= s) *= v.GetTranspose()).Equal(m, 1e-14 * size));
    // Where columns are nothing but rounding, it takes a hundred rotations and more, each with its own.
    Require((u.GetTranspose() *= u).Equal(Matrix3D::identity, 1e-13));
    Require((v.GetTranspose() *= v).Equal(Matrix3D::identity, 1e-13));
    for (int i = 0; i < 4; ++i) Require(s.Get(i, i) >= (i < 3 ? s.Get(i + 1, i + 1) : 0.0));

    const Polynomial characteristic = m.GetCharacteristicPolynomial();
    std::array<std::complex<double>, 4> values;
    Require(m.GetEigenValues(values));
    for (const double x : {-2.0 * size, 0.0, size}) {
        const std::complex<double> product = (x - values[0]) * (x - values[1]) * (x - values[2]) * (x - values[3]);
        const Matrix3D shifted = (Matrix3D() *= -x) += m;  // of even size: the sign does not matter
        RequireNear(product.real(), shifted.Determinant(), 1e-12 * std::pow(size, 4.0));
        RequireNear(product.imag(), 0.0, 1e-12 * std::pow(size, 4.0));
        RequireNear(characteristic.Evaluate(x), shifted.Determinant(), 1e-13 * std::pow(size, 4.0));
    }
    std::array<double, 4> real{};
    Matrix3D vectors;
    const bool found = m.GetEigenVectors(real, vectors);
    Require(found || !hasVectors);
    if (!found) return;
    Matrix3D scaled(vectors);
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) scaled.Set(i, j, vectors.Get(i, j) * real[static_cast<std::size_t>(i)]);
    }
    Require(!(m == m.GetTranspose()) || (vectors.GetTranspose() *= vectors).Equal(Matrix3D::identity, 1e-14));
    Require((vectors *= m).Equal(scaled, 1e-13 * size));
}

}  // namespace Kalvio::Math
