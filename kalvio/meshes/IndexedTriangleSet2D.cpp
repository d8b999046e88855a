#include "kalvio/meshes/IndexedTriangleSet2D.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/core/Matrix2D.h"
#include "kalvio/core/Matrix3D.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"
#include "kalvio/meshes/detail/BorderRings.h"
#include "kalvio/meshes/detail/MergePoints.h"
#include "kalvio/meshes/detail/TriangleEdges.h"
#include "kalvio/meshes/detail/Triangles.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/detail/PointInRing.h"

#include <iterator>
#include <utility>

namespace Kalvio::Math {

namespace {

// The border with the triangles of every part turned counter-clockwise. The sign comes from the area of the whole part:
// that of a sliver may be rounding.
std::vector<detail::BorderRing> TraceCounterClockwise(const std::vector<Point2D>& vertices,
                                                      const std::vector<unsigned int>& indexes,
                                                      const detail::CoherentParts& parts) {
    std::vector<unsigned int> turned = indexes;
    detail::MakeCoherent(turned, parts);
    std::vector<double> areas(parts.count, 0.0);
    detail::ForEachTriangle(turned, vertices.size(), [&](const unsigned int* corners, std::size_t triangle) {
        if (parts.partOf[triangle] == detail::nowhere) return;
        areas[parts.partOf[triangle]] +=
            detail::DoubledTurn(vertices[corners[0]], vertices[corners[1]], vertices[corners[2]]);
    });
    for (std::size_t i = 0; i < parts.partOf.size(); ++i) {
        if (parts.partOf[i] != detail::nowhere && areas[parts.partOf[i]] < 0.0) detail::Reverse(turned, i);
    }
    return detail::TraceBorders(turned, vertices.size());
}

bool Surrounds(const Polygon2D& outer, const std::vector<Point2D>& ring) {
    for (const Point2D& point : ring) {
        const detail::RingSide side = detail::FindRingSideByRay(outer.GetPoints(), point, 0.0);
        if (side != detail::RingSide::Border) return side == detail::RingSide::Inside;
    }
    return true;
}

// A part has one outer ring, unless its triangles overlap: the smallest one around the hole then.
Polygon2D* FindOuter(std::vector<Polygon2D>& polygons, const std::vector<std::size_t>& candidates,
                     const std::vector<Point2D>& hole) {
    Polygon2D* found = candidates.empty() ? nullptr : &polygons[candidates.front()];
    if (candidates.size() < 2) return found;
    double least = detail::largestDouble;
    for (const std::size_t i : candidates) {
        const double area = detail::DoubledArea(polygons[i].GetPoints(), hole.front());
        if (!(area < least) || !Surrounds(polygons[i], hole)) continue;
        least = area;
        found = &polygons[i];
    }
    return found;
}

std::vector<Polygon2D> PolygonsOf(const std::vector<detail::BorderRing>& rings, const std::vector<Point2D>& vertices,
                                  const detail::CoherentParts& parts, bool withHoles) {
    std::vector<Polygon2D> polygons;
    std::vector<std::vector<std::size_t>> outersOf(parts.count);
    std::vector<std::pair<std::size_t, std::vector<Point2D>>> holes;  // with their parts
    for (const detail::BorderRing& ring : rings) {
        std::vector<Point2D> points;
        points.reserve(ring.vertices.size());
        for (const unsigned int vertex : ring.vertices) points.push_back(vertices[vertex]);
        const std::size_t part = parts.partOf[ring.triangle];
        const double area = detail::DoubledArea(points, points.front());
        if (area > 0.0) {
            outersOf[part].push_back(polygons.size());
            polygons.emplace_back(std::move(points));
        } else if (area < 0.0 && withHoles) {
            holes.emplace_back(part, std::move(points));
        }
    }
    for (const auto& [part, hole] : holes) {
        Polygon2D* const outer = FindOuter(polygons, outersOf[part], hole);
        if (outer != nullptr) outer->AppendHoleBoundary(LineString2D(hole));
    }
    return polygons;
}

}  // namespace

MathTypes IndexedTriangleSet2D::GetType() const { return MathTypes::IndexedTriangleSet2D; }

BoundingBox2D IndexedTriangleSet2D::GetBoundingBox() const { return detail::BoxOfPoints<BoundingBox2D>(vertices); }

BoundingBox2D IndexedTriangleSet2D::GetBoundingBox2D() const { return GetBoundingBox(); }

BoundingBox3D IndexedTriangleSet2D::GetBoundingBox3D() const { return GetBoundingBox().GetBoundingBox3D(); }

bool IndexedTriangleSet2D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::IndexedTriangleSet2D &&
           IsEqualTo(static_cast<const IndexedTriangleSet2D&>(other), tolerance);
}

