#include "fuzz/Elements.h"

using namespace Kalvio::Math;

namespace {

// Common points lie on both operands, at the stations told; both orders find some or none.
void CheckCrossings(const IPolyline2DElement& a, const IPolyline2DElement& b, bool tame) {
    std::vector<IntersectionExt::IntersectionPoint<Point2D>> found, swapped;
    const IntersectionResult result = IntersectionExt::Intersect(a, b, found, tolerances);
    IntersectionExt::Intersect(b, a, swapped, tolerances);
    Require(found.empty() == (result != IntersectionResult::Intersecting && result != IntersectionResult::Coincident));
    const auto isBefore = [](const auto& p, const auto& q) { return p.firstStation < q.firstStation; };
    Require(!tame || std::is_sorted(found.begin(), found.end(), isBefore));
    for (const auto& place : found) {
        See({place.point.GetX(), place.point.GetY(), place.firstStation, place.secondStation});
        Require(std::isfinite(place.point.GetX()) && std::isfinite(place.point.GetY()));
    }
    std::vector<IntersectionExt::UndershootPoint<Point2D>> gaps;
    IntersectionExt::GetUndershoots(a, b, gaps, tolerances);
    for (const auto& gap : gaps) Require(gap.distance >= 0.0);
    if (!tame) return;
    Require(found.empty() == swapped.empty());
    constexpr double near = 4.0 * tolerance;
    for (const auto& place : found) {
        for (const IPolyline2DElement* element : {&a, &b}) {
            Require(place.point.Distance(element->GetNearestPoint(place.point, tolerances)) < near);
        }
        Require(place.firstStation <= a.GetLength() + near && place.secondStation <= b.GetLength() + near);
    }
}

// The nearest point is no farther than other points; a foot is no nearer, and perpendicular.
void CheckFeet(const Polyline2D& chain, const Point2D& p, bool tame) {
    Polyline2D::PolylinePoint nearest, foot, other;
    const bool found = Projection::NearestPointOnPolyline(p, chain, nearest, tolerance);
    const int status = Projection::NormalPointOnPolyline(p, chain, foot, tolerance);
    (void)Projection::NormalPointOnPolyline2(p, chain, foot, tolerance);
    See(std::vector{nearest.point, foot.point});
    Require(found || status == 0 || !std::isfinite(chain.GetLength()));  // whose stations end nowhere
    if (!found || !tame) return;
    Require(Distance::PointToPolyline(p, chain) <= p.Distance(chain.GetStart()) + 1e-6);
    for (double share = 0.0; share <= 1.0; share += 0.125) {
        if (!chain.MakePointAndTangentAt(share * chain.GetLength(), other)) continue;
        Require(nearest.distance <= p.Distance(other.point) + 1e-6);
    }
}

// The circle through three points holds them, unless it is huge; circles meet on both.
void CheckCircles(const Point2D& a, const Point2D& b, const Point2D& c, bool tame) {
    Circle2D first;
    Arc2D arc;
    const bool found = GeometryCreator::CircleFrom3Points(a, b, c, first, tolerance);
    Require(found == GeometryCreator::ArcFrom3Points(a, b, c, arc, tolerance));
    const Circle2D second(c, a.Distance(b));
    std::vector<Point2D> common;
    (void)Intersection::LineCircle(Line2D(a, b), second, common, tolerances);
    for (const Point2D& p : common) Require(std::isfinite(p.GetX()) && std::isfinite(p.GetY()));
    common.clear();
    (void)Intersection::CircleCircle(first, second, common, tolerances);
    See(Distance::CircleToCircle(first, second));
    See(common);
    if (!tame || !found || first.GetRadius() > 1e5) return;
    for (const Point2D& p : {a, b, c}) Require(Distance::PointToCircle(p, first) <= 1e-3);
    for (const Point2D& p : common) {
        Require(Distance::PointToCircle(p, first) <= 1e-3 && Distance::PointToCircle(p, second) <= 1e-3);
    }
}

}  // namespace

void Kalvio::Math::FuzzQuery(Bytes& bytes) {
    const Point2D p = bytes.TakePoint();
    const IPolyline2DElement* last = nullptr;  // which the chain keeps
    Polyline2D other;
    const auto [chain, tame] = TakeChain(bytes, 5, [&](const IPolyline2DElement& element, bool areTame) {
        if (last != nullptr) CheckCrossings(*last, element, areTame);
        if (last != nullptr) other.AppendElement(element);
        last = &element;
    });
    CheckFeet(chain, p, tame);
    if (last) CheckCircles(p, last->GetStart(), last->GetEnd(), tame);
    CheckCrossings(chain, other, false);
}
