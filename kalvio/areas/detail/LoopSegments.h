#pragma once

#include "kalvio/areas/detail/PlaneVectors.h"
#include "kalvio/core/detail/BoxHierarchy.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Kalvio::Math::detail {

/// The segments of loops, to be put into boxes: each from a point of a list to the next one. A loop ends with its first
/// point again; from there to the next loop leads no segment.
class LoopSegments {
public:
    /// @param areEnds  of the points, whether a loop ends there
    LoopSegments(const std::vector<PlanePoint>& loopPoints, const std::vector<char>& areEnds)
        : points(loopPoints), isEnd(areEnds) {}

    std::size_t GetCount() const { return points.size(); }
    Extent GetExtent(std::size_t i) const { return isEnd[i] != 0 ? Extent() : ExtentOf(i, i + 1); }
    /// Or more.
    Extent GetExtent(std::size_t from, std::size_t to) const { return ExtentOf(from, std::min(to, points.size() - 1)); }

    /// Of each segment, whether another one comes within the distance of it, other than about the point where it
    /// follows the other and leads away from it. For all segments, where many are near others.
    static std::vector<char> FindNear(const BoxHierarchy<LoopSegments>& segments, double distance);

private:
    Extent ExtentOf(std::size_t from, std::size_t last) const {
        Extent extent{points[from].x, points[from].y, points[from].x, points[from].y};
        for (std::size_t i = from + 1; i <= last; ++i) {
            extent.minX = std::min(extent.minX, points[i].x);
            extent.minY = std::min(extent.minY, points[i].y);
            extent.maxX = std::max(extent.maxX, points[i].x);
            extent.maxY = std::max(extent.maxY, points[i].y);
        }
        return extent;
    }
    bool LeadsAway(std::size_t i, double distance) const;
    bool AreApart(std::size_t i, std::size_t j, double distance) const;

    const std::vector<PlanePoint>& points;
    const std::vector<char>& isEnd;
};

}  // namespace Kalvio::Math::detail
