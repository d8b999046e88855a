#pragma once

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/detail/Lazy.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"
#include "kalvio/meshes/detail/TriangleGrid.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/detail/ExactPredicates.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace Kalvio::Math {

class Angle;
class LineString2D;
class Polygon2D;
class Tolerances;

namespace detail {
class SurfaceBuilder;
}

/// A triangulated surface with one height at each place: terrain, or a design surface. Built from points, breaklines
/// and borders, or from triangles; asked for heights, slopes, sections and the nearest point.
///
/// All questions are safe to ask from several threads. The first one, also after a change, prepares the search for
/// places: about 120 bytes per triangle.
///
///     TinSurfacePatch3D::Ground ground;
///     ground.points = {{0.0, 0.0, 10.0}, {40.0, 0.0, 12.0}, {0.0, 40.0, 14.0}, {40.0, 40.0, 11.0}};
///     ground.breaklines.push_back({{0.0, 0.0, 10.0}, {40.0, 40.0, 11.0}});
///     TinSurfacePatch3D surface;
///     double z = 0.0;
///     if (surface.Build(ground, Tolerances::Standard()) && surface.GetHeight({20.0, 20.0}, z)) Show(z);  // 10.5
class KALVIO_MATH_API TinSurfacePatch3D final : public IGeometry {
public:
    /// The number of no triangle.
    static constexpr unsigned int noTriangle = (std::numeric_limits<unsigned int>::max)();
    /// The number of no vertex.
    static constexpr unsigned int noVertex = noTriangle;

    /// What a surface is built from. All vertices count as points.
    struct Ground {
        std::vector<Point3D> points;  ///< loose ones
        /// Chains whose segments become edges.
        std::vector<LineString3D> breaklines;
        /// Rings, which need not be closed: the surface lies inside an odd number of borders, or without any inside the
        /// hull of all points, and inside an even number of holes. Their segments become edges.
        std::vector<LineString3D> borders;
        std::vector<LineString3D> holes;  ///< see `borders`
        /// Triangles at the rim are cut off from outside for as long as their outer edge is longer in plan than this
        /// and no segment of a chain; 0 cuts nothing.
        double longestRimEdge = 0.0;
    };

    /// A place where two heights were given.
    struct HeightConflict {
        Point3D kept;  ///< the place, and the height that the surface has there
        double other;  ///< the height that it has not
    };

    /// What lies between two surfaces.
    struct Volumes {
        double cut = 0.0;   ///< where this surface is the higher one: what is to be taken away
        double fill = 0.0;  ///< where it is the lower one: what is to be brought
        double area = 0.0;  ///< in plan, where both are
    };

    TinSurfacePatch3D() = default;

    MathTypes GetType() const override;
    /// Extent of the vertices; the point box at the origin when there are none.
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    /// Comparable with a `TinSurfacePatch3D` whose triangles are equal.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const TinSurfacePatch3D& other, double tolerance) const;
    [[nodiscard]] TinSurfacePatch3D* Clone() const override;

