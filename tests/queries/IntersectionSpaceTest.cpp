#include "kalvio/curves/detail/PlaneFrame.h"
#include "queries/QueryNames.h"

namespace Kalvio::Math {
namespace {

using L = Line3D;

Vec3D RandomUnit(RandomNumbers& random) { return Vec3D(random(-1, 1), random(-1, 1), random(0.1, 1)).Normalize(); }

TEST(IntersectionSpaceTest, LinesMeetWhereTheyWereMadeToAndTheShortestLineIsPerpendicular) {
    RandomNumbers random(20301);
    for (int round = 0; round < 400; ++round) {
        const Q place(surveyOrigins[round % 2], 50.0);
        const Vec3D u = RandomUnit(random), v = RandomUnit(random);
        const Vec3D gap = u.CrossProduct(v).Normalize() * (round % 3 == 0 ? 0.0 : random(2e-4, 3.0));
        const double from = random(-90, 90), other = random(-90, 90);
        const L a(place + u * from, place + u * (from + random(1, 80)));
        const L b(place + gap + v * other, place + gap + v * (other - random(1, 80)));
        L shortest, between;
        ASSERT_EQ(I::ShortestLineBetweenLines(a, b, shortest, kTolerances), R::Intersecting);
        const double noise = 2e-6 / u.CrossProduct(v).Length();
        EXPECT_THAT(shortest.GetStart(), IsNear(place, noise));
        EXPECT_THAT(shortest.GetEnd(), IsNear(place + gap, noise));
        Q p(7, 7, 7);
        const L further(place + u * random(90, 99), place + u * random(2, 80));
        EXPECT_EQ(I::LineLine(a, further, p, kTolerances), R::Coincident) << "but for the rounding";
        EXPECT_EQ(I::LineLine(a, b, p, 1e-4), gap.Length() > 0.0 ? 0 : 1);
        EXPECT_THAT(p, IsNear(gap.Length() > 0.0 ? Q(7, 7, 7) : place, noise));
        ASSERT_EQ(I::LineLine(b, a, ProjectionPlane::XZ, p, 1e-4), 1) << "projections always do";
        const Vec3D y(0, 1, 0), toA = p - a.GetStart(), toB = p - b.GetStart();
        const double slack = 1e-6 / std::abs(u.CrossProduct(v).DotProduct(y));
        EXPECT_NEAR(toB.CrossProduct(v).Length(), 0.0, slack) << "on b, and over a";
        EXPECT_NEAR(toA.CrossProduct(u).DotProduct(y), 0.0, slack);
        // Between segments: no sampled pair of points is nearer.
        ASSERT_EQ(I::ShortestLineBetweenLineSegments(a, b, between, 1e-4), 1);
        EXPECT_THAT(a.GetNearestPoint(between.GetStart(), kTolerances), IsNear(between.GetStart(), 1e-6));
        EXPECT_THAT(b.GetNearestPoint(between.GetEnd(), kTolerances), IsNear(between.GetEnd(), 1e-6));
        for (int i = 0; i <= 40; ++i) {
            const Q on = a.GetStart() + (a.GetEnd() - a.GetStart()) * (i / 40.0);
            EXPECT_GE(b.GetNearestPoint(on, kTolerances).Distance(on), between.GetLength() - 1e-6);
        }
    }
}

TEST(IntersectionSpaceTest, Codes) {
    const Plane3D ground(Q(0, 0, 0), Vec3D(0, 0, 1));
    Q p(7, 7, 7);
    L out;
    const std::tuple<const char*, L, L, R> lines[] = {
        {"parallel", {Q(0, 0, 0), Q(4, 4, 4)}, {Q(9, 9, 9.001), Q(8, 8, 8.001)}, R::NoIntersection},
        {"skew", {Q(0, 0, 0), Q(4, 0, 0)}, {Q(1, -1, 0.0002), Q(1, 1, 0.0002)}, R::NoIntersection},
        {"as short as the tolerance", {Q(0, 0, 0), Q(1e-4, 0, 0)}, {Q(0, 0, 0), Q(0, 1, 0)}, R::Degenerate},
        {"not finite", {Q(0, 0, 0), Q(kInfinity, 0, 0)}, {Q(0, 0, 0), Q(0, 1, 0)}, R::NoIntersection},
        {"huge", {Q(1e300, 0, 0), Q(-1e300, 0, 0)}, {Q(0, 1, 0), Q(1, 1, 1e300)}, R::NoIntersection},
    };
    for (const auto& [why, a, b, result] : lines) {
        EXPECT_EQ(I::LineLine(a, b, p, kTolerances), result) << why;
        EXPECT_EQ(I::LineLine(b, a, p, kTolerances), result) << why;
    }
    const std::tuple<const char*, L, Plane3D, R> segments[] = {
        {"in the plane", {Q(0, 0, 5e-5), Q(4, 0, -5e-5)}, ground, R::Coincident},
        {"short of it", {Q(0, 0, 1), Q(4, 0, 2e-4)}, ground, R::NoIntersection},
        {"no normal", {Q(0, 0, 1), Q(4, 0, -1)}, Plane3D(), R::Degenerate},
        {"no length", {Q(0, 0, 0), Q(0, 0, 0)}, ground, R::Degenerate},
        {"not finite", {Q(0, 0, 1), Q(4, kNan, -1)}, ground, R::NoIntersection},
    };
    for (const auto& [why, segment, plane, result] : segments) {
        EXPECT_EQ(I::LineSegmentPlane(segment, plane, p, kTolerances), result) << why;
        // A triangle over the segment lies with it.
        const Triangle3D triangle(segment.GetStart(), segment.GetEnd(), segment.GetMiddlePoint() + Vec3D(0, 3, 0));
        EXPECT_EQ(I::TrianglePlane(triangle, plane, out, kTolerances), result) << why;
        const Triangle3D wild(Q(9, 9, 9), Q(10, 9, 9), Q(9, 10, kNan));
        EXPECT_NE(I::TriangleTriangle(triangle, wild, out, kTolerances), R::Intersecting);
    }
    const L tiny(Q(0, 0, 9), Q(5e-5, 0, 9)), across(Q(1, -1, 0), Q(1, 1, 0));
    EXPECT_EQ(I::LineLine(tiny, across, ProjectionPlane::XY, p, 1e-4), 0) << "too short";
    EXPECT_THAT(p, IsNear(Q(7, 7, 7), 0.0)) << "untouched";
    EXPECT_EQ(out.GetLength(), 0.0);
    ASSERT_EQ(I::LineSegmentPlane(L(Q(0, 0, 1), Q(4, 0, 1e-4)), ground, p, 1e-4), 1) << "an end on it";
    EXPECT_THAT(p, IsNear(Q(4, 0, 1e-4), 0.0));
    ASSERT_EQ(I::LineSegmentPlane(L(Q(0, 0, 3), Q(4, 0, -1)), ground, p, 1e-4), 1);
    EXPECT_THAT(p, IsNear(Q(3, 0, 0), 1e-15));
}

// A point of the line of intersection is on a piece when it is in the area.
template <class IsInside>
void CheckPieces(std::vector<L>& pieces, const detail::PlaneFrame& frame, const Plane3D& plane, IsInside&& isInside) {
    const Vec3D along = frame.normal.CrossProduct(plane.GetNormal()).Normalize(), up = along.CrossProduct(frame.normal);
    const Vec3D away = plane.GetProjection(frame.origin) - frame.origin;
    const Q foot = frame.origin + up * (away.NormSquared() / away.DotProduct(up));
    for (const L& piece : pieces) {
        EXPECT_GE((piece.GetEnd() - piece.GetStart()).DotProduct(along), 0.0);
        EXPECT_NEAR((piece.GetStart() - foot).CrossProduct(along).Length(), 0.0, 1e-5);
        EXPECT_NEAR((piece.GetEnd() - foot).CrossProduct(along).Length(), 0.0, 1e-5);
    }
    for (int i = -300; i <= 300; ++i) {
        const Q p = foot + along * (0.04 * i);
        int on = 0;
        double nearest = kInfinity;
        for (const L& piece : pieces) {
            const double s = (p - piece.GetStart()).DotProduct(along), t = (p - piece.GetEnd()).DotProduct(along);
            on += s >= 0.0 && t <= 0.0 ? 1 : 0;
            nearest = std::min({nearest, std::abs(s), std::abs(t)});
        }
        EXPECT_TRUE(nearest <= 2e-5 || on == (isInside(p) ? 1 : 0)) << "not at an end of a piece";
    }
    pieces.clear();
}

TEST(IntersectionSpaceTest, PlanesCutAreasWhereTheyAre) {
    RandomNumbers random(20302);
    int straight = 0, curved = 0;
    for (int round = 0; round < 120; ++round) {
        const Vec3D normal = RandomUnit(random), first = normal.CrossProduct(RandomUnit(random)).Normalize();
        const Q origin(surveyOrigins[round % 2], random(-9, 9));
        const detail::PlaneFrame frame{origin, first, normal.CrossProduct(first), normal};
        const Plane3D plane(frame.origin + frame.first * random(-2, 2), RandomUnit(random));
        Polygon2D plan(RandomStar(random, Point2D(), 9.0, 12));
        plan.AppendHoleBoundary(LineString2D(RandomStar(random, Point2D(), 1.7, 9)));
        Polygon3D polygon(plan, 0.0);
        for (Point3D& p : polygon.GetPoints()) p = frame.ToSpace(p.GetPoint2D());
        for (Point3D& p : polygon.GetHoleBoundary(0).GetPoints()) p = frame.ToSpace(p.GetPoint2D());
        std::vector<L> pieces;
        straight += I::PolygonPlane(polygon, plane, pieces, 1e-6);
        CheckPieces(pieces, frame, plane, [&](const Point3D& p) { return plan.IsPointInside(frame.ToPlane(p), 0.0); });
        // Six arcs that bulge out or in, less a full circle.
        RingCurve3D ring;
        const auto at = [&](double turn, double r) { return frame.ToSpace(Point2D(Angle(turn * kPi / 3.0), r)); };
        for (int i = 0; i < 6; ++i) {
            Arc3D arc;
            ASSERT_TRUE(arc.Set(at(i, 6.0), at(i + 0.5, random(4.0, 8.0)), at(i + 1, 6.0)));
            ring.AppendElement(arc);
        }
        PolygonCurve3D area(ring);
        RingCurve3D circle;
        const Q center = frame.ToSpace(Point2D(random(-2, 2), 0.0));
        circle.AppendElement(Arc3D(center + frame.second * 1.2, center, Angle(2.0 * kPi), Plane3D(center, normal)));
        const int outer = I::RingCurvePlane(ring, plane, pieces, 1e-6);
        CheckPieces(pieces, frame, plane, [&](const Point3D& p) { return ring.IsPointInside(p, 1e-6); });
        area.AppendInnerRing(circle);
        curved += I::PolygonCurvePlane(area, plane, pieces, 1e-6) - outer;
        CheckPieces(pieces, frame, plane, [&](const Point3D& p) { return area.IsPointInside(p, 1e-6); });
    }
    EXPECT_TRUE(straight > 200 && curved > 20) << "cuts beside holes";
}

TEST(IntersectionSpaceTest, AreasThatTouchThePlane) {
    const Plane3D wall(Q(0, 0, 0), Vec3D(1, 0, 0));
    const std::tuple<const char*, std::string, R, std::vector<double>> rows[] = {
        {"no area", "0 0 0 5 0 9", R::Degenerate, {}},
        {"beside it", "1 0 3 0 3 4", R::NoIntersection, {}},
        {"a corner", "0 2 3 0 3 4", R::Intersecting, {2, 2}},
        {"two corners", "0 1 3 0 3 9 0 8 2 5", R::Intersecting, {1, 1, 8, 8}},
        {"an edge", "0 1 3 0 3 9 0 7", R::Intersecting, {1, 7}},
        {"into a corner of a bay", "-3 0 3 0 3 9 -3 9 -3 7 0 5 -3 3", R::Intersecting, {0, 9}},
        {"along a step", "-3 0 3 0 3 9 0 9 0 4 -3 4", R::Intersecting, {0, 9}},
        {"a hole that touches", "-3 0 3 0 3 9 -3 9 / 0 2 2 2 2 4 0 4", R::Intersecting, {0, 9}},
        {"two holes", "-3 0 3 0 3 9 -3 9 / -1 2 2 2 2 4 -1 4 / -1 5 1 5 0 6", R::Intersecting, {0, 2, 4, 5, 6, 9}},
    };
    for (const auto& [why, rings, result, ends] : rows) {
        for (const Vec3D& shift : {Vec3D(), Vec3D(385000, 6672000, 90)}) {
            const Polygon3D polygon = Polygon3D(MakePolygon(rings), 2.0).Translate(shift);
            std::vector<L> pieces;
            const Plane3D plane(Q(0, 0, 0) + shift, Vec3D(1, 0, 0));
            EXPECT_EQ(I::PolygonPlane(polygon, plane, pieces, kTolerances), result) << why;
            std::vector<double> found;
            for (const L& piece : pieces) {
                for (const Q& p : {piece.GetStart(), piece.GetEnd()}) found.push_back(p.GetY() - shift.GetY());
            }
            EXPECT_THAT(found, testing::Pointwise(testing::DoubleNear(1e-8), ends)) << why;
        }
    }
    std::vector<L> pieces;
    const Polygon3D upright{Q(0, 0, 0), Q(0, 5, 0), Q(0, 5, 3)};
    EXPECT_EQ(I::PolygonPlane(upright, wall, pieces, kTolerances), R::Coincident);
    // A disc that touches from outside, or reaches through by less than the tolerance: then the cut is its chord.
    for (const double reach : {-5e-5, 5e-5}) {
        RingCurve3D disc;
        disc.AppendElement(Arc3D(Q(-4 + reach, 2, 0), Q(-2 + reach, 2, 0), Angle(2.0 * kPi), Plane3D(0, 0, 1, 0)));
        pieces.clear();
        ASSERT_EQ(I::RingCurvePlane(disc, wall, pieces, kTolerances), R::Intersecting);
        EXPECT_NEAR(pieces[0].GetLength(), reach > 0.0 ? 2.0 * std::sqrt(4e-5 * 5.0 - 2.5e-9) : 0.0, 1e-9);
    }
}

// Triangles of whole coordinates have a point in common unless an axis separates them; exact.
bool DoMeet(const Triangle3D& a, const Triangle3D& b) {
    const auto edge = [](const Triangle3D& t, int i) { return t[(i + 1) % 3] - t[i]; };
    std::vector<Vec3D> axes{edge(a, 0).CrossProduct(edge(a, 1)), edge(b, 0).CrossProduct(edge(b, 1))};
    for (int i = 0; i < 9; ++i) axes.push_back(edge(a, i / 3).CrossProduct(edge(b, i % 3)));
    for (int i = 0; i < 6; ++i) axes.push_back(axes[i % 2].CrossProduct(edge(i % 2 == 0 ? a : b, i / 2)));
    return std::none_of(axes.begin(), axes.end(), [&](const Vec3D& axis) {
        const auto at = [&](const Q& p) { return (p - Q()).DotProduct(axis); };
        const auto along = [&](const Triangle3D& t) { return std::minmax({at(t[0]), at(t[1]), at(t[2])}); };
        return along(a).second < along(b).first || along(b).second < along(a).first;
    });
}

TEST(IntersectionSpaceTest, TrianglesMeetAsExactArithmeticSays) {
    RandomNumbers random(20303);
    std::map<R, int> seen;
    for (int round = 0; round < 30000; ++round) {
        const auto whole = [&](int n) { return std::floor(random(0.0, n)); };
        const auto corner = [&] { return Q(whole(4), whole(4), whole(round % 3 + 1)); };
        const Triangle3D a(corner(), corner(), corner()), b(corner(), corner(), corner());
        if (a.GetArea() == 0.0 || b.GetArea() == 0.0) continue;
        const Vec3D shift(surveyOrigins[round % 2] - Point2D(), 0.0);
        const auto moved = [&](const Triangle3D& t) { return Triangle3D(t[0] + shift, t[1] + shift, t[2] + shift); };
        const Triangle3D ma = moved(a), mb = moved(b);
        const auto isInBoth = [&](const Q& p, double tolerance) {
            return I::IsPointInsideTriangle(p, ma, tolerance) && I::IsPointInsideTriangle(p, mb, tolerance);
        };
        std::vector<Q> common, swapped;
        L segment(Q(7, 7, 7), Q(7, 7, 7));
        const R result = I::TriangleTriangle(ma, mb, common, kTolerances);
        ++seen[result];
        ASSERT_EQ(result != R::NoIntersection, DoMeet(a, b)) << round;
        EXPECT_EQ(I::Collides(ma, mb, kTolerances), result != R::NoIntersection);
        ASSERT_EQ(I::TriangleTriangle(mb, ma, swapped, kTolerances), result);
        bool isMetByEdge = false;
        for (int i = 0; i < 3; ++i) {
            isMetByEdge = isMetByEdge || I::Collides(L(ma[i], ma[(i + 1) % 3]), mb, 1e-7);
            isMetByEdge = isMetByEdge || I::Collides(L(mb[i], mb[(i + 1) % 3]), ma, kTolerances);
        }
        EXPECT_EQ(isMetByEdge, result != R::NoIntersection);
        EXPECT_EQ(common.size(), swapped.size());
        EXPECT_EQ(I::TriangleTriangle(ma, mb, segment, 1e-4), result == R::Intersecting ? 1 : 0);
        Vec3D area;
        for (std::size_t i = 0; i < common.size(); ++i) {
            EXPECT_TRUE(isInBoth(common[i], 1e-8));
            area += (common[i] - common[0]).CrossProduct(common[(i + 1) % common.size()] - common[0]);
        }
        if (result == R::Coincident) {
            EXPECT_TRUE(area.DotProduct(a.GetNormal()) > 1e-3 && common.size() >= 3 && common.size() <= 6);
        } else if (result == R::Intersecting) {
            // A step further along the line is in only one of them.
            const Vec3D step = (segment.GetEnd() - segment.GetStart()).Normalize() * 1e-4;
            ASSERT_EQ(common.size(), step.Length() > 0.0 ? 2u : 1u);
            for (const Q& p : {segment.GetEnd() + step, segment.GetStart() - step}) {
                EXPECT_TRUE(common.size() == 1 || !isInBoth(p, 1e-7));
            }
        }
    }
    EXPECT_EQ(seen.size(), 3u);
    for (const auto& [result, count] : seen) EXPECT_GT(count, 3000);
}

TEST(IntersectionSpaceTest, StripsAreCutIntoTheFewestStrings) {
    // Rungs that climb and fall through the plane, a flat part on it, and a peak that touches it.
    const double heights[] = {-2, 1, 3, 0, 0, 0, -1, -1, 0, -1, 1};
    TriangleStrip3D strip;
    for (int k = 0; k < 11; ++k) {
        strip.AppendVertices({Q(2.0 * k, 0, 5 + heights[k]), Q(2.0 * k, 4, 5 + (k == 8 ? -1 : heights[k]))});
    }
    for (const Vec3D& shift : {Vec3D(), Vec3D(385000, 6672000, 0)}) {
        TriangleStrip3D moved(strip);
        for (unsigned int i = 0; i < strip.GetSize(); ++i) moved.GetVertex(i) += shift;
        std::vector<LineString3D> strings;
        ASSERT_EQ(I::TriangleStripPlane(moved, Plane3D(0, 0, 1, -5), strings, 1e-4), 4);
        const std::tuple<std::size_t, double, double> rows[] = {{3, 4.0 / 3, 4}, {7, 6, 16}, {2, 16, 0}, {3, 19, 4}};
        for (std::size_t i = 0; const auto& [size, x, length] : rows) {
            const LineString3D& string = strings[i++];
            EXPECT_EQ(string.GetSize(), size) << i;
            EXPECT_NEAR(string.GetBoundingBox3D().GetMinPoint().GetX() - shift.GetX(), x, 1e-8) << i;
            EXPECT_NEAR(string.GetLength(), length, 1e-8) << i;
        }
    }
    std::vector<LineString3D> strings;
    const auto cut = [&](const TriangleStrip3D& of, double height) {
        return I::TriangleStripPlane(of, Plane3D(0, 0, 1, -height), strings, kTolerances);
    };
    EXPECT_EQ(cut(strip, -5), R::NoIntersection);
    EXPECT_EQ(cut({Q(0, 0, 5), Q(0, 1, 5), Q(1, 0, 5), Q(1, 1, 5)}, 5), R::Coincident);
    strip.AppendVertices({Q(0, 0, kNan)});
    EXPECT_EQ(cut(strip, 5), R::Degenerate);
    strip.AppendVertices({Q(0, 0, 0)});
    EXPECT_EQ(cut(strip, 5), R::NoIntersection);
    EXPECT_TRUE(strings.empty());
}

TEST(IntersectionSpaceTest, BoxesAndPolygonsCollideAsTheirPointsDo) {
    RandomNumbers random(20304);
    int hits = 0;
    for (int round = 0; round < 4000; ++round) {
        const Point2D place = surveyOrigins[round % 2];
        const auto box = [&] {
            const Vec2D axis = Point2D(Angle(random(0, 7)), 1.0) - Point2D();
            const Vec2D size(random(0.1, 4), random(0.1, 4)), aside(random(-3, 3), random(-3, 3));
            return OrientedBoundingBox2D(place + aside, size, axis, axis.GetNormalVector(true));
        };
        const OrientedBoundingBox2D a = box(), b = box();
        std::vector<Point2D> ring, other;
        a.GetCornerPoints(ring);
        b.GetCornerPoints(other);
        const bool meet = I::Collides(a, b, Tolerances(1e-9));  // a wider one would let boxes meet that do not
        EXPECT_EQ(meet, I::Collides(Polygon2D(ring), Polygon2D(other), 1e-9)) << "the polygons of their corners";
        // A box in space over the plan box of b against a triangle that leans.
        const BoundingBox2D plan = b.GetBoundingBox2D();
        const BoundingBox3D block(Q(plan.GetMinPoint(), 1.0), Q(plan.GetMaxPoint(), 2.0));
        const Triangle3D leaning(Q(ring[0], random(0, 3)), Q(ring[1], random(0, 3)), Q(ring[2], random(0, 3)));
        bool sampled = false;
        for (int i = 0; i < 900; ++i) {
            const double u = i % 30 / 29.0, v = (1.0 - u) * (i / 30) / 29.0;
            const Q p = leaning[0] + (leaning[1] - leaning[0]) * u + (leaning[2] - leaning[0]) * v;
            sampled = sampled || (plan.IsPointInside(p.GetPoint2D(), 0.0) && std::abs(p.GetZ() - 1.5) <= 0.5);
        }
        EXPECT_TRUE(!sampled || I::Collides(leaning, block, 0.0));
        EXPECT_TRUE(sampled || !I::Collides(leaning, block, -0.1)) << "deep inside";
        hits += meet ? 1 : 0;
    }
    EXPECT_TRUE(hits > 1000 && hits < 3500);
    const Triangle3D small(Q(0, 0, 0), Q(0.5, 0, 0), Q(0, 0.5, 0));
    for (const double wide : {0.4, 0.6, 1.0}) EXPECT_TRUE(I::Collides(L(Q(-5, -0.3, 0), Q(5, -0.3, 0)), small, wide));
    EXPECT_FALSE(I::Collides(L(Q(-5, -1.1, 0), Q(5, -1.1, 0)), small, 1.0));
    const BoundingBox3D low(Q(0, 0, 0), Q(9, 9, 2));
    EXPECT_TRUE(I::Collides(low, BoundingBox3D(Q(9, 9, 2.25), Q(10, 10, 3)), 0.25));
    EXPECT_FALSE(I::Collides(BoundingBox3D(Q(0, 0, 2.5), Q(9, 9, 3)), low, 0.25)) << "above it";
    const Point2D a(0, 0), b(4, 0), c(0, 4);
    EXPECT_TRUE(I::IsPointInsideTriangle(Point2D(-0.25, 1), a, b, c, 0.25));
    EXPECT_FALSE(I::IsPointInsideTriangle(Point2D(-0.25, -0.25), a, b, c, 0.25)) << "beyond a corner";
}

}  // namespace
}  // namespace Kalvio::Math
