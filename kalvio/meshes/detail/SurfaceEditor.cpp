#include "kalvio/meshes/detail/SurfaceEditor.h"

#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"
#include "kalvio/meshes/detail/SurfaceBuilder.h"
#include "kalvio/meshes/detail/Triangles.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

namespace Kalvio::Math::detail {

namespace {

constexpr unsigned int none = TinSurfacePatch3D::noTriangle;

}  // namespace

SurfaceEditor::SurfaceEditor(const Arrays& surface, double placeTolerance)
    : arrays(surface),
      tolerance(placeTolerance),
      triangleAt(surface.vertices.size(), none),
      seenIn(surface.neighbors.size() / 3, 0) {
    for (std::size_t i = 0; i < arrays.indexes.size(); ++i) {
        triangleAt[arrays.indexes[i]] = static_cast<unsigned int>(i / 3);
    }
}

unsigned int SurfaceEditor::Find(unsigned int triangle, unsigned int vertex) const {
    unsigned int corner = 0;
    while (corner < 3 && CornerOf(triangle, corner) != vertex) ++corner;
    return corner;
}

double SurfaceEditor::Turn(unsigned int a, unsigned int b, unsigned int c) const {
    return ExactTurn(InPlan(arrays.vertices[a]), InPlan(arrays.vertices[b]), InPlan(arrays.vertices[c]));
}

SurfaceEditor::Side SurfaceEditor::SideOf(unsigned int triangle, unsigned int corner) const {
    return {CornerOf(triangle, corner + 1), BeyondOf(triangle, corner),
            arrays.isOfChain[3 * std::size_t{triangle} + corner % 3]};
}

void SurfaceEditor::Set(unsigned int triangle, unsigned int first, const Side& a, const Side& b, const Side& c) {
    const std::array<Side, 3> sides{a, b, c};
    unsigned int from = first;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t edge = 3 * std::size_t{triangle} + i;
        arrays.indexes[edge] = from;
        arrays.neighbors[edge] = sides[i].beyond;
        arrays.isOfChain[edge] = sides[i].isOfChain;
        triangleAt[from] = triangle;
        if (sides[i].beyond != none) {
            // One that is yet to be made does not have the edge.
            const unsigned int corner = Find(sides[i].beyond, sides[i].to);
            if (corner < 3 && CornerOf(sides[i].beyond, corner + 1) == from) {
                arrays.neighbors[3 * std::size_t{sides[i].beyond} + corner] = triangle;
            }
        }
        from = sides[i].to;
    }
}

unsigned int SurfaceEditor::Append() {
    arrays.indexes.insert(arrays.indexes.end(), 3, noVertex);
    arrays.neighbors.insert(arrays.neighbors.end(), 3, none);
    arrays.isOfChain.insert(arrays.isOfChain.end(), 3, false);
    seenIn.push_back(0);
    return static_cast<unsigned int>(seenIn.size() - 1);
}

double SurfaceEditor::TurnTo(unsigned int triangle, unsigned int corner, const Point3D& point) const {
    return ExactTurn(InPlan(arrays.vertices[CornerOf(triangle, corner)]),
                     InPlan(arrays.vertices[CornerOf(triangle, corner + 1)]), InPlan(point));
}

bool SurfaceEditor::Holds(unsigned int triangle, const Point3D& point) const {
    for (unsigned int i = 0; i < 3; ++i) {
        if (TurnTo(triangle, i, point) < 0.0) return false;
    }
    return true;
}

// Of the edge from a corner.
bool SurfaceEditor::IsNear(const Point3D& point, unsigned int triangle, unsigned int corner) const {
    return SegmentFoot<Point2D>(point.GetPoint2D(), arrays.vertices[CornerOf(triangle, corner)].GetPoint2D(),
                                arrays.vertices[CornerOf(triangle, corner + 1)].GetPoint2D(), 0.0)
               .squaredDistance <= tolerance * tolerance;
}

// Across edges that part a triangle from the point, to the one that holds it or the border beside it.
unsigned int SurfaceEditor::Walk(const Point3D& point, unsigned int start) const {
    const auto mostSteps = static_cast<std::size_t>(64.0 + 8.0 * std::sqrt(static_cast<double>(seenIn.size())));
    unsigned int t = start;
    for (std::size_t step = 0; step < mostSteps; ++step) {
        unsigned int next = t;
        unsigned int rim = 3;
        for (unsigned int i = 0; i < 3 && next == t; ++i) {
            if (!(TurnTo(t, i, point) < 0.0)) continue;
            if (BeyondOf(t, i) == none) {
                rim = i;
            } else {
                next = BeyondOf(t, i);
            }
        }
        if (next == t) return rim == 3 || IsNear(point, t, rim) ? t : none;
        t = next;
    }
    return none;
}

