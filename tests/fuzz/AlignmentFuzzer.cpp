#include "fuzz/Elements.h"

using namespace Kalvio::Math;

namespace {

Profile CheckProfile(Bytes& bytes) {
    double last = bytes.TakeDouble();
    const auto vertices = bytes.TakeSome(8, [&] {
        Profile::Vertex vertex{bytes.TakeDouble(), bytes.TakeDouble(), bytes.TakeOne<Profile::Curve>(5),
                               bytes.TakeDouble(), bytes.TakeDouble(), bytes.TakeDouble()};
        if (bytes.Tame()) vertex.station = last += 1.0 + std::abs(vertex.station);
        return vertex;
    });
    Profile profile;
    const bool isBuilt = profile.Set(vertices);
    Require(isBuilt == profile.GetFaults().empty());
    const double station = bytes.TakeDouble();
    double height = 0.0;
    Profile::Place place;
    const bool found = profile.GetHeight(station, height);
    Require(profile.GetPlace(station, place) == found && !(found && profile.IsEmpty()));
    (void)profile.GetExtrema();
    (void)profile.GetMostSecondDerivative(station, station + 1.0);
    std::vector<double> stations;
    profile.GetStationsOfHeight(height, stations);
    if (!bytes.Tame()) return profile;
    Require(profile.GetSlopeLength(profile.GetStart(), profile.GetEnd()) >=
            (profile.GetEnd() - profile.GetStart()) - 1e-6);
    Require(!found || !stations.empty());
    for (const double at : stations) {
        Require(profile.GetPlace(at, place));
        RequireNear(place.height, height, 1e-9 * (1.0 + std::abs(place.grade)) * 1e4);
    }
    return profile;
}

Stationing CheckStationing(Bytes& bytes) {
    Stationing stationing(bytes.TakeDouble());
    for (const Point2D& equation : bytes.TakePoints(bytes.TakeCount(5))) {
        (void)stationing.AppendEquation(equation.GetX(), equation.GetY());
    }
    const double length = bytes.TakeDouble();
    Stationing::Place place;
    const bool isRead = stationing.Parse(stationing.GetText(length, 4), place);
    if (bytes.Tame()) Require(isRead && std::abs(place.length - length) <= 1e-6);
    return stationing;
}

Cant TakeCant(Bytes& bytes) {
    const auto knots = bytes.TakeSome(4, [&] {
        return Cant::Knot{bytes.TakeDouble(), bytes.TakeDouble(), bytes.TakeDouble(), bytes.TakeOne<Cant::Law>(8)};
    });
    Cant cant;
    const auto pivot = bytes.TakeOne<Cant::Pivot>(6);
    (void)cant.Set(knots, pivot, bytes.TakeDouble());
    return cant;
}

// Where elements do not join, one station stands for the end of one and the start of the next, which answers.
bool IsAtGap(const Polyline2D& plan, double station) {
    double joint = 0.0;
    for (unsigned int i = 0; i + 1 < plan.GetNrOfElements(); ++i) {
        const Point2D& end = plan.GetElementAtIndex(i).GetEnd();
        joint += plan.GetElementAtIndex(i).GetLength();
        if (std::abs(station - joint) > 1e-6) continue;
        if (!(end.Distance(plan.GetElementAtIndex(i + 1).GetStart()) <= 1e-6)) return true;
    }
    return false;
}

void CheckAlignment(const Alignment& road, const Point3D& p, double station, double reach) {
    std::vector<Alignment::Place> places;
    road.GetPlaces(p, reach, places);
    Alignment::Place nearest;
    Require(road.GetNearestPlace(p, reach, nearest) == !places.empty());
    for (const Alignment::Place& place : places) {
        Point2D foot;
        See({place.station, place.offset});
        Require(std::abs(place.offset) <= reach && road.GetPoint(place.station, 0.0, foot));
        if (IsAtGap(road.GetPlan(), place.station)) continue;
        Require(std::abs(foot.Distance(p.GetPoint2D()) - std::abs(place.offset)) <=
                1e-3 + 1e-6 * std::abs(place.offset));
    }
    Alignment::Frame frame;
    Point3D on;
    Require(road.GetFrame(station, frame) == road.GetPoint({station, reach, 1.0}, on));
    LineString3D across;
    (void)road.GetCrossLine(station, p.GetX(), p.GetY(), across);
    Alignment::Approach approach;
    const double allowed = std::max(1.0, road.GetLength() / 64.0);
    if (road.GetNearestApproach(road, allowed, approach)) Require(approach.distance <= allowed);
    (void)road.GetSpaceLength(station, p.GetX());
    (void)road.GetStationsByStep(station, p.GetX(), std::max(reach, road.GetLength() / 64.0));
    (void)road.GetStationsByHeight(station, p.GetX(), std::max(reach, 1.0));
}

void CheckDesign(Bytes& bytes) {
    const auto corners = bytes.TakeSome(6, [&] {
        return AlignmentDesign::Corner{bytes.TakePoint(), bytes.TakeDouble(), bytes.TakeDouble(), bytes.TakeDouble(),
                                       bytes.TakeOne<AlignmentDesign::Law>(8)};
    });
    Polyline2D plan;
    AlignmentDesign::Fault fault;
    const bool isMade = AlignmentDesign::MakePlan(corners, plan, fault);
    Require(isMade == (fault.kind == AlignmentDesign::FaultKind::None) && (isMade || plan.GetNrOfElements() == 0));
    See(plan.GetEnd());
    if (bytes.Tame()) Require(plan.IsContinuous(1e-6));
    const Circle2D first{bytes.TakePoint(), bytes.TakeDouble()}, second{bytes.TakePoint(), bytes.TakeDouble()};
    const Line2D line(first.GetCenter(), bytes.TakePoint());
    const auto law = bytes.TakeOne<AlignmentDesign::Law>(8);
    double r1 = bytes.TakeDouble(), r2 = bytes.TakeDouble();
    (void)AlignmentDesign::FromClothoid(bytes.TakeDouble(), r1, r2);
    (void)AlignmentDesign::FromSecondDerivatives(bytes.TakeDouble(), r1, r2);
    Spiral2D transition;
    double misfit = 0.0;
    (void)AlignmentDesign::TransitionBetween(first, second, law, transition, misfit);
    (void)AlignmentDesign::TransitionBetween(line, second, law, transition, misfit);
    (void)AlignmentDesign::TransitionBetween(second, line, law, transition, misfit);
    (void)AlignmentDesign::TransitionsBetween(first, second, law, transition, transition, misfit);
    std::vector<Arc2D> arcs;
    (void)AlignmentDesign::ArcBetween(line, second, bytes.TakeDouble(), arcs, misfit);
    (void)AlignmentDesign::ArcBetween(second, line, bytes.TakeDouble(), arcs, misfit);
    (void)AlignmentDesign::ArcBetween(first, second, bytes.TakeDouble(), arcs, misfit);
    AlignmentDesign::Corner corner{first.GetCenter(), 0.0, bytes.TakeDouble(), bytes.TakeDouble(), law};
    (void)AlignmentDesign::ThroughPoint(line.GetStart(), line.GetEnd(), second.GetCenter(), corner, misfit);
    (void)AlignmentDesign::WithoutArc(line.GetStart(), line.GetEnd(), bytes.TakeDouble(), bytes.TakeDouble(), corner);
}

void CheckFit(Bytes& bytes) {
    const std::vector<Point2D> points = bytes.TakePoints(24);
    std::vector<AlignmentDesign::Corner> corners;
    AlignmentFitting::Result fitted;
    if (!AlignmentFitting::Propose(points, bytes.TakeDouble(), AlignmentDesign::Law::Clothoid, corners) ||
        !AlignmentFitting::Fit(points, corners, fitted))
        return;
    Require(fitted.places.size() == points.size() && fitted.plan.IsContinuous(1e-6));
    if (!bytes.Tame()) return;
    for (const Alignment::Place& place : fitted.places) {
        RequireNear(place.offset, 0.0, std::abs(fitted.places[fitted.worst].offset));
    }
}

}  // namespace

void Kalvio::Math::FuzzAlignment(Bytes& bytes) {
    CheckDesign(bytes);
    CheckFit(bytes);
    const Stationing stationing = CheckStationing(bytes);
    const Profile profile = CheckProfile(bytes);
    const Cant cant = TakeCant(bytes);
    const Point3D p = bytes.TakePoint3D();
    const double station = bytes.TakeDouble(), reach = bytes.TakeDouble();
    const auto [plan, tame] = TakeChain(bytes, 50, [](const auto&, bool) {});
    const Alignment road(plan, profile, cant, stationing);
    if (tame) CheckAlignment(road, p, station, reach);
    Alignment::Place place;
    (void)road.GetNearestPlace(p, reach, place);
}
