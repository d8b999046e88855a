#pragma once

#include "kalvio/statistics/KrigingBase.h"

namespace Kalvio::Math {

namespace detail {
class PlaceSystem;
}

/// Kriging of a field whose mean is known. Far from all samples a covariance falls to 0, and the estimate to the mean.
///
/// With M(i, j) = f(|s_i - s_j|), b(i) = f(|p - s_i|) and the weights lambda = M^-1 b for a model f, the value is
/// mean + sum of lambda_i (z_i - mean) and the variance f(0) - sum of lambda_i b_i. Source: Cressie, Statistics for
/// Spatial Data, rev. ed. 1993, chapter 3, for f a covariance. A variogram is taken as it is: the value is still
/// that of the samples at the samples, but the variance is no variance, and a single sample fails.
class KALVIO_MATH_API SimpleKriging : public KrigingBase {
public:
    /// Takes ownership of the model.
    SimpleKriging(VariogramModelBase* ownedModel, double meanValue) : KrigingBase(ownedModel), mean(meanValue) {}

    [[nodiscard]] bool Interpolate(const Point2D& p, const std::vector<Point3D>& samples, double& value) const override;
    /// @param variance  of the error of the estimate; untouched on failure; 0 at a sample, to rounding of either sign
    [[nodiscard]] virtual bool Interpolate(const Point2D& p, const std::vector<Point3D>& samples, double& value,
                                           double& variance) const;

    double GetMean() const { return mean; }

private:
    bool ComputeLambda(const Point2D& p, const std::vector<Point3D>& samples, detail::PlaceSystem& system) const;
    void ComputeSpatialCovariances(const Point2D& p, const std::vector<Point3D>& samples,
                                   detail::PlaceSystem& system) const;
    double ComputeValue(const std::vector<Point3D>& samples, const detail::PlaceSystem& system) const;
    double ComputeEstimationVariance(const std::vector<Point3D>& samples, const detail::PlaceSystem& system) const;

    double mean;
};

}  // namespace Kalvio::Math
