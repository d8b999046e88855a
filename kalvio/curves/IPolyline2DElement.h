#pragma once

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/Vec2D.h"

#include <map>
#include <memory>
#include <vector>

namespace Kalvio::Math {

/// An element of an alignment in plan: a line, arc, clothoid, parabola, spiral or chain, measured by station.
///
/// A station is the length along the element from its start. What an operation cannot answer it reports by false, with
/// its outputs as they were.
class KALVIO_MATH_API IPolyline2DElement : public IGeometry {
public:
    /// Sample of an element.
    struct PolylineElementPoint {
        Point2D point;         ///< on the element
        Vec2D tangent;         ///< unit, in the direction of travel
        double station = 0.0;  ///< length along the element from its start
    };

    constexpr IPolyline2DElement() = default;

    double GetLength() const override = 0;
    /// Takes the station of each point that lies on the element and leaves the cutting to `BreakAtPreSorted`.
    [[nodiscard]] bool BreakAt(const std::vector<Point2D>& points, std::vector<IGeometry*>& out, bool modifyThis,
                               const Tolerances& tolerances) override;
    using IGeometry::BreakAt;
    /// Cuts a copy: this element stays as it is and all pieces go to `out`.
    [[nodiscard]] bool BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                        std::vector<IGeometry*>& out, const Tolerances& tolerances) const;
    [[nodiscard]] bool BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                        std::vector<std::unique_ptr<IGeometry>>& out,
                                        const Tolerances& tolerances) const;
    using IGeometry::BreakAtPreSorted;

    virtual const Point2D& GetStart() const = 0;
    virtual const Point2D& GetEnd() const = 0;
    /// Station of the point; 0 when the point is not on the element.
    virtual double LengthFromStartPoint(const Point2D& point, double tolerance) const;
    /// @param length  station of the point; untouched when it is not on the element within the tolerance
    [[nodiscard]] virtual bool GetLengthFromStartPoint(const Point2D& point, double& length,
                                                       double tolerance) const = 0;
    /// The same measured back from the end.
    virtual double LengthFromEndPoint(const Point2D& point, double tolerance) const;
    [[nodiscard]] virtual bool GetLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const = 0;
    /// @param tangent  unit direction of travel at the point; untouched when it is not on the element
    [[nodiscard]] virtual bool ComputeTangent(const Point2D& point, Vec2D& tangent,
                                              const Tolerances& tolerances) const = 0;
    /// The point of the element nearest to `point`. Default: the query point itself.
    virtual Point2D GetNearestPoint(const Point2D& point, const Tolerances& tolerances) const;
    /// Default: the middle of the chord.
    virtual const Point2D GetMiddlePoint() const;
};

}  // namespace Kalvio::Math
