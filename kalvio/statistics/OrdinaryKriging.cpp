#include "kalvio/statistics/OrdinaryKriging.h"

#include "kalvio/statistics/detail/PlaceSystem.h"

#include <cmath>

namespace Kalvio::Math {

bool OrdinaryKriging::Interpolate(const Point2D& p, const std::vector<Point3D>& samples, double& value) const {
    if (GetModel() == nullptr) return false;
    detail::PlaceSystem system(samples.size() + 1);
    if (!ComputeLambda(p, samples, system)) return false;
    const double estimate = ComputeValue(samples, system);
    if (!std::isfinite(estimate)) return false;
    value = estimate;
    return true;
}

bool OrdinaryKriging::ComputeLambda(const Point2D& p, const std::vector<Point3D>& samples,
                                    detail::PlaceSystem& system) const {
    ComputeSpatialCovariances(p, samples, system);
    return system.Solve();
}

void OrdinaryKriging::ComputeSpatialCovariances(const Point2D& p, const std::vector<Point3D>& samples,
                                                detail::PlaceSystem& system) const {
    const std::size_t last = samples.size();
    detail::FillCovariances(*GetModel(), samples, system.Matrix());
    detail::FillSumOfWeights(last, system.Matrix());
    detail::FillCovariances(*GetModel(), p, samples, system.RightSide());
    system.RightSide()[last] = 1.0;
}

double OrdinaryKriging::ComputeValue(const std::vector<Point3D>& samples, const detail::PlaceSystem& system) const {
    double value = 0.0;
    for (std::size_t i = 0; i < samples.size(); ++i) value += system.Lambda()[i] * samples[i].GetZ();
    return value;
}

}  // namespace Kalvio::Math
