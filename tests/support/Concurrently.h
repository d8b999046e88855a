#pragma once

#include <cstddef>
#include <latch>
#include <thread>
#include <vector>

namespace Kalvio::Math {

/// Runs `work(i)` for i = 0 ... n - 1, each on its own thread, all let go at one moment; returns when all
/// have ended. Collect results by index and check them afterwards.
template <class Work>
void Concurrently(unsigned int n, Work&& work) {
    std::latch start(static_cast<std::ptrdiff_t>(n));
    std::vector<std::jthread> threads;
    for (unsigned int i = 0; i < n; ++i) {
        threads.emplace_back([&start, &work, i] {
            start.arrive_and_wait();
            work(i);
        });
    }
}

}  // namespace Kalvio::Math
