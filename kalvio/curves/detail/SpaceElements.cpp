#include "kalvio/curves/detail/SpaceElements.h"

#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/Arc3D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/curves/Polyline3D.h"
#include "kalvio/curves/detail/Chain.h"
#include "kalvio/curves/detail/WalkPoints.h"
#include "kalvio/polygons/LineString3D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace Kalvio::Math::detail {

const IPolyline3DElement* AsSpaceElement(const IGeometry& geometry) {
    switch (geometry.GetType()) {
        case MathTypes::Arc3D:
        case MathTypes::Line3D:
        case MathTypes::LineString3D:
        case MathTypes::Polyline3D:
            return static_cast<const IPolyline3DElement*>(&geometry);
        default:
            return nullptr;
    }
}

bool EvaluateElement(const IPolyline3DElement& element, double station, ElementPoint3D& result) {
    switch (element.GetType()) {
        case MathTypes::Arc3D:
            return static_cast<const Arc3D&>(element).MakePointAndTangentAt(station, result);
        case MathTypes::Line3D:
            return static_cast<const Line3D&>(element).MakePointAndTangentAt(station, result);
        case MathTypes::LineString3D: {
            const auto& points = static_cast<const LineString3D&>(element).GetPoints();
            return WalkPoints<ElementPoint3D>(points, std::span(&station, 1),
                                              [&result](const ElementPoint3D& sample) { result = sample; });
        }
        case MathTypes::Polyline3D: {
            Polyline3D::PolylinePoint sample;
            if (!static_cast<const Polyline3D&>(element).MakePointAndTangentAt(station, sample)) return false;
            result = {sample.point, sample.tangent, sample.station};
            return true;
        }
        default:
            return false;
    }
}

bool SampleElement(const IPolyline3DElement& element, std::span<const double> stations,
                   std::vector<ElementPoint3D>& samples) {
    if (element.GetType() == MathTypes::LineString3D) {
        return WalkPoints(static_cast<const LineString3D&>(element).GetPoints(), stations, samples);
    }
    for (const double station : stations) {
        ElementPoint3D sample;
        if (!EvaluateElement(element, station, sample)) return false;
        samples.push_back(sample);
    }
    return true;
}

bool SampleElementUsingHeight(const IPolyline3DElement& element, double from, double to, double height,
                              std::vector<ElementPoint3D>& samples) {
    switch (element.GetType()) {
        case MathTypes::Arc3D:
            return static_cast<const Arc3D&>(element).MakePointsAndTangentsUsingHeight(from, to, samples, height);
        case MathTypes::LineString3D:
            return WalkVertices(static_cast<const LineString3D&>(element).GetPoints(), from, to, samples);
        case MathTypes::Polyline3D: {
            std::vector<Polyline3D::PolylinePoint> points;
            if (!static_cast<const Polyline3D&>(element).MakePointsAndTangentsUsingHeight(from, to, points, height,
                                                                                          numericalZero)) {
                return false;
            }
            for (const Polyline3D::PolylinePoint& p : points) samples.push_back({p.point, p.tangent, p.station});
            return true;
        }
        default:
            return SampleElement(element, std::array{from, to}, samples);
    }
}

bool TangentOfElement(const IPolyline3DElement& element, const Point3D& point, const Tolerances& tolerances,
                      Vec3D& tangent) {
    const double u = tolerances.UserTolerance();
    switch (element.GetType()) {
        case MathTypes::LineString3D:
            return TangentAt(static_cast<const LineString3D&>(element).GetPoints(), point, u, tangent);
        case MathTypes::Polyline3D:
            return static_cast<const Polyline3D&>(element).ComputeTangent(point, tangent, tolerances);
        default: {
            ElementPoint3D sample;
            if (!element.GetLengthFromStartPoint(point, sample.station, u)) return false;
            if (!EvaluateElement(element, std::min(sample.station, element.GetLength()), sample)) return false;
            tangent = sample.tangent;
            return true;
        }
    }
}

void LengthsAlongChain(const ElementChain<IPolyline3DElement>& chain, const Point3D& point,
                       const Tolerances& tolerances, std::vector<double>& lengths) {
    const double u = tolerances.UserTolerance();
    std::vector<double> found;
    double before = 0.0;
    for (std::size_t i = 0; i < chain.Size(); ++i) {
        const IPolyline3DElement& element = chain[i];
        std::vector<double> onElement;
        if (element.GetType() == MathTypes::LineString3D) {
            LengthsAlong(static_cast<const LineString3D&>(element).GetPoints(), point, u, onElement);
        } else if (element.GetType() == MathTypes::Polyline3D) {
            static_cast<const Polyline3D&>(element).GetLengthsAlongGeometry(point, onElement, tolerances);
        } else if (double length = 0.0; element.GetLengthFromStartPoint(point, length, u)) {
            onElement.push_back(length);
        }
        for (const double length : onElement) {
            if (found.empty() || before + length - found.back() > 4.0 * std::abs(u)) found.push_back(before + length);
        }
        before += element.GetLength();
    }
    lengths = std::move(found);
}

void ExtendElement(IPolyline3DElement& element, bool atStart, const Point3D& point, const Tolerances& tolerances) {
    switch (element.GetType()) {
        case MathTypes::Arc3D: {
            auto& arc = static_cast<Arc3D&>(element);
            arc.Set(atStart ? point : arc.GetStart(), arc.GetMiddlePoint(), atStart ? arc.GetEnd() : point);
            break;
        }
        case MathTypes::Line3D: {
            auto& line = static_cast<Line3D&>(element);
            (atStart ? line.GetStart() : line.GetEnd()) = point;
            break;
        }
        case MathTypes::LineString3D: {
            auto& lineString = static_cast<LineString3D&>(element);
            if (lineString.GetSize() > 0) lineString.SetPoint(point, atStart ? 0 : lineString.GetSize() - 1);
            break;
        }
        case MathTypes::Polyline3D: {
            auto& polyline = static_cast<Polyline3D&>(element);
            atStart ? polyline.ExtendStart(point, tolerances) : polyline.ExtendEnd(point, tolerances);
            break;
        }
        default:
            break;
    }
}

IGeometry* AppendSpaceElements(const IGeometry& first, const IGeometry& second) {
    if (first.GetType() == MathTypes::Line3D && second.GetType() == MathTypes::Line3D) {
        const auto& line = static_cast<const Line3D&>(first);
        return new LineString3D({line.GetStart(), line.GetEnd(), static_cast<const Line3D&>(second).GetEnd()});
    }
    return JoinElements<Polyline3D>(first, second, AsSpaceElement);
}

}  // namespace Kalvio::Math::detail
