#pragma once

#include "kalvio/SpatialIndexes/ISpatialIndexNode.h"
#include "kalvio/SpatialIndexes/detail/PlanItems.h"

#include <array>
#include <atomic>
#include <list>
#include <memory>
#include <span>
#include <vector>

namespace Kalvio::Math::SpatialIndexes {

class ISpatialIndexData;
class ISpatialIndexVisit;

namespace detail {

class NearestItems;
struct ItemSink;

/// Items on their way into a quadtree all at once.
struct Arrivals {
    explicit Arrivals(std::span<const ISpatialIndexData* const> given) : items(given) { places.reserve(given.size()); }

    std::span<const ISpatialIndexData* const> items;
    std::vector<PlanBox> places;  // decide on the nodes

    /// The next of the items, with the box that is kept for the searches.
    void Add(const PlanBox& place, const PlanBox& box);
    const PlanBox& KeptBox(std::size_t i) const { return boxes.empty() ? places[i] : boxes[i]; }
    ISpatialIndexData* Item(std::size_t i) const { return const_cast<ISpatialIndexData*>(items[i]); }

private:
    std::vector<PlanBox> boxes;  // none while all are kept as they are placed
};

}  // namespace detail

/// Node of a `QuadTree`: a square of side 2^level on the global grid of that side, or the root, which covers the plane
/// and splits at the origin.
///
///     +---+---+
///     | 2 | 3 |    quadrants of a node; a box on the line between two belongs to the low one where it fits
///     +---+---+
///     | 0 | 1 |
///     +---+---+
///
/// A node holds the items that fit into its square and into no child's, in the order of insertion, with the boxes they
/// had then. The root also holds items with a bound that is not finite or with a minimum above the maximum.
class KALVIO_MATH_API QuadTreeNode final : public ISpatialIndexNode {
public:
    static constexpr int highestLevel = 1024;  ///< two squares of this level and the axes make the plane
    static constexpr int lowestLevel = -1074;  ///< the side is the least positive double

    /// A root.
    QuadTreeNode();
    /// A node of a square and its level. Takes ownership of the box; null makes a root.
    QuadTreeNode(BoundingBoxND* square, int squareLevel);
    /// Copies the nodes below, not the items.
    QuadTreeNode(const QuadTreeNode& other);
    QuadTreeNode& operator=(const QuadTreeNode& other);
    ~QuadTreeNode() override;

    SpatialIndexNodeTypes GetType() const override;

    /// The square; null for the root. Owned by the node.
    const BoundingBoxND* GetEnvelope() const;
    int GetLevel() const { return level; }
    const std::vector<ISpatialIndexData*>& GetItems() const { return Show().items; }
    bool HasChildren() const;
    bool HasItems() const { return items.GetCount() > 0; }
    /// Neither children nor items.
    bool IsPrunable() const { return !HasChildren() && !HasItems(); }
    /// 1 + the greatest depth of the children.
    int Depth() const;
    /// Number of items in this node and below.
    int Size() const;
    /// 1 + the `Size` of each child: the children's items are counted, not their nodes.
    int NodeCount() const;
    /// The child in a quadrant; null when there is none.
    QuadTreeNode* GetSubnode(int quadrant) const;
    /// A new node for a quadrant, one level down; it does not become a child by itself.
    /// @return owned by the caller; null for the root, which has no square, and for a quadrant outside 0 ... 3
    [[nodiscard]] QuadTreeNode* CreateSubnode(int quadrant) const;

    /// Appends an item to this node. Below the root its box must lie in the square: searches rely on it.
    void Add(const ISpatialIndexData* item);
    /// Appends the items of this node, then those of children 0 to 3, depth first.
    /// @return the vector
    std::vector<ISpatialIndexData*>* AddAllItems(std::vector<ISpatialIndexData*>* all) const;

    /// Puts an item where the box says. The root creates the child square that holds the box, or enlarges it; then
    /// nodes are created down to the smallest that holds the box, for a box without width or height only looked up.
    void Insert(const BoundingBoxND& box, const ISpatialIndexData* item);
    /// Makes a node of a lower level, inside this square, a descendant: a child when it is one level below, else with
    /// nodes in between. A child in its way is replaced. Takes ownership. A node that does not fit below this one gives
    /// its items to it.
    void InsertNode(QuadTreeNode* node);
    /// Takes an item out of the first node, children before parents, that holds it and whose square meets the box;
    /// nodes that are left empty disappear.
    bool Remove(const BoundingBoxND& box, const ISpatialIndexData* item);
    /// The smallest existing node below (or this one) that holds the box.
    QuadTreeNode* Find(const BoundingBoxND& box);
    /// The smallest possible node below (or this one) that holds the box; created if need be. It ends where a square
    /// can no longer be halved.
    QuadTreeNode* GetNode(const BoundingBoxND& box);

