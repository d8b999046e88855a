#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/BoxHierarchy.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/curves/detail/Chain.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/detail/ConvexRing.h"
#include "kalvio/polygons/detail/PointInRing.h"
#include "kalvio/polygons/detail/Ring.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// Sides of rings as items of a hierarchy of boxes: side i runs from corner i to corner next[i].
struct RingSides {
    std::vector<Point2D> corners;
    std::vector<std::size_t> next;

    std::size_t GetCount() const { return corners.size(); }
    Extent GetExtent(std::size_t side) const { return GetExtent(side, side + 1); }
    Extent GetExtent(std::size_t from, std::size_t to) const {
        Extent extent;
        for (std::size_t i = from; i < to; ++i) {
            extent.Add(corners[i]);
            extent.Add(corners[next[i]]);
        }
        return extent;
    }
};

/// Takes rings that nowhere cross, with what they bound on their left, apart where they touch: where a corner comes
/// within the distance of another corner or side, both become one place, and each part of what they bound that hangs
/// together by more than a place gets its own outline. Holes stay rings of their own, clockwise. Necks and spikes no
/// wider than the distance fall away, as do rings of fewer than three places. n log n.
///
/// At a place an outline goes on along the leftmost side that leaves it, which keeps the parts apart; what lies between
/// two passages of a place by the same outline is a hole in it.
class TouchingRings {
public:
    using Ring = std::vector<Point2D>;  // open: the first point is not repeated

    explicit TouchingRings(double touchDistance) : distance(touchDistance) {}

    std::vector<Ring> Split(std::vector<Ring> rings) {
        const BoxHierarchy<RingSides> sides(Reduce(rings));
        if (!Relate(sides)) return rings;
        std::vector<Ring> parts;
        for (std::size_t i = 0; i < rings.size(); ++i) {
            if (!touches[i]) parts.push_back(std::move(rings[i]));
        }
        corners = sides.corners;
        std::stable_sort(passages.begin(), passages.end(), [](const Passage& a, const Passage& b) {
            return a.side < b.side || (a.side == b.side && a.parameter < b.parameter);
        });
        LinkPlaces();
        onPath.assign(corners.size(), none);
        for (std::size_t i = 0; i < links.size(); ++i) {
            if (links[i].isFree) Walk(i, parts);
        }
        return parts;
    }

private:
    static constexpr std::size_t none = ~std::size_t{0};

    struct Passage {
        std::size_t side;
        double parameter;
        std::size_t corner;  // the place is that of this corner
    };
    /// From one place to another.
    struct Link {
        std::size_t from;
        std::size_t to;
        bool isFree;
    };

    RingSides Reduce(const std::vector<Ring>& rings) {
        RingSides sides;
        for (std::size_t i = 0; i < rings.size(); ++i) {
            Ring points(rings[i]);
            ReduceChain(points, distance, [](std::size_t) {});
            while (points.size() > 1 && !(points.front().Distance(points.back()) > distance)) points.pop_back();
            const std::size_t first = sides.corners.size();
            sides.corners.insert(sides.corners.end(), points.begin(), points.end());
            for (std::size_t k = first; k < sides.corners.size(); ++k) sides.next.push_back(k + 1);
            if (!points.empty()) sides.next.back() = first;
            ringOf.resize(sides.corners.size(), i);
            touches.push_back(points.size() < 3);
        }
        sameAs.resize(sides.corners.size());
        std::iota(sameAs.begin(), sameAs.end(), std::size_t{0});
        return sides;
    }

    std::size_t PlaceOf(std::size_t corner) {
        while (sameAs[corner] != corner) corner = sameAs[corner] = sameAs[sameAs[corner]];
        return corner;
    }

    // Whether any ring is to be taken apart.
    bool Relate(const BoxHierarchy<RingSides>& sides) {
        const auto relate = [&](std::size_t corner, std::size_t side) {
            const std::size_t next = sides.next[side];
            if (corner == side || corner == next) return;
            const SegmentFoot foot(sides.corners[corner], sides.corners[side], sides.corners[next], 0.0);
            if (!(foot.squaredDistance <= distance * distance)) return;
            touches[ringOf[corner]] = touches[ringOf[side]] = true;
            for (const std::size_t end : {side, next}) {
                if (!(sides.corners[corner].Distance(sides.corners[end]) <= distance)) continue;
                sameAs[PlaceOf(corner)] = PlaceOf(end);
                return;
            }
            passages.push_back({side, foot.parameter, corner});
        };
        sides.ForEachPair(distance, [&](std::size_t i, std::size_t j) {
            relate(i, j);
            relate(j, i);
            return false;
        });
        for (std::size_t i = 0; i < sides.corners.size(); ++i) {
            if (touches[ringOf[i]]) passages.push_back({i, 0.0, i});
        }
        return std::find(touches.begin(), touches.end(), true) != touches.end();
    }

