#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>

namespace Kalvio::Math {

/// Prints the seeds that a failed test has asked for.
class SeedPrinter : public testing::EmptyTestEventListener {
public:
    static SeedPrinter& Instance() {
        static SeedPrinter* const printer = [] {
            auto* const created = new SeedPrinter;
            testing::UnitTest::GetInstance()->listeners().Append(created);  // owned by the listeners from here on
            return created;
        }();
        return *printer;
    }
    void Note(const std::string& variable, std::uint64_t seed) { seeds[variable] = seed; }

private:
    void OnTestEnd(const testing::TestInfo& info) override {
        if (info.result()->Failed()) {
            for (const auto& [variable, seed] : seeds) std::cout << "to repeat: " << variable << '=' << seed << '\n';
        }
        seeds.clear();
    }

    std::map<std::string, std::uint64_t> seeds;
};

/// The seed for a test's random numbers: the variable's value where it is set to a number, the test's own otherwise.
/// The seed of a failed test is printed at its end. Call it from the test's thread.
inline std::uint64_t SeedFromEnvironment(const char* variable, std::uint64_t standard) {
    std::uint64_t seed = standard;
    if (const char* const text = std::getenv(variable); text != nullptr && *text != '\0') {
        char* end = nullptr;
        const std::uint64_t value = std::strtoull(text, &end, 10);
        if (*end == '\0') seed = value;
    }
    SeedPrinter::Instance().Note(variable, seed);
    return seed;
}

}  // namespace Kalvio::Math
