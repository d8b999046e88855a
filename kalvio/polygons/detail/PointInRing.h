#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/polygons/detail/Ring.h"

#include <cmath>
#include <cstdint>
#include <vector>

namespace Kalvio::Math::detail {

/// Where a point lies seen from one ring.
enum class RingSide : std::uint32_t {
    Outside = 0,  // outside the ring and not on it
    Border = 1,   // on an edge within the tolerance
    Inside = 2,   // enclosed and not on an edge
};

/// How the edges of a ring go around a point, collected edge by edge from any source and in any order. An edge beyond
/// the tolerance above or below the point costs two comparisons. No ring goes around a point that is not a number.
///
/// Source: winding number by crossings (D. Sunday, 2001), with the turns of `ArePointsCCW`.
class RingAroundPoint {
public:
    RingAroundPoint(const Point2D& point, double borderTolerance) : p(point), tolerance(std::abs(borderTolerance)) {
        if (std::isnan(p.GetX())) p.SetY(p.GetX());  // an edge crosses no such level
    }

    /// Takes the edge a -> b.
    /// @return false when the point lies on it; the counts do not include it then
    bool Take(double ax, double ay, double bx, double by) {
        const double aboveA = p.GetY() - ay;
        const double aboveB = p.GetY() - by;
        if ((aboveA < -tolerance && aboveB < -tolerance) || (aboveA > tolerance && aboveB > tolerance)) return true;
        const Point2D a(ax, ay);
        const Point2D b(bx, by);
        if (IsPointOnSegment(p, a, b, tolerance)) return false;
        Count(a, b);
        return true;
    }
    bool Take(const Point2D& a, const Point2D& b) { return Take(a.GetX(), a.GetY(), b.GetX(), b.GetY()); }

    /// Counts the edge a -> b without asking whether the point lies on it.
    void Count(const Point2D& a, const Point2D& b) {
        if (a.GetY() <= p.GetY()) {
            if (!(b.GetY() > p.GetY())) return;
            forward += ArePointsCCW(a, b, p) ? 1 : 0;
            backward -= ArePointsCCW(b, a, p) ? 0 : 1;
            isOdd ^= DoubledTurn(a, b, p) > 0.0;
        } else if (b.GetY() <= p.GetY()) {
            forward -= ArePointsCCW(a, b, p) ? 0 : 1;
            backward += ArePointsCCW(b, a, p) ? 1 : 0;
            isOdd ^= DoubledTurn(b, a, p) > 0.0;
        }
    }

    /// Winding number of the ring walked as its edges run.
    int Forward() const { return forward; }
    /// Winding number of the ring walked backwards: -Forward(), unless the point is so near the line of an edge that
    /// the margin of `ArePointsCCW` decides.
    int Backward() const { return backward; }
    /// Whether a ray from the point to +x crosses an odd number of edges.
    bool IsOdd() const { return isOdd; }

private:
    Point2D p;
    double tolerance;
    int forward = 0;
    int backward = 0;
    bool isOdd = false;
};

/// Side of a point by the nonzero rule. The ring is walked clockwise; a ring of zero area counts as clockwise. Its area
/// is computed only for the rare point for which the direction matters.
inline RingSide FindRingSide(const std::vector<Point2D>& ring, const Point2D& p, double tolerance) {
    RingAroundPoint around(p, tolerance);
    for (std::size_t i = 1; i < ring.size(); ++i) {
        if (!around.Take(ring[i - 1], ring[i])) return RingSide::Border;
    }
    if (HasClosingEdge(ring) && !around.Take(ring.back(), ring.front())) return RingSide::Border;
    const bool forward = around.Forward() != 0;
    const bool backward = around.Backward() != 0;
    if (forward == backward) return forward ? RingSide::Inside : RingSide::Outside;
    const bool isInside = DoubledArea(ring, ring.front()) > 0.0 ? backward : forward;
    return isInside ? RingSide::Inside : RingSide::Outside;
}

/// Side of a point by crossing parity, without any margin. A point that equals a vertex within the tolerance in both
/// coordinates, inclusive, is on the border too. The closing edge is part of the border where the ends of the ring are
/// more than the tolerance apart.
inline RingSide FindRingSideByRay(const std::vector<Point2D>& ring, const Point2D& p, double tolerance) {
    if (ring.empty()) return RingSide::Outside;
    const double t = std::abs(tolerance);
    const auto areNear = [t](const Point2D& a, const Point2D& b) {
        return std::abs(a.GetX() - b.GetX()) <= t && std::abs(a.GetY() - b.GetY()) <= t;
    };
    RingAroundPoint around(p, t);
    if (areNear(ring.front(), p)) return RingSide::Border;
    for (std::size_t i = 1; i < ring.size(); ++i) {
        if (areNear(ring[i], p) || !around.Take(ring[i - 1], ring[i])) return RingSide::Border;
    }
    if (areNear(ring.back(), ring.front())) {
        around.Count(ring.back(), ring.front());
    } else if (!around.Take(ring.back(), ring.front())) {
        return RingSide::Border;
    }
    return around.IsOdd() ? RingSide::Inside : RingSide::Outside;
}

}  // namespace Kalvio::Math::detail
