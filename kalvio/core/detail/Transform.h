#pragma once

#include "kalvio/core/Matrix2D.h"
#include "kalvio/core/Matrix3D.h"

/// The homogeneous row-vector products that points and vectors share. The results are multiplied by 1 / w when w is
/// not 1; a point that a projective matrix sends to infinity (w = 0) gets infinite or undefined coordinates.
namespace Kalvio::Math::detail {

template <class PlaneType>
PlaneType& TransformInPlane(PlaneType& p, const Matrix2D& matrix) {
    const double* const m = matrix.Ptr();
    const double x = p.GetX();
    const double y = p.GetY();
    const double w = m[2] * x + m[5] * y + m[8];
    p.SetCoordinates(m[0] * x + m[3] * y + m[6], m[1] * x + m[4] * y + m[7]);
    if (w != 1.0) p *= 1.0 / w;
    return p;
}

template <class SpaceType>
SpaceType& TransformInSpace(SpaceType& p, const Matrix3D& matrix) {
    const double* const m = matrix.Ptr();
    const double x = p.GetX();
    const double y = p.GetY();
    const double z = p.GetZ();
    const double w = m[3] * x + m[7] * y + m[11] * z + m[15];
    p.SetCoordinates(m[0] * x + m[4] * y + m[8] * z + m[12], m[1] * x + m[5] * y + m[9] * z + m[13],
                     m[2] * x + m[6] * y + m[10] * z + m[14]);
    if (w != 1.0) p *= 1.0 / w;
    return p;
}

}  // namespace Kalvio::Math::detail
