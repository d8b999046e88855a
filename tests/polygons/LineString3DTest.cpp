#include "kalvio/core/Matrix3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "support/Near.h"
#include "support/Origins.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <list>
#include <memory>
#include <random>
#include <vector>

namespace Kalvio::Math {
namespace {

const Tolerances kTolerances(0.0001, 1e-10);

std::vector<double> Heights(const LineString3D& string) {
    std::vector<double> heights;
    for (const Point3D& point : string.GetPoints()) heights.push_back(point.GetZ());
    return heights;
}

TEST(LineString3DTest, StationsAndExtractionsAgreeInSpaceAndInPlan) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20267));
    std::uniform_real_distribution<double> ahead(0.5, 9.0);
    std::uniform_real_distribution<double> aside(-6.0, 6.0);
    std::uniform_real_distribution<double> fraction(0.0, 1.0);
    for (int round = 0; round < 60; ++round) {
        LineString3D string{Point3D(surveyOrigins[round % 2], 100.0)};
        for (int i = 0; i < 1 + round % 20; ++i) {
            string.AppendPoint(std::as_const(string).GetEnd() + Vec3D(ahead(random), aside(random), aside(random)));
        }
        const double total = string.GetLength();
        const double s = fraction(random) * total;
        Point3D p, q;
        double fromStart = -1.0, fromEnd = -1.0;
        ASSERT_TRUE(string.GetPointOffsetFromStart(s, p));
        ASSERT_TRUE(string.GetLengthFromStartPoint(p, fromStart, 1e-4));
        ASSERT_TRUE(string.GetLengthFromEndPoint(p, fromEnd, 1e-4));
        EXPECT_NEAR(fromStart, s, 1e-7);
        EXPECT_NEAR(fromEnd, total - s, 1e-7);
        EXPECT_TRUE(string.IsPointOnGeometry(p, kTolerances));
        EXPECT_FALSE(string.IsPointOnGeometry(p + Vec3D(0, 0, 20), kTolerances)) << "above it";
        unsigned int segment = 99;
        ASSERT_TRUE(string.GetClosestSegment(p, segment));
        ASSERT_TRUE(string.GetElementAtIndex(segment).GetLengthFromStartPoint(p, fromEnd, 1e-6));
        EXPECT_NEAR(fromEnd + LineString3D(std::vector<Point3D>(string.GetPoints().begin(),
                                                                string.GetPoints().begin() + segment + 1))
                                  .GetLength(),
                    s, 1e-7);
        Vec3D tangent;
        ASSERT_TRUE(string.GetTangentAtPoint(p, tangent));
        EXPECT_THAT(tangent, IsNear(string.GetElementAtIndex(segment).GetDirection(), 1e-12));
        const std::unique_ptr<LineString3D> reversed(static_cast<LineString3D*>(string.CloneAsReverse()));
        ASSERT_TRUE(reversed->GetPointOffsetFromStart(total - s, q));
        EXPECT_THAT(q, IsNear(p, 1e-7));
        LineString3D before, after, planBefore, planAfter;
        ASSERT_TRUE(string.ExtractLineString(0.0, s, before));
        ASSERT_TRUE(string.ExtractLineString(s, total, after));
        EXPECT_NEAR(before.GetLength(), s, 1e-7);
        EXPECT_NEAR(after.GetLength(), total - s, 1e-7);
        const double plan = string.GetLength2D();
        EXPECT_NEAR(plan, string.GetLineString2D().GetLength(), 1e-9);
        ASSERT_TRUE(string.ExtractLineString2DLengths(0.0, 0.3 * plan, planBefore));
        ASSERT_TRUE(string.ExtractLineString2DLengths(0.3 * plan, plan, planAfter));
        EXPECT_NEAR(planBefore.GetLength2D(), 0.3 * plan, 1e-7);
        EXPECT_NEAR(planBefore.GetLength() + planAfter.GetLength(), total, 1e-7);
        EXPECT_THAT(std::as_const(planBefore).GetEnd(), IsNear(planAfter.GetStart(), 1e-9));
        double z = 0.0;
        ASSERT_TRUE(string.GetZ(planAfter.GetStart().GetPoint2D(), z, 1e-6));
        EXPECT_NEAR(z, planAfter.GetStart().GetZ(), 1e-7);

        std::list<Point3D> samples;
        std::list<Vec3D> tangents;
        ASSERT_TRUE(string.MakePointsAndTangents(total / 7.0, samples, tangents));
        ASSERT_EQ(samples.size(), 8U);
        ASSERT_EQ(tangents.size(), 8U);
        double length = 0.0;
        for (const Point3D& sample : samples) {
            ASSERT_TRUE(string.GetLengthFromStartPoint(sample, fromStart, 1e-6));
            EXPECT_NEAR(fromStart, length, 1e-7);
            length += total / 7.0;
        }
    }
}

