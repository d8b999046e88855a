#pragma once

#include "kalvio/Export.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point3D.h"

#include <cstddef>
#include <limits>
#include <memory>
#include <vector>

namespace Kalvio::Math {

class OrdinaryKriging;
class VariogramModelBase;

/// Ordinary kriging of each place from the few samples nearest to it: for thousands of samples, whose full matrix a
/// `KrigingSystem` could not factor, and grids of many nodes. A place costs the search of its neighbours and a system
/// of their number, on the stack up to 17, with a trend 15. Where the neighbours change the estimates have small steps.
///
///     const OrdinaryKriging kriging(new ExponentialVariogramModel(500.0, 1000.0));
///     LocalKriging local;
///     if (!local.Build(kriging, samples, 16)) return false;
///     for (const Point2D& p : grid) if (!local.Interpolate(p, value, variance)) return false;
///
/// Any number of threads may interpolate at once; `Build` is a change.
class KALVIO_MATH_API LocalKriging final {
public:
    /// Which samples take part at a place.
    struct Neighborhood {
        unsigned int count = 16;  ///< the nearest in plan, of equally near ones those that come first
        /// With more than one, `count` from each of so many equal sectors around the place, the first of them from +X
        /// counter-clockwise: for samples along lines. At most 64.
        unsigned int sectors = 1;
        /// None beyond this distance. Without it a place searches all samples for as long as a sector is not full.
        double radius = std::numeric_limits<double>::infinity();
        /// Universal kriging: the mean is any plane over the neighbours, not any constant. For heights on a slope; the
        /// model is that of the residuals. It takes three neighbours that are not on one line. Source: Cressie,
        /// section 3.4.
        bool hasLinearTrend = false;
    };

    /// What is found at a sample that is left out.
    struct Residual {
        double error;     ///< of the estimate: it less the value
        double variance;  ///< that was expected of it
    };

    /// No samples: nothing can be interpolated.
    LocalKriging() = default;

    /// Takes copies of the samples and shares the model.
    /// @param neighbors  number of samples that take part, the nearest in plan, of equally near ones those that come
    ///                   first; all when there are fewer
    /// @return false, with the object as it was, without a model, samples or neighbors and for samples that are not
    ///         finite. Two samples at one place are found where they take part
    [[nodiscard]] bool Build(const OrdinaryKriging& kriging, const std::vector<Point3D>& samples,
                             unsigned int neighbors);
    /// @return false also for sectors that are 0 or too many, and a radius that is not positive
    [[nodiscard]] bool Build(const OrdinaryKriging& kriging, const std::vector<Point3D>& samples,
                             const Neighborhood& neighborhood);

    /// @param value     estimate at p; untouched on failure
    /// @param variance  of its error, as `KrigingSystem` gives it; untouched on failure
    /// @return false for an object that was not built, a place that is not finite or has no sample within the radius,
    ///         two neighbours at one place and another singular system, for a linear trend also neighbours on one line
    [[nodiscard]] bool Interpolate(const Point2D& p, double& value, double& variance) const;

    /// Estimates each sample from the others around it: how good the model is. Errors have a mean near 0 and a mean
    /// square near that of the variances where it fits.
    /// @param residuals  replaced, in the order of the samples
    /// @return false, `residuals` untouched, where one of them cannot be estimated
    [[nodiscard]] bool Validate(std::vector<Residual>& residuals) const;

private:
    struct Numbered {
        Point3D point;
        std::size_t number;
    };

    void Part(std::size_t from, std::size_t to);
    std::vector<Point3D> FindNearest(const Point2D& p, std::size_t leftOut) const;
    bool Estimate(const Point2D& p, std::size_t leftOut, double& value, double& variance) const;

    std::shared_ptr<const VariogramModelBase> model;
    // The middle of many parts them: what is before it lies no farther east (north), what is behind it no less far.
    std::vector<Numbered> samples;
    std::vector<char> areNorthward;  // of the middle ones, whether they part by y, not by x
    std::size_t count = 0;           // of neighbours, in each sector
    std::size_t sectors = 1;
    double radius = 0.0;
    bool hasLinearTrend = false;
    Point2D low;  // corners of where samples lie
    Point2D high;
};

}  // namespace Kalvio::Math
