#pragma once

#include "kalvio/Export.h"

namespace Kalvio::Math {

class Angle;
class LineString2D;
class LineString3D;

/// Static functions that thin out chains of points as they are walked along, in one pass: tracks of receivers,
/// digitised lines. `GeometrySimplifier` keeps to a distance instead.
///
/// What stays are points of the source in their order, both ends among them. The result may be the source itself. All
/// answer false, the result untouched, for a limit that is negative or not a number, and for coordinates that are not
/// finite or beyond 1e100.
class KALVIO_MATH_API GeometryWeeder {
public:
    /// Leaves out points nearer than `spacing` to the one that stays before them; those nearer than that to the end
    /// give way to it.
    [[nodiscard]] static bool WeedBySpacing(const LineString2D& chain, double spacing, LineString2D& result);
    [[nodiscard]] static bool WeedBySpacing(const LineString3D& chain, double spacing, LineString3D& result);

    /// Leaves out points at which the chain turns by at most `angle`, from the direction in which they are reached from
    /// the point that stays before them to the direction of the next point, in [0, pi]; so that slow bends add up.
    /// Repeated points turn nowhere.
    [[nodiscard]] static bool WeedByAngle(const LineString2D& chain, const Angle& angle, LineString2D& result);
    [[nodiscard]] static bool WeedByAngle(const LineString3D& chain, const Angle& angle, LineString3D& result);
};

}  // namespace Kalvio::Math
