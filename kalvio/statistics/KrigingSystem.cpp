#include "kalvio/statistics/KrigingSystem.h"

#include "kalvio/core/MatrixNM.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/detail/Elimination.h"
#include "kalvio/statistics/OrdinaryKriging.h"
#include "kalvio/statistics/SimpleKriging.h"
#include "kalvio/statistics/detail/SpatialCovariances.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace Kalvio::Math {

namespace {

// The numbers of one query; only those of many samples are allocated.
class Work {
public:
    explicit Work(std::size_t count) {
        if (count > onStack.size()) onHeap.resize(count);
    }
    double* Get() { return onHeap.empty() ? onStack.data() : onHeap.data(); }

private:
    std::array<double, 512> onStack;  // left unset: a query writes what it reads
    std::vector<double> onHeap;
};

// Multiplies m by the power of two that brings its largest element into [1, 2), and returns that power: without any
// rounding, so that the scale of the sill decides nothing. 0 when an element is not finite.
double Normalize(MatrixNM& m) {
    double largest = 0.0;
    for (unsigned int i = 0; i < m.GetNumRows(); ++i) {
        for (const double value : m[i].GetCoordinates()) {
            if (!std::isfinite(value)) return 0.0;
            largest = std::max(largest, std::abs(value));
        }
    }
    if (largest == 0.0) return 1.0;  // a variogram and a single place
    const double factor = std::ldexp(1.0, -std::ilogb(largest));
    m *= factor;
    return factor;
}

// A pivot within this bound means that changes of the elements by it make the matrix singular.
bool IsSingular(const detail::Elimination& elimination, std::size_t size) {
    const double rounding = static_cast<double>(size) * std::numeric_limits<double>::epsilon();
    for (std::size_t k = 0; k < size; ++k) {
        if (!(std::abs(elimination.Pivot(k)) > rounding)) return true;
    }
    return false;
}

std::vector<double> Solve(const detail::Elimination& elimination, const std::vector<double>& b) {
    const std::size_t n = b.size();
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i) {
        x[i] = b[elimination.Source(i)];
        for (std::size_t k = 0; k < i; ++k) x[i] -= elimination.Factors(i)[k] * x[k];
    }
    for (std::size_t i = n; i-- > 0;) {
        for (std::size_t k = i + 1; k < n; ++k) x[i] -= elimination.Factors(i)[k] * x[k];
        x[i] /= elimination.Pivot(i);
    }
    return x;
}

double MeanHeight(const std::vector<Point3D>& samples) {
    double sum = 0.0;
    for (const Point3D& sample : samples) sum += sample.GetZ();
    return sum / static_cast<double>(std::max<std::size_t>(samples.size(), 1));
}

}  // namespace

bool KrigingSystem::Build(const SimpleKriging& kriging, const std::vector<Point3D>& samples) {
    return Build(kriging.GetModel(), samples, kriging.GetMean(), false);
}

bool KrigingSystem::Build(const OrdinaryKriging& kriging, const std::vector<Point3D>& samples) {
    return Build(kriging.GetModel(), samples, MeanHeight(samples), true);
}

bool KrigingSystem::Build(const std::shared_ptr<const VariogramModelBase>& sharedModel,
                          const std::vector<Point3D>& samples, double valueOrigin, bool isOrdinary) {
    if (sharedModel == nullptr || samples.empty()) return false;
    const std::size_t size = samples.size() + (isOrdinary ? 1 : 0);
    MatrixNM m(static_cast<unsigned int>(size), static_cast<unsigned int>(size));
    detail::FillCovariances(*sharedModel, samples, m);

    KrigingSystem built;
    built.scale = Normalize(m);
    if (built.scale == 0.0) return false;
    if (isOrdinary) detail::FillSumOfWeights(m);
    const detail::Elimination elimination(m, size);
    if (IsSingular(elimination, size)) return false;

    std::vector<double> values(size);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        built.places.push_back(samples[i].GetX());
        values[i] = samples[i].GetZ() - valueOrigin;
    }
    for (const Point3D& sample : samples) built.places.push_back(sample.GetY());
    built.weights = Solve(elimination, values);
    if (!std::all_of(built.weights.begin(), built.weights.end(), [](double w) { return std::isfinite(w); })) {
        return false;
    }
    built.factors.reserve(size * (size - 1));
    for (std::size_t k = 0; k < size; ++k) {
        const double pivot = elimination.Pivot(k);
        built.pivots.push_back(pivot);
        built.order.push_back(elimination.Source(k));
        for (std::size_t i = k + 1; i < size; ++i) built.factors.push_back(elimination.Factors(i)[k]);
        for (std::size_t j = k + 1; j < size; ++j) built.factors.push_back(elimination.Factors(k)[j] / pivot);
    }
    built.model = sharedModel;
    built.origin = valueOrigin;
    built.atZero = sharedModel->Evaluate(0.0) * built.scale;
    built.ordinary = isOrdinary;
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
    if (ordinary) b[n] = 1.0;
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
    const double estimationVariance = ordinary && atZero == 0.0 ? -covarianceForm : covarianceForm;
    if (!std::isfinite(estimate) || !std::isfinite(estimationVariance)) return false;
    value = estimate;
    variance = estimationVariance;
    return true;
}

}  // namespace Kalvio::Math
