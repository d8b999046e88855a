#include "kalvio/areas/detail/BorderNetwork.h"

#include "kalvio/areas/detail/ChainSimplification.h"
#include "kalvio/core/detail/BoxHierarchy.h"
#include "kalvio/polygons/detail/ExactPredicates.h"
#include "kalvio/polygons/detail/Ring.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <set>
#include <unordered_map>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

PlanePoint InPlane(const Point2D& p) { return {p.GetX(), p.GetY()}; }

double Turn(const Point2D& a, const Point2D& b, const Point2D& c) {
    return ExactTurn(InPlane(a), InPlane(b), InPlane(c));
}

bool IsBefore(const Point2D& a, const Point2D& b) {
    return a.GetX() < b.GetX() || (a.GetX() == b.GetX() && a.GetY() < b.GetY());
}

bool IsSame(const Point2D& a, const Point2D& b) { return a.GetX() == b.GetX() && a.GetY() == b.GetY(); }

bool IsOnEitherSide(double a, double b) { return !(a > 0.0 && b > 0.0) && !(a < 0.0 && b < 0.0); }

// Whether two segments have a point in common, but for one end.
bool Meet(const Point2D& a, const Point2D& b, const Point2D& c, const Point2D& d) {
    if (IsSame(a, b) || IsSame(c, d)) return true;  // a loop without extent: its part is to stand for itself
    if (IsSame(a, d) || IsSame(b, c)) return IsSame(a, d) && IsSame(b, c) ? true : Meet(b, a, c, d);
    if (IsSame(b, d) && !IsSame(a, c)) return Meet(b, a, d, c);
    if (IsSame(a, c)) {
        if (IsSame(b, d)) return true;
        const Vec2D u = b - a;
        const Vec2D v = d - c;
        return Turn(a, b, d) == 0.0 && (u.GetX() * v.GetX() > 0.0 || u.GetY() * v.GetY() > 0.0);
    }
    const double atC = Turn(a, b, c);
    const double atD = Turn(a, b, d);
    if (atC == 0.0 && atD == 0.0) return true;  // on one line: their boxes meet
    return IsOnEitherSide(atC, atD) && IsOnEitherSide(Turn(c, d, a), Turn(c, d, b));
}

}  // namespace

/// The segments that stand for the chains now.
struct BorderNetwork::Segments {
    struct Segment {
        const Chain* chain;
        std::size_t from;
        std::size_t to;
    };
    std::vector<Segment> segments;

    std::size_t GetCount() const { return segments.size(); }
    const Point2D& GetStart(std::size_t i) const { return segments[i].chain->points[segments[i].from]; }
    const Point2D& GetEnd(std::size_t i) const { return segments[i].chain->points[segments[i].to]; }
    Extent GetExtent(std::size_t i) const { return GetExtent(i, i + 1); }
    Extent GetExtent(std::size_t from, std::size_t to) const {
        Extent extent;
        for (std::size_t i = from; i < to; ++i) {
            extent.Add(GetStart(i));
            extent.Add(GetEnd(i));
        }
        return extent;
    }
};

/// What lies between such segments and the parts of chains that they stand for.
struct BorderNetwork::Pockets {
    struct Pocket {
        const Segments::Segment* segment;
        Extent extent;
    };
    std::vector<Pocket> pockets;

    std::size_t GetCount() const { return pockets.size(); }
    Extent GetExtent(std::size_t i) const { return pockets[i].extent; }
    Extent GetExtent(std::size_t from, std::size_t to) const {
        Extent extent;
        for (std::size_t i = from; i < to; ++i) extent.Add(pockets[i].extent);
        return extent;
    }
    // By the crossings of the ray towards +x; false for a point of the chain.
    bool IsInside(std::size_t i, const Point2D& p) const {
        const auto& [chain, from, to] = *pockets[i].segment;
        bool isInside = false;
        const Point2D* a = &chain->points[to];
        for (std::size_t k = from; k <= to; ++k) {
            const Point2D* b = &chain->points[k];
            if (IsSame(*b, p)) return false;
            if ((a->GetY() > p.GetY()) != (b->GetY() > p.GetY())) {
                isInside ^= b->GetY() > a->GetY() ? Turn(*a, *b, p) > 0.0 : Turn(*b, *a, p) > 0.0;
            }
            a = b;
        }
        return isInside;
    }
};

