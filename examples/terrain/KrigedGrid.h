#pragma once

#include "kalvio/core/Point3D.h"
#include "kalvio/meshes/GridSurface.h"

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

/// Heights kriged at the nodes of a square grid over the extent of the samples, and the standard deviations of their
/// errors.
struct KrigedGrid {
    /// @param spacing  of the nodes, which lie at its multiples and enclose the samples
    /// @throws InputError for no samples, two of them at one place, or a grid of too many nodes
    KrigedGrid(const std::vector<Math::Point3D>& samples, double spacing, const Variability& variability);

    Math::GridSurface heights;
    Math::GridSurface deviations;
};

}  // namespace Kalvio::Examples
