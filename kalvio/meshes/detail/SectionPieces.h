#pragma once

#include "kalvio/core/Point3D.h"
#include "kalvio/polygons/LineString3D.h"

#include <array>
#include <cstddef>
#include <limits>
#include <vector>

namespace Kalvio::Math::detail {

/// A corner of a triangle that is cut by a plane.
struct CutCorner {
    Point3D point;
    double height = 0.0;  // signed distance from the plane
    int side = 0;         // 1 above, -1 below, 0 where it counts as on the plane
};

/// A corner on the plane (twice the same), or the point in which the edge between two corners passes it. The same edge
/// has the same point, bit by bit, whichever triangle asks and in whichever direction.
struct CutEnd {
    const CutCorner* first = nullptr;
    const CutCorner* second = nullptr;

    Point3D GetPoint() const;
};

/// What a plane has in common with a triangle: nothing, a corner, a piece between two ends, or all of it. The corners
/// must stay as they are while the ends are used.
struct TriangleCut {
    explicit TriangleCut(const std::array<CutCorner, 3>& corners);

    int count = 0;  // of the ends: 0, 1, 2; 3 for a triangle in the plane
    std::array<CutEnd, 2> ends;
    bool isEdge = false;  // the piece is an edge of the triangle
};

/// The edges of triangles in a plane. Of triangles in the plane those count that have the covered area on one side
/// only, however often it is covered; an edge that triangles outside the plane share counts once.
class PlaneEdges {
public:
    /// Takes the cut of a triangle. @return false when it has no edge in the plane
    bool Take(const std::array<CutCorner, 3>& corners, const TriangleCut& cut);
    /// Takes a triangle of a surface that is in the plane by rounding alone. Its two edges shorter in plan count, so
    /// that no corner is passed over, and the longest does not, whoever shares it.
    void TakeSliver(const std::array<CutCorner, 3>& corners);
    bool IsEmpty() const { return edges.empty(); }
    /// Calls visit(from, to) for the edges that count, from the lesser end to the greater.
    template <class Visit>
    void ForEach(Visit&& visit) {
        Sort();
        for (std::size_t first = 0; first < edges.size();) {
            std::size_t end = first;
            while (end < edges.size() && IsSame(edges[first], edges[end])) ++end;
            if (Counts(first, end)) visit(edges[first].from, edges[first].to);
            first = end;
        }
    }

private:
    struct Edge {
        Point3D from;
        Point3D to;
        bool isOfFlatTriangle;
        Vec3D rise;  // from the edge to the third corner of the triangle in the plane; zero where that is noise
        bool isLeftOut = false;
    };

    static bool IsSame(const Edge& a, const Edge& b);
    /// @param third  the third corner of a triangle in the plane, else null
    void Add(const Point3D& a, const Point3D& b, const Point3D* third);
    /// Of the edges in a range, all the same.
    bool Counts(std::size_t first, std::size_t end) const;
    void Sort();

    std::vector<Edge> edges;
};

/// Pieces that are joined into line strings.
///
/// Ends are one place when their coordinates are the same: so are those that come from one corner or one edge
/// (`CutEnd`). Nothing is joined within a tolerance but ends at one bend of a chain, whose heights differ by noise when
/// they come from triangles on both sides of an edge beside it. Stations are lengths along the cut, by which strings
/// are directed and ordered; ends of one place at different stations are not joined, so that a chain that comes back to
/// a place goes on as it came.
class SectionPieces {
public:
    static constexpr std::size_t noBend = std::numeric_limits<std::size_t>::max();
    struct End {
        Point3D point;
        double station = 0.0;
        std::size_t bend = noBend;  // at which it is, in plan exactly
        double heightNoise = 0.0;   // there
    };

    bool IsEmpty() const { return pieces.empty() && points.empty(); }
    /// Ends that are the same make no piece, nor do ends that are not finite.
    void AddPiece(const End& from, const End& to);
    /// A point that becomes a string of itself twice unless a piece ends there.
    void AddPoint(const End& end);
    /// Appends the fewest line strings that run through every piece once (C. Hierholzer, 1873), each in the direction
    /// of ascending stations, in the order of their starts. A closed one starts at its least station.
    void Chain(std::vector<LineString3D>& out);

private:
    struct Piece {
        End from;
        End to;
    };

    /// Gives ends at one bend the same height, that of the surest, when it is the same but for noise.
    void UniteAtBends();

    std::vector<Piece> pieces;
    std::vector<End> points;
};

/// The order by x, then y, then z.
bool IsLess(const Point3D& a, const Point3D& b);

}  // namespace Kalvio::Math::detail
