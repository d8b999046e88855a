#include "kalvio/alignments/AlignmentFitting.h"

#include "kalvio/core/detail/Elimination.h"
#include "kalvio/curves/detail/UnitDirection.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>

namespace Kalvio::Math {

namespace {

using Corner = AlignmentFitting::Corner;
using Law = AlignmentFitting::Law;

constexpr double step = 1e-3;  // a length, of the differences that derivatives are taken from

// One of the unknowns. An end of the polygon moves across its tangent only.
struct Unknown {
    enum class Field : std::uint32_t { X, Y, Radius, In, Out, Across };

    std::size_t corner = 0;
    Field field = Field::X;
};

// Levenberg and Marquardt's descent, near the origin.
class Descent {
public:
    Descent(std::span<const Point2D> given, std::span<const Corner> start)
        : points(given.begin(), given.end()), corners(start.begin(), start.end()) {
        using Field = Unknown::Field;
        for (std::size_t i = 0; i < corners.size(); ++i) {
            if (i == 0 || i + 1 == corners.size()) {
                unknowns.push_back({i, Field::Across});
                continue;
            }
            for (const Field field : {Field::X, Field::Y}) unknowns.push_back({i, field});
            if (corners[i].radius > 0.0) unknowns.push_back({i, Field::Radius});
            if (corners[i].lengthIn > 0.0) unknowns.push_back({i, Field::In});
            if (corners[i].lengthOut > 0.0) unknowns.push_back({i, Field::Out});
        }
    }

    std::size_t GetNrOfUnknowns() const { return unknowns.size(); }
    const std::vector<Corner>& GetCorners() const { return corners; }
    const std::vector<Alignment::Place>& GetPlaces() const { return places; }
    double GetSum() const { return sum; }
    bool IsAtLimit() const { return isAtLimit; }

    // @return false where no minimum is reached
    bool Run() {
        if (points.size() < unknowns.size() || !LengthenEnds() || !Measure(corners, places, sum)) return false;
        double damping = 1e-3;
        int idle = 0;  // steps in a row that gain next to nothing
        for (int i = 0; i < mostSteps; ++i) {
            FillNormalEquations();
            for (;;) {
                std::vector<Corner> next;
                double length = 0.0;
                std::vector<Alignment::Place> nextPlaces;
                double nextSum = 0.0;
                const bool isStep = Solve(damping, next, length);
                const bool isPlan = isStep && Measure(next, nextPlaces, nextSum);
                if (isPlan && nextSum <= sum) {
                    idle = sum - nextSum <= nothing * sum ? idle + 1 : 0;
                    const bool isStill = (length <= still && damping <= 1e-2) || idle == mostIdle;
                    corners = std::move(next);
                    places = std::move(nextPlaces);
                    sum = nextSum;
                    damping = std::max(0.1 * damping, leastDamping);
                    if (!LengthenEnds()) return false;
                    if (isStill) return true;
                    break;
                }
                if (isStep && length <= still) {
                    isAtLimit = !isPlan;
                    return true;
                }
                if (!(damping < mostDamping)) {
                    isAtLimit = true;
                    return isStep;
                }
                damping *= 10.0;
            }
        }
        return false;
    }

private:
    static Vec2D Across(const std::vector<Corner>& polygon, std::size_t end) {
        const std::size_t next = end == 0 ? 1 : end - 1;
        return detail::UnitDirection(polygon[next].point - polygon[end].point).GetNormalVector(true);
    }

    void Move(std::vector<Corner>& polygon, std::size_t first, const Unknown& unknown, double by) const {
        using Field = Unknown::Field;
        Corner& corner = polygon[unknown.corner - first];
        switch (unknown.field) {
            case Field::X:
                corner.point += Vec2D(by, 0.0);
                break;
            case Field::Y:
                corner.point += Vec2D(0.0, by);
                break;
            case Field::Across:
                corner.point += Across(corners, unknown.corner) * by;
                break;
            case Field::Radius:
                corner.radius += by;
                break;
            case Field::In:
                corner.lengthIn += by;
                break;
            case Field::Out:
                corner.lengthOut += by;
                break;
        }
    }

