#pragma once

#include "kalvio/areas/detail/PointGrid.h"
#include "kalvio/core/detail/BoxHierarchy.h"
#include "kalvio/polygons/detail/ExactPredicates.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// One element of a border as it was given: a segment, or an arc about a centre.
struct BorderSource {
    std::uint32_t ring = 0;
    int sense = 0;  // of an arc: 1 counter-clockwise, -1 clockwise; 0 for a segment
    PlanePoint center;
};

/// A stretch of a border from one node (before the noding: vertex) to another, along its source.
struct BorderPiece {
    std::uint32_t from = 0;
    std::uint32_t to = 0;
    std::uint32_t source = 0;
};

/// Cuts borders where they meet, so that what is left is a plane graph: nodes, and pieces that have nothing but nodes
/// in common.
///
/// Two rules of data normalisation (V. J. Milenkovic, Verifiable implementations of geometric algorithms using finite
/// precision arithmetic, 1988) are kept up until nothing is left to do. With the tolerance t and a little more, r:
///
/// 1. No two nodes lie within 1.42 t of each other, so that none are equal within t per coordinate. A vertex nearer
/// than that to an earlier one becomes it, and moves no
///    more after that. One that has no neighbour does not move at all.
/// 2. No node lies within r of a piece that does not end in it: the piece is cut there and both parts end in the node.
/// 3. No two pieces cross: they are cut at the node nearest to the crossing, which is made there when none is near.
///
/// Arcs keep their circles. A piece of an arc, a quarter turn at most, is seen as the arc through its two nodes whose
/// centre is the nearest to the one given, and lies within the triangle of its chord and its end tangents. Where the
/// arcs meet others is computed and cut like the rest; then, as long as the triangle of a piece meets another piece or
/// its triangle other than in a common node, the longer one of the two is halved, until it leaves its chord by less
/// than a quarter of the tolerance (or is no longer than a few) and counts as its chord. In the end chords can stand
/// for all pieces: no order about a node and no side of an area changes by that, and exact turns of chords decide about
/// arcs too.
///
/// Crossings are decided by exact turns, so that the graph is plane and not only nearly so: whatever walks it needs no
/// tolerance. A border that was closed stays closed, so that the windings of a ring about every face are whole numbers.
/// Arcs take several rounds. What was close in one of them is listed, and parts are looked for only there in the next.
/// The rounds end: nodes are only added, and there is room for so many; a piece is only replaced by shorter ones
/// between nodes (the cut of rule 2 shortens as 1.42 t > 2 r / sqrt(3), that of rule 3 as the nearest node is taken).
/// The result does not hang on the order of the pieces, as all choices of a round are made in the order of coordinates.
class BorderNoding {
public:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    /// Coordinates are finite.
    /// @param tolerance  raised as in `ToleranceFor`
    /// @param largest    coordinate of all borders
    BorderNoding(const std::vector<PlanePoint>& vertices, std::vector<BorderPiece> border,
                 const std::vector<BorderSource>& borderSources, double tolerance, double largest);

    /// The tolerance, raised to the rounding of the coordinates where that is more.
    static double ToleranceFor(double tolerance, double largest);

    /// @return false when the rounds have not ended: nothing of the result may be used
    [[nodiscard]] bool Run();

    const std::vector<PlanePoint>& GetNodes() const { return nodes; }
    /// The node that a vertex has become.
    std::uint32_t NodeOf(std::uint32_t vertex) const { return nodeOfVertex[vertex]; }
    const std::vector<BorderPiece>& GetPieces() const { return pieces; }
    /// Boxes over the pieces, after a run.
    const ExtentBoxes& GetBoxes() {
        if (!boxes) BuildBoxes();
        return *boxes;
    }
    /// The tolerance that was kept.
    double GetTolerance() const { return kept; }

private:
    // A point with its place in the order of coordinates: by strips as wide as nodes are apart, upward in each.
    struct Spot {
        double strip;
        PlanePoint at;
        std::uint32_t index;
    };
    // A node that a piece will be led through, and where along it.
    struct Cut {
        std::uint32_t piece;
        double along;
        std::uint32_t node;
    };
    struct Crossing {
        std::uint32_t first;
        std::uint32_t second;
        PlanePoint at;
    };
    // The line of a piece from its lower node to its higher one.
    struct Bow {
        PlanePoint start;
        PlanePoint end;
        bool isCurved = false;  // if not, the chord; nothing of what follows is set then
        PlanePoint toCenter;    // from the start
        PlanePoint apex;        // where the end tangents meet
        PlanePoint middle;
        double radius = 0.0;
        double side = 0.0;  // > 0: the centre lies left of the chord
    };

