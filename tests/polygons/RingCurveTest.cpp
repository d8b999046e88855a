#include "kalvio/Math.h"
#include "support/Rings.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

// A ring written as its corners, each with the sweep of the element that leaves it: 0 for a line.
struct Corner {
    double x, y, sweep = 0.0;
};
using Corners = std::vector<Corner>;

// A plane in space to lay the ring into; the axes are orthogonal unit vectors.
struct Placement {
    Point3D origin;
    Vec3D u, v;
    Point3D At(const Vec2D& p) const { return origin + u * p.GetX() + v * p.GetY(); }
};
const Placement kLevel{Point3D(0, 0, 9), Vec3D(1, 0, 0), Vec3D(0, 1, 0)};

Point2D PointAt(const Corners& corners, std::size_t i) {
    return {corners[i % corners.size()].x, corners[i % corners.size()].y};
}

Arc2D ArcAt(const Corners& corners, std::size_t i) {
    const Vec2D half = (PointAt(corners, i + 1) - PointAt(corners, i)) * 0.5;
    const double sweep = corners[i].sweep;
    const Vec2D toCenter = half + half.GetNormalVector(true) * (1.0 / std::tan(0.5 * sweep));
    return {PointAt(corners, i), PointAt(corners, i) + toCenter, Angle(sweep)};
}

struct Rings {
    RingCurve2D ring;
    RingCurve3D spatial;
};

// The same ring in plan, moved to the origin, and in space. Lines that follow each other may be gathered.
Rings Lay(const Corners& corners, bool asLineStrings, const Point2D& origin = {}, const Placement& placement = kLevel) {
    Rings made;
    const Vec2D move = origin - Point2D();
    for (std::size_t i = 0; i < corners.size();) {
        if (corners[i].sweep != 0.0) {
            const Arc2D arc = ArcAt(corners, i++);
            const Point3D center = placement.At(arc.GetCenter() - Point2D());
            const Plane3D plane(center, placement.u.CrossProduct(placement.v));
            const Arc3D lifted(placement.At(arc.GetStart() - Point2D()), center, arc.GetAngle(), plane);
            const Arc2D moved(arc.GetStart() + move, arc.GetCenter() + move, arc.GetAngle());
            EXPECT_TRUE(made.spatial.AppendElement(lifted) && made.ring.AppendElement(moved));
            continue;
        }
        LineString2D run{PointAt(corners, i)};
        LineString3D lifted;
        do run.AppendPoint(PointAt(corners, ++i));
        while (asLineStrings && i < corners.size() && corners[i].sweep == 0.0);
        for (const Point2D& p : std::as_const(run).GetPoints()) lifted.AppendPoint(placement.At(p - Point2D()));
        run.Translate(move);
        const auto append = [asLineStrings](auto& to, const auto& string) {
            return asLineStrings ? to.AppendElement(string) : to.AppendElement(string.GetElementAtIndex(0));
        };
        EXPECT_TRUE(append(made.ring, run) && append(made.spatial, lifted));
    }
    return made;
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
    const Placement placements[] = {kLevel,
                                    {Point3D(7, 0, 5), Vec3D(-1, 0, 0), Vec3D(0, 1, 0)},  // seen from below
                                    {Point3D(1, 2, 3), Vec3D(0, 0, 1), Vec3D(s, s, 0)},   // vertical
                                    {Point3D(385000, 6672000, 40), Vec3D(0.6, 0, 0.8), Vec3D(0, 1, 0)}};
    RandomNumbers random(20240611);
    for (const auto& [why, corners] : rows) {
        Polygon2D flat;  // chords leave the arcs by at most 1e-6
        for (std::size_t i = 0; i < corners.size(); ++i) {
            LineString2D points{PointAt(corners, i)};
            const Arc2D arc = ArcAt(corners, i);
            if (corners[i].sweep != 0.0) {
                EXPECT_TRUE(arc.MakeLineStringUsingHeight(0.0, arc.GetLength(), points, 1e-6));
            }
            flat.AppendPoints(std::as_const(points).GetPoints());
        }
        for (int form = 0; form < 16; ++form) {
            SCOPED_TRACE(testing::Message() << why << ", form " << form);
            const Placement& placement = placements[form / 4];
            auto [ring, spatial] = Lay(corners, form / 4 % 2 == 0, surveyOrigins[form / 2 % 2], placement);
            EXPECT_TRUE(ring.IsContinuous(1e-6) && spatial.IsContinuous(1e-6));
            EXPECT_NEAR(spatial.GetLength(), ring.GetLength(), 1e-6);
            if (form % 2 != 0) ring.Reverse();
            EXPECT_NEAR(ring.GetArea(), form % 2 != 0 ? -flat.GetArea() : flat.GetArea(), 2e-5);
            EXPECT_THAT(ring.GetCentroid(),
                        IsNear(flat.GetCentroid() + (surveyOrigins[form / 2 % 2] - Point2D()), 1e-5));
            if (form % 2 != 0) spatial.Reverse();
            int insideCount = 0, hole = -1;
            for (int k = 0; k < 200; ++k) {
                const Vec2D p(random(-2.0, 6.0), random(-2.0, 6.0));
                const auto position = flat.CheckPositionOf(Point2D() + p, hole, 1e-5);
                if (position == Polygon2D::PositionResult::OnOuterBorder) continue;
                const bool isInside = position == Polygon2D::PositionResult::Inside;
                insideCount += isInside ? 1 : 0;
                const Vec3D above = placement.u.CrossProduct(placement.v) * 1e-3;
                ASSERT_EQ(ring.IsPointInside(surveyOrigins[form / 2 % 2] + p, 1e-4), isInside) << p.GetX();
                ASSERT_EQ(spatial.IsPointInside(placement.At(p), 1e-4), isInside) << p.GetX();
                ASSERT_FALSE(spatial.IsPointInside(placement.At(p) + above, 1e-4));
            }
            EXPECT_GT(insideCount, 5);
        }
    }
}

