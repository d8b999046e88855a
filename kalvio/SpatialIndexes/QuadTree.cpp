#include "kalvio/SpatialIndexes/QuadTree.h"

#include "kalvio/SpatialIndexes/ISpatialIndexData.h"
#include "kalvio/SpatialIndexes/QuadTreeData.h"
#include "kalvio/SpatialIndexes/detail/Nearest.h"
#include "kalvio/core/detail/Constants.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace Kalvio::Math::SpatialIndexes {

using detail::PlanBox;

namespace {

/// The box that decides on the node: an axis without any extent gets the minimum extent, when one of the two axes has
/// less than 1e-10.
PlanBox Widened(PlanBox box, double extent) {
    const bool isFlat = std::abs(box.maxX - box.minX) < Math::detail::numericalZero ||
                        std::abs(box.maxY - box.minY) < Math::detail::numericalZero;
    if (!isFlat) return box;
    const auto widen = [extent](double& low, double& high) {
        const double value = low;
        if (value != high) return;
        low = value - 0.5 * extent;
        high = value + 0.5 * extent;
    };
    widen(box.minX, box.maxX);
    widen(box.minY, box.maxY);
    return box;
}

/// The box of an item that comes in; it may lower the minimum extent.
PlanBox ReadNew(QuadTreeData& data, const ISpatialIndexData& item, double& minimumExtent) {
    const PlanBox box(data.envelopes.Read(item));
    for (const double extent : {box.maxX - box.minX, box.maxY - box.minY}) {
        if (extent > 0.0 && extent < minimumExtent) minimumExtent = extent;
    }
    return box;
}

}  // namespace

QuadTree::QuadTree() = default;

QuadTree::QuadTree(const QuadTree& other) { *this = other; }

QuadTree& QuadTree::operator=(const QuadTree& other) {
    if (this != &other) data = std::make_unique<QuadTreeData>(*other.data);
    return *this;
}

QuadTree::QuadTree(QuadTree&& other) noexcept = default;

QuadTree& QuadTree::operator=(QuadTree&& other) noexcept = default;

QuadTree::~QuadTree() = default;

void QuadTree::SetDimension(int) {}

bool QuadTree::Insert(const ISpatialIndexData* item) {
    if (item == nullptr) return false;
    const PlanBox box = ReadNew(*data, *item, data->minimumExtent);
    data->root->Insert(Widened(box, data->minimumExtent), box, const_cast<ISpatialIndexData*>(item));
    return true;
}

bool QuadTree::Insert(std::span<const ISpatialIndexData* const> items) {
    if (std::find(items.begin(), items.end(), nullptr) != items.end()) return false;
    detail::Arrivals arrivals(items);
    double minimumExtent = data->minimumExtent;  // an item may throw when it is asked: nothing changes then
    for (const ISpatialIndexData* const item : items) {
        const PlanBox box = ReadNew(*data, *item, minimumExtent);
        arrivals.Add(Widened(box, minimumExtent), box);
    }
    data->minimumExtent = minimumExtent;
    data->root->Insert(arrivals);
    return true;
}

bool QuadTree::Remove(const ISpatialIndexData* item) {
    return item != nullptr &&
           data->root->Remove(Widened(PlanBox(data->envelopes.Read(*item)), data->minimumExtent), item);
}

int QuadTree::SearchAndVisit(const PointND& point, const ISpatialIndexVisit& visitor) const {
    int count = 0;
    data->root->Visit(point, visitor, count);
    return count;
}

int QuadTree::SearchAndVisit(const BoundingBoxND& box, bool overlap, const ISpatialIndexVisit& visitor) const {
    int count = 0;
    data->root->Visit(box, overlap, visitor, count);
    return count;
}

std::uint64_t QuadTree::Search(const PointND& point, std::list<ISpatialIndexData*>& items) const {
    data->root->AddAllItemsFromOverlapping(point, items);
    return items.size();
}

std::uint64_t QuadTree::Search(const BoundingBoxND& box, bool overlap, std::list<ISpatialIndexData*>& items) const {
    data->root->AddAllItemsFromOverlapping(box, items, overlap);
    return items.size();
}

int QuadTree::SearchInto(const PointND& point, const detail::ItemSink& sink) const {
    return data->root->SearchInto(sink, point);
}

int QuadTree::SearchInto(const BoundingBoxND& box, bool overlap, const detail::ItemSink& sink) const {
    return data->root->SearchInto(sink, box, overlap);
}

std::uint64_t QuadTree::SearchNearest(const PointND& point, std::uint64_t most, double within,
                                      std::vector<ISpatialIndexData*>& items) const {
    return detail::FindNearest(data->root.get(), 2, point, most, within, items);
}

std::uint64_t QuadTree::SearchNearest(const BoundingBoxND& box, std::uint64_t most, double within,
                                      std::vector<ISpatialIndexData*>& items) const {
    return detail::FindNearest(data->root.get(), 2, box, most, within, items);
}

SpatialIndexTypes QuadTree::GetType() const { return SpatialIndexTypes::QuadTree; }

const QuadTreeNode* QuadTree::GetRoot() const { return data->root.get(); }

double QuadTree::GetMinimumExtent() const { return data->minimumExtent; }

}  // namespace Kalvio::Math::SpatialIndexes
