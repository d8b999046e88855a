#include "terrain/VariogramStudy.h"

#include "common/Drawing.h"
#include "common/InputError.h"
#include "common/Svg.h"

#include "kalvio/Print.h"
#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/statistics/OrdinaryKriging.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Kalvio::Examples {

using namespace Math;

namespace {

using Shape = ExperimentalVariogram::Shape;

constexpr unsigned int lagCount = 15;
constexpr unsigned int neighbors = 24;

}  // namespace

VariogramStudy::VariogramStudy(const std::vector<Point3D>& samples) {
    BoundingBox2D extent = samples.empty() ? BoundingBox2D() : samples.front().GetBoundingBox2D();
    for (const Point3D& sample : samples) extent += sample.GetBoundingBox2D();
    if (!variogram.Build(samples, 0.5 * extent.GetSize().Length() / lagCount, lagCount)) {
        throw InputError("too few points for a variogram");
    }
    for (const Shape shape : {Shape::Exponential, Shape::Gaussian, Shape::Power, Shape::Linear}) {
        ExperimentalVariogram::Fit fit;
        if (variogram.FitModel(shape, fit)) fits.push_back(fit);
    }
    if (fits.empty()) throw InputError("no variogram fits the points");
    std::stable_sort(fits.begin(), fits.end(), [](const auto& a, const auto& b) { return a.misfit < b.misfit; });
    LocalKriging local;
    const OrdinaryKriging kriging(fits.front().MakeModel());
    if (!local.Build(kriging, samples, neighbors) || !local.Validate(residuals)) residuals.clear();
}

bool VariogramStudy::DrawPicture(const std::string& path, const std::string& unit) const {
    constexpr double width = 760.0;
    constexpr double height = 420.0;
    constexpr double left = 70.0;
    constexpr double top = 50.0;
    constexpr const char* dark = "#333333";
    constexpr std::array<const char*, 4> colors = {"#c0392b", "#2471a3", "#7d8b3a", "#999999"};
    const double farthest = variogram.GetLags().back().distance;
    double highest = 0.0;
    double mostPairs = 0.0;
    for (const ExperimentalVariogram::Lag& lag : variogram.GetLags()) {
        highest = std::max(highest, lag.semivariance);
        mostPairs = std::max(mostPairs, static_cast<double>(lag.pairs));
    }
    Svg svg(width, height);
    const BoundingBox2D world(Point2D(0.0, 0.0), Point2D(1.05 * farthest, std::max(1.1 * highest, 1e-9)));
    const SvgPanel panel = DrawSectionGrid(svg, left, top, width - left - 30.0, height - top - 60.0, world);
    for (std::size_t i = fits.size(); i-- > 0;) {
        std::vector<Point2D> curve;
        constexpr int steps = 200;
        for (int k = 1; k <= steps; ++k) {
            const double h = world.GetMaxPoint().GetX() * k / steps;
            if (fits[i].Evaluate(h) <= world.GetMaxPoint().GetY()) curve.emplace_back(h, fits[i].Evaluate(h));
        }
        svg.Polyline(panel.ToPage(curve), {colors[i], i == 0 ? 2.5 : 1.2, "", i == 0 ? "" : "5 3"});
        svg.Text(Point2D(left + 120.0 * static_cast<double>(i), top - 12.0), GetName(fits[i].shape), 12, colors[i]);
    }
    for (const ExperimentalVariogram::Lag& lag : variogram.GetLags()) {
        const double radius = 2.5 + 3.5 * std::sqrt(static_cast<double>(lag.pairs) / mostPairs);
        svg.Circle(panel.ToPage(Point2D(lag.distance, lag.semivariance)), radius, {"#ffffff", 1.0, dark, ""});
    }
    svg.Text(Point2D(left, top - 30.0),
             "Semivariance [" + unit + "2] by distance [" + unit + "]; circles grow with the pairs of points", 12,
             dark);
    return svg.Write(path);
}

}  // namespace Kalvio::Examples
