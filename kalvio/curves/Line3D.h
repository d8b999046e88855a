#pragma once

#include "kalvio/curves/IPolyline3DElement.h"

#include <vector>

namespace Kalvio::Math {

class Matrix3D;

/// Directed segment in space.
class KALVIO_MATH_API Line3D final : public IPolyline3DElement {
public:
    /// Both points at the origin.
    constexpr Line3D() = default;
    Line3D(const Point3D& from, const Point3D& to) : start(from), end(to) {}
    Line3D(const Point3D& from, const Vec3D& v) : start(from), end(from + v) {}

    MathTypes GetType() const override;
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 1; }
    /// Comparable with a `Line3D`, a `LineString3D` of the same two points and a `Polyline3D` of just one of them.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    /// Start equals start and end equals end, strictly per coordinate.
    bool IsEqualTo(const Line3D& other, double tolerance) const {
        return start.IsEqualTo(other.start, tolerance) && end.IsEqualTo(other.end, tolerance);
    }
    [[nodiscard]] Line3D* Clone() const override;
    void Reverse() override;
    /// Length in space.
    double GetLength() const override { return start.Distance(end); }
    const Point3D& GetStart() const override { return start; }
    const Point3D& GetEnd() const override { return end; }
    /// The distance from the start (end) when the point lies on the segment: inside its box widened by the tolerance
    /// and at most the tolerance from its line, both inclusive. A line of zero length holds no point.
    [[nodiscard]] bool GetLengthFromStartPoint(const Point3D& point, double& length, double tolerance) const override;
    [[nodiscard]] bool GetLengthFromEndPoint(const Point3D& point, double& length, double tolerance) const override;
    /// The start for a line shorter than the system epsilon.
    Point3D GetNearestPoint(const Point3D& point, const Tolerances& tolerances) const override;
    /// With a `Line3D`: a `LineString3D` of this start, this end and the other's end (the other's start is not looked
    /// at). With a `Polyline3D`: a `Polyline3D` of two elements, clones of this line and of that polyline. With another
    /// element in space: a `Polyline3D` of clones. Null for anything else.
    [[nodiscard]] IGeometry* Append(const IGeometry* const other) const override;

    /// As `GetLengthFromStartPoint`, with the user tolerance.
    bool IsPointOnGeometry(const Point3D& point, const Tolerances& tolerances) const;
    using IPolyline3DElement::IsPointOnGeometry;
    /// The direction of the line, wherever the point lies, a unit vector however short the line; always true.
    [[nodiscard]] bool ComputeTangent(const Point3D& point, Vec3D& tangent, const Tolerances& tolerances) const;
    /// The start (end) becomes the point, without a test of direction; always true.
    bool ExtendStart(const Point3D& point, const Tolerances& tolerances);
    bool ExtendEnd(const Point3D& point, const Tolerances& tolerances);
    using IPolyline3DElement::ExtendEnd;
    using IPolyline3DElement::ExtendStart;

    Point3D& GetStart() { return start; }
    Point3D& GetEnd() { return end; }
    void SetStart(const Point3D& value) { start = value; }
    void SetEnd(const Point3D& value) { end = value; }
    void SetPoints(const Point3D& from, const Point3D& to) {
        CopyData(Line3D(from, to));  // the arguments may be points of this line
    }

    /// Length in plan.
    double GetLength2D() const { return start.Distance2D(end); }
    /// Unit direction; unchanged difference for a length of at most 1e-10.
    Vec3D GetDirection() const { return (end - start).Normalize(); }
    const Point3D GetMiddlePoint() const { return (start + end) * 0.5; }
    /// The point at a station, extrapolated outside [0, length]; false for a length below 1e-10.
    [[nodiscard]] bool GetPointOffsetFromStart(double station, Point3D& point) const;
    /// As for `Line2D`, with the height carried along.
    [[nodiscard]] bool MakePointAndTangentAt(double station, PolylineElementPoint& result) const;
    [[nodiscard]] bool MakePoints(double from, double to, double step, std::vector<PolylineElementPoint>& points,
                                  bool closeAtEnd) const;
    [[nodiscard]] bool MakePoints(double from, double to, double step, std::vector<Point3D>& points,
                                  bool closeAtEnd) const;

    /// Where p lies on the plan projection of the infinite line (on the plan segment): the height of the foot in space
    /// of (p.x, p.y, 0) on the line; else 0. For a sloping line that foot is not the point above p: for the height
    /// above p use `GetZByInterpolation`.
    double GetZ(const Point2D& p, double tolerance) const;
    double GetZOnSegment(const Point2D& p, double tolerance) const;
    /// Height of the line above p, interpolated along y, or along x where the line does not advance in y by more than
    /// the tolerance, or the start's height where it advances in neither.
    double GetZByInterpolation(const Point2D& p, double tolerance) const;

    /// A non-const line is changed in place.
    Line3D& Transform(const Matrix3D& matrix);
    [[nodiscard]] Line3D Transform(const Matrix3D& matrix) const;
    Line3D& Translate(const Vec3D& v);
    [[nodiscard]] Line3D Translate(const Vec3D& v) const;

private:
    void CopyData(const Line3D& other) {
        start = other.start;
        end = other.end;
    }
    bool Holds(const Point3D& point, double tolerance) const;

    Point3D start;
    Point3D end;
};

}  // namespace Kalvio::Math
