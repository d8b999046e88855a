#include "kalvio/areas/PolygonsBooleanOperation.h"

#include "kalvio/areas/detail/AreaOverlay.h"

#include <algorithm>
#include <utility>

namespace Kalvio::Math {

namespace {

using detail::AreaOverlay;
using Operand = PolygonsBooleanOperation::Operand;

std::vector<Point2D> PointsOf(const AreaOverlay::Ring& ring) {
    std::vector<Point2D> points;
    points.reserve(ring.size());
    for (const AreaOverlay::Corner& corner : ring) points.emplace_back(corner.at.x, corner.at.y);
    return points;
}

std::vector<Polygon2D> PolygonsOf(const std::vector<AreaOverlay::Area>& areas) {
    std::vector<Polygon2D> polygons;
    polygons.reserve(areas.size());
    for (const AreaOverlay::Area& area : areas) {
        polygons.emplace_back(PointsOf(area.front()));
        for (std::size_t i = 1; i < area.size(); ++i) {
            polygons.back().AppendHoleBoundary(LineString2D(PointsOf(area[i])));
        }
    }
    return polygons;
}

bool Prepare(AreaOverlay& overlay, const Operand& first, const Operand& second) {
    const auto addAll = [&overlay](const Operand& operand, std::uint32_t layer) {
        return std::all_of(operand.GetAreas().begin(), operand.GetAreas().end(),
                           [&](const Polygon2D& area) { return overlay.Add(area, layer); });
    };
    return addAll(first, 0) && addAll(second, 1) && overlay.Run();
}

AreaOverlay OverlayFor(const Tolerances& tolerances, PolygonsBooleanOperation::FillRule rule) {
    return AreaOverlay(tolerances.UserTolerance(), rule == PolygonsBooleanOperation::FillRule::EvenOdd);
}

bool Combine(const Operand& first, const Operand& second, std::vector<Polygon2D>& result, const Tolerances& tolerances,
             PolygonsBooleanOperation::FillRule rule, bool (*keep)(bool, bool)) {
    AreaOverlay overlay = OverlayFor(tolerances, rule);
    if (!Prepare(overlay, first, second)) return false;
    result = PolygonsOf(overlay.Extract(keep));
    return true;
}

}  // namespace

bool PolygonsBooleanOperation::Union(const Operand& members, std::vector<Polygon2D>& result,
                                     const Tolerances& tolerances, FillRule rule) {
    return Union(members, Operand(std::span<const Polygon2D>()), result, tolerances, rule);
}

bool PolygonsBooleanOperation::Union(const Operand& first, const Operand& second, std::vector<Polygon2D>& result,
                                     const Tolerances& tolerances, FillRule rule) {
    return Combine(first, second, result, tolerances, rule, [](bool a, bool b) { return a || b; });
}

bool PolygonsBooleanOperation::Intersection(const Operand& first, const Operand& second, std::vector<Polygon2D>& result,
                                            const Tolerances& tolerances, FillRule rule) {
    return Combine(first, second, result, tolerances, rule, [](bool a, bool b) { return a && b; });
}

bool PolygonsBooleanOperation::Difference(const Operand& first, const Operand& second, std::vector<Polygon2D>& result,
                                          const Tolerances& tolerances, FillRule rule) {
    return Combine(first, second, result, tolerances, rule, [](bool a, bool b) { return a && !b; });
}

bool PolygonsBooleanOperation::SymmetricDifference(const Operand& first, const Operand& second,
                                                   std::vector<Polygon2D>& result, const Tolerances& tolerances,
                                                   FillRule rule) {
    return Combine(first, second, result, tolerances, rule, [](bool a, bool b) { return a != b; });
}

bool PolygonsBooleanOperation::Overlay(const Operand& first, const Operand& second, std::vector<CommonArea>& result,
                                       const Tolerances& tolerances, FillRule rule) {
    AreaOverlay overlay = OverlayFor(tolerances, rule);
    if (!Prepare(overlay, first, second)) return false;
    std::vector<CommonArea> found;
    for (const AreaOverlay::Common& common : overlay.ExtractCommon()) {
        found.push_back({common.first, common.second, PolygonsOf(common.areas)});
    }
    result = std::move(found);
    return true;
}

}  // namespace Kalvio::Math
