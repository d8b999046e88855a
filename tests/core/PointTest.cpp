#include "kalvio/Math.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

TEST(PointTest, GeometriesCompareWithinTheirKind) {
    const Point2D p2(1, 2);
    const Point2DM pm(1, 2, 0);
    const Point3D p3(1, 2, 3);
    const PointND n2({1.0, 2.0}), n3({1.0, 2.0, 3.0});
    const IGeometry* const all[] = {&p2, &pm, &p3, &n2, &n3};
    const char kinds[] = {'2', 'm', '3', '2', '3'};  // a measure compares with measures only, N as what it holds
    for (int i = 0; i < 5; ++i) {
        for (int j = 0; j < 5; ++j) EXPECT_EQ(all[i]->IsEqualTo(*all[j], 1e-9), kinds[i] == kinds[j]) << i << ' ' << j;
    }
    EXPECT_TRUE(Point2D(0, 0).IsEqualTo(Point2D(0.9, 0.9), 1.0)) << "farther apart than the tolerance";
    EXPECT_TRUE(Point3D(0, 0, 0).IsEqualTo2d(Point3D(0, 0, 1), 1.0));
    EXPECT_TRUE(Point2D(0, 0) == Point2D(0.9e-10, 0) && !(Point2D(0, 0) == Point2D(1e-10, 0)));
}

TEST(PointTest, ArithmeticAndIndexes) {
    EXPECT_THAT((Point3D(1, 2, 3) + Point3D(3, 2, 1)) / 2.0, IsNear(Point3D(2, 2, 2), 0.0));
    EXPECT_THAT(Point3D(1, 2, 3) / 0.0, IsNear(Point3D(1, 2, 3), 0.0));
    EXPECT_THAT(Point2D(Angle(kPi / 2), 5.0), IsNear(Point2D(0, 5), 1e-15));
    EXPECT_EQ(Point2DM(0, 0, 7).Distance(Point2DM(3, 4, -7)), 5.0) << "measures do not count";
    EXPECT_TRUE(Point3D().Distance(Point3D(2, 3, 6)) == 7.0 && Point3D().Distance2D(Point3D(3, 4, 6)) == 5.0);
    EXPECT_TRUE(PointND({1, 1, 1, 1}).Distance(PointND(4U)) == 2.0 && PointND({3, 4}).Distance(Point2D()) == 5.0);
    EXPECT_EQ((PointND(2U) - PointND(3U)).GetDimension(), 0U);

    Point2DM m(1, 2, 3);
    EXPECT_EQ(std::as_const(m)[5], 0.0) << "only this one has no first coordinate to fall back to";
    EXPECT_EQ(&m[5], &m[0]);
    m.SetCoordinates(Point2D(8, 9));
    EXPECT_EQ(m.GetM(), 3.0) << "the measure is kept";
    Matrix2D projective = Matrix2D().Translate(1, 2);
    projective.Set(2, 2, 4.0);
    EXPECT_TRUE((m * projective).IsEqualTo(Point2DM(2.25, 2.75, 3), 1e-15)) << "w = 4";
    EXPECT_TRUE(&m.Transform(projective) == &m && m.IsEqualTo(Point2DM(2.25, 2.75, 3), 1e-15));
    EXPECT_EQ(Point3D(1, 2, 3)[3], 1.0);
}

TEST(PointTest, EditingHooksKeepTheirDefaults) {
    const std::unique_ptr<IGeometry> p(Point3D(1, 2, 3).Clone());
    std::vector<IGeometry*> pieces;
    const std::unique_ptr<IGeometry> reversed(p->CloneAsReverse());
    EXPECT_TRUE(p->IsEqualTo(*reversed, 1e-15) && p->GetLength() == 0.0 && p->Append(reversed.get()) == nullptr);
    EXPECT_FALSE(std::as_const(*p).BreakAt({Point2D(1, 2)}, pieces, kTolerances));
    EXPECT_FALSE(p->IsPointOnGeometry(Point2D(1, 2), kTolerances));
    EXPECT_FALSE(p->ExtendStart(Point2D(), kTolerances) || p->ExtendEnd(Point2D(), kTolerances));
    EXPECT_TRUE(p->GetBoundingBox3D().IsEqualTo(BoundingBox3D(Point3D(1, 2, 3), Point3D(1, 2, 3)), 1e-15));
    EXPECT_TRUE(Point2D(1, 2).GetBoundingBox3D().IsEqualTo(BoundingBox3D(Point3D(1, 2, 0), Vec3D()), 1e-15));
    EXPECT_TRUE(PointND({1.0}).GetBoundingBox2D().IsEqualTo(BoundingBox2D(Point2D(1, 0), Vec2D()), 1e-15));
}

TEST(PointTest, LongitudeAndLatitudeSplitTowardZero) {
    Point2D p;
    p.SetLatitude(59, 30, 0.0);
    EXPECT_EQ(p.GetY(), 59.5);
    p.SetLongLat(-10, 30.0, -10, -30.0);
    EXPECT_THAT(p, IsNear(Point2D(-9.5, -10.5), 0.0)) << "each part has its own sign";

    int degrees = 0, minutes = 0;
    double seconds = 1.0;
    p.SetY(-59.5);
    p.GetLatitude(degrees, minutes, seconds);
    EXPECT_EQ(std::tuple(degrees, minutes, seconds), std::tuple(-59, -30, 0.0));
    p.SetX(kInfinity);
    p.GetLongitude(degrees, minutes, seconds);
    EXPECT_EQ(degrees, std::numeric_limits<int>::max()) << "saturated";

    for (const AngleUnit unit : {AngleUnit::Radians, AngleUnit::DegreeSecond, AngleUnit::DecimalDegree}) {
        Point3D q(0, 0, 7);
        q.SetLongLat(1.25, -0.5, unit);
        double longitude = 0.0, latitude = 0.0;
        q.GetLongLat(longitude, latitude, unit);
        EXPECT_THAT(Point2D(longitude, latitude), IsNear(Point2D(1.25, -0.5), 4e-16));
    }
    EXPECT_DOUBLE_EQ(Point2D(180, 0).GetLongitude(AngleUnit::Radians), kPi);
    EXPECT_EQ(Point2D(0, 2).GetLatitude(AngleUnit::DegreeSecond), 7200.0);
}

}  // namespace
}  // namespace Kalvio::Math
