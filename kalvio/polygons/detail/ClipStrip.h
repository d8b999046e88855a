#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/curves/detail/Chain.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/detail/ConvexRing.h"
#include "kalvio/polygons/detail/PointInRing.h"
#include "kalvio/polygons/detail/Ring.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// Takes an outline that nowhere crosses itself apart where it touches itself: where a corner comes within the distance
/// of another corner or side, both become one place, and what lies between two passages of a place is a ring of its
/// own. Necks and spikes no wider than the distance fall away, as do rings of fewer than three places. n log n.
inline std::vector<std::vector<Point2D>> SplitWhereItTouches(std::vector<Point2D> outline, double distance) {
    struct Passage {
        std::size_t side;
        double parameter;
        std::size_t corner;  // the place is that of this corner
    };
    std::vector<Point2D> points(outline);
    ReduceChain(points, distance, [](std::size_t) {});
    while (points.size() > 1 && !(points.front().Distance(points.back()) > distance)) points.pop_back();
    const std::size_t size = points.size();
    if (size < 3) return {};
    std::vector<Passage> passages;
    std::vector<std::size_t> sameAs(size);  // an earlier corner at the same place, or the corner itself
    std::iota(sameAs.begin(), sameAs.end(), std::size_t{0});
    const auto placeOf = [&sameAs](std::size_t corner) {
        while (sameAs[corner] != corner) corner = sameAs[corner] = sameAs[sameAs[corner]];
        return corner;
    };
    bool touches = false;
    const auto relate = [&](std::size_t corner, std::size_t side) {
        const std::size_t next = side + 1 == size ? 0 : side + 1;
        if (corner == side || corner == next) return;
        const SegmentFoot foot(points[corner], points[side], points[next], 0.0);
        if (!(foot.squaredDistance <= distance * distance)) return;
        touches = true;
        for (const std::size_t end : {side, next}) {
            if (!(points[corner].Distance(points[end]) <= distance)) continue;
            sameAs[placeOf(corner)] = placeOf(end);
            return;
        }
        passages.push_back({side, foot.parameter, corner});
    };
    SegmentBoxes(points, ChainSegments::Closing::Ring).ForEachPair(distance, [&](std::size_t i, std::size_t j) {
        relate(i, j);
        relate(j, i);
        return false;
    });
    std::vector<std::vector<Point2D>> rings;
    if (!touches) {
        rings.push_back(std::move(outline));
        return rings;
    }
    for (std::size_t i = 0; i < size; ++i) passages.push_back({i, 0.0, i});
    std::sort(passages.begin(), passages.end(), [](const Passage& a, const Passage& b) {
        return a.side < b.side || (a.side == b.side && a.parameter < b.parameter);
    });
    std::vector<std::size_t> path;                // places, each once
    std::vector<std::size_t> onPath(size, size);  // index there of a place
    const auto close = [&](std::size_t first) {
        std::vector<Point2D> ring;
        for (std::size_t i = first; i < path.size(); ++i) {
            ring.push_back(points[path[i]]);
            onPath[path[i]] = size;
        }
        path.resize(first);
        if (ring.size() > 2) rings.push_back(std::move(ring));
    };
    for (const Passage& passage : passages) {
        const std::size_t place = placeOf(passage.corner);
        if (onPath[place] < size) close(onPath[place]);
        onPath[place] = path.size();
        path.push_back(place);
    }
    close(0);
    return rings;
}

/// Cuts a valid polygon along a line across an axis (x = level for axis 0, y = level for axis 1) and keeps what lies on
/// one side. A point on the line counts as beyond it, so that pieces which meet in a point of the line come apart.
///
/// The rings are cut into chains that begin and end on the line. Along the line the polygon is entered and left in
/// turn, so the ends, in the order in which they lie just inside, are joined two by two (the line case of K. Weiler, P.
/// Atherton, 1977). Rings that touched may now be parts of one outline, which is taken apart where it touches itself.
class HalfPlaneClip {
public:
    using Ring = std::vector<Point2D>;  // open: the first point is not repeated

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
        const std::size_t known = pieces.size();
        holes.clear();
        ends.clear();
        chains.clear();
        const Fate outer = Cut(shape.outer);
        if (outer == Fate::Beyond) return;
        if (outer == Fate::Whole) pieces.push_back({shape.outer, {}});
        for (const Ring& hole : shape.holes) {
            if (Cut(hole) == Fate::Whole) holes.push_back(hole);
        }
        JoinChains(!(DoubledArea(shape.outer, shape.outer.front()) < 0.0), pieces);
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

    void JoinChains(bool isCounterClockwise, std::vector<Shape>& pieces) {
        std::sort(ends.begin(), ends.end(), [](const End& a, const End& b) {
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
            if (ring.size() < 3) continue;
            const double whole = DoubledArea(ring, ring.front());
            for (Ring& part : SplitWhereItTouches(std::move(ring), touch)) {
                const double area = DoubledArea(part, part.front());
                if (area == 0.0) continue;
                if ((area > 0.0) != isCounterClockwise) std::reverse(part.begin(), part.end());
                if ((area > 0.0) != (whole > 0.0)) {  // a hole that touched the line
                    holes.push_back(std::move(part));
                } else {
                    pieces.push_back({std::move(part), {}});
                }
            }
        }
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
    std::vector<Ring> holes;  // not cut, to be given to the piece around them
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
