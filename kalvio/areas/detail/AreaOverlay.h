#pragma once

#include "kalvio/areas/detail/BorderNoding.h"
#include "kalvio/areas/detail/LoopSegments.h"
#include "kalvio/areas/detail/PlanarFaces.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/BoxHierarchy.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Kalvio::Math {

class Polygon2D;
class PolygonCurve2D;
class RingCurve2D;

}  // namespace Kalvio::Math

namespace Kalvio::Math::detail {

/// Lays the areas of two layers over each other and reads areas off the faces.
///
/// The borders become one plane graph (`BorderNoding`); a walk from face to face across its edges counts the windings
/// of every ring and keeps what lies inside of what. Whatever the areas are, how many and how they lie, that is one
/// pass. Of straight borders only the segments that have others near them are noded: what lies between is one edge.
class AreaOverlay {
public:
    /// A corner of a ring of the result, and the arc that begins there.
    struct Corner {
        PlanePoint at;
        int sense = 0;  // 1 counter-clockwise, -1 clockwise; 0: a segment
        PlanePoint center;
    };
    using Ring = std::vector<Corner>;
    /// The outer ring, counter-clockwise, then the holes, clockwise; each starts at its leftmost corner (of those the
    /// lowest).
    using Area = std::vector<Ring>;

    /// What the arc that begins at the corner sweeps until the end, signed; in (0, 2 pi] of its sense.
    static double SweepOf(const Corner& corner, const PlanePoint& end);

    /// The area that a member of the first layer and one of the second have in common.
    struct Common {
        std::uint32_t first;
        std::uint32_t second;
        std::vector<Area> areas;
    };

    /// Which windings of a ring are inside.
    enum class Fill : std::uint32_t { NonZero = 0, EvenOdd = 1, Positive = 2 };

    AreaOverlay(double userTolerance, Fill rule) : tolerance(userTolerance), fill(rule) {}

    /// Takes an area as the next member of a layer, 0 or 1.
    /// @return false for a coordinate that is not finite or beyond 1e100
    [[nodiscard]] bool Add(const Polygon2D& area, std::uint32_t layer);
    /// The same; gaps between elements are closed by segments.
    [[nodiscard]] bool Add(const PolygonCurve2D& area, std::uint32_t layer);
    /// Takes closed loops as one ring, whose winding is the sum of theirs. Arcs are of less than a full turn.
    [[nodiscard]] bool Add(const std::vector<Ring>& outlines, std::uint32_t layer);
    bool HasArcs() const { return hasArcs; }

    /// To be called once, after the last area.
    /// @param hasStretches  whether stretches will be read off: then every element stands for itself
    /// @return false also where there are arcs and a coordinate beyond 1e70
    [[nodiscard]] bool Run(bool hasStretches = false);

    /// From now on bounded faces no wider than two tolerances count as inside (outside), where snapping may have opened
    /// them.
    void CloseThinFaces(bool toInside) { thin = toInside ? Thin::Inside : Thin::Outside; }
    /// All of one radius.
    struct Discs {
        std::vector<PlanePoint> centers;
        double radius = 0.0;
    };
    /// Like those count bounded faces with a corner in one of the discs.
    void CloseFacesIn(const Discs& discs);

    /// The areas where keep(in the first layer, in the second layer), in the order of their corners.
    std::vector<Area> Extract(bool (*keep)(bool, bool));
    /// All common areas, by first and second number.
    std::vector<Common> ExtractCommon();
    /// Of the elements of the only member's loops, counted in the order in which they were taken, those from one up to
    /// another: the stretches that have the inside on their left and the outside on their right, as chains in the order
    /// of the elements. The last corner of a chain has no arc; one that starts where it ends is closed.
    std::vector<Ring> ExtractStretches(std::uint32_t from, std::uint32_t end);

private:
    static constexpr std::uint32_t none = BorderNoding::none;

    struct BorderRing {
        std::uint32_t member;
        bool isHole;
    };
    struct Loop {
        std::uint32_t first;  // of its elements; until they are listed, of its vertices
        std::uint32_t end;
        std::uint32_t ring;
    };
    // A part of a loop that has nothing near it, as one edge with a detour.
    struct Chain {
        std::uint32_t from;  // vertices of the noding
        std::uint32_t to;
        std::uint32_t ring;
    };
    struct Leftmost {
        std::size_t place;     // in a loop of half-edges
        std::uint32_t vertex;  // on the chain there; `none`: the node
    };
    struct Member {
        std::uint32_t layer;
        std::uint32_t number;  // in its layer
        int holes = 0;         // that the walk is in
        bool isInOuter = false;
    };
    // Along an edge runs a source, from its lower node to its higher one or back.
    struct Passage {
        std::uint32_t source;
        int sense;
    };

