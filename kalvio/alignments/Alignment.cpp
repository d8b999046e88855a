#include "kalvio/alignments/Alignment.h"

#include "kalvio/alignments/detail/AlignmentCurves.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/detail/Stations.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/queries/IntersectionExt.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Kalvio::Math {

namespace {

constexpr double samePlace = 1e-4;   // a length along the plan: minima this near are one, told by both sides of a joint
constexpr double sameChange = 1e-6;  // a length: changes this near are one

// A foot is at most this much further than its offset, squared: by the end tolerance along the plan.
constexpr double squaredSlack = 2e-8;

bool IsNearer(const Alignment::Place& a, const Alignment::Place& b) { return std::abs(a.offset) < std::abs(b.offset); }

}  // namespace

struct Alignment::OnPlan {
    Point2D point;
    Vec2D tangent;
    std::size_t curve = 0;
    double along = 0.0;
};

Alignment::Alignment(const Polyline2D& horizontal, const Profile& vertical, const Cant& crossSlopes,
                     const Stationing& numbers)
    : plan(horizontal), profile(vertical), cant(crossSlopes), stationing(numbers) {}

const detail::AlignmentCurves& Alignment::GetCurves() const {
    return *curves.Get([this] { return std::make_shared<const detail::AlignmentCurves>(plan); });
}

double Alignment::GetLength() const { return GetCurves().GetLength(); }

double Alignment::GetSpaceLength(double from, double to) const {
    if (to < from) return -GetSpaceLength(to, from);
    from = std::clamp(from, 0.0, GetLength());
    to = std::clamp(to, 0.0, GetLength());
    const double first = std::clamp(profile.GetStart(), from, to);
    const double last = std::clamp(profile.GetEnd(), from, to);
    return (first - from) + profile.GetSlopeLength(first, last) + (to - last);
}

bool Alignment::Find(double station, OnPlan& on) const {
    const detail::AlignmentCurves& all = GetCurves();
    if (!all.Clip(station)) return false;
    on.curve = all.CurveAt(station);
    const detail::AlignmentCurves::Curve& curve = all.GetCurves()[on.curve];
    on.along = std::min(station - all.GetStarts()[on.curve], curve.length);
    const detail::PlanState at = curve.curve.At(on.along);
    on.point = curve.origin + at.position;
    on.tangent = at.velocity;
    return true;
}

bool Alignment::GetSurface(double station, Cant::Place& slopes, double& height) const {
    if (!profile.GetHeight(station, height)) return false;
    slopes = cant.GetPlace(station);
    return true;
}

bool Alignment::GetPoint(double station, double offset, Point2D& point) const {
    OnPlan on;
    if (!Find(station, on)) return false;
    point = on.point + on.tangent.GetNormalVector(false) * offset;
    return true;
}

bool Alignment::GetPoint(const Place& place, Point3D& point) const {
    OnPlan on;
    Cant::Place slopes;
    double height = 0.0;
    if (!Find(place.station, on) || !GetSurface(place.station, slopes, height)) return false;
    point = Point3D(on.point + on.tangent.GetNormalVector(false) * place.offset,
                    height + (slopes.GetHeight(place.offset) + place.above));
    return true;
}

bool Alignment::GetHeight(double station, double offset, double& height) const {
    Cant::Place slopes;
    double found = 0.0;
    if (!GetCurves().Clip(station) || !GetSurface(station, slopes, found)) return false;
    height = found + slopes.GetHeight(offset);
    return true;
}

bool Alignment::GetDirection(double station, Vec2D& direction, double& curvature) const {
    OnPlan on;
    if (!Find(station, on)) return false;
    direction = on.tangent;
    curvature = GetCurves().GetCurves()[on.curve].curve.GetCurvature(on.along);
    return true;
}

bool Alignment::GetFrame(double station, Frame& frame) const {
    OnPlan on;
    Profile::Place vertical;
    if (!Find(station, on) || !profile.GetPlace(station, vertical)) return false;
    const double cosine = 1.0 / std::sqrt(1.0 + vertical.grade * vertical.grade);
    const double sine = vertical.grade * cosine;
    frame.station = station;
    frame.cant = cant.GetPlace(station);
    frame.position = Point3D(on.point, vertical.height + frame.cant.lift);
    frame.direction = Vec3D(on.tangent * cosine, sine);
    frame.right = Vec3D(on.tangent.GetNormalVector(false), 0.0);
    frame.up = Vec3D(on.tangent * -sine, cosine);
    frame.grade = vertical.grade;
    frame.curvature = GetCurves().GetCurves()[on.curve].curve.GetCurvature(on.along);
    frame.profileCurvature = vertical.curvature;
    return true;
}

