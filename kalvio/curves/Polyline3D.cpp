#include "kalvio/curves/Polyline3D.h"

#include <limits>

namespace Kalvio::Math {

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

}  // namespace Kalvio::Math