    void BeginMember(std::uint32_t layer) { members.push_back({layer, memberCount[layer]++}); }
    bool AddRing(const std::vector<Point2D>& points, bool isHole);
    bool AddRing(const RingCurve2D& ring, bool isHole);
    void BeginRing(bool isHole) { rings.push_back({static_cast<std::uint32_t>(members.size() - 1), isHole}); }
    void BeginLoop();
    bool GoTo(const PlanePoint& p) { return GoTo(p, {static_cast<std::uint32_t>(rings.size() - 1), 0, {}}); }
    bool GoTo(const PlanePoint& p, const BorderSource& source);
    bool GoAlong(const PlanePoint& start, const PlanePoint& center, double sweep);
    void EndLoop();
    void ListElements();
    void SortLoops();
    void ListNear(const std::vector<char>& isNear);
    void JoinLoop(Loop loop, const std::vector<char>& isNear);
    bool MakeNodes();
    bool HaveStayed(const std::vector<BorderPiece>& given) const;
    void MergePieces();
    void MakeFaces();
    bool IsIdle(std::size_t from, std::size_t to) const;
    template <class Visit>
    void WalkFaces(Visit&& visit);
    void Cross(std::uint32_t half);
    bool IsKept(std::uint32_t face, bool isKept) const;
    bool IsInDisc(const PlanePoint& p) const;
    double DoubleAreaBeside(std::uint32_t half) const;
    template <class Visit>
    void ForEachBetween(std::uint32_t half, Visit&& visit) const;
    void Turn(Member& member, bool wasInside);

    std::vector<Area> BuildAreas(const std::vector<std::uint32_t>& kept);
    void WalkBorder(std::uint32_t first, Area& area);
    bool IsBorder(std::uint32_t half) const;
    Ring MakeRing(std::span<std::uint32_t> loop, std::size_t leftmost);
    Leftmost LeftmostOf(std::span<const std::uint32_t> loop) const;
    bool IsOuter(std::span<const std::uint32_t> loop, const Leftmost& leftmost) const;
    Corner CornerOf(const std::vector<std::uint32_t>& ways) const;
    static std::uint32_t WayOf(const Passage& passage, std::uint32_t half);
    bool HasCommonWay(std::uint32_t half, std::vector<std::uint32_t>& common) const;
    void KeepBends(std::span<const std::uint32_t> loop, std::size_t from, std::size_t to);

    enum class Thin : std::uint32_t { AsIs, Inside, Outside };

    double tolerance;
    Thin thin = Thin::AsIs;
    double discRadius = 0.0;
    std::optional<ExtentBoxes> discCenters;
    Fill fill;
    bool hasArcs = false;
    bool areListed = false;            // elements, by `border` and `sources`; else each vertex begins a segment
    double largest = 0.0;              // coordinate of the vertices
    std::vector<PlanePoint> vertices;  // until elements are listed, loops are closed by their first one
    std::vector<BorderPiece> border;
    std::vector<BorderSource> sources;
    std::vector<BorderRing> rings;
    std::vector<Loop> loops;
    std::vector<Member> members;
    std::array<std::uint32_t, 2> memberCount{};

    std::vector<char> isLoopEnd;  // of each vertex
    std::optional<BoxHierarchy<LoopSegments>> stretchBoxes;
    std::vector<PlanePoint> places;  // of the vertices that are noded
    std::vector<Chain> chains;
    std::vector<PlanarFaces::Detour> detours;  // of the chains
    std::optional<BorderNoding> noding;
    std::vector<PlanarFaces::Edge> edges;  // those of the chains come last
    std::vector<std::uint32_t> edgeOfPiece;
    std::vector<std::uint32_t> firstRun;  // of each edge, in `runs`
    std::vector<Passage> runs;
    std::optional<PlanarFaces> faces;

    // The place of a walk.
    std::vector<int> windings;  // of each ring
    std::array<std::uint32_t, 2> insideCount{};
    std::array<std::vector<std::uint32_t>, 2> inside;  // numbers of the members that the walk is in

    // What areas are built from.
    std::vector<std::uint32_t> regionOf;  // of each face; none: not part of the result
    std::vector<char> isWalked;           // of each half-edge
    std::vector<std::uint32_t> placeOf;   // of each node, in the walk
    std::vector<std::uint32_t> walk;      // half-edges
    std::vector<std::uint32_t> walked;    // all of them
    std::vector<std::uint32_t> alongAll;  // ways along half-edges of a loop
    std::vector<char> isCorner;           // of the origins in a loop
};

}  // namespace Kalvio::Math::detail
