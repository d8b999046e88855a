#pragma once

#include "kalvio/curves/Arc2D.h"

namespace Kalvio::Math::detail {

/// True when p lies on the circle of the arc within the tolerance and on the arc itself, its ends widened by the same.
inline bool IsPointOnArc(const Point2D& p, const Arc2D& arc, double tolerance) {
    return arc.IsPointOnCircle(p, tolerance) && arc.IsCirclePointInside(p, tolerance);
}

}  // namespace Kalvio::Math::detail
