#pragma once

#include "kalvio/core/MathTypes.h"
#include "kalvio/curves/detail/Chain.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

/// The storage that the meshes share.
namespace Kalvio::Math::detail {

/// Vertices, and the winding that the faces are meant to have when seen from above.
template <class PointType>
class VertexArray {
public:
    /// Unchecked.
    const PointType& GetVertex(unsigned int index) const { return vertices[index]; }
    PointType& GetVertex(unsigned int index) { return vertices[index]; }
    const std::vector<PointType>& GetVertices() const& { return vertices; }
    std::vector<PointType> GetVertices() && { return std::move(vertices); }
    unsigned int GetVerticesSize() const { return static_cast<unsigned int>(vertices.size()); }
    void AppendVertices(const std::vector<PointType>& more) {
        InsertPoints(vertices, vertices.size(), more.begin(), more.end());
    }

    /// The intended winding in plan, false after construction. No face is touched when it is set.
    bool IsCCW() const { return ccw; }
    void SetCCW(bool value) { ccw = value; }

protected:
    VertexArray() = default;
    explicit VertexArray(std::vector<PointType> corners) : vertices(std::move(corners)) {}
    VertexArray(const VertexArray&) = default;
    VertexArray(VertexArray&&) noexcept = default;
    VertexArray& operator=(const VertexArray&) = default;
    VertexArray& operator=(VertexArray&&) noexcept = default;
    ~VertexArray() = default;

    template <class Vector>
    void TranslateVertices(const Vector& v) {
        for (PointType& vertex : vertices) vertex += v;
    }
    template <class Matrix>
    void TransformVertices(const Matrix& matrix) {
        for (PointType& vertex : vertices) vertex.Transform(matrix);
    }
    /// Vertex by vertex, strictly within the tolerance per coordinate; the flags, too.
    bool HasSameVertices(const VertexArray& other, double tolerance) const {
        return ccw == other.ccw &&
               std::equal(vertices.begin(), vertices.end(), other.vertices.begin(), other.vertices.end(),
                          [tolerance](const PointType& a, const PointType& b) { return a.IsEqualTo(b, tolerance); });
    }

    std::vector<PointType> vertices;
    bool ccw = false;
};

/// The same with faces: runs of indexes, each the position of a vertex.
template <class PointType>
class IndexedVertexArray : public VertexArray<PointType> {
public:
    const std::vector<unsigned int>& GetIndexes() const& { return indexes; }
    std::vector<unsigned int> GetIndexes() && { return std::move(indexes); }
    unsigned int GetIndexesSize() const { return static_cast<unsigned int>(indexes.size()); }
    /// Nothing is checked here: every operation passes over faces that name a vertex that does not exist.
    void AppendIndexes(const std::vector<unsigned int>& more) {
        InsertPoints(indexes, indexes.size(), more.begin(), more.end());
    }

protected:
    using VertexArray<PointType>::VertexArray;
    IndexedVertexArray(std::vector<PointType> corners, std::vector<unsigned int> faces)
        : VertexArray<PointType>(std::move(corners)), indexes(std::move(faces)) {}

    bool HasSameFaces(const IndexedVertexArray& other, double tolerance) const {
        return indexes == other.indexes && this->HasSameVertices(other, tolerance);
    }

    /// The vertex that an index names; NaN where there is none.
    PointType CornerAt(std::size_t index) const {
        if (indexes[index] < this->vertices.size()) return this->vertices[indexes[index]];
        PointType none;
        for (int axis = 0; axis < static_cast<int>(none.GetDimension()); ++axis) {
            none[axis] = std::numeric_limits<double>::quiet_NaN();
        }
        return none;
    }

    std::vector<unsigned int> indexes;
};

}  // namespace Kalvio::Math::detail
