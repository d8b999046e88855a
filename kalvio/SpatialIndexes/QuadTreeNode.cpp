#include "kalvio/SpatialIndexes/QuadTreeNode.h"

#include "kalvio/SpatialIndexes/ISpatialIndexData.h"
#include "kalvio/SpatialIndexes/ISpatialIndexVisit.h"
#include "kalvio/SpatialIndexes/detail/Answers.h"
#include "kalvio/SpatialIndexes/detail/BoxPairs.h"
#include "kalvio/SpatialIndexes/detail/Nearest.h"
#include "kalvio/SpatialIndexes/detail/Queries.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <utility>

// Finkel, Bentley: Quad trees, a data structure for retrieval on composite keys, 1974; squares aligned to powers of
// two.

namespace Kalvio::Math::SpatialIndexes {

using detail::FlatBox;
using detail::Lanes;
using detail::PlanBox;

namespace {

constexpr unsigned int planDimension = 2;

PlanBox BoxOf(const ISpatialIndexData& item) {
    BoundingBoxND box(planDimension);
    item.GetEnvelope(box);
    return PlanBox(FlatBox(box, planDimension));
}

PlanBox InPlan(const BoundingBoxND& box) { return PlanBox(FlatBox(box, planDimension)); }

double CenterOf(double low, double high, int level) {
    if (std::isfinite(low) && std::isfinite(high)) return 0.5 * low + 0.5 * high;
    const double half = std::ldexp(1.0, level - 1);
    return std::isfinite(low) ? low + half : high - half;
}

/// The quadrant around a centre that holds the whole box; -1 when none does.
int QuadrantOf(const PlanBox& box, double centerX, double centerY) {
    // Without branches: where boxes go is hard to foresee.
    const bool isLowX = centerX >= box.maxX;
    const bool isLowY = centerY >= box.maxY;
    const bool fits = (isLowX | (box.minX >= centerX)) & (isLowY | (box.minY >= centerY));
    const int quadrant = (isLowX ? 0 : 1) + (isLowY ? 0 : 2);
    return fits ? quadrant : -1;
}

/// All of a node: a search reads it once it is there.
void Prefetch(const QuadTreeNode& node) {
    for (std::size_t at = 0; at < sizeof(node); at += 64) detail::Prefetch(reinterpret_cast<const char*>(&node) + at);
}

/// What is read of a node inside a window.
void PrefetchInside(const QuadTreeNode& node) {
    detail::Prefetch(&node);
    detail::Prefetch(reinterpret_cast<const char*>(&node) + 63);
}

/// Low and high end of the interval of a grid of 2^level that holds a coordinate.
void ComputeKey(double coordinate, int level, double& low, double& high) {
    if (level >= QuadTreeNode::highestLevel) {
        low = coordinate < 0.0 ? -std::numeric_limits<double>::infinity() : 0.0;
        high = coordinate < 0.0 ? 0.0 : std::numeric_limits<double>::infinity();
        return;
    }
    const double side = std::ldexp(1.0, level);
    low = std::floor(coordinate / side) * side;
    high = low + side;
}

/// Cells of a square of a regular grid, down to a level on which all corners are exact: boxes of one node in it have
/// the same cell, and cells are in the order of a walk, depth first.
class CellGrid {
public:
    static constexpr unsigned int mostLevels = 27;

    CellGrid() = default;
    CellGrid(const PlanBox& square, int level)
        : axes{AxisOf(square.minX, square.maxX), AxisOf(square.minY, square.maxY)} {
        constexpr int farthest = 900;  // sides and their inverses are normal numbers
        const double most = std::max({-square.minX, square.maxX, -square.minY, square.maxY});
        if (std::abs(level) > farthest || !(most <= std::ldexp(1.0, farthest))) return;
        const double side = std::ldexp(1.0, level);
        for (const Axis& axis : axes) {
            if (axis.length != side || std::floor(axis.nearEnd / side) * side != axis.nearEnd) return;
        }
        const int exact = level + std::numeric_limits<double>::digits - 1 - std::ilogb(most);
        nrOfLevels = static_cast<unsigned int>(std::clamp(exact, 0, static_cast<int>(mostLevels)));
        scale = std::ldexp(1.0, static_cast<int>(nrOfLevels) - level);
    }

