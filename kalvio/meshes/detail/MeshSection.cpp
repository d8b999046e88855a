#include "kalvio/meshes/detail/MeshSection.h"

#include "kalvio/core/detail/Constants.h"
#include "kalvio/meshes/detail/ChainRaster.h"
#include "kalvio/meshes/detail/SectionPieces.h"
#include "kalvio/meshes/detail/Triangles.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

double LargestOf(const Point2D& p) { return std::max(std::abs(p.GetX()), std::abs(p.GetY())); }

// Below this differences of the coordinates mean nothing.
double NoiseAt(const Point2D& a, const Point2D& b) {
    return std::max(numericalZero, 4.0 * std::numeric_limits<double>::epsilon() * std::max(LargestOf(a), LargestOf(b)));
}

// Height on an edge above a plan position beside it; the same whichever way the edge is given.
double HeightOnEdge(const Point3D& p, const Point3D& q, const Point2D& position) {
    if (IsLess(q, p)) return HeightOnEdge(q, p, position);
    const Vec2D along = q.GetPoint2D() - p.GetPoint2D();
    const double squared = along.NormSquared();
    const double share = squared > 0.0 ? (position - p.GetPoint2D()).DotProduct(along) / squared : 0.0;
    return p.GetZ() + (q.GetZ() - p.GetZ()) * std::clamp(share, 0.0, 1.0);
}

// Height of a triangle that is not vertical above a plan position in it.
double HeightOnTriangle(const std::array<CutCorner, 3>& corners, const Point2D& position) {
    const Point3D& a = corners[0].point;
    const Point3D& b = corners[1].point;
    const Point3D& c = corners[2].point;
    const Vec3D normal = (b - a).CrossProduct(c - a);
    const double rise = normal.GetX() * (position.GetX() - a.GetX()) + normal.GetY() * (position.GetY() - a.GetY());
    const auto [low, high] = std::minmax({a.GetZ(), b.GetZ(), c.GetZ()});
    return std::clamp(a.GetZ() - rise / normal.GetZ(), low, high);
}

// The vertical plane over one line in plan, and what it cuts.
//
// Where the section ends, at an end of the segment, its plan position is that end exactly, and its height comes from
// the triangle, edge or corner there alone: the segments before and after a bend of a chain find the same point, but
// for noise where they take it from different ones.
class PlanCut {
public:
    PlanCut(const Point2D& a, const Point2D& b, PlanReach planReach, Upright uprightTriangles)
        : start(a), end(b), direction(b - a), length(direction.Length()), reach(planReach), upright(uprightTriangles) {
        direction /= length;
        noise = NoiseAt(a, b);
    }

    bool IsSound() const { return length > numericalZero && length <= largestDouble; }
    double GetLength() const { return length; }
    double GetNoise() const { return noise; }
    /// The station of the start, the bends at the ends, and whether walls that stand at the end are left to a segment
    /// that begins there.
    void Place(double station, std::size_t bendAtStart, std::size_t bendAtEnd, bool isFollowed) {
        startStation = station;
        startBend = bendAtStart;
        endBend = bendAtEnd;
        leavesWallsAtEnd = isFollowed;
    }

    /// Sides on which the plan position is, one bit each, two where noise decides. A triangle whose corners share a
    /// side beyond the line or an end of the segment, so have not all bits among them, is not cut.
    std::uint8_t SidesOf(const Point3D& p) const {
        const double x = p.GetX() - start.GetX();
        const double y = p.GetY() - start.GetY();
        const double height = direction.GetX() * y - direction.GetY() * x;
        unsigned int sides = (height >= -noise ? 1U : 0U) | (height <= noise ? 2U : 0U);
        if (reach == PlanReach::InfiniteLine) return static_cast<std::uint8_t>(sides | 12U);
        const double along = direction.GetX() * x + direction.GetY() * y;
        sides |= (along >= -noise ? 4U : 0U) | (along <= length + noise ? 8U : 0U);
        return static_cast<std::uint8_t>(sides);
    }
    static constexpr unsigned int allSides = 15U;
    static constexpr double steepest = 100.0;  // slope of a surface; what is steeper is a wall

