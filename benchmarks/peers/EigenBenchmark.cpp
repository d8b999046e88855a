// Peer of core/MatrixNMBenchmark.cpp: the same matrices inverted by LU with partial pivoting.
#include <benchmark/benchmark.h>
#include <Eigen/Dense>

#include <random>

namespace {

void BM_EigenInverse(benchmark::State& state) {
    const auto size = static_cast<Eigen::Index>(state.range(0));
    std::mt19937_64 random(static_cast<std::uint64_t>(size));
    std::uniform_real_distribution<double> any(-1.0, 1.0);
    Eigen::MatrixXd matrix(size, size);
    for (Eigen::Index i = 0; i < size; ++i) {
        for (Eigen::Index j = 0; j < size; ++j) matrix(i, j) = any(random);
        matrix(i, i) += 2.0;
    }
    Eigen::MatrixXd inverse(size, size);
    for (auto _ : state) {
        benchmark::DoNotOptimize(matrix);
        inverse = matrix.partialPivLu().inverse();
        benchmark::DoNotOptimize(inverse);
    }
}
BENCHMARK(BM_EigenInverse)->ArgName("rows")->DenseRange(4, 12, 2)->RangeMultiplier(2)->Range(16, 128);

}  // namespace
