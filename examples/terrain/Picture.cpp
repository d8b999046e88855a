#include "terrain/Picture.h"

#include "common/Drawing.h"
#include "common/Progress.h"
#include "common/Svg.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/Vec3D.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace Kalvio::Examples {

using namespace Math;

namespace {

constexpr double pageWidth = 1100.0;
constexpr double margin = 60.0;
constexpr double panelWidth = pageWidth - 2.0 * margin;
constexpr double highestPlan = 600.0;
constexpr double sectionHeight = 200.0;

constexpr const char* designColor = "#b3273c";
constexpr const char* groundColor = "#5b4630";
constexpr const char* cutColor = "#e9b48f";
constexpr const char* fillColor = "#a9c8e0";
constexpr const char* textColor = "#333333";

using Rgb = std::array<double, 3>;

// Tints by height, from green lowlands through sand to pale tops.
Rgb TintAt(double ratio) {
    static constexpr std::array<Rgb, 5> stops = {
        {{112, 152, 112}, {168, 190, 132}, {226, 214, 160}, {206, 170, 124}, {238, 226, 212}}};
    const double place = std::clamp(ratio, 0.0, 1.0) * (stops.size() - 1);
    const std::size_t i = std::min<std::size_t>(static_cast<std::size_t>(place), stops.size() - 2);
    const double part = place - static_cast<double>(i);
    Rgb result{};
    for (std::size_t k = 0; k < 3; ++k) result[k] = stops[i][k] + (stops[i + 1][k] - stops[i][k]) * part;
    return result;
}

std::string ColorText(const Rgb& color, double brightness) {
    std::array<char, 8> text{};
    const auto part = [&](std::size_t k) {
        return static_cast<unsigned int>(std::lround(std::clamp(color[k] * brightness, 0.0, 255.0)));
    };
    std::snprintf(text.data(), text.size(), "#%02x%02x%02x", part(0), part(1), part(2));
    return text.data();
}

// A surface shaded by light from the north-west at 45 degrees, and its contours.
class Relief {
public:
    /// @param scale  page units per world unit
    /// @param interval  of the contours
    /// @param cuts  how often their corners are cut
    Relief(const IndexedTriangleSet3D& source, double scale, const std::optional<double>& interval, unsigned int cuts)
        : surface(source), contourCuts(cuts) {
        const BoundingBox3D box = surface.GetBoundingBox();
        lowest = box.GetMinPoint().GetZ();
        range = std::max(box.GetSize().GetZ(), 1e-3);
        surface.ComputeNormals(false, normals);
        // Heights are stretched until the middle of the slopes shows.
        std::vector<double> slopes;
        for (const Vec3D& n : normals) {
            if (n.GetZ() > 1e-6) slopes.push_back(std::hypot(n.GetX(), n.GetY()) / n.GetZ());
        }
        if (slopes.empty()) return;
        std::sort(slopes.begin(), slopes.end());
        stretch = std::clamp(std::round(0.35 / std::max(slopes[slopes.size() / 2], 1e-9)), 1.0, 8.0);
        // Contours nearer than 4 page units would blacken the slopes.
        contourStep = interval.value_or(NiceStep(std::max(range, 60.0 * slopes[slopes.size() * 3 / 4] / scale), 15));
    }

    void Draw(Svg& svg, const SvgPanel& panel) const {
        Point3D a;
        Point3D b;
        Point3D c;
        Progress progress("drawing", surface.GetTrianglesCount());
        for (std::uint64_t i = 0; surface.GetTriangleAt(i, a, b, c); ++i) {
            const double height = (a.GetZ() + b.GetZ() + c.GetZ()) / 3.0;
            const std::string color = ColorText(TintAt((height - lowest) / range), BrightnessOf(normals[i]));
            // A thin border of the same colour closes the seams between neighbours.
            svg.Area({panel.ToPage({a.GetPoint2D(), b.GetPoint2D(), c.GetPoint2D()})}, {color, 0.4, color, ""});
            progress.Step();
        }
        DrawContours(svg, panel);
    }