    void Add(const Point3D& a, const Point3D& b, const Point3D& c, SectionPieces& pieces) {
        const std::array<CutCorner, 3> corners{CornerAt(a), CornerAt(b), CornerAt(c)};
        for (const CutCorner& corner : corners) {
            if (!std::isfinite(corner.height) || !std::isfinite(corner.point.GetZ())) return;
        }
        const TriangleCut cut(corners);
        if (cut.count == 3 && upright == Upright::Slivers) return edges.TakeSliver(corners);
        if (edges.Take(corners, cut) || cut.count != 2) return;
        const auto heightAt = [&](const Point2D& position) { return HeightOnTriangle(corners, position); };
        const Vec3D normal = (b - a).CrossProduct(c - a);
        const double slope = std::hypot(normal.GetX(), normal.GetY()) / std::abs(normal.GetZ());
        AddClipped(EndOf(cut.ends[0]), EndOf(cut.ends[1]), slope, heightAt, pieces);
    }

    /// Adds the edges in the plane, after all triangles.
    void Finish(SectionPieces& pieces) {
        edges.ForEach([&](const Point3D& from, const Point3D& to) {
            const auto heightAt = [&](const Point2D& position) { return HeightOnEdge(from, to, position); };
            const double slope = std::abs(to.GetZ() - from.GetZ()) / from.GetPoint2D().Distance(to.GetPoint2D());
            AddClipped({from, AlongOf(from), {&from, &from}}, {to, AlongOf(to), {&to, &to}}, slope, heightAt, pieces);
        });
    }

private:
    // The end of a piece, and the corner (twice) or the edge that it lies on.
    struct PieceEnd {
        Point3D point;
        double along;
        std::pair<const Point3D*, const Point3D*> edge;
        std::size_t bend = SectionPieces::noBend;
    };

    double AlongOf(const Point3D& p) const { return direction.DotProduct(p.GetPoint2D() - start); }
    CutCorner CornerAt(const Point3D& p) const {
        const double height = direction.PerpDotProduct(p.GetPoint2D() - start);
        return {p, height, height > noise ? 1 : height < -noise ? -1 : 0};
    }
    PieceEnd EndOf(const CutEnd& cutEnd) const {
        const Point3D point = cutEnd.GetPoint();
        return {point, AlongOf(point), {&cutEnd.first->point, &cutEnd.second->point}};
    }

    // @param slope  rise over run, of what heightAt gives
    template <class HeightAt>
    void AddClipped(PieceEnd from, PieceEnd to, double slope, HeightAt&& heightAt, SectionPieces& pieces) const {
        if (from.along > to.along) std::swap(from, to);
        if (reach == PlanReach::Segment) {
            const bool isWall = upright == Upright::Walls && to.along - from.along <= noise;
            if (isWall ? to.along < -noise || from.along > length + noise ||
                             (leavesWallsAtEnd && from.along >= length - noise)
                       : to.along <= noise || from.along >= length - noise) {
                return;
            }
            for (PieceEnd* const pieceEnd : {&from, &to}) {
                MoveToEnd(start, startBend, -pieceEnd->along, *pieceEnd, heightAt);
                MoveToEnd(end, endBend, pieceEnd->along - length, *pieceEnd, heightAt);
            }
        }
        // The position may be off by the noise across the line and along it, for both cuts that meet at a bend.
        const double heightNoise = 4.0 * noise * (1.0 + (slope < steepest ? slope : steepest));
        pieces.AddPiece({from.point, startStation + from.along, from.bend, heightNoise},
                        {to.point, startStation + to.along, to.bend, heightNoise});
    }

    // @param beyond  how far the piece reaches past the end of the segment
    template <class HeightAt>
    void MoveToEnd(const Point2D& segmentEnd, std::size_t bend, double beyond, PieceEnd& pieceEnd,
                   HeightAt&& heightAt) const {
        if (beyond < -noise) return;
        const double height = beyond > noise ? heightAt(segmentEnd)
                                             : HeightOnEdge(*pieceEnd.edge.first, *pieceEnd.edge.second, segmentEnd);
        pieceEnd.point = Point3D(segmentEnd, height);
        pieceEnd.along = AlongOf(pieceEnd.point);
        pieceEnd.bend = bend;
    }

    Point2D start;
    Point2D end;
    Vec2D direction;
    double length;
    PlanReach reach;
    Upright upright;
    double noise;
    double startStation = 0.0;
    std::size_t startBend = SectionPieces::noBend;
    std::size_t endBend = SectionPieces::noBend;
    bool leavesWallsAtEnd = false;
    PlaneEdges edges;
};

