#include "kalvio/SpatialIndexes/QuadTree.h"

#include "kalvio/SpatialIndexes/ISpatialIndexData.h"
#include "kalvio/SpatialIndexes/QuadTreeData.h"
#include "kalvio/SpatialIndexes/detail/FlatBox.h"
#include "kalvio/core/detail/Constants.h"

#include <cmath>

namespace Kalvio::Math::SpatialIndexes {

using detail::FlatBox;

namespace {

FlatBox BoxOf(const ISpatialIndexData& item) {
    BoundingBoxND box(2);
    item.GetEnvelope(box);
    return {box, 2};
}

/// The box that decides on the node: an axis without any extent gets the minimum extent, when one of the two axes has
/// less than 1e-10.
FlatBox Widened(FlatBox box, double extent) {
    const auto isFlat = [&box](unsigned int axis) {
        return std::abs(box.High(axis) - box.Low(axis)) < Math::detail::numericalZero;
    };
    if (!isFlat(0) && !isFlat(1)) return box;
    for (unsigned int axis = 0; axis < 2; ++axis) {
        const double value = box.Low(axis);
        if (value == box.High(axis)) box.Set(axis, value - 0.5 * extent, value + 0.5 * extent);
    }
    return box;
}

}  // namespace

QuadTree::QuadTree() : data(std::make_unique<QuadTreeData>()) {}

QuadTree::QuadTree(const QuadTree& other) : data(std::make_unique<QuadTreeData>(*other.data)) {}

QuadTree& QuadTree::operator=(const QuadTree& other) {
    if (this != &other) data = std::make_unique<QuadTreeData>(*other.data);
    return *this;
}

QuadTree::~QuadTree() = default;

void QuadTree::SetDimension(int) {}

bool QuadTree::Insert(const ISpatialIndexData* item) {
    if (item == nullptr) return false;
    const FlatBox box = BoxOf(*item);
    for (unsigned int axis = 0; axis < 2; ++axis) {
        const double extent = box.High(axis) - box.Low(axis);
        if (extent > 0.0 && extent < data->minimumExtent) data->minimumExtent = extent;
    }
    data->root->Insert(Widened(box, data->minimumExtent), box, const_cast<ISpatialIndexData*>(item));
    return true;
}

bool QuadTree::Remove(const ISpatialIndexData* item) {
    return item != nullptr && data->root->Remove(Widened(BoxOf(*item), data->minimumExtent), item);
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

SpatialIndexTypes QuadTree::GetType() const { return SpatialIndexTypes::QuadTree; }

const QuadTreeNode* QuadTree::GetRoot() const { return data->root.get(); }

double QuadTree::GetMinimumExtent() const { return data->minimumExtent; }

}  // namespace Kalvio::Math::SpatialIndexes
