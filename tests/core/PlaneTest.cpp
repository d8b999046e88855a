#include "kalvio/Math.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

constexpr double tol = 0x1p-13;  // exact in binary, near 1e-4
const Tolerances tolerances(tol, 1e-10);

TEST(Plane3DTest, CoefficientsAndSolutions) {
    double a, b, c, d, x = 0.0, y = 0.0, z = 7.0;
    Plane3D(0, 0, 2, -4).GetParameters(a, b, c, d);
    EXPECT_EQ(std::tuple(a, b, c, d), std::tuple(0.0, 0.0, 1.0, -2.0));
    EXPECT_TRUE(!Plane3D(1, 0, 0, 0).GetPointZ(1, 2, z) && z == 7.0);
    const Plane3D tilted(2, -3, 6, 14);  // length 7
    ASSERT_TRUE(tilted.GetPointZ(1, 2, z) && tilted.GetPointY(1, z, y) && tilted.GetPointX(2, z, x));
    EXPECT_THAT(Point3D(x, y, z), IsNear(Point3D(1, 2, -10.0 / 6.0), 1e-15));
    EXPECT_THAT(tilted.GetPoint(), IsNear(Point3D(-4.0 / 7.0, 6.0 / 7.0, -12.0 / 7.0), 1e-15));
    const Point3D o;
    EXPECT_TRUE(Plane3D(o, {0, 1, 0}, {1, 0, 0}).IsEqualTo(Plane3D(0, 0, -1, 0), 1e-300));
    EXPECT_TRUE(Plane3D(Point3D(0, 0, 5), Vec3D(0, 0, 3)) == Plane3D(0, 0, 1, -5.004)) << "loose";
    EXPECT_FALSE(Plane3D(0, 0, 1, -5) == Plane3D(0, 0, 1, -5.0051));
    EXPECT_NEAR(Plane3D(1, 0, 0, 3).Plane3DAngle(Plane3D(1, 1, 0, 9)).GetRadians(), kPi / 4.0, 1e-15);
    EXPECT_FALSE(tilted.IsEqualTo(static_cast<const IGeometry&>(o), 10.0));
    const std::unique_ptr<IGeometry> copy(tilted.Clone());
    EXPECT_TRUE(tilted.IsEqualTo(*copy, 1e-300) && !copy->IsPointOnGeometry(Point2D(), tolerances)) << "no plan points";
    EXPECT_EQ(Plane3D(0, 0, 1, -5).GetBoundingBox3D().GetMaxPoint()[2], 5.0);
}

TEST(Plane3DTest, PointsOnThePlane) {
    const Plane3D plane(0, 0, 1, -2);
    EXPECT_TRUE(plane.IsPointOnGeometry(Point3D(5, 5, 2 + 0.99 * tol), tolerances));
    EXPECT_FALSE(plane.IsPointOnGeometry(Point3D(5, 5, 2 + tol), tolerances)) << "exactly the tolerance away";
    for (const Plane3D& degenerate : {Plane3D(), Plane3D(Point3D(1, 1, 1), Point3D(2, 2, 2), Point3D(3, 3, 3))}) {
        EXPECT_FALSE(degenerate.IsPointOnGeometry(Point3D(), tolerances));
        EXPECT_THAT(degenerate.GetProjection(Point3D(1, 2, 3)), IsNear(Point3D(1, 2, 3), 0.0));
        EXPECT_TRUE(degenerate.GetTransformationMatrix().IsUndefined());
    }
}

