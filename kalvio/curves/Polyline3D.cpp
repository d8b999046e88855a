#include "kalvio/curves/Polyline3D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/Arc3D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/curves/detail/Stations.h"
#include "kalvio/curves/detail/WalkPoints.h"
#include "kalvio/polygons/LineString3D.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

namespace Kalvio::Math {

namespace {

using ElementPoint = IPolyline3DElement::PolylineElementPoint;

constinit const Line3D noElement;

// The sample of an element at a station of it; false for a degenerate element and for a class that is not the
// library's.
bool EvaluateElement(const IPolyline3DElement& element, double station, ElementPoint& result) {
    std::vector<ElementPoint> samples;
    switch (element.GetType()) {
        case MathTypes::Arc3D:
            if (!static_cast<const Arc3D&>(element).MakePointsAndTangents(station, station, samples, 1.0)) return false;
            break;
        case MathTypes::Line3D: {
            const auto& line = static_cast<const Line3D&>(element);
            Point3D point;
            if (!line.GetPointOffsetFromStart(station, point)) return false;
            samples.push_back({point, line.GetDirection(), station});
            break;
        }
        case MathTypes::LineString3D: {
            const auto& points = static_cast<const LineString3D&>(element).GetPoints();
            if (!detail::WalkPoints(points, std::span(&station, 1), samples)) return false;
            break;
        }
        case MathTypes::Polyline3D: {
            Polyline3D::PolylinePoint sample;
            if (!static_cast<const Polyline3D&>(element).MakePointAndTangentAt(station, sample)) return false;
            samples.push_back({sample.point, sample.tangent, sample.station});
            break;
        }
        default:
            return false;
    }
    result = samples.front();
    return true;
}

// Moves an end of a line or line string; false for any other element.
bool MoveEnd(IPolyline3DElement& element, bool start, const Point3D& target) {
    if (element.GetType() == MathTypes::Line3D) {
        auto& line = static_cast<Line3D&>(element);
        (start ? line.GetStart() : line.GetEnd()) = target;
        return true;
    }
    if (element.GetType() != MathTypes::LineString3D) return false;
    auto& lineString = static_cast<LineString3D&>(element);
    return lineString.GetSize() > 0 && lineString.SetPoint(target, start ? 0 : lineString.GetSize() - 1);
}

}  // namespace

MathTypes Polyline3D::GetType() const { return MathTypes::Polyline3D; }

BoundingBox2D Polyline3D::GetBoundingBox2D() const { return GetBoundingBox3D().GetBoundingBox2D(); }

BoundingBox3D Polyline3D::GetBoundingBox3D() const {
    if (elements.IsEmpty()) return {};
    BoundingBox3D box = elements.Front().GetBoundingBox3D();
    for (std::size_t i = 1; i < elements.Size(); ++i) box += elements[i].GetBoundingBox3D();
    return box;
}

bool Polyline3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetType() == MathTypes::Polyline3D) {
        return elements.IsEqualTo(static_cast<const Polyline3D&>(other).elements, tolerance);
    }
    return elements.Size() == 1 && elements.Front().GetType() == other.GetType() &&
           elements.Front().IsEqualTo(other, tolerance);
}

Polyline3D* Polyline3D::Clone() const { return new Polyline3D(*this); }

void Polyline3D::Reverse() { elements.Reverse(); }

double Polyline3D::GetLength() const { return elements.LengthOf(0, elements.Size()); }

const Point3D& Polyline3D::GetStart() const {
    return elements.IsEmpty() ? Point3D::origo() : elements.Front().GetStart();
}

const Point3D& Polyline3D::GetEnd() const { return elements.IsEmpty() ? Point3D::origo() : elements.Back().GetEnd(); }

bool Polyline3D::GetLengthFromStartPoint(const Point3D& point, double& length, double tolerance) const {
    double before = 0.0;
    for (std::size_t i = 0; i < elements.Size(); ++i) {
        if (double onElement = 0.0; elements[i].GetLengthFromStartPoint(point, onElement, tolerance)) {
            length = before + onElement;
            return true;
        }
        before += elements[i].GetLength();
    }
    length = 0.0;
    return false;
}

bool Polyline3D::GetLengthFromEndPoint(const Point3D& point, double& length, double tolerance) const {
    double behind = 0.0;
    for (std::size_t i = elements.Size(); i-- > 0;) {
        if (double onElement = 0.0; elements[i].GetLengthFromEndPoint(point, onElement, tolerance)) {
            length = behind + onElement;
            return true;
        }
        behind += elements[i].GetLength();
    }
    length = 0.0;
    return false;
}

