#pragma once

#include "kalvio/core/Angle.h"
#include "kalvio/core/Plane3D.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/IPolyline3DElement.h"
#include "kalvio/curves/Line3D.h"

#include <list>
#include <vector>

namespace Kalvio::Math {

class LineString3D;

namespace detail {
struct PlaneFrame;
}

/// Circular arc in space: start, centre, signed sweep and plane. The rules of `Arc2D` hold where the names agree; the
/// sweep is positive counter-clockwise seen from the tip of the plane's normal.
///
/// Start and centre stay as given. Of a given plane the normal counts, tilted as far as needed for the plane to hold
/// both points.
class KALVIO_MATH_API Arc3D final : public IPolyline3DElement {
public:
    /// All zero, in the horizontal plane.
    Arc3D() : Arc3D(Point3D(), Point3D(), Angle(), Plane3D()) {}
    Arc3D(const Point3D& start, const Point3D& center, const Angle& sweep, const Plane3D& arcPlane) {
        Set(start, center, sweep, arcPlane);
    }
    /// The plan arc at a height.
    Arc3D(const Arc2D& plan, double z);

    MathTypes GetType() const override;
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 1; }
    /// Comparable with an `Arc3D` and a `Polyline3D` of just one.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    /// Start, middle, end and centre agree strictly per coordinate.
    bool IsEqualTo(const Arc3D& other, double tolerance) const;
    [[nodiscard]] Arc3D* Clone() const override;
    /// Exchanges start and end and turns the sweep, the plane stays; a full circle stays as it is.
    void Reverse() override;
    double GetLength() const override { return InPlane().GetLength(); }
    const Point3D& GetStart() const override { return startPoint; }
    const Point3D& GetEnd() const override { return endPoint; }
    /// Points at most |tolerance| from the arc in space are on it.
    [[nodiscard]] bool GetLengthFromStartPoint(const Point3D& point, double& length, double tolerance) const override;
    [[nodiscard]] bool GetLengthFromEndPoint(const Point3D& point, double& length, double tolerance) const override;
    Point3D GetNearestPoint(const Point3D& point, const Tolerances& tolerances) const override;
    /// With another element in space: a `Polyline3D` of clones, the elements of a polyline taken one by one; else null.
    [[nodiscard]] IGeometry* Append(const IGeometry* const other) const override;

    bool IsPointOnGeometry(const Point3D& point, const Tolerances& tolerances) const;
    using IPolyline3DElement::IsPointOnGeometry;
    [[nodiscard]] bool ComputeTangent(const Point3D& point, Vec3D& tangent, const Tolerances& tolerances) const;

    void Set(const Point3D& start, const Point3D& center, const Angle& sweep, const Plane3D& arcPlane);
    /// Through three points in order of travel, which is counter-clockwise about the normal of their plane.
    /// @return false, the arc unchanged, for points in line within 1e-10
    bool Set(const Point3D& p1, const Point3D& p2, const Point3D& p3);
    /// Moves the whole arc so that it starts at the point.
    void Move(const Point3D& newStart);
    const Point3D& GetCenter() const { return centerPoint; }
    void SetCenter(const Point3D& center) { Set(startPoint, center, sweepAngle, plane); }
    const Angle& GetAngle() const { return sweepAngle; }
    void SetAngle(const Angle& sweep) { Set(startPoint, centerPoint, sweep, plane); }
    const Plane3D& GetPlane() const { return plane; }

    double GetRadius() const { return centerPoint.Distance(startPoint); }
    double GetSignedRadius() const { return InPlane().GetSignedRadius(); }
    double GetBulge() const { return InPlane().GetBulge(); }
    double GetHeight() const { return InPlane().GetHeight(); }
    double GetChordLength() const { return startPoint.Distance(endPoint); }
    Point3D GetChordMiddlePoint() const { return startPoint + (endPoint - startPoint) * 0.5; }
    /// The point halfway along the arc.
    Point3D GetMiddlePoint() const;
    /// Direction from the centre, counted from the plane's own first axis (`Plane3D::GetTransformationMatrix`).
    Angle GetStartAngle() const { return AngleInPlane(startPoint); }
    Angle GetEndAngle() const { return AngleInPlane(endPoint); }
    Vec3D GetStartTangent() const;
    Vec3D GetEndTangent() const;
    /// Where the projection of the point onto the plane, seen from the centre, meets the circle.
    Vec3D ComputeTangent(const Point3D& point) const;
    double GetArea() const { return InPlane().GetArea(); }

    /// At most |tolerance| from the full circle in space.
    bool IsPointOnCircle(const Point3D& point, const Tolerances& tolerances) const;
    bool IsCirclePointInside(const Point3D& point, const Tolerances& tolerances) const;
    bool IsCirclePointInside(const Point3D& point, double tolerance) const;
    /// In the circular segment, within |tolerance| of it and of its plane.
    bool IsPointInside(const Point3D& point, const Tolerances& tolerances) const;
    bool IsPointInside(const Point3D& point, double tolerance) const;
    [[nodiscard]] bool GetShortestLengthFromStartPoint(const Point3D& point, double& length, double tolerance) const;
    [[nodiscard]] bool GetShortestLengthFromEndPoint(const Point3D& point, double& length, double tolerance) const;
    [[nodiscard]] bool GetPointOffsetFromStart(double station, Point3D& point) const;
    [[nodiscard]] bool MakePointAndTangentAt(double station, PolylineElementPoint& result) const;
    [[nodiscard]] bool MakeArc(double from, double to, Arc3D& part) const;

    [[nodiscard]] bool MakePoints(double from, double to, double step, std::vector<PolylineElementPoint>& points,
                                  bool closeAtEnd) const;
    [[nodiscard]] bool MakePoints(double from, double to, double step, std::vector<Point3D>& points,
                                  bool closeAtEnd) const;
    [[nodiscard]] bool MakePointsAndTangents(double from, double to, std::vector<PolylineElementPoint>& points,
                                             double step) const;
    [[nodiscard]] bool MakePointsAndTangentsUsingHeight(double from, double to,
                                                        std::vector<PolylineElementPoint>& points, double height) const;
    [[nodiscard]] bool MakePointsUsingHeight(double from, double to, std::vector<Point3D>& points, double height) const;
    [[nodiscard]] bool MakeLineString(double from, double to, LineString3D& lineString, double step) const;
    [[nodiscard]] bool MakeLineStringUsingHeight(double from, double to, LineString3D& lineString, double height) const;
    std::list<Line3D> MakeLines(double step) const;

private:
    // Axes at the start: outward from the centre, along the tangent, along the normal.
    detail::PlaneFrame Frame() const;
    // This arc in the first two of them.
    Arc2D InPlane() const { return {Point2D(), Point2D(-GetRadius(), 0.0), sweepAngle}; }
    Angle AngleInPlane(const Point3D& point) const;

    Point3D startPoint;
    Point3D centerPoint;
    Angle sweepAngle;
    Plane3D plane;
    Point3D endPoint;
};

}  // namespace Kalvio::Math
