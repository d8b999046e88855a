#pragma once

#include "kalvio/core/Angle.h"
#include "kalvio/core/OrientedBoundingBox2D.h"
#include "kalvio/curves/IPolyline2DElement.h"

#include <vector>

namespace Kalvio::Math {

class Matrix2D;

/// Straight element in plan: the directed segment from a start to an end point.
///
/// Length and direction are computed from the points on every call. A line whose two points coincide is allowed; each
/// operation says what it does with it.
class KALVIO_MATH_API Line2D final : public IPolyline2DElement {
public:
    /// Both points at the origin.
    constexpr Line2D() = default;
    Line2D(const Point2D& from, const Point2D& to) : start(from), end(to) {}
    Line2D(const Point2D& from, const Vec2D& v) : start(from), end(from + v) {}

    MathTypes GetType() const override;
    BoundingBox2D GetBoundingBox() const { return GetBoundingBox2D(); }
    BoundingBox2D GetBoundingBox2D() const override;
    /// The box at z = 0.
    BoundingBox3D GetBoundingBox3D() const override;
    /// A box of zero width along the line.
    OrientedBoundingBox2D GetOrientedBoundingBox2D() const;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 1; }
    /// Comparable with a `Line2D`, a `LineString2D` of the same two points and a `Polyline2D` of just this line.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    /// Start equals start and end equals end, strictly per coordinate; a reversed line is not equal.
    bool IsEqualTo(const Line2D& other, double tolerance) const {
        return start.IsEqualTo(other.start, tolerance) && end.IsEqualTo(other.end, tolerance);
    }
    [[nodiscard]] Line2D* Clone() const override;
    /// Exchanges start and end.
    void Reverse() override;
    double GetLength() const override { return start.Distance(end); }
    [[nodiscard]] bool BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                        std::vector<IGeometry*>& out, bool modifyThis,
                                        const Tolerances& tolerances) override;
    using IPolyline2DElement::BreakAtPreSorted;
    /// Inside the box of the line widened by the user tolerance, and on its infinite line within it. A line of zero
    /// length holds no point.
    bool IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const override;
    /// The start (end) becomes the point, without a test of direction; always true.
    bool ExtendStart(const Point2D& point, const Tolerances& tolerances) override;
    bool ExtendEnd(const Point2D& point, const Tolerances& tolerances) override;
    /// With a `Line2D`: a `LineString2D` of this start, this end and the other's end (the other's start is not looked
    /// at). With a `Polyline2D`: a `Polyline2D` of two elements, clones of this line and of that polyline. Others:
    /// `GeometryCreator::Append`.
    [[nodiscard]] IGeometry* Append(const IGeometry* const other) const override;
    const Point2D& GetStart() const override { return start; }
    const Point2D& GetEnd() const override { return end; }
    /// The distance from the start (end) when the point lies on the line.
    [[nodiscard]] bool GetLengthFromStartPoint(const Point2D& point, double& length, double tolerance) const override;
    [[nodiscard]] bool GetLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const override;
    /// The direction of the line, wherever the point lies, a unit vector however short the line; always true.
    [[nodiscard]] bool ComputeTangent(const Point2D& point, Vec2D& tangent,
                                      const Tolerances& tolerances) const override;
    /// The start for a line shorter than the system epsilon.
    Point2D GetNearestPoint(const Point2D& point, const Tolerances& tolerances) const override;

    Point2D& GetStart() { return start; }
    Point2D& GetEnd() { return end; }
    void SetStart(const Point2D& value) { start = value; }
    void SetEnd(const Point2D& value) { end = value; }
    void SetPoints(const Point2D& from, const Point2D& to) {
        CopyData(Line2D(from, to));  // the arguments may be points of this line
    }

    /// Unit direction from start to end; unchanged difference for a length of at most 1e-10.
    Vec2D GetDirection() const { return (end - start).Normalize(); }
    /// Direction counter-clockwise from +X in (-pi, pi].
    Angle GetAngle() const { return (end - start).GetAngle(); }
    /// Unsigned angle between the directions of the two lines in [0, pi].
    Angle GetAngleWithLine(const Line2D& other) const { return GetDirection().GetAngle(other.GetDirection()); }
    /// The slope dy/dx (dx/dy), not the height difference, is zero within the tolerance; where dx (dy) is itself zero,
    /// dy (dx) is tested. Inclusive, |tolerance|. So a long line with a small rise counts as horizontal.
    bool IsHorizontal(double tolerance) const;
    bool IsVertical(double tolerance) const;
    /// The point of the infinite line at height y (at abscissa x).
    /// @return 1 when found; for a horizontal (vertical) line 2 when every value qualifies, else 0, the output
    /// untouched
    [[nodiscard]] int GetX(double y, double& x) const;
    [[nodiscard]] int GetY(double x, double& y) const;
    /// Inclusive; false for a line of zero length.
    bool IsPointOnInfiniteLine(const Point2D& point, double tolerance) const;
    /// Distance from the start (end), negative when the point lies behind the start (beyond the end): both measures are
    /// positive between the two ends.
    double GetDistanceFromStartPoint(const Point2D& point) const;
    double GetDistanceFromEndPoint(const Point2D& point) const;
    /// The point at a station, extrapolated outside [0, length]; false for a length below 1e-10.
    [[nodiscard]] bool GetPointOffsetFromStart(double station, Point2D& point) const;
    /// The same moved by `direction` times `offset`.
    [[nodiscard]] bool GetPointOffsetFromStart(double station, double offset, const Vec2D& direction,
                                               Point2D& point) const;
    /// The same moved by `offset` along the line direction turned counter-clockwise by `turn`.
    [[nodiscard]] bool GetPointOffsetFromStart(double station, double offset, const Angle& turn, Point2D& point) const;

    /// The sample at a station; false, the result untouched, for a line of zero length or out of [0, length] by more
    /// than 1e-10.
    [[nodiscard]] bool MakePointAndTangentAt(double station, PolylineElementPoint& result) const;
    /// Appends samples at from, from + step ... up to `to` or the end of the line; a negative `from` extrapolates. With
    /// `closeAtEnd` the end follows when `to` lies beyond it, also where a step fell on it.
    /// @return false, nothing appended, when from lies beyond the length, to < 0 or step is not positive
    [[nodiscard]] bool MakePoints(double from, double to, double step, std::vector<PolylineElementPoint>& points,
                                  bool closeAtEnd) const;
    [[nodiscard]] bool MakePoints(double from, double to, double step, std::vector<Point2D>& points,
                                  bool closeAtEnd) const;

    /// A non-const line is changed in place.
    Line2D& Transform(const Matrix2D& matrix);
    [[nodiscard]] Line2D Transform(const Matrix2D& matrix) const;
    Line2D& Translate(const Vec2D& v);
    [[nodiscard]] Line2D Translate(const Vec2D& v) const;

private:
    void CopyData(const Line2D& other) {
        start = other.start;
        end = other.end;
    }
    Point2D start;
    Point2D end;
};

}  // namespace Kalvio::Math