// Points no further than noise from the one before make no segment.
std::vector<Point2D> WithoutRepeats(const std::vector<Point2D>& chain) {
    std::vector<Point2D> kept;
    kept.reserve(chain.size());
    for (const Point2D& point : chain) {
        if (!kept.empty()) {
            // Not even the noise of infinity takes a point that is infinitely far.
            const double noise = std::min(NoiseAt(kept.back(), point), largestDouble);
            if (kept.back().Distance(point) <= noise) continue;
        }
        kept.push_back(point);
    }
    return kept;
}

}  // namespace

void AppendSection(const std::vector<Point3D>& vertices, const std::vector<unsigned int>& indexes, const Point2D& a,
                   const Point2D& b, PlanReach reach, std::vector<LineString3D>& out) {
    PlanCut cut(a, b, reach, Upright::Walls);
    if (!cut.IsSound()) return;
    std::vector<std::uint8_t> sides(vertices.size());
    for (std::size_t i = 0; i < vertices.size(); ++i) sides[i] = cut.SidesOf(vertices[i]);
    SectionPieces pieces;
    ForEachTriangle(indexes, vertices.size(), [&](const unsigned int* corners, std::size_t) {
        if ((sides[corners[0]] | sides[corners[1]] | sides[corners[2]]) != PlanCut::allSides) return;
        cut.Add(vertices[corners[0]], vertices[corners[1]], vertices[corners[2]], pieces);
    });
    cut.Finish(pieces);
    pieces.Chain(out);
}

void AppendSection(const std::vector<Point3D>& vertices, const std::vector<unsigned int>& indexes,
                   const std::vector<Point2D>& points, Upright upright, std::vector<LineString3D>& out) {
    const std::vector<Point2D> chain = WithoutRepeats(points);
    std::vector<PlanCut> cuts;
    cuts.reserve(chain.size());
    Extent box;
    double station = 0.0;
    double noise = 0.0;
    for (std::size_t i = 1; i < chain.size(); ++i) {
        const PlanCut& cut = cuts.emplace_back(chain[i - 1], chain[i], PlanReach::Segment, upright);
        if (!cut.IsSound()) continue;
        noise = std::max(noise, cut.GetNoise());
        box.Add(chain[i - 1]);
        box.Add(chain[i]);
    }
    const bool isClosed = !chain.empty() && chain.front().Distance(chain.back()) == 0.0;
    for (std::size_t i = 0; i < cuts.size(); ++i) {
        if (!cuts[i].IsSound()) continue;
        const std::size_t next = i + 1 < cuts.size() || !isClosed ? i + 1 : 0;
        cuts[i].Place(station, i, next, next < cuts.size() && cuts[next].IsSound());
        station += cuts[i].GetLength();
    }
    if (!(station > 0.0)) return;

    // Most triangles are far from the chain: cells of about two triangles in width tell, then boxes over segments.
    const std::size_t triangleCount = indexes.size() / 3;
    ChainRaster raster(box, noise, static_cast<std::size_t>(0.35 * std::sqrt(static_cast<double>(triangleCount))));
    for (std::size_t i = 1; i < chain.size(); ++i) {
        if (cuts[i - 1].IsSound()) raster.Mark(chain[i - 1], chain[i]);
    }
    std::vector<ChainRaster::Cell> cells;
    cells.reserve(vertices.size());
    for (const Point3D& vertex : vertices) cells.push_back(raster.CellOf(vertex));
    const SegmentBoxes boxes(chain);
    SectionPieces pieces;
    ForEachTriangle(indexes, vertices.size(), [&](const unsigned int* corners, std::size_t) {
        if (!raster.MayMeet(cells[corners[0]], cells[corners[1]], cells[corners[2]])) return;
        const Point3D& a = vertices[corners[0]];
        const Point3D& b = vertices[corners[1]];
        const Point3D& c = vertices[corners[2]];
        Extent extent;
        for (const Point3D* const p : {&a, &b, &c}) extent.Add(Point2D(p->GetX(), p->GetY()));
        boxes.ForEachNear(extent, noise, [&](std::size_t segment) {
            PlanCut& cut = cuts[segment];
            if (cut.IsSound() && (cut.SidesOf(a) | cut.SidesOf(b) | cut.SidesOf(c)) == PlanCut::allSides) {
                cut.Add(a, b, c, pieces);
            }
            return false;
        });
    });
    for (PlanCut& cut : cuts) cut.Finish(pieces);
    pieces.Chain(out);
}

}  // namespace Kalvio::Math::detail
