#pragma once

#include "kalvio/statistics/VariogramModelBase.h"

#include <memory>

namespace Kalvio::Math {

/// Another model and the variance of what no distance explains: errors of measuring, and detail finer than the samples.
/// Estimates jump to the samples at their places, and are smoother beside them.
class KALVIO_MATH_API NuggetVariogramModel final : public VariogramModelBase {
public:
    /// Takes ownership of the model, which must not be null; sill and range are its own.
    /// @param nuggetValue  0 or more
    NuggetVariogramModel(double nuggetValue, VariogramModelBase* ownedModel);

    /// The model, and the nugget: above distance 0 for a variogram, at 0 for a covariance.
    double Evaluate(double h) const override;
    double GetNugget() const { return nugget; }

private:
    double nugget;
    bool isVariogram;
    std::unique_ptr<const VariogramModelBase> model;
};

}  // namespace Kalvio::Math
