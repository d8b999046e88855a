#include "common/LandXmlWriter.h"

#include "kalvio/curves/Arc2D.h"

#include <pugixml.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <numeric>

namespace Kalvio::Examples {

using namespace Kalvio::Math;

namespace {

std::string Text(double number) {
    constexpr int digits = 15;  // of a decimal number that survive a double
    std::array<char, 32> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::general, digits);
    return {text.data(), end.ptr};
}

// LandXML writes northing first.
std::string Text(const Point2D& point) { return Text(point.GetY()) + ' ' + Text(point.GetX()); }

void Set(pugi::xml_node node, const char* attribute, const std::string& value) {
    node.append_attribute(attribute) = value.c_str();
}

void Set(pugi::xml_node node, const char* attribute, double value) { Set(node, attribute, Text(value)); }

pugi::xml_node Append(pugi::xml_node node, const char* name, const std::string& text = {}) {
    pugi::xml_node child = node.append_child(name);
    if (!text.empty()) child.text() = text.c_str();
    return child;
}

// Where the tangents at both ends meet.
Point2D CornerOf(const Polyline2D& plan, int index) {
    Polyline2D::PolylinePoint start;
    Polyline2D::PolylinePoint end;
    const double length = plan[static_cast<std::size_t>(index)].GetLength();
    if (!plan.MakePointAndTangentAt(index, 0.0, start) || !plan.MakePointAndTangentAt(index, length, end))
        throw InputError("a transition that is no curve cannot be written");
    const double along =
        (end.point - start.point).PerpDotProduct(end.tangent) / start.tangent.PerpDotProduct(end.tangent);
    return start.point + start.tangent * along;
}

void WriteElement(pugi::xml_node geometry, const Polyline2D& plan, int index, const StatedElement& stated) {
    const IPolyline2DElement& element = plan[static_cast<std::size_t>(index)];
    const bool isLine = stated.type == "Line";
    const bool isArc = element.GetType() == MathTypes::Arc2D;
    pugi::xml_node node = Append(geometry, isLine ? "Line" : isArc ? "Curve" : "Spiral");
    Set(node, "length", element.GetLength());
    if (stated.type == "Viennese") throw InputError("a Viennese bend cannot be written");
    if (!isLine) {
        if (stated.startRadius * stated.endRadius < 0.0)
            throw InputError("a transition that changes sides cannot be written");
        const double side = stated.startRadius + stated.endRadius;
        Set(node, "rot", side < 0.0 ? "cw" : "ccw");
    }
    const auto radius = [](double value) { return value == 0.0 ? "INF" : Text(std::abs(value)); };
    if (isArc) {
        Set(node, "crvType", "arc");
        Set(node, "radius", radius(stated.startRadius));
    } else if (!isLine) {
        Set(node, "radiusStart", radius(stated.startRadius));
        Set(node, "radiusEnd", radius(stated.endRadius));
        Set(node, "spiType", SpiralName(stated.type));
    }
    Append(node, "Start", Text(element.GetStart()));
    if (isArc) Append(node, "Center", Text(static_cast<const Arc2D&>(element).GetCenter()));
    if (!isLine && !isArc) Append(node, "PI", Text(stated.statedCorner ? *stated.statedCorner : CornerOf(plan, index)));
    Append(node, "End", Text(stated.statedEnd));
}

void WriteProfile(pugi::xml_node node, const Alignment& alignment) {
    const std::vector<Profile::Vertex>& vertices = alignment.profile.GetVertices();
    if (alignment.profile.IsEmpty()) return;
    pugi::xml_node design = Append(Append(node, "Profile"), "ProfAlign");
    Set(design, "name", alignment.name);
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const Profile::Vertex& vertex = vertices[i];
        const std::string place = Text(alignment.GetStartStation() + vertex.station) + ' ' + Text(vertex.height);
        if (vertex.curve == Profile::Curve::Clothoids) throw InputError("clothoids of a profile cannot be written");
        if (vertex.curve == Profile::Curve::Corner) {
            Append(design, "PVI", place);
            continue;
        }
        const auto grade = [&](std::size_t from) {
            return (vertices[from + 1].height - vertices[from].height) /
                   (vertices[from + 1].station - vertices[from].station);
        };
        const double in = grade(i - 1);
        const double out = grade(i);
        if (vertex.curve == Profile::Curve::Arc) {
            pugi::xml_node curve = Append(design, "CircCurve", place);
            Set(curve, "length", vertex.radius * std::abs(std::atan(out) - std::atan(in)));
            Set(curve, "radius", std::copysign(vertex.radius, out - in));
        } else if (vertex.lengthIn != vertex.lengthOut) {
            pugi::xml_node curve = Append(design, "UnsymParaCurve", place);
            Set(curve, "lengthIn", vertex.lengthIn);
            Set(curve, "lengthOut", vertex.lengthOut);
        } else {
            const double length = vertex.lengthIn > 0.0 ? 2.0 * vertex.lengthIn : vertex.radius * std::abs(out - in);
            Set(Append(design, "ParaCurve", place), "length", length);
        }
    }
}