    /// Levels below the square that are told apart.
    unsigned int GetNrOfLevels() const { return nrOfLevels; }
    /// Of a box inside the square, with an extent: two bits a level, then the number of levels in five.
    std::uint64_t CellOf(const PlanBox& box) const {
        if (nrOfLevels == 0) return 0;
        const Steps x = StepsOf(axes[0], box.minX, box.maxX);
        const Steps y = StepsOf(axes[1], box.minY, box.maxY);
        const auto different = static_cast<unsigned int>(std::bit_width((x.low ^ x.high) | (y.low ^ y.high)));
        const std::uint64_t cell = Spread(x.low) | Spread(y.low) << 1U;
        const unsigned int below = 2 * (mostLevels - nrOfLevels);
        return (cell >> 2 * different << 2 * different << below) << 5U | (nrOfLevels - different);
    }

private:
    struct Axis {
        double nearEnd = 0.0;  // the end nearer to 0: differences from it are exact
        double length = 0.0;
        bool isMirrored = false;
    };
    struct Steps {
        std::uint32_t low;
        std::uint32_t high;
    };

    static Axis AxisOf(double low, double high) { return {low < 0.0 ? high : low, high - low, low < 0.0}; }
    Steps StepsOf(const Axis& axis, double low, double high) const {
        const double from = (axis.isMirrored ? axis.nearEnd - high : low - axis.nearEnd) * scale;
        const double to = (axis.isMirrored ? axis.nearEnd - low : high - axis.nearEnd) * scale;
        const auto first = static_cast<std::uint32_t>(from);
        const auto end = static_cast<std::uint32_t>(to);
        const std::uint32_t last = std::max(first, end - (static_cast<double>(end) < to ? 0 : 1));
        if (!axis.isMirrored) return {first, last};
        const std::uint32_t all = (std::uint32_t{1} << nrOfLevels) - 1;
        return {all - last, all - first};
    }
    /// A gap of one bit between each two.
    static std::uint64_t Spread(std::uint64_t bits) {
        bits = (bits | bits << 16U) & 0x0000FFFF0000FFFFU;
        bits = (bits | bits << 8U) & 0x00FF00FF00FF00FFU;
        bits = (bits | bits << 4U) & 0x0F0F0F0F0F0F0F0FU;
        bits = (bits | bits << 2U) & 0x3333333333333333U;
        return (bits | bits << 1U) & 0x5555555555555555U;
    }