TEST(Plane3DTest, PlaneCoordinates) {
    RandomNumbers random(20240607);
    const auto draw = [&] { return Vec3D(random(-1.0, 1.0), random(-1.0, 1.0), random(-1.0, 1.0)); };
    for (const Point2D& origin : surveyOrigins) {
        const double bound = 1e-14 + 1e-15 * origin.GetY();
        for (int i = 0; i < 200; ++i) {
            const Vec3D v = draw(), normals[] = {v, Vec3D(1e-9, 0, v.GetZ()), Vec3D(v.GetX(), 1e-9, 0)};
            const Plane3D plane(Point3D(origin, 0.0) + draw(), normals[i % 3]);
            const Matrix3D m = plane.GetTransformationMatrix();
            Matrix3D axes(m);
            axes.SetRow(3, {0.0, 0.0, 0.0, 1.0});
            EXPECT_TRUE((axes *= axes.GetTranspose()).Equal(Matrix3D::identity, 1e-15));
            EXPECT_NEAR(m.Determinant(), 1.0, 1e-14) << "right-handed";
            const Point3D world = Point3D(3.0, -2.0, 0.0) * m, foot = plane.GetProjection(Point3D(1.0, 2.0, 3.0));
            EXPECT_TRUE(plane.IsPointOnGeometry(world, tolerances) && plane.IsPointOnGeometry(foot, tolerances));
            EXPECT_THAT((Point3D(3.0, -2.0, 0.5) * m) - world, IsNear(plane.GetNormal() * 0.5, bound));
            EXPECT_LE((Point3D(1.0, 2.0, 3.0) - foot).CrossProduct(plane.GetNormal()).Length(), bound);
            const int near = std::abs(plane.GetNormal().GetX()) > 0.9 ? 1 : 0;
            EXPECT_NEAR(m.Get(1, near), 0.0, 1e-15) << "the second axis is level with the world axis";
            EXPECT_GT(m.Get(0, near), 0.0);
        }
    }
    EXPECT_TRUE(Plane3D(0, 0, 1, 0).GetTransformationMatrix() == Matrix3D::identity);
}

TEST(Triangle3DTest, PointsInside) {
    const std::tuple<const char*, double, double, double, bool> rows[] = {
        {"interior", 1.0, 1.0, 0.0, true},
        {"on the slanted edge", 2.0, 1.5, 0.0, true},
        {"tolerance below", 1.0, 1.0, -tol, true},
        {"beyond it", 1.0, 1.0, 1.001 * tol, false},
        {"tolerance beside an edge", 2.0, -tol, 0.0, true},
        {"beyond it", 2.0, -1.001 * tol, 0.0, false},
        {"tolerance from a corner", -0.6 * tol, -0.7 * tol, 0.0, true},
        {"corners are rounded", -0.8 * tol, -0.8 * tol, 0.0, false},
        {"in line with an edge", 5.0, 0.0, 0.0, false},
        {"beside and above within, but farther from the edge", 2.0, -0.8 * tol, 0.8 * tol, false},
    };
    for (const Point2D& origin : surveyOrigins) {
        const Point3D base(origin, 50.0);
        for (const auto& [why, x, y, z, expected] : rows) {
            const Point3D p = base + Vec3D(x, y, z), corners[] = {base, base + Vec3D(4, 0, 0), base + Vec3D(0, 3, 0)};
            for (int i = 0; i < 6; ++i) {  // from each corner, both ways round
                const Point3D &b = corners[(i % 3 + 1 + i / 3) % 3], &c = corners[(i + 2 - i / 3) % 3];
                EXPECT_EQ(Triangle3D(corners[i % 3], b, c).IsPointInside(p, tolerances), expected) << why;
            }
        }
    }
    const Triangle3D flat(Point3D(0, 0, 0), Point3D(2, 0, 0), Point3D(4, 0, 0));
    EXPECT_TRUE(flat.IsPointInside(Point3D(3, tol, 0), tolerances));
    EXPECT_FALSE(flat.IsPointInside({3, 2 * tol, 0}, tolerances) || flat.IsPointInside({5, 0, 0}, tolerances));
}

TEST(Triangle3DTest, Measures) {
    const Triangle3D triangle(Point3D(1, 0, 0), Point3D(1, 4, 0), Point3D(1, 0, 3));
    EXPECT_EQ(triangle.GetArea(), 6.0);
    EXPECT_THAT(triangle.GetNormal(), IsNear(Vec3D(1, 0, 0), 0.0));
    EXPECT_THAT(triangle.GetCenter(), IsNear(Point3D(1, 4.0 / 3.0, 1), 1e-15));
    EXPECT_EQ(Triangle3D(Point3D(), Point3D(1e-10, 0, 0), Point3D(0, 1, 0)).GetArea(), 0.0) << "an edge of 1e-10";
    EXPECT_GT(Triangle3D(Point3D(), Point3D(1.1e-10, 0, 0), Point3D(0, 1, 0)).GetArea(), 0.0);
    const std::unique_ptr<Triangle3D> copy(triangle.Clone());
    EXPECT_TRUE(triangle.IsEqualTo(*copy, 1e-300));
}

}  // namespace
}  // namespace Kalvio::Math