// By steps, and where they end by a look at all triangles that hang together with the start.
unsigned int SurfaceEditor::Locate(const Point3D& point, unsigned int start) {
    const auto away = [&](unsigned int t) {
        return (arrays.vertices[CornerOf(t, 0)].GetPoint2D() - point.GetPoint2D()).NormSquared();
    };
    unsigned int found = away(last) < away(start) ? Walk(point, last) : none;
    if (found == none) found = Walk(point, start);
    if (found != none) return found;
    ++search;
    queue.assign(1, start);
    seenIn[start] = search;
    for (std::size_t i = 0; i < queue.size(); ++i) {
        if (Holds(queue[i], point)) return queue[i];
        for (unsigned int k = 0; k < 3; ++k) {
            const unsigned int next = BeyondOf(queue[i], k);
            if (next == none && found == none && IsNear(point, queue[i], k)) found = queue[i];
            if (next == none || seenIn[next] == search) continue;
            seenIn[next] = search;
            queue.push_back(next);
        }
    }
    return found;
}

// Calls visit(triangle, corner) for the edges within the tolerance of a point in or at a triangle.
template <class Visit>
void SurfaceEditor::ForEachAround(unsigned int triangle, const Point3D& point, Visit&& visit) {
    ++search;
    queue.assign(1, triangle);
    seenIn[triangle] = search;
    for (std::size_t i = 0; i < queue.size(); ++i) {
        for (unsigned int k = 0; k < 3; ++k) {
            if (!IsNear(point, queue[i], k)) continue;
            visit(queue[i], k);
            const unsigned int next = BeyondOf(queue[i], k);
            if (next == none || seenIn[next] == search) continue;
            seenIn[next] = search;
            queue.push_back(next);
        }
    }
}

unsigned int SurfaceEditor::Insert(const Point3D& point, unsigned int start) {
    const unsigned int t = Locate(point, start);
    if (t == none) return noVertex;
    unsigned int nearest = noVertex;
    double least = tolerance * tolerance;
    std::array<unsigned int, 2> divided{none, 0};
    bool isTwice = false;
    ForEachAround(t, point, [&](unsigned int triangle, unsigned int corner) {
        const Point2D place = point.GetPoint2D();
        const Point2D a = arrays.vertices[CornerOf(triangle, corner)].GetPoint2D();
        const Point2D b = arrays.vertices[CornerOf(triangle, corner + 1)].GetPoint2D();
        for (unsigned int k = corner; k < corner + 2; ++k) {
            const double squared = ((k == corner ? a : b) - place).NormSquared();
            if (!(squared < least) && !(nearest == noVertex && squared == least)) continue;
            least = squared;
            nearest = CornerOf(triangle, k);
        }
        const Side side = SideOf(triangle, corner);
        if (side.beyond != none && !side.isOfChain) return;
        const double length = (b - a).NormSquared();
        if (!((place - a).NormSquared() < length) || !((place - b).NormSquared() < length)) return;
        const bool isSame = divided[0] != none && side.beyond == divided[0] &&
                            CornerOf(divided[0], divided[1]) == side.to &&
                            CornerOf(divided[0], divided[1] + 1) == CornerOf(triangle, corner);
        isTwice = isTwice || (divided[0] != none && !isSame);
        if (divided[0] == none) divided = {triangle, corner};
    });
    if (nearest != noVertex) return nearest;
    if (isTwice) return noVertex;
    if (divided[0] == none) {
        if (!Holds(t, point)) return noVertex;
        for (unsigned int i = 0; i < 3; ++i) {
            if (TurnTo(t, i, point) == 0.0) divided = {t, i};
        }
    }
    const auto vertex = static_cast<unsigned int>(arrays.vertices.size());
    arrays.vertices.push_back(point);
    triangleAt.push_back(none);
    if (divided[0] == none) {
        SplitTriangle(t, vertex);
    } else if (!SplitEdge(divided[0], divided[1], vertex)) {
        arrays.vertices.pop_back();
        triangleAt.pop_back();
        return noVertex;
    }
    RestoreCircles();
    last = triangleAt[vertex];
    return vertex;
}

