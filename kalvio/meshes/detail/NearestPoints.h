#pragma once

#include "kalvio/core/Point3D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace Kalvio::Math::detail {

/// Points found by nearness in space: a k-d tree (J. L. Bentley, 1975) in one array, n log n to build, log n to ask.
class NearestPoints {
public:
    /// Points that are not finite are left out.
    explicit NearestPoints(const std::vector<Point3D>& points) {
        entries.reserve(points.size());
        for (const Point3D& p : points) {
            if (!std::isfinite(p.GetX()) || !std::isfinite(p.GetY()) || !std::isfinite(p.GetZ())) continue;
            entries.push_back({{p.GetX(), p.GetY(), p.GetZ()}, entries.size(), 0});
        }
        Build(0, entries.size());
    }

    /// Moves the point onto the nearest one, the first of the list on ties.
    /// @return false, `p` untouched, when there is none at a finite distance
    bool Find(Point3D& p) const {
        Best best;
        Search(0, entries.size(), {p.GetX(), p.GetY(), p.GetZ()}, best);
        if (best.entry == nullptr) return false;
        p.SetCoordinates(best.entry->at[0], best.entry->at[1], best.entry->at[2]);
        return true;
    }

private:
    static constexpr std::size_t leafSize = 8;

    struct Entry {
        std::array<double, 3> at;
        std::size_t order;
        std::size_t axis;  // across which the range of which this entry is the middle is parted
    };

    struct Best {
        const Entry* entry = nullptr;
        double square = std::numeric_limits<double>::infinity();
    };

    void Build(std::size_t from, std::size_t to) {
        if (to - from <= leafSize) return;
        std::array<double, 3> low = entries[from].at;
        std::array<double, 3> high = low;
        for (std::size_t i = from; i < to; ++i) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                low[axis] = std::min(low[axis], entries[i].at[axis]);
                high[axis] = std::max(high[axis], entries[i].at[axis]);
            }
        }
        std::size_t widest = 0;
        for (std::size_t axis = 1; axis < 3; ++axis) {
            if (high[axis] - low[axis] > high[widest] - low[widest]) widest = axis;
        }
        const std::size_t middle = from + (to - from) / 2;
        const auto at = [this](std::size_t i) { return entries.begin() + static_cast<std::ptrdiff_t>(i); };
        std::nth_element(at(from), at(middle), at(to),
                         [widest](const Entry& a, const Entry& b) { return a.at[widest] < b.at[widest]; });
        entries[middle].axis = widest;
        Build(from, middle);
        Build(middle + 1, to);
    }

    static void Try(const Entry& entry, const std::array<double, 3>& p, Best& best) {
        double square = 0.0;
        for (std::size_t axis = 0; axis < 3; ++axis) square += (entry.at[axis] - p[axis]) * (entry.at[axis] - p[axis]);
        if (square < best.square || (square == best.square && best.entry != nullptr && entry.order < best.entry->order))
            best = {&entry, square};
    }

    void Search(std::size_t from, std::size_t to, const std::array<double, 3>& p, Best& best) const {
        if (to - from <= leafSize) {
            for (std::size_t i = from; i < to; ++i) Try(entries[i], p, best);
            return;
        }
        const std::size_t middle = from + (to - from) / 2;
        const Entry& entry = entries[middle];
        const double beyond = p[entry.axis] - entry.at[entry.axis];
        Try(entry, p, best);
        beyond < 0.0 ? Search(from, middle, p, best) : Search(middle + 1, to, p, best);
        if (!(beyond * beyond <= best.square)) return;
        beyond < 0.0 ? Search(middle + 1, to, p, best) : Search(from, middle, p, best);
    }

    std::vector<Entry> entries;
};

}  // namespace Kalvio::Math::detail
