#pragma once

#include "kalvio/statistics/VariogramModelBase.h"

namespace Kalvio::Math {

/// Covariance: the sill at distance 0, falling to 0 at the range. Nothing holds it there: beyond the range it grows
/// again, so keep samples and wanted points within the range of each other.
class KALVIO_MATH_API SphericalVariogramModel final : public VariogramModelBase {
public:
    SphericalVariogramModel(double sillValue, double rangeValue) : VariogramModelBase(sillValue, rangeValue) {}

    /// sill (1 - 1.5 r + 0.5 r^3) with r = h / range, at every distance.
    double Evaluate(double h) const override;
};

}  // namespace Kalvio::Math
