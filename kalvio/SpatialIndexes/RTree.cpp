#include "kalvio/SpatialIndexes/RTree.h"

#include "kalvio/SpatialIndexes/RTreeNode.h"
#include "kalvio/SpatialIndexes/detail/Answers.h"
#include "kalvio/SpatialIndexes/detail/EnvelopeReader.h"
#include "kalvio/SpatialIndexes/detail/Packing.h"
#include "kalvio/core/detail/Constants.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace Kalvio::Math::SpatialIndexes {

namespace {

/// Volume of the ball of radius 1: pi^(n/2) / Gamma(n/2 + 1), by V(n) = V(n - 2) 2 pi / n. The least normal double
/// takes the place of what is less.
double UnitSphereVolume(unsigned int dimension) {
    double volume = dimension % 2 == 0 ? 1.0 : 2.0;
    for (unsigned int n = dimension % 2 == 0 ? 2 : 3; n <= dimension; n += 2) volume *= Math::detail::twoPi / n;
    return std::max(volume, std::numeric_limits<double>::min());
}

/// A box with its corners in order.
detail::FlatBox Ordered(const detail::FlatBox& box) {
    detail::FlatBox ordered(box.GetDimension());
    ordered.Cover(box);
    return ordered;
}

constexpr detail::PackingRules packingRules{RTreeNode::fewestBranches, RTreeNode::mostBranches, 8};

}  // namespace

struct RTreeData {
    std::unique_ptr<RTreeNode> root;  // null before the first insertion
    unsigned int dimension;
    double unitSphereVolume;
    unsigned int nrOfItems = 0;
    std::vector<ISpatialIndexData*> unplaced;  // their boxes have a NaN bound: nothing finds them
    detail::EnvelopeReader envelopes;

    explicit RTreeData(unsigned int axes = 2)
        : dimension(axes), unitSphereVolume(UnitSphereVolume(axes)), envelopes(axes) {}

    std::vector<ISpatialIndexData*> Items() const {
        std::vector<ISpatialIndexData*> items = unplaced;
        auto collect = [&items](ISpatialIndexData* item) { items.push_back(item); };
        if (root != nullptr) root->GetEntries().Block().FindAll(collect);
        return items;
    }

    /// Null while there is no root.
    const detail::EntryBlock* Block() const { return root == nullptr ? nullptr : &root->GetEntries().Block(); }

    auto Walk() const {
        return [this](const auto& nodeQuery, const auto& itemQuery, auto& found) {
            if (root != nullptr) root->GetEntries().Block().Search(nodeQuery, itemQuery, found);
        };
    }

    std::unique_ptr<RTreeNode> MakeNode(unsigned int level, detail::EntryBlock::Shelf& shelf) const {
        return std::unique_ptr<RTreeNode>(new RTreeNode(level, dimension, &shelf));
    }
    static detail::NodeEntries<RTreeNode>& EntriesOf(RTreeNode& node) { return node.entries; }
    static void Close(const RTreeNode&) {}

    void Insert(const detail::FlatBox& box, ISpatialIndexData* item) {
        if (box.HasNaN()) {
            unplaced.push_back(item);
            return;
        }
        if (root == nullptr) root = std::make_unique<RTreeNode>(0, dimension);
        RTreeNode::Branch branch{box, nullptr, item};
        std::unique_ptr<RTreeNode> sibling = root->Insert(branch, Ordered(box), unitSphereVolume);
        if (sibling == nullptr) return;
        auto above = std::make_unique<RTreeNode>(root->level + 1, dimension);
        for (std::unique_ptr<RTreeNode>* half : {&root, &sibling}) {
            const detail::FlatBox cover = (*half)->entries.Cover();
            above->entries.Append({cover, std::move(*half), nullptr});
        }
        root = std::move(above);
    }

