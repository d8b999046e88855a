#include "kalvio/alignments/Profile.h"

#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

using Vertex = Profile::Vertex;
using Kind = Profile::FaultKind;

TEST(ProfileTest, CurvesTouchTheirTangentsAndKeepTheirLaw) {
    RandomNumbers random(20240601);
    for (int round = 0; round < 300; ++round) {
        const double station = round % 2 == 0 ? 0.0 : 6e5, height = round % 2 == 0 ? 0.0 : 2000.0;
        const double g1 = random(-0.15, 0.15), g2 = random(-0.15, 0.15);
        const double radius = random(100, 500) / std::abs(g2 - g1), lengthOut = random(10, 100);
        const double bothSides = round % 3 == 0 ? 0.0 : random(5, 80);
        for (const Vertex& vertex :
             {Vertex::Arc(station, height, radius), Vertex::ParabolaOfRadius(station, height, radius),
              Vertex::Parabola(station, height, 40.0, lengthOut),
              Vertex::Clothoids(station, height, radius, bothSides, lengthOut)}) {
            Profile profile;
            ASSERT_TRUE(profile.Set(std::vector{Vertex::Corner(station - 700.0, height - 700.0 * g1), vertex,
                                                Vertex::Corner(station + 700.0, height + 700.0 * g2)}));
            const std::vector<double> joints = profile.GetJoints();
            Profile::Place on, at;
            for (std::size_t i = 1; i + 1 < joints.size(); ++i) {
                for (const double beside : {-1e-7, 0.0, 1e-7}) {  // one tangent on both sides
                    ASSERT_TRUE(profile.GetPlace(joints[i] + beside, on) && profile.GetPlace(joints[i], at));
                    EXPECT_NEAR(on.height - beside * at.grade, at.height, 2e-12);
                    EXPECT_NEAR(on.grade, at.grade, 1e-8);
                }
            }
            double length = 0.0, risen = 0.0;  // by Gauss' two-point rule
            const double from = joints[1], to = joints[joints.size() - 2];
            const int parts = 70;
            for (std::size_t k = 0; k < 2 * parts * (joints.size() - 3); ++k) {
                const std::size_t piece = 1 + k / (2 * parts), part = k / 2 % parts;
                const double step = (joints[piece + 1] - joints[piece]) / parts;
                const double gauss = (k % 2 == 0 ? -0.5 : 0.5) / std::sqrt(3.0);
                const double x = joints[piece] + step * (static_cast<double>(part) + 0.5 + gauss);
                ASSERT_TRUE(profile.GetPlace(x, on));
                length += 0.5 * step * std::hypot(1.0, on.grade);
                risen += 0.5 * step * on.grade;
                std::vector<double> found;
                profile.GetStationsOfHeight(on.height, found);
                EXPECT_THAT(found, testing::Contains(testing::DoubleNear(x, 1e-9 + 2e-12 / std::abs(on.grade))));
                if (vertex.curve == Profile::Curve::Arc) {
                    // The centre, from here and from the start of the arc.
                    ASSERT_TRUE(profile.GetPlace(from, at));
                    const double rise = (on.height - at.height) * on.curvature + 1.0 / std::hypot(1.0, on.grade);
                    EXPECT_NEAR(std::hypot(1.0, at.grade) * rise, 1.0, 1e-11);
                    EXPECT_NEAR(std::abs(on.curvature), 1.0 / radius, 1e-15);
                } else if (vertex.curve == Profile::Curve::Clothoids) {
                    // The curvature grows with the length of the curve, and turns the grade.
                    const double side = g2 > g1 ? 1.0 : -1.0;
                    const double along = profile.GetSlopeLength(from, x), back = profile.GetSlopeLength(x, to);
                    const double most = side / radius;
                    const bool isIn = along < bothSides, isOut = back < lengthOut;
                    const double bend = isIn ? most * along / bothSides : isOut ? most * back / lengthOut : most;
                    EXPECT_NEAR(on.curvature, bend, 3e-11 / radius);
                    const double turned = isIn ? 0.5 * bend * along : most * (along - 0.5 * bothSides);
                    EXPECT_NEAR(isOut ? std::atan(g2) - 0.5 * bend * back : std::atan(g1) + turned, std::atan(on.grade),
                                1e-12);
                } else if (vertex.lengthIn == 0.0) {
                    const long double in = (height - static_cast<long double>(height - 700.0 * g1)) / 700.0L;
                    const long double out = (static_cast<long double>(height + 700.0 * g2) - height) / 700.0L;
                    const long double half = 0.5L * radius * std::abs(out - in);
                    const long double beyond = x - static_cast<long double>(station) + half;
                    const long double rise = in * (beyond - half) + beyond * beyond * (out - in) / (4.0L * half);
                    EXPECT_NEAR(static_cast<double>(on.height - height - rise), 0.0, 5e-13);
                    EXPECT_NEAR(on.grade - g1, (g2 > g1 ? x - from : from - x) / radius, 1e-12);
                    EXPECT_NEAR(on.curvature * std::pow(1.0 + on.grade * on.grade, 1.5) * radius, g2 > g1 ? 1 : -1,
                                1e-12);
                }
            }
            EXPECT_NEAR(profile.GetSlopeLength(from, to), length, 1e-9);
            ASSERT_TRUE(profile.GetPlace(from, at) && profile.GetPlace(to, on));
            EXPECT_NEAR(on.height - at.height, risen, 1e-9);
            length += (from - joints.front()) * std::hypot(1.0, g1) + (joints.back() - to) * std::hypot(1.0, g2);
            EXPECT_NEAR(profile.GetSlopeLength(joints.front(), joints.back()), length, 1e-9);
            if (vertex.curve != Profile::Curve::Parabola || vertex.lengthIn == 0.0) continue;
            // The two parabolas share the grade of the tangent between the middles of the legs, and their heights
            // above it.
            ASSERT_TRUE(profile.GetPlace(station, at));
            EXPECT_NEAR(at.grade, (40.0 * g1 + lengthOut * g2) / (40.0 + lengthOut), 1e-12);
            EXPECT_NEAR(at.height - height, 0.5 * 40.0 * (at.grade - g1), 1e-11);
        }
    }
}

