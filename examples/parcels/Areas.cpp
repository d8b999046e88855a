#include "parcels/Areas.h"

#include "common/Csv.h"
#include "common/InputError.h"

#include "kalvio/Wkt.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <fstream>
#include <map>
#include <memory>

namespace Kalvio::Examples {

using Math::LineString2D;
using Math::Point2D;
using Math::Polygon2D;
using nlohmann::json;

namespace {

LineString2D RingOf(const json& positions) {
    LineString2D ring;
    for (const json& position : positions) {
        const Point2D point(position.at(0).get<double>(), position.at(1).get<double>());
        if (!std::isfinite(point.GetX()) || !std::isfinite(point.GetY())) throw InputError("coordinates out of range");
        ring.AppendPoint(point);
    }
    if (ring.GetSize() < 4 || !ring.IsClosed(1e-12)) throw InputError("a ring is not closed");
    return ring;
}

void AddPolygon(const json& rings, const std::string& name, std::vector<Area>& areas) {
    Area area{name, Polygon2D(RingOf(rings.at(0)))};
    for (std::size_t i = 1; i < rings.size(); ++i) area.polygon.AppendHoleBoundary(RingOf(rings.at(i)));
    areas.push_back(std::move(area));
}

void AddGeometry(const json& geometry, const std::string& name, std::vector<Area>& areas) {
    const auto type = geometry.at("type").get<std::string>();
    if (type == "Polygon") {
        AddPolygon(geometry.at("coordinates"), name, areas);
    } else if (type == "MultiPolygon") {
        int part = 0;
        for (const json& rings : geometry.at("coordinates")) {
            AddPolygon(rings, name + '.' + std::to_string(++part), areas);
        }
    } else if (type == "GeometryCollection") {
        for (const json& member : geometry.at("geometries")) AddGeometry(member, name, areas);
    }
}

std::string NameOf(const json& feature) {
    const auto properties = feature.find("properties");
    if (properties != feature.end() && properties->is_object() && properties->contains("name")) {
        const json& name = properties->at("name");
        return name.is_string() ? name.get<std::string>() : name.dump();
    }
    const auto id = feature.find("id");
    if (id == feature.end()) return "-";
    return id->is_string() ? id->get<std::string>() : id->dump();
}

void AddObject(const json& object, std::vector<Area>& areas) {
    const auto type = object.at("type").get<std::string>();
    if (type == "FeatureCollection") {
        for (const json& feature : object.at("features")) AddObject(feature, areas);
    } else if (type == "Feature") {
        if (!object.at("geometry").is_null()) AddGeometry(object.at("geometry"), NameOf(object), areas);
    } else {
        AddGeometry(object, "-", areas);
    }
}

std::vector<Area> ReadGeoJson(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw InputError(path + ": cannot be read");
    std::vector<Area> areas;
    try {
        AddObject(json::parse(file), areas);
    } catch (const json::exception& error) {
        throw InputError(path + ": " + error.what());
    } catch (const InputError& error) {
        throw InputError(path + ": polygon " + std::to_string(areas.size() + 1) + ": " + error.what());
    }
    return areas;
}

std::vector<Area> ReadTable(const std::string& path) {
    std::map<double, std::map<double, LineString2D>> polygons;
    for (const std::vector<double>& row : ReadCsv(path, 4)) polygons[row[0]][row[1]].AppendPoint({row[2], row[3]});
    std::vector<Area> areas;
    for (const auto& [number, rings] : polygons) {
        std::string name = std::to_string(number);
        name.erase(name.find_last_not_of('0') + 1);
        if (name.back() == '.') name.pop_back();
        if (rings.begin()->first != 0.0) throw InputError(path + ": polygon " + name + " has no ring 0");
        Area area{name, Polygon2D(rings.begin()->second)};
        for (auto ring = std::next(rings.begin()); ring != rings.end(); ++ring) {
            area.polygon.AppendHoleBoundary(ring->second);
        }
        areas.push_back(std::move(area));
    }
    return areas;
}

std::vector<Area> ReadTexts(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw InputError(path + ": cannot be read");
    std::vector<Area> areas;
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        const auto fail = [&](std::size_t column, std::string_view reason) {
            throw InputError(path + ':' + std::to_string(number) + ':' + std::to_string(column) + ": " +
                             std::string(reason));
        };
        if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
        std::vector<std::unique_ptr<Math::IGeometry>> geometries;
        Math::Wkt::Error error;
        if (!Math::Wkt::Read(line, geometries, error)) fail(error.column, error.reason);
        int part = 0;
        for (const auto& geometry : geometries) {
            if (geometry->GetType() != Math::MathTypes::Polygon2D) fail(1, "not a polygon in plan");
            const bool isOne = geometries.size() == 1;
            areas.push_back({std::to_string(number) + (isOne ? "" : '.' + std::to_string(++part)),
                             static_cast<const Polygon2D&>(*geometry)});
        }
    }
    return areas;
}

}  // namespace

std::vector<Area> ReadAreas(const std::string& path) {
    const bool isTable = path.ends_with(".csv");
    std::vector<Area> areas = isTable ? ReadTable(path) : path.ends_with(".wkt") ? ReadTexts(path) : ReadGeoJson(path);
    if (areas.empty()) throw InputError(path + ": no polygons");
    return areas;
}

}  // namespace Kalvio::Examples
