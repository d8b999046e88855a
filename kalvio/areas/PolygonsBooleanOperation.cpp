#include "kalvio/areas/PolygonsBooleanOperation.h"

#include "kalvio/areas/detail/AreaOverlay.h"
#include "kalvio/areas/detail/AreaPolygons.h"

#include <algorithm>
#include <type_traits>
#include <utility>

namespace Kalvio::Math {

namespace {

using detail::AreaOverlay;
using detail::PolygonsOf;
using Boolean = PolygonsBooleanOperation;

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
    const bool isEvenOdd = rule == Boolean::FillRule::EvenOdd;
    return AreaOverlay(tolerances.UserTolerance(), isEvenOdd ? AreaOverlay::Fill::EvenOdd : AreaOverlay::Fill::NonZero);
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
