#include "kalvio/alignments/Profile.h"

#include "kalvio/core/detail/BracketedNewton.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace Kalvio::Math {

namespace {

double AsinhRatio(double x) { return x == 0.0 ? 1.0 : std::asinh(x) / x; }

double SignOf(double x) { return x > 0.0 ? 1.0 : x < 0.0 ? -1.0 : 0.0; }

double GradeBetween(const Profile::Vertex& a, const Profile::Vertex& b) {
    return (b.height - a.height) / (b.station - a.station);
}

// Coordinates of a clothoid over its length, for the angle by which it turns.
struct AlongAndAcross {
    double along = 0.0;
    double across = 0.0;
};

// Sum of +-tau^k / (k! d(k)), the even k along, the odd ones across; d = 2k + 1 for the end of the clothoid (DLMF 7.6.4
// and 7.6.6), (2k + 1)(2k + 2) for the start of the circle that osculates it there: end - radius (sin tau, 1 - cos
// tau).
template <class Divisor>
AlongAndAcross SumOverTurn(double tau, Divisor&& divisor) {
    constexpr int mostTerms = 60;  // more than enough for half a turn
    constexpr double negligible = 1e-18;
    AlongAndAcross sum;
    double power = 1.0;
    for (int k = 0; k < mostTerms && (k < 2 || power > negligible * tau); ++k) {
        const double term = (k % 4 < 2 ? power : -power) / divisor(2.0 * k);
        (k % 2 == 0 ? sum.along : sum.across) += term;
        power *= tau / (k + 1.0);
    }
    return sum;
}

AlongAndAcross EndOfClothoid(double tau) {
    return SumOverTurn(tau, [](double twice) { return twice + 1.0; });
}

AlongAndAcross ShiftOfCircle(double tau) {
    return SumOverTurn(tau, [](double twice) { return (twice + 1.0) * (twice + 2.0); });
}

// How far along the stations a curve reaches to both sides of its vertex.
struct Reach {
    double in = 0.0;
    double out = 0.0;
    double bendIn = 0.0;  // curvature of the clothoids per length, without sign
    double bendOut = 0.0;
    double excess = 0.0;  // by which they are too long
};

// The tangent lengths of a circle between shifted tangents.
Reach ReachOfClothoids(const Profile::Vertex& vertex, double turn) {
    const double r = vertex.radius;
    AlongAndAcross in = ShiftOfCircle(0.5 * vertex.lengthIn / r);
    AlongAndAcross out = ShiftOfCircle(0.5 * vertex.lengthOut / r);
    const double shiftIn = in.across * vertex.lengthIn;
    const double shiftOut = out.across * vertex.lengthOut;
    const double half = std::tan(0.5 * turn);
    const double more = (shiftOut - shiftIn) / std::sin(turn);
    return {in.along * vertex.lengthIn + (r + shiftIn) * half + more,
            out.along * vertex.lengthOut + (r + shiftOut) * half - more,
            vertex.lengthIn > 0.0 ? 1.0 / (r * vertex.lengthIn) : 0.0,
            vertex.lengthOut > 0.0 ? 1.0 / (r * vertex.lengthOut) : 0.0,
            vertex.lengthIn + vertex.lengthOut - 2.0 * r * turn};
}

Reach ReachOf(const Profile::Vertex& vertex, double before, double behind) {
    if (vertex.curve == Profile::Curve::Corner) return {};
    if (before == behind) {
        const bool isTooLong = vertex.curve == Profile::Curve::Clothoids;
        return {0.0, 0.0, 0.0, 0.0, isTooLong ? vertex.lengthIn + vertex.lengthOut : 0.0};
    }
    const double turn = std::abs(std::atan(behind) - std::atan(before));
    if (vertex.curve == Profile::Curve::Clothoids) {
        Reach reach = ReachOfClothoids(vertex, turn);
        reach.in /= std::hypot(1.0, before);
        reach.out /= std::hypot(1.0, behind);
        return reach;
    }
    if (vertex.curve == Profile::Curve::Arc) {
        const double along = vertex.radius * std::tan(0.5 * turn);
        return {along / std::hypot(1.0, before), along / std::hypot(1.0, behind)};
    }
    if (vertex.lengthIn > 0.0) return {vertex.lengthIn, vertex.lengthOut};
    const double half = 0.5 * vertex.radius * std::abs(behind - before);
    return {half, half};
}

}  // namespace

