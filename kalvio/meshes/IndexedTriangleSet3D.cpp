#include "kalvio/meshes/IndexedTriangleSet3D.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/core/Matrix3D.h"
#include "kalvio/core/Numbers.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/meshes/IndexedTriangleSet3DCleanUp.h"
#include "kalvio/meshes/detail/BorderRings.h"
#include "kalvio/meshes/detail/MergePoints.h"
#include "kalvio/meshes/detail/MeshSection.h"
#include "kalvio/meshes/detail/NearestPoints.h"
#include "kalvio/meshes/detail/TriangleEdges.h"
#include "kalvio/meshes/detail/TriangleNormals.h"
#include "kalvio/meshes/detail/Triangles.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace Kalvio::Math {

namespace {

// Indexes at the end that are no whole triangle.
void DropRest(std::vector<unsigned int>& indexes) { indexes.resize(indexes.size() - indexes.size() % 3); }

}  // namespace

MathTypes IndexedTriangleSet3D::GetType() const { return MathTypes::IndexedTriangleSet3D; }

BoundingBox3D IndexedTriangleSet3D::GetBoundingBox() const { return detail::BoxOfPoints<BoundingBox3D>(vertices); }

BoundingBox2D IndexedTriangleSet3D::GetBoundingBox2D() const { return GetBoundingBox().GetBoundingBox2D(); }

BoundingBox3D IndexedTriangleSet3D::GetBoundingBox3D() const { return GetBoundingBox(); }

bool IndexedTriangleSet3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    return other.GetType() == MathTypes::IndexedTriangleSet3D &&
           IsEqualTo(static_cast<const IndexedTriangleSet3D&>(other), tolerance);
}

bool IndexedTriangleSet3D::IsEqualTo(const IndexedTriangleSet3D& other, double tolerance) const {
    return HasSameFaces(other, tolerance);
}

IndexedTriangleSet3D* IndexedTriangleSet3D::Clone() const { return new IndexedTriangleSet3D(*this); }

void IndexedTriangleSet3D::Clear() {
    vertices.clear();
    indexes.clear();
}

bool IndexedTriangleSet3D::GetTriangleAt(std::uint64_t triangle, Point3D& a, Point3D& b, Point3D& c) const {
    const unsigned int* const corners = detail::CornersOf(indexes, vertices.size(), triangle);
    if (corners == nullptr) return false;
    a = vertices[corners[0]];
    b = vertices[corners[1]];
    c = vertices[corners[2]];
    return true;
}

void IndexedTriangleSet3D::AddTriangle(const Point3D& a, const Point3D& b, const Point3D& c, bool orient,
                                       bool collapse) {
    const auto n = static_cast<unsigned int>(vertices.size());
    const bool isReversed = orient && (detail::DoubledTurn(a, b, c) < 0.0) == ccw;
    vertices.insert(vertices.end(), {a, b, c});
    DropRest(indexes);
    indexes.insert(indexes.end(), {isReversed ? n + 1 : n, isReversed ? n : n + 1, n + 2});
    if (collapse) CollapsePoints(detail::numericalZero);
}

void IndexedTriangleSet3D::Merge(const IndexedTriangleSet3D& other, bool collapse, double tolerance) {
    const auto shift = static_cast<unsigned int>(vertices.size());
    const std::size_t count = other.indexes.size() - other.indexes.size() % 3;
    DropRest(indexes);
    for (std::size_t i = 0; i < count; ++i) {
        // An index of no vertex must not wrap around to one.
        indexes.push_back(shift + std::min(other.indexes[i], detail::noVertex - shift));
    }
    AppendVertices(other.vertices);
    if (collapse) CollapsePoints(tolerance);
}

double IndexedTriangleSet3D::GetVolume(double referenceHeight) const {
    double sum = 0.0;
    detail::ForEachTriangle(indexes, vertices.size(), [&](const unsigned int* corners, std::size_t) {
        const Point3D& a = vertices[corners[0]];
        const Point3D& b = vertices[corners[1]];
        const Point3D& c = vertices[corners[2]];
        const double heights =
            (a.GetZ() - referenceHeight) + (b.GetZ() - referenceHeight) + (c.GetZ() - referenceHeight);
        sum += detail::DoubledTurn(a, b, c) * heights;
    });
    return sum / 6.0;
}

