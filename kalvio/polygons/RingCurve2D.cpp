#include "kalvio/polygons/RingCurve2D.h"

#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/detail/PointInRingCurve.h"

namespace Kalvio::Math {

namespace {

bool IsElement(const IGeometry* geometry) {
    if (geometry == nullptr) return false;
    const MathTypes type = geometry->GetType();
    return type == MathTypes::Arc2D || type == MathTypes::Line2D || type == MathTypes::LineString2D;
}

}  // namespace

MathTypes RingCurve2D::GetType() const { return MathTypes::RingCurve2D; }

const IPolyline2DElement& RingCurve2D::GetElementAtIndex(unsigned int index) const {
    return chain.GetElementAtIndex(index);
}

IPolyline2DElement& RingCurve2D::GetElementAtIndex(unsigned int index) { return chain.GetElementAtIndex(index); }

void RingCurve2D::GetLengthsAlongGeometry(const Point2D& point, std::vector<double>& lengths,
                                          const Tolerances& tolerances) const {
    chain.GetLengthsAlongGeometry(point, lengths, tolerances);
}

bool RingCurve2D::FindShortElements(std::vector<std::uint64_t>& indexes, double minLength) const {
    return chain.FindShortElements(indexes, minLength);
}

void RingCurve2D::RemoveElements(const std::vector<std::uint64_t>& indexes, bool deleteElements) {
    const bool wasClosed = IsClosed();
    chain.RemoveElements(indexes, deleteElements);
    if (!wasClosed || IsClosed() || GetSize() < 2) return;
    const Tolerances standard = Tolerances::Standard();
    const auto isMovable = [](const IPolyline2DElement& element) { return element.GetType() != MathTypes::Arc2D; };
    if (isMovable(GetElementAtIndex(0))) {
        chain.ExtendStart(Point2D(GetEndPoint()), standard);
    } else if (isMovable(GetElementAtIndex(GetSize() - 1))) {
        chain.ExtendEnd(Point2D(GetStartPoint()), standard);
    }
}

bool RingCurve2D::AppendElement(IGeometry* element) {
    if (!IsElement(element)) return false;
    return chain.AppendElement(static_cast<IPolyline2DElement*>(element));
}

bool RingCurve2D::AppendElement(std::unique_ptr<IGeometry> element) {
    return IsElement(element.get()) && AppendElement(element.release());
}

bool RingCurve2D::IsClosed() const {
    return GetSize() > 0 && GetStartPoint().IsEqualTo(GetEndPoint(), detail::numericalZero);
}

bool RingCurve2D::IsPointInside(const Point2D& p, double /*tolerance*/) const {
    detail::CurvesAroundPoint around(p);
    for (unsigned int i = 0; i < GetSize(); ++i) {
        const IPolyline2DElement& element = GetElementAtIndex(i);
        if (element.GetType() == MathTypes::Arc2D) {
            around.AddArc(static_cast<const Arc2D&>(element));
        } else if (element.GetType() == MathTypes::LineString2D) {
            const std::vector<Point2D>& points = static_cast<const LineString2D&>(element).GetPoints();
            for (std::size_t k = 1; k < points.size(); ++k) around.AddLine(points[k - 1], points[k]);
        } else {
            around.AddLine(element.GetStart(), element.GetEnd());
        }
    }
    return around.IsInside();
}

}  // namespace Kalvio::Math
