#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/Lanes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
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

/// Box in single precision around one in double precision: rounded outward.
struct RoundedBox {
    RoundedBox() = default;
    explicit RoundedBox(const Extent& extent, double originX = 0.0, double originY = 0.0)
        : minX(-AtLeast(originX - extent.minX)),
          minY(-AtLeast(originY - extent.minY)),
          maxX(AtLeast(extent.maxX - originX)),
          maxY(AtLeast(extent.maxY - originY)) {}

    static float AtLeast(double value) {
        constexpr double large = 1e38;
        const double limited = (std::min)((std::max)(value, -large), large);
        const float rounded = static_cast<float>(limited + (std::abs(limited) * 0x1p-23 + 1e-37));
        return value > large ? std::numeric_limits<float>::infinity() : rounded;
    }

    /// At most the exact difference.
    static float Below(float value, float distance) {
        return value - (distance + (std::abs(value) + std::abs(distance)) * 0x1p-21F);
    }
    /// Wider by at least `distance` on every side.
    RoundedBox Widened(float distance) const {
        RoundedBox wider;
        wider.minX = Below(minX, distance);
        wider.minY = Below(minY, distance);
        wider.maxX = -Below(-maxX, distance);
        wider.maxY = -Below(-maxY, distance);
        return wider;
    }

    float minX, minY, maxX, maxY;
};

/// Four boxes in one cache line.
struct alignas(64) RoundedBoxes {
    static constexpr std::size_t size = 4;

    void Set(std::size_t i, const RoundedBox& box) {
        minX[i] = box.minX;
        minY[i] = box.minY;
        maxX[i] = box.maxX;
        maxY[i] = box.maxY;
    }
    RoundedBox Get(std::size_t i) const {
        RoundedBox box;
        box.minX = minX[i];
        box.minY = minY[i];
        box.maxX = maxX[i];
        box.maxY = maxY[i];
        return box;
    }
    /// Wider by at least `distance` on every side.
    RoundedBoxes Widened(float distance) const {
        RoundedBoxes wider;
        for (std::size_t i = 0; i < size; ++i) {
            wider.minX[i] = RoundedBox::Below(minX[i], distance);
            wider.minY[i] = RoundedBox::Below(minY[i], distance);
            wider.maxX[i] = -RoundedBox::Below(-maxX[i], distance);
            wider.maxY[i] = -RoundedBox::Below(-maxY[i], distance);
        }
        return wider;
    }
    /// Bit i tells whether box i meets the other, inclusive.
    unsigned int Meeting(const RoundedBox& box) const {
        const FourMask meets = (FourLanes::Load(minX) <= FourLanes::Repeat(box.maxX)) &
                               (FourLanes::Repeat(box.minX) <= FourLanes::Load(maxX)) &
                               (FourLanes::Load(minY) <= FourLanes::Repeat(box.maxY)) &
                               (FourLanes::Repeat(box.minY) <= FourLanes::Load(maxY));
        return meets.Bits();
    }

    float minX[size], minY[size], maxX[size], maxY[size];
};

