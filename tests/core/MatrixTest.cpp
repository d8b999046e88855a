#include "core/Decompositions.h"
#include "kalvio/Math.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

Matrix2D Affine(double m00, double m01, double m10, double m11, double m20, double m21) {
    const double rows[3][3] = {{m00, m01, 0.0}, {m10, m11, 0.0}, {m20, m21, 1.0}};
    return Matrix2D(rows);
}

std::vector<int> FlagsOf(const std::vector<Matrix2D>& matrices) {
    std::vector<int> flags;
    for (const Matrix2D& m : matrices) flags.push_back(m.GetFlag());
    return flags;
}

TEST(Matrix2DTest, FlagFollowsTheEdits) {
    const Matrix2D twice = Affine(2, 0, 0, 2, 7, 8), undefined = Affine(1, 2, 2, 4, 5, 6).GetInverse();
    Matrix2D set, row, column, pointer;
    EXPECT_TRUE(set.Set(0, 0, 1.0) && row.SetRow(2, {3, 4, 1}) && column.SetColumn(0, {3, 4, 1}));
    *pointer.Ptr() = 5.0;
    const auto& one = Matrix2D::identity;
    // Values, edits and translations make a general matrix.
    EXPECT_THAT(FlagsOf({Affine(1, 0, 0, 1, 0, 0), set, row, column, pointer, Matrix2D() *= 2.0, Matrix2D() += one,
                         Matrix2D().PreTranslate(0, 0), Matrix2D().Transpose(), Matrix2D().Translate(0.0, 2.0)}),
                testing::Each(0));
    // Turned, inverted, moved or divided by nothing.
    EXPECT_THAT(FlagsOf({Matrix2D(), Matrix2D(one).Translate(0.0, 0.0), Matrix2D().Rotate(0.5), Matrix2D().Invert(),
                         Matrix2D() /= 0.0}),
                testing::Each(1));
    // A factor is copied, flag included, by the identity; a product keeps the flag.
    EXPECT_THAT(FlagsOf({Matrix2D(static_cast<const double*>(nullptr)), undefined, Matrix2D() *= undefined,
                         Matrix2D(undefined) *= twice}),
                testing::Each(2));
    EXPECT_TRUE(undefined.IsUndefined() && undefined.IsEqualTo(one, 1e-300));
    EXPECT_TRUE(Matrix2D().Rotate(0.5) == one) << "both flags are 1";
    EXPECT_TRUE((Matrix2D(twice) *= Matrix2D().Rotate(1.0)) == twice) << "a factor with flag 1 is skipped";
    EXPECT_FALSE(set.Set(3, 0, 1.0));
    EXPECT_TRUE(std::isnan(twice.Get(-1, 0)) && std::isnan(twice.GetColumn(3)[0]));
    EXPECT_EQ(twice.GetRow(2), (Matrix2D::Row{7, 8, 1}));
}

TEST(Matrix2DTest, EditsActAsTheTransformationsTheyName) {
    const Point2D p(3.0, -2.0);
    const Matrix2D m = Affine(2, 1, -1, 3, 10, 20);
    const Vec2D t(4, 5);
    const Point2D moved = p * m;
    EXPECT_THAT(moved, IsNear(Point2D(18.0, 17.0), 0.0));
    EXPECT_THAT(p * Matrix2D(m).Translate(t), IsNear(moved + t, 0.0));
    EXPECT_THAT(p * Matrix2D(m).PreTranslate(t), IsNear((p + t) * m, 0.0));
    EXPECT_THAT(p * Matrix2D(m).Scale(t), IsNear(Point2D(72.0, 85.0), 0.0));
    EXPECT_THAT(p * Matrix2D(m).PreScale(t), IsNear(Point2D(12.0, -10.0) * m, 0.0));
    const Matrix2D other = Affine(0, 1, -1, 0, 7, 7);
    EXPECT_THAT(p * (Matrix2D(m) *= other), IsNear(moved * other, 0.0));
    EXPECT_THAT(p * Matrix2D(m).PreMultiply(other), IsNear(p * other * m, 0.0));
    EXPECT_THAT(Vec2D(3.0, -2.0) * m, IsNear(Vec2D(18.0, 17.0), 0.0)) << "a vector moves like a point";
    Matrix2D projective = m;
    projective.SetColumn(2, {0.0, 1.0, 4.0});
    EXPECT_THAT(p * projective, IsNear(Point2D(9.0, 8.5), 0.0)) << "w = 2";
    EXPECT_THAT(Point2D(p).Transform(m), IsNear(moved, 0.0));

    projective = Affine(1, 0, 0, 1, 5, 6);  // turns leave the translation
    projective.Set(0, 2, 10.0);
    const double expected[9] = {0.5, std::sqrt(0.75), 5.0, -std::sqrt(0.75), 0.5, 0.0, 5.0, 6.0, 1.0};
    EXPECT_TRUE(projective.Rotate(kPi / 3.0).IsEqualTo(Matrix2D(expected), 1e-15));
    EXPECT_NEAR(projective.GetRotation().GetRadians(), kPi / 3.0, 1e-15);
}

