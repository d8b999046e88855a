#pragma once

#include "kalvio/core/Angle.h"
#include "kalvio/core/WindingValue.h"
#include "kalvio/curves/IPolyline2DElement.h"
#include "kalvio/curves/Line2D.h"

#include <list>
#include <vector>

namespace Kalvio::Math {

class LineString2D;

/// Circular element in plan, given by its start point, its centre and the signed sweep from start to end.
///
/// A positive sweep runs counter-clockwise and has a positive signed radius; 2 pi is the full circle, which always runs
/// counter-clockwise. The radius is the distance from the centre to the start. An arc of radius 0 is a point.
///
/// Points are computed from the start, not from the centre, so that flat arcs of any radius keep the accuracy of their
/// coordinates. The end point is computed by constructors and edits only.
class KALVIO_MATH_API Arc2D final : public IPolyline2DElement {
public:
    /// All zero.
    constexpr Arc2D() = default;
    Arc2D(const Point2D& start, const Point2D& center, const Angle& sweep) { Set(start, center, sweep); }
    /// From start, bulge = tan(sweep / 4) and end. A bulge of 0 or not finite, or one so small or large that the radius
    /// has no square among the numbers (beyond 1e154), is no arc and gives the start alone.
    Arc2D(const Point2D& start, double bulge, const Point2D& end);

