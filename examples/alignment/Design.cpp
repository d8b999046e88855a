#include "alignment/Design.h"

#include "common/Csv.h"
#include "common/Svg.h"

#include "kalvio/alignments/AlignmentFitting.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <type_traits>
#include <utility>

namespace Kalvio::Examples {

using namespace Kalvio::Math;

namespace {

const std::map<std::string, Spiral2D::Spiral2DType> kLaws = {
    {"Clothoid", Spiral2D::Spiral2DType::Clothoid}, {"Bloss", Spiral2D::Spiral2DType::Bloss},
    {"Sine", Spiral2D::Spiral2DType::Sine},         {"Cosine", Spiral2D::Spiral2DType::Cosine},
    {"Cubic", Spiral2D::Spiral2DType::Cubic},       {"Biquadratic", Spiral2D::Spiral2DType::Biquadratic},
    {"Viennese", Spiral2D::Spiral2DType::Viennese}};

// The column of the table that a fault comes from.
int ColumnOf(const AlignmentDesign::Fault& fault, const AlignmentDesign::Corner& corner) {
    using Kind = AlignmentDesign::FaultKind;
    constexpr int x = 1;
    constexpr int radius = 3;
    constexpr int in = 4;
    constexpr int out = 5;
    if (fault.kind == Kind::SamePoint || fault.kind == Kind::TurnsBack) return x;
    if (fault.kind == Kind::Transitions) return in;
    if (fault.kind != Kind::NotACurve || !(corner.radius > 0.0)) return radius;
    return corner.lengthIn < 0.0 ? in : corner.lengthOut < 0.0 ? out : radius;
}

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
    StatedElement stated{"Line", 0.0, 0.0, element.GetEnd(), 0, {}};
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

AlignmentDesign::Law LawOf(const std::string& transition) {
    const auto law = kLaws.find(transition);
    if (law == kLaws.end()) throw InputError("no transition named " + transition);
    return law->second;
}

Alignment AlignmentOf(const std::string& name, Polyline2D plan, const std::string& transition) {
    Alignment alignment;
    alignment.name = name;
    alignment.plan = std::move(plan);
    for (const IPolyline2DElement& element : alignment.plan) {
        alignment.elements.push_back(StatedOf(element, transition));
    }
    return alignment;
}

// A table of tangent points, with the places that messages name.
class Corners {
public:
    Corners(const std::string& table, AlignmentDesign::Law law) : path(table) {
        for (const std::vector<double>& row : ReadCsv(path, 5, &lines)) {
            corners.push_back({Point2D(row[0], row[1]), row[2], row[3], row[4], law});
        }
    }

    void RemoveArcs() {
        for (std::size_t i = 1; i + 1 < corners.size(); ++i) {
            AlignmentDesign::Corner& corner = corners[i];
            if (!(corner.lengthIn > 0.0)) continue;
            if (!AlignmentDesign::WithoutArc(corners[i - 1].point, corners[i + 1].point,
                                             corner.lengthOut / corner.lengthIn, 0.0, corner)) {
                Fail(i, 4, "no two transitions make this turn");
            }
        }
    }

    void LayThrough(const Point2D& point) {
        if (corners.size() < 3) Fail(0, 1, "there is no curve to lay through a point");
        const auto found = std::min_element(corners.begin() + 1, corners.end() - 1, [&](const auto& a, const auto& b) {
            return a.point.Distance(point) < b.point.Distance(point);
        });
        const auto i = static_cast<std::size_t>(found - corners.begin());
        double misfit = 0.0;
        if (AlignmentDesign::ThroughPoint(corners[i - 1].point, corners[i + 1].point, point, *found, misfit)) return;
        Fail(i, 3,
             "no curve passes through " + PlaceText(point) +
                 (misfit < 0.0 ? ", which lies " + Fixed(-misfit, 4) + " on the outside" : ""));
    }

    Polyline2D MakePlan() const {
        Polyline2D plan;
        AlignmentDesign::Fault fault;
        if (AlignmentDesign::MakePlan(corners, plan, fault)) return plan;
        if (fault.corner >= corners.size()) throw InputError(path + ": " + MessageOf(fault));
        Fail(fault.corner, ColumnOf(fault, corners[fault.corner]), MessageOf(fault));
    }

private:
    static std::string PlaceText(const Point2D& point) { return Fixed(point.GetX(), 3) + "," + Fixed(point.GetY(), 3); }

    [[noreturn]] void Fail(std::size_t corner, int column, const std::string& message) const {
        if (corner >= corners.size()) throw InputError(path + ": " + message);
        throw InputError(path + ":" + std::to_string(lines[corner]) + ", column " + std::to_string(column) +
                         ": point " + std::to_string(corner + 1) + " at " + PlaceText(corners[corner].point) + ": " +
                         message);
    }

