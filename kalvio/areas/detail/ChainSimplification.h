#pragma once

#include "kalvio/core/Point2D.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <queue>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// Finds the point of a part of a chain that lies farthest from the segment between its ends, in the plane or in space.
/// The points must stay as they are.
///
/// Runs of points have a disc (ball) around them, which rules most of them out. In the plane they also have their
/// convex hull, on which the farthest point from a line is found by halving, so that a search costs about log^2 n
/// however the chain runs (J. Hershberger, J. Snoeyink, Speeding up the Douglas-Peucker line simplification algorithm,
/// 1992, keep one hull and undo; here the hulls of all runs stay, and distances are those from segments).
template <class PointType>
class FarthestPoint {
public:
    struct Answer {
        std::size_t index;
        double squaredDistance;
    };

    explicit FarthestPoint(std::span<const PointType> chain) : points(chain) {
        if (points.size() <= scanned) return;
        std::vector<Run>& leaves = levels.emplace_back();
        for (std::size_t i = 0; i < points.size(); i += leafSize) {
            const std::size_t end = (std::min)(points.size(), i + leafSize);
            for (std::size_t k = i; k < end; ++k) candidates.push_back(k);
            leaves.push_back(MakeRun(Around(points.subspan(i, end - i))));
        }
        while (levels.back().size() > fanOut) {
            std::vector<Run> above;
            const std::span<const Run> below(levels.back());
            for (std::size_t i = 0; i < below.size(); i += fanOut) {
                const auto parts = below.subspan(i, (std::min)(fanOut, below.size() - i));
                for (const Run& run : parts) {
                    candidates.insert(candidates.end(), pool.begin() + run.hull, pool.begin() + run.hullEnd);
                }
                above.push_back(MakeRun(Around(parts)));
            }
            levels.push_back(std::move(above));
        }
    }

    /// Of the points strictly between two, the farthest, one of equals; (from, -1) when there is none.
    Answer Find(std::size_t from, std::size_t to) const {
        const Segment segment(points[from], points[to]);
        Answer best{from, -1.0};
        if (to - from <= scanned) {
            Scan(segment, from + 1, to, best);
        } else {
            const std::size_t top = levels.size() - 1;
            const std::size_t span = SpanOf(top);
            VisitAll(segment, {from + 1, to}, top, (from + 1) / span, (to - 1) / span + 1, best);
        }
        return best;
    }

private:
    static constexpr std::size_t leafSize = 16;
    static constexpr std::size_t fanOut = 4;
    static constexpr std::size_t scanned = 4 * leafSize;  // up to here looking at all is as fast
    static constexpr bool isPlan = std::is_same_v<PointType, Point2D>;

    using VecType = decltype(std::declval<PointType>() - std::declval<PointType>());

    struct Run {
        PointType center;
        double radius;
        std::ptrdiff_t hull;   // in the pool: the lower part of the hull from left to right, both ends included,
        std::ptrdiff_t upper;  // then the upper part
        std::ptrdiff_t hullEnd;
    };
    struct Part {
        std::size_t from;
        std::size_t to;
    };

    struct Segment {
        Segment(const PointType& a, const PointType& b) : start(a), end(b), d(b - a), squared(d.NormSquared()) {}

        double SquaredDistance(const PointType& p) const {
            const VecType u = p - start;
            const double t = u.DotProduct(d);
            if (!(t > 0.0)) return u.NormSquared();
            if (t >= squared) return (p - end).NormSquared();
            return (u - d * (t / squared)).NormSquared();
        }

        const PointType& start;
        const PointType& end;
        VecType d;
        double squared;
    };

    static const PointType& CenterOf(const PointType& p) { return p; }
    static const PointType& CenterOf(const Run& run) { return run.center; }
    static double RadiusOf(const PointType&) { return 0.0; }
    static double RadiusOf(const Run& run) { return run.radius; }

    template <class Item>
    static Run Around(std::span<const Item> items) {
        const PointType& first = CenterOf(items.front());
        const PointType center = first + (CenterOf(items.back()) - first) * 0.5;
        double radius = 0.0;
        for (const Item& item : items) {
            radius = (std::max)(radius, std::sqrt((CenterOf(item) - center).NormSquared()) + RadiusOf(item));
        }
        return {center, radius, 0, 0, 0};
    }

