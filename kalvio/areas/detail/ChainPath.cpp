#include "kalvio/areas/detail/ChainPath.h"

#include "kalvio/areas/detail/ClothoidFit.h"
#include "kalvio/areas/detail/PlaneVectors.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/PolygonCurve2D.h"
#include "kalvio/polygons/detail/Ring.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

using Corner = AreaOverlay::Corner;

constexpr double mostOfArc = 6.0;  // radians: less than a turn

PlanePoint Plain(const Point2D& p) { return {p.GetX(), p.GetY()}; }
PlanePoint Plain(const Vec2D& v) { return {v.GetX(), v.GetY()}; }

bool IsInRange(const PlanePoint& p) { return std::abs(p.x) <= largestCoordinate && std::abs(p.y) <= largestCoordinate; }

bool AreInRange(const ChainPath& path) {
    return !path.empty() && std::all_of(path.begin(), path.end(), [](const Corner& corner) {
        return IsInRange(corner.at) && IsInRange(corner.center);
    });
}

void GoTo(const PlanePoint& p, ChainPath& path) { path.push_back({p, 0, {}}); }

// The arc from the last corner, in the given direction there.
void GoAround(const PlanePoint& direction, const PlanePoint& end, ChainPath& path) {
    constexpr double flattest = 1e-9;  // angle with the chord

    Corner& start = path.back();
    const PlanePoint chord = end - start.at;
    const double off = Cross(direction, chord);
    if (std::abs(off) > flattest * std::sqrt(Square(chord))) {
        const double signedRadius = 0.5 * Square(chord) / off;
        start.center = start.at - RightOf(direction) * signedRadius;
        start.sense = off > 0.0 ? 1 : -1;
    }
    GoTo(end, path);
}

// How far a point lies off the arc (line) that begins at a corner.
double OffArc(const Corner& corner, const PlanePoint& end, const PlanePoint& p) {
    const PlanePoint arm = p - corner.at;
    if (corner.sense == 0) {
        const PlanePoint chord = end - corner.at;
        return std::abs(Cross(chord, arm)) / std::sqrt(Square(chord));
    }
    const PlanePoint toCenter = corner.center - corner.at;
    return std::abs(Square(arm) - 2.0 * Dot(arm, toCenter)) /
           (std::sqrt(Square(toCenter)) + std::sqrt(Square(arm - toCenter)));
}

// Two arcs that join where the tangents from the ends, equally long, have the middle between them.
void GoAlongBiarc(const ElementPoint& from, const ElementPoint& to, ChainPath& path) {
    const PlanePoint start = Plain(from.point);
    const PlanePoint end = Plain(to.point);
    const PlanePoint u = Plain(from.tangent);
    const PlanePoint w = Plain(to.tangent);
    const PlanePoint chord = end - start;
    const double linear = Dot(chord, u + w);
    const double square = std::max(0.0, 2.0 * (1.0 - Dot(u, w)));
    const double reach = Square(chord) / (linear + std::sqrt(linear * linear + square * Square(chord)));
    if (!std::isfinite(reach)) return GoTo(end, path);
    const PlanePoint joint = (start + u * reach + end - w * reach) * 0.5;
    GoAround(u, joint, path);
    const PlanePoint middle = joint - start;
    const double length = std::sqrt(Square(middle));
    const PlanePoint along = middle * (1.0 / length);
    GoAround(along * (2.0 * Dot(along, u)) - u, end, path);
}

