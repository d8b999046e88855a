#include "kalvio/queries/Distance.h"

#include "kalvio/core/Point2DM.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/PointND.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/curves/Line2D.h"

namespace Kalvio::Math {

double Distance::PointToPoint(const Point2D& a, const Point2D& b) { return a.Distance(b); }

double Distance::PointToPoint(const Point2DM& a, const Point2DM& b) { return a.Distance(b); }

double Distance::PointToPoint(const Point3D& a, const Point3D& b) { return a.Distance(b); }

double Distance::PointToPoint(const PointND& a, const PointND& b) { return a.Distance(b); }

double Distance::PointToLine(const Point2D& point, const Line2D& line) {
    return detail::SignedDistanceToLine(point, line.GetStart(), line.GetEnd());
}

double Distance::PointToLine(const Point2D& point, const Point2D& a, const Point2D& b) {
    return detail::SignedDistanceToLine(point, a, b);
}

}  // namespace Kalvio::Math
