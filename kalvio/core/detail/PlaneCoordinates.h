#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/ProjectionPlane.h"

namespace Kalvio::Math::detail {

/// The two coordinates of the plane; any value but YZ and XZ counts as XY.
inline Point2D CoordinatesInPlane(const Point3D& point, ProjectionPlane plane) {
    switch (plane) {
        case ProjectionPlane::YZ:
            return {point.GetY(), point.GetZ()};
        case ProjectionPlane::XZ:
            return {point.GetX(), point.GetZ()};
        default:
            return {point.GetX(), point.GetY()};
    }
}

}  // namespace Kalvio::Math::detail
