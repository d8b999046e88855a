#include "kalvio/meshes/detail/SurfaceBuilder.h"

#include "kalvio/meshes/detail/TriangleEdges.h"
#include "kalvio/meshes/detail/TriangleHeight.h"
#include "kalvio/polygons/LineString3D.h"

#include <algorithm>
#include <array>
#include <queue>

namespace Kalvio::Math::detail {

namespace {

bool Gather(const TinSurfacePatch3D::Ground& ground, std::vector<PlanePoint>& places, std::vector<double>& given) {
    bool areSound = true;
    const auto add = [&](const std::vector<Point3D>& points) {
        for (const Point3D& p : points) {
            areSound = areSound && IsOfSurface(p);
            places.push_back(InPlan(p));
            given.push_back(p.GetZ());
        }
    };
    places.reserve(ground.points.size());
    given.reserve(ground.points.size());
    add(ground.points);
    for (const auto* const chains : {&ground.breaklines, &ground.borders, &ground.holes}) {
        for (const LineString3D& chain : *chains) add(chain.GetPoints());
    }
    return areSound && places.size() <= ConstrainedTriangulation::most;
}

unsigned int NeighborOf(const TinSurfacePatch3D& surface, std::size_t edge) {
    return surface.GetNeighbor(static_cast<unsigned int>(edge / 3), static_cast<unsigned int>(edge % 3));
}

// The edges of a surface that stay, in plan: those of chains, and the border from corner to corner.
class FixedEdges {
public:
    FixedEdges(const TinSurfacePatch3D& surface, const std::vector<bool>& isOfChain)
        : vertices(surface.GetTriangles().GetVertices()), indexes(surface.GetTriangles().GetIndexes()) {
        const std::size_t count = vertices.size();
        std::vector<std::uint8_t> leaving(count), arriving(count);  // border edges, 2 at most
        before.assign(count, noVertex);
        after.assign(count, noVertex);
        isKept.assign(count, false);
        for (std::size_t edge = 0; edge < indexes.size(); ++edge) {
            const unsigned int from = indexes[edge];
            const unsigned int to = indexes[NextInTriangle(edge)];
            if (isOfChain[edge]) isKept[from] = isKept[to] = true;
            const bool isBorder = NeighborOf(surface, edge) == TinSurfacePatch3D::noTriangle;
            if (isOfChain[edge] && (isBorder || from < to)) ofChains.push_back({from, to, isBorder});
            if (!isBorder) continue;
            leaving[from] = static_cast<std::uint8_t>(std::min(leaving[from] + 1, 2));
            arriving[to] = static_cast<std::uint8_t>(std::min(arriving[to] + 1, 2));
            after[from] = to;
            before[to] = from;
        }
        for (std::size_t v = 0; v < count; ++v) {
            if (leaving[v] == 0 && arriving[v] == 0) continue;
            isKept[v] = isKept[v] || leaving[v] != 1 || arriving[v] != 1 ||
                        ExactTurn(InPlan(vertices[before[v]]), InPlan(vertices[v]), InPlan(vertices[after[v]])) != 0.0;
        }
        for (std::size_t edge = 0; edge < indexes.size(); ++edge) {
            const unsigned int from = indexes[edge];
            const bool isBorder = NeighborOf(surface, edge) == TinSurfacePatch3D::noTriangle;
            if (!isBorder || isOfChain[edge] || !isKept[from]) continue;
            unsigned int to = indexes[NextInTriangle(edge)];
            while (!isKept[to]) to = after[to];
            ofRim.push_back({from, to, true});
        }
    }

    bool IsKept(unsigned int vertex) const { return isKept[vertex]; }
    // Where a kept vertex is among the places of a triangulation.
    bool RequireIn(ConstrainedTriangulation& triangulation, const std::vector<unsigned int>& placeOf) const {
        const auto require = [&](const Edge& edge, std::uint8_t marks) {
            return triangulation.RequireEdge(triangulation.GetVertexOf(placeOf[edge.from]),
                                             triangulation.GetVertexOf(placeOf[edge.to]), marks, false);
        };
        constexpr std::uint8_t border = ConstrainedTriangulation::ofBorder;
        constexpr std::uint8_t rim = ConstrainedTriangulation::ofBorder | ConstrainedTriangulation::ofRim;
        return std::all_of(ofChains.begin(), ofChains.end(),
                           [&](const Edge& edge) { return require(edge, edge.isBorder ? border : 0); }) &&
               std::all_of(ofRim.begin(), ofRim.end(), [&](const Edge& edge) { return require(edge, rim); });
    }

private:
    struct Edge {
        unsigned int from;
        unsigned int to;
        bool isBorder;
    };

