#pragma once

#include "kalvio/polygons/Polygon2D.h"

#include <string>
#include <vector>

namespace Kalvio::Examples {

/// A polygon of the input and what the input calls it.
struct Area {
    std::string name;
    Math::Polygon2D polygon;
};

/// Reads polygons from GeoJSON (Polygon and MultiPolygon, as features or alone; a feature is called by its property
/// "name", else by its id), or, for a name that ends in .csv, from a table of points: polygon, ring (0 the outer one),
/// x, y. Areas of a table are called by the number of the polygon and lie in ascending order. A name that ends in .wkt
/// is a file of well-known text, a polygon or set of polygons a line, which are called by its number.
/// @throws InputError for a file that is missing, broken or without polygons
std::vector<Area> ReadAreas(const std::string& path);

}  // namespace Kalvio::Examples
