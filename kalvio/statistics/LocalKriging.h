#pragma once

#include "kalvio/Export.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace Kalvio::Math {

class OrdinaryKriging;
class Point2D;
class Point3D;
class VariogramModelBase;

/// Ordinary kriging of each place from the few samples nearest to it: for thousands of samples, whose full matrix a
/// `KrigingSystem` could not factor, and grids of many nodes. A place costs the search of its neighbours and a system
/// of their number, on the stack up to 17. Where the neighbours change the estimates have small steps.
///
///     const OrdinaryKriging kriging(new ExponentialVariogramModel(500.0, 1000.0));
///     LocalKriging local;
///     if (!local.Build(kriging, samples, 16)) return false;
///     for (const Point2D& p : grid) local.Interpolate(p, value, variance);
///
/// Any number of threads may interpolate at once; `Build` is a change.
class KALVIO_MATH_API LocalKriging final {
public:
    /// No samples: nothing can be interpolated.
    LocalKriging() = default;

    /// Takes copies of the samples and shares the model.
    /// @param neighbors  number of samples that take part, the nearest in plan, of equally near ones those that come
    ///                   first; all when there are fewer
    /// @return false, with the object as it was, without a model, samples or neighbors and for samples that are not
    ///         finite. Two samples at one place are found where they take part
    [[nodiscard]] bool Build(const OrdinaryKriging& kriging, const std::vector<Point3D>& samples,
                             unsigned int neighbors);

    /// @param value     estimate at p; untouched on failure
    /// @param variance  of its error, as `KrigingSystem` gives it; untouched on failure
    /// @return false for an object that was not built, a place that is not finite, two neighbours at one place and
    ///         another singular system
    [[nodiscard]] bool Interpolate(const Point2D& p, double& value, double& variance) const;

private:
    std::vector<Point3D> FindNearest(const Point2D& p) const;
    std::size_t ColumnOf(double x) const;
    std::size_t RowOf(double y) const;

    std::shared_ptr<const VariogramModelBase> model;
    std::vector<Point3D> samples;  // cell by cell, in each by their numbers
    std::vector<std::size_t> numbers;
    std::vector<std::size_t> starts;  // per cell
    double left = 0.0;
    double bottom = 0.0;
    double side = 1.0;
    std::size_t columns = 0;
    std::size_t rows = 0;
    std::size_t count = 0;  // of neighbours
};

}  // namespace Kalvio::Math
