#include "kalvio/statistics/KrigingSystem.h"

#include "kalvio/core/Point3D.h"
#include "kalvio/statistics/OrdinaryKriging.h"
#include "kalvio/statistics/SimpleKriging.h"
#include "kalvio/statistics/detail/PlaceSystem.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kalvio::Math {

namespace {

// The numbers of one query.
using Work = detail::Workspace<double, 512>;

double MeanHeight(const std::vector<Point3D>& samples) {
    double sum = 0.0;
    for (const Point3D& sample : samples) sum += sample.GetZ();
    return sum / static_cast<double>(std::max<std::size_t>(samples.size(), 1));
}

}  // namespace

bool KrigingSystem::Build(const SimpleKriging& kriging, const std::vector<Point3D>& samples) {
    return Build(kriging.GetModel(), samples, kriging.GetMean(), 0);
}

bool KrigingSystem::Build(const OrdinaryKriging& kriging, const std::vector<Point3D>& samples) {
    return Build(kriging.GetModel(), samples, MeanHeight(samples), 1);
}

bool KrigingSystem::BuildWithLinearTrend(const OrdinaryKriging& kriging, const std::vector<Point3D>& samples) {
    return Build(kriging.GetModel(), samples, MeanHeight(samples), 3);
}

bool KrigingSystem::Build(const std::shared_ptr<const VariogramModelBase>& sharedModel,
                          const std::vector<Point3D>& samples, double valueOrigin, std::size_t ofMean) {
    if (sharedModel == nullptr || samples.empty()) return false;
    const std::size_t size = samples.size() + ofMean;
    detail::Elimination elimination(size, 1);
    detail::FillCovariances(*sharedModel, samples, elimination);

    KrigingSystem built;
    built.scale = detail::Normalize(elimination, samples.size());
    if (built.scale == 0.0) return false;
    if (ofMean > 0) detail::FillSumOfWeights(samples.size(), elimination);
    const detail::LinearTrend plane(samples);
    if (ofMean == 3) plane.Fill(samples, elimination);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        built.places.push_back(samples[i].GetX());
        elimination.Row(i)[size] = samples[i].GetZ() - valueOrigin;
    }
    for (const Point3D& sample : samples) built.places.push_back(sample.GetY());
    elimination.Run();
    if (detail::IsSingular(elimination, size)) return false;

    built.weights.resize(size);
    elimination.Solve(built.weights.data());
    if (!std::all_of(built.weights.begin(), built.weights.end(), [](double w) { return std::isfinite(w); })) {
        return false;
    }
    built.factors.reserve(size * (size - 1));
    for (std::size_t k = 0; k < size; ++k) {
        const double pivot = elimination.Pivot(k);
        built.pivots.push_back(pivot);
        built.order.push_back(elimination.Source(k));
        for (std::size_t i = k + 1; i < size; ++i) built.factors.push_back(elimination.Row(i)[k]);
        for (std::size_t j = k + 1; j < size; ++j) built.factors.push_back(elimination.Row(k)[j] / pivot);
    }
    built.model = sharedModel;
    built.origin = valueOrigin;
    built.atZero = sharedModel->Evaluate(0.0) * built.scale;
    built.meanRows = ofMean;
    built.trendCenter = plane.center;
    built.trendScale = plane.scale;
    *this = std::move(built);
    return true;
}

void KrigingSystem::FillRightSide(const Point2D& p, double* b) const {
    const std::size_t n = places.size() / 2;
    const double* const x = places.data();
    const double* const y = x + n;
    for (std::size_t i = 0; i < n; ++i) {
        const double dx = x[i] - p.GetX();
        const double dy = y[i] - p.GetY();
        b[i] = std::sqrt(dx * dx + dy * dy);
    }
    for (std::size_t i = 0; i < n; ++i) b[i] = model->Evaluate(b[i]) * scale;
    if (meanRows > 0) b[n] = 1.0;
    if (meanRows == 3) {
        b[n + 1] = (p.GetX() - trendCenter.GetX()) * trendScale;
        b[n + 2] = (p.GetY() - trendCenter.GetY()) * trendScale;
    }
}

// b^T M^-1 b = (U^-T b)^T D^-1 (L^-1 P b): both triangles are solved forward in one pass. Unlike a product with the
// inverse this is as exact at a sample as the factors are, however the matrix is conditioned.
double KrigingSystem::Quadratic(const double* b, double* y, double* t) const {
    const std::size_t size = pivots.size();
    for (std::size_t k = 0; k < size; ++k) {
        y[k] = b[order[k]];
        t[k] = b[k];
    }
    double sum = 0.0;
    const double* lower = factors.data();
    for (std::size_t k = 0; k < size; ++k) {
        const std::size_t rest = size - 1 - k;
        const double* const upper = lower + rest;
        const double yk = y[k];
        const double tk = t[k];
        sum += yk * tk / pivots[k];
        double* const yRest = y + k + 1;
        double* const tRest = t + k + 1;
        for (std::size_t j = 0; j < rest; ++j) yRest[j] -= lower[j] * yk;
        for (std::size_t j = 0; j < rest; ++j) tRest[j] -= upper[j] * tk;
        lower = upper + rest;
    }
    return sum;
}

double KrigingSystem::Estimate(const double* b) const {
    double sum = 0.0;
    for (std::size_t i = 0; i < weights.size(); ++i) sum += weights[i] * b[i];
    return origin + sum;
}

bool KrigingSystem::Interpolate(const Point2D& p, double& value) const {
    if (model == nullptr) return false;
    Work work(weights.size());
    double* const b = work.Get();
    FillRightSide(p, b);
    const double estimate = Estimate(b);
    if (!std::isfinite(estimate)) return false;
    value = estimate;
    return true;
}

bool KrigingSystem::Interpolate(const Point2D& p, double& value, double& variance) const {
    if (model == nullptr) return false;
    const std::size_t size = weights.size();
    Work work(3 * size);
    double* const b = work.Get();
    FillRightSide(p, b);
    const double estimate = Estimate(b);
    const double covarianceForm = (atZero - Quadratic(b, b + size, b + 2 * size)) / scale;
    const double estimationVariance = meanRows > 0 && atZero == 0.0 ? -covarianceForm : covarianceForm;
    if (!std::isfinite(estimate) || !std::isfinite(estimationVariance)) return false;
    value = estimate;
    variance = estimationVariance;
    return true;
}

}  // namespace Kalvio::Math
