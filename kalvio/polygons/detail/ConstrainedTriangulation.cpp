#include "kalvio/polygons/detail/ConstrainedTriangulation.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace Kalvio::Math::detail {

namespace {

using Index = ConstrainedTriangulation::Index;

// Position along the Hilbert curve through a square of 2^16 x 2^16 cells.
std::uint32_t AlongHilbert(std::uint32_t x, std::uint32_t y) {
    // Per state and quadrant 2 * (x bit) + (y bit): the quadrant's number along the curve, and the state within it.
    static constexpr std::uint8_t number[4][4] = {{0, 1, 3, 2}, {0, 3, 1, 2}, {2, 3, 1, 0}, {2, 1, 3, 0}};
    static constexpr std::uint8_t next[4][4] = {{1, 0, 3, 0}, {0, 2, 1, 1}, {2, 1, 2, 3}, {3, 3, 0, 2}};
    std::uint32_t along = 0;
    unsigned int state = 0;
    for (unsigned int bit = 16; bit-- > 0;) {
        const unsigned int quadrant = 2 * (x >> bit & 1U) + (y >> bit & 1U);
        along = along << 2U | number[state][quadrant];
        state = next[state][quadrant];
    }
    return along;
}

using Key = std::pair<std::uint32_t, Index>;  // along the curve, place

// By the positions, places of one position in their order.
void SortKeys(std::vector<Key>& keys) {
    constexpr std::size_t fewest = 1024;
    if (keys.size() < fewest) {
        std::sort(keys.begin(), keys.end());
        return;
    }
    constexpr unsigned int digitBits = 11;
    std::vector<Key> other(keys.size());
    std::vector<std::size_t> starts(std::size_t{1} << digitBits);
    for (unsigned int shift = 0; shift < 32; shift += digitBits) {
        const auto digitOf = [shift](const Key& key) { return key.first >> shift & ((1U << digitBits) - 1); };
        std::fill(starts.begin(), starts.end(), 0);
        for (const Key& key : keys) ++starts[digitOf(key)];
        std::size_t sum = 0;
        for (std::size_t& start : starts) sum += std::exchange(start, sum);
        for (const Key& key : keys) other[starts[digitOf(key)]++] = key;
        keys.swap(other);
    }
}

// Orders places along a Hilbert curve through their box; those that share a cell, along one of their own.
void SortAlongHilbert(std::span<const PlanePoint> places, std::span<Index> order) {
    PlanePoint low{1.0, 1.0};
    PlanePoint high{-1.0, -1.0};
    for (const Index i : order) {
        low = {std::min(low.x, places[i].x), std::min(low.y, places[i].y)};
        high = {std::max(high.x, places[i].x), std::max(high.y, places[i].y)};
    }
    const double extent = std::max(high.x - low.x, high.y - low.y);
    const double scale = 65535.0 / extent;
    if (!(extent > 0.0) || !std::isfinite(scale)) return;
    std::vector<Key> keys;
    keys.reserve(order.size());
    for (const Index i : order) {
        const auto x = static_cast<std::uint32_t>((places[i].x - low.x) * scale);
        const auto y = static_cast<std::uint32_t>((places[i].y - low.y) * scale);
        keys.emplace_back(AlongHilbert(x, y), i);
    }
    SortKeys(keys);
    constexpr std::size_t many = 16;
    for (std::size_t from = 0, to = 0; from < keys.size(); from = to) {
        for (; to < keys.size() && keys[to].first == keys[from].first; ++to) order[to] = keys[to].second;
        if (to - from > many) SortAlongHilbert(places, order.subspan(from, to - from));
    }
}

// A number without pattern, always the same (the finalizer of SplitMix64: G. Steele, D. Lea, C. Flood, 2014).
std::uint64_t Scrambled(std::uint64_t i) {
    i = (i + 0x9e3779b97f4a7c15U) * 0xbf58476d1ce4e5b9U;
    i = (i ^ i >> 27U) * 0x94d049bb133111ebU;
    return i ^ i >> 31U;
}

}  // namespace

ConstrainedTriangulation::ConstrainedTriangulation(std::span<const PlanePoint> places, double nearLimit)
    : tolerance(nearLimit) {
    SortPoints(places);
    InsertAll();
}