bool IndexedTriangleSet2D::IsEqualTo(const IndexedTriangleSet2D& other, double tolerance) const {
    return HasSameFaces(other, tolerance);
}

IndexedTriangleSet2D* IndexedTriangleSet2D::Clone() const { return new IndexedTriangleSet2D(*this); }

WindingValue IndexedTriangleSet2D::GetWinding() const {
    const unsigned int* const corners = detail::CornersOf(indexes, vertices.size(), 0);
    const bool isCounterClockwise = corners == nullptr ? ccw
                                                       : detail::DoubledTurn(vertices[corners[0]], vertices[corners[1]],
                                                                             vertices[corners[2]]) > 0.0;
    return isCounterClockwise ? WindingValue::CounterClockwise : WindingValue::Clockwise;
}

bool IndexedTriangleSet2D::GetBoundaries(std::vector<Polygon2D>& boundaries, bool withHoles) const {
    const detail::CoherentParts parts = detail::FindCoherentParts(indexes, vertices.size());
    std::vector<Polygon2D> polygons =
        PolygonsOf(TraceCounterClockwise(vertices, indexes, parts), vertices, parts, withHoles);
    boundaries.insert(boundaries.end(), std::make_move_iterator(polygons.begin()),
                      std::make_move_iterator(polygons.end()));
    return !polygons.empty();
}

bool IndexedTriangleSet2D::CollapsePoints(double tolerance) {
    return detail::CanMerge(tolerance) && detail::VertexMerger<2>(tolerance).Merge(vertices, indexes);
}

bool IndexedTriangleSet2D::RemoveLineTriangles(double tolerance, bool withUnusedVertices) {
    return detail::RemoveLines(vertices, indexes, tolerance, withUnusedVertices);
}

std::uint64_t IndexedTriangleSet2D::RemoveUnusedVertices() { return detail::RemoveUnused(vertices, indexes); }

IndexedTriangleSet2D& IndexedTriangleSet2D::Transform(const Matrix2D& matrix) {
    TransformVertices(matrix);
    return *this;
}

IndexedTriangleSet2D IndexedTriangleSet2D::Transform(const Matrix2D& matrix) const {
    IndexedTriangleSet2D copy(*this);
    return copy.Transform(matrix);
}

void IndexedTriangleSet2D::Transform(const Matrix3D& matrix, IndexedTriangleSet3D& out) const {
    std::vector<Point3D> lifted;
    lifted.reserve(vertices.size());
    for (const Point2D& vertex : vertices) lifted.push_back(Point3D(vertex, 0.0).Transform(matrix));
    IndexedTriangleSet3D result(lifted, indexes);
    result.SetCCW(ccw);
    out = std::move(result);
}

IndexedTriangleSet2D& IndexedTriangleSet2D::Translate(const Vec2D& v) {
    TranslateVertices(v);
    return *this;
}

IndexedTriangleSet2D IndexedTriangleSet2D::Translate(const Vec2D& v) const {
    IndexedTriangleSet2D copy(*this);
    return copy.Translate(v);
}

template <>
bool Geometry::AreEqual(const IndexedTriangleSet2D& a, const IndexedTriangleSet2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