WindingValue IndexedTriangleSet3D::GetWinding(unsigned int triangle) const {
    const unsigned int* const corners = detail::CornersOf(indexes, vertices.size(), triangle);
    bool isCounterClockwise = ccw;
    if (corners != nullptr && vertices.size() >= 3) {
        const Vec3D normal = detail::DoubledVectorArea(vertices, corners).Normalize();
        isCounterClockwise = normal[normal.FindDominantAxis()] > 0.0;
    }
    return isCounterClockwise ? WindingValue::CounterClockwise : WindingValue::Clockwise;
}

WindingValue IndexedTriangleSet3D::GetWinding2D(unsigned int triangle) const {
    return IndexedTriangleSet3DCleanUp::Get2DWindingOrVertical(vertices, indexes, triangle);
}

void IndexedTriangleSet3D::GetTotalWindings2D(unsigned int& counterClockwise, unsigned int& clockwise,
                                              unsigned int& vertical) const {
    std::array<std::size_t, 3> counts{};
    detail::ForEachTriangle(indexes, vertices.size(), [&](const unsigned int* corners, std::size_t) {
        ++counts[static_cast<std::size_t>(detail::WindingInPlan(vertices, corners))];
    });
    const auto count = [&counts](WindingValue winding) {
        return static_cast<unsigned int>(counts[static_cast<std::size_t>(winding)]);
    };
    counterClockwise = count(WindingValue::CounterClockwise);
    clockwise = count(WindingValue::Clockwise);
    vertical = static_cast<unsigned int>(indexes.size() / 3) - counterClockwise - clockwise;
}

bool IndexedTriangleSet3D::IsPlanar(double tolerance) const {
    if (indexes.size() < 2) return true;
    const auto names = [this](unsigned int index) { return index < vertices.size(); };
    const auto first = std::find_if(indexes.begin(), indexes.end(), names);
    return std::all_of(first, indexes.end(), [&](unsigned int index) {
        return !names(index) || Numbers::Compare(vertices[index].GetZ(), Numbers::CompareOperator::Equal,
                                                 vertices[*first].GetZ(), tolerance);
    });
}

bool IndexedTriangleSet3D::IsOneClosedVolume() const {
    if (IsPlanar(detail::numericalZero)) return false;
    const detail::CoherentParts parts = detail::FindCoherentParts(indexes, vertices.size());
    return parts.count == 1 && parts.isClosed && parts.isCoherent;
}

bool IndexedTriangleSet3D::IsTriangleNeighborWindingCoherent() const {
    bool isCoherent = true;
    detail::ForEachEdge(indexes, vertices.size(), [&](std::span<const std::size_t> edges) {
        if (edges.size() == 2 && indexes[edges[0]] == indexes[edges[1]]) isCoherent = false;
    });
    return isCoherent;
}

bool IndexedTriangleSet3D::GetBoundaries(std::vector<LineString3D>& boundaries) const {
    const std::vector<detail::BorderRing> rings = detail::TraceCoherentBorders(indexes, vertices.size());
    for (const detail::BorderRing& ring : rings) {
        LineString3D& boundary = boundaries.emplace_back();
        for (const unsigned int vertex : ring.vertices) boundary.AppendPoint(vertices[vertex]);
        boundary.AppendPoint(vertices[ring.vertices.front()]);
    }
    return !rings.empty();
}