/// The triangles of the vertices with their neighbours, for `RemoveSmallTriangles`. A vertex stays where its triangle
/// holds another one: then the new segment could meet what it did not.
class BorderNetwork::Triangles {
public:
    explicit Triangles(BorderNetwork& borderNetwork)
        : network(borderNetwork), isLeft(network.places.size(), true), homes(network.places.size()) {
        for (std::size_t c = 0; c < network.chains.size(); ++c) {
            const Chain& chain = network.chains[c];
            links.emplace_back(chain.vertices.size());
            sizes.push_back(chain.vertices.size());
            for (std::size_t k = 0; k < chain.vertices.size(); ++k) {
                const bool isEnd = k == 0 || k + 1 == chain.vertices.size();
                Home& home = homes[chain.vertices[k]];
                home = isEnd || home.isKnown ? Home{true, c, 0} : Home{true, c, k};
            }
            if (chain.vertices.size() == 2) NoteShort(chain);
        }
        LayGrid();
    }

    std::size_t GetCount() const { return homes.size(); }

    double GetArea(std::size_t vertex) const {
        if (homes[vertex].index == 0) return std::numeric_limits<double>::infinity();
        const auto [a, b] = Neighbours(vertex);
        const Point2D& p = network.places[vertex];
        return 0.5 * std::abs((network.places[a] - p).PerpDotProduct(network.places[b] - p));
    }

    std::span<const std::size_t> Remove(std::size_t vertex) {
        const std::size_t c = homes[vertex].chain;
        const std::size_t k = homes[vertex].index;
        Chain& chain = network.chains[c];
        const auto [a, b] = Neighbours(vertex);
        if (a == b || (chain.IsClosed() && sizes[c] <= 4)) return {};
        const auto pair = std::minmax(chain.vertices.front(), chain.vertices.back());
        if (sizes[c] == 3 && shorts.contains(pair)) return {};
        if (HoldsAnother(a, static_cast<Vertex>(vertex), b)) return {};
        links[c].Remove(k);
        chain.isKept[k] = false;
        isLeft[vertex] = false;
        if (--sizes[c] == 2) NoteShort(chain);
        if (--left * 2 < inGrid) LayGrid();
        changed = {a, b};
        return changed;
    }

private:
    struct Home {
        bool isKnown = false;
        std::size_t chain = 0;
        std::size_t index = 0;  // 0: stays, as an end of a chain, a vertex passed twice or one of no chain
    };
    static constexpr double perCell = 2.0;

    std::pair<Vertex, Vertex> Neighbours(std::size_t vertex) const {
        const Home& home = homes[vertex];
        const std::vector<Vertex>& vertices = network.chains[home.chain].vertices;
        const LinkedChain& linked = links[home.chain];
        return {vertices[linked.Before(home.index)], vertices[linked.After(home.index)]};
    }

    void NoteShort(const Chain& chain) { shorts.insert(std::minmax(chain.vertices.front(), chain.vertices.back())); }

    // Anew when half of what it held is gone, so that cells stay about as full.
    void LayGrid() {
        Extent extent;
        left = 0;
        for (std::size_t i = 0; i < isLeft.size(); ++i) {
            if (!isLeft[i]) continue;
            extent.Add(network.places[i]);
            ++left;
        }
        inGrid = left;
        if (left == 0) return;  // nobody will ask
        origin = {extent.minX, extent.minY};
        const double width = extent.maxX - extent.minX;
        const double height = extent.maxY - extent.minY;
        const double cells = (std::max)(1.0, static_cast<double>(left) / perCell);
        const double longest = (std::max)(width, height);
        cell = (std::max)({std::sqrt(width / cells * height), longest / cells, std::numeric_limits<double>::min()});
        columns = static_cast<std::size_t>(width / cell) + 1;
        rows = static_cast<std::size_t>(height / cell) + 1;
        starts.assign(columns * rows + 1, 0);
        for (std::size_t i = 0; i < isLeft.size(); ++i) {
            if (isLeft[i]) ++starts[CellOf(network.places[i]) + 1];
        }
        for (std::size_t i = 1; i < starts.size(); ++i) starts[i] += starts[i - 1];
        members.resize(left);
        std::vector<std::size_t> next(starts.begin(), starts.end() - 1);
        for (std::size_t i = 0; i < isLeft.size(); ++i) {
            if (isLeft[i]) members[next[CellOf(network.places[i])]++] = static_cast<Vertex>(i);
        }
    }

