#include "kalvio/areas/PolygonsBooleanOperation.h"

#include "kalvio/areas/detail/AreaOverlay.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Line2D.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <type_traits>
#include <utility>

namespace Kalvio::Math {

namespace {

using detail::AreaOverlay;
using detail::PlanePoint;
using Boolean = PolygonsBooleanOperation;

std::vector<Point2D> PointsOf(const AreaOverlay::Ring& ring) {
    std::vector<Point2D> points;
    points.reserve(ring.size());
    for (const AreaOverlay::Corner& corner : ring) points.emplace_back(corner.at.x, corner.at.y);
    return points;
}

// The arc about the centre nearest to that of the corner that is as far from both ends; where these lie too near each
// other to tell, about that centre itself.
Arc2D ArcBetween(const Point2D& start, const AreaOverlay::Corner& corner, const Point2D& end) {
    constexpr double pi = 3.14159265358979324;
    constexpr double shortest = 1e-6;  // chord over radius
    const Vec2D chord = end - start;
    Point2D center(corner.center.x, corner.center.y);
    const double length = chord.Length();
    if (length > shortest * center.Distance(start)) {
        const Vec2D along = chord / length;
        center = center - along * ((center - start).DotProduct(along) - 0.5 * length);
    }
    const Vec2D from = start - center;
    const Vec2D to = end - center;
    double sweep = std::atan2(from.PerpDotProduct(to), from.DotProduct(to));
    if (sweep * corner.sense <= 0.0) sweep += 2.0 * pi * corner.sense;
    return {start, center, Angle(sweep)};
}

RingCurve2D CurveOf(const AreaOverlay::Ring& ring) {
    RingCurve2D curve;
    const auto append = [&curve](std::unique_ptr<IGeometry> element) {
        if (curve.AppendElement(element.get())) (void)element.release();
    };
    // Arcs end where their angle leads them: what follows starts there.
    Point2D start(ring.front().at.x, ring.front().at.y);
    const auto arcTo = [&](const AreaOverlay::Corner& corner, const Point2D& end) {
        return ArcBetween(start, corner, end);
    };
    if (const AreaOverlay::Corner& last = ring.back(); last.sense != 0) {
        const Point2D first = start;
        start = Point2D(last.at.x, last.at.y);
        start = Point2D(arcTo(last, first).GetEnd());
    }
    const Point2D closing = start;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const bool isLast = i + 1 == ring.size();
        const Point2D end = isLast ? closing : Point2D(ring[i + 1].at.x, ring[i + 1].at.y);
        if (ring[i].sense == 0) {
            append(std::make_unique<Line2D>(start, end));
            start = end;
        } else {
            auto arc = std::make_unique<Arc2D>(arcTo(ring[i], end));
            start = Point2D(arc->GetEnd());
            append(std::move(arc));
        }
    }
    return curve;
}

void AppendTo(std::vector<Polygon2D>& polygons, const AreaOverlay::Area& area) {
    polygons.emplace_back(PointsOf(area.front()));
    for (std::size_t i = 1; i < area.size(); ++i) polygons.back().AppendHoleBoundary(LineString2D(PointsOf(area[i])));
}

double SignedArea(const RingCurve2D& ring) {
    std::vector<Point2D> corners;
    double besideChords = 0.0;
    for (unsigned int i = 0; i < ring.GetSize(); ++i) {
        const IPolyline2DElement& element = ring.GetElementAtIndex(i);
        corners.push_back(element.GetStart());
        if (element.GetType() != MathTypes::Arc2D) continue;
        const auto& arc = static_cast<const Arc2D&>(element);
        besideChords += std::copysign(arc.GetArea(), arc.GetAngle().GetRadians());
    }
    return Polygon2D(std::move(corners)).GetArea() + besideChords;
}

// Between arcs and what they nearly touch, chords see areas of a fraction of the tolerance in width that are none.
void AppendTo(std::vector<PolygonCurve2D>& polygons, const AreaOverlay::Area& area) {
    PolygonCurve2D polygon(CurveOf(area.front()));
    if (!(SignedArea(polygon.GetBoundary()) > 0.0)) return;
    for (std::size_t i = 1; i < area.size(); ++i) {
        auto inner = std::make_unique<RingCurve2D>(CurveOf(area[i]));
        if (SignedArea(*inner) < 0.0 && polygon.AppendInnerRing(inner.get())) (void)inner.release();
    }
    polygons.push_back(std::move(polygon));
}

template <class Polygon>
std::vector<Polygon> PolygonsOf(const std::vector<AreaOverlay::Area>& areas) {
    std::vector<Polygon> polygons;
    polygons.reserve(areas.size());
    for (const AreaOverlay::Area& area : areas) AppendTo(polygons, area);
    return polygons;
}

bool Add(AreaOverlay& overlay, const Boolean::Operand& operand, std::uint32_t layer) {
    const auto add = [&](const auto& area) { return overlay.Add(area, layer); };
    return std::all_of(operand.GetPolygons().begin(), operand.GetPolygons().end(), add) &&
           std::all_of(operand.GetCurves().begin(), operand.GetCurves().end(), add);
}

template <class Polygon>
bool Prepare(AreaOverlay& overlay, const Boolean::Operand& first, const Boolean::Operand& second) {
    if (!Add(overlay, first, 0) || !Add(overlay, second, 1)) return false;
    return !(std::is_same_v<Polygon, Polygon2D> && overlay.HasArcs()) && overlay.Run();
}

AreaOverlay OverlayFor(const Tolerances& tolerances, Boolean::FillRule rule) {
    return AreaOverlay(tolerances.UserTolerance(), rule == Boolean::FillRule::EvenOdd);
}

template <class Polygon>
bool Combine(const Boolean::Operand& first, const Boolean::Operand& second, std::vector<Polygon>& result,
             const Tolerances& tolerances, Boolean::FillRule rule, bool (*keep)(bool, bool)) {
    AreaOverlay overlay = OverlayFor(tolerances, rule);
    if (!Prepare<Polygon>(overlay, first, second)) return false;
    result = PolygonsOf<Polygon>(overlay.Extract(keep));
    return true;
}

template <class Polygon>
bool LayOver(const Boolean::Operand& first, const Boolean::Operand& second,
             std::vector<Boolean::Common<Polygon>>& result, const Tolerances& tolerances, Boolean::FillRule rule) {
    AreaOverlay overlay = OverlayFor(tolerances, rule);
    if (!Prepare<Polygon>(overlay, first, second)) return false;
    std::vector<Boolean::Common<Polygon>> found;
    for (const AreaOverlay::Common& common : overlay.ExtractCommon()) {
        std::vector<Polygon> areas = PolygonsOf<Polygon>(common.areas);
        if (!areas.empty()) found.push_back({common.first, common.second, std::move(areas)});
    }
    result = std::move(found);
    return true;
}

const Boolean::Operand nothing{std::span<const Polygon2D>()};

bool IsInAny(bool a, bool b) { return a || b; }
bool IsInBoth(bool a, bool b) { return a && b; }
bool IsInFirst(bool a, bool b) { return a && !b; }
bool IsInOne(bool a, bool b) { return a != b; }

}  // namespace

