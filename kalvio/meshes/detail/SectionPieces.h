#pragma once

#include "kalvio/core/Point3D.h"
#include "kalvio/core/Vec3D.h"
#include "kalvio/polygons/LineString3D.h"

#include <array>
#include <cstddef>
#include <vector>

namespace Kalvio::Math::detail {

/// A corner of a triangle that is cut by a plane.
struct CutCorner {
    Point3D point;
    double height = 0.0;  // signed distance from the plane
    int side = 0;         // 1 above, -1 below, 0 where it counts as on the plane
};

/// The point in which the edge between two corners on different sides passes the plane. The same edge has the same
/// point, bit by bit, whichever triangle asks and in whichever direction.
Point3D EdgeCrossing(const CutCorner& a, const CutCorner& b);

/// What a plane has in common with a triangle: nothing, a corner, a piece (a corner or edge point at either end), or
/// all of it.
struct TriangleCut {
    explicit TriangleCut(const std::array<CutCorner, 3>& corners);

    int count = 0;  // of the ends: 0, 1, 2; 3 for a triangle in the plane
    std::array<Point3D, 2> ends;
    bool isEdge = false;  // the piece is an edge of the triangle
};

/// The cuts of many triangles by one plane, joined into line strings.
///
/// Ends of pieces are one place when they come from one corner or one edge, or from another with the same coordinates:
/// `EdgeCrossing` makes their bits equal, and nothing is joined within a tolerance.
class SectionPieces {
public:
    /// What becomes of corners that touch the plane while their triangle stays on one side of it.
    enum class Touches : bool { LeaveOut, Keep };

    explicit SectionPieces(Touches touching = Touches::LeaveOut) : touches(touching) {}

    bool IsEmpty() const { return pieces.empty() && edges.empty() && points.empty(); }
    /// Takes the cut of a triangle. Of triangles in the plane the edges count that border on one such triangle only; an
    /// edge in the plane that triangles outside it share counts once.
    void Add(const std::array<CutCorner, 3>& corners);
    /// Ends that are not finite, or the same, make no piece.
    void AddPiece(const Point3D& from, const Point3D& to);
    /// Appends the fewest line strings that run through every piece once (C. Hierholzer, 1873). Each is directed along
    /// `direction`, a closed one starts at its first point along it, and they come in the order of their starts. A
    /// corner that only touches the plane becomes a string of that point twice.
    void Chain(const Vec3D& direction, std::vector<LineString3D>& out);

private:
    struct Piece {
        Point3D from;
        Point3D to;
    };
    struct PlaneEdge {
        Piece piece;  // from its lesser end
        bool isOfFlatTriangle;
    };

    void AddEdge(const Point3D& a, const Point3D& b, bool isOfFlatTriangle);
    void TakeEdges();
    void TakePoints();

    Touches touches;
    std::vector<Piece> pieces;
    std::vector<PlaneEdge> edges;  // in the plane
    std::vector<Point3D> points;   // that touch it
};

}  // namespace Kalvio::Math::detail