    // The ends, beyond the feet of all points.
    bool LengthenEnds() {
        if (corners.size() < 2) return false;
        const std::size_t last = corners.size() - 1;
        for (const std::size_t end : {std::size_t{0}, last}) {
            const Point2D& next = corners[end == 0 ? 1 : last - 1].point;
            const Vec2D outwards = detail::UnitDirection(corners[end].point - next);
            const Point2D& farthest = end == 0 ? points.front() : points.back();
            const double reach = outwards.DotProduct(farthest - next);
            const double present = outwards.DotProduct(corners[end].point - next);
            const double wanted = std::max(reach + slack * std::abs(reach) + 1.0, present);
            if (!std::isfinite(wanted)) return false;
            corners[end].point = next + outwards * wanted;
        }
        return true;
    }

    static std::optional<Alignment> PlanOf(std::span<const Corner> polygon) {
        Polyline2D plan;
        AlignmentDesign::Fault fault;
        if (!AlignmentDesign::MakePlan(polygon, plan, fault)) return std::nullopt;
        return Alignment(plan);
    }

    static bool Find(const Alignment& plan, const Point2D& point, Alignment::Place& place) {
        return plan.GetNearestPlace(Point3D(point, 0.0), farAway, place);
    }

    bool Measure(const std::vector<Corner>& polygon, std::vector<Alignment::Place>& found, double& squares) const {
        const bool isNear = std::all_of(polygon.begin(), polygon.end(), [](const Corner& corner) {
            return (corner.point - Point2D()).Length() <= farthestCorner;
        });
        const std::optional<Alignment> plan = isNear ? PlanOf(polygon) : std::nullopt;
        if (!plan) return false;
        found.resize(points.size());
        squares = 0.0;
        for (std::size_t i = 0; i < points.size(); ++i) {
            if (!Find(*plan, points[i], found[i])) return false;
            squares += found[i].offset * found[i].offset;
        }
        return std::isfinite(squares);
    }

    // A corner has a say from the curve before it to the one behind it: the polygon of five corners about it tells.
    void FillNormalEquations() {
        const std::size_t n = unknowns.size();
        matrix.assign(n * n, 0.0);
        gradient.assign(n, 0.0);
        std::vector<std::vector<std::pair<std::size_t, double>>> rows(points.size());
        std::vector<double> stations(corners.size());
        const std::optional<Alignment> plan = PlanOf(corners);
        for (std::size_t i = 0; i < corners.size(); ++i) {
            Alignment::Place place;
            stations[i] = Find(*plan, corners[i].point, place) ? place.station : 0.0;
        }
        for (std::size_t j = 0; j < n; ++j) {
            const std::size_t corner = unknowns[j].corner;
            const std::size_t first = corner < 2 ? 0 : corner - 2;
            const std::size_t last = std::min(corner + 2, corners.size() - 1);
            const double from = first == 0 ? -farAway : stations[first];
            const double to = last + 1 == corners.size() ? farAway : stations[last];
            std::optional<Alignment> sides[2];
            double span = 0.0;
            for (const int side : {0, 1}) {
                std::vector<Corner> polygon(corners.begin() + static_cast<std::ptrdiff_t>(first),
                                            corners.begin() + static_cast<std::ptrdiff_t>(last) + 1);
                if (corner - first > 0 || unknowns[j].field == Unknown::Field::Across)
                    Move(polygon, first, unknowns[j], side == 0 ? -step : step);
                sides[side] = PlanOf(polygon);
                if (sides[side]) span += step;
            }
            for (std::size_t i = 0; i < points.size() && span > 0.0; ++i) {
                if (!(places[i].station >= from && places[i].station <= to)) continue;
                double offsets[2] = {places[i].offset, places[i].offset};
                bool isFound = true;
                for (const int side : {0, 1}) {
                    Alignment::Place place;
                    if (!sides[side]) continue;
                    isFound = isFound && Find(*sides[side], points[i], place);
                    offsets[side] = place.offset;
                }
                const double slope = (offsets[1] - offsets[0]) / span;
                if (isFound && std::isfinite(slope) && slope != 0.0) rows[i].emplace_back(j, slope);
            }
        }
        for (std::size_t i = 0; i < points.size(); ++i) {
            for (const auto& [j, slope] : rows[i]) {
                gradient[j] += slope * places[i].offset;
                for (const auto& [k, other] : rows[i]) matrix[j * n + k] += slope * other;
            }
        }
    }

