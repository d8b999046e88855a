#pragma once

#include "common/LandXml.h"

#include "kalvio/alignments/AlignmentDesign.h"

#include <string>

namespace Kalvio::Examples {

/// An alignment through the tangent points of a table: x, y, radius, length of the transition in and out.
/// @param transition  name of the law of all transitions, as the pictures have it
/// @throws InputError for a table that cannot be read, and where the curves do not fit: which corner, and what is
/// missing
Alignment DesignAlignment(const std::string& path, const std::string& transition);

}  // namespace Kalvio::Examples
