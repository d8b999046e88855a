#include "common/LandXml.h"

#include "common/LandXmlDocument.h"

#include "kalvio/alignments/AlignmentDesign.h"
#include "kalvio/core/WindingValue.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Spiral2D.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <span>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace Kalvio::Examples {

using namespace Kalvio::Math;  // an example speaks mostly the library's words

namespace {

struct KnownSpiral {
    const char* name;
    const char* type;
    Spiral2D::Spiral2DType value;
};

// Of several names for one the first is written.
std::span<const KnownSpiral> KnownSpirals() {
    using Type = Spiral2D::Spiral2DType;
    static constexpr KnownSpiral known[] = {{"clothoid", "Clothoid", Type::Clothoid},
                                            {"bloss", "Bloss", Type::Bloss},
                                            {"sinusoid", "Sine", Type::Sine},
                                            {"cosine", "Cosine", Type::Cosine},
                                            {"biquadratic", "Biquadratic", Type::Biquadratic},
                                            {"biquadraticParabola", "Biquadratic", Type::Biquadratic},
                                            {"cubic", "Cubic", Type::Cubic},
                                            {"cubicParabola", "Cubic", Type::Cubic},
                                            {"japaneseCubic", "Cubic", Type::Cubic}};
    return known;
}

template <class Matches>
const KnownSpiral* FindWhere(Matches&& matches) {
    const std::span<const KnownSpiral> known = KnownSpirals();
    const auto found = std::find_if(known.begin(), known.end(), matches);
    return found == known.end() ? nullptr : &*found;
}

const KnownSpiral* FindSpiral(std::string_view name) {
    return FindWhere([name](const KnownSpiral& k) { return k.name == name; });
}

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
        alignment.stationing = Stationing(node.attribute("staStart") ? Number(node, "staStart") : 0.0);
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
            if (!design || !alignment.profile.IsEmpty()) continue;
            OrWarn(warnings, "the profile of", node, [&] { ReadProfile(design, alignment); });
        }
        for (const pugi::xml_node equation : node.children("StaEquation")) {
            OrWarn(warnings, "a station equation of", node, [&] { ReadEquation(equation, alignment); });
        }
        if (const pugi::xml_node cant = node.child("Cant")) {
            OrWarn(warnings, "the cant of", node, [&] { ReadCant(cant, alignment); });
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
            {"Line", 0.0, 0.0, {}, 0, {}}, alignment);
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
        Add(node, std::move(arc), {"Arc", radius, radius, {}, 0, {}}, alignment);
    }

    void ReadSpiral(pugi::xml_node node, Alignment& alignment) const {
        const double r1 = SignedRadius(node, "radiusStart");
        const double r2 = SignedRadius(node, "radiusEnd");
        const double length = Number(node, "length");
        const Point2D start = ChildPoint(node, "Start");
        // The tangents meet in PI, so the way there is the direction at the start.
        const Point2D corner = ChildPoint(node, "PI");
        const Vec2D tangent = (corner - start).Normalize();
        const std::string_view kind = node.attribute("spiType").as_string();
        const KnownSpiral* const found = FindSpiral(kind);
        if (found == nullptr) Fail(node, "spiType \"" + std::string(kind) + "\" is not known to this program");
        std::unique_ptr<IPolyline2DElement> element;
        if (found->value == Spiral2D::Spiral2DType::Clothoid) {
            const double parameter = Clothoid::ComputeParameter(r1, r2, length);
            if (!(parameter > 0.0)) Fail(node, "<Spiral> of one radius only");
            element = std::make_unique<Clothoid>(r1, r2, parameter, start, tangent);
        } else {
            element = std::make_unique<Spiral2D>(found->value, r1, r2, length, start, tangent);
        }
        if (found->value == Spiral2D::Spiral2DType::Cubic) {
            // Files do not say whether the radii are those of curvature: the end does.
            const Point2D end = ChildPoint(node, "End");
            for (const auto convert : {AlignmentDesign::FromSecondDerivatives, AlignmentDesign::FromClothoid}) {
                double first = r1;
                double last = r2;
                if (!convert(length, first, last)) continue;
                auto other = std::make_unique<Spiral2D>(found->value, first, last, length, start, tangent);
                const bool isFirst = element->GetEnd() == start;  // there is no curve of those radii
                if (isFirst || other->GetEnd().Distance(end) < element->GetEnd().Distance(end))
                    element = std::move(other);
            }
        }
        Add(node, std::move(element), {found->type, r1, r2, {}, 0, corner}, alignment);
    }

    void ReadProfile(pugi::xml_node design, Alignment& alignment) const {
        std::vector<Profile::Vertex> vertices;
        std::vector<pugi::xml_node> nodes;
        for (const pugi::xml_node child : design.children()) {
            const std::string_view name = child.name();
            Profile::Vertex vertex;
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
            if (vertex.radius > 0.0) vertex.curve = Profile::Curve::Arc;
            if (vertex.lengthIn != 0.0 || vertex.lengthOut != 0.0) vertex.curve = Profile::Curve::Parabola;
            const std::vector<double> place = Numbers(child, 2);
            vertex.station = place[0] - alignment.GetStartStation();
            vertex.height = place[1];
            vertices.push_back(vertex);
            nodes.push_back(child);
        }
        if (vertices.size() < 2) return;
        vertices.front().curve = vertices.back().curve = Profile::Curve::Corner;  // where there is nothing to round
        Profile profile;
        if (!profile.Set(vertices) && profile.IsEmpty()) {
            const Profile::Fault& fault = profile.GetFaults().front();
            Fail(nodes[fault.vertex], fault.kind == Profile::FaultKind::NotAscending
                                          ? "profile stations must ascend"
                                          : std::string("<") + nodes[fault.vertex].name() + "> that is no curve");
        }
        alignment.profile = std::move(profile);  // without heights where vertical curves overlap
    }

    // Back at the internal station where the file leaves it out.
    void ReadEquation(pugi::xml_node node, Alignment& alignment) const {
        if (node.attribute("staIncrement").as_string() == std::string_view("decreasing")) {
            Fail(node, "<StaEquation> with decreasing stations");
        }
        const double ahead = Number(node, "staAhead");
        const double back =
            node.attribute("staBack")
                ? Number(node, "staBack")
                : alignment.stationing.GetPlace(Number(node, "staInternal") - alignment.GetStartStation()).number;
        if (!alignment.stationing.AppendEquation(back, ahead)) Fail(node, "<StaEquation> before the one above it");
    }

    // Of the curvature's outside the rail is higher; an adverse cant is the other way round.
    void ReadCant(pugi::xml_node node, Alignment& alignment) const {
        const bool isMetric = !GetRoot().child("Units").child("Imperial");
        const double gauge = Number(node, "gauge") * (isMetric ? 1000.0 : 12.0);  // in the unit of the cant
        if (!(gauge > 0.0)) Fail(node, "<Cant> without a gauge");
        static const std::map<std::string_view, Cant::Pivot> pivots = {
            {"", Cant::Pivot::Axis},           {"center", Cant::Pivot::Axis},      {"leftRail", Cant::Pivot::Left},
            {"rightRail", Cant::Pivot::Right}, {"insideRail", Cant::Pivot::Inner}, {"outsideRail", Cant::Pivot::Outer}};
        const auto pivot = pivots.find(node.attribute("rotationPoint").as_string());
        if (pivot == pivots.end()) Fail(node, "<Cant> about a rotationPoint that is not known to this program");
        std::vector<Cant::Knot> knots;
        for (const pugi::xml_node child : node.children("CantStation")) {
            const bool isLeft = child.attribute("curvature").as_string() == std::string_view("ccw");
            const double sign = isLeft != child.attribute("adverse").as_bool() ? 1.0 : -1.0;
            Cant::Knot knot;
            knot.station = Number(child, "station") - alignment.GetStartStation();
            knot.left = knot.right = sign * Number(child, "appliedCant") / gauge;
            if (const pugi::xml_attribute law = child.attribute("transitionType")) {
                const KnownSpiral* const found = FindSpiral(law.as_string());
                if (found == nullptr) Fail(child, std::string("transitionType ") + law.as_string() + " is not known");
                knot.law = found->value;
            }
            knots.push_back(knot);
        }
        const double arm = 0.5 * gauge / (isMetric ? 1000.0 : 12.0);
        if (!alignment.cant.Set(knots, pivot->second, arm)) Fail(node, "<Cant> whose stations do not ascend");
    }

    std::unordered_map<std::string, pugi::xml_node> points;
};

}  // namespace

std::string SpiralName(const std::string& type) {
    const KnownSpiral* const found = FindWhere([&type](const KnownSpiral& k) { return k.type == type; });
    return found == nullptr ? type : found->name;
}

std::string SpiralName(Spiral2D::Spiral2DType law) {
    const KnownSpiral* const found = FindWhere([law](const KnownSpiral& k) { return k.value == law; });
    return found == nullptr ? "" : found->name;
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