    void DrawLegend(Svg& svg, double x, double y, const std::string& unit) const {
        constexpr int pieces = 24;
        constexpr double length = 150.0;
        for (int k = 0; k < pieces; ++k) {
            const double from = x + length * k / pieces;
            const double to = from + length / pieces;
            svg.Area({{Point2D(from, y), Point2D(to, y), Point2D(to, y - 10), Point2D(from, y - 10)}},
                     {"", 0.0, ColorText(TintAt((k + 0.5) / pieces), 1.0), ""});
        }
        svg.Text(Point2D(x - 6, y - 1), Fixed(lowest, 1), 11, textColor, SvgAnchor::End);
        svg.Text(Point2D(x + length + 6, y - 1),
                 Fixed(lowest + range, 1) + ' ' + unit + ", contours every " +
                     Fixed(contourStep, contourStep < 1 ? 2 : 0) + ' ' + unit,
                 11, textColor);
    }

private:
    double BrightnessOf(const Vec3D& normal) const {
        Vec3D n(normal.GetX() * stretch, normal.GetY() * stretch, normal.GetZ());
        static const Vec3D toLight = Vec3D(-1.0, 1.0, std::sqrt(2.0)).Normalize();
        const double light = std::max(0.0, n.Normalize().DotProduct(toLight));
        return 0.45 + 0.55 * light / toLight.GetZ();  // level ground has the tint itself
    }

    void DrawContours(Svg& svg, const SvgPanel& panel) const {
        TinSurfacePatch3D ground;
        std::vector<LineString3D> contours;
        if (!ground.SetTriangles(surface) || !ground.GetContours(contourStep, contours, contourCuts)) return;
        for (const LineString3D& contour : contours) {
            const double level = contour.GetStart().GetZ();
            const bool isMain = std::abs(std::remainder(level, 5.0 * contourStep)) < 0.1 * contourStep;
            svg.Polyline(panel.ToPage(contour.GetLineString2D().GetPoints()), {"#6b5a45", isMain ? 0.9 : 0.45, "", ""});
        }
    }

