#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Spiral2D.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/queries/Projection.h"

#include <cmath>
#include <limits>

namespace Kalvio::Math {

namespace {

using Sample = IPolyline2DElement::PolylineElementPoint;

int Report(bool found, const Sample& sample, Point2D& foot, double& station, Vec2D& tangent) {
    if (!found) return 0;
    foot = sample.point;
    station = sample.station;
    tangent = sample.tangent;
    return 1;
}

// The nearest foot of all, on the elements or on their straight continuations beyond their ends.
class Continuations {
public:
    /// @param onElement  the nearest foot on an element; null where there is none
    Continuations(const Point2D& query, const Polyline2D::PolylinePoint* onElement, double reachBeyondEnds)
        : point(query), elementReach(onElement != nullptr ? std::abs(reachBeyondEnds) : 0.0) {
        if (onElement != nullptr) best = *onElement;
    }

    void Add(const IPolyline2DElement& element, std::uint32_t index, double from) {
        const double length = element.GetLength();
        for (const bool atEnd : {false, true}) {
            Sample end;
            const double station = atEnd ? length : 0.0;
            if (!detail::EvaluateElement(element, station, end)) continue;
            const Vec2D outward = atEnd ? end.tangent : -end.tangent;
            const double beyond = (point - end.point).DotProduct(outward);
            const Point2D candidate = end.point + outward * beyond;
            const double distance = candidate.Distance(point);
            if (!(beyond >= elementReach) || !(outward.NormSquared() > 0.0) || !(distance < best.distance)) continue;
            best = {candidate, end.tangent, index, distance, from + station + (atEnd ? beyond : -beyond)};
            isOutside = true;
        }
    }
    bool IsOutside() const { return isOutside; }
    const Polyline2D::PolylinePoint& GetBest() const { return best; }

private:
    Point2D point;
    double elementReach;  // so far beyond its ends an element has the foot itself
    bool isOutside = false;
    Polyline2D::PolylinePoint best{{}, {}, 0, std::numeric_limits<double>::infinity(), 0.0};
};

int Report(int status, const Polyline2D::PolylinePoint& found, Point2D& foot, double& station) {
    if (status == 0) return 0;
    foot = found.point;
    station = found.station;
    return status;
}

}  // namespace

Point2D Projection::NearestPointOnArc(const Point2D& point, const Arc2D& arc, double tolerance) {
    return arc.GetNearestPoint(point, Tolerances(tolerance));
}

int Projection::NormalPointOnArc(const Point2D& point, const Arc2D& arc, Point2D& foot, double tolerance) {
    Sample sample;
    if (!arc.GetNormalPoint(point, tolerance, sample)) return 0;
    foot = sample.point;
    return 1;
}

int Projection::NormalPointOnCircle(const Point2D& point, const Circle2D& circle, Point2D& foot, double /*tolerance*/) {
    const Point2D nearest = circle.NormalProjectionPointOnCircle(point);
    if (!(circle.GetLength() > 0.0) || !std::isfinite(point.Distance(nearest))) return 0;
    foot = nearest;
    return 1;
}

int Projection::NormalPointOnClothoid(const Point2D& point, const Clothoid& clothoid, Point2D& foot, double& station,
                                      Vec2D& tangent, double tolerance) {
    return NormalPointOnClothoid(point, clothoid, 0.0, clothoid.GetLength(), foot, station, tangent, tolerance);
}

int Projection::NormalPointOnClothoid(const Point2D& point, const Clothoid& clothoid, double from, double to,
                                      Point2D& foot, double& station, Vec2D& tangent, double tolerance) {
    Sample sample;
    return Report(clothoid.GetNormalPoint(point, from, to, tolerance, sample), sample, foot, station, tangent);
}

int Projection::NormalPointOnSpiral(const Point2D& point, const Spiral2D& spiral, Point2D& foot, double& station,
                                    Vec2D& tangent, double tolerance) {
    return NormalPointOnSpiral(point, spiral, 0.0, spiral.GetLength(), foot, station, tangent, tolerance);
}

int Projection::NormalPointOnSpiral(const Point2D& point, const Spiral2D& spiral, double from, double to, Point2D& foot,
                                    double& station, Vec2D& tangent, double tolerance) {
    Sample sample;
    return Report(spiral.GetNormalPoint(point, from, to, tolerance, sample), sample, foot, station, tangent);
}

int Projection::NormalPointOnParabola(const Point2D& point, const Parabola& parabola, Point2D& foot, double& station,
                                      Vec2D& tangent, double tolerance) {
    Sample sample;
    return Report(parabola.GetNormalPoint(point, tolerance, sample), sample, foot, station, tangent);
}

Point2D Projection::NearestPointOnPolyline(const Point2D& point, const Polyline2D& polyline, double tolerance) {
    Polyline2D::PolylinePoint nearest;
    (void)NearestPointOnPolyline(point, polyline, nearest, tolerance);
    return nearest.point;
}

bool Projection::NearestPointOnPolyline(const Point2D& point, const Polyline2D& polyline,
                                        Polyline2D::PolylinePoint& nearest, double tolerance) {
    return polyline.GetNearestPoint(point, nearest, Tolerances(tolerance));
}

int Projection::NormalPointOnPolyline(const Point2D& point, const Polyline2D& polyline, Point2D& foot, double& station,
                                      double tolerance) {
    Polyline2D::PolylinePoint found;
    return Report(NormalPointOnPolyline(point, polyline, found, tolerance), found, foot, station);
}

int Projection::NormalPointOnPolyline(const Point2D& point, const Polyline2D& polyline, Polyline2D::PolylinePoint& foot,
                                      double tolerance) {
    return polyline.GetNormalPoint(point, tolerance, foot) ? 1 : 0;
}

int Projection::NormalPointOnPolyline2(const Point2D& point, const Polyline2D& polyline, Point2D& foot, double& station,
                                       double tolerance) {
    Polyline2D::PolylinePoint found;
    return Report(NormalPointOnPolyline2(point, polyline, found, tolerance), found, foot, station);
}

int Projection::NormalPointOnPolyline2(const Point2D& point, const Polyline2D& polyline,
                                       Polyline2D::PolylinePoint& foot, double tolerance) {
    Polyline2D::PolylinePoint onElement;
    const bool isOnElement = polyline.GetNormalPoint(point, tolerance, onElement);
    Continuations continuations(point, isOnElement ? &onElement : nullptr, tolerance);
    double station = 0.0;
    for (unsigned int i = 0; i < polyline.GetNrOfElements(); ++i) {
        const IPolyline2DElement& element = polyline.GetElementAtIndex(i);
        continuations.Add(element, i, station);
        station += element.GetLength();
    }
    if (!isOnElement && !continuations.IsOutside()) return 0;
    foot = continuations.GetBest();
    return continuations.IsOutside() ? 2 : 1;
}

}  // namespace Kalvio::Math
