#include "kalvio/core/Angle.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Arc3D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/PolygonCurve2D.h"
#include "kalvio/polygons/PolygonCurve3D.h"
#include "kalvio/polygons/RingCurve2D.h"
#include "kalvio/polygons/RingCurve3D.h"
#include "support/Rings.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

// A ring written as its corners, each with the sweep of the element that leaves it: 0 for a line. Consecutive lines may
// be gathered into line strings.
struct Corner {
    double x, y, sweep = 0.0;
};
using Corners = std::vector<Corner>;

// A plane in space to lay the ring into; the axes are orthogonal unit vectors.
struct Placement {
    Point3D origin;
    Vec3D u, v;
    Point3D At(double x, double y) const { return origin + u * x + v * y; }
    Vec3D Normal() const { return u.CrossProduct(v); }
};

Point2D CenterOf(const Point2D& a, const Point2D& b, double sweep) {
    const Vec2D chord = b - a;
    const Vec2D left(-chord.GetY(), chord.GetX());
    return a + chord * 0.5 + left * (0.5 / std::tan(0.5 * sweep));
}

void Lay(const Corners& corners, const Point2D& origin, bool asLineStrings, const Placement& placement,
         RingCurve2D& ring, RingCurve3D& ringInSpace) {
    for (std::size_t i = 0; i < corners.size();) {
        const auto at = [&](std::size_t k) {
            return Point2D(corners[k % corners.size()].x, corners[k % corners.size()].y);
        };
        const auto inPlan = [&](const Point2D& p) { return p + (origin - Point2D()); };
        const auto inSpace = [&](const Point2D& p) { return placement.At(p.GetX(), p.GetY()); };
        if (const double sweep = corners[i].sweep; sweep != 0.0) {
            const Point2D center = CenterOf(at(i), at(i + 1), sweep);
            ASSERT_TRUE(ring.AppendElement(new Arc2D(inPlan(at(i)), inPlan(center), Angle(sweep))));
            ASSERT_TRUE(ringInSpace.AppendElement(new Arc3D(inSpace(at(i)), inSpace(center), Angle(sweep),
                                                            Plane3D(inSpace(center), placement.Normal()))));
            ++i;
            continue;
        }
        std::unique_ptr<LineString2D> run(new LineString2D{inPlan(at(i))});
        std::unique_ptr<LineString3D> runInSpace(new LineString3D{inSpace(at(i))});
        do {
            ++i;
            run->AppendPoint(inPlan(at(i)));
            runInSpace->AppendPoint(inSpace(at(i)));
        } while (asLineStrings && i < corners.size() && corners[i].sweep == 0.0);
        if (asLineStrings) {
            ASSERT_TRUE(ring.AppendElement(run.release()));
            ASSERT_TRUE(ringInSpace.AppendElement(runInSpace.release()));
        } else {
            ASSERT_TRUE(ring.AppendElement(new Line2D(run->GetPoint(0), run->GetPoint(1))));
            ASSERT_TRUE(ringInSpace.AppendElement(new Line3D(runInSpace->GetPoint(0), runInSpace->GetPoint(1))));
        }
    }
}

// The ring as a polygon whose chords leave the arcs by at most 1e-6.
Polygon2D Flattened(const RingCurve2D& ring) {
    Polygon2D polygon;
    for (unsigned int i = 0; i < ring.GetSize(); ++i) {
        const IPolyline2DElement& element = ring.GetElementAtIndex(i);
        LineString2D points;
        if (element.GetType() == MathTypes::Arc2D) {
            static_cast<const Arc2D&>(element).MakeLineStringUsingHeight(0.0, element.GetLength(), points, 1e-6);
        } else if (element.GetType() == MathTypes::LineString2D) {
            points = static_cast<const LineString2D&>(element);
        } else {
            points.AppendPoint(element.GetStart());
        }
        polygon.AppendPoints(points.GetPoints());
    }
    return polygon;
}

