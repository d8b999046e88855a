#pragma once

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/meshes/detail/VertexArrays.h"

namespace Kalvio::Math {

/// Faces in plan that all have the same number of corners and share their vertices by index.
///
/// Face k has the corners GetIndexes()[k n] ... GetIndexes()[k n + n - 1], n = GetFaceSize().
class KALVIO_MATH_API IndexedFaceSet2D final : public IGeometry, public detail::IndexedVertexArray<Point2D> {
public:
    IndexedFaceSet2D() = default;
    /// @param cornersPerFace  number of consecutive indexes that form one face
    explicit IndexedFaceSet2D(unsigned int cornersPerFace) : faceSize(cornersPerFace) {}

    MathTypes GetType() const override;
    /// Extent of all vertices, used or not; the point box at the origin when there are none.
    BoundingBox2D GetBoundingBox() const;
    BoundingBox2D GetBoundingBox2D() const override;
    /// The box at z = 0.
    BoundingBox3D GetBoundingBox3D() const override;
    unsigned int GetDimension() const override { return 2; }
    unsigned int GetTopologicalDimension() const override { return 2; }
    /// Comparable with an `IndexedFaceSet2D` of as many vertices, equal index by index, and of the same indexes, face
    /// size and winding flag.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    bool IsEqualTo(const IndexedFaceSet2D& other, double tolerance) const;
    [[nodiscard]] IndexedFaceSet2D* Clone() const override;

    /// 0 until it is given.
    unsigned int GetFaceSize() const { return faceSize; }
    void SetFaceSize(unsigned int cornersPerFace) { faceSize = cornersPerFace; }

private:
    unsigned int faceSize = 0;
};

}  // namespace Kalvio::Math
