#pragma once

#include "common/InputError.h"

#include "kalvio/meshes/IndexedTriangleSet3D.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Kalvio::Examples {

/// A triangulated surface as the file has it: x the easting, y the northing, z the height.
struct Surface {
    std::string name;
    Math::IndexedTriangleSet3D mesh;
    std::size_t invisibleFaces = 0;  // left out
    std::optional<double> statedPlanArea;
    std::optional<double> statedSurfaceArea;
};

struct SurfaceFile {
    std::string linearUnit;
    std::vector<Surface> surfaces;
};

/// Reads the TIN surfaces of a LandXML file: Pnts and Faces; faces marked invisible (i="1") are left out.
/// @throws InputError for a file that is missing, broken or foreign, and for one without a surface
SurfaceFile ReadLandXmlSurfaces(const std::string& path);

}  // namespace Kalvio::Examples