    std::array<Axis, 2> axes;
    double scale = 0.0;
    unsigned int nrOfLevels = 0;
};

struct SortedPlace {
    std::uint64_t cell;
    unsigned int item;
};

/// By cells, those of one as they come: byte by byte from the lowest, but for bytes that all have in common.
void Sort(std::span<SortedPlace> places) {
    constexpr unsigned int nrOfBytes = sizeof(SortedPlace::cell);
    const auto byteOf = [](const SortedPlace& place, unsigned int byte) { return place.cell >> 8 * byte & 255U; };
    std::array<std::array<std::uint32_t, 256>, nrOfBytes> counts{};
    for (const SortedPlace& place : places) {
        for (unsigned int byte = 0; byte < nrOfBytes; ++byte) ++counts[byte][byteOf(place, byte)];
    }
    const auto room = std::make_unique_for_overwrite<SortedPlace[]>(places.size());
    SortedPlace* from = places.data();
    SortedPlace* to = room.get();
    for (unsigned int byte = 0; byte < nrOfBytes && !places.empty(); ++byte) {
        if (counts[byte][byteOf(*from, byte)] == places.size()) continue;
        std::array<std::uint32_t, 256> next{};
        std::partial_sum(counts[byte].begin(), counts[byte].end() - 1, next.begin() + 1);
        for (std::size_t i = 0; i < places.size(); ++i) to[next[byteOf(from[i], byte)]++] = from[i];
        std::swap(from, to);
    }
    if (from != places.data()) std::copy_n(from, places.size(), places.data());
}

}  // namespace

void detail::Arrivals::Add(const PlanBox& place, const PlanBox& box) {
    if (!boxes.empty() || place != box) {
        if (boxes.empty()) boxes.reserve(items.size());
        boxes.insert(boxes.end(), places.begin() + static_cast<std::ptrdiff_t>(boxes.size()), places.end());
        boxes.push_back(box);
    }
    places.push_back(place);
}

/// The nodes that a walk has still to go to, depth first: the next one was added last. Which children a node has is
/// hard to foresee, so they are added without a branch.
class QuadTreeNode::OpenNodes {
public:
    explicit OpenNodes(const QuadTreeNode& first) { AddIf(&first, true); }
    /// Whether the children of one more can be added; where not, it needs a walk of its own.
    bool HasRoom() const { return count + 4 <= nodes.size(); }
    void AddIf(const QuadTreeNode* node, bool isThere) {
        nodes[count] = node;
        count += isThere ? 1 : 0;
    }
    /// Null at the end.
    const QuadTreeNode* TakeNext() { return count == 0 ? nullptr : nodes[--count]; }

private:
    std::array<const QuadTreeNode*, 64> nodes;
    std::size_t count = 0;
};

QuadTreeNode::QuadTreeNode() = default;

QuadTreeNode::QuadTreeNode(BoundingBoxND* box, int squareLevel)
    : level(std::clamp(squareLevel, lowestLevel, highestLevel)), isRoot(box == nullptr) {
    if (isRoot) return;
    shown = new Shown{std::unique_ptr<const BoundingBoxND>(box), {}};
    square = InPlan(*box);
    centerX = 0.5 * square.minX + 0.5 * square.maxX;
    centerY = 0.5 * square.minY + 0.5 * square.maxY;
}

QuadTreeNode::QuadTreeNode(const PlanBox& nodeSquare, int squareLevel)
    : level(squareLevel),
      isRoot(false),
      centerX(CenterOf(nodeSquare.minX, nodeSquare.maxX, squareLevel)),
      centerY(CenterOf(nodeSquare.minY, nodeSquare.maxY, squareLevel)),
      square(nodeSquare) {}

QuadTreeNode::QuadTreeNode(const QuadTreeNode& other)
    : ISpatialIndexNode(other),
      level(other.level),
      isRoot(other.isRoot),
      hasStrays(other.hasStrays),
      items(other.items),
      centerX(other.centerX),
      centerY(other.centerY),
      square(other.square) {
    for (std::size_t i = 0; i < children.size(); ++i) {
        if (other.children[i] != nullptr) children[i] = std::make_unique<QuadTreeNode>(*other.children[i]);
    }
}

QuadTreeNode& QuadTreeNode::operator=(const QuadTreeNode& other) {
    if (this == &other) return *this;
    QuadTreeNode copy(other);  // first: the other node may lie below this one
    centerX = copy.centerX;
    centerY = copy.centerY;
    square = copy.square;
    level = copy.level;
    isRoot = copy.isRoot;
    hasStrays = copy.hasStrays;
    items.Swap(copy.items);
    children.swap(copy.children);
    delete shown.exchange(nullptr);
    return *this;
}

QuadTreeNode::~QuadTreeNode() { delete shown.load(); }

SpatialIndexNodeTypes QuadTreeNode::GetType() const { return SpatialIndexNodeTypes::QuadTreeNode; }

const BoundingBoxND* QuadTreeNode::GetEnvelope() const { return isRoot ? nullptr : Show().square.get(); }

const QuadTreeNode::Shown& QuadTreeNode::Show() const {
    Shown* known = shown.load(std::memory_order_acquire);
    if (known != nullptr) return *known;
    auto made = std::make_unique<Shown>();
    made->square = std::make_unique<const BoundingBoxND>(square.GetFlatBox().ToBoundingBox());
    made->items.assign(items.begin(), items.end());
    // Of several threads that made it one wins; the others take the winner's.
    if (shown.compare_exchange_strong(known, made.get(), std::memory_order_acq_rel)) return *made.release();
    return *known;
}

bool QuadTreeNode::HasChildren() const {
    return std::any_of(children.begin(), children.end(), [](const auto& child) { return child != nullptr; });
}

int QuadTreeNode::Depth() const {
    int deepest = 0;
    for (const auto& child : children) {
        if (child != nullptr) deepest = std::max(deepest, child->Depth());
    }
    return 1 + deepest;
}

int QuadTreeNode::Size() const {
    int size = static_cast<int>(items.GetCount());
    for (const auto& child : children) {
        if (child != nullptr) size += child->Size();
    }
    return size;
}

int QuadTreeNode::NodeCount() const {
    int count = 1;
    for (const auto& child : children) {
        if (child != nullptr) count += child->Size();
    }
    return count;
}

QuadTreeNode* QuadTreeNode::GetSubnode(int quadrant) const {
    return quadrant < 0 || quadrant > 3 ? nullptr : children[static_cast<std::size_t>(quadrant)].get();
}

QuadTreeNode* QuadTreeNode::CreateSubnode(int quadrant) const {
    if (isRoot || level <= lowestLevel || quadrant < 0 || quadrant > 3) return nullptr;
    return new QuadTreeNode(GetQuadrant(static_cast<std::size_t>(quadrant)), level - 1);
}

void QuadTreeNode::Add(const ISpatialIndexData* item) {
    if (item != nullptr) Append(BoxOf(*item), const_cast<ISpatialIndexData*>(item));
}

std::vector<ISpatialIndexData*>* QuadTreeNode::AddAllItems(std::vector<ISpatialIndexData*>* all) const {
    if (all == nullptr) return nullptr;
    all->insert(all->end(), items.begin(), items.end());
    for (const auto& child : children) {
        if (child != nullptr) child->AddAllItems(all);
    }
    return all;
}

void QuadTreeNode::Insert(const BoundingBoxND& box, const ISpatialIndexData* item) {
    if (item != nullptr) Insert(InPlan(box), BoxOf(*item), const_cast<ISpatialIndexData*>(item));
}

void QuadTreeNode::Insert(const PlanBox& place, const PlanBox& box, ISpatialIndexData* item) {
    QuadTreeNode* const top = isRoot ? MakeChildOfRoot(place, box) : this;
    QuadTreeNode* const node = top == nullptr ? this : top->Descend(place, place.HasExtent());
    node->Append(box, item);
}

QuadTreeNode* QuadTreeNode::MakeChildOfRoot(const PlanBox& place, const PlanBox& box) {
    const int quadrant = place.IsProper() && box.IsProper() ? QuadrantOf(place, 0.0, 0.0) : -1;
    if (quadrant < 0) return nullptr;
    std::unique_ptr<QuadTreeNode>& child = children[static_cast<std::size_t>(quadrant)];
    if (child == nullptr || !child->square.Contains(place)) child = CreateExpanded(std::move(child), place);
    return child.get();
}

void QuadTreeNode::Insert(const detail::Arrivals& arrivals) {
    constexpr std::size_t few = 16;  // sorted no faster than inserted
    // Their order decides on the sizes of the squares below the root, and the nodes that are there on the place of a
    // box that has no extent though it was widened.
    const std::size_t n = arrivals.places.size();
    bool isOrderFree = n > few;
    for (std::size_t i = 0; i < n && isOrderFree; ++i) {
        const PlanBox& place = arrivals.places[i];
        isOrderFree = MakeChildOfRoot(place, arrivals.KeptBox(i)) == nullptr || place.HasExtent();
    }
    if (isOrderFree) return InsertSorted(arrivals);
    for (std::size_t i = 0; i < n; ++i) Insert(arrivals.places[i], arrivals.KeptBox(i), arrivals.Item(i));
}

void QuadTreeNode::InsertSorted(const detail::Arrivals& arrivals) {
    const std::size_t n = arrivals.places.size();
    // Fresh memory is what costs most: this is written once.
    const auto places = std::make_unique_for_overwrite<SortedPlace[]>(n);
    std::array<CellGrid, 4> grids;
    for (std::size_t i = 0; i < children.size(); ++i) {
        if (children[i] != nullptr) grids[i] = CellGrid(children[i]->square, children[i]->level);
    }
    std::size_t nrBelow = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const PlanBox& place = arrivals.places[i];
        const bool isProper = place.IsProper() && arrivals.KeptBox(i).IsProper();
        const int quadrant = isProper ? QuadrantOf(place, centerX, centerY) : -1;
        if (quadrant < 0) {
            Append(arrivals.KeptBox(i), arrivals.Item(i));
            continue;
        }
        const auto top = static_cast<std::uint64_t>(quadrant);
        places[nrBelow++] = {top << (2 * CellGrid::mostLevels + 5) | grids[top].CellOf(place),
                             static_cast<unsigned int>(i)};
    }
    Sort({places.get(), nrBelow});

