#include "kalvio/polygons/PointInPolygon.h"

#include "kalvio/core/detail/Constants.h"
#include "kalvio/polygons/detail/ClipStrip.h"
#include "kalvio/polygons/detail/PointInRing.h"
#include "kalvio/polygons/detail/Ring.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace Kalvio::Math {

namespace {

constexpr std::size_t largestRingWithoutGrid = 100;
constexpr double coordinateRounding = 16.0 * std::numeric_limits<double>::epsilon();

// What decides on the grid before it is built, over all rings.
struct Survey {
    explicit Survey(const Polygon2D& polygon) {
        Add(polygon.GetPoints());
        for (unsigned int i = 0; i < polygon.GetNumHoleBoundaries(); ++i) Add(polygon.GetHoleBoundary(i).GetPoints());
    }

    bool isSound = true;            // all coordinates are finite and not huge
    double largest = 0.0;           // magnitude of a coordinate
    double runX = 0.0, runY = 0.0;  // sums of |dx| and |dy| over the edges
    std::size_t count = 0;          // of points

private:
    void Add(const std::vector<Point2D>& ring) {
        count += ring.size();
        detail::WalkRing(ring, [this](const Point2D& a, const Point2D& b) {
            const double x = std::abs(b.GetX());
            const double y = std::abs(b.GetY());
            isSound = isSound && x < detail::largestCoordinate && y < detail::largestCoordinate;
            largest = std::max({largest, x, y});
            runX += std::abs(b.GetX() - a.GetX());
            runY += std::abs(b.GetY() - a.GetY());
            return false;
        });
    }
};

}  // namespace

/// Builds the grid of a polygon.
///
/// Notation. A ray from a point p to +x crosses the edge a -> b upward (+1) when a.y <= p.y < b.y and downward (-1)
/// when b.y <= p.y < a.y; the sum over the edges east of p is the winding number. With the step H(t) = 1 for t >= 0,
/// else 0, the edge adds H(p.y - a.y) - H(p.y - b.y). A point's edges are those that a query may find it on, or so near
/// that the margin of `ArePointsCCW` or rounding decides on which side it lies. The edges listed for a cell include
/// those of all of its points.
///
/// Over the points of one cell, an unlisted edge is east or west of all of them, as far as it reaches their levels.
/// Summed up along the ring, the steps of the unlisted edges in the east cancel at common ends, and remain where a run
/// of listed edges begins (-H(p.y - start.y)) or ends (+H(p.y - end.y)) in the east. All else is one number per cell,
/// found from the winding number of the middle of the cell.
class PointInPolygon::PolygonGrid::Builder {
public:
    Builder(PolygonGrid& target, const Polygon2D& source) : grid(target) {
        AddRing(source.GetPoints());
        for (unsigned int i = 0; i < source.GetNumHoleBoundaries(); ++i) AddRing(source.GetHoleBoundary(i).GetPoints());
    }

    // False, the grid still to be cleared, when the indexes do not suffice.
    bool Build(double padding) {
        pad = padding;
        for (std::size_t r = 0; r < rings.size(); ++r) AddEdges(static_cast<std::uint32_t>(r));
        std::sort(crossings.begin(), crossings.end(),
                  [](const Crossing& a, const Crossing& b) { return IsBefore(a, b); });
        rowStarts.assign(grid.rows + 1, 0);
        for (const Crossing& crossing : crossings) ++rowStarts[crossing.row + 1];
        for (std::size_t row = 0; row < grid.rows; ++row) rowStarts[row + 1] += rowStarts[row];
        for (std::size_t i = crossings.size(); i-- > 1;) {
            if (crossings[i - 1].IsOfRowAndRing(crossings[i])) crossings[i - 1].turns += crossings[i].turns;
        }
        MarkBorderCells();
        ClassifyMiddles();
        return ListRuns();
    }

private:
    struct Ring {
        const std::vector<Point2D>* points;
        std::uint32_t edges;
        bool isCounterClockwise;

        const Point2D& At(std::size_t i) const { return (*points)[i == points->size() ? 0 : i]; }
    };
    // A run of edges listed for a cell, while it is collected.
    struct CellRun {
        std::uint32_t cell;
        std::uint32_t ring;
        std::uint32_t first;
        std::uint32_t last;
    };
    struct OpenRun {
        std::uint32_t cell;
        std::uint32_t run;
    };
    // An edge at the level of the middles of a row, east of the middles of the first `columns` cells.
    struct Crossing {
        std::uint32_t row;
        std::uint32_t ring;
        std::uint32_t columns;
        std::int32_t turns;  // of this and all crossings of the ring further east

