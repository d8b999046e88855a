#include "kalvio/areas/detail/ClothoidFit.h"

#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Polyline2D.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace Kalvio::Math::detail {

namespace {

constexpr double mostTau = 1.0;  // tangent angle [rad] up to which seven terms err by 6e-13 of the parameter

double AngleBetween(const PlanePoint& from, const PlanePoint& to) { return std::atan2(Cross(from, to), Dot(from, to)); }

// The stretch of the clothoid of parameter 1 that turns on from a tangent angle.
struct UnitStretch {
    PlanePoint chord;    // in the frame of the clothoid
    double angle = 0.0;  // from the direction at the start to the chord
};

UnitStretch StretchOf(const Clothoid& unit, double tau, double turn) {
    const Point2D from = unit.ComputePoint(tau, Clothoid::defaultTerms);
    const Point2D to = unit.ComputePoint(tau + turn, Clothoid::defaultTerms);
    const PlanePoint chord{to.GetX() - from.GetX(), to.GetY() - from.GetY()};
    return {chord, std::atan2(chord.y, chord.x) - tau};
}

// Where the stretch has the angle, which grows with tau; above the most, none.
double TauOf(const Clothoid& unit, double angle, double turn) {
    constexpr int mostSteps = 50;
    constexpr double enough = 1e-15;  // radians
    double low = 0.0;
    double high = mostTau - turn;
    double below = StretchOf(unit, low, turn).angle - angle;
    double above = StretchOf(unit, high, turn).angle - angle;
    double tau = high;
    double off = above;
    for (int step = 0, side = 0; step < mostSteps && std::abs(off) > enough && above > 0.0; ++step) {
        tau = (low * above - high * below) / (above - below);
        off = StretchOf(unit, tau, turn).angle - angle;
        if (off > 0.0) {
            high = tau;
            above = off;
            if (side > 0) below *= 0.5;
            side = 1;
        } else {
            low = tau;
            below = off;
            if (side < 0) above *= 0.5;
            side = -1;
        }
    }
    return above < 0.0 ? 2.0 * mostTau : tau;
}

}  // namespace

std::optional<ClothoidFit> ClothoidFit::Find(const PlanePoint& chord, const PlanePoint& from, const PlanePoint& to) {
    constexpr double flattest = 1e-8;  // angle with the chord
    const double atStart = AngleBetween(from, chord);
    const double atEnd = AngleBetween(chord, to);
    const double turn = std::abs(atStart + atEnd);
    const double angle = std::min(std::abs(atStart), std::abs(atEnd));
    if (!(atStart * atEnd > 0.0 && angle > flattest && turn < mostTau)) return std::nullopt;
    Clothoid unit;
    unit.SetParameter(1.0);
    UnitStretch stretch = StretchOf(unit, 0.0, turn);
    const double length = std::sqrt(Square(chord));
    double tau = 0.0;
    double line = 0.0;
    double parameter = 0.0;
    if (stretch.angle >= angle) {
        parameter = length * std::sin(angle) / stretch.chord.y;
        line = std::max(0.0, length * std::cos(angle) - parameter * stretch.chord.x);
    } else {
        tau = TauOf(unit, angle, turn);
        if (!(tau + turn <= mostTau)) return std::nullopt;
        stretch = StretchOf(unit, tau, turn);
        parameter = length / std::sqrt(Square(stretch.chord));
    }
    if (!std::isfinite(parameter)) return std::nullopt;
    const double sense = atStart < 0.0 ? -1.0 : 1.0;
    const auto radiusAt = [&](double at) { return at > 0.0 ? sense * parameter / std::sqrt(2.0 * at) : 0.0; };
    const bool grows = std::abs(atStart) <= std::abs(atEnd);
    ClothoidFit fit;
    fit.direction = from;
    fit.endDirection = to;
    (grows ? fit.before : fit.behind) = line;
    fit.curve = Clothoid(radiusAt(grows ? tau : tau + turn), radiusAt(grows ? tau + turn : tau), parameter, Point2D(),
                         Vec2D(from.x, from.y));
    return fit;
}

double ClothoidFit::Off(const PlanePoint& place, double share) const {
    const double length = curve.GetLength();
    double station = (before + length + behind) * share - before;
    PlanePoint arm;
    PlanePoint along;
    for (int step = 0; step < 3; ++step) {
        Vec2D offset, tangent;
        if (!curve.MakeOffsetAndTangentAt(std::clamp(station, 0.0, length), offset, tangent))
            return std::numeric_limits<double>::infinity();
        along = {tangent.GetX(), tangent.GetY()};
        arm = place - direction * before - PlanePoint{offset.GetX(), offset.GetY()};
        station = std::clamp(station, 0.0, length) + Dot(arm, along);
    }
    return std::abs(Cross(along, arm));
}

void ClothoidFit::AppendTo(const Point2D& start, Polyline2D& chain) const {
    auto placed = std::make_unique<Clothoid>(curve);
    placed->SetStart(start + Vec2D(direction.x, direction.y) * before);
    if (before > 0.0) ExtendByLine(start, placed->GetStart(), chain);
    const Point2D end = placed->GetEnd();
    chain.AppendElement(std::move(placed));
    if (behind > 0.0) ExtendByLine(end, end + Vec2D(endDirection.x, endDirection.y) * behind, chain);
}

void ExtendByLine(const Point2D& start, const Point2D& end, Polyline2D& chain) {
    constexpr double straight = 1e-7;  // radians: what coordinates tell of a short line
    const unsigned int count = chain.GetNrOfElements();
    if (count > 0 && chain[count - 1].GetType() == MathTypes::Line2D) {
        auto& line = static_cast<Line2D&>(chain.GetElementAtIndex(count - 1));
        const Vec2D back = line.GetEnd() - line.GetStart();
        const Vec2D ahead = end - start;
        if (std::abs(back.PerpDotProduct(ahead)) <= straight * back.DotProduct(ahead)) return line.SetEnd(end);
    }
    chain.AppendElement(std::make_unique<Line2D>(start, end));
}

}  // namespace Kalvio::Math::detail
