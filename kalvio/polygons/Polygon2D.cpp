#include "kalvio/polygons/Polygon2D.h"

#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/curves/detail/Chain.h"
#include "kalvio/polygons/Polygon3D.h"
#include "kalvio/polygons/detail/ConvexRing.h"
#include "kalvio/polygons/detail/PointInRing.h"
#include "kalvio/polygons/detail/Ring.h"
#include "kalvio/polygons/detail/RingRelation.h"
#include "kalvio/polygons/detail/SmallestBox.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace Kalvio::Math {

namespace {

using detail::FindRingSide;
using detail::FindRingSideByRay;
using detail::RelateRings;
using detail::RingRelation;
using detail::RingSide;

bool IsFinite(const Point2D& p) { return std::isfinite(p.GetX()) && std::isfinite(p.GetY()); }

// Whether a -> b -> c turns back along itself: the end of one edge lies on the other.
bool TurnsBack(const Point2D& a, const Point2D& b, const Point2D& c, double tolerance) {
    if (!((b - a).DotProduct(c - b) < 0.0)) return false;
    const double limit = tolerance * tolerance;
    return detail::SegmentFoot(c, a, b, 0.0).squaredDistance <= limit ||
           detail::SegmentFoot(a, b, c, 0.0).squaredDistance <= limit;
}

// The faults that a ring can have alone.
bool IsRingValid(const std::vector<Point2D>& ring, double tolerance, Point2D& where) {
    std::vector<Point2D> open(ring);
    detail::ReduceChain(open, tolerance, [](std::size_t) {});
    while (open.size() > 1 && !(open.front().Distance(open.back()) > tolerance)) open.pop_back();
    if (open.size() < 3) {
        if (!open.empty()) where = open.front();
        return false;
    }
    for (std::size_t i = 0; i < open.size(); ++i) {
        const Point2D& corner = open[(i + 1) % open.size()];
        if (!TurnsBack(open[i], corner, open[(i + 2) % open.size()], tolerance)) continue;
        where = corner;
        return false;
    }
    LineString2D closed(std::move(open));
    closed.AppendPoint(Point2D(closed.GetStart()));
    return !closed.IsSelfCrossing(where, tolerance);
}

// The borders of a polygon that a line x = level (axis 0) or y = level (axis 1) crosses, and what lies between them.
class LineAcross {
public:
    explicit LineAcross(const std::vector<const std::vector<Point2D>*>& polygonRings) : rings(polygonRings) {}

    /// Middle of the longest stretch inside the first ring and in none of the others, nonzero rule.
    bool FindMiddle(double level, int axis, Point2D& middle) {
        crossings.clear();
        for (std::size_t ring = 0; ring < rings.size(); ++ring) AddCrossings(ring, level, axis);
        std::sort(crossings.begin(), crossings.end(),
                  [](const Crossing& a, const Crossing& b) { return a.position < b.position; });
        windings.assign(rings.size(), 0);
        std::size_t holesEntered = 0;
        double longest = 0.0;
        for (std::size_t i = 0; i + 1 < crossings.size(); ++i) {
            const Crossing& crossing = crossings[i];
            int& winding = windings[crossing.ring];
            const bool wasInside = winding != 0;
            winding += crossing.direction;
            if (crossing.ring > 0 && wasInside != (winding != 0)) wasInside ? --holesEntered : ++holesEntered;
            const double length = crossings[i + 1].position - crossing.position;
            if (windings[0] == 0 || holesEntered > 0 || !(length > longest)) continue;
            longest = length;
            middle[axis] = level;
            middle[1 - axis] = crossing.position + 0.5 * length;
        }
        return longest > 0.0;
    }

private:
    struct Crossing {
        double position;
        int direction;
        std::size_t ring;
    };