// With s the sine of the slope angle, s(u) = s1 + u/R and the rise R (c1 - c) = u (s + s1) / (c + c1).
double Profile::Piece::GetSine(double u) const { return std::clamp(sine + u * bend, -1.0, 1.0); }

double Profile::Piece::GetRise(double u) const {
    const double s = GetSine(u);
    return u * (s + sine) / (std::sqrt(1.0 - s * s) + cosine);
}

// A clothoid against the stations is one along them in the mirror.
Profile::OnClothoid Profile::Piece::At(double along) const {
    const double tau = 0.5 * std::abs(bend) * along * along;
    const AlongAndAcross local = EndOfClothoid(tau);
    const double across = std::copysign(along * local.across, bend);
    const double slope = std::copysign(1.0, length) * sine;
    const double turnSine = std::copysign(std::sin(tau), bend);
    const double turnCosine = std::cos(tau);
    return {along * local.along * cosine - across * slope, across / cosine, slope * turnCosine + cosine * turnSine,
            cosine * turnCosine - slope * turnSine};
}

double Profile::Piece::GetLengthOfClothoid(double u) const {
    const double run = std::copysign(1.0, length) * u;
    // A little beyond its end, for joints are rounded.
    return detail::BracketedNewton(0.0, std::abs(length) + rounding, [this, run](double along) {
        const OnClothoid at = At(along);
        return detail::ValueAndSlope{at.run - run, at.cosine};
    });
}

double Profile::Piece::GetLevelLength() const {
    const double tau = -std::copysign(std::atan2(sine, cosine), sine * length * bend);
    return tau > 0.0 ? std::sqrt(2.0 * tau / std::abs(bend)) : 0.0;
}

double Profile::Piece::GetHeight(double x) const {
    const double dx = x - station;
    const double u = dx - tangent;
    if (form == Form::Clothoid) return GetPlace(x).height;
    if (form == Form::Arc) return height + (touch + GetRise(u));
    return height + (grade * dx + bend * u * u);
}

double Profile::Piece::GetGrade(double x) const {
    const double u = (x - station) - tangent;
    if (form == Form::Clothoid) return GetPlace(x).grade;
    if (form != Form::Arc) return grade + 2.0 * bend * u;
    const double s = GetSine(u);
    return s / std::sqrt(1.0 - s * s);
}

double Profile::Piece::GetMostSecondDerivative(double from, double to) const {
    double curvature = 0.0;
    double cubedSecant = 1.0;
    for (const double x : {from, to}) {
        if (form == Form::Arc) {
            const double s = GetSine((x - station) - tangent);
            const double q = 1.0 - s * s;
            curvature = std::max(curvature, std::abs(bend / (q * std::sqrt(q))));
        } else if (form == Form::Clothoid) {
            const double along = GetLengthOfClothoid((x - station) - tangent);
            const double c = At(along).cosine;
            curvature = std::max(curvature, std::abs(bend * along));
            cubedSecant = std::max(cubedSecant, 1.0 / (c * c * c));
        } else {
            curvature = std::abs(2.0 * bend);
        }
    }
    return curvature * cubedSecant;
}

double Profile::Piece::GetCurvature(double x) const {
    if (form == Form::Arc) return bend;
    if (form == Form::Clothoid) return GetPlace(x).curvature;
    const double g = GetGrade(x);
    const double q = 1.0 + g * g;
    return 2.0 * bend / (q * std::sqrt(q));
}

Profile::Place Profile::Piece::GetPlace(double x) const {
    if (form != Form::Clothoid) return {GetHeight(x), GetGrade(x), GetCurvature(x)};
    const double dx = x - station;
    const double along = GetLengthOfClothoid(dx - tangent);
    const OnClothoid at = At(along);
    return {height + (grade * dx + at.above), std::copysign(1.0, length) * at.sine / at.cosine, bend * along};
}

// Differences are taken analytically: a nearly straight curve is no quotient of two small numbers.
double Profile::Piece::GetSlopeLength(double from, double to) const {
    const double dx = to - from;
    if (form == Form::None) return dx;
    if (form == Form::Clothoid) {
        return std::copysign(1.0, length) *
               (GetLengthOfClothoid((to - station) - tangent) - GetLengthOfClothoid((from - station) - tangent));
    }
    if (form == Form::Arc) {
        const double s1 = GetSine((from - station) - tangent);
        const double s2 = GetSine((to - station) - tangent);
        const double c1 = std::sqrt(1.0 - s1 * s1);
        const double c2 = std::sqrt(1.0 - s2 * s2);
        const double chord = dx * (c1 + s1 * (s1 + s2) / (c1 + c2));
        const double turn = std::atan2(chord * bend, c1 * c2 + s1 * s2);
        return turn == 0.0 ? chord : chord * (turn / (chord * bend));
    }
    const double p1 = GetGrade(from);
    const double p2 = p1 + 2.0 * bend * dx;
    const double q1 = std::sqrt(1.0 + p1 * p1);
    const double q2 = std::sqrt(1.0 + p2 * p2);
    const double turn = p1 * (p1 + p2) / (q1 + q2);
    const double w = q1 - turn;
    return 0.5 * dx * (q2 + turn + w * AsinhRatio(2.0 * bend * dx * w));
}

