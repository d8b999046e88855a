#pragma once

#include "polygons/Rings.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

namespace Kalvio::Math {

using PlainRing = std::vector<std::pair<double, double>>;

/// What a buffer's border may be off, of its distance: arcs of eight chords a quarter turn leave a half of it.
inline constexpr double bufferHeight = 0.0096;

/// A comb of `count` teeth as high as the comb is wide, or lying on its side: two of them cross 4 count^2 times.
inline PlainRing Comb(std::int64_t count, bool isLying) {
    PlainRing ring;
    const auto width = static_cast<double>(count);
    for (std::int64_t i = 0; i < count; ++i) {
        const auto x = static_cast<double>(i);
        ring.insert(ring.end(), {{x, 0.0}, {x + 0.3, width}, {x + 0.7, 0.5}});
    }
    ring.insert(ring.end(), {{width, -1.0}, {0.0, -1.0}});
    if (isLying) {
        for (auto& [x, y] : ring) x = width - std::exchange(y, x);
    }
    return ring;
}

/// Quadrangles that cover a square without gaps, side x side of them, in random order.
inline std::vector<PlainRing> Parcels(std::int64_t side) {
    std::mt19937_64 random(20240601);
    std::uniform_real_distribution<double> shift(-0.2, 0.2);
    const auto stride = static_cast<std::size_t>(side) + 1;
    PlainRing corners;
    for (std::size_t i = 0; i < stride * stride; ++i) {
        const double x = 385000.0 + static_cast<double>(i % stride) + shift(random);
        corners.emplace_back(x, 6672000.0 + static_cast<double>(i / stride) + shift(random));
    }
    std::vector<PlainRing> parcels;
    for (std::size_t i = 0; i + stride < corners.size(); ++i) {
        if ((i + 1) % stride == 0) continue;
        parcels.push_back({corners[i], corners[i + 1], corners[i + stride + 1], corners[i + stride]});
    }
    std::shuffle(parcels.begin(), parcels.end(), random);
    return parcels;
}

/// A disc.
struct PlainDisc {
    double x;
    double y;
    double radius;
};

/// Discs strewn over a square, each over some six others.
inline std::vector<PlainDisc> Discs(std::int64_t count) {
    std::mt19937_64 random(20240601);
    std::uniform_real_distribution<double> place(0.0, std::sqrt(static_cast<double>(count)));
    std::uniform_real_distribution<double> radius(0.5, 0.9);
    std::vector<PlainDisc> discs;
    for (std::int64_t i = 0; i < count; ++i) discs.push_back({place(random), place(random), radius(random)});
    return discs;
}

}  // namespace Kalvio::Math