    std::size_t Column(double x) const {
        return (std::min)(columns - 1, static_cast<std::size_t>((x - origin.GetX()) / cell));
    }
    std::size_t Row(double y) const {
        return (std::min)(rows - 1, static_cast<std::size_t>((y - origin.GetY()) / cell));
    }
    std::size_t CellOf(const Point2D& p) const { return Row(p.GetY()) * columns + Column(p.GetX()); }

    bool HoldsAnother(Vertex a, Vertex b, Vertex c) const {
        const Point2D& p = network.places[a];
        const Point2D& q = network.places[b];
        const Point2D& r = network.places[c];
        Extent extent;
        for (const Point2D* corner : {&p, &q, &r}) extent.Add(*corner);
        for (std::size_t row = Row(extent.minY); row <= Row(extent.maxY); ++row) {
            const std::size_t first = starts[row * columns + Column(extent.minX)];
            const std::size_t last = starts[row * columns + Column(extent.maxX) + 1];
            for (std::size_t i = first; i < last; ++i) {
                const Vertex vertex = members[i];
                if (!isLeft[vertex] || vertex == a || vertex == b || vertex == c) continue;
                const Point2D& o = network.places[vertex];
                if (!(o.GetX() >= extent.minX && o.GetX() <= extent.maxX && o.GetY() >= extent.minY &&
                      o.GetY() <= extent.maxY)) {
                    continue;
                }
                const double pq = Turn(p, q, o), qr = Turn(q, r, o), rp = Turn(r, p, o);
                if (IsOnEitherSide(pq, -qr) && IsOnEitherSide(qr, -rp) && IsOnEitherSide(rp, -pq)) return true;
            }
        }
        return false;
    }

    BorderNetwork& network;
    std::vector<bool> isLeft;  // of a vertex
    std::vector<Home> homes;   // of a vertex
    std::vector<LinkedChain> links;
    std::vector<std::size_t> sizes;              // of the chains now
    std::set<std::pair<Vertex, Vertex>> shorts;  // ends of the chains that are one segment
    std::array<std::size_t, 2> changed{};
    Point2D origin;
    double cell = 1.0;
    std::size_t columns = 1;
    std::size_t rows = 1;
    std::size_t left = 0;
    std::size_t inGrid = 0;
    std::vector<std::size_t> starts;  // in members, of the cells row by row
    std::vector<Vertex> members;
};

BorderNetwork::BorderNetwork(const std::vector<Polygon2D>& areas) {
    std::vector<const std::vector<Point2D>*> given;
    for (const Polygon2D& area : areas) {
        given.push_back(&area.GetPoints());
        for (unsigned int i = 0; i < area.GetNumHoleBoundaries(); ++i) {
            given.push_back(&area.GetHoleBoundary(i).GetPoints());
        }
    }
    Number(given, true);
    for (Ring& ring : rings) {
        std::vector<Vertex> different;
        for (const Corner& corner : ring.corners) different.push_back(corner.vertex);
        std::sort(different.begin(), different.end());
        if (std::unique(different.begin(), different.end()) - different.begin() < 3) ring.corners.clear();
    }
    FindNodes();
    CutIntoChains();
}

BorderNetwork::BorderNetwork(const std::vector<Point2D>& chain) {
    const std::vector<Point2D>* const given[] = {&chain};
    Number(given, false);
    Chain& only = chains.emplace_back();
    for (const Corner& corner : rings.front().corners) {
        only.vertices.push_back(corner.vertex);
        only.points.push_back(places[corner.vertex]);
    }
    only.isKept.assign(only.points.size(), true);
    isNode.assign(places.size(), false);
}

// Equal places get one number.
void BorderNetwork::Number(std::span<const std::vector<Point2D>* const> given, bool areRings) {
    const auto sizeOf = [&](const std::vector<Point2D>& ring) { return areRings ? OpenRingSize(ring) : ring.size(); };
    for (const std::vector<Point2D>* ring : given) {
        places.insert(places.end(), ring->begin(), ring->begin() + static_cast<std::ptrdiff_t>(sizeOf(*ring)));
    }
    std::sort(places.begin(), places.end(), IsBefore);
    places.erase(std::unique(places.begin(), places.end(), IsSame), places.end());
    for (const std::vector<Point2D>* ring : given) {
        std::vector<Corner>& corners = rings.emplace_back().corners;
        for (std::size_t i = 0; i < sizeOf(*ring); ++i) {
            const auto place = std::lower_bound(places.begin(), places.end(), (*ring)[i], IsBefore);
            const auto vertex = static_cast<Vertex>(place - places.begin());
            if (corners.empty() || corners.back().vertex != vertex) corners.push_back({vertex, i});
        }
        while (areRings && corners.size() > 1 && corners.back().vertex == corners.front().vertex) corners.pop_back();
    }
}