    // The sides of the rings that touch, from place to place, in the order of where they start; those that run to and
    // fro between two places bound nothing.
    void LinkPlaces() {
        for (std::size_t i = 0, first = 0; i < passages.size(); ++i) {
            const bool isLast = i + 1 == passages.size() || RingAt(i + 1) != RingAt(i);
            const std::size_t from = PlaceOf(passages[i].corner);
            const std::size_t to = PlaceOf(passages[isLast ? first : i + 1].corner);
            if (from != to) links.push_back({from, to, true});
            if (isLast) first = i + 1;
        }
        std::sort(links.begin(), links.end(),
                  [](const Link& a, const Link& b) { return a.from < b.from || (a.from == b.from && a.to < b.to); });
        for (std::size_t i = 0; i < links.size(); ++i) {
            if (!links[i].isFree || !(links[i].from < links[i].to)) continue;
            for (std::size_t k = FirstFrom(links[i].to); k < links.size() && links[k].from == links[i].to; ++k) {
                if (links[k].to != links[i].from || !links[k].isFree) continue;
                links[i].isFree = links[k].isFree = false;
                break;
            }
        }
    }

    std::size_t RingAt(std::size_t passage) const { return ringOf[passages[passage].side]; }

    std::size_t FirstFrom(std::size_t place) const {
        const auto first = std::lower_bound(links.begin(), links.end(), place,
                                            [](const Link& link, std::size_t value) { return link.from < value; });
        return static_cast<std::size_t>(first - links.begin());
    }

    // Of the links that leave the end of this one and are free, the leftmost; none when there is none.
    std::size_t Next(const Link& link) const {
        const Vec2D back = corners[link.from] - corners[link.to];
        std::size_t next = none;
        double smallest = 0.0;
        for (std::size_t i = FirstFrom(link.to); i < links.size() && links[i].from == link.to; ++i) {
            if (!links[i].isFree) continue;
            const Vec2D way = corners[links[i].to] - corners[link.to];
            double turn = std::atan2(way.PerpDotProduct(back), way.DotProduct(back));  // clockwise from the way back
            if (!(turn > 0.0)) turn += twoPi;
            if (next != none && !(turn < smallest)) continue;
            next = i;
            smallest = turn;
        }
        return next;
    }

    // Follows an outline; the rings it passes twice at a place are cut off on the way.
    void Walk(std::size_t first, std::vector<Ring>& parts) {
        const auto close = [&](std::size_t from) {
            Ring ring;
            for (std::size_t i = from; i < path.size(); ++i) {
                ring.push_back(corners[path[i]]);
                onPath[path[i]] = none;
            }
            path.resize(from);
            if (ring.size() > 2) parts.push_back(std::move(ring));
        };
        // The first link stays free to the end, so that the walk is over where it comes next.
        for (std::size_t at = first;;) {
            const std::size_t place = links[at].from;
            if (onPath[place] != none) close(onPath[place]);
            onPath[place] = path.size();
            path.push_back(place);
            if (at != first) links[at].isFree = false;
            const std::size_t next = Next(links[at]);
            if (next == none || next == first) break;
            at = next;
        }
        links[first].isFree = false;
        close(0);
    }

    double distance;
    std::vector<Point2D> corners;
    std::vector<std::size_t> ringOf;  // of a corner
    std::vector<bool> touches;        // of a ring: it comes near itself or another one
    std::vector<std::size_t> sameAs;  // an earlier corner at the same place, or the corner itself
    std::vector<Passage> passages;
    std::vector<Link> links;
    std::vector<std::size_t> path;    // places, each once
    std::vector<std::size_t> onPath;  // index there of a place
};