    // The next polygon; lengths and radii that would vanish are halved at most.
    bool Solve(double damping, std::vector<Corner>& next, double& length) const {
        const std::size_t n = unknowns.size();
        detail::Elimination elimination(n, 1);
        for (std::size_t i = 0; i < n; ++i) {
            std::copy_n(matrix.begin() + static_cast<std::ptrdiff_t>(i * n), n, elimination.Row(i));
            const double diagonal = matrix[i * n + i];
            elimination.Row(i)[i] += diagonal > 0.0 ? damping * diagonal : 1.0;
            elimination.Row(i)[n] = -gradient[i];
        }
        elimination.Run();
        if (elimination.FirstZeroPivot() < n) return false;
        std::vector<double> by(n);
        elimination.Solve(by.data());
        next = corners;
        length = 0.0;
        for (std::size_t j = 0; j < n; ++j) {
            using Field = Unknown::Field;
            const Corner& corner = corners[unknowns[j].corner];
            const Field field = unknowns[j].field;
            double least = -farAway;
            if (field == Field::Radius) least = -0.5 * corner.radius;
            if (field == Field::In) least = -0.5 * corner.lengthIn;
            if (field == Field::Out) least = -0.5 * corner.lengthOut;
            if (!std::isfinite(by[j])) return false;
            Move(next, 0, unknowns[j], std::max(by[j], least));
            length = std::max(length, std::abs(by[j]));
        }
        return true;
    }

    static constexpr double farAway = 1e9;
    static constexpr double farthestCorner = 1e8;  // elements still join within 1e-7
    static constexpr double slack = 0.05;          // of the length of a tangent, beyond the last foot
    static constexpr double still = 1e-8;          // a length: where the descent ends
    static constexpr double nothing = 1e-7;        // of the sum of squares
    static constexpr int mostIdle = 5;
    static constexpr double leastDamping = 1e-12;
    static constexpr double mostDamping = 1e12;
    static constexpr int mostSteps = 200;

    std::vector<Point2D> points;
    std::vector<Corner> corners;
    std::vector<Unknown> unknowns;
    std::vector<Alignment::Place> places;
    double sum = 0.0;
    bool isAtLimit = false;
    std::vector<double> matrix;  // of the normal equations
    std::vector<double> gradient;
};

// Points and polygons near the origin.
std::vector<Point2D> Shifted(std::span<const Point2D> points, const Vec2D& by) {
    std::vector<Point2D> shifted(points.begin(), points.end());
    for (Point2D& point : shifted) point += by;
    return shifted;
}

std::vector<Corner> Shifted(std::span<const Corner> corners, const Vec2D& by) {
    std::vector<Corner> shifted(corners.begin(), corners.end());
    for (Corner& corner : shifted) corner.point += by;
    return shifted;
}

bool AreFinite(std::span<const Point2D> points) {
    return std::all_of(points.begin(), points.end(),
                       [](const Point2D& p) { return std::isfinite(p.GetX() + p.GetY()); });
}

// A straight line through points: their centroid and the direction of least offsets.
struct Tangent {
    Point2D point;
    Vec2D direction;
};

Tangent TangentOf(std::span<const Point2D> points) {
    Vec2D sum;
    for (const Point2D& p : points) sum += p - points.front();
    const Point2D middle = points.front() + sum * (1.0 / static_cast<double>(points.size()));
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;
    for (const Point2D& p : points) {
        const Vec2D d = p - middle;
        xx += d.GetX() * d.GetX();
        xy += d.GetX() * d.GetY();
        yy += d.GetY() * d.GetY();
    }
    const double angle = 0.5 * std::atan2(2.0 * xy, xx - yy);
    Vec2D direction(std::cos(angle), std::sin(angle));
    if (direction.DotProduct(points.back() - points.front()) < 0.0) direction = -direction;
    return {middle, direction};
}

// The curvature along a chain of points, each from a parabola through its neighbours, and the curves it shows.
class Diagram {
public:
    // A curve of one sense, by indexes of points.
    struct Curve {
        std::size_t first = 0;
        std::size_t last = 0;
        double side = 0.0;
    };

    Diagram(const std::vector<Point2D>& chain, double scatter, double steps) : points(chain), stations(chain.size()) {
        for (std::size_t i = 1; i < points.size(); ++i)
            stations[i] = stations[i - 1] + points[i].Distance(points[i - 1]);
        const double spacing = stations.back() / static_cast<double>(points.size() - 1);
        window = steps * spacing;
        // Of n + 1 points over a length W the curvature has the standard deviation 2 sqrt(180 / n) scatter / W^2.
        const double error = 2.0 * std::sqrt(180.0 / steps) * scatter / (window * window);
        least = std::max(flattest, 4.0 * error);
        curvatures.resize(points.size());
        for (std::size_t i = 0; i < points.size(); ++i) curvatures[i] = CurvatureAt(i);
        FindCurves();
    }