double Profile::Piece::GetLevelStation() const {
    if (bend == 0.0) return std::numeric_limits<double>::quiet_NaN();
    if (form == Form::Clothoid) {
        const double level = GetLevelLength();
        if (level == 0.0) return std::numeric_limits<double>::quiet_NaN();
        return station + (tangent + std::copysign(At(level).run, length));
    }
    return station + (tangent - (form == Form::Arc ? sine / bend : grade / (2.0 * bend)));
}

double Profile::Piece::GetStation(double y, double sign) const {
    const double rise = y - height;
    if (bend == 0.0) return station + rise / grade;
    // Above the point of tangency; v solves for the slope there, of which the abscissa is a stable quotient.
    const double above = rise - (form == Form::Arc ? touch : grade * tangent);
    if (form == Form::Clothoid) {
        const double side = std::copysign(1.0, length) * sign;  // of the slope away from the line
        const double level = std::min(GetLevelLength(), std::abs(length));
        const bool isBeyond = side * bend > 0.0;  // where it is level
        const double along = detail::BracketedNewton(
            isBeyond ? level : 0.0, isBeyond || level == 0.0 ? std::abs(length) : level, [&](double at) {
                const OnClothoid on = At(at);
                const double risen = on.above + std::copysign(1.0, length) * grade * on.run;
                return detail::ValueAndSlope{side * (risen - above), side * on.sine};
            });
        return station + (tangent + std::copysign(At(along).run, length));
    }
    if (form == Form::Arc) {
        const double v = 2.0 * cosine * above - above * above * bend;
        const double s = sign * std::sqrt(std::max(0.0, sine * sine + v * bend));
        return station + (tangent + (s * sine > 0.0 ? v / (s + sine) : (s - sine) / bend));
    }
    const double p = sign * std::sqrt(std::max(0.0, grade * grade + 4.0 * bend * above));
    return station + (tangent + (p * grade > 0.0 ? 2.0 * above / (p + grade) : (p - grade) / (2.0 * bend)));
}

bool Profile::FindFaults() {
    const auto add = [this](FaultKind kind, std::size_t i, double amount) {
        faults.push_back({kind, i, amount, vertices[i].station});
    };
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const Vertex& v = vertices[i];
        const double values[] = {v.station, v.height, v.lengthIn, v.lengthOut, v.radius};
        if (!std::all_of(std::begin(values), std::end(values), [](double value) { return std::isfinite(value); })) {
            add(FaultKind::NotFinite, i, 0.0);
            continue;
        }
        if (i > 0 && v.station <= vertices[i - 1].station) {
            add(FaultKind::NotAscending, i, vertices[i - 1].station - v.station);
        } else if (i > 0 && std::isinf(GradeBetween(vertices[i - 1], v))) {
            add(FaultKind::NotFinite, i, 0.0);
        }
        if (v.curve == Curve::Corner) continue;
        const double leastLength = std::min(v.lengthIn, v.lengthOut);
        const bool isClothoids = v.curve == Curve::Clothoids && leastLength >= 0.0;
        const bool byRadius = v.curve == Curve::Arc || isClothoids || (v.lengthIn == 0.0 && v.lengthOut == 0.0);
        const double least = byRadius ? v.radius : leastLength;
        if (least <= 0.0 || v.curve > Curve::Clothoids) add(FaultKind::NotACurve, i, least);
        if (i == 0 || i + 1 == vertices.size()) add(FaultKind::CurveAtEnd, i, 0.0);
    }
    return !faults.empty();
}

// A piece that starts where the last one does replaces it.
void Profile::Append(double start, const Piece& piece) {
    while (!starts.empty() && starts.back() >= start) {
        starts.pop_back();
        pieces.pop_back();
    }
    starts.push_back(start);
    pieces.push_back(piece);
}

