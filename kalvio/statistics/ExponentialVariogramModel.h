#pragma once

#include "kalvio/statistics/VariogramModelBase.h"

namespace Kalvio::Math {

/// Variogram: 0 at distance 0, rising towards the sill.
class KALVIO_MATH_API ExponentialVariogramModel final : public VariogramModelBase {
public:
    /// @param rangeValue  distance at which 63 % of the sill are reached: a third of the practical range (95 %) that
    ///                    other programs ask for
    ExponentialVariogramModel(double sillValue, double rangeValue) : VariogramModelBase(sillValue, rangeValue) {}

    /// sill (1 - e^(-h / range)), to full precision at small distances too.
    double Evaluate(double h) const override;
};

}  // namespace Kalvio::Math
