#include "kalvio/Math.h"
#include "support/ElementChecks.h"

namespace Kalvio::Math {
namespace {

std::vector<double> Heights(const LineString3D& string) {
    std::vector<double> heights;
    for (const Point3D& point : string.GetPoints()) heights.push_back(point.GetZ());
    return heights;
}

TEST(LineString3DTest, VertexRangesDistancesAndGrades) {
    std::vector<double> distances{9.0};
    double average = 9.0, lowest = 7.0, highest = 7.0;
    LineString3D({Point3D(0, 0, 0), Point3D(0, 1, 0), Point3D(0, 1, 1)}).GetAccumulatedDistances(distances, average);
    EXPECT_EQ(distances, (std::vector<double>{0, 1, 2}));
    EXPECT_DOUBLE_EQ(average, 2.0 / 3.0);
    LineString3D().GetAccumulatedDistances(distances, average);
    EXPECT_TRUE(distances.empty() && average == 0.0);
    LineString3D(2U).GetMinMaxGrades(lowest, highest);
    EXPECT_TRUE(lowest == 7.0 && highest == 7.0) << "no segment with a grade";
    LineString3D string{Point3D(0, 0, 0), Point3D(4, 0, -1), Point3D(4, 0, -1), Point3D(8, 0, 1)};
    string.GetMinMaxGrades(lowest, highest);
    EXPECT_TRUE(lowest == 0.25 && highest == 0.5);
    string.AppendPoint(Point3D(8, 0, 2));
    string.GetMinMaxGrades(lowest, highest);
    EXPECT_TRUE(lowest == 0.25 && std::isinf(highest)) << "a vertical segment";

    LineString3D out;
    EXPECT_TRUE(string.ExtractLineString(1, 3, out));
    EXPECT_FALSE(string.ExtractLineString(3U, std::size_t{5}, out));
    EXPECT_FALSE(string.ExtractLineString(3, 2, out) || string.ExtractLineString(-1, 2, out));
    EXPECT_EQ(Heights(out), (std::vector<double>{-1, -1, 1})) << "both ends included";
    EXPECT_TRUE(string.SetPoint(Point3D(8, 0, 9), 4) && !string.SetPoint(Point3D(8, 0, 9), 5));
    string.ReducePoints(1.0);
    EXPECT_EQ(Heights(string), (std::vector<double>{0, -1, 1, 9})) << "a vertical step is a distance in space";
    const LineString3D before = string;  // a const string is copied, the other one changed
    EXPECT_TRUE(before.Translate(Vec3D(1, 2, 3))
                    .IsEqualTo(string.Transform(Matrix3D(Matrix3D::TranslateType(), 1, 2, 3)), 0.1));
    EXPECT_TRUE(string.Translate(Vec3D(-1, -2, -3)).IsEqualTo(before, 1e-12));
    std::vector<Point3D> lifted{Point3D()};
    before.GetLineString2D().Transform(Matrix3D(Matrix3D::TranslateType(), 1, 2, 3), lifted);
    EXPECT_TRUE(lifted.size() == 4 && lifted[1].IsEqualTo(Point3D(5, 2, 3), 1e-12));
}

TEST(LineString3DTest, HeightsOnABorder) {
    // A square whose corner (4, 0) is a step from 1 to 3, closed at (0, 0) by a second point 10 higher.
    const LineString3D border{Point3D(0, 0, 0), Point3D(4, 0, 1), Point3D(4, 0, 3),
                              Point3D(4, 4, 5), Point3D(0, 4, 9), Point3D(0, 0, 10)};
    const LineString3D open{Point3D(0, 0, 0), Point3D(4, 0, 4), Point3D(4, 4, 8)};
    const std::tuple<const char*, const LineString3D*, Point2D, int, int, double> rows[] = {
        {"a step, first", &border, Point2D(4, 0), 0, 2, 1.0},
        {"a step, last", &border, Point2D(4, 0), 1, 2, 3.0},
        {"a plain vertex", &border, Point2D(4, 4), 0, 1, 5.0},
        {"the step at the joint, first: from behind", &border, Point2D(0, 0), 0, 2, 10.0},
        {"the step at the joint, last", &border, Point2D(0, 0), 1, 2, 0.0},
        {"on an edge", &border, Point2D(4, 1), 0, 1, 3.5},
        {"on the closing edge", &open, Point2D(2, 2), 0, 1, 4.0},
        {"on no edge", &border, Point2D(2, 1), 0, 0, -1.0},
    };
    double z = -1.0, zFirst = -1.0, zLast = -1.0;
    for (const auto& [why, string, p, takeLast, expected, height] : rows) {
        z = -1.0;
        EXPECT_EQ(string->GetHeightAtBorder(p, z, 1e-4, takeLast), expected) << why;
        EXPECT_NEAR(z, height, 1e-12) << why;
    }
    EXPECT_EQ(LineString3D::GetHeightAtLine(open.GetPoints(), 0, Point2D(1, 0), z, 5.0), 2);
    EXPECT_EQ(z, 0.0) << "an edge shorter than the tolerance has the height of its start";
    for (const int index : {-1, 3}) {
        EXPECT_EQ(LineString3D::GetHeightAtPoint(open.GetPoints(), index, Point2D(0, 0), zFirst, zLast, 1.0), 0);
        EXPECT_EQ(LineString3D::GetHeightAtLine(open.GetPoints(), index, Point2D(0, 0), z, 1.0), 0);
    }
    EXPECT_TRUE(border.GetZ(Point2D(4, 0), z, 1e-4) && z == 1.0) << "the first segment wins";
    EXPECT_FALSE(border.GetZ(Point2D(3, 3), z, 1e-4));
    EXPECT_TRUE(LineString3D({Point3D(0, 0, 0), Point3D(1e-5, 0, 50)}).GetZ(Point2D(1e-4, 0), z, 1e-4) && z == 50.0)
        << "never beyond the heights of the segment";
}

TEST(LineString3DTest, AveragingIsTheMeanOverAWindow) {
    RandomNumbers random(20268);
    LineString3D string{Point3D(surveyOrigins[1], 7.0)}, averaged;
    for (int i = 0; i < 40; ++i) {
        const Vec3D step(random(-4.0, 4.0), random(-4.0, 4.0), random(-4.0, 4.0));
        string.AppendPoint(std::as_const(string).GetEnd() + step);
    }
    std::vector<int> indexes;
    ASSERT_TRUE(string.GetAveraged(averaged, indexes, 7.0));
    const auto parts = static_cast<unsigned int>(std::round(string.GetLength() / 7.0));
    ASSERT_TRUE(averaged.GetSize() == parts + 1 && indexes.size() == parts + 1U);
    const double h = string.GetLength() / parts;
    for (unsigned int i = 1; i < parts; ++i) {
        Vec3D sum;
        Point3D p;
        const int n = 4000;  // midpoint rule
        for (int k = 0; k < n; ++k, sum += p - string.GetStart()) {
            ASSERT_TRUE(string.GetPointOffsetFromStart(i * h + h * ((k + 0.5) / n - 0.5), p));
        }
        EXPECT_THAT(averaged.GetPoint(i), IsNear(string.GetStart() + sum * (1.0 / n), 1e-5));
    }
    const LineString3D straight{Point3D(1, 2, 3), Point3D(2.8, 2, 5.4), Point3D(5.8, 2, 9.4)};  // of 3 and 5
    ASSERT_TRUE(straight.GetAveraged(averaged, indexes, 1.9));
    EXPECT_EQ(indexes, (std::vector<int>{0, 0, 1, 1, 1}));
    EXPECT_TRUE(averaged.IsEqualTo({{1, 2, 3}, {2.2, 2, 4.6}, {3.4, 2, 6.2}, {4.6, 2, 7.8}, {5.8, 2, 9.4}}, 1e-12));
    EXPECT_FALSE(straight.GetAveraged(averaged, indexes, 0.0) || straight.GetAveraged(averaged, indexes, 1e-12));
    EXPECT_TRUE(!LineString3D(3U).GetAveraged(averaged, indexes, 1.0) && averaged.GetSize() == 5);
}

TEST(LineString3DTest, SplineRunsSmoothlyThroughTheVertices) {
    const int parts = 2000;
    const LineString3D ring{Point3D(0, 0, 0), Point3D(4, 1, 1),  Point3D(5, 6, 0),
                            Point3D(5, 6, 0), Point3D(-3, 7, 2), Point3D(0, 0, 0)};
    LineString3D spline;
    ASSERT_TRUE(ring.GetSplineLineString(spline, parts));
    const unsigned int count = spline.GetNrOfElements();
    ASSERT_EQ(count, 4U * parts) << "one vertex is repeated";
    EXPECT_THAT(spline[3 * parts], IsNear(ring[4], 0.0));
    for (unsigned int i = 0; i < count; ++i) {
        const Vec3D next = spline.GetElementAtIndex((i + 1) % count).GetDirection();
        ASSERT_LT((spline.GetElementAtIndex(i).GetDirection() - next).Length(), 0.02) << i;
    }
    // Barry and Goldman's pyramid at the middle of the second segment, worked out apart from the Hermite form.
    const LineString3D four{Point3D(0, 0, 0), Point3D(1, 0, 0), Point3D(1, 4, 0), Point3D(10, 4, 0)};
    const double t[] = {0.0, 1.0, 3.0, 6.0};
    const auto mix = [&](const Point3D& a, const Point3D& b, int i, int j) {
        return a * ((t[j] - 2.0) / (t[j] - t[i])) + b * ((2.0 - t[i]) / (t[j] - t[i]));
    };
    const Point3D a = mix(four[0], four[1], 0, 1), b = mix(four[1], four[2], 1, 2), c = mix(four[2], four[3], 2, 3);
    ASSERT_TRUE(four.GetSplineLineString(spline, 2));
    EXPECT_THAT(spline[3], IsNear(mix(mix(a, b, 0, 2), mix(b, c, 1, 3), 1, 2), 1e-12));
    ASSERT_TRUE(LineString3D({four[0], four[1]}).GetSplineLineString(spline, 4));
    EXPECT_THAT(spline[1], IsNear(Point3D(0.25, 0, 0), 1e-15)) << "no neighbours: straight";
    EXPECT_FALSE(four.GetSplineLineString(spline, 0) || LineString3D(4U).GetSplineLineString(spline, 3));

    const double r = std::sqrt(0.5);
    EXPECT_THAT(four.GetInterpolatedTangent({1, 0}, 1, -1.0), IsNear(Vec3D(1, 0, 0), 1e-15));
    EXPECT_THAT(four.GetInterpolatedTangent({1, 0}, 1, 1.0), IsNear(Vec3D(r, r, 0), 1e-15));
    EXPECT_THAT(four.GetInterpolatedTangent({1, 0}, 1, 0.5), IsNear(Vec3D(r + 1, r, 0).Normalize(), 1e-15));
    EXPECT_THAT(four.GetInterpolatedTangent({3}, 0, 0.5), IsNear(Vec3D(), 0.0));
}

}  // namespace
}  // namespace Kalvio::Math
