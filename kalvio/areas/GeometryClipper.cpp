#include "kalvio/areas/GeometryClipper.h"

#include "kalvio/areas/detail/ChainPath.h"
#include "kalvio/areas/detail/MeshCut.h"
#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"
#include "kalvio/meshes/detail/Triangles.h"
#include "kalvio/polygons/PointInPolygon.h"
#include "kalvio/polygons/PolygonCurve2D.h"
#include "kalvio/queries/IntersectionExt.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace Kalvio::Math {

namespace {

bool IsFinite(const Point2D& p) { return std::isfinite(p.GetX()) && std::isfinite(p.GetY()); }
bool IsFinite(const Point3D& p) {
    return std::isfinite(p.GetX()) && std::isfinite(p.GetY()) && std::isfinite(p.GetZ());
}

bool AreFinite(const std::vector<Point2D>& points) {
    return std::all_of(points.begin(), points.end(), [](const Point2D& p) { return IsFinite(p); });
}

Point2D InPlan(const Point2D& p) { return p; }
Point2D InPlan(const Point3D& p) { return {p.GetX(), p.GetY()}; }

/// A string of points by plan stations.
template <class StringType>
class StringParts {
public:
    explicit StringParts(const StringType& source) : string(source), plan(PlanOf(source)) {
        for (std::size_t i = 0; i < plan.GetPoints().size(); ++i) {
            const std::vector<Point2D>& points = std::as_const(plan).GetPoints();
            stations.push_back(i == 0 ? 0.0 : stations.back() + points[i - 1].Distance(points[i]));
        }
    }

    const LineString2D& GetPlan() const { return plan; }
    double GetLength() const { return stations.empty() ? 0.0 : stations.back(); }
    Point2D PointAt(double station) const { return InPlan(At(station)); }
    bool Extract(double from, double to, StringType& part) const {
        const auto first = std::upper_bound(stations.begin(), stations.end(), from);
        const auto last = std::lower_bound(first, stations.end(), to);
        std::vector points{At(from)};
        points.insert(points.end(), string.GetPoints().begin() + (first - stations.begin()),
                      string.GetPoints().begin() + (last - stations.begin()));
        points.push_back(At(to));
        part = StringType(std::move(points));
        return true;
    }

private:
    static LineString2D PlanOf(const StringType& source) {
        std::vector<Point2D> points;
        for (const auto& p : source.GetPoints()) points.push_back(InPlan(p));
        return LineString2D(std::move(points));
    }
    auto At(double station) const {
        const auto& points = string.GetPoints();
        const auto next = std::lower_bound(stations.begin(), stations.end(), station);
        if (next == stations.begin()) return points.front();
        if (next == stations.end()) return points.back();
        const auto i = static_cast<std::size_t>(next - stations.begin());
        const double t = (station - stations[i - 1]) / (stations[i] - stations[i - 1]);
        return t == 1.0 ? points[i] : points[i - 1] + (points[i] - points[i - 1]) * t;
    }

    const StringType& string;
    LineString2D plan;
    std::vector<double> stations;  // of the points
};

class ChainParts {
public:
    explicit ChainParts(const Polyline2D& source) : chain(source) {}