TEST(ProfileTest, FaultsNameTheVertexAndTheAmount) {
    struct Row {
        const char* why;
        std::vector<Vertex> vertices;
        Kind kind;
        std::size_t vertex;
        double amount;
    };
    const Vertex first = Vertex::Parabola(50, 5, 50);
    const double turning = 50 / std::atan(0.75);  // the radius for which the clothoids are 100 long together
    const Row rows[] = {
        {"equal stations", {{0, 1}, {50, 1}, {50, 2}}, Kind::NotAscending, 2, 0.0},
        {"descending", {{0, 1}, {50, 1}, {48, 2}, {60, 2}}, Kind::NotAscending, 2, 2.0},
        {"just one tangent length", {{0, 0}, {50, 1, Profile::Curve::Parabola, 5, 0}, {90, 0}}, Kind::NotACurve, 1, 0},
        {"negative radius", {{0, 0}, Vertex::Arc(50, 1, -9), {90, 0}}, Kind::NotACurve, 1, -9.0},
        {"no length of a clothoid", {{0, 0}, Vertex::Clothoids(50, 1, 9, -2, 3), {90, 0}}, Kind::NotACurve, 1, -2.0},
        {"60 and 50 for 100", {{0, 0}, Vertex::Clothoids(50, 0, turning, 60, 50), {90, 30}}, Kind::TooLong, 1, 10.0},
        {"clothoids where nothing turns", {{0, 0}, Vertex::Clothoids(5, 5, 9, 2, 4), {10, 10}}, Kind::TooLong, 1, 6.0},
        {"a curve with one grade", {{0, 0}, Vertex::Parabola(50, 1, 9)}, Kind::CurveAtEnd, 1, 0.0},
        {"not a number", {{0, 0}, {50, kNan}}, Kind::NotFinite, 1, 0.0},
        {"overlap by 5", {{0, 0}, first, Vertex::Parabola(90, 1, 40), {200, 1}}, Kind::Overlap, 2, 5.0},
        {"a curve reaches beyond the end", {{0, 0}, Vertex::Parabola(50, 5, 64), {80, 1}}, Kind::Overlap, 2, 2.0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        Profile profile;
        EXPECT_FALSE(profile.Set(row.vertices));
        ASSERT_EQ(profile.GetFaults().size(), 1U);
        EXPECT_EQ(profile.GetFaults()[0].kind, row.kind);
        EXPECT_EQ(profile.GetFaults()[0].vertex, row.vertex);
        EXPECT_EQ(profile.GetFaults()[0].amount, row.amount);
        EXPECT_EQ(profile.IsEmpty(), row.kind != Kind::Overlap);
        double height = -1.0;
        if (row.amount != 5.0) continue;
        EXPECT_TRUE(profile.GetHeight(70.0, height)) << "the piece before ends here";
        EXPECT_TRUE(profile.GetHeight(69.9, height) && profile.GetHeight(75.1, height));
        EXPECT_FALSE(profile.GetHeight(72.0, height));
    }
}

TEST(ProfileTest, HighsAndLowsAreKinksSummitsAndLevelStretches) {
    Profile profile;
    ASSERT_TRUE(profile.Set(std::vector<Vertex>{
        {0, 0}, {10, 1}, {20, 1}, {30, 1}, {40, 0}, {50, 0}, {60, -2}, Vertex::Parabola(100, -4, 40), {200, -3}}));
    const std::vector<Profile::Extremum> found = profile.GetExtrema();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_TRUE(found[0].isHigh && found[0].from == 10.0 && found[0].to == 30.0 && found[0].height == 1.0);
    // From -5 % to +1 % over 40 m: level after 40 * 5 / 6.
    EXPECT_FALSE(found[1].isHigh);
    EXPECT_NEAR(found[1].from, 80.0 + 40.0 * 5.0 / 6.0, 1e-12);
    EXPECT_NEAR(found[1].height, -3.0 - 0.5 * 0.05 * 40.0 * 5.0 / 6.0, 1e-14);
    std::vector<double> stations;
    profile.GetStationsOfHeight(0.0, stations);
    EXPECT_THAT(stations, testing::ElementsAre(0.0, 40.0, 50.0));
}

}  // namespace
}  // namespace Kalvio::Math
