#pragma once

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/meshes/detail/VertexArrays.h"

namespace Kalvio::Math {

class Matrix3D;

/// Faces in space that all have the same number of corners and share their vertices by index.
///
/// Face k has the corners GetIndexes()[k n] ... GetIndexes()[k n + n - 1], n = GetFaceSize().
class KALVIO_MATH_API IndexedFaceSet3D final : public IGeometry, public detail::IndexedVertexArray<Point3D> {
public:
    IndexedFaceSet3D() = default;
    /// @param cornersPerFace  number of consecutive indexes that form one face
    explicit IndexedFaceSet3D(unsigned int cornersPerFace) : faceSize(cornersPerFace) {}

    MathTypes GetType() const override;
    /// Extent of all vertices, used or not; the point box at the origin when there are none.
    BoundingBox3D GetBoundingBox() const;
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 3; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    /// Comparable with an `IndexedFaceSet3D` of as many vertices, equal index by index, and of the same indexes, face
    /// size and winding flag.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const IndexedFaceSet3D& other, double tolerance) const;
    [[nodiscard]] IndexedFaceSet3D* Clone() const override;

    using IndexedVertexArray::GetVertices;
    std::vector<Point3D>& GetVertices() & { return vertices; }
    using IndexedVertexArray::GetIndexes;
    std::vector<unsigned int>& GetIndexes() & { return indexes; }
    /// 0 until it is given.
    unsigned int GetFaceSize() const { return faceSize; }
    void SetFaceSize(unsigned int cornersPerFace) { faceSize = cornersPerFace; }

    /// A non-const set is changed in place.
    IndexedFaceSet3D& Transform(const Matrix3D& matrix);
    IndexedFaceSet3D Transform(const Matrix3D& matrix) const;
    IndexedFaceSet3D& Translate(const Vec3D& v);
    IndexedFaceSet3D Translate(const Vec3D& v) const;

private:
    unsigned int faceSize = 0;
};

}  // namespace Kalvio::Math
