#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/polygons/detail/ExactPredicates.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace Kalvio::Math::detail {

/// An axis across cells: as long as the values there, but shortened where gaps part all but a few of them.
class CellAxis {
public:
    CellAxis() = default;
    /// @param noise  a length: the axis is this much longer at both ends
    CellAxis(double first, double last, double noise) : low(first), length(last - first), margin(noise) {}

    /// Shortens the gaps to a quarter of all else, each in the same proportion.
    ///
    /// @param values  some of them, in order
    /// @param gap     the narrowest one
    void Shorten(const std::vector<double>& values, double gap) {
        constexpr std::size_t few = 32;  // a part of the values
        struct Run {
            double first;
            double last;
        };
        const double high = low + length;
        std::vector<Run> runs;
        double ofRuns = 0.0;
        for (std::size_t begin = 0, end = 0; begin < values.size(); begin = end) {
            for (end = begin + 1; end < values.size() && values[end] - values[end - 1] <= gap;) ++end;
            if ((end - begin) * few < values.size()) continue;
            // The ends are hardly among some of the values.
            const double wider = (std::min)((values[end - 1] - values[begin]) / few, 0.5 * gap);
            runs.push_back(
                {(std::max)(values[begin] - wider, low), (std::min)((std::max)(values[end - 1] + wider, low), high)});
            ofRuns += runs.back().last - runs.back().first;
        }
        const double ofGaps = length - ofRuns;
        if (!(ofRuns > margin) || !(4.0 * ofGaps > ofRuns)) return;
        const double rate = ofRuns / (4.0 * ofGaps);
        double along = margin;
        double end = low;
        for (const Run& run : runs) {
            knots.push_back({end, along, rate});
            along += (run.first - end) * rate;
            knots.push_back({run.first, along, 1.0});
            along += run.last - run.first;
            end = run.last;
        }
        knots.push_back({end, along, rate});
        length = along + (high - end) * rate - margin;
    }

    /// Without the margins.
    double GetLength() const { return length; }

    /// The length up to a value. It never falls where the value rises, and rises by no more.
    double Along(double value) const { return knots.empty() ? value - low + margin : AlongKnots(value); }

    /// The value up to which it is so long.
    double ValueAt(double along) const { return knots.empty() ? low - margin + along : ValueAtKnots(along); }

    /// The values of a cell, and twice the noise more.
    std::array<double, 2> ValuesOf(double along, double side) const {
        if (!knots.empty()) {
            return {ValueAtKnots(along - 2.0 * margin) - 2.0 * margin,
                    ValueAtKnots(along + side + 2.0 * margin) + 2.0 * margin};
        }
        const double from = low - margin + along - 2.0 * margin;
        return {from, from + side + 4.0 * margin};
    }

    /// What a value is at least from all cells that are `ring` or more away from its own: 0 where nothing is shortened,
    /// as cells in gaps alone are longer than they seem.
    double GetRoom(double value, std::int64_t cell, std::int64_t ring, std::int64_t last, double side) const {
        if (knots.empty()) return 0.0;
        double room = std::numeric_limits<double>::infinity();
        if (cell >= ring) room = value - ValueAtKnots(static_cast<double>(cell - ring + 1) * side);
        if (cell + ring <= last) {
            room = (std::min)(room, ValueAtKnots(static_cast<double>(cell + ring) * side) - value);
        }
        return room - 8.0 * margin;  // rounding
    }

private:
    // From there to the next one.
    struct Knot {
        double value;
        double along;
        double rate;
    };

    double AlongKnots(double value) const {
        auto knot = knots.end() - 1;
        while (knot != knots.begin() && value < knot->value) --knot;
        const double along = knot->along + (value - knot->value) * knot->rate;
        return knot + 1 != knots.end() ? (std::min)(along, (knot + 1)->along) : along;
    }
    double ValueAtKnots(double along) const {
        auto knot = knots.end() - 1;
        while (knot != knots.begin() && along < knot->along) --knot;
        return knot->value + (along - knot->along) / knot->rate;
    }

    double low = 0.0;
    double length = 0.0;
    double margin = 0.0;
    std::vector<Knot> knots;  // none: nothing is shortened
};

/// Square cells over the plan of triangles; each knows the triangles that come near it, in order.
///
/// A vertex far from all others, as one without coordinates at (0, 0), would leave the triangles in one cell: there the
/// axes are shortened, and cells in the gap are longer.
class TriangleGrid {
public:
    static constexpr std::uint32_t noTriangle = (std::numeric_limits<std::uint32_t>::max)();

