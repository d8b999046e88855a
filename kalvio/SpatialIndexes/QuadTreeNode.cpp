#include "kalvio/SpatialIndexes/QuadTreeNode.h"

#include "kalvio/SpatialIndexes/ISpatialIndexData.h"
#include "kalvio/SpatialIndexes/ISpatialIndexVisit.h"
#include "kalvio/SpatialIndexes/detail/Answers.h"
#include "kalvio/SpatialIndexes/detail/BoxPairs.h"
#include "kalvio/SpatialIndexes/detail/Queries.h"

#include <algorithm>
#include <cmath>
#include <limits>

// Finkel, Bentley: Quad trees, a data structure for retrieval on composite keys, 1974; squares aligned to powers of
// two.

namespace Kalvio::Math::SpatialIndexes {

using detail::FlatBox;
using detail::Lanes;

namespace {

constexpr unsigned int planDimension = 2;

/// Finite bounds in order: such a box has a place below the root.
bool HasPlace(const FlatBox& box) {
    for (unsigned int axis = 0; axis < planDimension; ++axis) {
        if (!std::isfinite(box.Low(axis)) || !std::isfinite(box.High(axis)) || box.Low(axis) > box.High(axis)) {
            return false;
        }
    }
    return true;
}

double CenterOf(double low, double high, int level) {
    if (std::isfinite(low) && std::isfinite(high)) return 0.5 * low + 0.5 * high;
    const double half = std::ldexp(1.0, level - 1);
    return std::isfinite(low) ? low + half : high - half;
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

}  // namespace

QuadTreeNode::QuadTreeNode() = default;

QuadTreeNode::QuadTreeNode(BoundingBoxND* box, int squareLevel)
    : level(std::clamp(squareLevel, lowestLevel, highestLevel)), isRoot(box == nullptr) {
    if (isRoot) return;
    envelope = box;
    const FlatBox flat(*box, planDimension);
    square = {flat.Low(0), flat.Low(1), flat.High(0), flat.High(1)};
    centerX = 0.5 * square.minX + 0.5 * square.maxX;
    centerY = 0.5 * square.minY + 0.5 * square.maxY;
}

QuadTreeNode::QuadTreeNode(const Square& nodeSquare, int squareLevel)
    : centerX(CenterOf(nodeSquare.minX, nodeSquare.maxX, squareLevel)),
      centerY(CenterOf(nodeSquare.minY, nodeSquare.maxY, squareLevel)),
      square(nodeSquare),
      level(squareLevel),
      isRoot(false) {}

QuadTreeNode::QuadTreeNode(const QuadTreeNode& other)
    : ISpatialIndexNode(other),
      centerX(other.centerX),
      centerY(other.centerY),
      items(other.items),
      boxes(other.boxes),
      square(other.square),
      level(other.level),
      isRoot(other.isRoot),
      hasStrays(other.hasStrays) {
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
    items.swap(copy.items);
    boxes.swap(copy.boxes);
    children.swap(copy.children);
    delete envelope.exchange(nullptr);
    return *this;
}

QuadTreeNode::~QuadTreeNode() { delete envelope.load(); }

SpatialIndexNodeTypes QuadTreeNode::GetType() const { return SpatialIndexNodeTypes::QuadTreeNode; }

const BoundingBoxND* QuadTreeNode::GetEnvelope() const {
    if (isRoot) return nullptr;
    const BoundingBoxND* known = envelope.load(std::memory_order_acquire);
    if (known != nullptr) return known;
    auto made = std::make_unique<const BoundingBoxND>(square.GetBox().ToBoundingBox());
    // Of several threads that made it one wins; the others take the winner's.
    if (envelope.compare_exchange_strong(known, made.get(), std::memory_order_acq_rel)) return made.release();
    return known;
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
    int size = static_cast<int>(items.size());
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
    if (item == nullptr) return;
    BoundingBoxND box(planDimension);
    item->GetEnvelope(box);
    Append(FlatBox(box, planDimension), const_cast<ISpatialIndexData*>(item));
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
    if (item == nullptr) return;
    BoundingBoxND itemBox(planDimension);
    item->GetEnvelope(itemBox);
    Insert(FlatBox(box, planDimension), FlatBox(itemBox, planDimension), const_cast<ISpatialIndexData*>(item));
}

void QuadTreeNode::Insert(const FlatBox& place, const FlatBox& box, ISpatialIndexData* item) {
    QuadTreeNode* top = this;
    if (isRoot) {
        const int quadrant = HasPlace(place) && HasPlace(box) ? GetSubnodeIndex(place, 0.0, 0.0) : -1;
        if (quadrant < 0) {
            Append(box, item);
            return;
        }
        std::unique_ptr<QuadTreeNode>& child = children[static_cast<std::size_t>(quadrant)];
        if (child == nullptr || !child->square.Contains(place)) child = CreateExpanded(std::move(child), place);
        top = child.get();
    }
    const bool hasExtent = place.Low(0) != place.High(0) && place.Low(1) != place.High(1);
    top->Descend(place, hasExtent)->Append(box, item);
}

void QuadTreeNode::InsertNode(QuadTreeNode* node) {
    if (node != nullptr && node != this) Adopt(std::unique_ptr<QuadTreeNode>(node));
}

void QuadTreeNode::Adopt(std::unique_ptr<QuadTreeNode> node) {
    const int quadrant = node->isRoot ? -1 : GetSubnodeIndex(node->square.GetBox(), centerX, centerY);
    if (quadrant < 0 || (!isRoot && node->level >= level)) {
        std::vector<ISpatialIndexData*> all;
        for (const ISpatialIndexData* item : *node->AddAllItems(&all)) Add(item);
        return;
    }
    std::unique_ptr<QuadTreeNode>& child = children[static_cast<std::size_t>(quadrant)];
    if (isRoot || node->level == level - 1) {
        child = std::move(node);
        return;
    }
    std::unique_ptr<QuadTreeNode> between(CreateSubnode(quadrant));  // above the lowest level: the node lies below
    between->Adopt(std::move(node));
    child = std::move(between);
}

bool QuadTreeNode::Remove(const BoundingBoxND& box, const ISpatialIndexData* item) {
    return Remove(FlatBox(box, planDimension), item);
}

bool QuadTreeNode::Remove(const FlatBox& box, const ISpatialIndexData* item) {
    if (!isRoot && !square.GetBox().Intersects(box)) return false;
    for (std::unique_ptr<QuadTreeNode>& child : children) {
        if (child == nullptr || !child->Remove(box, item)) continue;
        if (child->IsPrunable()) child = nullptr;
        return true;
    }
    const auto place = std::find(items.begin(), items.end(), item);
    if (place == items.end()) return false;
    const detail::BoxPairs pairs(boxes.data(), planDimension);
    pairs.Erase(static_cast<unsigned int>(place - items.begin()), static_cast<unsigned int>(items.size()));
    items.erase(place);
    boxes.resize(detail::BoxPairs::GetSize(static_cast<unsigned int>(items.size()), planDimension));
    return true;
}

QuadTreeNode* QuadTreeNode::Find(const BoundingBoxND& box) { return Descend(FlatBox(box, planDimension), false); }

QuadTreeNode* QuadTreeNode::GetNode(const BoundingBoxND& box) { return Descend(FlatBox(box, planDimension), true); }

QuadTreeNode* QuadTreeNode::Descend(const FlatBox& box, bool create) {
    QuadTreeNode* node = this;
    if (!HasPlace(box)) return node;
    for (;;) {
        const int quadrant = GetSubnodeIndex(box, node->centerX, node->centerY);
        if (quadrant < 0) return node;
        std::unique_ptr<QuadTreeNode>& child = node->children[static_cast<std::size_t>(quadrant)];
        if (child == nullptr) {
            if (!create || node->isRoot || node->level <= lowestLevel) return node;
            const Square& whole = node->square;
            const Square part = node->GetQuadrant(static_cast<std::size_t>(quadrant));
            // In both axes, or a box that only one of them can tell apart would go down its thousand levels.
            const bool halved = (part.minX != whole.minX || part.maxX != whole.maxX) &&
                                (part.minY != whole.minY || part.maxY != whole.maxY);
            if (!halved) return node;
            child.reset(new QuadTreeNode(part, node->level - 1));
        }
        if (node->isRoot && !child->square.Contains(box)) return node;
        node = child.get();
    }
}

void QuadTreeNode::Append(const FlatBox& box, ISpatialIndexData* item) {
    const auto n = static_cast<unsigned int>(items.size());
    boxes.resize(detail::BoxPairs::GetSize(n + 1, planDimension));
    detail::BoxPairs(boxes.data(), planDimension).Set(n, box);
    items.push_back(item);
    hasStrays = hasStrays || !square.Contains(box);
}

template <class NodeQuery>
bool QuadTreeNode::IsSearchMatch(const NodeQuery& query) const {
    if (isRoot) return true;
    const detail::LaneMask x = query.Axis(0)(Lanes::Repeat(square.minX), Lanes::Repeat(square.maxX));
    return (x & query.Axis(1)(Lanes::Repeat(square.minY), Lanes::Repeat(square.maxY))).Bits() != 0;
}

template <class ItemQuery, class Found>
void QuadTreeNode::FindItems(const ItemQuery& itemQuery, Found& found) const {
    if (items.empty()) return;
    const detail::BoxPairs pairs(const_cast<double*>(boxes.data()), planDimension);  // only read
    pairs.ForEachMatch(itemQuery, static_cast<unsigned int>(items.size()), [&](unsigned int i) { found(items[i]); });
}

template <class NodeQuery, class ItemQuery, class Found>
void QuadTreeNode::Walk(const NodeQuery& nodeQuery, const ItemQuery& itemQuery, Found& found) const {
    if constexpr (NodeQuery::isWindow) {
        if (!isRoot && IsSearchMatch(detail::InsideQuery{nodeQuery.window})) {
            FindAll(nodeQuery, itemQuery, found);
            return;
        }
    }
    // The half planes beside the centre lines, not the children's squares, so that only children on the way are read:
    // the outer sides have been asked for above. Children of the root may lie anywhere in their quadrants.
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const unsigned int columns = nodeQuery.Axis(0)(Lanes::Of(-infinity, centerX), Lanes::Of(centerX, infinity)).Bits();
    const unsigned int rows = nodeQuery.Axis(1)(Lanes::Of(-infinity, centerY), Lanes::Of(centerY, infinity)).Bits();
    std::array<const QuadTreeNode*, 4> next{};
    for (unsigned int quadrant = 0; quadrant < 4; ++quadrant) {
        if ((columns >> quadrant % 2 & rows >> quadrant / 2 & 1U) == 0) continue;
        next[quadrant] = children[quadrant].get();
        if (next[quadrant] == nullptr) continue;
        detail::Prefetch(next[quadrant]);
        detail::Prefetch(reinterpret_cast<const char*>(next[quadrant]) + 64);
    }
    FindItems(itemQuery, found);
    for (const QuadTreeNode* const child : next) {
        if (child == nullptr) continue;
        detail::Prefetch(child->items.data());
        detail::Prefetch(child->boxes.data());
    }
    for (const QuadTreeNode* const child : next) {
        if (child == nullptr || (isRoot && !child->IsSearchMatch(nodeQuery))) continue;
        child->Walk(nodeQuery, itemQuery, found);
    }
}

template <class NodeQuery, class ItemQuery, class Found>
void QuadTreeNode::FindAll(const NodeQuery& nodeQuery, const ItemQuery& itemQuery, Found& found) const {
    for (const auto& child : children) {
        if (child == nullptr) continue;
        detail::Prefetch(child.get());
        detail::Prefetch(reinterpret_cast<const char*>(child.get()) + 64);
    }
    if (hasStrays) {
        FindItems(itemQuery, found);
    } else {
        for (ISpatialIndexData* item : items) found(item);
    }
    for (const auto& child : children) {
        if (child != nullptr) detail::Prefetch(child->items.data());
    }
    for (const auto& child : children) {
        if (child == nullptr) continue;
        if (square.Contains(child->square)) {
            child->FindAll(nodeQuery, itemQuery, found);
        } else if (child->IsSearchMatch(nodeQuery)) {
            child->Walk(nodeQuery, itemQuery, found);
        }
    }
}

template <class... Where>
int QuadTreeNode::VisitItems(const ISpatialIndexVisit& visitor, const Where&... where) const {
    const auto walk = [this](const auto& nodeQuery, const auto& itemQuery, auto& found) {
        if (this->IsSearchMatch(nodeQuery)) this->Walk(nodeQuery, itemQuery, found);
    };
    return detail::VisitAnswers(walk, visitor, planDimension, where...);
}

template <class... Where>
void QuadTreeNode::FilterItems(std::list<ISpatialIndexData*>& found, const Where&... where) const {
    const auto walk = [this](const auto& nodeQuery, const auto& itemQuery, auto& foundItem) {
        if (this->IsSearchMatch(nodeQuery)) this->Walk(nodeQuery, itemQuery, foundItem);
    };
    detail::ListAnswers(walk, found, planDimension, where...);
}

void QuadTreeNode::Visit(const BoundingBoxND& box, bool overlap, const ISpatialIndexVisit& visitor, int& count) const {
    count += VisitItems(visitor, box, overlap);
}

void QuadTreeNode::Visit(const PointND& point, const ISpatialIndexVisit& visitor, int& count) const {
    count += VisitItems(visitor, point);
}

void QuadTreeNode::AddAllItemsFromOverlapping(const BoundingBoxND& box, std::list<ISpatialIndexData*>& found,
                                              bool overlap) const {
    FilterItems(found, box, overlap);
}

void QuadTreeNode::AddAllItemsFromOverlapping(const PointND& point, std::list<ISpatialIndexData*>& found) const {
    FilterItems(found, point);
}

int QuadTreeNode::GetSubnodeIndex(const BoundingBoxND& box, const PointND& center) {
    const FlatBox middle(center.GetBoundingBoxND(), planDimension);
    return GetSubnodeIndex(FlatBox(box, planDimension), middle.Low(0), middle.Low(1));
}

int QuadTreeNode::GetSubnodeIndex(const FlatBox& box, double centerX, double centerY) {
    const bool isLow = centerY >= box.High(1);
    const bool isHigh = box.Low(1) >= centerY;
    int quadrant = -1;
    if (box.Low(0) >= centerX) quadrant = isLow ? 1 : isHigh ? 3 : -1;
    if (centerX >= box.High(0) && (isLow || isHigh)) quadrant = isLow ? 0 : 2;
    return quadrant;
}

QuadTreeNode::Square QuadTreeNode::GetQuadrant(std::size_t quadrant) const {
    const bool isHighX = quadrant % 2 == 1;
    const bool isHighY = quadrant >= 2;
    return {isHighX ? centerX : square.minX, isHighY ? centerY : square.minY, isHighX ? square.maxX : centerX,
            isHighY ? square.maxY : centerY};
}

bool QuadTreeNode::Square::Contains(const FlatBox& box) const {
    return minX <= box.Low(0) && box.High(0) <= maxX && minY <= box.Low(1) && box.High(1) <= maxY;
}

bool QuadTreeNode::Square::Contains(const Square& other) const {
    return minX <= other.minX && other.maxX <= maxX && minY <= other.minY && other.maxY <= maxY;
}

FlatBox QuadTreeNode::Square::GetBox() const {
    FlatBox box(planDimension);
    box.Set(0, minX, maxX);
    box.Set(1, minY, maxY);
    return box;
}

int QuadTreeNode::ComputeQuadLevel(const FlatBox& box) {
    const double most = std::max(box.High(0) - box.Low(0), box.High(1) - box.Low(1));
    if (!(most > 0.0)) return 0;
    const double bias = most < 1.0 ? -0.9 : 1e-11;
    const double wanted = std::log(most) / std::log(2.0) + bias;
    return static_cast<int>(std::clamp<double>(wanted, lowestLevel, highestLevel));
}

QuadTreeNode::Square QuadTreeNode::ComputeQuadKey(int squareLevel, const FlatBox& box) {
    Square key;
    ComputeKey(box.Low(0), squareLevel, key.minX, key.maxX);
    ComputeKey(box.Low(1), squareLevel, key.minY, key.maxY);
    return key;
}

std::unique_ptr<QuadTreeNode> QuadTreeNode::CreateNode(const FlatBox& box) {
    int nodeLevel = ComputeQuadLevel(box);
    Square key = ComputeQuadKey(nodeLevel, box);
    while (!key.Contains(box) && nodeLevel < highestLevel) key = ComputeQuadKey(++nodeLevel, box);
    return std::unique_ptr<QuadTreeNode>(new QuadTreeNode(key, nodeLevel));
}

std::unique_ptr<QuadTreeNode> QuadTreeNode::CreateExpanded(std::unique_ptr<QuadTreeNode> existing, const FlatBox& box) {
    if (existing == nullptr) return CreateNode(box);
    FlatBox both = existing->square.GetBox();
    both.Cover(box);
    std::unique_ptr<QuadTreeNode> node = CreateNode(both);
    node->Adopt(std::move(existing));
    return node;
}

}  // namespace Kalvio::Math::SpatialIndexes
