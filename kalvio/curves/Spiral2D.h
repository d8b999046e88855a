#pragma once

#include "kalvio/curves/IPolyline2DElement.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Kalvio::Math {

class LineString2D;

/// Transition curve of a chosen curvature law between two radii, over a given length.
///
/// Radii are signed: positive turns left, negative right, 0 is straight. They may be equal (an arc, or a straight) and
/// of opposite sign (the curve changes sides). The direction is the integral of the curvature in closed form. The
/// position is a power series with 14 terms over panels that turn at most 0.5 rad, computed once by the constructors
/// and setters (2 kB, more beyond 4 rad of turn), so that a point costs one polynomial; that of a cubic parabola is in
/// closed form. The error against 40-digit quadrature is below 1e-12 of the length, for any length in use below
/// 1e-10 m.
///
///     const Spiral2D bloss(Spiral2D::Spiral2DType::Bloss, 0.0, 300.0, 75.0, Point2D(100, 0), Vec2D(1, 0));
///     bloss.GetEnd();  // (174.8931, 2.8093)
///
/// Where the values make no curve - not finite, a negative length, an unknown type, more than 1000 rad of turn, a cubic
/// parabola that does not exist - sampling and searching answer false, and the end is the start. A length of 0 is the
/// start point alone.
class KALVIO_MATH_API Spiral2D final : public IPolyline2DElement {
public:
    /// Curvature law. With t = s / length, the curvature is k1 + (k2 - k1) f(t) for all but `Cubic`.
    ///
    /// `Cubic` is a part of the cubic parabola y = c x^3 about its inflection point, exact, between the points whose
    /// true radii of curvature are the given ones; not the railway approximation y = x^3 / (6 R X), whose curvature at
    /// the end falls short of 1/R. The curvature of a cubic parabola culminates at the slope 1/sqrt(5), 24.1 degrees
    /// from the inflection tangent: radii and lengths that need more (length / R > 0.6937 from a straight; nearly equal
    /// radii) have no such curve. Exactly equal radii make an arc, as for every type.
    enum class Spiral2DType : std::uint32_t {
        Clothoid = 0,     ///< f = t
        Bloss = 1,        ///< f = 3 t^2 - 2 t^3 (Bloss 1936)
        Sine = 2,         ///< f = t - sin(2 pi t) / (2 pi) (Klein 1937)
        Cosine = 3,       ///< f = (1 - cos(pi t)) / 2: half a wave
        Biquadratic = 4,  ///< f = 2 t^2 up to the middle, then 1 - 2 (1 - t)^2 (Helmert 1872, Schramm)
        Cubic = 5,        ///< a part of a cubic parabola, see above
        Viennese = 6,     ///< f = 35 t^4 - 84 t^5 + 70 t^6 - 20 t^7, see `MakeVienneseBend`
    };

    /// A clothoid of length 0 at the origin.
    Spiral2D();
    /// @param spiralLength  length of the curve, >= 0
    /// @param tangent       direction of travel at the start
    Spiral2D(Spiral2DType spiralType, double startRadiusValue, double endRadiusValue, double spiralLength,
             const Point2D& from, const Vec2D& tangent);
    Spiral2D(const Spiral2D& other);
    Spiral2D& operator=(const Spiral2D& other);
    /// The other becomes a spiral of length 0.
    Spiral2D(Spiral2D&& other) noexcept;
    Spiral2D& operator=(Spiral2D&& other) noexcept;