    // From the node of one to that of the next: up to what holds both, and down from there.
    constexpr std::size_t fetched = 64;  // at once, from all over the memory: they do not wait for each other
    std::vector<QuadTreeNode*> way;
    for (std::size_t i = 0; i < nrBelow; ++i) {
        for (std::size_t k = i; i % fetched == 0 && k < std::min(i + fetched, nrBelow); ++k) {
            const unsigned int item = places[k].item;
            for (const PlanBox* box : {&arrivals.places[item], &arrivals.KeptBox(item)}) {
                detail::ReadAhead(&box->minX);
                detail::ReadAhead(&box->maxY);
            }
            detail::ReadAhead(&arrivals.items[item]);
        }
        const PlanBox& box = arrivals.places[places[i].item];
        const auto top = static_cast<std::size_t>(QuadrantOf(box, centerX, centerY));
        if (way.empty() || way.front() != children[top].get()) way.assign(1, children[top].get());
        while (way.size() > 1 && (way.size() > grids[top].GetNrOfLevels() + 1 || !way.back()->square.Contains(box))) {
            way.pop_back();
        }
        for (;;) {
            QuadTreeNode* const node = way.back();
            const int quadrant = QuadrantOf(box, node->centerX, node->centerY);
            if (quadrant < 0) break;
            QuadTreeNode* const child = node->MakeChild(static_cast<std::size_t>(quadrant));
            if (child == nullptr || !child->square.Contains(box)) break;
            way.push_back(child);
        }
        way.back()->Append(arrivals.KeptBox(places[i].item), arrivals.Item(places[i].item));
    }
}

