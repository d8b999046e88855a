#pragma once

#include "fuzz/Bytes.h"

#include <random>

namespace Kalvio::Math {

/// What a fuzzer calls and requires for one input, and the number of random ones that every test run tries.
struct Family {
    const char* name;
    void (*fuzz)(Bytes&);
    int cases;
};

/// Of about as long each, some three seconds in all.
inline constexpr Family families[] = {
    {"Alignment", FuzzAlignment, 500},
    {"Area", FuzzArea, 1000},
    {"Core", FuzzCore, 20000},
    {"Element", FuzzElement, 2000},
    {"Ground", FuzzGround, 500},
    {"Index", FuzzIndex, 400},
    {"Matrix", FuzzMatrix, 4000},
    {"Mesh", FuzzMesh, 5000},
    {"Polygon", FuzzPolygon, 4000},
    {"Query", FuzzQuery, 1500},
    {"Ring", FuzzRing, 4000},
    {"Simplification", FuzzSimplification, 8000},
    {"Space", FuzzSpace, 8000},
    {"Statistics", FuzzStatistics, 500},
    {"Wkt", FuzzWkt, 5000},
};

/// Up to 500 bytes: runs of any, of numbers at the edges of what there is, of small multiples of a lattice, and runs
/// that come again, by which points repeat and rings close.
inline std::vector<std::uint8_t> RandomBytes(std::uint64_t seed) {
    std::mt19937_64 random(seed);
    const auto below = [&random](std::size_t count) { return random() % count; };
    static const double edges[] = {NAN, INFINITY, -INFINITY, 1e308, -1e308, 5e-324, -0.0, 0.0, 1.0, -1.5, 1e-9, 2e7};
    const std::size_t count = below(501), kinds = 1 + below(4), pitch = 8U << below(6);
    std::vector<std::uint8_t> bytes(1, static_cast<std::uint8_t>(random()));
    while (bytes.size() < count) {
        const std::size_t kind = below(kinds), length = 1 + below(16);
        if (kind == 0) {
            for (std::size_t i = 0; i < length; ++i) bytes.push_back(static_cast<std::uint8_t>(random()));
        } else if (kind == 1) {
            for (std::size_t i = 0; i < length; ++i) {
                const std::size_t value = pitch * below(9) - 4 * pitch;
                bytes.insert(bytes.end(), {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8U)});
            }
        } else if (kind == 2) {
            const std::size_t from = below(bytes.size()), to = std::min(from + 4 * length, bytes.size());
            for (std::size_t i = from; i < to; ++i) bytes.push_back(std::uint8_t{bytes[i]});
        } else {
            const auto* const edge = reinterpret_cast<const std::uint8_t*>(&edges[below(std::size(edges))]);
            bytes.insert(bytes.end(), edge, edge + sizeof(double));
        }
    }
    return bytes;
}

}  // namespace Kalvio::Math