TEST(RingCurveTest, InsideIsWhatTheFlattenedRingEnclosesInPlanAndInSpace) {
    const std::pair<const char*, Corners> rows[] = {
        {"stadium: arcs bulge outward", {{0, 0}, {4, 0, kPi}, {4, 2}, {0, 2, kPi}}},
        {"an arc bites into the ring", {{0, 0}, {4, 0, -0.8 * kPi}, {4, 2}, {0, 2}}},
        {"disc of two halves", {{0, 1, kPi}, {4, 1, kPi}}},
        {"arcs of more and of less than a half circle", {{1, 2, 1.6 * kPi}, {3, 2, 0.4 * kPi}}},
        {"a bulge and a bite, apart", {{0, 0, 0.7 * kPi}, {4, 0}, {4, 3, -0.9 * kPi}, {1, 3}}},
        {"straight sides only", {{0, 0}, {4, 0}, {4, 3}, {3, 3}, {3, 1}, {1, 1}, {1, 3}, {0, 3}}},
    };
    const double s = std::sqrt(0.5);
    const Placement placements[] = {{Point3D(0, 0, 5), Vec3D(1, 0, 0), Vec3D(0, 1, 0)},
                                    {Point3D(7, 0, 5), Vec3D(-1, 0, 0), Vec3D(0, 1, 0)},  // seen from below
                                    {Point3D(1, 2, 3), Vec3D(0, 0, 1), Vec3D(s, s, 0)},   // vertical
                                    {Point3D(385000, 6672000, 40), Vec3D(0.6, 0, 0.8), Vec3D(0, 1, 0)}};
    RandomNumbers random(20240611);
    for (const auto& [why, corners] : rows) {
        for (const Point2D& origin : surveyOrigins) {
            for (const Placement& placement : placements) {
                SCOPED_TRACE(why);
                for (const bool isReversed : {false, true}) {
                    RingCurve2D ring;
                    RingCurve3D ringInSpace;
                    Lay(corners, origin, placement.origin.GetX() < 5.0, placement, ring, ringInSpace);
                    EXPECT_TRUE(ring.IsContinuous(1e-6));
                    EXPECT_TRUE(ringInSpace.IsContinuous(1e-6));
                    EXPECT_NEAR(ringInSpace.GetLength(), ring.GetLength(), 1e-6);
                    const Polygon2D flat = Flattened(ring);
                    if (isReversed) {
                        ring.Reverse();
                        ringInSpace.Reverse();
                    }
                    int insideCount = 0;
                    for (int k = 0; k < 200; ++k) {
                        const Vec2D local(random(-2.0, 6.0), random(-2.0, 6.0));
                        const Point2D p = origin + local;
                        int hole = -1;
                        const auto position = flat.CheckPositionOf(p, hole, 1e-5);
                        if (position == Polygon2D::PositionResult::OnOuterBorder) continue;
                        const bool isInside = position == Polygon2D::PositionResult::Inside;
                        insideCount += isInside ? 1 : 0;
                        ASSERT_EQ(ring.IsPointInside(p, 1e-4), isInside) << testing::PrintToString(p);
                        const Point3D q = placement.At(local.GetX(), local.GetY());
                        ASSERT_EQ(ringInSpace.IsPointInside(q, 1e-4), isInside) << testing::PrintToString(q);
                        ASSERT_FALSE(ringInSpace.IsPointInside(q + placement.Normal() * 1e-3, 1e-4));
                    }
                    EXPECT_GT(insideCount, 5);
                }
            }
        }
    }
}

