#include "kalvio/areas/detail/MeshCut.h"

#include "kalvio/areas/detail/AreaOverlay.h"
#include "kalvio/areas/detail/PlaneVectors.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/meshes/detail/TriangleHeight.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"
#include "kalvio/polygons/detail/TriangulateRings.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

PlanePoint InPlan(const Point3D& p) { return {p.GetX(), p.GetY()}; }
Point2D PointOf(const PlanePoint& p) { return {p.x, p.y}; }
PlanePoint Plain(const Point2D& p) { return {p.GetX(), p.GetY()}; }

class MeshCut {
public:
    MeshCut(std::vector<Point3D>& meshVertices, std::vector<unsigned int>& meshIndexes, const Polygon2D& polygon,
            const std::function<bool(const Point2D&)>& isInsideArea)
        : vertices(meshVertices), indexes(meshIndexes), area(polygon), isInside(isInsideArea) {
        AddBorder(area.GetPoints());
        for (unsigned int i = 0; i < area.GetNumHoleBoundaries(); ++i) AddBorder(area.GetHoleBoundary(i).GetPoints());
        for (const unsigned int index : indexes) Span(InPlan(vertices[index]));
        constexpr double roundings = 32.0;
        tolerance = std::max(numericalZero, roundings * std::numeric_limits<double>::epsilon() * largest);
        near = 4.0 * tolerance;
    }

    bool Run() {
        AreaOverlay overlay(tolerance, AreaOverlay::Fill::NonZero);
        for (std::size_t first = 0; first + 2 < indexes.size(); first += 3) {
            const Corners corners{indexes[first], indexes[first + 1], indexes[first + 2]};
            if (!IsNearBorder(corners)) {
                if (isInside(PlaceOf(corners[0]))) Append(corners);
            } else if (IsUpright(corners)) {
                upright.push_back(corners);
            } else {
                const std::vector<Point2D> ring{PlaceOf(corners[0]), PlaceOf(corners[1]), PlaceOf(corners[2])};
                if (!overlay.Add(Polygon2D(ring), 0)) return false;
                cut.push_back(corners);
            }
        }
        if (!cut.empty()) {
            if (!overlay.Add(area, 1) || !overlay.Run()) return false;
            for (const AreaOverlay::Common& common : overlay.ExtractCommon()) {
                for (const AreaOverlay::Area& part : common.areas) Locate(common.first, part);
            }
        }
        FindStations();
        for (const Piece& piece : pieces) {
            if (!Triangulate(piece)) return false;
        }
        for (const Corners& corners : upright) CutUpright(corners);
        indexes = std::move(result);
        return true;
    }

private:
    using Corners = std::array<unsigned int, 3>;
    using Edge = std::pair<unsigned int, unsigned int>;  // the lower vertex first
    // A corner of a piece, and the sides of the triangle that it is on, one bit each.
    struct Place {
        PlanePoint at;
        unsigned int vertex;
        unsigned int sides;
    };
    struct Piece {
        std::uint32_t triangle;
        std::vector<std::vector<Place>> rings;
    };
    // Of an upright triangle, along its plan.
    struct Upright {
        Corners corners;  // the outer ones first and last
        PlanePoint from;
        PlanePoint direction;
        double length;
        double middle;  // station
        bool isReversed;

        double StationOf(const PlanePoint& p) const { return Dot(p - from, direction); }
    };

    Point2D PlaceOf(unsigned int vertex) const { return PointOf(InPlan(vertices[vertex])); }
    static Edge EdgeOf(unsigned int a, unsigned int b) { return std::minmax(a, b); }
    void Span(const PlanePoint& p) { largest = std::max({largest, std::abs(p.x), std::abs(p.y)}); }
    void AddBorder(const std::vector<Point2D>& ring) {
        borders.emplace_back(ring, ChainSegments::Closing::Ring);
        for (const Point2D& p : ring) Span(Plain(p));
    }
    void Append(const Corners& corners) { result.insert(result.end(), corners.begin(), corners.end()); }

    // Within twice the reach of what the overlay may move.
    bool IsNearBorder(const Corners& corners) const {
        Extent extent;
        for (const unsigned int vertex : corners) extent.Add(PlaceOf(vertex));
        return std::any_of(borders.begin(), borders.end(), [&](const SegmentBoxes& ring) {
            return ring.ForEachNear(extent, 2.0 * near, [&](std::size_t segment) {
                return !IsApart(corners, Plain(ring.GetStart(segment)), Plain(ring.GetEnd(segment)));
            });
        });
    }

