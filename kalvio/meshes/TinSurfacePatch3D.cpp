#include "kalvio/meshes/TinSurfacePatch3D.h"

#include "kalvio/core/Angle.h"
#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/core/detail/Prefetch.h"
#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/meshes/detail/MeshSection.h"
#include "kalvio/meshes/detail/SurfaceBuilder.h"
#include "kalvio/meshes/detail/SurfaceEditor.h"
#include "kalvio/meshes/detail/TriangleEdges.h"
#include "kalvio/meshes/detail/TriangleHeight.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

namespace Kalvio::Math {

namespace {

using detail::InPlan;

constexpr unsigned int none = TinSurfacePatch3D::noTriangle;

constexpr unsigned int fewSteps = 32;  // from a hint to a place
constexpr double steepest = 100.0;     // slope of a surface; what is steeper is a wall

// Of coordinates up to so far from 0.
double NoiseOf(double reach) {
    return std::max(detail::numericalZero, 2.0 * std::numeric_limits<double>::epsilon() * reach);
}

unsigned int AfterInTriangle(unsigned int corner) { return corner == 2 ? 0 : corner + 1; }

// The point of a triangle nearest to p.
Point3D NearestOnTriangle(const Point3D& p, const Point3D& a, const Point3D& b, const Point3D& c) {
    const Vec3D normal = (b - a).CrossProduct(c - a);
    const auto isLeft = [&](const Point3D& from, const Point3D& to) {
        return normal.DotProduct((to - from).CrossProduct(p - from)) >= 0.0;
    };
    const double squared = normal.NormSquared();
    if (squared > 0.0 && isLeft(a, b) && isLeft(b, c) && isLeft(c, a)) {
        return p - normal * ((p - a).DotProduct(normal) / squared);
    }
    const detail::SegmentFoot<Point3D> onAB(p, a, b, 0.0);
    const detail::SegmentFoot<Point3D> onBC(p, b, c, 0.0);
    const detail::SegmentFoot<Point3D> onCA(p, c, a, 0.0);
    if (onAB.squaredDistance <= onBC.squaredDistance && onAB.squaredDistance <= onCA.squaredDistance) {
        return onAB.PointOn(a, b);
    }
    return onBC.squaredDistance <= onCA.squaredDistance ? onBC.PointOn(b, c) : onCA.PointOn(c, a);
}

}  // namespace

MathTypes TinSurfacePatch3D::GetType() const { return MathTypes::TinSurfacePatch3D; }

BoundingBox2D TinSurfacePatch3D::GetBoundingBox2D() const { return triangles.GetBoundingBox2D(); }

BoundingBox3D TinSurfacePatch3D::GetBoundingBox3D() const { return triangles.GetBoundingBox3D(); }

bool TinSurfacePatch3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::TinSurfacePatch3D &&
           IsEqualTo(static_cast<const TinSurfacePatch3D&>(other), tolerance);
}

bool TinSurfacePatch3D::IsEqualTo(const TinSurfacePatch3D& other, double tolerance) const {
    return triangles.IsEqualTo(other.triangles, tolerance);
}

TinSurfacePatch3D* TinSurfacePatch3D::Clone() const { return new TinSurfacePatch3D(*this); }

bool TinSurfacePatch3D::Build(const Ground& ground, const Tolerances& tolerances) {
    std::vector<HeightConflict> conflicts;
    return Build(ground, tolerances, conflicts);
}

bool TinSurfacePatch3D::Build(const Ground& ground, const Tolerances& tolerances,
                              std::vector<HeightConflict>& conflicts) {
    detail::SurfaceBuilder builder;
    if (!builder.Triangulate(ground, tolerances.UserTolerance()) || !TakeFrom(builder)) return false;
    conflicts = builder.GetConflicts();
    return true;
}