// A vertex whose neighbours are not the same in all rings is a node.
void BorderNetwork::FindNodes() {
    constexpr Vertex unknown = ~Vertex{0};
    isNode.assign(places.size(), false);
    std::vector<std::pair<Vertex, Vertex>> neighbours(places.size(), {unknown, unknown});
    for (const Ring& ring : rings) {
        const std::size_t size = ring.corners.size();
        for (std::size_t i = 0; i < size; ++i) {
            const Vertex vertex = ring.corners[i].vertex;
            const std::pair<Vertex, Vertex> both =
                std::minmax(ring.corners[i == 0 ? size - 1 : i - 1].vertex, ring.corners[(i + 1) % size].vertex);
            if (neighbours[vertex].first == unknown) {
                neighbours[vertex] = both;
            } else if (neighbours[vertex] != both) {
                isNode[vertex] = true;
            }
        }
    }
}

void BorderNetwork::CutIntoChains() {
    // A chain is known by its first two vertices: up to the next node there is one way on.
    std::unordered_map<std::uint64_t, std::size_t> known;
    const auto add = [&](Ring& ring, std::size_t first, std::size_t count) {
        const std::size_t size = ring.corners.size();
        const auto at = [&](std::size_t k) { return ring.corners[(first + k) % size].vertex; };
        const bool isReversed = std::pair(at(0), at(1)) > std::pair(at(count), at(count - 1));
        const std::uint64_t start = isReversed ? at(count) : at(0);
        const std::uint64_t second = isReversed ? at(count - 1) : at(1);
        const auto [entry, isNew] = known.try_emplace(start << 32 | second, chains.size());
        ring.uses.push_back({entry->second, isReversed, first});
        if (!isNew) return;
        Chain& chain = chains.emplace_back();
        for (std::size_t k = 0; k <= count; ++k) {
            chain.vertices.push_back(at(isReversed ? count - k : k));
            chain.points.push_back(places[chain.vertices.back()]);
        }
        chain.isKept.assign(chain.points.size(), true);
    };
    for (Ring& ring : rings) {
        const std::size_t size = ring.corners.size();
        if (size == 0) continue;
        const auto isAtNode = [&](const Corner& corner) { return bool{isNode[corner.vertex]}; };
        const auto node = std::find_if(ring.corners.begin(), ring.corners.end(), isAtNode);
        if (node == ring.corners.end()) {
            const auto lowest = std::min_element(ring.corners.begin(), ring.corners.end(),
                                                 [](const Corner& a, const Corner& b) { return a.vertex < b.vertex; });
            add(ring, static_cast<std::size_t>(lowest - ring.corners.begin()), size);
            continue;
        }
        const auto begin = static_cast<std::size_t>(node - ring.corners.begin());
        for (std::size_t first = begin, end = begin + size; first < end;) {
            std::size_t last = first + 1;
            while (!isAtNode(ring.corners[last % size])) ++last;
            add(ring, first % size, last - first);
            first = last;
        }
    }
}

