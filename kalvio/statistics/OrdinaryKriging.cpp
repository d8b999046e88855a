#include "kalvio/statistics/OrdinaryKriging.h"

#include "kalvio/core/MatrixNM.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/statistics/detail/SpatialCovariances.h"

#include <cmath>

namespace Kalvio::Math {

bool OrdinaryKriging::Interpolate(const Point2D& p, const std::vector<Point3D>& samples, double& value) const {
    if (GetModel() == nullptr) return false;
    VecND lambda;
    if (!ComputeLambda(p, samples, lambda)) return false;
    const double estimate = ComputeValue(samples, lambda);
    if (!std::isfinite(estimate)) return false;
    value = estimate;
    return true;
}

bool OrdinaryKriging::ComputeLambda(const Point2D& p, const std::vector<Point3D>& samples, VecND& lambda) const {
    MatrixNM m;
    VecND b;
    ComputeSpatialCovariances(p, samples, m, b);
    MatrixNM inverse;
    if (!m.GetInverse(inverse)) return false;
    lambda = inverse * b;
    return true;
}

void OrdinaryKriging::ComputeSpatialCovariances(const Point2D& p, const std::vector<Point3D>& samples, MatrixNM& m,
                                                VecND& b) const {
    const auto n = static_cast<unsigned int>(samples.size());
    m.Resize(n + 1, n + 1);
    b.SetDimension(n + 1);
    detail::FillCovariances(*GetModel(), samples, m);
    detail::FillSumOfWeights(m);
    detail::FillCovariances(*GetModel(), p, samples, b);
    b[static_cast<int>(n)] = 1.0;
}

double OrdinaryKriging::ComputeValue(const std::vector<Point3D>& samples, const VecND& lambda) const {
    double value = 0.0;
    for (std::size_t i = 0; i < samples.size(); ++i) value += lambda[static_cast<int>(i)] * samples[i].GetZ();
    return value;
}

}  // namespace Kalvio::Math