    TriangleGrid() = default;
    /// @param triangles  as many times
    /// @param cornersOf  std::array<Point2D, 3>(triangle): finite
    /// @param noise      a length: triangles this near to a cell belong to it
    template <class CornersOf>
    TriangleGrid(std::size_t triangles, double noise, CornersOf&& cornersOf) : margin(noise) {
        if (triangles == 0) return;
        low = high = cornersOf(0)[0];
        for (std::size_t t = 0; t < triangles; ++t) {
            for (const Point2D& p : cornersOf(t)) {
                low = {(std::min)(low.GetX(), p.GetX()), (std::min)(low.GetY(), p.GetY())};
                high = {(std::max)(high.GetX(), p.GetX()), (std::max)(high.GetY(), p.GetY())};
            }
        }
        across = CellAxis(low.GetX(), high.GetX(), margin);
        up = CellAxis(low.GetY(), high.GetY(), margin);
        const double crowd = Lay(triangles, cornersOf);
        if (crowd > crowded) Spread(triangles, cornersOf, crowd);
        std::uint64_t sum = 0;
        for (std::uint64_t& start : starts) sum += start, start = sum;
        items.resize(sum);
        middles.assign(columns * rows, noTriangle);
        for (std::size_t t = triangles; t-- > 0;) {
            const std::array<Point2D, 3> corners = cornersOf(t);
            ForEachCellOf(corners, [&](std::size_t cell) {
                items[--starts[cell]] = static_cast<std::uint32_t>(t);
                if (middles[cell] == noTriangle || Holds(corners, MiddleOf(cell))) {
                    middles[cell] = static_cast<std::uint32_t>(t);
                }
            });
        }
        hints.assign(4 * columns * rows, items.front());
        std::vector<bool> isSet(hints.size(), false);
        for (std::size_t t = 0; t < triangles; ++t) {
            const std::array<Point2D, 3> corners = cornersOf(t);
            const std::size_t quarter = QuarterOf({(corners[0].GetX() + corners[1].GetX() + corners[2].GetX()) / 3.0,
                                                   (corners[0].GetY() + corners[1].GetY() + corners[2].GetY()) / 3.0});
            hints[quarter] = static_cast<std::uint32_t>(t);
            isSet[quarter] = true;
        }
        for (std::size_t i = 1; i < hints.size(); ++i) {
            if (!isSet[i]) hints[i] = hints[i - 1];
        }
    }

    /// Whether a position is so near that a triangle may hold it.
    bool IsNear(const Point2D& p) const {
        return p.GetX() >= low.GetX() - margin && p.GetX() <= high.GetX() + margin && p.GetY() >= low.GetY() - margin &&
               p.GetY() <= high.GetY() + margin && !items.empty();
    }
    /// A triangle not far from such a position, mostly.
    std::uint32_t GetHint(const Point2D& p) const { return hints[QuarterOf(p)]; }

    /// The one at the middle of its cell, or another one near the cell where there is none; `noTriangle` where none is
    /// near.
    std::uint32_t GetMiddle(const Point2D& p) const { return middles[CellOf(p)]; }

    /// The triangles near such a position; all that hold it are among them.
    std::span<const std::uint32_t> At(const Point2D& p) const { return InCell(CellOf(p)); }

    /// Calls visit(triangle) for the triangles near the cells that a segment or a triangle passes, some more than once.
    template <std::size_t N, class Visit>
    void ForEachNear(const std::array<Point2D, N>& corners, Visit&& visit) const {
        if (items.empty()) return;
        ForEachCellOf(corners, [&](std::size_t cell) {
            for (const std::uint32_t triangle : InCell(cell)) visit(triangle);
        });
    }

