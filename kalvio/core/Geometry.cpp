#include "kalvio/core/Geometry.h"

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point2DM.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/detail/PointOnLine.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <memory>

namespace Kalvio::Math {

namespace {

// The portable generator of the C standard (ISO/IEC 9899, 7.22.2), draws 0 ... 32767, with a state of its own:
// concurrent calls do not disturb each other or the host's generator.
class Draws {
public:
    explicit Draws(std::uint32_t seed) : state(seed) {}
    int Next() {
        state = state * 1103515245U + 12345U;
        return static_cast<int>((state / 65536U) % 32768U);
    }

private:
    std::uint32_t state;
};

}  // namespace

template <>
bool Geometry::AreEqual(const double& a, const double& b, double tolerance) {
    return std::abs(a - b) < tolerance;
}

template <>
bool Geometry::AreEqual(const double& a, const int& b, double tolerance) {
    return AreEqual(a, static_cast<double>(b), tolerance);
}

bool Geometry::AreEqual2D(const Point3D& a, const Point3D& b, double tolerance) { return a.IsEqualTo2d(b, tolerance); }

bool Geometry::AreEqualEitherWay(const IGeometry& a, const IGeometry& b, double tolerance) {
    if (AreEqual(a, b, tolerance)) return true;
    const std::unique_ptr<IGeometry> reversed(b.CloneAsReverse());
    return AreEqual(a, *reversed, tolerance);
}

bool Geometry::ArePointsCCW(const Point2D& a, const Point2D& b, const Point2D& c) {
    return detail::ArePointsCCW(a, b, c);
}

bool Geometry::ArePointsCCW(const Point2DM& a, const Point2DM& b, const Point2DM& c) {
    return detail::ArePointsCCW(a, b, c);
}

void Geometry::RandomPoints(const Point2D& min, const Point2D& max, unsigned int count, std::list<Point2D>& out) {
    constexpr double most = 32767.0;
    const double spanX = std::abs(max.GetX() - min.GetX()) - 1.0;
    const double spanY = std::abs(max.GetY() - min.GetY()) - 1.0;
    Draws draws(static_cast<std::uint32_t>(std::time(nullptr)));
    for (unsigned int i = 0; i < count; ++i) {
        const int r1 = draws.Next();
        const int r2 = draws.Next();
        const int r3 = draws.Next();
        const int r4 = draws.Next();
        const int wholeX = r2 / 32767;  // 1 only for the largest draw
        const int wholeY = r4 / 32767;
        out.emplace_back(min.GetX() + r1 * spanX / most + wholeX, min.GetY() + r3 * spanY / most + wholeY);
    }
}

bool Geometry::ComputeStartEndLengthOnElement(double elementStart, double elementEnd, double from, double to,
                                              double& start, double& end, double tolerance) {
    const double clippedStart = std::max(elementStart, from);
    const double clippedEnd = std::min(elementEnd, to);
    const double overlap = clippedEnd - clippedStart;
    if (!(from <= to) || !(overlap > tolerance) || !std::isfinite(overlap)) return false;
    start = clippedStart;
    end = clippedEnd;
    return true;
}

}  // namespace Kalvio::Math
