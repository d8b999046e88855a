#pragma once

#include "kalvio/core/Point3D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// Points found by nearness in space: a k-d tree (J. L. Bentley, 1975) in one array, n log n to build, log n to ask.
///
/// A range of the tree is passed over by the distance of its box, gathered axis by axis on the way down (S. Arya and
/// D. M. Mount, 1993), so that points all in one plane far away are still parted; of ranges equally far, by the first
/// of their points in the list, so that points in one place, or too far to be told apart, are.
class NearestPoints {
public:
    /// Points that are not finite are left out.
    explicit NearestPoints(const std::vector<Point3D>& points) {
        entries.reserve(points.size());
        for (const Point3D& p : points) {
            if (IsFinite(p)) entries.push_back({{p.GetX(), p.GetY(), p.GetZ()}, entries.size(), 0, 0});
        }
        if (entries.empty()) return;
        std::tie(low, high) = BoxOf(0, entries.size());
        Build(0, entries.size());
    }

    /// Moves the point onto the nearest one, the first of the list on ties.
    /// @return false, `p` untouched, when it is not finite or there is none at a finite distance
    bool Find(Point3D& p) const {
        if (entries.empty() || !IsFinite(p)) return false;
        const Triple at = {p.GetX(), p.GetY(), p.GetZ()};
        Triple away;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double beyond = at[axis] - std::clamp(at[axis], low[axis], high[axis]);
            away[axis] = beyond * beyond;
        }
        Best best;
        Search(RangeOf(0, entries.size(), away), at, best);
        if (best.entry == nullptr) return false;
        p.SetCoordinates(best.entry->at[0], best.entry->at[1], best.entry->at[2]);
        return true;
    }

private:
    static constexpr std::size_t leafSize = 8;

    using Triple = std::array<double, 3>;
    using Rank = std::pair<double, std::size_t>;  // squared distance, then the order in the list

    struct Entry {
        Triple at;
        std::size_t order;
        // Of the range of which this entry is the middle:
        std::size_t axis;   // across which it is parted
        std::size_t first;  // the least order in it
    };

    struct Range {
        std::size_t from, to;
        Triple away;  // squared, from the point to the box, axis by axis
        Rank rank;    // not above that of any point in it: rounding is monotone
    };

    struct Best {
        const Entry* entry = nullptr;
        Rank rank{std::numeric_limits<double>::infinity(), 0};
    };

    static bool IsFinite(const Point3D& p) {
        return std::isfinite(p.GetX()) && std::isfinite(p.GetY()) && std::isfinite(p.GetZ());
    }

    static std::size_t MiddleOf(std::size_t from, std::size_t to) { return from + (to - from) / 2; }

    std::pair<Triple, Triple> BoxOf(std::size_t from, std::size_t to) const {
        std::pair box(entries[from].at, entries[from].at);
        for (std::size_t i = from; i < to; ++i) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                box.first[axis] = std::min(box.first[axis], entries[i].at[axis]);
                box.second[axis] = std::max(box.second[axis], entries[i].at[axis]);
            }
        }
        return box;
    }

    void Build(std::size_t from, std::size_t to) {
        const auto at = [this](std::size_t i) { return entries.begin() + static_cast<std::ptrdiff_t>(i); };
        const auto isEarlier = [](const Entry& a, const Entry& b) { return a.order < b.order; };
        const std::size_t first = std::min_element(at(from), at(to), isEarlier)->order;
        const std::size_t middle = MiddleOf(from, to);
        if (to - from > leafSize) {
            const auto [least, greatest] = BoxOf(from, to);
            std::size_t widest = 0;
            for (std::size_t axis = 1; axis < 3; ++axis) {
                if (greatest[axis] - least[axis] > greatest[widest] - least[widest]) widest = axis;
            }
            std::nth_element(at(from), at(middle), at(to),
                             [widest](const Entry& a, const Entry& b) { return a.at[widest] < b.at[widest]; });
            entries[middle].axis = widest;
            Build(from, middle);
            Build(middle + 1, to);
        }
        entries[middle].first = first;
    }

    Range RangeOf(std::size_t from, std::size_t to, const Triple& away) const {
        return {from, to, away, {away[0] + away[1] + away[2], entries[MiddleOf(from, to)].first}};
    }

    static void Try(const Entry& entry, const Triple& p, Best& best) {
        double square = 0.0;
        for (std::size_t axis = 0; axis < 3; ++axis) square += (entry.at[axis] - p[axis]) * (entry.at[axis] - p[axis]);
        const Rank rank(square, entry.order);
        if (rank < best.rank) best = {&entry, rank};
    }

    void Search(const Range& range, const Triple& p, Best& best) const {
        if (range.to - range.from <= leafSize) {
            for (std::size_t i = range.from; i < range.to; ++i) Try(entries[i], p, best);
            return;
        }
        const std::size_t middle = MiddleOf(range.from, range.to);
        const Entry& entry = entries[middle];
        Try(entry, p, best);
        const double beyond = p[entry.axis] - entry.at[entry.axis];
        Triple far = range.away;
        far[entry.axis] = beyond * beyond;
        const bool isBelow = beyond < 0.0;
        std::array parts = {RangeOf(range.from, middle, isBelow ? range.away : far),
                            RangeOf(middle + 1, range.to, isBelow ? far : range.away)};
        if (parts[1].rank < parts[0].rank) std::swap(parts[0], parts[1]);
        for (const Range& part : parts) {
            if (part.rank < best.rank) Search(part, p, best);
        }
    }

    std::vector<Entry> entries;
    Triple low{}, high{};
};

}  // namespace Kalvio::Math::detail
