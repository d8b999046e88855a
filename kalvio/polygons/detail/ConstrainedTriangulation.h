#pragma once

#include "kalvio/polygons/detail/ExactTurn.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <random>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// Delaunay triangulation of points in the square [-1, 1] x [-1, 1] with edges that must be in it. About n log n for
/// the points; an edge costs the square of the number of edges it crosses at worst.
///
/// Points are inserted in rounds of growing size, along a snake within each, and edges are flipped until the circles
/// are empty (C. L. Lawson, 1977; N. Amenta, S. Choi, G. Rote, 2003). A required edge is brought in by flipping those
/// that it crosses (S. W. Sloan, 1993). All turns are exact, so that the triangles always cover the plane once.
class ConstrainedTriangulation {
public:
    using Corners = std::array<std::size_t, 3>;

    /// @param distinctPoints  no two of them closer than `nearLimit`
    /// @param nearLimit       a point this near to a required edge lies on it
    ConstrainedTriangulation(std::vector<PlanePoint> distinctPoints, double nearLimit)
        : points(std::move(distinctPoints)), count(points.size()), tolerance(nearLimit) {
        // A triangle around everything, whose corners take part in no result.
        points.push_back({-16.0, -16.0});
        points.push_back({16.0, -16.0});
        points.push_back({0.0, 32.0});
        triangleAt.assign(points.size(), 0);
        triangles.reserve(2 * points.size());
        triangles.push_back({{count, count + 1, count + 2}, {none, none, none}, {}});
        for (const std::size_t point : InsertionOrder()) InsertPoint(point);
    }

    /// Requires the edge between two points. Points on it divide it.
    /// @return false when it crosses another required edge; the triangulation is of no use then
    bool RequireEdge(std::size_t from, std::size_t to) {
        // Every division makes edges shorter; the limit is for tolerances that are not small.
        std::size_t left = 64 + 4 * count;
        std::vector<Required> open{{from, to, 1}};
        while (!open.empty()) {
            const Required required = open.back();
            open.pop_back();
            if (required.from == required.to) continue;
            if (left-- == 0 || !BringIn(required, open)) return false;
        }
        return true;
    }

    /// The triangles, counter-clockwise, from which an odd number of required edges leads out (an edge required twice
    /// counts twice).
    std::vector<Corners> GetEnclosed() {
        std::vector<std::uint8_t> state(triangles.size(), unknown);
        std::vector<std::size_t> open{triangleAt[count]};
        state[open.front()] = 0;
        while (!open.empty()) {
            const std::size_t t = open.back();
            open.pop_back();
            for (std::size_t i = 0; i < 3; ++i) {
                const std::size_t next = triangles[t].beyond[i];
                if (next == none || state[next] != unknown) continue;
                state[next] = state[t] ^ (triangles[t].times[i] & 1U);
                open.push_back(next);
            }
        }
        RestoreCircles(state);
        std::vector<Corners> enclosed;
        for (std::size_t t = 0; t < triangles.size(); ++t) {
            if (state[t] == 1) enclosed.push_back(triangles[t].corner);
        }
        return enclosed;
    }

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    static constexpr std::uint8_t unknown = 2;

    // Edge i lies opposite corner i: from corner i + 1 to corner i + 2.
    struct Triangle {
        Corners corner;
        Corners beyond;                     // the triangle across edge i
        std::array<std::uint8_t, 3> times;  // how often edge i is required: 0, or 1 for odd and 2 for even numbers
    };
    struct Required {
        std::size_t from;
        std::size_t to;
        std::uint8_t times;
    };

    static std::size_t Next(std::size_t i) { return i == 2 ? 0 : i + 1; }
    static std::size_t Before(std::size_t i) { return i == 0 ? 2 : i - 1; }
    static std::size_t IndexOf(const Corners& list, std::size_t value) {
        return list[0] == value ? 0 : list[1] == value ? 1 : 2;
    }
    double Turn(std::size_t a, std::size_t b, std::size_t c) const {
        return ExactTurn(points[a], points[b], points[c]);
    }

