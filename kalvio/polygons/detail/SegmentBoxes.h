#pragma once

#include "kalvio/core/Point2D.h"

#include <algorithm>
#include <cstddef>
#include <limits>
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
        minX = std::min(minX, other.minX);
        minY = std::min(minY, other.minY);
        maxX = std::max(maxX, other.maxX);
        maxY = std::max(maxY, other.maxY);
    }
    /// Inclusive; false for an empty extent.
    bool Meets(const Extent& other) const {
        return minX <= other.maxX && other.minX <= maxX && minY <= other.maxY && other.minY <= maxY;
    }
};

/// Boxes over runs of consecutive segments of a chain, and over runs of those: finds the segments that come near each
/// other without trying all pairs. Building is linear; a search costs about n log n plus what it finds.
///
/// Segment i joins point i to point i + 1; a ring has one more, from the last point to the first. The points must stay
/// as they are while this object is used. Visitors are called in no particular order, and as bool(...): true ends the
/// search. Segments with coordinates that are not numbers may be visited or not.
class SegmentBoxes {
public:
    enum class Closing : bool { Chain, Ring };

    explicit SegmentBoxes(const std::vector<Point2D>& chain, Closing closing = Closing::Chain)
        : points(chain.data()),
          last(chain.empty() ? 0 : chain.size() - 1),
          count(chain.size() < 2 ? 0 : last + (closing == Closing::Ring ? 1 : 0)) {
        std::vector<Extent>& leaves = levels.emplace_back((count + leafSize - 1) / leafSize);
        for (std::size_t leaf = 0; leaf < leaves.size(); ++leaf) {
            const auto [from, to] = Segments({0, leaf});
            for (std::size_t i = from; i < to; ++i) leaves[leaf].Add(GetStart(i));
            leaves[leaf].Add(GetEnd(to - 1));
        }
        while (levels.back().size() > 1) {
            const std::vector<Extent>& below = levels.back();
            std::vector<Extent> above((below.size() + fanOut - 1) / fanOut);
            for (std::size_t i = 0; i < below.size(); ++i) above[i / fanOut].Add(below[i]);
            levels.push_back(std::move(above));
        }
    }

    std::size_t GetCount() const { return count; }
    const Point2D& GetStart(std::size_t segment) const { return points[segment]; }
    const Point2D& GetEnd(std::size_t segment) const { return points[segment == last ? 0 : segment + 1]; }

    /// Calls visit(i, j), i < j, for the pairs of segments whose boxes come within `tolerance` of each other in x and
    /// in y, inclusive. Consecutive segments are such a pair.
    /// @return whether a visit returned true
    template <class Visit>
    bool ForEachPair(double tolerance, Visit&& visit) const {
        return count > 0 && VisitWithin({levels.size() - 1, 0}, tolerance, visit);
    }

    /// The same for pairs of a segment i of this and a segment j of the other chain.
    template <class Visit>
    bool ForEachPair(const SegmentBoxes& other, double tolerance, Visit&& visit) const {
        if (count == 0 || other.count == 0) return false;
        return VisitBetween({levels.size() - 1, 0}, other, {other.levels.size() - 1, 0}, tolerance, visit);
    }

    /// Calls visit(i) for the segments whose boxes come within `tolerance` of the extent.
    template <class Visit>
    bool ForEachNear(const Extent& extent, double tolerance, Visit&& visit) const {
        return count > 0 && VisitNear({levels.size() - 1, 0}, Widened(extent, tolerance), visit);
    }

private:
    static constexpr std::size_t leafSize = 6;
    static constexpr std::size_t fanOut = 4;

    struct Node {
        std::size_t level;  // 0: a run of segments
        std::size_t index;
    };
    struct Range {
        std::size_t from;
        std::size_t to;
    };

    Extent SegmentExtent(std::size_t segment) const {
        Extent extent;
        extent.Add(GetStart(segment));
        extent.Add(GetEnd(segment));
        return extent;
    }
    const Extent& ExtentOf(const Node& node) const { return levels[node.level][node.index]; }
    Range Segments(const Node& leaf) const {
        return {leaf.index * leafSize, std::min(count, (leaf.index + 1) * leafSize)};
    }
    Range Children(const Node& node) const {
        return {node.index * fanOut, std::min(levels[node.level - 1].size(), (node.index + 1) * fanOut)};
    }

    // The segments of one run whose boxes meet an extent, with their boxes.
    struct NearSegments {
        NearSegments(const SegmentBoxes& of, const Node& leaf, const Extent& extent) {
            const auto [from, to] = of.Segments(leaf);
            for (std::size_t i = from; i < to; ++i) {
                extents[size] = of.SegmentExtent(i);
                segments[size] = i;
                size += extents[size].Meets(extent) ? 1 : 0;
            }
        }

        /// Calls visit(segment, j) for those of the segments from index `first` on whose boxes meet the segment's.
        template <class Visitor>
        bool Visit(std::size_t segment, const Extent& extent, std::size_t first, double tolerance,
                   Visitor& visit) const {
            const Extent widened = Widened(extent, tolerance);
            for (std::size_t k = first; k < size; ++k) {
                if (widened.Meets(extents[k]) && visit(segment, segments[k])) return true;
            }
            return false;
        }

        Extent extents[leafSize];
        std::size_t segments[leafSize];
        std::size_t size = 0;
    };

    static Extent Widened(Extent extent, double distance) {
        extent.minX -= distance;
        extent.minY -= distance;
        extent.maxX += distance;
        extent.maxY += distance;
        return extent;
    }

    // All pairs inside one node.
    template <class Visit>
    bool VisitWithin(const Node& node, double tolerance, Visit& visit) const {
        if (node.level == 0) {
            const NearSegments run(*this, node, ExtentOf(node));
            for (std::size_t i = 0; i < run.size; ++i) {
                if (run.Visit(run.segments[i], run.extents[i], i + 1, tolerance, visit)) return true;
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

    // All pairs of a node of this and a node of the other chain; the higher one is opened first.
    template <class Visit>
    bool VisitBetween(const Node& node, const SegmentBoxes& other, const Node& otherNode, double tolerance,
                      Visit& visit) const {
        const Extent extent = Widened(ExtentOf(node), tolerance);
        if (!extent.Meets(other.ExtentOf(otherNode))) return false;
        if (node.level == 0 && otherNode.level == 0) {
            const NearSegments run(*this, node, Widened(other.ExtentOf(otherNode), tolerance));
            if (run.size == 0) return false;
            const NearSegments otherRun(other, otherNode, extent);
            for (std::size_t i = 0; i < run.size; ++i) {
                if (otherRun.Visit(run.segments[i], run.extents[i], 0, tolerance, visit)) return true;
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
        const auto [from, to] = node.level == 0 ? Segments(node) : Children(node);
        for (std::size_t i = from; i < to; ++i) {
            if (node.level > 0 ? VisitNear({node.level - 1, i}, extent, visit)
                               : extent.Meets(SegmentExtent(i)) && visit(i)) {
                return true;
            }
        }
        return false;
    }

    const Point2D* points;
    std::size_t last;                         // index of the last point: its segment leads back to the first
    std::size_t count;                        // of segments
    std::vector<std::vector<Extent>> levels;  // from the runs of segments up to one box over all
};

}  // namespace Kalvio::Math::detail
