#pragma once

#include "kalvio/curves/IPolyline2DElement.h"

#include <vector>

namespace Kalvio::Math {

class Line2D;
class LineString2D;

/// Vertical curve of an alignment's profile: the part of y = a x^2 + b x + c between a start and an end point. x is the
/// horizontal coordinate (the station along the profile), y the height; the slope at x is u = 2 a x + b.
///
/// The caller keeps start and end on the curve: nothing is moved there, and lengths are measured between their
/// abscissae. An element may run towards smaller x. The tangents of sample records point in the direction of travel, as
/// for every element; `GetStartTangent`, `GetEndTangent` and `ComputeTangent` give (1, u) all the same.
///
///     Parabola sag(Point2D(0, 2), Point2D(200, 0), 0.0001, -0.03, 2.0);  // from -3 % to +1 %
///     sag.GetParameterK();                                              // 50: m per percent
class KALVIO_MATH_API Parabola final : public IPolyline2DElement {
public:
    /// Everything 0.
    constexpr Parabola() = default;
    /// Start and end at the origin, whether or not the curve passes there.
    Parabola(double quadratic, double linear, double constant) : a(quadratic), b(linear), c(constant) {}
    Parabola(const Point2D& from, const Point2D& to, double quadratic, double linear, double constant)
        : start(from), end(to), a(quadratic), b(linear), c(constant) {}