TEST(RingCurveTest, ArcsJoinTheirChordsWithoutSeam) {
    const std::tuple<const char*, Corners, Point2D, bool> rows[] = {
        {"on the chord of a bulge", {{0, 0}, {4, 0, kPi}, {4, 2}, {0, 2}}, Point2D(4, 1), true},
        {"the same, clockwise", {{0, 2}, {4, 2, -kPi}, {4, 0}, {0, 0}}, Point2D(4, 1), true},
        {"on the chord of a bite", {{0, 0}, {4, 0, -kPi}, {4, 2}, {0, 2}}, Point2D(4, 1), false},
        {"the same, clockwise", {{0, 2}, {4, 2, kPi}, {4, 0}, {0, 0}}, Point2D(4, 1), false},
        {"beside two arcs counts once", {{0, 0, kPi}, {4, 0}, {0, 0, kPi}, {4, 0}}, Point2D(2, -1), true},
        {"far from a side level but for rounding",
         {{0, 0}, {10, 0}, {10, 5}, {20, 5 + 8.9e-16}, {20, 10}, {0, 10}},
         Point2D(520, 5),
         false},
        {"not a number", {{0, 0}, {4, 0, kPi}, {4, 2}, {0, 2}}, Point2D(kNan, 1), false},
    };
    for (const auto& [why, corners, p, expected] : rows) {
        EXPECT_EQ(Lay(corners, false).ring.IsPointInside(p, 1e-4), expected) << why;
    }
    RingCurve2D circle;
    circle.AppendElement(Arc2D(Point2D(2, 0), Point2D(0, 0), Angle(2 * kPi)));
    EXPECT_TRUE(circle.IsPointInside(Point2D(-1, 1), 1e-4) && !circle.IsPointInside(Point2D(-1.5, 1.5), 1e-4));
    EXPECT_FALSE(RingCurve3D().IsPointInside(Point3D(0, 0, 0), 1e-4)) << "no elements, no plane";
}

TEST(RingCurveTest, OnlyLinesArcsAndLineStringsAreTaken) {
    RingCurve2D ring;
    RingCurve3D spatial;
    Clothoid clothoid(0.0, 300.0, 150.0, Point2D(0, 0), Vec2D(1, 0));
    Point2D point;
    Line2D line(Point2D(0, 0), Point2D(1, 0));
    Line3D lineInSpace(Point3D(0, 0, 0), Point3D(1, 0, 0));
    for (IGeometry* element : std::initializer_list<IGeometry*>{&clothoid, &point, &lineInSpace, nullptr}) {
        EXPECT_FALSE(ring.AppendElement(element));
    }
    EXPECT_FALSE(spatial.AppendElement(&line) || spatial.AppendElement(nullptr));
    EXPECT_EQ(ring.GetElementAtIndex(3).GetLength() + spatial.GetElementAtIndex(0).GetLength(), 0.0);
    EXPECT_FALSE(ring.IsClosed() || spatial.IsClosed() || PolygonCurve2D().AppendInnerRing(nullptr));
}

