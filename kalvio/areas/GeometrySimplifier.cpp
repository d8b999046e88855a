#include "kalvio/areas/GeometrySimplifier.h"

#include "kalvio/areas/detail/ArcFit.h"
#include "kalvio/areas/detail/BorderNetwork.h"
#include "kalvio/areas/detail/ChainSimplification.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/detail/Ring.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <span>
#include <utility>

namespace Kalvio::Math {

namespace {

template <class PointType>
bool AreInRange(const std::vector<PointType>& points) {
    return std::all_of(points.begin(), points.end(), [](const PointType& p) {
        for (int axis = 0; axis < static_cast<int>(p.GetDimension()); ++axis) {
            if (!(std::abs(p[axis]) < detail::largestCoordinate)) return false;
        }
        return true;
    });
}

bool AreInRange(const std::vector<Polygon2D>& areas) {
    return std::all_of(areas.begin(), areas.end(), [](const Polygon2D& area) {
        for (unsigned int i = 0; i < area.GetNumHoleBoundaries(); ++i) {
            if (!AreInRange(area.GetHoleBoundary(i).GetPoints())) return false;
        }
        return AreInRange(area.GetPoints());
    });
}

double SquaredDoubledArea(const Vec2D& a, const Vec2D& b) {
    const double doubled = a.PerpDotProduct(b);
    return doubled * doubled;
}

double SquaredDoubledArea(const Vec3D& a, const Vec3D& b) { return a.CrossProduct(b).NormSquared(); }

/// The triangles of a chain's points with their neighbours.
template <class PointType>
class ChainTriangles {
public:
    explicit ChainTriangles(const std::vector<PointType>& chain)
        : points(chain), links(chain.size()), isKept(chain.size(), true) {}

    std::size_t GetCount() const { return points.size(); }
    double GetArea(std::size_t i) const {
        if (i == 0 || i + 1 == points.size()) return std::numeric_limits<double>::infinity();
        const PointType& p = points[i];
        return 0.5 * std::sqrt(SquaredDoubledArea(points[links.Before(i)] - p, points[links.After(i)] - p));
    }
    std::span<const std::size_t> Remove(std::size_t i) {
        changed = {links.Before(i), links.After(i)};
        links.Remove(i);
        isKept[i] = false;
        return changed;
    }
    const std::vector<bool>& GetKept() const { return isKept; }

private:
    const std::vector<PointType>& points;
    detail::LinkedChain links;
    std::vector<bool> isKept;
    std::array<std::size_t, 2> changed{};
};

template <class PointType>
std::vector<PointType> Kept(const std::vector<PointType>& points, const std::vector<bool>& isKept) {
    std::vector<PointType> kept;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (isKept[i]) kept.push_back(points[i]);
    }
    return kept;
}

/// Without points that repeat the one before.
template <class ChainType>
auto Different(const ChainType& chain) {
    auto points = chain.GetPoints();
    const auto isSame = [](const auto& a, const auto& b) { return (b - a).NormSquared() == 0.0; };
    points.erase(std::unique(points.begin(), points.end(), isSame), points.end());
    return points;
}

template <class ChainType>
bool ByDistance(const ChainType& chain, double tolerance, ChainType& result) {
    if (!(tolerance >= 0.0) || !AreInRange(chain.GetPoints())) return false;
    const auto points = Different(chain);
    std::vector<bool> isKept(points.size(), points.size() < 2);
    if (points.size() > 1) {
        isKept.front() = isKept.back() = true;
        const detail::FarthestPoint search{std::span(points)};
        detail::KeepWithin(search, 0, points.size() - 1, tolerance, isKept);
    }
    result = ChainType(Kept(points, isKept));
    return true;
}

template <class ChainType>
bool ByArea(const ChainType& chain, double area, ChainType& result) {
    if (!(area >= 0.0) || !AreInRange(chain.GetPoints())) return false;
    const auto points = Different(chain);
    ChainTriangles triangles(points);
    detail::RemoveSmallTriangles(triangles, area);
    result = ChainType(Kept(points, triangles.GetKept()));
    return true;
}

using Method = void (detail::BorderNetwork::*)(double);

bool AsNetwork(const LineString2D& chain, Method method, double limit, LineString2D& result) {
    if (!(limit >= 0.0) || !AreInRange(chain.GetPoints())) return false;
    if (chain.GetSize() == 0) {
        result = chain;
        return true;
    }
    detail::BorderNetwork network(chain.GetPoints());
    (network.*method)(limit);
    result = LineString2D(network.ToChain());
    return true;
}

bool AsNetwork(const std::vector<Polygon2D>& areas, Method method, double limit, std::vector<Polygon2D>& result) {
    if (!(limit >= 0.0) || !AreInRange(areas)) return false;
    detail::BorderNetwork network(areas);
    (network.*method)(limit);
    result = network.ToAreas(areas);
    return true;
}

bool AsNetwork(const Polygon2D& polygon, Method method, double limit, Polygon2D& result) {
    std::vector<Polygon2D> made;
    if (!AsNetwork({polygon}, method, limit, made)) return false;
    result = std::move(made.front());
    return true;
}

/// The largest index up to `last` for which `fits` says true, found by doubling, where fitting ends once; `first` does.
/// One failure is looked past.
template <class Fits>
std::size_t FarthestFitting(std::size_t start, std::size_t first, std::size_t last, Fits&& fits) {
    std::size_t reached = first;
    std::size_t failed = last + 1;
    for (std::size_t span = first - start + 1, failures = 0; failures < 2;) {
        const std::size_t end = (std::min)(last, start + span);
        if (end <= reached) break;
        if (fits(end)) {
            reached = end;
            failures = 0;
            failed = last + 1;
        } else {
            if (failures++ == 0) failed = end;
        }
        span *= 2;
    }
    while (failed - reached > 1) {
        const std::size_t middle = reached + (failed - reached) / 2;
        (fits(middle) ? reached : failed) = middle;
    }
    return reached;
}

}  // namespace