    // By the normals of all sides.
    bool IsApart(const Corners& corners, const PlanePoint& from, const PlanePoint& to) const {
        const std::array<PlanePoint, 3> places{InPlan(vertices[corners[0]]), InPlan(vertices[corners[1]]),
                                               InPlan(vertices[corners[2]])};
        const auto isBetween = [&](const PlanePoint& direction) {
            const PlanePoint normal = RightOf(direction);
            const auto [low, high] = std::minmax({Dot(from - places[0], normal), Dot(to - places[0], normal)});
            const double b = Dot(places[1] - places[0], normal);
            const double c = Dot(places[2] - places[0], normal);
            const double reach = 2.0 * near * std::sqrt(Square(normal));
            return high + reach < std::min({0.0, b, c}) || std::max({0.0, b, c}) + reach < low;
        };
        return isBetween(to - from) || isBetween(places[1] - places[0]) || isBetween(places[2] - places[1]) ||
               isBetween(places[0] - places[2]);
    }

    double DoubleArea(const Corners& corners) const {
        const PlanePoint a = InPlan(vertices[corners[0]]);
        return Cross(InPlan(vertices[corners[1]]) - a, InPlan(vertices[corners[2]]) - a);
    }
    bool IsUpright(const Corners& corners) const {
        double longest = 0.0;
        for (std::size_t k = 0; k < 3; ++k) {
            longest = std::max(longest, PlaceOf(corners[k]).Distance(PlaceOf(corners[(k + 1) % 3])));
        }
        return std::abs(DoubleArea(corners)) <= near * longest;
    }

    unsigned int VertexAt(const PlanePoint& p, double z) {
        const auto [found, isNew] =
            vertexAt.try_emplace(std::array{p.x, p.y, z}, static_cast<unsigned int>(vertices.size()));
        if (isNew) vertices.emplace_back(p.x, p.y, z);
        return found->second;
    }

    // The same vertex whichever triangle asks.
    unsigned int VertexOn(const Edge& edge, const PlanePoint& p) {
        const Point3D& a = vertices[edge.first];
        const Point3D& b = vertices[edge.second];
        const SegmentFoot foot(PointOf(p), PlaceOf(edge.first), PlaceOf(edge.second), 0.0);
        const unsigned int vertex = VertexAt(p, a.GetZ() + (b.GetZ() - a.GetZ()) * foot.parameter);
        std::vector<unsigned int>& known = onEdge[edge];
        if (std::find(known.begin(), known.end(), vertex) == known.end()) known.push_back(vertex);
        return vertex;
    }

    Place LocateCorner(const Corners& corners, const PlanePoint& p) {
        double least = near * near;
        std::size_t nearest = 3;
        for (std::size_t k = 0; k < 3; ++k) {
            const double off = Square(InPlan(vertices[corners[k]]) - p);
            if (!(off <= least)) continue;
            least = off;
            nearest = k;
        }
        if (nearest < 3) return {p, corners[nearest], (1U << nearest) | (1U << ((nearest + 2) % 3))};
        for (std::size_t k = 0; k < 3; ++k) {
            const auto [a, b] = EdgeOf(corners[k], corners[(k + 1) % 3]);
            const double off = SegmentFoot(PointOf(p), PlaceOf(a), PlaceOf(b), 0.0).squaredDistance;
            if (!(off <= least)) continue;
            least = off;
            nearest = k;
        }
        if (nearest < 3) {
            return {p, VertexOn(EdgeOf(corners[nearest], corners[(nearest + 1) % 3]), p), 1U << nearest};
        }
        std::array<std::array<double, 3>, 3> places;
        for (std::size_t k = 0; k < 3; ++k) {
            const Point3D& corner = vertices[corners[k]];
            places[k] = {corner.GetX(), corner.GetY(), corner.GetZ()};
        }
        return {p, VertexAt(p, HeightInTriangle(places[0], places[1], places[2], p.x, p.y)), 0};
    }

    void Locate(std::uint32_t triangle, const AreaOverlay::Area& part) {
        Piece piece{triangle, {}};
        for (const AreaOverlay::Ring& ring : part) {
            std::vector<Place>& places = piece.rings.emplace_back();
            for (const AreaOverlay::Corner& corner : ring) places.push_back(LocateCorner(cut[triangle], corner.at));
        }
        pieces.push_back(std::move(piece));
    }