        bool IsOfRowAndRing(const Crossing& other) const { return row == other.row && ring == other.ring; }
    };

    static bool IsBefore(const Crossing& a, const Crossing& b) {
        return a.row != b.row ? a.row < b.row : a.ring != b.ring ? a.ring < b.ring : a.columns < b.columns;
    }

    void AddRing(const std::vector<Point2D>& points) {
        const std::size_t edges = points.empty() ? 0 : points.size() - (detail::HasClosingEdge(points) ? 0 : 1);
        const bool isCounterClockwise = !points.empty() && detail::DoubledArea(points, points.front()) > 0.0;
        rings.push_back({&points, static_cast<std::uint32_t>(edges), isCounterClockwise});
    }

    double MiddleX(std::size_t column) const { return grid.originX + (AsReal(column) + 0.5) * grid.cellWidth; }
    double MiddleY(std::size_t row) const { return grid.originY + (AsReal(row) + 0.5) * grid.cellHeight; }
    std::uint32_t CellOf(std::size_t column, std::size_t row) const {
        return static_cast<std::uint32_t>(row * grid.columns + column);
    }

    // The turn that the edge adds for points at a level west of it.
    static int TurnAt(const Point2D& a, const Point2D& b, double level) {
        return (level >= a.GetY() ? 1 : 0) - (level >= b.GetY() ? 1 : 0);
    }
    static double CrossingAt(const Point2D& a, const Point2D& b, double level) {
        return a.GetX() + (level - a.GetY()) / (b.GetY() - a.GetY()) * (b.GetX() - a.GetX());
    }

    void AddEdges(std::uint32_t ring) {
        const Ring& source = rings[ring];
        open.clear();
        for (std::uint32_t edge = 0; edge < source.edges; ++edge) {
            const Point2D& a = source.At(edge);
            const Point2D& b = source.At(edge + 1);
            FindCells(a, b);
            if (open.size() == 1 && touched.size() == 1 && open[0].cell == touched[0]) {
                cellRuns[open[0].run].last = edge;
            } else {
                ContinueRuns(ring, edge);
            }
            AddCrossings(a, b, ring);
        }
    }

    // Cells for which the edge is to be listed, ascending.
    void FindCells(const Point2D& a, const Point2D& b) {
        touched.clear();
        const Point2D& lower = a.GetY() <= b.GetY() ? a : b;
        const Point2D& upper = a.GetY() <= b.GetY() ? b : a;
        const double west = std::min(a.GetX(), b.GetX());
        const double east = std::max(a.GetX(), b.GetX());
        const std::size_t firstRow = grid.RowAt(lower.GetY() - pad);
        const std::size_t lastRow = grid.RowAt(upper.GetY() + pad);
        if (firstRow == lastRow) {
            const std::uint32_t last = CellOf(grid.ColumnAt(east + pad), firstRow);
            for (std::uint32_t cell = CellOf(grid.ColumnAt(west - pad), firstRow); cell <= last; ++cell) {
                touched.push_back(cell);
            }
            return;
        }
        const double height = upper.GetY() - lower.GetY();
        // Twice the distance at which the margin decides, for the rounding of the turn; between the ends only.
        const double zone = height > 0.0 ? 2.0 * detail::windingMargin / height : 0.0;
        for (std::size_t row = firstRow; row <= lastRow; ++row) {
            double from = west;
            double to = east;
            if (height > pad) {
                const double base = grid.originY + AsReal(row) * grid.cellHeight;
                const auto xAt = [&](double level) {
                    if (level <= lower.GetY()) return lower.GetX();
                    if (level >= upper.GetY()) return upper.GetX();
                    return std::clamp(CrossingAt(lower, upper, level), west, east);
                };
                const double low = row == firstRow ? lower.GetX() : xAt(base - 2.0 * pad);
                const double high = row == lastRow ? upper.GetX() : xAt(base + grid.cellHeight + 2.0 * pad);
                from = std::min(low, high);
                to = std::max(low, high);
            }
            const std::size_t lastColumn = grid.ColumnAt(std::min(to + zone, east) + pad);
            std::size_t column = grid.ColumnAt(std::max(from - zone, west) - pad);
            for (; column <= lastColumn; ++column) {
                touched.push_back(CellOf(column, row));
            }
        }
    }