/// Boxes over runs of consecutive items, and over runs of those: finds the items that come near each other without
/// trying all pairs, where neighbours in the order lie near each other. Building is linear, a search costs about n log
/// n plus what it finds. The boxes of runs are rounded outward; the extents of the items decide.
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
        const std::size_t runCount = (count + runSize - 1) / runSize;
        std::size_t size = 0;
        for (std::size_t boxes = runCount; boxes > 0; boxes = boxes > 1 ? boxes : 0) {
            starts.push_back(size);
            boxes = (boxes + fanOut - 1) / fanOut;
            size += boxes;
        }
        nodes.resize(size);
        for (std::size_t run = 0; run < runCount; ++run) {
            const Extent extent = ExtentOf(run);
            if (!std::isfinite(extent.minX) || !std::isfinite(extent.minY)) continue;
            originX = extent.minX;
            originY = extent.minY;
            break;
        }
        for (std::size_t run = 0; run < runCount; ++run) {
            nodes[run / fanOut].Set(run % fanOut, RoundedBox(ExtentOf(run), originX, originY));
        }
        for (std::size_t level = 1; level < starts.size(); ++level) {
            const std::size_t boxes = starts[level] - starts[level - 1];
            for (std::size_t i = 0; i < boxes; ++i)
                nodes[starts[level] + i / fanOut].Set(i % fanOut, BoxOf({level - 1, i}));
        }
    }

    /// Calls visit(i, j), i < j, for the pairs of items whose boxes come within `tolerance` of each other in x and
    /// in y, inclusive.
    /// @return whether a visit returned true
    template <class Visit>
    bool ForEachPair(double tolerance, Visit&& visit) const {
        return ForEachPair(
            tolerance, [](std::size_t) { return false; }, visit);
    }

    /// The same without the pairs inside runs, and with the run behind them, of which `isQuiet(run)` tells that they
    /// need no look: run r is the items from r * runSize.
    template <class Quiet, class Visit>
    bool ForEachPair(double tolerance, const Quiet& isQuiet, Visit&& visit) const {
        return count > 0 && VisitWithin({Top(), 0}, Pairing<Quiet>(*this, *this, tolerance, isQuiet), visit);
    }

    /// The same for pairs of an item i of this and an item j of the other.
    template <class Visit>
    bool ForEachPair(const BoxHierarchy& other, double tolerance, Visit&& visit) const {
        if (count == 0 || other.count == 0) return false;
        const Node root{Top(), 0}, otherRoot{other.Top(), 0};
        constexpr auto isQuiet = [](std::size_t) { return false; };
        return VisitBetween(root, BoxOf(root), otherRoot, other.BoxOf(otherRoot),
                            Pairing<decltype(isQuiet)>(*this, other, tolerance, isQuiet), visit);
    }

    /// Calls visit(i) for the items whose boxes come within `tolerance` of the extent, in ascending order.
    template <class Visit>
    bool ForEachNear(const Extent& extent, double tolerance, Visit&& visit) const {
        const Extent widened = extent.Widened(tolerance);
        return count > 0 && VisitNear({Top(), 0}, RoundedBox(widened, originX, originY), widened, visit);
    }

    /// Calls visit(i) for the items whose boxes are not further from p, which is finite, than the reach, those of near
    /// boxes first. The visitor may lower the reach as it goes; what it returns does not matter.
    template <class Visit>
    void ForEachNearest(const Point2D& p, const double& squaredReach, Visit&& visit) const {
        Extent place;
        place.Add(p);
        if (count > 0) VisitNearest({Top(), 0}, p, RoundedBox(place, originX, originY), squaredReach, visit);
    }

    /// Width and height of the box around all items together, or a little more.
    double GetSpread() const {
        if (count == 0) return 0.0;
        const RoundedBox all = BoxOf({Top(), 0});
        return (static_cast<double>(all.maxX) - static_cast<double>(all.minX)) +
               (static_cast<double>(all.maxY) - static_cast<double>(all.minY));
    }

    static constexpr std::size_t runSize = 6;