bool Alignment::GetCrossLine(double station, double from, double to, Line2D& line) const {
    OnPlan on;
    if (!std::isfinite(to - from) || from == to || !Find(station, on)) return false;
    const Vec2D right = on.tangent.GetNormalVector(false);
    line = Line2D(on.point + right * from, on.point + right * to);
    return true;
}

bool Alignment::GetCrossLine(double station, double from, double to, LineString3D& line) const {
    Line2D inPlan;
    Point3D points[3];
    if (!GetCrossLine(station, from, to, inPlan) || !GetPoint({station, from, 0.0}, points[0]) ||
        !GetPoint({station, 0.0, 0.0}, points[1]) || !GetPoint({station, to, 0.0}, points[2])) {
        return false;
    }
    LineString3D made;
    for (const int i : {0, 1, 2}) {
        if (i != 1 || from * to < 0.0) made.AppendPoint(points[i]);
    }
    line = std::move(made);
    return true;
}

std::size_t Alignment::GetPoints(std::span<const Place> places, std::span<Point3D> points) const {
    std::size_t i = 0;
    while (i < places.size() && i < points.size() && GetPoint(places[i], points[i])) ++i;
    return i;
}

std::size_t Alignment::GetFrames(std::span<const double> stations, std::span<Frame> frames) const {
    std::size_t i = 0;
    while (i < stations.size() && i < frames.size() && GetFrame(stations[i], frames[i])) ++i;
    return i;
}

double Alignment::GetAbove(const Point3D& point, double station, double offset) const {
    Cant::Place slopes;
    double height = 0.0;
    return GetSurface(station, slopes, height) ? (point.GetZ() - height) - slopes.GetHeight(offset) : 0.0;
}

void Alignment::GetPlaces(const Point3D& point, double reach, std::vector<Place>& places) const {
    places.clear();
    const detail::AlignmentCurves& all = GetCurves();
    const Point2D q = point.GetPoint2D();
    double squaredReach = reach * reach;
    if (!(reach >= 0.0) || !std::isfinite(q.GetX() + q.GetY())) return;
    all.ForEachFoot(q, squaredReach, [&](const detail::AlignmentCurves::Foot& foot) {
        places.push_back({all.GetStarts()[foot.curve] + foot.along, foot.offset, 0.0, foot.isPerpendicular});
    });
    std::stable_sort(places.begin(), places.end(), IsNearer);
    std::size_t kept = 0;
    for (const Place& place : places) {
        const bool isKnown =
            std::any_of(places.begin(), places.begin() + static_cast<std::ptrdiff_t>(kept),
                        [&](const Place& p) { return std::abs(p.station - place.station) <= samePlace; });
        if (!isKnown) places[kept++] = place;
    }
    places.resize(kept);
    for (Place& place : places) place.above = GetAbove(point, place.station, place.offset);
}

bool Alignment::GetNearestPlace(const Point3D& point, double reach, Place& place) const {
    const detail::AlignmentCurves& all = GetCurves();
    const Point2D q = point.GetPoint2D();
    if (!(reach >= 0.0) || !std::isfinite(q.GetX() + q.GetY())) return false;
    double squaredReach = reach * reach;
    bool isFound = false;
    Place nearest;
    all.ForEachFoot(q, squaredReach, [&](const detail::AlignmentCurves::Foot& foot) {
        const double station = all.GetStarts()[foot.curve] + foot.along;
        const Place here{station, foot.offset, 0.0, foot.isPerpendicular};
        if (isFound && !IsNearer(here, nearest)) return;
        nearest = here;
        squaredReach = std::min(squaredReach, foot.offset * foot.offset + squaredSlack);
        isFound = true;
    });
    if (!isFound) return false;
    nearest.above = GetAbove(point, nearest.station, nearest.offset);
    place = nearest;
    return true;
}

std::size_t Alignment::GetNearestPlaces(std::span<const Point3D> points, double reach, std::span<Place> places) const {
    std::size_t found = 0;
    for (std::size_t i = 0; i < points.size() && i < places.size(); ++i) {
        if (GetNearestPlace(points[i], reach, places[i])) {
            ++found;
        } else {
            places[i] = {std::numeric_limits<double>::quiet_NaN(), 0.0, 0.0, false};
        }
    }
    return found;
}

