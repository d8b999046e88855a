#pragma once

#include "kalvio/polygons/detail/ExactPredicates.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// Delaunay triangulation of points with edges that must be in it. About n log n for the points; an edge costs the
/// square of the number of edges it crosses at worst. All decisions are exact: the triangles cover the hull once, and
/// every circle that no required edge cuts off is empty.
///
/// Points are inserted in random rounds of growing size, along a Hilbert curve within each (N. Amenta, S. Choi, G.
/// Rote, 2003), each into the cavity of the triangles whose circles hold it (A. Bowyer, D. F. Watson, 1981). A required
/// edge is brought in by flipping those that it crosses (S. W. Sloan, 1993), then circles are made empty by flips (C.
/// L. Lawson, 1977).
///
/// Beyond every edge of the hull lies a triangle with the corner `GetOutside()`. Edges are directed: edge 4 t + i runs
/// from corner i of triangle t to the next one, the triangle on its left.
class ConstrainedTriangulation {
public:
    using Index = std::uint32_t;
    static constexpr Index none = (std::numeric_limits<Index>::max)();
    static constexpr std::size_t most = none / 16;  // places

    struct alignas(32) Triangle {
        std::array<Index, 3> corner;  // counter-clockwise
        std::array<Index, 3> twin;    // the edge that runs against edge i, in the triangle beyond
        std::array<std::uint8_t, 3> marks;
    };
    /// Marks of edges. Those of rings turn over with each ring that runs along the edge. A rim is for the caller to
    /// know.
    enum : std::uint8_t { required = 1, ofBorder = 2, ofHole = 4, ofRim = 8 };

    /// A vertex that divides the edge from -> to: an end of edges, or new where that edge crosses otherFrom -> otherTo,
    /// which was required before it.
    struct Division {
        Index vertex;
        Index from, to;
        Index otherFrom, otherTo;  // none for a vertex that was there
    };

    /// @param places     finite, `most` of them at most
    /// @param nearLimit  of places this near to each other one becomes a vertex; a vertex this near to a required edge,
    ///                   and nearer to both of its ends than these are to each other, lies on it
    ConstrainedTriangulation(std::span<const PlanePoint> places, double nearLimit);

    /// False when all places lie on one line; there are no triangles then.
    bool HasTriangles() const { return !triangles.empty(); }
    /// The vertex that stands for a place.
    Index GetVertexOf(std::size_t place) const { return vertexOf[place]; }
    /// The place where a vertex below `GetOutside()` is; those above divide edges.
    Index GetPlaceOf(Index vertex) const { return placeOf[vertex]; }
    Index GetOutside() const { return outside; }
    PlanePoint GetPosition(Index vertex) const;
    const std::vector<Triangle>& GetTriangles() const { return triangles; }
    const std::vector<Division>& GetDivisions() const { return divisions; }
    static Index Next(Index edge) { return (edge & 3U) == 2 ? edge - 2 : edge + 1; }
    static Index Before(Index edge) { return (edge & 3U) == 0 ? edge + 2 : edge - 1; }

    /// Requires the edge between two vertices. Vertices on it divide it.
    /// @param mayCross  divides this edge and another required one where they cross, by a new vertex
    /// @return false when it crosses another required edge and may not, or where tolerances do not let it end; the
    ///         triangulation is of no use then
    bool RequireEdge(Index from, Index to, std::uint8_t marks, bool mayCross);

    /// The number of vertices, those outside and given twice included: that of the next one.
    Index GetVertexCount() const { return static_cast<Index>(points.size()); }
    bool IsOutside(Index triangle) const { return IsOutside(triangles[triangle]); }
    /// A triangle that holds a place, searched from one of them inside the hull.
    Index Find(const PlanePoint& place, Index start) const { return Locate(Scaled(place), start); }
    /// Inserts a place in the hull, once all edges are required: those that it is on are divided. It changes no
    /// triangles but those around its vertex.
    /// @param start  where the search for it starts
    /// @return its vertex, an old one when that is near
    Index Insert(const PlanePoint& place, Index start);
    /// Calls visit(edge) for the edges from a vertex, counter-clockwise.
    template <class Visit>
    void ForEachSpoke(Index vertex, Visit&& visit) const {
        Index spoke = edgeAt[vertex];
        do {
            visit(spoke);
            spoke = TwinOf(Before(spoke));
        } while (spoke != edgeAt[vertex]);
    }

    /// Per triangle the marks of the rings that enclose it.
    std::vector<std::uint8_t> FindEnclosing() const;

private:
    struct Required {
        Index from;
        Index to;
        std::uint8_t marks;
    };

    Index CornerOf(Index edge) const { return triangles[edge >> 2U].corner[edge & 3U]; }
    Index TwinOf(Index edge) const { return triangles[edge >> 2U].twin[edge & 3U]; }
    std::uint8_t MarksOf(Index edge) const { return triangles[edge >> 2U].marks[edge & 3U]; }
    double Turn(Index a, Index b, Index c) const { return ExactTurn(points[a], points[b], points[c]); }
    double SquaredDistance(Index a, Index b) const;
    bool IsNear(Index a, Index b) const;
    bool IsOutside(const Triangle& triangle) const {
        return triangle.corner[0] == outside || triangle.corner[1] == outside || triangle.corner[2] == outside;
    }

    PlanePoint Scaled(const PlanePoint& place) const;
    void SortPoints(std::span<const PlanePoint> places);
    void InsertAll();
    bool Start(Index& a, Index& b, Index& c);
    bool IsHeld(const PlanePoint& p, Index edge) const;
    Index Locate(const PlanePoint& p, Index start) const;
    bool IsInCircle(const Triangle& triangle, const PlanePoint& p) const;
    void InsertInCavity(Index p);
    Index InsertLast(Index start);

    void Link(Index edge, Index twin, std::uint8_t marks);
    Index Flip(Index edge);
    void RestoreCircles();
    bool IsBetween(Index point, Index a, Index b) const;
    void Mark(Index edge, std::uint8_t marks);
    void Unmark(Index edge);
    Index FindEdge(Index a, Index b) const;
    bool BringIn(const Required& edge, bool mayCross, std::vector<Required>& open);
    bool MeetRequired(const Required& edge, Index crossed, bool mayCross, std::vector<Required>& open);
    void DivideRequired(Index edge, Index vertex, std::vector<Required>& open);
    void DivideBrought(std::vector<Required>& open);
    Index FindBeside(Index edge) const;
    void DivideNear(Index vertex, std::vector<Required>& open);
    bool FlipAway(Index a, Index b, std::deque<std::pair<Index, Index>>& crossed, std::uint8_t marks);

    std::vector<PlanePoint> points;  // in the square [-1, 1], along the curve; the one at `outside` is none
    int exponent = 0;                // of the power of two by which they were divided
    double scale = 1.0;              // the inverse of that power
    double tolerance;
    Index outside = 0;
    std::vector<Index> vertexOf;
    std::vector<Index> placeOf;
    std::vector<Triangle> triangles;
    std::vector<Index> edgeAt;  // one of the edges from each vertex
    std::vector<Division> divisions;
    std::vector<std::pair<Index, Index>> brought;   // edges by the one that is being required
    std::vector<std::pair<Index, Index>> loosened;  // edges whose circles may not be empty

    struct BoundaryEdge {
        Index outer;
        Index from;
    };
    Index last = 0;
    std::vector<Index> scratch;
    std::vector<Index> removed;
    std::vector<BoundaryEdge> boundary;
};

}  // namespace Kalvio::Math::detail
