#include "kalvio/areas/detail/LoopSegments.h"

#include "kalvio/core/detail/SegmentDistance.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Kalvio::Math::detail {

namespace {

// Calls visit(i, j), i < j, for the stretches of one run of the hierarchy, or of one and the next, whose boxes come
// within the distance of each other, until it returns true. Most pairs are of these, and half of them meet: the boxes
// are made once, and compared without branches.
template <class Visit>
bool ForEachPairNearby(const BoxHierarchy<LoopSegments>& stretches, double distance, Visit&& visit) {
    constexpr std::size_t runSize = BoxHierarchy<LoopSegments>::runSize;
    const std::size_t count = stretches.GetCount();
    std::array<Extent, 2 * runSize> extents;  // of a run and of the next one
    std::array<std::size_t, 2 * runSize> near;
    const auto load = [&](std::size_t from) {
        for (std::size_t k = 0; k < runSize; ++k) {
            extents[runSize + k] = from + k < count ? stretches.GetExtent(from + k) : Extent();
        }
    };
    load(0);
    for (std::size_t first = 0; first < count; first += runSize) {
        std::copy_n(extents.begin() + runSize, runSize, extents.begin());
        load(first + runSize);
        Extent next;
        for (std::size_t k = runSize; k < 2 * runSize; ++k) next.Add(extents[k]);
        for (std::size_t i = 0; i < runSize; ++i) {
            const Extent around = extents[i].Widened(distance);
            const std::size_t end = around.Meets(next) ? 2 * runSize : runSize;
            std::size_t nearCount = 0;
            for (std::size_t j = i + 1; j < end; ++j) {
                near[nearCount] = j;
                nearCount += std::size_t{around.minX <= extents[j].maxX} & std::size_t{extents[j].minX <= around.maxX} &
                             std::size_t{around.minY <= extents[j].maxY} & std::size_t{extents[j].minY <= around.maxY};
            }
            for (std::size_t k = 0; k < nearCount; ++k) {
                if (visit(first + i, first + near[k])) return true;
            }
        }
    }
    return false;
}

}  // namespace

LoopSegments::LoopSegments(const std::vector<PlanePoint>& loopPoints, const std::vector<char>& areEnds)
    : points(loopPoints), isEnd(areEnds) {
    constexpr std::size_t longest = 32;
    constexpr unsigned int right = 1, left = 2, up = 4, down = 8;
    const auto areOpposite = [](unsigned int sides) {
        return (sides & (left | right)) == (left | right) || (sides & (up | down)) == (up | down);
    };
    unsigned int sides = 0;
    bool isFirst = true;
    for (std::size_t i = 0; i < points.size(); ++i) {
        unsigned int own = 0;
        if (isEnd[i] == 0) {
            own = (points[i].x < points[i + 1].x ? right : 0U) | (points[i].x > points[i + 1].x ? left : 0U) |
                  (points[i].y < points[i + 1].y ? up : 0U) | (points[i].y > points[i + 1].y ? down : 0U);
        }
        sides |= own;
        if (isFirst || isEnd[i] != 0 || areOpposite(sides) || i - starts.back() == longest) {
            starts.push_back(static_cast<std::uint32_t>(i));
            sides = own;
        }
        isFirst = isEnd[i] != 0;
    }
}

std::vector<char> LoopSegments::FindNear(const BoxHierarchy<LoopSegments>& stretches, double distance) {
    const std::size_t count = stretches.points.size();
    std::vector<char> isNear(count, 0);
    std::size_t nearCount = 0;
    const auto note = [&](std::size_t i, std::size_t j) {
        nearCount += static_cast<std::size_t>(isNear[i] == 0) + static_cast<std::size_t>(isNear[j] == 0);
        isNear[i] = isNear[j] = 1;
        return 2 * nearCount > count;
    };
    bool areMany = false;
    for (std::size_t i = 0; i + 2 < count && !areMany; ++i) {
        if (stretches.isEnd[i] == 0 && stretches.isEnd[i + 1] == 0 && !stretches.LeadsAway(i, distance)) {
            areMany = note(i, i + 1);
        }
    }
    const auto compare = [&](std::size_t first, std::size_t second) {
        if (second == first + 1 && stretches.AreApartButForNeighbours(second, distance)) return false;
        const Extent place = stretches.GetExtent(second).Widened(distance);
        bool isFull = false;
        stretches.ForEachOf(first, [&](std::size_t i) {
            const Extent own = stretches.SegmentExtent(i);
            if (!place.Meets(own)) return;
            const Extent around = own.Widened(distance);
            stretches.ForEachOf(second, [&](std::size_t j) {
                if (j == i + 1 || !around.Meets(stretches.SegmentExtent(j)) || stretches.AreApart(i, j, distance))
                    return;
                isFull = note(i, j);
            });
        });
        return isFull;
    };
    const auto isNearby = [](std::size_t) { return true; };
    areMany = areMany || ForEachPairNearby(stretches, distance, compare) ||
              stretches.ForEachPair(distance, isNearby, compare);
    if (areMany) isNear.assign(count, 1);
    return isNear;
}

// Whether of a segment and the next one each has its far end farther than the distance from the other.
bool LoopSegments::LeadsAway(std::size_t i, double distance) const {
    const PlanePoint along = points[i + 1] - points[i];
    const PlanePoint next = points[i + 2] - points[i + 1];
    const double limit = distance * distance;
    if (Dot(along, next) > 0.0 && Square(along) > limit && Square(next) > limit) return true;
    const Point2D a(points[i].x, points[i].y);
    const Point2D b(points[i + 1].x, points[i + 1].y);
    const Point2D c(points[i + 2].x, points[i + 2].y);
    return SegmentFoot(c, a, b, 0.0).squaredDistance > limit && SegmentFoot(a, b, c, 0.0).squaredDistance > limit;
}

// Whether boxes part the segments of a stretch and of the one before it by the distance, other than the last and the
// first one of them, which follow each other.
bool LoopSegments::AreApartButForNeighbours(std::size_t stretch, double distance) const {
    const std::size_t joint = starts[stretch];
    const auto extentOf = [this](std::size_t from, std::size_t to) {
        Extent extent{points[from].x, points[from].y, points[from].x, points[from].y};
        AddTo(extent, points[to]);
        return extent;
    };
    return !extentOf(starts[stretch - 1], joint - 1).Widened(distance).Meets(extentOf(joint, starts[stretch + 1])) &&
           !extentOf(joint - 1, joint).Widened(distance).Meets(extentOf(joint + 1, starts[stretch + 1]));
}

// Whether a line beside one of the segments parts them; if not they may still be apart.
bool LoopSegments::AreApart(std::size_t i, std::size_t j, double distance) const {
    const auto isBeside = [&](std::size_t own, std::size_t other) {
        const PlanePoint along = points[own + 1] - points[own];
        const double from = Cross(along, points[other] - points[own]);
        const double to = Cross(along, points[other + 1] - points[own]);
        const double limit = distance * std::sqrt(Square(along));
        return (from > limit && to > limit) || (from < -limit && to < -limit);
    };
    return isBeside(i, j) || isBeside(j, i);
}

}  // namespace Kalvio::Math::detail
