#pragma once

#include "kalvio/core/Point3D.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Kalvio::Math::detail {

/// Adds and removes vertices of a triangulated surface in place: circles that were empty stay so, by exact predicates.
/// Triangles keep their numbers until `Compact`.
class SurfaceEditor {
public:
    /// The arrays of the surface; neighbours and chains are per edge.
    struct Arrays {
        std::vector<Point3D>& vertices;
        std::vector<unsigned int>& indexes;
        std::vector<unsigned int>& neighbors;
        std::vector<bool>& isOfChain;
    };

    /// @param placeTolerance  a vertex this near to a place is the one there
    SurfaceEditor(const Arrays& surface, double placeTolerance);

    /// @param start  a triangle not far away, of the same part of the surface
    /// @return the vertex at the place; `noVertex` outside, and beside segments that it cannot divide
    unsigned int Insert(const Point3D& point, unsigned int start);
    /// Per vertex that is asked for: whether one fan of triangles goes around it once, across no chain.
    std::vector<bool> FindFree(const std::vector<unsigned int>& asked) const;
    /// Closes the fan around such a vertex.
    void Remove(unsigned int vertex);
    /// Drops what was removed: the last triangles take the free numbers, later vertices move up.
    void Compact();

private:
    struct Edge {
        unsigned int triangle;
        unsigned int from;
        unsigned int to;
    };
    // What is beyond an edge of a triangle to be.
    struct Side {
        unsigned int to;
        unsigned int beyond;
        bool isOfChain;
    };

    unsigned int CornerOf(unsigned int triangle, unsigned int corner) const {
        return arrays.indexes[3 * std::size_t{triangle} + corner % 3];
    }
    unsigned int BeyondOf(unsigned int triangle, unsigned int corner) const {
        return arrays.neighbors[3 * std::size_t{triangle} + corner % 3];
    }
    // Number of the corner; 3 when the vertex is none.
    unsigned int Find(unsigned int triangle, unsigned int vertex) const;
    double Turn(unsigned int a, unsigned int b, unsigned int c) const;
    Side SideOf(unsigned int triangle, unsigned int corner) const;
    // Makes a triangle of three edges and tells those beyond.
    void Set(unsigned int triangle, unsigned int first, const Side& a, const Side& b, const Side& c);
    unsigned int Append();
    bool Holds(unsigned int triangle, const Point3D& point) const;
    unsigned int Locate(const Point3D& point, unsigned int start);
    bool IsNear(const Point3D& point, unsigned int triangle, unsigned int corner) const;
    double TurnTo(unsigned int triangle, unsigned int corner, const Point3D& point) const;
    unsigned int Walk(const Point3D& point, unsigned int start) const;
    template <class Visit>
    void ForEachAround(unsigned int triangle, const Point3D& point, Visit&& visit);
    void SplitTriangle(unsigned int triangle, unsigned int vertex);
    bool SplitEdge(unsigned int triangle, unsigned int corner, unsigned int vertex);
    void RestoreCircles();

    Arrays arrays;
    double tolerance;
    unsigned int last = 0;                 // triangle at the vertex inserted before
    std::vector<unsigned int> triangleAt;  // one per vertex
    std::vector<Edge> loosened;            // edges whose circles may not be empty
    std::vector<unsigned int> queue;
    std::vector<unsigned int> freed;
    std::vector<std::uint32_t> seenIn;  // per triangle, number of the search
    std::uint32_t search = 0;
};

}  // namespace Kalvio::Math::detail