PlanePoint ConstrainedTriangulation::GetPosition(Index vertex) const {
    return {std::ldexp(points[vertex].x, exponent), std::ldexp(points[vertex].y, exponent)};
}

double ConstrainedTriangulation::SquaredDistance(Index a, Index b) const {
    const double dx = points[a].x - points[b].x;
    const double dy = points[a].y - points[b].y;
    return dx * dx + dy * dy;
}

bool ConstrainedTriangulation::IsNear(Index a, Index b) const { return SquaredDistance(a, b) <= tolerance * tolerance; }

// To the square [-1, 1] by a power of two, which rounds nothing. What is nothing beside the largest coordinate becomes
// 0, so that no product of four differences underflows.
PlanePoint ConstrainedTriangulation::Scaled(const PlanePoint& place) const {
    const bool isNormal = std::isnormal(scale);
    const auto scaled = [&](double value) {
        constexpr double nothing = 0x1p-200;
        const double result = isNormal ? value * scale : std::ldexp(value, -exponent);
        return std::abs(result) < nothing ? 0.0 : result;
    };
    return {scaled(place.x), scaled(place.y)};
}

void ConstrainedTriangulation::SortPoints(std::span<const PlanePoint> places) {
    double reach = 0.0;
    for (const PlanePoint& p : places) reach = std::max({reach, std::abs(p.x), std::abs(p.y)});
    std::frexp(reach, &exponent);
    scale = std::ldexp(1.0, -exponent);
    tolerance = std::ldexp(tolerance, -exponent);
    std::vector<PlanePoint> inSquare;
    inSquare.reserve(places.size());
    for (const PlanePoint& p : places) inSquare.push_back(Scaled(p));

    outside = static_cast<Index>(places.size());
    placeOf.resize(places.size());
    vertexOf.resize(places.size());
    for (Index i = 0; i < outside; ++i) placeOf[i] = i;
    SortAlongHilbert(inSquare, placeOf);
    points.reserve(places.size() + 1);
    for (Index i = 0; i < outside; ++i) {
        vertexOf[placeOf[i]] = i;
        points.push_back(inSquare[placeOf[i]]);
    }
    constexpr double nowhere = std::numeric_limits<double>::quiet_NaN();
    points.push_back({nowhere, nowhere});
}

bool ConstrainedTriangulation::Start(Index& a, Index& b, Index& c) {
    a = 0;
    for (b = 1; b < outside && IsNear(a, b);) ++b;
    for (c = b + 1; c < outside && (IsNear(a, c) || IsNear(b, c) || Turn(a, b, c) == 0.0);) ++c;
    if (c >= outside) return false;
    if (Turn(a, b, c) < 0.0) std::swap(a, b);
    triangles.reserve(2 * points.size());
    triangles.push_back({{a, b, c}, {4, 8, 12}, {}});
    triangles.push_back({{b, a, outside}, {0, 14, 9}, {}});
    triangles.push_back({{c, b, outside}, {1, 6, 13}, {}});
    triangles.push_back({{a, c, outside}, {2, 10, 5}, {}});
    return true;
}

void ConstrainedTriangulation::InsertAll() {
    Index a = 0;
    Index b = 0;
    Index c = 0;
    if (!Start(a, b, c)) return;
    // Each round takes part in eight of what is left: none is in a bad order.
    constexpr int roundBits = 3;
    const auto roundOf = [](Index i) { return std::countr_zero(Scrambled(i)) / roundBits; };
    const int rounds = static_cast<int>(std::bit_width(points.size())) / roundBits + 1;
    for (int round = rounds; round >= 0; --round) {
        for (Index i = 0; i < outside; ++i) {
            if (std::min(roundOf(i), rounds) == round && i != a && i != b && i != c) InsertInCavity(i);
        }
    }
    edgeAt.resize(points.size(), none);
    for (Index t = 0; t < triangles.size(); ++t) {
        for (Index i = 0; i < 3; ++i) edgeAt[triangles[t].corner[i]] = 4 * t + i;
    }
}

// A point lies nowhere beside an edge with an end outside: turns are not numbers then.
bool ConstrainedTriangulation::IsHeld(const PlanePoint& p, Index edge) const {
    return !(ExactTurn(points[CornerOf(edge)], points[CornerOf(Next(edge))], p) < 0.0);
}