    // Longer windows would not show more.
    bool IsFine() const { return least <= flattest || 4.0 * window > stations.back(); }

    // The polygon of the straights between the curves, with radii and lengths as the diagram has them.
    bool MakeCorners(Law law, std::vector<Corner>& corners) const {
        std::vector<Tangent> tangents;
        for (std::size_t i = 0; i <= curves.size(); ++i) tangents.push_back(TangentBefore(i));
        corners.assign(1, {points.front()});
        for (std::size_t i = 0; i < curves.size(); ++i) {
            const Tangent& in = tangents[i];
            const Tangent& out = tangents[i + 1];
            const double sine = in.direction.PerpDotProduct(out.direction);
            const double turn = std::atan2(sine, in.direction.DotProduct(out.direction));
            if (!(turn * curves[i].side > leastTurn)) return false;
            const double along = (out.point - in.point).PerpDotProduct(out.direction) / sine;
            Corner corner{in.point + in.direction * along};
            const double sharpest = Sharpest(curves[i]);
            corner.radius = 1.0 / sharpest;
            corner.law = law;
            corner.lengthIn = RampLength(curves[i], sharpest, true);
            corner.lengthOut = RampLength(curves[i], sharpest, false);
            const double most = 1.6 * std::abs(turn) * corner.radius;  // leaves an arc
            const double scale = std::min(1.0, most / (corner.lengthIn + corner.lengthOut));
            corner.lengthIn *= scale;
            corner.lengthOut *= scale;
            corners.push_back(corner);
        }
        corners.push_back({points.back()});
        const auto foot = [](const Tangent& t, const Point2D& p) {
            return t.point + t.direction * t.direction.DotProduct(p - t.point);
        };
        corners.front().point = foot(tangents.front(), points.front());
        corners.back().point = foot(tangents.back(), points.back());
        return true;
    }

private:
    std::pair<std::size_t, std::size_t> Around(std::size_t i, double half) const {
        const auto from = std::lower_bound(stations.begin(), stations.end(), stations[i] - half);
        const auto to = std::upper_bound(stations.begin(), stations.end(), stations[i] + half);
        return {static_cast<std::size_t>(from - stations.begin()), static_cast<std::size_t>(to - stations.begin())};
    }

    // Of the parabola y = a + b x + c x^2 nearest to the points about one, x along their chord. Near an end there are
    // those of one side only.
    double CurvatureAt(std::size_t i) const {
        auto [from, to] = Around(i, 0.5 * window * (1.0 + 1e-9));
        while (to - from < 3 && (from > 0 || to < points.size())) {
            if (from > 0) --from;
            if (to < points.size()) ++to;
        }
        const Vec2D chord = detail::UnitDirection(points[to - 1] - points[from]);
        double m[5] = {};
        double r[3] = {};
        for (std::size_t k = from; k < to; ++k) {
            const Vec2D d = points[k] - points[i];
            const double x = chord.DotProduct(d);
            const double y = chord.PerpDotProduct(d);
            double power = 1.0;
            for (int p = 0; p < 5; ++p, power *= x) {
                m[p] += power;
                if (p < 3) r[p] += power * y;
            }
        }
        detail::Elimination elimination(3, 1);
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column) elimination.Row(row)[column] = m[row + column];
            elimination.Row(row)[3] = r[row];
        }
        elimination.Run();
        if (elimination.FirstZeroPivot() < 3) return 0.0;
        double c[3];
        elimination.Solve(c);
        return 2.0 * c[2] / std::pow(1.0 + c[1] * c[1], 1.5);
    }

    void FindCurves() {
        const auto sideOf = [this](std::size_t i) {
            return std::abs(curvatures[i]) <= least ? 0.0 : std::copysign(1.0, curvatures[i]);
        };
        for (std::size_t i = 0; i < points.size();) {
            std::size_t end = i + 1;
            const double side = sideOf(i);
            while (end < points.size() && sideOf(end) == side) ++end;
            const bool isLong = stations[end - 1] - stations[i] >= 0.25 * window;
            if (side != 0.0 && isLong) {
                if (!curves.empty() && curves.back().side == side &&
                    stations[i] - stations[curves.back().last] < 0.25 * window) {
                    curves.back().last = end - 1;
                } else {
                    curves.push_back({i, end - 1, side});
                }
            }
            i = end;
        }
    }