TEST(LineString3DTest, VertexRangesDistancesAndGrades) {
    LineString3D string{Point3D(0, 0, 0), Point3D(1, 0, 0), Point3D(2, 0, 0), Point3D(2, 0, 0)};
    std::vector<double> distances{9.0};
    double average = 9.0;
    LineString3D({Point3D(0, 0, 0), Point3D(0, 1, 0), Point3D(0, 1, 1)}).GetAccumulatedDistances(distances, average);
    EXPECT_EQ(distances, (std::vector<double>{0, 1, 2}));
    EXPECT_DOUBLE_EQ(average, 2.0 / 3.0);
    LineString3D().GetAccumulatedDistances(distances, average);
    EXPECT_TRUE(distances.empty() && average == 0.0);

    double lowest = 7.0, highest = 7.0;
    LineString3D(1U).GetMinMaxGrades(lowest, highest);
    LineString3D(2U).GetMinMaxGrades(lowest, highest);
    EXPECT_TRUE(lowest == 7.0 && highest == 7.0) << "no segment with a grade";
    string.SetPoints({Point3D(0, 0, 0), Point3D(4, 0, -1), Point3D(4, 0, -1), Point3D(8, 0, 1)});
    string.GetMinMaxGrades(lowest, highest);
    EXPECT_TRUE(lowest == 0.25 && highest == 0.5);
    string.AppendPoint(Point3D(8, 0, 2));
    string.GetMinMaxGrades(lowest, highest);
    EXPECT_TRUE(lowest == 0.25 && std::isinf(highest)) << "a vertical segment";

    LineString3D out;
    EXPECT_TRUE(string.ExtractLineString(std::uint64_t{1}, std::uint64_t{3}, out));
    EXPECT_EQ(Heights(out), (std::vector<double>{-1, -1, 1})) << "both ends included";
    EXPECT_FALSE(string.ExtractLineString(std::uint64_t{3}, std::uint64_t{5}, out));
    EXPECT_FALSE(string.ExtractLineString(std::uint64_t{3}, std::uint64_t{2}, out));
    EXPECT_EQ(out.GetSize(), 3U);
    EXPECT_TRUE(string.SetPoint(Point3D(8, 0, 9), 4));
    EXPECT_FALSE(string.SetPoint(Point3D(8, 0, 9), 5));
    EXPECT_EQ(Heights(string), (std::vector<double>{0, -1, -1, 1, 9}));
    string.ReducePoints(1.0);
    EXPECT_EQ(Heights(string), (std::vector<double>{0, -1, 1, 9})) << "a vertical step is a distance in space";
}

