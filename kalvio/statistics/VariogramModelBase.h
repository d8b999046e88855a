#pragma once

#include "kalvio/Export.h"

namespace Kalvio::Math {

/// How strongly the values at two places go together, by their distance h: a function of h / range, scaled by the sill.
///
/// A model may be a variogram, which is 0 at h = 0 and rises, or a covariance, which is the variance of the field there
/// and falls. Sill and range never change, so a model may be asked from several threads at once; a derived class has to
/// keep that.
class KALVIO_MATH_API VariogramModelBase {
public:
    virtual ~VariogramModelBase();
    VariogramModelBase& operator=(const VariogramModelBase&) = delete;

    /// @param h  distance, in the unit of the range
    /// @return in the unit of the sill: that of the samples' values, squared
    virtual double Evaluate(double h) const = 0;

    double GetSill() const { return sill; }
    double GetRange() const { return range; }

protected:
    VariogramModelBase(double sillValue, double rangeValue) : sill(sillValue), range(rangeValue) {}
    VariogramModelBase(const VariogramModelBase&) = default;

private:
    double sill;
    double range;
};

}  // namespace Kalvio::Math
