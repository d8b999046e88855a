#pragma once

#include "kalvio/Export.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Kalvio::Math {

/// Heights of an alignment by station: a polygon of vertices (points of vertical intersection) whose corners parabolas
/// or circular arcs round, the arcs with or without clothoids.
///
/// Everything is in closed form, but for the length of a clothoid up to a station, which Newton's method finds to
/// rounding; a query takes log n. Every piece is measured from its own vertex, so that survey heights and long stations
/// lose nothing. Where two pieces meet, both have the
/// same height within rounding; grade and curvature there are those of the piece that starts. A station is any
/// abscissa; a profile that belongs to an `Alignment` is measured along its plan from the start.
///
///     Profile road;
///     using At = Profile::Vertex;
///     const At vertices[] = {At::Corner(0.0, 41.2), At::Parabola(260.0, 49.0, 160.0), At::Arc(560.0, 43.0, 2500.0),
///                            At::Corner(1375.5, 45.0)};
///     if (road.Set(vertices) && road.GetHeight(260.0, value)) Show(value);  // 48.0
class KALVIO_MATH_API Profile final {
public:
    /// What rounds a vertex.
    enum class Curve : std::uint32_t {
        Corner = 0,     ///< nothing
        Parabola = 1,   ///< two tangent lengths; unequal ones make two parabolas that share their tangent at the vertex
        Arc = 2,        ///< a circular arc in the plane of stations and heights
        Clothoids = 3,  ///< such an arc between clothoids of that plane: the curvature 1 / radius grows with the length
                        ///< of the curve itself, from 0 on the tangent to that of the arc
    };

    /// A vertex; at the first and the last one there is nothing to round.
    struct Vertex {
        double station = 0.0;         ///< along the alignment
        double height = 0.0;          ///< of the vertex, where the tangents meet
        Curve curve = Curve::Corner;  ///< what rounds it
        double lengthIn = 0.0;   ///< parabola: horizontal, from the start of the curve to the vertex; clothoid before
                                 ///< the arc: along the curve, 0 for none
        double lengthOut = 0.0;  ///< parabola: horizontal, from the vertex to the end of the curve; clothoid behind
        double radius = 0.0;     ///< of the arc, or of the parabola where both its lengths are 0; without sign

        static Vertex Corner(double station, double height) { return {station, height}; }
        /// @param length  horizontal, of the whole curve, the vertex in its middle
        static Vertex Parabola(double station, double height, double length) {
            return {station, height, Curve::Parabola, 0.5 * length, 0.5 * length};
        }
        static Vertex Parabola(double station, double height, double lengthIn, double lengthOut) {
            return {station, height, Curve::Parabola, lengthIn, lengthOut};
        }
        /// @param radius  1 / y'': the length is the radius times the change of grade
        static Vertex ParabolaOfRadius(double station, double height, double radius) {
            return {station, height, Curve::Parabola, 0.0, 0.0, radius};
        }
        static Vertex Arc(double station, double height, double radius) {
            return {station, height, Curve::Arc, 0.0, 0.0, radius};
        }
        static Vertex Clothoids(double station, double height, double radius, double lengthIn, double lengthOut) {
            return {station, height, Curve::Clothoids, lengthIn, lengthOut, radius};
        }
    };

    /// What is wrong with a vertex.
    enum class FaultKind : std::uint32_t {
        NotFinite = 0,     ///< a value is not finite
        NotAscending = 1,  ///< the station is not above that of the vertex before
        NotACurve = 2,     ///< a length or radius is negative or 0, just one of both lengths 0 included
        CurveAtEnd = 3,    ///< a curve at the first or the last vertex, which has one grade only
        Overlap = 4,       ///< the curve (the vertex) starts before the curve (the vertex) before it ends
        TooLong = 5,       ///< the clothoids alone turn by more than the grades do
    };
    /// A fault, and where it is.
    struct Fault {
        FaultKind kind = FaultKind::NotFinite;  ///< what is wrong
        std::size_t vertex = 0;                 ///< its index
        double amount = 0.0;   ///< by which stations descend, curves overlap, or clothoids are too long; the faulty
                               ///< length or radius; else 0
        double station = 0.0;  ///< of the vertex; of an overlap where it starts
    };

    /// The profile at a station.
    struct Place {
        double height = 0.0;     ///< of the profile
        double grade = 0.0;      ///< dy/dx, positive uphill
        double curvature = 0.0;  ///< 1 / radius of the curve of stations and heights, positive in a sag
    };

    /// Where the grade changes its sign: a point, or a level stretch between a rise and a fall.
    struct Extremum {
        double from = 0.0;    ///< station
        double to = 0.0;      ///< equals `from` but for a level stretch
        double height = 0.0;  ///< there
        bool isHigh = false;  ///< a high, else a low
    };

