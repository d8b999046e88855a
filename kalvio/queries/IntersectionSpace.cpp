#include "kalvio/core/ProjectionPlane.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/Triangle3D.h"
#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/meshes/TriangleStrip3D.h"
#include "kalvio/meshes/detail/SectionPieces.h"
#include "kalvio/polygons/Polygon3D.h"
#include "kalvio/polygons/PolygonCurve3D.h"
#include "kalvio/polygons/detail/RingCorners.h"
#include "kalvio/polygons/detail/RingPlane.h"
#include "kalvio/queries/GeometryCreator.h"
#include "kalvio/queries/Intersection.h"
#include "kalvio/queries/detail/CountAppended.h"
#include "kalvio/queries/detail/PlaneHeights.h"
#include "kalvio/queries/detail/PlaneSection.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Kalvio::Math {

namespace {

using detail::CountAppended;
using detail::CutCorner;
using detail::PlaneHeights;

int CountOf(IntersectionResult result) { return result == IntersectionResult::Intersecting ? 1 : 0; }

bool IsFinite(const Vec3D& v) { return std::isfinite(v.GetX()) && std::isfinite(v.GetY()) && std::isfinite(v.GetZ()); }

double LargestCoordinate(const Line3D& line) {
    double largest = 0.0;
    for (int axis = 0; axis < 3; ++axis) {
        largest = std::max({largest, std::abs(line.GetStart()[axis]), std::abs(line.GetEnd()[axis])});
    }
    return largest;
}

// Two lines of a length, with what the functions on lines in space ask of them.
struct LinePair {
    LinePair(const Line3D& first, const Line3D& second)
        : a(first),
          b(second),
          along(first.GetEnd() - first.GetStart()),
          other(second.GetEnd() - second.GetStart()),
          between(second.GetStart() - first.GetStart()),
          length(along.Length()),
          otherLength(other.Length()) {
        along /= length;
        other /= otherLength;
        normal = along.CrossProduct(other);
    }

    bool AreFinite() const {
        return std::isfinite(length) && std::isfinite(otherLength) && std::isfinite(between.Length());
    }
    bool AreDegenerate(double tolerance) const { return length <= tolerance || otherLength <= tolerance; }
    /// Over the longer length the lines part by no more than the epsilon or what the rounding of the shorter's
    /// coordinates makes of it.
    bool AreParallel(double epsilon) const {
        const double rounding =
            4.0 * std::numeric_limits<double>::epsilon() * std::max(LargestCoordinate(a), LargestCoordinate(b));
        const double longer = std::max(length, otherLength);
        return normal.Length() * longer <= std::max(epsilon, rounding * longer / std::min(length, otherLength));
    }
    double DistanceOfParallels() const { return between.CrossProduct(length >= otherLength ? along : other).Length(); }
    /// Lengths from the starts to the places where the infinite lines come nearest to each other.
    double NearestOnFirst() const { return between.CrossProduct(other).DotProduct(normal) / normal.NormSquared(); }
    double NearestOnSecond() const { return between.CrossProduct(along).DotProduct(normal) / normal.NormSquared(); }

    const Line3D& a;
    const Line3D& b;
    Vec3D along;  // unit, as the other one
    Vec3D other;
    Vec3D between;  // from start to start
    Vec3D normal;
    double length;
    double otherLength;
};

// The shortest of the ways from an end of one segment to the other segment.
Line3D ShortestFromEnds(const Line3D& a, const Line3D& b) {
    Line3D shortest;
    double least = std::numeric_limits<double>::infinity();
    const auto offer = [&](const Point3D& end, const Line3D& segment, bool isOfFirst) {
        const detail::SegmentFoot foot(end, segment.GetStart(), segment.GetEnd(), 0.0);
        if (!(foot.squaredDistance < least)) return;
        least = foot.squaredDistance;
        const Point3D on = foot.PointOn(segment.GetStart(), segment.GetEnd());
        shortest = isOfFirst ? Line3D(end, on) : Line3D(on, end);
    };
    offer(a.GetStart(), b, true);
    offer(a.GetEnd(), b, true);
    offer(b.GetStart(), a, false);
    offer(b.GetEnd(), a, false);
    return shortest;
}

std::array<CutCorner, 3> CutCorners(const Point3D& a, const Point3D& b, const Point3D& c, const PlaneHeights& heights) {
    std::array<CutCorner, 3> corners{CutCorner{a}, CutCorner{b}, CutCorner{c}};
    for (CutCorner& corner : corners) {
        corner.height = heights.HeightOf(corner.point);
        corner.side = heights.SideOf(corner.height);
    }
    return corners;
}

bool AreFinite(const std::array<CutCorner, 3>& corners) {
    return std::all_of(corners.begin(), corners.end(), [](const CutCorner& c) { return std::isfinite(c.height); });
}

IntersectionResult CutRings(const PolygonCurve3D* polygon, const RingCurve3D& boundary, const Plane3D& plane,
                            std::vector<Line3D>& out, const Tolerances& tolerances) {
    const PlaneHeights heights(plane, boundary.GetStartPoint(), tolerances.UserTolerance());
    const Vec3D normal = detail::DoubledVectorArea(detail::CornersOf(boundary), boundary.GetStartPoint());
    if (heights.IsDegenerate() || normal.NormSquared() == 0.0) return IntersectionResult::Degenerate;
    detail::PlaneSection section(heights);
    section.AddRing(boundary);
    if (polygon != nullptr) {
        for (unsigned int i = 0; i < polygon->GetNumInnerRings(); ++i) {
            section.AddRing(polygon->GetInnerRingAtIndex(i));
        }
    }
    return section.Finish(normal, out);
}

}  // namespace