void SurfaceEditor::SplitTriangle(unsigned int triangle, unsigned int vertex) {
    const unsigned int a = CornerOf(triangle, 0);
    const std::array<Side, 3> sides{SideOf(triangle, 0), SideOf(triangle, 1), SideOf(triangle, 2)};
    const unsigned int b = sides[0].to;
    const unsigned int c = sides[1].to;
    const unsigned int second = Append();
    const unsigned int third = Append();
    Set(triangle, a, sides[0], {vertex, second, false}, {a, third, false});
    Set(second, b, sides[1], {vertex, third, false}, {b, triangle, false});
    Set(third, c, sides[2], {vertex, triangle, false}, {c, second, false});
    loosened.assign({{triangle, a, b}, {second, b, c}, {third, c, a}});
}

// The halves of the edge are of its chain. Beside the edge, circles through the vertex may hold its ends.
// @return false, nothing changed, where the vertex is so far beside the edge that a triangle would turn over
bool SurfaceEditor::SplitEdge(unsigned int triangle, unsigned int corner, unsigned int vertex) {
    const unsigned int a = CornerOf(triangle, corner);
    const Side ab = SideOf(triangle, corner);
    const Side bc = SideOf(triangle, corner + 1);
    const Side ca = SideOf(triangle, corner + 2);
    const unsigned int b = ab.to;
    const unsigned int c = bc.to;
    if (!(Turn(a, vertex, c) > 0.0) || !(Turn(vertex, b, c) > 0.0)) return false;
    const unsigned int other = ab.beyond;
    if (other == none) {
        const unsigned int second = Append();
        Set(triangle, a, {vertex, none, ab.isOfChain}, {c, second, false}, ca);
        Set(second, vertex, {b, none, ab.isOfChain}, bc, {vertex, triangle, false});
        loosened.assign({{triangle, c, a}, {second, b, c}, {triangle, vertex, c}});
        return true;
    }
    const unsigned int corner2 = Find(other, b);
    const Side ad = SideOf(other, corner2 + 1);
    const Side db = SideOf(other, corner2 + 2);
    const unsigned int d = ad.to;
    if (!(Turn(vertex, a, d) > 0.0) || !(Turn(b, vertex, d) > 0.0)) return false;
    const unsigned int second = Append();
    const unsigned int third = Append();
    Set(triangle, a, {vertex, other, ab.isOfChain}, {c, second, false}, ca);
    Set(second, vertex, {b, third, ab.isOfChain}, bc, {vertex, triangle, false});
    Set(other, vertex, {a, triangle, ab.isOfChain}, ad, {vertex, third, false});
    Set(third, b, {vertex, second, ab.isOfChain}, {d, other, false}, db);
    loosened.assign(
        {{triangle, c, a}, {second, b, c}, {other, a, d}, {third, d, b}, {triangle, vertex, c}, {third, vertex, d}});
    return true;
}

// Flips until no circle of a triangle holds the corner beyond an edge that may go (C. L. Lawson, 1977). An entry whose
// edge is no more in its triangle was flipped, or follows again.
void SurfaceEditor::RestoreCircles() {
    while (!loosened.empty()) {
        const Edge edge = loosened.back();
        loosened.pop_back();
        const unsigned int t = edge.triangle;
        const unsigned int corner = Find(t, edge.from);
        if (corner == 3 || CornerOf(t, corner + 1) != edge.to) continue;
        const unsigned int other = BeyondOf(t, corner);
        if (other == none || SideOf(t, corner).isOfChain) continue;
        const unsigned int corner2 = Find(other, edge.to);
        const unsigned int c = CornerOf(t, corner + 2);
        const unsigned int d = CornerOf(other, corner2 + 2);
        if (!(ExactInCircle(InPlan(arrays.vertices[edge.from]), InPlan(arrays.vertices[edge.to]),
                            InPlan(arrays.vertices[c]), InPlan(arrays.vertices[d])) > 0.0)) {
            continue;
        }
        const Side bc = SideOf(t, corner + 1);
        const Side ca = SideOf(t, corner + 2);
        const Side ad = SideOf(other, corner2 + 1);
        const Side db = SideOf(other, corner2 + 2);
        Set(t, c, ca, ad, {c, other, false});
        Set(other, d, db, bc, {d, t, false});
        loosened.insert(loosened.end(),
                        {{t, c, edge.from}, {t, edge.from, d}, {other, d, edge.to}, {other, edge.to, c}});
    }
}

