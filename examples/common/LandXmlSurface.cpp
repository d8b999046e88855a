#include "common/LandXmlSurface.h"

#include "common/LandXmlDocument.h"

#include <sstream>
#include <string_view>
#include <unordered_map>

namespace Kalvio::Examples {

namespace {

using Ids = std::unordered_map<std::string, unsigned int>;

Ids ReadPoints(const LandXmlDocument& document, pugi::xml_node definition, Surface& surface) {
    Ids ids;
    for (const pugi::xml_node group : definition.children("Pnts")) {
        for (const pugi::xml_node node : group.children("P")) {
            const std::string id = node.attribute("id").as_string();
            if (id.empty()) document.Fail(node, "<P> without id");
            if (!ids.emplace(id, surface.mesh.GetVerticesSize()).second) {
                document.Fail(node, "a second point " + id);
            }
            const std::vector<double> place = document.Numbers(node, 3);  // northing, easting, height
            surface.mesh.AppendVertex(Math::Point3D(place[1], place[0], place[2]));
        }
    }
    return ids;
}

void ReadFaces(const LandXmlDocument& document, pugi::xml_node definition, const Ids& ids, Surface& surface) {
    for (const pugi::xml_node group : definition.children("Faces")) {
        for (const pugi::xml_node node : group.children("F")) {
            if (std::string_view(node.attribute("i").as_string()) == "1") {
                ++surface.invisibleFaces;
                continue;
            }
            std::istringstream words(node.child_value());
            std::size_t corners = 0;
            for (std::string id; words >> id; ++corners) {
                const auto found = ids.find(id);
                if (found == ids.end()) document.Fail(node, "<F> names point " + id + ", which is not in <Pnts>");
                surface.mesh.GetIndexes().push_back(found->second);
            }
            if (corners != 3) document.Fail(node, "<F> with " + std::to_string(corners) + " corners instead of 3");
        }
    }
}

Surface ReadSurface(const LandXmlDocument& document, pugi::xml_node node) {
    Surface surface;
    surface.name = node.attribute("name").as_string();
    const pugi::xml_node definition = node.child("Definition");
    if (!definition) document.Fail(node, "<Surface> without <Definition>");
    const std::string_view type = definition.attribute("surfType").as_string();
    if (type != "TIN") document.Fail(definition, "surfType \"" + std::string(type) + "\" is not known to this program");
    const auto stated = [&](const char* attribute) {
        return definition.attribute(attribute) ? std::optional(document.Number(definition, attribute)) : std::nullopt;
    };
    surface.statedPlanArea = stated("area2DSurf");
    surface.statedSurfaceArea = stated("area3DSurf");
    ReadFaces(document, definition, ReadPoints(document, definition, surface), surface);
    if (surface.mesh.GetIndexes().empty()) document.Fail(definition, "a surface without visible faces");
    return surface;
}

}  // namespace

SurfaceFile ReadLandXmlSurfaces(const std::string& path) {
    const LandXmlDocument document(path);
    SurfaceFile result;
    result.linearUnit = document.GetLinearUnit();
    for (const pugi::xml_node group : document.GetRoot().children("Surfaces")) {
        for (const pugi::xml_node node : group.children("Surface")) {
            result.surfaces.push_back(ReadSurface(document, node));
        }
    }
    if (result.surfaces.empty()) document.Fail(document.GetRoot(), "no <Surface> in the file");
    return result;
}

}  // namespace Kalvio::Examples
