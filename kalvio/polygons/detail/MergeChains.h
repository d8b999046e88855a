#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// The ends of chains by plan position: a hash of square cells two tolerances wide, so that everything within the
/// tolerance of a point lies in its cell or a neighbour.
class ChainEnds {
public:
    explicit ChainEnds(double tolerance) : cell(2.0 * tolerance) {}

    void Add(double x, double y, std::size_t chain) { cells[Key(Column(x), Column(y))].push_back(chain); }

    /// The lowest chain for which `fits(chain)` among those that may have an end at (x, y); `none` when there is none.
    /// Chains for which `isTaken(chain)` are forgotten on the way.
    template <class IsTaken, class Fits>
    std::size_t FindLowest(double x, double y, IsTaken&& isTaken, Fits&& fits) {
        std::size_t lowest = none;
        for (std::int64_t column = Column(x) - 1; column <= Column(x) + 1; ++column) {
            for (std::int64_t row = Column(y) - 1; row <= Column(y) + 1; ++row) {
                const auto found = cells.find(Key(column, row));
                if (found == cells.end()) continue;
                std::vector<std::size_t>& candidates = found->second;
                std::erase_if(candidates, isTaken);
                const auto fitting = std::find_if(candidates.begin(), candidates.end(), fits);
                if (fitting != candidates.end()) lowest = std::min(lowest, *fitting);
            }
        }
        return lowest;
    }

    static constexpr std::size_t none = static_cast<std::size_t>(-1);

private:
    // So far out that cells are no wider than the steps of a double, neighbours are the neighbouring doubles.
    std::int64_t Column(double value) const {
        constexpr double exactColumns = 1125899906842624.0;  // 2^50
        const double column = std::floor(value / cell);
        return std::abs(column) < exactColumns ? static_cast<std::int64_t>(column) : std::bit_cast<std::int64_t>(value);
    }
    static std::uint64_t Key(std::int64_t column, std::int64_t row) {
        return static_cast<std::uint64_t>(column) * 0x9E3779B97F4A7C15U ^ static_cast<std::uint64_t>(row);
    }

    double cell;
    std::unordered_map<std::uint64_t, std::vector<std::size_t>> cells;  // colliding cells only add candidates
};

/// Joins chains (line strings) whose ends meet, in place. The first chain grows at its end, then at its start, each
/// time by the lowest chain that fits; then comes the next chain that is left. The junction point of the growing chain
/// is kept, the other's dropped. Chains that are closed, have fewer than two points or an end that is not finite join
/// nothing.
///
/// @param meet  whether two end points meet; must not hold for points further apart in plan than the tolerance per axis
template <class Chain, class Meet>
void MergeChains(std::vector<Chain>& chains, const Meet& meet, double tolerance) {
    using Points = std::decay_t<decltype(std::as_const(chains.front()).GetPoints())>;
    const auto pointsOf = [&chains](std::size_t i) -> const Points& { return std::as_const(chains[i]).GetPoints(); };
    const auto isFinite = [](const auto& p) { return std::isfinite(p.GetX()) && std::isfinite(p.GetY()); };

    // A chain shorter than the tolerance is a stub, not a ring.
    const auto isClosed = [&meet](const Points& points) {
        return meet(points.front(), points.back()) &&
               std::any_of(points.begin(), points.end(), [&](const auto& p) { return !meet(points.front(), p); });
    };

    if (!(tolerance > 0.0)) return;  // strictly nearer than that is nothing
    std::vector<bool> isOpen(chains.size());
    for (std::size_t i = 0; i < chains.size(); ++i) {
        const Points& points = pointsOf(i);
        isOpen[i] = points.size() > 1 && isFinite(points.front()) && isFinite(points.back()) && !isClosed(points);
    }
    ChainEnds ends(tolerance);
    for (std::size_t i = 0; i < chains.size(); ++i) {
        if (!isOpen[i]) continue;
        ends.Add(pointsOf(i).front().GetX(), pointsOf(i).front().GetY(), i);
        ends.Add(pointsOf(i).back().GetX(), pointsOf(i).back().GetY(), i);
    }

    std::vector<bool> isTaken(chains.size(), false);
    const auto growAtEnd = [&](Points& points) {
        while (!isClosed(points)) {
            const auto last = points.back();
            const std::size_t next = ends.FindLowest(
                last.GetX(), last.GetY(), [&](std::size_t j) { return isTaken[j]; },
                [&](std::size_t j) { return meet(last, pointsOf(j).front()) || meet(last, pointsOf(j).back()); });
            if (next == ChainEnds::none) return;
            isTaken[next] = true;
            const Points& added = pointsOf(next);
            if (meet(last, added.front())) {
                points.insert(points.end(), added.begin() + 1, added.end());
            } else {
                points.insert(points.end(), added.rbegin() + 1, added.rend());
            }
        }
    };
    std::vector<Chain> merged;
    for (std::size_t i = 0; i < chains.size(); ++i) {
        if (isTaken[i]) continue;
        if (!isOpen[i]) {
            merged.push_back(chains[i]);
            continue;
        }
        isTaken[i] = true;
        Points points = pointsOf(i);
        growAtEnd(points);
        std::reverse(points.begin(), points.end());
        growAtEnd(points);
        std::reverse(points.begin(), points.end());
        merged.emplace_back(std::move(points));
    }
    chains = std::move(merged);
}

}  // namespace Kalvio::Math::detail