bool PolygonsBooleanOperation::Union(const Operand& members, std::vector<Polygon2D>& result,
                                     const Tolerances& tolerances, FillRule rule) {
    return Combine(members, nothing, result, tolerances, rule, IsInAny);
}

bool PolygonsBooleanOperation::Union(const Operand& first, const Operand& second, std::vector<Polygon2D>& result,
                                     const Tolerances& tolerances, FillRule rule) {
    return Combine(first, second, result, tolerances, rule, IsInAny);
}

bool PolygonsBooleanOperation::Intersection(const Operand& first, const Operand& second, std::vector<Polygon2D>& result,
                                            const Tolerances& tolerances, FillRule rule) {
    return Combine(first, second, result, tolerances, rule, IsInBoth);
}

bool PolygonsBooleanOperation::Difference(const Operand& first, const Operand& second, std::vector<Polygon2D>& result,
                                          const Tolerances& tolerances, FillRule rule) {
    return Combine(first, second, result, tolerances, rule, IsInFirst);
}

bool PolygonsBooleanOperation::SymmetricDifference(const Operand& first, const Operand& second,
                                                   std::vector<Polygon2D>& result, const Tolerances& tolerances,
                                                   FillRule rule) {
    return Combine(first, second, result, tolerances, rule, IsInOne);
}

bool PolygonsBooleanOperation::Overlay(const Operand& first, const Operand& second, std::vector<CommonArea>& result,
                                       const Tolerances& tolerances, FillRule rule) {
    return LayOver(first, second, result, tolerances, rule);
}

bool PolygonsBooleanOperation::Union(const Operand& members, std::vector<PolygonCurve2D>& result,
                                     const Tolerances& tolerances, FillRule rule) {
    return Combine(members, nothing, result, tolerances, rule, IsInAny);
}

bool PolygonsBooleanOperation::Union(const Operand& first, const Operand& second, std::vector<PolygonCurve2D>& result,
                                     const Tolerances& tolerances, FillRule rule) {
    return Combine(first, second, result, tolerances, rule, IsInAny);
}

bool PolygonsBooleanOperation::Intersection(const Operand& first, const Operand& second,
                                            std::vector<PolygonCurve2D>& result, const Tolerances& tolerances,
                                            FillRule rule) {
    return Combine(first, second, result, tolerances, rule, IsInBoth);
}

bool PolygonsBooleanOperation::Difference(const Operand& first, const Operand& second,
                                          std::vector<PolygonCurve2D>& result, const Tolerances& tolerances,
                                          FillRule rule) {
    return Combine(first, second, result, tolerances, rule, IsInFirst);
}

bool PolygonsBooleanOperation::SymmetricDifference(const Operand& first, const Operand& second,
                                                   std::vector<PolygonCurve2D>& result, const Tolerances& tolerances,
                                                   FillRule rule) {
    return Combine(first, second, result, tolerances, rule, IsInOne);
}

bool PolygonsBooleanOperation::Overlay(const Operand& first, const Operand& second,
                                       std::vector<CommonCurveArea>& result, const Tolerances& tolerances,
                                       FillRule rule) {
    return LayOver(first, second, result, tolerances, rule);
}

}  // namespace Kalvio::Math
