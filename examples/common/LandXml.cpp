#include "common/LandXml.h"

#include "common/LandXmlDocument.h"

#include "kalvio/core/WindingValue.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Spiral2D.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace Kalvio::Examples {

using namespace Kalvio::Math;  // an example speaks mostly the library's words

namespace {

constexpr double profileRounding = 1e-5;  // files round stations; nearer ones are one

class Reader : private LandXmlDocument {
public:
    explicit Reader(const std::string& path) : LandXmlDocument(path) { CollectPoints(GetRoot()); }

    LandXmlFile Read() const {
        LandXmlFile result;
        result.linearUnit = GetLinearUnit();
        for (const pugi::xml_node group : GetRoot().children("Alignments")) {
            for (const pugi::xml_node node : group.children("Alignment")) {
                OrWarn(result.warnings, "the alignment", node,
                       [&] { result.alignments.push_back(ReadAlignment(node, result.warnings)); });
            }
        }
        if (!result.alignments.empty()) return result;
        if (!result.warnings.empty()) throw InputError(result.warnings.front());
        Fail(GetRoot(), "no <Alignment> in the file");
    }

private:
    // Runs `read`; where the file is at fault, leaves out what it stands for, with a warning.
    template <class Read>
    static void OrWarn(std::vector<std::string>& warnings, const char* what, pugi::xml_node named, Read&& read) {
        try {
            read();
        } catch (const InputError& error) {
            warnings.push_back(std::string(error.what()) + "; " + what + " \"" + named.attribute("name").as_string() +
                               "\" is left out");
        }
    }

    // Named points, which others refer to by pntRef.
    void CollectPoints(pugi::xml_node node) {
        for (const pugi::xml_node group : node.children("CgPoints")) {
            for (const pugi::xml_node point : group.children("CgPoint")) {
                if (const pugi::xml_attribute name = point.attribute("name")) points[name.as_string()] = point;
            }
            CollectPoints(group);
        }
    }

    // LandXML writes northing first.
    Point2D PointOf(pugi::xml_node node) const {
        if (const pugi::xml_attribute reference = node.attribute("pntRef")) {
            const auto found = points.find(reference.as_string());
            if (found == points.end()) Fail(node, std::string("no point named ") + reference.as_string());
            node = found->second;
        }
        const std::vector<double> place = Numbers(node, 2);
        return {place[1], place[0]};
    }

    Point2D ChildPoint(pugi::xml_node node, const char* name) const {
        const pugi::xml_node child = node.child(name);
        if (!child) Fail(node, std::string("<") + node.name() + "> without <" + name + ">");
        return PointOf(child);
    }

    bool TurnsLeft(pugi::xml_node node) const {
        const std::string_view rotation = node.attribute("rot").as_string();
        if (rotation != "cw" && rotation != "ccw") Fail(node, std::string("<") + node.name() + "> needs rot cw or ccw");
        return rotation == "ccw";
    }

    // Signed, positive to the left; 0 for INF.
    double SignedRadius(pugi::xml_node node, const char* attribute) const {
        if (std::string_view(node.attribute(attribute).as_string()) == "INF") return 0.0;
        const double radius = std::abs(Number(node, attribute));
        return TurnsLeft(node) ? radius : -radius;
    }

    Alignment ReadAlignment(pugi::xml_node node, std::vector<std::string>& warnings) const {
        Alignment alignment;
        alignment.name = node.attribute("name").as_string();
        alignment.startStation = node.attribute("staStart") ? Number(node, "staStart") : 0.0;
        alignment.statedLength = node.attribute("length") ? Number(node, "length") : 0.0;
        const pugi::xml_node geometry = node.child("CoordGeom");
        if (!geometry) Fail(node, "<Alignment> without <CoordGeom>");
        for (const pugi::xml_node child : geometry.children()) {
            const std::string_view name = child.name();
            if (name == "Line") {
                ReadLine(child, alignment);
            } else if (name == "Curve") {
                ReadCurve(child, alignment);
            } else if (name == "Spiral") {
                ReadSpiral(child, alignment);
            } else if (child.type() == pugi::node_element && name != "Feature") {
                Fail(child, std::string("<") + child.name() + "> is no element this program knows");
            }
        }
        if (alignment.elements.empty()) Fail(geometry, "<CoordGeom> without elements");
        for (const pugi::xml_node profile : node.children("Profile")) {
            const pugi::xml_node design = profile.child("ProfAlign");
            if (!design || alignment.profile.GetNrOfElements() > 0) continue;
            OrWarn(warnings, "the profile of", node, [&] { ReadProfile(design, alignment); });
        }
        for (const char* const name : {"StaEquation", "Cant"}) {
            if (const pugi::xml_node other = node.child(name)) {
                warnings.push_back(At(other, std::string("<") + name + "> of \"" + alignment.name + "\" is not read"));
            }
        }
        return alignment;
    }