bool GeometrySimplifier::ToLinesAndArcs(const LineString2D& chain, double tolerance, Polyline2D& result) {
    if (!(tolerance >= 0.0) || !AreInRange(chain.GetPoints())) return false;
    const auto points = Different(chain);
    if (points.size() < 2) return false;
    const std::span<const Point2D> all(points);
    const detail::FarthestPoint search{all};
    Polyline2D made;
    for (std::size_t start = 0, last = points.size() - 1; start < last;) {
        const auto isLine = [&](std::size_t end) {
            return search.Find(start, end).squaredDistance <= tolerance * tolerance;
        };
        std::size_t end = FarthestFitting(start, start + 1, last, isLine);
        std::optional<double> bulge;
        end = FarthestFitting(start, end, last, [&](std::size_t to) {
            const auto found = detail::ArcFit(all.subspan(start, to - start + 1), tolerance).Find();
            if (found) bulge = found;
            return found.has_value();
        });
        if (bulge) {
            made.AppendElement(new Arc2D(points[start], *bulge, points[end]));
        } else {
            made.AppendElement(new Line2D(points[start], points[end]));
        }
        start = end;
    }
    result = std::move(made);
    return true;
}

bool GeometrySimplifier::SimplifyByDistance(const LineString2D& chain, double tolerance, LineString2D& result,
                                            bool keepSimple) {
    return keepSimple ? AsNetwork(chain, &detail::BorderNetwork::SimplifyByDistance, tolerance, result)
                      : ByDistance(chain, tolerance, result);
}

bool GeometrySimplifier::SimplifyByDistance(const LineString3D& chain, double tolerance, LineString3D& result) {
    return ByDistance(chain, tolerance, result);
}

bool GeometrySimplifier::SimplifyByDistance(const Polygon2D& polygon, double tolerance, Polygon2D& result) {
    return AsNetwork(polygon, &detail::BorderNetwork::SimplifyByDistance, tolerance, result);
}

bool GeometrySimplifier::SimplifyByDistance(const std::vector<Polygon2D>& areas, double tolerance,
                                            std::vector<Polygon2D>& result) {
    return AsNetwork(areas, &detail::BorderNetwork::SimplifyByDistance, tolerance, result);
}

bool GeometrySimplifier::SimplifyByArea(const LineString2D& chain, double area, LineString2D& result, bool keepSimple) {
    return keepSimple ? AsNetwork(chain, &detail::BorderNetwork::SimplifyByArea, area, result)
                      : ByArea(chain, area, result);
}

bool GeometrySimplifier::SimplifyByArea(const LineString3D& chain, double area, LineString3D& result) {
    return ByArea(chain, area, result);
}

bool GeometrySimplifier::SimplifyByArea(const Polygon2D& polygon, double area, Polygon2D& result) {
    return AsNetwork(polygon, &detail::BorderNetwork::SimplifyByArea, area, result);
}

bool GeometrySimplifier::SimplifyByArea(const std::vector<Polygon2D>& areas, double area,
                                        std::vector<Polygon2D>& result) {
    return AsNetwork(areas, &detail::BorderNetwork::SimplifyByArea, area, result);
}

}  // namespace Kalvio::Math
