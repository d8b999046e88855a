#pragma once

#include <cstdint>

namespace Kalvio::Math {

/// The two coordinates of a 3D point that are kept where 3D data are handled in a plane. Used singly, never combined;
/// any other value counts as `XY`.
enum class ProjectionPlane : std::uint32_t {
    XY = 1,  ///< plan: (x, y)
    YZ = 2,  ///< (y, z)
    XZ = 4,  ///< (x, z)
};

}  // namespace Kalvio::Math