void BorderNetwork::SimplifyByDistance(double tolerance) {
    std::vector<FarthestPoint<Point2D>> searches;
    for (Chain& chain : chains) {
        const std::size_t last = chain.points.size() - 1;
        searches.emplace_back(std::span<const Point2D>(chain.points));
        chain.isKept.assign(last + 1, false);
        chain.isKept.front() = chain.isKept.back() = true;
    }
    const auto split = [&](const Segments::Segment& segment) {
        if (segment.to - segment.from < 2) return false;
        const auto c = static_cast<std::size_t>(segment.chain - chains.data());
        const std::size_t middle = searches[c].Find(segment.from, segment.to).index;
        chains[c].isKept[middle] = true;
        KeepWithin(searches[c], segment.from, middle, tolerance, chains[c].isKept);
        KeepWithin(searches[c], middle, segment.to, tolerance, chains[c].isKept);
        return true;
    };
    for (std::size_t c = 0; c < chains.size(); ++c) {
        const std::size_t last = chains[c].points.size() - 1;
        if (chains[c].IsClosed()) {
            split({&chains[c], 0, last});
        } else {
            KeepWithin(searches[c], 0, last, tolerance, chains[c].isKept);
        }
    }
    // Segments stand for their parts as well as the parts themselves when none meets another one and no point that is
    // kept lies between a segment and its part.
    for (bool isSettled = false; !isSettled;) {
        isSettled = true;
        BoxHierarchy<Segments> all = [this] {
            Segments list;
            for (const Chain& chain : chains) {
                std::size_t from = 0;
                for (std::size_t k = 1; k < chain.points.size(); ++k) {
                    if (!chain.isKept[k]) continue;
                    list.segments.push_back({&chain, from, k});
                    from = k;
                }
            }
            return BoxHierarchy<Segments>(std::move(list));
        }();
        std::vector<bool> isAtFault(all.GetCount(), false);
        const auto reach = [&](std::size_t i) {
            const Segments::Segment& segment = all.segments[i];
            return searches[static_cast<std::size_t>(segment.chain - chains.data())]
                .Find(segment.from, segment.to)
                .squaredDistance;
        };
        all.ForEachPair(0.0, [&](std::size_t i, std::size_t j) {
            const auto canSplit = [&](std::size_t k) { return all.segments[k].to - all.segments[k].from > 1; };
            if (!canSplit(i) && !canSplit(j)) return false;
            if (Meet(all.GetStart(i), all.GetEnd(i), all.GetStart(j), all.GetEnd(j))) {
                isAtFault[reach(i) < reach(j) ? j : i] = true;  // -1 for one that cannot be split
            }
            return false;
        });
        Pockets list;
        for (const Segments::Segment& segment : all.segments) {
            if (segment.to - segment.from < 2) continue;
            Extent extent;
            for (std::size_t k = segment.from; k <= segment.to; ++k) extent.Add(segment.chain->points[k]);
            list.pockets.push_back({&segment, extent});
        }
        const BoxHierarchy<Pockets> pockets(std::move(list));
        for (std::size_t i = 0; i < all.GetCount(); ++i) {
            for (const Point2D* p : {&all.GetStart(i), &all.GetEnd(i)}) {
                Extent at;
                at.Add(*p);
                pockets.ForEachNear(at, 0.0, [&](std::size_t pocket) {
                    const auto s = static_cast<std::size_t>(pockets.pockets[pocket].segment - all.segments.data());
                    if (!isAtFault[s] && pockets.IsInside(pocket, *p)) isAtFault[s] = true;
                    return false;
                });
            }
        }
        for (std::size_t i = 0; i < isAtFault.size(); ++i) {
            if (isAtFault[i] && split(all.segments[i])) isSettled = false;
        }
    }
}

void BorderNetwork::SimplifyByArea(double smallest) {
    Triangles triangles(*this);
    RemoveSmallTriangles(triangles, smallest);
}

std::vector<Point2D> BorderNetwork::ToChain() const {
    const Chain& chain = chains.front();
    std::vector<Point2D> left;
    for (std::size_t k = 0; k < chain.points.size(); ++k) {
        if (chain.isKept[k]) left.push_back(chain.points[k]);
    }
    return left;
}

std::vector<Polygon2D> BorderNetwork::ToAreas(const std::vector<Polygon2D>& areas) const {
    std::vector<Polygon2D> result;
    auto ring = rings.begin();
    for (const Polygon2D& area : areas) {
        Polygon2D& made = result.emplace_back(PointsLeft(area.GetPoints(), *ring++));
        for (unsigned int i = 0; i < area.GetNumHoleBoundaries(); ++i) {
            made.AppendHoleBoundary(LineString2D(PointsLeft(area.GetHoleBoundary(i).GetPoints(), *ring++)));
        }
    }
    return result;
}

std::vector<Point2D> BorderNetwork::PointsLeft(const std::vector<Point2D>& source, const Ring& ring) const {
    if (ring.corners.empty()) return source;
    std::vector<bool> isKept(ring.corners.size(), false);
    for (const Use& use : ring.uses) {
        const Chain& chain = chains[use.chain];
        const std::size_t last = chain.points.size() - 1;
        for (std::size_t k = 0; k <= last; ++k) {
            if (chain.isKept[use.isReversed ? last - k : k]) isKept[(use.first + k) % isKept.size()] = true;
        }
    }
    std::vector<Point2D> left;
    for (std::size_t i = 0; i < isKept.size(); ++i) {
        if (isKept[i]) left.push_back(source[ring.corners[i].position]);
    }
    if (OpenRingSize(source) < source.size()) left.push_back(left.front());
    return left;
}

}  // namespace Kalvio::Math::detail
