#include "kalvio/Math.h"
#include "support/Testing.h"

#include <functional>

namespace Kalvio::Math {
namespace {

constexpr auto rotation = Matrix3D::RotateType::Rotation;

TEST(Matrix3DTest, ConstructorsBuildWhatTheirTagsSay) {
    const Point3D p(1.0, 2.0, 3.0);
    const Matrix3D turn(rotation, 2, detail::pi / 2.0);
    EXPECT_THAT(p * turn, IsNear(Point3D(-2.0, 1.0, 3.0), 1e-15)) << "counter-clockwise from above";
    EXPECT_THAT(p * Matrix3D(rotation, Vec3D(0, 5, 0), 0.0, 1.0), IsNear(Point3D(3.0, 2.0, -1.0), 0.0)) << "z to x";
    const Matrix3D third(rotation, 1e200, 1e200, 1e200, 2.0 * detail::pi / 3.0);
    EXPECT_THAT(p * third, IsNear(Point3D(3.0, 1.0, 2.0), 1e-15)) << "a third of a turn exchanges the axes";
    EXPECT_TRUE(Matrix3D(rotation, 3, 1.0) == Matrix3D::identity) << "no such axis";
    EXPECT_TRUE(Matrix3D(rotation, Vec3D(1e-11, 0, 0), 1.0) == Matrix3D::identity) << "no direction";
    EXPECT_THAT(p * Matrix3D(Matrix3D::ScaleType::Scaling, Vec3D(2, 3, 4)), IsNear(Point3D(2, 6, 12), 0.0));
    EXPECT_EQ(Matrix3D(Matrix3D::TranslateType::Translation, 4, 5, 6).GetRow(3), (Matrix3D::Row{4, 5, 6, 1}));
    EXPECT_EQ(Matrix3D(Matrix3D::SpecialMatrix::Zero).GetTrace(), 0.0);
    EXPECT_TRUE(Matrix3D(Matrix3D::SpecialMatrix::Undefined).IsUndefined());
    Matrix2D plan = Matrix2D().Rotate(detail::pi / 2.0);
    EXPECT_EQ(Matrix3D(plan).GetFlag(), 0) << "a turned matrix is not the identity, whatever its flag";
    EXPECT_EQ(Matrix3D(Matrix2D::identity).GetFlag(), 1);
    EXPECT_TRUE(Matrix3D(Matrix2D(static_cast<const double*>(nullptr))).IsUndefined());
    EXPECT_THAT(p * Matrix3D(plan.Translate(10, 20)), IsNear(Point3D(8.0, 21.0, 3.0), 1e-15));
    EXPECT_THAT(p * Matrix3D(plan.PreTranslate(10, 20)), IsNear(Point3D(-22.0 + 10.0, 11.0 + 20.0, 3.0), 1e-14));
}

TEST(Matrix3DTest, RotationsTurnEverythingAndComposeLikePoints) {
    const Point3D p(1.0, -2.0, 0.5);
    const Vec3D axis(1.0, 2.0, -1.0);
    const Matrix3D m = Matrix3D(Matrix3D::TranslateType::Translation, 3, 4, 5).Scale(2.0, 1.0, 0.5);
    const Matrix3D turn(rotation, axis, 0.7);
    EXPECT_THAT(p * Matrix3D(m).Rotate(axis, 0.7), IsNear(p * m * turn, 1e-14));
    EXPECT_THAT(p * Matrix3D(m).PreRotate(1.0, 2.0, -1.0, 0.7), IsNear(p * turn * m, 1e-14));
    EXPECT_THAT(p * Matrix3D(m).PreRotate(0, 0.3).Rotate(1, 0.2),
                IsNear(p * Matrix3D(rotation, 0, 0.3) * m * Matrix3D(rotation, 1, 0.2), 1e-14));
    EXPECT_EQ(Matrix3D().Rotate(0, 0.3).GetFlag(), 0);
    EXPECT_THAT(Vec3D(1.0, -2.0, 0.5) *= Quaternion(axis, 0.7), IsNear(Vec3D(1.0, -2.0, 0.5) * turn, 1e-15));
}

TEST(Matrix3DTest, AnglesRebuildTheRotation) {
    RandomNumbers random(20240602);
    for (int i = 0; i < 200; ++i) {
        const double quarter = i % 2 == 0 ? random(-3.0, 3.0) : std::copysign(detail::pi / 2.0, random(-3.0, 3.0));
        const Matrix3D turn = Matrix3D().Rotate(0, random(-3.0, 3.0)).Rotate(1, quarter).Rotate(2, random(-3.0, 3.0));
        Angle x, y, z;
        ASSERT_TRUE(Matrix3D(turn).PreScale(2.0, 3.0, 0.5).GetRotation(x, y, z));
        const Matrix3D level = Matrix3D().Rotate(0, x.GetRadians()).Rotate(1, y.GetRadians());
        EXPECT_TRUE(Matrix3D(level).Rotate(2, z.GetRadians()).Equal(turn, 1e-14)) << quarter;
    }
    Angle x, y, z;
    EXPECT_TRUE(Matrix3D().Scale(1, -1, -1).GetRotation(x, y, z) && x.GetRadians() == detail::pi);
    EXPECT_TRUE(Matrix3D().Scale(-1, -1, 1).GetRotation(x, y, z) && z.GetRadians() == detail::pi) << "not -pi";
    EXPECT_FALSE(Matrix3D().Scale(1.0, 1.0, -1.0).GetRotation(x, y, z)) << "a mirror";
    EXPECT_FALSE(Matrix3D(Matrix3D::SpecialMatrix::Zero).GetRotation(x, y, z));
}

TEST(Matrix3DTest, InverseUndoesAffineAndProjectiveMatrices) {
    RandomNumbers random(20240603);
    for (int i = 0; i < 100; ++i) {
        Matrix3D m;
        for (int k = 0; k < 16; ++k) m.Set(k / 4, k % 4, random(-1.0, 1.0) + (k % 5 == 0 ? 3.0 : 0.0));
        EXPECT_TRUE((Matrix3D(m) *= m.GetInverse()).Equal(Matrix3D::identity, 1e-14));
        EXPECT_NEAR(m.Determinant() * m.GetInverse().Determinant(), 1.0, 1e-13);
        m.SetColumn(3, {0.0, 0.0, 0.0, 1.0});
        m.SetRow(3, {385000.0, 6672000.0, 100.0, 1.0});
        const Point3D p(385000.0, 6672000.0, random(-1.0, 1.0));
        EXPECT_THAT(p * m * m.GetInverse(), IsNear(p, 1e-8));
        EXPECT_EQ(m.GetInverse().GetColumn(3), (Matrix3D::Row{0.0, 0.0, 0.0, 1.0}));
    }
    for (const double y : {0.0, kNan}) EXPECT_TRUE(Matrix3D().Scale(1.0, y, 1.0).Invert().IsUndefined());
}

// Residuals of every decomposition, relative to the size of the matrix.
void CheckDecompositions(const Matrix3D& m, double size, bool hasVectors) {
    Matrix3D u, s, v;
    ASSERT_TRUE(m.SingularValueDecomposition(u, s, v));
    EXPECT_TRUE(((Matrix3D(u) *= s) *= v.GetTranspose()).Equal(m, 1e-14 * size));
    EXPECT_TRUE((u.GetTranspose() *= u).Equal(Matrix3D::identity, 1e-14));
    EXPECT_TRUE((v.GetTranspose() *= v).Equal(Matrix3D::identity, 1e-14));
    for (int i = 0; i < 4; ++i) EXPECT_GE(s.Get(i, i), i < 3 ? s.Get(i + 1, i + 1) : 0.0);

    const Polynomial characteristic = m.GetCharacteristicPolynomial();
    std::array<std::complex<double>, 4> values;
    ASSERT_TRUE(m.GetEigenValues(values));
    for (const double x : {-2.0 * size, 0.0, size}) {
        const std::complex<double> product = (x - values[0]) * (x - values[1]) * (x - values[2]) * (x - values[3]);
        const Matrix3D shifted = (Matrix3D() *= -x) += m;  // of even size: the sign does not matter
        EXPECT_NEAR(product.real(), shifted.Determinant(), 1e-12 * std::pow(size, 4.0));
        EXPECT_NEAR(product.imag(), 0.0, 1e-12 * std::pow(size, 4.0));
        EXPECT_NEAR(characteristic.Evaluate(x), shifted.Determinant(), 1e-13 * std::pow(size, 4.0));
    }
    std::array<double, 4> real{};
    Matrix3D vectors;
    const bool found = m.GetEigenVectors(real, vectors);
    EXPECT_TRUE(found || !hasVectors);
    if (!found) return;
    Matrix3D scaled(vectors);
    for (int i = 0; i < 4; ++i) {
        auto row = vectors.GetRow(i);
        for (double& component : row) component *= real[static_cast<std::size_t>(i)];
        scaled.SetRow(i, row);
    }
    if (m == m.GetTranspose()) {
        EXPECT_TRUE((vectors.GetTranspose() *= vectors).Equal(Matrix3D::identity, 1e-14));
    }
    EXPECT_TRUE((vectors *= m).Equal(scaled, 1e-13 * size)) << "v M = lambda v";
}

TEST(Matrix3DTest, DecompositionsReconstructTheMatrix) {
    RandomNumbers random(20240604);
    std::uniform_int_distribution<int> small(-2, 2);
    const std::tuple<const char*, bool, std::function<double(int, int)>> kinds[] = {
        {"general", false, [&](int, int) { return random(-1.0, 1.0); }},
        {"many equal and zero eigenvalues", false, [&](int, int) { return small(random); }},
        {"triangular", true, [&](int i, int j) { return i <= j ? random(-1.0, 1.0) : 0.0; }},
        {"badly scaled", false, [&](int i, int j) { return random(-1.0, 1.0) * std::pow(1e4, i - j); }},
        {"columns that are nothing beside the others", false,
         [&](int, int j) {
             return random(-1.0, 1.0) * std::array{1.0, 1e-160, 1.0, 1e-300}.at(static_cast<std::size_t>(j));
         }},
        {"rank 1", true, [&](int i, int j) { return (i % 2 == 0 ? 1.0 : 0.3 * i) * (j + 1.0); }},
    };
    for (const auto& [why, hasVectors, element] : kinds) {
        SCOPED_TRACE(why);
        for (int run = 0; run < 200 && !testing::Test::HasFailure(); ++run) {
            Matrix3D m;
            double size = 1.0;
            for (int k = 0; k < 16; ++k) {
                m.Set(k / 4, k % 4, element(k / 4, k % 4));
                size = std::max(size, std::abs(m.Get(k / 4, k % 4)));
            }
            CheckDecompositions(m, size, hasVectors);
            m += m.GetTranspose();
            CheckDecompositions(m, 2.0 * size, true);
        }
    }
}

TEST(Matrix3DTest, KnownEigenValues) {
    const double slow[][4][4] = {
        {{1, 1, 0, 0}, {-2, 2, 1, 0}, {0, -2, 1, 0}, {0, 0, 0, 5}},      // cycles without a shift of its own
        {{0, -1, 0, 0}, {1, 1, 1, 1}, {-1, 0, 0, 0}, {0, 0, -1, -1}},    // two equal complex pairs, defective
        {{-2, 2, 2, -1}, {2, -2, 0, 2}, {2, 2, -2, 2}, {1, -2, -2, 0}},  // two nearly equal ones
    };
    for (const auto& rows : slow) CheckDecompositions(Matrix3D(rows), 5.0, false);
    const double companion[4][4] = {{10, -35, 50, -24}, {1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}};
    const Matrix3D units = Matrix3D().Scale(1e4, 1e-3, 0.1);
    const Matrix3D cases[] = {Matrix3D(companion), (Matrix3D(companion) *= units).PreMultiply(units.GetInverse())};
    std::array<double, 4> values{};
    for (const Matrix3D& m : cases) {
        ASSERT_TRUE(m.GetEigenValues(values));
        for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(values[i], 4.0 - static_cast<double>(i), 1e-12);
    }
    const double cyclic[4][4] = {{0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}, {1, 0, 0, 0}};
    std::array<std::complex<double>, 4> roots;
    EXPECT_FALSE(Matrix3D(cyclic).GetEigenValues(values)) << "complex";
    ASSERT_TRUE(Matrix3D(cyclic).GetEigenValues(roots));
    for (const auto& root : roots) EXPECT_NEAR(std::abs(std::pow(root, 4) - 1.0), 0.0, 1e-14);
    EXPECT_NEAR(std::abs(roots[0] - roots[3]), 2.0, 1e-14) << "1 first, -1 last";
    EXPECT_TRUE(Matrix3D(Matrix3D::SpecialMatrix::Zero).GetEigenValues(values) && values == decltype(values){});
    ASSERT_TRUE((Matrix3D(companion) *= 1e300).GetEigenValues(values)) << "no overflow";
    EXPECT_NEAR(values[0], 4e300, 1e289);
    const double twice[4][4] = {{0.3, 0.1, 0, 0}, {-0.1, 0.1, 0, 0}, {5, 6, 2, 0}, {7, 8, 9, 3}};
    EXPECT_TRUE(Matrix3D(twice).GetEigenValues(values)) << "rounding does not part the double root 0.2";
}

}  // namespace
}  // namespace Kalvio::Math