// A triangle that holds the point, by walking towards it from one inside. The walk ends where circles are empty; should
// required edges lead it in a circle, all triangles are tried.
Index ConstrainedTriangulation::Locate(const PlanePoint& p, Index start) const {
    Index edge = 4 * start;
    for (Index i = 0; i < 3; ++i) {
        if (IsHeld(p, 4 * start + i)) continue;
        edge = TwinOf(4 * start + i);
        break;
    }
    if (edge == 4 * start) return start;
    for (std::size_t steps = 0; steps < triangles.size(); ++steps) {
        if (const Index next = Next(edge); !IsHeld(p, next)) {
            edge = TwinOf(next);
        } else if (const Index before = Before(edge); !IsHeld(p, before)) {
            edge = TwinOf(before);
        } else {
            return edge >> 2U;
        }
    }
    const auto holds = [&](Index t) {
        return IsOutside(triangles[t]) ? IsInCircle(triangles[t], p)
                                       : IsHeld(p, 4 * t) && IsHeld(p, 4 * t + 1) && IsHeld(p, 4 * t + 2);
    };
    Index t = 0;
    while (!holds(t)) ++t;
    return t;
}

// The circle of a triangle outside is the half plane beyond its edge, and the edge without its ends.
bool ConstrainedTriangulation::IsInCircle(const Triangle& triangle, const PlanePoint& p) const {
    const auto& [a, b, c] = triangle.corner;
    if (!IsOutside(triangle)) return ExactInCircle(points[a], points[b], points[c], p) > 0.0;
    const PlanePoint& from = points[a == outside ? b : b == outside ? c : a];
    const PlanePoint& to = points[a == outside ? c : b == outside ? a : b];
    const double turn = ExactTurn(from, to, p);
    if (turn != 0.0) return turn > 0.0;
    const auto isBetween = [](double u, double v, double w) { return std::min(u, w) < v && v < std::max(u, w); };
    return isBetween(from.x, p.x, to.x) || isBetween(from.y, p.y, to.y);
}

void ConstrainedTriangulation::InsertInCavity(Index p) {
    const PlanePoint place = points[p];
    const Index start = Locate(place, last);
    // The cavity, its boundary counter-clockwise: no vertex lies in it, so that no triangle is met twice.
    removed.assign(1, start);
    boundary.clear();
    scratch.assign({4 * start + 2, 4 * start + 1, 4 * start});
    while (!scratch.empty()) {
        const Index edge = scratch.back();
        scratch.pop_back();
        const Index outer = TwinOf(edge);
        if (!IsInCircle(triangles[outer >> 2U], place)) {
            boundary.push_back({outer, CornerOf(edge)});
            continue;
        }
        removed.push_back(outer >> 2U);
        scratch.push_back(Before(outer));
        scratch.push_back(Next(outer));
    }
    // The nearest vertex is one of the boundary.
    double nearest = tolerance * tolerance;
    Index vertex = none;
    for (const BoundaryEdge& edge : boundary) {
        const double dx = points[edge.from].x - place.x;
        const double dy = points[edge.from].y - place.y;
        if (!(dx * dx + dy * dy <= nearest)) continue;
        nearest = dx * dx + dy * dy;
        vertex = edge.from;
    }
    if (vertex != none) {
        vertexOf[placeOf[p]] = vertex;
        return;
    }
    removed.push_back(static_cast<Index>(triangles.size()));
    removed.push_back(static_cast<Index>(triangles.size() + 1));
    triangles.resize(triangles.size() + 2);
    const std::size_t count = boundary.size();
    for (std::size_t i = 0; i < count; ++i) {
        const BoundaryEdge& edge = boundary[i];
        const Index t = 4 * removed[i];
        const std::size_t next = i + 1 < count ? i + 1 : 0;
        const std::size_t before = i > 0 ? i - 1 : count - 1;
        triangles[removed[i]] = {
            {edge.from, boundary[next].from, p}, {edge.outer, 4 * removed[next] + 2, 4 * removed[before] + 1}, {}};
        triangles[edge.outer >> 2U].twin[edge.outer & 3U] = t;
    }
    std::size_t inside = 0;
    while (IsOutside(triangles[removed[inside]])) ++inside;
    last = removed[inside];
}