/// Cuts a valid polygon along a line across an axis (x = level for axis 0, y = level for axis 1) and keeps what lies on
/// one side. A point on the line counts as beyond it, so that pieces which meet in a point of the line come apart.
///
/// The rings are cut into chains that begin and end on the line. Along the line the polygon is entered and left in
/// turn, so the ends, in the order in which they lie just inside, are joined two by two (the line case of K. Weiler, P.
/// Atherton, 1977). Rings that touched may now part what is kept, which is taken apart where they touch.
class HalfPlaneClip {
public:
    using Ring = TouchingRings::Ring;

    /// Outer ring and holes.
    struct Shape {
        Ring outer;
        std::vector<Ring> holes;
    };

    /// @param keptSign       1 keeps what is greater than the level, -1 what is less
    /// @param touchDistance  parts of an outline that come this near touch
    HalfPlaneClip(int acrossAxis, double lineLevel, double keptSign, double touchDistance)
        : axis(acrossAxis), level(lineLevel), sign(keptSign), touch(touchDistance) {}

    /// Appends the pieces, in the direction of the outer ring.
    void Clip(const Shape& shape, std::vector<Shape>& pieces) {
        ends.clear();
        chains.clear();
        const Fate outer = Cut(shape.outer);
        if (outer == Fate::Whole) pieces.push_back(shape);
        if (outer != Fate::Cut) return;
        std::vector<Ring> rings;
        for (const Ring& hole : shape.holes) {
            if (Cut(hole) == Fate::Whole) rings.push_back(Turned(hole, false));
        }
        JoinChains(rings);
        const bool isCounterClockwise = !(DoubledArea(shape.outer, shape.outer.front()) < 0.0);
        const std::size_t known = pieces.size();
        std::vector<Ring> holes;
        for (Ring& ring : TouchingRings(touch).Split(std::move(rings))) {
            const double area = DoubledArea(ring, ring.front());
            if (area > 0.0) {
                pieces.push_back({Turned(std::move(ring), isCounterClockwise), {}});
            } else if (area < 0.0) {
                holes.push_back(Turned(std::move(ring), !isCounterClockwise));
            }
        }
        for (Ring& hole : holes) {
            const auto first = pieces.begin() + static_cast<std::ptrdiff_t>(known);
            const auto holder =
                pieces.end() - first == 1
                    ? first
                    : std::find_if(first, pieces.end(), [&](const Shape& piece) { return Holds(piece.outer, hole); });
            if (holder != pieces.end()) holder->holes.push_back(std::move(hole));
        }
    }

private:
    enum class Fate { Beyond, Whole, Cut };

    // Part of a ring on the kept side; its ends are 2 i and 2 i + 1 for chain i.
    using Chain = Ring;
    struct End {
        double position;  // along the line
        double slope;     // change of position per distance into the kept side
        std::size_t index;
    };

    double Depth(const Point2D& p) const { return sign * (p[axis] - level); }
    bool IsKept(const Point2D& p) const { return Depth(p) > 0.0; }

    Fate Cut(const Ring& ring) {
        const std::size_t size = ring.size();
        std::size_t start = 0;  // an edge into the kept side ends here
        while (start < size && !(IsKept(ring[start]) && !IsKept(ring[start == 0 ? size - 1 : start - 1]))) ++start;
        if (start == size) return size > 0 && IsKept(ring[0]) ? Fate::Whole : Fate::Beyond;
        const auto at = [&](std::size_t i) -> const Point2D& { return ring[(start + i) % size]; };
        for (std::size_t i = 0; i < size;) {
            Chain chain{MeetLine(at(i + size - 1), at(i))};
            for (; IsKept(at(i)); ++i) chain.push_back(at(i));
            chain.push_back(MeetLine(at(i), at(i - 1)));
            chains.push_back(std::move(chain));
            while (i < size && !IsKept(at(i))) ++i;
        }
        return Fate::Cut;
    }

    // The point of the line on the edge between a point beyond it and a kept one, noted as an end of a chain.
    Point2D MeetLine(const Point2D& beyond, const Point2D& kept) {
        const double slope = (kept[1 - axis] - beyond[1 - axis]) / (Depth(kept) - Depth(beyond));
        Point2D meeting = beyond;
        if (Depth(beyond) < 0.0) {
            const double t = Depth(beyond) / (Depth(beyond) - Depth(kept));
            meeting[1 - axis] += t * (kept[1 - axis] - beyond[1 - axis]);
            meeting[axis] = level;
        }
        ends.push_back({meeting[1 - axis], slope, ends.size()});
        return meeting;
    }

