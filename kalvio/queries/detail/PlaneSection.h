#pragma once

#include "kalvio/curves/Arc3D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/polygons/RingCurve3D.h"
#include "kalvio/queries/IntersectionResult.h"
#include "kalvio/queries/detail/PlaneHeights.h"

#include <array>
#include <vector>

namespace Kalvio::Math::detail {

/// What a plane has in common with an area in space, whose rings are given one by one.
///
/// The rings are walked twice: once as if the points that count as on the plane lay above it, once as if below. Each
/// time the plane is passed an even number of times, and from each odd passage along the line of intersection to the
/// next the area is cut just below or just above the plane. Both together are the closed section: edges in the plane
/// belong to it, and so does a corner that only touches.
class PlaneSection {
public:
    explicit PlaneSection(const PlaneHeights& planeHeights) : heights(planeHeights) {}

    /// The edges of a ring, closed by an edge from the last point to the first.
    void AddRing(const std::vector<Point3D>& ring);
    /// Lines and arcs; gaps between them are bridged by straight lines.
    void AddRing(const RingCurve3D& ring);
    /// Appends the pieces in order along `areaNormal` x the plane's normal, each directed that way; an isolated point
    /// is a piece of zero length. Pieces at most the tolerance apart are one.
    /// @return `Coincident`, nothing appended, when all points of all rings count as on the plane; `NoIntersection`
    ///         when there is no piece or some coordinate is not finite
    IntersectionResult Finish(const Vec3D& areaNormal, std::vector<Line3D>& out);

private:
    // A point of a ring; between two on different sides there is one on the plane.
    struct Stop {
        Point3D point;
        int side;
    };
    struct Passage {
        double position;  // along the line of intersection
        Point3D point;
    };

    void AddCorner(const Point3D& point);
    void AddArc(const Arc3D& arc);
    void CloseRing();

    PlaneHeights heights;
    std::vector<Stop> stops;  // of the ring that is being added
    double lastHeight = 0.0;
    std::array<std::vector<Passage>, 2> passages;  // with the points on the plane taken as above, as below
    bool isAllOnPlane = true;
    bool isFinite = true;
};

}  // namespace Kalvio::Math::detail