    std::string path;
    std::vector<AlignmentDesign::Corner> corners;
    std::vector<std::size_t> lines;
};

// Calls join(from, to) with the lines and circles that the numbers stand for.
template <class Join>
bool WithShapes(const std::vector<double>& from, const std::vector<double>& to, Join&& join) {
    const auto line = [](const std::vector<double>& n) { return Line2D(Point2D(n[0], n[1]), Point2D(n[2], n[3])); };
    const auto circle = [](const std::vector<double>& n) { return Circle2D(Point2D(n[0], n[1]), n[2]); };
    if (from.size() == 4 && to.size() == 4) throw InputError("two lines are joined by a design");
    if (from.size() == 4) return join(line(from), circle(to));
    return to.size() == 4 ? join(circle(from), line(to)) : join(circle(from), circle(to));
}

std::vector<Polyline2D> Join(const DesignWishes& wishes) {
    std::vector<Polyline2D> plans;
    double misfit = 0.0;
    const auto append = [](Polyline2D& plan, const IPolyline2DElement& element) { plan.AppendElement(element); };
    const bool isJoined = WithShapes(wishes.joins[0], wishes.joins[1], [&](const auto& from, const auto& to) {
        if (wishes.radius) {
            std::vector<Arc2D> arcs;
            if (!AlignmentDesign::ArcBetween(from, to, *wishes.radius, arcs, misfit)) return false;
            for (const Arc2D& arc : arcs) append(plans.emplace_back(), arc);
            return true;
        }
        const AlignmentDesign::Law law = LawOf(wishes.transition);
        Spiral2D first;
        Spiral2D second;
        if (AlignmentDesign::TransitionBetween(from, to, law, first, misfit)) {
            append(plans.emplace_back(), first);
            return true;
        }
        if constexpr (std::is_same_v<decltype(from), decltype(to)>) {  // circles that lie outside of each other
            if (misfit > 0.0 && AlignmentDesign::TransitionsBetween(from, to, law, first, second, misfit)) {
                append(plans.emplace_back(), first);
                append(plans.back(), second);
                return true;
            }
        }
        return false;
    });
    if (isJoined) return plans;
    throw InputError(misfit == 0.0 ? std::string("nothing joins these")
                                   : "nothing joins these: they lie too " + std::string(misfit < 0.0 ? "near" : "far") +
                                         " by " + Fixed(std::abs(misfit), 4));
}

Alignment FitPoints(const DesignWishes& wishes) {
    std::vector<std::size_t> lines;
    std::vector<Point2D> points;
    for (const std::vector<double>& row : ReadCsv(wishes.fit, 2, &lines)) points.emplace_back(row[0], row[1]);
    std::vector<AlignmentDesign::Corner> corners;
    if (!AlignmentFitting::Propose(points, wishes.scatter, LawOf(wishes.transition), corners))
        throw InputError(wishes.fit + ": no straights and curves are seen along these points");
    AlignmentFitting::Result fitted;
    if (!AlignmentFitting::Fit(points, corners, fitted))
        throw InputError(wishes.fit + ": no alignment is nearest to these points");
    std::printf("Fit of %zu points: scatter %.6f, largest offset %.6f in line %zu%s\n", points.size(), fitted.scatter,
                fitted.places[fitted.worst].offset, lines[fitted.worst],
                fitted.isAtLimit ? "; curves touch, the points want more than fits" : "");
    for (std::size_t i = 1; i + 1 < fitted.corners.size(); ++i) {
        const AlignmentDesign::Corner& corner = fitted.corners[i];
        std::printf("  corner %.6f,%.6f radius %.6f, transitions %.6f and %.6f\n", corner.point.GetX(),
                    corner.point.GetY(), corner.radius, corner.lengthIn, corner.lengthOut);
    }
    return AlignmentOf("Fit", std::move(fitted.plan), wishes.transition);
}

}  // namespace

std::vector<Alignment> Design(const DesignWishes& wishes) {
    std::vector<Alignment> alignments;
    if (!wishes.fit.empty()) return {FitPoints(wishes)};
    if (wishes.table.empty()) {
        if (wishes.joins.size() != 2) throw InputError("joins are made from one line or circle to another");
        for (Polyline2D& plan : Join(wishes)) {
            alignments.push_back(
                AlignmentOf("Join " + std::to_string(alignments.size() + 1), std::move(plan), wishes.transition));
        }
        return alignments;
    }
    Corners corners(wishes.table, LawOf(wishes.transition));
    if (wishes.hasNoArcs) corners.RemoveArcs();
    for (const std::vector<double>& point : wishes.through) corners.LayThrough(Point2D(point[0], point[1]));
    alignments.push_back(AlignmentOf("Design", corners.MakePlan(), wishes.transition));
    return alignments;
}

}  // namespace Kalvio::Examples