    const std::vector<Point3D>& vertices;
    const std::vector<unsigned int>& indexes;
    std::vector<unsigned int> before, after;  // along the border
    std::vector<bool> isKept;
    std::vector<Edge> ofChains, ofRim;
};

// Greedy insertion: of the points left out the one farthest from the surface comes in, until none is farther than the
// tolerance. Each waits in the triangle that holds it. (M. Garland, P. S. Heckbert, Fast Polygonal Approximation of
// Terrains and Height Fields, 1995.)
class GreedyInsertion {
public:
    using Index = ConstrainedTriangulation::Index;

    // Of points in the hull. The heights are per vertex, and those of new ones are appended.
    GreedyInsertion(ConstrainedTriangulation& made, std::vector<double>& vertexHeights,
                    const std::vector<Point3D>& left, double heightTolerance)
        : triangulation(made), heights(vertexHeights), points(left), tolerance(heightTolerance), next(left.size()) {
        for (Index v = 0; v < made.GetVertexCount(); ++v) {
            const PlanePoint p = v == made.GetOutside() ? PlanePoint() : made.GetPosition(v);
            corners.push_back({p.x, p.y, heights[v]});
        }
    }

    // @return false where a point has two heights
    bool Run() {
        Resize();
        Index at = 0;
        while (triangulation.IsOutside(at)) ++at;
        for (Index point = 0; point < points.size(); ++point) {
            const Index holder = triangulation.Find(InPlan(points[point]), at);
            if (triangulation.IsOutside(holder)) return false;
            at = holder;
            Put(point, at);
        }
        for (Index t = 0; t < waiting.size(); ++t) Call(t);
        while (!called.empty()) {
            const Candidate candidate = called.top();
            called.pop();
            const Waiting& there = waiting[candidate.triangle];
            if (there.farthest != candidate.point || there.error != candidate.error) continue;
            if (!Insert(candidate)) return false;
        }
        return true;
    }

private:
    static constexpr Index none = ConstrainedTriangulation::none;

    struct Waiting {
        Index first = none;
        Index farthest = none;
        double error = -1.0;
    };
    struct Candidate {
        double error;
        Index point;
        Index triangle;
        bool operator<(const Candidate& other) const {
            return error < other.error || (error == other.error && point > other.point);
        }
    };

    void Resize() { waiting.resize(triangulation.GetTriangles().size()); }

    void Put(Index point, Index triangle) {
        Waiting& there = waiting[triangle];
        next[point] = there.first;
        there.first = point;
        const auto& [a, b, c] = triangulation.GetTriangles()[triangle].corner;
        const Point3D& p = points[point];
        const double error =
            std::abs(p.GetZ() - HeightInTriangle(corners[a], corners[b], corners[c], p.GetX(), p.GetY()));
        if (error > there.error || (error == there.error && point < there.farthest)) {
            there.error = error;
            there.farthest = point;
        }
    }

    void Call(Index triangle) {
        const Waiting& there = waiting[triangle];
        if (there.error > tolerance) called.push({there.error, there.farthest, triangle});
    }

    bool Insert(const Candidate& candidate) {
        const Point3D& p = points[candidate.point];
        const Index vertex = triangulation.Insert(InPlan(p), candidate.triangle);
        if (vertex != corners.size()) return false;
        corners.push_back({p.GetX(), p.GetY(), p.GetZ()});
        heights.push_back(p.GetZ());
        Resize();
        moved.clear();
        around.clear();
        triangulation.ForEachSpoke(vertex, [&](Index spoke) {
            const Index t = spoke >> 2U;
            around.push_back({t, triangulation.GetTriangles()[t].corner[ConstrainedTriangulation::Next(spoke) & 3U]});
            for (Index point = waiting[t].first; point != none; point = next[point]) moved.push_back(point);
            waiting[t] = Waiting();
        });
        for (const Index point : moved) {
            if (point == candidate.point) continue;
            const Index t = FindAround(InPlan(p), InPlan(points[point]));
            if (t == none) return false;
            Put(point, t);
        }
        for (const Wedge& wedge : around) Call(wedge.triangle);
        return true;
    }