    void AddCrossings(std::size_t ring, double level, int axis) {
        detail::WalkRing(*rings[ring], [&](const Point2D& a, const Point2D& b) {
            const bool isUp = a[axis] <= level && b[axis] > level;
            if (isUp || (a[axis] > level && b[axis] <= level)) {
                const double t = (level - a[axis]) / (b[axis] - a[axis]);
                crossings.push_back({a[1 - axis] + (b[1 - axis] - a[1 - axis]) * t, isUp ? 1 : -1, ring});
            }
            return false;
        });
    }

    const std::vector<const std::vector<Point2D>*>& rings;
    std::vector<Crossing> crossings;
    std::vector<int> windings;
};

// Levels for lines across: evenly over the extent, and evenly over the points, between two neighbouring ones.
std::vector<double> LevelsAcross(const std::vector<Point2D>& ring, int axis) {
    constexpr std::size_t count = 8;
    std::vector<double> values;
    values.reserve(ring.size());
    for (const Point2D& point : ring) values.push_back(point[axis]);
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    std::vector<double> levels;
    if (values.size() < 2) return levels;
    for (std::size_t i = 0; i < count; ++i) {
        const double fraction = (static_cast<double>(i) + 0.5) / count;
        levels.push_back(values.front() + (values.back() - values.front()) * fraction);
        const std::size_t below = i * (values.size() - 1) / count;
        levels.push_back(values[below] + (values[below + 1] - values[below]) * 0.5);
    }
    return levels;
}

}  // namespace

MathTypes Polygon2D::GetType() const { return MathTypes::Polygon2D; }

BoundingBox2D Polygon2D::GetBoundingBox2D() const {
    return boundingBox.Get([this] { return ComputeBoundingBox(); });
}

BoundingBox3D Polygon2D::GetBoundingBox3D() const { return GetBoundingBox2D().GetBoundingBox3D(); }

BoundingBox2D Polygon2D::ComputeBoundingBox() const { return detail::BoxOfPoints<BoundingBox2D>(points); }

bool Polygon2D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::Polygon2D && IsEqualTo(static_cast<const Polygon2D&>(other), tolerance);
}

bool Polygon2D::IsEqualTo(const Polygon2D& other, double tolerance) const {
    const auto areEqual = [tolerance](const auto& a, const auto& b) { return a.IsEqualTo(b, tolerance); };
    return std::equal(points.begin(), points.end(), other.points.begin(), other.points.end(), areEqual) &&
           std::equal(holes.begin(), holes.end(), other.holes.begin(), other.holes.end(), areEqual);
}

Polygon2D* Polygon2D::Clone() const { return new Polygon2D(*this); }

void Polygon2D::Reverse() {
    std::reverse(points.begin(), points.end());
    Changed();
}

double Polygon2D::GetLength() const { return detail::RingLength(points); }

unsigned int Polygon2D::GetTotalSize() const {
    return std::accumulate(holes.begin(), holes.end(), GetSize(),
                           [](unsigned int sum, const LineString2D& hole) { return sum + hole.GetSize(); });
}

void Polygon2D::AppendPoints(const std::list<Point2D>& list) {
    detail::InsertPoints(points, points.size(), list.begin(), list.end());
    Changed();
}

void Polygon2D::AppendPoints(const std::vector<Point2D>& vertices) {
    detail::InsertPoints(points, points.size(), vertices.begin(), vertices.end());
    Changed();
}

bool Polygon2D::Insert(unsigned int index, const Point2D& point) {
    Changed();
    return detail::InsertPoint(points, index, point);
}

bool Polygon2D::InsertAtLength(double length, const Point2D& point) {
    Changed();
    return detail::InsertAtRingLength(points, length, point);
}

void Polygon2D::RemoveAllPoints() {
    points.clear();
    Changed();
}

void Polygon2D::Clear() {
    RemoveAllPoints();
    RemoveHoleBoundaries();
}

void Polygon2D::Close() {
    if (points.empty() || points.front() == points.back()) return;
    AppendPoint(Point2D(points.front()));
}

