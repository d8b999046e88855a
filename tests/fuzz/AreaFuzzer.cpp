#include "fuzz/Bytes.h"

#include <algorithm>
#include <type_traits>

using namespace Kalvio::Math;

namespace {

using Boolean = PolygonsBooleanOperation;

constexpr double tolerance = 1e-3;
const Tolerances tolerances(tolerance, 1e-10);
constexpr double slack = 4.0 * tolerance * 100 * 6000;  // coordinates up to 2048 on borders of up to 100 edges

std::vector<Polygon2D> TakeAreas(Bytes& bytes) {
    return bytes.TakeSome(4, [&bytes] { return bytes.TakePolygon(0, 12); });
}

// The same with arcs on some edges, up to a half turn.
std::vector<PolygonCurve2D> TakeBent(Bytes& bytes, const std::vector<Polygon2D>& areas) {
    const auto bend = [&bytes](const std::vector<Point2D>& points) {
        RingCurve2D ring;
        for (std::size_t i = 0; i < points.size(); ++i) {
            const double bulge = std::max(0.0, bytes.TakeCount(12) - 3.0) / 4.0 - 1.0;
            const Point2D& end = points[(i + 1) % points.size()];
            (void)(bulge > -1.0 ? ring.AppendElement(Arc2D(points[i], bulge, end))
                                : ring.AppendElement(Line2D(points[i], end)));
        }
        return ring;
    };
    std::vector<PolygonCurve2D> bent;
    for (const Polygon2D& area : areas) {
        bent.emplace_back(bend(area.GetPoints()));
        for (const LineString2D& hole : area.GetHoleBoundaries()) bent.back().AppendInnerRing(bend(hole.GetPoints()));
    }
    return bent;
}

const std::vector<Polygon2D>& ChordsOf(const std::vector<Polygon2D>& areas) { return areas; }
std::vector<Polygon2D> ChordsOf(const std::vector<PolygonCurve2D>& areas) {
    std::vector<Polygon2D> chords;
    Require(BufferCreator::Create(areas, 0.0, 20.0 * tolerance, chords, tolerances));
    return chords;
}

double AreaOf(const auto& areas) {
    double sum = 0.0;
    for (const Polygon2D& area : ChordsOf(areas)) sum += area.GetArea();
    return sum;
}

bool AreSame(const auto& a, const auto& b) {
    return std::ranges::equal(ChordsOf(a), ChordsOf(b), [](const Polygon2D& p, const Polygon2D& q) {
        return p.GetPoints() == q.GetPoints() && p.GetNumHoleBoundaries() == q.GetNumHoleBoundaries();
    });
}

void RequireValid(const auto& areas) {
    Point2D where;
    for (const Polygon2D& area : ChordsOf(areas)) {
        See(area.GetPoints());
        Require(area.Validate(where, true, tolerance));
    }
}

template <class Area>
bool CheckOverlay(const std::vector<Area>& a, const std::vector<Area>& b, Boolean::FillRule rule, bool tame) {
    std::vector<Area> united, common, less, other, either, first;
    if (!Boolean::Union(a, b, united, tolerances, rule)) {
        Require(!tame && united.empty());
        return false;
    }
    Require(Boolean::Intersection(a, b, common, tolerances, rule));
    Require(Boolean::Difference(a, b, less, tolerances, rule) && Boolean::Difference(b, a, other, tolerances, rule));
    Require(Boolean::SymmetricDifference(a, b, either, tolerances, rule));
    Require(Boolean::Union(b, a, other, tolerances, rule) && (!tame || AreSame(united, other)));
    std::vector<Boolean::Common<Area>> pieces;
    Require(Boolean::Overlay(a, b, pieces, tolerances, rule));
    for (const auto& piece : pieces) Require(piece.first < a.size() && piece.second < b.size());
    Require(Boolean::Union(a, first, tolerances, rule));
    if (!tame) return true;
    RequireNear(AreaOf(united) - AreaOf(common), AreaOf(either), slack);
    RequireNear(AreaOf(first) - AreaOf(common), AreaOf(less), slack);
    for (const auto* areas : {&united, &common, &less, &either}) {
        Require(Boolean::Union(*areas, first, tolerances));
        Require(std::is_same_v<Area, PolygonCurve2D> || AreSame(first, *areas));
        RequireValid(*areas);
    }
    return true;
}

// Outward holds the areas, inward lies in them, and so do chains' buffers hold the chains.
void CheckBuffers(const std::vector<Polygon2D>& areas, const std::vector<Polygon2D>& united, double distance, bool tame,
                  const BufferCreator::Shape& shape) {
    std::vector<Polygon2D> buffer, beyond;
    std::vector<PolygonCurve2D> curves;
    const double height = std::max(0.01 * std::abs(distance), 1e-3);
    if (!BufferCreator::Create(areas, distance, height, buffer, tolerances, shape)) return Require(!tame);
    Require(BufferCreator::Create(areas, distance, curves, tolerances, shape) || !tame);
    if (areas.empty()) return;
    const LineString2D chain(areas.front().GetPoints());
    Require(BufferCreator::Create(chain, distance, height, beyond, tolerances, shape));
    if (!tame) return;
    for (const auto* made : {&buffer, &beyond}) RequireValid(*made);
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
    Require(AreaOf(beyond) <= slack);
}

}  // namespace

void Kalvio::Math::FuzzArea(Bytes& bytes) {
    const bool tame = bytes.Tame();
    const auto rule = bytes.TakeOne<Boolean::FillRule>(2);
    const std::vector<Polygon2D> a = TakeAreas(bytes), b = TakeAreas(bytes);
    std::vector<Polygon2D> united;
    if (!CheckOverlay(a, b, rule, tame)) return;
    const double distance = bytes.TakeDouble();
    const BufferCreator::Shape shape{static_cast<BufferCreator::End>(bytes.TakeCount(3)),
                                     static_cast<BufferCreator::Join>(bytes.TakeCount(3)),
                                     static_cast<BufferCreator::Side>(bytes.TakeCount(3))};
    Require(Boolean::Union(a, united, tolerances, rule));
    if (rule == Boolean::FillRule::NonZero) CheckBuffers(a, united, tame ? distance / 16.0 : distance, tame, shape);
    const std::vector<PolygonCurve2D> bent = TakeBent(bytes, a);
    (void)CheckOverlay(bent, TakeBent(bytes, b), rule, tame);
    std::vector<PolygonCurve2D> buffer;
    Require(BufferCreator::Create(bent, distance / 16.0, buffer, tolerances, shape) || !tame);
}