void WriteEquations(pugi::xml_node node, const Stationing& stationing) {
    for (std::uint32_t i = 0; i + 1 < stationing.GetNrOfZones(); ++i) {
        const Stationing::Equation equation = stationing.GetEquation(i);
        pugi::xml_node child = Append(node, "StaEquation");
        Set(child, "staBack", equation.back);
        Set(child, "staAhead", equation.ahead);
        Set(child, "staInternal", stationing.GetStart() + equation.length);
    }
}

void WriteCant(pugi::xml_node node, const Alignment& alignment, bool isMetric) {
    const Cant& cant = alignment.cant;
    if (cant.GetKnots().empty()) return;
    static constexpr const char* pivots[] = {"center", "leftRail", "rightRail", "insideRail", "outsideRail"};
    const double gauge = 2.0 * cant.GetArm();
    const double unit = isMetric ? 1000.0 : 12.0;  // cants are in millimetres or inches
    pugi::xml_node group = Append(node, "Cant");
    Set(group, "name", alignment.name);
    Set(group, "gauge", gauge);
    Set(group, "rotationPoint", pivots[static_cast<std::uint32_t>(cant.GetPivot())]);
    for (const Cant::Knot& knot : cant.GetKnots()) {
        if (knot.left != knot.right) throw InputError("slopes that differ to the left and right cannot be written");
        pugi::xml_node child = Append(group, "CantStation");
        Set(child, "station", alignment.GetStartStation() + knot.station);
        Set(child, "appliedCant", std::abs(knot.left) * gauge * unit);
        Set(child, "curvature", std::signbit(knot.left) ? "cw" : "ccw");
        if (knot.law == Cant::Law::Viennese) throw InputError("a cant along a Viennese bend cannot be written");
        if (knot.law != Cant::Law::Clothoid) Set(child, "transitionType", SpiralName(knot.law));
    }
}

void WriteSurface(pugi::xml_node group, const Surface& surface) {
    pugi::xml_node node = Append(group, "Surface");
    Set(node, "name", surface.name);
    pugi::xml_node definition = Append(node, "Definition");
    Set(definition, "surfType", "TIN");
    if (surface.statedPlanArea) Set(definition, "area2DSurf", *surface.statedPlanArea);
    if (surface.statedSurfaceArea) Set(definition, "area3DSurf", *surface.statedSurfaceArea);
    pugi::xml_node points = Append(definition, "Pnts");
    for (unsigned int i = 0; i < surface.mesh.GetVerticesSize(); ++i) {
        const Point3D& vertex = surface.mesh.GetVertices()[i];
        Set(Append(points, "P", Text(vertex.GetPoint2D()) + ' ' + Text(vertex.GetZ())), "id", std::to_string(i + 1));
    }
    pugi::xml_node faces = Append(definition, "Faces");
    const auto& indexes = surface.mesh.GetIndexes();
    for (std::size_t i = 0; i + 2 < indexes.size(); i += 3) {
        Append(faces, "F",
               std::to_string(indexes[i] + 1) + ' ' + std::to_string(indexes[i + 1] + 1) + ' ' +
                   std::to_string(indexes[i + 2] + 1));
    }
}

}  // namespace

void WriteLandXml(const std::string& path, const std::string& linearUnit, std::span<const Alignment> alignments,
                  std::span<const Surface> surfaces) {
    const std::string unit = linearUnit.empty() ? "meter" : linearUnit;
    const bool isMetric = unit.find("oot") == std::string::npos && unit.find("nch") == std::string::npos;
    pugi::xml_document document;
    pugi::xml_node root = Append(document, "LandXML");
    Set(root, "xmlns", "http://www.landxml.org/schema/LandXML-1.2");
    Set(root, "version", "1.2");
    Set(Append(Append(root, "Units"), isMetric ? "Metric" : "Imperial"), "linearUnit", unit);
    if (!alignments.empty()) {
        pugi::xml_node group = Append(root, "Alignments");
        for (const Alignment& alignment : alignments) {
            pugi::xml_node node = Append(group, "Alignment");
            Set(node, "name", alignment.name);
            Set(node, "length", alignment.statedLength > 0.0 ? alignment.statedLength : alignment.plan.GetLength());
            Set(node, "staStart", alignment.GetStartStation());
            pugi::xml_node geometry = Append(node, "CoordGeom");
            for (std::size_t i = 0; i < alignment.plan.size(); ++i)
                WriteElement(geometry, alignment.plan, static_cast<int>(i), alignment.elements[i]);
            WriteEquations(node, alignment.stationing);
            WriteProfile(node, alignment);
            WriteCant(node, alignment, isMetric);
        }
    }
    if (!surfaces.empty()) {
        pugi::xml_node group = Append(root, "Surfaces");
        for (const Surface& surface : surfaces) WriteSurface(group, surface);
    }
    if (!document.save_file(path.c_str(), " ")) throw InputError(path + ": cannot be written");
}

}  // namespace Kalvio::Examples