bool IndexedTriangleSet3D::CreateVerticalWalls(double height, IndexedTriangleSet3D& walls) const {
    const std::vector<detail::BorderRing> rings = detail::TraceCoherentBorders(indexes, vertices.size());
    if (rings.empty() || !std::isfinite(height)) return false;
    IndexedTriangleSet3D made;
    made.ccw = ccw;
    for (const detail::BorderRing& ring : rings) {
        const auto first = static_cast<unsigned int>(made.vertices.size());
        const auto count = static_cast<unsigned int>(ring.vertices.size());
        for (unsigned int i = 0; i < count; ++i) {
            const Point3D& top = vertices[ring.vertices[i]];
            if (!std::isfinite(top.GetX()) || !std::isfinite(top.GetY()) || !std::isfinite(top.GetZ())) return false;
            made.vertices.insert(made.vertices.end(), {top, Point3D(top.GetPoint2D(), height)});
            const unsigned int u = first + 2 * i;
            const unsigned int v = first + 2 * ((i + 1) % count);
            made.indexes.insert(made.indexes.end(), {v, u, u + 1, v, u + 1, v + 1});
        }
    }
    walls = std::move(made);
    return true;
}

void IndexedTriangleSet3D::ComputeNormals(bool perVertex, std::vector<Vec3D>& normals) const {
    ComputeNormals(perVertex, normals, Angle(detail::pi));
}

void IndexedTriangleSet3D::ComputeNormals(bool perVertex, std::vector<Vec3D>& normals, const Angle& creaseAngle) const {
    if (!perVertex) {
        detail::ComputeFaceNormals(vertices, indexes, ccw, normals);
    } else if (creaseAngle.GetRadians() >= detail::pi) {
        detail::ComputeVertexNormals(vertices, indexes, ccw, normals);
    } else {
        detail::ComputeCornerNormals(vertices, indexes, ccw, std::cos(creaseAngle.GetRadians()), normals);
    }
}

void IndexedTriangleSet3D::GetSections(const Line2D& line, std::vector<LineString3D>& sections) const {
    detail::AppendSection(vertices, indexes, line.GetStart(), line.GetEnd(), detail::PlanReach::InfiniteLine, sections);
}

void IndexedTriangleSet3D::GetSections(const LineString2D& lineString, std::vector<LineString3D>& sections) const {
    detail::AppendSection(vertices, indexes, lineString.GetPoints(), detail::Upright::Walls, sections);
}

void IndexedTriangleSet3D::GetSectionsLineSegment(const Line2D& segment, std::vector<LineString3D>& sections) const {
    detail::AppendSection(vertices, indexes, segment.GetStart(), segment.GetEnd(), detail::PlanReach::Segment,
                          sections);
}

bool IndexedTriangleSet3D::CollapsePoints(double tolerance) {
    return detail::CanMerge(tolerance) && detail::VertexMerger<3>(tolerance).Merge(vertices, indexes);
}

bool IndexedTriangleSet3D::CollapsePoints2D(double tolerance) {
    return detail::CanMerge(tolerance) && detail::VertexMerger<2>(tolerance).Merge(vertices, indexes);
}

bool IndexedTriangleSet3D::CollapsePoints(std::vector<IndexedTriangleSet3D>& sets, double tolerance) {
    std::vector<IndexedTriangleSet3D*> pointers;
    pointers.reserve(sets.size());
    for (IndexedTriangleSet3D& set : sets) pointers.push_back(&set);
    return CollapsePoints(pointers, tolerance);
}

bool IndexedTriangleSet3D::CollapsePoints(std::vector<IndexedTriangleSet3D*>& sets, double tolerance) {
    if (!detail::CanMerge(tolerance)) return false;
    detail::VertexMerger<3> merger(tolerance);
    bool hasChanged = false;
    for (IndexedTriangleSet3D* const set : sets) {
        if (set != nullptr && merger.Merge(set->vertices, set->indexes)) hasChanged = true;
    }
    return hasChanged;
}

bool IndexedTriangleSet3D::RemoveLineTriangles(double tolerance, bool withUnusedVertices) {
    return detail::RemoveLines(vertices, indexes, tolerance, withUnusedVertices);
}

