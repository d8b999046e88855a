#include "alignment/Design.h"

#include "common/Csv.h"
#include "common/Svg.h"

#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Clothoid.h"

#include <cmath>
#include <map>

namespace Kalvio::Examples {

using namespace Kalvio::Math;

namespace {

const std::map<std::string, Spiral2D::Spiral2DType> kLaws = {
    {"Clothoid", Spiral2D::Spiral2DType::Clothoid}, {"Bloss", Spiral2D::Spiral2DType::Bloss},
    {"Sine", Spiral2D::Spiral2DType::Sine},         {"Cosine", Spiral2D::Spiral2DType::Cosine},
    {"Cubic", Spiral2D::Spiral2DType::Cubic},       {"Biquadratic", Spiral2D::Spiral2DType::Biquadratic}};

std::string MessageOf(const AlignmentDesign::Fault& fault) {
    using Kind = AlignmentDesign::FaultKind;
    switch (fault.kind) {
        case Kind::None:
            break;
        case Kind::NotFinite:
            return "two tangent points at least are needed";
        case Kind::SamePoint:
            return "the point before it is the same";
        case Kind::NotACurve:
            return "there is no curve of that radius and those lengths";
        case Kind::TurnsBack:
            return "the tangents lie on each other";
        case Kind::Transitions:
            return "the transitions leave no arc: " + Fixed(fault.amount, 4) + " too much";
        case Kind::Tangent:
            return "the tangent before it is too short by " + Fixed(fault.amount, 4);
    }
    return "";
}

StatedElement StatedOf(const IPolyline2DElement& element, const std::string& transition) {
    StatedElement stated{"Line", 0.0, 0.0, element.GetEnd(), 0};
    if (element.GetType() == MathTypes::Arc2D) {
        stated.type = "Arc";
        stated.startRadius = stated.endRadius = static_cast<const Arc2D&>(element).GetSignedRadius();
    } else if (element.GetType() == MathTypes::Clothoid) {
        const auto& clothoid = static_cast<const Clothoid&>(element);
        stated.type = transition;
        stated.startRadius = clothoid.GetStartRadius();
        stated.endRadius = clothoid.GetEndRadius();
    } else if (element.GetType() == MathTypes::Spiral2D) {
        const auto& spiral = static_cast<const Spiral2D&>(element);
        stated.type = transition;
        stated.startRadius = spiral.GetStartRadius();
        stated.endRadius = spiral.GetEndRadius();
    }
    return stated;
}

}  // namespace

Alignment DesignAlignment(const std::string& path, const std::string& transition) {
    const auto law = kLaws.find(transition);
    if (law == kLaws.end()) throw InputError("no transition named " + transition);
    std::vector<AlignmentDesign::Corner> corners;
    for (const std::vector<double>& row : ReadCsv(path, 5)) {
        corners.push_back({Point2D(row[0], row[1]), row[2], row[3], row[4], law->second});
    }
    Alignment alignment;
    alignment.name = "Design";
    AlignmentDesign::Fault fault;
    if (!AlignmentDesign::MakePlan(corners, alignment.plan, fault)) {
        std::string place = path;
        if (fault.corner < corners.size()) {
            const Point2D& point = corners[fault.corner].point;
            place += ": point " + std::to_string(fault.corner + 1) + " at " + Fixed(point.GetX(), 3) + "," +
                     Fixed(point.GetY(), 3);
        }
        throw InputError(place + ": " + MessageOf(fault));
    }
    const Polyline2D& plan = alignment.plan;
    for (unsigned int i = 0; i < plan.GetNrOfElements(); ++i) {
        alignment.elements.push_back(StatedOf(plan.GetElementAtIndex(i), transition));
    }
    return alignment;
}

}  // namespace Kalvio::Examples
