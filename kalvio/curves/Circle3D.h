#pragma once

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Plane3D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/curves/Circle2D.h"

#include <cmath>
#include <list>

namespace Kalvio::Math {

class Line3D;
class LineString3D;

namespace detail {
struct PlaneFrame;
}

/// Full circle in space: centre, radius and plane. It runs counter-clockwise seen from the tip of the plane's normal,
/// from the direction of the plane's own first axis (`Plane3D::GetTransformationMatrix`). A radius is kept as given: a
/// negative one counts as for `Circle2D`.
///
/// Of a given plane the normal counts: the plane is moved to hold the centre. A degenerate plane becomes horizontal.
class KALVIO_MATH_API Circle3D final : public IGeometry {
public:
    /// Radius 0 at the origin in the horizontal plane.
    Circle3D() : Circle3D(Point3D(), 0.0, Plane3D()) {}
    Circle3D(const Point3D& circleCenter, double circleRadius, const Plane3D& circlePlane);

    MathTypes GetType() const override;
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 1; }
    /// Comparable with a `Circle3D` only.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    /// Centre and unit normal per coordinate and radius, strictly.
    bool IsEqualTo(const Circle3D& other, double tolerance) const;
    [[nodiscard]] Circle3D* Clone() const override;
    /// The perimeter, never negative.
    double GetLength() const override { return std::abs(GetPerimeter()); }

    const Point3D& GetCenter() const { return center; }
    double GetRadius() const { return radius; }
    const Plane3D& GetPlane() const { return plane; }
    /// Moves the plane along.
    void SetCenter(const Point3D& value) { *this = Circle3D(value, radius, plane); }
    void SetRadius(double value) { radius = value; }
    void SetPlane(const Plane3D& value) { *this = Circle3D(center, radius, value); }

    double GetArea() const { return InPlane().GetArea(); }
    double GetDiameter() const { return 2.0 * radius; }
    double GetPerimeter() const { return InPlane().GetPerimeter(); }
    /// The point in a direction counted from the plane's first axis.
    Point3D GetPointOnCircle(const Angle& direction) const;
    /// True within |tolerance| of the plane and, projected onto it, inside the circle; both inclusive.
    bool IsPointInside(const Point3D& point, double tolerance) const;
    /// The point of the circle nearest to `point`; the one on the plane's first axis for a point on the circle's axis.
    Point3D NormalProjectionPointOnCircle(const Point3D& point) const;

    /// As for `Circle2D`, left and right seen from the tip of this circle's normal. A point or circle further than
    /// |tolerance| from this circle's plane has no tangents.
    [[nodiscard]] int GetTangentsThroughPoint(const Point3D& point, Line3D& left, Line3D& right,
                                              double tolerance) const;
    [[nodiscard]] int GetCrossingTangents(const Circle3D& other, Line3D& left, Line3D& right, double tolerance) const;
    [[nodiscard]] int GetNonCrossingTangents(const Circle3D& other, Line3D& left, Line3D& right,
                                             double tolerance) const;

    /// As for `Circle2D`.
    [[nodiscard]] bool MakeLineString(LineString3D& lineString, double step) const;
    [[nodiscard]] bool MakeLineString(LineString3D& lineString, unsigned int count) const;
    [[nodiscard]] bool MakeLineStringUsingHeight(LineString3D& lineString, double height) const;
    std::list<Point3D> MakePoints(double step) const;

private:
    detail::PlaneFrame Frame() const;
    // This circle in the first two axes of its frame.
    Circle2D InPlane() const { return {Point2D(), radius}; }
    bool IsCoplanar(const Circle3D& other, double tolerance) const;

    Point3D center;
    double radius = 0.0;
    Plane3D plane;
};

}  // namespace Kalvio::Math
