#include "kalvio/statistics/ExperimentalVariogram.h"

#include "kalvio/core/Angle.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/Vec3D.h"
#include "kalvio/statistics/ExponentialVariogramModel.h"
#include "kalvio/statistics/GaussianVariogramModel.h"
#include "kalvio/statistics/NuggetVariogramModel.h"
#include "kalvio/statistics/PowerVariogramModel.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

namespace Kalvio::Math {

namespace {

using Fit = ExperimentalVariogram::Fit;
using Lag = ExperimentalVariogram::Lag;
using Shape = ExperimentalVariogram::Shape;

constexpr unsigned int mostLags = 1000000;

bool IsPower(Shape shape) { return shape == Shape::Power || shape == Shape::Linear; }

// Fits the nugget's share of nugget and sill, and what bends the shape: the logarithm of the range, or the exponent.
// What is left, the scale of both, has the best value in closed form.
class FitSearch {
public:
    FitSearch(const std::vector<Lag>& fitted, Shape wanted) : lags(fitted) { best.shape = wanted; }

    Fit Run() {
        const double farthest = lags.back().distance;
        Interval share{0.0, 1.0};
        using Limits = std::numeric_limits<double>;
        Interval bend{std::log(std::max(0.1 * lags.front().distance, Limits::denorm_min())),
                      std::log(std::min(10.0 * farthest, Limits::max()))};
        if (best.shape == Shape::Power) bend = {0.05, 1.95};
        if (best.shape == Shape::Linear) bend = {1.0, 1.0};
        const Interval allShares = share;
        const Interval allBends = bend;
        // A grid over all, then ever finer ones around the best so far.
        constexpr int rounds = 60;
        for (int round = 0; round < rounds; ++round) {
            const int steps = round == 0 ? 64 : 8;
            for (int i = 0; i <= steps; ++i) {
                for (int k = 0; k <= steps; ++k) Try(share.At(i, steps), bend.At(k, steps), farthest);
            }
            const double shrink = round == 0 ? 1.0 / 16.0 : 0.6;
            share = share.Around(bestShare, shrink, allShares);
            bend = bend.Around(bestBend, shrink, allBends);
        }
        constexpr double nothing = 1e-12;  // of the sill: a nugget that is the end of the search
        if (best.nugget < nothing * best.sill) best.nugget = 0.0;
        return best;
    }

private:
    struct Interval {
        double from;
        double to;
        double At(int i, int steps) const { return i == steps ? to : from + (to - from) * i / steps; }
        Interval Around(double center, double shrink, const Interval& all) const {
            const double half = 0.5 * (to - from) * shrink;
            return {std::max(center - half, all.from), std::min(center + half, all.to)};
        }
    };

    void Try(double share, double bend, double farthest) {
        Fit fit;
        fit.shape = best.shape;
        fit.nugget = share;
        fit.sill = 1.0 - share;
        fit.range = IsPower(fit.shape) ? farthest : std::exp(bend);
        fit.exponent = fit.shape == Shape::Power ? bend : 1.0;
        // With the ratio a of semivariance to unit model, sum N (a / scale - 1)^2 is least at sum N a^2 / sum N a.
        double first = 0.0;
        double second = 0.0;
        for (const Lag& lag : lags) {
            const double ratio = lag.semivariance / fit.Evaluate(lag.distance);
            first += static_cast<double>(lag.pairs) * ratio;
            second += static_cast<double>(lag.pairs) * ratio * ratio;
        }
        const double scale = second / first;
        if (!std::isfinite(scale) || !(scale > 0.0)) return;
        for (const Lag& lag : lags) {
            const double off = lag.semivariance / (scale * fit.Evaluate(lag.distance)) - 1.0;
            fit.misfit += static_cast<double>(lag.pairs) * off * off;
        }
        if (!(fit.misfit < leastMisfit)) return;
        leastMisfit = fit.misfit;
        bestShare = share;
        bestBend = bend;
        fit.nugget *= scale;
        fit.sill *= scale;
        best = fit;
    }

