#include "kalvio/Math.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

Matrix2D Affine(double m00, double m01, double m10, double m11, double m20, double m21) {
    const double rows[3][3] = {{m00, m01, 0.0}, {m10, m11, 0.0}, {m20, m21, 1.0}};
    return Matrix2D(rows);
}

Matrix2D RotationAbout(const Point2D& center, double angle) {
    const double c = std::cos(angle), s = std::sin(angle);
    return Affine(1.0, 0.0, 0.0, 1.0, -center.GetX(), -center.GetY()) *=
           Affine(c, s, -s, c, center.GetX(), center.GetY());
}

TEST(Matrix2DTest, FlagFollowsTheEdits) {
    const double identityValues[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    EXPECT_TRUE(Matrix2D() == Matrix2D::identity);
    EXPECT_EQ(Matrix2D(identityValues).GetFlag(), 0) << "nine values are a general matrix";
    EXPECT_TRUE(Matrix2D(static_cast<const double*>(nullptr)).IsUndefined());
    EXPECT_EQ(Matrix2D(Matrix2D::identity).Translate(0.0, 0.0).GetFlag(), 1);
    EXPECT_TRUE(Matrix2D().Translate(0.0, 2.0).GetFlag() == 0 && Matrix2D().Rotate(0.5).GetFlag() == 1);
    EXPECT_TRUE(Matrix2D().Rotate(0.5) == Matrix2D::identity) << "both flags are 1";
    EXPECT_EQ(Matrix2D().Invert().GetFlag(), 1);
    const Matrix2D undefined = Affine(1, 2, 2, 4, 5, 6).GetInverse();
    EXPECT_TRUE(undefined.IsUndefined() && undefined.IsEqualTo(Matrix2D::identity, 1e-300));
    EXPECT_EQ((Matrix2D() *= undefined).GetFlag(), 2) << "the other matrix is copied, flag included";
    EXPECT_EQ((Matrix2D(undefined) *= Affine(2, 0, 0, 2, 0, 0)).GetFlag(), 2) << "a product keeps the flag";
    Matrix2D general = Affine(2, 0, 0, 2, 7, 8);
    EXPECT_TRUE((general *= Matrix2D().Rotate(1.0)) == Affine(2, 0, 0, 2, 7, 8)) << "a factor with flag 1 is skipped";
    Matrix2D set, row, column, pointer;
    EXPECT_TRUE(set.Set(0, 0, 1.0) && row.SetRow(2, {3, 4, 1}) && column.SetColumn(0, {3, 4, 1}));
    *pointer.Ptr() = 5.0;
    for (const Matrix2D& m : {set, row, column, pointer, Matrix2D() *= 2.0, Matrix2D() += Matrix2D::identity,
                              Matrix2D().PreTranslate(0, 0), Matrix2D().Transpose()}) {
        EXPECT_EQ(m.GetFlag(), 0);
    }
    EXPECT_EQ((Matrix2D() /= 0.0).GetFlag(), 1) << "division by 0 does nothing";
    EXPECT_FALSE(general.Set(3, 0, 1.0));
    EXPECT_TRUE(std::isnan(general.Get(-1, 0)) && std::isnan(general.GetColumn(3)[0]));
    EXPECT_EQ(general.GetRow(2), (Matrix2D::Row{7, 8, 1}));
}

TEST(Matrix2DTest, RotateLeavesTheTranslation) {
    Matrix2D m = Affine(1, 0, 0, 1, 5, 6);
    m.Set(0, 2, 10.0);
    m.Rotate(detail::pi / 3.0);
    const double expected[9] = {0.5, std::sqrt(0.75), 5.0, -std::sqrt(0.75), 0.5, 0.0, 5.0, 6.0, 1.0};
    EXPECT_TRUE(m.IsEqualTo(Matrix2D(expected), 1e-15));
    EXPECT_NEAR(m.GetRotation().GetRadians(), detail::pi / 3.0, 1e-15);
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
}

TEST(Matrix2DTest, InverseUndoesAffineMatrices) {
    RandomNumbers random(20240601);
    for (const Point2D& origin : surveyOrigins) {
        for (int i = 0; i < 100; ++i) {
            const Matrix2D m = Affine(random(1.0, 5.0), random(-2.0, 2.0), random(-2.0, 2.0), random(-6.0, -2.0),
                                      origin.GetX(), origin.GetY());
            const Point2D p = origin + Vec2D(random(-2.0, 2.0), random(-2.0, 2.0));
            EXPECT_THAT(p * m * m.GetInverse(), IsNear(p, 1e-15 * (10.0 + 100.0 * origin.GetY())));
        }
    }
}

TEST(Matrix2DTest, AnalysisAtSurveyCoordinates) {
    const Point2D center(385000.0, 6672000.0);
    std::array<std::complex<double>, 3> complexValues;
    std::array<double, 3> values{};
    const Matrix2D turn = RotationAbout(center, 1e-6);
    ASSERT_TRUE(turn.GetEigenValues(complexValues));
    EXPECT_FALSE(turn.GetEigenValues(values)) << "a rotation has complex eigenvalues";
    std::sort(complexValues.begin(), complexValues.end(), [](auto a, auto b) { return a.imag() > b.imag(); });
    EXPECT_NEAR(complexValues[0].imag(), std::sin(1e-6), 1e-21);
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
    const double bad = std::numeric_limits<double>::infinity();
    EXPECT_FALSE(Affine(bad, 0, 0, 1, 0, 0).GetEigenValues(complexValues));
    Matrix2D u, s;
    EXPECT_FALSE(Affine(bad, 0, 0, 1, 0, 0).SingularValueDecomposition(u, s, vectors));
}

}  // namespace
}  // namespace Kalvio::Math
