#pragma once

#include "kalvio/core/Point3D.h"
#include "kalvio/meshes/GridSurface.h"
#include "kalvio/statistics/ExperimentalVariogram.h"

#include <optional>
#include <vector>

namespace Kalvio::Examples {

/// An exponential variogram of heights. For what is not given: the variance of the heights as the sill, a third of the
/// diagonal of the extent as the range. @throws InputError for no samples
Math::ExperimentalVariogram::Fit GuessModel(const std::vector<Math::Point3D>& samples,
                                            const std::optional<double>& sill, const std::optional<double>& range);

/// Heights kriged at the nodes of a square grid over the extent of the samples, and the standard deviations of their
/// errors.
struct KrigedGrid {
    /// @param spacing  of the nodes, which lie at its multiples and enclose the samples
    /// @param hasLinearTrend  whether the mean is any plane, not any height
    /// @throws InputError for no samples, two of them at one place, all on one line with a trend, or a grid of too many
    /// nodes
    KrigedGrid(const std::vector<Math::Point3D>& samples, double spacing, const Math::ExperimentalVariogram::Fit& model,
               bool hasLinearTrend = false);

    Math::GridSurface heights;
    Math::GridSurface deviations;
};

}  // namespace Kalvio::Examples
