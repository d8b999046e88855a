#pragma once

#include "common/Svg.h"

#include <string>

namespace Kalvio::Examples {

/// A bar of a round length with its left end at (x, y).
/// @param scale  page units per world unit
void DrawScaleBar(Svg& svg, double x, double y, double scale, const std::string& unit);

/// An arrow up the page with its foot at (x, y).
void DrawNorthArrow(Svg& svg, double x, double y);

/// The grid of a long section: stations across, heights upward and widened to round values.
/// @return the panel to draw into
SvgPanel DrawSectionGrid(Svg& svg, double left, double top, double width, double height,
                         const Math::BoundingBox2D& world);

}  // namespace Kalvio::Examples
