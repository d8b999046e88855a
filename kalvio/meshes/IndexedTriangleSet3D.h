#pragma once

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/Triangle3D.h"
#include "kalvio/core/WindingValue.h"
#include "kalvio/core/detail/IndexIterator.h"
#include "kalvio/meshes/detail/VertexArrays.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Kalvio::Math {

class Angle;
class Line2D;
class LineString2D;
class LineString3D;
class Matrix3D;

/// Triangles in space that share their vertices by index: a terrain model, a tessellated surface, the skin of a solid.
///
/// The corners of triangle k are the vertices at 3k, 3k + 1, 3k + 2 of the index array. Triangles are neighbours where
/// they name the same two vertices, so equal places must be merged first (`CollapsePoints`). Vertices that no triangle
/// names may exist. At most 2^32 - 1 vertices.
///
/// A triangle that names a vertex that does not exist takes no part in anything until that vertex is appended; nor do
/// one or two indexes at the end that are no whole triangle. Edits leave them where they are, but for duplicates.
class KALVIO_MATH_API IndexedTriangleSet3D final : public IGeometry, public detail::IndexedVertexArray<Point3D> {
public:
    /// What operations of `IndexedTriangleSet3DCleanUp` answer.
    enum class ErrorMessage : std::uint32_t {
        NoError = 0,      ///< done
        NoTriangles = 1,  ///< the set holds no triangle of three vertices
    };

    IndexedTriangleSet3D() = default;
    IndexedTriangleSet3D(const std::vector<Point3D>& corners, const std::vector<unsigned int>& triangles)
        : IndexedVertexArray(corners, triangles) {}

    MathTypes GetType() const override;
    /// Extent of all vertices, used or not, taken in one pass; the point box at the origin when there are none.
    BoundingBox3D GetBoundingBox() const;
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    /// Comparable with an `IndexedTriangleSet3D` of as many vertices, equal index by index, and of the same indexes and
    /// winding flag.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const IndexedTriangleSet3D& other, double tolerance) const;
    [[nodiscard]] IndexedTriangleSet3D* Clone() const override;

    using IndexedVertexArray::GetVertices;
    std::vector<Point3D>& GetVertices() & { return vertices; }
    using IndexedVertexArray::GetIndexes;
    std::vector<unsigned int>& GetIndexes() & { return indexes; }
    void AppendVertex(const Point3D& vertex) { vertices.push_back(vertex); }
    /// Removes vertices and triangles; the winding flag stays.
    void Clear();
    std::uint64_t GetTrianglesCount() const { return indexes.size() / 3; }
    /// The whole triangles as a range of values; indexes are unchecked. A corner that names a vertex that does not
    /// exist is NaN.
    auto begin() const { return detail::IndexIterator<IndexedTriangleSet3D>(*this, 0); }
    auto end() const { return detail::IndexIterator<IndexedTriangleSet3D>(*this, size()); }
    std::size_t size() const { return indexes.size() / 3; }
    Triangle3D operator[](std::size_t triangle) const {
        return {CornerAt(3 * triangle), CornerAt(3 * triangle + 1), CornerAt(3 * triangle + 2)};
    }
    /// The corners of one triangle.
    /// @return false, the points untouched, when there is no such triangle or it names a vertex that does not exist
    [[nodiscard]] bool GetTriangleAt(std::uint64_t triangle, Point3D& a, Point3D& b, Point3D& c) const;

    /// Appends a triangle with three vertices of its own, in place of one or two indexes at the end that are no whole
    /// triangle.
    /// @param orient    the triangle gets the winding in plan of the set: one that runs the other way is reversed by
    ///                  swapping its first two corners. One without winding in plan (the z component of its normal is
    ///                  0) is kept under `IsCCW` and reversed otherwise.
    /// @param collapse  ends with `CollapsePoints(1e-10)` on the whole set, at its whole cost for every triangle: to
    ///                  add many, collapse once at the end
    void AddTriangle(const Point3D& a, const Point3D& b, const Point3D& c, bool orient, bool collapse);
    /// Appends the whole triangles of another set, which may be this one, as they are, whatever the two winding flags
    /// say. One or two indexes at the end of this set that are no whole triangle are dropped. Indexes of the other set
    /// that name no vertex name none here either; those of this set are not looked at, and name the vertices to come as
    /// they do after `AppendVertices`.
    /// @param collapse  ends with `CollapsePoints(tolerance)` on the whole set
    void Merge(const IndexedTriangleSet3D& other, bool collapse, double tolerance);