    void Add(pugi::xml_node node, std::unique_ptr<IPolyline2DElement> element, StatedElement stated,
             Alignment& alignment) const {
        if (!(element->GetLength() > 0.0)) Fail(node, std::string("<") + node.name() + "> of no length");
        const double length = element->GetLength();
        alignment.plan.AppendElement(element.release());
        const int index = static_cast<int>(alignment.plan.GetNrOfElements()) - 1;
        Polyline2D::PolylinePoint sample;
        for (const double station : {0.5 * length, length}) {
            if (!alignment.plan.MakePointAndTangentAt(index, station, sample) ||
                !std::isfinite(sample.point.Distance(Point2D()))) {
                Fail(node, std::string("<") + node.name() + "> that is no curve");
            }
        }
        stated.statedEnd = ChildPoint(node, "End");
        stated.line = LineOf(node);
        alignment.elements.push_back(std::move(stated));
    }

    void ReadLine(pugi::xml_node node, Alignment& alignment) const {
        Add(node, std::make_unique<Line2D>(ChildPoint(node, "Start"), ChildPoint(node, "End")),
            {"Line", 0.0, 0.0, {}, 0}, alignment);
    }

    void ReadCurve(pugi::xml_node node, Alignment& alignment) const {
        const Point2D start = ChildPoint(node, "Start");
        const Point2D center = ChildPoint(node, "Center");
        const Point2D end = ChildPoint(node, "End");
        const bool left = TurnsLeft(node);
        const Angle sweep =
            (start - center).GetAngle(end - center, left ? WindingValue::CounterClockwise : WindingValue::Clockwise);
        auto arc = std::make_unique<Arc2D>(start, center, left ? sweep : Angle(-sweep.GetRadians()));
        const double radius = arc->GetSignedRadius();
        Add(node, std::move(arc), {"Arc", radius, radius, {}, 0}, alignment);
    }

    void ReadSpiral(pugi::xml_node node, Alignment& alignment) const {
        const double r1 = SignedRadius(node, "radiusStart");
        const double r2 = SignedRadius(node, "radiusEnd");
        const double length = Number(node, "length");
        const Point2D start = ChildPoint(node, "Start");
        // The tangents meet in PI, so the way there is the direction at the start.
        const Vec2D tangent = (ChildPoint(node, "PI") - start).Normalize();
        const std::string_view kind = node.attribute("spiType").as_string();
        if (kind == "clothoid") {
            const double parameter = Clothoid::ComputeParameter(r1, r2, length);
            if (!(parameter > 0.0)) Fail(node, "<Spiral> of one radius only");
            Add(node, std::make_unique<Clothoid>(r1, r2, parameter, start, tangent), {"Clothoid", r1, r2, {}, 0},
                alignment);
            return;
        }
        struct Known {
            const char* name;
            const char* type;
            Spiral2D::Spiral2DType value;
        };
        using Type = Spiral2D::Spiral2DType;
        static constexpr Known known[] = {{"bloss", "Bloss", Type::Bloss},
                                          {"sinusoid", "Sine", Type::Sine},
                                          {"cosine", "Cosine", Type::Cosine},
                                          {"biquadratic", "Biquadratic", Type::Biquadratic},
                                          {"biquadraticParabola", "Biquadratic", Type::Biquadratic},
                                          {"cubic", "Cubic", Type::Cubic},
                                          {"cubicParabola", "Cubic", Type::Cubic}};
        const auto* const found =
            std::find_if(std::begin(known), std::end(known), [kind](const Known& k) { return k.name == kind; });
        if (found == std::end(known)) Fail(node, "spiType \"" + std::string(kind) + "\" is not known to this program");
        Add(node, std::make_unique<Spiral2D>(found->value, r1, r2, length, start, tangent),
            {found->type, r1, r2, {}, 0}, alignment);
    }

    // A vertex of the tangent polygon with the curve that rounds it.
    struct Vertex {
        Point2D point;
        double lengthIn = 0.0;   // horizontal, to the curve's start
        double lengthOut = 0.0;  // horizontal, to the curve's end
        double radius = 0.0;     // of a circular curve
    };

    void ReadProfile(pugi::xml_node design, Alignment& alignment) const {
        std::vector<Vertex> vertices;
        for (const pugi::xml_node child : design.children()) {
            const std::string_view name = child.name();
            Vertex vertex;
            if (name == "ParaCurve") {
                vertex.lengthIn = vertex.lengthOut = 0.5 * Number(child, "length");
            } else if (name == "UnsymParaCurve") {
                vertex.lengthIn = Number(child, "lengthIn");
                vertex.lengthOut = Number(child, "lengthOut");
            } else if (name == "CircCurve") {
                vertex.radius = std::abs(Number(child, "radius"));
            } else if (name != "PVI") {
                continue;
            }
            const std::vector<double> place = Numbers(child, 2);
            vertex.point = Point2D(place[0], place[1]);
            if (!vertices.empty() && !(place[0] > vertices.back().point.GetX()))
                Fail(child, "profile stations must ascend");
            vertices.push_back(vertex);
        }
        if (vertices.size() < 2) return;

        Point2D reached = vertices.front().point;
        for (std::size_t i = 1; i < vertices.size(); ++i) {
            const bool last = i + 1 == vertices.size();
            Rounding rounding = last ? Rounding{vertices[i].point, vertices[i].point, {}}
                                     : RoundVertex(vertices[i - 1].point, vertices[i], vertices[i + 1].point);
            if (rounding.start.GetX() > reached.GetX()) {
                alignment.profile.AppendElement(new Line2D(reached, rounding.start));
            } else if (rounding.start.GetX() < reached.GetX() - profileRounding) {
                alignment.gaps.push_back({rounding.start.GetX(), reached.GetX(), "vertical curves overlap"});
            }
            for (auto& element : rounding.elements) alignment.profile.AppendElement(element.release());
            reached = rounding.end;
        }
    }

