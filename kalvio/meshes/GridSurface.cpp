#include "kalvio/meshes/GridSurface.h"

#include "kalvio/core/Angle.h"
#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"
#include "kalvio/meshes/detail/SurfaceBuilder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Kalvio::Math {

namespace {

constexpr double mostNodes = 2147483648.0;  // two triangles for each have numbers

double ReachOf(double value, double other) { return std::max(std::abs(value), std::abs(other)); }

}  // namespace

// A square, the heights of its nodes counter-clockwise from the first one, and a place in it from 0 to 1.
struct GridSurface::Cell {
    bool IsWhole() const {
        return std::none_of(z.begin(), z.end(), [](double height) { return std::isnan(height); });
    }
    // NaN where there is no triangle.
    double GetTriangleHeight() const {
        const auto& [a, b, c, d] = z;
        const double right = a + u * (b - a) + v * (c - b);
        const double left = a + v * (d - a) + u * (c - d);
        if (std::isnan(a)) return u + v < 1.0 - rounding ? gap : c + (1.0 - u) * (d - c) + (1.0 - v) * (b - c);
        if (std::isnan(b)) return u > v + rounding ? gap : left;
        if (std::isnan(c)) return u + v > 1.0 + rounding ? gap : a + u * (b - a) + v * (d - a);
        if (std::isnan(d)) return v > u + rounding ? gap : right;
        return u > v ? right : left;
    }

    std::array<double, 4> z;
    double u = 0.0;
    double v = 0.0;
    double rounding = 0.0;  // of u and v
};

MathTypes GridSurface::GetType() const { return MathTypes::GridSurface; }

BoundingBox2D GridSurface::GetBoundingBox2D() const {
    return columns == 0 ? BoundingBox2D() : BoundingBox2D(origin, GetPlace(columns - 1, rows - 1));
}

BoundingBox3D GridSurface::GetBoundingBox3D() const {
    BoundingBox3D box;
    bool isFirst = true;
    for (std::size_t i = 0; i < heights.size(); ++i) {
        if (std::isnan(heights[i])) continue;
        const BoundingBox3D ofNode = Point3D(GetPlace(i % columns, i / columns), heights[i]).GetBoundingBox3D();
        box = isFirst ? ofNode : box + ofNode;
        isFirst = false;
    }
    return box;
}

bool GridSurface::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::GridSurface && IsEqualTo(static_cast<const GridSurface&>(other), tolerance);
}

bool GridSurface::IsEqualTo(const GridSurface& other, double tolerance) const {
    return columns == other.columns && rows == other.rows && origin.IsEqualTo(other.origin, tolerance) &&
           (columns == 0 || std::abs(step - other.step) < tolerance) &&
           std::equal(heights.begin(), heights.end(), other.heights.begin(), [tolerance](double a, double b) {
               return std::abs(a - b) < tolerance || (std::isnan(a) && std::isnan(b));
           });
}

GridSurface* GridSurface::Clone() const { return new GridSurface(*this); }

bool GridSurface::Set(const Point2D& first, double newStep, std::size_t columnCount, std::size_t rowCount) {
    const auto width = static_cast<double>(columnCount);
    const auto height = static_cast<double>(rowCount);
    if (!(newStep > 0.0) || !(width * height > 0.0) || !(width * height <= mostNodes)) return false;
    if (!std::isfinite(first.GetX()) || !std::isfinite(first.GetY())) return false;
    const double reach = std::max(ReachOf(first.GetX(), first.GetX() + (width - 1.0) * newStep),
                                  ReachOf(first.GetY(), first.GetY() + (height - 1.0) * newStep));
    constexpr double leastSteps = 1e-12;  // of the largest coordinate, so that places in squares have some digits
    constexpr double leastStep = 10.0 * detail::numericalZero;
    if (!(reach <= detail::largestOfSurface) || !(newStep > std::max(leastStep, leastSteps * reach))) return false;
    heights.assign(columnCount * rowCount, gap);  // first: a grid too large for the memory changes nothing
    origin = first;
    step = newStep;
    columns = columnCount;
    rows = rowCount;
    return true;
}

bool GridSurface::SetOver(const BoundingBox2D& extent, double newStep) {
    if (!(newStep > 0.0)) return false;
    const Point2D low = extent.GetMinPoint();
    const Point2D high = extent.GetMaxPoint();
    const double left = std::floor(low.GetX() / newStep);
    const double bottom = std::floor(low.GetY() / newStep);
    const double width = std::ceil(high.GetX() / newStep) - left + 1.0;
    const double height = std::ceil(high.GetY() / newStep) - bottom + 1.0;
    if (!(width >= 1.0) || !(height >= 1.0) || !(width * height <= mostNodes)) return false;
    return Set({left * newStep, bottom * newStep}, newStep, static_cast<std::size_t>(width),
               static_cast<std::size_t>(height));
}

void GridSurface::SetHeightOf(std::size_t column, std::size_t row, double height) {
    if (column >= columns || row >= rows) return;
    heights[row * columns + column] = std::abs(height) <= detail::largestOfSurface ? height : gap;
}

