#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/Spiral2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/queries/Distance.h"
#include "kalvio/queries/IntersectionExt.h"
#include "kalvio/queries/Projection.h"

#include "fuzz/Bytes.h"

#include <cmath>
#include <memory>

using namespace Kalvio::Math;

namespace {

constexpr double tolerance = 1e-4;
const Tolerances tolerances(tolerance, 1e-10);

std::unique_ptr<IPolyline2DElement> TakeElement(Bytes& bytes) {
    const Point2D a = bytes.TakePoint();
    const Point2D b = bytes.TakePoint();
    const double first = bytes.TakeDouble();
    const double second = bytes.TakeDouble();
    switch (bytes.Take<std::uint8_t>() % 7) {
        case 0:
            return std::make_unique<Line2D>(a, b);
        case 1:
            return std::make_unique<Arc2D>(a, b, Angle(first));
        case 2:
            return std::make_unique<Arc2D>(a, first, b);
        case 3:
            return std::make_unique<Clothoid>(first, second, std::abs(b.GetX()), a, Vec2D(b.GetY(), 1.0, 1.0));
        case 4:
            return std::make_unique<Spiral2D>(Spiral2D::Spiral2DType::Bloss, first, second, std::abs(b.GetX()), a,
                                              Vec2D(b.GetY(), 1.0, 1.0));
        case 5: {
            const double slope = second - (a.GetX() + b.GetX()) * first / 64.0;
            const Parabola curve(first / 64.0, slope, a.GetY());
            const auto on = [&curve](double x) { return Point2D(x, curve.Evaluate(x)); };
            return std::make_unique<Parabola>(on(a.GetX()), on(b.GetX()), first / 64.0, slope, a.GetY());
        }
        default:
            return std::make_unique<LineString2D>(LineString2D{a, b, Point2D(first, second), bytes.TakePoint()});
    }
}

bool IsTame(const IPolyline2DElement& element) {
    const double length = element.GetLength();
    const Point2D& start = element.GetStart();
    const Point2D& end = element.GetEnd();
    return length < 1e5 && std::abs(start.GetX()) + std::abs(start.GetY()) + std::abs(end.GetX()) < 1e6;
}

// Common points lie on both operands, at the stations told; both orders find some or none.
void CheckCrossings(const IPolyline2DElement& a, const IPolyline2DElement& b, bool tame) {
    std::vector<IntersectionExt::IntersectionPoint<Point2D>> found;
    std::vector<IntersectionExt::IntersectionPoint<Point2D>> swapped;
    const IntersectionResult result = IntersectionExt::Intersect(a, b, found, tolerances);
    IntersectionExt::Intersect(b, a, swapped, tolerances);
    Require(found.empty() == (result != IntersectionResult::Intersecting && result != IntersectionResult::Coincident));
    double station = 0.0;
    for (const auto& place : found) {
        Require(place.firstStation >= station);
        station = place.firstStation;
    }
    std::vector<IntersectionExt::UndershootPoint<Point2D>> gaps;
    IntersectionExt::GetUndershoots(a, b, gaps, tolerances);
    for (const auto& gap : gaps) Require(gap.distance >= 0.0);
    if (!tame) return;
    Require(found.empty() == swapped.empty());
    constexpr double near = 4.0 * tolerance;
    for (const auto& place : found) {
        const auto isOn = [&](const IPolyline2DElement& element) {
            Polyline2D chain;
            chain.AppendElement(static_cast<IPolyline2DElement*>(element.Clone()));
            Polyline2D::PolylinePoint nearest;
            return Projection::NearestPointOnPolyline(place.point, chain, nearest, tolerance) &&
                   nearest.distance < near;
        };
        Require(isOn(a) && isOn(b));
        Require(place.firstStation <= a.GetLength() + near && place.secondStation <= b.GetLength() + near);
    }
}

// The nearest point is no farther than other points; a foot is no nearer, and perpendicular.
void CheckFeet(const Polyline2D& chain, const Point2D& p, bool tame) {
    Polyline2D::PolylinePoint nearest;
    Polyline2D::PolylinePoint foot;
    const bool found = Projection::NearestPointOnPolyline(p, chain, nearest, tolerance);
    const int status = Projection::NormalPointOnPolyline(p, chain, foot, tolerance);
    (void)Projection::NormalPointOnPolyline2(p, chain, foot, tolerance);
    Require(found || status == 0);
    if (!found || !tame) return;
    Require(Distance::PointToPolyline(p, chain) <= p.Distance(chain.GetStart()) + 1e-6);
    Polyline2D::PolylinePoint other;
    for (double share = 0.0; share <= 1.0; share += 0.125) {
        if (!chain.MakePointAndTangentAt(share * chain.GetLength(), other)) continue;
        Require(nearest.distance <= p.Distance(other.point) + 1e-6);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 400) return 0;
    Bytes bytes(data, size);
    const Point2D p = bytes.TakePoint();
    bool tame = bytes.Tame();
    std::unique_ptr<IPolyline2DElement> last;
    Polyline2D chain;
    Polyline2D other;
    while (!bytes.Empty() && other.GetSize() < 4) {
        std::unique_ptr<IPolyline2DElement> element = TakeElement(bytes);
        tame = tame && IsTame(*element);
        if (last) {
            CheckCrossings(*last, *element, tame);
            other.AppendElement(static_cast<IPolyline2DElement*>(element->Clone()));
        }
        chain.AppendElement(static_cast<IPolyline2DElement*>(element->Clone()));
        last = std::move(element);
    }
    CheckFeet(chain, p, tame);
    CheckCrossings(chain, other, false);
    return 0;
}