bool TinSurfacePatch3D::AddPoints(const std::vector<Point3D>& points, const Tolerances& tolerances,
                                  std::vector<unsigned int>& vertices) {
    if (neighbors.empty() || !std::all_of(points.begin(), points.end(), detail::IsOfSurface)) return false;
    IndexedTriangleSet3D set = triangles;
    std::vector<unsigned int> beyond = neighbors;
    std::vector<bool> ofChain = isOfChain;
    detail::SurfaceEditor editor({set.GetVertices(), set.GetIndexes(), beyond, ofChain},
                                 std::max(tolerances.UserTolerance(), noise));
    std::vector<unsigned int> added;
    for (const Point3D& point : points) {
        unsigned int start = none;
        added.push_back(FindTriangle(point.GetPoint2D(), start) ? editor.Insert(point, start) : noVertex);
    }
    Take(std::move(set), std::move(beyond), std::move(ofChain));
    vertices = std::move(added);
    return true;
}

bool TinSurfacePatch3D::RemoveVertices(const std::vector<unsigned int>& vertices, std::vector<unsigned int>& stayed) {
    const std::size_t count = triangles.GetVertices().size();
    if (!std::all_of(vertices.begin(), vertices.end(), [count](unsigned int v) { return v < count; })) return false;
    IndexedTriangleSet3D set = triangles;
    std::vector<unsigned int> beyond = neighbors;
    std::vector<bool> ofChain = isOfChain;
    detail::SurfaceEditor editor({set.GetVertices(), set.GetIndexes(), beyond, ofChain}, noise);
    const std::vector<bool> isFree = editor.FindFree(vertices);
    std::vector<bool> isRemoved(count, false);
    std::vector<unsigned int> left;
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        if (!isFree[i]) left.push_back(vertices[i]);
        if (!isFree[i] || isRemoved[vertices[i]]) continue;
        isRemoved[vertices[i]] = true;
        editor.Remove(vertices[i]);
    }
    editor.Compact();
    Take(std::move(set), std::move(beyond), std::move(ofChain));
    stayed = std::move(left);
    return true;
}

bool TinSurfacePatch3D::Thin(double heightTolerance) {
    if (neighbors.empty() || !(heightTolerance >= 0.0)) return false;
    detail::SurfaceBuilder builder;
    TinSurfacePatch3D thinned;
    if (!builder.Thin(*this, isOfChain, heightTolerance) || !thinned.TakeFrom(builder)) return false;
    // Where the surface lies over itself, borders do not enclose what it covers.
    constexpr double rounding = 1e-9;
    const double area = GetPlanArea();
    if (!(std::abs(thinned.GetPlanArea() - area) <= rounding * area)) return false;
    *this = std::move(thinned);
    return true;
}

bool TinSurfacePatch3D::FillHoles(double largestArea, std::size_t& count) {
    if (neighbors.empty() || !(largestArea >= 0.0)) return false;
    std::size_t found = 0;
    std::vector<unsigned int> corners;
    if (!detail::SurfaceBuilder::FindHoles(*this, largestArea, corners, found)) return false;
    IndexedTriangleSet3D set = triangles;
    set.AppendIndexes(corners);
    TinSurfacePatch3D filled;
    if (!filled.SetTriangles(set) || filled.neighbors.size() != set.GetIndexes().size()) return false;
    for (std::size_t edge = 0; edge < isOfChain.size(); ++edge) {
        if (!isOfChain[edge]) continue;
        filled.isOfChain[edge] = true;
        for (std::size_t other = 3 * std::size_t{filled.neighbors[edge]}; filled.neighbors[edge] != none; ++other) {
            if (filled.triangles.GetIndexes()[other] != triangles.GetIndexes()[detail::NextInTriangle(edge)]) continue;
            filled.isOfChain[other] = true;
            break;
        }
    }
    *this = std::move(filled);
    count = found;
    return true;
}

bool TinSurfacePatch3D::TakeFrom(const detail::SurfaceBuilder& builder) {
    IndexedTriangleSet3D set;
    std::vector<unsigned int> beyond;
    std::vector<bool> ofChain;
    if (!builder.Collect(set, beyond, ofChain)) return false;
    Take(std::move(set), std::move(beyond), std::move(ofChain));
    return true;
}