bool Profile::Set(std::span<const Vertex> added) {
    Profile made;
    made.vertices.assign(added.begin(), added.end());
    if (made.FindFaults() || made.vertices.size() < 2) {
        *this = std::move(made);
        return faults.empty();
    }
    const std::vector<Vertex>& v = made.vertices;
    made.end = v.back().station;
    double reached = v.front().station;
    double before = 0.0;
    for (std::size_t i = 0; i < v.size(); ++i) {
        const bool hasCurve = i > 0 && i + 1 < v.size();
        const double behind = i + 1 < v.size() ? GradeBetween(v[i], v[i + 1]) : before;
        const Reach reach = hasCurve ? ReachOf(v[i], before, behind) : Reach();
        const bool isFinite = std::isfinite(reach.in + reach.out + reach.bendIn + reach.bendOut);
        if (!isFinite || reach.excess > rounding) {
            made = Profile();
            made.vertices.assign(added.begin(), added.end());
            made.faults.push_back({isFinite ? FaultKind::TooLong : FaultKind::NotFinite, i,
                                   isFinite ? reach.excess : 0.0, added[i].station});
            break;
        }
        const double from = v[i].station - reach.in;
        const double to = v[i].station + reach.out;
        if (from < reached - rounding) {
            made.faults.push_back({FaultKind::Overlap, i, reached - from, from});
            made.Append(std::max(from, v.front().station), Piece());
        }
        if (to > reached && reach.in > 0.0) {
            const double start = std::max(from, reached);
            const double in = 1.0 / std::hypot(1.0, before);
            const double side = SignOf(behind - before);
            if (v[i].curve == Curve::Arc || v[i].curve == Curve::Clothoids) {
                Piece arc{Form::Arc,          v[i].station,       v[i].height, before, -reach.in,
                          side / v[i].radius, -before * reach.in, before * in, in};
                if (reach.bendIn > 0.0) {
                    Piece clothoid = arc;
                    clothoid.form = Form::Clothoid;
                    clothoid.bend = side * reach.bendIn;
                    clothoid.length = v[i].lengthIn;
                    made.Append(start, clothoid);
                    const OnClothoid last = clothoid.At(clothoid.length);
                    arc.tangent += last.run;
                    arc.touch = before * arc.tangent + last.above;
                    arc.grade = last.sine / last.cosine;
                    arc.sine = last.sine;
                    arc.cosine = last.cosine;
                }
                made.Append(std::max(start, v[i].station + arc.tangent), arc);
                if (reach.bendOut > 0.0) {
                    const double out = 1.0 / std::hypot(1.0, behind);
                    const Piece clothoid{Form::Clothoid,       v[i].station, v[i].height,  behind, reach.out,
                                         side * reach.bendOut, 0.0,          behind * out, out,    -v[i].lengthOut};
                    const double run = clothoid.At(v[i].lengthOut).run;
                    made.Append(std::max(start, v[i].station + (reach.out - run)), clothoid);
                }
            } else {
                // The curve passes the vertex at this height above it, the halves with one grade.
                const double rise = (behind - before) * reach.in * reach.out / (2.0 * (reach.in + reach.out));
                if (v[i].station > start) {
                    made.Append(start, {Form::Parabola, v[i].station, v[i].height, before, -reach.in,
                                        rise / (reach.in * reach.in)});
                }
                if (reach.in != reach.out || !(v[i].station > start)) {
                    made.Append(std::max(start, v[i].station), {Form::Parabola, v[i].station, v[i].height, behind,
                                                                reach.out, rise / (reach.out * reach.out)});
                }
            }
        }
        reached = std::max(reached, to);
        if (i + 1 < v.size() && reached < made.end) {
            made.Append(reached, {Form::Line, v[i].station, v[i].height, behind});
        }
        before = behind;
    }
    for (std::size_t i = 0; i < made.pieces.size(); ++i) {
        made.slopeLengths.push_back(i == 0 ? 0.0
                                           : made.slopeLengths.back() +
                                                 made.pieces[i - 1].GetSlopeLength(made.starts[i - 1], made.starts[i]));
    }
    *this = std::move(made);
    return faults.empty();
}

std::vector<double> Profile::GetJoints() const {
    std::vector<double> joints = starts;
    if (!IsEmpty()) joints.push_back(end);
    return joints;
}

// The last piece that starts at or before the station, the first one for a station before it.
std::size_t Profile::PieceAt(double station) const {
    const auto next = std::upper_bound(starts.begin() + 1, starts.end(), station);
    return static_cast<std::size_t>(next - starts.begin()) - 1;
}