// Whether a stretch is no longer than its stations and leads where its tangents say (Simpson's rule), as far as it is
// short and flat enough to tell. Not so a series beyond its range: arcs keep to that by zigzags alone.
bool IsAlongTangents(const IPolyline2DElement& element, const ElementPoint& from, const ElementPoint& to,
                     double tolerance) {
    constexpr double slack = 1.001;
    constexpr double longest = 0.0156;  // stretch, of the element
    constexpr double flat = 0.9995;     // cosine of the turn
    constexpr double most = 4.0;        // tolerances aside: about half of what arcs do not keep to
    const double length = to.station - from.station;
    const PlanePoint chord = Plain(to.point) - Plain(from.point);
    if (!(std::sqrt(Square(chord)) <= slack * length + tolerance)) return false;
    if (length > longest * element.GetLength()) return true;
    ElementPoint middle;
    if (!EvaluateElement(element, from.station + 0.5 * length, middle)) return false;
    const PlanePoint u = Plain(from.tangent);
    const PlanePoint v = Plain(middle.tangent);
    const PlanePoint w = Plain(to.tangent);
    if (Dot(u, v) < flat || Dot(v, w) < flat) return true;
    const PlanePoint sum = u + v * 4.0 + w;
    return std::abs(Cross(sum, chord)) <= most * tolerance * std::sqrt(Square(sum));
}

struct ElementCurve {
    static constexpr std::size_t inside = 6;  // samples of a stretch
    const IPolyline2DElement& element;

    bool At(double station, ElementPoint& at) const { return EvaluateElement(element, station, at); }
    bool IsSound(const ElementPoint& from, const ElementPoint& to, double tolerance) const {
        return IsAlongTangents(element, from, to, tolerance);
    }
};

constexpr double reserve = 0.9;               // of the tolerance, as it is kept between the samples too
using Samples = std::span<const PlanePoint>;  // inside a stretch, at even stations

// Along a curve from one station to another, in stretches that are laid one by one: `lay` tells what part of a stretch
// the tolerance allows, and leaves nothing where that is less than all.
template <class Curve, class Lay>
bool InStretches(const Curve& curve, double begin, double length, double tolerance, ChainPath& path, Lay&& lay) {
    constexpr double shortest = 1e-5;  // stretch, of the whole
    const double last = begin + length;
    ElementPoint from;
    if (!(length > 0.0) || !std::isfinite(length) || !curve.At(begin, from)) return false;
    from.station = begin;
    GoTo(Plain(from.point), path);
    for (double span = length; from.station < last;) {
        // In equal stretches, as a short rest has no sound directions.
        const double rest = last - from.station;
        const double stretches = std::ceil(rest / span);
        const double end = stretches > 1.0 ? from.station + rest / stretches : last;
        ElementPoint to;
        if (!curve.At(end, to)) return false;
        to.station = end;
        std::array<PlanePoint, Curve::inside> samples;
        for (std::size_t k = 1; k <= samples.size(); ++k) {
            const double at = from.station + (end - from.station) * (static_cast<double>(k) / (Curve::inside + 1.0));
            ElementPoint sample;
            if (!curve.At(at, sample)) return false;
            samples[k - 1] = Plain(sample.point);
        }
        const double part = lay(from, to, samples);
        if (part < 1.0) {
            if (!(end - from.station > shortest * length) || !curve.IsSound(from, to, tolerance)) return false;
            span = (end - from.station) * std::clamp(part, 0.05, reserve);
            continue;
        }
        from = to;
        span *= 1.25;
    }
    return true;
}

double LayBiarc(const ElementPoint& from, const ElementPoint& to, const Samples& samples, double tolerance,
                ChainPath& path) {
    const std::size_t first = path.size() - 1;
    GoAlongBiarc(from, to, path);
    double most = 0.0;
    for (const PlanePoint& p : samples) {
        double off = OffArc(path[first], path[first + 1].at, p);
        if (first + 2 < path.size()) off = std::min(off, OffArc(path[first + 1], path[first + 2].at, p));
        most = std::max(most, off);
    }
    if (most <= reserve * tolerance) return 1.0;
    path.resize(first + 1);
    path.back().sense = 0;
    // What a stretch leaves free grows with its third power.
    return reserve * std::cbrt(reserve * tolerance / most);
}

