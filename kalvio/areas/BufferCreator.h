#pragma once

#include "kalvio/Export.h"
#include "kalvio/areas/detail/Kept.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/PolygonCurve2D.h"

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace Kalvio::Math {

class Tolerances;

/// Buffers in plan: what lies within a distance of points, chains and areas; of areas also what lies deeper inside than
/// a distance.
///
///     const LineString2D axis{Point2D(0, 0), Point2D(100, 0), Point2D(160, 45)};
///     std::vector<Polygon2D> strip;  // 5 to either side, round ends, by chords that leave arcs by 0.01
///     if (BufferCreator::Create(axis, 5.0, 0.01, strip, Tolerances(0.001))) Draw(strip);
///
/// What comes out is valid as a result of `PolygonsBooleanOperation` is, in the same order, and its border keeps the
/// distance to the source within three user tolerances (and the height, for chords), wherever joins and ends are round.
/// Nothing is asked of the source: chains cross and run over themselves, areas touch, overlap and cross themselves
/// (the inside is what their rings wind around). Many members stand for their union.
///
/// The buffer is the union of the strips beside all elements and of the sectors (kites, triangles) at all corners.
/// Their outlines are run through as one, which winds around every point as often as strips hold it; so a winding that
/// is positive decides, after one exact noding. Of round shapes what runs deep within the distance of a corner is left
/// out before. For n corners and k crossings of the strips' outlines about n log n + k steps: where shapes are not
/// round and the distance is long against the elements, k grows as n times their ratio.
///
/// `PolygonCurve2D::IsPointInside` counts being beside several arcs once, as behind the arcs on both sides of a strip:
/// ask points of a result by chords.
///
/// All functions answer false, the result untouched, for coordinates, distances and tolerances that are not finite (or
/// beyond 1e100, with arcs 1e70), for a height or limit that is not positive, and for distances that rounding leaves no
/// shape: round ones above 4.5e15 user tolerances, others above the root of 4.5e15 user tolerances times the extent,
/// the tolerance taken as at least 1e-10.
class KALVIO_MATH_API BufferCreator {
public:
    /// What a chain ends with.
    enum class End : std::uint32_t {
        Round = 0,   ///< half a disc
        Flat = 1,    ///< nothing
        Square = 2,  ///< half a square
    };
    /// What closes the outside of a corner.
    enum class Join : std::uint32_t {
        Round = 0,     ///< a sector
        Mitred = 1,    ///< both sides run on until they meet, unless that is farther than the limit: then bevelled
        Bevelled = 2,  ///< a segment
    };
    /// On which side of chains, in the direction of travel.
    enum class Side : std::uint32_t {
        Both = 0,
        Right = 1,  ///< no ends are put on
        Left = 2,   ///< the same
    };
    /// How ends, corners and sides of a buffer look.
    struct Shape {
        End end = End::Round;     ///< of chains
        Join join = Join::Round;  ///< on the outside of corners
        Side side = Side::Both;   ///< of chains; areas and points have no sides
        double mitreLimit = 2.0;  ///< how far a mitre may reach, in distances
    };

    /// Points, chains or areas, one or many; refers to them, but takes over temporaries.
    class Source {
    public:
        Source(const Point2D& point) : points(&point, 1) {}
        Source(const LineString2D& chain) : strings(&chain, 1) {}
        Source(const Polyline2D& chain) : chains(&chain, 1) {}
        Source(const Polygon2D& area) : polygons(&area, 1) {}
        Source(const PolygonCurve2D& area) : curves(&area, 1) {}
        Source(const std::vector<Point2D>& members) : points(members) {}
        Source(const std::vector<LineString2D>& members) : strings(members) {}
        Source(const std::vector<Polyline2D>& members) : chains(members) {}
        Source(const std::vector<Polygon2D>& members) : polygons(members) {}
        Source(const std::vector<PolygonCurve2D>& members) : curves(members) {}
        Source(Point2D&& point) : points(kept.TakeOne(std::move(point))) {}
        Source(LineString2D&& chain) : strings(kept.TakeOne(std::move(chain))) {}
        Source(Polyline2D&& chain) : chains(kept.TakeOne(std::move(chain))) {}
        Source(Polygon2D&& area) : polygons(kept.TakeOne(std::move(area))) {}
        Source(PolygonCurve2D&& area) : curves(kept.TakeOne(std::move(area))) {}
        Source(std::vector<Point2D>&& members) : points(kept.TakeAll(std::move(members))) {}
        Source(std::vector<LineString2D>&& members) : strings(kept.TakeAll(std::move(members))) {}
        Source(std::vector<Polyline2D>&& members) : chains(kept.TakeAll(std::move(members))) {}
        Source(std::vector<Polygon2D>&& members) : polygons(kept.TakeAll(std::move(members))) {}
        Source(std::vector<PolygonCurve2D>&& members) : curves(kept.TakeAll(std::move(members))) {}

    private:
        friend class BufferCreator;

        detail::Kept kept;
        std::span<const Point2D> points;
        std::span<const LineString2D> strings;
        std::span<const Polyline2D> chains;
        std::span<const Polygon2D> polygons;
        std::span<const PolygonCurve2D> curves;
    };

    /// Bounded by lines and true arcs. Clothoids, spirals and parabolas are first replaced by arcs that join
    /// tangentially and lie within the user tolerance.
    /// @param distance  positive: outward. Negative or 0: areas shrink or are put in order, points and chains leave
    ///                  nothing
    [[nodiscard]] static bool Create(const Source& source, double distance, std::vector<PolygonCurve2D>& result,
                                     const Tolerances& tolerances, const Shape& shape);
    [[nodiscard]] static bool Create(const Source& source, double distance, std::vector<PolygonCurve2D>& result,
                                     const Tolerances& tolerances);

    /// Bounded by chords.
    /// @param height  how far the border may lie off the true one, no less than the user tolerance: arcs are replaced
    ///                by chords, corners that do not show left out. A corner makes at most 10,000 chords a turn; far
    ///                from short elements, by a height near the tolerance, there come up to four times as many
    [[nodiscard]] static bool Create(const Source& source, double distance, double height,
                                     std::vector<Polygon2D>& result, const Tolerances& tolerances, const Shape& shape);
    [[nodiscard]] static bool Create(const Source& source, double distance, double height,
                                     std::vector<Polygon2D>& result, const Tolerances& tolerances);

private:
    struct Work;
};

}  // namespace Kalvio::Math
