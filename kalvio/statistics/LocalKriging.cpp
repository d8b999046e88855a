#include "kalvio/statistics/LocalKriging.h"

#include "kalvio/core/Point3D.h"
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

std::size_t CellOf(double offset, double side, std::size_t count) {
    const double cell = offset / side;
    return cell > 0.0 ? static_cast<std::size_t>(std::min(cell, static_cast<double>(count - 1))) : 0;
}

constexpr unsigned int mostSectors = 64;
constexpr std::size_t noSample = std::numeric_limits<std::size_t>::max();

bool IsFinite(const Point3D& p) {
    return std::isfinite(p.GetX()) && std::isfinite(p.GetY()) && std::isfinite(p.GetZ());
}

}  // namespace

std::size_t LocalKriging::ColumnOf(double x) const { return CellOf(x - left, side, columns); }
std::size_t LocalKriging::RowOf(double y) const { return CellOf(y - bottom, side, rows); }

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
    const auto [minX, maxX] = std::minmax_element(
        all.begin(), all.end(), [](const Point3D& a, const Point3D& b) { return a.GetX() < b.GetX(); });
    const auto [minY, maxY] = std::minmax_element(
        all.begin(), all.end(), [](const Point3D& a, const Point3D& b) { return a.GetY() < b.GetY(); });
    built.left = minX->GetX();
    built.bottom = minY->GetY();
    const double width = maxX->GetX() - built.left;
    const double height = maxY->GetY() - built.bottom;
    if (!std::isfinite(width) || !std::isfinite(height)) return false;
    // About two samples to a cell, and no more cells in a row than that leaves.
    const double cells = 0.5 * static_cast<double>(all.size()) + 1.0;
    built.side = std::max({std::sqrt(width / cells) * std::sqrt(height), width / cells, height / cells});
    if (!(built.side > 0.0)) built.side = 1.0;
    built.columns = static_cast<std::size_t>(width / built.side) + 1;
    built.rows = static_cast<std::size_t>(height / built.side) + 1;
    built.starts.assign(built.columns * built.rows + 1, 0);
    const auto cellOf = [&built](const Point3D& p) {
        return built.RowOf(p.GetY()) * built.columns + built.ColumnOf(p.GetX());
    };
    for (const Point3D& p : all) ++built.starts[cellOf(p) + 1];
    for (std::size_t i = 1; i < built.starts.size(); ++i) built.starts[i] += built.starts[i - 1];
    std::vector<std::size_t> ends(built.starts.begin(), built.starts.end() - 1);
    built.samples.resize(all.size());
    built.numbers.resize(all.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        const std::size_t place = ends[cellOf(all[i])]++;
        built.samples[place] = all[i];
        built.numbers[place] = i;
    }
    *this = std::move(built);
    return true;
}

// Ring by ring of cells around the place, until no nearer sample can come.
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
    const auto column = static_cast<std::int64_t>(ColumnOf(p.GetX()));
    const auto row = static_cast<std::int64_t>(RowOf(p.GetY()));
    const auto lastColumn = static_cast<std::int64_t>(columns) - 1;
    const auto lastRow = static_cast<std::int64_t>(rows) - 1;
    // Cells of a row, as far as they are there.
    const auto take = [&](std::int64_t r, std::int64_t first, std::int64_t last) {
        first = std::max<std::int64_t>(first, 0);
        last = std::min(last, lastColumn);
        if (first > last) return;
        const std::size_t cells = static_cast<std::size_t>(r) * columns;
        const std::size_t end = starts[cells + static_cast<std::size_t>(last) + 1];
        for (std::size_t i = starts[cells + static_cast<std::size_t>(first)]; i < end; ++i) {
            const double dx = samples[i].GetX() - p.GetX();
            const double dy = samples[i].GetY() - p.GetY();
            const Candidate candidate{{dx * dx + dy * dy, numbers[i]}, i};
            if (candidate.first.first > farthest || numbers[i] == leftOut) continue;
            const std::size_t sector = sectorOf(dx, dy);
            Candidate* const heap = room.Get() + sector * count;
            if (found[sector] == count) {
                if (!(candidate < heap[0])) continue;
                std::pop_heap(heap, heap + found[sector]);
                --found[sector];
            }
            heap[found[sector]++] = candidate;
            std::push_heap(heap, heap + found[sector]);
        }
    };
    take(row, column, column);
    for (std::int64_t ring = 1; ring <= std::max(lastColumn, lastRow); ++ring) {
        // Beyond the ring before, counted from the place's own cell, or from the cell next to it.
        const double away = static_cast<double>(ring - 1) * side;
        if (!isOpen(away * away)) break;
        if (row >= ring) take(row - ring, column - ring, column + ring);
        if (column >= ring || column + ring <= lastColumn) {
            for (std::int64_t r = std::max<std::int64_t>(row - ring + 1, 0); r < std::min(row + ring, lastRow + 1);
                 ++r) {
                take(r, column - ring, column - ring);
                take(r, column + ring, column + ring);
            }
        }
        if (row + ring <= lastRow) take(row + ring, column - ring, column + ring);
    }
    std::vector<Point3D> nearest;
    nearest.reserve(count * sectors);
    for (std::size_t sector = 0; sector < sectors; ++sector) {
        const Candidate* const heap = room.Get() + sector * count;
        for (std::size_t i = 0; i < found[sector]; ++i) nearest.push_back(samples[heap[i].second]);
    }
    return nearest;
}

bool LocalKriging::Interpolate(const Point2D& p, double& value, double& variance) const {
    return Estimate(p, noSample, value, variance);
}

bool LocalKriging::Validate(std::vector<Residual>& residuals) const {
    std::vector<Residual> found(samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        Residual& residual = found[numbers[i]];
        double value = 0.0;
        if (!Estimate(samples[i].GetPoint2D(), numbers[i], value, residual.variance)) return false;
        residual.error = value - samples[i].GetZ();
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