    const std::vector<Lag>& lags;
    Fit best;
    double bestShare = 0.0;
    double bestBend = 0.0;
    double leastMisfit = std::numeric_limits<double>::infinity();
};

}  // namespace

double ExperimentalVariogram::Fit::Evaluate(double h) const {
    if (h == 0.0) return 0.0;
    switch (shape) {
        case Shape::Exponential:
            return nugget + ExponentialVariogramModel(sill, range).Evaluate(h);
        case Shape::Gaussian:
            return nugget + GaussianVariogramModel(sill, range).Evaluate(h);
        case Shape::Power:
        case Shape::Linear:
            return nugget + PowerVariogramModel(sill, range, exponent).Evaluate(h);
    }
    return std::numeric_limits<double>::quiet_NaN();
}

VariogramModelBase* ExperimentalVariogram::Fit::MakeModel() const {
    VariogramModelBase* model = nullptr;
    switch (shape) {
        case Shape::Exponential:
            model = new ExponentialVariogramModel(sill, range);
            break;
        case Shape::Gaussian:
            model = new GaussianVariogramModel(sill, range);
            break;
        case Shape::Power:
        case Shape::Linear:
            model = new PowerVariogramModel(sill, range, exponent);
            break;
    }
    return model != nullptr && nugget > 0.0 ? new NuggetVariogramModel(nugget, model) : model;
}

bool ExperimentalVariogram::Build(const std::vector<Point3D>& samples, double step, unsigned int count) {
    return Build(samples, step, count, Angle(), Angle(std::numbers::pi));
}

bool ExperimentalVariogram::Build(const std::vector<Point3D>& samples, double step, unsigned int count,
                                  const Angle& bearing, const Angle& tolerance) {
    if (!(step > 0.0) || count == 0 || count > mostLags || !std::isfinite(bearing.GetRadians()) ||
        !(tolerance.GetRadians() >= 0.0)) {
        return false;
    }
    const double reach = step * count;
    std::vector<Point3D> sorted = samples;
    for (const Point3D& p : sorted) {
        if (!std::isfinite(p.GetX()) || !std::isfinite(p.GetY()) || !std::isfinite(p.GetZ())) return false;
    }
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Point3D& a, const Point3D& b) { return a.GetX() < b.GetX(); });
    const double east = std::sin(bearing.GetRadians());
    const double north = std::cos(bearing.GetRadians());
    constexpr double rounding = 1e-9;  // of angles
    const bool hasDirection = tolerance.GetRadians() < 0.5 * std::numbers::pi;
    std::vector<Lag> found(count);
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        for (std::size_t k = i + 1; k < sorted.size(); ++k) {
            const Vec3D apart = sorted[k] - sorted[i];
            if (!(apart.GetX() < reach)) break;
            const double distance = std::hypot(apart.GetX(), apart.GetY());
            if (!(distance < reach)) continue;
            const double along = std::abs(apart.GetX() * east + apart.GetY() * north);
            const double across = std::abs(apart.GetX() * north - apart.GetY() * east);
            if (hasDirection && std::atan2(across, along) > tolerance.GetRadians() + rounding) continue;
            Lag& lag = found[std::min(static_cast<std::size_t>(distance / step), found.size() - 1)];
            ++lag.pairs;
            lag.distance += distance;
            lag.semivariance += apart.GetZ() * apart.GetZ();
        }
    }
    std::erase_if(found, [](const Lag& lag) { return lag.pairs == 0; });
    if (found.empty()) return false;
    for (Lag& lag : found) {
        lag.distance /= static_cast<double>(lag.pairs);
        lag.semivariance /= 2.0 * static_cast<double>(lag.pairs);
        if (!std::isfinite(lag.distance + lag.semivariance)) return false;
    }
    lags = std::move(found);
    return true;
}

bool ExperimentalVariogram::FitModel(Shape shape, Fit& fit) const {
    std::vector<Lag> fitted = lags;
    std::erase_if(fitted, [](const Lag& lag) { return !(lag.distance > 0.0); });
    constexpr std::size_t fewest = 3;
    if (fitted.size() < fewest || shape > Shape::Linear) return false;
    // By a power of two, so that squares of the semivariances stay numbers.
    const double largest = std::max_element(fitted.begin(), fitted.end(), [](const Lag& a, const Lag& b) {
                               return a.semivariance < b.semivariance;
                           })->semivariance;
    if (!(largest > 0.0)) return false;
    const int exponent = std::ilogb(largest);
    for (Lag& lag : fitted) lag.semivariance = std::ldexp(lag.semivariance, -exponent);
    Fit best = FitSearch(fitted, shape).Run();
    best.nugget = std::ldexp(best.nugget, exponent);
    best.sill = std::ldexp(best.sill, exponent);
    if (!(best.sill + best.nugget > 0.0) || !std::isfinite(best.sill + best.nugget)) return false;
    fit = best;
    return true;
}

}  // namespace Kalvio::Math
