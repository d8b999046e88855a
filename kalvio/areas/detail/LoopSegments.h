#pragma once

#include "kalvio/areas/detail/PlaneVectors.h"
#include "kalvio/core/detail/BoxHierarchy.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Kalvio::Math::detail {

/// The segments of loops in stretches, to be put into boxes: all of a stretch lead to the same side in x and in y, so
/// that its ends tell its box, and of its segments only neighbours are near each other. A segment leads from each point
/// of a list to the next one; a loop ends with its first point again, from there to the next loop leads none.
class LoopSegments {
public:
    /// @param areEnds  of the points, whether a loop ends there
    LoopSegments(const std::vector<PlanePoint>& loopPoints, const std::vector<char>& areEnds);

    std::size_t GetCount() const { return starts.size(); }
    Extent GetExtent(std::size_t i) const { return isEnd[starts[i]] != 0 ? Extent() : GetExtent(i, i + 1); }
    /// Or more.
    Extent GetExtent(std::size_t from, std::size_t to) const {
        const PlanePoint& first = points[starts[from]];
        Extent extent{first.x, first.y, first.x, first.y};
        for (std::size_t i = from + 1; i <= std::min(to, starts.size() - 1); ++i) AddTo(extent, points[starts[i]]);
        return extent;
    }
    /// Calls visit(i) for the segments of a stretch.
    template <class Visit>
    void ForEachOf(std::size_t stretch, Visit&& visit) const {
        for (std::size_t i = starts[stretch]; i < starts[stretch + 1]; ++i) visit(i);
    }

    /// Of each segment, whether another one comes within the distance of it, other than about the point where it
    /// follows the other and leads away from it. For all segments, where many are near others.
    static std::vector<char> FindNear(const BoxHierarchy<LoopSegments>& stretches, double distance);

private:
    static void AddTo(Extent& extent, const PlanePoint& p) {
        extent.minX = std::min(extent.minX, p.x);
        extent.minY = std::min(extent.minY, p.y);
        extent.maxX = std::max(extent.maxX, p.x);
        extent.maxY = std::max(extent.maxY, p.y);
    }
    Extent SegmentExtent(std::size_t segment) const {
        const PlanePoint& from = points[segment];
        Extent extent{from.x, from.y, from.x, from.y};
        AddTo(extent, points[segment + 1]);
        return extent;
    }
    bool LeadsAway(std::size_t i, double distance) const;
    bool AreApartButForNeighbours(std::size_t stretch, double distance) const;
    bool AreApart(std::size_t i, std::size_t j, double distance) const;

    const std::vector<PlanePoint>& points;
    const std::vector<char>& isEnd;
    std::vector<std::uint32_t> starts;  // of the stretches, and the ends of the loops
};

}  // namespace Kalvio::Math::detail
