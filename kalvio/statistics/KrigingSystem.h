#pragma once

#include "kalvio/Export.h"
#include "kalvio/core/Point2D.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace Kalvio::Math {

class OrdinaryKriging;
class Point3D;
class SimpleKriging;
class VariogramModelBase;

/// The estimates of `SimpleKriging` and `OrdinaryKriging` at many places among the same samples.
///
/// The matrix of the samples is factored once, cubic in their number n; then a value costs n evaluations of the model,
/// a value with its variance n^2 multiplications besides. Samples that the estimators cannot invert for their scale
/// alone are solved too. Where both answer they agree to the rounding that the condition of the matrix allows.
///
///     const OrdinaryKriging kriging(new ExponentialVariogramModel(500.0, 1000.0));
///     KrigingSystem system;
///     if (!system.Build(kriging, samples)) return false;            // two samples at one place, for example
///     for (const Point2D& p : grid) if (!system.Interpolate(p, value, variance)) return false;
///
/// Any number of threads may interpolate at once; `Build` is a change.
class KALVIO_MATH_API KrigingSystem final {
public:
    /// No samples: nothing can be interpolated.
    KrigingSystem() = default;

    /// Takes copies of the samples and shares the model. Any scale of sill, range and coordinates is treated alike: the
    /// matrix counts as singular when a pivot of its elimination is within the rounding of its largest element.
    /// @return false, with the system as it was, without a model or samples, for two samples at one place or another
    ///         singular matrix, and for samples or model values that are not finite numbers
    [[nodiscard]] bool Build(const SimpleKriging& kriging, const std::vector<Point3D>& samples);
    [[nodiscard]] bool Build(const OrdinaryKriging& kriging, const std::vector<Point3D>& samples);

    /// Universal kriging: the mean is any plane over the samples, not any constant; the model is that of the residuals.
    /// @return false also for samples on one line. Source: Cressie, Statistics for Spatial Data, rev. ed. 1993,
    ///         section 3.4
    [[nodiscard]] bool BuildWithLinearTrend(const OrdinaryKriging& kriging, const std::vector<Point3D>& samples);

    unsigned int GetNrOfSamples() const { return static_cast<unsigned int>(places.size() / 2); }

    /// @param value  estimate at p; untouched on failure
    /// @return false for a system that was not built and for an estimate that is not a finite number
    [[nodiscard]] bool Interpolate(const Point2D& p, double& value) const;
    /// @param variance  of the error of the estimate, 0 at a sample to rounding of either sign; untouched on failure.
    ///                  Simple kriging: as `SimpleKriging` gives it. Ordinary kriging, with the multiplier mu: the sum
    ///                  of lambda_i b_i plus mu when the model is 0 at distance 0, a variogram; f(0) less that for a
    ///                  covariance. Source: Cressie, Statistics for Spatial Data, rev. ed. 1993, section 3.2.
    [[nodiscard]] bool Interpolate(const Point2D& p, double& value, double& variance) const;

private:
    bool Build(const std::shared_ptr<const VariogramModelBase>& sharedModel, const std::vector<Point3D>& samples,
               double valueOrigin, std::size_t ofMean);
    void FillRightSide(const Point2D& p, double* b) const;
    double Estimate(const double* b) const;
    double Quadratic(const double* b, double* y, double* t) const;

    std::shared_ptr<const VariogramModelBase> model;
    std::vector<double> places;      // x of all samples, then y of all
    std::vector<double> weights;     // M^-1 z, z relative to `origin`; the multipliers of the mean are the last
    std::vector<double> pivots;      // D of P M = L D U, both triangles with unit diagonals
    std::vector<double> factors;     // for each k the rest of column k of L, then the rest of row k of U
    std::vector<std::size_t> order;  // the row of M that came to place k
    double scale = 1.0;              // a power of two that brings the largest model value near 1
    double origin = 0.0;             // values are kriged relative to this
    double atZero = 0.0;             // scaled model value at distance 0
    std::size_t meanRows = 0;        // 0 for a mean that is known, 1 for one that is not, 3 for a plane
    Point2D trendCenter;
    double trendScale = 1.0;
};

}  // namespace Kalvio::Math
