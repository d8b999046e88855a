#pragma once

#include "kalvio/Export.h"
#include "kalvio/SpatialIndexes/ISpatialIndexVisit.h"
#include "kalvio/SpatialIndexes/SpatialIndexTypes.h"
#include "kalvio/SpatialIndexes/detail/ItemSink.h"

#include <concepts>
#include <cstdint>
#include <functional>
#include <list>
#include <span>
#include <vector>

namespace Kalvio::Math {
class BoundingBoxND;
class PointND;
}  // namespace Kalvio::Math

namespace Kalvio::Math::SpatialIndexes {

class ISpatialIndexData;

/// Index of boxed items, searched by box and by point. It never owns its items unless a class says so.
///
///     // pipe is of a class that derives from ISpatialIndexData and tells its box: GetEnvelope
///     RStarTree index(false);
///     index.Insert(&pipe);
///     std::list<ISpatialIndexData*> found;
///     index.Search(BoundingBoxND(BoundingBox2D(Point2D(0, 0), Point2D(10, 10))), true, found);
///
/// Every index gives the same answers, in an order of its own. Box tests are closed and exact: touching boxes overlap,
/// and a box lies inside itself; point searches reach 0.005 outside a box. A search with fewer axes than the index
/// finds nothing, further axes are ignored. Any box may be inserted: one with a NaN bound is found by no search but can
/// be removed.
///
/// Any number of threads may search one index at once while none changes it.
class KALVIO_MATH_API ISpatialIndex {
public:
    ISpatialIndex() = default;
    ISpatialIndex(const ISpatialIndex&) = default;
    ISpatialIndex& operator=(const ISpatialIndex&) = default;
    virtual ~ISpatialIndex() = default;

    /// Number of axes that count; each class says which it serves.
    virtual void SetDimension(int dimension) = 0;
    virtual int GetDimension() const = 0;
    /// @return true; false, and nothing changes, for a null item
    virtual bool Insert(const ISpatialIndexData* item) = 0;
    /// Takes an item out again; it is looked for where its box says.
    /// @return false, and nothing changes, when the item is not found there
    virtual bool Remove(const ISpatialIndexData* item) = 0;
    /// Nothing to do: an index is ready after every change.
    /// @return true
    virtual bool Build() = 0;
    /// Visits the items whose box holds the point, or lies within 0.005 of it along every axis.
    /// @return number of visits
    virtual int SearchAndVisit(const PointND& point, const ISpatialIndexVisit& visitor) const = 0;
    /// Visits the items whose box intersects the given one (`overlap`), or lies inside it (not `overlap`).
    /// @return number of visits
    virtual int SearchAndVisit(const BoundingBoxND& box, bool overlap, const ISpatialIndexVisit& visitor) const = 0;
    /// Appends what `SearchAndVisit` visits, in its order.
    /// @return size of the list afterwards, what it held before included
    virtual std::uint64_t Search(const PointND& point, std::list<ISpatialIndexData*>& items) const = 0;
    virtual std::uint64_t Search(const BoundingBoxND& box, bool overlap,
                                 std::list<ISpatialIndexData*>& items) const = 0;
    virtual SpatialIndexTypes GetType() const = 0;
    /// Takes many items at once, faster than one by one and for searches that are faster, too. R-trees are packed when
    /// they hold fewer items than are given: all items, the old ones included, are laid out anew in full nodes side by
    /// side. Else, and in a quadtree always, the items go where insertions one by one would put them. Either way later
    /// insertions and removals work as ever.
    /// @return true; false, and nothing changes, when an item is null
    virtual bool Insert(std::span<const ISpatialIndexData* const> items) = 0;
    /// Appends the items nearest to a point or a box, at most so many and none farther than `within` (closed), the
    /// nearest first. The distance is that of the boxes over the axes of the index, 0 where they meet. Of equal
    /// distances the lower corner decides, axis by axis, then the upper one, and of equal boxes the address. Items
    /// whose squared distance is no finite number are not found; a distance whose square vanishes counts as 0.
    /// @return number of items appended
    virtual std::uint64_t SearchNearest(const PointND& point, std::uint64_t most, double within,
                                        std::vector<ISpatialIndexData*>& items) const = 0;
    virtual std::uint64_t SearchNearest(const BoundingBoxND& box, std::uint64_t most, double within,
                                        std::vector<ISpatialIndexData*>& items) const = 0;

    /// Calls `found(item)` for what `SearchAndVisit` visits, in its order: any callable, without a visitor class, and
    /// inlined where many items are found.
    /// @return number of calls
    template <class Found>
    requires std::invocable<Found&, ISpatialIndexData*>
    int Search(const PointND& point, Found&& found) const {
        const auto call = [&found](ISpatialIndexData* item) { std::invoke(found, item); };
        return SearchInto(point, detail::ItemSink::To(call));
    }
    template <class Found>
    requires std::invocable<Found&, ISpatialIndexData*>
    int Search(const BoundingBoxND& box, bool overlap, Found&& found) const {
        const auto call = [&found](ISpatialIndexData* item) { std::invoke(found, item); };
        return SearchInto(box, overlap, detail::ItemSink::To(call));
    }

protected:
    /// What the callable forms call; indexes hand over many items at a time where they can.
    virtual int SearchInto(const PointND& point, const detail::ItemSink& sink) const {
        return SearchAndVisit(point, OneByOne(sink));
    }
    virtual int SearchInto(const BoundingBoxND& box, bool overlap, const detail::ItemSink& sink) const {
        return SearchAndVisit(box, overlap, OneByOne(sink));
    }

private:
    struct OneByOne final : ISpatialIndexVisit {
        explicit OneByOne(const detail::ItemSink& itemSink) : sink(itemSink) {}
        void Visit(ISpatialIndexData* item) const override { sink.take(sink.context, &item, 1); }
        detail::ItemSink sink;
    };
};

}  // namespace Kalvio::Math::SpatialIndexes
