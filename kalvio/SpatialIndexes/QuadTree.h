#pragma once

#include "kalvio/SpatialIndexes/ISpatialIndex.h"
#include "kalvio/SpatialIndexes/detail/OwnData.h"

namespace Kalvio::Math::SpatialIndexes {

class QuadTreeNode;
struct QuadTreeData;

/// Quadtree in plan, without bounds: an item lives in the smallest square of the grid of powers of two that holds its
/// box. Quick to fill; the choice when items are small, spread evenly, and change often.
///
/// Items that cross the x or y axis, and items with a bound that is not finite, are kept in one list and looked at by
/// every search: move coordinates that straddle the axes, or take an `RStarTree`. Depth grows with the ratio of the
/// extent of all items to the smallest, and small items take some 190 bytes each. A copy shares the items and copies
/// the nodes.
class KALVIO_MATH_API QuadTree final : public ISpatialIndex {
public:
    QuadTree();
    QuadTree(const QuadTree& other);
    QuadTree& operator=(const QuadTree& other);
    /// Takes over what the other holds, which is an empty new tree then.
    QuadTree(QuadTree&& other) noexcept;
    QuadTree& operator=(QuadTree&& other) noexcept;
    ~QuadTree() override;

    /// Nothing changes: the first two axes count.
    void SetDimension(int dimension) override;
    int GetDimension() const override { return 2; }
    bool Insert(const ISpatialIndexData* item) override;
    bool Insert(std::span<const ISpatialIndexData* const> items) override;
    /// An item that was inserted twice is removed once.
    bool Remove(const ISpatialIndexData* item) override;
    bool Build() override { return true; }
    int SearchAndVisit(const PointND& point, const ISpatialIndexVisit& visitor) const override;
    int SearchAndVisit(const BoundingBoxND& box, bool overlap, const ISpatialIndexVisit& visitor) const override;
    std::uint64_t Search(const PointND& point, std::list<ISpatialIndexData*>& items) const override;
    std::uint64_t Search(const BoundingBoxND& box, bool overlap, std::list<ISpatialIndexData*>& items) const override;
    using ISpatialIndex::Search;
    SpatialIndexTypes GetType() const override;
    std::uint64_t SearchNearest(const PointND& point, std::uint64_t most, double within,
                                std::vector<ISpatialIndexData*>& items) const override;
    std::uint64_t SearchNearest(const BoundingBoxND& box, std::uint64_t most, double within,
                                std::vector<ISpatialIndexData*>& items) const override;

    /// Owned by the tree; never null.
    const QuadTreeNode* GetRoot() const;
    /// Smallest positive width or height of an item so far, at most 1: boxes without width or height are placed as if
    /// they were this wide.
    double GetMinimumExtent() const;

protected:
    int SearchInto(const PointND& point, const detail::ItemSink& sink) const override;
    int SearchInto(const BoundingBoxND& box, bool overlap, const detail::ItemSink& sink) const override;

private:
    detail::OwnData<QuadTreeData> data;
};

}  // namespace Kalvio::Math::SpatialIndexes
