#pragma once

#include "kalvio/curves/IPolyline2DElement.h"

#include <span>
#include <vector>

namespace Kalvio::Math {
class IComplexGeometry;
}

/// Where the library's plan elements are told apart by their type codes: a new element class is entered here.
namespace Kalvio::Math::detail {

using ElementPoint = IPolyline2DElement::PolylineElementPoint;

/// The geometry as an element of a plan chain; null when it is none of the library's.
const IPolyline2DElement* AsPlanElement(const IGeometry& geometry);

/// The line string or polyline behind the element; null for single curves.
const IComplexGeometry* AsComplexGeometry(const IPolyline2DElement& element);

/// First followed by second: a `LineString2D` of three points for two lines, else a `Polyline2D` of clones (the
/// elements of polylines are taken one by one).
/// @return a new geometry owned by the caller; null when one of the two is no plan element
[[nodiscard]] IGeometry* AppendElements(const IGeometry& first, const IGeometry& second);

/// The point of the element nearest to `point`, with tangent and station. An element of no length, or no curve, has its
/// start.
/// @return false, `nearest` untouched, for a chain of no points and where no distance to a chain is finite
bool FindNearestOnElement(const IPolyline2DElement& element, const Point2D& point, const Tolerances& tolerances,
                          ElementPoint& nearest);
/// The same; the start of the element where there is none.
ElementPoint NearestOnElement(const IPolyline2DElement& element, const Point2D& point, const Tolerances& tolerances);

/// The nearest foot of a perpendicular on the element, those on the segments of a line string included. An end (of a
/// segment too) counts when the foot lies beyond it by at most the tolerance.
/// @return false, `foot` untouched, when there is none
bool FootOnElement(const IPolyline2DElement& element, const Point2D& point, double tolerance, ElementPoint& foot);

/// Point, tangent and station at a station along the element. @return false, the result untouched, out of [0, length]
/// by more than 1e-10, for a degenerate element and for a class that is not the library's
bool EvaluateElement(const IPolyline2DElement& element, double station, ElementPoint& result);

/// Signed curvature at a station within the element, positive turning left. @return false for a class that is not the
/// library's
bool CurvatureOfElement(const IPolyline2DElement& element, double station, double& curvature);

/// Appends the samples at ascending stations, all within the element.
bool SampleElement(const IPolyline2DElement& element, std::span<const double> stations,
                   std::vector<ElementPoint>& samples);

/// Appends samples from one station to another, both included, such that no chord lies further than `height` from the
/// element.
bool SampleElementUsingHeight(const IPolyline2DElement& element, double from, double to, double height,
                              std::vector<ElementPoint>& samples);

/// The first point of the element at abscissa x, or its end nearest to x within the tolerance.
/// @return 1 when found; 2 for a vertical line there, whose start is given; 0 when none
int PointAtAbscissa(const IPolyline2DElement& element, double x, double tolerance, ElementPoint& result);

}  // namespace Kalvio::Math::detail
