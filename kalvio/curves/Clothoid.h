#pragma once

#include "kalvio/curves/IPolyline2DElement.h"

#include <list>
#include <span>
#include <vector>

namespace Kalvio::Math {

class LineString2D;
class Matrix2D;

/// Transition curve whose curvature changes linearly with length, between two radii or a straight and a radius.
///
/// The parameter A holds A^2 = R L at every point: R radius, L length from the inflection point. The tangent angle
/// there is tau = L^2 / (2 A^2) = A^2 / (2 R^2). Radii are signed: positive turns left, negative right, 0 is straight.
///
///     const Clothoid in(0.0, 300.0, 150.0, Point2D(100, 0), Vec2D(1, 0));  // straight to R = 300 left
///     in.GetLength();  // 75
///     in.GetEnd();     // (174.8829, 3.1215)
///
/// Points are computed in a local frame, origin at the inflection point, x axis along the tangent there, by the power
/// series of the Fresnel integrals in tau. Seven terms are used everywhere; the error as a multiple of A, growing with
/// the tangent angle of the end with the smaller radius:
///
///     tau [rad]   0.5     1.0     1.5     2.0      2.5      3.0      3.5      4.0    4.5      5.0
///     error / A   2e-16   6e-13   2e-10   1.3e-8   3.3e-7   4.6e-6   4.3e-5   3e-4   1.7e-3   7.4e-3
///
/// Radii of opposite sign do not belong to one clothoid. The formulas (`GetLength`, `GetEnd`, ...) are evaluated all
/// the same, sampling and searching answer false: use two clothoids joined at the inflection point, or a `Spiral2D`.
/// The same holds for a negative parameter and values that are not finite. Equal radii or a parameter of 0 give a
/// clothoid of length 0, which is its start point.
class KALVIO_MATH_API Clothoid final : public IPolyline2DElement {
public:
    /// Number of series terms wherever none is passed.
    static constexpr int defaultTerms = 7;

    /// All zero.
    Clothoid();
    /// @param startRadiusValue  signed radius at the start, 0 for straight
    /// @param tangent           direction of travel at the start, unit
    Clothoid(double startRadiusValue, double endRadiusValue, double parameterValue, const Point2D& from,
             const Vec2D& tangent);
    Clothoid(const Clothoid& other);
    Clothoid& operator=(const Clothoid& other);
    Clothoid(Clothoid&& other) noexcept = default;
    Clothoid& operator=(Clothoid&& other) noexcept = default;

