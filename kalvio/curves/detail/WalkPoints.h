#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace Kalvio::Math::detail {

/// Appends the samples of a chain of points, in plan or space, at ascending stations: one walk for all of them. At a
/// vertex the segment that starts there gives the tangent. @return false, nothing appended, for fewer than two points
template <class PointType, class Sample>
bool WalkPoints(const std::vector<PointType>& points, std::span<const double> stations, std::vector<Sample>& samples) {
    if (points.size() < 2) return false;
    std::size_t i = 0;
    double start = 0.0;
    double length = points[0].Distance(points[1]);
    for (const double station : stations) {
        while (i + 2 < points.size() && !(station < start + length)) {
            start += length;
            ++i;
            length = points[i].Distance(points[i + 1]);
        }
        auto direction = points[i + 1] - points[i];
        const double t = length > 0.0 ? (station - start) / length : 0.0;
        const PointType point = points[i] + direction * t;
        samples.push_back({point, direction.Normalize(), station});
    }
    return true;
}

}  // namespace Kalvio::Math::detail
