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
    std::vector<std::unique_ptr<IGeometry>> pieces;
    const bool broken = element.BreakAt({p, element.GetEnd(), element.GetMiddlePoint()}, pieces, tolerances);
    double sum = 0.0;
    for (const std::unique_ptr<IGeometry>& piece : pieces) sum += piece->GetLength();
    Require(broken || pieces.empty());
    if (tame && broken) RequireNear(sum, element.GetLength(), 0.01 + rounding * element.GetLength());
    const std::unique_ptr<IGeometry> reversed(element.CloneAsReverse());
    (void)reversed->ExtendEnd(p, tolerances);
    (void)reversed->ExtendStart(p, tolerances);
    const std::unique_ptr<IGeometry> joined(element.Append(reversed.get()));
    if (joined) (void)joined->GetLength();
}

}  // namespace

void Kalvio::Math::FuzzElement(Bytes& bytes) {
    const Point2D p = bytes.TakePoint();
    const auto check = [&p](const IPolyline2DElement& element, bool tame) { CheckEdits(element, p, tame); };
    const auto [chain, tame] = TakeChain(bytes, 50, check);
    CheckEdits(chain, p, tame);
    std::vector<Polyline2D::PolylinePoint> samples;
    const double length = chain.GetLength();
    (void)chain.MakePointsAndTangents(0.0, length, samples, length / 16.0, tolerance);
    for (const auto& sample : samples) See({sample.point.GetX(), sample.point.GetY(), sample.tangent.GetX()});
    (void)chain.MakePointsAndTangents(p.GetX(), p.GetY(), samples, std::max(p.GetY() / 16.0, length / 64.0), tolerance);
}