    const IndexedTriangleSet3D& surface;
    std::vector<Vec3D> normals;
    double lowest;
    double range;
    double contourStep = 1.0;
    unsigned int contourCuts;
    double stretch = 1.0;
};

// The triangles of a design in the colour of their depth under the ground or height over it, the deepest and the
// highest the darkest.
void DrawDepths(Svg& svg, const SvgPanel& panel, const PictureParts& parts) {
    constexpr Rgb deepest{196, 98, 45};
    constexpr Rgb highest{60, 120, 180};
    const IndexedTriangleSet3D& set = parts.design->GetTriangles();
    std::vector<std::optional<double>> depths(set.GetTrianglesCount());
    double most = 1e-3;
    Point3D a;
    Point3D b;
    Point3D c;
    for (std::uint64_t t = 0; set.GetTriangleAt(t, a, b, c); ++t) {
        const Point3D middle = a + ((b - a) + (c - a)) / 3.0;
        double z = 0.0;
        if (!parts.ground->GetHeight(middle.GetPoint2D(), z)) continue;
        depths[t] = z - middle.GetZ();
        most = std::max(most, std::abs(*depths[t]));
    }
    for (std::uint64_t t = 0; set.GetTriangleAt(t, a, b, c); ++t) {
        if (!depths[t]) continue;
        const double share = 0.15 + 0.85 * std::abs(*depths[t]) / most;
        Rgb tint{};
        for (std::size_t k = 0; k < 3; ++k)
            tint[k] = 250.0 + ((*depths[t] > 0.0 ? deepest : highest)[k] - 250.0) * share;
        const std::string color = ColorText(tint, 1.0);
        svg.Area({panel.ToPage({a.GetPoint2D(), b.GetPoint2D(), c.GetPoint2D()})}, {color, 0.4, color, ""});
    }
    svg.Text(Point2D(margin, 68), "Cut orange, fill blue, darkest at " + Fixed(most, 2) + ' ' + parts.unit, 11,
             textColor);
}

// The axis inside the extent, with its stations at the multiples of `step`; white below, so that it stands out from the
// relief.
void DrawAxis(Svg& svg, const SvgPanel& panel, const BoundingBox2D& extent, const Alignment& alignment, double step) {
    const Polyline2D& plan = alignment.plan;
    const double border = 10.0 / panel.GetScaleX();
    std::vector<Polyline2D::PolylinePoint> samples;
    const double spacing = std::max(2.0 / panel.GetScaleX(), plan.GetLength() / 20000.0);
    (void)plan.MakePointsAndTangents(0.0, plan.GetLength(), samples, spacing, 1e-6);
    std::vector<std::vector<Point2D>> lines(1);
    for (const Polyline2D::PolylinePoint& sample : samples) {
        if (extent.IsPointInside(sample.point, border)) {
            lines.back().push_back(panel.ToPage(sample.point));
        } else if (!lines.back().empty()) {
            lines.emplace_back();
        }
    }
    for (const std::vector<Point2D>& line : lines) {
        svg.Polyline(line, {"white", 2.8, "", ""});
        svg.Polyline(line, {designColor, 1.3, "", ""});
    }

    for (const double s :
         Multiples(step, alignment.GetStartStation(), alignment.GetStartStation() + plan.GetLength())) {
        Polyline2D::PolylinePoint sample;
        if (!plan.MakePointAndTangentAt(s - alignment.GetStartStation(), sample) ||
            !extent.IsPointInside(sample.point, border)) {
            continue;
        }
        const Point2D at = panel.ToPage(sample.point);
        svg.Circle(at, 2.0, {designColor, 1.0, "white", ""});
        const Vec2D right = sample.tangent.GetNormalVector(false);
        const Vec2D across(right.GetX(), -right.GetY());
        svg.Text(at + across * 9.0 + Vec2D(0.0, 3.5), Fixed(s, 0), 10, "#1d1d1d",
                 across.GetX() < -0.3  ? SvgAnchor::End
                 : across.GetX() > 0.3 ? SvgAnchor::Start
                                       : SvgAnchor::Middle);
    }
}

// The stretches between ground and design on one side of each other, each with its colour.
void DrawCutAndFill(Svg& svg, const SvgPanel& panel, const LongSection& section, const LongSection::Run& run) {
    std::vector<Point2D> ground;
    std::vector<Point2D> design;
    bool isCut = false;
    const auto close = [&] {
        std::vector<Point2D> ring = ground;
        ring.insert(ring.end(), design.rbegin(), design.rend());
        if (ground.size() > 1) svg.Area({panel.ToPage(ring)}, {"", 0.0, isCut ? cutColor : fillColor, ""});
        ground.clear();
        design.clear();
    };
    for (const Point2D& point : run) {
        const std::optional<double> height = section.GetDesign(point.GetX());
        if (!height) {
            close();
            continue;
        }
        const Point2D onDesign(point.GetX(), *height);
        const double depth = point.GetY() - *height;
        if (!ground.empty() && depth != 0.0 && isCut != (depth > 0.0)) {
            const double depthBefore = ground.back().GetY() - design.back().GetY();
            const Point2D crossing = ground.back() + (point - ground.back()) * (depthBefore / (depthBefore - depth));
            ground.push_back(crossing);
            design.push_back(crossing);
            close();
            ground.push_back(crossing);
            design.push_back(crossing);
        }
        if (depth != 0.0) isCut = depth > 0.0;
        ground.push_back(point);
        design.push_back(onDesign);
    }
    close();
}

std::vector<std::vector<Point2D>> DesignCurves(const LongSection& section, double from, double to) {
    constexpr int pieces = 600;
    std::vector<std::vector<Point2D>> curves;
    bool isOpen = false;
    for (int k = 0; k <= pieces; ++k) {
        const double station = from + (to - from) * k / pieces;
        const std::optional<double> height = section.GetDesign(station);
        if (height && !isOpen) curves.emplace_back();
        if (height) curves.back().emplace_back(station, *height);
        isOpen = height.has_value();
    }
    return curves;
}

void DrawSection(Svg& svg, double top, const LongSection& section, const std::string& unit) {
    const Alignment& alignment = section.GetAlignment();
    const double from = alignment.GetStartStation();
    const double to = from + alignment.plan.GetLength();
    const std::vector<std::vector<Point2D>> curves = DesignCurves(section, from, to);
    const Point2D first = section.GetRuns().front().front();
    BoundingBox2D world(Point2D(from, first.GetY()), Point2D(to, first.GetY()));
    for (const auto* const lines : {&section.GetRuns(), &curves}) {
        for (const std::vector<Point2D>& line : *lines) {
            for (const Point2D& p : line) world += BoundingBox2D(p, p);
        }
    }
    const SvgPanel panel = DrawSectionGrid(svg, margin, top, panelWidth, sectionHeight, world);
    for (const LongSection::Run& run : section.GetRuns()) {
        DrawCutAndFill(svg, panel, section, run);
        svg.Polyline(panel.ToPage(run), {groundColor, 1.4, "", ""});
    }
    for (const std::vector<Point2D>& curve : curves) svg.Polyline(panel.ToPage(curve), {designColor, 1.6, "", ""});

    const double stretch = panel.GetScaleY() / panel.GetScaleX();
    svg.Text(Point2D(margin, top - 12),
             "Long section of " + alignment.name + ", heights " + Fixed(stretch, stretch < 2.0 ? 2 : 0) +
                 " times exaggerated [" + unit + "]",
             12, textColor);
    struct Key {
        const char* text;
        const char* color;
        bool isArea;
    };
    constexpr std::array<Key, 4> keys = {{{"ground", groundColor, false},
                                          {"design", designColor, false},
                                          {"cut", cutColor, true},
                                          {"fill", fillColor, true}}};
    double x = margin + panelWidth - 280.0;
    for (const Key& key : keys) {
        if (key.isArea) {
            svg.Area(
                {{Point2D(x, top - 21), Point2D(x + 18, top - 21), Point2D(x + 18, top - 11), Point2D(x, top - 11)}},
                {"", 0.0, key.color, ""});
        } else {
            svg.Polyline({Point2D(x, top - 16), Point2D(x + 18, top - 16)}, {key.color, 2.0, "", ""});
        }
        svg.Text(Point2D(x + 23, top - 12), key.text, 11, textColor);
        x += 76.0;
        if (curves.empty()) break;  // nothing but ground
    }
}

// The height of a panel that shows the extent over the whole width, as far as the page allows.
double PlanHeight(const BoundingBox2D& extent) {
    return std::clamp(panelWidth * extent.GetSize().GetY() / std::max(extent.GetSize().GetX(), 1e-9), 240.0,
                      highestPlan);
}

}  // namespace