bool TinSurfacePatch3D::SetTriangles(const IndexedTriangleSet3D& set) {
    const std::vector<Point3D>& vertices = set.GetVertices();
    IndexedTriangleSet3D taken(vertices, {});
    std::vector<unsigned int>& indexes = taken.GetIndexes();
    indexes.reserve(set.GetIndexes().size());
    for (std::uint64_t t = 0; t < set.GetTrianglesCount(); ++t) {
        const unsigned int* const corners = detail::CornersOf(set.GetIndexes(), vertices.size(), t);
        if (corners == nullptr ||
            !std::all_of(corners, corners + 3, [&](unsigned int v) { return detail::IsOfSurface(vertices[v]); })) {
            return false;
        }
        const double turn =
            detail::ExactTurn(InPlan(vertices[corners[0]]), InPlan(vertices[corners[1]]), InPlan(vertices[corners[2]]));
        if (turn == 0.0) continue;
        indexes.insert(indexes.end(), {corners[0], corners[turn > 0.0 ? 1 : 2], corners[turn > 0.0 ? 2 : 1]});
    }
    if (indexes.empty() || indexes.size() / 3 >= none) return false;
    std::vector<unsigned int> beyond(indexes.size(), none);
    bool isFolded = false;
    detail::ForEachEdge(indexes, vertices.size(), [&](std::span<const std::size_t> edges) {
        if (edges.size() == 1) return;
        isFolded = isFolded || edges.size() > 2 || indexes[edges[0]] == indexes[edges[1]];
        beyond[edges[0]] = static_cast<unsigned int>(edges[1] / 3);
        beyond[edges[1]] = static_cast<unsigned int>(edges[0] / 3);
    });
    if (isFolded) return false;
    taken.RemoveUnusedVertices();
    std::vector<bool> ofChain(beyond.size(), false);
    Take(std::move(taken), std::move(beyond), std::move(ofChain));
    return true;
}

void TinSurfacePatch3D::Take(IndexedTriangleSet3D&& set, std::vector<unsigned int>&& beyond,
                             std::vector<bool>&& ofChain) {
    triangles = std::move(set);
    triangles.SetCCW(true);
    neighbors = std::move(beyond);
    isOfChain = std::move(ofChain);
    double reach = 0.0;
    for (const Point3D& p : triangles.GetVertices()) reach = std::max({reach, std::abs(p.GetX()), std::abs(p.GetY())});
    noise = NoiseOf(reach);
    locator.Invalidate();
}

unsigned int TinSurfacePatch3D::GetNeighbor(unsigned int triangle, unsigned int edge) const {
    return triangle < neighbors.size() / 3 && edge < 3 ? neighbors[3 * std::size_t{triangle} + edge] : none;
}

double TinSurfacePatch3D::GetPlanArea() const {
    double sum = 0.0;
    for (std::size_t t = 0; t < neighbors.size() / 3; ++t) {
        const auto [a, b, c] = CornersOf(t);
        sum += detail::DoubledTurn(a, b, c);
    }
    return 0.5 * sum;
}

std::array<Point2D, 3> TinSurfacePatch3D::CornersOf(std::size_t triangle) const {
    const unsigned int* const corners = triangles.GetIndexes().data() + 3 * triangle;
    return {triangles.GetVertex(corners[0]).GetPoint2D(), triangles.GetVertex(corners[1]).GetPoint2D(),
            triangles.GetVertex(corners[2]).GetPoint2D()};
}

const TinSurfacePatch3D::Locator& TinSurfacePatch3D::GetLocator() const {
    return locator.Get([this] {
        Locator made;
        made.facets.resize(neighbors.size() / 3);
        made.heights.resize(made.facets.size());
        for (std::size_t t = 0; t < made.facets.size(); ++t) {
            for (std::size_t i = 0; i < 3; ++i) {
                const Point3D& p = triangles.GetVertex(triangles.GetIndexes()[3 * t + i]);
                made.facets[t].corner[i] = {p.GetX(), p.GetY()};
                made.heights[t][i] = p.GetZ();
                made.facets[t].beyond[i] = neighbors[3 * t + i];
            }
        }
        for (const Point3D& p : triangles.GetVertices()) {
            made.lowest = std::min(made.lowest, p.GetZ());
            made.highest = std::max(made.highest, p.GetZ());
        }
        made.heightNoise = NoiseOf(std::max(std::abs(made.lowest), std::abs(made.highest)));
        made.grid = detail::TriangleGrid(made.facets.size(), noise, [this](std::size_t t) { return CornersOf(t); });
        return made;
    });
}

