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

/// Finds the station of the point of a curve nearest to a query point, the lowest of equals.
///
/// With g(s) the component of P(s) - q along the tangent, stationary points of the distance are zeros of g, minima
/// those where g rises. By Frenet's equations g'' + k^2 g = -k' n, n the component of q - P along the normal. On a
/// piece that turns less than half a circle and keeps the signs of k and k', g has at most two zeros: in the angle phi,
/// with the radius r, g'' + g = dr/dphi keeps its sign, and y'' + y is disconjugate there. So g < 0 at its start and g
/// > 0 at its end holds just one foot, and equal signs hold none when |g| exceeds what k' n can bend (Sturm's
/// comparison) - otherwise the piece is halved until a foot inside could gain less than `distanceNoise`.
template <class Curve>
class NearestSearch {
public:
    NearestSearch(const Curve& searched, double queryX, double queryY) : curve(searched), qx(queryX), qy(queryY) {}

    double Find(double from, double to) {
        Probe last = Consider(ProbeAt(from), false);
        ForEachTurn(curve, from, to, [&](double, double b) {
            const Probe next = Consider(ProbeAt(b), false);
            Search(last, next, 0);
            last = next;
        });
        return best.station;
    }

private:
    struct Probe {
        double station = 0.0;
        double along = 0.0;  // g
        double distance = std::numeric_limits<double>::infinity();
        double slope = 0.0;  // g'
    };

    static constexpr double distanceNoise = 1e-12;  // a length
    static constexpr double bend = 0.14;  // above 1.05 / 8: largest response of g to a unit force over a piece
    static constexpr double roundingFactor = 4.0 * std::numeric_limits<double>::epsilon();
    static constexpr int deepestHalving = 48;
    // In all: real curves need some hundred at most, one whose numbers overflow would never end.
    static constexpr int mostHalvings = 10000;

    Probe ProbeAt(double station) const {
        const CurveState at = curve.At(station);
        const double dx = at.x - qx;
        const double dy = at.y - qy;
        const double normal = dx * at.sine - dy * at.cosine;
        return {station, dx * at.cosine + dy * at.sine, std::sqrt(dx * dx + dy * dy), 1.0 - at.curvature * normal};
    }

    // A foot is good to rounding in its station: of points beside it, equally far within the rounding of the distance,
    // it is the answer.
    Probe Consider(const Probe& probe, bool isFoot) {
        const double rounding = isFoot ? roundingFactor * (std::abs(qx) + std::abs(qy) + probe.distance) : 0.0;
        const double rank = probe.distance - rounding;
        if (rank < bestRank || (rank == bestRank && probe.station < best.station)) {
            best = probe;
            bestRank = rank;
        }
        return probe;
    }

    void Search(const Probe& a, const Probe& b, int depth) {
        const double length = b.station - a.station;
        if (0.5 * (a.distance + b.distance - length) > best.distance) return;  // the curve is no longer than its length
        if (a.along < 0.0 && b.along > 0.0) {
            const double foot = BracketedNewton(a.station, b.station, [this](double station) {
                const Probe probe = ProbeAt(station);
                return ValueAndSlope{probe.along, probe.slope};
            });
            Consider(ProbeAt(foot), true);
            return;
        }
        if (a.along > 0.0 && b.along < 0.0) return;
        const double rate = curve.GetLargestRate();
        const double reach = std::min(a.distance, b.distance) + length;
        const double bending = bend * rate * length * length;
        if (std::min(std::abs(a.along), std::abs(b.along)) >= bending * reach) return;
        if (bending * length <= distanceNoise || depth == deepestHalving || halvings == mostHalvings) return;
        ++halvings;
        const Probe middle = Consider(ProbeAt(0.5 * (a.station + b.station)), false);
        Search(a, middle, depth + 1);
        Search(middle, b, depth + 1);
    }

    const Curve& curve;
    double qx;
    double qy;
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
