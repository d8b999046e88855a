#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"

#include <optional>
#include <string>
#include <vector>

namespace Kalvio::Examples {

/// How heights differ with their distance: an exponential variogram.
struct Variability {
    double sill;   // [squared height]
    double range;  // distance at which 63 % of the sill are reached

    /// For what is not given: the variance of the heights as the sill, a third of the diagonal of the extent as the
    /// range.
    Variability(const std::vector<Math::Point3D>& samples, const std::optional<double>& sillValue,
                const std::optional<double>& rangeValue);
};

/// Heights kriged at the nodes of a square grid over the extent of the samples.
class KrigedGrid {
public:
    struct Node {
        Math::Point3D place;
        double deviation;  // standard deviation of the error of the height
    };

    /// @param spacing  of the nodes, which lie at its multiples and enclose the samples
    /// @throws InputError for no samples or too many, two of them at one place, or a grid of too many nodes
    KrigedGrid(const std::vector<Math::Point3D>& samples, double spacing, const Variability& variability);

    unsigned int GetNrOfColumns() const { return columns; }
    unsigned int GetNrOfRows() const { return rows; }
    /// Row by row from the south, each from the west.
    const std::vector<Node>& GetNodes() const { return nodes; }
    /// Two triangles for each cell.
    Math::IndexedTriangleSet3D MakeSurface() const;

private:
    unsigned int columns = 0;
    unsigned int rows = 0;
    std::vector<Node> nodes;
};

}  // namespace Kalvio::Examples