bool Polygon2D::IsClosed(double tolerance) const {
    return !points.empty() && points.front().IsEqualTo(points.back(), tolerance);
}

void Polygon2D::RemoveClosingPoint(double tolerance) {
    while (IsClosed(tolerance)) points.pop_back();
    Changed();
}

void Polygon2D::ReducePoints(double tolerance) {
    detail::ReduceChain(points, tolerance, [](std::size_t) {});
    Changed();
}

void Polygon2D::RearrangePointsByStartingFromMinXMinY(Polygon2D& polygon, double tolerance) {
    std::vector<Point2D>& ring = polygon.GetPoints();
    const bool isClosed = ring.size() > 1 && polygon.IsClosed(tolerance);
    if (isClosed) ring.pop_back();
    if (ring.empty()) return;
    double left = ring.front().GetX();
    for (const Point2D& point : ring) left = std::min(left, point.GetX());
    auto start = ring.end();
    for (auto point = ring.begin(); point != ring.end(); ++point) {
        if (point->GetX() - left > std::abs(tolerance)) continue;
        if (start == ring.end() || point->GetY() < start->GetY()) start = point;
    }
    if (start == ring.end()) start = ring.begin();
    std::rotate(ring.begin(), start, ring.end());
    if (isClosed) ring.push_back(Point2D(ring.front()));
    polygon.Changed();
}

double Polygon2D::GetArea() const {
    if (points.empty()) return 0.0;
    double area = detail::DoubledArea(points, points.front());
    double removed = 0.0;
    for (const LineString2D& hole : holes) removed += std::abs(detail::DoubledArea(hole.GetPoints(), points.front()));
    area = area >= 0.0 ? area - removed : area + removed;
    return area * 0.5;
}

WindingValue Polygon2D::GetWinding() const {
    return GetArea() > 0.0 ? WindingValue::CounterClockwise : WindingValue::Clockwise;
}

bool Polygon2D::SetWinding(WindingValue winding) {
    if (GetWinding() == winding) return false;
    Reverse();
    return true;
}

Point2D Polygon2D::GetCentroid() const {
    if (points.empty()) return {};
    const Point2D& origin = points.front();
    detail::AreaSum areas(origin);
    for (const Point2D& point : points) areas.AddEdgeTo(point);
    const std::size_t size = detail::OpenRingSize(points);
    Point2D centroid;
    if (areas.GetCentroid(size, centroid)) return centroid;
    Vec2D sum;
    for (std::size_t i = 0; i < size; ++i) sum += (points[i] - origin) / static_cast<double>(size);
    return origin + sum;
}

double Polygon2D::GetMaxWidth(double tolerance) const {
    const double width = detail::SmallestWidth(points);
    return width > std::abs(tolerance) ? width : 0.0;
}

OrientedBoundingBox2D Polygon2D::GetOrientedBoundingBox2D() const { return detail::SmallestBox(points); }

bool Polygon2D::IsConvex() const {
    return holes.empty() && detail::IsRingConvex(points, detail::CoordinateNoise(points));
}

bool Polygon2D::IsPointInsideAndBorders(const Point2D& p, double tolerance, bool includeBorders) const {
    const RingSide side = FindRingSide(points, p, tolerance);
    if (side != RingSide::Inside) return side == RingSide::Border && includeBorders;
    for (const LineString2D& hole : holes) {
        const RingSide holeSide = FindRingSide(hole.GetPoints(), p, tolerance);
        if (holeSide == RingSide::Inside || (holeSide == RingSide::Border && !includeBorders)) return false;
    }
    return true;
}

bool Polygon2D::IsPointInsideByRay(const Point2D& p, double tolerance) const {
    if (FindRingSideByRay(points, p, tolerance) == RingSide::Outside) return false;
    return std::none_of(holes.begin(), holes.end(), [&](const LineString2D& hole) {
        return FindRingSideByRay(hole.GetPoints(), p, tolerance) == RingSide::Inside;
    });
}