    void ContinueRuns(std::uint32_t ring, std::uint32_t edge) {
        next.clear();
        std::size_t k = 0;
        for (const std::uint32_t cell : touched) {
            while (k < open.size() && open[k].cell < cell) ++k;
            if (k < open.size() && open[k].cell == cell) {
                cellRuns[open[k].run].last = edge;
                next.push_back(open[k]);
            } else {
                next.push_back({cell, static_cast<std::uint32_t>(cellRuns.size())});
                cellRuns.push_back({cell, ring, edge, edge});
            }
        }
        open.swap(next);
    }

    void AddCrossings(const Point2D& a, const Point2D& b, std::uint32_t ring) {
        const double low = std::min(a.GetY(), b.GetY());
        const double high = std::max(a.GetY(), b.GetY());
        const double first = (low - grid.originY) * grid.rowsPerLength - 0.51;  // rounding is less than 0.01 rows
        std::size_t row = first > 0.0 ? CellAt(first, 1.0, grid.rows) : 0;
        for (; row < grid.rows && MiddleY(row) <= high; ++row) {
            const double level = MiddleY(row);
            const int turn = TurnAt(a, b, level);
            if (turn == 0) continue;
            const double x = CrossingAt(a, b, level);
            std::size_t west = grid.ColumnAt(x);  // columns with their middle west of the crossing
            while (west > 0 && !(MiddleX(west - 1) < x)) --west;
            while (west < grid.columns && MiddleX(west) < x) ++west;
            crossings.push_back({static_cast<std::uint32_t>(row), ring, static_cast<std::uint32_t>(west), turn});
        }
    }

    void MarkBorderCells() {
        grid.blocks.assign(grid.columns * grid.rows / 64 + 1, Block());
        for (const CellRun& run : cellRuns) grid.blocks[run.cell / 64].border |= std::uint64_t{1} << run.cell % 64;
        for (Block& block : grid.blocks) {
            block.firstBorderCell = borderCellCount;
            borderCellCount += static_cast<std::uint32_t>(std::popcount(block.border));
        }
        holesOverMiddle.assign(borderCellCount, 0);
    }

    // Winding number of a ring around the middle of a cell.
    int TurnsAround(std::uint32_t ring, std::size_t column, std::size_t row) const {
        const Crossing wanted{static_cast<std::uint32_t>(row), ring, static_cast<std::uint32_t>(column), 0};
        const auto first = crossings.begin() + rowStarts[row];
        const auto last = crossings.begin() + rowStarts[row + 1];
        const auto east = std::upper_bound(first, last, wanted, IsBefore);
        return east != last && east->IsOfRowAndRing(wanted) ? east->turns : 0;
    }

    // Sets the bits of the cells whose middles the outer ring encloses and no hole does; counts those holes.
    void ClassifyMiddles() {
        for (std::size_t i = 0; i < crossings.size(); ++i) {
            const Crossing& crossing = crossings[i];
            if (crossing.turns == 0) continue;
            const bool isFirst = i == 0 || !crossing.IsOfRowAndRing(crossings[i - 1]);
            const std::size_t row = std::size_t{crossing.row} * grid.columns;
            FillCells(row + (isFirst ? 0 : crossings[i - 1].columns), row + crossing.columns, crossing.ring > 0);
        }
    }

    void FillCells(std::size_t from, std::size_t to, bool isHole) {
        while (from < to) {
            Block& block = grid.blocks[from / 64];
            const std::size_t count = std::min(to - from, 64 - from % 64);
            const std::uint64_t bits = (~std::uint64_t{0} >> (64 - count)) << from % 64;
            if (isHole) {
                block.inside &= ~bits;
                for (std::uint64_t left = block.border & bits; left != 0; left &= left - 1) {
                    const std::uint64_t before = (left & (~left + 1)) - 1;
                    ++holesOverMiddle[block.firstBorderCell +
                                      static_cast<std::uint32_t>(std::popcount(block.border & before))];
                }
            } else {
                block.inside |= bits;
            }
            from += count;
        }
    }