IntersectionResult Intersection::ShortestLineBetweenLines(const Line3D& a, const Line3D& b, Line3D& out,
                                                          const Tolerances& tolerances) {
    const LinePair pair(a, b);
    if (pair.AreDegenerate(tolerances.UserTolerance())) return IntersectionResult::Degenerate;
    if (!pair.AreFinite()) return IntersectionResult::NoIntersection;
    if (pair.AreParallel(tolerances.SystemEpsilon())) {
        return pair.DistanceOfParallels() <= tolerances.UserTolerance() ? IntersectionResult::Coincident
                                                                        : IntersectionResult::NoIntersection;
    }
    const Point3D from = a.GetStart() + pair.along * pair.NearestOnFirst();
    const Point3D to = b.GetStart() + pair.other * pair.NearestOnSecond();
    if (!IsFinite(to - from)) return IntersectionResult::NoIntersection;
    out = Line3D(from, to);
    return IntersectionResult::Intersecting;
}

int Intersection::ShortestLineBetweenLines(const Line3D& a, const Line3D& b, Line3D& out, double tolerance) {
    return CountOf(ShortestLineBetweenLines(a, b, out, Tolerances(tolerance)));
}

IntersectionResult Intersection::ShortestLineBetweenLineSegments(const Line3D& a, const Line3D& b, Line3D& out,
                                                                 const Tolerances& tolerances) {
    const LinePair pair(a, b);
    if (pair.AreDegenerate(tolerances.UserTolerance())) return IntersectionResult::Degenerate;
    if (!pair.AreFinite()) return IntersectionResult::NoIntersection;
    if (!pair.AreParallel(tolerances.SystemEpsilon())) {
        const double onFirst = pair.NearestOnFirst();
        const double onSecond = pair.NearestOnSecond();
        if (onFirst >= 0.0 && onFirst <= pair.length && onSecond >= 0.0 && onSecond <= pair.otherLength) {
            out = Line3D(a.GetStart() + pair.along * onFirst, b.GetStart() + pair.other * onSecond);
            return IntersectionResult::Intersecting;
        }
    }
    // Distances of segments are convex: nearest inside both, or else at an end.
    out = ShortestFromEnds(a, b);
    return IntersectionResult::Intersecting;
}

int Intersection::ShortestLineBetweenLineSegments(const Line3D& a, const Line3D& b, Line3D& out, double tolerance) {
    return CountOf(ShortestLineBetweenLineSegments(a, b, out, Tolerances(tolerance)));
}

IntersectionResult Intersection::LineLine(const Line3D& a, const Line3D& b, Point3D& out,
                                          const Tolerances& tolerances) {
    Line3D shortest;
    const IntersectionResult result = ShortestLineBetweenLines(a, b, shortest, tolerances);
    if (result != IntersectionResult::Intersecting) return result;
    if (!(shortest.GetLength() <= tolerances.UserTolerance())) return IntersectionResult::NoIntersection;
    out = shortest.GetStart() + (shortest.GetEnd() - shortest.GetStart()) * 0.5;
    return result;
}

int Intersection::LineLine(const Line3D& a, const Line3D& b, Point3D& out, double tolerance) {
    return CountOf(LineLine(a, b, out, Tolerances(tolerance)));
}

