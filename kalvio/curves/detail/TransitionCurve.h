#pragma once

#include "kalvio/curves/IPolyline2DElement.h"
#include "kalvio/curves/detail/CurveSearch.h"
#include "kalvio/curves/detail/SampleSteps.h"

#include <algorithm>
#include <cmath>
#include <vector>

/// What transition curves answer alike as elements of a chain. Beside what CurveSearch.h asks for, a `Curve` offers
///
///     const Point2D& GetStart() const;
///     const Point2D& GetEnd() const;
///     double GetLength() const;
namespace Kalvio::Math::detail {

/// The point of the curve at a station and `offset` from its start. The ends are the element's own, to the last digit.
template <class Curve>
Point2D PointOf(const Curve& curve, double station, const Vec2D& offset) {
    if (station <= 0.0) return curve.GetStart();
    return station >= curve.GetLength() ? curve.GetEnd() : curve.GetStart() + offset;
}

/// Point, tangent and station at a station of the curve.
template <class Curve>
IPolyline2DElement::PolylineElementPoint SampleOf(const Curve& curve, double station) {
    const CurveState at = curve.At(station);
    return {PointOf(curve, station, Vec2D(at.x, at.y)), Vec2D(at.cosine, at.sine), station};
}

/// The same; false, the result untouched, more than 1e-10 outside [0, length].
template <class Curve>
bool SampleAt(const Curve& curve, double station, IPolyline2DElement::PolylineElementPoint& result) {
    const double length = curve.GetLength();
    if (!(station >= -numericalZero) || !(station <= length + numericalZero)) return false;
    return Store(SampleOf(curve, std::clamp(station, 0.0, length)), result);
}

/// From the start to the point at a station, and the tangent there. @return false, both untouched, where they are not
/// finite
template <class Curve>
bool OffsetAt(const Curve& curve, double station, Vec2D& offset, Vec2D& tangent) {
    const CurveState at = curve.At(station);
    return std::isfinite(at.cosine) && std::isfinite(at.sine) && Store(Vec2D(at.x, at.y), offset) &&
           Store(Vec2D(at.cosine, at.sine), tangent);
}

/// Calls find(search, from, to, station) for a query point over the stations [from, to], clipped to the curve, and
/// takes the sample at the station found.
/// @return false, `found` untouched, when it finds none, for an empty range, and for a point that is not finite
template <class Curve, class Find>
bool SearchCurve(const Curve& curve, const Point2D& point, double from, double to,
                 IPolyline2DElement::PolylineElementPoint& found, Find&& find) {
    if (!std::isfinite(point.GetX()) || !std::isfinite(point.GetY())) return false;
    if (!ClipStations(curve.GetLength(), from, to)) return false;
    const Vec2D query = point - curve.GetStart();
    NearestSearch<Curve> search(curve, query.GetX(), query.GetY());
    double station = 0.0;
    return find(search, from, to, station) && Store(SampleOf(curve, station), found);
}

/// The nearest point over the stations [from, to].
template <class Curve>
bool NearestOnCurve(const Curve& curve, const Point2D& point, double from, double to,
                    IPolyline2DElement::PolylineElementPoint& nearest) {
    return SearchCurve(curve, point, from, to, nearest, [](auto& search, double low, double high, double& station) {
        return search.Find(low, high, station);
    });
}

/// The nearest foot of a perpendicular over the stations [from, to]; none on an empty range.
template <class Curve>
bool FootOnCurve(const Curve& curve, const Point2D& point, double from, double to, double tolerance,
                 IPolyline2DElement::PolylineElementPoint& foot) {
    return SearchCurve(curve, point, from, to, foot,
                       [tolerance](auto& search, double low, double high, double& station) {
                           return low < high && search.FindFoot(low, high, tolerance, station);
                       });
}

/// The box of the curve, widened by a margin.
template <class Curve>
BoundingBox2D BoxOfElement(const Curve& curve, double margin) {
    const BoundingBox2D box = BoxOfCurve(curve, curve.GetLength());
    const Vec2D toStart(curve.GetStart().GetX(), curve.GetStart().GetY());
    const Vec2D wide(margin, margin);
    return {box.GetMinPoint() + toStart - wide, box.GetMaxPoint() + toStart + wide};
}

/// The stations of `BuildConstantSteps` over [from, to], clipped to the curve; none for an empty range.
template <class Curve>
std::vector<double> ConstantStations(const Curve& curve, double from, double to, double step) {
    std::vector<double> stations;
    if (ClipStations(curve.GetLength(), from, to)) BuildConstantSteps(stations, from, to, step);
    MakeStations(stations, from, to);
    return stations;
}

/// The stations of `BuildStepsForHeight` over [from, to], clipped to the curve; none for an empty range.
template <class Curve>
std::vector<double> StationsForHeight(const Curve& curve, double from, double to, double height) {
    std::vector<double> stations;
    if (ClipStations(curve.GetLength(), from, to)) {
        BuildStepsForHeight(stations, from, to, height, [&](double station) { return curve.GetCurvature(station); });
    }
    MakeStations(stations, from, to);
    return stations;
}

/// `ExtendStart` by the `ExtendEnd` of the reversed element.
template <class Element>
bool ExtendStartOf(Element& element, const Point2D& point, const Tolerances& tolerances) {
    Element reversed(element);
    reversed.Reverse();
    if (!reversed.ExtendEnd(point, tolerances)) return false;
    reversed.Reverse();
    element = reversed;
    return true;
}

}  // namespace Kalvio::Math::detail