    // Random rounds, each twice as large as the one before, so that no order of the input is a bad one.
    std::vector<std::size_t> InsertionOrder() const {
        std::vector<std::size_t> order(count);
        for (std::size_t i = 0; i < count; ++i) order[i] = i;
        std::mt19937_64 random(count);
        for (std::size_t i = count; i > 1; --i) std::swap(order[i - 1], order[random() % i]);
        for (std::size_t to = count; to > 0; to /= 2) {
            const double rows = std::ceil(std::sqrt(static_cast<double>(to - to / 2) / 2.0));
            const auto row = [&](std::size_t i) { return static_cast<std::int64_t>((points[i].y + 1.0) * 0.5 * rows); };
            std::sort(order.begin() + static_cast<std::ptrdiff_t>(to / 2),
                      order.begin() + static_cast<std::ptrdiff_t>(to), [&](std::size_t a, std::size_t b) {
                          if (row(a) != row(b)) return row(a) < row(b);
                          return row(a) % 2 == 0 ? points[a].x < points[b].x : points[b].x < points[a].x;
                      });
        }
        return order;
    }

    // The first corner from which the point lies outside the opposite edge; 3 when the triangle holds the point.
    std::size_t WayOut(const Triangle& triangle, std::size_t point) const {
        std::size_t i = 0;
        while (i < 3 && Turn(triangle.corner[Next(i)], triangle.corner[Before(i)], point) >= 0.0) ++i;
        return i;
    }

    // A triangle that holds the point, by walking towards it from the last one. The walk ends where circles are empty;
    // should rounding have left one that is not, all triangles are tried.
    std::size_t Locate(std::size_t point) const {
        std::size_t t = triangles.size() - 1;
        for (std::size_t steps = 0; steps < triangles.size(); ++steps) {
            const std::size_t i = WayOut(triangles[t], point);
            if (i == 3) return t;
            t = triangles[t].beyond[i];
        }
        for (t = 0; WayOut(triangles[t], point) != 3;) ++t;
        return t;
    }

    void Connect(std::size_t t, std::size_t i, std::size_t next, std::size_t before) {
        triangles[t].beyond[i] = next;
        if (next != none) triangles[next].beyond[IndexOf(triangles[next].beyond, before)] = t;
    }
    void Note(std::size_t t) {
        for (const std::size_t corner : triangles[t].corner) triangleAt[corner] = t;
    }

    void InsertPoint(std::size_t p) {
        const std::size_t t = Locate(p);
        const Triangle old = triangles[t];
        const std::array<std::size_t, 3> parts{t, triangles.size(), triangles.size() + 1};
        triangles.resize(triangles.size() + 2);
        for (std::size_t i = 0; i < 3; ++i) {
            triangles[parts[i]] = {
                {p, old.corner[Next(i)], old.corner[Before(i)]}, {none, parts[Next(i)], parts[Before(i)]}, {}};
            Connect(parts[i], 0, old.beyond[i], t);
            Note(parts[i]);
        }
        std::vector<std::size_t>& open = scratch;
        open.assign(parts.begin(), parts.end());
        while (!open.empty()) {
            const std::size_t part = open.back();
            open.pop_back();
            const Triangle& triangle = triangles[part];
            const std::size_t next = triangle.beyond[0];
            if (next == none) continue;
            const std::size_t apex = triangles[next].corner[IndexOf(triangles[next].beyond, part)];
            // A point on an edge makes a triangle of no area, which must go.
            if (!(Turn(p, triangle.corner[1], triangle.corner[2]) > 0.0) ||
                IsSurelyInCircle(points[p], points[triangle.corner[1]], points[triangle.corner[2]], points[apex])) {
                Flip(part, 0);
                open.push_back(part);
                open.push_back(next);
            }
        }
    }