// The next triangle on the way to a place, across an edge that parts them: the same one when none does, `none` beyond
// the border.
unsigned int TinSurfacePatch3D::Toward(const Facet& facet, const Point2D& place, const Walk& walk) {
    unsigned int next = walk.triangle;
    for (unsigned int i = 0; i < 3; ++i) {
        if (facet.beyond[i] == walk.before && walk.before != none) continue;
        if (!(detail::ExactTurn(facet.corner[i], facet.corner[AfterInTriangle(i)], InPlan(place)) < 0.0)) continue;
        next = facet.beyond[i];
        if (next != none) return next;
    }
    return next;
}

// The same without branches, by plain determinants: `none` also where one of them is too near to 0.
unsigned int TinSurfacePatch3D::SurelyToward(const Facet& facet, const Point2D& place, unsigned int triangle) {
    const auto& [a, b, c] = facet.corner;
    const detail::PlanePoint p = InPlan(place);
    const detail::PlainTurn ofA(a, b, p);
    const detail::PlainTurn ofB(b, c, p);
    const detail::PlainTurn ofC(c, a, p);
    unsigned int next = ofC.value < 0.0 ? facet.beyond[2] : triangle;
    next = ofB.value < 0.0 ? facet.beyond[1] : next;
    next = ofA.value < 0.0 ? facet.beyond[0] : next;
    const bool sureOfA = ofA.IsSure();
    const bool sureOfB = ofB.IsSure();
    const bool sureOfC = ofC.IsSure();
    return (sureOfA & sureOfB & sureOfC) != 0 ? next : none;
}

// What this or the next search will read is asked for ahead. @return false, `triangle` untouched, where the way ends at
// the border or takes too many steps
bool TinSurfacePatch3D::WalkTo(const Locator& made, const Point2D& place, unsigned int& triangle) {
    Walk walk{triangle};
    while (walk.triangle < made.facets.size() && walk.steps < fewSteps) {
        const Facet& facet = made.facets[walk.triangle];
        detail::Prefetch(&made.heights[walk.triangle]);
        for (const unsigned int beyond : facet.beyond) {
            if (beyond != none) detail::Prefetch(&made.facets[beyond]);
        }
        unsigned int next = SurelyToward(facet, place, walk.triangle);
        if (next == none) next = Toward(facet, place, walk);
        if (next == walk.triangle) {
            triangle = next;
            return true;
        }
        walk = {next, walk.triangle, walk.steps + 1};
    }
    return false;
}

// From the middle of the cell. @return false, `triangle` untouched, where the way is not sure, as on an edge, or ends
bool TinSurfacePatch3D::FindSurely(const Locator& made, const Point2D& place, unsigned int& triangle) {
    unsigned int next = made.grid.GetMiddle(place);
    for (unsigned int steps = 0; steps < fewSteps && next != none; ++steps) {
        const unsigned int here = next;
        next = SurelyToward(made.facets[here], place, here);
        if (next == here) {
            triangle = here;
            return true;
        }
    }
    return false;
}

double TinSurfacePatch3D::HeightAt(const Facet& facet, const Heights& heights, const Point2D& place) {
    const auto& [a, b, c] = facet.corner;
    return detail::HeightInTriangle({a.x, a.y, heights[0]}, {b.x, b.y, heights[1]}, {c.x, c.y, heights[2]},
                                    place.GetX(), place.GetY());
}

