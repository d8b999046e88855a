#pragma once

#include "kalvio/core/Point2D.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// Extent in plan that starts empty; coordinates that are not numbers are left out of it.
struct Extent {
    double minX = std::numeric_limits<double>::infinity();
    double minY = std::numeric_limits<double>::infinity();
    double maxX = -std::numeric_limits<double>::infinity();
    double maxY = -std::numeric_limits<double>::infinity();

    void Add(const Point2D& p) {
        minX = p.GetX() < minX ? p.GetX() : minX;
        minY = p.GetY() < minY ? p.GetY() : minY;
        maxX = p.GetX() > maxX ? p.GetX() : maxX;
        maxY = p.GetY() > maxY ? p.GetY() : maxY;
    }
    void Add(const Extent& other) {
        minX = (std::min)(minX, other.minX);
        minY = (std::min)(minY, other.minY);
        maxX = (std::max)(maxX, other.maxX);
        maxY = (std::max)(maxY, other.maxY);
    }
    /// Wider by `distance` on every side.
    Extent Widened(double distance) const {
        Extent wider;
        wider.minX = minX - distance;
        wider.minY = minY - distance;
        wider.maxX = maxX + distance;
        wider.maxY = maxY + distance;
        return wider;
    }
    /// 0 inside; infinite for an empty extent.
    double SquaredDistance(const Point2D& p) const {
        const double dx = (std::max)({minX - p.GetX(), p.GetX() - maxX, 0.0});
        const double dy = (std::max)({minY - p.GetY(), p.GetY() - maxY, 0.0});
        return dx * dx + dy * dy;
    }
    /// Inclusive; false for an empty extent.
    bool Meets(const Extent& other) const {
        return minX <= other.maxX && other.minX <= maxX && minY <= other.maxY && other.minY <= maxY;
    }
};

/// Boxes over runs of consecutive items, and over runs of those: finds the items that come near each other without
/// trying all pairs, where neighbours in the order lie near each other. Building is linear; a search costs about n log
/// n plus what it finds.
///
/// Items tell `GetCount()`, the `GetExtent(i)` of an item and the `GetExtent(from, to)` of items from <= i < to.
/// Visitors are called in no particular order unless told, and as bool(...): true ends the search. Items with
/// coordinates that are not numbers may be visited or not.
template <class Items>
class BoxHierarchy : public Items {
public:
    /// Takes what the items are made from.
    template <class First, class... Rest>
    requires(!std::is_same_v<std::remove_cvref_t<First>, BoxHierarchy>) explicit BoxHierarchy(First&& first,
                                                                                              Rest&&... rest)
        : Items(std::forward<First>(first), std::forward<Rest>(rest)...), count(this->GetCount()) {
        std::vector<Extent>& leaves = levels.emplace_back();
        leaves.reserve((count + leafSize - 1) / leafSize);
        for (std::size_t from = 0; from < count; from += leafSize) {
            leaves.push_back(this->GetExtent(from, (std::min)(count, from + leafSize)));
        }
        while (levels.back().size() > 1) {
            const std::vector<Extent>& below = levels.back();
            std::vector<Extent> above((below.size() + fanOut - 1) / fanOut);
            for (std::size_t i = 0; i < below.size(); ++i) above[i / fanOut].Add(below[i]);
            levels.push_back(std::move(above));
        }
    }

    /// Calls visit(i, j), i < j, for the pairs of items whose boxes come within `tolerance` of each other in x and
    /// in y, inclusive.
    /// @return whether a visit returned true
    template <class Visit>
    bool ForEachPair(double tolerance, Visit&& visit) const {
        return count > 0 && VisitWithin({levels.size() - 1, 0}, tolerance, visit);
    }

    /// The same for pairs of an item i of this and an item j of the other.
    template <class Visit>
    bool ForEachPair(const BoxHierarchy& other, double tolerance, Visit&& visit) const {
        if (count == 0 || other.count == 0) return false;
        return VisitBetween({levels.size() - 1, 0}, other, {other.levels.size() - 1, 0}, tolerance, visit);
    }

    /// Calls visit(i) for the items whose boxes come within `tolerance` of the extent, in ascending order.
    template <class Visit>
    bool ForEachNear(const Extent& extent, double tolerance, Visit&& visit) const {
        return count > 0 && VisitNear({levels.size() - 1, 0}, extent.Widened(tolerance), visit);
    }

    /// Calls visit(i) for the items whose boxes are not further from p, which is finite, than the reach, those of near
    /// boxes first. The visitor may lower the reach as it goes; what it returns does not matter.
    template <class Visit>
    void ForEachNearest(const Point2D& p, const double& squaredReach, Visit&& visit) const {
        if (count > 0) VisitNearest({levels.size() - 1, 0}, p, squaredReach, visit);
    }

private:
    static constexpr std::size_t leafSize = 6;
    static constexpr std::size_t fanOut = 4;

    struct Node {
        std::size_t level;  // 0: a run of items
        std::size_t index;
    };
    struct Range {
        std::size_t from;
        std::size_t to;
    };

    const Extent& ExtentOf(const Node& node) const { return levels[node.level][node.index]; }
    Range ItemsOf(const Node& leaf) const {
        return {leaf.index * leafSize, (std::min)(count, (leaf.index + 1) * leafSize)};
    }
    Range Children(const Node& node) const {
        return {node.index * fanOut, (std::min)(levels[node.level - 1].size(), (node.index + 1) * fanOut)};
    }