IntersectionResult Intersection::LineLine(const Line3D& a, const Line3D& b, ProjectionPlane plane, Point3D& out,
                                          const Tolerances& tolerances) {
    const auto projected = [plane](const Point3D& p) { return GeometryCreator::Point2DFromPoint3D(p, plane); };
    const Point2D a1 = projected(a.GetStart());
    const Point2D a2 = projected(a.GetEnd());
    Point2D crossing;
    const IntersectionResult result =
        LineLine(a1, a2, projected(b.GetStart()), projected(b.GetEnd()), crossing, tolerances);
    if (result != IntersectionResult::Intersecting) return result;
    const double share = (crossing - a1).DotProduct(a2 - a1) / (a2 - a1).NormSquared();
    const Point3D on = a.GetStart() + (a.GetEnd() - a.GetStart()) * share;
    if (!IsFinite(on - Point3D::origo())) return IntersectionResult::NoIntersection;
    out = on;
    return result;
}

int Intersection::LineLine(const Line3D& a, const Line3D& b, ProjectionPlane plane, Point3D& out, double tolerance) {
    return CountOf(LineLine(a, b, plane, out, Tolerances(tolerance)));
}

IntersectionResult Intersection::LineSegmentPlane(const Line3D& segment, const Plane3D& plane, Point3D& out,
                                                  const Tolerances& tolerances) {
    const PlaneHeights heights(plane, segment.GetStart(), tolerances.UserTolerance());
    if (heights.IsDegenerate() || segment.GetLength() <= tolerances.UserTolerance()) {
        return IntersectionResult::Degenerate;
    }
    const double from = heights.HeightOf(segment.GetStart());
    const double to = heights.HeightOf(segment.GetEnd());
    if (!std::isfinite(from) || !std::isfinite(to)) return IntersectionResult::NoIntersection;
    const int fromSide = heights.SideOf(from);
    const int toSide = heights.SideOf(to);
    if (fromSide == 0 && toSide == 0) return IntersectionResult::Coincident;
    if ((from < 0.0 && to > 0.0) || (from > 0.0 && to < 0.0)) {
        out = segment.GetStart() + (segment.GetEnd() - segment.GetStart()) * (from / (from - to));
    } else if (fromSide == 0 || toSide == 0) {
        out = fromSide == 0 ? segment.GetStart() : segment.GetEnd();
    } else {
        return IntersectionResult::NoIntersection;
    }
    return IntersectionResult::Intersecting;
}

int Intersection::LineSegmentPlane(const Line3D& segment, const Plane3D& plane, Point3D& out, double tolerance) {
    return CountOf(LineSegmentPlane(segment, plane, out, Tolerances(tolerance)));
}

IntersectionResult Intersection::PolygonPlane(const Polygon3D& polygon, const Plane3D& plane, std::vector<Line3D>& out,
                                              const Tolerances& tolerances) {
    const std::vector<Point3D>& ring = polygon.GetPoints();
    if (ring.empty()) return IntersectionResult::Degenerate;
    const PlaneHeights heights(plane, ring.front(), tolerances.UserTolerance());
    const Vec3D normal = detail::DoubledVectorArea(ring, ring.front());
    if (heights.IsDegenerate() || normal.NormSquared() == 0.0) return IntersectionResult::Degenerate;
    detail::PlaneSection section(heights);
    section.AddRing(ring);
    for (unsigned int i = 0; i < polygon.GetNumHoleBoundaries(); ++i) {
        section.AddRing(polygon.GetHoleBoundary(i).GetPoints());
    }
    return section.Finish(normal, out);
}

int Intersection::PolygonPlane(const Polygon3D& polygon, const Plane3D& plane, std::vector<Line3D>& out,
                               double tolerance) {
    return CountAppended(out, tolerance, [&](const Tolerances& t) { PolygonPlane(polygon, plane, out, t); });
}

IntersectionResult Intersection::PolygonCurvePlane(const PolygonCurve3D& polygon, const Plane3D& plane,
                                                   std::vector<Line3D>& out, const Tolerances& tolerances) {
    return CutRings(&polygon, polygon.GetBoundary(), plane, out, tolerances);
}

int Intersection::PolygonCurvePlane(const PolygonCurve3D& polygon, const Plane3D& plane, std::vector<Line3D>& out,
                                    double tolerance) {
    return CountAppended(out, tolerance, [&](const Tolerances& t) { PolygonCurvePlane(polygon, plane, out, t); });
}

IntersectionResult Intersection::RingCurvePlane(const RingCurve3D& ring, const Plane3D& plane, std::vector<Line3D>& out,
                                                const Tolerances& tolerances) {
    return CutRings(nullptr, ring, plane, out, tolerances);
}