bool TinSurfacePatch3D::FindTriangle(const Point2D& place, unsigned int& triangle) const {
    const Locator& made = GetLocator();
    if (!made.grid.IsNear(place)) return false;
    if (WalkTo(made, place, triangle) || FindSurely(made, place, triangle)) return true;
    // On an edge or a vertex several do: the one on the way from here.
    unsigned int found = made.grid.GetHint(place);
    if (WalkTo(made, place, found)) {
        triangle = found;
        return true;
    }
    const std::span<const std::uint32_t> near = made.grid.At(place);
    const auto holds = [&](std::uint32_t t) {
        const auto [a, b, c] = CornersOf(t);
        const detail::PlanePoint p = InPlan(place);
        return !(detail::ExactTurn(InPlan(a), InPlan(b), p) < 0.0 || detail::ExactTurn(InPlan(b), InPlan(c), p) < 0.0 ||
                 detail::ExactTurn(InPlan(c), InPlan(a), p) < 0.0);
    };
    const auto touches = [&](std::uint32_t t) {
        const auto [a, b, c] = CornersOf(t);
        return std::min({detail::SegmentFoot<Point2D>(place, a, b, 0.0).squaredDistance,
                         detail::SegmentFoot<Point2D>(place, b, c, 0.0).squaredDistance,
                         detail::SegmentFoot<Point2D>(place, c, a, 0.0).squaredDistance}) <= noise * noise;
    };
    auto holder = std::find_if(near.begin(), near.end(), holds);
    if (holder == near.end()) holder = std::find_if(near.begin(), near.end(), touches);
    if (holder == near.end()) return false;
    triangle = *holder;
    return true;
}

bool TinSurfacePatch3D::IsInside(const Point2D& place) const {
    unsigned int triangle = none;
    return FindTriangle(place, triangle);
}

bool TinSurfacePatch3D::GetHeight(const Point2D& place, double& z) const {
    const Locator& made = GetLocator();
    unsigned int triangle = none;
    if (!made.grid.IsNear(place) || !(FindSurely(made, place, triangle) || FindTriangle(place, triangle))) return false;
    z = HeightAt(made.facets[triangle], made.heights[triangle], place);
    return true;
}

bool TinSurfacePatch3D::GetHeight(const Point2D& place, double& z, unsigned int& triangle) const {
    if (!FindTriangle(place, triangle)) return false;
    const Locator& made = GetLocator();
    z = HeightAt(made.facets[triangle], made.heights[triangle], place);
    return true;
}

void TinSurfacePatch3D::GetHeights(const std::vector<Point2D>& places, std::vector<double>& heights) const {
    heights.assign(places.size(), std::numeric_limits<double>::quiet_NaN());
    if (neighbors.empty()) return;
    const Locator& made = GetLocator();
    // So many at once that the memory answers one while the others are looked at: all facets are fetched, then all
    // used.
    constexpr std::size_t together = 32;
    std::array<Walk, together> walks;
    std::array<Facet, together> facets;
    std::array<Heights, together> corners;
    std::size_t count = 0;
    for (std::size_t place = 0; count > 0 || place < places.size();) {
        for (; count < together && place < places.size(); ++place) {
            if (!made.grid.IsNear(places[place])) continue;
            const unsigned int middle = made.grid.GetMiddle(places[place]);
            if (middle != none) walks[count++] = {middle, none, 0, place};
        }
        for (std::size_t i = 0; i < count; ++i) {
            facets[i] = made.facets[walks[i].triangle];
            corners[i] = made.heights[walks[i].triangle];
        }
        std::size_t left = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const Walk walk = walks[i];
            const Point2D& p = places[walk.place];
            const unsigned int next = SurelyToward(facets[i], p, walk.triangle);
            if (next == walk.triangle) {
                heights[walk.place] = HeightAt(facets[i], corners[i], p);
            } else if (next == none || walk.steps + 1 == fewSteps) {
                (void)GetHeight(p, heights[walk.place]);
            } else {
                walks[left++] = {next, walk.triangle, walk.steps + 1, walk.place};
            }
        }
        count = left;
    }
}

// Twice the area of the triangle in length, upward.
Vec3D TinSurfacePatch3D::DoubledNormal(unsigned int triangle) const {
    Point3D a;
    Point3D b;
    Point3D c;
    return triangles.GetTriangleAt(triangle, a, b, c) ? (b - a).CrossProduct(c - a) : Vec3D();
}

bool TinSurfacePatch3D::GetNormal(const Point2D& place, Vec3D& normal) const {
    unsigned int triangle = none;
    if (!FindTriangle(place, triangle)) return false;
    const Vec3D doubled = DoubledNormal(triangle);
    normal = doubled / doubled.Length();
    return true;
}

