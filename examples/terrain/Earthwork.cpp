#include "terrain/Earthwork.h"

#include "common/Drawing.h"
#include "common/InputError.h"
#include "common/Svg.h"

#include "kalvio/alignments/Alignment.h"
#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/polygons/Polygon2D.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kalvio::Examples {

using namespace Math;

namespace {

constexpr double chordHeight = 1e-3;
constexpr double mostSections = 1e5;
constexpr double mostRounding = 2e-3;  // of files: so near to its ends an axis may be off the design that ends there

constexpr double pageWidth = 1100.0;
constexpr double margin = 60.0;
constexpr double gap = 46.0;
constexpr std::size_t perRow = 3;
constexpr double cellWidth = (pageWidth - 2.0 * margin - gap * (perRow - 1)) / perRow;
constexpr double cellHeight = 110.0;
constexpr double massHeight = 200.0;
constexpr const char* groundColor = "#5b4630";
constexpr const char* designColor = "#b3273c";
constexpr const char* textColor = "#333333";

// The strip between two offsets of an axis.
Polygon2D StripOf(const Math::Alignment& axis, double from, double to, double reach) {
    std::vector<Point2D> right;
    std::vector<Point2D> left;
    for (const double station : axis.GetStationsByHeight(from, to, chordHeight)) {
        Point2D point;
        if (axis.GetPoint(station, reach, point)) right.push_back(point);
        if (axis.GetPoint(station, -reach, point)) left.push_back(point);
    }
    right.insert(right.end(), left.rbegin(), left.rend());
    return Polygon2D(std::move(right));
}

void Add(BoundingBox2D& world, const std::vector<CrossSections::Line>& lines, bool& isEmpty) {
    for (const CrossSections::Line& line : lines) {
        for (const Point2D& p : line) {
            world = isEmpty ? BoundingBox2D(p, p) : world + BoundingBox2D(p, p);
            isEmpty = false;
        }
    }
}

void DrawSection(Svg& svg, double left, double top, const CrossSections::Section& section, double startStation,
                 const std::string& unit, const Vec2D& extent) {
    BoundingBox2D own;
    bool isEmpty = true;
    Add(own, section.ground, isEmpty);
    Add(own, section.design, isEmpty);
    const Point2D middle(0.0, own.GetCenter().GetY());
    const SvgPanel panel(left, top, cellWidth, cellHeight, BoundingBox2D(middle - extent * 0.5, middle + extent * 0.5),
                         false);
    const double low = middle.GetY() - 0.5 * extent.GetY();
    const double high = middle.GetY() + 0.5 * extent.GetY();
    const SvgStyle grid{"#dddddd", 0.7, "", ""};
    for (const double z : Multiples(NiceStep(extent.GetY(), 4), low, high)) {
        svg.Polyline(panel.ToPage({{-0.5 * extent.GetX(), z}, {0.5 * extent.GetX(), z}}), grid);
        svg.Text(panel.ToPage(Point2D(-0.5 * extent.GetX(), z)) + Vec2D(-3, 3), Fixed(z, 1), 9, "#555555",
                 SvgAnchor::End);
    }
    svg.Polyline(panel.ToPage({{0.0, low}, {0.0, high}}), {"#999999", 0.7, "", "6 2 1 2"});
    for (const CrossSections::Line& line : section.ground) svg.Polyline(panel.ToPage(line), {groundColor, 1.2, "", ""});
    for (const CrossSections::Line& line : section.design) svg.Polyline(panel.ToPage(line), {designColor, 1.2, "", ""});
    svg.Text(Point2D(left, top - 5),
             Fixed(startStation + section.station, 2) + ": cut " + Fixed(section.area.cut, 2) + ", fill " +
                 Fixed(section.area.fill, 2) + ' ' + unit + "2",
             10, textColor);
}

void DrawMasses(Svg& svg, double top, const Earthwork& work, const std::string& unit) {
    std::vector<Point2D> curve;
    for (const CrossSections::Mass& mass : work.masses) {
        curve.emplace_back(work.startStation + mass.station, mass.volume.cut - mass.volume.fill);
    }
    BoundingBox2D world(Point2D(curve.front().GetX(), 0.0), Point2D(curve.back().GetX(), 0.0));
    for (const Point2D& p : curve) world += BoundingBox2D(p, p);
    const SvgPanel panel = DrawSectionGrid(svg, margin, top, pageWidth - 2.0 * margin, massHeight, world);
    svg.Polyline(panel.ToPage({{curve.front().GetX(), 0.0}, {curve.back().GetX(), 0.0}}), {"#777777", 1.0, "", ""});
    svg.Polyline(panel.ToPage(curve), {designColor, 1.6, "", ""});
    svg.Text(Point2D(margin, top - 10), "Mass curve, cut less fill by mean end areas [" + unit + "3]", 12, textColor);
}

}  // namespace

Earthwork::Earthwork(const Alignment& alignment, const TinSurfacePatch3D& ground, const TinSurfacePatch3D& design,
                     double step, double reach)
    : name(alignment.name), startStation(alignment.GetStartStation()) {
    const Math::Alignment axis = alignment.InSpace();
    if (axis.GetLength() / step > mostSections) throw InputError("too many sections along " + name);
    const double inset = std::min(mostRounding, 0.1 * axis.GetLength());
    const std::vector<double> stations = axis.GetStationsByStep(inset, axis.GetLength() - inset, step);
    if (!CrossSections::Make(axis, stations, -reach, reach, ground, design, sections) ||
        !CrossSections::GetMasses(sections, masses)) {
        throw InputError(name + " has no sections");
    }
    const Polygon2D strip = StripOf(axis, stations.front(), stations.back(), reach);
    TinSurfacePatch3D::Volumes volumes;
    if (!strip.IsSelfCrossing(1e-6) && ground.GetVolumes(design, strip, volumes)) exact = volumes;
}

bool DrawSheet(const std::string& path, const Earthwork& work, const std::string& unit) {
    std::vector<const CrossSections::Section*> drawn;
    Vec2D extent(1e-3, 1e-3);  // the largest one, the axis in the middle
    for (const CrossSections::Section& section : work.sections) {
        BoundingBox2D own;
        bool isEmpty = true;
        Add(own, section.ground, isEmpty);
        Add(own, section.design, isEmpty);
        if (isEmpty) continue;
        drawn.push_back(&section);
        const double farthest = std::max(-own.GetMinPoint().GetX(), own.GetMaxPoint().GetX());
        extent = {std::max(extent.GetX(), 2.0 * farthest), std::max(extent.GetY(), 1.1 * own.GetSize().GetY())};
    }
    const double rows = static_cast<double>((drawn.size() + perRow - 1) / perRow);
    const double massTop = margin + 20.0 + rows * (cellHeight + gap);
    Svg svg(pageWidth, massTop + massHeight + margin);
    svg.Text(Point2D(margin, 30), "Cross-sections of " + work.name + ": ground brown, design red", 15, "#222222");
    for (std::size_t i = 0; i < drawn.size(); ++i) {
        DrawSection(svg, margin + static_cast<double>(i % perRow) * (cellWidth + gap),
                    margin + 10.0 + static_cast<double>(i / perRow) * (cellHeight + gap), *drawn[i], work.startStation,
                    unit, extent);
    }
    DrawMasses(svg, massTop, work, unit);
    return svg.Write(path);
}

}  // namespace Kalvio::Examples