    // Replaces edge i of t by the other diagonal of the two triangles. Both begin at corner i afterwards.
    void Flip(std::size_t t, std::size_t i) {
        const std::size_t u = triangles[t].beyond[i];
        const std::size_t j = IndexOf(triangles[u].beyond, t);
        const Triangle a = triangles[t];
        const Triangle b = triangles[u];
        const std::size_t p = a.corner[i];
        const std::size_t d = b.corner[j];
        triangles[t] = {{p, a.corner[Next(i)], d}, {none, u, none}, {b.times[Next(j)], 0, a.times[Before(i)]}};
        triangles[u] = {{p, d, a.corner[Before(i)]}, {none, none, t}, {b.times[Before(j)], a.times[Next(i)], 0}};
        // What stays on its side needs no new link back.
        Connect(t, 0, b.beyond[Next(j)], u);
        Connect(t, 2, a.beyond[Before(i)], t);
        Connect(u, 0, b.beyond[Before(j)], u);
        Connect(u, 1, a.beyond[Next(i)], t);
        Note(t);
        Note(u);
    }

    // Whether the point lies on the segment a -> b within the tolerance, between its ends.
    bool IsBetween(std::size_t point, std::size_t a, std::size_t b) const {
        if (point >= count) return false;
        const double dx = points[b].x - points[a].x;
        const double dy = points[b].y - points[a].y;
        const double px = points[point].x - points[a].x;
        const double py = points[point].y - points[a].y;
        const double along = px * dx + py * dy;
        const double squared = dx * dx + dy * dy;
        if (!(along > 0.0 && along < squared)) return false;
        const double across = px * dy - py * dx;
        return across * across <= tolerance * tolerance * squared || Turn(a, b, point) == 0.0;
    }

    void Mark(std::size_t t, std::size_t i, std::uint8_t times) {
        const auto sum = [times](std::uint8_t before) {
            const unsigned int total = static_cast<unsigned int>(before) + times;
            return static_cast<std::uint8_t>(total > 2 ? total - 2 : total);
        };
        Triangle& triangle = triangles[t];
        triangle.times[i] = sum(triangle.times[i]);
        Triangle& other = triangles[triangle.beyond[i]];
        other.times[IndexOf(other.beyond, t)] = triangle.times[i];
    }

    // The triangle with the edge a -> b, counter-clockwise, and the index of that edge; none where there is no such
    // edge.
    std::pair<std::size_t, std::size_t> FindEdge(std::size_t a, std::size_t b) const {
        if (a >= count && b < count) {  // the triangles at a corner around everything do not close a circle
            const auto [u, j] = FindEdge(b, a);
            if (u == none) return {none, 0};
            const std::size_t t = triangles[u].beyond[j];
            return {t, IndexOf(triangles[t].beyond, u)};
        }
        const std::size_t start = triangleAt[a];
        std::size_t t = start;
        do {
            const std::size_t i = IndexOf(triangles[t].corner, a);
            if (triangles[t].corner[Next(i)] == b) return {t, Before(i)};
            t = triangles[t].beyond[Next(i)];
        } while (t != start && t != none);
        return {none, 0};
    }

