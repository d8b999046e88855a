// Draws the pictures of the documentation: the rules of sign, station, side, angle, tolerance and winding, with what
// the library itself answers.

#include "common/Svg.h"

#include "kalvio/core/Angle.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/queries/Distance.h"

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace Kalvio::Examples {

using namespace Kalvio::Math;

namespace {

const std::string ink = "#1f2933", road = "#1b4f9c", good = "#2e7d4f", bad = "#c0392b", pale = "#9aa5b1";

/// A picture in the units of its world.
class Picture {
public:
    Picture(double width, double height, const BoundingBox2D& world)
        : svg(width, height), panel(20, 20, width - 40, height - 40, world, true) {}

    void Chain(const std::vector<Point2D>& points, const std::string& color, double width = 2.0,
               const std::string& dash = "") {
        svg.Polyline(panel.ToPage(points), {color, width, "", dash});
    }
    /// A chain with a head in the direction of travel, at its end or at a share of its last segment.
    void Arrow(const std::vector<Point2D>& points, const std::string& color, double width = 2.0) {
        Chain(points, color, width);
        const Point2D tip = panel.ToPage(points.back());
        const Vec2D along = (tip - panel.ToPage(points[points.size() - 2])).Normalize();
        const Vec2D across = along.GetNormalVector(true) * 4.0;
        const Point2D base = tip - along * 10.0;
        svg.Area({{tip, base + across, base - across}}, {"", 0.0, color, ""});
    }
    void Dot(const Point2D& p, const std::string& color) { svg.Circle(panel.ToPage(p), 4.0, {"", 0.0, color, ""}); }
    void Ring(const Point2D& p, double radius, const std::string& color) {
        svg.Circle(panel.ToPage(p), radius * panel.GetScaleX(), {color, 1.2, "", "4 3"});
    }
    void Fill(const std::vector<std::vector<Point2D>>& rings, const std::string& color) {
        std::vector<std::vector<Point2D>> onPage;
        for (const std::vector<Point2D>& ring : rings) onPage.push_back(panel.ToPage(ring));
        svg.Area(onPage, {"", 0.0, color, ""});
    }
    /// Text some page units beside a place.
    void Say(const Point2D& p, const Vec2D& shift, const std::string& text, const std::string& color = ink,
             SvgAnchor anchor = SvgAnchor::Start) {
        svg.Text(panel.ToPage(p) + shift, text, 14, color, anchor);
    }
    bool Write(const std::string& path) const { return svg.Write(path); }

private:
    Svg svg;
    SvgPanel panel;
};

std::vector<Point2D> Sampled(const IPolyline2DElement& element) {
    Polyline2D chain;
    chain.AppendElement(static_cast<IPolyline2DElement*>(element.Clone()));
    LineString2D points;
    if (!chain.MakeLineStringUsingHeight(0.0, chain.GetLength(), points, 0.005, 1e-4)) return {element.GetStart()};
    return points.GetPoints();
}

Picture DrawSigns() {
    Picture picture(720, 300, {Point2D(-10, -45), Point2D(220, 45)});
    const Line2D straight(Point2D(0, 0), Point2D(60, 0));
    picture.Chain(Sampled(straight), road, 3.0);
    for (const double side : {1.0, -1.0}) {
        const Clothoid transition(0.0, side * 100.0, 70.7, straight.GetEnd(), straight.GetDirection());
        const Point2D center =
            transition.GetEnd() + transition.GetEndTangent().GetNormalVector(true) * transition.GetEndRadius();
        const Arc2D arc(transition.GetEnd(), center, Angle(side * 0.55));
        picture.Chain(Sampled(transition), good, 3.0);
        picture.Arrow(Sampled(arc), bad, 3.0);
        const std::string sign = arc.GetSignedRadius() > 0.0 ? "+100" : "-100";
        picture.Say(arc.GetEnd(), {10, 5}, side > 0.0 ? "turns left" : "turns right");
        picture.Say(transition.GetMiddlePoint(), {-20, side > 0.0 ? -24.0 : 36.0}, "radii 0, " + sign, good,
                    SvgAnchor::End);
        picture.Say(arc.GetMiddlePoint(), {-14, side > 0.0 ? -8.0 : 18.0}, "radius " + sign, bad, SvgAnchor::End);
    }
    picture.Say(straight.GetStart(), {0, -10}, "radius 0: straight", road);
    return picture;
}

Picture DrawStations() {
    Picture picture(720, 330, {Point2D(-5, -28), Point2D(165, 42)});
    Polyline2D chain;
    chain.AppendElement(new Line2D(Point2D(0, 0), Point2D(60, 0)));
    chain.AppendElement(new Arc2D(Point2D(60, 0), Point2D(60, 100), Angle(0.9)));
    picture.Arrow(Sampled(chain), road, 3.0);
    Polyline2D::PolylinePoint at;
    for (double station = 0.0; station < chain.GetLength(); station += 20.0) {
        if (!chain.MakePointAndTangentAt(station, at)) continue;
        const Vec2D right = at.tangent.GetNormalVector(false);
        picture.Chain({at.point - right * 1.2, at.point + right * 1.2}, road, 1.5);
        picture.Say(at.point + right * -2.5, {0, 0}, Fixed(station, 0), road, SvgAnchor::Middle);
    }
    for (const Point2D& p : {Point2D(76, -16), Point2D(88, 36)}) {
        Polyline2D::PolylinePoint foot;
        if (!chain.GetNearestPoint(p, foot, Tolerances(1e-4, 1e-10))) continue;
        const double offset = Distance::PointToLine(p, foot.point, foot.point + foot.tangent);
        const std::string& color = offset > 0.0 ? bad : good;
        picture.Chain({p, foot.point}, color, 1.5, "5 3");
        picture.Dot(p, color);
        picture.Dot(foot.point, color);
        picture.Say(p, {offset > 0.0 ? 10.0 : -10.0, 4},
                    "station " + Fixed(foot.station, 1) + ", offset " + (offset > 0.0 ? "+" : "") + Fixed(offset, 1),
                    color, offset > 0.0 ? SvgAnchor::Start : SvgAnchor::End);
    }
    picture.Say(Point2D(0, -24), {0, 0}, "right of the direction of travel: positive", bad);
    picture.Say(Point2D(0, 26), {0, 0}, "left of it: negative", good);
    return picture;
}

Picture DrawAngles() {
    Picture picture(720, 300, {Point2D(-1, -10), Point2D(73, 14)});
    const auto sweep = [](const Point2D& center, const Point2D& start, double radians) {
        return Sampled(Arc2D(start, center, Angle(radians)));
    };
    const Vec2D v(8.0, 6.0);
    const Point2D left, right(40, 0);
    picture.Arrow({left, Point2D(11, 0)}, pale, 1.2);
    picture.Arrow({left, left + v}, road);
    picture.Arrow(sweep(left, Point2D(5, 0), v.GetAngle().GetRadians()), bad);
    picture.Say(left + v, {6, -4}, "Vec2D(8, 6).GetAngle(): " + Fixed(v.GetAngle().GetDegrees(), 2) + " deg", road);
    picture.Say(Point2D(11, 0), {4, 4}, "+X");
    picture.Arrow({right, Point2D(40, 11)}, pale, 1.2);
    picture.Arrow({right, right + v}, road);
    const Angle bearing(right, right + v);
    picture.Arrow(sweep(right, Point2D(40, 5), -bearing.GetRadians()), bad);
    picture.Say(right + v, {6, -4}, "bearing Angle(from, to): " + Fixed(bearing.GetDegrees(), 2) + " deg", road);
    picture.Say(Point2D(40, 11), {0, -6}, "+Y, north", ink, SvgAnchor::Middle);
    picture.Say(Point2D(0, -6), {0, 0}, "counter-clockwise from +X, in (-pi, pi]", bad);
    picture.Say(Point2D(40, -6), {0, 0}, "clockwise from north, in (-pi, pi]", bad);
    return picture;
}

Picture DrawTolerances() {
    Picture picture(720, 300, {Point2D(-2, -5), Point2D(34, 5)});
    const Tolerances tolerances(1.5, 1e-10);
    const double t = tolerances.UserTolerance();
    const Line2D line(Point2D(0, 0), Point2D(14, 0));
    picture.Fill({{Point2D(-t, -t), Point2D(14 + t, -t), Point2D(14 + t, t), Point2D(-t, t)}}, "#dbe7f5");
    picture.Chain({line.GetStart(), line.GetEnd()}, road, 3.0);
    for (const Point2D& p : {Point2D(4, 1.0), Point2D(8, 1.5), Point2D(11, 2.2), Point2D(15.2, -0.6)}) {
        const bool isOn = line.IsPointOnGeometry(p, tolerances);
        picture.Dot(p, isOn ? good : bad);
        picture.Say(p, {6, -6}, isOn ? "on" : "off", isOn ? good : bad);
    }
    picture.Say(Point2D(0, -3.4), {0, 0}, "on a segment: inclusive, 1.5 is on", road);
    const Point2D center(25, 1);
    picture.Fill({{center + Vec2D(-t, -t), center + Vec2D(t, -t), center + Vec2D(t, t), center + Vec2D(-t, t)}},
                 "#dbe7f5");
    picture.Ring(center, t, pale);
    picture.Dot(center, road);
    for (const Vec2D& shift : {Vec2D(1.2, 1.2), Vec2D(-1.5, 0.0), Vec2D(0.4, -2.1)}) {
        const Point2D p = center + shift;
        const bool isEqual = p.IsEqualTo(center, t);
        picture.Dot(p, isEqual ? good : bad);
        picture.Say(p, {shift.GetX() < 0.0 ? -8.0 : 8.0, 4}, isEqual ? "equal" : "different", isEqual ? good : bad,
                    shift.GetX() < 0.0 ? SvgAnchor::End : SvgAnchor::Start);
    }
    picture.Say(Point2D(20, -3.4), {0, 0}, "equal points: a square, strict", road);
    return picture;
}

Picture DrawWindings() {
    Picture picture(720, 300, {Point2D(-1, -6), Point2D(57, 13)});
    const std::vector<Point2D> square{{0, 0}, {11, 0}, {11, 11}, {0, 11}};
    const std::vector<Point2D> hole{{3, 3}, {3, 8}, {8, 8}, {8, 3}};
    Polygon2D left(square);
    left.AppendHoleBoundary(hole);
    picture.Fill({square, hole}, "#dbe7f5");
    picture.Arrow({square[3], square[0], square[1], square[2], square[3]}, road);
    picture.Arrow({hole[3], hole[0], hole[1], hole[2], hole[3]}, road);
    picture.Say(Point2D(0, -2), {0, 0}, "counter-clockwise: area +" + Fixed(left.GetArea(), 0), good);
    picture.Say(Point2D(0, -4), {0, 0}, "holes run either way", ink);
    Polygon2D right(square);
    right.Reverse();
    const Vec2D aside(18, 0);
    picture.Arrow({square[0] + aside, square[3] + aside, square[2] + aside, square[1] + aside, square[0] + aside},
                  road);
    picture.Say(square[0] + aside, {0, 34}, "clockwise: area " + Fixed(right.GetArea(), 0), bad);
    std::vector<Point2D> star;
    for (int i = 0; i < 5; ++i)
        star.push_back(Point2D(42, 5) + (Point2D(Angle(1.5707963 + 2.5132741 * i), 7.0) - Point2D()));
    const Polygon2D crossing(star);
    star.push_back(star.front());
    picture.Chain(star, road);
    for (const Point2D& p : {Point2D(42, 5), Point2D(42, 9.5), Point2D(46.6, 1.2)}) {
        const bool winds = crossing.IsPointInside(p, 1e-4), crosses = crossing.IsPointInsideByRay(p, 1e-4);
        picture.Dot(p, winds ? good : bad);
        picture.Say(p, {7, 4}, winds && !crosses ? "in, parity says out" : winds ? "in" : "out", winds ? good : bad);
    }
    picture.Say(Point2D(42, -2), {0, 14}, "inside by nonzero winding", ink, SvgAnchor::Middle);
    return picture;
}

}  // namespace
}  // namespace Kalvio::Examples

int main(int argc, char** argv) {
    using namespace Kalvio::Examples;
    const std::string folder = argc == 2 ? std::string(argv[1]) + '/' : std::string();
    const bool isWritten = DrawSigns().Write(folder + "signs.svg") && DrawStations().Write(folder + "stations.svg") &&
                           DrawAngles().Write(folder + "angles.svg") &&
                           DrawTolerances().Write(folder + "tolerances.svg") &&
                           DrawWindings().Write(folder + "windings.svg");
    if (!isWritten) std::fprintf(stderr, "usage: pictures [FOLDER]: signs.svg, stations.svg ... are written there\n");
    return isWritten ? 0 : 1;
}