TEST(RingCurveTest, PlacesShortElementsAndRemovalAreThoseOfAClosedChain) {
    // A 4 x 3 rectangle with a chamfer of length 0.5 at (4, 3).
    auto [ring, spatial] = Lay({{0, 0}, {4, 0}, {4, 2.6}, {3.7, 3}, {0, 3}}, false);
    // A joint counts once, where the ring closes twice.
    const std::pair<Point2D, std::vector<double>> passages[] = {
        {Point2D(4, 1), {5.0}}, {Point2D(4, 2.6), {6.6}}, {Point2D(0, 0), {0.0, 13.8}}, {Point2D(2, 2), {}}};
    for (const auto& [p, expected] : passages) {
        std::vector<double> lengths{77.0};
        ring.GetLengthsAlongGeometry(p, lengths, kTolerances);
        EXPECT_THAT(lengths, testing::Pointwise(testing::DoubleNear(1e-9), expected));
        spatial.GetLengthsAlongGeometry(Point3D(p, 9), lengths, kTolerances);
        EXPECT_THAT(lengths, testing::Pointwise(testing::DoubleNear(1e-9), expected));
    }
    std::vector<std::uint64_t> shorter{9};
    EXPECT_TRUE(ring.FindShortElements(shorter, 1.0) && spatial.FindShortElements(shorter, 1.0));
    EXPECT_EQ(shorter, (std::vector<std::uint64_t>{9, 2, 2}));

    EXPECT_TRUE(ring.IsClosed() && spatial.IsClosed());
    ring.RemoveElements({2, 50}, true);
    EXPECT_TRUE(ring.IsContinuous(1e-9)) << "the side behind has moved";
    const std::unique_ptr<const IPolyline2DElement> first(&ring.GetElementAtIndex(0));
    ring.RemoveElements({0}, false);
    EXPECT_EQ(first->GetEnd(), Point2D(4, 0)) << "it is ours now";
    EXPECT_EQ(ring.GetSize(), 3U);
    EXPECT_TRUE(ring.IsClosed() && ring.IsContinuous(1e-9)) << "the gap where the ring starts is closed too";
    EXPECT_EQ(ring.GetStartPoint(), Point2D(0, 0));
    spatial.RemoveElements({2, 2, 4, 50}, true);
    EXPECT_EQ(spatial.GetSize(), 3U);
    EXPECT_TRUE(spatial.GetElementAtIndex(2).GetStart().IsEqualTo(Point3D(3.7, 3, 9), 1e-12));
    EXPECT_FALSE(spatial.IsClosed() || spatial.IsContinuous(1e-9));
}

TEST(RingCurveTest, PolygonsOfCurvesCutInnerRingsOutAndCopyDeeply) {
    const Rings outer = Lay({{0, 0}, {10, 0, kPi}, {10, 4}, {0, 4}}, true),
                hole = Lay({{3, 2, kPi}, {5, 2, kPi}}, true);
    PolygonCurve2D polygon(outer.ring);
    PolygonCurve3D spatial(outer.spatial);
    EXPECT_TRUE(polygon.AppendInnerRing(std::make_unique<RingCurve2D>(hole.ring)));
    EXPECT_TRUE(spatial.AppendInnerRing(hole.spatial));
    EXPECT_FALSE(polygon.AppendInnerRing(nullptr) || spatial.AppendInnerRing(std::unique_ptr<RingCurve3D>()));
    EXPECT_NEAR(polygon.GetLength(), 24.0 + 2 * kPi, 1e-9);
    EXPECT_NEAR(polygon.GetArea(), 40.0 + kPi, 1e-13);
    EXPECT_NEAR(polygon.GetCentroid().GetX(), (200.0 + 20.0 * kPi + 16.0 / 3.0) / (40.0 + 2.0 * kPi), 1e-14);
    EXPECT_THAT(polygon.GetBoundingBox().GetMaxPoint(), IsNear(Point2D(12, 4), 1e-9));
    EXPECT_THAT(spatial.GetBoundingBox().GetMaxPoint(), IsNear(Point3D(12, 4, 9), 1e-9));
    EXPECT_TRUE(polygon.IsContinuous(1e-9) && spatial.IsContinuous(1e-9));
    const auto check = [](auto& curves, const auto& at) {
        for (const auto& [x, y, expected] :
             {std::tuple(2.0, 2.0, true), {4.0, 2.5, false}, {11.5, 2.0, true}, {12.5, 2.0, false}}) {
            EXPECT_EQ(curves.IsPointInside(at(x, y), 1e-4), expected) << x;
        }
        const auto copy = std::unique_ptr<std::decay_t<decltype(curves)>>(curves.Clone());
        EXPECT_TRUE(Geometry::AreEqual(curves, *copy, 1e-9));
        copy->GetInnerRingAtIndex(0).Clear();
        EXPECT_FALSE(Geometry::AreEqual(curves, *copy, 1e-9));
        EXPECT_TRUE(curves.GetInnerRingAtIndex(0).GetSize() == 2 && copy->IsPointInside(at(4.0, 2.5), 1e-4));
        curves.Reverse();
        EXPECT_THAT(curves.GetBoundary().GetElementAtIndex(0).GetEnd(), IsNear(at(10.0, 4.0), 1e-9));
        EXPECT_FALSE(curves.IsPointInside(at(4.0, 2.5), 1e-4));
    };
    check(polygon, [](double x, double y) { return Point2D(x, y); });
    check(spatial, [](double x, double y) { return Point3D(x, y, 9); });
}

}  // namespace
}  // namespace Kalvio::Math