    // The triangle around an apex that holds a place in one of them: where the place is left of one side and not left
    // of the next.
    Index FindAround(const PlanePoint& apex, const PlanePoint& place) const {
        const auto turnTo = [&](const Wedge& wedge) {
            return wedge.vertex == triangulation.GetOutside()
                       ? std::numeric_limits<double>::quiet_NaN()
                       : ExactTurn(apex, {corners[wedge.vertex][0], corners[wedge.vertex][1]}, place);
        };
        const double first = turnTo(around.front());
        double turn = first;
        for (std::size_t i = 0; i < around.size(); ++i) {
            const double following = i + 1 < around.size() ? turnTo(around[i + 1]) : first;
            if (turn >= 0.0 && following <= 0.0) return around[i].triangle;
            turn = following;
        }
        return none;
    }

    // A triangle around a vertex, and the end of its side there from which it turns left.
    struct Wedge {
        Index triangle;
        Index vertex;
    };

    ConstrainedTriangulation& triangulation;
    std::vector<double>& heights;
    const std::vector<Point3D>& points;
    double tolerance;
    std::vector<Index> next;       // per point, in its triangle
    std::vector<Waiting> waiting;  // per triangle
    std::vector<std::array<double, 3>> corners;
    std::priority_queue<Candidate> called;
    std::vector<Index> moved;
    std::vector<Wedge> around;
};

}  // namespace

bool SurfaceBuilder::Thin(const TinSurfacePatch3D& surface, const std::vector<bool>& isOfChain,
                          double heightTolerance) {
    hasBorders = hasRings = true;
    const std::vector<Point3D>& vertices = surface.GetTriangles().GetVertices();
    const FixedEdges fixed(surface, isOfChain);
    std::vector<PlanePoint> places;
    std::vector<double> given;
    std::vector<Point3D> left;
    std::vector<unsigned int> placeOf(vertices.size(), noVertex);
    for (unsigned int v = 0; v < vertices.size(); ++v) {
        if (!fixed.IsKept(v)) {
            left.push_back(vertices[v]);
            continue;
        }
        placeOf[v] = static_cast<unsigned int>(places.size());
        places.push_back(InPlan(vertices[v]));
        given.push_back(vertices[v].GetZ());
    }
    if (vertices.size() > Triangulation::most) return false;
    triangulation.emplace(places, 0.0);
    if (!triangulation->HasTriangles() || !fixed.RequireIn(*triangulation, placeOf)) return false;
    TakeHeights(given);
    return conflicts.empty() && GreedyInsertion(*triangulation, heights, left, heightTolerance).Run();
}

// What borders enclose without the surface: what no way leads to from outside but over them.
bool SurfaceBuilder::FindHoles(const TinSurfacePatch3D& surface, double largestArea, std::vector<unsigned int>& corners,
                               std::size_t& count) {
    const IndexedTriangleSet3D& set = surface.GetTriangles();
    const std::vector<unsigned int>& indexes = set.GetIndexes();
    std::vector<std::size_t> border;
    std::vector<unsigned int> placeOf(set.GetVertices().size(), noVertex);
    std::vector<unsigned int> vertexAt;  // per place
    std::vector<PlanePoint> places;
    for (std::size_t edge = 0; edge < indexes.size(); ++edge) {
        if (NeighborOf(surface, edge) != TinSurfacePatch3D::noTriangle) continue;
        border.push_back(edge);
        if (placeOf[indexes[edge]] != noVertex) continue;
        placeOf[indexes[edge]] = static_cast<unsigned int>(places.size());
        vertexAt.push_back(indexes[edge]);
        places.push_back(InPlan(set.GetVertex(indexes[edge])));
    }
    if (places.size() > Triangulation::most) return false;
    Triangulation made(places, 0.0);
    if (!made.HasTriangles()) return false;
    for (std::size_t place = 0; place < places.size(); ++place) {
        if (made.GetPlaceOf(made.GetVertexOf(place)) != place) return false;
    }
    for (const std::size_t edge : border) {
        if (!made.RequireEdge(made.GetVertexOf(placeOf[indexes[edge]]),
                              made.GetVertexOf(placeOf[indexes[NextInTriangle(edge)]]), Triangulation::ofBorder,
                              false)) {
            return false;
        }
    }
    const std::vector<Triangulation::Triangle>& all = made.GetTriangles();
    std::vector<std::uint8_t> isDone = made.FindEnclosing();
    std::vector<std::size_t> part;
    const auto flood = [&](std::size_t first) {
        part.assign(1, first);
        isDone[first] = 1;
        for (std::size_t i = 0; i < part.size(); ++i) {
            const Triangulation::Triangle& triangle = all[part[i]];
            for (std::size_t k = 0; k < 3; ++k) {
                const std::size_t next = triangle.twin[k] >> 2U;
                if ((triangle.marks[k] & Triangulation::required) != 0 || isDone[next] != 0) continue;
                isDone[next] = 1;
                part.push_back(next);
            }
        }
    };
    for (Triangulation::Index t = 0; t < all.size(); ++t) {
        if (made.IsOutside(t) && isDone[t] == 0) flood(t);
    }
    for (std::size_t t = 0; t < all.size(); ++t) {
        if (isDone[t] != 0) continue;
        flood(t);
        const std::size_t before = corners.size();
        double doubled = 0.0;
        for (const std::size_t hole : part) {
            for (const Triangulation::Index corner : all[hole].corner) {
                corners.push_back(vertexAt[made.GetPlaceOf(corner)]);
            }
            const unsigned int* const added = corners.data() + corners.size() - 3;
            const Vec2D along = set.GetVertex(added[1]).GetPoint2D() - set.GetVertex(added[0]).GetPoint2D();
            doubled +=
                along.PerpDotProduct(set.GetVertex(added[2]).GetPoint2D() - set.GetVertex(added[0]).GetPoint2D());
        }
        if (0.5 * doubled <= largestArea) {
            ++count;
        } else {
            corners.resize(before);
        }
    }
    return true;
}

bool SurfaceBuilder::Triangulate(const TinSurfacePatch3D::Ground& ground, double userTolerance) {
    tolerance = userTolerance;
    longestRimEdge = ground.longestRimEdge;
    hasBorders = !ground.borders.empty();
    hasRings = hasBorders || !ground.holes.empty();
    std::vector<PlanePoint> places;
    std::vector<double> given;
    if (!Gather(ground, places, given)) return false;
    triangulation.emplace(places, tolerance);
    if (!triangulation->HasTriangles()) return false;
    TakeHeights(given);
    std::size_t first = ground.points.size();
    const auto require = [&](const std::vector<LineString3D>& chains, std::uint8_t marks) {
        for (const LineString3D& chain : chains) {
            if (!Require(first, chain.GetSize(), marks)) return false;
            first += chain.GetSize();
        }
        return true;
    };
    if (!require(ground.breaklines, 0) || !require(ground.borders, Triangulation::ofBorder) ||
        !require(ground.holes, Triangulation::ofHole)) {
        return false;
    }
    TakeDivisions();
    return true;
}

bool SurfaceBuilder::Collect(IndexedTriangleSet3D& set, std::vector<unsigned int>& neighbors,
                             std::vector<bool>& isOfChain) const {
    const std::vector<std::uint8_t> isInside = FindInside();
    const std::vector<Triangulation::Triangle>& all = triangulation->GetTriangles();
    std::vector<unsigned int> numberOf(heights.size(), noVertex);
    std::vector<unsigned int> starts(heights.size() + 1);  // of the triangles by their lowest vertices
    std::size_t count = 0;
    for (std::size_t t = 0; t < all.size(); ++t) {
        if (isInside[t] == 0) continue;
        ++count;
        for (const Triangulation::Index corner : all[t].corner) numberOf[corner] = 0;
        ++starts[*std::min_element(all[t].corner.begin(), all[t].corner.end()) + std::size_t{1}];
    }
    if (count == 0) return false;
    for (std::size_t i = 1; i < starts.size(); ++i) starts[i] += starts[i - 1];
    std::vector<Point3D>& vertices = set.GetVertices();
    for (Triangulation::Index v = 0; v < heights.size(); ++v) {
        if (numberOf[v] == noVertex) continue;
        numberOf[v] = static_cast<unsigned int>(vertices.size());
        vertices.emplace_back(PlaceOf(v), heights[v]);
    }
    std::vector<unsigned int> placeOf(all.size(), TinSurfacePatch3D::noTriangle);
    for (std::size_t t = 0; t < all.size(); ++t) {
        if (isInside[t] != 0) placeOf[t] = starts[*std::min_element(all[t].corner.begin(), all[t].corner.end())]++;
    }
    std::vector<unsigned int>& indexes = set.GetIndexes();
    indexes.resize(3 * count);
    neighbors.resize(3 * count);
    isOfChain.resize(3 * count);
    for (std::size_t t = 0; t < all.size(); ++t) {
        if (isInside[t] == 0) continue;
        for (std::size_t i = 0; i < 3; ++i) {
            indexes[3 * placeOf[t] + i] = numberOf[all[t].corner[i]];
            neighbors[3 * placeOf[t] + i] = placeOf[all[t].twin[i] >> 2U];
            isOfChain[3 * placeOf[t] + i] =
                (all[t].marks[i] & (Triangulation::required | Triangulation::ofRim)) == Triangulation::required;
        }
    }
    return true;
}

Point2D SurfaceBuilder::PlaceOf(Triangulation::Index vertex) const {
    const PlanePoint p = triangulation->GetPosition(vertex);
    return {p.x, p.y};
}

void SurfaceBuilder::Compare(Triangulation::Index vertex, double height) {
    if (std::abs(height - heights[vertex]) > tolerance) {
        conflicts.push_back({Point3D(PlaceOf(vertex), heights[vertex]), height});
    }
}

void SurfaceBuilder::TakeHeights(const std::vector<double>& given) {
    heights.assign(triangulation->GetOutside() + std::size_t{1}, unset);
    for (std::size_t i = 0; i < given.size(); ++i) {
        const Triangulation::Index vertex = triangulation->GetVertexOf(i);
        if (std::isnan(heights[vertex])) {
            heights[vertex] = given[i];
        } else {
            Compare(vertex, given[i]);
        }
    }
}

// Borders and holes are rings.
bool SurfaceBuilder::Require(std::size_t first, std::size_t count, std::uint8_t marks) {
    const std::size_t segments = marks == 0 && count > 0 ? count - 1 : count;
    for (std::size_t i = 0; i < segments; ++i) {
        const Triangulation::Index from = triangulation->GetVertexOf(first + i);
        const Triangulation::Index to = triangulation->GetVertexOf(first + (i + 1) % count);
        if (!triangulation->RequireEdge(from, to, marks, true)) return false;
    }
    return true;
}

double SurfaceBuilder::HeightAlong(Triangulation::Index from, Triangulation::Index to, const Point2D& place) const {
    const Vec2D along = PlaceOf(to) - PlaceOf(from);
    const double share = (place - PlaceOf(from)).DotProduct(along) / along.NormSquared();
    return heights[from] + (heights[to] - heights[from]) * std::clamp(share, 0.0, 1.0);
}

// Of vertices that divide segments: a new one has the height of the segment that was there first.
void SurfaceBuilder::TakeDivisions() {
    for (const Triangulation::Division& division : triangulation->GetDivisions()) {
        heights.resize(std::max<std::size_t>(heights.size(), division.vertex + std::size_t{1}), unset);
        const Point2D place = PlaceOf(division.vertex);
        double& height = heights[division.vertex];
        if (std::isnan(height)) {
            height = division.otherFrom == Triangulation::none
                         ? HeightAlong(division.from, division.to, place)
                         : HeightAlong(division.otherFrom, division.otherTo, place);
        } else if (division.otherFrom != Triangulation::none) {
            Compare(division.vertex, HeightAlong(division.otherFrom, division.otherTo, place));
        }
        Compare(division.vertex, HeightAlong(division.from, division.to, place));
    }
}

std::vector<std::uint8_t> SurfaceBuilder::FindInside() const {
    const std::vector<Triangulation::Triangle>& all = triangulation->GetTriangles();
    std::vector<std::uint8_t> inside =
        hasRings ? triangulation->FindEnclosing() : std::vector<std::uint8_t>(all.size(), 0);
    const Triangulation::Index outside = triangulation->GetOutside();
    const std::uint8_t wanted = hasBorders ? Triangulation::ofBorder : 0;
    for (std::size_t t = 0; t < all.size(); ++t) {
        const auto& [a, b, c] = all[t].corner;
        inside[t] = inside[t] == wanted && a != outside && b != outside && c != outside ? 1 : 0;
    }
    if (longestRimEdge > 0.0) CutRim(inside);
    return inside;
}

void SurfaceBuilder::CutRim(std::vector<std::uint8_t>& inside) const {
    const std::vector<Triangulation::Triangle>& all = triangulation->GetTriangles();
    std::vector<std::size_t> open;
    for (std::size_t t = 0; t < all.size(); ++t) {
        if (inside[t] == 0) open.push_back(t);
    }
    while (!open.empty()) {
        const Triangulation::Triangle& outer = all[open.back()];
        open.pop_back();
        for (std::size_t i = 0; i < 3; ++i) {
            const std::size_t next = outer.twin[i] >> 2U;
            if (inside[next] == 0 || (outer.marks[i] & Triangulation::required) != 0) continue;
            const Point2D from = PlaceOf(outer.corner[i]);
            if (!(from.Distance(PlaceOf(outer.corner[i == 2 ? 0 : i + 1])) > longestRimEdge)) continue;
            inside[next] = 0;
            open.push_back(next);
        }
    }
}

}  // namespace Kalvio::Math::detail
