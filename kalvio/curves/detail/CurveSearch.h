#pragma once

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/BracketedNewton.h"
#include "kalvio/core/detail/Constants.h"

#include <algorithm>
#include <cmath>
#include <limits>

/// Nearest points and boxes of transition curves. A `Curve` is parametrised by length and offers
///
///     CurveState At(double station) const;          // position, direction and curvature
///     double GetDirection(double station) const;    // unwrapped direction angle [rad]
///     double GetCurvature(double station) const;    // signed, monotone over the curve
///     double GetLargestRate() const;                // bound of |d curvature / d station|
///     double GetInflection() const;                 // station of curvature 0; negative when there is none inside
namespace Kalvio::Math::detail {

/// State of a curve at a station, relative to the start of the curve, so that survey coordinates lose nothing.
struct CurveState {
    double x = 0.0;
    double y = 0.0;
    double cosine = 1.0;  // of the direction of travel
    double sine = 0.0;
    double curvature = 0.0;
};

/// Calls `piece(a, b)` over [from, to], cut at the inflection and so that no piece turns by more than 0.7 rad.
template <class Curve, class Piece>
void ForEachTurn(const Curve& curve, double from, double to, Piece&& piece) {
    constexpr double mostTurn = 0.7;
    constexpr double mostPieces = 10000.0;
    const double inflection = curve.GetInflection();
    const double cuts[] = {from, inflection > from && inflection < to ? inflection : from, to};
    for (int half = 0; half < 2; ++half) {
        const double a = cuts[half];
        const double length = cuts[half + 1] - a;
        if (!(length > 0.0)) continue;
        const double curvature = std::max(std::abs(curve.GetCurvature(a)), std::abs(curve.GetCurvature(a + length)));
        const double wanted = std::ceil(curvature * length / mostTurn);
        const double count = wanted >= 1.0 && wanted <= mostPieces ? wanted : wanted > mostPieces ? mostPieces : 1.0;
        double last = a;
        for (double i = 1.0; i <= count; ++i) {
            const double next = i < count ? a + length * (i / count) : cuts[half + 1];
            piece(last, next);
            last = next;
        }
    }
}

/// Finds the station of the point of a curve nearest to a query point, or of the nearest foot of a perpendicular, the
/// lowest of equals.
///
/// With g(s) the component of P(s) - q along the tangent, the feet are the zeros of g, minima of the distance those
/// where g rises. By Frenet's equations g'' + k^2 g = -k' n, n the component of q - P along the normal. On a piece that
/// turns less than half a circle and keeps the signs of k and k', g has at most two zeros: in the angle phi, with the
/// radius r, g'' + g = dr/dphi keeps its sign, and y'' + y is disconjugate there. So unequal signs of g at its ends
/// hold just one foot, and equal signs hold none when |g| exceeds what k' n can bend (Sturm's comparison) - otherwise
/// the piece is halved until a foot inside could gain less than `distanceNoise`.
template <class Curve>
class NearestSearch {
public:
    NearestSearch(const Curve& searched, double queryX, double queryY) : curve(searched), qx(queryX), qy(queryY) {}

    /// The nearest point.
    /// @return false, `station` untouched, when no distance is finite
    bool Find(double from, double to, double& station) {
        Run(from, to);
        if (!(bestRank < std::numeric_limits<double>::infinity())) return false;
        station = best.station;
        return true;
    }

    /// The nearest foot. An end counts when its perpendicular passes the query point within the tolerance and the foot
    /// lies beyond it. Where the curve has its centre of curvature at the query point, g touches 0 without a sign
    /// change: it does so within `touching`.
    /// @return false, `station` untouched, when there is none
    bool FindFoot(double from, double to, double tolerance, double& station) {
        feetOnly = true;
        const auto [first, last] = Run(from, to);
        const double reach = std::abs(tolerance);
        if (std::abs(first.along) <= reach + RoundingAt(first) && !(first.along * first.slope < 0.0))
            ConsiderFoot(first);
        if (std::abs(last.along) <= reach + RoundingAt(last) && !(last.along * last.slope > 0.0)) ConsiderFoot(last);
        if (!(bestRank < std::numeric_limits<double>::infinity())) return false;
        station = best.station;
        return true;
    }

private:
    struct Probe {
        double station = 0.0;
        double along = 0.0;  // g
        double distance = std::numeric_limits<double>::infinity();
        double slope = 0.0;  // g'
    };
    struct Ends {
        Probe first;
        Probe last;
    };

    static constexpr double distanceNoise = 1e-12;  // a length
    static constexpr double touching = 1e-8;        // a length: the rounding of survey coordinates
    static constexpr double bend = 0.14;  // above 1.05 / 8: largest response of g to a unit force over a piece
    static constexpr double roundingFactor = 4.0 * std::numeric_limits<double>::epsilon();
    static constexpr int deepestHalving = 48;
    // In all: real curves need some hundred at most, one whose numbers overflow would never end.
    static constexpr int mostHalvings = 10000;

    Ends Run(double from, double to) {
        const Probe first = ProbeInside(from);
        Probe last = first;
        ForEachTurn(curve, from, to, [&](double, double b) {
            const Probe next = ProbeInside(b);
            Search(last, next, 0);
            last = next;
        });
        return {first, last};
    }

