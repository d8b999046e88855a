#include "kalvio/alignments/detail/AlignmentCurves.h"

#include "kalvio/core/IComplexGeometry.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/queries/detail/ElementCrossings.h"

#include <optional>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

constexpr double boxPad = 1e-6;    // a length: more than boxes and feet are rounded at survey coordinates
constexpr double joinPart = 1e-3;  // a length: ends this near are one joint; files round to less

Extent ExtentOf(const IPolyline2DElement& element) {
    const BoundingBox2D box = element.GetBoundingBox2D();
    Extent extent;
    extent.Add(box.GetMinPoint());
    extent.Add(box.GetMaxPoint());
    return extent.Widened(boxPad);
}

}  // namespace

AlignmentCurves::AlignmentCurves(const Polyline2D& plan) {
    std::vector<Extent> extents;
    Append(plan, extents);
    if (isFaulty) curves.clear();
    if (isFaulty) starts.assign(1, 0.0);
    if (!isFaulty) boxes = ExtentBoxes(std::move(extents));
}

void AlignmentCurves::Append(const IPolyline2DElement& element, std::vector<Extent>& extents) {
    if (const IComplexGeometry* const chain = AsComplexGeometry(element)) {
        for (unsigned int i = 0; i < chain->GetNrOfElements(); ++i) Append(chain->GetElementAtIndex(i), extents);
        return;
    }
    const double length = element.GetLength();
    if (length == 0.0) return;
    std::optional<PlanCurve> curve;
    if (std::isfinite(length) && element.GetType() != MathTypes::Parabola) {
        curve = PlanCurve::Make(CrossingOperand(element), element.GetStart());
    }
    if (!curve) {
        isFaulty = true;
        return;
    }
    const PlanState first = curve->At(0.0);
    const PlanState last = curve->At(length);
    const bool followsOn =
        !curves.empty() && (curves.back().origin + curves.back().end).Distance(element.GetStart()) <= joinPart;
    curves.push_back({*curve, element.GetStart(), length, last.position, first.velocity, last.velocity, followsOn});
    starts.push_back(starts.back() + length);
    extents.push_back(ExtentOf(element));
}

bool AlignmentCurves::Clip(double& station) const {
    if (IsEmpty() || !(station >= -numericalZero && station <= GetLength() + numericalZero)) return false;
    station = std::clamp(station, 0.0, GetLength());
    return true;
}

double AlignmentCurves::GetMostCurvature(std::size_t i, double from, double to) const {
    const PlanCurve& curve = curves[i].curve;
    return std::max(std::abs(curve.GetCurvature(from - starts[i])), std::abs(curve.GetCurvature(to - starts[i])));
}

}  // namespace Kalvio::Math::detail
