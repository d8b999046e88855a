#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/core/detail/SegmentDistance.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

/// What chains of points in plan and in space share: editing, walking by length, cutting. Segment i joins point i to
/// point i + 1. `measure(a, b)` is the length of a segment: in plan or in space.
///
/// Every walk adds the lengths up in the same order as `ChainLength`, so that the length of a chain is exactly the
/// length at which each of them ends.
namespace Kalvio::Math::detail {

/// Length of a segment in the space of its points.
inline constexpr auto lengthOf = [](const auto& a, const auto& b) { return a.Distance(b); };
/// Length in plan of a segment in space.
inline constexpr auto planLengthOf = [](const Point3D& a, const Point3D& b) { return a.Distance2D(b); };

template <class PointType>
std::size_t SegmentCount(const std::vector<PointType>& points) {
    return points.empty() ? 0 : points.size() - 1;
}

template <class PointType, class Measure>
double ChainLength(const std::vector<PointType>& points, Measure measure) {
    double length = 0.0;
    for (std::size_t i = 1; i < points.size(); ++i) length += measure(points[i - 1], points[i]);
    return length;
}

/// Calls `visit(segment, length to its start, length to its end)` in order until it returns true.
/// @return whether it did
template <class PointType, class Measure, class Visit>
bool WalkChain(const std::vector<PointType>& points, Measure measure, Visit&& visit) {
    double from = 0.0;
    for (std::size_t i = 1; i < points.size(); ++i) {
        const double to = from + measure(points[i - 1], points[i]);
        if (visit(i - 1, from, to)) return true;
        from = to;
    }
    return false;
}

/// The point at a length from the start, extrapolated backwards on the first segment for a negative length.
/// @return false, `point` untouched, when the length lies more than 1e-10 beyond the end, or the segment there is
///         shorter than 1e-10
template <class PointType, class Measure>
bool PointAtLength(const std::vector<PointType>& points, Measure measure, double length, PointType& point) {
    bool found = false;
    WalkChain(points, measure, [&](std::size_t i, double from, double to) {
        if (!(to > length - numericalZero)) return false;
        const double segment = measure(points[i], points[i + 1]);
        found = segment >= numericalZero;
        if (found) point = points[i] + (points[i + 1] - points[i]) * ((length - from) / segment);
        return true;
    });
    return found;
}

/// Length up to p along the first segment that holds it; 0 when none does.
template <class PointType>
bool LengthFromStart(const std::vector<PointType>& points, const PointType& p, double& length, double tolerance) {
    length = 0.0;
    return WalkChain(points, lengthOf, [&](std::size_t i, double from, double) {
        if (!IsPointOnSegment(p, points[i], points[i + 1], tolerance)) return false;
        length = from + points[i].Distance(p);
        return true;
    });
}

/// The same walked back from the end.
template <class PointType>
bool LengthFromEnd(const std::vector<PointType>& points, const PointType& p, double& length, double tolerance) {
    length = 0.0;
    double behind = 0.0;
    for (std::size_t i = points.size(); i > 1; --i) {
        const PointType& a = points[i - 2];
        const PointType& b = points[i - 1];
        if (IsPointOnSegment(p, a, b, tolerance)) {
            length = behind + b.Distance(p);
            return true;
        }
        behind += b.Distance(a);
    }
    return false;
}

/// The segment nearest to p, the lowest index on ties.
/// @return false, `index` untouched, when there is none at a finite distance
template <class PointType>
bool ClosestSegment(const std::vector<PointType>& points, const PointType& p, unsigned int& index) {
    double best = std::numeric_limits<double>::infinity();
    std::size_t closest = 0;
    for (std::size_t i = 1; i < points.size(); ++i) {
        const double squared = SegmentFoot(p, points[i - 1], points[i], numericalZero).squaredDistance;
        if (squared < best) {
            best = squared;
            closest = i - 1;
        }
    }
    if (!(best < std::numeric_limits<double>::infinity())) return false;
    index = static_cast<unsigned int>(closest);
    return true;
}

/// Extent of the points, as `BoundingBox2D` or `BoundingBox3D`; the point box at the origin when there are none.
template <class Box, class PointType>
Box BoxOfPoints(const std::vector<PointType>& points) {
    if (points.empty()) return {};
    PointType low = points.front();
    PointType high = points.front();
    for (const PointType& point : points) {
        for (int axis = 0; axis < static_cast<int>(point.GetDimension()); ++axis) {
            low[axis] = std::min(low[axis], point[axis]);
            high[axis] = std::max(high[axis], point[axis]);
        }
    }
    return {low, high};
}

/// Leaves out the points that are at most `tolerance` from the last point kept; of four points or more, a last one
/// equal to the first strictly within the tolerance per coordinate is set to it.
/// @param keep  called as keep(index) for every point kept, in order
template <class PointType, class Keep>
void ReduceChain(std::vector<PointType>& points, double tolerance, Keep&& keep) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (kept > 0 && (points[i] - points[kept - 1]).NormSquared() <= tolerance * tolerance) continue;
        keep(i);
        points[kept++] = points[i];
    }
    points.resize(kept);
    if (kept >= 4 && points.back().IsEqualTo(points.front(), tolerance)) points.back() = points.front();
}

/// The segments as objects; one at the origin when there are none.
template <class LineType, class PointType>
std::vector<LineType> SegmentsOf(const std::vector<PointType>& points) {
    std::vector<LineType> segments;
    segments.reserve(std::max<std::size_t>(1, SegmentCount(points)));
    for (std::size_t i = 1; i < points.size(); ++i) segments.emplace_back(points[i - 1], points[i]);
    if (segments.empty()) segments.emplace_back();
    return segments;
}

/// Inserts before position `index` (index = size appends); the source may be the chain itself.
/// @return false, nothing changed, when index > size
template <class PointType, class Iterator>
bool InsertPoints(std::vector<PointType>& points, std::size_t index, Iterator first, Iterator last) {
    if (index > points.size()) return false;
    const std::vector<PointType> inserted(first, last);
    points.insert(points.begin() + static_cast<std::ptrdiff_t>(index), inserted.begin(), inserted.end());
    return true;
}

/// @return false, nothing changed, when there is no such point
template <class PointType>
bool RemovePointAt(std::vector<PointType>& points, int index) {
    if (index < 0 || static_cast<std::size_t>(index) >= points.size()) return false;
    points.erase(points.begin() + index);
    return true;
}

}  // namespace Kalvio::Math::detail
