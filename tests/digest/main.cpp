#include "fuzz/Families.h"

#include <cstdio>

using namespace Kalvio::Math;

// Prints one line for each place at which the families of laws see results: the place, and a digest over the bits of
// all that it saw on random input. Programs of different compilers and optimisations print the same.
int main() {
    for (const Family& family : families) {
        for (int i = 0; i < family.cases / 4; ++i) {
            const std::vector<std::uint8_t> data = RandomBytes(20261122 + static_cast<std::uint64_t>(i));
            Bytes bytes(data.data(), data.size());
            family.fuzz(bytes);
        }
    }
    for (const auto& [place, digest] : Digests()) {
        std::printf("%s:%d %016llx\n", std::string(place.first).c_str(), place.second,
                    static_cast<unsigned long long>(digest));
    }
    return 0;
}