    /// Sum over the triangles of the signed area in plan (counter-clockwise positive) times the height of the centroid
    /// over the reference height: the volume between a terrain and that height, or the volume of a solid whose faces
    /// run counter-clockwise seen from outside. Summed over coordinate differences; 0 for an empty set.
    double GetVolume(double referenceHeight) const;
    /// The winding of a triangle seen along the axis of the largest component of its normal (on ties z before y before
    /// x), from its positive end: a steep triangle is judged by x or y. Never `Vertical`. There being no such triangle,
    /// or fewer than three vertices, the winding that `IsCCW` tells.
    WindingValue GetWinding(unsigned int triangle) const;
    /// That of the first triangle, which stands for the whole set.
    WindingValue GetWinding() const { return GetWinding(0); }
    /// The winding in plan: `Vertical` for a normal of unit length with z within +-1e-11, for a triangle without area
    /// and where there is no such triangle.
    WindingValue GetWinding2D(unsigned int triangle) const;
    /// Numbers of triangles by `GetWinding2D`.
    void GetTotalWindings2D(unsigned int& counterClockwise, unsigned int& clockwise, unsigned int& vertical) const;
    /// True for a horizontal set: every index names a vertex as high as the first does, within the tolerance,
    /// inclusive (`Numbers::Compare`). A tilted plane is not. True for fewer than two indexes.
    bool IsPlanar(double tolerance) const;
    /// True for the skin of one solid, whichever way its triangles run: not `IsPlanar(1e-10)`, and one surface with two
    /// sides and no border (both flags of `IndexedTriangleSet3DCleanUp::FixCoherentTriangleWinding`). Two bodies are
    /// not one, nor is a body with a void. By neighbourhood alone: whether the surface cuts itself, or folds up to no
    /// volume as a tilted triangle and its reverse do, is not looked at.
    bool IsOneClosedVolume() const;
    /// True when neighbours run against each other along the edge that exactly the two of them share.
    bool IsTriangleNeighborWindingCoherent() const;
    /// Appends the border as closed strings, the first point repeated at the end: the edges of one triangle (or of
    /// three, of any odd number), chained. Rings that meet at a vertex are apart. Each has the triangles on its left
    /// seen from the side where they run counter-clockwise, all taken as running like the first one of their surface.
    /// The border of a surface with one side only, a Moebius strip, runs like its first edge.
    /// @return whether there is a border
    [[nodiscard]] bool GetBoundaries(std::vector<LineString3D>& boundaries) const;
    /// Replaces another set by the vertical walls between the border and a height: two triangles per edge of
    /// `GetBoundaries`, which run against the triangles above them, so that a terrain and its walls are coherent. Where
    /// the border lies at the height the walls have no area (`RemoveLineTriangles`).
    /// @return false, `walls` untouched, when there is no border, and where it or the height is not finite
    [[nodiscard]] bool CreateVerticalWalls(double height, IndexedTriangleSet3D& walls) const;
    /// Replaces what `normals` held by one per triangle or, on request, one per vertex. The normal of a triangle a, b,
    /// c is the unit vector of (b - a) x (c - b), of which one no longer than 1e-10 is left as it is, and its opposite
    /// unless `IsCCW`; that of a vertex the normalised sum over the triangles that use it, zero where there are none.
    void ComputeNormals(bool perVertex, std::vector<Vec3D>& normals) const;
    /// The same, or for a crease angle below pi one normal per index: per corner of a triangle the normalised sum over
    /// the triangles at that vertex whose normals are at most the crease angle from the triangle's own (by the cosine,
    /// with room for 1e-12 of rounding). The cost at a vertex grows with the square of the number of its triangles.
    void ComputeNormals(bool perVertex, std::vector<Vec3D>& normals, const Angle& creaseAngle) const;

    /// Appends the section of the mesh along a line in plan: its cuts by the vertical plane over the infinite line,
    /// over the segment only, or over every segment of a chain, joined into the fewest line strings. Each runs in the
    /// direction of the line, a closed one from its first point along it, and they come in the order of their starts.
    /// A closed one that leads nowhere along the line, around a body, runs either way. Where a chain comes back to a
    /// place, a string goes on as the chain does; one that ends there is not joined to one that starts there.
    ///
    /// Cuts are joined where they come from one edge or vertex, or from others of exactly the same coordinates; within
    /// no tolerance. A vertex counts as on the line within 1e-10, or the rounding of the line's coordinates. Triangles
    /// in the vertical plane contribute the border of the area that they cover together, once or more often: the edges
    /// with triangles on one side only. A single point is no section.
    /// A section that reaches an end of the segment, or a bend of the chain, has a point exactly there. At a bend,
    /// parts are joined whose heights differ only as rounding of the plan position makes them on a slope of up to 100;
    /// two strings meet there when they differ by more, as at a wall or in a triangle whose width is rounding. Nothing
    /// comes from a line not longer than 1e-10, nor from triangles with coordinates that are not finite. Points of a
    /// chain no further than 1e-10, or the rounding, from the one before are left out.
    ///
    /// One pass over vertices and triangles; of a chain, boxes over its segments find those that a triangle meets.
    void GetSections(const Line2D& line, std::vector<LineString3D>& sections) const;
    void GetSections(const LineString2D& lineString, std::vector<LineString3D>& sections) const;
    void GetSectionsLineSegment(const Line2D& segment, std::vector<LineString3D>& sections) const;

