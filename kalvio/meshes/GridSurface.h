#pragma once

#include "kalvio/core/Geometry.h"
#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/MovedNumber.h"

#include <cstddef>
#include <limits>
#include <vector>

namespace Kalvio::Math {

class Angle;
class TinSurfacePatch3D;

/// A surface of heights at the nodes of squares along the axes. Nodes without a height are gaps.
///
///     GridSurface grid;
///     if (!grid.SetOver(surface.GetBoundingBox2D(), 5.0)) return false;
///     grid.Fill([&](const Point2D& place, double& z) { return surface.GetHeight(place, z); });
///
/// Filled so from a `LocalKriging`, value and deviation become two grids. Contours, sections and volumes are those of
/// `MakeTin`. All questions are safe to ask from several threads.
class KALVIO_MATH_API GridSurface final : public IGeometry {
public:
    /// The height of a gap.
    static constexpr double gap = std::numeric_limits<double>::quiet_NaN();

    /// No nodes.
    GridSurface() = default;

    MathTypes GetType() const override;
    /// Extent of the nodes, in space of those with heights; the point box at the origin when there are none.
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    /// Comparable with a `GridSurface` of as many nodes whose first node, step, heights and gaps are equal.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const GridSurface& other, double tolerance) const;
    [[nodiscard]] GridSurface* Clone() const override;

    /// Replaces all by gaps.
    /// @param first  the node of column 0 and row 0, of the least coordinates
    /// @return false, everything untouched, for a step that is not above 1e-9, coordinates that are not finite or
    ///         above 1e70, nodes that the rounding of coordinates does not part, no nodes and more than 2^31 of them
    [[nodiscard]] bool Set(const Point2D& first, double step, std::size_t columnCount, std::size_t rowCount);
    /// The same with the nodes at multiples of the step that enclose an extent.
    [[nodiscard]] bool SetOver(const BoundingBox2D& extent, double step);
    /// Gives each node a height, or a gap where heightAt(place, z) is false or z is not finite.
    template <class HeightAt>
    void Fill(HeightAt&& heightAt) {
        for (std::size_t row = 0; row < rows; ++row) {
            for (std::size_t column = 0; column < columns; ++column) {
                double z = gap;
                SetHeightOf(column, row, heightAt(GetPlace(column, row), z) ? z : gap);
            }
        }
    }

    std::size_t GetColumns() const { return columns; }
    std::size_t GetRows() const { return rows; }
    double GetStep() const { return step; }
    /// The place of a node, unchecked.
    Point2D GetPlace(std::size_t column, std::size_t row) const {
        return {origin.GetX() + static_cast<double>(column) * step, origin.GetY() + static_cast<double>(row) * step};
    }
    /// `gap` for one and where there is no such node.
    double GetHeightOf(std::size_t column, std::size_t row) const {
        return column < columns && row < rows ? heights[row * columns + column] : gap;
    }
    /// What is not finite or above 1e70 becomes a gap. Nothing where there is no such node.
    void SetHeightOf(std::size_t column, std::size_t row, double height);

    /// The height at a place, bilinear between the four nodes around it.
    /// @return false, `z` untouched, outside and where a node that counts is a gap
    [[nodiscard]] bool GetHeight(const Point2D& place, double& z) const;
    /// The height of the triangle at a place, of those that `MakeTin` makes. @return false, `z` untouched, outside
    [[nodiscard]] bool GetTriangleHeight(const Point2D& place, double& z) const;
    /// Rise over run of the bilinear surface, and the bearing in which it falls, clockwise from +Y; 0 where it is
    /// level. On a line between squares that of the one to the right or above, if its nodes have heights.
    /// @return false, nothing written, outside and where a node of the squares there is a gap
    [[nodiscard]] bool GetSlope(const Point2D& place, double& slope, Angle& fall) const;

    /// Triangles: two for each square, parted by the diagonal from its first node; one where only three have heights.
    /// @return false, `tin` untouched, when there are none
    [[nodiscard]] bool MakeTin(TinSurfacePatch3D& tin) const;

private:
    struct Cell;

    template <class Visit>
    bool FindCell(const Point2D& place, Visit&& visit) const;

    Point2D origin;
    double step = 0.0;
    detail::MovedNumber<std::size_t> columns;
    detail::MovedNumber<std::size_t> rows;
    std::vector<double> heights;  // row by row
};

template <>
KALVIO_MATH_API bool Geometry::AreEqual(const GridSurface& a, const GridSurface& b, double tolerance);

}  // namespace Kalvio::Math
