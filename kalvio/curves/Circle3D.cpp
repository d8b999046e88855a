#include "kalvio/curves/Circle3D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/Matrix3D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/curves/detail/PlaneFrame.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"

#include <vector>

namespace Kalvio::Math {

namespace {

Line3D Lifted(const Line2D& line, const detail::PlaneFrame& frame) {
    return {frame.ToSpace(line.GetStart()), frame.ToSpace(line.GetEnd())};
}

// Writes as many of the two plane tangents as there are.
int LiftTangents(int count, const Line2D* tangents, const detail::PlaneFrame& frame, Line3D& left, Line3D& right) {
    if (count > 0) left = Lifted(tangents[0], frame);
    if (count > 1) right = Lifted(tangents[1], frame);
    return count;
}

bool AppendLifted(const LineString2D& ring, const detail::PlaneFrame& frame, LineString3D& lineString) {
    std::vector<Point3D> points;
    points.reserve(ring.GetSize());
    for (const Point2D& p : ring.GetPoints()) points.push_back(frame.ToSpace(p));
    lineString.AppendPoints(points);
    return true;
}

}  // namespace

Circle3D::Circle3D(const Point3D& circleCenter, double circleRadius, const Plane3D& circlePlane)
    : center(circleCenter), radius(circleRadius), plane(circleCenter, detail::UnitNormal(circlePlane.GetNormal())) {}

MathTypes Circle3D::GetType() const { return MathTypes::Circle3D; }

BoundingBox2D Circle3D::GetBoundingBox2D() const { return GetBoundingBox3D().GetBoundingBox2D(); }

BoundingBox3D Circle3D::GetBoundingBox3D() const {
    const detail::PlaneFrame frame = Frame();
    Vec3D size;
    for (int axis = 0; axis < 3; ++axis) size[axis] = std::abs(GetDiameter()) * frame.ReachAlong(axis);
    return {center, size};
}

bool Circle3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::Circle3D && IsEqualTo(static_cast<const Circle3D&>(other), tolerance);
}

bool Circle3D::IsEqualTo(const Circle3D& other, double tolerance) const {
    return center.IsEqualTo(other.center, tolerance) && std::abs(radius - other.radius) < tolerance &&
           plane.GetNormal().IsEqualTo(other.plane.GetNormal(), tolerance);
}

Circle3D* Circle3D::Clone() const { return new Circle3D(*this); }

Point3D Circle3D::GetPointOnCircle(const Angle& direction) const {
    return Frame().ToSpace(InPlane().GetPointOnCircle(direction));
}

bool Circle3D::IsPointInside(const Point3D& point, double tolerance) const {
    const detail::PlaneFrame frame = Frame();
    return std::abs(frame.HeightOf(point)) <= std::abs(tolerance) && InPlane().IsPointInside(frame.ToPlane(point));
}

Point3D Circle3D::NormalProjectionPointOnCircle(const Point3D& point) const {
    const detail::PlaneFrame frame = Frame();
    return frame.ToSpace(InPlane().NormalProjectionPointOnCircle(frame.ToPlane(point)));
}

int Circle3D::GetTangentsThroughPoint(const Point3D& point, Line3D& left, Line3D& right, double tolerance) const {
    const detail::PlaneFrame frame = Frame();
    if (!(std::abs(frame.HeightOf(point)) <= std::abs(tolerance))) return 0;
    Line2D tangents[2];
    const int count = InPlane().GetTangentsThroughPoint(frame.ToPlane(point), tangents[0], tangents[1]);
    return LiftTangents(count, tangents, frame, left, right);
}

int Circle3D::GetCrossingTangents(const Circle3D& other, Line3D& left, Line3D& right, double tolerance) const {
    if (!IsCoplanar(other, tolerance)) return 0;
    const detail::PlaneFrame frame = Frame();
    const Circle2D second(frame.ToPlane(other.center), other.radius);
    Line2D tangents[2];
    const int count = InPlane().GetCrossingTangents(second, tangents[0], tangents[1], tolerance);
    return LiftTangents(count, tangents, frame, left, right);
}

int Circle3D::GetNonCrossingTangents(const Circle3D& other, Line3D& left, Line3D& right, double tolerance) const {
    if (!IsCoplanar(other, tolerance)) return 0;
    const detail::PlaneFrame frame = Frame();
    const Circle2D second(frame.ToPlane(other.center), other.radius);
    Line2D tangents[2];
    const int count = InPlane().GetNonCrossingTangents(second, tangents[0], tangents[1]);
    return LiftTangents(count, tangents, frame, left, right);
}

bool Circle3D::MakeLineString(LineString3D& lineString, double step) const {
    LineString2D ring;
    return InPlane().MakeLineString(ring, step) && AppendLifted(ring, Frame(), lineString);
}

bool Circle3D::MakeLineString(LineString3D& lineString, unsigned int count) const {
    LineString2D ring;
    return InPlane().MakeLineString(ring, count) && AppendLifted(ring, Frame(), lineString);
}

bool Circle3D::MakeLineStringUsingHeight(LineString3D& lineString, double height) const {
    LineString2D ring;
    return InPlane().MakeLineStringUsingHeight(ring, height) && AppendLifted(ring, Frame(), lineString);
}

std::list<Point3D> Circle3D::MakePoints(double step) const {
    const detail::PlaneFrame frame = Frame();
    std::list<Point3D> points;
    for (const Point2D& p : InPlane().MakePoints(step)) points.push_back(frame.ToSpace(p));
    return points;
}

detail::PlaneFrame Circle3D::Frame() const {
    const Matrix3D axes = plane.GetTransformationMatrix();
    return {center, Vec3D(axes.Get(0, 0), axes.Get(0, 1), axes.Get(0, 2)),
            Vec3D(axes.Get(1, 0), axes.Get(1, 1), axes.Get(1, 2)), plane.GetNormal()};
}

// No point of the other circle is further than the tolerance from this plane.
bool Circle3D::IsCoplanar(const Circle3D& other, double tolerance) const {
    const Vec3D normal = plane.GetNormal();
    const double tilt = normal.CrossProduct(other.plane.GetNormal()).Length();
    return std::abs((other.center - center).DotProduct(normal)) + std::abs(other.radius) * tilt <= std::abs(tolerance);
}

template <>
bool Geometry::AreEqual(const Circle3D& a, const Circle3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
