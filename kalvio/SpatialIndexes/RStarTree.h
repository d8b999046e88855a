#pragma once

#include "kalvio/SpatialIndexes/ISpatialIndex.h"
#include "kalvio/SpatialIndexes/detail/OwnData.h"

namespace Kalvio::Math::SpatialIndexes {

class RStarTreeNode;
struct RStarTreeData;

/// R*-tree: a balanced tree of boxes with up to 64 entries per node, in any dimension. The index to take when items
/// come and go and searches matter.
///
/// Some 90 bytes an item in plan. Insertion, removal and small searches cost O(log n). An item that is inserted twice
/// is found twice and removed by one call. A copy shares the items and copies the nodes.
class KALVIO_MATH_API RStarTree final : public ISpatialIndex {
public:
    static constexpr int largestDimension = 1024;  ///< larger ones change nothing

    /// An empty tree of dimension 2.
    /// @param deleteFlag  whether the tree owns its items: its destructor deletes those that are in it then, each once,
    ///                    and an assignment to it those that the assigned tree does not hold. `Remove` never deletes.
    explicit RStarTree(bool deleteFlag = false);
    /// The copy does not own the items.
    RStarTree(const RStarTree& other);
    RStarTree& operator=(const RStarTree& other);
    /// Takes over what the other holds, the ownership of items included; the other is an empty new tree then.
    RStarTree(RStarTree&& other) noexcept;
    RStarTree& operator=(RStarTree&& other) noexcept;
    ~RStarTree() override;

    /// Items' boxes are sized to the dimension: further axes are dropped, missing ones are 0 ... 0. Items that are in
    /// the tree are inserted anew. Dimensions outside 1 ... `largestDimension` change nothing.
    void SetDimension(int dimension) override;
    int GetDimension() const override;
    bool Insert(const ISpatialIndexData* item) override;
    bool Insert(std::span<const ISpatialIndexData* const> items) override;
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

    /// Whether the tree owns its items.
    bool GetDelete() const;
    /// Number of items, those inserted twice counted twice.
    unsigned int GetNrOfItems() const;
    /// Null before the first insertion; owned by the tree and valid until it changes.
    const RStarTreeNode* GetRoot() const;

protected:
    int SearchInto(const PointND& point, const detail::ItemSink& sink) const override;
    int SearchInto(const BoundingBoxND& box, bool overlap, const detail::ItemSink& sink) const override;

private:
    detail::OwnData<RStarTreeData> data;
};

}  // namespace Kalvio::Math::SpatialIndexes