    MathTypes GetType() const override;
    /// The extremes of the full circle that lie on the arc within 0.005, elsewhere the two ends.
    BoundingBox2D GetBoundingBox() const { return GetBoundingBox2D(); }
    BoundingBox2D GetBoundingBox2D() const override;
    /// The box at z = 0.
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 1; }
    /// Comparable with an `Arc2D` and a `Polyline2D` of one arc.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    /// Start, middle, end and centre agree strictly per coordinate; a reversed arc is not equal.
    bool IsEqualTo(const Arc2D& other, double tolerance) const;
    [[nodiscard]] Arc2D* Clone() const override;
    /// Exchanges start and end and turns the sweep; a full circle stays as it is.
    void Reverse() override;
    /// |radius sweep|.
    double GetLength() const override;
    /// The pieces are true parts of this arc and join exactly: cuts lie at their stations on the arc.
    [[nodiscard]] bool BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                        std::vector<IGeometry*>& out, bool modifyThis,
                                        const Tolerances& tolerances) override;
    using IPolyline2DElement::BreakAtPreSorted;
    /// On the circle and within the sweep; the rule of `Intersection::PointOnArc`.
    bool IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const override;
    /// `GeometryCreator::Append`; null for a null pointer.
    [[nodiscard]] IGeometry* Append(const IGeometry* const other) const override;
    const Point2D& GetStart() const override { return startPoint; }
    const Point2D& GetEnd() const override { return endPoint; }
    /// Length along the arc to the point's direction from the centre, in the direction of travel. Points beyond an end,
    /// or across the seam of a full circle, that lie on the arc within the tolerance have that end's station.
    [[nodiscard]] bool GetLengthFromStartPoint(const Point2D& point, double& length, double tolerance) const override;
    [[nodiscard]] bool GetLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const override;
    [[nodiscard]] bool ComputeTangent(const Point2D& point, Vec2D& tangent,
                                      const Tolerances& tolerances) const override;
    /// The nearest point of the arc; of two equally near ends, and for the centre itself, the start.
    Point2D GetNearestPoint(const Point2D& point, const Tolerances& tolerances) const override;
    /// The same with tangent and station.
    PolylineElementPoint GetNearestPoint(const Point2D& point) const;
    /// The nearest foot of a perpendicular, on the far side of the centre too; for the centre itself the start. An end
    /// counts when the foot lies beyond it by at most the tolerance, along the tangent.
    /// @return false, `foot` untouched, when there is none, and for a length or radius of 0
    [[nodiscard]] bool GetNormalPoint(const Point2D& point, double tolerance, PolylineElementPoint& foot) const;
    /// The point halfway along the arc.
    const Point2D GetMiddlePoint() const override;

    /// A sweep that is not finite counts as 0.
    void Set(const Point2D& start, const Point2D& center, const Angle& sweep);
    /// Through three points in order of travel, as `GeometryCreator::ArcFrom3Points` with 1e-10.
    /// @return false, the arc unchanged, for collinear points
    bool Set(const Point2D& p1, const Point2D& p2, const Point2D& p3);
    /// From start, centre, end and sense of travel. The end is only the direction in which the arc ends: the radius is
    /// that of the start. An end at most |tolerance| from the start closes the full circle, counter-clockwise only.
    /// @return false, the arc unchanged, where the two radii differ by more than |tolerance|, for a radius of at most
    ///         1e-10, a clockwise full circle, `Vertical`, and values that are not finite
    [[nodiscard]] bool Set(const Point2D& start, const Point2D& center, const Point2D& end, WindingValue sense,
                           double tolerance);
    /// Moves the whole arc so that it starts at the point.
    void Move(const Point2D& newStart);
    const Point2D& GetCenter() const { return centerPoint; }
    /// Changes the radius too: the start stays.
    void SetCenter(const Point2D& center) { Set(startPoint, center, sweepAngle); }
    const Angle& GetAngle() const { return sweepAngle; }
    void SetAngle(const Angle& sweep) { Set(startPoint, centerPoint, sweep); }

    double GetRadius() const { return centerPoint.Distance(startPoint); }
    /// Negative for a clockwise arc.
    double GetSignedRadius() const { return GetSense() * GetRadius(); }
    /// tan(sweep / 4): negative for a clockwise arc, 1 for a half circle.
    double GetBulge() const;
    /// The sagitta r (1 - cos(sweep / 2)): how far the arc leaves its chord.
    double GetHeight() const;
    double GetChordLength() const { return startPoint.Distance(endPoint); }
    Point2D GetChordMiddlePoint() const { return startPoint + (endPoint - startPoint) * 0.5; }
    /// Direction from the centre to the start (end), in (-pi, pi].
    Angle GetStartAngle() const { return SignAngle(startPoint - centerPoint); }
    Angle GetEndAngle() const { return SignAngle(endPoint - centerPoint); }
    /// Angle of a vector from the x axis in (-pi, pi]; -0.0 as y counts as positive, the zero vector gives 0.
    static Angle SignAngle(const Vec2D& v);
    /// Unit direction of travel; the zero vector for radius 0.
    Vec2D GetStartTangent() const { return TangentAt(Turn(0.0)); }
    Vec2D GetEndTangent() const { return TangentAt(Turn(sweepAngle.GetRadians())); }
    /// Unit direction of travel where the ray from the centre through the point meets the circle; at the start for the
    /// centre itself.
    Vec2D ComputeTangent(const Point2D& point) const;
    /// Area of the segment between arc and chord, never negative: r^2 (|sweep| - sin |sweep|) / 2. With the sign of the
    /// sweep it is what the arc adds to the area of a ring over its chord.
    double GetArea() const;

    /// | distance from the centre - radius | <= |tolerance|, inclusive.
    bool IsPointOnCircle(const Point2D& point, const Tolerances& tolerances) const;
    bool IsPointOnCircle(const Point2D& point, double tolerance) const;
    /// True when the direction from the centre to a point of the circle lies within the sweep, or the point lies within
    /// |tolerance| of an end, both inclusive.
    bool IsCirclePointInside(const Point2D& point, const Tolerances& tolerances) const;
    bool IsCirclePointInside(const Point2D& point, double tolerance) const;
    /// True in the circular segment between arc and chord and within |tolerance| of it, inclusive; a full circle is its
    /// own segment.
    bool IsPointInside(const Point2D& point, const Tolerances& tolerances) const;
    bool IsPointInside(const Point2D& point, double tolerance) const;
    /// Length along the full circle from the start (end) to the point, the shorter way round.
    /// @return false, `length` untouched, when the point is not on the circle within the tolerance
    [[nodiscard]] bool GetShortestLengthFromStartPoint(const Point2D& point, double& length, double tolerance) const;
    [[nodiscard]] bool GetShortestLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const;
    /// The point of the arc at the abscissa x.
    /// @param y          height of the first such point in the direction of travel
    /// @param tolerance  x may miss the circle, and the point an end, by |tolerance|
    /// @return the number of such points: 0 (y untouched), 1 or 2
    [[nodiscard]] int GetY(double x, double& y, double tolerance) const;
    /// The point at a station; outside [0, length] further round the circle. False for radius 0.
    [[nodiscard]] bool GetPointOffsetFromStart(double station, Point2D& point) const;
    /// The sample at a station; false, `result` untouched, out of [0, length] by more than 1e-10 or for radius 0.
    [[nodiscard]] bool MakePointAndTangentAt(double station, PolylineElementPoint& result) const;
    /// The part between two stations.
    /// @return false, `part` untouched, unless 0 <= from < to <= length, both ends within 1e-10
    [[nodiscard]] bool MakeArc(double from, double to, Arc2D& part) const;

    /// As for `Line2D`: appends samples at from, from + step ... up to `to` or the end of the arc.
    [[nodiscard]] bool MakePoints(double from, double to, double step, std::vector<PolylineElementPoint>& points,
                                  bool closeAtEnd) const;
    [[nodiscard]] bool MakePoints(double from, double to, double step, std::vector<Point2D>& points,
                                  bool closeAtEnd) const;
    /// Appends samples at from, from + step ... and at `to` itself, the range clipped to the arc. The forms with
    /// `height` take equal steps, the longest whose chords stay within that height of the arc (at most a quarter
    /// circle).
    /// @return false, nothing appended, for an empty range or a step or height that is not positive
    [[nodiscard]] bool MakePointsAndTangents(double from, double to, std::vector<PolylineElementPoint>& points,
                                             double step) const;
    [[nodiscard]] bool MakePointsAndTangentsUsingHeight(double from, double to,
                                                        std::vector<PolylineElementPoint>& points, double height) const;
    [[nodiscard]] bool MakePointsUsingHeight(double from, double to, std::vector<Point2D>& points, double height) const;
    [[nodiscard]] bool MakeLineString(double from, double to, LineString2D& lineString, double step) const;
    [[nodiscard]] bool MakeLineStringUsingHeight(double from, double to, LineString2D& lineString, double height) const;
    /// The chords between samples of the whole arc; none for a step that is not positive.
    std::list<Line2D> MakeLines(double step) const;

