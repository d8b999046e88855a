#include "kalvio/polygons/RingCurve2D.h"

#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/detail/PointInRingCurve.h"
#include "kalvio/polygons/detail/Ring.h"

#include <cmath>
#include <utility>

namespace Kalvio::Math {

namespace {

bool IsElement(const IGeometry* geometry) {
    if (geometry == nullptr) return false;
    const MathTypes type = geometry->GetType();
    return type == MathTypes::Arc2D || type == MathTypes::Line2D || type == MathTypes::LineString2D;
}

// What lies between an arc and its chord. About the centre its moment is 2/3 (r sin(sweep / 2))^3 towards the middle of
// the arc; it is taken about the middle of the chord, r cos(sweep / 2) that way, where flat arcs lose nothing.
void AddSegment(const Arc2D& arc, const Point2D& origin, detail::AreaSum& sum) {
    const double radius = arc.GetRadius();
    if (!(radius > 0.0)) return;
    const double half = 0.5 * std::abs(arc.GetAngle().GetRadians());
    const double across = radius * std::sin(half);
    const double area = arc.GetArea();
    const double moment = 2.0 / 3.0 * across * across * across - radius * std::cos(half) * area;
    const double sense = std::copysign(1.0, arc.GetSignedRadius());
    const Vec2D outwards = (arc.GetMiddlePoint() - arc.GetCenter()) / radius;
    sum.Add(2.0 * sense * area, ((arc.GetChordMiddlePoint() - origin) * area + outwards * moment) * (6.0 * sense));
}

// Straight across gaps. Also the number of edges and segments.
std::pair<detail::AreaSum, std::size_t> SumOf(const Polyline2D& chain) {
    const Point2D origin = chain.GetStart();
    detail::AreaSum sum(origin);
    std::size_t parts = 0;
    for (const IPolyline2DElement& element : chain) {
        sum.AddEdgeTo(element.GetStart());
        if (element.GetType() == MathTypes::LineString2D) {
            const std::vector<Point2D>& points = static_cast<const LineString2D&>(element).GetPoints();
            for (const Point2D& point : points) sum.AddEdgeTo(point);
            parts += points.size();
        } else {
            sum.AddEdgeTo(element.GetEnd());
        }
        if (element.GetType() == MathTypes::Arc2D) AddSegment(static_cast<const Arc2D&>(element), origin, sum);
        parts += 3;
    }
    return {sum, parts};
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

double RingCurve2D::GetArea() const { return SumOf(chain).first.GetArea(); }

Point2D RingCurve2D::GetCentroid() const {
    const auto [sum, parts] = SumOf(chain);
    Point2D centroid;
    if (sum.GetCentroid(parts, centroid)) return centroid;
    Vec2D starts;
    for (const IPolyline2DElement& element : chain)
        starts += (element.GetStart() - GetStartPoint()) / static_cast<double>(chain.size());
    return GetStartPoint() + starts;
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