    /// The axis of a Viennese bend, along which not the axis but the centre of gravity of a vehicle, at a height (the
    /// lever) above it, turns by the law `Viennese`, while the track rolls by that law too. Of all polynomials of
    /// degree seven this f alone goes from 0 to 1 with its first three derivatives 0 at both ends. Where the track has
    /// rolled by phi(s) [rad], positive where the right side rises, the centre of gravity lies lever phi to the left of
    /// the axis, so that its path has, to the first order in phi, the curvature k + lever phi''(s). With psi the change
    /// of phi from the start to the end, the axis has
    ///
    ///     k(t) = k1 + (k2 - k1) f(t) - lever psi f''(t) / length^2,   f'' = 420 t^2 (1 - t)^2 (1 - 2 t),
    ///
    /// and joins what lies before and behind it with equal curvature and rate of curvature.
    ///
    /// It may swing out beyond both ends, so it comes in parts over each of which it only grows or falls, as searches
    /// along curves need it: three, or one where it does not swing out.
    /// @return none where the values make no curve
    [[nodiscard]] static std::vector<Spiral2D> MakeVienneseBend(double startRadiusValue, double endRadiusValue,
                                                                double bendLength, double lever, double rollChange,
                                                                const Point2D& from, const Vec2D& tangent);

    MathTypes GetType() const override;
    /// The box of the ends and of every point whose tangent is parallel to an axis.
    BoundingBox2D GetBoundingBox() const { return GetBoundingBox2D(); }
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 1; }
    /// Another spiral of the same type with equal radii, length, start and start tangent, strictly; pieces must also be
    /// the same part of their law. Or a `Polyline2D` of just one.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const Spiral2D& other, double tolerance) const;
    [[nodiscard]] Spiral2D* Clone() const override;
    /// The radii change places and signs; every law, read backwards, is itself.
    void Reverse() override;
    double GetLength() const override { return length; }
    /// Pieces are exact parts of this curve. A piece of a clothoid is a clothoid; a piece of another type keeps the law
    /// of the whole and its place in it, and reports the radii of its own ends. Changing the type, a radius or the
    /// length of such a piece makes it a whole spiral of its type.
    [[nodiscard]] bool BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                        std::vector<IGeometry*>& out, bool modifyThis,
                                        const Tolerances& tolerances) override;
    using IPolyline2DElement::BreakAtPreSorted;
    /// Distance from the curve strictly below the user tolerance.
    bool IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const override;
    /// The start (end) moves along the curve to the foot of the point: back into it; out along a clothoid by up to 2
    /// rad of turn; out along a piece of another type until its whole (of a Viennese bend, that part) is restored. The
    /// other end stays.
    /// @return false, nothing changed, for a point without a foot there, or one within the user tolerance of the other
    /// end
    bool ExtendStart(const Point2D& point, const Tolerances& tolerances) override;
    bool ExtendEnd(const Point2D& point, const Tolerances& tolerances) override;
    [[nodiscard]] IGeometry* Append(const IGeometry* const other) const override;
    const Point2D& GetStart() const override { return start; }
    const Point2D& GetEnd() const override { return end; }
    /// The station of the foot, when the point is nearer to the curve than the tolerance, strictly.
    [[nodiscard]] bool GetLengthFromStartPoint(const Point2D& point, double& stationFromStart,
                                               double tolerance) const override;
    [[nodiscard]] bool GetLengthFromEndPoint(const Point2D& point, double& stationFromEnd,
                                             double tolerance) const override;
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

    Spiral2DType GetSpiralType() const { return type; }
    double GetStartRadius() const { return startRadius; }
    double GetEndRadius() const { return endRadius; }
    const Vec2D& GetStartTangent() const { return startTangent; }
    Vec2D GetEndTangent() const;
    void SetSpiralType(Spiral2DType value);
    void SetStartRadius(double value);
    void SetEndRadius(double value);
    void SetLength(double value);
    void SetStart(const Point2D& value);
    void SetStartTangent(const Vec2D& value);

    /// Point, tangent and station at a length from the start; false more than 1e-10 outside [0, length].
    [[nodiscard]] bool MakePointAndTangentAt(double station, PolylineElementPoint& result) const;
    /// From the start to the point at a station, and the tangent there: digits that survey coordinates would lose.
    /// @return false for a curve that is none; the station is not checked
    [[nodiscard]] bool MakeOffsetAndTangentAt(double station, Vec2D& offset, Vec2D& tangent) const;
    /// Signed curvature 1/R at a station, positive turning left.
    double GetCurvature(double station) const;

    /// Appends samples at from, from + step ... and at `to`, the range clipped to the curve; with `height`, in steps
    /// such that no chord lies further than that from the curve.
    /// @return false, nothing appended, for an empty range (from > to included) or a step or height that is not
    /// positive
    [[nodiscard]] bool MakePointsAndTangents(double from, double to, std::vector<PolylineElementPoint>& points,
                                             double step) const;
    [[nodiscard]] bool MakePointsAndTangentsUsingHeight(double from, double to,
                                                        std::vector<PolylineElementPoint>& points, double height) const;
    [[nodiscard]] bool MakeLineString(double from, double to, LineString2D& lineString, double step) const;
    [[nodiscard]] bool MakeLineStringUsingHeight(double from, double to, LineString2D& lineString, double height) const;