void QuadTreeNode::InsertNode(QuadTreeNode* node) {
    if (node != nullptr && node != this) Adopt(std::unique_ptr<QuadTreeNode>(node));
}

void QuadTreeNode::Adopt(std::unique_ptr<QuadTreeNode> node) {
    const int quadrant = node->isRoot ? -1 : QuadrantOf(node->square, centerX, centerY);
    if (quadrant < 0 || (!isRoot && node->level >= level)) {
        std::vector<ISpatialIndexData*> all;
        for (const ISpatialIndexData* item : *node->AddAllItems(&all)) Add(item);
        return;
    }
    hasStrays = hasStrays || !square.Contains(node->square);
    std::unique_ptr<QuadTreeNode>& child = children[static_cast<std::size_t>(quadrant)];
    if (isRoot || node->level == level - 1) {
        child = std::move(node);
        return;
    }
    std::unique_ptr<QuadTreeNode> between(CreateSubnode(quadrant));  // above the lowest level: the node lies below
    between->Adopt(std::move(node));
    child = std::move(between);
}

bool QuadTreeNode::Remove(const BoundingBoxND& box, const ISpatialIndexData* item) { return Remove(InPlan(box), item); }

bool QuadTreeNode::Remove(const PlanBox& box, const ISpatialIndexData* item) {
    if (!isRoot && !square.Intersects(box)) return false;
    // Children that lie beyond the centre lines need not be looked at.
    const std::array<bool, 2> reachesX{box.minX <= centerX, centerX <= box.maxX};
    const std::array<bool, 2> reachesY{box.minY <= centerY, centerY <= box.maxY};
    for (std::size_t quadrant = 0; quadrant < children.size(); ++quadrant) {
        if (!(reachesX[quadrant % 2] && reachesY[quadrant / 2])) continue;
        std::unique_ptr<QuadTreeNode>& child = children[quadrant];
        if (child == nullptr || !child->Remove(box, item)) continue;
        if (child->IsPrunable()) child = nullptr;
        return true;
    }
    const auto* const place = std::find(items.begin(), items.end(), item);
    if (place == items.end()) return false;
    const auto at = place - items.begin();
    items.Erase(static_cast<unsigned int>(at));
    if (Shown* const known = shown.load()) known->items.erase(known->items.begin() + at);
    return true;
}

