#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <optional>

namespace Kalvio::Math {

/// Prints the seed that a failed test has asked for last.
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
    void Note(std::uint64_t asked) { seed = asked; }

private:
    void OnTestEnd(const testing::TestInfo& info) override {
        if (info.result()->Failed() && seed) std::cout << "to repeat: KALVIO_TEST_SEED=" << *seed << '\n';
        seed.reset();
    }

    std::optional<std::uint64_t> seed;
};

/// The seed for a test's random numbers: the number in KALVIO_TEST_SEED where it is set, the test's own otherwise. That
/// of a failed test is printed at its end. Call it from the test's thread.
inline std::uint64_t SeedFromEnvironment(std::uint64_t standard) {
    const char* const text = std::getenv("KALVIO_TEST_SEED");
    const std::uint64_t seed = text != nullptr && *text != '\0' ? std::strtoull(text, nullptr, 10) : standard;
    SeedPrinter::Instance().Note(seed);
    return seed;
}

}  // namespace Kalvio::Math
