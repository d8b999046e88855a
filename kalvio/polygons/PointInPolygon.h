#pragma once

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/Polygon2D.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Kalvio::Math {

/// Tells for many points whether they lie in one polygon: it holds a copy of the polygon and a grid of cells over it.
///
/// It answers exactly as the polygon does, for every point, tolerance and flag; only faster. A query of a cell that no
/// border touches is one look-up. Elsewhere only the edges near the cell are asked, by the polygon's own rule: what all
/// other edges add to the winding numbers is known for each cell.
///
/// Build with the largest tolerance of the queries. Queries with a larger one (beyond 1/64 of a cell) take the time of
/// the polygon itself; so does everything without a grid. Any number of threads may query one tester at once.
///
///     const PointInPolygon tester(polygon, 500, 1e-4);
///     const bool isInside = tester.IsPointInside(Point2D(385010.0, 6672020.0), 1e-4);
class KALVIO_MATH_API PointInPolygon {
public:
    /// State of a cell, and answer of the grid.
    enum class Position : std::uint32_t {
        Inside = 0,     ///< inside the polygon
        Outside = 1,    ///< outside
        Border = 2,     ///< a cell that an edge touches; as an answer, not decided by the grid
        Undefined = 3,  ///< not yet classified
    };

    /// Rectangular cells over the extent of the outer ring: column and row 0 begin at the least coordinates, the last
    /// ones reach a cell beyond the greatest. Sides belong to either cell.
    class KALVIO_MATH_API PolygonGrid {
    public:
        /// More cells than this are not built.
        static constexpr std::size_t maxCells = std::size_t{1} << 26;

        bool IsBuilt() const { return columns > 0; }
        /// 0, as the rest, while not built.
        std::size_t GetColumns() const { return columns; }
        std::size_t GetRows() const { return rows; }
        double GetOriginX() const { return originX; }
        double GetOriginY() const { return originY; }
        double GetCellWidth() const { return cellWidth; }
        double GetCellHeight() const { return cellHeight; }
        /// `Border` for every cell that an edge touches or comes near to by the tolerance; `Undefined` when there is no
        /// such cell.
        Position GetPosition(std::size_t column, std::size_t row) const;
        /// The polygon's answer for the point; `Border` when the grid does not know it.
        Position Classify(const Point2D& p, double queryTolerance, bool includeBorders) const;

    private:
        friend class PointInPolygon;
        class Builder;

        // 64 consecutive cells, row by row; a cell's bit in `border` leads to its place among the border cells.
        struct Block {
            std::uint64_t border = 0;
            std::uint64_t inside = 0;
            std::uint32_t firstBorderCell = 0;
        };
        static constexpr std::uint32_t longestRun = 8;

        // What the rings without an edge here say of the whole cell, and one part for each other ring, by ring.
        struct BorderCell {
            std::uint32_t firstPart;
            bool isInsideRest;
        };
        // Winding number, less what the runs of the part add: see Builder.
        struct Part {
            std::uint32_t firstRun;
            std::int32_t turns;
            bool isOuterRing;
            bool isCounterClockwise;
        };
        // At most `longestRun` consecutive edges of the ring that come near the cell, and how high they reach. The
        // flags tell whether an end from which the ring leaves the listed edges is east of the middle of the cell.
        struct Run {
            double low;
            double high;
            std::uint32_t firstCorner;
            std::uint8_t edges;
            bool startsEast;
            bool endsEast;
        };
        struct Corner {
            double x, y;
        };

        // Counts are small: signed conversions take one instruction.
        static double AsReal(std::size_t count) { return static_cast<double>(static_cast<std::int64_t>(count)); }
        static std::size_t CellAt(double offset, double cellsPerLength, std::size_t count) {
            const double cell = offset * cellsPerLength;
            if (!(cell > 0.0)) return 0;
            return cell < AsReal(count) ? static_cast<std::size_t>(static_cast<std::int64_t>(cell)) : count - 1;
        }
        std::size_t ColumnAt(double x) const { return CellAt(x - originX, columnsPerLength, columns); }
        std::size_t RowAt(double y) const { return CellAt(y - originY, rowsPerLength, rows); }
        std::size_t BorderCellAt(std::size_t cell) const;
        Position ClassifyAtBorder(const BorderCell& cell, const Point2D& p, double queryTolerance,
                                  bool includeBorders) const;

        std::size_t columns = 0;
        std::size_t rows = 0;
        double originX = 0.0;
        double originY = 0.0;
        double cellWidth = 0.0;
        double cellHeight = 0.0;
        double columnsPerLength = 0.0;
        double rowsPerLength = 0.0;
        double reach = -1.0;  // the largest tolerance that the runs serve
        double farX = 0.0;    // so far outside the box no edge counts
        double farY = 0.0;
        double margin = 0.0;
        std::vector<Block> blocks;
        std::vector<BorderCell> borderCells;  // these two each end with a sentinel
        std::vector<Part> parts;
        std::vector<Run> runs;
        std::vector<Corner> corners;  // of all rings, each with its first one again at its end
    };

    /// Empty: every point is outside.
    PointInPolygon() = default;
    /// As `Recompute`.
    PointInPolygon(const Polygon2D& area, std::uint64_t rows, double gridTolerance) {
        Recompute(area, rows, gridTolerance);
    }
    /// The string becomes the outer ring.
    PointInPolygon(const LineString2D& outerRing, std::uint64_t rows, double gridTolerance) {
        Recompute(Polygon2D(outerRing), rows, gridTolerance);
    }

    /// Copies the polygon and builds the grid, in time linear in the numbers of points and cells.
    ///
    /// No grid is built for an outer ring of 100 points or fewer, for coordinates that are not finite or beyond 1e100,
    /// above `PolygonGrid::maxCells`, and for cells no larger than the resolution of the coordinates. A polygon no
    /// wider or no higher than 1e-10 is replaced by the two corners of its box. Where long edges cross very many cells,
    /// cells are doubled in the direction in which most edges run until the edges in the cells are about as many as
    /// points and cells.
    /// @param rows           of cells over the height, at least 2; columns make the cells about square, at least 3
    /// @param gridTolerance  the largest tolerance of the queries to come; up to half a cell counts
    void Recompute(const Polygon2D& area, std::uint64_t rows, double gridTolerance);
    /// Adds a hole and builds the grid anew.
    /// @return false, nothing changed, for a ring whose smallest width is at most twice the tolerance of the grid
    bool AddHoleAndRecompute(const LineString2D& ring);

    /// `Polygon2D::IsPointInside`.
    [[nodiscard]] bool IsPointInside(const Point2D& p, double queryTolerance) const {
        return IsPointInsideAndBorders(p, queryTolerance, true);
    }
    /// `Polygon2D::IsPointInsideAndBorders`.
    [[nodiscard]] bool IsPointInsideAndBorders(const Point2D& p, double queryTolerance, bool includeBorders) const {
        const Position position = grid.Classify(p, queryTolerance, includeBorders);
        if (position != Position::Border) return position == Position::Inside;
        return polygon.IsPointInsideAndBorders(p, queryTolerance, includeBorders);
    }

    const Polygon2D& GetPolygon() const { return polygon; }
    const PolygonGrid& GetGrid() const { return grid; }
    /// Extent of the outer ring.
    const BoundingBox2D& GetBoundingBox() const { return boundingBox; }
    /// The corners of the extent, exactly.
    void GetMinMaxPoints(Point2D& minPoint, Point2D& maxPoint) const;

    /// Appends the pieces of a valid polygon between the lines y = low and y = high (x = low and x = high), with their
    /// holes and in the direction of its outer ring. Pieces that touch in a point only are apart, so that each passes
    /// `Validate`. A point at most |tolerance| from one of the lines is moved onto it, so that no thinner sliver is cut
    /// off; 0 clips exactly, but for necks no wider than 1e-10 or the rounding of the coordinates.
    static void PolygonClipHoriStrip(const Polygon2D& polygon, std::vector<Polygon2D>& pieces, double low, double high,
                                     double tolerance);
    static void PolygonClipVertStrip(const Polygon2D& polygon, std::vector<Polygon2D>& pieces, double low, double high,
                                     double tolerance);

private:
    void ComputeGrid();
    bool IsHoleToConsider(const LineString2D& ring) const;

    BoundingBox2D boundingBox;
    PolygonGrid grid;
    Polygon2D polygon;
    double tolerance = 0.0;
    std::uint64_t requestedRows = 0;
    Point2D minCorner;
    Point2D maxCorner;
};

}  // namespace Kalvio::Math
