#pragma once

#include "kalvio/areas/detail/PlaneVectors.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// Points along borders in square cells, about as wide as neighbours are apart: finds those near a place without
/// sorting any. The cells are folded into a table, so that empty ones cost nothing and neighbours stay together.
class PointGrid {
public:
    PointGrid() = default;
    /// Coordinates are finite. Searches will ask for points up to `distance` away.
    PointGrid(const std::vector<PlanePoint>& points, double distance) : reach(distance) {
        if (points.empty()) return;
        perLength = 1.0 / std::max(Spacing(points), 4.0 * reach);
        low = points.front();
        for (const PlanePoint& p : points) low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        const std::size_t size = std::bit_ceil(points.size());
        mask = size - 1;
        rowStride = static_cast<std::uint64_t>(golden * static_cast<double>(size)) | 1U;
        starts.assign(size + 1, 0);
        std::vector<std::uint32_t> cells;
        cells.reserve(points.size());
        for (const PlanePoint& p : points) {
            cells.push_back(static_cast<std::uint32_t>(Cell(Index(p.x - low.x), Index(p.y - low.y))));
            ++starts[cells.back() + 1];
        }
        // While members are filled in, the entry after that of a cell tells how far it is.
        std::uint32_t sum = 0;
        for (std::size_t cell = 1; cell < starts.size(); ++cell) {
            const std::uint32_t count = std::exchange(starts[cell], sum);
            pairs += static_cast<double>(count) * static_cast<double>(count);
            sum += count;
        }
        members.resize(points.size());
        for (std::size_t i = 0; i < cells.size(); ++i) members[starts[cells[i] + 1]++] = static_cast<std::uint32_t>(i);
    }

    /// Whether so many points share a cell that to sort them would be quicker.
    bool IsUneven() const { return pairs > mostPairs * static_cast<double>(members.size()); }

    /// Calls visit(i) for all points within reach of p, and for others; for some twice.
    template <class Visit>
    void ForEachNear(const PlanePoint& p, Visit&& visit) const {
        if (members.empty()) return;
        const std::uint64_t left = Index(p.x - reach - low.x);
        const std::uint64_t right = Index(p.x + reach - low.x);
        const std::uint64_t top = Index(p.y + reach - low.y);
        for (std::uint64_t row = Index(p.y - reach - low.y); row <= top; ++row) {
            for (std::uint64_t column = left; column <= right; ++column) {
                const std::size_t cell = Cell(column, row);
                for (std::uint32_t k = starts[cell]; k < starts[cell + 1]; ++k) visit(members[k]);
            }
        }
    }

private:
    static constexpr double golden = 0.6180339887498949;
    static constexpr double mostPairs = 64.0;  // in the same cell, for each point

    // The median of some distances of successive points.
    static double Spacing(const std::vector<PlanePoint>& points) {
        std::array<double, 63> squares{};
        std::size_t count = 0;
        const std::size_t step = points.size() / squares.size() + 1;
        for (std::size_t i = 1; i < points.size(); i += step) squares[count++] = Square(points[i] - points[i - 1]);
        const auto middle = squares.begin() + static_cast<std::ptrdiff_t>(count / 2);
        std::nth_element(squares.begin(), middle, squares.begin() + static_cast<std::ptrdiff_t>(count));
        return std::sqrt(*middle);
    }

    std::uint64_t Index(double length) const {
        constexpr double most = 0x1p62;
        return static_cast<std::uint64_t>(std::clamp(length * perLength, 0.0, most));
    }
    std::size_t Cell(std::uint64_t column, std::uint64_t row) const { return (column + row * rowStride) & mask; }

    double reach = 0.0;
    PlanePoint low;
    double perLength = 0.0;
    double pairs = 0.0;
    std::uint64_t mask = 0;
    std::uint64_t rowStride = 1;
    std::vector<std::uint32_t> starts;  // in members, of the cells
    std::vector<std::uint32_t> members;
};

}  // namespace Kalvio::Math::detail
