#include "terrain/KrigedGrid.h"

#include "common/InputError.h"
#include "common/Progress.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/statistics/KrigingSystem.h"
#include "kalvio/statistics/LocalKriging.h"
#include "kalvio/statistics/OrdinaryKriging.h"

#include <algorithm>
#include <cmath>

namespace Kalvio::Examples {

using namespace Math;

namespace {

// The system of the samples is a full matrix and is factored once, cubic in their number; of more the nearest are
// taken.
constexpr std::size_t mostSamples = 4000;
constexpr unsigned int neighbors = 24;
constexpr double mostNodes = 4e6;

BoundingBox2D ExtentOf(const std::vector<Point3D>& samples) {
    BoundingBox2D extent = samples.front().GetBoundingBox2D();
    for (const Point3D& sample : samples) extent += sample.GetBoundingBox2D();
    return extent;
}

double VarianceOf(const std::vector<Point3D>& samples) {
    const double count = static_cast<double>(samples.size());
    double mean = 0.0;
    for (const Point3D& sample : samples) mean += sample.GetZ() / count;
    double variance = 0.0;
    for (const Point3D& sample : samples) variance += (sample.GetZ() - mean) * (sample.GetZ() - mean) / count;
    return variance;
}

}  // namespace

ExperimentalVariogram::Fit GuessModel(const std::vector<Point3D>& samples, const std::optional<double>& sill,
                                      const std::optional<double>& range) {
    if (samples.empty()) throw InputError("no points to krige from");
    ExperimentalVariogram::Fit model;
    model.sill = sill.value_or(std::max(VarianceOf(samples), 1e-6));
    model.range = range.value_or(std::max(ExtentOf(samples).GetSize().Length() / 3.0, 1e-6));
    return model;
}

KrigedGrid::KrigedGrid(const std::vector<Point3D>& samples, double spacing, const ExperimentalVariogram::Fit& model,
                       bool hasLinearTrend) {
    const OrdinaryKriging kriging(model.MakeModel());
    KrigingSystem system;
    LocalKriging local;
    const bool isLocal = samples.size() > mostSamples;
    LocalKriging::Neighborhood nearest;
    nearest.count = neighbors;
    nearest.hasLinearTrend = hasLinearTrend;
    if (!(isLocal          ? local.Build(kriging, samples, nearest)
          : hasLinearTrend ? system.BuildWithLinearTrend(kriging, samples)
                           : system.Build(kriging, samples))) {
        throw InputError(
            "the points cannot be kriged: none, two of them at one place, or all on one line with --trend");
    }
    if (!heights.SetOver(ExtentOf(samples), spacing) ||
        !(static_cast<double>(heights.GetColumns()) * static_cast<double>(heights.GetRows()) <= mostNodes)) {
        throw InputError("the grid's spacing is too narrow for the extent of the points");
    }
    deviations = heights;
    Progress progress("kriging", heights.GetRows());
    for (std::size_t row = 0; row < heights.GetRows(); ++row) {
        for (std::size_t column = 0; column < heights.GetColumns(); ++column) {
            const Point2D place = heights.GetPlace(column, row);
            double height = 0.0;
            double variance = 0.0;
            if (!(isLocal ? local.Interpolate(place, height, variance) : system.Interpolate(place, height, variance))) {
                throw InputError("the points cannot be kriged: two of them at one place");
            }
            heights.SetHeightOf(column, row, height);
            deviations.SetHeightOf(column, row, std::sqrt(std::max(variance, 0.0)));
        }
        progress.Step();
    }
}

}  // namespace Kalvio::Examples
