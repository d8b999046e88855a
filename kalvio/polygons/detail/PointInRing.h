#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/polygons/detail/Ring.h"

#include <algorithm>
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
/// the tolerance above or below the point costs two comparisons; for the others one turn nearly always decides both
/// whether the point is on the edge and on which side. No ring goes around a point that is not a number.
///
/// Source: winding number by crossings (D. Sunday, 2001), with the turns of `ArePointsCCW` where the point is between
/// the ends of the edge in x. Beside that the side is plain, and the margin of the turn, a doubled area, would decide
/// about points far away.
class RingAroundPoint {
public:
    RingAroundPoint(const Point2D& point, double borderTolerance)
        : p(point),
          tolerance(std::abs(borderTolerance)),
          squaredReach(std::max(leastSquare, tolerance * tolerance * (1.0 + turnRounding))) {
        if (std::isnan(p.GetX())) p.SetY(p.GetX());  // an edge crosses no such level
    }

    /// Takes the edge a -> b.
    /// @return false when the point lies on it; the counts do not include it then
    bool Take(double ax, double ay, double bx, double by) {
        const double aboveA = p.GetY() - ay;
        const double aboveB = p.GetY() - by;
        if ((aboveA < -tolerance && aboveB < -tolerance) || (aboveA > tolerance && aboveB > tolerance)) return true;
        const Turn turn(ax, ay, bx, by, p);
        const bool isOffLine = turn.doubledArea * turn.doubledArea > squaredReach * turn.squaredLength;
        if (!isOffLine && IsPointOnSegment(p, Point2D(ax, ay), Point2D(bx, by), tolerance)) return false;
        Count(ax, ay, bx, by, turn);
        return true;
    }
    bool Take(const Point2D& a, const Point2D& b) { return Take(a.GetX(), a.GetY(), b.GetX(), b.GetY()); }

    /// Counts the edge a -> b without asking whether the point lies on it.
    void Count(const Point2D& a, const Point2D& b) {
        Count(a.GetX(), a.GetY(), b.GetX(), b.GetY(), Turn(a.GetX(), a.GetY(), b.GetX(), b.GetY(), p));
    }

    /// Counts edges of which only the sum is known: none of them near the point.
    void Add(int turns) {
        forward += turns;
        backward -= turns;
    }

    /// Side of a point on none of the edges by the nonzero rule. The ring is walked clockwise; a ring of zero area
    /// counts as clockwise.
    /// @param isCounterClockwise  called only for the rare point for which the direction matters
    template <class IsCounterClockwise>
    RingSide Side(IsCounterClockwise&& isCounterClockwise) const {
        if ((forward != 0) == (backward != 0)) return forward != 0 ? RingSide::Inside : RingSide::Outside;
        return (isCounterClockwise() ? backward : forward) != 0 ? RingSide::Inside : RingSide::Outside;
    }

    /// Winding number of the ring walked as its edges run.
    int Forward() const { return forward; }
    /// Whether a ray from the point to +x crosses an odd number of edges.
    bool IsOdd() const { return isOdd; }

private:
    static constexpr double turnRounding = 1e-14;  // bounds the relative rounding of a turn with room to spare
    static constexpr double leastSquare = 1e-290;  // squares of smaller tolerances would lose digits

    // The turn a -> b -> p, as `DoubledTurn`.
    struct Turn {
        Turn(double ax, double ay, double bx, double by, const Point2D& p)
            : dx(bx - ax),
              dy(by - ay),
              px(p.GetX() - ax),
              doubledArea(dx * (p.GetY() - ay) - px * dy),
              squaredLength(dx * dx + dy * dy) {}

        double dx, dy, px;
        double doubledArea;
        double squaredLength;
    };

    void Count(double ax, double ay, double bx, double by, const Turn& turn) {
        const bool isUp = ay <= p.GetY();
        if (isUp ? !(by > p.GetY()) : !(by <= p.GetY())) return;
        // Where neither the margin nor rounding can decide, both directions and the ray agree.
        const double doubt =
            2.0 * windingMargin + turnRounding * ((std::abs(turn.dx) + std::abs(turn.px)) * std::abs(turn.dy));
        if (std::abs(turn.doubledArea) > doubt) {
            const int isEast = isUp == (turn.doubledArea > 0.0) ? 1 : 0;  // counted, as no branch foretells it
            forward += isUp ? isEast : -isEast;
            backward -= isUp ? isEast : -isEast;
            isOdd ^= isEast != 0;
            return;
        }
        if (ax > p.GetX() && bx > p.GetX()) {
            forward += isUp ? 1 : -1;
            backward -= isUp ? 1 : -1;
            isOdd = !isOdd;
            return;
        }
        if (ax < p.GetX() && bx < p.GetX()) return;
        const Point2D a(ax, ay);
        const Point2D b(bx, by);
        if (isUp) {
            forward += ArePointsCCW(a, b, p) ? 1 : 0;
            backward -= ArePointsCCW(b, a, p) ? 0 : 1;
            isOdd ^= DoubledTurn(a, b, p) > 0.0;
        } else {
            forward -= ArePointsCCW(a, b, p) ? 0 : 1;
            backward += ArePointsCCW(b, a, p) ? 1 : 0;
            isOdd ^= DoubledTurn(b, a, p) > 0.0;
        }
    }

    Point2D p;
    double tolerance;
    double squaredReach;  // a little more than the square of the tolerance
    int forward = 0;
    int backward = 0;
    bool isOdd = false;
};

/// `RingAroundPoint::Side`, or on the border.
inline RingSide FindRingSide(const std::vector<Point2D>& ring, const Point2D& p, double tolerance) {
    RingAroundPoint around(p, tolerance);
    for (std::size_t i = 1; i < ring.size(); ++i) {
        if (!around.Take(ring[i - 1], ring[i])) return RingSide::Border;
    }
    if (HasClosingEdge(ring) && !around.Take(ring.back(), ring.front())) return RingSide::Border;
    return around.Side([&ring] { return DoubledArea(ring, ring.front()) > 0.0; });
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