    struct Rounding {
        Point2D start;
        Point2D end;
        std::vector<std::unique_ptr<IPolyline2DElement>> elements;  // none for a plain vertex
    };

    static std::unique_ptr<Parabola> ParabolaThrough(const Point2D& from, const Point2D& to, double slopeAt,
                                                     double xOfSlope, double a) {
        // y = y0 + slope (x - x0) + a (x - x0)^2 about the tangent point (x0, y0), multiplied out.
        const Point2D& tangentPoint = xOfSlope == from.GetX() ? from : to;
        const double x0 = tangentPoint.GetX();
        auto parabola =
            std::make_unique<Parabola>(a, slopeAt - 2.0 * a * x0, tangentPoint.GetY() - slopeAt * x0 + a * x0 * x0);
        parabola->SetStart(from);
        parabola->SetEnd(to);
        return parabola;
    }

    static Rounding RoundVertex(const Point2D& before, const Vertex& vertex, const Point2D& after) {
        const Point2D& v = vertex.point;
        const Vec2D in = v - before;
        const Vec2D out = after - v;
        const double g1 = in.GetY() / in.GetX();
        const double g2 = out.GetY() / out.GetX();
        Rounding result{v, v, {}};
        if (vertex.radius > 0.0) {
            const double sweep = std::atan(g2) - std::atan(g1);
            const double tangentLength = vertex.radius * std::tan(std::abs(sweep) * 0.5);
            const Vec2D unitIn = Vec2D(in).Normalize();
            result.start = v - unitIn * tangentLength;
            result.end = v + Vec2D(out).Normalize() * tangentLength;
            const Point2D center = result.start + unitIn.GetNormalVector(sweep > 0.0) * vertex.radius;
            result.elements.push_back(std::make_unique<Arc2D>(result.start, center, Angle(sweep)));
        } else if (vertex.lengthIn > 0.0 && vertex.lengthOut > 0.0) {
            const double lengthIn = vertex.lengthIn;
            const double lengthOut = vertex.lengthOut;
            result.start = v - Vec2D(lengthIn, lengthIn * g1);
            result.end = v + Vec2D(lengthOut, lengthOut * g2);
            // Height of the curve over the vertex; the two halves meet there with one slope.
            const double rise = (g2 - g1) * lengthIn * lengthOut / (2.0 * (lengthIn + lengthOut));
            const Point2D middle = v + Vec2D(0.0, rise);
            const double aIn = rise / (lengthIn * lengthIn);
            const double aOut = rise / (lengthOut * lengthOut);
            if (lengthIn == lengthOut) {
                result.elements.push_back(ParabolaThrough(result.start, result.end, g1, result.start.GetX(), aIn));
            } else {
                result.elements.push_back(ParabolaThrough(result.start, middle, g1, result.start.GetX(), aIn));
                result.elements.push_back(ParabolaThrough(middle, result.end, g2, result.end.GetX(), aOut));
            }
        }
        return result;
    }

    std::unordered_map<std::string, pugi::xml_node> points;
};

}  // namespace

bool Alignment::GetHeight(double station, double& height) const {
    if (profile.GetNrOfElements() == 0) return false;
    for (const ProfileGap& gap : gaps) {
        if (station > gap.from && station < gap.to) return false;
    }
    const double start = profile.GetStart().GetX();
    const double end = profile.GetEnd().GetX();
    // The length of the axis and the last station of the profile are rounded each by itself.
    if (station < start && station > start - profileRounding) station = start;
    if (station > end && station < end + profileRounding) station = end;
    return profile.GetYUsingLengthAlongXAxis(station - start, height) != 0;
}

LandXmlFile ReadLandXml(const std::string& path) { return Reader(path).Read(); }

LandXmlFile LoadLandXml(const std::string& path) {
    LandXmlFile file = ReadLandXml(path);
    for (const std::string& warning : file.warnings) std::fprintf(stderr, "warning: %s\n", warning.c_str());
    return file;
}

std::string UnitText(const std::string& linearUnit) {
    return linearUnit.empty() || linearUnit == "meter" ? "m" : linearUnit;
}

}  // namespace Kalvio::Examples
