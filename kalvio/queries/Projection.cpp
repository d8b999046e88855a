#include "kalvio/queries/Projection.h"

#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"

namespace Kalvio::Math {

namespace {

template <class Line, class PointType>
PointType FootOnLine(const PointType& point, const Line& line) {
    const auto d = line.GetEnd() - line.GetStart();
    const double squared = d.NormSquared();
    return squared > 0.0 ? line.GetStart() + d * ((point - line.GetStart()).DotProduct(d) / squared) : line.GetStart();
}

}  // namespace

Point2D Projection::NormalPointOnLine(const Point2D& point, const Line2D& line) { return FootOnLine(point, line); }

Point3D Projection::NormalPointOnLine(const Point3D& point, const Line3D& line) { return FootOnLine(point, line); }

}  // namespace Kalvio::Math
