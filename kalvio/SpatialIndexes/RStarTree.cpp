#include "kalvio/SpatialIndexes/RStarTree.h"

#include "kalvio/SpatialIndexes/RStarTreeNode.h"
#include "kalvio/SpatialIndexes/detail/Answers.h"
#include "kalvio/SpatialIndexes/detail/EnvelopeReader.h"
#include "kalvio/SpatialIndexes/detail/Packing.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace Kalvio::Math::SpatialIndexes {

namespace {

/// Compact nodes that windows reach into as little as can be, with room for what is inserted later.
constexpr detail::PackingRules packingRules{RStarTreeNode::fewestEntries, RStarTreeNode::mostEntries, 48};

}  // namespace

struct RStarTreeData {
    std::unique_ptr<RStarTreeNode> root;  // null before the first insertion
    unsigned int dimension;
    unsigned int nrOfItems = 0;
    bool deletes;
    std::vector<ISpatialIndexData*> unplaced;  // their boxes have a NaN bound: nothing finds them
    detail::EnvelopeReader envelopes;

    explicit RStarTreeData(unsigned int axes = 2, bool deleteFlag = false)
        : dimension(axes), deletes(deleteFlag), envelopes(axes) {}

    std::vector<ISpatialIndexData*> Items() const {
        std::vector<ISpatialIndexData*> items;
        items.reserve(nrOfItems);
        auto collect = [&items](ISpatialIndexData* item) { items.push_back(item); };
        if (root != nullptr) root->GetEntries().Block().FindAll(collect);
        items.insert(items.end(), unplaced.begin(), unplaced.end());
        return items;
    }

    std::vector<ISpatialIndexData*> DistinctItems() const {
        std::vector<ISpatialIndexData*> items = Items();
        std::sort(items.begin(), items.end(), std::less<>());
        items.erase(std::unique(items.begin(), items.end()), items.end());
        return items;
    }

    /// Each item once, but for those that the other tree holds too.
    void DeleteItems(const RStarTreeData* keeper = nullptr) const {
        const std::vector<ISpatialIndexData*> kept =
            keeper != nullptr ? keeper->DistinctItems() : std::vector<ISpatialIndexData*>();
        for (ISpatialIndexData* item : DistinctItems()) {
            if (!std::binary_search(kept.begin(), kept.end(), item, std::less<>())) delete item;
        }
    }

    /// Null while there is no root.
    const detail::EntryBlock* Block() const { return root == nullptr ? nullptr : &root->GetEntries().Block(); }

    auto Walk() const {
        return [this](const auto& nodeQuery, const auto& itemQuery, auto& found) {
            if (root != nullptr) root->GetEntries().Block().Search(nodeQuery, itemQuery, found);
        };
    }

    std::unique_ptr<RStarTreeNode> MakeNode(unsigned int level, detail::EntryBlock::Shelf& shelf) const {
        return std::unique_ptr<RStarTreeNode>(new RStarTreeNode(level == 0, dimension, deletes, &shelf));
    }
    static detail::NodeEntries<RStarTreeNode>& EntriesOf(RStarTreeNode& node) { return node.entries; }
    static void Close(RStarTreeNode& node) { node.UpdateBox(); }

    void Insert(const detail::FlatBox& box, ISpatialIndexData* item) {
        if (box.HasNaN()) {
            unplaced.push_back(item);
            return;
        }
        if (root == nullptr) root = std::make_unique<RStarTreeNode>(true, dimension, deletes);
        RStarTreeNode::Insertion insertion;
        InsertFromRoot(box, item, insertion);
        // Forced reinsertion waits until the walk down has come back up: it may split the nodes on the way.
        const std::vector<RStarTreeNode::Entry> removed = std::move(insertion.removed);
        for (const RStarTreeNode::Entry& entry : removed) InsertFromRoot(entry.box, entry.item, insertion);
    }

    void InsertFromRoot(const detail::FlatBox& box, ISpatialIndexData* item, RStarTreeNode::Insertion& insertion) {
        std::unique_ptr<RStarTreeNode> sibling = root->Insert(box, item, true, insertion);
        if (sibling == nullptr) return;
        auto above = std::make_unique<RStarTreeNode>(false, dimension, deletes);
        for (std::unique_ptr<RStarTreeNode>* half : {&root, &sibling}) {
            const detail::FlatBox halfBox = (*half)->box;
            above->entries.Append({halfBox, std::move(*half), nullptr});
        }
        above->UpdateBox();
        root = std::move(above);
    }
};

RStarTree::RStarTree(bool deleteFlag) {
    if (deleteFlag) data->deletes = true;
}

RStarTree::RStarTree(const RStarTree& other) : RStarTree(false) { *this = other; }

RStarTree& RStarTree::operator=(const RStarTree& other) {
    if (this == &other) return *this;
    auto copy = std::make_unique<RStarTreeData>(other.data->dimension, false);
    if (other.data->root != nullptr) copy->root = std::make_unique<RStarTreeNode>(*other.data->root);
    copy->nrOfItems = other.data->nrOfItems;
    copy->unplaced = other.data->unplaced;
    if (std::as_const(data)->deletes) data->DeleteItems(copy.get());
    data = std::move(copy);
    return *this;
}

