#include "kalvio/statistics/SimpleKriging.h"

#include "kalvio/core/MatrixNM.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/statistics/detail/SpatialCovariances.h"

#include <cmath>

namespace Kalvio::Math {

bool SimpleKriging::Interpolate(const Point2D& p, const std::vector<Point3D>& samples, double& value) const {
    VecND lambda;
    if (!ComputeLambda(p, samples, lambda)) return false;
    const double estimate = ComputeValue(samples, lambda);
    if (!std::isfinite(estimate)) return false;
    value = estimate;
    return true;
}

bool SimpleKriging::Interpolate(const Point2D& p, const std::vector<Point3D>& samples, double& value,
                                double& variance) const {
    VecND lambda;
    if (!ComputeLambda(p, samples, lambda)) return false;
    const double estimate = ComputeValue(samples, lambda);
    const double estimationVariance = ComputeEstimationVariance(p, samples, lambda);
    if (!std::isfinite(estimate) || !std::isfinite(estimationVariance)) return false;
    value = estimate;
    variance = estimationVariance;
    return true;
}

bool SimpleKriging::ComputeLambda(const Point2D& p, const std::vector<Point3D>& samples, VecND& lambda) const {
    if (GetModel() == nullptr) return false;
    MatrixNM m;
    VecND b;
    ComputeSpatialCovariances(p, samples, m, b);
    MatrixNM inverse;
    if (!m.GetInverse(inverse)) return false;
    lambda = inverse * b;
    return true;
}

void SimpleKriging::ComputeSpatialCovariances(const Point2D& p, const std::vector<Point3D>& samples, MatrixNM& m,
                                              VecND& b) const {
    const auto n = static_cast<unsigned int>(samples.size());
    m.Resize(n, n);
    b.SetDimension(n);
    detail::FillCovariances(*GetModel(), samples, m);
    detail::FillCovariances(*GetModel(), p, samples, b);
}

double SimpleKriging::ComputeValue(const std::vector<Point3D>& samples, const VecND& lambda) const {
    double value = mean;
    for (std::size_t i = 0; i < samples.size(); ++i) value += lambda[static_cast<int>(i)] * (samples[i].GetZ() - mean);
    return value;
}

double SimpleKriging::ComputeEstimationVariance(const Point2D& p, const std::vector<Point3D>& samples,
                                                const VecND& lambda) const {
    VecND b(lambda.GetDimension());
    detail::FillCovariances(*GetModel(), p, samples, b);
    return GetModel()->Evaluate(0.0) - lambda.DotProduct(b);
}

}  // namespace Kalvio::Math
