#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/curves/Polyline2D.h"

#include "fuzz/Elements.h"

using namespace Kalvio::Math;

namespace {

constexpr double tolerance = 1e-4;
constexpr double rounding = 1e-6;  // tame coordinates stay below 2048, arcs and clothoids through them below 1e7

void CheckBreaks(const IPolyline2DElement& element, const Point2D& cut, const Tolerances& tolerances, bool tame) {
    std::vector<IGeometry*> pieces;
    const bool broken = element.BreakAt({cut, element.GetEnd(), element.GetMiddlePoint()}, pieces, tolerances);
    double sum = 0.0;
    for (IGeometry* const piece : pieces) {
        sum += piece->GetLength();
        delete piece;
    }
    Require(broken || pieces.empty());
    if (tame && broken) Require(std::abs(sum - element.GetLength()) <= 0.01 + rounding * element.GetLength());
}

void CheckElement(const IPolyline2DElement& element, const Point2D& p, bool tame) {
    const Tolerances tolerances(tolerance, 1e-10);
    const double length = element.GetLength();
    const BoundingBox2D box = element.GetBoundingBox2D();
    const Point2D nearest = element.GetNearestPoint(p, tolerances);
    double station = -1.0;
    Vec2D tangent;
    for (const Point2D& q : {p, nearest, element.GetStart(), element.GetMiddlePoint()}) {
        const bool found = element.GetLengthFromStartPoint(q, station, tolerance);
        if (tame && found) Require(station >= -tolerance && station <= length + tolerance);
        (void)element.ComputeTangent(q, tangent, tolerances);
        (void)element.IsPointOnGeometry(q, tolerances);
    }
    if (tame) {
        Require(std::isfinite(length) && length >= 0.0);
        Require(p.Distance(nearest) <= p.Distance(element.GetStart()) + rounding);
        Require(p.Distance(nearest) <= p.Distance(element.GetEnd()) + rounding);
        Require(box.IsPointInside(element.GetStart(), 0.005 + rounding));
        Require(box.IsPointInside(element.GetEnd(), 0.005 + rounding));
    }
    CheckBreaks(element, p, tolerances, tame);

    const std::unique_ptr<IGeometry> reversed(element.CloneAsReverse());
    if (tame) Require(std::abs(reversed->GetLength() - length) <= rounding * (1.0 + length));
    (void)reversed->ExtendEnd(p, tolerances);
    (void)reversed->ExtendStart(p, tolerances);
    const std::unique_ptr<IGeometry> joined(element.Append(reversed.get()));
    if (joined) (void)joined->GetLength();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 600) return 0;
    Bytes bytes(data, size);
    const Point2D p = bytes.TakePoint();
    bool tame = bytes.Tame();
    Polyline2D chain;
    while (!bytes.Empty()) {
        std::unique_ptr<IPolyline2DElement> element = TakeElement(bytes);
        tame = tame && HasLaws(*element);
        CheckElement(*element, p, tame);
        if (chain.AppendElement(element.get())) (void)element.release();
    }
    CheckElement(chain, p, tame);
    std::vector<Polyline2D::PolylinePoint> samples;
    const double length = chain.GetLength();
    (void)chain.MakePointsAndTangents(0.0, length, samples, length / 16.0, tolerance);
    (void)chain.MakePointsAndTangents(p.GetX(), p.GetY(), samples, std::max(p.GetY() / 16.0, length / 64.0), tolerance);
    return 0;
}
