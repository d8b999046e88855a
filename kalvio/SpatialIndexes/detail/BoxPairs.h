#pragma once

#include "kalvio/SpatialIndexes/detail/FlatBox.h"
#include "kalvio/SpatialIndexes/detail/Lanes.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace Kalvio::Math::SpatialIndexes::detail {

/// Where the bounds of a box are in memory that stays.
struct BoxBounds {
    const double* first;
    unsigned int step;  // from the lower bound of an axis to the upper, and on to the next axis
    unsigned int dimension;
    double Low(unsigned int axis) const { return first[std::size_t{2} * step * axis]; }
    double High(unsigned int axis) const { return first[std::size_t{2} * step * axis + step]; }
};

/// View of the boxes of a node's entries, two by two: lower x of both, upper x of both, lower y of both, ... A pair in
/// plan is one cache line, and a search tests both its boxes at once, front to back through memory.
class BoxPairs {
public:
    BoxPairs(double* numbers, unsigned int axes) : values(numbers), dimension(axes) {}

    /// Numbers that n boxes take.
    static std::size_t GetSize(unsigned int n, unsigned int axes) { return (std::size_t{n} + n % 2) * 2 * axes; }

    unsigned int GetDimension() const { return dimension; }
    double Low(unsigned int axis, unsigned int i) const { return *At(axis, i); }
    double High(unsigned int axis, unsigned int i) const { return At(axis, i)[2]; }
    FlatBox Get(unsigned int i) const {
        FlatBox box(dimension);
        for (unsigned int axis = 0; axis < dimension; ++axis) box.Set(axis, Low(axis, i), High(axis, i));
        return box;
    }
    /// The boxes from number `first`, which is even, on.
    BoxPairs From(unsigned int first) const { return {At(0, first), dimension}; }
    BoxBounds GetBounds(unsigned int i) const { return {At(0, i), 2, dimension}; }
    void Set(unsigned int i, const FlatBox& box) const {
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            At(axis, i)[0] = box.Low(axis);
            At(axis, i)[2] = box.High(axis);
        }
    }
    /// From lower and upper bounds, axis by axis.
    void Set(unsigned int i, const double* bounds) const {
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            At(axis, i)[0] = bounds[2 * axis];
            At(axis, i)[2] = bounds[2 * axis + 1];
        }
    }
    /// Box i becomes box j of `other`.
    void Copy(unsigned int i, const BoxPairs& other, unsigned int j) const {
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            At(axis, i)[0] = other.Low(axis, j);
            At(axis, i)[2] = other.High(axis, j);
        }
    }
    /// Takes box i out of n: later ones move up.
    void Erase(unsigned int i, unsigned int n) const {
        for (; i + 1 < n; ++i) Copy(i, *this, i + 1);
    }
    /// The lower (upper) bounds of the boxes 2 pair and 2 pair + 1.
    Lanes Lows(unsigned int axis, unsigned int pair) const { return Lanes::Load(At(axis, 2 * pair)); }
    Lanes Highs(unsigned int axis, unsigned int pair) const { return Lanes::Load(At(axis, 2 * pair) + 2); }

    /// Cover of the first n boxes.
    FlatBox Cover(unsigned int n) const {
        FlatBox cover(dimension);
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            Lanes low = Lanes::Repeat(cover.Low(axis));
            Lanes high = Lanes::Repeat(cover.High(axis));
            for (unsigned int pair = 0; pair < n / 2; ++pair) {
                const Lanes lows = Lows(axis, pair);
                const Lanes highs = Highs(axis, pair);
                low = Min(low, Min(lows, highs));
                high = Max(high, Max(lows, highs));
            }
            double bounds[4];
            Store(low, bounds);
            Store(high, bounds + 2);
            cover.Set(axis, (std::min)(bounds[0], bounds[1]), (std::max)(bounds[2], bounds[3]));
        }
        if (n % 2 != 0) cover.Cover(Get(n - 1));
        return cover;
    }

    /// Squared distances of the first n boxes (and one more, when n is odd) from a box without NaN; each is at most
    /// that of any box that box i covers, in the same arithmetic.
    void SquaredDistances(const FlatBox& from, unsigned int n, double* distances) const {
        const double* pair = values;
        const auto squaredGap = [&pair](Lanes low, Lanes high, unsigned int axis) {
            return SquaredGap(Lanes::Load(pair + 4 * axis), Lanes::Load(pair + 4 * axis + 2), low, high);
        };
        if (dimension == 2) {
            const Lanes lowX = Lanes::Repeat(from.Low(0));
            const Lanes lowY = Lanes::Repeat(from.Low(1));
            const Lanes highX = Lanes::Repeat(from.High(0));
            const Lanes highY = Lanes::Repeat(from.High(1));
            for (unsigned int i = 0; i < n; i += 2, pair += 8) {
                Store(squaredGap(lowX, highX, 0) + squaredGap(lowY, highY, 1), distances + i);
            }
            return;
        }
        for (unsigned int i = 0; i < n; i += 2, pair += std::size_t{4} * dimension) {
            Lanes sum = Lanes::Repeat(0.0);
            for (unsigned int axis = 0; axis < dimension; ++axis) {
                sum = sum + squaredGap(Lanes::Repeat(from.Low(axis)), Lanes::Repeat(from.High(axis)), axis);
            }
            Store(sum, distances + i);
        }
    }

    /// That of box i.
    double SquaredDistance(const FlatBox& from, unsigned int i) const {
        double both[2];
        From(i - i % 2).SquaredDistances(from, 2, both);
        return both[i % 2];
    }

    /// Bit i: box first + i answers the query, for the n boxes from `first`, which is even; n is at most 64.
    template <class Query>
    std::uint64_t Match(const Query& query, unsigned int first, unsigned int n) const {
        std::uint64_t boxes = 0;
        const double* pair = At(0, first);
        if (dimension == 2) {
            const auto x = query.Axis(0);
            const auto y = query.Axis(1);
            for (unsigned int i = 0; i < n; i += 2, pair += 8) {
                const LaneMask mask =
                    x(Lanes::Load(pair), Lanes::Load(pair + 2)) & y(Lanes::Load(pair + 4), Lanes::Load(pair + 6));
                boxes |= std::uint64_t{mask.Bits()} << i;
            }
        } else {
            for (unsigned int i = 0; i < n; i += 2) {
                unsigned int bits = 3;
                for (unsigned int axis = 0; axis < dimension; ++axis, pair += 4) {
                    bits &= query.Axis(axis)(Lanes::Load(pair), Lanes::Load(pair + 2)).Bits();
                }
                boxes |= std::uint64_t{bits} << i;
            }
        }
        return n < 64 ? boxes & ((std::uint64_t{1} << n) - 1) : boxes;
    }

    /// Calls `found(i)` for each of the first n boxes that answers the query, in order.
    template <class Query, class Found>
    void ForEachMatch(const Query& query, unsigned int n, Found&& found) const {
        for (unsigned int first = 0; first < n; first += 64) {
            std::uint64_t boxes = Match(query, first, (std::min)(n - first, 64U));
            for (; boxes != 0; boxes &= boxes - 1) {
                found(first + static_cast<unsigned int>(std::countr_zero(boxes)));
            }
        }
    }

private:
    double* At(unsigned int axis, unsigned int i) const {
        return values + std::size_t{4} * dimension * (i / 2) + std::size_t{4} * axis + i % 2;
    }

    double* values;
    unsigned int dimension;
};

}  // namespace Kalvio::Math::SpatialIndexes::detail