    const Polyline2D& GetPlan() const { return chain; }
    double GetLength() const { return chain.GetLength(); }
    Point2D PointAt(double station) const {
        Polyline2D::PolylinePoint at;
        return chain.MakePointAndTangentAt(station, at) ? at.point : chain.GetStart();
    }
    bool Extract(double from, double to, Polyline2D& part) const {
        if (from <= 0.0 && to >= GetLength()) {
            part = chain;
            return true;
        }
        return chain.ExtractPolyline(from, to, part);
    }

private:
    const Polyline2D& chain;
};

/// Which points lie inside, for some or for many of them.
class Inside {
public:
    Inside(const Polygon2D& straightArea, const PolygonCurve2D* curvedArea, double userTolerance, std::size_t questions)
        : straight(straightArea), curved(curvedArea), tolerance(userTolerance) {
        constexpr std::size_t few = 16;  // up to here a look at all sides costs less than a grid of them
        if (curved != nullptr || questions <= few) return;
        const double rows = 2.0 * std::sqrt(static_cast<double>(straight.GetTotalSize()));
        prepared.emplace(straight, static_cast<std::uint64_t>(rows), tolerance);
    }
    bool Holds(const Point2D& p) const {
        if (curved != nullptr) return curved->IsPointInside(p, tolerance);
        return prepared ? prepared->IsPointInside(p, tolerance) : straight.IsPointInside(p, tolerance);
    }

private:
    const Polygon2D& straight;
    const PolygonCurve2D* curved;
    double tolerance;
    std::optional<PointInPolygon> prepared;
};

bool AppendRing(const std::vector<Point2D>& ring, std::vector<Polyline2D>& borders) {
    if (!AreFinite(ring)) return false;
    LineString2D closed(ring);
    if (!ring.empty()) closed.AppendPoint(ring.front());
    Polyline2D& border = borders.emplace_back();
    border.AppendElement(closed.Clone());
    return true;
}

bool AppendRing(const RingCurve2D& ring, std::vector<Polyline2D>& borders) {
    const BoundingBox2D box = ring.GetBoundingBox();
    if (!std::isfinite(ring.GetLength()) || !IsFinite(box.GetMinPoint()) || !IsFinite(box.GetMaxPoint())) return false;
    Polyline2D& border = borders.emplace_back();
    for (unsigned int i = 0; i < ring.GetNrOfElements(); ++i) {
        border.AppendElement(static_cast<IPolyline2DElement*>(ring.GetElementAtIndex(i).Clone()));
    }
    return true;
}

bool MakeBorders(const Polygon2D& straight, const PolygonCurve2D* curved, std::vector<Polyline2D>& borders) {
    bool isFinite =
        curved != nullptr ? AppendRing(curved->GetBoundary(), borders) : AppendRing(straight.GetPoints(), borders);
    const unsigned int holes = curved != nullptr ? curved->GetNumInnerRings() : straight.GetNumHoleBoundaries();
    for (unsigned int i = 0; i < holes && isFinite; ++i) {
        isFinite = curved != nullptr ? AppendRing(curved->GetInnerRingAtIndex(i), borders)
                                     : AppendRing(straight.GetHoleBoundary(i).GetPoints(), borders);
    }
    return isFinite;
}

template <class Cutter, class ChainType>
bool Cut(const Cutter& cutter, const Polygon2D& straight, const PolygonCurve2D* curved,
         std::vector<GeometryClipper::Part<ChainType>>& parts, const Tolerances& tolerances) {
    const double length = cutter.GetLength();
    const double tolerance = std::abs(tolerances.UserTolerance());
    std::vector<Polyline2D> borders;
    if (!std::isfinite(length) || !IsFinite(cutter.PointAt(0.0)) || !MakeBorders(straight, curved, borders))
        return false;

    std::vector<double> cuts;
    std::vector<IntersectionExt::IntersectionPoint<Point2D>> meetings;
    for (const Polyline2D& border : borders) IntersectionExt::Intersect(cutter.GetPlan(), border, meetings, tolerances);
    for (const auto& meeting : meetings) cuts.push_back(meeting.firstStation);
    std::sort(cuts.begin(), cuts.end());

    const Inside inside(straight, curved, tolerance, cuts.size());
    std::vector<GeometryClipper::Part<ChainType>> made;
    double from = 0.0;
    const auto close = [&](double to) {
        const bool isInside = inside.Holds(cutter.PointAt(from + 0.5 * (to - from)));
        if (!made.empty() && made.back().isInside == isInside) {
            made.back().to = to;
        } else {
            made.push_back({ChainType(), from, to, isInside});
        }
        from = to;
    };
    for (const double cut : cuts) {
        if (cut - from > tolerance && length - cut > tolerance) close(cut);
    }
    close(length);
    for (auto& part : made) {
        if (!cutter.Extract(part.from, part.to, part.chain)) return false;
    }
    parts = std::move(made);
    return true;
}

}  // namespace

GeometryClipper::Area::Area(PolygonCurve2D&& polygon) : curved(kept.TakeOne(std::move(polygon)).data()) {}

GeometryClipper::Area::Area(const BoundingBox2D& box) {
    const Point2D low = box.GetMinPoint();
    const Point2D high = box.GetMaxPoint();
    corners = Polygon2D{low, Point2D(high.GetX(), low.GetY()), high, Point2D(low.GetX(), high.GetY())};
}

bool GeometryClipper::Clip(const LineString2D& chain, const Area& area, std::vector<Part<LineString2D>>& parts,
                           const Tolerances& tolerances) {
    if (chain.GetSize() == 0) return false;
    return Cut(StringParts(chain), area.GetStraight(), area.curved, parts, tolerances);
}

bool GeometryClipper::Clip(const LineString3D& chain, const Area& area, std::vector<Part<LineString3D>>& parts,
                           const Tolerances& tolerances) {
    if (chain.GetSize() == 0) return false;
    return Cut(StringParts(chain), area.GetStraight(), area.curved, parts, tolerances);
}

bool GeometryClipper::Clip(const Polyline2D& chain, const Area& area, std::vector<Part<Polyline2D>>& parts,
                           const Tolerances& tolerances) {
    if (chain.GetNrOfElements() == 0) return false;
    return Cut(ChainParts(chain), area.GetStraight(), area.curved, parts, tolerances);
}

bool GeometryClipper::Clip(const IndexedTriangleSet3D& mesh, const Area& area, IndexedTriangleSet3D& inside,
                           const Tolerances& tolerances) {
    Polygon2D chords;
    if (area.curved != nullptr && !detail::MakeChords(*area.curved, tolerances.UserTolerance(), chords)) return false;
    const Polygon2D& straight = area.curved != nullptr ? chords : area.GetStraight();
    std::vector<Polyline2D> borders;
    if (!MakeBorders(straight, nullptr, borders)) return false;

    IndexedTriangleSet3D made = mesh;
    std::vector<unsigned int> indexes;
    bool isFinite = true;
    detail::ForEachTriangle(mesh.GetIndexes(), mesh.GetVertices().size(),
                            [&](const unsigned int* corners, std::size_t) {
                                indexes.insert(indexes.end(), corners, corners + 3);
                                for (std::size_t k = 0; k < 3; ++k)
                                    isFinite = isFinite && IsFinite(mesh.GetVertices()[corners[k]]);
                            });
    if (indexes.empty() || !isFinite) return false;
    const Inside isInside(straight, nullptr, 0.0, indexes.size() / 3);
    const auto holds = [&isInside](const Point2D& p) { return isInside.Holds(p); };
    if (!detail::CutMesh(made.GetVertices(), indexes, straight, holds)) return false;
    made.GetIndexes() = std::move(indexes);
    made.RemoveUnusedVertices();
    inside = std::move(made);
    return true;
}

}  // namespace Kalvio::Math
