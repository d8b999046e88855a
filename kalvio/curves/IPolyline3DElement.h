#pragma once

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/Vec3D.h"

#include <vector>

namespace Kalvio::Math {

/// An element of a chain in space, measured by station along its 3D length. What an operation cannot answer it reports
/// by false, with its outputs as they were.
class KALVIO_MATH_API IPolyline3DElement : public IGeometry {
public:
    /// Sample of an element.
    struct PolylineElementPoint {
        Point3D point;         ///< on the element
        Vec3D tangent;         ///< unit, in the direction of travel
        double station = 0.0;  ///< length along the element from its start
    };

    constexpr IPolyline3DElement() = default;

    double GetLength() const override = 0;

    virtual const Point3D& GetStart() const = 0;
    virtual const Point3D& GetEnd() const = 0;
    /// Station of the point; 0 when the point is not on the element.
    virtual double LengthFromStartPoint(const Point3D& point, double tolerance) const;
    /// The same measured back from the end.
    virtual double LengthFromEndPoint(const Point3D& point, double tolerance) const;
    /// @param length  station of the point; untouched when it is not on the element within the tolerance
    [[nodiscard]] virtual bool GetLengthFromStartPoint(const Point3D& point, double& length,
                                                       double tolerance) const = 0;
    [[nodiscard]] virtual bool GetLengthFromEndPoint(const Point3D& point, double& length, double tolerance) const = 0;
    /// The point of the element nearest to `point`. Default: the query point itself.
    virtual Point3D GetNearestPoint(const Point3D& point, const Tolerances& tolerances) const;
};

}  // namespace Kalvio::Math