// By arcs.
template <class Curve>
bool GoAlong(const Curve& curve, double begin, double length, double tolerance, ChainPath& path) {
    const auto lay = [&](const ElementPoint& from, const ElementPoint& to, const Samples& samples) {
        return LayBiarc(from, to, samples, tolerance, path);
    };
    return InStretches(curve, begin, length, tolerance, path, lay);
}

// By clothoids, and by arcs where these reach farther.
template <class Curve>
bool GoAlong(const Curve& curve, double begin, double length, double tolerance, FittedPath& made) {
    const auto lay = [&](const ElementPoint& from, const ElementPoint& to, const Samples& samples) {
        const PlanePoint start = Plain(from.point);
        const Bend bend{made.path.size() - 1, Plain(from.tangent), Plain(to.tangent)};
        double part = 0.0;
        if (const auto fit = ClothoidFit::Find(Plain(to.point) - start, bend.from, bend.to)) {
            double most = 0.0;
            for (std::size_t k = 0; k < samples.size(); ++k) {
                const double share = (static_cast<double>(k) + 1.0) / (Curve::inside + 1.0);
                most = std::max(most, fit->Off(samples[k] - start, share));
            }
            if (most <= reserve * tolerance) {
                made.clothoids.push_back(bend);
                made.path.back() = {start, 1, {}};
                GoTo(Plain(to.point), made.path);
                return 1.0;
            }
            part = std::sqrt(std::sqrt(reserve * tolerance / most));  // with the fourth
        }
        return std::max(part, LayBiarc(from, to, samples, tolerance, made.path));
    };
    return InStretches(curve, begin, length, tolerance, made.path, lay);
}

// The offset of an element whose distance is linear in the station.
struct OffsetCurve {
    static constexpr std::size_t inside = 12;  // as these are uneven where it nearly folds
    const IPolyline2DElement& element;
    double start;     // a station,
    double distance;  // the distance there,
    double slope;     // and what it grows by

    // Q = P + d n has Q' = (1 + d k) t + d' n; it folds where it does not go forward.
    bool At(double station, ElementPoint& at) const {
        const double length = element.GetLength();
        double curvature = 0.0;
        if (!EvaluateElement(element, std::min(station, length), at) ||
            !CurvatureOfElement(element, std::min(station, length), curvature)) {
            return false;
        }
        const double d = distance + slope * (station - start);
        const double forward = 1.0 + d * curvature;
        if (!(forward > 0.0)) return false;
        const Vec2D normal(at.tangent.GetY(), -at.tangent.GetX());
        at.point = at.point + normal * d;
        const Vec2D direction = at.tangent * forward + normal * slope;
        at.tangent = direction / direction.Length();
        return true;
    }
    static bool IsSound(const ElementPoint&, const ElementPoint&, double) { return true; }
};

// In the place of the element, which a path has from a corner on.
void TakeParallel(const IPolyline2DElement& element, double tolerance, std::size_t corner, ChainPath& path,
                  Transitions& transitions) {
    const double length = element.GetLength();
    const OffsetCurve curve{element, 0.0, transitions.distance, 0.0};
    ElementPoint start, end;
    FittedPath parallel;
    if (!EvaluateElement(element, 0.0, start) || !EvaluateElement(element, length, end) ||
        !GoAlong(curve, 0.0, length, tolerance, parallel) || !AreInRange(parallel.path)) {
        return;
    }
    transitions.bends.push_back({corner, Plain(start.tangent), Plain(end.tangent)});
    transitions.parallels.push_back(std::move(parallel));
    path.resize(corner);
    path.push_back({Plain(start.point), 1, {}});
    GoTo(Plain(end.point), path);
}

