#pragma once

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/Point2D.h"

#include <string>
#include <string_view>
#include <vector>

namespace Kalvio::Examples {

/// How a line or area is drawn: SVG colours; an empty colour draws nothing. Widths are in page units.
struct SvgStyle {
    std::string stroke;
    double width = 1.0;
    std::string fill;
    std::string dash;  // e.g. "4 3"
};

enum class SvgAnchor { Start, Middle, End };

/// A picture in page units, y downward, written as one SVG file.
class Svg {
public:
    Svg(double pageWidth, double pageHeight);

    void Polyline(const std::vector<Math::Point2D>& points, const SvgStyle& style);
    /// Rings of one area; holes are cut out by the even-odd rule.
    void Area(const std::vector<std::vector<Math::Point2D>>& rings, const SvgStyle& style);
    void Circle(const Math::Point2D& center, double radius, const SvgStyle& style);
    /// @param turn  clockwise rotation about the position [degrees]
    void Text(const Math::Point2D& position, std::string_view text, double size, std::string_view color,
              SvgAnchor anchor = SvgAnchor::Start, double turn = 0.0);

    std::string Finish() const;
    /// @return false when the file cannot be written
    bool Write(const std::string& path) const;

private:
    double width;
    double height;
    std::string body;
};

/// A rectangle of the page that shows a part of the world, x to the right and y upward.
class SvgPanel {
public:
    /// Fits the world box into the page rectangle at (left, top); with `sameScale` both axes share one scale and the
    /// world is centred.
    SvgPanel(double left, double top, double width, double height, const Math::BoundingBox2D& world, bool sameScale);

    Math::Point2D ToPage(const Math::Point2D& p) const;
    std::vector<Math::Point2D> ToPage(const std::vector<Math::Point2D>& points) const;
    /// Page units per world unit.
    double GetScaleX() const { return scaleX; }
    double GetScaleY() const { return scaleY; }

private:
    Math::Point2D worldCenter;
    Math::Point2D pageCenter;
    double scaleX = 1.0;
    double scaleY = 1.0;
};

/// The nearest of 1, 2, 5 x 10^n that divides `range` into at most `parts` steps.
double NiceStep(double range, int parts);

/// The multiples of `step` in [from, to]; none when they are too many to draw.
std::vector<double> Multiples(double step, double from, double to);

/// Fixed notation with the given number of decimals.
std::string Fixed(double value, int decimals);

}  // namespace Kalvio::Examples