std::vector<bool> SurfaceEditor::FindFree(const std::vector<unsigned int>& asked) const {
    std::vector<unsigned int> counts(arrays.vertices.size(), 0);
    for (const unsigned int index : arrays.indexes) ++counts[index];
    std::vector<bool> isFree;
    for (const unsigned int vertex : asked) {
        const double y = arrays.vertices[vertex].GetY();
        unsigned int count = 0;
        unsigned int rounds = 0;
        unsigned int t = triangleAt[vertex];
        do {
            const unsigned int corner = Find(t, vertex);
            const Side spoke = SideOf(t, corner + 2);
            const bool isUp = arrays.vertices[CornerOf(t, corner + 1)].GetY() < y &&
                              !(arrays.vertices[CornerOf(t, corner + 2)].GetY() < y);
            rounds += isUp ? 1 : 0;
            t = spoke.isOfChain ? none : spoke.beyond;
            ++count;
        } while (t != none && t != triangleAt[vertex]);
        isFree.push_back(t != none && count == counts[vertex] && rounds == 1);
    }
    return isFree;
}

// The ring around the vertex, which sees all of it, is cut ear by ear: a corner between its neighbours goes when it
// turns left there and the vertex is not beyond what then is the edge.
void SurfaceEditor::Remove(unsigned int vertex) {
    struct Corner {
        unsigned int vertex;
        Side side;  // to the next one
    };
    std::vector<Corner> ring;
    std::vector<unsigned int> room;
    unsigned int t = triangleAt[vertex];
    do {
        const unsigned int corner = Find(t, vertex);
        ring.push_back({CornerOf(t, corner + 1), SideOf(t, corner + 1)});
        room.push_back(t);
        t = BeyondOf(t, corner + 2);
    } while (t != room.front());
    loosened.clear();
    const auto take = [&](const Corner& a, const Corner& b, const Side& closing) {
        const unsigned int made = room.back();
        room.pop_back();
        std::fill_n(arrays.indexes.begin() + 3 * static_cast<std::ptrdiff_t>(made), 3, noVertex);
        Set(made, a.vertex, a.side, b.side, closing);
        loosened.insert(loosened.end(),
                        {{made, a.vertex, b.vertex}, {made, b.vertex, b.side.to}, {made, b.side.to, a.vertex}});
        return made;
    };
    for (const unsigned int triangle : room) {
        std::fill_n(arrays.indexes.begin() + 3 * static_cast<std::ptrdiff_t>(triangle), 3, noVertex);
    }
    while (ring.size() > 3) {
        std::vector<Corner> left;
        for (std::size_t i = 0; i < ring.size(); ++i) {
            left.push_back(ring[i]);
            while (left.size() > 2 && left.size() + ring.size() - i > 4) {
                const Corner& a = left[left.size() - 3];
                const Corner& b = left[left.size() - 2];
                const unsigned int c = left.back().vertex;
                if (!(Turn(a.vertex, b.vertex, c) > 0.0) || !(Turn(a.vertex, c, vertex) >= 0.0)) break;
                const unsigned int made = take(a, b, {a.vertex, none, false});
                left[left.size() - 3].side = {c, made, false};
                left[left.size() - 2] = left.back();
                left.pop_back();
            }
        }
        std::rotate(left.begin(), left.begin() + 1, left.end());  // ears across the start come next
        ring = std::move(left);
    }
    take(ring[0], ring[1], ring[2].side);
    freed.insert(freed.end(), room.begin(), room.end());
    RestoreCircles();
}

void SurfaceEditor::Compact() {
    std::sort(freed.begin(), freed.end(), std::greater<>());
    for (const unsigned int slot : freed) {
        const auto end = static_cast<unsigned int>(arrays.neighbors.size() / 3 - 1);
        if (slot != end) Set(slot, CornerOf(end, 0), SideOf(end, 0), SideOf(end, 1), SideOf(end, 2));
        arrays.indexes.resize(3 * std::size_t{end});
        arrays.neighbors.resize(3 * std::size_t{end});
        arrays.isOfChain.resize(3 * std::size_t{end});
    }
    freed.clear();
    RemoveUnused(arrays.vertices, arrays.indexes);
}

}  // namespace Kalvio::Math::detail
