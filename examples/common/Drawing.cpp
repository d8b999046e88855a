#include "common/Drawing.h"

#include <algorithm>
#include <cmath>

namespace Kalvio::Examples {

using Math::BoundingBox2D;
using Math::Point2D;
using Math::Vec2D;

void DrawScaleBar(Svg& svg, double x, double y, double scale, const std::string& unit) {
    const double length = NiceStep(100.0 / scale, 1);
    const double end = x + length * scale;
    svg.Polyline({Point2D(x, y - 4), Point2D(x, y), Point2D(end, y), Point2D(end, y - 4)}, {"#333333", 1.2, "", ""});
    svg.Text(Point2D((x + end) * 0.5, y - 6), Fixed(length, length < 1.0 ? 2 : 0) + ' ' + unit, 11, "#333333",
             SvgAnchor::Middle);
}

void DrawNorthArrow(Svg& svg, double x, double y) {
    const double tip = y - 36.0;
    svg.Polyline({Point2D(x, y), Point2D(x, tip), Point2D(x - 4, tip + 10), Point2D(x, tip), Point2D(x + 4, tip + 10)},
                 {"#333333", 1.2, "", ""});
    svg.Text(Point2D(x, tip - 6), "N", 11, "#333333", SvgAnchor::Middle);
}

SvgPanel DrawSectionGrid(Svg& svg, double left, double top, double width, double height, const BoundingBox2D& world) {
    const double from = world.GetMinPoint().GetX();
    const double to = from + world.GetSize().GetX();
    double low = world.GetMinPoint().GetY();
    double high = low + world.GetSize().GetY();
    const double stepZ = NiceStep(std::max(high - low, 1e-3), 6);
    const double stepS = NiceStep(to - from, 10);
    low = std::floor(low / stepZ) * stepZ;
    high = std::max(std::ceil(high / stepZ), low / stepZ + 1.0) * stepZ;
    const SvgPanel panel(left, top, width, height, BoundingBox2D(Point2D(from, low), Point2D(to, high)), false);
    const SvgStyle grid{"#dddddd", 0.7, "", ""};
    for (const double z : Multiples(stepZ, low - stepZ * 0.5, high + stepZ * 0.5)) {
        svg.Polyline(panel.ToPage(std::vector<Point2D>{Point2D(from, z), Point2D(to, z)}), grid);
        svg.Text(panel.ToPage(Point2D(from, z)) + Vec2D(-6, 3.5), Fixed(z, stepZ < 1.0 ? 1 : 0), 10, "#555555",
                 SvgAnchor::End);
    }
    for (const double s : Multiples(stepS, from, to)) {
        svg.Polyline(panel.ToPage(std::vector<Point2D>{Point2D(s, low), Point2D(s, high)}), grid);
        svg.Text(panel.ToPage(Point2D(s, low)) + Vec2D(0, 14), Fixed(s, 0), 10, "#555555", SvgAnchor::Middle);
    }
    return panel;
}

}  // namespace Kalvio::Examples
