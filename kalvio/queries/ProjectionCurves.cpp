#include "kalvio/core/detail/StandardTolerances.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Spiral2D.h"
#include "kalvio/queries/Projection.h"

#include <cmath>

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

}  // namespace

Point2D Projection::NearestPointOnArc(const Point2D& point, const Arc2D& arc, double tolerance) {
    return arc.GetNearestPoint(point, detail::TolerancesFor(tolerance));
}

int Projection::NormalPointOnArc(const Point2D& point, const Arc2D& arc, Point2D& foot, double tolerance) {
    Sample sample;
    if (!arc.GetNormalPoint(point, tolerance, sample)) return 0;
    foot = sample.point;
    return 1;
}

int Projection::NormalPointOnCircle(const Point2D& point, const Circle2D& circle, Point2D& foot, double /*tolerance*/) {
    const Point2D nearest = circle.NormalProjectionPointOnCircle(point);
    if (!(circle.GetRadius() > 0.0) || !std::isfinite(point.Distance(nearest))) return 0;
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

}  // namespace Kalvio::Math