    /// Calls visit(triangle) cell by cell in rings around a position, some more than once, for as long as isNear(s)
    /// holds for the squared distance s at least that this and all later rings have from it.
    template <class IsNear, class Visit>
    void ForEachAround(const Point2D& p, IsNear&& isNear, Visit&& visit) const {
        if (items.empty()) return;
        const auto column = static_cast<std::int64_t>(ColumnOf(p.GetX()));
        const auto row = static_cast<std::int64_t>(RowOf(p.GetY()));
        const auto most = static_cast<std::int64_t>((std::max)(columns, rows));
        const double besideX = (std::max)({low.GetX() - margin - p.GetX(), p.GetX() - high.GetX() - margin, 0.0});
        const double besideY = (std::max)({low.GetY() - margin - p.GetY(), p.GetY() - high.GetY() - margin, 0.0});
        const auto lastColumn = static_cast<std::int64_t>(columns) - 1;
        const auto lastRow = static_cast<std::int64_t>(rows) - 1;
        // Cells of a row, as far as they are there.
        const auto visitRow = [&](std::int64_t r, std::int64_t first, std::int64_t last) {
            for (std::int64_t c = (std::max<std::int64_t>)(first, 0); c <= (std::min)(last, lastColumn); ++c) {
                for (const std::uint32_t t :
                     InCell(static_cast<std::size_t>(r) * columns + static_cast<std::size_t>(c))) {
                    visit(t);
                }
            }
        };
        for (std::int64_t ring = 0; ring < most; ++ring) {
            // Cells so many columns or rows away are as far beyond what the position lies beside them.
            const double along = (std::max)(static_cast<double>(ring - 1) * side, 0.0);
            const double x = (std::max)(besideX + along, across.GetRoom(p.GetX(), column, ring, lastColumn, side));
            const double y = (std::max)(besideY + along, up.GetRoom(p.GetY(), row, ring, lastRow, side));
            if (!isNear((std::min)(x * x + besideY * besideY, besideX * besideX + y * y))) return;
            if (row >= ring) visitRow(row - ring, column - ring, column + ring);
            // Beside a strip that runs north there are rows, but no cells in them.
            if (column >= ring || column + ring <= lastColumn) {
                const std::int64_t end = (std::min)(row + ring - 1, lastRow);
                for (std::int64_t r = (std::max<std::int64_t>)(row - ring + 1, 0); r <= end; ++r) {
                    visitRow(r, column - ring, column - ring);
                    visitRow(r, column + ring, column + ring);
                }
            }
            if (ring > 0 && row + ring <= lastRow) visitRow(row + ring, column - ring, column + ring);
        }
    }

private:
    static constexpr double crowded = 64.0;

    // Chooses the cells, and counts the triangles of each. @return how many a cell has, in the mean over the triangles
    // in all cells
    template <class CornersOf>
    double Lay(std::size_t triangles, const CornersOf& cornersOf) {
        const double width = across.GetLength() + 2.0 * margin;
        const double height = up.GetLength() + 2.0 * margin;
        // About a cell for two triangles, no more than that in a row; fewer where triangles are so long that they fill
        // too many.
        const auto count = 0.5 * static_cast<double>(triangles);
        side = (std::max)({std::sqrt(width / count * height), width / count, height / count});
        constexpr std::size_t most = 16;  // entries per triangle
        std::size_t entries = 0;
        for (;; side *= 2.0) {
            columns = static_cast<std::size_t>(width / side) + 1;
            rows = static_cast<std::size_t>(height / side) + 1;
            starts.assign(columns * rows + 1, 0);
            entries = 0;
            for (std::size_t t = 0; t < triangles && entries <= most * triangles; ++t) {
                ForEachCellOf(cornersOf(t), [&](std::size_t cell) {
                    ++starts[cell];
                    ++entries;
                });
            }
            if (entries <= most * triangles || starts.size() == 2) break;
        }
        double squares = 0.0;
        for (const std::uint64_t start : starts) squares += static_cast<double>(start) * static_cast<double>(start);
        return squares / static_cast<double>(entries);
    }

    // Shortens gaps of more than two cells, where that halves the crowd.
    template <class CornersOf>
    void Spread(std::size_t triangles, const CornersOf& cornersOf, double crowd) {
        constexpr std::size_t some = 1024;
        constexpr double golden = 0.6180339887498949;  // its multiples fall into step with no order of the triangles
        std::vector<double> xs(some);
        std::vector<double> ys(some);
        for (std::size_t i = 0; i < some; ++i) {
            const double turns = golden * static_cast<double>(i);
            const auto t = static_cast<std::size_t>((turns - std::floor(turns)) * static_cast<double>(triangles));
            const Point2D p = cornersOf(t)[i % 3];
            xs[i] = p.GetX();
            ys[i] = p.GetY();
        }
        std::sort(xs.begin(), xs.end());
        std::sort(ys.begin(), ys.end());
        const CellAxis acrossBefore = across;
        const CellAxis upBefore = up;
        double now = crowd;
        constexpr int rounds = 4;  // gaps beside gaps show in smaller cells
        for (int round = 0; round < rounds && now > crowded; ++round) {
            const double length = across.GetLength() + up.GetLength();
            across = acrossBefore;
            up = upBefore;
            across.Shorten(xs, 2.0 * side);
            up.Shorten(ys, 2.0 * side);
            if (!(across.GetLength() + up.GetLength() < length)) break;
            now = Lay(triangles, cornersOf);
        }
        if (now <= 0.5 * crowd) return;
        across = acrossBefore;
        up = upBefore;
        (void)Lay(triangles, cornersOf);
    }