    // The vertices that any triangle has on the side, from one place to the next.
    void AppendBetween(const Corners& corners, const Place& from, const Place& to, std::vector<Place>& places) const {
        const unsigned int side = from.sides & to.sides;
        if (!std::has_single_bit(side)) return;
        const auto k = static_cast<std::size_t>(std::countr_zero(side));
        const auto known = onEdge.find(EdgeOf(corners[k], corners[(k + 1) % 3]));
        if (known == onEdge.end()) return;
        const PlanePoint along = to.at - from.at;
        const std::size_t first = places.size();
        for (const unsigned int vertex : known->second) {
            const PlanePoint p = InPlan(vertices[vertex]);
            const double station = Dot(p - from.at, along);
            if (vertex == from.vertex || vertex == to.vertex || !(station > 0.0 && station < Square(along))) continue;
            places.push_back({p, vertex, side});
        }
        std::stable_sort(places.begin() + static_cast<std::ptrdiff_t>(first), places.end(),
                         [&](const Place& a, const Place& b) { return Dot(a.at - b.at, along) < 0.0; });
    }

    bool Triangulate(const Piece& piece) {
        const Corners& corners = cut[piece.triangle];
        std::vector<Place> places;
        std::vector<std::size_t> ends;
        for (const std::vector<Place>& ring : piece.rings) {
            for (std::size_t i = 0; i < ring.size(); ++i) {
                places.push_back(ring[i]);
                AppendBetween(corners, ring[i], ring[(i + 1) % ring.size()], places);
            }
            ends.push_back(places.size());
        }
        std::vector<PlanePoint> local;
        for (const Place& place : places) local.push_back(place.at - places.front().at);
        std::vector<unsigned int> made;
        if (places.size() == 3) {
            made = {0, 1, 2};
        } else if (!TriangulateRings(local, ends, 0.0, made)) {
            if (ends.size() > 1) return false;
            // A sliver that has points on its sides by no more than rounding.
            for (unsigned int k = 2; k < places.size(); ++k) made.insert(made.end(), {0, k - 1, k});
        }
        const bool isReversed = DoubleArea(corners) < 0.0;
        for (std::size_t i = 0; i < made.size(); i += 3) {
            AppendTriangle(places[made[i]].vertex, places[made[i + 1]].vertex, places[made[i + 2]].vertex, isReversed);
        }
        return true;
    }

    void AppendTriangle(unsigned int a, unsigned int b, unsigned int c, bool isReversed) {
        if (a == b || b == c || c == a) return;
        Append({a, isReversed ? c : b, isReversed ? b : c});
    }

    Upright MakeUpright(const Corners& corners) const {
        Upright made{corners, {}, {}, 0.0, 0.0, false};
        for (std::size_t k = 0; k < 3; ++k) {
            const double length = PlaceOf(corners[k]).Distance(PlaceOf(corners[(k + 2) % 3]));
            if (k > 0 && !(length > made.length)) continue;
            made.corners = {corners[k], corners[(k + 1) % 3], corners[(k + 2) % 3]};
            made.length = length;
        }
        // From the lower vertex, so that triangles along the same side agree.
        made.isReversed = made.corners[0] > made.corners[2];
        if (made.isReversed) std::swap(made.corners[0], made.corners[2]);
        made.from = InPlan(vertices[made.corners[0]]);
        if (made.length > 0.0) made.direction = (InPlan(vertices[made.corners[2]]) - made.from) * (1.0 / made.length);
        made.middle = made.StationOf(InPlan(vertices[made.corners[1]]));
        return made;
    }

    // The vertex at a station of the long side, and of the two others.
    unsigned int OnLong(const Upright& t, const PlanePoint& p) {
        const double station = t.StationOf(p);
        if (station <= near) return t.corners[0];
        if (station >= t.length - near) return t.corners[2];
        return VertexOn(EdgeOf(t.corners[0], t.corners[2]), p);
    }
    unsigned int OnShort(const Upright& t, const PlanePoint& p) {
        const double station = t.StationOf(p);
        if (std::abs(station - t.middle) <= near) return t.corners[1];
        if (station <= near) return t.corners[0];
        if (station >= t.length - near) return t.corners[2];
        return VertexOn(EdgeOf(t.corners[station < t.middle ? 0 : 2], t.corners[1]), p);
    }

    // Places on the sides of the triangle, in order.
    std::vector<PlanePoint> StationsOf(const Upright& t) const {
        std::vector<PlanePoint> stations;
        for (std::size_t k = 0; k < 3; ++k) {
            const auto known = onEdge.find(EdgeOf(t.corners[k], t.corners[(k + 1) % 3]));
            if (known == onEdge.end()) continue;
            for (const unsigned int vertex : known->second) stations.push_back(InPlan(vertices[vertex]));
        }
        const auto isBefore = [&](const PlanePoint& a, const PlanePoint& b) { return t.StationOf(a) < t.StationOf(b); };
        std::stable_sort(stations.begin(), stations.end(), isBefore);
        const auto isSame = [&](const PlanePoint& a, const PlanePoint& b) {
            return t.StationOf(b) - t.StationOf(a) <= near;
        };
        stations.erase(std::unique(stations.begin(), stations.end(), isSame), stations.end());
        return stations;
    }