Polygon2D::PositionResult Polygon2D::CheckPositionOf(const Point2D& p, int& holeIndex, double tolerance) const {
    holeIndex = -1;
    const RingSide side = FindRingSideByRay(points, p, tolerance);
    if (side == RingSide::Border) return PositionResult::OnOuterBorder;
    if (side == RingSide::Outside) return PositionResult::Outside;
    for (std::size_t i = 0; i < holes.size(); ++i) {
        const RingSide holeSide = FindRingSideByRay(holes[i].GetPoints(), p, tolerance);
        if (holeSide == RingSide::Border) return PositionResult::OnHoleBorder;
        if (holeSide == RingSide::Outside) continue;
        holeIndex = static_cast<int>(i);
        return PositionResult::InsideHole;
    }
    return PositionResult::Inside;
}

Polygon2D::PositionResult Polygon2D::CheckPositionOf(const Polygon2D& other, int& holeIndex, double tolerance) const {
    holeIndex = -1;
    const RingRelation outer = RelateRings(other.points, points, tolerance);
    if (outer.touches) return PositionResult::OnOuterBorder;
    if (!outer.goesInside) return PositionResult::Outside;
    for (std::size_t i = 0; i < holes.size(); ++i) {
        const RingRelation hole = RelateRings(other.points, holes[i].GetPoints(), tolerance);
        if (hole.touches) return PositionResult::OnHoleBorder;
        if (!hole.goesInside) continue;
        holeIndex = static_cast<int>(i);
        return PositionResult::InsideHole;
    }
    return PositionResult::Inside;
}

bool Polygon2D::IsPolygonInsideNotCrossing(const Polygon2D& inner, const Polygon2D& outer, double tolerance) {
    if (inner.points.empty() || outer.points.empty()) return false;
    if (RelateRings(inner.points, outer.points, tolerance).goesOutside) return false;
    return std::all_of(outer.holes.begin(), outer.holes.end(), [&](const LineString2D& hole) {
        const std::vector<Point2D>& ring = hole.GetPoints();
        if (ring.empty()) return true;
        const RingRelation past = RelateRings(inner.points, ring, tolerance);
        if (past.goesInside) return false;
        const RingRelation holePast = RelateRings(ring, inner.points, tolerance);
        if (holePast.goesOutside) return true;
        // The inner ring surrounds the hole, or is it: only a hole of its own saves it.
        return std::any_of(inner.holes.begin(), inner.holes.end(), [&](const LineString2D& own) {
            return !RelateRings(ring, own.GetPoints(), tolerance).goesOutside;
        });
    });
}

LineString2D Polygon2D::ClosedRing() const {
    LineString2D ring(points);
    if (detail::HasClosingEdge(points)) ring.AppendPoint(points.front());
    return ring;
}

bool Polygon2D::IsSelfCrossing(double tolerance) const { return ClosedRing().IsSelfCrossing(tolerance); }

bool Polygon2D::IsSelfCrossing(Point2D& crossing, double tolerance) const {
    return ClosedRing().IsSelfCrossing(crossing, tolerance);
}

bool Polygon2D::IsSelfCrossing(std::vector<Point2D>& crossings, double tolerance) const {
    return ClosedRing().IsSelfCrossing(crossings, tolerance);
}

