#pragma once

#include "kalvio/core/Point2D.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <span>

namespace Kalvio::Math::detail {

/// Looks for the arc of at most half a turn from the first to the last point of a part of a chain that has the whole
/// part, points and segments, within a tolerance.
///
/// Such arcs, told by their bulge b = tan(sweep / 4), lie side by side, so that the distance of a point to the left of
/// the arc grows with b. The arc that has the outermost points equally far on both sides is found by false position
/// (Illinois). Everything is written for the chord from (-h, 0) to (h, 0) and multiplied by b: flat arcs need no
/// centre.
class ArcFit {
public:
    ArcFit(std::span<const Point2D> part, double tolerance)
        : points(part),
          reach(tolerance),
          h(0.5 * part.front().Distance(part.back())),
          along((part.back() - part.front()) * (0.5 / h)),
          middle(part.front() + (part.back() - part.front()) * 0.5) {}

    /// The bulge; nothing where there is no such arc.
    std::optional<double> Find() const {
        constexpr int mostSteps = 24;
        constexpr double flattest = 1e-12;  // below, the arc is its chord
        if (!(h > 0.0) || !std::isfinite(h)) return std::nullopt;
        double right = -1.0;
        double left = 1.0;
        double atRight = Measure(right).Balance();
        double atLeft = Measure(left).Balance();
        if (!(atRight < 0.0 && atLeft > 0.0)) return std::nullopt;
        for (int step = 0, side = 0; step < mostSteps; ++step) {
            const double bulge = (right * atLeft - left * atRight) / (atLeft - atRight);
            const Spread spread = Measure(bulge);
            if (spread.isWithin) return std::abs(bulge) > flattest ? std::optional(bulge) : std::nullopt;
            const double balance = spread.Balance();
            if (!(std::abs(balance) > 1e-3 * reach)) break;  // no other arc comes nearer
            if (balance > 0.0) {
                left = bulge;
                atLeft = balance;
                if (side > 0) atRight *= 0.5;
                side = 1;
            } else {
                right = bulge;
                atRight = balance;
                if (side < 0) atLeft *= 0.5;
                side = -1;
            }
        }
        return std::nullopt;
    }

private:
    /// Where the part runs, seen from an arc; distances to the left.
    struct Spread {
        double lowest = 0.0;
        double highest = 0.0;
        bool isWithin = true;

        double Balance() const { return lowest + highest; }
    };

    Spread Measure(double b) const {
        Spread spread;
        const double c = 0.5 * h * (1.0 - b * b);       // b times the centre's height above the chord
        const double radius = 0.5 * h * (1.0 + b * b);  // |b| times the radius
        const auto offset = [&](double x, double y) {
            return -(b * (x * x + y * y - h * h) - 2.0 * y * c) / (std::hypot(b * x, b * y - c) + radius);
        };
        const auto add = [&](double distance) {
            spread.lowest = (std::min)(spread.lowest, distance);
            spread.highest = (std::max)(spread.highest, distance);
            if (!(std::abs(distance) <= reach)) spread.isWithin = false;
        };
        double x0 = -h;
        double y0 = 0.0;
        for (std::size_t i = 1; i < points.size(); ++i) {
            const Vec2D from = points[i] - middle;
            const double x = from.DotProduct(along);
            const double y = along.PerpDotProduct(from);
            add(offset(x, y));
            // A point beyond the radii to the ends is as far as the nearer end.
            if (2.0 * c * (h - std::abs(x)) < 2.0 * b * h * y && std::hypot(h - std::abs(x), y) > reach) {
                spread.isWithin = false;
            }
            // A segment comes nearest to the centre at the foot of its perpendicular.
            const double dx = x - x0;
            const double dy = y - y0;
            const double foot = (-b * x0 * dx + (c - b * y0) * dy) * b;  // times b^2 and the segment's squared length
            const double whole = (dx * dx + dy * dy) * b * b;
            if (foot > 0.0 && foot < whole) add(offset(x0 + dx * (foot / whole), y0 + dy * (foot / whole)));
            x0 = x;
            y0 = y;
        }
        return spread;
    }

    std::span<const Point2D> points;
    double reach;
    double h;  // half the chord
    Vec2D along;
    Point2D middle;
};

}  // namespace Kalvio::Math::detail