int Intersection::RingCurvePlane(const RingCurve3D& ring, const Plane3D& plane, std::vector<Line3D>& out,
                                 double tolerance) {
    return CountAppended(out, tolerance, [&](const Tolerances& t) { RingCurvePlane(ring, plane, out, t); });
}

IntersectionResult Intersection::TrianglePlane(const Triangle3D& triangle, const Plane3D& plane, Line3D& out,
                                               const Tolerances& tolerances) {
    const PlaneHeights heights(plane, triangle.GetPointA(), tolerances.UserTolerance());
    const auto corners = CutCorners(triangle.GetPointA(), triangle.GetPointB(), triangle.GetPointC(), heights);
    if (heights.IsDegenerate()) return IntersectionResult::Degenerate;
    if (!AreFinite(corners)) return IntersectionResult::NoIntersection;
    const Vec3D normal = detail::UnitNormalOf(triangle, tolerances.SystemEpsilon());
    if (normal.NormSquared() == 0.0) return IntersectionResult::Degenerate;
    const detail::TriangleCut cut(corners);
    if (cut.count == 0) return IntersectionResult::NoIntersection;
    if (cut.count == 3) return IntersectionResult::Coincident;
    const Point3D from = cut.ends[0].GetPoint();
    const Point3D to = cut.ends[cut.count == 2 ? 1 : 0].GetPoint();
    const bool isAlong = (to - from).DotProduct(normal.CrossProduct(heights.normal)) >= 0.0;
    out = isAlong ? Line3D(from, to) : Line3D(to, from);
    return IntersectionResult::Intersecting;
}

int Intersection::TrianglePlane(const Triangle3D& triangle, const Plane3D& plane, Line3D& out, double tolerance) {
    return CountOf(TrianglePlane(triangle, plane, out, Tolerances(tolerance)));
}

IntersectionResult Intersection::TriangleStripPlane(const TriangleStrip3D& strip, const Plane3D& plane,
                                                    std::vector<LineString3D>& out, const Tolerances& tolerances) {
    std::vector<unsigned int> indexes;
    if (!strip.ComputeIndexes(indexes) || indexes.empty()) return IntersectionResult::Degenerate;
    const std::vector<Point3D>& vertices = strip.GetVertices();
    const PlaneHeights heights(plane, vertices.front(), tolerances.UserTolerance());
    if (heights.IsDegenerate()) return IntersectionResult::Degenerate;
    std::vector<CutCorner> corners;
    corners.reserve(vertices.size());
    bool isAllOnPlane = true;
    for (const Point3D& vertex : vertices) {
        const double height = heights.HeightOf(vertex);
        if (!std::isfinite(height)) return IntersectionResult::NoIntersection;
        corners.push_back({vertex, height, heights.SideOf(height)});
        isAllOnPlane = isAllOnPlane && corners.back().side == 0;
    }
    if (isAllOnPlane) return IntersectionResult::Coincident;
    const std::size_t last = vertices.size() - 1;
    const Vec3D way = (vertices[last] - vertices[0]) + (vertices[last - 1] - vertices[1]);
    const auto end = [&](const Point3D& p) { return detail::SectionPieces::End{p, way.DotProduct(p - vertices[0])}; };
    detail::SectionPieces pieces;
    detail::PlaneEdges edges;
    for (std::size_t i = 0; i < indexes.size(); i += 3) {
        const std::array<CutCorner, 3> triangle{corners[indexes[i]], corners[indexes[i + 1]], corners[indexes[i + 2]]};
        const detail::TriangleCut cut(triangle);
        if (edges.Take(triangle, cut)) continue;
        if (cut.count == 2) pieces.AddPiece(end(cut.ends[0].GetPoint()), end(cut.ends[1].GetPoint()));
        if (cut.count == 1) pieces.AddPoint(end(cut.ends[0].GetPoint()));
    }
    edges.ForEach([&](const Point3D& from, const Point3D& to) { pieces.AddPiece(end(from), end(to)); });
    if (pieces.IsEmpty()) return IntersectionResult::NoIntersection;
    pieces.Chain(out);
    return IntersectionResult::Intersecting;
}

int Intersection::TriangleStripPlane(const TriangleStrip3D& strip, const Plane3D& plane, std::vector<LineString3D>& out,
                                     double tolerance) {
    return CountAppended(out, tolerance, [&](const Tolerances& t) { TriangleStripPlane(strip, plane, out, t); });
}

}  // namespace Kalvio::Math
