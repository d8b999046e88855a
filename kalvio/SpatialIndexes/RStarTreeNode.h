#pragma once

#include "kalvio/SpatialIndexes/BoundedItem.h"
#include "kalvio/SpatialIndexes/ISpatialIndexNode.h"
#include "kalvio/SpatialIndexes/RStarLeaf.h"
#include "kalvio/SpatialIndexes/detail/NodeEntries.h"

#include <memory>
#include <vector>

namespace Kalvio::Math::SpatialIndexes {

/// Node of an `RStarTree`: on the lowest level it holds leaves, above it holds nodes, which it owns.
///
/// Its box covers the boxes of its entries. A copy copies the nodes below, not the items, and never deletes items.
class KALVIO_MATH_API RStarTreeNode final : public BoundedItem, public ISpatialIndexNode {
public:
    static constexpr unsigned int mostEntries = 64;    ///< more are split
    static constexpr unsigned int fewestEntries = 32;  ///< after a split, and below the root always

    /// An empty node; room for its entries is there from the start.
    explicit RStarTreeNode(bool leafLevel = true, unsigned int dimension = 2, bool deleteFlag = false)
        : RStarTreeNode(leafLevel, dimension, deleteFlag, nullptr) {}
    RStarTreeNode(const RStarTreeNode& other);
    RStarTreeNode& operator=(const RStarTreeNode& other);
    ~RStarTreeNode() override;

    SpatialIndexNodeTypes GetType() const override;
    bool HoldsLeaves() const { return entries.HoldsItems(); }
    unsigned int GetNrOfEntries() const { return entries.GetCount(); }
    /// The child of an index below the number of entries; null in a node that holds leaves. Owned by this node.
    const RStarTreeNode* GetChild(unsigned int index) const;
    /// The leaf of an index below the number of entries; one without an item in a node that holds nodes.
    RStarLeaf GetLeaf(unsigned int index) const;

    const detail::NodeEntries<RStarTreeNode>& GetEntries() const { return entries; }

private:
    friend class RStarTree;
    friend struct RStarTreeData;
    using Entry = detail::NodeEntry<RStarTreeNode>;

    RStarTreeNode(bool leafLevel, unsigned int dimension, bool deleteFlag, detail::EntryBlock::Shelf* shelf);

    /// What one insertion has pending.
    struct Insertion {
        bool mayReinsert = true;     // the first overflow below the root reinserts, later ones split
        std::vector<Entry> removed;  // to be inserted again once this insertion is done
    };
    /// What one removal has found.
    struct Removal {
        const ISpatialIndexData* item;
        const detail::FlatBox& itemBox;
        unsigned int nrOfLeaves = 0;  // taken out
        std::vector<Entry> orphans;   // of nodes that fell below the fewest entries
    };

    /// @return the new sibling when this node was split, else null
    std::unique_ptr<RStarTreeNode> Insert(const detail::FlatBox& itemBox, ISpatialIndexData* item, bool isRoot,
                                          Insertion& insertion);
    /// @return whether anything below has changed
    bool Remove(Removal& removal);
    unsigned int ChooseSubtree(const detail::FlatBox& itemBox) const;
    std::unique_ptr<RStarTreeNode> Split();
    std::vector<Entry> TakeFarthest();
    void UpdateBox() { box = entries.Cover(); }

    detail::NodeEntries<RStarTreeNode> entries;
    bool deletes;
};

}  // namespace Kalvio::Math::SpatialIndexes