    Probe ProbeAt(double station) const {
        const CurveState at = curve.At(station);
        const double dx = at.x - qx;
        const double dy = at.y - qy;
        const double normal = dx * at.sine - dy * at.cosine;
        return {station, dx * at.cosine + dy * at.sine, std::sqrt(dx * dx + dy * dy), 1.0 - at.curvature * normal};
    }

    // Every point may be the nearest one, but a foot is one by chance only.
    Probe ProbeInside(double station) {
        const Probe probe = ProbeAt(station);
        if (!feetOnly) {
            Consider(probe);
        } else if (probe.along == 0.0) {
            ConsiderFoot(probe);
        }
        return probe;
    }

    double RoundingAt(const Probe& probe) const {
        return roundingFactor * (std::abs(qx) + std::abs(qy) + probe.distance);
    }
    // A foot is good to rounding in its station: of points beside it, equally far within the rounding of the distance,
    // it is the answer.
    void ConsiderFoot(const Probe& probe) { Consider(probe, RoundingAt(probe)); }
    void Consider(const Probe& probe, double rounding = 0.0) {
        const double rank = probe.distance - rounding;
        if (rank < bestRank || (rank == bestRank && probe.station < best.station)) {
            best = probe;
            bestRank = rank;
        }
    }

    void Search(const Probe& a, const Probe& b, int depth) {
        const double length = b.station - a.station;
        if (0.5 * (a.distance + b.distance - length) > best.distance) return;  // the curve is no longer than its length
        if (a.along < 0.0 && b.along > 0.0) return Refine(a, b, 1.0);
        if (a.along > 0.0 && b.along < 0.0) return feetOnly ? Refine(a, b, -1.0) : void();
        const double rate = curve.GetLargestRate();
        const double reach = std::min(a.distance, b.distance) + length;
        const double bending = bend * rate * length * length;
        if (std::min(std::abs(a.along), std::abs(b.along)) >= bending * reach) return;
        if (bending * length <= distanceNoise || depth == deepestHalving || halvings == mostHalvings) {
            if (feetOnly) SearchContact(a, b);
            return;
        }
        ++halvings;
        const Probe middle = ProbeInside(0.5 * (a.station + b.station));
        Search(a, middle, depth + 1);
        Search(middle, b, depth + 1);
    }

    // The one foot between two probes; g has the given sign at the second.
    void Refine(const Probe& a, const Probe& b, double sign) {
        ConsiderFoot(ProbeAt(BracketedNewton(a.station, b.station, [this, sign](double station) {
            const Probe probe = ProbeAt(station);
            return ValueAndSlope{sign * probe.along, sign * probe.slope};
        })));
    }

    // Two feet, or one double foot, on a piece too short to halve: g is nearest to 0 where its slope vanishes.
    void SearchContact(const Probe& a, const Probe& b) {
        const double sign = a.along < 0.0 ? -1.0 : 1.0;
        if (!(sign * a.slope <= 0.0) || !(sign * b.slope >= 0.0) || a.slope == b.slope) return;
        const Probe contact = ProbeAt(BracketedNewton(a.station, b.station, [this, sign](double station) {
            return ValueAndSlope{sign * ProbeAt(station).slope, 0.0};
        }));
        const bool isDouble = std::abs(contact.along) <= RoundingAt(contact);
        if (!isDouble && contact.along * a.along < 0.0) {
            Refine(a, contact, -sign);
            Refine(contact, b, sign);
        } else if (std::abs(contact.along) <= touching) {
            ConsiderFoot(contact);
        }
    }

    const Curve& curve;
    double qx;
    double qy;
    bool feetOnly = false;
    Probe best;
    double bestRank = std::numeric_limits<double>::infinity();
    int halvings = 0;
};

/// Box over [0, length], relative to the start: the ends and every point whose tangent is parallel to an axis.
template <class Curve>
BoundingBox2D BoxOfCurve(const Curve& curve, double length) {
    double minX = 0.0, minY = 0.0, maxX = 0.0, maxY = 0.0;
    const auto include = [&](double station) {
        const CurveState at = curve.At(station);
        minX = std::min(minX, at.x);
        minY = std::min(minY, at.y);
        maxX = std::max(maxX, at.x);
        maxY = std::max(maxY, at.y);
    };
    constexpr double quarter = 0.5 * pi;
    ForEachTurn(curve, 0.0, length, [&](double a, double b) {
        include(b);
        const double first = curve.GetDirection(a);
        const double last = curve.GetDirection(b);
        const double sign = first < last ? 1.0 : -1.0;
        const double parallel =
            std::ceil(std::min(first, last) / quarter) * quarter;  // at most one: a piece turns less
        if (!(parallel < std::max(first, last))) return;
        include(BracketedNewton(a, b, [&](double station) {
            return ValueAndSlope{sign * (curve.GetDirection(station) - parallel), sign * curve.GetCurvature(station)};
        }));
    });
    return {Point2D(minX, minY), Point2D(maxX, maxY)};
}

}  // namespace Kalvio::Math::detail
