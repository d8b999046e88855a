#include "kalvio/alignments/CrossSections.h"

#include "kalvio/alignments/Alignment.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Kalvio::Math {

namespace {

double HeightAt(const Point2D& a, const Point2D& b, double offset) {
    return a.GetY() + (b.GetY() - a.GetY()) * ((offset - a.GetX()) / (b.GetX() - a.GetX()));
}

// A trapezium of depths of one sign, from one offset to another.
void AddPart(double from, double to, double depthFrom, double depthTo, double curvature,
             CrossSections::Section& section) {
    const double width = to - from;
    const double area = 0.5 * width * (depthFrom + depthTo);
    const double moment = width * (from * (2.0 * depthFrom + depthTo) + to * (depthFrom + 2.0 * depthTo)) / 6.0;
    const double rate = area + curvature * moment;
    const bool isCut = area > 0.0;
    (isCut ? section.area.cut : section.area.fill) += std::abs(area);
    (isCut ? section.rate.cut : section.rate.fill) += isCut ? rate : -rate;
}

void AddBetween(const CrossSections::Line& ground, const CrossSections::Line& design, double curvature,
                CrossSections::Section& section) {
    std::size_t g = 1;
    std::size_t d = 1;
    while (g < ground.size() && d < design.size()) {
        const double from = std::max(ground[g - 1].GetX(), design[d - 1].GetX());
        const double to = std::min(ground[g].GetX(), design[d].GetX());
        if (to > from) {
            const auto depthAt = [&](double offset) {
                return HeightAt(ground[g - 1], ground[g], offset) - HeightAt(design[d - 1], design[d], offset);
            };
            const double first = depthAt(from);
            const double last = depthAt(to);
            if ((first > 0.0 && last < 0.0) || (first < 0.0 && last > 0.0)) {
                const double crossing = from + (to - from) * (first / (first - last));
                AddPart(from, crossing, first, 0.0, curvature, section);
                AddPart(crossing, to, 0.0, last, curvature, section);
            } else {
                AddPart(from, to, first, last, curvature, section);
            }
        }
        ++(ground[g].GetX() < design[d].GetX() ? g : d);
    }
}

std::vector<CrossSections::Line> Cut(const TinSurfacePatch3D& surface, const Point2D& start, const Point2D& end,
                                     double offset) {
    std::vector<LineString3D> strings;
    (void)surface.Drape(LineString2D{start, end}, strings);
    const Vec2D right = (end - start) / (end - start).Length();
    std::vector<CrossSections::Line> lines;
    for (const LineString3D& string : strings) {
        CrossSections::Line line;
        for (const Point3D& p : string.GetPoints()) {
            line.emplace_back(offset + (p.GetPoint2D() - start).DotProduct(right), p.GetZ());
        }
        // Where edges cross within rounding, points of a string are one.
        for (std::size_t i = 1; i < line.size(); ++i) line[i].SetX(std::max(line[i].GetX(), line[i - 1].GetX()));
        lines.push_back(std::move(line));
    }
    return lines;
}

}  // namespace

bool CrossSections::Make(const Alignment& axis, const std::vector<double>& stations, double from, double to,
                         const TinSurfacePatch3D& ground, const TinSurfacePatch3D& design,
                         std::vector<Section>& sections) {
    constexpr double farthest = 1e70;  // as for the coordinates of a surface
    if (!(from < to) || !(std::abs(from) <= farthest) || !(std::abs(to) <= farthest) ||
        ground.GetTrianglesCount() == 0 || design.GetTrianglesCount() == 0) {
        return false;
    }
    std::vector<Section> made(stations.size());
    for (std::size_t i = 0; i < stations.size(); ++i) {
        Section& section = made[i];
        section.station = stations[i];
        Point2D start;
        Point2D end;
        Vec2D direction;
        double curvature = 0.0;
        if (!axis.GetPoint(stations[i], from, start) || !axis.GetPoint(stations[i], to, end) ||
            !axis.GetDirection(stations[i], direction, curvature) || !((end - start).Length() > 0.0)) {
            return false;
        }
        section.ground = Cut(ground, start, end, from);
        section.design = Cut(design, start, end, from);
        for (const Line& ofGround : section.ground) {
            for (const Line& ofDesign : section.design) AddBetween(ofGround, ofDesign, curvature, section);
        }
    }
    sections = std::move(made);
    return true;
}

bool CrossSections::GetMasses(const std::vector<Section>& sections, std::vector<Mass>& masses) {
    if (sections.empty() || !std::isfinite(sections[0].station)) return false;
    std::vector<Mass> sums(sections.size());
    sums[0].station = sections[0].station;
    for (std::size_t i = 1; i < sections.size(); ++i) {
        const double way = sections[i].station - sections[i - 1].station;
        if (!(way >= 0.0) || !std::isfinite(way)) return false;
        const Earth& before = sections[i - 1].rate;
        const Earth& here = sections[i].rate;
        const Earth& sum = sums[i - 1].volume;
        sums[i] = {sections[i].station,
                   {sum.cut + 0.5 * (before.cut + here.cut) * way, sum.fill + 0.5 * (before.fill + here.fill) * way}};
    }
    masses = std::move(sums);
    return true;
}

}  // namespace Kalvio::Math