    MathTypes GetType() const override;
    /// The box of the ends and of every point whose tangent is parallel to an axis, widened by the series error.
    BoundingBox2D GetBoundingBox() const { return GetBoundingBox2D(); }
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 1; }
    /// Another clothoid with equal start, start tangent, radii and parameter, strictly; or a `Polyline2D` of just one.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const Clothoid& other, double tolerance) const;
    [[nodiscard]] Clothoid* Clone() const override;
    /// The radii change places and signs; the start moves to the end, its tangent is turned round.
    void Reverse() override;
    /// |A^2/R2 - A^2/R1|, a straight end contributing 0.
    double GetLength() const override;
    /// Pieces are clothoids of the same parameter that start and end on the curve.
    [[nodiscard]] bool BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                        std::vector<IGeometry*>& out, bool modifyThis,
                                        const Tolerances& tolerances) override;
    using IPolyline2DElement::BreakAtPreSorted;
    /// See `GetLengthFromStartPoint`; with the user tolerance.
    bool IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const override;
    /// The start (end) moves along the same clothoid, shorter or longer, to the foot of the point; the other end stays.
    /// Within the user tolerance of the inflection point the end becomes straight.
    /// @return false, nothing changed, for a point without a foot: beyond the inflection point, where the curve turns
    ///         to the other side; beyond tau = 2, where the series ends; within the user tolerance of the other end
    bool ExtendStart(const Point2D& point, const Tolerances& tolerances) override;
    bool ExtendEnd(const Point2D& point, const Tolerances& tolerances) override;
    [[nodiscard]] IGeometry* Append(const IGeometry* const other) const override;
    const Point2D& GetStart() const override { return start; }
    /// The end by seven terms, computed by the constructors and setters: this reads only.
    const Point2D& GetEnd() const override { return end; }
    /// The end by any number of terms, valid until the next such call. It writes to this object, so it needs it alone;
    /// nothing but the returned point changes.
    const Point2D& GetEnd(int terms);
    /// The station of the sample nearest to the point, not of an interpolated foot: good to the tolerance. The curve is
    /// sampled at 21 stations and again between the neighbours of the nearest one until a sample is strictly nearer
    /// than the tolerance, or the step is below it (false).
    [[nodiscard]] bool GetLengthFromStartPoint(const Point2D& point, double& length, double tolerance) const override;
    [[nodiscard]] bool GetLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const override;
    /// The tangent of that sample, with the user tolerance.
    [[nodiscard]] bool ComputeTangent(const Point2D& point, Vec2D& tangent,
                                      const Tolerances& tolerances) const override;
    /// The foot (or end) nearest to the point over the whole curve, to rounding; the first of equals.
    Point2D GetNearestPoint(const Point2D& point, const Tolerances& tolerances) const override;
    /// The same over the stations [from, to], with tangent and station. False for an empty range, no curve, and where
    /// no distance is finite.
    [[nodiscard]] bool GetNearestPoint(const Point2D& point, double from, double to,
                                       PolylineElementPoint& nearest) const;
    /// The nearest foot of a perpendicular over those stations, beyond a centre of curvature too. An end of them counts
    /// when the foot lies beyond it by at most the tolerance, along the tangent.
    /// @return false, `foot` untouched, when there is none, for an empty range, or no curve
    [[nodiscard]] bool GetNormalPoint(const Point2D& point, double from, double to, double tolerance,
                                      PolylineElementPoint& foot) const;

    double GetStartRadius() const { return startRadius; }
    double GetEndRadius() const { return endRadius; }
    double GetParameter() const { return parameter; }
    const Vec2D& GetStartTangent() const { return startTangent; }
    void SetStart(const Point2D& value);
    void SetStartTangent(const Vec2D& value);
    void SetStartRadius(double value);
    void SetEndRadius(double value);
    void SetParameter(double value);

    /// Unit direction of travel at the end. For equal radii the rotation does not follow the sign of xs: positive equal
    /// radii give the start tangent turned by 2 tau.
    Vec2D GetEndTangent() const;

    /// Point, tangent and station at a length from the start; false more than 1e-10 outside [0, length].
    [[nodiscard]] bool MakePointAndTangentAt(double station, PolylineElementPoint& result) const;
    /// From the start to the point at a station, and the tangent there: digits that survey coordinates would lose.
    /// @return false for a curve that is none; the station is not checked
    [[nodiscard]] bool MakeOffsetAndTangentAt(double station, Vec2D& offset, Vec2D& tangent) const;
    /// Signed curvature 1/R at a station, positive turning left.
    double GetCurvature(double station) const;

    /// Local point at a tangent angle: exactly `terms` terms of
    ///
    ///     x = A sqrt(2 tau) sum (-1)^(n-1) tau^(2n-2) / ((4n-3) (2n-2)!)
    ///     y = A sqrt(2 tau) sum (-1)^(n-1) tau^(2n-1) / ((4n-1) (2n-1)!)
    ///
    /// (DLMF 7.6.4 and 7.6.6); no convergence test. (0, 0) for tau = 0 and for terms < 1; NaN for a negative tau. Terms
    /// beyond the 85th vanish: their factorials exceed the doubles.
    [[nodiscard]] Point2D ComputePoint(double tau, int terms) const;
    /// World point where the radius of this clothoid, continued beyond its ends where needed, has the given value.
    [[nodiscard]] Point2D ComputePointFromRadius(double radius, int terms) const;
    /// Direction of the local x axis [rad] when the tangent angle of the start is `tau`.
    [[nodiscard]] double ComputeRotationAngle(double tau) const;
    /// Outputs of a straight end stay untouched. Lengths are signed like the radii.
    void ComputeStartAndEndTausAndLengths(double& tau1, double& length1, double& tau2, double& length2,
                                          double tolerance) const;
    void ComputeXYSigns(int& xSign, int& ySign) const;
    /// Tangent in the local frame, as the static forms give it.
    [[nodiscard]] Vec2D ComputeTangentFromLength(double length) const;
    [[nodiscard]] Vec2D ComputeTangentFromRadius(double radius) const;
    /// A^2 / radius: length from the inflection point, signed like the radius; 0 for a radius of 0 within 1e-10.
    double GetLength(double radius) const { return ComputeLength(radius, parameter); }
    /// A^2 / length, length from the inflection point; 0 for a length of 0 within 1e-10.
    double GetRadius(double length) const { return ComputeRadius(length, parameter); }
    /// `GetLength(radius)` - `GetLength(start radius)`. Not corrected in sign: negative for a clothoid that runs
    /// towards its inflection point.
    double GetLengthFromStart(double radius) const;
    /// A^2 / (L0 -+ s) with L0 = A^2 / start (end) radius, 0 for a straight one. The sign follows the order of the
    /// signed radii, and a straight end counts as radius 0 in it, so the result's sign is not that of the curve there:
    /// `GetCurvature` gives it.
    double GetRadiusFromStart(double station) const;
    double GetRadiusFromEnd(double station) const;

    /// Local frame to world, [x y 1] M: x is mirrored when the radius grows along the curve, y for right turns.
    Matrix2D GetLocalToWorldCoordinatesMatrix() const;
    Matrix2D GetWorldToLocalCoordinatesMatrix() const;

    /// Appends the points of the whole curve; no chord lies further than the tolerance from it. False for a tolerance
    /// that is not positive.
    [[nodiscard]] bool MakeLineString(LineString2D& lineString, double chordTolerance, int terms) const;
    /// The sampling functions append samples at from, from + step ... and at `to`, the range clipped to the curve.
    /// @return false, nothing appended, for an empty range (from > to included) or a step that is not positive
    [[nodiscard]] bool MakeLineString(double from, double to, LineString2D& lineString, double step,
                                      int terms = defaultTerms) const;
    [[nodiscard]] bool MakeLineString(double from, double to, std::list<double>& lengths, std::list<Point2D>& points,
                                      double step, int terms = defaultTerms) const;
    [[nodiscard]] bool MakePoints(double from, double to, std::list<Point2D>& points, double step,
                                  int terms = defaultTerms) const;
    [[nodiscard]] bool MakePointsAndTangents(double from, double to, std::vector<PolylineElementPoint>& points,
                                             double step, int terms = defaultTerms) const;
    [[nodiscard]] bool MakePointsAndTangents(double from, double to, std::vector<Point2D>& points,
                                             std::vector<Vec2D>& tangents, double step, int terms = defaultTerms) const;
    /// Samples at given stations. @return false, nothing appended, where one is more than 1e-10 outside [0, length]
    [[nodiscard]] bool MakePointsAndTangentsAt(std::span<const double> stations,
                                               std::vector<PolylineElementPoint>& points) const;
    /// The same with steps such that no chord lies further than `height` from the curve.
    [[nodiscard]] bool MakePointsAndTangentsUsingHeight(double from, double to,
                                                        std::vector<PolylineElementPoint>& points, double height,
                                                        int terms = defaultTerms) const;

    /// sqrt(radius length).
    [[nodiscard]] static double ComputeParameter(double radius, double length);
    /// 0 for radii equal within 1e-10 (inclusive); sqrt|R length| with one straight end; otherwise
    /// sqrt|r1 r2 length / (r2 - r1)|.
    [[nodiscard]] static double ComputeParameter(double r1, double r2, double length);
    /// L^2 / (2 A^2); 0 when A^2 is 0 within the tolerance (inclusive, like every zero test of these functions).
    [[nodiscard]] static double ComputeTauFromLength(double length, double parameterValue, double tolerance);
    /// A^2 / (2 R^2); 0 when R is 0 within the tolerance.
    [[nodiscard]] static double ComputeTauFromRadius(double radius, double parameterValue, double tolerance);
    /// A^2 / (2 R^2) and A^2 / R; outputs untouched when R is 0 within the tolerance.
    static void ComputeTauAndLength(double radius, double parameterValue, double& tau, double& length,
                                    double tolerance);
    /// L^2 / (2 A^2) and A^2 / L; both 0 when A^2 or L is 0 within the tolerance.
    static void ComputeTauAndRadius(double length, double parameterValue, double& tau, double& radius,
                                    double tolerance);
    /// A^2 / R and A^2 / L; 0 when the first argument is 0 within 1e-10.
    [[nodiscard]] static double ComputeLength(double radius, double parameterValue);
    [[nodiscard]] static double ComputeRadius(double length, double parameterValue);
    /// (cos tau, sin tau).
    [[nodiscard]] static Vec2D ComputeTangentAtLength(double length, double parameterValue, double tolerance);
    [[nodiscard]] static Vec2D ComputeTangentAtRadius(double radius, double parameterValue, double tolerance);
    /// xSign is -1 when tau1 > tau2, ySign when a radius is negative; else +1.
    static void ComputeXYSigns(double r1, double r2, double tau1, double tau2, int& xSign, int& ySign);