    bool Remove(const ISpatialIndexData& item) {
        const detail::FlatBox box = envelopes.Read(item);
        if (box.HasNaN()) {
            const auto place = std::find(unplaced.begin(), unplaced.end(), &item);
            if (place == unplaced.end()) return false;
            unplaced.erase(place);
            return true;
        }
        if (root == nullptr || !root->Remove(Ordered(box), &item, unitSphereVolume)) return false;
        while (root->level > 0 && root->GetNrOfBranches() == 1) root = root->entries.TakeChild(0);
        return true;
    }
};

RTree::RTree() = default;

RTree::RTree(const RTree& other) : RTree() { *this = other; }

RTree& RTree::operator=(const RTree& other) {
    if (this == &other) return *this;
    auto copy = std::make_unique<RTreeData>(other.data->dimension);
    if (other.data->root != nullptr) copy->root = std::make_unique<RTreeNode>(*other.data->root);
    copy->nrOfItems = other.data->nrOfItems;
    copy->unplaced = other.data->unplaced;
    data = std::move(copy);
    return *this;
}

RTree::RTree(RTree&& other) noexcept = default;

RTree& RTree::operator=(RTree&& other) noexcept = default;

RTree::~RTree() = default;

void RTree::SetDimension(int dimension) {
    const auto wanted = static_cast<unsigned int>(dimension);
    if (dimension < 1 || dimension > largestDimension || wanted == data->dimension) return;
    auto anew = std::make_unique<RTreeData>(wanted);
    detail::InsertTogether(*anew, data->Items(), packingRules);
    data = std::move(anew);
}

int RTree::GetDimension() const { return static_cast<int>(data->dimension); }

bool RTree::Insert(const ISpatialIndexData* item) {
    if (item == nullptr) return false;
    data->Insert(data->envelopes.Read(*item),
                 const_cast<ISpatialIndexData*>(item));  // searches hand out items to be changed
    ++data->nrOfItems;
    return true;
}

bool RTree::Insert(std::span<const ISpatialIndexData* const> items) {
    if (std::find(items.begin(), items.end(), nullptr) != items.end()) return false;
    detail::InsertTogether(*data, items, packingRules);
    return true;
}

bool RTree::Remove(const ISpatialIndexData* item) {
    if (item == nullptr || !data->Remove(*item)) return false;
    --data->nrOfItems;
    return true;
}

int RTree::SearchAndVisit(const PointND& point, const ISpatialIndexVisit& visitor) const {
    return detail::VisitAnswers(data->Walk(), visitor, data->dimension, point);
}

int RTree::SearchAndVisit(const BoundingBoxND& box, bool overlap, const ISpatialIndexVisit& visitor) const {
    return detail::VisitAnswers(data->Walk(), visitor, data->dimension, box, overlap);
}

std::uint64_t RTree::Search(const PointND& point, std::list<ISpatialIndexData*>& items) const {
    return detail::ListAnswers(data->Walk(), items, data->dimension, point);
}

std::uint64_t RTree::Search(const BoundingBoxND& box, bool overlap, std::list<ISpatialIndexData*>& items) const {
    return detail::ListAnswers(data->Walk(), items, data->dimension, box, overlap);
}

int RTree::SearchInto(const PointND& point, const detail::ItemSink& sink) const {
    return detail::SinkAnswers(data->Walk(), sink, data->dimension, point);
}

int RTree::SearchInto(const BoundingBoxND& box, bool overlap, const detail::ItemSink& sink) const {
    return detail::SinkAnswers(data->Walk(), sink, data->dimension, box, overlap);
}

std::uint64_t RTree::SearchNearest(const PointND& point, std::uint64_t most, double within,
                                   std::vector<ISpatialIndexData*>& items) const {
    return detail::FindNearest(data->Block(), data->dimension, point, most, within, items);
}

std::uint64_t RTree::SearchNearest(const BoundingBoxND& box, std::uint64_t most, double within,
                                   std::vector<ISpatialIndexData*>& items) const {
    return detail::FindNearest(data->Block(), data->dimension, box, most, within, items);
}

SpatialIndexTypes RTree::GetType() const { return SpatialIndexTypes::RTree; }

const RTreeNode* RTree::GetRoot() const { return data->root.get(); }

}  // namespace Kalvio::Math::SpatialIndexes