    // Brings the runs into the order of the cells and writes what the queries read.
    bool ListRuns() {
        std::size_t runCount = 0;
        std::size_t cornerCount = 0;
        std::vector<std::uint32_t> firstRun(std::size_t{borderCellCount} + 1, 0);
        for (const CellRun& run : cellRuns) {
            ++firstRun[grid.BorderCellAt(run.cell) + 1];
            const std::size_t edges = std::size_t{run.last} - run.first + 1;
            const std::size_t pieces = (edges - 1) / PolygonGrid::longestRun + 1;
            runCount += pieces;
            cornerCount += edges + pieces;
        }
        if (cornerCount >= std::numeric_limits<std::uint32_t>::max()) return false;
        for (std::size_t i = 0; i < borderCellCount; ++i) firstRun[i + 1] += firstRun[i];
        std::vector<CellRun> sorted(cellRuns.size());
        std::vector<std::uint32_t> place(firstRun);
        for (const CellRun& run : cellRuns) sorted[place[grid.BorderCellAt(run.cell)]++] = run;

        grid.borderCells.reserve(std::size_t{borderCellCount} + 1);
        grid.runs.reserve(runCount + 1);
        grid.corners.reserve(cornerCount);
        for (std::size_t i = 0; i < borderCellCount; ++i) {
            AddBorderCell(sorted.data() + firstRun[i], sorted.data() + firstRun[i + 1], holesOverMiddle[i]);
        }
        grid.borderCells.push_back({static_cast<std::uint32_t>(grid.parts.size()), false});
        grid.parts.push_back({static_cast<std::uint32_t>(grid.runs.size()), 0, false, false});
        grid.runs.push_back({0.0, 0.0, static_cast<std::uint32_t>(grid.corners.size()), false, false});
        return true;
    }

    void AddBorderCell(const CellRun* first, const CellRun* last, std::int32_t holesOver) {
        const std::size_t column = first->cell % grid.columns;
        const std::size_t row = first->cell / grid.columns;
        const std::size_t firstPart = grid.parts.size();
        const bool isInOuterRing = first->ring == 0 || TurnsAround(0, column, row) != 0;
        while (isInOuterRing && first != last) {
            const std::uint32_t ring = first->ring;
            const int around = TurnsAround(ring, column, row);
            if (ring > 0 && around != 0) --holesOver;  // asked at every query instead
            Part part{static_cast<std::uint32_t>(grid.runs.size()), around, ring == 0, rings[ring].isCounterClockwise};
            for (; first != last && first->ring == ring; ++first) part.turns -= AddRun(*first, column, row);
            grid.parts.push_back(part);
        }
        grid.borderCells.push_back({static_cast<std::uint32_t>(firstPart), isInOuterRing && holesOver == 0});
    }

    // @return what the run adds to the winding number of the middle of the cell
    int AddRun(const CellRun& run, std::size_t column, std::size_t row) {
        const Ring& ring = rings[run.ring];
        const double x = MiddleX(column);
        const double y = MiddleY(row);
        int turns = 0;
        for (std::uint32_t first = run.first; first <= run.last; first += PolygonGrid::longestRun) {
            const std::uint32_t end = std::min(run.last - first + 1, PolygonGrid::longestRun) + first;
            const bool startsEast = first == run.first && ring.At(first).GetX() > x;
            const bool endsEast = end == run.last + 1 && ring.At(end).GetX() > x;
            turns +=
                (endsEast && y >= ring.At(end).GetY() ? 1 : 0) - (startsEast && y >= ring.At(first).GetY() ? 1 : 0);
            Run stored{ring.At(first).GetY(), ring.At(first).GetY(), static_cast<std::uint32_t>(grid.corners.size()),
                       startsEast, endsEast};
            grid.corners.push_back({ring.At(first).GetX(), ring.At(first).GetY()});
            for (std::uint32_t i = first; i < end; ++i) {
                const Point2D& a = ring.At(i);
                const Point2D& b = ring.At(std::size_t{i} + 1);
                stored.low = std::min(stored.low, b.GetY());
                stored.high = std::max(stored.high, b.GetY());
                grid.corners.push_back({b.GetX(), b.GetY()});
                const int turn = TurnAt(a, b, y);
                if (turn != 0 && x < CrossingAt(a, b, y)) turns += turn;
            }
            grid.runs.push_back(stored);
        }
        return turns;
    }

