#include "common/Svg.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>

namespace Kalvio::Examples {

using Math::Point2D;

namespace {

std::string Escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '&':
                result += "&amp;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                result += c;
        }
    }
    return result;
}

std::string Attributes(const SvgStyle& style) {
    std::string result = " fill=\"" + (style.fill.empty() ? "none" : style.fill) + '"';
    if (!style.stroke.empty())
        result += " stroke=\"" + style.stroke + "\" stroke-width=\"" + Fixed(style.width, 2) + '"';
    if (!style.dash.empty()) result += " stroke-dasharray=\"" + style.dash + '"';
    return result;
}

std::string Pair(const Point2D& p, char separator) { return Fixed(p.GetX(), 2) + separator + Fixed(p.GetY(), 2); }

}  // namespace

Svg::Svg(double pageWidth, double pageHeight) : width(pageWidth), height(pageHeight) {}

void Svg::Polyline(const std::vector<Point2D>& points, const SvgStyle& style) {
    if (points.size() < 2) return;
    body += "<polyline points=\"";
    for (const Point2D& p : points) body += Pair(p, ',') + ' ';
    body.back() = '"';
    body += Attributes(style) + " stroke-linejoin=\"round\" stroke-linecap=\"round\"/>\n";
}

void Svg::Area(const std::vector<std::vector<Point2D>>& rings, const SvgStyle& style) {
    body += "<path fill-rule=\"evenodd\" d=\"";
    for (const std::vector<Point2D>& ring : rings) {
        for (std::size_t i = 0; i < ring.size(); ++i) body += (i == 0 ? 'M' : 'L') + Pair(ring[i], ' ');
        if (!ring.empty()) body += 'Z';
    }
    body += '"' + Attributes(style) + "/>\n";
}

void Svg::Circle(const Point2D& center, double radius, const SvgStyle& style) {
    body += "<circle cx=\"" + Fixed(center.GetX(), 2) + "\" cy=\"" + Fixed(center.GetY(), 2) + "\" r=\"" +
            Fixed(radius, 2) + '"' + Attributes(style) + "/>\n";
}

void Svg::Text(const Point2D& position, std::string_view text, double size, std::string_view color, SvgAnchor anchor,
               double turn) {
    constexpr std::array<const char*, 3> anchors = {"start", "middle", "end"};
    body += "<text x=\"" + Fixed(position.GetX(), 2) + "\" y=\"" + Fixed(position.GetY(), 2) + "\" font-size=\"" +
            Fixed(size, 1) + "\" fill=\"" + std::string(color) + "\" text-anchor=\"" +
            anchors[static_cast<std::size_t>(anchor)] + '"';
    if (turn != 0.0) body += " transform=\"rotate(" + Fixed(turn, 2) + ' ' + Pair(position, ' ') + ")\"";
    body += '>' + Escaped(text) + "</text>\n";
}

std::string Svg::Finish() const {
    const std::string w = Fixed(width, 0);
    const std::string h = Fixed(height, 0);
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + w + "\" height=\"" + h + "\" viewBox=\"0 0 " + w +
           ' ' + h +
           "\" font-family=\"Helvetica, Arial, sans-serif\">\n<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n" +
           body + "</svg>\n";
}

bool Svg::Write(const std::string& path) const {
    std::ofstream file(path, std::ios::binary);
    file << Finish();
    file.close();
    return !file.fail();
}

SvgPanel::SvgPanel(double left, double top, double width, double height, const Math::BoundingBox2D& world,
                   bool sameScale)
    : worldCenter(world.GetCenter()), pageCenter(left + width * 0.5, top + height * 0.5) {
    const auto scaleOf = [](double page, double size) { return size > 0.0 ? page / size : 1.0; };
    scaleX = scaleOf(width, world.GetSize().GetX());
    scaleY = scaleOf(height, world.GetSize().GetY());
    if (sameScale) scaleX = scaleY = std::min(scaleX, scaleY);
}

Point2D SvgPanel::ToPage(const Point2D& p) const {
    return {pageCenter.GetX() + (p.GetX() - worldCenter.GetX()) * scaleX,
            pageCenter.GetY() - (p.GetY() - worldCenter.GetY()) * scaleY};
}

std::vector<Point2D> SvgPanel::ToPage(const std::vector<Point2D>& points) const {
    std::vector<Point2D> page;
    page.reserve(points.size());
    for (const Point2D& p : points) page.push_back(ToPage(p));
    return page;
}

double NiceStep(double range, int parts) {
    if (!(range > 0.0) || !std::isfinite(range)) return 1.0;
    const double least = range / parts;
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= least) return factor * power;
    }
    return 10.0 * power;
}

std::vector<double> Multiples(double step, double from, double to) {
    constexpr double most = 1000.0;
    std::vector<double> values;
    const double first = std::ceil(from / step);
    const double count = std::floor(to / step) - first + 1.0;
    if (!(count <= most)) return values;
    for (int k = 0; k < static_cast<int>(count); ++k) values.push_back((first + k) * step);
    return values;
}

std::string Fixed(double value, int decimals) {
    std::array<char, 400> buffer{};
    const int length = std::snprintf(buffer.data(), buffer.size(), "%.*f", decimals, value);
    return {buffer.data(), static_cast<std::size_t>(std::clamp(length, 0, 399))};
}

}  // namespace Kalvio::Examples
