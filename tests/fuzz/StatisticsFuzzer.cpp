#include "fuzz/Bytes.h"

using namespace Kalvio::Math;

namespace {

constexpr double untouched = 123456.0;

VariogramModelBase* MakeModel(bool isSpherical, double sill, double range) {
    if (isSpherical) return new SphericalVariogramModel(sill, range);
    return new ExponentialVariogramModel(sill, range);
}

// A failure touches nothing, an answer is finite.
// By reference: the value is read when the answer is there.
void CheckAnswer(bool found, const double& value) { Require(found ? std::isfinite(value) : value == untouched); }

// The estimators and the system agree at the samples: there the estimate is the sample. Samples a sixteenth of their
// extent apart or more keep the matrix of an exponential model well conditioned.
template <class Kriging>
void CheckKriging(const Kriging& kriging, const std::vector<Point3D>& samples, const Point2D& p, bool isSound) {
    double value = untouched;
    const KrigingBase& base = kriging;
    CheckAnswer(base.Interpolate(p, samples, value), value);
    KrigingSystem system;
    const bool isBuilt = system.Build(kriging, samples);
    Require(system.GetNrOfSamples() == (isBuilt ? samples.size() : 0));
    double ofSystem = untouched, variance = untouched;
    const bool found = system.Interpolate(p, ofSystem);
    CheckAnswer(found, ofSystem);
    Require(isBuilt || !found);
    CheckAnswer(system.Interpolate(p, ofSystem, variance), variance);
    if constexpr (std::is_same_v<Kriging, OrdinaryKriging>) {
        LocalKriging local;
        double near = untouched;
        for (const LocalKriging::Neighborhood& neighborhood : {LocalKriging::Neighborhood{3}, {6, 1, 1e9, true}}) {
            Require(!(local.Build(kriging, samples, neighborhood) && samples.empty()));
            CheckAnswer(local.Interpolate(p, near = untouched, variance), near);
        }
        KrigingSystem withTrend;
        Require(!withTrend.BuildWithLinearTrend(kriging, samples) || samples.size() > 2);
        CheckAnswer(withTrend.Interpolate(p, near = untouched), near);
    } else {
        double whole = untouched;
        CheckAnswer(kriging.Interpolate(p, samples, whole, variance = untouched), variance);
    }
    See({value, ofSystem, variance});
    if (isSound) Require(isBuilt);
    for (const Point3D& sample : samples) {
        double there = untouched;
        if (!isSound) break;
        Require(system.Interpolate(sample.GetPoint2D(), there, variance));
        Require(std::abs(there - sample.GetZ()) <= 1e-6 && std::abs(variance) <= 1e-6);
        if (kriging.Interpolate(sample.GetPoint2D(), samples, there)) RequireNear(there, sample.GetZ(), 1e-3);
    }
}

}  // namespace

void Kalvio::Math::FuzzStatistics(Bytes& bytes) {
    const bool isSpherical = bytes.TakeCount(2) == 1;
    const double sill = bytes.TakeDouble(), range = bytes.TakeDouble(), mean = bytes.TakeDouble();
    const Point2D p = bytes.TakePoint();
    const std::vector<Point3D> samples = bytes.TakePoints3D(12);
    bool isSound = bytes.Tame() && !isSpherical && sill >= 1.0 && range >= 1.0 && range <= 512.0 && samples.size() > 1;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        for (std::size_t k = 0; k < i; ++k) isSound = isSound && samples[i].Distance2D(samples[k]) >= 0.5;
    }
    CheckKriging(SimpleKriging(MakeModel(isSpherical, sill, range), mean), samples, p, isSound);
    CheckKriging(OrdinaryKriging(MakeModel(isSpherical, sill, range)), samples, p, isSound);
    const auto fitAndKrige = [&](ExperimentalVariogram::Shape shape) {
        ExperimentalVariogram variogram;
        ExperimentalVariogram::Fit fit;
        if (!variogram.Build(samples, range, 5, Angle(sill), Angle(mean)) || !variogram.FitModel(shape, fit)) return;
        See({fit.nugget, fit.sill, fit.range});
        Require(fit.nugget >= 0.0 && fit.sill >= 0.0 && fit.nugget + fit.sill > 0.0 && fit.range > 0.0);
        LocalKriging local;
        std::vector<LocalKriging::Residual> residuals;
        const OrdinaryKriging kriging(fit.MakeModel());
        if (local.Build(kriging, samples, {2, 3, range}) && local.Validate(residuals)) {
            Require(residuals.size() == samples.size());
        }
    };
    using Shape = ExperimentalVariogram::Shape;
    for (const Shape shape : {Shape::Exponential, Shape::Gaussian, Shape::Power, Shape::Linear}) fitAndKrige(shape);
    (void)NuggetVariogramModel(mean, new GaussianVariogramModel(sill, range)).Evaluate(p.GetX());
    (void)PowerVariogramModel(sill, range, mean).Evaluate(p.GetX());
    if (samples.size() < 2) return;
    const double height = Interpolation::ZCoordinateBy2DProjection(p, samples[0], samples[1]);
    const auto [low, high] = std::minmax({samples[0].GetZ(), samples[1].GetZ()});
    if (bytes.Tame()) Require(height >= low && height <= high);
}