TEST(Matrix2DTest, InverseUndoesAffineMatrices) {
    RandomNumbers random(20240601);
    for (int i = 0; i < 200; ++i) {
        const Point2D origin = surveyOrigins[i % 2], p = origin + Vec2D(random(-2.0, 2.0), random(-2.0, 2.0));
        const double a = random(1.0, 5.0), b = random(-2.0, 2.0), c = random(-2.0, 2.0), d = random(-6.0, -2.0);
        const Matrix2D m = Affine(a, b, c, d, origin.GetX(), origin.GetY());
        // Rounding grows by the condition of the matrix.
        const double condition = (a * a + b * b + c * c + d * d) / std::abs(a * d - b * c);
        EXPECT_THAT(p * m * m.GetInverse(), IsNear(p, 1e-15 * condition * (5.0 + 50.0 * origin.GetY())));
    }
}

TEST(Matrix2DTest, AnalysisAtSurveyCoordinates) {
    const Point2D center(385000.0, 6672000.0);
    std::array<std::complex<double>, 3> complexValues;
    std::array<double, 3> values{};
    const double c = std::cos(1e-6), s = std::sin(1e-6);
    const Matrix2D turn = Affine(1, 0, 0, 1, -center.GetX(), -center.GetY()) *=
        Affine(c, s, -s, c, center.GetX(), center.GetY());
    ASSERT_TRUE(turn.GetEigenValues(complexValues));
    EXPECT_FALSE(turn.GetEigenValues(values)) << "a rotation has complex eigenvalues";
    std::sort(complexValues.begin(), complexValues.end(), [](auto a, auto b) { return a.imag() > b.imag(); });
    EXPECT_NEAR(complexValues[0].imag(), s, 1e-21);
    EXPECT_EQ(complexValues[1], std::complex<double>(1.0, 0.0));
    EXPECT_EQ(complexValues[2], std::conj(complexValues[0]));

    const Matrix2D shrink = Affine(0.5, 0, 0, 0.25, 0.5 * center.GetX(), 0.75 * center.GetY());
    Matrix2D vectors;
    ASSERT_TRUE(shrink.GetEigenVectors(values, vectors));
    EXPECT_EQ(values, (std::array{1.0, 0.5, 0.25}));
    const Point2D fixed(vectors.Get(0, 0) / vectors.Get(0, 2), vectors.Get(0, 1) / vectors.Get(0, 2));
    EXPECT_THAT(fixed, IsNear(center, 1e-8)) << "the row eigenvector of 1 is the fixed point";

    // Stretched about the point, and mirrored on the line through it that rises by 4 in 3.
    const Point2D far(500000.0, 7200000.0);
    const Matrix2D offsets[] = {
        Affine(2, 0, 0, 3, -far.GetX(), -2.0 * far.GetY()),
        Affine(-0.28, 0.96, 0.96, 0.28, 1.28 * far.GetX() - 0.96 * far.GetY(), 0.72 * far.GetY() - 0.96 * far.GetX())};
    for (const Matrix2D& m : offsets) {
        ASSERT_TRUE(m.GetEigenVectors(values, vectors));
        Vec3D v[3];
        for (int i = 0; i < 3; ++i) {
            v[i].SetCoordinates(vectors.Get(i, 0), vectors.Get(i, 1), vectors.Get(i, 2));
            EXPECT_NEAR(v[i].Length(), 1.0, 1e-15);
            for (int j = 0; j < 3; ++j) {
                const Vec3D column(m.Get(0, j), m.Get(1, j), m.Get(2, j));
                EXPECT_NEAR(v[i].DotProduct(column), values[static_cast<std::size_t>(i)] * v[i][j], 2e-15);
            }
        }
        EXPECT_GT(std::abs(v[0].CrossProduct(v[1]).DotProduct(v[2])) * far.GetY(), 0.1) << "independent";
    }

    const Polynomial characteristic = shrink.GetCharacteristicPolynomial();  // (x - 1) (x - 1/2) (x - 1/4)
    const double expected[] = {-0.125, 0.875, -1.75, 1.0};
    for (unsigned int i = 0; i < 4; ++i) EXPECT_EQ(characteristic[i], expected[i]);

    const Matrix2D shear = Affine(1, 0, 1, 1, 0, 0);
    EXPECT_TRUE(shear.GetEigenValues(values));
    EXPECT_FALSE(shear.GetEigenVectors(values, vectors)) << "defective";
    const Matrix2D bad = Affine(kInfinity, 0, 0, 1, 0, 0);
    EXPECT_FALSE(bad.GetEigenValues(complexValues) || bad.SingularValueDecomposition(vectors, vectors, vectors));
}