private:
    class Evaluator;

    // The curvature over the whole length of the law.
    struct Law {
        Spiral2DType type = Spiral2DType::Clothoid;
        double k1 = 0.0;
        double k2 = 0.0;
        double length = 0.0;
        // Cubic parabola in its own unit 1 / scale: abscissa of the start and length to it from the inflection point;
        // side +1 where the curvature grows to the left, else -1.
        double scale = 0.0;
        double firstAbscissa = 0.0;
        double first = 0.0;
        double side = 1.0;
        double shift = 0.0;  // of a Viennese bend: lever times change of roll

        bool SolveCubic();
        bool IsParabola() const { return type == Spiral2DType::Cubic && k1 != k2 && length > 0.0; }
        double GetAbscissa(double station) const;  // u
        double GetCurvatureAtAbscissa(double u) const;
        double GetCurvature(double station) const;
        double GetTurn(double station) const;  // integral of the curvature from 0
        double GetLargestRate() const;
        std::vector<double> GetTurningPoints() const;  // stations where the curvature of a Viennese bend turns back
    };
    // From the start, x along the start tangent; of a cubic parabola along its inflection tangent.
    struct Position {
        double x = 0.0;
        double y = 0.0;
    };
    // A part of the curve: its positions by powers of t = (station - middle) / half, half its length.
    struct Panel {
        static constexpr std::size_t terms = 14;

        Position At(double station) const;
        Position Sum(double t) const;

        double middle = 0.0;
        double perHalf = 0.0;  // 1 / half
        std::array<Position, terms> powers;
    };

    void CopyData(const Spiral2D& other);
    void MakeWhole();
    void Update();
    bool IsUsable() const;
    void AppendPanels(double from, double to, double longest);
    const Panel& PanelAt(double station) const;
    Spiral2D GetPart(double from, double to) const;
    bool FindPoint(const Point2D& point, double tolerance, PolylineElementPoint& foot) const;
    std::vector<double> ConstantStations(double from, double to, double step) const;
    std::vector<double> StationsForHeight(double from, double to, double height) const;
    template <class Emit>
    bool EmitSamples(const std::vector<double>& stations, Emit&& emit) const;

    Spiral2DType type = Spiral2DType::Clothoid;
    double startRadius = 0.0;
    double endRadius = 0.0;
    double length = 0.0;
    Point2D start;
    Vec2D startTangent;

    Law law;  // this spiral is its part [lawStart, lawStart + length]
    double lawStart = 0.0;
    double startTurn = 0.0;    // turn of the law up to lawStart
    double inflection = -1.0;  // station of curvature 0; negative when there is none inside
    bool usable = false;
    double angle = 0.0;       // of the start tangent
    double axisCosine = 1.0;  // of the x axis of positions
    double axisSine = 0.0;
    double startAbscissa = 0.0;  // u of the start, cubic parabola only
    std::vector<Panel> panels;   // of equal length up to the kink, and from there on
    double kink = 0.0;           // station in the middle of a biquadratic law, which no panel may cover; else 0
    std::size_t panelsToKink = 0;
    Point2D end;
};

}  // namespace Kalvio::Math