bool Append(const IPolyline2DElement& element, double tolerance, ChainPath& path, Transitions* transitions) {
    switch (element.GetType()) {
        case MathTypes::Line2D:
            GoTo(Plain(element.GetStart()), path);
            GoTo(Plain(element.GetEnd()), path);
            return true;
        case MathTypes::LineString2D:
            for (const Point2D& p : static_cast<const LineString2D&>(element).GetPoints()) GoTo(Plain(p), path);
            return true;
        case MathTypes::Polyline2D: {
            const auto& chain = static_cast<const Polyline2D&>(element);
            return std::all_of(chain.begin(), chain.end(), [&](const IPolyline2DElement& inner) {
                return Append(inner, tolerance, path, transitions);
            });
        }
        case MathTypes::Arc2D: {
            const auto& arc = static_cast<const Arc2D&>(element);
            const double length = arc.GetLength();
            if (!std::isfinite(length)) return false;
            const double parts = std::ceil(std::abs(arc.GetAngle().GetRadians()) / mostOfArc);
            for (double k = 0.0; k < parts && length > tolerance; k += 1.0) {
                Point2D start;
                if (!arc.GetPointOffsetFromStart(length * (k / parts), start)) return false;
                path.push_back({Plain(start), arc.GetAngle().GetRadians() < 0.0 ? -1 : 1, Plain(arc.GetCenter())});
            }
            GoTo(Plain(arc.GetEnd()), path);
            return true;
        }
        default: {
            const std::size_t first = path.size();
            if (!GoAlong(ElementCurve{element}, 0.0, element.GetLength(), tolerance, path)) return false;
            if (transitions != nullptr) TakeParallel(element, tolerance, first, path, *transitions);
            return true;
        }
    }
}

/// Lays the offset of a chain with a distance that changes, element by element.
class Widening {
public:
    Widening(std::span<const Offset::Width> distances, double userTolerance, FittedPath& result)
        : widths(distances), tolerance(userTolerance), path(result.path), clothoids(result.clothoids) {}

    bool Add(const Polyline2D& chain) {
        return std::all_of(chain.begin(), chain.end(), [&](const IPolyline2DElement& element) {
            if (element.GetType() == MathTypes::Polyline2D) return Add(static_cast<const Polyline2D&>(element));
            if (element.GetType() != MathTypes::LineString2D) return Add(element);
            const std::vector<Point2D>& points = static_cast<const LineString2D&>(element).GetPoints();
            for (std::size_t i = 1; i < points.size(); ++i) {
                if (!Add(Line2D(points[i - 1], points[i]))) return false;
            }
            return true;
        });
    }

private:
    // The widths around a station that stretches run between: before the first and after the last it is theirs.
    double DistanceAt(double station) const {
        if (next == 0) return widths.front().distance;
        if (next == widths.size()) return widths.back().distance;
        const Offset::Width& a = widths[next - 1];
        const Offset::Width& b = widths[next];
        return a.distance + (b.distance - a.distance) * ((station - a.station) / (b.station - a.station));
    }

    bool Add(const IPolyline2DElement& element) {
        const double length = element.GetLength();
        if (!std::isfinite(length)) return false;
        if (!(length > tolerance)) {
            done += length;
            return true;
        }
        isFirstOfElement = true;
        for (double from = 0.0; from < length;) {
            while (next < widths.size() && widths[next].station - done <= from + shortest * length) ++next;
            double to = length;
            if (next < widths.size()) to = std::min(to, widths[next].station - done);
            if (length - to < shortest * length) to = length;
            if (!AddStretch(element, from, to)) return false;
            from = to;
        }
        done += length;
        return true;
    }

