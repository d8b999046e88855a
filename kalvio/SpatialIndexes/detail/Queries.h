#pragma once

#include "kalvio/SpatialIndexes/detail/FlatBox.h"
#include "kalvio/SpatialIndexes/detail/Lanes.h"

namespace Kalvio::Math::SpatialIndexes::detail {

inline constexpr double pointSearchTolerance = 0.005;  // a length: a box this far from the point still holds it

/// One axis of the question: does the box overlap the window? Closed.
struct AxisOverlap {
    Lanes low;
    Lanes high;
    LaneMask operator()(Lanes boxLow, Lanes boxHigh) const { return (boxLow <= high) & (low <= boxHigh); }
};

/// One axis of the question: does the box lie inside the window? Closed.
struct AxisInside {
    Lanes low;
    Lanes high;
    LaneMask operator()(Lanes boxLow, Lanes boxHigh) const { return (low <= boxLow) & (boxHigh <= high); }
};

/// One axis of the question: does the box hold all of the window? Closed.
struct AxisCovers {
    Lanes low;
    Lanes high;
    LaneMask operator()(Lanes boxLow, Lanes boxHigh) const { return (boxLow <= low) & (high <= boxHigh); }
};

/// One axis of the question: does the box, widened by the tolerance, hold the point? Closed.
struct AxisHolds {
    Lanes point;
    Lanes tolerance;
    LaneMask operator()(Lanes boxLow, Lanes boxHigh) const {
        return (boxLow - tolerance <= point) & (point <= boxHigh + tolerance);
    }
};

/// Window search: boxes that overlap (or lie inside, or cover) a window.
template <class AxisTest>
struct WindowQuery {
    static constexpr bool isWindow = true;

    const FlatBox& window;
    AxisTest Axis(unsigned int axis) const {
        return {Lanes::Repeat(window.Low(axis)), Lanes::Repeat(window.High(axis))};
    }
};

/// Point search; the point is the low corner of the box.
struct PointQuery {
    static constexpr bool isWindow = false;

    const FlatBox& point;
    AxisHolds Axis(unsigned int axis) const {
        return {Lanes::Repeat(point.Low(axis)), Lanes::Repeat(pointSearchTolerance)};
    }
};

using OverlapQuery = WindowQuery<AxisOverlap>;
using InsideQuery = WindowQuery<AxisInside>;
using CoverQuery = WindowQuery<AxisCovers>;

/// Hands the matching queries for the nodes on the way and for the items to `search`; nothing when the window has fewer
/// axes than the index.
template <class Search>
void WithQueries(const BoundingBoxND& box, bool overlap, unsigned int dimension, Search&& search) {
    if (box.GetDimension() < dimension) return;
    const FlatBox window(box, dimension);
    if (overlap) {
        search(OverlapQuery{window}, OverlapQuery{window});
    } else {
        search(OverlapQuery{window}, InsideQuery{window});
    }
}

template <class Search>
void WithQueries(const PointND& point, unsigned int dimension, Search&& search) {
    if (point.GetDimension() < dimension) return;
    const FlatBox place(point, dimension);
    search(PointQuery{place}, PointQuery{place});
}

}  // namespace Kalvio::Math::SpatialIndexes::detail