    // The straight before a curve; of the last one on beyond the last curve.
    Tangent TangentBefore(std::size_t curve) const {
        std::size_t from = curve == 0 ? 0 : curves[curve - 1].last;
        std::size_t to = curve == curves.size() ? points.size() - 1 : curves[curve].first;
        const std::size_t ends[] = {from, to};
        if (curve > 0) {
            while (from < to && stations[from] - stations[ends[0]] < 0.5 * window) ++from;
        }
        if (curve < curves.size()) {
            while (to > from && stations[ends[1]] - stations[to] < 0.5 * window) --to;
        }
        if (to - from < 2) {  // hardly a straight: the points about its middle
            from = (ends[0] + ends[1]) / 2;
            to = std::min(from + 1, points.size() - 1);
            from = from > 0 ? from - 1 : 0;
        }
        return TangentOf(std::span(points).subspan(from, to - from + 1));
    }

    double Sharpest(const Curve& curve) const {
        double most = 0.0;
        for (std::size_t i = curve.first; i <= curve.last; ++i) most = std::max(most, std::abs(curvatures[i]));
        double sum = 0.0;
        double count = 0.0;
        for (std::size_t i = curve.first; i <= curve.last; ++i) {
            if (std::abs(curvatures[i]) < 0.85 * most) continue;
            sum += std::abs(curvatures[i]);
            count += 1.0;
        }
        return sum / count;
    }

    // Between a fifth and four fifths of the largest curvature.
    double RampLength(const Curve& curve, double sharpest, bool isIn) const {
        const auto stationOf = [&](double level) {
            const std::size_t count = curve.last - curve.first + 1;
            for (std::size_t k = 0; k < count; ++k) {
                const std::size_t i = isIn ? curve.first + k : curve.last - k;
                if (std::abs(curvatures[i]) >= level * sharpest) return stations[i];
            }
            return stations[isIn ? curve.first : curve.last];
        };
        return std::max(std::abs(stationOf(0.8) - stationOf(0.2)) / 0.6, 0.1 * window);
    }

    static constexpr double flattest = 1.0 / 5000.0;  // curvature of what counts as a curve
    static constexpr double leastTurn = 1e-4;         // [rad]

    const std::vector<Point2D>& points;
    std::vector<double> stations;
    double window = 0.0;  // a length: of the points that make a curvature
    double least = 0.0;   // curvature of a curve, above chance
    std::vector<double> curvatures;
    std::vector<Curve> curves;
};

double TurnBetween(const Vec2D& from, const Vec2D& to) {
    return std::atan2(from.PerpDotProduct(to), from.DotProduct(to));
}

// Sharper curves, until they fit.
bool MakeFit(std::vector<Corner>& corners) {
    constexpr int mostTrials = 200;
    for (int i = 0; i < mostTrials; ++i) {
        Polyline2D plan;
        AlignmentDesign::Fault fault;
        if (AlignmentDesign::MakePlan(corners, plan, fault)) return true;
        using Kind = AlignmentDesign::FaultKind;
        const auto shrink = [&](std::size_t corner, double radius) {
            corners[corner].radius *= radius;
            corners[corner].lengthIn *= 0.9;
            corners[corner].lengthOut *= 0.9;
        };
        if (fault.kind != Kind::Transitions && fault.kind != Kind::Tangent && fault.kind != Kind::NotACurve)
            return false;
        shrink(fault.corner, fault.kind == Kind::Tangent ? 0.9 : 1.0);
        if (fault.kind == Kind::Tangent) shrink(fault.corner - 1, 0.9);
    }
    return false;
}

}  // namespace

