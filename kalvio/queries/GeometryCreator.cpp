#include "kalvio/queries/GeometryCreator.h"

#include "kalvio/core/Point3D.h"

namespace Kalvio::Math {

Point2D GeometryCreator::Point2DFromPoint3D(const Point3D& point, ProjectionPlane plane) {
    switch (plane) {
        case ProjectionPlane::YZ:
            return {point.GetY(), point.GetZ()};
        case ProjectionPlane::XZ:
            return {point.GetX(), point.GetZ()};
        default:
            return {point.GetX(), point.GetY()};
    }
}

}  // namespace Kalvio::Math
