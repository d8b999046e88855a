#pragma once

#include "kalvio/Export.h"

#include <memory>
#include <vector>

namespace Kalvio::Math {

class Point2D;
class Point3D;
class VariogramModelBase;

/// Estimates the value at a place in plan from samples: x and y are the place of a sample, z its value.
///
/// All samples given take part and distances are plan distances. Each call builds and solves the system of the samples,
/// cubic in their number and without allocation up to 18: give the few that are near, or use a `KrigingSystem` for many
/// places among the same samples. Safe to use from several threads.
///
/// It fails as `MatrixNM::GetInverse` does, when the determinant is below 1e-10 or overflows. The determinant goes with
/// the power of the sill that is the number of samples: of samples scattered over three ranges 10 fail under a sill of
/// 0.1 and 32 under a sill of 1, and 200 under a sill of 500. A `KrigingSystem` has no such limit.
class KALVIO_MATH_API KrigingBase {
public:
    virtual ~KrigingBase();

    /// @param value  estimate at p; untouched on failure
    /// @return false without a model, without samples, for two samples at one place and other systems that cannot be
    ///         inverted, and when the estimate is not a finite number
    [[nodiscard]] virtual bool Interpolate(const Point2D& p, const std::vector<Point3D>& samples,
                                           double& value) const = 0;

    /// The model, which copies of this object share; null when it was made without one.
    const std::shared_ptr<const VariogramModelBase>& GetModel() const { return model; }

protected:
    /// Takes ownership of the model: give it to one estimator only. It lives as long as the last copy.
    explicit KrigingBase(VariogramModelBase* ownedModel);
    KrigingBase(const KrigingBase&) = default;
    KrigingBase& operator=(const KrigingBase&) = default;

private:
    std::shared_ptr<const VariogramModelBase> model;
};

}  // namespace Kalvio::Math