void ConstrainedTriangulation::Link(Index edge, Index twin, std::uint8_t marks) {
    triangles[edge >> 2U].twin[edge & 3U] = twin;
    triangles[edge >> 2U].marks[edge & 3U] = marks;
    triangles[twin >> 2U].twin[twin & 3U] = edge;
    triangles[twin >> 2U].marks[twin & 3U] = marks;
    edgeAt[CornerOf(edge)] = edge;
}

// Replaces an edge by the other diagonal of its two triangles. @return the one that runs from the corner opposite to it
Index ConstrainedTriangulation::Flip(Index edge) {
    const Index twin = TwinOf(edge);
    const Index t = edge >> 2U;
    const Index u = twin >> 2U;
    const Index a = CornerOf(edge);
    const Index b = CornerOf(twin);
    const Index p = CornerOf(Before(edge));
    const Index d = CornerOf(Before(twin));
    struct Side {
        Index twin;
        std::uint8_t marks;
    };
    const auto beyond = [this](Index side) { return Side{TwinOf(side), MarksOf(side)}; };
    const Side pa = beyond(Before(edge));
    const Side ad = beyond(Next(twin));
    const Side db = beyond(Before(twin));
    const Side bp = beyond(Next(edge));
    triangles[t].corner = {p, a, d};
    triangles[u].corner = {p, d, b};
    Link(4 * t, pa.twin, pa.marks);
    Link(4 * t + 1, ad.twin, ad.marks);
    Link(4 * u + 1, db.twin, db.marks);
    Link(4 * u + 2, bp.twin, bp.marks);
    Link(4 * u, 4 * t + 2, 0);
    return 4 * u;
}

// Inserts the last point anywhere; required edges stay, divided where it lies on one. @return its vertex, which is
// another one when it is near a corner of the triangle that holds it
Index ConstrainedTriangulation::InsertLast(Index start) {
    const auto p = static_cast<Index>(points.size() - 1);
    const Index t = Locate(points[p], start);
    const Triangle old = triangles[t];
    for (const Index corner : old.corner) {
        if (!IsNear(corner, p)) continue;
        points.pop_back();
        return corner;
    }
    edgeAt.push_back(none);
    const std::array<Index, 3> parts{t, static_cast<Index>(triangles.size()), static_cast<Index>(triangles.size() + 1)};
    triangles.resize(triangles.size() + 2);
    for (std::size_t i = 0; i < 3; ++i) triangles[parts[i]].corner = {p, old.corner[i], old.corner[i == 2 ? 0 : i + 1]};
    for (std::size_t i = 0; i < 3; ++i) {
        Link(4 * parts[i] + 1, old.twin[i], old.marks[i]);
        Link(4 * parts[i], 4 * parts[i == 0 ? 2 : i - 1] + 2, 0);
    }
    std::vector<Index>& open = scratch;  // edges opposite to p
    open.assign({4 * parts[0] + 1, 4 * parts[1] + 1, 4 * parts[2] + 1});
    while (!open.empty()) {
        const Index edge = open.back();
        open.pop_back();
        const Index from = CornerOf(edge);
        const Index to = CornerOf(Next(edge));
        const std::uint8_t marks = MarksOf(edge);
        // On the edge p makes a triangle of no area, which must go.
        const bool isOnEdge = Turn(p, from, to) == 0.0;
        if (!isOnEdge && ((marks & required) != 0 || !IsInCircle(triangles[TwinOf(edge) >> 2U], points[p]))) continue;
        const Index diagonal = Flip(edge);
        const Index back = TwinOf(diagonal);  // in the triangle p, from, apex
        if (isOnEdge && marks != 0) {
            divisions.push_back({p, from, to, none, none});
            Mark(Next(back), marks);
            Mark(Before(diagonal), marks);
        }
        open.push_back(Next(diagonal));
        open.push_back(Before(back));
    }
    ForEachSpoke(p, [this, p](Index spoke) { loosened.emplace_back(p, CornerOf(Next(spoke))); });
    return p;
}

// Around the new vertex all circles are empty: those of its triangles were before.
Index ConstrainedTriangulation::Insert(const PlanePoint& place, Index start) {
    points.push_back(Scaled(place));
    const Index vertex = InsertLast(start);
    loosened.clear();
    return vertex;
}