    // The items of one run whose boxes meet an extent, with their boxes.
    struct NearItems {
        NearItems(const BoxHierarchy& of, const Node& leaf, const Extent& extent) {
            const auto [from, to] = of.ItemsOf(leaf);
            for (std::size_t i = from; i < to; ++i) {
                extents[size] = of.GetExtent(i);
                items[size] = i;
                size += extents[size].Meets(extent) ? 1 : 0;
            }
        }

        /// Calls visit(item, j) for those of the items from index `first` on whose boxes meet the item's.
        template <class Visitor>
        bool Visit(std::size_t item, const Extent& extent, std::size_t first, double tolerance, Visitor& visit) const {
            const Extent widened = extent.Widened(tolerance);
            for (std::size_t k = first; k < size; ++k) {
                if (widened.Meets(extents[k]) && visit(item, items[k])) return true;
            }
            return false;
        }

        Extent extents[leafSize];
        std::size_t items[leafSize];
        std::size_t size = 0;
    };

    // All pairs inside one node.
    template <class Visit>
    bool VisitWithin(const Node& node, double tolerance, Visit& visit) const {
        if (node.level == 0) {
            const NearItems run(*this, node, ExtentOf(node));
            for (std::size_t i = 0; i < run.size; ++i) {
                if (run.Visit(run.items[i], run.extents[i], i + 1, tolerance, visit)) return true;
            }
            return false;
        }
        const auto [from, to] = Children(node);
        for (std::size_t i = from; i < to; ++i) {
            if (VisitWithin({node.level - 1, i}, tolerance, visit)) return true;
            for (std::size_t j = i + 1; j < to; ++j) {
                if (VisitBetween({node.level - 1, i}, *this, {node.level - 1, j}, tolerance, visit)) return true;
            }
        }
        return false;
    }

    // All pairs of a node of this and a node of the other; the higher one is opened first.
    template <class Visit>
    bool VisitBetween(const Node& node, const BoxHierarchy& other, const Node& otherNode, double tolerance,
                      Visit& visit) const {
        const Extent extent = ExtentOf(node).Widened(tolerance);
        if (!extent.Meets(other.ExtentOf(otherNode))) return false;
        if (node.level == 0 && otherNode.level == 0) {
            const NearItems run(*this, node, other.ExtentOf(otherNode).Widened(tolerance));
            if (run.size == 0) return false;
            const NearItems otherRun(other, otherNode, extent);
            for (std::size_t i = 0; i < run.size; ++i) {
                if (otherRun.Visit(run.items[i], run.extents[i], 0, tolerance, visit)) return true;
            }
            return false;
        }
        if (node.level >= otherNode.level) {
            const auto [from, to] = Children(node);
            for (std::size_t i = from; i < to; ++i) {
                if (VisitBetween({node.level - 1, i}, other, otherNode, tolerance, visit)) return true;
            }
            return false;
        }
        const auto [from, to] = other.Children(otherNode);
        for (std::size_t j = from; j < to; ++j) {
            if (VisitBetween(node, other, {otherNode.level - 1, j}, tolerance, visit)) return true;
        }
        return false;
    }

    template <class Visit>
    bool VisitNear(const Node& node, const Extent& extent, Visit& visit) const {
        if (!extent.Meets(ExtentOf(node))) return false;
        const auto [from, to] = node.level == 0 ? ItemsOf(node) : Children(node);
        for (std::size_t i = from; i < to; ++i) {
            if (node.level > 0 ? VisitNear({node.level - 1, i}, extent, visit)
                               : extent.Meets(this->GetExtent(i)) && visit(i)) {
                return true;
            }
        }
        return false;
    }

    template <class Visit>
    void VisitNearest(const Node& node, const Point2D& p, const double& squaredReach, Visit& visit) const {
        if (node.level == 0) {
            const auto [from, to] = ItemsOf(node);
            for (std::size_t i = from; i < to; ++i) {
                if (!(this->GetExtent(i).SquaredDistance(p) > squaredReach)) visit(i);
            }
            return;
        }
        std::pair<double, std::size_t> nearestFirst[fanOut];
        std::size_t size = 0;
        const auto [from, to] = Children(node);
        for (std::size_t i = from; i < to; ++i) {
            nearestFirst[size++] = {levels[node.level - 1][i].SquaredDistance(p), i};
        }
        std::sort(nearestFirst, nearestFirst + size);
        for (std::size_t k = 0; k < size && !(nearestFirst[k].first > squaredReach); ++k) {
            VisitNearest({node.level - 1, nearestFirst[k].second}, p, squaredReach, visit);
        }
    }

    std::size_t count;
    std::vector<std::vector<Extent>> levels;  // from the runs of items up to one box over all
};

/// Items that are no more than their extents.
struct ExtentItems {
    explicit ExtentItems(std::vector<Extent> all) : extents(std::move(all)) {}

    std::size_t GetCount() const { return extents.size(); }
    const Extent& GetExtent(std::size_t item) const { return extents[item]; }
    Extent GetExtent(std::size_t from, std::size_t to) const {
        Extent extent;
        for (std::size_t i = from; i < to; ++i) extent.Add(extents[i]);
        return extent;
    }

    std::vector<Extent> extents;
};

using ExtentBoxes = BoxHierarchy<ExtentItems>;

}  // namespace Kalvio::Math::detail
