#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/curves/Polyline2D.h"

#include "fuzz/Elements.h"

using namespace Kalvio::Math;

namespace {

constexpr double rounding = 1e-6;  // tame coordinates stay below 2048, arcs and clothoids through them below 1e7

void CheckEdits(const IPolyline2DElement& element, const Point2D& p, bool tame) {
    CheckElement(element, p, element.GetBoundingBox2D(), rounding, tame);
    Vec2D tangent;
    for (const Point2D& q : {p, element.GetMiddlePoint()}) {
        (void)element.ComputeTangent(q, tangent, tolerances);
        (void)element.IsPointOnGeometry(q, tolerances);
    }
    std::vector<IGeometry*> pieces;
    const bool broken = element.BreakAt({p, element.GetEnd(), element.GetMiddlePoint()}, pieces, tolerances);
    double sum = 0.0;
    for (IGeometry* const piece : pieces) {
        sum += piece->GetLength();
        delete piece;
    }
    Require(broken || pieces.empty());
    if (tame && broken) Require(std::abs(sum - element.GetLength()) <= 0.01 + rounding * element.GetLength());
    const std::unique_ptr<IGeometry> reversed(element.CloneAsReverse());
    (void)reversed->ExtendEnd(p, tolerances);
    (void)reversed->ExtendStart(p, tolerances);
    const std::unique_ptr<IGeometry> joined(element.Append(reversed.get()));
    if (joined) (void)joined->GetLength();
}

}  // namespace

void Kalvio::Math::Fuzz(Bytes& bytes) {
    const Point2D p = bytes.TakePoint();
    bool tame = bytes.Tame();
    Polyline2D chain;
    while (!bytes.Empty()) {
        std::unique_ptr<IPolyline2DElement> element = TakeElement(bytes);
        tame = tame && HasLaws(*element);
        CheckEdits(*element, p, tame);
        if (chain.AppendElement(element.get())) (void)element.release();
    }
    CheckEdits(chain, p, tame);
    std::vector<Polyline2D::PolylinePoint> samples;
    const double length = chain.GetLength();
    (void)chain.MakePointsAndTangents(0.0, length, samples, length / 16.0, tolerance);
    (void)chain.MakePointsAndTangents(p.GetX(), p.GetY(), samples, std::max(p.GetY() / 16.0, length / 64.0), tolerance);
}