bool TinSurfacePatch3D::GetSlope(const Point2D& place, double& slope, Angle& fall) const {
    unsigned int triangle = none;
    if (!FindTriangle(place, triangle)) return false;
    const Vec3D normal = DoubledNormal(triangle);
    slope = std::hypot(normal.GetX(), normal.GetY()) / normal.GetZ();
    fall = slope > 0.0 ? Angle(std::atan2(normal.GetX(), normal.GetY())) : Angle();
    return true;
}

bool TinSurfacePatch3D::GetNearestPoint(Point3D& point) const {
    if (neighbors.empty() || !detail::IsOfSurface(point)) return false;
    const Locator& made = GetLocator();
    Point3D nearest;
    double squared = std::numeric_limits<double>::infinity();
    constexpr double rounding = 1e-12;  // of squares
    const auto isNear = [&](double away) { return (1.0 - rounding) * away <= squared; };
    // Of a value from others, less what the rounding of places changes.
    const auto squaredGap = [](double value, double low, double high, double margin) {
        const double gap = std::max({low - value, value - high, margin}) - margin;
        return gap * gap;
    };
    const double upright = squaredGap(point.GetZ(), made.lowest, made.highest, made.heightNoise);
    made.grid.ForEachAround(
        point.GetPoint2D(), [&](double away) { return isNear(away + upright); },
        [&](std::uint32_t t) {
            const auto& [p, q, r] = made.facets[t].corner;
            const auto [low, high] = std::minmax({p.x, q.x, r.x});
            const auto [bottom, top] = std::minmax({p.y, q.y, r.y});
            const auto [least, most] = std::minmax({made.heights[t][0], made.heights[t][1], made.heights[t][2]});
            if (!isNear(squaredGap(point.GetX(), low, high, noise) + squaredGap(point.GetY(), bottom, top, noise) +
                        squaredGap(point.GetZ(), least, most, made.heightNoise))) {
                return;
            }
            Point3D a;
            Point3D b;
            Point3D c;
            if (!triangles.GetTriangleAt(t, a, b, c)) return;
            const Point3D candidate = NearestOnTriangle(point, a, b, c);
            const double away = (candidate - point).NormSquared();
            if (!(away < squared)) return;
            squared = away;
            nearest = candidate;
        });
    if (!std::isfinite(squared)) return false;
    point = nearest;
    return true;
}

bool TinSurfacePatch3D::Drape(const LineString2D& chain, std::vector<LineString3D>& draped) const {
    const std::vector<Point2D>& points = chain.GetPoints();
    if (neighbors.empty()) return false;
    std::vector<std::uint32_t> near;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        GetLocator().grid.ForEachNear(std::array{points[i], points[i + 1]},
                                      [&near](std::uint32_t t) { near.push_back(t); });
    }
    std::sort(near.begin(), near.end());
    near.erase(std::unique(near.begin(), near.end()), near.end());
    std::vector<unsigned int> indexes;
    indexes.reserve(3 * near.size());
    for (const std::uint32_t t : near) {
        const auto corners = triangles.GetIndexes().begin() + 3 * static_cast<std::ptrdiff_t>(t);
        indexes.insert(indexes.end(), corners, corners + 3);
    }
    std::vector<unsigned int> names = indexes;
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    std::vector<Point3D> vertices;
    vertices.reserve(names.size());
    for (const unsigned int name : names) vertices.push_back(triangles.GetVertex(name));
    for (unsigned int& index : indexes) {
        index = static_cast<unsigned int>(std::lower_bound(names.begin(), names.end(), index) - names.begin());
    }
    const std::size_t before = draped.size();
    detail::AppendSection(vertices, indexes, points, detail::Upright::Slivers, draped);
    // What the rounding of a place changes at the steepest slope that is not a wall; in steeper triangles it decides
    // the height, which is then that of the place as it is.
    const double heightNoise = 4.0 * noise * (1.0 + steepest);
    unsigned int triangle = none;
    for (std::size_t i = before; i < draped.size(); ++i) {
        for (Point3D& point : draped[i].GetPoints()) {
            double z = 0.0;
            if (GetHeight(point.GetPoint2D(), z, triangle) && std::abs(z - point.GetZ()) > heightNoise) point.SetZ(z);
        }
    }
    return draped.size() > before;
}

template <>
bool Geometry::AreEqual(const TinSurfacePatch3D& a, const TinSurfacePatch3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
