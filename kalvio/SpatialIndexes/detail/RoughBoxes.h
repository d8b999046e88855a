#pragma once

#include "kalvio/SpatialIndexes/detail/BoxPairs.h"
#include "kalvio/SpatialIndexes/detail/FlatBox.h"
#include "kalvio/SpatialIndexes/detail/Lanes.h"
#include "kalvio/SpatialIndexes/detail/Queries.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace Kalvio::Math::SpatialIndexes::detail {

/// The greatest number of single precision that is at most a number; NaN stays.
inline float RoundedDown(double number) {
    constexpr float largest = (std::numeric_limits<float>::max)();
    constexpr float infinity = std::numeric_limits<float>::infinity();
    if (number > largest) return number > (std::numeric_limits<double>::max)() ? infinity : largest;
    if (number < -largest) return -infinity;
    const auto nearest = static_cast<float>(number);
    const bool isAbove = static_cast<double>(nearest) > number;
    if (nearest == 0.0F) return isAbove ? -std::numeric_limits<float>::denorm_min() : nearest;
    // Without a branch, which half of all numbers would take: one step down, away from zero below it.
    const auto bits = std::bit_cast<std::uint32_t>(nearest);
    const std::uint32_t step = isAbove ? 1 : 0;
    return std::bit_cast<float>(bits - step + 2 * (step & (bits >> 31)));
}
/// The least that is at least a number.
inline float RoundedUp(double number) { return -RoundedDown(-number); }

/// A window as boxes rounded outward are held against it.
///
/// `May...` is false only where the box cannot answer the question, `Does...` is true only where it must. What may but
/// need not lies within a rounding of the border: there the exact box decides.
class RoughWindow {
public:
    explicit RoughWindow(const FlatBox& window) {
        if (window.GetDimension() > local.size()) more.resize(window.GetDimension());
        Axis* const axes = more.empty() ? local.data() : more.data();
        for (unsigned int i = 0; i < window.GetDimension(); ++i) {
            axes[i] = {RoundedDown(window.Low(i)), RoundedUp(window.Low(i)), RoundedDown(window.High(i)),
                       RoundedUp(window.High(i))};
        }
    }

    struct Axis {
        float lowDown;
        float lowUp;
        float highDown;
        float highUp;
    };
    const Axis& GetAxis(unsigned int i) const { return more.empty() ? local[i] : more[i]; }

    // Rounding keeps order: a bound that is at most another still is when both are rounded alike; and a number is less
    // than the next above its rounding down.
    struct MayOverlap {
        FourLanes low;
        FourLanes high;
        explicit MayOverlap(const Axis& a) : low(FourLanes::Repeat(a.lowUp)), high(FourLanes::Repeat(a.highDown)) {}
        FourMask operator()(FourLanes boxLow, FourLanes boxHigh) const { return (boxLow <= high) & (low <= boxHigh); }
    };
    struct DoesOverlap {
        FourLanes low;
        FourLanes high;
        explicit DoesOverlap(const Axis& a) : low(FourLanes::Repeat(a.lowUp)), high(FourLanes::Repeat(a.highDown)) {}
        FourMask operator()(FourLanes boxLow, FourLanes boxHigh) const { return (boxLow < high) & (low < boxHigh); }
    };
    struct MayBeInside {
        FourLanes low;
        FourLanes high;
        explicit MayBeInside(const Axis& a) : low(FourLanes::Repeat(a.lowDown)), high(FourLanes::Repeat(a.highUp)) {}
        FourMask operator()(FourLanes boxLow, FourLanes boxHigh) const { return (low <= boxLow) & (boxHigh <= high); }
    };
    struct IsInside {
        FourLanes low;
        FourLanes high;
        explicit IsInside(const Axis& a) : low(FourLanes::Repeat(a.lowUp)), high(FourLanes::Repeat(a.highDown)) {}
        FourMask operator()(FourLanes boxLow, FourLanes boxHigh) const { return (low <= boxLow) & (boxHigh <= high); }
    };

private:
    std::array<Axis, 3> local{};
    std::vector<Axis> more;  // when there are more axes
};