    // Adds the hull of the candidates, and clears them (A. M. Andrew, 1979).
    Run MakeRun(Run run) {
        if constexpr (isPlan) {
            const auto isBefore = [this](std::size_t i, std::size_t k) {
                const PointType &a = points[i], &b = points[k];
                return a.GetX() < b.GetX() || (a.GetX() == b.GetX() && a.GetY() < b.GetY());
            };
            std::sort(candidates.begin(), candidates.end(), isBefore);
            const auto addSide = [&](double sign) {
                const std::size_t first = pool.size();
                for (const std::size_t i : candidates) {
                    while (pool.size() > first + 1) {
                        const PointType& a = points[pool[pool.size() - 2]];
                        const PointType& b = points[pool.back()];
                        if (sign * (b - a).PerpDotProduct(points[i] - a) > 0.0) break;
                        pool.pop_back();
                    }
                    pool.push_back(i);
                }
                return static_cast<std::ptrdiff_t>(first);
            };
            run.hull = addSide(1.0);
            run.upper = addSide(-1.0);
            run.hullEnd = static_cast<std::ptrdiff_t>(pool.size());
        }
        candidates.clear();
        return run;
    }

    // The point of a run that lies farthest in a direction.
    std::size_t Extreme(const Run& run, const VecType& way) const {
        const bool isUpper = way.GetY() > 0.0;
        std::ptrdiff_t low = isUpper ? run.upper : run.hull;
        std::ptrdiff_t high = (isUpper ? run.hullEnd : run.upper) - 1;
        const auto at = [this](std::ptrdiff_t i) { return pool[static_cast<std::size_t>(i)]; };
        while (low < high) {  // the sides of the hull lead farther, then nearer again
            const std::ptrdiff_t middle = low + (high - low) / 2;
            if ((points[at(middle + 1)] - points[at(middle)]).DotProduct(way) > 0.0) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        return at(low);
    }

    // Takes the farthest points of the hull into account.
    // @return whether nothing of the run can lie farther than the best then
    bool IsSettledByHull(const Segment& segment, const Run& run, Answer& best) const {
        if constexpr (isPlan) {
            if (segment.squared == 0.0) return false;
            const VecType across(-segment.d.GetY(), segment.d.GetX());
            double farthest = 0.0;  // from the line, times its length
            for (const VecType& way : {across, -across}) {
                const std::size_t i = Extreme(run, way);
                farthest = (std::max)(farthest, (points[i] - segment.start).DotProduct(way));
                Offer(i, segment, best);
            }
            const std::size_t first = Extreme(run, -segment.d), last = Extreme(run, segment.d);
            const double before = -(points[first] - segment.start).DotProduct(segment.d);
            const double after = (points[last] - segment.end).DotProduct(segment.d);
            const double beyond = (std::max)({before, after, 0.0});
            return !(beyond > 0.0) ||
                   (farthest * farthest + beyond * beyond) * rounding <= best.squaredDistance * segment.squared;
        } else {
            return false;
        }
    }

    std::size_t SpanOf(std::size_t level) const {
        std::size_t span = leafSize;
        for (std::size_t i = 0; i < level; ++i) span *= fanOut;
        return span;
    }

    void Offer(std::size_t i, const Segment& segment, Answer& best) const {
        const double squared = segment.SquaredDistance(points[i]);
        if (squared > best.squaredDistance) best = {i, squared};
    }

    void Scan(const Segment& segment, std::size_t from, std::size_t to, Answer& best) const {
        for (std::size_t i = from; i < to; ++i) Offer(i, segment, best);
    }

    // The runs first ... last of a level, those that reach farthest first.
    void VisitAll(const Segment& segment, const Part& part, std::size_t level, std::size_t first, std::size_t last,
                  Answer& best) const {
        std::pair<double, std::size_t> reaches[fanOut];
        std::size_t count = 0;
        for (std::size_t i = first; i < last; ++i) {
            const Run& run = levels[level][i];
            const double reach = (std::sqrt(segment.SquaredDistance(run.center)) + run.radius) * rounding;
            reaches[count++] = {reach * reach, i};
        }
        std::sort(reaches, reaches + count, std::greater<>());
        for (std::size_t k = 0; k < count && reaches[k].first > best.squaredDistance; ++k) {
            Visit(segment, part, level, reaches[k].second, best);
        }
    }

    void Visit(const Segment& segment, const Part& part, std::size_t level, std::size_t i, Answer& best) const {
        const std::size_t span = SpanOf(level);
        const Part inside{(std::max)(part.from, i * span), (std::min)(part.to, (i + 1) * span)};
        if (level == 0) {
            Scan(segment, inside.from, inside.to, best);
            return;
        }
        const bool isWhole = inside.from == i * span && inside.to == (std::min)(points.size(), (i + 1) * span);
        if (isWhole && IsSettledByHull(segment, levels[level][i], best)) return;
        const std::size_t below = span / fanOut;
        VisitAll(segment, part, level - 1, inside.from / below, (inside.to - 1) / below + 1, best);
    }

    static constexpr double rounding = 1.0 + 64.0 * std::numeric_limits<double>::epsilon();

    std::span<const PointType> points;
    std::vector<std::vector<Run>> levels;
    std::vector<std::size_t> pool;        // the points of the hulls
    std::vector<std::size_t> candidates;  // for the next hull
};

/// Marks the points between two kept ones that must stay for all others to lie within the tolerance of the segment that
/// stands for them.
template <class PointType>
void KeepWithin(const FarthestPoint<PointType>& search, std::size_t from, std::size_t to, double tolerance,
                std::vector<bool>& isKept) {
    std::vector<std::pair<std::size_t, std::size_t>> parts{{from, to}};
    while (!parts.empty()) {
        const auto [start, end] = parts.back();
        parts.pop_back();
        if (end - start < 2) continue;
        const auto farthest = search.Find(start, end);
        if (!(farthest.squaredDistance > tolerance * tolerance)) continue;
        isKept[farthest.index] = true;
        parts.emplace_back(start, farthest.index);
        parts.emplace_back(farthest.index, end);
    }
}

/// The points of a chain that are left, linked.
class LinkedChain {
public:
    explicit LinkedChain(std::size_t size) : links(size) {
        for (std::size_t i = 0; i < size; ++i) links[i] = {i - 1, i + 1};
    }
    std::size_t Before(std::size_t i) const { return links[i].first; }
    std::size_t After(std::size_t i) const { return links[i].second; }
    void Remove(std::size_t i) {
        links[links[i].first].second = links[i].second;
        links[links[i].second].first = links[i].first;
    }

private:
    std::vector<std::pair<std::size_t, std::size_t>> links;
};

/// Takes points away in the order of their triangles. `Triangles` tells `GetCount()`, `GetArea(i)` of a point with its
/// neighbours of now, infinite where it must stay; `Remove(i)` takes it away, unless something stands against it, and
/// answers with the numbers of its neighbours, whose triangles have changed: none when it was not removed.
template <class Triangles>
void RemoveSmallTriangles(Triangles& triangles, double smallest) {
    using Entry = std::pair<double, std::size_t>;
    std::priority_queue<Entry, std::vector<Entry>, std::greater<>> queue;
    std::vector<double> areas(triangles.GetCount(), std::numeric_limits<double>::infinity());
    const auto offer = [&](std::size_t i) {
        areas[i] = triangles.GetArea(i);
        if (areas[i] < smallest) queue.emplace(areas[i], i);
    };
    for (std::size_t i = 0; i < areas.size(); ++i) offer(i);
    while (!queue.empty()) {
        const auto [area, i] = queue.top();
        queue.pop();
        if (area != areas[i]) continue;  // offered again since
        areas[i] = std::numeric_limits<double>::infinity();
        for (const std::size_t neighbour : triangles.Remove(i)) offer(neighbour);
    }
}

}  // namespace Kalvio::Math::detail