    /// Visits items that intersect the box (`overlap`) or lie inside it, and adds their number to `count`.
    void Visit(const BoundingBoxND& box, bool overlap, const ISpatialIndexVisit& visitor, int& count) const;
    /// Visits items within 0.005 of the point, and adds their number to `count`.
    void Visit(const PointND& point, const ISpatialIndexVisit& visitor, int& count) const;
    /// Appends what `Visit` visits.
    void AddAllItemsFromOverlapping(const BoundingBoxND& box, std::list<ISpatialIndexData*>& found, bool overlap) const;
    void AddAllItemsFromOverlapping(const PointND& point, std::list<ISpatialIndexData*>& found) const;

    /// Offers the items of this node and below that are near enough, nearer children first.
    void SearchNearest(const detail::FlatBox& from, detail::NearestItems& nearest) const;

    /// The quadrant around a centre that holds the whole box; -1 when none does. A box that touches a centre line is
    /// inside; one without width on the vertical line goes to the low side.
    static int GetSubnodeIndex(const BoundingBoxND& box, const PointND& center);

private:
    friend class QuadTree;

    using PlanBox = detail::PlanBox;

    /// What a node keeps in a form of its own, as it is handed out; made when it is asked for.
    struct Shown {
        std::unique_ptr<const BoundingBoxND> square;
        std::vector<ISpatialIndexData*> items;
    };

    class OpenNodes;

    QuadTreeNode(const PlanBox& nodeSquare, int squareLevel);

    const Shown& Show() const;

    static int ComputeQuadLevel(const PlanBox& box);
    static PlanBox ComputeQuadKey(int squareLevel, const PlanBox& box);
    static std::unique_ptr<QuadTreeNode> CreateNode(const PlanBox& box);
    static std::unique_ptr<QuadTreeNode> CreateExpanded(std::unique_ptr<QuadTreeNode> existing, const PlanBox& box);

    PlanBox GetQuadrant(std::size_t quadrant) const;
    void Append(const PlanBox& box, ISpatialIndexData* item);
    /// `place` decides on the node, `box` is kept for the searches.
    void Insert(const PlanBox& place, const PlanBox& box, ISpatialIndexData* item);
    /// As one by one.
    void Insert(const detail::Arrivals& arrivals);
    /// Where no node depends on the order: node by node, so that what is read is at hand.
    void InsertSorted(const detail::Arrivals& arrivals);
    /// The child that leads to an item's node, large enough; null when the item stays in the root.
    QuadTreeNode* MakeChildOfRoot(const PlanBox& place, const PlanBox& box);
    /// The child in a quadrant, created where it may be; null when there is none.
    QuadTreeNode* MakeChild(std::size_t quadrant);
    bool Remove(const PlanBox& box, const ISpatialIndexData* item);
    void Adopt(std::unique_ptr<QuadTreeNode> node);
    QuadTreeNode* Descend(const PlanBox& box, bool create);
    /// Whether the square answers a query as an item's box would.
    template <class NodeQuery>
    bool IsSearchMatch(const NodeQuery& query) const;
    /// Calls `found(item)` for the matches of this node and below; the caller has asked whether this node takes part.
    template <class NodeQuery, class ItemQuery, class Found>
    void Walk(const NodeQuery& nodeQuery, const ItemQuery& itemQuery, Found& found) const;
    /// The same for a node whose square lies inside the window: all that lies inside the square is a match.
    template <class NodeQuery, class ItemQuery, class Found>
    void FindAll(const NodeQuery& nodeQuery, const ItemQuery& itemQuery, Found& found) const;
    /// The same where something reaches out of the square.
    template <class NodeQuery, class ItemQuery, class Found>
    void FindAllButStrays(const NodeQuery& nodeQuery, const ItemQuery& itemQuery, Found& found) const;
    /// `where` is a point, or a box and the overlap flag.
    template <class... Where>
    int SearchInto(const detail::ItemSink& sink, const Where&... where) const;

    // First what a search reads of every node inside its window.
    int level = 0;
    bool isRoot = true;
    bool hasStrays = false;  // an item or a child reaches out of the square
    std::array<std::unique_ptr<QuadTreeNode>, 4> children;
    detail::PlanItems items;
    double centerX = 0.0;  // finite, for the outermost squares too
    double centerY = 0.0;
    PlanBox square;                              // the outermost squares reach to infinity
    mutable std::atomic<Shown*> shown{nullptr};  // owned
};

}  // namespace Kalvio::Math::SpatialIndexes