bool DrawPicture(const std::string& path, const PictureParts& parts) {
    const BoundingBox2D extent = parts.surface->GetBoundingBox2D();
    const double planHeight = PlanHeight(extent);
    const double planTop = margin + 10.0;
    const double sectionTop = planTop + planHeight + margin + 5.0;
    const double gridTop = parts.section != nullptr ? sectionTop + sectionHeight + 75.0 : sectionTop;

    IndexedTriangleSet3D kriged;
    TinSurfacePatch3D ofGrid;
    if (parts.grid != nullptr && parts.grid->heights.MakeTin(ofGrid)) kriged = ofGrid.GetTriangles();
    const double gridHeight = parts.grid != nullptr ? PlanHeight(kriged.GetBoundingBox2D()) : 0.0;
    const double height = parts.grid != nullptr      ? gridTop + gridHeight + 40.0
                          : parts.section != nullptr ? sectionTop + sectionHeight + 40.0
                                                     : planTop + planHeight + 30.0;
    Svg svg(pageWidth, height);
    const SvgPanel plan(margin, planTop, panelWidth, planHeight, extent, true);
    const Relief relief(*parts.surface, plan.GetScaleX(), parts.contourInterval, parts.contourCuts);
    relief.Draw(svg, plan);
    if (parts.design != nullptr) DrawDepths(svg, plan, parts);
    double longest = 0.0;
    for (const Alignment& alignment : *parts.alignments) longest = std::max(longest, alignment.plan.GetLength());
    for (const Alignment& alignment : *parts.alignments) {
        DrawAxis(svg, plan, extent, alignment, NiceStep(longest, 14));
    }
    svg.Text(Point2D(margin, 26), parts.title, 15, "#222222");
    relief.DrawLegend(svg, margin + 36.0, 52.0, parts.unit);
    DrawScaleBar(svg, pageWidth - margin - 240.0, 50.0, plan.GetScaleX(), parts.unit);
    DrawNorthArrow(svg, pageWidth - 40.0, 62.0);
    if (parts.section != nullptr) DrawSection(svg, sectionTop, *parts.section, parts.unit);
    if (parts.grid != nullptr) {
        const SvgPanel panel(margin, gridTop, panelWidth, gridHeight, kriged.GetBoundingBox2D(), true);
        const Relief shaded(kriged, panel.GetScaleX(), std::nullopt, parts.contourCuts);
        shaded.Draw(svg, panel);
        for (const Point3D& sample : *parts.samples) {
            svg.Circle(panel.ToPage(sample.GetPoint2D()), 2.2, {textColor, 0.8, "white", ""});
        }
        svg.Text(Point2D(margin, gridTop - 34), "Kriged from " + std::to_string(parts.samples->size()) + " points", 12,
                 textColor);
        shaded.DrawLegend(svg, margin + 36.0, gridTop - 12, parts.unit);
    }
    return svg.Write(path);
}

}  // namespace Kalvio::Examples
