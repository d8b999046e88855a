#pragma once

#include "common/LandXml.h"
#include "common/LandXmlSurface.h"

#include <span>
#include <string>

namespace Kalvio::Examples {

/// Writes alignments (plan, profile, station equations, cant) and surfaces as a LandXML 1.2 file, numbers with 15
/// digits: what a file states with as many comes back the same.
/// @param linearUnit  as files name it; empty for metres
/// @throws InputError for a file that cannot be written, and for what the format cannot state: a transition that
///         changes sides, slopes that differ to the left and right
void WriteLandXml(const std::string& path, const std::string& linearUnit, std::span<const Alignment> alignments,
                  std::span<const Surface> surfaces);

}  // namespace Kalvio::Examples
