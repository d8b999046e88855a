#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/curves/detail/Stations.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
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

/// Lengths from the start at every point.
template <class PointType, class Measure>
std::vector<double> LengthsAtPoints(const std::vector<PointType>& points, Measure measure) {
    std::vector<double> lengths(points.size(), 0.0);
    for (std::size_t i = 1; i < points.size(); ++i) lengths[i] = lengths[i - 1] + measure(points[i - 1], points[i]);
    return lengths;
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
        found = segment >= numericalZero && std::isfinite(segment) && std::isfinite(length);
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
        return IsPointOnSegment(p, points[i], points[i + 1], tolerance) && Store(from + points[i].Distance(p), length);
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
        if (IsPointOnSegment(p, a, b, tolerance) && Store(behind + b.Distance(p), length)) return true;
        behind += b.Distance(a);
    }
    return false;
}

/// Adds the length of a passage that comes after those before. Passages at most four tolerances apart count once:
/// beside a vertex both of its segments hold the point, measured up to 2 sqrt(3) tolerances apart.
inline void AddPassage(double length, double tolerance, std::vector<double>& lengths) {
    if (lengths.empty() || length - lengths.back() > 4.0 * std::abs(tolerance)) lengths.push_back(length);
}

/// Replaces `lengths` by the lengths at which the chain passes through p.
template <class PointType>
void LengthsAlong(const std::vector<PointType>& points, const PointType& p, double tolerance,
                  std::vector<double>& lengths) {
    lengths.clear();
    WalkChain(points, lengthOf, [&](std::size_t i, double from, double) {
        if (IsPointOnSegment(p, points[i], points[i + 1], tolerance)) {
            AddPassage(from + points[i].Distance(p), tolerance, lengths);
        }
        return false;
    });
}

/// The place of a chain nearest to a point.
template <class PointType>
struct ChainFoot {
    std::size_t segment = 0;
    PointType point;
    double distance = 0.0;
};

/// The segment nearest to a point among those offered, the first of equals. Runs of segments, and segments, whose boxes
/// are too far away cost a few comparisons and no division.
template <class PointType>
class NearestSegment {
public:
    /// @param reachBeyondEnds  the tolerance of `SegmentFoot`
    /// @param rounding         of feet on segments that are offered by their boxes
    NearestSegment(const PointType& point, double reachBeyondEnds, double rounding = 0.0)
        : p(point), tolerance(reachBeyondEnds), margin(std::abs(reachBeyondEnds) + numericalZero + rounding) {}

    /// Segment i joins point i to point i + 1.
    void OfferChain(const std::vector<PointType>& points) {
        constexpr std::size_t run = 8;      // segments tried at once
        constexpr std::size_t stride = 64;  // between the points that limit the search beforehand
        double squared = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < points.size(); i += stride)
            squared = (std::min)(squared, (points[i] - p).NormSquared());
        LimitTo(squared);
        const std::size_t count = SegmentCount(points);
        for (std::size_t from = 0; from < count; from += run) {
            const std::size_t to = (std::min)(from + run, count);
            if (SquaredBoxDistance(&points[from], &points[to]) > squaredReach) continue;
            for (std::size_t i = from; i < to; ++i) Offer(points[i], points[i + 1], i);
        }
    }

    void Offer(const PointType& a, const PointType& b, std::size_t index) {
        const double squared = SegmentFoot(p, a, b, tolerance).squaredDistance;
        if (!(squared <= squaredTie)) return;
        // Distances decide: squares that differ in the last digit only are equally near.
        const double distance = std::sqrt(squared);
        if (!(distance < best || (distance == best && index < nearest))) return;
        best = distance;
        squaredTie = WidenedSquare(squared, 0.0);
        nearest = index;
        LimitTo(squared);
    }

    /// Boxes further away need not be offered.
    const double& GetSquaredReach() const { return squaredReach; }

    /// Tells where on the chain the nearest segment has the place, of which the last may lead from the last point to
    /// the first. @return false, `foot` untouched, when none was found
    bool Place(const std::vector<PointType>& points, ChainFoot<PointType>& foot) const {
        if (!(best < std::numeric_limits<double>::infinity())) return false;
        const PointType& start = points[nearest];
        const PointType& end = points[nearest + 1 == points.size() ? 0 : nearest + 1];
        foot = {nearest, SegmentFoot(p, start, end, tolerance).PointOn(start, end), best};
        return true;
    }

private:
    // Nothing further away matters.
    void LimitTo(double squared) { squaredReach = WidenedSquare(squared, margin); }
    // From the box of the points first to last.
    double SquaredBoxDistance(const PointType* first, const PointType* last) const {
        const auto squaredGap = [first, last](double value, auto&& coordinate) {
            double low = coordinate(*first);
            double high = low;
            for (const PointType* point = first + 1; point <= last; ++point) {
                const double c = coordinate(*point);
                low = c < low ? c : low;
                high = c > high ? c : high;
            }
            constexpr double rounding = 8.0 * std::numeric_limits<double>::epsilon();  // of feet on long segments
            const double gap = (std::max)((std::max)(low - value, value - high) - rounding * (high - low), 0.0);
            return gap * gap;
        };
        double squared = squaredGap(p.GetX(), [](const PointType& point) { return point.GetX(); }) +
                         squaredGap(p.GetY(), [](const PointType& point) { return point.GetY(); });
        if constexpr (requires { p.GetZ(); }) {
            squared += squaredGap(p.GetZ(), [](const PointType& point) { return point.GetZ(); });
        }
        return squared;
    }

    PointType p;
    double tolerance;
    double margin;
    double best = std::numeric_limits<double>::infinity();
    double squaredTie =
        std::numeric_limits<double>::infinity();  // above the square of any distance that equals the best
    double squaredReach = std::numeric_limits<double>::infinity();
    std::size_t nearest = 0;
};