    Spot SpotOf(const PlanePoint& p, std::uint32_t index) const;
    static bool IsBefore(const Spot& a, const Spot& b);
    std::vector<std::uint32_t> FindOrAddNodes(const std::vector<PlanePoint>& points);
    void IndexNodes();
    bool IsNear(const PlanePoint& a, const PlanePoint& b) const;
    std::uint32_t FindNode(const PlanePoint& p) const;
    void SortOut(std::vector<Spot>& spots, std::uint32_t known, std::vector<std::uint32_t>& nodeOf) const;
    bool Precedes(const PlanePoint& a, const PlanePoint& b) const;
    bool IsLower(std::uint32_t a, std::uint32_t b) const;
    bool IsLower(const std::pair<std::uint32_t, std::uint32_t>& a,
                 const std::pair<std::uint32_t, std::uint32_t>& b) const;
    std::pair<std::uint32_t, std::uint32_t> EndsOf(const BorderPiece& piece) const;
    static std::vector<PlanePoint> PlacesOf(const std::vector<Crossing>& found);
    Extent ExtentOf(std::size_t piece) const;
    void BuildBoxes();
    std::vector<Extent> ExtentsOfPieces() const;
    bool ListClose();
    bool ListCloseParts();
    void FindMeetings();
    bool AreToCompare(std::size_t i, std::size_t j) const { return isFresh[i] != 0 || isFresh[j] != 0; }
    std::vector<char> FindClear(const std::vector<Crossing>& found) const;
    void Compare(std::uint32_t i, std::uint32_t j);
    void CompareBows(std::uint32_t i, std::uint32_t j);
    Bow BowOf(const BorderPiece& piece) const;
    Bow BowBetween(const PlanePoint& start, const PlanePoint& end, const PlanePoint& center, bool isLeft) const;
    static bool IsBetweenEnds(const Bow& bow, const PlanePoint& p);
    static bool AreParted(const Bow& a, const Bow& b);
    static bool AreApart(const Bow& a, const Bow& b);
    static bool ArePartedAt(const PlanePoint& node, const Bow& a, const Bow& b);
    bool CutNearBow(std::uint32_t piece, std::uint32_t node);
    bool FindBowCrossings(std::uint32_t i, std::uint32_t j);
    void Halve(std::uint32_t piece);
    void PartBows();
    void Part(std::uint32_t i, std::uint32_t j);
    bool IsNode(const PlanePoint& p, std::uint32_t node) const;
    bool IsBeside(const BorderPiece& piece, const PlanePoint& p, double distance) const;
    bool CutNear(std::uint32_t piece, std::uint32_t node);
    bool AddCut(std::uint32_t piece, std::uint32_t node);
    void FindCrossing(std::uint32_t i, std::uint32_t j);
    bool CutCrossings();
    void CutHalves();
    void SortCuts();
    void ApplyCuts(const std::vector<char>& areClear);

    const std::vector<BorderSource>& sources;
    double kept;      // the tolerance
    double reach;     // of rule 2
    double distinct;  // of rule 1
    std::vector<PlanePoint> nodes;
    std::vector<std::uint32_t> nodeOfVertex;
    std::vector<std::uint32_t> batches;  // where the nodes end that were added together
    PointGrid grid;                      // over the first nodes
    std::size_t inGrid = 0;
    std::vector<Spot> placed;  // the others in order, but for those of the last batch
    std::vector<BorderPiece> pieces;
    std::vector<char> isFresh;  // pieces that have not been compared with all others
    std::size_t freshCount = 0;
    std::vector<Cut> cuts;
    std::vector<Crossing> crossings;
    std::vector<Bow> bows;                                          // of the pieces, where there are arcs
    std::vector<std::pair<std::uint32_t, std::uint32_t>> unparted;  // pieces whose triangles meet
    std::vector<Crossing> halves;                                   // of pieces with themselves, at their middles
    bool hasArcs = false;
    bool isCoarse = false;    // many roundings of the coordinates fit into the tolerance
    bool isAnyClose = false;  // a node came close to a piece that it does not end
    std::optional<ExtentBoxes> boxes;
    // Where there are arcs, which take more than one round:
    std::vector<Extent> extents;         // of the pieces
    std::vector<std::uint32_t> partsOf;  // of each piece of the round before, where its parts begin
    std::vector<std::pair<std::uint32_t, std::uint32_t>> close;  // pieces whose extents come within the closeness
    double closeness = 0.0;
};

}  // namespace Kalvio::Math::detail
