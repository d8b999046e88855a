#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/BoxHierarchy.h"
#include "kalvio/core/detail/Lanes.h"

#include <cstddef>
#include <vector>

namespace Kalvio::Math::detail {

/// The segments of a chain as items of a hierarchy of boxes.
///
/// Segment i joins point i to point i + 1; a ring has one more, from the last point to the first. The points must stay
/// as they are while this object is used.
class ChainSegments {
public:
    enum class Closing : bool { Chain, Ring };

    explicit ChainSegments(const std::vector<Point2D>& chain, Closing closing = Closing::Chain)
        : points(chain.data()),
          last(chain.empty() ? 0 : chain.size() - 1),
          count(chain.size() < 2 ? 0 : last + (closing == Closing::Ring ? 1 : 0)) {}

    std::size_t GetCount() const { return count; }
    const Point2D& GetStart(std::size_t segment) const { return points[segment]; }
    const Point2D& GetEnd(std::size_t segment) const { return points[segment == last ? 0 : segment + 1]; }
    Extent GetExtent(std::size_t segment) const {
        Extent extent;
        extent.Add(GetStart(segment));
        extent.Add(GetEnd(segment));
        return extent;
    }
    Extent GetExtent(std::size_t from, std::size_t to) const {
        const auto at = [](const Point2D& p) { return Lanes::Of(p.GetX(), p.GetY()); };
        Extent extent;
        Lanes low = Lanes::Repeat(extent.minX);
        Lanes high = Lanes::Repeat(extent.maxX);
        for (std::size_t i = from; i < to; ++i) {
            low = Min(at(GetStart(i)), low);  // in this order, which leaves out what is no number
            high = Max(at(GetStart(i)), high);
        }
        low = Min(at(GetEnd(to - 1)), low);
        high = Max(at(GetEnd(to - 1)), high);
        extent.minX = low.First();
        extent.minY = low.Second();
        extent.maxX = high.First();
        extent.maxY = high.Second();
        return extent;
    }

private:
    const Point2D* points;
    std::size_t last;   // index of the last point: its segment leads back to the first
    std::size_t count;  // of segments
};

/// Finds the segments of chains that come near each other.
using SegmentBoxes = BoxHierarchy<ChainSegments>;

}  // namespace Kalvio::Math::detail
