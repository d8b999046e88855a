#pragma once

#include "kalvio/Math.h"
#include "support/Testing.h"

#include <set>

namespace Kalvio::Math {

using Indexes = std::vector<unsigned int>;

/// Block of the size between a corner and the opposite one; faces run counter-clockwise seen from outside.
inline IndexedTriangleSet3D Block(const Point3D& corner, const Vec3D& size) {
    IndexedTriangleSet3D set;
    for (const int z : {0, 1}) {
        for (const Vec2D& v : {Vec2D(0, 0), Vec2D(1, 0), Vec2D(1, 1), Vec2D(0, 1)}) {
            set.AppendVertex(corner + Vec3D(v.GetX() * size.GetX(), v.GetY() * size.GetY(), z * size.GetZ()));
        }
    }
    set.AppendIndexes(
        {0, 2, 1, 0, 3, 2, 4, 5, 6, 4, 6, 7, 0, 1, 5, 0, 5, 4, 1, 2, 6, 1, 6, 5, 2, 3, 7, 2, 7, 6, 3, 0, 4, 3, 4, 7});
    set.SetCCW(true);
    return set;
}

using Field = std::pair<int, int>;
using Fields = std::set<Field>;

inline std::array<Field, 4> Beside(const Field& field) {
    const auto& [x, y] = field;
    return {Field(x + 1, y), Field(x - 1, y), Field(x, y + 1), Field(x, y - 1)};
}

/// What a flood over the sides of the fields reaches from the first of them, then from the first of the others.
inline std::vector<std::vector<Field>> PartsOf(Fields fields) {
    std::vector<std::vector<Field>> parts;
    while (!fields.empty()) {
        std::vector<Field>& flood = parts.emplace_back(1, fields.extract(fields.begin()).value());
        for (std::size_t k = 0; k < flood.size(); ++k) {
            for (const Field& beside : Beside(flood[k])) {
                if (fields.erase(beside) > 0) flood.push_back(beside);
            }
        }
    }
    return parts;
}

inline constexpr auto kFlat = [](double, double) { return 1.0; };
inline constexpr auto kWhole = [](int, int) { return true; };

/// Grid of n x n squares of side 1 from a corner on, z = height(x, y) counted from there; only those that keep(column,
/// row) wants. Counter-clockwise in plan.
template <class Height = decltype(kFlat), class Keep = decltype(kWhole)>
IndexedTriangleSet3D Grid(const Point2D& corner, unsigned int n, const Height& height = kFlat,
                          const Keep& keep = kWhole) {
    IndexedTriangleSet3D set;
    for (unsigned int i = 0; i < (n + 1) * (n + 1); ++i) {
        const int x = static_cast<int>(i % (n + 1)), y = static_cast<int>(i / (n + 1));
        set.AppendVertex({corner + Vec2D(x, y), height(x, y)});
        if (i % (n + 1) == n || i / (n + 1) == n || !keep(x, y)) continue;
        set.AppendIndexes({i, i + 1, i + n + 2, i, i + n + 2, i + n + 1});
    }
    set.SetCCW(true);
    return set;
}

}  // namespace Kalvio::Math
