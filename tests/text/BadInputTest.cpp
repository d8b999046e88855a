#include "kalvio/Math.h"
#include "support/Testing.h"

#include <complex>

namespace Kalvio::Math {
namespace {

const LineString2D chain{Point2D(0, 0), Point2D(3, 0), Point2D(3, 4)};
const Polygon2D square(LineString2D{Point2D(0, 0), Point2D(4, 0), Point2D(4, 4), Point2D(0, 4)});

Polygon2D Beside(double x) { return LineString2D{Point2D(0, 0), Point2D(x, 0), Point2D(4, 4), Point2D(0, 4)}; }

// The rules of docs/bad-input.md.
TEST(BadInputTest, WhatIsNotFiniteIsAnsweredAsTold) {
    for (const double bad : {kNan, kInfinity, -kInfinity}) {
        SCOPED_TRACE(bad);
        EXPECT_FALSE(Point2D(bad, 0).IsEqualTo(Point2D(1, 0), 1e-4)) << "equals nothing";
        EXPECT_FALSE(std::isfinite(Angle(bad).GetRadians())) << "passes through angles";
        MatrixNM matrix(2, 2), inverse(1, 1);
        matrix[0] = VecND({bad, 1.0});
        matrix[1] = VecND({1.0, 1.0});
        EXPECT_TRUE(!matrix.GetInverse(inverse) && inverse.GetNumRows() == 1) << "gives no inverse";
        std::vector<std::complex<double>> found;
        double roots[3];
        EXPECT_EQ(CubicFunction(1, bad, 1, 0).GetRoots(roots), 0);
        EXPECT_TRUE(Polynomial({bad, 1, 1}).FindQuadraticEquationRoots(found) == 0 && found.empty()) << "no roots";
        std::vector<Point2D> points;
        const Line2D line(Point2D(0, 1), Point2D(2, 1)), nowhere(Point2D(bad, 0), Point2D(1, 1));
        (void)Intersection::LineSegmentLineSegment(nowhere, line, points, kTolerances);
        EXPECT_TRUE(points.empty()) << "has no common points";
        EXPECT_EQ(Distance::PointToLineString(chain, Point2D(bad, 0), 1e-4), std::numeric_limits<double>::max())
            << "is as far as can be";
        Point2D where;
        EXPECT_FALSE(Beside(bad).Validate(where, true, 1e-4) || std::isfinite(where.GetX())) << "a fault of a polygon";
        EXPECT_FALSE(PointInPolygon(square, 8, 1e-4).IsPointInside(Point2D(bad, 1), 1e-4)) << "lies outside";
        std::vector<Polygon2D> areas(1);
        Polygon2D simple;
        EXPECT_FALSE(PolygonsBooleanOperation::Union(square, Beside(bad), areas, kTolerances)) << "makes no area";
        EXPECT_FALSE(GeometrySimplifier::SimplifyByDistance(Beside(bad), 1.0, simple)) << "makes no area";
        EXPECT_TRUE(areas.size() == 1 && simple.GetSize() == 0) << "untouched";
        const auto index = SpatialIndexes::IQuadTreeForPoints::Create(4, BoundingBox2D());
        EXPECT_TRUE(!index->Insert(Point3D(bad, 0, 0)) && index->GetNrOfPoints() == 0) << "is refused by the index";
        Cant cant;
        EXPECT_FALSE(cant.Set(std::vector<Cant::Knot>{{0.0, bad, 0.0}, {9.0, 0.0, 0.0}}, Cant::Pivot::Axis, 0.0));
    }
}

TEST(BadInputTest, WhatOverflowsIsNoAnswer) {
    const LineString3D far{Point3D(-1e308, 0, 0), Point3D(1e308, 0, 0), Point3D(1e308, 9, 0), Point3D(0, 0, kNan)};
    double length = 0.0, z = 7.0;
    EXPECT_FALSE(far.GetLengthFromStartPoint(Point3D(1e308, 4, 0), length, 0.1) || length != 0.0);
    EXPECT_FALSE(far.GetZ(Point2D(0, 0), z, 0.1) || z != 7.0);
}

TEST(BadInputTest, WhatIsEmptyOrDegenerateIsAnsweredAsTold) {
    for (const BoundingBox2D& box : {LineString2D().GetBoundingBox2D(), Polygon2D().GetBoundingBox2D(),
                                     Polyline2D().GetBoundingBox2D(), IndexedTriangleSet3D().GetBoundingBox2D()}) {
        EXPECT_TRUE(box.IsEqualTo(BoundingBox2D(), 0.1));
    }
    EXPECT_EQ(LineString2D().GetLength(), 0.0);
    EXPECT_EQ(Polyline2D().GetLength(), 0.0);
    EXPECT_EQ(Polygon2D().GetArea(), 0.0);
    EXPECT_EQ(IndexedTriangleSet3D().GetVolume(5.0), 0.0);
    EXPECT_THAT(Polygon2D().GetCentroid(), IsNear(Point2D(), 1e-300));
    Polygon2D hull = square;
    Geometry::ConvexHull(std::vector<Point2D>(), hull);
    EXPECT_EQ(hull.GetSize(), 0U);

    EXPECT_FALSE(Line2D(Point2D(), Point2D()).IsPointOnGeometry(Point2D(), kTolerances)) << "no length";
    EXPECT_FALSE(Plane3D(Point3D(), Point3D(), Point3D()).IsPointOnGeometry(Point3D(), kTolerances)) << "no normal";
    EXPECT_EQ(Polygon2D().GetWinding(), WindingValue::Clockwise) << "no area";
}

}  // namespace
}  // namespace Kalvio::Math