void ConstrainedTriangulation::RestoreCircles() {
    while (!loosened.empty()) {
        const Index edge = FindEdge(loosened.back().first, loosened.back().second);
        loosened.pop_back();
        if (edge == none || (MarksOf(edge) & required) != 0) continue;
        const Index from = CornerOf(edge);
        const Index to = CornerOf(Next(edge));
        const Index left = CornerOf(Before(edge));
        const Index right = CornerOf(Before(TwinOf(edge)));
        if (from == outside || to == outside || left == outside || right == outside) continue;
        if (!(ExactInCircle(points[from], points[to], points[left], points[right]) > 0.0)) continue;
        Flip(edge);
        loosened.insert(loosened.end(), {{from, right}, {right, to}, {to, left}, {left, from}});
    }
}

// Whether the point lies on the segment a -> b within the tolerance, nearer to both of its ends than these are to each
// other: so every division makes edges shorter, and ends.
bool ConstrainedTriangulation::IsBetween(Index point, Index a, Index b) const {
    if (point == outside) return false;
    const double dx = points[b].x - points[a].x;
    const double dy = points[b].y - points[a].y;
    const double px = points[point].x - points[a].x;
    const double py = points[point].y - points[a].y;
    const double along = px * dx + py * dy;
    const double squared = dx * dx + dy * dy;
    if (!(along > 0.0 && along < squared && SquaredDistance(a, point) < squared &&
          SquaredDistance(point, b) < squared)) {
        return false;
    }
    const double across = px * dy - py * dx;
    return across * across <= tolerance * tolerance * squared || Turn(a, b, point) == 0.0;
}

void ConstrainedTriangulation::Mark(Index edge, std::uint8_t marks) {
    const std::uint8_t before = MarksOf(edge);
    const auto turned = static_cast<std::uint8_t>((before ^ marks) | required);
    const Index twin = TwinOf(edge);
    triangles[edge >> 2U].marks[edge & 3U] = turned;
    triangles[twin >> 2U].marks[twin & 3U] = turned;
}

void ConstrainedTriangulation::Unmark(Index edge) {
    const Index twin = TwinOf(edge);
    triangles[edge >> 2U].marks[edge & 3U] = 0;
    triangles[twin >> 2U].marks[twin & 3U] = 0;
    loosened.emplace_back(CornerOf(edge), CornerOf(twin));
}

// The edge a -> b; none where there is no such edge.
Index ConstrainedTriangulation::FindEdge(Index a, Index b) const {
    const Index start = edgeAt[a];
    Index edge = start;
    do {
        if (CornerOf(Next(edge)) == b) return edge;
        edge = TwinOf(Before(edge));
    } while (edge != start);
    return none;
}

bool ConstrainedTriangulation::RequireEdge(Index from, Index to, std::uint8_t marks, bool mayCross) {
    // Every division makes edges shorter; the limit is for tolerances of about the rounding.
    std::size_t left = 64 + 16 * points.size();
    std::vector<Required> open{{from, to, marks}};
    brought.clear();
    while (!open.empty()) {
        const Required edge = open.back();
        open.pop_back();
        if (edge.from != edge.to && (left-- == 0 || !BringIn(edge, mayCross, open))) return false;
        if (open.empty()) {
            RestoreCircles();
            DivideBrought(open);
        }
    }
    return true;
}

bool ConstrainedTriangulation::BringIn(const Required& edge, bool mayCross, std::vector<Required>& open) {
    const Index a = edge.from;
    const Index b = edge.to;
    const auto divideAt = [&](Index point) {
        divisions.push_back({point, a, b, none, none});
        open.push_back({a, point, edge.marks});
        open.push_back({point, b, edge.marks});
    };
    // The edge through which the way to b leaves the triangles at a.
    const Index start = edgeAt[a];
    Index exit = none;
    Index spoke = start;
    do {
        const Index right = CornerOf(Next(spoke));
        const Index left = CornerOf(Before(spoke));
        if (right == b) {
            const Index beyond = CornerOf(Before(TwinOf(spoke)));
            if (IsBetween(left, a, b)) {
                divideAt(left);
            } else if (IsBetween(beyond, a, b)) {
                divideAt(beyond);
            } else {
                Mark(spoke, edge.marks);
                brought.emplace_back(a, b);
            }
            return true;
        }
        if (IsBetween(right, a, b)) {
            divideAt(right);
            return true;
        }
        if (Turn(a, b, right) < 0.0 && Turn(a, b, left) > 0.0) exit = Next(spoke);
        spoke = TwinOf(Before(spoke));
    } while (spoke != start);
    if (exit == none) return false;

    std::deque<std::pair<Index, Index>> crossed;
    for (Index across = exit;;) {
        if ((MarksOf(across) & required) != 0) return MeetRequired(edge, across, mayCross, open);
        const Index twin = TwinOf(across);
        crossed.emplace_back(CornerOf(across), CornerOf(twin));
        const Index apex = CornerOf(Before(twin));
        if (apex == b) break;
        if (IsBetween(apex, a, b)) {
            divideAt(apex);
            return true;
        }
        // Of the two edges beyond, the one between the sides of the way.
        across = Turn(a, b, apex) > 0.0 ? Next(twin) : Before(twin);
    }
    return FlipAway(a, b, crossed, edge.marks);
}