private:
    static constexpr std::size_t fanOut = RoundedBoxes::size;

    struct Node {
        std::size_t level;  // 0: the boxes of four runs, else of four nodes of the level below
        std::size_t index;
    };
    struct Range {
        std::size_t from;
        std::size_t to;
    };
    // How a search for pairs compares the boxes of two hierarchies, which have an origin each.
    template <class Quiet>
    struct Pairing {
        Pairing(const BoxHierarchy& one, const BoxHierarchy& another, double distance, const Quiet& quiet)
            : other(another),
              isQuiet(quiet),
              tolerance(distance),
              shiftX(one.originX - another.originX),
              shiftY(one.originY - another.originY),
              roundedReach(RoundedBox::AtLeast(distance)),
              reach(distance + 0x1p-50 * (std::abs(shiftX) + std::abs(shiftY) + std::abs(distance))) {}

        // A box of the first, widened, seen from the other; and with -1 the other way round.
        RoundedBox Widened(const RoundedBox& box, double direction = 1.0) const {
            if (shiftX == 0.0 && shiftY == 0.0) return box.Widened(roundedReach);
            Extent extent;
            extent.minX = static_cast<double>(box.minX) + direction * shiftX - reach;
            extent.minY = static_cast<double>(box.minY) + direction * shiftY - reach;
            extent.maxX = static_cast<double>(box.maxX) + direction * shiftX + reach;
            extent.maxY = static_cast<double>(box.maxY) + direction * shiftY + reach;
            return RoundedBox(extent);
        }

        // Whether the runs i < j need no look.
        bool AreQuiet(std::size_t i, std::size_t j) const { return j == i + 1 && isQuiet(i); }

        const BoxHierarchy& other;
        const Quiet& isQuiet;
        double tolerance;
        double shiftX, shiftY;
        float roundedReach;
        double reach;  // the tolerance, and what rounding may take from it
    };

    std::size_t Top() const { return starts.size() - 1; }
    const RoundedBoxes& BoxesOf(const Node& node) const { return nodes[starts[node.level] + node.index]; }
    static Node Child(const Node& node, std::size_t i) { return {node.level - 1, node.index * fanOut + i}; }
    static std::size_t RunOf(const Node& node, std::size_t i) { return node.index * fanOut + i; }
    Range ItemsOf(std::size_t run) const { return {run * runSize, (std::min)(count, (run + 1) * runSize)}; }
    Extent ExtentOf(std::size_t run) const {
        const auto [from, to] = ItemsOf(run);
        return this->GetExtent(from, to);
    }
    // How many of the four boxes there are.
    std::size_t SizeOf(const Node& node) const {
        const std::size_t boxes =
            node.level == 0 ? (count + runSize - 1) / runSize : starts[node.level] - starts[node.level - 1];
        return (std::min)(fanOut, boxes - node.index * fanOut);
    }
    RoundedBox BoxOf(const Node& node) const {
        const RoundedBoxes& boxes = BoxesOf(node);
        RoundedBox box = boxes.Get(0);
        for (std::size_t i = 1; i < SizeOf(node); ++i) {
            box.minX = (std::min)(box.minX, boxes.minX[i]);
            box.minY = (std::min)(box.minY, boxes.minY[i]);
            box.maxX = (std::max)(box.maxX, boxes.maxX[i]);
            box.maxY = (std::max)(box.maxY, boxes.maxY[i]);
        }
        return box;
    }
    // Bit i tells whether box i of the node meets the other.
    unsigned int Meeting(const Node& node, const RoundedBox& box) const {
        return BoxesOf(node).Meeting(box) & ((1U << SizeOf(node)) - 1U);
    }
    // Calls visit(i) for the bits that are set, in ascending order, until it returns true.
    template <class Visit>
    static bool ForEachBit(unsigned int bits, Visit&& visit) {
        for (; bits != 0; bits &= bits - 1U) {
            if (visit(static_cast<std::size_t>(std::countr_zero(bits)))) return true;
        }
        return false;
    }

    // The boxes of the items of one run.
    struct Run {
        Run() = default;
        Run(const BoxHierarchy& of, std::size_t run) {
            const auto [from, to] = of.ItemsOf(run);
            first = from;
            size = to - from;
            for (std::size_t i = 0; i < size; ++i) extents[i] = of.GetExtent(from + i);
            all = of.GetExtent(from, to);
        }

        template <class Visit>
        bool VisitWithin(double tolerance, Visit& visit) const {
            for (std::size_t i = 0; i + 1 < size; ++i) {
                const Extent widened = extents[i].Widened(tolerance);
                for (std::size_t j = i + 1; j < size; ++j) {
                    if (widened.Meets(extents[j]) && visit(first + i, first + j)) return true;
                }
            }
            return false;
        }

        template <class Visit>
        bool VisitBetween(const Run& other, double tolerance, Visit& visit) const {
            const Extent widenedAll = all.Widened(tolerance);
            std::size_t near[runSize];
            std::size_t nearCount = 0;
            for (std::size_t j = 0; j < other.size; ++j) {
                near[nearCount] = j;
                nearCount += widenedAll.Meets(other.extents[j]) ? 1 : 0;
            }
            if (nearCount == 0) return false;
            for (std::size_t i = 0; i < size; ++i) {
                const Extent widened = extents[i].Widened(tolerance);
                if (!widened.Meets(other.all)) continue;
                for (std::size_t k = 0; k < nearCount; ++k) {
                    if (widened.Meets(other.extents[near[k]]) && visit(first + i, other.first + near[k])) return true;
                }
            }
            return false;
        }

        Extent extents[runSize];
        Extent all;
        std::size_t first = 0;
        std::size_t size = 0;
    };

    // Calls between(i, j), i < j, for the boxes of one node that meet, until it returns true.
    template <class Quiet, class Between>
    bool ForEachMeeting(const Node& node, const Pairing<Quiet>& pairing, Between&& between) const {
        const RoundedBoxes widened = BoxesOf(node).Widened(pairing.roundedReach);
        for (std::size_t i = 0; i + 1 < SizeOf(node); ++i) {
            const unsigned int later = Meeting(node, widened.Get(i)) & ~((2U << i) - 1U);
            if (ForEachBit(later, [&](std::size_t j) { return between(i, j); })) return true;
        }
        return false;
    }

    // All pairs inside one node.
    template <class Quiet, class Visit>
    bool VisitWithin(const Node& node, const Pairing<Quiet>& pairing, Visit& visit) const {
        if (node.level == 0) return VisitWithinRuns(node, pairing, visit);
        for (std::size_t i = 0; i < SizeOf(node); ++i) {
            if (VisitWithin(Child(node, i), pairing, visit)) return true;
        }
        const RoundedBoxes& boxes = BoxesOf(node);
        return ForEachMeeting(node, pairing, [&](std::size_t i, std::size_t j) {
            return VisitBetween(Child(node, i), boxes.Get(i), Child(node, j), boxes.Get(j), pairing, visit);
        });
    }

    template <class Quiet, class Visit>
    bool VisitWithinRuns(const Node& node, const Pairing<Quiet>& pairing, Visit& visit) const {
        bool areQuiet = true;
        for (std::size_t i = 0; i < SizeOf(node); ++i) areQuiet = areQuiet && pairing.isQuiet(RunOf(node, i));
        if (areQuiet) {
            return ForEachMeeting(node, pairing, [&](std::size_t i, std::size_t j) {
                return j > i + 1 &&
                       Run(*this, RunOf(node, i)).VisitBetween(Run(*this, RunOf(node, j)), pairing.tolerance, visit);
            });
        }
        Run ofNode[fanOut];
        for (std::size_t i = 0; i < SizeOf(node); ++i) {
            ofNode[i] = Run(*this, RunOf(node, i));
            if (!pairing.isQuiet(RunOf(node, i)) && ofNode[i].VisitWithin(pairing.tolerance, visit)) return true;
        }
        return ForEachMeeting(node, pairing, [&](std::size_t i, std::size_t j) {
            return !pairing.AreQuiet(RunOf(node, i), RunOf(node, j)) &&
                   ofNode[i].VisitBetween(ofNode[j], pairing.tolerance, visit);
        });
    }

    // All pairs of a node of this and a node of the other, given with the box around each; the higher one is opened
    // first.
    template <class Quiet, class Visit>
    bool VisitBetween(const Node& node, const RoundedBox& box, const Node& otherNode, const RoundedBox& otherBox,
                      const Pairing<Quiet>& pairing, Visit& visit) const {
        const RoundedBoxes& boxes = BoxesOf(node);
        const RoundedBoxes& otherBoxes = pairing.other.BoxesOf(otherNode);
        if (node.level < otherNode.level) {
            return ForEachBit(pairing.other.Meeting(otherNode, pairing.Widened(box)), [&](std::size_t j) {
                return VisitBetween(node, box, Child(otherNode, j), otherBoxes.Get(j), pairing, visit);
            });
        }
        return ForEachBit(Meeting(node, pairing.Widened(otherBox, -1.0)), [&](std::size_t i) {
            if (node.level > otherNode.level) {
                return VisitBetween(Child(node, i), boxes.Get(i), otherNode, otherBox, pairing, visit);
            }
            const unsigned int met = pairing.other.Meeting(otherNode, pairing.Widened(boxes.Get(i)));
            return ForEachBit(met, [&](std::size_t j) {
                if (node.level > 0) {
                    return VisitBetween(Child(node, i), boxes.Get(i), Child(otherNode, j), otherBoxes.Get(j), pairing,
                                        visit);
                }
                const std::size_t run = RunOf(node, i), otherRun = RunOf(otherNode, j);
                return !pairing.AreQuiet(run, otherRun) &&
                       Run(*this, run).VisitBetween(Run(pairing.other, otherRun), pairing.tolerance, visit);
            });
        });
    }

    template <class Visit>
    bool VisitNear(const Node& node, const RoundedBox& box, const Extent& extent, Visit& visit) const {
        return ForEachBit(Meeting(node, box), [&](std::size_t i) {
            if (node.level > 0) return VisitNear(Child(node, i), box, extent, visit);
            const auto [from, to] = ItemsOf(RunOf(node, i));
            for (std::size_t item = from; item < to; ++item) {
                if (extent.Meets(this->GetExtent(item)) && visit(item)) return true;
            }
            return false;
        });
    }

    template <class Visit>
    void VisitNearest(const Node& node, const Point2D& p, const RoundedBox& place, const double& squaredReach,
                      Visit& visit) const {
        // Squares of distances stand in the order of their bits; the last two bits give way to the index.
        const RoundedBoxes& boxes = BoxesOf(node);
        std::uint32_t nearestFirst[fanOut];
        for (std::size_t i = 0; i < fanOut; ++i) {
            const float dx = (std::max)((std::max)(0.0F, boxes.minX[i] - place.maxX), place.minX - boxes.maxX[i]);
            const float dy = (std::max)((std::max)(0.0F, boxes.minY[i] - place.maxY), place.minY - boxes.maxY[i]);
            nearestFirst[i] = (std::bit_cast<std::uint32_t>(dx * dx + dy * dy) & ~3U) | static_cast<std::uint32_t>(i);
        }
        const auto order = [&nearestFirst](std::size_t i, std::size_t j) {
            const std::uint32_t low = (std::min)(nearestFirst[i], nearestFirst[j]);
            nearestFirst[j] = (std::max)(nearestFirst[i], nearestFirst[j]);
            nearestFirst[i] = low;
        };
        order(0, 1);
        order(2, 3);
        order(0, 2);
        order(1, 3);
        order(1, 2);
        const std::size_t size = SizeOf(node);
        for (const std::uint32_t entry : nearestFirst) {
            // The squares are rounded by far less than this, those beyond single precision are infinite.
            const double reach =
                squaredReach < 1e38 ? squaredReach * (1.0 + 1e-6) : std::numeric_limits<double>::infinity();
            if (static_cast<double>(std::bit_cast<float>(entry & ~3U)) > reach) return;
            const std::size_t i = entry & 3U;
            if (i >= size) continue;
            if (node.level > 0) {
                VisitNearest(Child(node, i), p, place, squaredReach, visit);
                continue;
            }
            const auto [from, to] = ItemsOf(RunOf(node, i));
            for (std::size_t item = from; item < to; ++item) {
                if (!(this->GetExtent(item).SquaredDistance(p) > squaredReach)) visit(item);
            }
        }
    }

    std::size_t count;
    double originX = 0.0;  // of the boxes
    double originY = 0.0;
    std::vector<std::size_t> starts;  // of the levels in `nodes`: from the runs of items up to one node over all
    std::vector<RoundedBoxes> nodes;
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
