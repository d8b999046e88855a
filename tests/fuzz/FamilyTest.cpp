#include "fuzz/Families.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

class FamilyTest : public testing::TestWithParam<Family> {};

TEST_P(FamilyTest, KeepsItsLawsForAnyBytes) {
    std::uint64_t seed = SeedFromEnvironment(1);
    int broken = 0;
    for (int i = 0; i < GetParam().cases && broken < 5; ++i, ++seed) {
        const std::vector<std::uint8_t> data = RandomBytes(seed);
        Bytes bytes(data.data(), data.size());
        try {
            GetParam().fuzz(bytes);
        } catch (const BrokenLaw& law) {
            ++broken;
            ADD_FAILURE() << law.what() << ", at once with KALVIO_TEST_SEED=" << seed;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, FamilyTest, testing::ValuesIn(families),
                         [](const auto& family) { return std::string(family.param.name); });

}  // namespace
}  // namespace Kalvio::Math
