#include "kalvio/core/Geometry.h"

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point2DM.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/Lanes.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/polygons/Polygon2D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <list>
#include <vector>

namespace Kalvio::Math {

namespace {

// Plain coordinates: a point object carries a table pointer, and sorting moves it about.
struct Position {
    double GetX() const { return x; }
    double GetY() const { return y; }
    double Distance(const Position& other) const {
        return std::sqrt((x - other.x) * (x - other.x) + (y - other.y) * (y - other.y));
    }

    double x;
    double y;
};

struct Direction {
    double turn;  // about the pivot: grows with the angle
    Position position;
};

bool IsBefore(const Direction& a, const Direction& b) {  // equal turns: whatever the order of the input
    if (a.turn != b.turn) return a.turn < b.turn;
    return a.position.x != b.position.x ? a.position.x < b.position.x : a.position.y < b.position.y;
}

double AngleAbout(const Position& pivot, const Position& p) { return std::atan2(p.y - pivot.y, p.x - pivot.x); }

// Grows with the angle from -2 to 2, by half of it to all of it; not finite where the coordinates are too far apart.
double DiamondAngleAbout(const Position& pivot, const Position& p) {
    const double x = p.x - pivot.x;
    const double y = p.y - pivot.y;
    const double size = std::abs(x) + std::abs(y);
    if (!(size <= detail::largestDouble)) return size;
    const double slope = y / size;
    return x >= 0.0 ? slope : std::copysign(2.0, y) - slope;
}

using detail::Lanes;

struct Axis {
    double x;
    double y;
};
constexpr std::array<Axis, 4> fourAxes{{{1, 0}, {1, 1}, {0, 1}, {-1, 1}}};
constexpr std::array<Axis, 8> eightAxes{{{1, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 1}, {-1, 2}, {-1, 1}, {-2, 1}}};

// The inside of the polygon of the farthest points along each axis, both ways: what lies in it is no corner of the hull
// (S. G. Akl, G. T. Toussaint, 1978). It is shrunk so that a point left out could not have decided a turn within its
// margin either, for corners more than 3e-8 apart.
template <const auto& axes>
class Interior {
public:
    // Any points of the set will do: few of them make the polygon no wrong one, only a smaller one.
    template <class ForEach>
    Interior(const Position& about, ForEach&& forEachPosition) : origin(about) {
        std::array<Position, edges> farthest;
        farthest.fill(about);
        std::array<double, edges / 2> highest{};
        std::array<double, edges / 2> lowest{};
        forEachPosition([&](const Position& p) {
            const double x = p.x - origin.x;
            const double y = p.y - origin.y;
            detail::LaneMask isFarther = Lanes::Repeat(0.0) < Lanes::Repeat(0.0);
            for (std::size_t i = 0; i < axes.size(); i += 2) {  // of most points no axis is the farthest
                const Lanes along = Lanes::Of(axes[i].x, axes[i + 1].x) * Lanes::Repeat(x) +
                                    Lanes::Of(axes[i].y, axes[i + 1].y) * Lanes::Repeat(y);
                isFarther = isFarther | (Lanes::Load(&highest[i]) < along) | (along < Lanes::Load(&lowest[i]));
            }
            if (isFarther.Bits() == 0) return;
            for (std::size_t i = 0; i < axes.size(); ++i) {
                const double along = axes[i].x * x + axes[i].y * y;
                if (along > highest[i]) {
                    highest[i] = along;
                    farthest[i] = p;
                } else if (along < lowest[i]) {
                    lowest[i] = along;
                    farthest[axes.size() + i] = p;
                }
            }
        });
        constexpr double leastExtent = 1.0;
        constexpr double leastDepth = 1.0 / 64.0;  // windingMargin / 3e-8
        const double extent = std::max(highest[0] - lowest[0], highest[axes.size() / 2] - lowest[axes.size() / 2]);
        const double depth = std::max(extent / 1024.0, leastDepth);
        for (std::size_t i = 0; i < edges; ++i) {
            const Position& a = farthest[i];
            const Position& b = farthest[(i + 1) % edges];
            const double length = a.Distance(b);
            reach[i] = std::numeric_limits<double>::infinity();  // an edge of no length bounds nothing
            if (length > 0.0) {
                outX[i] = (b.y - a.y) / length;
                outY[i] = (a.x - b.x) / length;
                reach[i] = outX[i] * (a.x - origin.x) + outY[i] * (a.y - origin.y) - depth;
            }
        }
        if (!(extent >= leastExtent)) reach[0] = -std::numeric_limits<double>::infinity();
        for (const Position& p : farthest) {
            centre.x += (p.x - origin.x) / static_cast<double>(edges);
            centre.y += (p.y - origin.y) / static_cast<double>(edges);
        }
        double radius = reach[0];
        for (std::size_t i = 0; i < edges; ++i) {
            radius = std::min(radius, reach[i] - (outX[i] * centre.x + outY[i] * centre.y));
        }
        if (radius > 0.0) squaredRadius = radius * radius;
    }