    // Appends outlines, counter-clockwise.
    void JoinChains(std::vector<Ring>& rings) {
        std::stable_sort(ends.begin(), ends.end(), [](const End& a, const End& b) {
            return a.position < b.position || (a.position == b.position && a.slope < b.slope);
        });
        std::vector<std::size_t> partner(ends.size());
        for (std::size_t i = 0; i + 1 < ends.size(); i += 2) {
            partner[ends[i].index] = ends[i + 1].index;
            partner[ends[i + 1].index] = ends[i].index;
        }
        std::vector<bool> isUsed(chains.size(), false);
        for (std::size_t first = 0; first < chains.size(); ++first) {
            Ring ring;
            std::size_t entry = 2 * first;
            while (!isUsed[entry / 2]) {
                isUsed[entry / 2] = true;
                Chain& chain = chains[entry / 2];
                if (entry % 2 != 0) std::reverse(chain.begin(), chain.end());
                ring.insert(ring.end(), chain.begin(), chain.end());
                entry = partner[entry ^ 1];
            }
            const auto isSame = [](const Point2D& a, const Point2D& b) {
                return a.GetX() == b.GetX() && a.GetY() == b.GetY();
            };
            ring.erase(std::unique(ring.begin(), ring.end(), isSame), ring.end());
            while (ring.size() > 1 && isSame(ring.front(), ring.back())) ring.pop_back();
            if (ring.size() >= 3) rings.push_back(Turned(std::move(ring), true));
        }
    }

    static Ring Turned(Ring ring, bool toCounterClockwise) {
        const double area = DoubledArea(ring, ring.front());
        if (area != 0.0 && (area > 0.0) != toCounterClockwise) std::reverse(ring.begin(), ring.end());
        return ring;
    }

    // By its first corner that does not touch the outer ring, else by the middle of such a side.
    bool Holds(const Ring& outer, const Ring& hole) const {
        for (const double along : {0.0, 0.5}) {
            for (std::size_t i = 0; i < hole.size(); ++i) {
                const Point2D p = hole[i] + (hole[i + 1 < hole.size() ? i + 1 : 0] - hole[i]) * along;
                const RingSide side = FindRingSideByRay(outer, p, touch);
                if (side != RingSide::Border) return side == RingSide::Inside;
            }
        }
        return false;
    }

    int axis;
    double level;
    double sign;
    double touch;
    std::vector<End> ends;
    std::vector<Chain> chains;
};

/// Appends the pieces of the polygon between two lines across an axis: see `PointInPolygon::PolygonClipHoriStrip`.
inline void ClipStrip(const Polygon2D& polygon, std::vector<Polygon2D>& pieces, int axis, double low, double high,
                      double tolerance) {
    const double t = std::abs(tolerance);
    const double touch = (std::max)(t, CoordinateNoise(polygon.GetPoints()));
    bool isSound = low < high;
    const auto prepare = [&](const std::vector<Point2D>& ring) {
        HalfPlaneClip::Ring open(ring.begin(), ring.begin() + static_cast<std::ptrdiff_t>(OpenRingSize(ring)));
        for (Point2D& p : open) {
            isSound = isSound && std::abs(p.GetX()) < largestCoordinate && std::abs(p.GetY()) < largestCoordinate;
            if (std::abs(p[axis] - low) <= t) {
                p[axis] = low;
            } else if (std::abs(p[axis] - high) <= t) {
                p[axis] = high;
            }
        }
        return open;
    };
    HalfPlaneClip::Shape shape{prepare(polygon.GetPoints()), {}};
    for (unsigned int i = 0; i < polygon.GetNumHoleBoundaries(); ++i) {
        shape.holes.push_back(prepare(polygon.GetHoleBoundary(i).GetPoints()));
    }
    if (!isSound || shape.outer.size() < 3) return;

    std::vector<HalfPlaneClip::Shape> above;
    HalfPlaneClip(axis, low, 1.0, touch).Clip(shape, above);
    std::vector<HalfPlaneClip::Shape> between;
    HalfPlaneClip atHigh(axis, high, -1.0, touch);
    for (const HalfPlaneClip::Shape& piece : above) atHigh.Clip(piece, between);
    for (HalfPlaneClip::Shape& piece : between) {
        Polygon2D& clipped = pieces.emplace_back(std::move(piece.outer));
        for (HalfPlaneClip::Ring& hole : piece.holes) clipped.AppendHoleBoundary(LineString2D(std::move(hole)));
    }
}

}  // namespace Kalvio::Math::detail