    /// Merges vertices at most the tolerance apart in space: in the order of the indexes, each index that no earlier
    /// one has taken becomes the first one of a place and takes all later ones within the tolerance of its own vertex.
    /// What has been taken takes nothing: of vertices A, B, C at 0, 0.9 and 1.8 tolerances along a line B becomes A, C
    /// stays. No vertex moves. Then `RemoveLineTriangles(tolerance, true)` follows, so a second merge changes nothing.
    /// A set without a whole triangle stays as it is, with all its vertices.
    ///
    /// Near linear in the number of indexes. Memory while it works: 8 bytes per vertex and about 60 per distinct place.
    /// Coordinates that are not finite merge with nothing.
    /// @return whether the number of indexes or vertices has changed; false, nothing changed, for a tolerance that is
    ///         negative or not finite
    bool CollapsePoints(double tolerance);
    /// The same by the distance in plan: of places one above the other the one named first stays.
    bool CollapsePoints2D(double tolerance);
    /// The same across several sets: a vertex that merges with one of an earlier set is moved exactly onto it, so that
    /// the sets fit together without gaps. Null pointers are passed over.
    /// @return whether any number has changed or any vertex has moved
    static bool CollapsePoints(std::vector<IndexedTriangleSet3D>& sets, double tolerance);
    static bool CollapsePoints(std::vector<IndexedTriangleSet3D*>& sets, double tolerance);
    /// Removes triangles that are a line or a point: two of their corners are at most the tolerance apart.
    /// @param withUnusedVertices  also drops all vertices that no index names then
    /// @return whether anything was removed; nothing is for a tolerance that is negative or NaN
    bool RemoveLineTriangles(double tolerance, bool withUnusedVertices);
    /// Removes the later ones of triangles with the same three indexes, whatever their order and whether such vertices
    /// exist: a triangle and its reverse are duplicates. n log n.
    /// @return whether there were any
    bool RemoveDuplicatedTriangles();
    /// Drops the vertices that no index names; the others keep their order. @return the number dropped
    std::uint64_t RemoveUnusedVertices();
    /// Moves every vertex onto the nearest of the points in space, the first of those on ties. Points and vertices that
    /// are not finite are passed over. n log n.
    /// @return whether any vertex has moved
    bool AdjustVerticesToClosest(const std::vector<Point3D>& points);
    /// Reverses every triangle by swapping its first two corners; the winding flag stays.
    void InvertAllTriangles();

    /// `IndexedTriangleSet3DCleanUp::FlipEdge`: turns the edge between two triangles, given by their numbers.
    bool FlipEdge(unsigned int first, unsigned int second);
    /// `IndexedTriangleSet3DCleanUp::FixCoherentTriangleWinding`. @return whether all neighbours agree now
    bool FixCoherentTriangleWinding();
    /// Removes the triangles of the winding in plan (`GetWinding2D`). @return whether there were any
    bool RemoveTrianglesWindings2D(WindingValue winding);
    /// Moves the triangles that are vertical in plan into another set, which they replace, with the vertices they name;
    /// the vertices of this set stay. @return whether there were any; `verticals` is emptied otherwise
    bool ExtractVerticalTriangles(IndexedTriangleSet3D& verticals);
    /// `IndexedTriangleSet3DCleanUp::SplitIntoUnconnectedSurfaces`. @return whether there is any surface
    [[nodiscard]] bool SplitIntoUnconnectedSurfaces(std::vector<IndexedTriangleSet3D>& surfaces) const;

    /// A non-const set is changed in place.
    IndexedTriangleSet3D& Transform(const Matrix3D& matrix);
    IndexedTriangleSet3D Transform(const Matrix3D& matrix) const;
    IndexedTriangleSet3D& Translate(const Vec3D& v);
    IndexedTriangleSet3D Translate(const Vec3D& v) const;
};

}  // namespace Kalvio::Math