private:
    class Evaluator;

    // The closed form behind everything measured by station. With l = length1 + xSign s the length from the inflection
    // point: P = start + Rot(angle) (xSign (x(l) - x1), ySign (y(l) - y1)), direction angle + xSign ySign tau(l).
    struct Frame {
        double cosine = 1.0;
        double sine = 0.0;
        double angle = 0.0;          // direction of the local x axis
        double twiceASquared = 1.0;  // infinite for A = 0: tau is 0
        double length = 0.0;         // of the curve
        double length1 = 0.0;        // from the inflection point to the start
        double xSign = 1.0;
        double ySign = 1.0;
        double x1 = 0.0;  // local point of the start, seven terms
        double y1 = 0.0;
        bool usable = false;  // one clothoid, finite
    };

    void CopyData(const Clothoid& other);
    void Update();
    Frame ComputeFrame() const;
    bool GetLengthAndTangent(const Point2D& point, double& length, Vec2D& tangent, double tolerance) const;
    std::vector<double> ConstantStations(double from, double to, double step) const;
    std::vector<double> StationsForHeight(double from, double to, double height) const;
    template <class Emit>
    bool EmitPoints(const std::vector<double>& stations, int terms, Emit&& emit) const;
    bool CreatePolylineElements(const std::vector<double>& stations, int terms,
                                std::vector<PolylineElementPoint>& points) const;
    // Radius at a length from the inflection point.
    double RadiusAt(double length) const;

    Point2D start;
    Point2D end;           // by seven terms
    Point2D requestedEnd;  // by the terms of the last GetEnd(terms)
    Vec2D startTangent;
    double startRadius = 0.0;
    double endRadius = 0.0;
    double parameter = 0.0;
    Frame frame;
};

}  // namespace Kalvio::Math
