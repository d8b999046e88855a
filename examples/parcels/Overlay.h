#pragma once

#include "parcels/Areas.h"

#include "kalvio/areas/PolygonsBooleanOperation.h"

#include <string>
#include <vector>

namespace Kalvio::Examples {

using CommonAreas = std::vector<Math::PolygonsBooleanOperation::CommonArea>;

/// What the areas of one layer and those of another have in common, pair by pair.
/// @throws InputError for coordinates that are not finite
CommonAreas LayOver(const std::vector<Area>& areas, const std::vector<Area>& others, double tolerance);

/// Prints the common area of every pair, and its share of either.
void ReportOverlay(const std::vector<Area>& areas, const std::vector<Area>& others, const CommonAreas& pieces);

/// Writes every pair as a MultiPolygon with both names and the area.
/// @throws InputError when the file cannot be written
void WriteGeoJson(const std::vector<Area>& areas, const std::vector<Area>& others, const CommonAreas& pieces,
                  const std::string& path);

}  // namespace Kalvio::Examples