    PolygonGrid& grid;
    std::vector<Ring> rings;
    double pad = 0.0;
    std::vector<CellRun> cellRuns;
    std::vector<std::uint32_t> touched;
    std::vector<OpenRun> open;
    std::vector<OpenRun> next;
    std::vector<Crossing> crossings;
    std::vector<std::ptrdiff_t> rowStarts;  // of the crossings
    std::uint32_t borderCellCount = 0;
    std::vector<std::int32_t> holesOverMiddle;
};

PointInPolygon::Position PointInPolygon::PolygonGrid::GetPosition(std::size_t column, std::size_t row) const {
    if (column >= columns || row >= rows) return Position::Undefined;
    const std::size_t cell = row * columns + column;
    if (blocks[cell / 64].border >> cell % 64 & 1) return Position::Border;
    return (blocks[cell / 64].inside >> cell % 64 & 1) != 0 ? Position::Inside : Position::Outside;
}

std::size_t PointInPolygon::PolygonGrid::BorderCellAt(std::size_t cell) const {
    const Block& block = blocks[cell / 64];
    const std::uint64_t before = (std::uint64_t{1} << cell % 64) - 1;
    return block.firstBorderCell + static_cast<std::size_t>(std::popcount(block.border & before));
}

PointInPolygon::Position PointInPolygon::PolygonGrid::Classify(const Point2D& p, double queryTolerance,
                                                               bool includeBorders) const {
    if (!(std::abs(queryTolerance) <= reach)) return Position::Border;
    const double x = p.GetX() - originX;
    const double y = p.GetY() - originY;
    if (!(x >= -margin && x <= farX && y >= -margin && y <= farY)) return Position::Outside;
    const std::size_t cell = CellAt(y, rowsPerLength, rows) * columns + CellAt(x, columnsPerLength, columns);
    const Block& block = blocks[cell / 64];
    if ((block.border >> cell % 64 & 1) == 0) {
        return (block.inside >> cell % 64 & 1) != 0 ? Position::Inside : Position::Outside;
    }
    return ClassifyAtBorder(borderCells[BorderCellAt(cell)], p, queryTolerance, includeBorders);
}

PointInPolygon::Position PointInPolygon::PolygonGrid::ClassifyAtBorder(const BorderCell& cell, const Point2D& p,
                                                                       double queryTolerance,
                                                                       bool includeBorders) const {
    const double y = p.GetY();
    const double t = std::abs(queryTolerance);
    const auto sideOf = [&](const Part& part) {
        detail::RingAroundPoint around(p, queryTolerance);
        int turns = part.turns;
        const Run* const lastRun = runs.data() + (&part + 1)->firstRun;
        for (const Run* run = runs.data() + part.firstRun; run != lastRun; ++run) {
            const Corner* corner = corners.data() + run->firstCorner;
            const Corner* const last = corners.data() + (run + 1)->firstCorner - 1;
            // Without branches: nothing foretells them.
            turns -= static_cast<int>(run->startsEast) & static_cast<int>(y >= corner->y);
            turns += static_cast<int>(run->endsEast) & static_cast<int>(y >= last->y);
            if (y - run->low < -t || y - run->high > t) continue;
            for (; corner != last; ++corner) {
                if (!around.Take(corner->x, corner->y, corner[1].x, corner[1].y)) return detail::RingSide::Border;
            }
        }
        around.Add(turns);
        return around.Side([&part] { return part.isCounterClockwise; });
    };
    const Part* const lastPart = parts.data() + (&cell + 1)->firstPart;
    for (const Part* part = parts.data() + cell.firstPart; part != lastPart; ++part) {
        const detail::RingSide side = sideOf(*part);
        if (part->isOuterRing) {
            if (side == detail::RingSide::Border) return includeBorders ? Position::Inside : Position::Outside;
            if (side == detail::RingSide::Outside) return Position::Outside;
        } else if (side == detail::RingSide::Inside || (side == detail::RingSide::Border && !includeBorders)) {
            return Position::Outside;
        }
    }
    return cell.isInsideRest ? Position::Inside : Position::Outside;
}

void PointInPolygon::Recompute(const Polygon2D& area, std::uint64_t rows, double gridTolerance) {
    polygon = area;
    requestedRows = rows;
    tolerance = gridTolerance;
    ComputeGrid();
}