TEST(LineString3DTest, HeightsOnABorder) {
    // A square whose corner (4, 0) is a step from 1 to 3, closed at (0, 0) by a second point 10 higher.
    const LineString3D border{Point3D(0, 0, 0), Point3D(4, 0, 1), Point3D(4, 0, 3),
                              Point3D(4, 4, 5), Point3D(0, 4, 9), Point3D(0, 0, 10)};
    struct Row {
        const char* why;
        Point2D p;
        int takeLast, expected;
        double z;
    };
    const Row rows[] = {
        {"a step, first", Point2D(4, 0), 0, 2, 1.0},
        {"a step, last", Point2D(4, 0), 1, 2, 3.0},
        {"a plain vertex", Point2D(4, 4), 0, 1, 5.0},
        {"the step at the joint, first: from behind", Point2D(0, 0), 0, 2, 10.0},
        {"the step at the joint, last", Point2D(0, 0), 1, 2, 0.0},
        {"on an edge", Point2D(4, 1), 0, 1, 3.5},
        {"on no edge", Point2D(2, 1), 0, 0, -1.0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        double z = -1.0;
        EXPECT_EQ(border.GetHeightAtBorder(row.p, z, 1e-4, row.takeLast), row.expected);
        EXPECT_NEAR(z, row.z, 1e-12);
    }
    double z = -1.0;
    const LineString3D open{Point3D(0, 0, 0), Point3D(4, 0, 4), Point3D(4, 4, 8)};
    EXPECT_EQ(open.GetHeightAtBorder(Point2D(2, 2), z, 1e-4, 0), 1) << "the closing edge";
    EXPECT_NEAR(z, 4.0, 1e-12);
    EXPECT_EQ(LineString3D::GetHeightAtLine(open.GetPoints(), 0, Point2D(1, 0), z, 5.0), 2);
    EXPECT_EQ(z, 0.0) << "an edge shorter than the tolerance has the height of its start";
    double zFirst = -1.0, zLast = -1.0;
    for (const int index : {-1, 3, 99}) {
        EXPECT_EQ(LineString3D::GetHeightAtPoint(open.GetPoints(), index, Point2D(0, 0), zFirst, zLast, 1.0), 0);
        EXPECT_EQ(LineString3D::GetHeightAtLine(open.GetPoints(), index, Point2D(0, 0), z, 1.0), 0);
    }
    EXPECT_EQ(LineString3D().GetHeightAtBorder(Point2D(0, 0), z, 1.0, 0), 0);
    const std::vector<Point3D> mast{Point3D(1, 1, 0), Point3D(1, 1, 5)};
    EXPECT_EQ(LineString3D::GetHeightAtPoint(mast, 0, Point2D(1, 1), zFirst, zLast, 1e-4), 2) << "all at one place";
    EXPECT_TRUE(zFirst == 0.0 && zLast == 5.0);

    EXPECT_TRUE(border.GetZ(Point2D(4, 2), z, 1e-4));
    EXPECT_EQ(z, 4.0);
    EXPECT_TRUE(border.GetZ(Point2D(4, 0), z, 1e-4));
    EXPECT_EQ(z, 1.0) << "the first segment wins";
    EXPECT_FALSE(border.GetZ(Point2D(3, 3), z, 1e-4));
    EXPECT_TRUE(LineString3D({Point3D(0, 0, 0), Point3D(1e-5, 0, 50)}).GetZ(Point2D(1e-4, 0), z, 1e-4));
    EXPECT_EQ(z, 50.0) << "never beyond the heights of the segment";
}

TEST(LineString3DTest, AveragingIsTheMeanOverAWindow) {
    std::mt19937_64 random(SeedFromEnvironment("KALVIO_TEST_SEED", 20268));
    std::uniform_real_distribution<double> step(-4.0, 4.0);
    LineString3D string{Point3D(surveyOrigins[1], 7.0)};
    for (int i = 0; i < 40; ++i) {
        string.AppendPoint(std::as_const(string).GetEnd() + Vec3D(step(random), step(random), step(random)));
    }
    const double total = string.GetLength();
    LineString3D averaged;
    std::vector<int> indexes;
    ASSERT_TRUE(string.GetAveraged(averaged, indexes, 7.0));
    const auto parts = static_cast<unsigned int>(std::round(total / 7.0));
    ASSERT_EQ(averaged.GetSize(), parts + 1);
    ASSERT_EQ(indexes.size(), parts + 1U);
    const double h = total / parts;
    EXPECT_DOUBLE_EQ(string.CalculateNormalizedSegmentLength(total, 7.0), h);
    EXPECT_THAT(averaged.GetStart(), IsNear(string.GetStart(), 0.0));
    EXPECT_THAT(std::as_const(averaged).GetEnd(), IsNear(std::as_const(string).GetEnd(), 0.0));
    for (unsigned int i = 1; i < parts; ++i) {
        Vec3D sum;
        const int n = 4000;  // midpoint rule
        for (int k = 0; k < n; ++k) {
            Point3D p;
            ASSERT_TRUE(string.GetPointOffsetFromStart(i * h + h * ((k + 0.5) / n - 0.5), p));
            sum += p - string.GetStart();
        }
        EXPECT_THAT(averaged.GetPoint(i), IsNear(string.GetStart() + sum * (1.0 / n), 1e-5));
        Point3D onString;
        ASSERT_TRUE(string.GetPointOffsetFromStart(i * h, onString));
        double along = -1.0;
        EXPECT_TRUE(string.GetElementAtIndex(static_cast<unsigned int>(indexes[i]))
                        .GetLengthFromStartPoint(onString, along, 1e-6));
    }
    const Vec3D direction(0.6, 0.0, 0.8);
    const LineString3D straight{Point3D(1, 2, 3), Point3D(1, 2, 3) + direction * 3.0,
                                Point3D(1, 2, 3) + direction * 8.0};
    ASSERT_TRUE(straight.GetAveraged(averaged, indexes, 1.9));
    ASSERT_EQ(averaged.GetSize(), 5U);
    EXPECT_EQ(indexes, (std::vector<int>{0, 0, 1, 1, 1}));
    for (unsigned int i = 0; i < 5; ++i) {
        EXPECT_THAT(averaged[i], IsNear(Point3D(1, 2, 3) + direction * (2.0 * i), 1e-12));
    }
    EXPECT_FALSE(straight.GetAveraged(averaged, indexes, 0.0));
    EXPECT_FALSE(straight.GetAveraged(averaged, indexes, 1e-12)) << "more points than anything holds";
    EXPECT_FALSE(LineString3D(3U).GetAveraged(averaged, indexes, 1.0));
    EXPECT_EQ(averaged.GetSize(), 5U);
}

TEST(LineString3DTest, SplineRunsSmoothlyThroughTheVertices) {
    const int parts = 2000;
    LineString3D string{Point3D(0, 0, 0), Point3D(4, 1, 1), Point3D(5, 6, 0), Point3D(5, 6, 0), Point3D(-3, 7, 2)};
    LineString3D ring = string;
    ring.AppendPoint(string.GetStart());
    for (const LineString3D* const source : {&string, &ring}) {
        LineString3D spline;
        ASSERT_TRUE(source->GetSplineLineString(spline, parts));
        const unsigned int segments = source->GetNrOfElements() - 1;  // one vertex is repeated
        ASSERT_EQ(spline.GetSize(), segments * parts + 1U);
        unsigned int vertex = 0;
        for (unsigned int i = 0; i <= segments; ++i) {
            EXPECT_THAT(spline[i * parts], IsNear(source->GetPoint(vertex), 0.0));
            vertex += vertex == 2 ? 2 : 1;
        }
        for (unsigned int i = 0; i + 2 < spline.GetSize(); ++i) {
            const Vec3D turn =
                spline.GetElementAtIndex(i).GetDirection() - spline.GetElementAtIndex(i + 1).GetDirection();
            ASSERT_LT(turn.Length(), 0.02) << i;
        }
        if (source != &ring) continue;
        const Vec3D joint = spline.GetElementAtIndex(0).GetDirection() -
                            spline.GetElementAtIndex(spline.GetNrOfElements() - 1).GetDirection();
        EXPECT_LT(joint.Length(), 0.02);
    }
    LineString3D spline;
    const LineString3D straight{Point3D(0, 0, 0), Point3D(2, 2, 2), Point3D(4, 4, 4)};
    ASSERT_TRUE(straight.GetSplineLineString(spline, 4));
    for (unsigned int i = 0; i <= 8; ++i) EXPECT_THAT(spline[i], IsNear(Point3D(0.5, 0.5, 0.5) * i, 1e-12));
    // Barry and Goldman's pyramid at the middle of the second segment, worked out apart from the Hermite form.
    const LineString3D four{Point3D(0, 0, 0), Point3D(1, 0, 0), Point3D(1, 4, 0), Point3D(10, 4, 0)};
    const double t[] = {0.0, 1.0, 3.0, 6.0};
    const auto mix = [&](const Point3D& a, const Point3D& b, int i, int j) {
        return a * ((t[j] - 2.0) / (t[j] - t[i])) + b * ((2.0 - t[i]) / (t[j] - t[i]));
    };
    const Point3D a = mix(four[0], four[1], 0, 1), b = mix(four[1], four[2], 1, 2), c = mix(four[2], four[3], 2, 3);
    ASSERT_TRUE(four.GetSplineLineString(spline, 2));
    EXPECT_THAT(spline[3], IsNear(mix(mix(a, b, 0, 2), mix(b, c, 1, 3), 1, 2), 1e-12));
    EXPECT_FALSE(four.GetSplineLineString(spline, 0));
    EXPECT_FALSE(LineString3D(4U).GetSplineLineString(spline, 3));

    const LineString3D bend{Point3D(0, 0, 0), Point3D(2, 0, 0), Point3D(2, 3, 0)};
    const double r = std::sqrt(0.5);
    EXPECT_THAT(bend.GetInterpolatedTangent({1, 0}, 1, -1.0), IsNear(Vec3D(1, 0, 0), 1e-15));
    EXPECT_THAT(bend.GetInterpolatedTangent({1, 0}, 1, 1.0), IsNear(Vec3D(r, r, 0), 1e-15));
    EXPECT_THAT(bend.GetInterpolatedTangent({1, 0}, 0, 0.5),
                IsNear(Vec3D(0.5 * r, 0.5 * (r + 1), 0).Normalize(), 1e-15));
    EXPECT_THAT(bend.GetInterpolatedTangent({2}, 0, 0.5), IsNear(Vec3D(), 0.0));
    EXPECT_THAT(bend.GetInterpolatedTangent({}, 0, 0.5), IsNear(Vec3D(), 0.0));
}

TEST(LineString3DTest, TransformChangesAStringInPlaceAndCopiesAConstOne) {
    Matrix3D lift;
    lift.Translate(Vec3D(1, 2, 3));
    LineString3D string{Point3D(0, 0, 0), Point3D(1, 1, 1)};
    const LineString3D original = string;
    EXPECT_EQ(string.GetBoundingBox3D().GetMaxPoint().GetZ(), 1.0);
    EXPECT_TRUE(original.Transform(lift).IsEqualTo(string.Transform(lift), 1e-12));
    EXPECT_EQ(string.GetBoundingBox3D().GetMaxPoint().GetZ(), 4.0);
    EXPECT_TRUE(string.Translate(Vec3D(-1, -2, -3)).IsEqualTo(original, 1e-12));
    EXPECT_TRUE(original.IsEqualTo(Line3D(Point3D(0, 0, 0), Point3D(1, 1, 1)), 1e-12));
    std::vector<Point3D> lifted{Point3D()};
    original.GetLineString2D().Transform(lift, lifted);
    ASSERT_EQ(lifted.size(), 2U);
    EXPECT_THAT(lifted[1], IsNear(Point3D(2, 3, 3), 1e-12));
}

}  // namespace
}  // namespace Kalvio::Math
