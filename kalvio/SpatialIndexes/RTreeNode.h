#pragma once

#include "kalvio/SpatialIndexes/ISpatialIndexNode.h"
#include "kalvio/SpatialIndexes/detail/NodeEntries.h"

#include <memory>
#include <vector>

namespace Kalvio::Math::SpatialIndexes {

/// Node of an `RTree`: up to 8 branches, each a box with a child node, which it owns, or on level 0 with an item.
class KALVIO_MATH_API RTreeNode final : public ISpatialIndexNode {
public:
    static constexpr unsigned int mostBranches = 8;    ///< more are split
    static constexpr unsigned int fewestBranches = 3;  ///< below the root

    /// An empty node.
    explicit RTreeNode(unsigned int nodeLevel = 0, unsigned int dimension = 2)
        : RTreeNode(nodeLevel, dimension, nullptr) {}
    /// Copies the nodes below, not the items.
    RTreeNode(const RTreeNode& other) = default;
    RTreeNode& operator=(const RTreeNode& other);
    ~RTreeNode() override;

    SpatialIndexNodeTypes GetType() const override;
    /// Levels above the leaves.
    unsigned int GetLevel() const { return level; }
    unsigned int GetNrOfBranches() const { return entries.GetCount(); }
    /// The box, child and item of an index below the number of branches. The child is null on level 0, the item above.
    BoundingBoxND GetBranchBox(unsigned int index) const { return entries.GetBox(index).ToBoundingBox(); }
    const RTreeNode* GetChild(unsigned int index) const { return level == 0 ? nullptr : &entries.Child(index); }
    ISpatialIndexData* GetItem(unsigned int index) const { return level == 0 ? entries.Item(index) : nullptr; }

    const detail::NodeEntries<RTreeNode>& GetEntries() const { return entries; }

private:
    friend struct RTreeData;
    using Branch = detail::NodeEntry<RTreeNode>;

    RTreeNode(unsigned int nodeLevel, unsigned int dimension, detail::EntryBlock::Shelf* shelf);
    /// Puts an item somewhere below. Here and in `Remove` its box is given with the corners in order.
    /// @return the new sibling when this node was split, else null
    std::unique_ptr<RTreeNode> Insert(Branch& branch, const detail::FlatBox& box, double unitSphereVolume);
    std::unique_ptr<RTreeNode> Add(Branch branch, double unitSphereVolume);
    bool Remove(const detail::FlatBox& box, const ISpatialIndexData* item, double unitSphereVolume);
    /// Puts a child that fell below the fewest branches together with the one that grows least by it.
    void Refill(unsigned int i, double unitSphereVolume);
    unsigned int ChooseBranch(const detail::FlatBox& box, double unitSphereVolume) const;
    /// Deals out branches to this node and a sibling, both empty. Of all cuts of an order along an axis, by lower or by
    /// upper bounds, this is the one whose sides share the box with the least sphere, and of equal ones that with the
    /// least spheres.
    void Divide(std::vector<Branch>& all, RTreeNode& sibling, double unitSphereVolume);

    unsigned int level;
    detail::NodeEntries<RTreeNode> entries;
};

}  // namespace Kalvio::Math::SpatialIndexes