    /// Replaces the surface by the constrained Delaunay triangulation in plan, n log n. Turns and circles are decided
    /// exactly. Where edges are on one circle, as in a grid, one of the triangulations is taken, always the same.
    ///
    /// Of points that the user tolerance parts in plan or less, one becomes a vertex, with the height of the first: the
    /// order is points, breaklines, borders, holes. A vertex this near to a segment, and nearer to both of its ends
    /// than these are to each other, divides it and keeps its height; the parts are segments from then on. Where
    /// segments cross there is a new vertex, with the height of the one that comes first. Heights there that differ by
    /// more than the user tolerance are told.
    /// @param conflicts  replaced by the places with two heights
    /// @return false, everything untouched, when all points lie on one line in plan, nothing is left inside, and for
    ///         coordinates that are not finite or above 1e70; with a tolerance of about the rounding of the
    ///         coordinates or less, also for segments that cross too close to each other
    [[nodiscard]] bool Build(const Ground& ground, const Tolerances& tolerances,
                             std::vector<HeightConflict>& conflicts);
    [[nodiscard]] bool Build(const Ground& ground, const Tolerances& tolerances);
    /// Replaces the surface by triangles, which are turned counter-clockwise in plan and keep their order. Those that
    /// are a line in plan are left out, as are vertices that no triangle names: walls have no height.
    /// @return false, everything untouched, when there is no triangle, one names a vertex that does not exist, two lie
    ///         on the same side of a shared edge, and for coordinates that are not finite or above 1e70. Whether
    ///         triangles overlap that share no edge is not looked at: at such a place the surface is one of them.
    [[nodiscard]] bool SetTriangles(const IndexedTriangleSet3D& set);
    /// Adds points as vertices: edges change around them alone, and a surface that was built without them is then what
    /// it would be with them, but for edges on one circle and its rim. Turns and circles are decided exactly. Each
    /// takes about as long as the search for its place, all together some copies of the surface: many at once are
    /// cheaper.
    ///
    /// A point within the tolerance (the user tolerance, or the rounding of the coordinates) of a vertex adds nothing:
    /// the vertex keeps its height. One this near to a segment of a chain or of the border, and nearer to both of its
    /// ends than these are to each other, divides it and keeps its place and height; one on another edge divides that.
    /// @param vertices  replaced by the vertex at each point: a new one, or the one that was there; `noVertex` for
    ///                  those outside, and those near to two segments or so far beside one that a triangle would turn
    ///                  over, which are left out
    /// @return false, everything untouched, when there is no surface, and for coordinates that are not finite or above
    ///         1e70
    [[nodiscard]] bool AddPoints(const std::vector<Point3D>& points, const Tolerances& tolerances,
                                 std::vector<unsigned int>& vertices);
    /// Removes vertices, and closes the surface around them by triangles whose circles are empty, as `AddPoints`. Those
    /// on the border or on a chain stay. The numbers of later vertices move up, those of triangles change.
    /// @param stayed  replaced by those that stay, by the numbers that they had, in the order given
    /// @return false, everything untouched, when a vertex does not exist
    [[nodiscard]] bool RemoveVertices(const std::vector<unsigned int>& vertices, std::vector<unsigned int>& stayed);
    /// Leaves out vertices: those stay that greedy insertion needs, so that none left out is farther in height from the
    /// surface than the tolerance. The chains that it was built from stay as they are, and so does the border in plan:
    /// of its vertices only those on straight stretches may go. About n log n. Source: Garland, Heckbert, Fast
    /// Polygonal Approximation of Terrains and Height Fields, 1995.
    /// @param heightTolerance  0 leaves out what changes no height
    /// @return false, everything untouched, when there is no surface, for a tolerance that is negative or NaN, and for
    /// a
    ///         surface that lies over itself or has two heights at a place
    [[nodiscard]] bool Thin(double heightTolerance);
    /// Closes holes by triangles between the vertices around them, Delaunay but for the border. Parts of the surface
    /// that lie in a hole stay, and bays of the outer border are no holes.
    /// @param largestArea  in plan, of the holes that are closed
    /// @param count        receives their number
    /// @return false, everything untouched, when there is no surface, for an area that is negative or NaN, and for a
    ///         surface that lies over itself or has two vertices of its border at a place
    [[nodiscard]] bool FillHoles(double largestArea, std::size_t& count);

    /// Counter-clockwise in plan.
    const IndexedTriangleSet3D& GetTriangles() const { return triangles; }
    std::uint64_t GetTrianglesCount() const { return triangles.GetTrianglesCount(); }
    /// The triangle beyond the edge from corner `edge` (0, 1, 2) of a triangle to the next one; `noTriangle` at the
    /// border and where there is no such edge.
    unsigned int GetNeighbor(unsigned int triangle, unsigned int edge) const;
    double GetPlanArea() const;

    /// A triangle at a place, its border included, within the rounding of coordinates.
    /// @param triangle  where the search starts, any number; it takes some steps from a triangle near the place, and
    ///                  about ten times as long from elsewhere. Receives the triangle
    /// @return false, `triangle` untouched, for a place outside
    [[nodiscard]] bool FindTriangle(const Point2D& place, unsigned int& triangle) const;
    bool IsInside(const Point2D& place) const;
    /// The height at a place. @return false, `z` untouched, outside
    [[nodiscard]] bool GetHeight(const Point2D& place, double& z) const;
    /// The same from triangle to triangle, as `FindTriangle`: for places that follow each other.
    [[nodiscard]] bool GetHeight(const Point2D& place, double& z, unsigned int& triangle) const;
    /// The heights at many places, NaN outside: those that `GetHeight` answers to each, some times as fast where places
    /// are spread over a large surface.
    void GetHeights(const std::vector<Point2D>& places, std::vector<double>& heights) const;
    /// The unit normal of the triangle at a place, upward. @return false, `normal` untouched, outside
    [[nodiscard]] bool GetNormal(const Point2D& place, Vec3D& normal) const;
    /// Rise over run of the triangle at a place, and the bearing in which it falls, clockwise from +Y; 0 where it is
    /// level. @return false, nothing written, outside
    [[nodiscard]] bool GetSlope(const Point2D& place, double& slope, Angle& fall) const;
    /// Moves a point to the nearest one of the surface in space. The cost grows with the number of triangles within
    /// that distance in plan; from beside the surface, or far above it, fewer are looked at. @return false, `point`
    /// untouched, when there is no surface or the point is not finite
    [[nodiscard]] bool GetNearestPoint(Point3D& point) const;
    /// Appends the chain laid on the surface, with a point at each edge that it crosses: a string for each part inside.
    /// What `IndexedTriangleSet3D::GetSections` answers, from the triangles near the chain alone: about the root of
    /// their number; but a triangle as thin as rounding is no wall here: along the chain the string runs over its
    /// corners, and has no step at a bend. The heights are those that `GetHeight` gives there. @return whether there
    /// are any
    bool Drape(const LineString2D& chain, std::vector<LineString3D>& draped) const;

