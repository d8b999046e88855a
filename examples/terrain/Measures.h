#pragma once

#include "kalvio/meshes/IndexedTriangleSet3D.h"

#include <cstddef>
#include <optional>

namespace Kalvio::Examples {

/// Turns the faces that are clockwise in plan, so that all normals point upward.
void TurnUpward(Math::IndexedTriangleSet3D& surface);

/// What the report says of a surface whose normals point upward.
struct Measures {
    /// @param reference  height that volumes are taken over; the lowest vertex when there is none
    Measures(const Math::IndexedTriangleSet3D& surface, const std::optional<double>& reference);

    double planArea = 0.0;
    double surfaceArea = 0.0;
    double lowest;
    double highest;
    double base;    // of the volume
    double volume;  // between the base and the surface; ground below the base counts negative
    std::size_t outerRings = 0;
    std::size_t holes = 0;
    double perimeter = 0.0;  // of all rings, in plan
};

}  // namespace Kalvio::Examples
