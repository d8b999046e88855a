#pragma once

#include "kalvio/areas/BufferCreator.h"
#include "kalvio/areas/detail/AreaOverlay.h"
#include "kalvio/areas/detail/ChainPath.h"
#include "kalvio/areas/detail/PlaneVectors.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Kalvio::Math::detail {

/// The outlines of the strips beside chains and rings, as loops whose windings add up.
///
/// Each element has a strip on its right, of the given distance, on a concave side no deeper than the centre of its
/// arc; each corner that turns away from the strips a sector. Where strips and sectors meet, their outlines cancel out:
/// what is left is the offset of each element, an arc (kite, triangle) about each corner that turns away, and the way
/// over the corner itself at all others. There, as long as the strips of both segments hold the kite between the
/// corner and the meeting of the offsets, a loop around the kite is left out: of the strips that hold a point at least
/// one more is in a row than there are kites between them. So the loops wind around a point beside the chains as often
/// as something holds it, or less often but still at least once, never backward.
class BufferOutline {
public:
    struct Style {
        double distance = 0.0;  ///< negative: to the left of rings; what it cuts off has negative windings
        double height = 0.0;    ///< of chords; 0: true arcs
        double tolerance = 0.0;
        BufferCreator::Shape shape;
    };
    /// A chain (without an arc at its last corner) or a ring.
    using Path = AreaOverlay::Ring;

    explicit BufferOutline(const Style& given);

    /// Whether rounding leaves the outline of these paths its shape: it moves the crossing of two circles of a large
    /// radius by some epsilon * radius^2 / distance of the centres, here no farther than the tolerance, taken as at
    /// least 1e-10.
    static bool IsTold(std::span<const Path> paths, double distance, double tolerance);

    /// The ring itself together with what lies beside it: on its right less than the distance away.
    void AddRing(Path ring);
    /// What lies beside a chain, by the sides and ends of the shape. A chain that ends where it starts is closed.
    void AddChain(const Path& chain);
    void AddPoint(const PlanePoint& point);

    /// The offsets of the elements of a chain, joined at the corners, and nothing else: on concave sides where they
    /// meet, by a segment where they do not. Arcs whose centre lies within the distance come out on its far side.
    /// @param bends  of the chain, their corners in ascending order; then those of the parallel, without a corner (the
    ///               largest number) where they are left out
    Path ParallelOf(const Path& chain, std::span<Bend> bends = {});
    /// Elements of the loops, one loop after the other: from a number up to another.
    struct Elements {
        std::uint32_t from = 0;
        std::uint32_t end = 0;
    };
    /// Those on the right of the first chain, and those on its left, which run back.
    const Elements& GetRight() const { return right; }
    const Elements& GetLeft() const { return left; }

    /// Leaves out, once all is added, what runs deep within the distance of one corner, as straight on does as well
    /// there: most crossings of the outlines beside short elements. What lies between both ways is in the disc about
    /// that corner, so that windings change nowhere else. Joins and ends are round, chains have both sides.
    /// @return the discs: a face that wrong windings tell of is all inside of them, any other one all outside
    AreaOverlay::Discs LeaveOut();

    const std::vector<AreaOverlay::Ring>& GetLoops() const { return loops; }

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    // An element, of less than a turn.
    struct Way {
        PlanePoint from;
        PlanePoint to;
        PlanePoint direction;     // at the start
        PlanePoint endDirection;  // at the end
        PlanePoint center;
        int sense = 0;
        bool isCollapsed = false;  // the centre lies within the strip
        double length = 0.0;       // of a segment
        std::size_t bend = none;   // its number
    };
    enum class Turn { Smooth, Point, Mitre, Concave, Convex, End };
    struct Joint {
        Turn turn = Turn::Smooth;
        PlanePoint at;  // where the offsets of both elements, or their tangents, meet
    };

    // Where the elements begin beside which a loop runs, and for each of its corners which of them that is.
    struct Feet {
        std::vector<PlanePoint> corners;
        std::vector<std::uint32_t> cornerOf;
    };

    bool IsClosed(const Path& chain) const;

    void DropCorners(Path& path, bool isClosed) const;
    void DropCorners(std::vector<Way>& ways, bool isClosed) const;
    std::vector<Way> Reversed(const std::vector<Way>& ways) const;
    static Path CornersOf(const std::vector<Way>& ways, bool isClosed);
    bool IsCollapsed(const PlanePoint& p, const PlanePoint& center, int sense) const;
    std::vector<Way> WaysOf(const Path& path, bool isClosed) const;
    void AppendArc(std::vector<Way>& ways, const AreaOverlay::Corner& corner, const PlanePoint& end) const;
    double GapOfArcs(const Way& a, const Way& b) const;
    Joint JointOf(const Way& a, const Way& b, bool isLast) const;
    // Appends the loop of the offsets; the way `firstEnd`, and then the last one, come to ends of a chain.
    void Follow(const std::vector<Way>& ways, bool isClosed, std::size_t firstEnd = none);
    void CloseCorner(const Way& a, const Way& b, const Joint& joint);
    void RoundOff(const Way& a, const Way& b);
    PlanePoint Beside(const PlanePoint& p, const PlanePoint& direction) const {
        return p + RightOf(direction) * style.distance;
    }
    void GoTo(const PlanePoint& p) { loops.back().push_back({p, 0, {}}); }
    static std::size_t LastWithin(const Path& loop, std::size_t from, std::size_t least, const PlanePoint& center,
                                  double radius);
    static bool IsArcWithin(const AreaOverlay::Corner& corner, const PlanePoint& end, const PlanePoint& center,
                            double radius);

    Style style;
    bool isBare = false;  // offsets alone
    std::span<Bend> bends;
    Elements right;
    Elements left;
    double reach;                     // the distance without its sign
    double excess;                    // by which a mitre may stand for a sector
    bool isRound;                     // joins
    std::vector<PlanePoint> compass;  // unit vectors all around, in equal steps; empty for true arcs
    std::vector<AreaOverlay::Ring> loops;
    std::vector<Feet> feet;  // of the loops
};

}  // namespace Kalvio::Math::detail