    bool Holds(const Position& p) const {
        const double x = p.x - origin.x;
        const double y = p.y - origin.y;
        if ((x - centre.x) * (x - centre.x) + (y - centre.y) * (y - centre.y) < squaredRadius) return true;
        const Lanes lanesX = Lanes::Repeat(x), lanesY = Lanes::Repeat(y);
        const auto areInside = [&](std::size_t i) {
            return Lanes::Load(&outX[i]) * lanesX + Lanes::Load(&outY[i]) * lanesY < Lanes::Load(&reach[i]);
        };
        detail::LaneMask isInside = areInside(0);
        for (std::size_t i = 2; i < edges; i += 2) isInside = isInside & areInside(i);
        return isInside.Bits() == 3U;
    }

private:
    static constexpr std::size_t edges = 2 * axes.size();

    Position origin;
    std::array<double, edges> outX{};  // out of each edge
    std::array<double, edges> outY{};
    std::array<double, edges> reach{};
    Position centre{};  // of a circle inside, relative to the origin
    double squaredRadius = 0.0;
};

// Into as many cells as there are directions, each of which is then sorted on its own: near linear where the turns are
// spread, n log n at worst.
void SortByTurn(std::vector<Direction>& directions) {
    const std::size_t count = directions.size();
    constexpr std::size_t leastCells = 64;
    if (count < leastCells) {
        std::sort(directions.begin(), directions.end(), IsBefore);
        return;
    }
    const auto [low, high] = std::minmax_element(directions.begin(), directions.end(), IsBefore);
    const double from = low->turn;
    const double scale = static_cast<double>(count - 1) / std::max(high->turn - from, detail::numericalZero);
    const auto cellOf = [=](const Direction& d) { return static_cast<std::size_t>((d.turn - from) * scale); };
    std::vector<std::size_t> ends(count + 1);
    for (const Direction& d : directions) ++ends[cellOf(d) + 1];
    for (std::size_t i = 1; i <= count; ++i) ends[i] += ends[i - 1];
    std::vector<Direction> sorted(count);
    for (const Direction& d : directions) sorted[ends[cellOf(d)]++] = d;
    std::size_t first = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (ends[i] - first > 1) {
            std::sort(sorted.begin() + static_cast<std::ptrdiff_t>(first),
                      sorted.begin() + static_cast<std::ptrdiff_t>(ends[i]), IsBefore);
        }
        first = ends[i];
    }
    directions.swap(sorted);
}

// Of directions whose angles differ by less than 1e-10 keeps the farthest. Angles cost much more than turns, and are
// needed only where turns are about as near.
void KeepFarthest(std::vector<Direction>& directions, const Position& pivot) {
    constexpr double nearTurns = 2.0 * detail::numericalZero;
    std::size_t kept = 0;
    for (std::size_t from = 0, to = 0; from < directions.size(); from = to) {
        for (to = from + 1; to < directions.size(); ++to) {
            if (directions[to].turn - directions[to - 1].turn > nearTurns) break;
        }
        if (to - from > 1) {
            for (std::size_t i = from; i < to; ++i) directions[i].turn = AngleAbout(pivot, directions[i].position);
            std::sort(directions.begin() + static_cast<std::ptrdiff_t>(from),
                      directions.begin() + static_cast<std::ptrdiff_t>(to), IsBefore);
        }
        const std::size_t firstKept = kept;
        for (std::size_t i = from; i < to; ++i) {
            const Direction next = directions[i];
            const bool isNew =
                kept == firstKept || !(std::abs(next.turn - directions[kept - 1].turn) < detail::numericalZero);
            if (isNew) {
                directions[kept++] = next;
            } else if (directions[kept - 1].position.Distance(pivot) < next.position.Distance(pivot)) {
                directions[kept - 1] = next;
            }
        }
    }
    directions.resize(kept);
}

// True when a, b and p are a line within the margin of the turn and p is nearer to a than b by more than the standard
// tolerance: the hull has to keep b then.
bool FallsShort(const Position& p, const Position& a, const Position& b) {
    return std::abs(detail::DoubledTurn(a, b, p)) <= 2.0 * detail::windingMargin &&
           p.Distance(a) < b.Distance(a) - detail::standardUserTolerance;
}

// Calls `visit` with every `stride`-th point that is finite.
template <class Points, class Visit>
void ForEachFinite(const Points& points, std::size_t stride, Visit&& visit) {
    std::size_t left = 0;
    for (const auto& point : points) {
        if (left-- != 0) continue;
        left = stride - 1;
        const Position p{point.GetX(), point.GetY()};
        if (std::isfinite(p.x) && std::isfinite(p.y)) visit(p);
    }
}

template <class Points>
void GrahamScan(const Points& points, Polygon2D& hull) {
    std::vector<Point2D> corners;
    const auto first = std::find_if(points.begin(), points.end(),
                                    [](const auto& p) { return std::isfinite(p.GetX()) && std::isfinite(p.GetY()); });
    if (first != points.end()) {
        Position pivot{first->GetX(), first->GetY()};
        std::vector<Direction> directions;
        constexpr std::size_t sampled = 4;  // one in four is enough to tell most of the inside
        const Interior<fourAxes> octagon(pivot, [&](auto&& visit) { ForEachFinite(points, sampled, visit); });
        ForEachFinite(points, 1, [&](const Position& p) {
            const bool isLevel = std::abs(p.y - pivot.y) < detail::numericalZero;
            if (isLevel ? p.x < pivot.x : p.y < pivot.y) pivot = p;
            if (!octagon.Holds(p)) directions.push_back({0.0, p});
        });
        if (directions.size() < points.size() / 2) {  // where the octagon tells little, more edges do not either
            const Interior<eightAxes> finer(pivot, [&](auto&& visit) {
                for (const Direction& d : directions) visit(d.position);
            });
            std::erase_if(directions, [&](const Direction& d) { return finer.Holds(d.position); });
        }
        std::erase_if(directions,
                      [&](const Direction& d) { return d.position.Distance(pivot) < detail::numericalZero; });
        bool areNear = true;
        for (Direction& d : directions) {
            d.turn = DiamondAngleAbout(pivot, d.position);
            areNear = areNear && d.turn <= 2.0;
        }
        if (!areNear) {
            for (Direction& d : directions) d.turn = AngleAbout(pivot, d.position);
        }
        SortByTurn(directions);
        KeepFarthest(directions, pivot);

        std::vector<Position> turns{pivot};
        for (const Direction& next : directions) {
            bool isCorner = true;
            while (isCorner && turns.size() > 1) {
                const Position& before = turns[turns.size() - 2];
                if (detail::ArePointsCCW(before, turns.back(), next.position)) break;
                isCorner = !FallsShort(next.position, before, turns.back());
                if (isCorner) turns.pop_back();
            }
            if (isCorner) turns.push_back(next.position);
        }
        corners.reserve(turns.size());
        for (const Position& p : turns) corners.emplace_back(p.x, p.y);
    }
    hull.Clear();
    hull.AppendPoints(corners);
}

}  // namespace

void Geometry::ConvexHull(const std::vector<Point2D>& points, Polygon2D& hull) { GrahamScan(points, hull); }

void Geometry::ConvexHull(const std::list<Point2D>& points, Polygon2D& hull) { GrahamScan(points, hull); }

void Geometry::ConvexHull(std::vector<Point2DM>& points, Polygon2D& hull) { GrahamScan(points, hull); }

}  // namespace Kalvio::Math
