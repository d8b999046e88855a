#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>

namespace Kalvio::Examples {

/// Tells on stderr, once a second, how far a long work is; work that takes less than a second stays silent.
class Progress {
public:
    Progress(const char* title, std::size_t steps) : what(title), total(steps) {}

    void Step() {
        ++done;
        const auto now = std::chrono::steady_clock::now();
        if (now - told < std::chrono::seconds(1)) return;
        told = now;
        std::fprintf(stderr, "%s: %zu %%\n", what, done * 100 / total);
    }

private:
    const char* what;
    std::size_t total;
    std::size_t done = 0;
    std::chrono::steady_clock::time_point told = std::chrono::steady_clock::now();
};

}  // namespace Kalvio::Examples
