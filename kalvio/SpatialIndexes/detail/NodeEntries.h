#pragma once

#include "kalvio/SpatialIndexes/detail/EntryBlock.h"

#include <memory>
#include <utility>
#include <vector>

namespace Kalvio::Math::SpatialIndexes::detail {

/// One entry of a box tree on its way into a node: a box with a child node or with an item.
template <class Node>
struct NodeEntry {
    FlatBox box;
    std::unique_ptr<Node> child;
    ISpatialIndexData* item = nullptr;
};

/// What a node of a box tree holds: a box per entry and, in the same order, either child nodes, which it owns, or
/// items, which it does not. Searches run over the block alone. `Node` shows its entries by `GetEntries()`.
template <class Node>
class NodeEntries {
public:
    /// Room is for `room` entries at all times.
    NodeEntries(bool leafLevel, unsigned int dimension, unsigned int room, EntryBlock::Shelf* shelf = nullptr)
        : block(EntryBlock::Make(leafLevel, dimension, room, shelf)) {}
    NodeEntries(const NodeEntries& other)
        : NodeEntries(other.HoldsItems(), other.Boxes().GetDimension(), other.block->GetRoom()) {
        for (unsigned int i = 0; i < other.GetCount(); ++i) {
            if (HoldsItems()) {
                Append({other.GetBox(i), nullptr, other.Item(i)});
            } else {
                Append({other.GetBox(i), std::make_unique<Node>(other.Child(i)), nullptr});
            }
        }
    }
    NodeEntries(NodeEntries&&) noexcept = default;
    NodeEntries& operator=(const NodeEntries& other) { return *this = NodeEntries(other); }
    NodeEntries& operator=(NodeEntries&&) noexcept = default;
    ~NodeEntries() = default;

    const EntryBlock& Block() const { return *block; }
    bool HoldsItems() const { return block->IsLeafLevel(); }
    unsigned int GetCount() const { return block->GetCount(); }
    BoxPairs Boxes() const { return block->Boxes(); }
    FlatBox GetBox(unsigned int i) const { return Boxes().Get(i); }
    void SetBox(unsigned int i, const FlatBox& box) { block->SetBox(i, box); }
    FlatBox Cover() const { return Boxes().Cover(GetCount()); }
    Node& Child(unsigned int i) const { return *children[i]; }
    ISpatialIndexData* Item(unsigned int i) const { return block->GetTarget(i).item; }

    void Append(NodeEntry<Node> entry) {
        EntryBlock::Target target;
        if (HoldsItems()) {
            target.item = entry.item;
        } else {
            target.child = &entry.child->GetEntries().Block();
            children.push_back(std::move(entry.child));
        }
        block->Append(entry.box, target);
    }
    /// An item with the lower and upper bounds of its box, axis by axis.
    void AppendItem(const double* bounds, ISpatialIndexData* item) {
        EntryBlock::Target target;
        target.item = item;
        block->Append(bounds, target);
    }
    /// The last entry takes its place.
    void Erase(unsigned int i) {
        block->Erase(i);
        if (HoldsItems()) return;
        std::swap(children[i], children.back());
        children.pop_back();
    }
    std::unique_ptr<Node> TakeChild(unsigned int i) {
        std::unique_ptr<Node> child = std::move(children[i]);
        Erase(i);
        return child;
    }
    /// Reads ahead of a walk to a child that will change it.
    void FetchChild(unsigned int i) const { block->FetchAllOfChild(i); }
    /// Empties the node; there is room for some more.
    std::vector<NodeEntry<Node>> TakeAll(unsigned int nrOfMore = 0) {
        std::vector<NodeEntry<Node>> all;
        all.reserve(GetCount() + nrOfMore);
        for (unsigned int i = 0; i < GetCount(); ++i) {
            if (HoldsItems()) {
                all.push_back({GetBox(i), nullptr, Item(i)});
            } else {
                all.push_back({GetBox(i), std::move(children[i]), nullptr});
            }
        }
        block->Clear();
        children.clear();
        return all;
    }

private:
    EntryBlock::Owner block;
    std::vector<std::unique_ptr<Node>> children;
};

}  // namespace Kalvio::Math::SpatialIndexes::detail
