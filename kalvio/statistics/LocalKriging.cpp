#include "kalvio/statistics/LocalKriging.h"

#include "kalvio/core/detail/BoxHierarchy.h"
#include "kalvio/statistics/OrdinaryKriging.h"
#include "kalvio/statistics/detail/PlaceSystem.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <utility>

namespace Kalvio::Math {

namespace {

constexpr unsigned int mostSectors = 64;
constexpr std::size_t few = 8;  // samples that need no parting
constexpr std::size_t noSample = std::numeric_limits<std::size_t>::max();

bool IsFinite(const Point3D& p) {
    return std::isfinite(p.GetX()) && std::isfinite(p.GetY()) && std::isfinite(p.GetZ());
}

}  // namespace

bool LocalKriging::Build(const OrdinaryKriging& kriging, const std::vector<Point3D>& all, unsigned int neighbors) {
    Neighborhood nearest;
    nearest.count = neighbors;
    return Build(kriging, all, nearest);
}

bool LocalKriging::Build(const OrdinaryKriging& kriging, const std::vector<Point3D>& all,
                         const Neighborhood& neighborhood) {
    if (kriging.GetModel() == nullptr || all.empty() || neighborhood.count == 0 || neighborhood.sectors == 0 ||
        neighborhood.sectors > mostSectors || !(neighborhood.radius > 0.0) ||
        !std::all_of(all.begin(), all.end(), IsFinite)) {
        return false;
    }
    LocalKriging built;
    built.model = kriging.GetModel();
    built.count = std::min<std::size_t>(neighborhood.count, all.size());
    built.sectors = neighborhood.sectors;
    built.radius = neighborhood.radius;
    built.hasLinearTrend = neighborhood.hasLinearTrend;
    detail::Extent extent;
    built.samples.reserve(all.size());
    for (const Point3D& p : all) {
        extent.Add(p.GetPoint2D());
        built.samples.push_back({p, built.samples.size()});
    }
    if (!std::isfinite(extent.maxX - extent.minX) || !std::isfinite(extent.maxY - extent.minY)) return false;
    built.low = {extent.minX, extent.minY};
    built.high = {extent.maxX, extent.maxY};
    built.areNorthward.assign(all.size(), 0);
    built.Part(0, all.size());
    *this = std::move(built);
    return true;
}

// A k-d tree (J. L. Bentley, 1975): it adapts to crowds, strips and single places far away.
void LocalKriging::Part(std::size_t from, std::size_t to) {
    if (to - from <= few) return;
    detail::Extent extent;
    for (std::size_t i = from; i < to; ++i) extent.Add(samples[i].point.GetPoint2D());
    const bool isNorthward = extent.maxY - extent.minY > extent.maxX - extent.minX;
    const auto isBefore = [isNorthward](const Numbered& a, const Numbered& b) {
        const double place = isNorthward ? a.point.GetY() : a.point.GetX();
        const double other = isNorthward ? b.point.GetY() : b.point.GetX();
        return place < other || (place == other && a.number < b.number);
    };
    const std::size_t middle = from + (to - from) / 2;
    Numbered* const first = samples.data();
    std::nth_element(first + from, first + middle, first + to, isBefore);
    areNorthward[middle] = isNorthward ? 1 : 0;
    Part(from, middle);
    Part(middle + 1, to);
}

std::vector<Point3D> LocalKriging::FindNearest(const Point2D& p, std::size_t leftOut) const {
    using Candidate = std::pair<std::pair<double, std::size_t>,
                                std::size_t>;                // squared distance, number; place
    detail::Workspace<Candidate, 32> room(count * sectors);  // a heap for each sector
    std::array<std::size_t, mostSectors> found{};
    const double farthest = radius * radius;
    const auto sectorOf = [this](double dx, double dy) {
        if (sectors == 1) return std::size_t{0};
        const double turns = std::atan2(dy, dx) / (2.0 * std::numbers::pi);
        const double sector = (turns < 0.0 ? turns + 1.0 : turns) * static_cast<double>(sectors);
        return std::min(static_cast<std::size_t>(sector), sectors - 1);
    };
    // Whether a sample beyond a squared distance may still take part.
    const auto isOpen = [&](double squared) {
        if (squared > farthest) return false;
        for (std::size_t sector = 0; sector < sectors; ++sector) {
            if (found[sector] < count || squared <= room.Get()[sector * count].first.first) return true;
        }
        return false;
    };
    const auto take = [&](std::size_t i) {
        const double dx = samples[i].point.GetX() - p.GetX();
        const double dy = samples[i].point.GetY() - p.GetY();
        const Candidate candidate{{dx * dx + dy * dy, samples[i].number}, i};
        if (candidate.first.first > farthest || samples[i].number == leftOut) return;
        const std::size_t sector = sectorOf(dx, dy);
        Candidate* const heap = room.Get() + sector * count;
        if (found[sector] == count) {
            if (!(candidate < heap[0])) return;
            std::pop_heap(heap, heap + found[sector]);
            --found[sector];
        }
        heap[found[sector]++] = candidate;
        std::push_heap(heap, heap + found[sector]);
    };
    // The side where the place lies first; the gaps are those between the place and where the samples lie.
    const auto search = [&](const auto& self, std::size_t from, std::size_t to, double gapX, double gapY) -> void {
        if (to - from <= few) {
            for (std::size_t i = from; i < to; ++i) take(i);
            return;
        }
        const std::size_t middle = from + (to - from) / 2;
        const Point3D& at = samples[middle].point;
        const bool isNorthward = areNorthward[middle] != 0;
        const double beyond = isNorthward ? p.GetY() - at.GetY() : p.GetX() - at.GetX();
        const bool isBehind = beyond > 0.0;
        self(self, isBehind ? middle + 1 : from, isBehind ? to : middle, gapX, gapY);
        (isNorthward ? gapY : gapX) = std::abs(beyond);
        if (!isOpen(gapX * gapX + gapY * gapY)) return;
        take(middle);
        self(self, isBehind ? from : middle + 1, isBehind ? middle : to, gapX, gapY);
    };
    search(search, 0, samples.size(), std::max({low.GetX() - p.GetX(), p.GetX() - high.GetX(), 0.0}),
           std::max({low.GetY() - p.GetY(), p.GetY() - high.GetY(), 0.0}));
    std::vector<Point3D> nearest;
    nearest.reserve(count * sectors);
    for (std::size_t sector = 0; sector < sectors; ++sector) {
        Candidate* const heap = room.Get() + sector * count;
        std::sort_heap(heap, heap + found[sector]);
        for (std::size_t i = 0; i < found[sector]; ++i) nearest.push_back(samples[heap[i].second].point);
    }
    return nearest;
}

bool LocalKriging::Interpolate(const Point2D& p, double& value, double& variance) const {
    return Estimate(p, noSample, value, variance);
}

bool LocalKriging::Validate(std::vector<Residual>& residuals) const {
    std::vector<Residual> found(samples.size());
    for (const Numbered& sample : samples) {
        Residual& residual = found[sample.number];
        double value = 0.0;
        if (!Estimate(sample.point.GetPoint2D(), sample.number, value, residual.variance)) return false;
        residual.error = value - sample.point.GetZ();
    }
    if (model == nullptr) return false;
    residuals = std::move(found);
    return true;
}

bool LocalKriging::Estimate(const Point2D& p, std::size_t leftOut, double& value, double& variance) const {
    if (model == nullptr || !std::isfinite(p.GetX()) || !std::isfinite(p.GetY())) return false;
    const std::vector<Point3D> nearest = FindNearest(p, leftOut);
    if (nearest.empty()) return false;
    const std::size_t last = nearest.size();
    const std::size_t size = last + (hasLinearTrend ? 3 : 1);
    detail::Elimination elimination(size, 1);
    detail::FillCovariances(*model, nearest, elimination);
    const double scale = detail::Normalize(elimination, last);
    if (scale == 0.0) return false;
    detail::FillSumOfWeights(last, elimination);
    detail::Workspace<double, 20> rightSide(size);
    detail::Workspace<double, 20> lambda(size);
    double* const b = rightSide.Get();
    detail::FillCovariances(*model, p, nearest, b);
    for (std::size_t i = 0; i < last; ++i) b[i] *= scale;
    b[last] = 1.0;
    if (hasLinearTrend) {
        const detail::LinearTrend trend(nearest);
        trend.Fill(nearest, elimination);
        trend.Fill(p, b + last + 1);
    }
    for (std::size_t i = 0; i < size; ++i) elimination.Row(i)[size] = b[i];
    elimination.Run();
    if (detail::IsSingular(elimination, size)) return false;
    elimination.Solve(lambda.Get());
    const double base = nearest.front().GetZ();
    double estimate = 0.0;
    double sum = 0.0;
    for (std::size_t i = 0; i < size; ++i) {
        if (i < last) estimate += lambda.Get()[i] * (nearest[i].GetZ() - base);
        sum += lambda.Get()[i] * b[i];
    }
    const double atZero = model->Evaluate(0.0);
    const double ofError = atZero == 0.0 ? sum / scale : atZero - sum / scale;
    if (!std::isfinite(estimate) || !std::isfinite(ofError)) return false;
    value = base + estimate;
    variance = ofError;
    return true;
}

}  // namespace Kalvio::Math
