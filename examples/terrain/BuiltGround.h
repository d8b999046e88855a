#pragma once

#include "kalvio/meshes/TinSurfacePatch3D.h"

#include <string>

namespace Kalvio::Examples {

/// Tables that a surface is built from; an empty name is none.
struct GroundTables {
    std::string points;      // x,y,height
    std::string breaklines;  // chain,x,y,height: rows of one chain follow each other
    std::string border;      // x,y,height: one ring

    bool IsEmpty() const { return points.empty() && breaklines.empty() && border.empty(); }
};

/// Builds the surface; places with two heights are told on stderr.
/// @throws InputError for a table that is missing or broken, naming its line, and where there is no surface
Math::TinSurfacePatch3D BuildGround(const GroundTables& tables);

/// The triangles as a surface. @throws InputError where they have two heights at a place
Math::TinSurfacePatch3D SurfaceOf(const Math::IndexedTriangleSet3D& triangles, const std::string& name);

}  // namespace Kalvio::Examples
