#pragma once

#include "kalvio/meshes/detail/Triangles.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace Kalvio::Math::detail {

/// Places that are pairwise farther apart than a tolerance, in a hash of cells.
///
/// A cell is 8 to 16 tolerances wide, so that the neighbourhood of most points lies in one cell. Once the points have
/// had to be compared with more than a few places each, because the places are hardly farther apart than the tolerance,
/// cells become 1 to 2 tolerances wide: the neighbourhood touches up to three per axis, which hold a few places at
/// most. Cells overlap nothing and miss nothing, whatever the size of the coordinates: rounding is monotone, and where
/// doubles are farther apart than cells are wide each is a cell of its own. About 40 bytes and 8 to 16 bytes of buckets
/// per place.
template <std::size_t dimension>
class PlaceTable {
public:
    struct Place {
        std::array<double, dimension> at;
        std::uint32_t next;       // in the same bucket
        std::uint64_t owner = 0;  // the user's
    };

    /// @param reach  the tolerance, not negative
    explicit PlaceTable(double reach) : tolerance(reach) {
        squareBound = tolerance * tolerance * (1.0 + 1e-12) + 1e-300;
        SetCells(8.0);
        Resize(64);
    }

    /// The place added first of those at most the tolerance away (as the distance of points computes it), or a new one
    /// at the point. A point that is not finite is a place that nothing is near to.
    template <class PointType>
    Place& FindOrAdd(const PointType& point) {
        std::array<double, dimension> at;
        bool isFinite = true;
        for (std::size_t axis = 0; axis < dimension; ++axis) {
            at[axis] = point[static_cast<int>(axis)];
            isFinite = isFinite && std::isfinite(at[axis]);
        }
        if (!isNarrow && compared > fewPlaces * (asked + 8)) {
            isNarrow = true;
            SetCells(1.0);
            Resize(buckets.size());
        }
        ++asked;
        const std::uint32_t found = isFinite ? Find(at) : none;
        if (found != none) return places[found];
        if (2 * places.size() >= buckets.size()) Resize(2 * buckets.size());
        places.push_back({at, none});
        if (isFinite) Link(static_cast<std::uint32_t>(places.size() - 1));
        return places.back();
    }

private:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
    static constexpr double largestReach = 1e160;  // greater distances overflow and are no distances
    static constexpr double smallestCell = 1e-18;
    static constexpr std::uint64_t fewPlaces = 8;  // compared with a point in wide cells, on average

    using Keys = std::array<std::uint64_t, dimension>;

    // Cells more than `least` and up to twice as many tolerances wide.
    void SetCells(double least) {
        const double bounded = std::min(tolerance, largestReach);
        const double cell = std::ldexp(1.0, std::ilogb(std::max(least * bounded, smallestCell)) + 1);
        perCell = 1.0 / cell;
        const double shift = 0.382 * cell;  // round coordinates shall not lie on the sides of cells
        const double widened = bounded * (1.0 + 1e-12) + 1e-15 * cell;
        middle = shift;
        low = shift - widened;
        high = shift + widened;
    }

    // Consecutive from one cell to the next, but for cells of one double each.
    std::uint64_t KeyOf(double coordinate, double offset) const {
        const double scaled = (coordinate + offset) * perCell;
        if (std::abs(scaled) < 0x1p62) return static_cast<std::uint64_t>(static_cast<std::int64_t>(scaled));
        return std::bit_cast<std::uint64_t>(coordinate);
    }

    // Odd multipliers with their bits well mixed (2^64 / golden ratio and relatives; D. E. Knuth, 1973).
    std::size_t BucketOf(const Keys& keys) const {
        constexpr std::uint64_t multipliers[] = {0x9E3779B97F4A7C15U, 0xC2B2AE3D27D4EB4FU, 0xD6E8FEB86659FD93U};
        std::uint64_t sum = 0;
        for (std::size_t axis = 0; axis < dimension; ++axis) {
            sum += (keys[axis] ^ (keys[axis] >> 32)) * multipliers[axis];
        }
        return static_cast<std::size_t>(((sum ^ (sum >> 32)) * multipliers[0]) >> bucketShift);
    }

