#include "kalvio/queries/detail/PlaneSection.h"

#include "kalvio/core/detail/BracketedNewton.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/detail/RingPlane.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

// The height of an arc over a plane by its sweep angle: start + along (cos - 1) + across sin.
struct ArcHeight {
    ArcHeight(const Arc3D& arc, const PlaneHeights& heights)
        : origin(arc.GetStart()),
          outward(arc.GetStart() - arc.GetCenter()),
          tangent(arc.GetPlane().GetNormal().CrossProduct(outward)),
          start(heights.HeightOf(origin)),
          along(heights.normal.DotProduct(outward)),
          across(heights.normal.DotProduct(tangent)) {}

    static double CosLessOne(double angle) { return -2.0 * std::sin(0.5 * angle) * std::sin(0.5 * angle); }
    double At(double angle) const { return start + along * CosLessOne(angle) + across * std::sin(angle); }
    double SlopeAt(double angle) const { return across * std::cos(angle) - along * std::sin(angle); }
    Point3D PointAt(double angle) const { return origin + outward * CosLessOne(angle) + tangent * std::sin(angle); }
    /// Where the height is 0 on a part on which it rises or falls through it.
    double Root(double from, double to) const {
        const double sign = (At(to) > 0.0) == (from < to) ? 1.0 : -1.0;
        return BracketedNewton(std::min(from, to), std::max(from, to), [&](double angle) {
            return ValueAndSlope{sign * At(angle), sign * SlopeAt(angle)};
        });
    }

    Point3D origin;
    Vec3D outward;
    Vec3D tangent;
    double start;
    double along;
    double across;
};

}  // namespace

void PlaneSection::AddRing(const std::vector<Point3D>& ring) {
    for (const Point3D& point : ring) AddCorner(point);
    if (!ring.empty()) AddCorner(ring.front());
    CloseRing();
}

void PlaneSection::AddRing(const RingCurve3D& ring) {
    for (unsigned int i = 0; i < ring.GetNrOfElements(); ++i) {
        const IPolyline3DElement& element = ring.GetElementAtIndex(i);
        if (element.GetType() == MathTypes::LineString3D) {
            for (const Point3D& point : static_cast<const LineString3D&>(element).GetPoints()) AddCorner(point);
            continue;
        }
        AddCorner(element.GetStart());
        if (element.GetType() == MathTypes::Arc3D) AddArc(static_cast<const Arc3D&>(element));
        AddCorner(element.GetEnd());
    }
    AddCorner(ring.GetStartPoint());
    CloseRing();
}

void PlaneSection::AddCorner(const Point3D& point) {
    const double height = heights.HeightOf(point);
    const int side = heights.SideOf(height);
    isFinite = isFinite && std::isfinite(height);
    isAllOnPlane = isAllOnPlane && side == 0;
    if (!stops.empty() && stops.back().side * side < 0) {
        const Point3D& before = stops.back().point;
        stops.push_back({before + (point - before) * (lastHeight / (lastHeight - height)), 0});
    }
    stops.push_back({point, side});
    lastHeight = height;
}

void PlaneSection::AddArc(const Arc3D& arc) {
    const ArcHeight height(arc, heights);
    const double sweep = arc.GetAngle().GetRadians();
    // Between its highest and lowest places the arc only rises or only falls.
    std::array<double, 5> angles{0.0};
    std::size_t count = 1;
    const double summit = std::atan2(height.across, height.along);
    for (int k = -3; k <= 3; ++k) {
        const double extreme = summit + (sweep < 0.0 ? -k : k) * pi;
        if ((extreme > 0.0 && extreme < sweep) || (extreme < 0.0 && extreme > sweep)) {
            if (count < angles.size() - 1) angles[count++] = extreme;
        }
    }
    angles[count++] = sweep;
    std::array<double, 5> at{};
    for (std::size_t i = 0; i < count; ++i) at[i] = height.At(angles[i]);
    if (!std::isfinite(at[count - 1])) isFinite = false;
    if (!isFinite) return;
    // The ends count as on the plane by the tolerance, as all corners do. A summit or a lowest place does where it only
    // touches: where the arc truly passes the plane, however little, it is cut there.
    std::array<int, 5> sides{};
    for (std::size_t i = 0; i < count; ++i) sides[i] = heights.SideOf(at[i]);
    for (std::size_t i = 1; i + 1 < count; ++i) {
        isAllOnPlane = isAllOnPlane && sides[i] == 0;
        const int sign = at[i] > 0.0 ? 1 : at[i] < 0.0 ? -1 : 0;
        if (sides[i - 1] * sign < 0 || sides[i + 1] * sign < 0) sides[i] = sign;
    }
    for (std::size_t i = 1; i < count; ++i) {
        if (sides[i - 1] * sides[i] < 0) stops.push_back({height.PointAt(height.Root(angles[i - 1], angles[i])), 0});
        if (i + 1 < count) stops.push_back({height.PointAt(angles[i]), sides[i]});
    }
    lastHeight = at[count - 1];
    stops.push_back({height.PointAt(sweep), sides[count - 1]});
}

void PlaneSection::CloseRing() {
    for (std::size_t i = 1; i < stops.size(); ++i) {
        const Stop& a = stops[i - 1];
        const Stop& b = stops[i];
        for (const int onPlane : {1, -1}) {
            if ((a.side != 0 ? a.side : onPlane) == (b.side != 0 ? b.side : onPlane)) continue;
            passages[onPlane > 0 ? 0 : 1].push_back({0.0, a.side == 0 ? a.point : b.point});
        }
    }
    stops.clear();
}

IntersectionResult PlaneSection::Finish(const Vec3D& areaNormal, std::vector<Line3D>& out) {
    if (!isFinite) return IntersectionResult::NoIntersection;
    if (isAllOnPlane) return IntersectionResult::Coincident;
    const Vec3D along = areaNormal.CrossProduct(heights.normal);
    const double length = along.Length();
    const Vec3D direction = length > 0.0 ? along / length : PlaneAxes(heights.normal).u;
    std::vector<std::pair<Passage, Passage>> pieces;
    for (std::vector<Passage>& walk : passages) {
        for (Passage& passage : walk) {
            passage.position = direction.DotProduct(passage.point - heights.origin);
            if (!std::isfinite(passage.position)) return IntersectionResult::NoIntersection;
        }
        const auto isBefore = [](const Passage& a, const Passage& b) { return a.position < b.position; };
        std::stable_sort(walk.begin(), walk.end(), isBefore);
        for (std::size_t i = 1; i < walk.size(); i += 2) pieces.emplace_back(walk[i - 1], walk[i]);
    }
    if (pieces.empty()) return IntersectionResult::NoIntersection;
    std::stable_sort(pieces.begin(), pieces.end(),
                     [](const auto& a, const auto& b) { return a.first.position < b.first.position; });
    std::pair<Passage, Passage> joined = pieces.front();
    for (const auto& piece : pieces) {
        if (piece.first.position > joined.second.position + heights.tolerance) {
            out.emplace_back(joined.first.point, joined.second.point);
            joined = piece;
        } else if (piece.second.position > joined.second.position) {
            joined.second = piece.second;
        }
    }
    out.emplace_back(joined.first.point, joined.second.point);
    return IntersectionResult::Intersecting;
}

}  // namespace Kalvio::Math::detail
