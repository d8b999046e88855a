#pragma once

#include "kalvio/Math.h"
#include "support/Concurrently.h"
#include "support/Testing.h"

/// Laws that the elements of a chain obey alike, each checked on one curve.
namespace Kalvio::Math {

using Sample = IPolyline2DElement::PolylineElementPoint;

inline std::vector<std::unique_ptr<IGeometry>> Owned(const std::vector<IGeometry*>& out) {
    return {out.begin(), out.end()};
}

// The point at a station, which both ends find again.
template <class Element>
auto CheckRoundTrip(const Element& element, double station, double rounding) {
    auto p = element.GetStart();
    double fromStart = -1.0, fromEnd = -1.0;
    EXPECT_TRUE(element.GetPointOffsetFromStart(station, p) && element.GetLengthFromStartPoint(p, fromStart, 1e-4));
    EXPECT_TRUE(element.GetLengthFromEndPoint(p, fromEnd, 1e-4));
    EXPECT_NEAR(fromStart, station, rounding);
    EXPECT_NEAR(fromEnd, element.GetLength() - station, rounding);
    return p;
}

// Both axes exactly, due west from above and below, and the four quadrants.
inline const Vec2D kDirections[] = {{1, 0},     {0, 1},      {-1, 0.0},    {-1, -0.0}, {0, -1},
                                    {0.6, 0.8}, {-0.6, 0.8}, {-0.8, -0.6}, {0.8, -0.6}};

inline Vec2D Turned(const Vec2D& v, const Vec2D& direction) {
    return {v.GetX() * direction.GetX() - v.GetY() * direction.GetY(),
            v.GetX() * direction.GetY() + v.GetY() * direction.GetX()};
}

// Calls check(curve, reference, direction) for what every reference makes at both origins in all directions.
template <class References, class Check>
void ForEachPlaced(const References& references, Check&& check) {
    for (const Point2D& origin : surveyOrigins) {
        for (const Vec2D& direction : kDirections) {
            for (const auto& reference : references) {
                SCOPED_TRACE(testing::Message() << "reference " << &reference - references << " along "
                                                << testing::PrintToString(direction));
                check(reference.Make(origin, direction), reference, direction);
            }
        }
    }
}

template <class Curve>
auto At(const Curve& curve, double station) {
    auto sample = [] {
        if constexpr (requires { typename Curve::PolylinePoint; })
            return typename Curve::PolylinePoint();
        else
            return typename Curve::PolylineElementPoint();
    }();
    EXPECT_TRUE(curve.MakePointAndTangentAt(station, sample));
    return sample;
}

template <class Curve, class Point>
Point NearestOn(const Curve& curve, const Point& query) {
    const Point nearest = curve.GetNearestPoint(query, kTolerances);
    EXPECT_TRUE(curve.IsPointOnGeometry(nearest, Tolerances(1e-8, 1e-10)));
    if constexpr (requires(Sample sample) { curve.GetNearestPoint(query, 0.0, 1.0, sample); }) {
        Sample sample;
        EXPECT_TRUE(curve.GetNearestPoint(query, 0.0, curve.GetLength(), sample));
        EXPECT_THAT(nearest, IsNear(sample.point, 0.0));
        EXPECT_THAT(At(curve, sample.station).point, IsNear(nearest, 0.0));
    }
    return nearest;
}

// Unit speed, and the tangent turns by the curvature.
template <class Curve>
void CheckMotion(const Curve& curve, double rounding) {
    const double h = curve.GetLength() * 5e-4;
    for (const double share : {0.05, 0.3, 0.5, 0.62, 0.97}) {
        const double station = share * curve.GetLength();
        const auto before = At(curve, station - h), after = At(curve, station + h);
        const double turn = std::asin(before.tangent.PerpDotProduct(after.tangent));
        if constexpr (requires { curve.GetCurvature(0.0); }) {
            EXPECT_NEAR(turn, 2.0 * h * curve.GetCurvature(station), 4e-8 * curve.GetLength());
        }
        const Vec2D chord = after.point - before.point;
        EXPECT_NEAR(chord.Length(), 2.0 * h * (1.0 - turn * turn / 24.0), 1e-6 * h + rounding);
        EXPECT_NEAR(chord.PerpDotProduct(before.tangent + after.tangent), 0.0, 2e-7 * curve.GetLength());
    }
}

// Length, end and end tangent are those of the reference, wherever the curve starts; the ends are exact.
template <class Curve, class Reference>
void CheckEnds(const Curve& curve, const Reference& reference, const Vec2D& direction, double turning) {
    const double rounding = curve.GetStart().GetY() == 0.0 ? 1e-10 : 2e-9;
    const double length = reference.length;
    const Vec2D span = Turned(Vec2D(reference.x, reference.y), direction);
    EXPECT_NEAR(curve.GetLength(), length, 1e-12);
    EXPECT_THAT(curve.GetEnd(), IsNear(curve.GetStart() + span, rounding));
    EXPECT_THAT(curve.GetEndTangent(),
                IsNear(Turned(Vec2D(std::cos(reference.turn), std::sin(reference.turn)), direction), turning));
    EXPECT_THAT(At(curve, 0.0).point, IsNear(curve.GetStart(), 0.0));
    EXPECT_THAT(At(curve, 0.0).tangent, IsNear(direction, 1e-15));
    EXPECT_THAT(At(curve, length).point, IsNear(curve.GetEnd(), 0.0));
    EXPECT_THAT(At(curve, length).tangent, IsNear(curve.GetEndTangent(), turning));
    Vec2D offset, tangent;
    ASSERT_TRUE(curve.MakeOffsetAndTangentAt(length, offset, tangent));
    EXPECT_THAT(offset, IsNear(span, turning * length));
    EXPECT_THAT(tangent, IsNear(curve.GetEndTangent(), turning));
    CheckMotion(curve, rounding);
}

inline Vec2D Sideways(const Vec2D& tangent) { return tangent.GetNormalVector(true); }
inline Vec3D Sideways(const Vec3D& tangent) { return tangent.CrossProduct(Vec3D(0.3, -0.5, 0.8)).Normalize(); }

// A point on the curve, or off it by less than the tolerance, has its station, from both ends, and its tangent; one
// beside it has none.
template <class Curve>
void CheckStation(const Curve& curve, double station, double tolerance, double rounding = 4e-9) {
    const auto sample = At(curve, station);
    const double off = station > 0.0 && station < curve.GetLength() ? 0.9e-4 : 0.0;
    const auto within = sample.point - Sideways(sample.tangent) * off;
    double fromStart = -1.0, fromEnd = -1.0;
    for (const auto& [p, allowed] : {std::pair(within, 1e-4), std::pair(sample.point, tolerance)}) {
        ASSERT_TRUE(curve.GetLengthFromStartPoint(p, fromStart, allowed));
        ASSERT_TRUE(curve.GetLengthFromEndPoint(p, fromEnd, allowed));
        EXPECT_TRUE(curve.IsPointOnGeometry(p, kTolerances));
        EXPECT_NEAR(fromStart, station, tolerance);
        EXPECT_NEAR(fromEnd, curve.GetLength() - station, tolerance);
    }
    auto tangent = sample.tangent;
    ASSERT_TRUE(curve.ComputeTangent(sample.point, tangent, kTolerances));
    const double sign = requires { curve.GetParameterK(); }
    &&sample.tangent.GetX() < 0.0 ? -1.0 : 1.0;
    EXPECT_THAT(tangent, IsNear(sample.tangent * sign, 1e-5)) << "a parabola answers (1, u) whichever way it runs";
    const auto beside = sample.point + Sideways(sample.tangent) * 1.1e-4;
    EXPECT_FALSE(curve.IsPointOnGeometry(beside, kTolerances));
    EXPECT_FALSE(curve.GetLengthFromStartPoint(beside, fromStart, 1e-4));
    EXPECT_FALSE(curve.GetLengthFromEndPoint(beside, fromEnd, 1e-4));
    EXPECT_NEAR(fromStart, station, tolerance) << "untouched";
    EXPECT_THAT(NearestOn(curve, beside), IsNear(sample.point, rounding));
}

template <class Curve>
void CheckGrowth(const Curve& curve, Curve grown) {
    const double length = curve.GetLength();
    ASSERT_TRUE(grown.ExtendEnd(curve.GetEnd() + curve.GetEndTangent().GetNormalVector(true) * 0.5, kTolerances));
    EXPECT_NEAR(grown.GetLength(), 0.85 * length, 2e-8);
    EXPECT_THAT(grown.GetEnd(), IsNear(curve.GetEnd(), 2e-8));
    ASSERT_TRUE(grown.ExtendStart(curve.GetStart(), kTolerances));
    EXPECT_NEAR(grown.GetLength(), length, 2e-8);
    EXPECT_THAT(grown.GetStartTangent(), IsNear(curve.GetStartTangent(), 1e-8));
    ASSERT_TRUE(grown.ExtendEnd(At(curve, 0.7 * length).point, kTolerances)) << "back into the curve";
    EXPECT_NEAR(grown.GetLength(), 0.7 * length, 2e-8);
    EXPECT_FALSE(grown.ExtendEnd(grown.GetStart(), kTolerances)) << "nothing would be left";
    EXPECT_NEAR(grown.GetLength(), 0.7 * length, 2e-8);
}

// Broken at three stations, its pieces and their reverses run along the curve; a middle piece grows back over its ends.
template <class Curve>
void CheckPieces(const Curve& curve, bool growsBack, double rounding = 4e-9, double turning = 1e-12) {
    const double length = curve.GetLength();
    std::map<double, const Point2D> breaks;
    for (const double at : {0.15 * length, 0.45 * length, 0.45 * length + 5e-5, 0.8 * length, length}) {
        breaks.emplace(1000.0 + at, At(curve, at).point);
    }
    std::vector<std::unique_ptr<IGeometry>> pieces;
    Curve first(curve);
    ASSERT_TRUE(first.BreakAtPreSorted(breaks, 1000.0, pieces, true, kTolerances));
    ASSERT_EQ(pieces.size(), 3u);
    pieces.emplace(pieces.begin(), first.Clone());
    double station = 0.0;
    for (const std::unique_ptr<IGeometry>& owned : pieces) {
        const auto& piece = static_cast<const Curve&>(*owned);
        const double pieceLength = piece.GetLength();
        Curve reversed(piece);
        reversed.Reverse();
        for (const double share : {0.0, 0.4, 1.0}) {
            const auto whole = At(curve, std::min(station + share * pieceLength, length));
            const auto back = At(reversed, std::min(pieceLength - share * pieceLength, reversed.GetLength()));
            EXPECT_THAT(At(piece, share * pieceLength).point, IsNear(whole.point, rounding));
            EXPECT_THAT(back.point, IsNear(whole.point, rounding));
            EXPECT_THAT(back.tangent, IsNear(-whole.tangent, turning));
            if constexpr (requires { curve.GetCurvature(0.0); }) {
                EXPECT_NEAR(reversed.GetCurvature(back.station), -curve.GetCurvature(whole.station), 1e-14);
            }
        }
        station += pieceLength;
    }
    EXPECT_NEAR(station, length, 1e-9 + (turning > 1e-12 ? rounding : 0.0));
    if constexpr (requires { curve.GetCurvature(0.0); }) {
        if (growsBack) CheckGrowth(curve, static_cast<const Curve&>(*pieces[1]));
    }
}

// Breaks a curve along the x axis at abscissae, in place or not, into pieces given by those of their vertices.
template <class Curve>
void CheckBreaks(const char* why, Curve curve, const std::vector<double>& cuts, bool modifyThis,
                 const std::vector<std::vector<double>>& expected) {
    SCOPED_TRACE(why);
    const Curve before(curve);
    std::map<double, const Point2D> breaks;
    for (const double cut : cuts) breaks.emplace(100.0 + cut, Point2D(cut, 0.0));
    std::vector<std::unique_ptr<IGeometry>> out;
    EXPECT_EQ(curve.BreakAtPreSorted(breaks, 100.0, out, modifyThis, Tolerances(0.25, 1e-10)), !expected.empty());
    EXPECT_TRUE(modifyThis || curve.IsEqualTo(before, 1e-300));
    if (modifyThis) out.emplace(out.begin(), curve.Clone());
    std::vector<std::vector<double>> pieces;
    for (const auto& piece : out) {
        std::vector<Point3D> vertices;
        EXPECT_TRUE(Geometry::GetVertices(*piece, vertices));
        pieces.emplace_back();
        for (const Point3D& vertex : vertices) pieces.back().push_back(vertex.GetX());
    }
    EXPECT_EQ(pieces, expected);
}

// No sample lies outside the box, and some lie on each of its sides.
template <class Curve>
void CheckBox(const Curve& curve) {
    Point2D low = curve.GetStart(), high = low;
    for (int i = 1; i <= 4000; ++i) {
        const Point2D p = At(curve, curve.GetLength() * i / 4000.0).point;
        low = Point2D(std::min(low.GetX(), p.GetX()), std::min(low.GetY(), p.GetY()));
        high = Point2D(std::max(high.GetX(), p.GetX()), std::max(high.GetY(), p.GetY()));
    }
    const double slack = std::is_same_v<Curve, Arc2D> ? 0.0075 : 1.2e-4;  // arcs allow their boxes 0.005 on an axis
    const BoundingBox2D box = curve.GetBoundingBox2D();
    EXPECT_TRUE(box.IsPointInside(low, 2e-9) && box.IsPointInside(high, 2e-9));
    EXPECT_THAT(box.GetMinPoint(), IsNear(low, slack));
    EXPECT_THAT(box.GetMaxPoint(), IsNear(high, slack));
}

// Samples appended a few at a time grow the list now and then, not at every call.
template <class Curve>
void CheckAppending(const Curve& curve, double from, double to) {
    std::vector<Sample> samples;
    int moves = 0;
    for (int i = 0; i < 500; ++i) {
        const Sample* const before = samples.data();
        ASSERT_TRUE(i % 2 == 0 ? curve.MakePointsAndTangents(from, to, samples, to - from)
                               : curve.MakePointsAndTangentsUsingHeight(from, to, samples, 1e3));
        moves += samples.data() != before;
    }
    EXPECT_GE(samples.size(), 1000u);
    EXPECT_LE(moves, 15);
}

// Sampled by height, no chord lies further from the curve, and there are not many more of them than it takes.
template <class Curve>
void CheckChords(const Curve& curve, double height) {
    std::vector<Sample> samples;
    ASSERT_TRUE(curve.MakePointsAndTangentsUsingHeight(0.0, curve.GetLength(), samples, height));
    EXPECT_EQ(samples.back().station, curve.GetLength());
    double needed = 0.0;  // the integral of sqrt(k / (8 height))
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const Vec2D chord = (samples[i].point - samples[i - 1].point).Normalize();
        const double span = samples[i].station - samples[i - 1].station;
        for (const double share : {0.25, 0.5, 0.6, 0.75}) {
            const auto inside = At(curve, samples[i - 1].station + share * span);
            EXPECT_LE(std::abs(chord.PerpDotProduct(inside.point - samples[i - 1].point)), height * 1.00001);
            needed += 0.25 * span * std::sqrt(std::abs(curve.GetCurvature(inside.station)) / (8.0 * height));
        }
    }
    EXPECT_LE(static_cast<double>(samples.size()), 1.35 * needed + 5.0);
}