private:
    /// The arc becomes the one through its start, its present middle and the point (its middle, end and the point).
    /// Always false, though the arc has changed: callers must not read that as failure.
    bool ExtendStart(const Point2D& point, const Tolerances& tolerances) override;
    bool ExtendEnd(const Point2D& point, const Tolerances& tolerances) override;

    Arc2D(const Point2D& start, const Point2D& center, const Angle& sweep, const Point2D& end)
        : startPoint(start), centerPoint(center), sweepAngle(sweep), endPoint(end) {}

    // Sine and versine (1 - cosine) of an angle at the centre: what carries the start along the circle.
    struct Turn {
        explicit Turn(double angle);
        double sine, versine;
    };

    double GetSense() const { return sweepAngle.GetRadians() < 0.0 ? -1.0 : 1.0; }
    // 1 / signed radius, 0 for radius 0: angle at the centre, with the sign of the sweep, per length.
    double GetCurvature() const;
    Point2D PointAt(const Turn& turn) const;
    Vec2D TangentAt(const Turn& turn) const;
    PolylineElementPoint SampleAt(double station, double curvature) const;
    // Angle from the start to the point in the direction of travel, in [0, 2 pi]; 0 for the centre.
    double TravelTo(const Point2D& point) const;
    // The same back from the end.
    double TravelBackTo(const Point2D& point) const;
    double StationOf(double travel, double tolerance) const;
    double DistanceFromCircle(const Point2D& point) const;
    Arc2D Part(double from, double to) const;
    template <class Emit>
    bool Sample(double from, double to, double step, Emit&& emit) const;
    double StepForHeight(double from, double to, double height) const;

    Point2D startPoint;
    Point2D centerPoint;
    Angle sweepAngle;
    Point2D endPoint;
};

}  // namespace Kalvio::Math