QuadTreeNode* QuadTreeNode::Find(const BoundingBoxND& box) { return Descend(InPlan(box), false); }

QuadTreeNode* QuadTreeNode::GetNode(const BoundingBoxND& box) { return Descend(InPlan(box), true); }

QuadTreeNode* QuadTreeNode::Descend(const PlanBox& box, bool create) {
    QuadTreeNode* node = this;
    if (!box.IsProper()) return node;
    for (;;) {
        const int quadrant = QuadrantOf(box, node->centerX, node->centerY);
        if (quadrant < 0) return node;
        QuadTreeNode* child = node->children[static_cast<std::size_t>(quadrant)].get();
        if (child == nullptr && create) child = node->MakeChild(static_cast<std::size_t>(quadrant));
        // A square on less than the step of numbers is not just the quadrant.
        if (child == nullptr || !child->square.Contains(box)) return node;
        node = child;
    }
}

QuadTreeNode* QuadTreeNode::MakeChild(std::size_t quadrant) {
    std::unique_ptr<QuadTreeNode>& child = children[quadrant];
    if (child != nullptr || isRoot || level <= lowestLevel) return child.get();
    const PlanBox part = GetQuadrant(quadrant);
    // In both axes, or a box that only one of them can tell apart would go down its thousand levels.
    const bool isHalved = (part.minX != square.minX || part.maxX != square.maxX) &&
                          (part.minY != square.minY || part.maxY != square.maxY);
    if (isHalved) child.reset(new QuadTreeNode(part, level - 1));
    return child.get();
}

void QuadTreeNode::Append(const PlanBox& box, ISpatialIndexData* item) {
    items.Append(box, item, centerX);
    if (Shown* const known = shown.load()) known->items.push_back(item);
    hasStrays = hasStrays || !square.Contains(box);
}

template <class NodeQuery>
bool QuadTreeNode::IsSearchMatch(const NodeQuery& query) const {
    if (isRoot) return true;
    const detail::LaneMask x = query.Axis(0)(Lanes::Repeat(square.minX), Lanes::Repeat(square.maxX));
    return (x & query.Axis(1)(Lanes::Repeat(square.minY), Lanes::Repeat(square.maxY))).Bits() != 0;
}

template <class NodeQuery, class ItemQuery, class Found>
void QuadTreeNode::Walk(const NodeQuery& nodeQuery, const ItemQuery& itemQuery, Found& found) const {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    OpenNodes open(*this);
    while (const QuadTreeNode* const node = open.TakeNext()) {
        if constexpr (NodeQuery::isWindow) {
            if (!node->isRoot && node->IsSearchMatch(detail::InsideQuery{nodeQuery.window})) {
                node->FindAll(nodeQuery, itemQuery, found);
                continue;
            }
        }
        if (!open.HasRoom()) {
            node->Walk(nodeQuery, itemQuery, found);
            continue;
        }
        // The half planes beside the centre lines, not the children's squares, so that only children on the way are
        // read: the outer sides have been asked for above. Children of the root may lie anywhere in their quadrants.
        const auto onBothSides = [&](unsigned int axis, double center) {
            return nodeQuery.Axis(axis)(Lanes::Of(-infinity, center), Lanes::Of(center, infinity)).Bits();
        };
        const unsigned int columns = onBothSides(0, node->centerX);
        const unsigned int rows = onBothSides(1, node->centerY);
        for (std::size_t quadrant = node->children.size(); quadrant-- > 0;) {
            const QuadTreeNode* const child = node->children[quadrant].get();
            bool isNext = (columns >> quadrant % 2 & rows >> quadrant / 2 & 1U) != 0 && child != nullptr;
            if (node->isRoot) isNext = isNext && child->IsSearchMatch(nodeQuery);
            const QuadTreeNode* const next = isNext ? child : node;
            Prefetch(*next);
            open.AddIf(child, isNext);
        }
        node->items.ForEachMatch(nodeQuery, itemQuery, found);
    }
}