/// Finds the place nearest to p on the segments, on the earliest of equally near ones; of a single point, the point.
/// @param withClosing  a last segment leads from the last point to the first
/// @return false, `foot` untouched, for an empty chain and where no distance is finite
template <class PointType>
bool FindNearest(const std::vector<PointType>& points, const PointType& p, double tolerance, ChainFoot<PointType>& foot,
                 bool withClosing = false) {
    if (points.size() == 1) {
        const double distance = points[0].Distance(p);
        if (std::isfinite(distance)) foot = {0, points[0], distance};
        return std::isfinite(distance);
    }
    NearestSegment<PointType> nearest(p, tolerance);
    nearest.OfferChain(points);
    if (withClosing && !points.empty()) nearest.Offer(points.back(), points.front(), points.size() - 1);
    return nearest.Place(points, foot);
}

/// The points of the chain between two lengths: the point at `from`, the vertices between, the point at `to`. Segments
/// that end before `from` are skipped; a negative `from` extends the first segment backwards; a `to` beyond the end
/// adds no point of its own.
/// @return false for fewer than two points and for to < from, `part` untouched; and when the part has no points
template <class PointType, class Measure>
bool ExtractPart(const std::vector<PointType>& points, Measure measure, double from, double to,
                 std::vector<PointType>& part) {
    if (points.size() < 2 || !(to >= from) || !std::isfinite(from)) return false;
    if (!std::isfinite(ChainLength(points, measure))) return false;
    std::vector<PointType> extracted;
    WalkChain(points, measure, [&](std::size_t i, double start, double end) {
        if (start >= to) return true;
        if (!(from <= end + numericalZero)) return false;
        const PointType& a = points[i];
        const PointType& b = points[i + 1];
        const double length = measure(a, b);
        const auto pointAt = [&](double along) { return length > numericalZero ? a + (b - a) * (along / length) : a; };
        if (extracted.empty()) extracted.push_back(pointAt(from - start));
        if (end < to - numericalZero) {
            if (!b.IsEqualTo(extracted.back(), numericalZero)) extracted.push_back(b);
            return false;
        }
        extracted.push_back(pointAt(to - start));
        return true;
    });
    part = std::move(extracted);
    return !part.empty();
}

/// Calls emit(point, unit tangent, length) at from, from + step, from + 2 step ... below `to` and at `to`, or at the
/// end of the chain when that comes first. A vertex has the direction of the segment before it.
/// @return false, without any call, for a chain of no length, from beyond the end, to < from, to < 0, a step that is
/// not
///         positive, or NaN
template <class PointType, class Emit>
bool SampleChain(const std::vector<PointType>& points, double from, double to, double step, Emit&& emit) {
    const double total = ChainLength(points, lengthOf);
    if (!(total > numericalZero) || !(total <= largestDouble) || !(to >= from) || !(to >= 0.0)) return false;
    std::size_t i = 0;
    double start = 0.0;
    double end = points[0].Distance(points[1]);
    return ForEachStation(
        from, std::numeric_limits<double>::infinity(), step, (std::min)(to, total), EndSample::Once,
        [&](double length) {
            while (i + 2 < points.size() && (length > end + numericalZero || !(end - start > numericalZero))) {
                ++i;
                start = end;
                end += points[i].Distance(points[i + 1]);
            }
            const auto along = points[i + 1] - points[i];
            auto tangent = along;
            emit(points[i] + along * ((length - start) / (end - start)), tangent.Normalize(), length);
        });
}

/// Unit direction of a segment longer than 1e-10; false, `direction` untouched, for a shorter one.
template <class PointType, class Vector>
bool DirectionOf(const PointType& a, const PointType& b, Vector& direction) {
    Vector along = b - a;
    if (!(along.Length() > numericalZero)) return false;
    direction = along.Normalize();
    return true;
}

/// The direction of the first segment longer than 1e-10 that holds p within the tolerance.
/// @return false, `tangent` untouched, when there is none
template <class PointType, class Vector>
bool TangentAt(const std::vector<PointType>& points, const PointType& p, double tolerance, Vector& tangent) {
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (IsPointOnSegment(p, points[i - 1], points[i], tolerance) &&
            DirectionOf(points[i - 1], points[i], tangent)) {
            return true;
        }
    }
    return false;
}

/// Extent of the points, as `BoundingBox2D` or `BoundingBox3D`; the point box at the origin when there are none.
template <class Box, class PointType>
Box BoxOfPoints(const std::vector<PointType>& points) {
    if (points.empty()) return {};
    PointType low = points.front();
    PointType high = points.front();
    for (const PointType& point : points) {
        for (int axis = 0; axis < static_cast<int>(point.GetDimension()); ++axis) {
            low[axis] = (std::min)(low[axis], point[axis]);
            high[axis] = (std::max)(high[axis], point[axis]);
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

/// Inserts before position `index` (index = size appends); the point may be one of the chain.
/// @return false, nothing changed, when index > size
template <class PointType>
bool InsertPoint(std::vector<PointType>& points, std::size_t index, const PointType& point) {
    if (index > points.size()) return false;
    points.insert(points.begin() + static_cast<std::ptrdiff_t>(index), point);
    return true;
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