TEST(RingCurveTest, ArcsJoinTheirChordsWithoutSeam) {
    struct Row {
        const char* why;
        Corners corners;
        Point2D p;
        bool expected;
    };
    const Row rows[] = {
        {"on the chord of a bulge", {{0, 0}, {4, 0, kPi}, {4, 2}, {0, 2}}, Point2D(4, 1), true},
        {"the same, clockwise", {{0, 2}, {4, 2, -kPi}, {4, 0}, {0, 0}}, Point2D(4, 1), true},
        {"on the chord of a bite", {{0, 0}, {4, 0, -kPi}, {4, 2}, {0, 2}}, Point2D(4, 1), false},
        {"the same, clockwise", {{0, 2}, {4, 2, kPi}, {4, 0}, {0, 0}}, Point2D(4, 1), false},
        {"beside two arcs at once, which counts once",
         {{0, 0, kPi}, {4, 0}, {0, 0, kPi}, {4, 0}},
         Point2D(2, -1),
         true},
        {"far from a side that is level but for rounding",
         {{0, 0}, {10, 0}, {10, 5}, {20, 5 + 8.9e-16}, {20, 10}, {0, 10}},
         Point2D(520, 5),
         false},
        {"not a number", {{0, 0}, {4, 0, kPi}, {4, 2}, {0, 2}}, Point2D(kNan, 1), false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        RingCurve2D ring;
        RingCurve3D ringInSpace;
        Lay(row.corners, Point2D(), false, {Point3D(), Vec3D(1, 0, 0), Vec3D(0, 1, 0)}, ring, ringInSpace);
        EXPECT_EQ(ring.IsPointInside(row.p, 1e-4), row.expected);
    }
    RingCurve2D circle;
    circle.AppendElement(new Arc2D(Point2D(2, 0), Point2D(0, 0), Angle(2 * kPi)));
    EXPECT_TRUE(circle.IsPointInside(Point2D(-1, 1), 1e-4));
    EXPECT_FALSE(circle.IsPointInside(Point2D(-1.5, 1.5), 1e-4));
    EXPECT_FALSE(RingCurve2D().IsPointInside(Point2D(0, 0), 1e-4));
    EXPECT_FALSE(RingCurve3D().IsPointInside(Point3D(0, 0, 0), 1e-4)) << "no elements, no plane";
}

TEST(RingCurveTest, OnlyLinesArcsAndLineStringsAreTaken) {
    RingCurve2D ring;
    RingCurve3D ringInSpace;
    Clothoid clothoid(0.0, 300.0, 150.0, Point2D(0, 0), Vec2D(1, 0));
    Point2D point;
    Line2D line(Point2D(0, 0), Point2D(1, 0));
    Line3D lineInSpace(Point3D(0, 0, 0), Point3D(1, 0, 0));
    EXPECT_FALSE(ring.AppendElement(&clothoid));
    EXPECT_FALSE(ring.AppendElement(&point));
    EXPECT_FALSE(ring.AppendElement(&lineInSpace));
    EXPECT_FALSE(ring.AppendElement(nullptr));
    EXPECT_FALSE(ringInSpace.AppendElement(&line));
    EXPECT_FALSE(ringInSpace.AppendElement(nullptr));
    EXPECT_EQ(ring.GetSize() + ringInSpace.GetSize(), 0U);
    EXPECT_EQ(ring.GetElementAtIndex(3).GetLength(), 0.0) << "an empty ring has a line of zero length";
    EXPECT_EQ(ringInSpace.GetElementAtIndex(0).GetLength(), 0.0);
    EXPECT_FALSE(ring.IsClosed() || ringInSpace.IsClosed());
    EXPECT_FALSE(PolygonCurve2D().AppendInnerRing(nullptr));
    EXPECT_EQ(ring.GetType(), MathTypes::RingCurve2D);
    EXPECT_EQ(ringInSpace.GetType(), MathTypes::RingCurve3D);
}

TEST(RingCurveTest, PlacesShortElementsAndRemovalAreThoseOfAClosedChain) {
    // A 4 x 3 rectangle with a chamfer of length 0.5 at (4, 3), as lines in plan and in space.
    const Corners corners = {{0, 0}, {4, 0}, {4, 2.6}, {3.7, 3}, {0, 3}};
    RingCurve2D ring;
    RingCurve3D ringInSpace;
    Lay(corners, Point2D(), false, {Point3D(0, 0, 9), Vec3D(1, 0, 0), Vec3D(0, 1, 0)}, ring, ringInSpace);
    const auto check = [&](const IComplexGeometry& complex, const Point2D& p, const std::vector<double>& expected) {
        std::vector<double> lengths{77.0};
        complex.GetLengthsAlongGeometry(p, lengths, kTolerances);
        EXPECT_THAT(lengths, testing::Pointwise(testing::DoubleNear(1e-9), expected));
        ringInSpace.GetLengthsAlongGeometry(Point3D(p.GetX(), p.GetY(), 9), lengths, kTolerances);
        EXPECT_THAT(lengths, testing::Pointwise(testing::DoubleNear(1e-9), expected));
    };
    check(ring, Point2D(4, 1), {5.0});
    check(ring, Point2D(4, 2.6), {6.6});      // a joint once
    check(ring, Point2D(0, 0), {0.0, 13.8});  // where the ring closes
    check(ring, Point2D(2, 2), {});
    std::vector<std::uint64_t> shorter{9};
    EXPECT_TRUE(ring.FindShortElements(shorter, 1.0));
    EXPECT_TRUE(ringInSpace.FindShortElements(shorter, 1.0));
    EXPECT_EQ(shorter, (std::vector<std::uint64_t>{9, 2, 2}));

    EXPECT_TRUE(ring.IsClosed() && ringInSpace.IsClosed());
    ring.RemoveElements({2, 50}, true);
    EXPECT_TRUE(ring.IsContinuous(1e-9)) << "the side behind has moved";
    const std::unique_ptr<const IPolyline2DElement> first(&ring.GetElementAtIndex(0));
    ring.RemoveElements({0}, false);
    EXPECT_EQ(first->GetEnd(), Point2D(4, 0)) << "it is ours now";
    EXPECT_EQ(ring.GetSize(), 3U);
    EXPECT_TRUE(ring.IsClosed() && ring.IsContinuous(1e-9)) << "the gap where the ring starts is closed too";
    EXPECT_EQ(ring.GetStartPoint(), Point2D(0, 0));
    ringInSpace.RemoveElements({2, 2, 4, 50}, true);
    EXPECT_EQ(ringInSpace.GetSize(), 3U);
    EXPECT_TRUE(ringInSpace.GetElementAtIndex(2).GetStart().IsEqualTo(Point3D(3.7, 3, 9), 1e-12));
    EXPECT_FALSE(ringInSpace.IsClosed() || ringInSpace.IsContinuous(1e-9));
}

TEST(RingCurveTest, PolygonsOfCurvesCutInnerRingsOutAndCopyDeeply) {
    const Placement level{Point3D(0, 0, 2), Vec3D(1, 0, 0), Vec3D(0, 1, 0)};
    PolygonCurve2D polygon;
    PolygonCurve3D inSpace;
    Lay({{0, 0}, {10, 0, kPi}, {10, 4}, {0, 4}}, Point2D(), true, level, polygon.GetBoundary(), inSpace.GetBoundary());
    auto hole = std::make_unique<RingCurve2D>();
    auto holeInSpace = std::make_unique<RingCurve3D>();
    Lay({{3, 2, kPi}, {5, 2, kPi}}, Point2D(), true, level, *hole, *holeInSpace);
    EXPECT_TRUE(polygon.AppendInnerRing(hole.release()));
    EXPECT_TRUE(inSpace.AppendInnerRing(holeInSpace.release()));
    struct Row {
        double x, y;
        bool expected;
    };
    for (const Row& row : {Row{2, 2, true}, Row{4, 2.5, false}, Row{11.5, 2, true}, Row{12.5, 2, false}}) {
        EXPECT_EQ(polygon.IsPointInside(Point2D(row.x, row.y), 1e-4), row.expected) << row.x;
        EXPECT_EQ(inSpace.IsPointInside(Point3D(row.x, row.y, 2), 1e-4), row.expected) << row.x;
    }
    EXPECT_NEAR(polygon.GetLength(), 24.0 + 2 * kPi, 1e-9);
    EXPECT_THAT(polygon.GetBoundingBox().GetMaxPoint(), IsNear(Point2D(12, 4), 1e-9));
    EXPECT_THAT(inSpace.GetBoundingBox().GetMaxPoint(), IsNear(Point3D(12, 4, 2), 1e-9));
    EXPECT_TRUE(polygon.IsContinuous(1e-9) && inSpace.IsContinuous(1e-9));

    const std::unique_ptr<PolygonCurve2D> copy(polygon.Clone());
    const std::unique_ptr<PolygonCurve3D> copyInSpace(inSpace.Clone());
    const IGeometry& asGeometry = polygon;
    EXPECT_TRUE(Geometry::AreEqual(asGeometry, static_cast<const IGeometry&>(*copy), 1e-9));
    EXPECT_TRUE(Geometry::AreEqual(inSpace, *copyInSpace, 1e-9));
    copy->GetInnerRingAtIndex(0).Clear();
    copyInSpace->GetInnerRingAtIndex(0).Clear();
    EXPECT_FALSE(Geometry::AreEqual(polygon, *copy, 1e-9));
    EXPECT_FALSE(Geometry::AreEqual(inSpace, *copyInSpace, 1e-9));
    EXPECT_EQ(polygon.GetInnerRingAtIndex(0).GetSize(), 2U);
    EXPECT_TRUE(copy->IsPointInside(Point2D(4, 2.5), 1e-4));
    polygon.Reverse();
    EXPECT_EQ(polygon.GetBoundary().GetStartPoint(), Point2D(0, 0));
    EXPECT_NE(polygon.GetBoundary().GetElementAtIndex(0).GetEnd(), Point2D(10, 0));
    EXPECT_FALSE(polygon.IsPointInside(Point2D(4, 2.5), 1e-4));
}

}  // namespace
}  // namespace Kalvio::Math