    /// Overlaps up to this length, and stations up to it beyond an end, are the rounding of files.
    static constexpr double rounding = 1e-5;

    /// No vertices, no heights.
    Profile() = default;

    /// Replaces the vertices.
    /// @return false where there are faults, which `GetFaults` tells. Where these are overlaps only the profile answers
    ///         outside of them; else it is empty, as it is (without a fault) for fewer than two vertices
    [[nodiscard]] bool Set(std::span<const Vertex> vertices);
    /// In the order of the vertices.
    const std::vector<Fault>& GetFaults() const { return faults; }
    const std::vector<Vertex>& GetVertices() const { return vertices; }

    bool IsEmpty() const { return pieces.empty(); }
    /// First and last station; 0 for an empty profile.
    double GetStart() const { return IsEmpty() ? 0.0 : starts.front(); }
    double GetEnd() const { return IsEmpty() ? 0.0 : end; }
    /// The stations where pieces start, and the end; the overlaps of curves are pieces too.
    std::vector<double> GetJoints() const;

    /// False, the output untouched, outside the profile (beyond an end by at most `rounding` counts as the end) and
    /// inside an overlap of curves, its ends not included.
    [[nodiscard]] bool GetHeight(double station, double& height) const;
    [[nodiscard]] bool GetPlace(double station, Place& place) const;
    /// The largest |d2y/dx2| between two stations, from < to, but at corners; of clothoids the largest curvature times
    /// the largest (1 + grade^2)^(3/2), which may be a little more; 0 where there is no height.
    double GetMostSecondDerivative(double from, double to) const;

    /// Length along the slope between two stations, which are clipped to the profile; overlaps count as level. Negative
    /// for to < from; 0 for an empty profile.
    double GetSlopeLength(double from, double to) const;

    /// Highs and lows inside the profile, ascending, kinks included; the ends are none.
    std::vector<Extremum> GetExtrema() const;
    /// Appends the stations of a height, ascending, each once; of a level stretch at that height its two ends.
    void GetStationsOfHeight(double height, std::vector<double>& stations) const;

private:
    enum class Form : std::uint32_t { None, Line, Parabola, Arc, Clothoid };

    // A clothoid at a length from where it touches the line, seen from there.
    struct OnClothoid {
        double run;    // along the stations
        double above;  // the line
        double sine;   // of the slope angle
        double cosine;
    };

    // A piece relative to its vertex: dx = x - station, u = dx - tangent.
    struct Piece {
        double GetRise(double u) const;  // of an arc above its start
        double GetSine(double u) const;  // of the slope angle of an arc
        OnClothoid At(double along) const;
        double GetLengthOfClothoid(double u) const;  // from where it touches the line
        double GetLevelLength() const;               // where a clothoid is level, 0 when nowhere
        double GetHeight(double x) const;
        double GetGrade(double x) const;
        double GetCurvature(double x) const;
        Place GetPlace(double x) const;
        double GetMostSecondDerivative(double from, double to) const;
        double GetSlopeLength(double from, double to) const;
        /// Where the grade is 0; NaN for a line.
        double GetLevelStation() const;
        /// The station of a height on a part whose grade has the sign.
        double GetStation(double y, double sign) const;

        Form form = Form::None;
        double station = 0.0;
        double height = 0.0;
        double grade = 0.0;
        double tangent = 0.0;  // dx where the curve touches the line of this grade
        double bend = 0.0;     // parabola: y''/2; arc: 1 / signed radius; clothoid: curvature per length
        double touch = 0.0;    // arc: height of that point above this height
        double sine = 0.0;     // of the grade's angle
        double cosine = 1.0;
        double length = 0.0;  // clothoid: from where it touches the line, negative against the stations
    };

    // A stretch of one piece over which the height rises, falls or stays.
    struct Run {
        const Piece* piece;
        double from;
        double to;
        double heightFrom;
        double heightTo;
        double sign;  // of the grade
    };

    bool FindFaults();
    void Append(double start, const Piece& piece);
    std::size_t PieceAt(double station) const;
    const Piece* Answering(double station) const;
    bool Clip(double& station) const;
    double GetEndOf(std::size_t piece) const { return piece + 1 < starts.size() ? starts[piece + 1] : end; }
    std::vector<Run> GetRuns() const;

    std::vector<Vertex> vertices;
    std::vector<Fault> faults;
    std::vector<double> starts;  // of the pieces
    std::vector<Piece> pieces;
    std::vector<double> slopeLengths;  // up to the start of each piece
    double end = 0.0;
};

}  // namespace Kalvio::Math
