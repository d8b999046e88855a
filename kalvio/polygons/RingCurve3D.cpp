#include "kalvio/polygons/RingCurve3D.h"

#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/Arc3D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/curves/detail/SpaceElements.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/detail/PointInRingCurve.h"
#include "kalvio/polygons/detail/RingCorners.h"
#include "kalvio/polygons/detail/RingPlane.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace Kalvio::Math {

namespace {

constinit const Line3D noElement;

bool IsElement(const IGeometry* geometry) {
    if (geometry == nullptr) return false;
    const MathTypes type = geometry->GetType();
    return type == MathTypes::Arc3D || type == MathTypes::Line3D || type == MathTypes::LineString3D;
}

}  // namespace

MathTypes RingCurve3D::GetType() const { return MathTypes::RingCurve3D; }

const IPolyline3DElement& RingCurve3D::GetElementAtIndex(unsigned int index) const {
    if (chain.IsEmpty()) return noElement;
    return chain[index < chain.Size() ? index : 0];
}

void RingCurve3D::GetLengthsAlongGeometry(const Point3D& point, std::vector<double>& lengths,
                                          const Tolerances& tolerances) const {
    detail::LengthsAlongChain(chain, point, tolerances, lengths);
}

bool RingCurve3D::FindShortElements(std::vector<std::uint64_t>& indexes, double minLength) const {
    return chain.FindShort(indexes, minLength);
}

void RingCurve3D::RemoveElements(const std::vector<std::uint64_t>& indexes, bool deleteElements) {
    chain.Remove(chain.KnownIndexes(indexes), !deleteElements);
}

bool RingCurve3D::AppendElement(IGeometry* element) {
    if (!IsElement(element)) return false;
    chain.Append(std::unique_ptr<IPolyline3DElement>(static_cast<IPolyline3DElement*>(element)));
    return true;
}

bool RingCurve3D::AppendElement(std::unique_ptr<IGeometry> element) {
    return IsElement(element.get()) && AppendElement(element.release());
}

const Point3D& RingCurve3D::GetStartPoint() const {
    return chain.IsEmpty() ? Point3D::origo() : chain.Front().GetStart();
}

const Point3D& RingCurve3D::GetEndPoint() const { return chain.IsEmpty() ? Point3D::origo() : chain.Back().GetEnd(); }

BoundingBox3D RingCurve3D::GetBoundingBox() const {
    if (chain.IsEmpty()) return {};
    BoundingBox3D box = chain.Front().GetBoundingBox3D();
    for (std::size_t i = 1; i < chain.Size(); ++i) box += chain[i].GetBoundingBox3D();
    return box;
}

bool RingCurve3D::IsClosed() const {
    return !chain.IsEmpty() && GetStartPoint().IsEqualTo2d(GetEndPoint(), detail::numericalZero);
}

bool RingCurve3D::IsPointInside(const Point3D& p, double tolerance) const {
    detail::PlaneFrame frame;
    if (!detail::FrameOfRing(detail::CornersOf(*this), frame)) return false;
    if (!(std::abs(frame.HeightOf(p)) <= std::abs(tolerance))) return false;

    detail::CurvesAroundPoint around(frame.ToPlane(p));
    for (std::size_t i = 0; i < chain.Size(); ++i) {
        const IPolyline3DElement& element = chain[i];
        if (element.GetType() == MathTypes::Arc3D) {
            const auto& arc = static_cast<const Arc3D&>(element);
            const bool isTurned = arc.GetPlane().GetNormal().DotProduct(frame.normal) < 0.0;
            const double sweep = arc.GetAngle().GetRadians();
            around.AddArc(
                Arc2D(frame.ToPlane(arc.GetStart()), frame.ToPlane(arc.GetCenter()), Angle(isTurned ? -sweep : sweep)));
        } else if (element.GetType() == MathTypes::LineString3D) {
            const std::vector<Point3D>& points = static_cast<const LineString3D&>(element).GetPoints();
            for (std::size_t k = 1; k < points.size(); ++k) {
                around.AddLine(frame.ToPlane(points[k - 1]), frame.ToPlane(points[k]));
            }
        } else {
            around.AddLine(frame.ToPlane(element.GetStart()), frame.ToPlane(element.GetEnd()));
        }
    }
    return around.IsInside();
}

}  // namespace Kalvio::Math
