#include "support/ElementChecks.h"
#include "support/RandomCurves.h"

namespace Kalvio::Math {
namespace {

TEST(ElementLawsTest, CurvesOfEveryKindKeepThem) {
    RandomNumbers random(20240611);
    for (int i = 0; i < 60 * kKinds && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        const bool isFar = i % 2 != 0 && i % kKinds != 4;  // coefficients of parabolas hold no survey coordinates
        const auto check = [&](const auto& curve) {
            if (!IsMade(curve) || curve.GetStart().Distance(curve.GetEnd()) < 1.0) return;
            const double length = curve.GetLength(), rounding = isFar ? 4e-9 : 1e-9;
            const double station = i % kKinds < 2 ? 2e-8 : 1e-6;  // lines and arcs: in closed form
            for (const double share : {0.0, 0.013, 0.5, 0.77, 1.0}) CheckStation(curve, share * length, station, 1e-8);
            CheckMotion(curve, rounding);
            CheckBox(curve);
            bool growsBack = false;
            if constexpr (requires { curve.GetCurvature(0.0); }) {  // a clothoid or a spiral
                const double most = std::max(std::abs(curve.GetCurvature(0.0)), std::abs(curve.GetCurvature(length)));
                growsBack = most * length < 2.0;  // those that coil have other feet
                for (const double height : {0.001, 0.3}) CheckChords(curve, height);
            }
            CheckPieces(curve, growsBack, 1e-8, 1e-8);
            if (i < 2 * kKinds) CheckConcurrently(curve, length);
            std::vector<std::unique_ptr<IGeometry>> pieces;
            const auto middle = At(curve, 0.5 * length);
            const Point2D off = middle.point + Sideways(middle.tangent);
            ASSERT_TRUE(curve.BreakAt({off, middle.point}, pieces, kTolerances));
            ASSERT_EQ(pieces.size(), 2U) << "where it does not pass it is not broken";
            for (const auto& piece : pieces) EXPECT_NEAR(piece->GetLength(), 0.5 * length, 1e-6);
        };
        std::visit(check, RandomCurve(random, i % kKinds, surveyOrigins[isFar ? 1 : 0]));
    }
}

}  // namespace
}  // namespace Kalvio::Math