// Calls visit(cell) for the squares that hold a place, the one to the right and above first, until it answers true.
// Those around a place on the border have nodes that do not exist, as gaps. Places are on lines within the rounding of
// coordinates.
template <class Visit>
bool GridSurface::FindCell(const Point2D& place, Visit&& visit) const {
    if (columns == 0 || !std::isfinite(place.GetX()) || !std::isfinite(place.GetY())) return false;
    constexpr double perUnit = 4.0 * std::numeric_limits<double>::epsilon();
    const double rounding = std::max(detail::numericalZero, perUnit * ReachOf(place.GetX(), place.GetY())) / step;
    if (!(rounding < 0.5)) return false;  // farther away than any grid reaches
    const auto find = [&](double value, double from, std::size_t count, std::size_t& index, double& share) {
        const double steps = (value - from) / step;
        if (!(steps >= -rounding && steps <= static_cast<double>(count) - 1.0 + rounding)) return false;
        const double nearest = std::round(steps);
        const bool isOnLine = std::abs(steps - nearest) <= rounding;
        index = static_cast<std::size_t>(isOnLine ? nearest : std::floor(steps));
        share = isOnLine ? 0.0 : steps - std::floor(steps);
        return true;
    };
    std::size_t column = 0;
    std::size_t row = 0;
    double u = 0.0;
    double v = 0.0;
    if (!find(place.GetX(), origin.GetX(), columns, column, u) || !find(place.GetY(), origin.GetY(), rows, row, v)) {
        return false;
    }
    Cell cell;
    cell.rounding = rounding;
    for (std::size_t below = 0; below <= (v == 0.0 && row > 0 ? 1U : 0U); ++below) {
        for (std::size_t left = 0; left <= (u == 0.0 && column > 0 ? 1U : 0U); ++left) {
            const std::size_t x = column - left;
            const std::size_t y = row - below;
            cell.z = {GetHeightOf(x, y), GetHeightOf(x + 1, y), GetHeightOf(x + 1, y + 1), GetHeightOf(x, y + 1)};
            cell.u = left == 1 ? 1.0 : u;
            cell.v = below == 1 ? 1.0 : v;
            if (visit(cell)) return true;
        }
    }
    return false;
}

bool GridSurface::GetHeight(const Point2D& place, double& z) const {
    return FindCell(place, [&z](const Cell& cell) {
        const std::array<double, 4> weights = {(1.0 - cell.u) * (1.0 - cell.v), cell.u * (1.0 - cell.v),
                                               cell.u * cell.v, (1.0 - cell.u) * cell.v};
        double sum = 0.0;
        for (std::size_t i = 0; i < 4; ++i) {
            if (weights[i] != 0.0) sum += weights[i] * cell.z[i];
        }
        if (std::isnan(sum)) return false;
        z = sum;
        return true;
    });
}

bool GridSurface::GetTriangleHeight(const Point2D& place, double& z) const {
    return FindCell(place, [&z](const Cell& cell) {
        const double height = cell.GetTriangleHeight();
        if (std::isnan(height)) return false;
        z = height;
        return true;
    });
}

bool GridSurface::GetSlope(const Point2D& place, double& slope, Angle& fall) const {
    return FindCell(place, [&](const Cell& cell) {
        if (!cell.IsWhole()) return false;
        const auto& [a, b, c, d] = cell.z;
        const double toRight = ((1.0 - cell.v) * (b - a) + cell.v * (c - d)) / step;
        const double upward = ((1.0 - cell.u) * (d - a) + cell.u * (c - b)) / step;
        slope = std::hypot(toRight, upward);
        fall = slope > 0.0 ? Angle(std::atan2(-toRight, -upward)) : Angle();
        return true;
    });
}

bool GridSurface::MakeTin(TinSurfacePatch3D& tin) const {
    IndexedTriangleSet3D set;
    std::vector<unsigned int>& indexes = set.GetIndexes();
    const auto node = [this](std::size_t column, std::size_t row) {
        return static_cast<unsigned int>(row * columns + column);
    };
    for (std::size_t row = 0; row + 1 < rows; ++row) {
        for (std::size_t column = 0; column + 1 < columns; ++column) {
            const std::array<unsigned int, 4> corners = {node(column, row), node(column + 1, row),
                                                         node(column + 1, row + 1), node(column, row + 1)};
            std::array<unsigned int, 4> present{};
            const auto end = std::copy_if(corners.begin(), corners.end(), present.begin(),
                                          [this](unsigned int corner) { return !std::isnan(heights[corner]); });
            if (end < present.begin() + 3) continue;
            indexes.insert(indexes.end(), present.begin(), present.begin() + 3);
            if (end == present.end()) indexes.insert(indexes.end(), {present[0], present[2], present[3]});
        }
    }
    std::vector<Point3D>& vertices = set.GetVertices();
    vertices.reserve(heights.size());
    for (std::size_t i = 0; i < heights.size(); ++i) {
        vertices.emplace_back(GetPlace(i % columns, i / columns), std::isnan(heights[i]) ? 0.0 : heights[i]);
    }
    return tin.SetTriangles(set);
}

template <>
bool Geometry::AreEqual(const GridSurface& a, const GridSurface& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