constexpr auto rotation = Matrix3D::RotateType::Rotation;

TEST(Matrix3DTest, ConstructorsBuildWhatTheirTagsSay) {
    const Point3D p(1.0, 2.0, 3.0);
    const Matrix3D turn(rotation, 2, kPi / 2.0);
    EXPECT_THAT(p * turn, IsNear(Point3D(-2.0, 1.0, 3.0), 1e-15)) << "counter-clockwise from above";
    EXPECT_THAT(p * Matrix3D(rotation, Vec3D(0, 5, 0), 0.0, 1.0), IsNear(Point3D(3.0, 2.0, -1.0), 0.0)) << "z to x";
    const Matrix3D third(rotation, 1e200, 1e200, 1e200, 2.0 * kPi / 3.0);
    EXPECT_THAT(p * third, IsNear(Point3D(3.0, 1.0, 2.0), 1e-15)) << "a third of a turn exchanges the axes";
    EXPECT_TRUE(Matrix3D(rotation, 3, 1.0) == Matrix3D::identity) << "no such axis";
    EXPECT_TRUE(Matrix3D(rotation, Vec3D(1e-11, 0, 0), 1.0) == Matrix3D::identity) << "no direction";
    EXPECT_THAT(p * Matrix3D(Matrix3D::ScaleType::Scaling, Vec3D(2, 3, 4)), IsNear(Point3D(2, 6, 12), 0.0));
    EXPECT_EQ(Matrix3D(Matrix3D::TranslateType::Translation, 4, 5, 6).GetRow(3), (Matrix3D::Row{4, 5, 6, 1}));
    EXPECT_EQ(Matrix3D(Matrix3D::SpecialMatrix::Zero).GetTrace(), 0.0);
    EXPECT_TRUE(Matrix3D(Matrix3D::SpecialMatrix::Undefined).IsUndefined());
    Matrix2D plan = Matrix2D().Rotate(kPi / 2.0);
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
        const double quarter = i % 2 == 0 ? random(-3.0, 3.0) : std::copysign(kPi / 2.0, random(-3.0, 3.0));
        const Matrix3D turn = Matrix3D().Rotate(0, random(-3.0, 3.0)).Rotate(1, quarter).Rotate(2, random(-3.0, 3.0));
        Angle x, y, z;
        ASSERT_TRUE(Matrix3D(turn).PreScale(2.0, 3.0, 0.5).GetRotation(x, y, z));
        const Matrix3D level = Matrix3D().Rotate(0, x.GetRadians()).Rotate(1, y.GetRadians());
        EXPECT_TRUE(Matrix3D(level).Rotate(2, z.GetRadians()).Equal(turn, 1e-14)) << quarter;
    }
    Angle x, y, z;
    EXPECT_TRUE(Matrix3D().Scale(1, -1, -1).GetRotation(x, y, z) && x.GetRadians() == kPi);
    EXPECT_TRUE(Matrix3D().Scale(-1, -1, 1).GetRotation(x, y, z) && z.GetRadians() == kPi) << "not -pi";
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

