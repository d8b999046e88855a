#include "kalvio/curves/Polyline3D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/curves/detail/ChainSampling.h"
#include "kalvio/curves/detail/SpaceElements.h"
#include "kalvio/polygons/LineString3D.h"

#include <algorithm>
#include <limits>
#include <memory>

namespace Kalvio::Math {

namespace {

constinit const Line3D noElement;

bool IsMovable(const IPolyline3DElement& element) {
    return element.GetType() == MathTypes::Line3D || element.GetType() == MathTypes::LineString3D;
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
            if (detail::Store(before + onElement, length)) return true;
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
            if (detail::Store(behind + onElement, length)) return true;
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

IPolyline3DElement& Polyline3D::GetElementAtIndex(unsigned int i) {
    if (elements.IsEmpty()) return spare = Line3D();
    return elements.Change(i < elements.Size() ? i : 0);
}

bool Polyline3D::IsPointOnGeometry(const Point3D& point, const Tolerances& tolerances) const {
    double length = 0.0;
    return GetLengthFromStartPoint(point, length, tolerances.UserTolerance());
}

bool Polyline3D::ComputeTangent(const Point3D& point, Vec3D& tangent, const Tolerances& tolerances) const {
    for (std::size_t i = 0; i < elements.Size(); ++i) {
        if (detail::TangentOfElement(elements[i], point, tolerances, tangent)) return true;
    }
    return false;
}

bool Polyline3D::ExtendStart(const Point3D& point, const Tolerances& tolerances) {
    if (elements.IsEmpty()) return false;
    detail::ExtendElement(elements.Change(0), true, point, tolerances);
    return true;
}

bool Polyline3D::ExtendEnd(const Point3D& point, const Tolerances& tolerances) {
    if (elements.IsEmpty()) return false;
    detail::ExtendElement(elements.Change(elements.Size() - 1), false, point, tolerances);
    return true;
}

IGeometry* Polyline3D::Append(const IGeometry* const other) const {
    return other == nullptr ? nullptr : detail::AppendSpaceElements(*this, *other);
}

void Polyline3D::GetLengthsAlongGeometry(const Point3D& point, std::vector<double>& lengths,
                                         const Tolerances& tolerances) const {
    detail::LengthsAlongChain(elements, point, tolerances, lengths);
}

void Polyline3D::RemoveElements(const std::vector<std::uint64_t>& indexes, bool deleteElements) {
    const Tolerances standard = Tolerances::Standard();
    const std::vector<std::uint64_t> removed = elements.KnownIndexes(indexes);
    for (std::size_t end = removed.size(); end > 0;) {
        std::size_t first = end - 1;
        while (first > 0 && removed[first - 1] + 1 == removed[first]) --first;
        const std::size_t behind = removed[end - 1] + 1;
        end = first;
        if (removed[first] == 0 || behind == elements.Size()) continue;
        const std::size_t before = removed[first] - 1;
        if (IsMovable(elements[behind])) {
            detail::ExtendElement(elements.Change(behind), true, elements[before].GetEnd(), standard);
        } else if (IsMovable(elements[before])) {
            detail::ExtendElement(elements.Change(before), false, elements[behind].GetStart(), standard);
        }
    }
    elements.Remove(removed, !deleteElements);
}

bool Polyline3D::FindShortElements(std::vector<std::uint64_t>& indexes, double minLength) const {
    return elements.FindShort(indexes, minLength);
}

bool Polyline3D::AppendElement(IPolyline3DElement* element) {
    if (element == nullptr || element == this) return false;
    elements.Append(std::unique_ptr<IPolyline3DElement>(element));
    return true;
}

bool Polyline3D::Insert(unsigned int index, IPolyline3DElement* element) {
    std::vector<IPolyline3DElement*> added{element};
    return Insert(index, added);
}

bool Polyline3D::Insert(unsigned int index, std::vector<IPolyline3DElement*>& added) {
    return std::find(added.begin(), added.end(), this) == added.end() && elements.Insert(index, added);
}

Point3D Polyline3D::GetMidPoint() const {
    PolylinePoint middle;
    return MakePointAndTangentAt(elements.GetStations().start.back() * 0.5, middle) ? middle.point : GetStart();
}

bool Polyline3D::MakePointAndTangentAt(double station, PolylinePoint& result) const {
    return detail::SampleAt(elements, station, result);
}

bool Polyline3D::MakePointAndTangentAt(int elementIndex, double station, PolylinePoint& result) const {
    if (elementIndex < 0 || static_cast<std::size_t>(elementIndex) >= elements.Size()) return false;
    return detail::SampleAt(elements, static_cast<std::size_t>(elementIndex), station, result);
}

bool Polyline3D::MakePointsAndTangents(double from, double to, std::vector<PolylinePoint>& points, double step,
                                       double tolerance) const {
    return detail::SampleChainBySteps(elements, from, to, step, tolerance, points);
}

bool Polyline3D::MakePointsAndTangentsUsingHeight(double from, double to, std::vector<PolylinePoint>& points,
                                                  double height, double tolerance) const {
    return detail::SampleChainByHeight(elements, from, to, height, tolerance, points);
}

bool Polyline3D::MakeLineString(double from, double to, LineString3D& lineString, double step, double tolerance) const {
    std::vector<PolylinePoint> samples;
    if (!MakePointsAndTangents(from, to, samples, step, tolerance)) return false;
    for (const PolylinePoint& sample : samples) lineString.AppendPoint(sample.point);
    return true;
}

bool Polyline3D::MakeLineStringUsingHeight(double from, double to, LineString3D& lineString, double height,
                                           double tolerance) const {
    std::vector<PolylinePoint> samples;
    if (!MakePointsAndTangentsUsingHeight(from, to, samples, height, tolerance)) return false;
    for (const PolylinePoint& sample : samples) lineString.AppendPoint(sample.point);
    return true;
}

template <>
bool Geometry::AreEqual(const Polyline3D& a, const Polyline3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