bool AlignmentFitting::Fit(std::span<const Point2D> points, std::span<const Corner> start, Result& result) {
    if (points.empty() || !AreFinite(points)) return false;
    const Vec2D origin = points[points.size() / 2] - Point2D();
    Descent descent(Shifted(points, -origin), Shifted(start, -origin));
    if (!descent.Run()) return false;
    Result made;
    made.places = descent.GetPlaces();
    made.isAtLimit = descent.IsAtLimit();
    double first = made.places.front().station;
    double last = first;
    for (std::size_t i = 0; i < made.places.size(); ++i) {
        first = std::min(first, made.places[i].station);
        last = std::max(last, made.places[i].station);
        if (std::abs(made.places[i].offset) > std::abs(made.places[made.worst].offset)) made.worst = i;
    }
    // The ends, up to curves at most.
    std::vector<Corner> corners = Shifted(descent.GetCorners(), origin);
    Polyline2D whole;
    AlignmentDesign::Fault fault;
    if (!AlignmentDesign::MakePlan(corners, whole, fault)) return false;
    const bool isCurved = whole.size() > 1;
    const auto lengthOf = [&](std::size_t i) {
        return whole[i].GetType() == MathTypes::Line2D ? whole[i].GetLength() : 0.0;
    };
    const double atStart = isCurved ? std::min(first, lengthOf(0)) : first;
    const double atEnd = std::min(whole.GetLength() - last, isCurved ? lengthOf(whole.size() - 1) : whole.GetLength());
    const auto towards = [&](std::size_t from, std::size_t to, double by) {
        corners[from].point += detail::UnitDirection(corners[to].point - corners[from].point) * by;
    };
    towards(0, 1, atStart);
    towards(corners.size() - 1, corners.size() - 2, atEnd);
    if (!AlignmentDesign::MakePlan(corners, made.plan, fault)) return false;
    for (Alignment::Place& place : made.places) place.station -= atStart;
    made.corners = std::move(corners);
    const std::size_t freedom = points.size() - descent.GetNrOfUnknowns();
    if (freedom > 0) made.scatter = std::sqrt(descent.GetSum() / static_cast<double>(freedom));
    result = std::move(made);
    return true;
}

bool AlignmentFitting::Propose(std::span<const Point2D> points, double scatter, Law law, std::vector<Corner>& corners) {
    constexpr std::size_t fewest = 5;
    if (points.size() < fewest || !AreFinite(points) || !(scatter >= 0.0) || !std::isfinite(scatter)) return false;
    const Vec2D origin = points[points.size() / 2] - Point2D();
    const std::vector<Point2D> local = Shifted(points, -origin);
    const auto count = static_cast<double>(points.size());
    // The criterion of Schwarz, up to a constant; points without scatter are as if rounded.
    constexpr double rounding = 1e-7;
    const auto weigh = [&](const Descent& descent) {
        const double variance = std::max(descent.GetSum() / count, rounding * rounding);
        return count * std::log(variance) + static_cast<double>(descent.GetNrOfUnknowns()) * std::log(count);
    };
    struct Choice {
        double weight = std::numeric_limits<double>::infinity();
        std::vector<Corner> corners;
    };
    const auto improve = [&](Choice& choice, std::vector<Corner> polygon) {
        if (!MakeFit(polygon)) return;
        Descent descent(local, polygon);
        if (!descent.Run()) return;
        const double weight = weigh(descent);
        if (weight < choice.weight) choice = {weight, descent.GetCorners()};
    };
    Choice best;
    for (double steps = 4.0; steps < count; steps *= 2.0) {
        const Diagram diagram(local, scatter, steps);
        std::vector<Corner> found;
        if (diagram.MakeCorners(law, found)) {
            // With all transitions and with none; then each curve the other way. What another window showed comes in at
            // the end only: curves too many start nearer to the points than the right ones without their transitions.
            Choice choice;
            improve(choice, found);
            for (Corner& corner : found) corner.lengthIn = corner.lengthOut = 0.0;
            improve(choice, found);
            for (std::size_t i = 1; i + 1 < choice.corners.size(); ++i) {
                std::vector<Corner> other = choice.corners;
                Corner& corner = other[i];
                const double turn = TurnBetween(corner.point - other[i - 1].point, other[i + 1].point - corner.point);
                const bool hasTransitions = corner.lengthIn > 0.0;
                corner.lengthIn = corner.lengthOut = hasTransitions ? 0.0 : 0.5 * std::abs(turn) * corner.radius;
                if (!hasTransitions) corner.radius *= 0.9;
                improve(choice, std::move(other));
            }
            if (choice.weight < best.weight) best = std::move(choice);
        }
        if (diagram.IsFine()) break;
    }
    if (best.corners.empty()) return false;
    corners = Shifted(best.corners, origin);
    return true;
}

}  // namespace Kalvio::Math
