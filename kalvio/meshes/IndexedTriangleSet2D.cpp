#include "kalvio/meshes/IndexedTriangleSet2D.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Matrix2D.h"
#include "kalvio/core/Matrix3D.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"
#include "kalvio/meshes/detail/MergePoints.h"
#include "kalvio/meshes/detail/Triangles.h"

#include <utility>

namespace Kalvio::Math {

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

}  // namespace Kalvio::Math
