#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/detail/BoxHierarchy.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Kalvio::Math::detail {

/// Cells over the box of a chain in plan, which tell of most triangles at once that the chain comes nowhere near.
///
/// A cell is marked when a segment passes through it, or by no more than the reach and a little for rounding beside it.
/// All that lies outside the box is in the outermost cells, which hold nothing else.
class ChainRaster {
public:
    struct Cell {
        std::uint16_t column = 0;
        std::uint16_t row = 0;
    };

    /// @param cells  number of columns and of rows
    ChainRaster(const Extent& box, double chainReach, std::size_t cells)
        : origin(box.minX, box.minY),
          count(std::clamp(cells, smallestCount, largestCount)),
          scale(static_cast<double>(count - 4) / std::max(box.maxX - box.minX, box.maxY - box.minY)),
          reach(chainReach * scale + roundingInCells),
          marks(count * count, 0) {}

    void Mark(const Point2D& a, const Point2D& b) {
        const Vec2D from = InCells(a);
        const Vec2D along = InCells(b) - from;
        const double low = std::min(from.GetY(), from.GetY() + along.GetY());
        const double high = std::max(from.GetY(), from.GetY() + along.GetY());
        const bool isFlat = !(high - low > reach);
        const auto columnAt = [&](double row) {
            return from.GetX() + along.GetX() * ((std::clamp(row, low, high) - from.GetY()) / along.GetY());
        };
        const std::size_t lastRow = Index(high + reach);
        for (std::size_t row = Index(low - reach); row <= lastRow; ++row) {
            // The part of the segment that comes near the row.
            const double first = isFlat ? from.GetX() : columnAt(static_cast<double>(row) - reach);
            const double second =
                isFlat ? from.GetX() + along.GetX() : columnAt(static_cast<double>(row) + 1.0 + reach);
            const std::size_t lastColumn = Index(std::max(first, second) + reach);
            for (std::size_t column = Index(std::min(first, second) - reach); column <= lastColumn; ++column) {
                MarkAround(column, row);
            }
        }
    }

    Cell CellOf(const Point3D& p) const {
        const Vec2D place = InCells(Point2D(p.GetX(), p.GetY()));
        return {static_cast<std::uint16_t>(Index(place.GetX())), static_cast<std::uint16_t>(Index(place.GetY()))};
    }
    /// False only when the chain does not come within the reach of the box around three points in these cells.
    bool MayMeet(const Cell& a, const Cell& b, const Cell& c) const {
        const auto [left, right] = std::minmax({a.column, b.column, c.column});
        const auto [low, high] = std::minmax({a.row, b.row, c.row});
        if (right - left > 1 || high - low > 1) return true;
        return marks[low * count + left] != 0;
    }

private:
    static constexpr std::size_t smallestCount = 8;
    static constexpr std::size_t largestCount = 512;
    static constexpr double roundingInCells = 1e-3;

    // A triangle is looked up at the lower left of the two by two cells that it may reach into.
    void MarkAround(std::size_t column, std::size_t row) {
        for (std::size_t y = row > 0 ? row - 1 : 0; y <= row; ++y) {
            for (std::size_t x = column > 0 ? column - 1 : 0; x <= column; ++x) marks[y * count + x] = 1;
        }
    }
    Vec2D InCells(const Point2D& p) const { return (p - origin) * scale + Vec2D(2.0, 2.0); }
    /// Bounded; 0 for NaN.
    std::size_t Index(double place) const {
        if (!(place > 0.0)) return 0;
        return place < static_cast<double>(count) ? static_cast<std::size_t>(place) : count - 1;
    }

    Point2D origin;
    std::size_t count;
    double scale;  // cells per length
    double reach;  // in cells
    std::vector<std::uint8_t> marks;
};

}  // namespace Kalvio::Math::detail