bool IndexedTriangleSet3D::RemoveDuplicatedTriangles() {
    using Key = std::pair<std::array<unsigned int, 3>, std::size_t>;  // vertices in order, triangle
    std::vector<Key> keys;
    keys.reserve(indexes.size() / 3);
    detail::ForEachTriangle(indexes, detail::anyVertex, [&](const unsigned int* corners, std::size_t triangle) {
        Key& key = keys.emplace_back(std::array{corners[0], corners[1], corners[2]}, triangle);
        std::sort(key.first.begin(), key.first.end());
    });
    std::sort(keys.begin(), keys.end());
    std::vector<bool> isDuplicate(indexes.size() / 3, false);
    for (std::size_t i = 1; i < keys.size(); ++i) {
        isDuplicate[keys[i].second] = keys[i].first == keys[i - 1].first;
    }
    return detail::RemoveTriangles(indexes, detail::anyVertex,
                                   [&](const unsigned int*, std::size_t triangle) { return isDuplicate[triangle]; });
}

std::uint64_t IndexedTriangleSet3D::RemoveUnusedVertices() { return detail::RemoveUnused(vertices, indexes); }

bool IndexedTriangleSet3D::AdjustVerticesToClosest(const std::vector<Point3D>& points) {
    const detail::NearestPoints nearest(points);
    bool hasMoved = false;
    for (Point3D& vertex : vertices) {
        Point3D closest = vertex;
        if (!nearest.Find(closest)) continue;
        if (closest[0] == vertex[0] && closest[1] == vertex[1] && closest[2] == vertex[2]) continue;  // -0.0 stays
        vertex = closest;
        hasMoved = true;
    }
    return hasMoved;
}

void IndexedTriangleSet3D::InvertAllTriangles() {
    for (std::size_t i = 0; i + 2 < indexes.size(); i += 3) std::swap(indexes[i], indexes[i + 1]);
}

bool IndexedTriangleSet3D::FlipEdge(unsigned int first, unsigned int second) {
    return IndexedTriangleSet3DCleanUp::FlipEdge(indexes, first, second);
}

bool IndexedTriangleSet3D::FixCoherentTriangleWinding() {
    bool isClosed = false;
    bool isCoherent = false;
    IndexedTriangleSet3DCleanUp::FixCoherentTriangleWinding(vertices, indexes, isClosed, isCoherent);
    return isCoherent;
}

bool IndexedTriangleSet3D::RemoveTrianglesWindings2D(WindingValue winding) {
    return detail::RemoveTriangles(indexes, vertices.size(), [&](const unsigned int* corners, std::size_t) {
        return detail::WindingInPlan(vertices, corners) == winding;
    });
}

bool IndexedTriangleSet3D::ExtractVerticalTriangles(IndexedTriangleSet3D& verticals) {
    IndexedTriangleSet3D extracted;
    extracted.ccw = ccw;
    const bool hasVerticals =
        detail::RemoveTriangles(indexes, vertices.size(), [&](const unsigned int* corners, std::size_t) {
            const bool isVertical = detail::WindingInPlan(vertices, corners) == WindingValue::Vertical;
            if (isVertical) extracted.indexes.insert(extracted.indexes.end(), corners, corners + 3);
            return isVertical;
        });
    if (hasVerticals) {
        extracted.vertices = vertices;
        extracted.RemoveUnusedVertices();
    }
    verticals = std::move(extracted);
    return hasVerticals;
}

bool IndexedTriangleSet3D::SplitIntoUnconnectedSurfaces(std::vector<IndexedTriangleSet3D>& surfaces) const {
    return IndexedTriangleSet3DCleanUp::SplitIntoUnconnectedSurfaces(*this, surfaces) == ErrorMessage::NoError;
}

IndexedTriangleSet3D& IndexedTriangleSet3D::Transform(const Matrix3D& matrix) {
    TransformVertices(matrix);
    return *this;
}

IndexedTriangleSet3D IndexedTriangleSet3D::Transform(const Matrix3D& matrix) const {
    IndexedTriangleSet3D copy(*this);
    return copy.Transform(matrix);
}

IndexedTriangleSet3D& IndexedTriangleSet3D::Translate(const Vec3D& v) {
    TranslateVertices(v);
    return *this;
}

IndexedTriangleSet3D IndexedTriangleSet3D::Translate(const Vec3D& v) const {
    IndexedTriangleSet3D copy(*this);
    return copy.Translate(v);
}

template <>
bool Geometry::AreEqual(const IndexedTriangleSet3D& a, const IndexedTriangleSet3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
