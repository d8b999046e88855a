#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace Kalvio::Examples {

/// Roads and surfaces built or planned by others; KALVIO_TEST_DATA names the folder that holds them.
class RealDataTest : public testing::Test {
protected:
    void SetUp() override {
        const char* const folder = std::getenv("KALVIO_TEST_DATA");
        if (folder == nullptr) GTEST_SKIP() << "KALVIO_TEST_DATA is not set: the real files are not here";
        data = std::string(folder) + '/';
        if (!std::filesystem::exists(data + "landxml")) GTEST_SKIP() << data << "landxml is not here";
    }
    std::string data;
};

}  // namespace Kalvio::Examples