// Where the end of one edge lies on the other, that is divided there; where they cross, both are.
bool ConstrainedTriangulation::MeetRequired(const Required& edge, Index crossed, bool mayCross,
                                            std::vector<Required>& open) {
    const Index a = edge.from;
    const Index b = edge.to;
    const Index c = CornerOf(crossed);
    const Index d = CornerOf(Next(crossed));
    const std::uint8_t marks = MarksOf(crossed);
    Index end = IsBetween(a, c, d) ? a : IsBetween(b, c, d) ? b : none;
    if (end == none) {
        if (!mayCross || points.size() >= most) return false;
        const double ux = points[b].x - points[a].x;
        const double uy = points[b].y - points[a].y;
        const double vx = points[d].x - points[c].x;
        const double vy = points[d].y - points[c].y;
        const double ratio =
            ((points[c].x - points[a].x) * uy - (points[c].y - points[a].y) * ux) / (ux * vy - uy * vx);
        if (!std::isfinite(ratio)) return false;
        const double onIt = std::clamp(ratio, 0.0, 1.0);
        const PlanePoint place{points[c].x + onIt * vx, points[c].y + onIt * vy};
        // The nearest: from a farther one the way could lead back through it.
        double nearest = tolerance;
        for (const Index i : {a, b, c, d}) {
            const double away = std::hypot(points[i].x - place.x, points[i].y - place.y);
            if (!(away <= nearest) || (end != none && away == nearest)) continue;
            nearest = away;
            end = i;
        }
        if (end == none) {
            Unmark(crossed);
            points.push_back(place);
            end = InsertLast(crossed >> 2U);
            const bool isNew = end + 1 == points.size();
            divisions.push_back({end, a, b, isNew ? c : none, isNew ? d : none});
            if (isNew) {
                DivideNear(end, open);
            } else {
                divisions.push_back({end, c, d, none, none});
            }
            open.insert(open.end(), {{c, end, marks}, {end, d, marks}, {a, end, edge.marks}, {end, b, edge.marks}});
            return true;
        }
    }
    if (end == a || end == b) {
        Unmark(crossed);
        divisions.push_back({end, c, d, none, none});
        open.insert(open.end(), {edge, {c, end, marks}, {end, d, marks}});
    } else {
        divisions.push_back({end, a, b, none, none});
        open.insert(open.end(), {{a, end, edge.marks}, {end, b, edge.marks}});
    }
    return true;
}

void ConstrainedTriangulation::DivideRequired(Index edge, Index vertex, std::vector<Required>& open) {
    const Index from = CornerOf(edge);
    const Index to = CornerOf(Next(edge));
    const std::uint8_t marks = MarksOf(edge);
    Unmark(edge);
    divisions.push_back({vertex, from, to, none, none});
    open.insert(open.end(), {{from, vertex, marks}, {vertex, to, marks}});
}

// Divides the required edges on which a new vertex lies within the tolerance, looking for them from triangle to
// triangle through the edges this near.
void ConstrainedTriangulation::DivideNear(Index vertex, std::vector<Required>& open) {
    removed.clear();
    scratch.clear();
    ForEachSpoke(vertex, [this](Index spoke) { scratch.push_back(Next(spoke)); });
    while (!scratch.empty()) {
        const Index edge = scratch.back();
        scratch.pop_back();
        const Index twin = TwinOf(edge);
        if (!IsBetween(vertex, CornerOf(edge), CornerOf(Next(edge))) ||
            std::find(removed.begin(), removed.end(), twin >> 2U) != removed.end()) {
            continue;
        }
        removed.push_back(twin >> 2U);
        scratch.insert(scratch.end(), {Next(twin), Before(twin)});
        if ((MarksOf(edge) & required) != 0) DivideRequired(edge, vertex, open);
    }
}

