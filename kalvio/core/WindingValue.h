#pragma once

#include <cstdint>

namespace Kalvio::Math {

/// Sense of rotation of a ring or face seen from above.
enum class WindingValue : std::uint32_t {
    Clockwise = 0,  ///< signed area <= 0, so a degenerate ring counts as clockwise; a face with normal z < -1e-11
    CounterClockwise = 1,  ///< signed area > 0; a face with normal z > 1e-11
    Vertical = 2,          ///< no winding in plan: a vertical or degenerate face
};

}  // namespace Kalvio::Math