template <class NodeQuery, class ItemQuery, class Found>
void QuadTreeNode::FindAll(const NodeQuery& nodeQuery, const ItemQuery& itemQuery, Found& found) const {
    OpenNodes open(*this);
    while (const QuadTreeNode* const node = open.TakeNext()) {
        if (node->hasStrays) {
            node->FindAllButStrays(nodeQuery, itemQuery, found);
            continue;
        }
        if (!open.HasRoom()) {
            node->FindAll(nodeQuery, itemQuery, found);
            continue;
        }
        node->items.ForEach(found);
        for (std::size_t quadrant = node->children.size(); quadrant-- > 0;) {
            const QuadTreeNode* const child = node->children[quadrant].get();
            PrefetchInside(child != nullptr ? *child : *node);
            open.AddIf(child, child != nullptr);
        }
    }
}

template <class NodeQuery, class ItemQuery, class Found>
void QuadTreeNode::FindAllButStrays(const NodeQuery& nodeQuery, const ItemQuery& itemQuery, Found& found) const {
    items.ForEachMatch(nodeQuery, itemQuery, found);
    for (const auto& child : children) {
        if (child == nullptr) continue;
        if (square.Contains(child->square)) {
            child->FindAll(nodeQuery, itemQuery, found);
        } else if (child->IsSearchMatch(nodeQuery)) {
            child->Walk(nodeQuery, itemQuery, found);
        }
    }
}

void QuadTreeNode::SearchNearest(const FlatBox& from, detail::NearestItems& nearest) const {
    struct Way {
        double distance;
        const QuadTreeNode* node;
    };
    // Not by the children's squares, where they need not be read: most are too far away.
    const auto gaps = [&from](unsigned int axis, double low, double center, double high, double* both) {
        Store(detail::SquaredGap(Lanes::Of(low, center), Lanes::Of(center, high), Lanes::Repeat(from.Low(axis)),
                                 Lanes::Repeat(from.High(axis))),
              both);
    };
    std::array<double, 2> columns;
    std::array<double, 2> rows;
    gaps(0, square.minX, centerX, square.maxX, columns.data());
    gaps(1, square.minY, centerY, square.maxY, rows.data());
    std::array<Way, 4> ways;
    std::size_t n = 0;
    for (std::size_t quadrant = 0; quadrant < children.size(); ++quadrant) {
        const QuadTreeNode* const child = children[quadrant].get();
        if (child == nullptr) continue;
        const double distance =
            isRoot || hasStrays ? child->square.SquaredDistance(from) : columns[quadrant % 2] + rows[quadrant / 2];
        if (!(distance <= nearest.GetLimit())) continue;
        Prefetch(*child);
        std::size_t i = n++;
        for (; i > 0 && distance < ways[i - 1].distance; --i) ways[i] = ways[i - 1];
        ways[i] = {distance, child};
    }
    // The nearest child first: few of the large boxes here are nearer than what lies there.
    if (n > 0) ways[0].node->SearchNearest(from, nearest);
    items.SearchNearest(from, nearest);
    for (std::size_t i = 1; i < n && ways[i].distance <= nearest.GetLimit(); ++i) {
        ways[i].node->SearchNearest(from, nearest);
    }
}

template <class... Where>
int QuadTreeNode::SearchInto(const detail::ItemSink& sink, const Where&... where) const {
    const auto walk = [this](const auto& nodeQuery, const auto& itemQuery, auto& found) {
        if (this->IsSearchMatch(nodeQuery)) this->Walk(nodeQuery, itemQuery, found);
    };
    return detail::SinkAnswers(walk, sink, planDimension, where...);
}