// Divides the edges brought in at vertices that the way did not meet.
void ConstrainedTriangulation::DivideBrought(std::vector<Required>& open) {
    for (const auto& [a, b] : brought) {
        const Index edge = FindEdge(a, b);
        if (edge == none || (MarksOf(edge) & required) == 0) continue;
        Index vertex = FindBeside(edge);
        if (vertex == none) vertex = FindBeside(TwinOf(edge));
        if (vertex != none) DivideRequired(edge, vertex, open);
    }
    brought.clear();
}

// A vertex left of an edge that lies on it within the tolerance; none if there is none. Where circles are empty, it is
// the corner of the triangle, or hidden by vertices in the circle around the edge: then an edge leads to it from an
// end.
Index ConstrainedTriangulation::FindBeside(Index edge) const {
    const Index a = CornerOf(edge);
    const Index b = CornerOf(Next(edge));
    const auto endOf = [this](Index spoke) { return CornerOf(Next(spoke)); };
    const auto isAhead = [this](Index from, Index vertex, Index to) {
        return vertex != outside && (points[vertex].x - points[from].x) * (points[to].x - points[from].x) +
                                            (points[vertex].y - points[from].y) * (points[to].y - points[from].y) >
                                        0.0;
    };
    for (Index spoke = TwinOf(Before(edge)); isAhead(a, endOf(spoke), b); spoke = TwinOf(Before(spoke))) {
        if (IsBetween(endOf(spoke), a, b)) return endOf(spoke);
    }
    for (Index spoke = Next(edge); isAhead(b, endOf(spoke), a); spoke = Next(TwinOf(spoke))) {
        if (IsBetween(endOf(spoke), a, b)) return endOf(spoke);
    }
    return none;
}

// Flips edges that cross a -> b, whenever their triangles form a convex quadrangle, until it is an edge.
bool ConstrainedTriangulation::FlipAway(Index a, Index b, std::deque<std::pair<Index, Index>>& crossed,
                                        std::uint8_t marks) {
    std::size_t left = 64 + 8 * crossed.size() * crossed.size();
    while (!crossed.empty()) {
        if (left-- == 0) return false;
        const auto [x, y] = crossed.front();
        crossed.pop_front();
        const Index edge = FindEdge(x, y);
        if (edge == none) return false;
        const Index p = CornerOf(Before(edge));
        const Index d = CornerOf(Before(TwinOf(edge)));
        if (!(Turn(p, x, d) > 0.0 && Turn(p, d, y) > 0.0)) {
            crossed.emplace_back(x, y);
            continue;
        }
        Flip(edge);
        const bool isOfAB = p == a || p == b || d == a || d == b;
        if (!isOfAB && (Turn(a, b, p) > 0.0) != (Turn(a, b, d) > 0.0)) {
            crossed.emplace_back(p, d);
        }
        loosened.insert(loosened.end(), {{p, d}, {p, x}, {x, d}, {d, y}, {y, p}});
    }
    const Index edge = FindEdge(a, b);
    if (edge == none) return false;
    Mark(edge, marks);
    brought.emplace_back(a, b);
    return true;
}

std::vector<std::uint8_t> ConstrainedTriangulation::FindEnclosing() const {
    constexpr std::uint8_t unknown = required;
    std::vector<std::uint8_t> enclosing(triangles.size(), unknown);
    if (triangles.empty()) return enclosing;
    std::vector<Index> open{edgeAt[outside] >> 2U};
    enclosing[open.front()] = 0;
    while (!open.empty()) {
        const Index t = open.back();
        open.pop_back();
        for (std::size_t i = 0; i < 3; ++i) {
            const Index next = triangles[t].twin[i] >> 2U;
            if (enclosing[next] != unknown) continue;
            enclosing[next] = enclosing[t] ^ (triangles[t].marks[i] & (ofBorder | ofHole));
            open.push_back(next);
        }
    }
    return enclosing;
}

}  // namespace Kalvio::Math::detail