    bool AddStretch(const IPolyline2DElement& element, double from, double to) {
        const double distance = DistanceAt(done + from);
        const double slope = (DistanceAt(done + to) - distance) / (to - from);
        ElementPoint start, end;
        if (!EvaluateElement(element, from, start) || !EvaluateElement(element, to, end)) return false;
        const OffsetCurve curve{element, from, distance, slope};
        FittedPath fitted;
        ChainPath& made = fitted.path;
        double curvature = 0.0;
        if (element.GetType() == MathTypes::Arc2D && slope == 0.0) {
            ElementPoint at;
            if (!curve.At(from, at) || !CurvatureOfElement(element, from, curvature)) return false;
            const PlanePoint center = Plain(static_cast<const Arc2D&>(element).GetCenter());
            const double parts = std::ceil((to - from) * std::abs(curvature) / mostOfArc);
            for (double k = 0.0; k < parts; k += 1.0) {
                if (!curve.At(from + (to - from) * (k / parts), at)) return false;
                made.push_back({Plain(at.point), curvature < 0.0 ? -1 : 1, center});
            }
            if (!curve.At(to, at)) return false;
            GoTo(Plain(at.point), made);
        } else if (element.GetType() == MathTypes::Line2D) {
            for (const double station : {from, to}) {
                ElementPoint at;
                if (!curve.At(station, at)) return false;
                GoTo(Plain(at.point), made);
            }
        } else if (!GoAlong(curve, from, to - from, tolerance, fitted)) {
            return false;
        }
        Join(start, distance, made);
        for (const Bend& bend : fitted.clothoids) clothoids.push_back({path.size() + bend.corner, bend.from, bend.to});
        path.insert(path.end(), made.begin(), made.end());
        before = end;
        distanceBefore = distance + slope * (to - from);
        isFirstOfElement = false;
        return true;
    }

    // Around the corner outside, to where two lines meet inside; steps of the distance need nothing but a segment.
    void Join(const ElementPoint& start, double distance, ChainPath& made) {
        if (path.empty() || !isFirstOfElement || std::abs(distance - distanceBefore) > tolerance) return;
        const PlanePoint u = Plain(before.tangent);
        const PlanePoint w = Plain(start.tangent);
        const PlanePoint gap = made.front().at - path.back().at;
        if (Square(gap) <= tolerance * tolerance) return;
        const double turn = Cross(u, w);
        if (turn * distance > 0.0 || (turn == 0.0 && Dot(u, w) < 0.0)) {
            path.back().sense = distance > 0.0 ? 1 : -1;
            path.back().center = Plain(start.point);
            return;
        }
        if (path.size() < 2 || path[path.size() - 2].sense != 0 || made.front().sense != 0) return;
        const PlanePoint back = path[path.size() - 2].at - path.back().at;
        const PlanePoint ahead = made[1].at - made.front().at;
        const double cross = Cross(back, ahead);
        const double onBack = Cross(gap, ahead) / cross;
        const double onAhead = Cross(gap, back) / cross;
        if (!(onBack >= 0.0 && onBack <= 1.0 && onAhead >= 0.0 && onAhead <= 1.0)) return;
        path.back().at = path.back().at + back * onBack;
        made.front().at = path.back().at;
    }

    static constexpr double shortest = 1e-9;  // stretch, of an element
    std::span<const Offset::Width> widths;
    double tolerance;
    ChainPath& path;
    std::vector<Bend>& clothoids;
    double done = 0.0;     // length of the elements before
    std::size_t next = 0;  // the first width that is ahead
    bool isFirstOfElement = true;
    ElementPoint before;
    double distanceBefore = 0.0;
};

double AtLeastRounding(double tolerance, const Polyline2D& chain) {
    constexpr double roundings = 32.0 * std::numeric_limits<double>::epsilon();
    const PlanePoint start = Plain(chain.GetStart());
    const PlanePoint end = Plain(chain.GetEnd());
    const double largest = std::max({std::abs(start.x), std::abs(start.y), std::abs(end.x), std::abs(end.y)});
    return std::max({tolerance, numericalZero, roundings * largest});
}

bool Finish(bool isMade, ChainPath& path) {
    if (isMade && AreInRange(path)) return true;
    path.clear();
    return false;
}

}  // namespace

bool MakePath(const LineString2D& chain, ChainPath& path) {
    path.clear();
    path.reserve(chain.GetSize());
    for (const Point2D& p : chain.GetPoints()) GoTo(Plain(p), path);
    return Finish(true, path);
}