    std::span<const std::uint32_t> InCell(std::size_t cell) const {
        return {items.data() + starts[cell], items.data() + starts[cell + 1]};
    }
    static std::size_t Clamped(double value, std::size_t count) {
        return value > 0.0 ? (std::min)(static_cast<std::size_t>((std::min)(value, 4e9)), count - 1) : 0;
    }
    std::size_t ColumnOf(double x) const { return Clamped(across.Along(x) / side, columns); }
    std::size_t RowOf(double y) const { return Clamped(up.Along(y) / side, rows); }

    std::size_t CellOf(const Point2D& p) const { return RowOf(p.GetY()) * columns + ColumnOf(p.GetX()); }
    PlanePoint MiddleOf(std::size_t cell) const {
        return {across.ValueAt((static_cast<double>(cell % columns) + 0.5) * side),
                up.ValueAt((static_cast<double>(cell / columns) + 0.5) * side)};
    }
    // But for rounding.
    static bool Holds(const std::array<Point2D, 3>& corners, const PlanePoint& p) {
        const PlanePoint a{corners[0].GetX(), corners[0].GetY()};
        const PlanePoint b{corners[1].GetX(), corners[1].GetY()};
        const PlanePoint c{corners[2].GetX(), corners[2].GetY()};
        return PlainTurn(a, b, p).value >= 0.0 && PlainTurn(b, c, p).value >= 0.0 && PlainTurn(c, a, p).value >= 0.0;
    }

    // Each cell has four, in rows of their own.
    std::size_t QuarterOf(const Point2D& p) const {
        const double x = across.Along(p.GetX()) / side;
        const double y = up.Along(p.GetY()) / side;
        return Clamped(2.0 * y, 2 * rows) * 2 * columns + Clamped(2.0 * x, 2 * columns);
    }

    // The cells that a convex shape comes near, row by row: in each those between the ends of its part there.
    template <std::size_t N, class Visit>
    void ForEachCellOf(const std::array<Point2D, N>& corners, Visit&& visit) const {
        double bottom = corners[0].GetY();
        double top = bottom;
        for (const Point2D& p : corners) {
            bottom = (std::min)(bottom, p.GetY());
            top = (std::max)(top, p.GetY());
        }
        const std::size_t last = RowOf(top + margin);
        for (std::size_t row = RowOf(bottom - margin); row <= last; ++row) {
            const auto [from, to] = up.ValuesOf(static_cast<double>(row) * side, side);
            double left = std::numeric_limits<double>::infinity();
            double right = -left;
            const auto add = [&](double x) {
                left = (std::min)(left, x);
                right = (std::max)(right, x);
            };
            for (std::size_t i = 0; i < N; ++i) {
                const Point2D& p = corners[i];
                const Point2D& q = corners[i + 1 < N ? i + 1 : 0];
                if (p.GetY() >= from && p.GetY() <= to) add(p.GetX());
                for (const double y : {from, to}) {
                    if ((p.GetY() < y) != (q.GetY() < y)) {
                        add(p.GetX() + (q.GetX() - p.GetX()) * ((y - p.GetY()) / (q.GetY() - p.GetY())));
                    }
                }
            }
            if (!(left <= right)) continue;
            const std::size_t end = ColumnOf(right + 2.0 * margin);
            for (std::size_t column = ColumnOf(left - 2.0 * margin); column <= end; ++column) {
                visit(row * columns + column);
            }
        }
    }

    Point2D low;
    Point2D high;
    double margin = 0.0;
    CellAxis across;
    CellAxis up;
    double side = 1.0;  // of a cell
    std::size_t columns = 1;
    std::size_t rows = 1;
    std::vector<std::uint64_t> starts;  // per cell, into the items
    std::vector<std::uint32_t> items;
    std::vector<std::uint32_t> middles;  // per cell
    std::vector<std::uint32_t> hints;    // per quarter of a cell
};

}  // namespace Kalvio::Math::detail
