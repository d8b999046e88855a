#pragma once

#include "kalvio/statistics/KrigingBase.h"

namespace Kalvio::Math {

namespace detail {
class PlaceSystem;
}

/// Kriging of a field whose mean is not known: the weights of the samples add up to one.
///
/// The system is that of `SimpleKriging` with a last row and column of ones (and 0 in the corner), and a last 1 in b;
/// the last unknown is the Lagrange multiplier of the sum. The value is the sum of lambda_i z_i, whether the model is a
/// variogram or a covariance. Source: Cressie, Statistics for Spatial Data, rev. ed. 1993, section 3.2.
class KALVIO_MATH_API OrdinaryKriging final : public KrigingBase {
public:
    /// Takes ownership of the model.
    explicit OrdinaryKriging(VariogramModelBase* ownedModel) : KrigingBase(ownedModel) {}

    [[nodiscard]] bool Interpolate(const Point2D& p, const std::vector<Point3D>& samples, double& value) const override;

private:
    bool ComputeLambda(const Point2D& p, const std::vector<Point3D>& samples, detail::PlaceSystem& system) const;
    void ComputeSpatialCovariances(const Point2D& p, const std::vector<Point3D>& samples,
                                   detail::PlaceSystem& system) const;
    double ComputeValue(const std::vector<Point3D>& samples, const detail::PlaceSystem& system) const;
};

}  // namespace Kalvio::Math