/// How a query is asked of boxes rounded outward.
template <class Query>
struct RoughTests;
template <>
struct RoughTests<OverlapQuery> {
    using May = RoughWindow::MayOverlap;
    using Does = RoughWindow::DoesOverlap;
    static RoughWindow WindowOf(const OverlapQuery& query) { return RoughWindow(query.window); }
};
template <>
struct RoughTests<InsideQuery> {
    using May = RoughWindow::MayBeInside;
    using Does = RoughWindow::IsInside;
};
template <>
struct RoughTests<PointQuery> {
    using May = RoughWindow::MayOverlap;
    using Does = void;  // the exact boxes always decide
    /// Widened beyond what the tolerance and its rounding reach.
    static RoughWindow WindowOf(const PointQuery& query) {
        FlatBox window = query.point;
        for (unsigned int axis = 0; axis < window.GetDimension(); ++axis) {
            const double place = window.Low(axis);
            if (!std::isfinite(place)) continue;
            const double reach = pointSearchTolerance + 1e-15 * (pointSearchTolerance + std::abs(place));
            window.Set(axis, place - reach, place + reach);
        }
        return RoughWindow(window);
    }
};

/// View of boxes rounded outward to single precision, four by four: the lower x of all four, their upper x, lower y,
/// ... Four boxes in plan are one cache line.
class RoughBoxes {
public:
    RoughBoxes(float* numbers, unsigned int axes) : values(numbers), dimension(axes) {}

    /// Numbers that n boxes take.
    static std::size_t GetSize(unsigned int n, unsigned int axes) { return (std::size_t{n} + 3) / 4 * 8 * axes; }

    void Set(unsigned int i, const BoxPairs& boxes) const {
        float* four = values + std::size_t{8} * dimension * (i / 4) + i % 4;
        for (unsigned int axis = 0; axis < dimension; ++axis, four += 8) {
            four[0] = RoundedDown(boxes.Low(axis, i));
            four[4] = RoundedUp(boxes.High(axis, i));
        }
    }

    /// Bit i: box i passes the test; for the first n boxes, at most 64.
    template <class Test>
    std::uint64_t Match(const RoughWindow& window, unsigned int n) const {
        std::uint64_t bits = 0;
        const float* four = values;
        if (dimension == 2) {
            const Test x(window.GetAxis(0));
            const Test y(window.GetAxis(1));
            for (unsigned int i = 0; i < n; i += 4, four += 16) {
                const FourMask mask = x(FourLanes::Load(four), FourLanes::Load(four + 4)) &
                                      y(FourLanes::Load(four + 8), FourLanes::Load(four + 12));
                bits |= std::uint64_t{mask.Bits()} << i;
            }
        } else {
            for (unsigned int i = 0; i < n; i += 4) {
                unsigned int mask = 15;
                for (unsigned int axis = 0; axis < dimension; ++axis, four += 8) {
                    mask &= Test(window.GetAxis(axis))(FourLanes::Load(four), FourLanes::Load(four + 4)).Bits();
                }
                bits |= std::uint64_t{mask} << i;
            }
        }
        return n < 64 ? bits & ((std::uint64_t{1} << n) - 1) : bits;
    }

    /// Squared distances of the first n boxes, and of up to three more, from a box without NaN. None is greater than
    /// that of the exact box by `BoxPairs::SquaredDistances`.
    void SquaredDistances(const FlatBox& from, unsigned int n, double* distances) const {
        const float* four = values;
        const auto squaredGap = [&four](Lanes low, Lanes high, unsigned int at) {
            return SquaredGap(Lanes::Load(four + at), Lanes::Load(four + at + 4), low, high);
        };
        if (dimension == 2) {
            const Lanes lowX = Lanes::Repeat(from.Low(0));
            const Lanes lowY = Lanes::Repeat(from.Low(1));
            const Lanes highX = Lanes::Repeat(from.High(0));
            const Lanes highY = Lanes::Repeat(from.High(1));
            for (unsigned int i = 0; i < n; i += 4, four += 16) {
                Store(squaredGap(lowX, highX, 0) + squaredGap(lowY, highY, 8), distances + i);
                Store(squaredGap(lowX, highX, 2) + squaredGap(lowY, highY, 10), distances + i + 2);
            }
            return;
        }
        for (unsigned int i = 0; i < n; i += 4) {
            Lanes first = Lanes::Repeat(0.0);
            Lanes second = first;
            for (unsigned int axis = 0; axis < dimension; ++axis, four += 8) {
                const Lanes low = Lanes::Repeat(from.Low(axis));
                const Lanes high = Lanes::Repeat(from.High(axis));
                first = first + squaredGap(low, high, 0);
                second = second + squaredGap(low, high, 2);
            }
            Store(first, distances + i);
            Store(second, distances + i + 2);
        }
    }

private:
    float* values;
    unsigned int dimension;
};

}  // namespace Kalvio::Math::SpatialIndexes::detail