// An overlap has no heights, but where it starts the piece before it ends.
const Profile::Piece* Profile::Answering(double station) const {
    std::size_t i = PieceAt(station);
    while (i > 0 && pieces[i].form == Form::None && station == starts[i]) --i;
    return pieces[i].form == Form::None ? nullptr : &pieces[i];
}

bool Profile::Clip(double& station) const {
    if (IsEmpty() || !(station >= starts.front() - rounding && station <= end + rounding)) return false;
    station = std::clamp(station, starts.front(), end);
    return true;
}

bool Profile::GetHeight(double station, double& height) const {
    if (!Clip(station)) return false;
    const Piece* const piece = Answering(station);
    if (piece == nullptr) return false;
    height = piece->GetHeight(station);
    return true;
}

bool Profile::GetPlace(double station, Place& place) const {
    if (!Clip(station)) return false;
    const Piece* const piece = Answering(station);
    if (piece == nullptr) return false;
    place = piece->GetPlace(station);
    return true;
}

double Profile::GetMostSecondDerivative(double from, double to) const {
    double most = 0.0;
    if (IsEmpty() || !(from < to)) return most;
    for (std::size_t i = PieceAt(from); i < pieces.size() && starts[i] < to; ++i) {
        if (pieces[i].form == Form::None) continue;
        most = std::max(most, pieces[i].GetMostSecondDerivative(std::max(from, starts[i]), std::min(to, GetEndOf(i))));
    }
    return most;
}

double Profile::GetSlopeLength(double from, double to) const {
    if (IsEmpty() || !(std::abs(to - from) <= std::numeric_limits<double>::max())) return 0.0;
    if (to < from) return -GetSlopeLength(to, from);
    from = std::clamp(from, starts.front(), end);
    to = std::clamp(to, starts.front(), end);
    const std::size_t first = PieceAt(from);
    const std::size_t last = PieceAt(to);
    if (first == last) return pieces[first].GetSlopeLength(from, to);
    return pieces[first].GetSlopeLength(from, starts[first + 1]) + (slopeLengths[last] - slopeLengths[first + 1]) +
           pieces[last].GetSlopeLength(starts[last], to);
}

std::vector<Profile::Run> Profile::GetRuns() const {
    std::vector<Run> runs;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const Piece& piece = pieces[i];
        const double from = starts[i];
        const double to = GetEndOf(i);
        if (piece.form == Form::None || !(to > from)) continue;
        const double level = piece.GetLevelStation();
        const double cuts[] = {from, level > from && level < to ? level : to, to};
        for (int k = 0; k < 2 && cuts[k] < to; ++k) {
            const double middle = cuts[k] + 0.5 * (cuts[k + 1] - cuts[k]);
            runs.push_back({&piece, cuts[k], cuts[k + 1], piece.GetHeight(cuts[k]), piece.GetHeight(cuts[k + 1]),
                            SignOf(piece.GetGrade(middle))});
        }
    }
    // One height for each joint, so that no height falls between the two answers there.
    for (std::size_t i = 1; i < runs.size(); ++i) {
        if (runs[i].from == runs[i - 1].to) runs[i - 1].heightTo = runs[i].heightFrom;
    }
    return runs;
}

std::vector<Profile::Extremum> Profile::GetExtrema() const {
    std::vector<Extremum> extrema;
    double sign = 0.0;  // of the last grade that was not level
    double from = 0.0;  // where it ended
    double reached = 0.0;
    for (const Run& run : GetRuns()) {
        if (run.from != reached) sign = 0.0;  // beyond an overlap
        reached = run.to;
        if (run.sign == 0.0) continue;
        if (sign * run.sign < 0.0) extrema.push_back({from, run.from, run.heightFrom, sign > 0.0});
        sign = run.sign;
        from = run.to;
    }
    return extrema;
}

void Profile::GetStationsOfHeight(double height, std::vector<double>& stations) const {
    const std::size_t known = stations.size();
    const auto add = [&](double station) {
        if (stations.size() == known || stations.back() < station) stations.push_back(station);
    };
    for (const Run& run : GetRuns()) {
        const auto [low, high] = std::minmax(run.heightFrom, run.heightTo);
        if (!(low <= height && height <= high)) continue;
        if (run.heightFrom == height) add(run.from);
        if (low < height && height < high) {
            const double station = run.piece->GetStation(height, run.sign);
            add(station > run.from ? std::min(station, run.to) : run.from);
        }
        if (run.heightTo == height) add(run.to);
    }
}

}  // namespace Kalvio::Math