RStarTree::RStarTree(RStarTree&& other) noexcept = default;

RStarTree& RStarTree::operator=(RStarTree&& other) noexcept {
    if (this == &other) return *this;
    if (std::as_const(data)->deletes) data->DeleteItems(&*std::as_const(other.data));
    data = std::move(other.data);
    return *this;
}

RStarTree::~RStarTree() {
    if (std::as_const(data)->deletes) data->DeleteItems();
}

void RStarTree::SetDimension(int dimension) {
    const auto wanted = static_cast<unsigned int>(dimension);
    if (dimension < 1 || dimension > largestDimension || wanted == data->dimension) return;
    auto anew = std::make_unique<RStarTreeData>(wanted, data->deletes);
    detail::InsertTogether(*anew, data->Items(), packingRules);
    data = std::move(anew);
}

int RStarTree::GetDimension() const { return static_cast<int>(data->dimension); }

bool RStarTree::Insert(const ISpatialIndexData* item) {
    if (item == nullptr) return false;
    data->Insert(data->envelopes.Read(*item),
                 const_cast<ISpatialIndexData*>(item));  // searches hand out items to be changed
    ++data->nrOfItems;
    return true;
}

bool RStarTree::Insert(std::span<const ISpatialIndexData* const> items) {
    if (std::find(items.begin(), items.end(), nullptr) != items.end()) return false;
    detail::InsertTogether(*data, items, packingRules);
    return true;
}

bool RStarTree::Remove(const ISpatialIndexData* item) {
    if (item == nullptr) return false;
    const detail::FlatBox itemBox = data->envelopes.Read(*item);
    if (itemBox.HasNaN()) {
        const std::size_t nrOfRemoved = std::erase(data->unplaced, item);
        data->nrOfItems -= static_cast<unsigned int>(nrOfRemoved);
        return nrOfRemoved > 0;
    }
    RStarTreeNode::Removal removal{item, itemBox, 0, {}};
    if (data->root == nullptr || !data->root->box.Intersects(itemBox) || !data->root->Remove(removal)) return false;
    data->nrOfItems -= removal.nrOfLeaves;

    while (!data->root->HoldsLeaves() && data->root->GetNrOfEntries() == 1) {
        data->root = data->root->entries.TakeChild(0);
    }
    if (data->root->GetNrOfEntries() == 0) {
        data->root = std::make_unique<RStarTreeNode>(true, data->dimension, data->deletes);
    }
    for (const RStarTreeNode::Entry& orphan : removal.orphans) data->Insert(orphan.box, orphan.item);
    return true;
}

int RStarTree::SearchAndVisit(const PointND& point, const ISpatialIndexVisit& visitor) const {
    return detail::VisitAnswers(data->Walk(), visitor, data->dimension, point);
}

int RStarTree::SearchAndVisit(const BoundingBoxND& box, bool overlap, const ISpatialIndexVisit& visitor) const {
    return detail::VisitAnswers(data->Walk(), visitor, data->dimension, box, overlap);
}

std::uint64_t RStarTree::Search(const PointND& point, std::list<ISpatialIndexData*>& items) const {
    return detail::ListAnswers(data->Walk(), items, data->dimension, point);
}

std::uint64_t RStarTree::Search(const BoundingBoxND& box, bool overlap, std::list<ISpatialIndexData*>& items) const {
    return detail::ListAnswers(data->Walk(), items, data->dimension, box, overlap);
}

int RStarTree::SearchInto(const PointND& point, const detail::ItemSink& sink) const {
    return detail::SinkAnswers(data->Walk(), sink, data->dimension, point);
}

int RStarTree::SearchInto(const BoundingBoxND& box, bool overlap, const detail::ItemSink& sink) const {
    return detail::SinkAnswers(data->Walk(), sink, data->dimension, box, overlap);
}

std::uint64_t RStarTree::SearchNearest(const PointND& point, std::uint64_t most, double within,
                                       std::vector<ISpatialIndexData*>& items) const {
    return detail::FindNearest(data->Block(), data->dimension, point, most, within, items);
}

std::uint64_t RStarTree::SearchNearest(const BoundingBoxND& box, std::uint64_t most, double within,
                                       std::vector<ISpatialIndexData*>& items) const {
    return detail::FindNearest(data->Block(), data->dimension, box, most, within, items);
}

SpatialIndexTypes RStarTree::GetType() const { return SpatialIndexTypes::RStarTree; }

bool RStarTree::GetDelete() const { return data->deletes; }

unsigned int RStarTree::GetNrOfItems() const { return data->nrOfItems; }

const RStarTreeNode* RStarTree::GetRoot() const { return data->root.get(); }

}  // namespace Kalvio::Math::SpatialIndexes