    /// Appends the contours at the levels, by level: the fewest strings, each at the height of its level, with the
    /// higher ground on its right. A string ends at the border or is closed, its first point repeated at the end.
    ///
    /// A vertex on a level counts as above it. So contours neither branch nor cross; where saddles or flats lie on the
    /// level they meet at vertices. A flat on the level has a contour where it falls off, none where it rises, and a
    /// ridge on it one on either side. One pass over the triangles, and what there is to be found.
    /// @param cuts  smooths the contours: so many times each corner is cut off and becomes two of about half the angle.
    ///              They still never cross each other, end where they ended, lie in the same triangles, and keep their
    ///              corners where they cross chains and pass vertices. Source: Chaikin, 1974, cut by chords of convex
    ///              cells
    /// @return false, nothing appended, for levels that are not finite, more than 1e6 of them, more than 8 cuts, and
    ///         where all cut corners together were more than 1e7 points and more than 16 for each triangle
    bool GetContours(const std::vector<double>& levels, std::vector<LineString3D>& contours,
                     unsigned int cuts = 0) const;
    /// The same at all multiples of an interval. @return false also for one that is not positive
    bool GetContours(double interval, std::vector<LineString3D>& contours, unsigned int cuts = 0) const;

    /// Cut and fill between this surface, the ground, and another one, the design, where both are: the sums of the
    /// prisms between the common parts of their triangles, exact but for rounding. Where a surface lies over itself
    /// each part counts. Swapping the two swaps cut and fill.
    /// With an area, only inside that polygon and outside its holes.
    /// @return false, `volumes` untouched, when one of them is empty and for a polygon without area
    [[nodiscard]] bool GetVolumes(const TinSurfacePatch3D& design, Volumes& volumes) const;
    [[nodiscard]] bool GetVolumes(const TinSurfacePatch3D& design, const Polygon2D& area, Volumes& volumes) const;
    /// The same against a height. @return false also for one that is not finite
    [[nodiscard]] bool GetVolumes(double height, Volumes& volumes) const;
    [[nodiscard]] bool GetVolumes(double height, const Polygon2D& area, Volumes& volumes) const;

private:
    class Overlaps;

    // What the search for places reads, a line of the cache: corners in plan, and the triangles beyond the edges from
    // them.
    struct alignas(64) Facet {
        std::array<detail::PlanePoint, 3> corner;
        std::array<unsigned int, 3> beyond;
    };
    using Heights = std::array<double, 3>;  // of the corners
    struct Locator {
        std::vector<Facet> facets;
        std::vector<Heights> heights;
        double lowest = std::numeric_limits<double>::infinity();  // of the heights
        double highest = -std::numeric_limits<double>::infinity();
        double heightNoise = 0.0;  // rounding of the heights
        detail::TriangleGrid grid;
    };

    std::array<Point2D, 3> CornersOf(std::size_t triangle) const;
    const Locator& GetLocator() const;
    // From triangle to triangle.
    struct Walk {
        unsigned int triangle = noTriangle;
        unsigned int before = noTriangle;
        unsigned int steps = 0;
        std::size_t place = 0;  // its number, of many
    };
    static unsigned int Toward(const Facet& facet, const Point2D& place, const Walk& walk);
    static bool WalkTo(const Locator& made, const Point2D& place, unsigned int& triangle);
    static unsigned int SurelyToward(const Facet& facet, const Point2D& place, unsigned int triangle);
    static bool FindSurely(const Locator& made, const Point2D& place, unsigned int& triangle);
    static double HeightAt(const Facet& facet, const Heights& heights, const Point2D& place);
    Vec3D DoubledNormal(unsigned int triangle) const;
    bool AddVolumes(const TinSurfacePatch3D* design, double height, const Polygon2D* area, Volumes& volumes) const;
    bool TakeFrom(const detail::SurfaceBuilder& builder);
    void Take(IndexedTriangleSet3D&& set, std::vector<unsigned int>&& beyond, std::vector<bool>&& ofChain);

    IndexedTriangleSet3D triangles;
    std::vector<unsigned int> neighbors;  // per edge, as the indexes
    std::vector<bool> isOfChain;          // per edge
    double noise = 0.0;                   // rounding of the coordinates
    detail::Lazy<Locator> locator;
};

}  // namespace Kalvio::Math
