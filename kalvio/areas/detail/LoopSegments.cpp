#include "kalvio/areas/detail/LoopSegments.h"

#include "kalvio/core/detail/SegmentDistance.h"

#include <cmath>

namespace Kalvio::Math::detail {

std::vector<char> LoopSegments::FindNear(const BoxHierarchy<LoopSegments>& segments, double distance) {
    const std::size_t count = segments.GetCount();
    std::vector<char> isNear(count, 0);
    std::size_t nearCount = 0;
    const auto note = [&](std::size_t i, std::size_t j) {
        nearCount += static_cast<std::size_t>(isNear[i] == 0) + static_cast<std::size_t>(isNear[j] == 0);
        isNear[i] = isNear[j] = 1;
        return 2 * nearCount > count;
    };
    bool areMany = false;
    for (std::size_t i = 0; i + 2 < count && !areMany; ++i) {
        if (segments.isEnd[i] == 0 && segments.isEnd[i + 1] == 0 && !segments.LeadsAway(i, distance)) {
            areMany = note(i, i + 1);
        }
    }
    areMany = areMany || segments.ForEachPair(distance, [&](std::size_t i, std::size_t j) {
        return j != i + 1 && !segments.AreApart(i, j, distance) && note(i, j);
    });
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
