#pragma once

#include "kalvio/core/Angle.h"
#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point2D.h"

#include <cmath>
#include <list>

namespace Kalvio::Math {

class Line2D;
class LineString2D;

/// Full circle in plan, for construction and intersection. It runs counter-clockwise from its easternmost point.
///
/// A radius is kept as given. A negative one counts with its sign in `GetRadius`, `GetDiameter`, `GetPerimeter`,
/// `GetPointOnCircle` (on the far side of the centre, so the circle runs from its westernmost point) and `IsEqualTo`;
/// everything else takes the circle of the radius without its sign, only `Intersection::CircleCircle` refuses it.
class KALVIO_MATH_API Circle2D final : public IGeometry {
public:
    /// Radius 0 at the origin.
    constexpr Circle2D() = default;
    Circle2D(const Point2D& circleCenter, double circleRadius) : center(circleCenter), radius(circleRadius) {}

    MathTypes GetType() const override;
    BoundingBox2D GetBoundingBox() const { return GetBoundingBox2D(); }
    BoundingBox2D GetBoundingBox2D() const override;
    /// The box at z = 0.
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 1; }
    /// Comparable with a `Circle2D` only.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    /// Centre per coordinate and radius, strictly.
    bool IsEqualTo(const Circle2D& other, double tolerance) const {
        return center.IsEqualTo(other.center, tolerance) && std::abs(radius - other.radius) < tolerance;
    }
    [[nodiscard]] Circle2D* Clone() const override;
    /// The perimeter, never negative.
    double GetLength() const override { return std::abs(GetPerimeter()); }

    const Point2D& GetCenter() const { return center; }
    double GetRadius() const { return radius; }
    void SetCenter(const Point2D& value) { center = value; }
    void SetRadius(double value) { radius = value; }

    double GetArea() const { return detail::pi * radius * radius; }
    double GetDiameter() const { return 2.0 * radius; }
    double GetPerimeter() const { return detail::twoPi * radius; }
    /// The point in a direction from the centre.
    Point2D GetPointOnCircle(const Angle& direction) const;
    /// Inclusive.
    bool IsPointInside(const Point2D& point) const { return center.Distance(point) <= std::abs(radius); }
    /// The point of the circle nearest to `point`; the easternmost one for the centre itself.
    Point2D NormalProjectionPointOnCircle(const Point2D& point) const;

    /// Tangents from a point to where they touch, `left` touching to the left of the way from the point to the centre.
    ///
    /// A point within 1e-8 of the circle has one tangent, in `left`: a line of unit length to the left from it.
    /// @return their number: 2; 1 on the circle and for radius 0; 0 inside. Lines beyond that number are untouched
    [[nodiscard]] int GetTangentsThroughPoint(const Point2D& point, Line2D& left, Line2D& right) const;
    /// Tangents, from where they touch this circle to where they touch the other, that cross the line of the centres.
    /// `left` touches this circle to the left of the way to the other centre.
    ///
    /// Circles that touch from outside within the tolerance have one, in `left`: a line of unit length to the left from
    /// the point where they touch.
    /// @return their number: 2, 1, or 0 for circles that overlap or have the same centre
    [[nodiscard]] int GetCrossingTangents(const Circle2D& other, Line2D& left, Line2D& right, double tolerance) const;
    /// The same for the tangents that leave both circles on one side; one for circles that touch from inside within
    /// 1e-8, none where one circle lies inside the other.
    [[nodiscard]] int GetNonCrossingTangents(const Circle2D& other, Line2D& left, Line2D& right) const;

    /// Appends the circle as a closed ring, its first point repeated at the end: equal steps of at most `step` along
    /// the circle, or `count` of them, or steps whose chords stay within `height`. There are at least three (four for
    /// `height`).
    /// @return false, nothing appended, for radius 0, a step or height that is not positive, or a count below 3
    [[nodiscard]] bool MakeLineString(LineString2D& lineString, double step) const;
    [[nodiscard]] bool MakeLineString(LineString2D& lineString, unsigned int count) const;
    [[nodiscard]] bool MakeLineStringUsingHeight(LineString2D& lineString, double height) const;
    /// The points of that ring, the first one not repeated; empty on failure.
    std::list<Point2D> MakePoints(double step) const;

private:
    int TangentsTo(const Circle2D& other, double otherSide, double tolerance, Line2D& left, Line2D& right) const;

    Point2D center;
    double radius = 0.0;
};

}  // namespace Kalvio::Math