// What is no curve answers false and leaves the outputs; of some the start is left.
template <class Curve>
void CheckNoCurve(Curve curve, bool hasStart) {
    const Point2D from = curve.GetStart();
    std::vector<Sample> samples;
    std::vector<IGeometry*> out;
    Sample nearest;
    double length = -1.0;
    EXPECT_EQ(curve.MakePointsAndTangents(0.0, 10.0, samples, 1.0), hasStart);
    EXPECT_EQ(curve.GetLengthFromStartPoint(from, length, 1e-4), hasStart);
    EXPECT_TRUE(samples.size() == (hasStart ? 1u : 0u) && length == (hasStart ? 0.0 : -1.0));
    EXPECT_EQ(curve.GetNearestPoint(Point2D(1, 1), 0.0, 1.0, nearest), hasStart);
    EXPECT_FALSE(curve.BreakAt({from, Point2D(10, 10)}, out, false, kTolerances));
    EXPECT_FALSE(curve.ExtendEnd(Point2D(20, 20), kTolerances));
    (void)curve.GetBoundingBox3D();
    curve.Reverse();
    EXPECT_TRUE(!hasStart || curve.GetEnd().Distance(from) == 0.0);
}

// Const calls of many threads, on a copy that has derived nothing yet.
template <class Curve>
void CheckConcurrently(const Curve& curve, double length) {
    const Curve shared(curve);
    std::vector<double> stations(8, -1.0);
    Concurrently(8, [&](unsigned int i) {
        (void)shared.GetBoundingBox2D();
        (void)shared.GetNearestPoint(curve.GetStart(), kTolerances);
        if constexpr (requires { shared.GetElementAtIndex(0); }) (void)shared.GetElementAtIndex(i % 2).GetLength();
        (void)shared.GetLengthFromStartPoint(shared.GetEnd(), stations[i], 1e-6);
    });
    for (const double station : stations) EXPECT_NEAR(station, length, 1e-6);
}

}  // namespace Kalvio::Math
