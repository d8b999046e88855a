#include "kalvio/core/MatrixNM.h"

#include <benchmark/benchmark.h>

#include <random>

namespace Kalvio::Math {
namespace {

void BM_MatrixNMGetInverse(benchmark::State& state) {
    const auto size = static_cast<unsigned int>(state.range(0));
    std::mt19937_64 random(size);
    std::uniform_real_distribution<double> any(-1.0, 1.0);
    MatrixNM matrix(size, size);
    for (unsigned int i = 0; i < size; ++i) {
        for (int j = 0; j < static_cast<int>(size); ++j) matrix[i][j] = any(random);
        matrix[i][static_cast<int>(i)] += 2.0;
    }
    MatrixNM inverse;
    for (auto _ : state) {
        benchmark::DoNotOptimize(matrix);
        if (!matrix.GetInverse(inverse)) state.SkipWithError("singular");
        benchmark::DoNotOptimize(inverse);
    }
}
BENCHMARK(BM_MatrixNMGetInverse)->ArgName("rows")->DenseRange(4, 12, 2)->RangeMultiplier(2)->Range(16, 128);

}  // namespace
}  // namespace Kalvio::Math