    MathTypes GetType() const override;
    BoundingBox2D GetBoundingBox() const { return GetBoundingBox2D(); }
    /// Of the curve between the two abscissae, its summit included, and of the two points.
    BoundingBox2D GetBoundingBox2D() const override;
    /// The box at z = 0.
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 1; }
    /// Comparable with a `Parabola` and with a `Polyline2D` of just one.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    /// Start, end and the three coefficients, each strictly within the tolerance; a reversed parabola is not equal.
    bool IsEqualTo(const Parabola& other, double tolerance) const;
    [[nodiscard]] Parabola* Clone() const override;
    /// Exchanges start and end; the coefficients stay.
    void Reverse() override;
    /// `GetLength(start, end, 1e-10)`.
    double GetLength() const override;
    /// The pieces are parabolas of the same coefficients.
    [[nodiscard]] bool BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                        std::vector<IGeometry*>& out, bool modifyThis,
                                        const Tolerances& tolerances) override;
    using IPolyline2DElement::BreakAtPreSorted;
    /// At most the user tolerance away from the nearest point of the element; inclusive.
    bool IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const override;
    /// The start (end) moves along the curve to the abscissa of the point, how far the point may lie from the curve.
    /// @return false, nothing changed, for a point that is not finite
    bool ExtendStart(const Point2D& point, const Tolerances& tolerances) override;
    bool ExtendEnd(const Point2D& point, const Tolerances& tolerances) override;
    [[nodiscard]] IGeometry* Append(const IGeometry* const other) const override;
    const Point2D& GetStart() const override { return start; }
    const Point2D& GetEnd() const override { return end; }
    /// Arc length from the start (end) to the foot of the point.
    [[nodiscard]] bool GetLengthFromStartPoint(const Point2D& point, double& length, double tolerance) const override;
    [[nodiscard]] bool GetLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const override;
    /// (1, u) at the abscissa of the point, scaled to length 1, whichever way the element runs.
    [[nodiscard]] bool ComputeTangent(const Point2D& point, Vec2D& tangent,
                                      const Tolerances& tolerances) const override;
    /// The nearest of all feet on the element and its two ends, the first from the start where several are equally
    /// near.
    Point2D GetNearestPoint(const Point2D& point, const Tolerances& tolerances) const override;
    /// The same with tangent and station.
    PolylineElementPoint GetNearestPoint(const Point2D& point) const;
    /// The nearest foot of a perpendicular on the element, beyond a centre of curvature too. An end counts when the
    /// foot lies beyond it by at most the tolerance, along the tangent.
    /// @return false, `foot` untouched, when there is none, for an element of no extent, and values that are not finite
    [[nodiscard]] bool GetNormalPoint(const Point2D& point, double tolerance, PolylineElementPoint& foot) const;

    void GetParameters(double& quadratic, double& linear, double& constant) const;
    void SetParameters(double quadratic, double linear, double constant);
    /// The vertical curve that rounds off the corner of two straight grades, symmetrical and towards larger x.
    /// @param intersection    where the grades meet, halfway along the curve (the PVI)
    /// @param gradeIn,gradeOut  rise per length before and behind it: 0.03 is 3 %
    /// @param length          horizontal
    /// @return false, nothing changed, for a length of at most 1e-10 and where a value becomes one that is not finite
    [[nodiscard]] bool SetVerticalCurve(const Point2D& intersection, double gradeIn, double gradeOut, double length);
    void SetStart(const Point2D& value) { start = value; }
    void SetEnd(const Point2D& value) { end = value; }

    [[nodiscard]] double Evaluate(double x) const { return (a * x + b) * x + c; }
    /// Always 1.
    [[nodiscard]] int GetY(double x, double& y) const;
    /// The next three: false, the output untouched, for |a| < 1e-10, where the curve is straight.
    [[nodiscard]] bool GetSummit(Point2D& summit) const;
    [[nodiscard]] bool GetFocus(Point2D& focus) const;
    /// Height of the directrix, a horizontal line.
    [[nodiscard]] bool GetDirectix(double& y) const;
    /// |0.005 / a|: the horizontal distance over which the grade changes by one percent; infinite for a = 0.
    double GetParameterK() const;
    /// Zeros of the whole curve: x1 = (-b + sqrt(D)) / 2a, x2 = (-b - sqrt(D)) / 2a with D = b^2 - 4 a c. a must not be
    /// 0.
    /// A D within the rounding of b^2, 4 eps b^2 either way, counts as 0: the curve touches the axis at x1 = x2 = -b /
    /// 2a.
    /// @return 0 for D < 0, outputs untouched; 1 for D < 1e-10; else 2
    [[nodiscard]] int FindRoots(double& x1, double& x2) const;
    /// Arc length between the abscissae of two points, never negative. For |a| < `tolerance` that of the chord.
    double GetLength(const Point2D& p1, const Point2D& p2, double tolerance) const;
    Vec2D GetStartTangent() const { return ComputeTangent(start); }
    Vec2D GetEndTangent() const { return ComputeTangent(end); }
    [[nodiscard]] Vec2D ComputeTangent(const Point2D& point) const;
    /// Tangents of the whole curve through a point, from the point to where they touch; `left` touches at the smaller
    /// abscissa. A point within 1e-8 of the curve, measured vertically, has one: a line of unit length from it, in
    /// `left`.
    /// @return their number: 2 outside, 1 on the curve, 0 inside; lines beyond that number are untouched. A curve that
    ///         is straight (|a| < 1e-10) has no other tangent than itself
    [[nodiscard]] int GetTangentsThroughPoint(const Point2D& point, Line2D& left, Line2D& right) const;

    /// Point, tangent and station at an arc length from the start; false more than 1e-10 outside [0, length].
    [[nodiscard]] bool MakePointAndTangentAt(double station, PolylineElementPoint& result) const;
    /// The same at an abscissa; false outside those of the start and the end.
    [[nodiscard]] bool MakePointAndTangentAtAbscissa(double x, PolylineElementPoint& result) const;

    /// The sampling functions append samples of the whole curve at the abscissae from, from +- step ... towards `to`;
    /// `to` may be the smaller one. Stations are arc lengths from the start of the element, negative before it.
    /// @param step        along x
    /// @param closeAtEnd  `to` itself is the last sample
    /// @return false, nothing appended, for a step (height) that is not positive and values that are not finite
    [[nodiscard]] bool MakePoints(double from, double to, double step, std::vector<PolylineElementPoint>& points,
                                  bool closeAtEnd) const;
    [[nodiscard]] bool MakePoints(double from, double to, double step, std::vector<Point2D>& points,
                                  bool closeAtEnd) const;
    /// The same, with `to` always the last sample. The forms with `height` take the fewest equal steps whose chords lie
    /// nowhere further than that, measured vertically, from the curve.
    [[nodiscard]] bool MakePointsAndTangents(double from, double to, std::vector<PolylineElementPoint>& points,
                                             double step) const;
    [[nodiscard]] bool MakePointsAndTangentsUsingHeight(double from, double to,
                                                        std::vector<PolylineElementPoint>& points, double height) const;
    [[nodiscard]] bool MakePointsUsingHeight(double from, double to, std::vector<Point2D>& points, double height) const;
    [[nodiscard]] bool MakeLineString(double from, double to, LineString2D& lineString, double step) const;

    /// A non-const parabola is changed in place.
    Parabola& Translate(const Vec2D& v);
    [[nodiscard]] Parabola Translate(const Vec2D& v) const;

private:
    // The feet of a point in the order of x; defined in the source.
    struct Feet;

    double GetSlope(double x) const { return 2.0 * a * x + b; }
    double GetArcLength(double x1, double x2) const;
    Point2D GetPointAt(double x) const { return {x, Evaluate(x)}; }
    // -1 where the element runs towards smaller x.
    double GetSign() const { return end.GetX() < start.GetX() ? -1.0 : 1.0; }
    PolylineElementPoint MakeSample(const Point2D& point, double station) const;
    PolylineElementPoint GetSample(double x) const;
    double GetStep(double from, double to, double height) const;

    Point2D start;
    Point2D end;
    double a = 0.0;
    double b = 0.0;
    double c = 0.0;
};

}  // namespace Kalvio::Math