    // Where the border crosses an upright triangle that no other one tells of, and from triangle to triangle.
    void FindStations() {
        std::vector<Upright> all;
        for (const Corners& corners : upright) all.push_back(MakeUpright(corners));
        for (const Upright& t : all) {
            const std::vector<PlanePoint> known = StationsOf(t);
            for (const PlanePoint& p : CrossingsOf(t)) {
                const bool isKnown = std::any_of(known.begin(), known.end(), [&](const PlanePoint& other) {
                    return Square(p - other) <= 4.0 * near * near;
                });
                if (!isKnown) (void)OnLong(t, p);
            }
        }
        for (std::size_t before = 0, count = 1; before != count;) {
            before = CountOnEdges();
            for (const Upright& t : all) {
                for (const PlanePoint& p : StationsOf(t)) {
                    (void)OnLong(t, p);
                    (void)OnShort(t, p);
                }
            }
            count = CountOnEdges();
        }
    }
    std::size_t CountOnEdges() const {
        std::size_t count = 0;
        for (const auto& [edge, known] : onEdge) count += known.size();
        return count;
    }

    std::vector<PlanePoint> CrossingsOf(const Upright& t) const {
        std::vector<PlanePoint> crossings;
        const Point2D from = PlaceOf(t.corners[0]);
        const Point2D to = PlaceOf(t.corners[2]);
        Extent extent;
        extent.Add(from);
        extent.Add(to);
        for (const SegmentBoxes& ring : borders) {
            ring.ForEachNear(extent, near, [&](std::size_t segment) {
                const PlanePoint a = Plain(ring.GetStart(segment)) - t.from;
                const PlanePoint b = Plain(ring.GetEnd(segment)) - t.from;
                const double offA = Cross(t.direction, a);
                const double offB = Cross(t.direction, b);
                const auto add = [&](double station) {
                    if (station > near && station < t.length - near)
                        crossings.push_back(t.from + t.direction * station);
                };
                if (std::abs(offA) <= near) add(Dot(t.direction, a));
                if (std::abs(offA) > near && std::abs(offB) > near && offA * offB < 0.0) {
                    add(Dot(t.direction, a + (b - a) * (offA / (offA - offB))));
                }
                return false;
            });
        }
        return crossings;
    }

    void CutUpright(const Corners& corners) {
        const Upright t = MakeUpright(corners);
        if (!(t.length > near)) {
            if (isInside(PlaceOf(corners[0]))) Append(corners);
            return;
        }
        std::vector<PlanePoint> stations = StationsOf(t);
        stations.insert(stations.begin(), t.from);
        stations.push_back(InPlan(vertices[t.corners[2]]));
        for (std::size_t i = 1; i < stations.size(); ++i) {
            const PlanePoint& from = stations[i - 1];
            const PlanePoint& to = stations[i];
            if (!isInside(PointOf(from + (to - from) * 0.5))) continue;
            std::vector<unsigned int> ring{OnShort(t, from)};
            if (t.StationOf(from) < t.middle && t.middle < t.StationOf(to)) ring.push_back(t.corners[1]);
            for (const unsigned int vertex : {OnShort(t, to), OnLong(t, to), OnLong(t, from)}) ring.push_back(vertex);
            ring.erase(std::unique(ring.begin(), ring.end()), ring.end());
            for (std::size_t k = 2; k < ring.size(); ++k) AppendTriangle(ring[0], ring[k - 1], ring[k], t.isReversed);
        }
    }

    std::vector<Point3D>& vertices;
    std::vector<unsigned int>& indexes;
    const Polygon2D& area;
    const std::function<bool(const Point2D&)>& isInside;
    std::vector<SegmentBoxes> borders;
    double largest = 0.0;
    double tolerance = 0.0;  // of the overlay: what rounding makes of coordinates
    double near = 0.0;       // a place within this of a corner or a side is on it
    std::vector<Corners> cut;
    std::vector<Corners> upright;
    std::vector<Piece> pieces;
    std::map<std::array<double, 3>, unsigned int> vertexAt;
    std::map<Edge, std::vector<unsigned int>> onEdge;
    std::vector<unsigned int> result;
};

}  // namespace

bool CutMesh(std::vector<Point3D>& vertices, std::vector<unsigned int>& indexes, const Polygon2D& area,
             const std::function<bool(const Point2D&)>& isInside) {
    return MeshCut(vertices, indexes, area, isInside).Run();
}

}  // namespace Kalvio::Math::detail