template int QuadTreeNode::SearchInto(const detail::ItemSink& sink, const BoundingBoxND& box,
                                      const bool& overlap) const;
template int QuadTreeNode::SearchInto(const detail::ItemSink& sink, const PointND& point) const;

void QuadTreeNode::Visit(const BoundingBoxND& box, bool overlap, const ISpatialIndexVisit& visitor, int& count) const {
    const auto visit = [&visitor](ISpatialIndexData* item) { visitor.Visit(item); };
    count += SearchInto(detail::ItemSink::To(visit), box, overlap);
}

void QuadTreeNode::Visit(const PointND& point, const ISpatialIndexVisit& visitor, int& count) const {
    const auto visit = [&visitor](ISpatialIndexData* item) { visitor.Visit(item); };
    count += SearchInto(detail::ItemSink::To(visit), point);
}

void QuadTreeNode::AddAllItemsFromOverlapping(const BoundingBoxND& box, std::list<ISpatialIndexData*>& found,
                                              bool overlap) const {
    const auto append = [&found](ISpatialIndexData* item) { found.push_back(item); };
    SearchInto(detail::ItemSink::To(append), box, overlap);
}

void QuadTreeNode::AddAllItemsFromOverlapping(const PointND& point, std::list<ISpatialIndexData*>& found) const {
    const auto append = [&found](ISpatialIndexData* item) { found.push_back(item); };
    SearchInto(detail::ItemSink::To(append), point);
}

int QuadTreeNode::GetSubnodeIndex(const BoundingBoxND& box, const PointND& center) {
    const PlanBox middle = InPlan(center.GetBoundingBoxND());
    return QuadrantOf(InPlan(box), middle.minX, middle.minY);
}

PlanBox QuadTreeNode::GetQuadrant(std::size_t quadrant) const {
    const bool isHighX = quadrant % 2 == 1;
    const bool isHighY = quadrant >= 2;
    return {isHighX ? centerX : square.minX, isHighY ? centerY : square.minY, isHighX ? square.maxX : centerX,
            isHighY ? square.maxY : centerY};
}

int QuadTreeNode::ComputeQuadLevel(const PlanBox& box) {
    const double most = std::max(box.maxX - box.minX, box.maxY - box.minY);
    if (!(most > 0.0)) return 0;
    const double bias = most < 1.0 ? -0.9 : 1e-11;
    const double wanted = std::log(most) / std::log(2.0) + bias;
    return static_cast<int>(std::clamp<double>(wanted, lowestLevel, highestLevel));
}

PlanBox QuadTreeNode::ComputeQuadKey(int squareLevel, const PlanBox& box) {
    PlanBox key;
    ComputeKey(box.minX, squareLevel, key.minX, key.maxX);
    ComputeKey(box.minY, squareLevel, key.minY, key.maxY);
    return key;
}

std::unique_ptr<QuadTreeNode> QuadTreeNode::CreateNode(const PlanBox& box) {
    int nodeLevel = ComputeQuadLevel(box);
    PlanBox key = ComputeQuadKey(nodeLevel, box);
    while (!key.Contains(box) && nodeLevel < highestLevel) key = ComputeQuadKey(++nodeLevel, box);
    return std::unique_ptr<QuadTreeNode>(new QuadTreeNode(key, nodeLevel));
}

std::unique_ptr<QuadTreeNode> QuadTreeNode::CreateExpanded(std::unique_ptr<QuadTreeNode> existing, const PlanBox& box) {
    if (existing == nullptr) return CreateNode(box);
    const PlanBox& old = existing->square;
    std::unique_ptr<QuadTreeNode> node = CreateNode({std::min(old.minX, box.minX), std::min(old.minY, box.minY),
                                                     std::max(old.maxX, box.maxX), std::max(old.maxY, box.maxY)});
    node->Adopt(std::move(existing));
    return node;
}

}  // namespace Kalvio::Math::SpatialIndexes
