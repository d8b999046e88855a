#pragma once

#include "common/LandXml.h"
#include "terrain/KrigedGrid.h"
#include "terrain/LongSection.h"

#include "kalvio/core/Point3D.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"

#include <optional>
#include <string>
#include <vector>

namespace Kalvio::Examples {

/// What the picture shows, one part below the other.
struct PictureParts {
    std::string title;
    std::string unit;
    const Math::IndexedTriangleSet3D* surface = nullptr;
    const std::vector<Alignment>* alignments = nullptr;
    const LongSection* section = nullptr;  // left out when null
    const KrigedGrid* grid = nullptr;      // left out when null
    const std::vector<Math::Point3D>* samples = nullptr;
    std::optional<double> contourInterval;            // one that suits the page when there is none
    unsigned int contourCuts = 0;                     // smooths them
    const Math::TinSurfacePatch3D* ground = nullptr;  // the surface, with `design`
    const Math::TinSurfacePatch3D* design = nullptr;  // shades the plan by its depth; left out when null
};

/// Draws the hill-shaded plan with contours, depths of a design and axes, the long section with its cut and fill, and
/// the kriged grid with its samples. @return false when the file cannot be written
bool DrawPicture(const std::string& path, const PictureParts& parts);

}  // namespace Kalvio::Examples
