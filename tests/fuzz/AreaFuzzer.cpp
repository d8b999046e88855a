#include "fuzz/Bytes.h"

#include <numeric>

using namespace Kalvio::Math;

namespace {

using Boolean = PolygonsBooleanOperation;

constexpr double tolerance = 1e-3;
const Tolerances tolerances(tolerance, 1e-10);

std::vector<Polygon2D> TakeAreas(Bytes& bytes) {
    return bytes.TakeSome(4, [&bytes] { return bytes.TakePolygon(0, 12); });
}

double AreaOf(const std::vector<Polygon2D>& areas) {
    return std::accumulate(areas.begin(), areas.end(), 0.0,
                           [](double sum, const Polygon2D& area) { return sum + area.GetArea(); });
}

bool AreSame(const std::vector<Polygon2D>& a, const std::vector<Polygon2D>& b) {
    return std::ranges::equal(a, b, [](const Polygon2D& p, const Polygon2D& q) {
        return p.GetPoints() == q.GetPoints() && p.GetNumHoleBoundaries() == q.GetNumHoleBoundaries();
    });
}

// Outward holds the areas, inward lies in them, and so do chains' buffers hold the chains.
void CheckBuffers(const std::vector<Polygon2D>& areas, const std::vector<Polygon2D>& united, double distance, bool tame,
                  const BufferCreator::Shape& shape) {
    std::vector<Polygon2D> buffer, beyond;
    std::vector<PolygonCurve2D> curves;
    const double height = std::max(0.01 * std::abs(distance), 1e-3);
    if (!BufferCreator::Create(areas, distance, height, buffer, tolerances, shape)) return Require(!tame);
    Require(BufferCreator::Create(areas, distance, curves, tolerances, shape));
    if (areas.empty()) return;
    const LineString2D chain(areas.front().GetPoints());
    Require(BufferCreator::Create(chain, distance, height, beyond, tolerances, shape));
    if (!tame) return;
    for (const auto* made : {&buffer, &beyond}) {
        Point2D where;
        for (const Polygon2D& area : *made) {
            See(area.GetPoints());
            Require(area.Validate(where, true, tolerance));
        }
    }
    std::vector<Polyline2D> parallels;
    const bool isParallel = Offset::TrimmedParallel(chain, distance, parallels, tolerances);
    for (const Polyline2D& parallel : parallels) {
        Polyline2D::PolylinePoint middle;
        Require(isParallel && parallel.MakePointAndTangentAt(0.5 * parallel.GetLength(), middle));
        const double away = Distance::PointToLineString(chain, middle.point, tolerance);
        RequireNear(away, std::abs(distance), 3.0 * tolerance);
    }
    const bool isOut = distance >= 0.0;
    Require(isOut ? Boolean::Difference(united, buffer, beyond, tolerances)
                  : Boolean::Difference(buffer, united, beyond, tolerances));
    Require(AreaOf(beyond) <= 4.0 * tolerance * 100 * 6000);
}

}  // namespace

void Kalvio::Math::FuzzArea(Bytes& bytes) {
    const bool tame = bytes.Tame();
    const auto rule = bytes.TakeOne<Boolean::FillRule>(2);
    const std::vector<Polygon2D> a = TakeAreas(bytes), b = TakeAreas(bytes);
    std::vector<Polygon2D> united, common, less, other, either, first;
    if (!Boolean::Union(a, b, united, tolerances, rule)) return Require(!tame && united.empty());
    Require(Boolean::Intersection(a, b, common, tolerances, rule));
    Require(Boolean::Difference(a, b, less, tolerances, rule) && Boolean::Difference(b, a, other, tolerances, rule));
    Require(Boolean::SymmetricDifference(a, b, either, tolerances, rule));
    Require(Boolean::Union(b, a, other, tolerances, rule) && AreSame(united, other));
    std::vector<Boolean::CommonArea> pieces;
    Require(Boolean::Overlay(a, b, pieces, tolerances, rule));
    for (const auto& piece : pieces) Require(piece.first < a.size() && piece.second < b.size());
    const double distance = bytes.TakeDouble();
    const BufferCreator::Shape shape{static_cast<BufferCreator::End>(bytes.TakeCount(3)),
                                     static_cast<BufferCreator::Join>(bytes.TakeCount(3)),
                                     static_cast<BufferCreator::Side>(bytes.TakeCount(3))};
    Require(Boolean::Union(a, first, tolerances, rule));
    if (rule == Boolean::FillRule::NonZero) CheckBuffers(a, first, tame ? distance / 16.0 : distance, tame, shape);
    if (!tame) return;
    for (const auto* areas : {&united, &common, &less, &either}) {
        Require(Boolean::Union(*areas, first, tolerances) && AreSame(first, *areas));
        Point2D where;
        for (const Polygon2D& area : *areas) {
            See(area.GetPoints());
            Require(area.Validate(where, true, tolerance));
        }
    }
    // Coordinates up to 2048 on borders of up to 100 edges.
    constexpr double slack = 4.0 * tolerance * 100 * 6000;
    Require(Boolean::Union(a, first, tolerances, rule));
    RequireNear(AreaOf(united) - AreaOf(common), AreaOf(either), slack);
    RequireNear(AreaOf(first) - AreaOf(common), AreaOf(less), slack);
}
