#pragma once

#include "kalvio/Export.h"
#include "kalvio/alignments/Cant.h"
#include "kalvio/alignments/Profile.h"
#include "kalvio/alignments/Stationing.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/Vec3D.h"
#include "kalvio/core/detail/Lazy.h"
#include "kalvio/curves/Polyline2D.h"

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace Kalvio::Math {

class LineString3D;

namespace detail {
class AlignmentCurves;
}

/// A road or railway in space: its plan, with the heights of a profile, the cross slopes of a cant, and the numbers of
/// its stations.
///
/// Stations are lengths along the plan from its start, for the profile and the cant too; only `Stationing` speaks of
/// numbers. An offset is horizontal, at a right angle to the plan, and positive to the right. The surface of an
/// alignment is its profile with the cross slopes; where the profile ends there is no height and nothing in space. At a
/// joint the element that starts there answers.
///
///     const Alignment road(plan, profile);
///     Point3D peg;
///     if (!road.GetPoint({260.0, 5.5, 0.0}, peg)) return false;         // 5.5 m to the right, on the surface
///     Alignment::Place place;
///     if (road.GetNearestPlace(peg, 20.0, place)) Show(place.offset);   // station 260, offset 5.5, above 0
///
/// The curves of the plan are prepared by the first question. A plan that holds a parabola, an element that is no curve
/// or values that are not finite has no stations.
class KALVIO_MATH_API Alignment final {
public:
    /// A place beside the axis.
    struct Place {
        double station = 0.0;         ///< along the plan
        double offset = 0.0;          ///< positive to the right
        double above = 0.0;           ///< height above the surface there; 0 where it has none
        bool isPerpendicular = true;  ///< false off a corner of the plan: the offset is the distance from the corner
    };

    /// The axis at a station.
    struct Frame {
        double station = 0.0;           ///< along the plan
        Point3D position;               ///< on the surface
        Vec3D direction;                ///< unit, uphill with the grade of the profile
        Vec3D right;                    ///< unit, horizontal
        Vec3D up;                       ///< unit, right x direction
        double grade = 0.0;             ///< of the profile
        double curvature = 0.0;         ///< of the plan, positive turning left
        double profileCurvature = 0.0;  ///< positive in a sag
        Cant::Place cant;               ///< cross slopes
    };

    /// Of two alignments in plan.
    struct Crossing {
        double station = 0.0;       ///< along this one
        double otherStation = 0.0;  ///< along the other one
        Point2D point;              ///< in plan
        double clearance = 0.0;     ///< height of the other axis above this one; 0 where one has none
        bool hasClearance = false;  ///< whether both have a height there
    };

    /// Of two alignments in space. The end before a gap of the plan has the station of the start behind it: the points
    /// tell which it is.
    struct Approach {
        double station = 0.0;       ///< along this one
        double otherStation = 0.0;  ///< along the other one
        Point3D point;              ///< on this one
        Point3D otherPoint;         ///< on the other one
        double distance = 0.0;      ///< of these points
    };

    Alignment() = default;
    explicit Alignment(const Polyline2D& horizontal, const Profile& vertical = {}, const Cant& crossSlopes = {},
                       const Stationing& numbers = {});

    const Polyline2D& GetPlan() const { return plan; }
    const Profile& GetProfile() const { return profile; }
    const Cant& GetCant() const { return cant; }
    const Stationing& GetStationing() const { return stationing; }

    /// Of the plan; 0 where it has no stations.
    double GetLength() const;
    /// Length of the profile's line between two stations, which are clipped to the plan; level where there is no
    /// profile.
    double GetSpaceLength(double from, double to) const;

    // From a station. Stations may leave the plan by 1e-10; beyond, the answer is false and the output untouched.

    /// The point of the plan at an offset. @return false out of the plan
    [[nodiscard]] bool GetPoint(double station, double offset, Point2D& point) const;
    /// @return false out of the plan or of the profile
    [[nodiscard]] bool GetPoint(const Place& place, Point3D& point) const;
    /// Height of the surface. @return false out of the plan or of the profile
    [[nodiscard]] bool GetHeight(double station, double offset, double& height) const;
    [[nodiscard]] bool GetFrame(double station, Frame& frame) const;
    /// The line across the plan from one offset to another, both positive to the right.
    /// @return false out of the plan, and for offsets that are equal or not finite
    [[nodiscard]] bool GetCrossLine(double station, double from, double to, Line2D& line) const;
    /// The same on the surface, with a point on the axis where it crosses that.
    /// @return false also out of the profile
    [[nodiscard]] bool GetCrossLine(double station, double from, double to, LineString3D& line) const;
    /// Unit direction of travel in plan and signed curvature, positive turning left.
    [[nodiscard]] bool GetDirection(double station, Vec2D& direction, double& curvature) const;
    /// The same for many, without allocating; `points` (`frames`) holds as many as there are stations at least.
    /// @return the index of the first without an answer, where the work ends, or their number
    [[nodiscard]] std::size_t GetPoints(std::span<const Place> places, std::span<Point3D> points) const;
    [[nodiscard]] std::size_t GetFrames(std::span<const double> stations, std::span<Frame> frames) const;

    // To a station.

    /// Replaces `places` by all at which the distance in plan from the point has a minimum that is at most the reach,
    /// the nearest first: feet of perpendiculars, corners of the plan that point there, and ends that the perpendicular
    /// misses by at most 1e-4.
    void GetPlaces(const Point3D& point, double reach, std::vector<Place>& places) const;
    /// The first of them. @return false, `place` untouched, when there is none
    [[nodiscard]] bool GetNearestPlace(const Point3D& point, double reach, Place& place) const;
    /// The same for many, without allocating; where there is none the station is NaN.
    /// @return the number found
    std::size_t GetNearestPlaces(std::span<const Point3D> points, double reach, std::span<Place> places) const;

    // Stations to look at.

    /// The stations in [from, to] where an element, a piece of the profile, a change of the cant or a zone of the
    /// stationing starts, and both ends; clipped to the plan, ascending, those within 1e-6 of each other once.
    std::vector<double> GetChanges(double from, double to) const;
    /// from, from + step ... and `to`, clipped to the plan. Empty for a step that is not positive, and for more than
    /// 1e7.
    std::vector<double> GetStationsByStep(double from, double to, double step) const;
    /// The changes, and the stations whose number is a multiple of the step: what is pegged from 12+003.5 on is
    /// 12+003.5, 12+020, 12+040 ... and the main points. Empty as above.
    std::vector<double> GetStationsByNumber(double from, double to, double step) const;
    /// The changes, and between them stations such that no chord in space lies further than `height` from the axis
    /// (without its lift by the cant). Empty as above.
    std::vector<double> GetStationsByHeight(double from, double to, double height) const;

    /// Where the plans meet, in the order of the stations here, with the heights between the axes.
    std::vector<Crossing> GetCrossings(const Alignment& other, const Tolerances& tolerances) const;
    /// Where the axes come nearest to each other in space, at the heights of their profiles (without lift by the cant):
    /// a minimum of the distance, to rounding, that no other place undercuts by more than the tolerance, of at least
    /// 1e-9. Where curves keep their distance for long, a tenth of the tolerance takes three times as long: 0.1 s for
    /// 1 km of radius 300 and 1e-6.
    /// @return false, `approach` untouched, where one of them has no heights, for a tolerance not positive and finite,
    ///         and where it would take more than 2e7 pairs of pieces
    [[nodiscard]] bool GetNearestApproach(const Alignment& other, double tolerance, Approach& approach) const;

private:
    struct OnPlan;

    const detail::AlignmentCurves& GetCurves() const;
    bool Find(double station, OnPlan& on) const;
    bool GetSurface(double station, Cant::Place& slopes, double& height) const;
    double GetAbove(const Point3D& point, double station, double offset) const;

    Polyline2D plan;
    Profile profile;
    Cant cant;
    Stationing stationing;
    detail::Lazy<std::shared_ptr<const detail::AlignmentCurves>> curves;
};

}  // namespace Kalvio::Math
