#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

/// What two chains have in common, gathered from what their segments or elements have in common.
namespace Kalvio::Math::detail {

/// How near two chains come where they meet: the user tolerance as a length, at least 1e-10.
inline double NearnessOf(const Tolerances& tolerances) {
    return (std::max)(numericalZero, std::abs(tolerances.UserTolerance()));
}

/// A place common to two chains: the point, and its lengths along both.
struct ChainPlace {
    Point2D point;
    double onFirst = 0.0;
    double onSecond = 0.0;
};

/// What one segment (element) of the first chain has in common with one of the second.
struct ChainContact {
    enum class Kind : std::uint32_t {
        Touch = 0,     // an end of one lies on the other
        Crossing = 1,  // they cross between their ends
        Along = 2,     // they run along each other from one place to the other
    };

    Kind kind = Kind::Touch;
    ChainPlace from;  // from ... to, ascending along the first: where the two are near each other, as far as is known
    ChainPlace to;
    ChainPlace at;  // stands for a touch or a crossing
};

/// Length of a chain, and whether it returns to its start: then its stations are cyclic.
struct ChainExtent {
    double length = 0.0;
    bool isClosed = false;
};

/// What two chains have in common: isolated places and the ends of the stretches along which they run together.
struct CommonPlaces {
    std::vector<ChainPlace> places;  // by length along the first
    bool coversFirst = false;        // the second runs along the first from end to end
    bool isSame = false;             // they do so along each other
};

/// Gathers the contacts of pairs into places. Contacts that lead into each other on both chains are one: of a run along
/// several segments only the outer ends are places, and a vertex that touches beside a crossing is part of it. Three
/// and more crossings that lead into each other, and touches that do so over more than eight tolerances, are a run too.
/// A run all around closed chains has its first point as its only place.
/// @param tolerance  a length > 0; contacts lead into each other when they are up to three tolerances apart
CommonPlaces GatherContacts(std::vector<ChainContact> contacts, const ChainExtent& first, const ChainExtent& second,
                            double tolerance);

/// Finds what two segments have in common, with parameters in [0, 1] in the place of lengths: a stretch longer than two
/// tolerances over which they stay within the tolerance of each other, else the point where they cross, else the first
/// end of one that touches the other.
/// @return false, `contact` untouched, when they come no nearer than the tolerance
bool FindCommon(const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2, double tolerance,
                ChainContact& contact);

/// Chains of points, each with its lengths, under one hierarchy of boxes over runs of their segments. The points must
/// stay as they are while this object is used.
class ChainSet {
public:
    /// @param nearness  a length > 0: the tolerance
    explicit ChainSet(double nearness) : tolerance(nearness) {}
    ChainSet(const ChainSet&) = delete;
    ChainSet& operator=(const ChainSet&) = delete;

    /// Points at most the tolerance from the one before are the same point. A chain that is not longer than the
    /// tolerance, or whose length is not finite, is kept without its segments.
    /// @return the length of the chain
    double Add(const std::vector<Point2D>& points, ChainSegments::Closing closing);
    std::size_t GetCount() const { return chains.size(); }

    struct Common {
        std::vector<Point2D> points;  // by chain of the first set, then by length along it
        std::size_t pairsOfSame = 0;  // number of pairs of chains that run along each other from end to end
    };
    /// What the chains of this set have in common with those of the other.
    Common FindCommonWith(const ChainSet& other) const;
    /// What different chains of this set have in common.
    Common FindCommonWithin() const;

private:
    struct Chain {
        ChainSegments segments;
        std::vector<double> lengths;  // from the start to every point and, for a ring, back to the start
        bool isClosed;
    };
    struct Run {
        std::size_t chain;
        std::size_t from;  // of its segments
        std::size_t to;
    };
    // The runs of all chains, those that lie near each other near each other in the order.
    struct Runs {
        static constexpr std::size_t longest = 6;  // segments in a run

        explicit Runs(const ChainSet& set);

        std::size_t GetCount() const { return runs.size(); }
        const Extent& GetExtent(std::size_t run) const { return extents[run]; }
        Extent GetExtent(std::size_t from, std::size_t to) const;

        std::vector<Run> runs;
        std::vector<Extent> extents;
    };
    struct PairContact {
        std::size_t first;  // chains
        std::size_t second;
        ChainContact contact;
    };

    static Common Gather(std::vector<PairContact> contacts, const ChainSet& first, const ChainSet& second);
    static void FindContacts(const ChainSet& first, const Run& run, const Extent& extent, const ChainSet& second,
                             const Run& otherRun, const Extent& otherExtent, std::vector<PairContact>& contacts);

    void Reduce(Chain& chain, const std::vector<Point2D>& points, ChainSegments::Closing closing);

    double tolerance;
    std::vector<Chain> chains;
    std::deque<std::vector<Point2D>> reduced;  // points of the chains that had too many
};

/// Appends the points that are not there yet at or behind position `from`: equal points differ by less than `equality`
/// in both coordinates. Time grows with the number of points, not with its square.
void AppendDistinct(const std::vector<Point2D>& added, std::vector<Point2D>& points, std::size_t from, double equality);

}  // namespace Kalvio::Math::detail