bool PointInPolygon::IsHoleToConsider(const LineString2D& ring) const {
    return Polygon2D(ring).GetMaxWidth(detail::numericalZero) > 2.0 * std::abs(tolerance);
}

bool PointInPolygon::AddHoleAndRecompute(const LineString2D& ring) {
    if (!IsHoleToConsider(ring)) return false;
    polygon.AppendHoleBoundary(ring);
    ComputeGrid();
    return true;
}

void PointInPolygon::GetMinMaxPoints(Point2D& minPoint, Point2D& maxPoint) const {
    minPoint = minCorner;
    maxPoint = maxCorner;
}

void PointInPolygon::ComputeGrid() {
    grid = PolygonGrid();
    detail::Extent extent;
    for (const Point2D& point : polygon.GetPoints()) extent.Add(point);
    const bool isEmpty = !(extent.minX <= extent.maxX && extent.minY <= extent.maxY);
    minCorner = isEmpty ? Point2D() : Point2D(extent.minX, extent.minY);
    maxCorner = isEmpty ? Point2D() : Point2D(extent.maxX, extent.maxY);
    boundingBox = BoundingBox2D(minCorner, maxCorner);
    const Survey survey(polygon);
    if (isEmpty || !survey.isSound) return;

    const double width = extent.maxX - extent.minX;
    const double height = extent.maxY - extent.minY;
    if (width <= detail::numericalZero || height <= detail::numericalZero) {
        polygon = Polygon2D{minCorner, maxCorner};
        return;
    }
    if (polygon.GetSize() <= largestRingWithoutGrid) return;
    if (survey.count >= std::numeric_limits<std::uint32_t>::max()) return;
    const double wantedRows = static_cast<double>(std::max<std::uint64_t>(2, requestedRows));
    const double wantedColumns = std::max(3.0, std::floor(width / height * wantedRows));
    if (!(wantedRows * wantedColumns <= static_cast<double>(PolygonGrid::maxCells))) return;
    auto rows = static_cast<std::size_t>(wantedRows);
    auto columns = static_cast<std::size_t>(wantedColumns);
    const auto rowHeight = [&] { return height / static_cast<double>(rows - 1); };
    const auto columnWidth = [&] { return width / static_cast<double>(columns - 1); };
    while (rows > 2 || columns > 3) {
        const double listed = survey.runX / columnWidth() + survey.runY / rowHeight();
        const auto cells = static_cast<double>(rows * columns);
        if (listed <= 8.0 * static_cast<double>(survey.count) + 0.25 * cells) break;
        const bool isSteep = survey.runY / rowHeight() >= survey.runX / columnWidth();
        if (columns <= 3 || (isSteep && rows > 2)) {
            rows = std::max<std::size_t>(2, rows / 2);
        } else {
            columns = std::max<std::size_t>(3, columns / 2);
        }
    }
    const double rounding = coordinateRounding * survey.largest;
    const double smallestSide = std::min(columnWidth(), rowHeight());
    if (!(smallestSide > 256.0 * rounding)) return;

    PolygonGrid built;
    built.columns = columns;
    built.rows = rows;
    built.originX = extent.minX;
    built.originY = extent.minY;
    built.cellWidth = columnWidth();
    built.cellHeight = rowHeight();
    built.columnsPerLength = 1.0 / built.cellWidth;
    built.rowsPerLength = 1.0 / built.cellHeight;
    const double wantedReach = std::isfinite(tolerance) ? std::abs(tolerance) : 0.0;
    built.reach = std::clamp(wantedReach, smallestSide / 64.0, smallestSide / 2.0);
    PolygonGrid::Builder builder(built, polygon);
    if (!builder.Build(built.reach + rounding)) return;
    built.margin = built.reach + rounding;
    built.farX = width + built.margin;
    built.farY = height + built.margin;
    grid = std::move(built);
}

void PointInPolygon::PolygonClipHoriStrip(const Polygon2D& polygon, std::vector<Polygon2D>& pieces, double low,
                                          double high, double tolerance) {
    detail::ClipStrip(polygon, pieces, 1, low, high, tolerance);
}

void PointInPolygon::PolygonClipVertStrip(const Polygon2D& polygon, std::vector<Polygon2D>& pieces, double low,
                                          double high, double tolerance) {
    detail::ClipStrip(polygon, pieces, 0, low, high, tolerance);
}

}  // namespace Kalvio::Math
