#pragma once

#include "kalvio/SpatialIndexes/ISpatialIndex.h"
#include "kalvio/SpatialIndexes/detail/OwnData.h"

namespace Kalvio::Math::SpatialIndexes {

class RTreeNode;
struct RTreeData;

/// R-tree: a balanced tree of boxes with up to 8 branches per node, in any dimension. Changes are cheap and even; for
/// large sets `RStarTree` searches faster.
///
/// Some 135 bytes an item in plan, 85 where all came in one call. A copy shares the items and copies the nodes.
class KALVIO_MATH_API RTree final : public ISpatialIndex {
public:
    static constexpr int largestDimension = 1024;  ///< larger ones change nothing

    /// An empty tree of dimension 2.
    RTree();
    RTree(const RTree& other);
    RTree& operator=(const RTree& other);
    /// Takes over what the other holds, which is an empty new tree then.
    RTree(RTree&& other) noexcept;
    RTree& operator=(RTree&& other) noexcept;
    ~RTree() override;

    /// Items' boxes are sized to the dimension: further axes are dropped, missing ones are 0 ... 0. Items that are in
    /// the tree are inserted anew. Dimensions outside 1 ... `largestDimension` change nothing.
    void SetDimension(int dimension) override;
    int GetDimension() const override;
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

    /// Null before the first insertion; owned by the tree and valid until it changes.
    const RTreeNode* GetRoot() const;

protected:
    int SearchInto(const PointND& point, const detail::ItemSink& sink) const override;
    int SearchInto(const BoundingBoxND& box, bool overlap, const detail::ItemSink& sink) const override;

private:
    detail::OwnData<RTreeData> data;
};

}  // namespace Kalvio::Math::SpatialIndexes
