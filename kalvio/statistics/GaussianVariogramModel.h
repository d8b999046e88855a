#pragma once

#include "kalvio/statistics/VariogramModelBase.h"

namespace Kalvio::Math {

/// Variogram of a very smooth field: it starts level. Without a `NuggetVariogramModel` around it the systems of samples
/// near to each other are singular to rounding.
class KALVIO_MATH_API GaussianVariogramModel final : public VariogramModelBase {
public:
    /// @param rangeValue  distance at which 63 % of the sill are reached
    GaussianVariogramModel(double sillValue, double rangeValue) : VariogramModelBase(sillValue, rangeValue) {}

    /// sill (1 - e^(-(h / range)^2)), to full precision at small distances too.
    double Evaluate(double h) const override;
};

}  // namespace Kalvio::Math