bool Polygon2D::GetPointInsideBoundary(Point2D& point, double tolerance) const {
    std::vector<const std::vector<Point2D>*> rings{&points};
    for (const LineString2D& hole : holes) rings.push_back(&hole.GetPoints());
    for (const std::vector<Point2D>* ring : rings) {
        if (!std::all_of(ring->begin(), ring->end(), IsFinite)) return false;
    }
    LineAcross line(rings);
    // The border tests reach to the corners of a square; and less than the rounding is no distance.
    const double noise = detail::CoordinateNoise(points);
    double best = 2.0 * std::max(tolerance * tolerance, noise * noise);
    Point2D inside;
    const auto offer = [&](double level, int axis) {
        Point2D middle;
        if (!line.FindMiddle(level, axis, middle) || !IsFinite(middle)) return false;
        double clearance = std::numeric_limits<double>::infinity();
        for (const std::vector<Point2D>* ring : rings) {
            detail::WalkRing(*ring, [&](const Point2D& a, const Point2D& b) {
                const double squared = detail::SegmentFoot(middle, a, b, 0.0).squaredDistance;
                if (squared < clearance) clearance = squared;
                return clearance <= best;
            });
        }
        if (!(clearance > best)) return false;
        best = clearance;
        inside = middle;
        return true;
    };
    bool found = false;
    for (const int axis : {1, 0}) {
        for (const double level : LevelsAcross(points, axis)) found = offer(level, axis) || found;
        if (found) break;
    }
    if (!found) return false;
    // From there a few steps to the middle between the borders, alternately across both axes.
    constexpr int steps = 8;
    int axis = 0;
    for (int step = 0; step < steps; ++step, axis = 1 - axis) offer(inside[axis], axis);
    point = inside;
    return true;
}

bool Polygon2D::Validate(Point2D& where, bool checkHoles, double tolerance) const {
    std::vector<const std::vector<Point2D>*> rings{&points};
    if (checkHoles) {
        for (const LineString2D& hole : holes) rings.push_back(&hole.GetPoints());
    }
    for (const std::vector<Point2D>* ring : rings) {
        const auto fault = std::find_if_not(ring->begin(), ring->end(), IsFinite);
        if (fault == ring->end()) continue;
        where = *fault;
        return false;
    }
    const double t = std::max(std::abs(tolerance), detail::numericalZero);
    for (const std::vector<Point2D>* ring : rings) {
        if (!IsRingValid(*ring, t, where)) return false;
    }
    for (std::size_t i = 1; i < rings.size(); ++i) {
        const std::vector<Point2D>& hole = *rings[i];
        const RingRelation outer = RelateRings(hole, points, t);
        if (outer.goesOutside || outer.IsAlong()) {
            where = outer.goesOutside ? outer.outside : hole.front();
            return false;
        }
        const BoundingBox2D box = holes[i - 1].GetBoundingBox2D();
        for (std::size_t j = 1; j < i; ++j) {
            if (!box.Intersects(holes[j - 1].GetBoundingBox2D(), t)) continue;
            const RingRelation past = RelateRings(hole, *rings[j], t);
            const RingRelation back = RelateRings(*rings[j], hole, t);
            if (!past.goesInside && !back.goesInside && !past.IsAlong()) continue;
            where = past.goesInside ? past.inside : back.goesInside ? back.inside : hole.front();
            return false;
        }
    }
    return true;
}

Polygon2D& Polygon2D::Transform(const Matrix2D& matrix) {
    for (Point2D& point : points) point.Transform(matrix);
    for (LineString2D& hole : holes) hole.Transform(matrix);
    Changed();
    return *this;
}

Polygon2D Polygon2D::Transform(const Matrix2D& matrix) const {
    Polygon2D copy(*this);
    return copy.Transform(matrix);
}

void Polygon2D::Transform(const Matrix3D& matrix, Polygon3D& transformed) const {
    transformed = Polygon3D(*this, 0.0).Transform(matrix);
}

Polygon2D& Polygon2D::Translate(const Vec2D& v) {
    for (Point2D& point : points) point += v;
    for (LineString2D& hole : holes) hole.Translate(v);
    Changed();
    return *this;
}

Polygon2D Polygon2D::Translate(const Vec2D& v) const {
    Polygon2D copy(*this);
    return copy.Translate(v);
}

template <>
bool Geometry::AreEqual(const Polygon2D& a, const Polygon2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
