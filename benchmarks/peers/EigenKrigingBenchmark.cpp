// Peer of statistics/KrigingBenchmark.cpp: the linear algebra of ordinary kriging alone, its matrix inverted or solved
// anew for each place by LU with partial pivoting.
#include "statistics/KrigingSamples.h"

#include <benchmark/benchmark.h>
#include <Eigen/Dense>

#include <cmath>

namespace Kalvio::Benchmarks {
namespace {

double Variogram(double dx, double dy) { return sill * (1.0 - std::exp(-std::sqrt(dx * dx + dy * dy) / range)); }

// Fills the system of one place and runs `solve(matrix, rightSide)` on it, for a row of the grid.
template <class Solve>
void OverRow(benchmark::State& state, const Solve& solve) {
    const std::vector<Sample> samples = ScatteredSamples(static_cast<std::size_t>(state.range(0)));
    const auto n = static_cast<Eigen::Index>(samples.size());
    Eigen::MatrixXd matrix(n + 1, n + 1);
    Eigen::VectorXd rightSide(n + 1);
    const auto at = [&](Eigen::Index i) -> const Sample& { return samples[static_cast<std::size_t>(i)]; };
    for (auto _ : state) {
        for (int column = 0; column < gridSide; ++column) {
            for (Eigen::Index i = 0; i < n; ++i) {
                for (Eigen::Index j = 0; j < i; ++j) {
                    matrix(i, j) = matrix(j, i) = Variogram(at(i).x - at(j).x, at(i).y - at(j).y);
                }
                matrix(i, i) = 0.0;
                matrix(i, n) = matrix(n, i) = 1.0;
                rightSide(i) = Variogram(at(i).x - column * gridStep, at(i).y);
            }
            matrix(n, n) = 0.0;
            rightSide(n) = 1.0;
            const Eigen::VectorXd lambda = solve(matrix, rightSide);
            double value = 0.0;
            for (Eigen::Index i = 0; i < n; ++i) value += lambda(i) * at(i).z;
            benchmark::DoNotOptimize(value);
        }
    }
    state.counters["per place"] =
        benchmark::Counter(gridSide, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_EigenKrigingInverse(benchmark::State& state) {
    OverRow(state, [](const Eigen::MatrixXd& matrix, const Eigen::VectorXd& rightSide) -> Eigen::VectorXd {
        return matrix.partialPivLu().inverse() * rightSide;
    });
}
BENCHMARK(BM_EigenKrigingInverse)->ArgName("samples")->RangeMultiplier(2)->Range(4, 512)->Unit(benchmark::kMillisecond);

void BM_EigenKrigingSolve(benchmark::State& state) {
    OverRow(state, [](const Eigen::MatrixXd& matrix, const Eigen::VectorXd& rightSide) -> Eigen::VectorXd {
        return matrix.partialPivLu().solve(rightSide);
    });
}
BENCHMARK(BM_EigenKrigingSolve)->ArgName("samples")->RangeMultiplier(2)->Range(4, 512)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Kalvio::Benchmarks
