#include "kalvio/alignments/AlignmentFitting.h"

#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

using Corner = AlignmentFitting::Corner;
using Law = AlignmentFitting::Law;

// A right, a left and a right curve, the middle one of an arc alone.
std::vector<Corner> MakeCorners(const Point2D& origin, Law law) {
    return {{origin},
            {origin + Vec2D(400, 80), 220, 70, 50, law},
            {origin + Vec2D(640, -240), 150, 0, 0, law},
            {origin + Vec2D(1050, -220), 300, 60, 90, law},
            {origin + Vec2D(1300, -520)}};
}

// The plan by its corners, and points every 5 m beside it.
std::vector<Point2D> Survey(const std::vector<Corner>& corners, double scatter, Polyline2D& plan) {
    AlignmentDesign::Fault fault;
    EXPECT_TRUE(AlignmentDesign::MakePlan(corners, plan, fault));
    RandomNumbers random(20240601);
    std::normal_distribution<double> offset(0.0, 1.0);
    std::vector<Point2D> points;
    for (double station = 0.0; station < plan.GetLength(); station += 5.0) {
        Point2D point;
        EXPECT_TRUE(plan.GetPoint(station, scatter * offset(random), point));
        points.push_back(point);
    }
    return points;
}

TEST(AlignmentFittingTest, SurveyedAlignmentsComeBackWithTheirKinds) {
    for (const auto& [origin, law, scatter] :
         {std::tuple(surveyOrigins[0], Law::Clothoid, 0.01), {surveyOrigins[1], Law::Bloss, 0.0}}) {
        const std::vector<Corner> corners = MakeCorners(origin, law);
        Polyline2D plan;
        const std::vector<Point2D> points = Survey(corners, scatter, plan);
        std::vector<Corner> start;
        ASSERT_TRUE(AlignmentFitting::Propose(points, scatter, law, start));
        ASSERT_EQ(start.size(), corners.size());
        AlignmentFitting::Result fitted;
        ASSERT_TRUE(AlignmentFitting::Fit(points, start, fitted));
        for (std::size_t i = 1; i + 1 < corners.size(); ++i) {
            EXPECT_EQ(fitted.corners[i].lengthIn > 0.0, corners[i].lengthIn > 0.0);
            if (scatter > 0.0) continue;
            EXPECT_THAT(fitted.corners[i].point, IsNear(corners[i].point, 1e-6));
            EXPECT_NEAR(fitted.corners[i].radius, corners[i].radius, 1e-6);
            EXPECT_NEAR(fitted.corners[i].lengthIn, corners[i].lengthIn, 1e-6);
            EXPECT_NEAR(fitted.corners[i].lengthOut, corners[i].lengthOut, 1e-6);
        }
        // The scatter is found, and the plan lies nearer to the true one than the points do.
        EXPECT_NEAR(fitted.scatter, scatter, 0.15 * scatter + 1e-8);
        EXPECT_FALSE(fitted.isAtLimit);
        for (std::size_t i = 0; i < points.size(); ++i) {
            EXPECT_LE(std::abs(fitted.places[i].offset), std::abs(fitted.places[fitted.worst].offset));
            Point2D truth;
            ASSERT_TRUE(plan.GetPoint(5.0 * static_cast<double>(i), 0.0, truth));
            EXPECT_LT(fitted.plan.GetNearestPoint(truth, Tolerances::Standard()).Distance(truth), 1.2 * scatter + 1e-7);
        }
    }
}

TEST(AlignmentFittingTest, WhatCannotBeFittedIsRefused) {
    std::vector<Corner> corners = MakeCorners(Point2D(), Law::Clothoid);
    Polyline2D plan;
    std::vector<Point2D> points = Survey(corners, 0.0, plan);
    AlignmentFitting::Result fitted;
    EXPECT_FALSE(AlignmentFitting::Fit(std::span(points).first(14), corners, fitted));  // for 15 unknowns
    EXPECT_FALSE(AlignmentFitting::Fit(points, std::span(corners).first(1), fitted));
    corners[1].radius = 1e4;  // does not fit on its tangents
    EXPECT_FALSE(AlignmentFitting::Fit(points, corners, fitted));
    EXPECT_FALSE(AlignmentFitting::Propose(std::span(points).first(4), 0.0, Law::Clothoid, corners));
    points[7].SetX(NAN);
    EXPECT_FALSE(AlignmentFitting::Propose(points, 0.0, Law::Clothoid, corners));
    EXPECT_FALSE(AlignmentFitting::Fit(points, MakeCorners(Point2D(), Law::Clothoid), fitted));
    EXPECT_TRUE(fitted.places.empty() && corners[1].radius == 1e4);
}

}  // namespace
}  // namespace Kalvio::Math
