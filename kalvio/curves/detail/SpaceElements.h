#pragma once

#include "kalvio/curves/IPolyline3DElement.h"
#include "kalvio/curves/detail/ElementChain.h"

#include <span>
#include <vector>

/// Where the library's elements of chains in space are told apart by their type codes: the operations of
/// `PlanElements.h`.
namespace Kalvio::Math::detail {

using ElementPoint3D = IPolyline3DElement::PolylineElementPoint;

/// The geometry as an element of a chain in space; null when it is none of the library's.
const IPolyline3DElement* AsSpaceElement(const IGeometry& geometry);

/// Point, tangent and station at a station along the element. @return false, the result untouched, out of [0, length]
/// by more than 1e-10, for a degenerate element and for a class that is not the library's
bool EvaluateElement(const IPolyline3DElement& element, double station, ElementPoint3D& result);

/// Appends the samples at ascending stations, all within the element.
bool SampleElement(const IPolyline3DElement& element, std::span<const double> stations,
                   std::vector<ElementPoint3D>& samples);

/// Appends samples from one station to another, both included, such that no chord lies further than `height` from the
/// element.
bool SampleElementUsingHeight(const IPolyline3DElement& element, double from, double to, double height,
                              std::vector<ElementPoint3D>& samples);

/// The direction of the element at a point of it. @return false, `tangent` untouched, for a point that is not on it
bool TangentOfElement(const IPolyline3DElement& element, const Point3D& point, const Tolerances& tolerances,
                      Vec3D& tangent);

/// Replaces `lengths` by every length along the chain at which the point lies, on line strings and inner chains too;
/// those at most four tolerances apart count once.
void LengthsAlongChain(const ElementChain<IPolyline3DElement>& chain, const Point3D& point,
                       const Tolerances& tolerances, std::vector<double>& lengths);

/// Moves the start (end) of the element to the point, as the `ExtendStart` (`ExtendEnd`) of its plan counterpart.
void ExtendElement(IPolyline3DElement& element, bool atStart, const Point3D& point, const Tolerances& tolerances);

/// Two lines: a `LineString3D` of three points. Other elements: a `Polyline3D` of clones, the elements of a polyline
/// taken one by one. @return a new object owned by the caller; null for what is no element in space
IGeometry* AppendSpaceElements(const IGeometry& first, const IGeometry& second);

}  // namespace Kalvio::Math::detail