Point3D Polyline3D::GetNearestPoint(const Point3D& point, const Tolerances& tolerances) const {
    Point3D nearest = point;
    double best = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < elements.Size(); ++i) {
        const Point3D candidate = elements[i].GetNearestPoint(point, tolerances);
        const double distance = candidate.Distance(point);
        if (distance < best) {
            best = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

const IPolyline3DElement& Polyline3D::GetElementAtIndex(unsigned int i) const {
    if (elements.IsEmpty()) return noElement;
    return elements[i < elements.Size() ? i : 0];
}

void Polyline3D::GetLengthsAlongGeometry(const Point3D& point, std::vector<double>& lengths,
                                         const Tolerances& tolerances) const {
    const double u = tolerances.UserTolerance();
    std::vector<double> found;
    double before = 0.0;
    for (std::size_t i = 0; i < elements.Size(); ++i) {
        if (double onElement = 0.0; elements[i].GetLengthFromStartPoint(point, onElement, u)) {
            if (found.empty() || before + onElement - found.back() > 4.0 * std::abs(u))
                found.push_back(before + onElement);
        }
        before += elements[i].GetLength();
    }
    lengths = std::move(found);
}

void Polyline3D::RemoveElements(const std::vector<std::uint64_t>& indexes, bool deleteElements) {
    const std::vector<std::uint64_t> removed = elements.KnownIndexes(indexes);
    for (std::size_t end = removed.size(); end > 0;) {
        std::size_t first = end - 1;
        while (first > 0 && removed[first - 1] + 1 == removed[first]) --first;
        const std::size_t at = removed[first];
        elements.Remove(at, removed[end - 1] + 1, !deleteElements);
        end = first;
        if (at == 0 || at >= elements.Size()) continue;
        const Point3D before = elements[at - 1].GetEnd();
        if (!MoveEnd(elements[at], true, before)) MoveEnd(elements[at - 1], false, Point3D(elements[at].GetStart()));
    }
}

bool Polyline3D::FindShortElements(std::vector<std::uint64_t>& indexes, double minLength) const {
    return elements.FindShort(indexes, minLength);
}

bool Polyline3D::AppendElement(IPolyline3DElement* element) { return Insert(GetNrOfElements(), element); }

bool Polyline3D::Insert(unsigned int index, IPolyline3DElement* element) {
    std::vector<IPolyline3DElement*> added{element};
    return Insert(index, added);
}

bool Polyline3D::Insert(unsigned int index, std::vector<IPolyline3DElement*>& added) {
    return std::find(added.begin(), added.end(), this) == added.end() && elements.Insert(index, added);
}

Point3D Polyline3D::GetMidPoint() const {
    PolylinePoint middle;
    MakePointAndTangentAt(GetLength() * 0.5, middle);
    return middle.point;
}

bool Polyline3D::MakePointAndTangentAt(double station, PolylinePoint& result) const {
    if (!(station >= -detail::numericalZero)) return false;
    double before = 0.0;
    for (std::size_t i = 0; i < elements.Size(); ++i) {
        const double length = elements[i].GetLength();
        const bool isLast = before + length >= GetLength();
        if (station < before + length || (isLast && station <= before + length + detail::numericalZero)) {
            return MakePointAndTangentAt(static_cast<int>(i), std::min(station - before, length), result);
        }
        before += length;
    }
    return false;
}

bool Polyline3D::MakePointAndTangentAt(int elementIndex, double station, PolylinePoint& result) const {
    if (elementIndex < 0 || static_cast<std::size_t>(elementIndex) >= elements.Size()) return false;
    const auto i = static_cast<std::size_t>(elementIndex);
    const double length = elements[i].GetLength();
    if (!(station >= -detail::numericalZero && station <= length + detail::numericalZero)) return false;
    ElementPoint sample;
    if (!EvaluateElement(elements[i], std::clamp(station, 0.0, length), sample)) return false;
    result = {sample.point, sample.tangent, static_cast<std::uint32_t>(i), 0.0,
              elements.LengthOf(0, i) + sample.station};
    return true;
}

bool Polyline3D::MakePointsAndTangents(double from, double to, std::vector<PolylinePoint>& points, double step,
                                       double tolerance) const {
    const double length = GetLength();
    from = std::max(from, 0.0);
    to = std::min(to, length);
    if (elements.IsEmpty() || !(from <= to) || !(step > 0.0) || !((to - from) / step < detail::mostSamples))
        return false;
    std::vector<PolylinePoint> samples;
    PolylinePoint sample;
    for (std::int64_t k = 0; from + detail::Steps(k, step) <= to; ++k) {
        if (!MakePointAndTangentAt(from + detail::Steps(k, step), sample)) return false;
        samples.push_back(sample);
    }
    while (samples.size() > 1 && to - samples.back().station < std::abs(tolerance)) samples.pop_back();
    if (to > samples.back().station && MakePointAndTangentAt(to, sample)) samples.push_back(sample);
    points.insert(points.end(), samples.begin(), samples.end());
    return true;
}

bool Polyline3D::MakeLineString(double from, double to, LineString3D& lineString, double step, double tolerance) const {
    std::vector<PolylinePoint> samples;
    if (!MakePointsAndTangents(from, to, samples, step, tolerance)) return false;
    for (const PolylinePoint& sample : samples) lineString.AppendPoint(sample.point);
    return true;
}

template <>
bool Geometry::AreEqual(const Polyline3D& a, const Polyline3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
