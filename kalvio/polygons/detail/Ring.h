#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/Lanes.h"
#include "kalvio/curves/detail/Chain.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

/// What the rings of polygons share. The edges of a ring join each point to the next and the last to the first; a ring
/// that repeats its first point at the end has a closing edge of zero length.
namespace Kalvio::Math::detail {

inline constexpr double largestCoordinate = 1e100;  // up to here differences and their products stay finite

/// Calls `visit(a, b)` for every edge, the closing one first, until it returns true.
/// @return whether it did
template <class PointType, class Visit>
bool WalkRing(const std::vector<PointType>& ring, Visit&& visit) {
    if (ring.empty()) return false;
    const PointType* previous = &ring.back();
    for (const PointType& point : ring) {
        if (visit(*previous, point)) return true;
        previous = &point;
    }
    return false;
}

/// Number of points without a repetition of the first at the end (strictly within 1e-10 per coordinate).
template <class PointType>
std::size_t OpenRingSize(const std::vector<PointType>& ring) {
    const bool isClosed = ring.size() > 1 && ring.front().IsEqualTo(ring.back(), numericalZero);
    return ring.size() - (isClosed ? 1 : 0);
}

/// Whether the edge from the last point to the first has a length, or is all there is.
template <class PointType>
bool HasClosingEdge(const std::vector<PointType>& ring) {
    if (ring.size() < 2) return !ring.empty();
    for (int axis = 0; axis < static_cast<int>(ring.front().GetDimension()); ++axis) {
        if (ring.front()[axis] != ring.back()[axis]) return true;
    }
    return false;
}

/// Inserts the point before the end point of the first edge that reaches the length from the first point.
/// @return false, nothing changed, for a negative length, and for one beyond the whole ring
template <class PointType>
bool InsertAtRingLength(std::vector<PointType>& ring, double length, const PointType& point) {
    if (!(length >= 0.0)) return false;
    double end = 0.0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const bool isClosing = i + 1 == ring.size();
        if (isClosing && !HasClosingEdge(ring)) break;
        end += ring[i].Distance(ring[isClosing ? 0 : i + 1]);
        if (end >= length) return InsertPoint(ring, i + 1, point);
    }
    return false;
}

/// Twice the signed area, positive counter-clockwise, summed over coordinates relative to `origin`.
inline double DoubledArea(const std::vector<Point2D>& ring, const Point2D& origin) {
    double sum = 0.0;
    if (ring.empty()) return sum;
    Vec2D previous = ring.back() - origin;
    for (const Point2D& point : ring) {
        const Vec2D current = point - origin;
        sum += previous.PerpDotProduct(current);
        previous = current;
    }
    return sum;
}

/// Area and centroid of a ring, edge by edge from its first point on.
class AreaSum {
public:
    explicit AreaSum(const Point2D& first) : origin(Lanes::Of(first.GetX(), first.GetY())) {}

    void AddEdgeTo(const Point2D& point) {
        const Lanes current = Lanes::Of(point.GetX(), point.GetY()) - origin;
        const Lanes products = previous * current.Swapped();
        const double cross = products.First() - products.Second();
        Add(cross, (previous + current) * Lanes::Repeat(cross));
        previous = current;
    }
    /// An area beside the edges: twice itself, and six times its moment about the first point.
    void Add(double doubledArea, const Vec2D& sixfoldMoment) {
        Add(doubledArea, Lanes::Of(sixfoldMoment.GetX(), sixfoldMoment.GetY()));
    }

    double GetArea() const { return 0.5 * sums.First(); }
    /// @return false, `centroid` untouched, for an area less than the rounding of the sum of so many parts
    bool GetCentroid(std::size_t parts, Point2D& centroid) const {
        const double area = sums.First();
        const double magnitude = sums.Second();
        const double noise = magnitude * std::numeric_limits<double>::epsilon() * static_cast<double>(parts);
        const Point2D found =
            Point2D(origin.First(), origin.Second()) + Vec2D(moment.First(), moment.Second()) / (3.0 * area);
        const bool isFound = std::abs(area) > noise && std::isfinite(found.GetX()) && std::isfinite(found.GetY());
        if (isFound) centroid = found;
        return isFound;
    }

private:
    void Add(double doubledArea, Lanes sixfoldMoment) {
        sums = sums + Lanes::Of(doubledArea, std::abs(doubledArea));
        moment = moment + sixfoldMoment;
    }

    Lanes origin;
    Lanes previous = Lanes::Repeat(0.0);  // relative to the origin
    Lanes sums = Lanes::Repeat(0.0);      // of the areas, and of their magnitudes
    Lanes moment = Lanes::Repeat(0.0);
};

/// Length of the ring, its closing edge included.
template <class PointType>
double RingLength(const std::vector<PointType>& ring) {
    double length = 0.0;
    WalkRing(ring, [&length](const PointType& a, const PointType& b) {
        length += a.Distance(b);
        return false;
    });
    return length;
}

}  // namespace Kalvio::Math::detail