std::vector<double> Alignment::GetChanges(double from, double to) const {
    from = std::max(from, 0.0);
    to = std::min(to, GetLength());
    if (GetCurves().IsEmpty() || !(from <= to)) return {};
    std::vector<double> found;
    const auto add = [&](double station) {
        if (station > from + sameChange && station < to - sameChange) found.push_back(station);
    };
    for (const double station : GetCurves().GetStarts()) add(station);
    for (const double station : profile.GetJoints()) add(station);
    for (const Cant::Knot& knot : cant.GetKnots()) add(knot.station);
    for (std::uint32_t i = 0; i + 1 < stationing.GetNrOfZones(); ++i) add(stationing.GetEquation(i).length);
    std::sort(found.begin(), found.end());
    std::vector<double> changes{from};
    for (const double station : found) {
        if (station - changes.back() > sameChange) changes.push_back(station);
    }
    if (to > from) changes.push_back(to);
    return changes;
}

std::vector<double> Alignment::GetStationsByStep(double from, double to, double step) const {
    from = std::max(from, 0.0);
    to = std::min(to, GetLength());
    if (GetCurves().IsEmpty() || !(from <= to) || !(step > 0.0) || !((to - from) / step < detail::mostSamples))
        return {};
    std::vector<double> stations;
    const auto count = static_cast<std::size_t>((to - from) / step) + 1;
    stations.reserve(count + 1);
    for (std::size_t i = 0; i < count; ++i) stations.push_back(std::min(from + static_cast<double>(i) * step, to));
    if (to - stations.back() > sameChange) {
        stations.push_back(to);
    } else {
        stations.back() = to;
    }
    return stations;
}

std::vector<double> Alignment::GetStationsByNumber(double from, double to, double step) const {
    const std::vector<double> changes = GetChanges(from, to);
    if (changes.empty() || !((changes.back() - changes.front()) / step < detail::mostSamples) || !(step > 0.0))
        return {};
    std::vector<double> stations{changes.front()};
    for (std::size_t i = 1; i < changes.size(); ++i) {
        const double start = changes[i - 1];
        const double end = changes[i];
        const Stationing::Place middle = stationing.GetPlace(0.5 * (start + end));  // surely of the zone between them
        const double first = std::ceil((middle.number - (middle.length - start)) / step);
        const auto count = static_cast<std::size_t>((end - start) / step) + 2;
        for (std::size_t k = 0; k < count; ++k) {
            double station = 0.0;
            const double number = (first + static_cast<double>(k)) * step;
            if (!stationing.GetLength(number, middle.zone, station)) continue;
            if (station - stations.back() > sameChange && end - station > sameChange) stations.push_back(station);
        }
        stations.push_back(end);
    }
    return stations;
}

// A chord over a length d of stations leaves the curve by at most |P''| d^2 / 8, with |P''|^2 = k^2 + y''^2.
std::vector<double> Alignment::GetStationsByHeight(double from, double to, double height) const {
    if (!(height > 0.0)) return {};
    const detail::AlignmentCurves& all = GetCurves();
    const std::vector<double> changes = GetChanges(from, to);
    if (changes.empty()) return {};
    std::vector<double> stations{changes.front()};
    for (std::size_t i = 1; i < changes.size(); ++i) {
        const double end = changes[i];
        const std::size_t curve = all.CurveAt(0.5 * (changes[i - 1] + end));
        // The longest step that fits, from the bound over all that is left, then over what that step covers.
        for (double at = changes[i - 1]; at < end;) {
            const auto fitting = [&](double span) {
                const double bend = std::hypot(all.GetMostCurvature(curve, at, at + span),
                                               profile.GetMostSecondDerivative(at, at + span));
                return std::min(std::sqrt(8.0 * height / bend), span);
            };
            double step = fitting(end - at);
            if (!((end - at) / step < detail::mostSamples - static_cast<double>(stations.size()))) return {};
            for (int k = 0; k < 4; ++k) step = std::max(step, fitting(0.5 * (step + (end - at))));
            at = end - at - step <= sameChange ? end : at + step;
            stations.push_back(at);
        }
    }
    return stations;
}

std::vector<Alignment::Crossing> Alignment::GetCrossings(const Alignment& other, const Tolerances& tolerances) const {
    std::vector<IntersectionExt::IntersectionPoint<Point2D>> points;
    (void)IntersectionExt::Intersect(plan, other.plan, points, tolerances);
    std::vector<Crossing> crossings;
    for (const auto& found : points) {
        Crossing crossing{found.firstStation, found.secondStation, found.point};
        double here = 0.0;
        double there = 0.0;
        crossing.hasClearance =
            GetHeight(found.firstStation, 0.0, here) && other.GetHeight(found.secondStation, 0.0, there);
        if (crossing.hasClearance) crossing.clearance = there - here;
        crossings.push_back(crossing);
    }
    return crossings;
}

}  // namespace Kalvio::Math
