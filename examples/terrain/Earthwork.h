#pragma once

#include "common/LandXml.h"

#include "kalvio/alignments/CrossSections.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"

#include <optional>
#include <string>
#include <vector>

namespace Kalvio::Examples {

/// The cross-sections of an alignment between two surfaces, and the volumes that follow from them.
struct Earthwork {
    /// @param step   distance of the sections, counted from just behind the start of the axis
    /// @param reach  how far they go to both sides
    /// @throws InputError for a step that the axis has too many of, and an axis that has no stations
    Earthwork(const Alignment& alignment, const Math::TinSurfacePatch3D& ground, const Math::TinSurfacePatch3D& design,
              double step, double reach);

    std::string name;
    double startStation;
    std::vector<Math::CrossSections::Section> sections;
    std::vector<Math::CrossSections::Mass> masses;
    /// The exact volumes over the strip of the sections; none where it folds over itself.
    std::optional<Math::TinSurfacePatch3D::Volumes> exact;
};

/// Draws the sections that have ground or design, row by row and at one scale, and the mass curve below them.
/// @return false when the file cannot be written
bool DrawSheet(const std::string& path, const Earthwork& work, const std::string& unit);

}  // namespace Kalvio::Examples
