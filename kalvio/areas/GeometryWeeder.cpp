#include "kalvio/areas/GeometryWeeder.h"

#include "kalvio/core/Angle.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/detail/Ring.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Kalvio::Math {

namespace {

template <class PointType>
bool IsInRange(const PointType& p) {
    for (int axis = 0; axis < static_cast<int>(p.GetDimension()); ++axis) {
        if (!(std::abs(p[axis]) < detail::largestCoordinate)) return false;
    }
    return true;
}

double TurnBetween(const Vec2D& a, const Vec2D& b) {
    return std::atan2(std::abs(a.PerpDotProduct(b)), a.DotProduct(b));
}

double TurnBetween(const Vec3D& a, const Vec3D& b) { return std::atan2(a.CrossProduct(b).Length(), a.DotProduct(b)); }

/// @param spacing  points nearer than this to the end give way to it
/// @param stays    of a point: the one that stays before it, the point, the one after it
template <class ChainType, class Stays>
bool Weed(const ChainType& chain, double limit, double spacing, ChainType& result, Stays&& stays) {
    auto points = chain.GetPoints();
    using PointType = typename decltype(points)::value_type;
    if (!(limit >= 0.0) || !std::all_of(points.begin(), points.end(), IsInRange<PointType>)) return false;
    std::size_t kept = (std::min)(points.size(), std::size_t{1});
    for (std::size_t i = 1; i + 1 < points.size(); ++i) {
        if (stays(points[kept - 1], points[i], points[i + 1])) points[kept++] = points[i];
    }
    if (points.size() > 1) {
        while (kept > 1 && points[kept - 1].Distance(points.back()) < spacing) --kept;
        points[kept++] = points.back();
    }
    points.resize(kept);
    result = ChainType(std::move(points));
    return true;
}

template <class ChainType>
bool BySpacing(const ChainType& chain, double spacing, ChainType& result) {
    return Weed(chain, spacing, spacing, result,
                [spacing](const auto& before, const auto& p, const auto&) { return !(before.Distance(p) < spacing); });
}

template <class ChainType>
bool ByAngle(const ChainType& chain, const Angle& angle, ChainType& result) {
    const double limit = angle.GetRadians();
    return Weed(chain, limit, 0.0, result, [limit](const auto& before, const auto& p, const auto& after) {
        return TurnBetween(p - before, after - p) > limit;
    });
}

}  // namespace

bool GeometryWeeder::WeedBySpacing(const LineString2D& chain, double spacing, LineString2D& result) {
    return BySpacing(chain, spacing, result);
}

bool GeometryWeeder::WeedBySpacing(const LineString3D& chain, double spacing, LineString3D& result) {
    return BySpacing(chain, spacing, result);
}

bool GeometryWeeder::WeedByAngle(const LineString2D& chain, const Angle& angle, LineString2D& result) {
    return ByAngle(chain, angle, result);
}

bool GeometryWeeder::WeedByAngle(const LineString3D& chain, const Angle& angle, LineString3D& result) {
    return ByAngle(chain, angle, result);
}

}  // namespace Kalvio::Math
