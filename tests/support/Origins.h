#pragma once

#include "kalvio/core/Point2D.h"

namespace Kalvio::Math {

/// Where geometry rows run: at the origin, and at survey coordinates, where careless sums lose their digits.
inline const Point2D surveyOrigins[] = {Point2D(0.0, 0.0), Point2D(385000.0, 6672000.0)};

}  // namespace Kalvio::Math