    std::uint32_t Find(const std::array<double, dimension>& at) {
        Keys lower, upper;
        for (std::size_t axis = 0; axis < dimension; ++axis) {
            lower[axis] = KeyOf(at[axis], low);
            upper[axis] = KeyOf(at[axis], high);
        }
        std::uint32_t first = none;
        for (Keys keys = lower;;) {
            first = SearchBucket(BucketOf(keys), at, first);
            std::size_t axis = 0;
            for (; axis < dimension && keys[axis] == upper[axis]; ++axis) keys[axis] = lower[axis];
            if (axis == dimension) return first;
            ++keys[axis];
        }
    }

    std::uint32_t SearchBucket(std::size_t bucket, const std::array<double, dimension>& at, std::uint32_t first) {
        for (std::uint32_t i = buckets[bucket]; i != none; i = places[i].next, ++compared) {
            double sum = 0.0;
            for (std::size_t axis = 0; axis < dimension; ++axis) {
                const double difference = at[axis] - places[i].at[axis];
                sum += difference * difference;
            }
            if (sum <= squareBound && i < first && std::sqrt(sum) <= tolerance) first = i;
        }
        return first;
    }

    void Link(std::uint32_t i) {
        Keys keys;
        for (std::size_t axis = 0; axis < dimension; ++axis) keys[axis] = KeyOf(places[i].at[axis], middle);
        std::uint32_t& head = buckets[BucketOf(keys)];
        places[i].next = head;
        head = i;
    }

    void Resize(std::size_t count) {
        buckets.assign(count, none);
        bucketShift = 64 - std::countr_zero(count);
        for (std::uint32_t i = 0; i < places.size(); ++i) {
            const auto& at = places[i].at;
            if (std::all_of(at.begin(), at.end(), [](double value) { return std::isfinite(value); })) Link(i);
        }
    }

    double tolerance;
    double squareBound;  // of distances that may round to the tolerance
    double perCell;
    double low, middle, high;  // what is added to a coordinate before it is scaled
    bool isNarrow = false;
    std::uint64_t asked = 0;     // points
    std::uint64_t compared = 0;  // places with points
    int bucketShift = 0;
    std::vector<Place> places;
    std::vector<std::uint32_t> buckets;
};

/// The tolerances that `VertexMerger` takes.
inline bool CanMerge(double tolerance) { return tolerance >= 0.0 && std::isfinite(tolerance); }

/// Merges the vertices of one set after another: each index in turn names the first vertex named so far within the
/// tolerance of its own. A vertex that met one of an earlier set is moved onto it.
template <std::size_t dimension>
class VertexMerger {
public:
    explicit VertexMerger(double tolerance) : places(tolerance) {}

    /// Drops triangles that name a vertex twice, then vertices that no index names. Without a whole triangle nothing
    /// is merged or dropped.
    /// @return whether an index or a vertex was dropped or a vertex was moved
    template <class PointType>
    bool Merge(std::vector<PointType>& vertices, std::vector<unsigned int>& indexes) {
        if (indexes.size() < 3) return false;
        const bool hasMoved = MergeIndexes(vertices, indexes);
        const bool hasLines = RemoveTriangles(indexes, vertices.size(), [](const unsigned int* corners, std::size_t) {
            return NamesVertexTwice(corners);
        });
        const bool hasUnused = RemoveUnused(vertices, indexes) > 0;
        return hasMoved || hasLines || hasUnused;
    }

private:
    template <class PointType>
    bool MergeIndexes(std::vector<PointType>& vertices, std::vector<unsigned int>& indexes) {
        bool hasMoved = false;
        std::vector<unsigned int> merged(vertices.size(), noVertex);
        for (unsigned int& index : indexes) {
            if (index >= vertices.size()) continue;
            unsigned int& target = merged[index];
            if (target == noVertex) target = Target(vertices, index, hasMoved);
            index = target;
        }
        firstOwner += vertices.size();
        return hasMoved;
    }

    template <class PointType>
    unsigned int Target(std::vector<PointType>& vertices, unsigned int index, bool& hasMoved) {
        auto& place = places.FindOrAdd(vertices[index]);
        if (place.owner >= firstOwner) return static_cast<unsigned int>(place.owner - firstOwner);
        const bool isNew = place.owner == 0;
        place.owner = firstOwner + index;
        for (std::size_t axis = 0; axis < dimension && !isNew; ++axis) {
            double& coordinate = vertices[index][static_cast<int>(axis)];
            hasMoved = hasMoved || coordinate != place.at[axis];
            coordinate = place.at[axis];
        }
        return index;
    }

    PlaceTable<dimension> places;
    std::uint64_t firstOwner = 1;  // vertex i of the set at work owns places as firstOwner + i
};

}  // namespace Kalvio::Math::detail
