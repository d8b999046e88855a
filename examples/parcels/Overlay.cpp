#include "parcels/Overlay.h"

#include "common/InputError.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <numeric>

namespace Kalvio::Examples {

using namespace Kalvio::Math;
using nlohmann::json;

namespace {

std::vector<Polygon2D> PolygonsOf(const std::vector<Area>& areas) {
    std::vector<Polygon2D> polygons;
    for (const Area& area : areas) polygons.push_back(area.polygon);
    return polygons;
}

double AreaOf(const std::vector<Polygon2D>& polygons) {
    return std::accumulate(polygons.begin(), polygons.end(), 0.0,
                           [](double sum, const Polygon2D& polygon) { return sum + polygon.GetArea(); });
}

json PositionsOf(const std::vector<Point2D>& ring) {
    json positions = json::array();
    for (const Point2D& p : ring) positions.push_back({p.GetX(), p.GetY()});
    positions.push_back({ring.front().GetX(), ring.front().GetY()});
    return positions;
}

}  // namespace

CommonAreas LayOver(const std::vector<Area>& areas, const std::vector<Area>& others, double tolerance) {
    CommonAreas pieces;
    if (!PolygonsBooleanOperation::Overlay(PolygonsOf(areas), PolygonsOf(others), pieces,
                                           Tolerances(tolerance, tolerance))) {
        throw InputError("--overlay: coordinates must be finite");
    }
    return pieces;
}

void ReportOverlay(const std::vector<Area>& areas, const std::vector<Area>& others, const CommonAreas& pieces) {
    std::printf("%-24s %-24s %16s %8s %8s %6s\n", "area", "other", "common", "share %", "of other", "parts");
    for (const auto& [first, second, common] : pieces) {
        const double size = AreaOf(common);
        std::printf("%-24s %-24s %16.6f %8.3f %8.3f %6zu\n", areas[first].name.c_str(), others[second].name.c_str(),
                    size, 100.0 * size / std::abs(areas[first].polygon.GetArea()),
                    100.0 * size / std::abs(others[second].polygon.GetArea()), common.size());
    }
}

void WriteGeoJson(const std::vector<Area>& areas, const std::vector<Area>& others, const CommonAreas& pieces,
                  const std::string& path) {
    json features = json::array();
    for (const auto& [first, second, common] : pieces) {
        json polygons = json::array();
        for (const Polygon2D& polygon : common) {
            json rings = json::array({PositionsOf(polygon.GetPoints())});
            for (unsigned int h = 0; h < polygon.GetNumHoleBoundaries(); ++h) {
                rings.push_back(PositionsOf(polygon.GetHoleBoundary(h).GetPoints()));
            }
            polygons.push_back(std::move(rings));
        }
        features.push_back(
            {{"type", "Feature"},
             {"properties", {{"area", areas[first].name}, {"other", others[second].name}, {"common", AreaOf(common)}}},
             {"geometry", {{"type", "MultiPolygon"}, {"coordinates", std::move(polygons)}}}});
    }
    std::ofstream file(path, std::ios::binary);
    file << json{{"type", "FeatureCollection"}, {"features", std::move(features)}}.dump(1) << '\n';
    file.close();
    if (file.fail()) throw InputError(path + ": cannot be written");
}

}  // namespace Kalvio::Examples
