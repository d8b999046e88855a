#pragma once

#include <cstdint>

namespace Kalvio::Math {

/// What an intersection found. The values 1 and 4 are not in use.
enum class IntersectionResult : std::uint32_t {
    NoIntersection = 0,  ///< parallel and distinct, or no common point
    Intersecting = 2,    ///< one or more isolated points were written to the output
    Coincident = 3,      ///< the same line, or the same segment
    Degenerate = 5,      ///< an operand is too small, e.g. a line not longer than the user tolerance
};

}  // namespace Kalvio::Math
