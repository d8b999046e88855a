#include "support/ElementChecks.h"

#include <cstring>

namespace Kalvio::Math {
namespace {

constexpr double kBad[] = {kNan, kInfinity, -kInfinity, 1e308, -1e308, 5e-324, 0.0, -1.0, 7.0};

template <class Out>
bool IsFinite(const Out& out) {
    if constexpr (std::is_same_v<Out, double>)
        return std::isfinite(out);
    else if constexpr (requires { out.station; })
        return IsFinite(out.point) && IsFinite(out.tangent) && IsFinite(out.station);
    else
        return std::isfinite(out.GetX()) && std::isfinite(out.GetY());
}

// A call that fails leaves the output as it was, to the bit; one that succeeds gives numbers.
template <class Out, class Call>
void ExpectTold(const char* name, Call&& call) {
    Out out{};
    const std::unique_ptr<unsigned char[]> before(new unsigned char[sizeof(Out)]);
    std::memcpy(before.get(), static_cast<const void*>(&out), sizeof(Out));
    const bool isTold =
        call(out) ? IsFinite(out) : std::memcmp(before.get(), static_cast<const void*>(&out), sizeof(Out)) == 0;
    EXPECT_TRUE(isTold) << name;
}

// Every question to an element, by a point, a station and a tolerance of such numbers.
template <class Element>
void CheckElement(const Element& element, double u, double v) {
    SCOPED_TRACE(testing::Message() << GetName(element.GetType()) << " asked with " << u << " and " << v);
    const Point2D p(u, v);
    const Tolerances t(v);
    ExpectTold<double>("from the start", [&](double& l) { return element.GetLengthFromStartPoint(p, l, v); });
    ExpectTold<double>("from the end", [&](double& l) { return element.GetLengthFromEndPoint(p, l, v); });
    if constexpr (requires(Polyline2D::PolylinePoint s) { element.GetNormalPoint(p, v, s); }) {
        using Place = Polyline2D::PolylinePoint;
        ExpectTold<Place>("MakePointAndTangentAt", [&](Place& s) { return element.MakePointAndTangentAt(u, s); });
        ExpectTold<Place>("GetNormalPoint", [&](Place& s) { return element.GetNormalPoint(p, v, s); });
        ExpectTold<Place>("GetNearestPoint", [&](Place& s) { return element.GetNearestPoint(p, s, t); });
        ExpectTold<Point2D>("GetPoint", [&](Point2D& q) { return element.GetPoint(u, v, q); });
        ExpectTold<double>("GetCurvature", [&](double& k) { return element.GetCurvature(u, k); });
        double station = 0.0;
        ExpectTold<double>("offset", [&](double& d) { return element.GetStationAndOffset(p, station, d, v); });
    } else if constexpr (requires { element.GetPoints(); }) {
        ExpectTold<Vec2D>("tangent", [&](Vec2D& d) { return element.GetTangentAtLength(u, d, v); });
        ExpectTold<Point2D>("offset", [&](Point2D& q) { return element.GetPointOffsetFromStart(u, q); });
    } else {
        ExpectTold<Sample>("MakePointAndTangentAt", [&](Sample& s) { return element.MakePointAndTangentAt(u, s); });
        if constexpr (requires(Sample s) { element.GetNormalPoint(p, v, s); })
            ExpectTold<Sample>("GetNormalPoint", [&](Sample& s) { return element.GetNormalPoint(p, v, s); });
        if constexpr (requires(Sample s) { element.GetNearestPoint(p, v, u, s); })
            ExpectTold<Sample>("GetNearestPoint", [&](Sample& s) { return element.GetNearestPoint(p, 0.0, u, s); });
        if constexpr (requires(Vec2D d) { element.MakeOffsetAndTangentAt(u, d, d); })
            ExpectTold<Vec2D>("offset",
                              [&, t = Vec2D()](Vec2D& d) mutable { return element.MakeOffsetAndTangentAt(u, d, t); });
        if constexpr (requires(Sample s) { element.MakePointAndTangentAtAbscissa(u, s); })
            ExpectTold<Sample>("abscissa", [&](Sample& s) { return element.MakePointAndTangentAtAbscissa(u, s); });
        if constexpr (!std::is_same_v<Element, Line2D>)  // which has its direction wherever the point lies
            ExpectTold<Vec2D>("ComputeTangent", [&](Vec2D& d) { return element.ComputeTangent(p, d, t); });
    }
}

TEST(BadInputTest, PlanElementsTellWhatTheyCannotAnswer) {
    for (int i = 0; i < 9 * 9 * 9 * 9; ++i) {
        const double a = kBad[i % 9], b = kBad[i / 9 % 9], u = kBad[i / 81 % 9], v = kBad[i / 729];
        SCOPED_TRACE(testing::Message() << "made of " << a << " and " << b);
        const Point2D from(0, 0), p(a, b);
        const auto check = [&](const auto&... made) {
            Polyline2D chain;
            EXPECT_TRUE((chain.AppendElement(made) && ...));
            (CheckElement(made, u, v), ...);
            CheckElement(chain, u, v);
        };
        check(Line2D(from, p), Arc2D(Point2D(1, 0), p, Angle(a)), Clothoid(0.0, a, b, from, Vec2D(1, 0)),
              Spiral2D(Spiral2D::Spiral2DType::Bloss, a, 0.0, b, from, Vec2D(1, 0)), Parabola(from, p, a, b, 0.0),
              LineString2D{from, Point2D(3, 0), p}, LineString2D{p, p}, LineString2D());
    }
}

}  // namespace
}  // namespace Kalvio::Math