    bool BringIn(const Required& required, std::vector<Required>& open) {
        const std::size_t a = required.from;
        const std::size_t b = required.to;
        if (const auto [t, i] = FindEdge(a, b); t != none) {
            Mark(t, i, required.times);
            return true;
        }
        const auto divideAt = [&](std::size_t point) {
            open.push_back({a, point, required.times});
            open.push_back({point, b, required.times});
        };
        // The triangle at a through whose far edge the way to b leads.
        std::size_t t = triangleAt[a];
        const std::size_t start = t;
        std::size_t exit = none;
        std::size_t across = none;
        do {
            const std::size_t i = IndexOf(triangles[t].corner, a);
            const std::size_t right = triangles[t].corner[Next(i)];
            const std::size_t left = triangles[t].corner[Before(i)];
            if (IsBetween(right, a, b)) {
                divideAt(right);
                return true;
            }
            if (Turn(a, b, right) < 0.0 && Turn(a, b, left) > 0.0) {
                exit = t;
                across = i;
            }
            t = triangles[t].beyond[Next(i)];
        } while (t != start && t != none);
        if (exit == none) return false;

        std::deque<std::pair<std::size_t, std::size_t>> crossed;
        for (t = exit;;) {
            const std::size_t right = triangles[t].corner[Next(across)];
            const std::size_t left = triangles[t].corner[Before(across)];
            if (triangles[t].times[across] != 0) {
                // Only when the end of one lies on the other do two required edges meet here.
                const std::size_t end = IsBetween(a, right, left) ? a : IsBetween(b, right, left) ? b : none;
                if (end == none) return false;
                const std::uint8_t times = triangles[t].times[across];
                Triangle& other = triangles[triangles[t].beyond[across]];
                other.times[IndexOf(other.beyond, t)] = 0;
                triangles[t].times[across] = 0;
                open.push_back(required);
                open.push_back({right, end, times});
                open.push_back({end, left, times});
                return true;
            }
            crossed.emplace_back(right, left);
            const std::size_t next = triangles[t].beyond[across];
            const std::size_t j = IndexOf(triangles[next].beyond, t);
            const std::size_t apex = triangles[next].corner[j];
            if (apex == b) break;
            if (IsBetween(apex, a, b)) {
                divideAt(apex);
                return true;
            }
            // Of the two edges beyond, the one between the sides of the way.
            across = Turn(a, b, apex) > 0.0 ? Next(j) : Before(j);
            // Corner j + 1 of `next` is `left`, corner j + 2 is `right`.
            t = next;
        }
        return FlipAway(a, b, std::move(crossed), required.times);
    }

    // Flips edges that cross a -> b, whenever their triangles form a convex quadrangle, until it is an edge.
    bool FlipAway(std::size_t a, std::size_t b, std::deque<std::pair<std::size_t, std::size_t>> crossed,
                  std::uint8_t times) {
        std::size_t left = 64 + 8 * crossed.size() * crossed.size();
        while (!crossed.empty()) {
            if (left-- == 0) return false;
            const auto [x, y] = crossed.front();
            crossed.pop_front();
            const auto [t, i] = FindEdge(x, y);
            if (t == none) return false;
            const std::size_t p = triangles[t].corner[i];
            const std::size_t u = triangles[t].beyond[i];
            const std::size_t d = triangles[u].corner[IndexOf(triangles[u].beyond, t)];
            if (!(Turn(p, x, d) > 0.0 && Turn(p, d, y) > 0.0)) {
                crossed.emplace_back(x, y);
                continue;
            }
            Flip(t, i);
            const bool isOfAB = p == a || p == b || d == a || d == b;
            if (!isOfAB && (Turn(a, b, p) > 0.0) != (Turn(a, b, d) > 0.0)) crossed.emplace_back(p, d);
        }
        const auto [t, i] = FindEdge(a, b);
        if (t == none) return false;
        Mark(t, i, times);
        return true;
    }

    // Flips the edges of the enclosed triangles, except the required ones, until circles are empty again.
    void RestoreCircles(const std::vector<std::uint8_t>& state) {
        std::vector<std::size_t>& open = scratch;
        open.clear();
        for (std::size_t t = 0; t < triangles.size(); ++t) {
            if (state[t] == 1) open.push_back(t);
        }
        while (!open.empty()) {
            const std::size_t t = open.back();
            open.pop_back();
            for (std::size_t i = 0; i < 3; ++i) {
                const Triangle& triangle = triangles[t];
                if (triangle.times[i] != 0) continue;
                const std::size_t next = triangle.beyond[i];
                const std::size_t apex = triangles[next].corner[IndexOf(triangles[next].beyond, t)];
                if (!IsSurelyInCircle(points[triangle.corner[0]], points[triangle.corner[1]],
                                      points[triangle.corner[2]], points[apex])) {
                    continue;
                }
                Flip(t, i);
                open.push_back(t);
                open.push_back(next);
                break;
            }
        }
    }

    std::vector<PlanePoint> points;
    std::size_t count;  // without the three corners around everything
    double tolerance;
    std::vector<Triangle> triangles;
    std::vector<std::size_t> triangleAt;  // one of the triangles at each point
    std::vector<std::size_t> scratch;
};

}  // namespace Kalvio::Math::detail