bool MakePath(const Polyline2D& chain, double tolerance, ChainPath& path, Transitions* transitions) {
    path.clear();
    return Finish(Append(chain, AtLeastRounding(tolerance, chain), path, transitions), path);
}

FittedPath WithParallels(const ChainPath& path, const Transitions& transitions) {
    FittedPath whole;
    std::size_t next = 0;
    const auto take = [&](std::size_t end) {
        for (; next < end; ++next) whole.path.push_back(path[next]);
    };
    for (std::size_t k = 0; k < transitions.bends.size(); ++k) {
        const std::size_t corner = transitions.bends[k].corner;
        if (corner >= path.size()) continue;
        take(corner);
        const auto& [parallel, clothoids] = transitions.parallels[k];
        for (const Bend& bend : clothoids) {
            whole.clothoids.push_back({whole.path.size() + bend.corner, bend.from, bend.to});
        }
        whole.path.insert(whole.path.end(), parallel.begin(), parallel.end());
        const Corner& end = path[corner + 1];  // where a join may begin
        whole.path.back() = {parallel.back().at, end.sense, end.center};
        next = corner + 2;
    }
    take(path.size());
    return whole;
}

bool MakeWidened(const Polyline2D& chain, std::span<const Offset::Width> widths, double tolerance, FittedPath& made) {
    made = {};
    if (!MakePath(chain, tolerance, made.path)) return false;  // as the offset of what leads elsewhere is none
    made.path.clear();
    return Finish(Widening(widths, AtLeastRounding(tolerance, chain), made).Add(chain), made.path);
}

bool MakeChords(const Polyline2D& chain, double height, ChainPath& path) {
    constexpr double finest = 1e-9;  // of the length
    path.clear();
    const double length = chain.GetLength();
    if (chain.GetNrOfElements() == 0 || !std::isfinite(length)) return false;
    std::vector<Polyline2D::PolylinePoint> samples;
    if (length > 0.0) {
        const bool isMade = chain.MakePointsAndTangentsUsingHeight(0.0, length, samples,
                                                                   std::max(height, finest * length), numericalZero);
        if (!isMade) return false;
        for (const auto& sample : samples) GoTo(Plain(sample.point), path);
    } else {
        GoTo(Plain(chain.GetStart()), path);
    }
    return Finish(true, path);
}

namespace {

bool MakeRingChords(const RingCurve2D& ring, double height, std::vector<Point2D>& points) {
    Polyline2D chain;
    for (const IPolyline2DElement& element : ring) chain.AppendElement(element);
    ChainPath path;
    points.clear();
    if (chain.GetNrOfElements() > 0 && !MakeChords(chain, height, path)) return false;
    for (const Corner& corner : path) points.emplace_back(corner.at.x, corner.at.y);
    return true;
}

}  // namespace

bool MakeChords(const PolygonCurve2D& area, double height, Polygon2D& polygon) {
    std::vector<Point2D> points;
    if (!MakeRingChords(area.GetBoundary(), height, points)) return false;
    polygon = Polygon2D(points);
    for (unsigned int i = 0; i < area.GetNumInnerRings(); ++i) {
        if (!MakeRingChords(area.GetInnerRingAtIndex(i), height, points)) return false;
        polygon.AppendHoleBoundary(LineString2D(points));
    }
    return true;
}

ChainPath Reversed(const ChainPath& path, bool isClosed) {
    ChainPath reversed;
    reversed.reserve(path.size());
    for (std::size_t i = path.size(); i-- > 0;) {
        Corner corner{path[i].at, 0, {}};
        if (i > 0 || isClosed) {
            const Corner& before = path[i > 0 ? i - 1 : path.size() - 1];
            corner.sense = -before.sense;
            corner.center = before.center;
        }
        reversed.push_back(corner);
    }
    return reversed;
}

}  // namespace Kalvio::Math::detail
