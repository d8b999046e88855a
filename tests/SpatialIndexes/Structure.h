#pragma once

#include "SpatialIndexes/Items.h"
#include "fuzz/Bytes.h"

/// Checks what holds in every tree at any time: boxes contain what is below them, levels are even, nodes are filled.
namespace Kalvio::Math::SpatialIndexes {

/// An item's box as its parents must contain it: corners in order.
inline BoundingBoxND Ordered(const BoundingBoxND& box) {
    BoundingBoxND ordered(box.GetDimension());
    ordered.Reset();
    return ordered + BoundingBoxND(box.GetMinPoint(), box.GetMinPoint()) +
           BoundingBoxND(box.GetMaxPoint(), box.GetMaxPoint());
}

/// Exactly, infinite bounds included.
inline bool Same(const BoundingBoxND& a, const BoundingBoxND& b) { return a.Contains(b) && b.Contains(a); }

/// @return number of items below
inline std::size_t CheckNode(const RStarTreeNode& node, bool isRoot, int& depth) {
    const unsigned int n = node.GetNrOfEntries();
    Require(n <= RStarTreeNode::mostEntries);
    Require(n >= (!isRoot ? RStarTreeNode::fewestEntries : node.HoldsLeaves() ? 0U : 2U));
    const BoundedItem& bounds = node;
    BoundingBoxND cover(bounds.GetBox().GetDimension());
    cover.Reset();
    std::size_t items = 0;
    depth = 0;
    for (unsigned int i = 0; i < n; ++i) {
        if (node.HoldsLeaves()) {
            const RStarLeaf leaf = node.GetLeaf(i);
            Require(leaf.GetItem() != nullptr);
            cover += Ordered(leaf.GetBox());
            ++items;
            continue;
        }
        int childDepth = 0;
        const RStarTreeNode& child = *node.GetChild(i);
        items += CheckNode(child, false, childDepth);
        cover += child.GetBox();
        Require(Same(node.GetEntries().GetBox(i).ToBoundingBox(), child.GetBox()));
        Require(i == 0 || depth == childDepth + 1);  // even levels
        depth = childDepth + 1;
    }
    Require(n == 0 || Same(bounds.GetBox(), cover));  // the cover of the entries
    return items;
}

inline std::size_t CheckNode(const RTreeNode& node, bool isRoot, BoundingBoxND& cover) {
    const unsigned int n = node.GetNrOfBranches();
    Require(n <= RTreeNode::mostBranches);
    Require(n >= (!isRoot ? RTreeNode::fewestBranches : node.GetLevel() == 0 ? 0U : 2U));
    std::size_t items = 0;
    for (unsigned int i = 0; i < n; ++i) {
        const BoundingBoxND box = node.GetBranchBox(i);
        if (i == 0) cover = Ordered(box);
        cover += Ordered(box);
        if (node.GetLevel() == 0) {
            ++items;
            continue;
        }
        const RTreeNode& child = *node.GetChild(i);
        Require(child.GetLevel() + 1 == node.GetLevel());
        BoundingBoxND below;
        items += CheckNode(child, false, below);
        Require(Same(box, below));  // the cover of the branches
    }
    return items;
}

inline std::size_t CheckNode(const QuadTreeNode& node, bool isRoot) {
    std::size_t items = node.GetItems().size();
    const BoundingBoxND* const square = node.GetEnvelope();
    Require((square == nullptr) == isRoot);
    for (ISpatialIndexData* item : node.GetItems()) {
        Require(isRoot || square->Contains(static_cast<Item*>(item)->box));
    }
    for (int quadrant = 0; quadrant < 4; ++quadrant) {
        const QuadTreeNode* const child = node.GetSubnode(quadrant);
        if (child == nullptr) continue;
        if (isRoot) {
            Require(QuadTreeNode::GetSubnodeIndex(*child->GetEnvelope(), PointND(2U)) == quadrant);
        } else {
            Require(child->GetLevel() + 1 == node.GetLevel());
            Require(square->Contains(*child->GetEnvelope()));
        }
        const double side = std::ldexp(1.0, child->GetLevel());  // unless lost in the rounding of the place
        if (std::isfinite(side) && side > std::ldexp(std::abs(child->GetEnvelope()->GetCenter()[0]), -51)) {
            Require(child->GetEnvelope()->GetSize()[0] == side);
        }
        items += CheckNode(*child, false);
    }
    return items;
}

inline void CheckStructure(const RStarTree& tree, std::size_t nrOfUnplaced, std::size_t nrOfItems) {
    Require(tree.GetNrOfItems() == nrOfItems);
    int depth = 0;
    if (tree.GetRoot() != nullptr) {
        Require(CheckNode(*tree.GetRoot(), true, depth) + nrOfUnplaced == nrOfItems);
    }
}

inline void CheckStructure(const RTree& tree, std::size_t nrOfUnplaced, std::size_t nrOfItems) {
    BoundingBoxND cover;
    if (tree.GetRoot() != nullptr) {
        Require(CheckNode(*tree.GetRoot(), true, cover) + nrOfUnplaced == nrOfItems);
    }
}

inline void CheckStructure(const QuadTree& tree, std::size_t, std::size_t nrOfItems) {
    Require(CheckNode(*tree.GetRoot(), true) == nrOfItems);
    Require(static_cast<std::size_t>(tree.GetRoot()->Size()) == nrOfItems);
}

}  // namespace Kalvio::Math::SpatialIndexes
