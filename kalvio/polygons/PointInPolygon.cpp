#include "kalvio/polygons/PointInPolygon.h"

#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/Lanes.h"
#include "kalvio/polygons/detail/ClipStrip.h"
#include "kalvio/polygons/detail/PointInRing.h"
#include "kalvio/polygons/detail/Ring.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"

#include <algorithm>
#include <array>
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
        outer = {low.First(), low.Second(), high.First(), high.Second()};
        for (unsigned int i = 0; i < polygon.GetNumHoleBoundaries(); ++i) Add(polygon.GetHoleBoundary(i).GetPoints());
    }

    // Magnitude of a coordinate; NaN aside.
    double Largest() const { return std::max({-low.First(), -low.Second(), high.First(), high.Second()}); }
    // All coordinates are finite and not huge: NaN goes into the runs.
    bool IsSound() const { return Largest() < detail::largestCoordinate && (runs <= runs).Bits() == 3; }

    detail::Extent outer;                             // of the outer ring
    detail::Lanes runs = detail::Lanes::Repeat(0.0);  // sums of |dx| and |dy| over the edges
    std::size_t count = 0;                            // of points

private:
    void Add(const std::vector<Point2D>& ring) {
        // Numbers in registers.
        detail::Lanes least = low;
        detail::Lanes greatest = high;
        detail::Lanes sums = runs;
        detail::WalkRing(ring, [&](const Point2D& a, const Point2D& b) {
            const detail::Lanes end = detail::Lanes::Of(b.GetX(), b.GetY());
            const detail::Lanes step = end - detail::Lanes::Of(a.GetX(), a.GetY());
            least = Min(end, least);
            greatest = Max(end, greatest);
            sums = sums + Max(step, detail::Lanes::Repeat(0.0) - step);
            return false;
        });
        low = least;
        high = greatest;
        runs = sums;
        count += ring.size();
    }

    detail::Lanes low = detail::Lanes::Repeat(std::numeric_limits<double>::infinity());
    detail::Lanes high = detail::Lanes::Repeat(-std::numeric_limits<double>::infinity());
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
    Builder(PolygonGrid& target, const Polygon2D& source, std::size_t pointCount) : grid(target) {
        rings.reserve(1 + source.GetNumHoleBoundaries());
        grid.corners.reserve(pointCount + 1 + source.GetNumHoleBoundaries());
        AddRing(source.GetPoints());
        for (unsigned int i = 0; i < source.GetNumHoleBoundaries(); ++i) AddRing(source.GetHoleBoundary(i).GetPoints());
    }

    // False, the grid still to be cleared, when the indexes do not suffice.
    bool Build(double padding) {
        pad = padding;
        gridOrigin = detail::Lanes::Of(grid.originX, grid.originY);
        cellsPerLength = detail::Lanes::Of(grid.columnsPerLength, grid.rowsPerLength);
        lastCells = detail::Lanes::Of(AsReal(grid.columns - 1), AsReal(grid.rows - 1));
        grid.blocks.assign(grid.columns * grid.rows / 64 + 1, Block());
        lastRuns.assign(grid.columns * grid.rows, 0);
        cellRuns.resize(4 * (grid.columns + grid.rows));  // about what a shore takes
        cellRuns[0].last = none - 1;                      // before no edge
        crossings.reserve(4 * grid.rows);
        lastCrossings.assign(grid.rows, none);
        for (std::size_t r = 0; r < rings.size(); ++r) AddEdges(static_cast<std::uint32_t>(r));
        ListCells();
        return std::max({grid.corners.size(), cellRuns.size(), crossings.size(), grid.runs.size()}) < none;
    }

private:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    struct Ring {
        std::uint32_t firstCorner;
        std::uint32_t edges;
        bool isCounterClockwise;
        std::int32_t turns = 0;  // around the middle of the cell that is being listed
    };
    // Cells that a point comes near to, and the rows whose middles are below it.
    struct Place {
        std::uint32_t west, east, south, north;
        std::uint32_t rowsBelow;

        bool operator==(const Place&) const = default;
    };
    // Consecutive edges listed for a cell.
    struct CellRun {
        std::uint32_t ring;
        std::uint32_t first;  // by their corners
        std::uint32_t last;
        std::uint32_t next;  // of the cell; after the last run the first
    };
    // An edge at the level of the middles of a row, east of the middles of the first `columns` cells.
    struct Crossing {
        std::uint32_t columns;
        std::uint32_t ring;
        std::int32_t turn;
        std::uint32_t before;  // in the row
    };

    void AddRing(const std::vector<Point2D>& points) {
        if (points.empty()) return;
        const auto first = static_cast<std::uint32_t>(grid.corners.size());
        const std::size_t edges = points.size() - (detail::HasClosingEdge(points) ? 0 : 1);
        grid.corners.resize(first + edges + 1);
        Corner* corner = grid.corners.data() + first;
        for (const Point2D& point : points) *corner++ = {point.GetX(), point.GetY()};
        grid.corners.back() = {points.front().GetX(), points.front().GetY()};
        rings.push_back({first, static_cast<std::uint32_t>(edges), detail::DoubledArea(points, points.front()) > 0.0});
    }

    double MiddleX(std::size_t column) const { return grid.originX + (AsReal(column) + 0.5) * grid.cellWidth; }
    double MiddleY(std::size_t row) const { return grid.originY + (AsReal(row) + 0.5) * grid.cellHeight; }

    std::size_t CellOf(std::size_t column, std::size_t row) const { return row * grid.columns + column; }

    static double CrossingAt(const Corner& a, const Corner& b, double level) {
        return a.x + (level - a.y) / (b.y - a.y) * (b.x - a.x);
    }

    // As `CellAt` of both coordinates, without branches.
    detail::Lanes CellsAt(detail::Lanes place) const {
        return Min(Max((place - gridOrigin) * cellsPerLength, detail::Lanes::Repeat(0.0)), lastCells);
    }

    Place PlaceOf(const Corner& corner) const {
        const auto whole = [](double cell) { return static_cast<std::uint32_t>(static_cast<std::int32_t>(cell)); };
        const detail::Lanes place = detail::Lanes::Load(&corner.x);
        const detail::Lanes low = CellsAt(place - detail::Lanes::Repeat(pad));
        const detail::Lanes high = CellsAt(place + detail::Lanes::Repeat(pad));
        const std::uint32_t row = whole(CellsAt(place).Second());
        return {whole(low.First()), whole(high.First()), whole(low.Second()), whole(high.Second()),
                row + (MiddleY(row) < corner.y ? 1 : 0)};
    }

    // The places first, some at a time: what is done with them cannot be foretold, and should not wait for numbers.
    void AddEdges(std::uint32_t ring) {
        constexpr std::uint32_t most = 64;
        std::array<Place, most + 1> places;
        std::uint32_t edge = rings[ring].firstCorner;
        const std::uint32_t end = edge + rings[ring].edges;
        places[0] = PlaceOf(grid.corners[edge]);
        while (edge < end) {
            const std::uint32_t count = std::min(most, end - edge);
            for (std::uint32_t i = 1; i <= count; ++i) places[i] = PlaceOf(grid.corners[edge + i]);
            for (std::uint32_t i = 0; i < count; ++i) {
                AddEdge(ring, edge + i, places[i], places[i + 1]);
                const Place& place = places[i + 1];
                if (place.west != place.east || place.south != place.north) continue;
                const std::uint32_t first = i;
                while (i + 1 < count && places[i + 2] == place) ++i;
                if (i > first) cellRuns[lastRuns[CellOf(place.west, place.south)]].last = edge + i;
            }
            edge += count;
            places[0] = places[count];
        }
    }

    void AddEdge(std::uint32_t ring, std::uint32_t edge, const Place& from, const Place& to) {
        const std::uint32_t south = std::min(from.south, to.south);
        const std::uint32_t west = std::min(from.west, to.west);
        const std::uint32_t northward = std::max(from.north, to.north) - south;
        const std::uint32_t eastward = std::max(from.east, to.east) - west;
        if (northward == 0 || eastward == 0) {
            AddToCells(ring, edge, CellOf(west, south), northward + eastward + 1, northward == 0 ? 1 : grid.columns);
        } else {
            AddToRows(ring, edge, south, south + northward);
        }
        if (from.rowsBelow != to.rowsBelow) AddCrossings(ring, edge, from.rowsBelow, to.rowsBelow);
    }

    // Without branches: whether a run goes on changes too often to be foretold.
    void AddToCells(std::uint32_t ring, std::uint32_t edge, std::size_t cell, std::size_t count, std::size_t step) {
        if (cellRuns.size() < runCount + count) cellRuns.resize(2 * cellRuns.size() + count);
        CellRun* const made = cellRuns.data();
        for (; count > 0; --count, cell += step) {
            const std::uint32_t last = lastRuns[cell];
            const bool goesOn = made[last].last + 1 == edge;
            const std::uint32_t run = goesOn ? last : runCount;
            const std::uint32_t first = last == 0 ? runCount : made[last].next;
            made[runCount] = {ring, edge, edge, first};
            made[last].next = goesOn ? first : runCount;
            made[run].last = edge;
            lastRuns[cell] = run;
            runCount += goesOn ? 0 : 1;
            grid.blocks[cell / 64].border |= std::uint64_t{1} << cell % 64;
        }
    }

    void AddToRows(std::uint32_t ring, std::uint32_t edge, std::size_t firstRow, std::size_t lastRow) {
        const Corner& a = grid.corners[edge];
        const Corner& b = grid.corners[edge + 1];
        const Corner& lower = a.y <= b.y ? a : b;
        const Corner& upper = a.y <= b.y ? b : a;
        const double west = std::min(a.x, b.x);
        const double east = std::max(a.x, b.x);
        const double height = upper.y - lower.y;
        // Twice the distance at which the margin decides, for the rounding of the turn; between the ends only.
        const double zone = height > 0.0 ? 2.0 * detail::windingMargin / height : 0.0;
        for (std::size_t row = firstRow; row <= lastRow; ++row) {
            double from = west;
            double to = east;
            if (height > pad) {
                const double base = grid.originY + AsReal(row) * grid.cellHeight;
                const auto xAt = [&](double level) {
                    if (level <= lower.y) return lower.x;
                    if (level >= upper.y) return upper.x;
                    return std::clamp(CrossingAt(lower, upper, level), west, east);
                };
                const double low = row == firstRow ? lower.x : xAt(base - 2.0 * pad);
                const double high = row == lastRow ? upper.x : xAt(base + grid.cellHeight + 2.0 * pad);
                from = std::min(low, high);
                to = std::max(low, high);
            }
            const std::size_t column = grid.ColumnAt(std::max(from - zone, west) - pad);
            const std::size_t lastColumn = grid.ColumnAt(std::min(to + zone, east) + pad);
            AddToCells(ring, edge, CellOf(column, row), lastColumn - column + 1, 1);
        }
    }

    void AddCrossings(std::uint32_t ring, std::uint32_t edge, std::uint32_t rowsBelow, std::uint32_t rowsBelowEnd) {
        for (std::uint32_t row = std::min(rowsBelow, rowsBelowEnd); row < std::max(rowsBelow, rowsBelowEnd); ++row) {
            const double x = CrossingAt(grid.corners[edge], grid.corners[edge + 1], MiddleY(row));
            const std::size_t column = grid.ColumnAt(x);
            const std::size_t west = column + (MiddleX(column) < x ? 1 : 0);
            const auto added = static_cast<std::uint32_t>(crossings.size());
            crossings.push_back(
                {static_cast<std::uint32_t>(west), ring, rowsBelow < rowsBelowEnd ? 1 : -1, lastCrossings[row]});
            lastCrossings[row] = added;
        }
    }

    // Walks along each row, from crossing to crossing, and writes what the queries read.
    void ListCells() {
        std::size_t borderCellCount = 0;
        for (Block& block : grid.blocks) {
            block.firstBorderCell = static_cast<std::uint32_t>(borderCellCount);
            borderCellCount += static_cast<std::size_t>(std::popcount(block.border));
        }
        grid.borderCells.reserve(borderCellCount + 1);
        grid.parts.reserve(borderCellCount + 1);
        grid.runs.reserve(runCount + grid.corners.size() / PolygonGrid::longestRun);
        std::vector<Crossing> ofRow;
        for (std::size_t row = 0; row < grid.rows; ++row) {
            ofRow.clear();
            for (std::uint32_t i = lastCrossings[row]; i != none; i = crossings[i].before)
                ofRow.push_back(crossings[i]);
            std::sort(ofRow.begin(), ofRow.end(),
                      [](const Crossing& a, const Crossing& b) { return a.columns < b.columns; });
            std::uint32_t column = 0;
            for (const Crossing& crossing : ofRow) {
                ListCells(row, column, crossing.columns);
                column = crossing.columns;
                std::int32_t& turns = rings[crossing.ring].turns;
                const bool wasAround = turns != 0;
                turns -= crossing.turn;
                if (crossing.ring > 0) holesAround += (turns != 0 ? 1 : 0) - (wasAround ? 1 : 0);
            }
            ListCells(row, column, grid.columns);
        }
        grid.borderCells.push_back({static_cast<std::uint32_t>(grid.parts.size()), false});
        grid.parts.push_back({static_cast<std::uint32_t>(grid.runs.size()), 0, false, false});
    }

    // Cells whose middles have the same rings around them.
    void ListCells(std::size_t row, std::size_t column, std::size_t endColumn) {
        const bool isInside = rings[0].turns != 0 && holesAround == 0;
        const std::size_t end = row * grid.columns + endColumn;
        for (std::size_t from = row * grid.columns + column; from < end;) {
            Block& block = grid.blocks[from / 64];
            const std::size_t count = std::min(end - from, 64 - from % 64);
            const std::uint64_t bits = (~std::uint64_t{0} >> (64 - count)) << from % 64;
            if (isInside) block.inside |= bits;
            for (std::uint64_t left = block.border & bits; left != 0; left &= left - 1) {
                const std::size_t cell = from / 64 * 64 + static_cast<std::size_t>(std::countr_zero(left));
                AddBorderCell(cellRuns[lastRuns[cell]].next, MiddleX(cell - row * grid.columns), MiddleY(row));
            }
            from += count;
        }
    }

    // x, y: the middle of the cell.
    void AddBorderCell(std::uint32_t first, double x, double y) {
        const std::size_t firstPart = grid.parts.size();
        const bool isInOuterRing = cellRuns[first].ring == 0 || rings[0].turns != 0;
        std::int32_t holesOver = holesAround;
        std::uint32_t i = first;
        bool isLast = !isInOuterRing;
        while (!isLast) {
            const std::uint32_t r = cellRuns[i].ring;
            const Ring& ring = rings[r];
            if (r > 0 && ring.turns != 0) --holesOver;  // asked at every query instead
            Part part{static_cast<std::uint32_t>(grid.runs.size()), ring.turns, r == 0, ring.isCounterClockwise};
            for (; !isLast && cellRuns[i].ring == r; isLast = i == first) {
                part.turns -= AddRun(cellRuns[i], x, y);
                i = cellRuns[i].next;
            }
            grid.parts.push_back(part);
        }
        grid.borderCells.push_back({static_cast<std::uint32_t>(firstPart), isInOuterRing && holesOver == 0});
    }

    // @return what the run adds to the winding number of the middle of the cell
    int AddRun(const CellRun& run, double x, double y) {
        int turns = 0;
        for (std::uint32_t first = run.first; first <= run.last; first += PolygonGrid::longestRun) {
            const std::uint32_t end = std::min(run.last - first + 1, PolygonGrid::longestRun) + first;
            const Corner* a = grid.corners.data() + first;
            const Corner* const last = grid.corners.data() + end;
            const bool startsEast = first == run.first && a->x > x;
            const bool endsEast = end == run.last + 1 && last->x > x;
            double low = a->y;
            double high = a->y;
            bool isAbove = y >= a->y;
            if (startsEast && isAbove) --turns;
            for (; a != last; ++a) {
                const Corner& b = a[1];
                low = std::min(low, b.y);
                high = std::max(high, b.y);
                const bool wasAbove = isAbove;
                isAbove = y >= b.y;
                if (wasAbove != isAbove && x < CrossingAt(*a, b, y)) turns += wasAbove ? 1 : -1;
            }
            if (endsEast && isAbove) ++turns;
            grid.runs.push_back({low, high, first, static_cast<std::uint8_t>(end - first), startsEast, endsEast});
        }
        return turns;
    }

    PolygonGrid& grid;
    std::vector<Ring> rings;
    double pad = 0.0;
    detail::Lanes gridOrigin = detail::Lanes::Repeat(0.0);
    detail::Lanes cellsPerLength = gridOrigin;
    detail::Lanes lastCells = gridOrigin;
    std::vector<CellRun> cellRuns;  // that of index 0 stands for none, those from `runCount` on are not yet in use
    std::uint32_t runCount = 1;
    std::vector<std::uint32_t> lastRuns;  // of each cell
    std::vector<Crossing> crossings;
    std::vector<std::uint32_t> lastCrossings;  // of each row
    std::int32_t holesAround = 0;              // the middle of the cell that is being listed
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
            const Corner* const last = corner + run->edges;
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
    const Survey survey(polygon);
    const detail::Extent& extent = survey.outer;
    const bool isEmpty = !(extent.minX <= extent.maxX && extent.minY <= extent.maxY);
    minCorner = isEmpty ? Point2D() : Point2D(extent.minX, extent.minY);
    maxCorner = isEmpty ? Point2D() : Point2D(extent.maxX, extent.maxY);
    boundingBox = BoundingBox2D(minCorner, maxCorner);
    if (isEmpty || !survey.IsSound()) return;

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
        const double listed = survey.runs.First() / columnWidth() + survey.runs.Second() / rowHeight();
        const auto cells = static_cast<double>(rows * columns);
        if (listed <= 8.0 * static_cast<double>(survey.count) + 0.25 * cells) break;
        const bool isSteep = survey.runs.Second() / rowHeight() >= survey.runs.First() / columnWidth();
        if (columns <= 3 || (isSteep && rows > 2)) {
            rows = std::max<std::size_t>(2, rows / 2);
        } else {
            columns = std::max<std::size_t>(3, columns / 2);
        }
    }
    const double rounding = coordinateRounding * survey.Largest();
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
    PolygonGrid::Builder builder(built, polygon, survey.count);
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
