#pragma once

#include "kalvio/statistics/VariogramModelBase.h"

namespace Kalvio::Math {

/// Variogram that rises without an end: linear for the exponent 1. For ordinary kriging.
class KALVIO_MATH_API PowerVariogramModel final : public VariogramModelBase {
public:
    /// @param sillValue      what is reached at the range
    /// @param exponentValue  greater than 0 and less than 2; others are no variogram
    PowerVariogramModel(double sillValue, double rangeValue, double exponentValue = 1.0)
        : VariogramModelBase(sillValue, rangeValue), exponent(exponentValue) {}

    /// sill (h / range)^exponent.
    double Evaluate(double h) const override;
    double GetExponent() const { return exponent; }

private:
    double exponent;
};

}  // namespace Kalvio::Math