TEST(Matrix3DTest, KnownEigenValues) {
    const double slow[][4][4] = {
        {{1, 1, 0, 0}, {-2, 2, 1, 0}, {0, -2, 1, 0}, {0, 0, 0, 5}},      // cycles without a shift of its own
        {{0, -1, 0, 0}, {1, 1, 1, 1}, {-1, 0, 0, 0}, {0, 0, -1, -1}},    // two equal complex pairs, defective
        {{-2, 2, 2, -1}, {2, -2, 0, 2}, {2, 2, -2, 2}, {1, -2, -2, 0}},  // two nearly equal ones
    };
    for (const auto& rows : slow) CheckDecompositions(Matrix3D(rows), 5.0, false);
    const double apart[4][4] = {{}, {0, 0, 96, 8e-300}, {672, 1e-158, 0, 0}, {0.0625, -1e-158, -0.125, -1e-299}};
    CheckDecompositions(Matrix3D(apart), 672.0, false);  // vectors are told only where they are some
    // What is left beside one eigenvalue is so small that its squares vanish.
    const double small[4][4] = {{0, 0, 0, -1e-301}, {16, 0, 0, 0}, {0, -5e-162, -1856, 1e-299}, {0, 9e-159, 0, 0}};
    CheckDecompositions(Matrix3D(small), 1856.0, false);
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

TEST(QuaternionTest, TurnsOneDirectionIntoAnother) {
    RandomNumbers random(20240605);
    for (int i = 0; i < 400; ++i) {
        const Vec3D from(random(-1.0, 1.0), random(-1.0, 1.0), i % 3 == 0 ? 0.0 : random(-1.0, 1.0));
        const Vec3D away(random(-1.0, 1.0), random(-1.0, 1.0), random(-1.0, 1.0));
        const double distances[] = {1.0, 1e-5, 1e-9, 1e-13, 0.0};  // from nearly opposite to exactly opposite
        const Vec3D to = i % 2 == 0 ? away : from * -3.0 + away * distances[i % 5];
        const Quaternion turn(from, to);
        EXPECT_THAT((Vec3D(from) *= turn) / from.Length(), IsNear(to / to.Length(), 2e-15));
        Vec3D axis;
        Angle angle;
        ASSERT_TRUE(turn.GetRotation(axis, angle));
        const double between = std::atan2(from.CrossProduct(to).Length(), from.DotProduct(to));
        EXPECT_NEAR(angle.GetRadians(), between, 1e-13) << "the least angle";
        EXPECT_TRUE(Quaternion(axis, angle).IsEqualTo(turn, 1e-14) ||
                    Quaternion(-axis, 2.0 * kPi - angle.GetRadians()).IsEqualTo(turn, 1e-14));
    }
    for (const Vec3D& none : {Vec3D(), Vec3D(kInfinity, 0, 0)}) {
        EXPECT_TRUE(Quaternion(Vec3D(1, 0, 0), none).IsEqualTo(Quaternion(), 1e-300));
        EXPECT_TRUE(Quaternion(none, Angle(1.0)).IsEqualTo(Quaternion(), 1e-300));
    }
}

TEST(QuaternionTest, AlgebraAndFailures) {
    EXPECT_TRUE((Quaternion(1, 0, 0, 0) *= Quaternion(0, 1, 0, 0)).IsEqualTo(Quaternion(0, 0, 1, 0), 1e-300))
        << "i j = k";
    const Quaternion a(0.1, -0.2, 0.3, 0.9), b(0.5, 0.6, -0.1, 0.4);
    const Quaternion unitA = Quaternion(a).Normalize(), unitB = Quaternion(b).Normalize();
    EXPECT_TRUE(Matrix3D(Quaternion(unitA) *= unitB).Equal(Matrix3D(unitB) *= Matrix3D(unitA), 1e-15));
    EXPECT_TRUE((Quaternion(a).Invert() *= Quaternion(a) *= b).IsEqualTo(b, 1e-15));
    EXPECT_THAT(Vec3D(1, 0, 0) *= Quaternion(0.0, 0.0, 2.0, 1.0), IsNear(Vec3D(-7.0, 4.0, 0.0), 0.0))
        << "not normalised: 1 - 2 * 4 and 2 * 2";
    Quaternion zero(0, 0, 0, 0);
    EXPECT_TRUE(zero.Invert().Normalize().IsEqualTo(Quaternion(0, 0, 0, 0), 1e-300));
    Vec3D axis(4, 5, 6);
    Angle angle(0.25);
    EXPECT_TRUE(!zero.GetRotation(axis, angle) && axis.IsEqualTo(Vec3D(4, 5, 6), 1e-300));
    EXPECT_TRUE(Quaternion(0, 0, 0, -2).GetRotation(axis, angle) && angle.GetRadians() == 0.0) << "-1 is no rotation";
    EXPECT_TRUE(a[7] == 0.1 && a[3] == 0.9);
}

}  // namespace
}  // namespace Kalvio::Math
