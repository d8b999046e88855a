#include "kalvio/statistics/SimpleKriging.h"

#include "kalvio/statistics/detail/PlaceSystem.h"

#include <cmath>

namespace Kalvio::Math {

bool SimpleKriging::Interpolate(const Point2D& p, const std::vector<Point3D>& samples, double& value) const {
    detail::PlaceSystem system(samples.size());
    if (!ComputeLambda(p, samples, system)) return false;
    const double estimate = ComputeValue(samples, system);
    if (!std::isfinite(estimate)) return false;
    value = estimate;
    return true;
}

bool SimpleKriging::Interpolate(const Point2D& p, const std::vector<Point3D>& samples, double& value,
                                double& variance) const {
    detail::PlaceSystem system(samples.size());
    if (!ComputeLambda(p, samples, system)) return false;
    const double estimate = ComputeValue(samples, system);
    const double estimationVariance = ComputeEstimationVariance(samples, system);
    if (!std::isfinite(estimate) || !std::isfinite(estimationVariance)) return false;
    value = estimate;
    variance = estimationVariance;
    return true;
}

bool SimpleKriging::ComputeLambda(const Point2D& p, const std::vector<Point3D>& samples,
                                  detail::PlaceSystem& system) const {
    if (GetModel() == nullptr || samples.empty()) return false;
    ComputeSpatialCovariances(p, samples, system);
    return system.Solve();
}

void SimpleKriging::ComputeSpatialCovariances(const Point2D& p, const std::vector<Point3D>& samples,
                                              detail::PlaceSystem& system) const {
    detail::FillCovariances(*GetModel(), samples, system.Matrix());
    detail::FillCovariances(*GetModel(), p, samples, system.RightSide());
}

double SimpleKriging::ComputeValue(const std::vector<Point3D>& samples, const detail::PlaceSystem& system) const {
    double value = mean;
    for (std::size_t i = 0; i < samples.size(); ++i) value += system.Lambda()[i] * (samples[i].GetZ() - mean);
    return value;
}

double SimpleKriging::ComputeEstimationVariance(const std::vector<Point3D>& samples,
                                                const detail::PlaceSystem& system) const {
    double explained = 0.0;
    for (std::size_t i = 0; i < samples.size(); ++i) explained += system.Lambda()[i] * system.RightSide()[i];
    return GetModel()->Evaluate(0.0) - explained;
}

}  // namespace Kalvio::Math
