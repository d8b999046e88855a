#pragma once

#include "kalvio/polygons/Polygon2D.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Kalvio::Math::detail {

/// The rings of areas as a network of chains: a chain runs from one node, where rings part, to the next, or once around
/// where a ring meets no other one. What rings have in common is one chain, run through either way, so that it can be
/// simplified once for all of them; and a change of one chain can be held against all others.
class BorderNetwork {
public:
    explicit BorderNetwork(const std::vector<Polygon2D>& areas);
    /// A network of one chain, whose ends stay.
    explicit BorderNetwork(const std::vector<Point2D>& chain);

    void SimplifyByDistance(double tolerance);
    void SimplifyByArea(double smallest);

    /// The areas that the network was made from, with the points that are left.
    std::vector<Polygon2D> ToAreas(const std::vector<Polygon2D>& areas) const;
    /// The points of the only chain that are left.
    std::vector<Point2D> ToChain() const;

private:
    using Vertex = std::uint32_t;

    struct Chain {
        std::vector<Vertex> vertices;  // where it runs once around, the first one is also the last
        std::vector<Point2D> points;   // the same
        std::vector<bool> isKept;

        bool IsClosed() const { return vertices.front() == vertices.back(); }
    };
    struct Corner {
        Vertex vertex;
        std::size_t position;  // in the ring as it was given
    };
    /// A part of a ring.
    struct Use {
        std::size_t chain;
        bool isReversed;
        std::size_t first;  // corner of the ring at which it begins
    };
    struct Ring {
        std::vector<Corner> corners;  // empty: is copied
        std::vector<Use> uses;
    };
    struct Segments;
    struct Pockets;
    class Triangles;

    void Number(std::span<const std::vector<Point2D>* const> given, bool areRings);
    void FindNodes();
    void CutIntoChains();
    std::vector<Point2D> PointsLeft(const std::vector<Point2D>& source, const Ring& ring) const;

    std::vector<Point2D> places;  // of the vertices, by x and y
    std::vector<bool> isNode;     // of a vertex
    std::vector<Ring> rings;      // of all areas, the outer one first
    std::vector<Chain> chains;
};

}  // namespace Kalvio::Math::detail
