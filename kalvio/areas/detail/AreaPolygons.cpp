#include "kalvio/areas/detail/AreaPolygons.h"

#include "kalvio/areas/detail/ClothoidFit.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/PolygonCurve2D.h"

#include <cmath>
#include <memory>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

std::vector<Point2D> PointsOf(const AreaOverlay::Ring& ring) {
    std::vector<Point2D> points;
    points.reserve(ring.size());
    for (const AreaOverlay::Corner& corner : ring) points.emplace_back(corner.at.x, corner.at.y);
    return points;
}

// The arc about the centre nearest to that of the corner that is as far from both ends; where these lie too near each
// other to tell, about that centre itself.
Arc2D ArcBetween(const Point2D& start, const AreaOverlay::Corner& corner, const Point2D& end) {
    constexpr double shortest = 1e-6;  // chord over radius
    const Vec2D chord = end - start;
    Point2D center(corner.center.x, corner.center.y);
    const double length = chord.Length();
    if (length > shortest * center.Distance(start)) {
        const Vec2D along = chord / length;
        center = center - along * ((center - start).DotProduct(along) - 0.5 * length);
    }
    const double sweep = AreaOverlay::SweepOf(
        {{start.GetX(), start.GetY()}, corner.sense, {center.GetX(), center.GetY()}}, {end.GetX(), end.GetY()});
    return {start, center, Angle(sweep)};
}

RingCurve2D CurveOf(const AreaOverlay::Ring& ring) {
    RingCurve2D curve;
    const auto append = [&curve](std::unique_ptr<IGeometry> element) {
        if (curve.AppendElement(element.get())) (void)element.release();
    };
    // Arcs end where their angle leads them: what follows starts there.
    Point2D start(ring.front().at.x, ring.front().at.y);
    const auto arcTo = [&](const AreaOverlay::Corner& corner, const Point2D& end) {
        return ArcBetween(start, corner, end);
    };
    if (const AreaOverlay::Corner& last = ring.back(); last.sense != 0) {
        const Point2D first = start;
        start = Point2D(last.at.x, last.at.y);
        start = Point2D(arcTo(last, first).GetEnd());
    }
    const Point2D closing = start;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const bool isLast = i + 1 == ring.size();
        const Point2D end = isLast ? closing : Point2D(ring[i + 1].at.x, ring[i + 1].at.y);
        if (ring[i].sense == 0) {
            append(std::make_unique<Line2D>(start, end));
            start = end;
        } else {
            auto arc = std::make_unique<Arc2D>(arcTo(ring[i], end));
            start = Point2D(arc->GetEnd());
            append(std::move(arc));
        }
    }
    return curve;
}

void AppendTo(std::vector<Polygon2D>& polygons, const AreaOverlay::Area& area) {
    polygons.emplace_back(PointsOf(area.front()));
    for (std::size_t i = 1; i < area.size(); ++i) polygons.back().AppendHoleBoundary(LineString2D(PointsOf(area[i])));
}

double SignedArea(const RingCurve2D& ring) {
    std::vector<Point2D> corners;
    double besideChords = 0.0;
    for (unsigned int i = 0; i < ring.GetSize(); ++i) {
        const IPolyline2DElement& element = ring.GetElementAtIndex(i);
        corners.push_back(element.GetStart());
        if (element.GetType() != MathTypes::Arc2D) continue;
        const auto& arc = static_cast<const Arc2D&>(element);
        besideChords += std::copysign(arc.GetArea(), arc.GetAngle().GetRadians());
    }
    return Polygon2D(std::move(corners)).GetArea() + besideChords;
}

// Between arcs and what they nearly touch, chords see areas of a fraction of the tolerance in width that are none.
void AppendTo(std::vector<PolygonCurve2D>& polygons, const AreaOverlay::Area& area) {
    PolygonCurve2D polygon(CurveOf(area.front()));
    if (!(SignedArea(polygon.GetBoundary()) > 0.0)) return;
    for (std::size_t i = 1; i < area.size(); ++i) {
        auto inner = std::make_unique<RingCurve2D>(CurveOf(area[i]));
        if (SignedArea(*inner) < 0.0 && polygon.AppendInnerRing(inner.get())) (void)inner.release();
    }
    polygons.push_back(std::move(polygon));
}

template <class Polygon>
std::vector<Polygon> MakePolygons(const std::vector<AreaOverlay::Area>& areas) {
    std::vector<Polygon> polygons;
    polygons.reserve(areas.size());
    for (const AreaOverlay::Area& area : areas) AppendTo(polygons, area);
    return polygons;
}

}  // namespace

Polyline2D ChainOf(const AreaOverlay::Ring& path, double tolerance, std::span<const Bend> clothoids) {
    Polyline2D chain;
    Point2D start(path.front().at.x, path.front().at.y);
    bool isAfterClothoid = false;
    for (std::size_t i = 0, next = 0; i + 1 < path.size(); ++i) {
        const Point2D end(path[i + 1].at.x, path[i + 1].at.y);
        if (next < clothoids.size() && clothoids[next].corner == i) {
            const Bend& bend = clothoids[next++];
            auto fit = ClothoidFit::Find({end.GetX() - start.GetX(), end.GetY() - start.GetY()}, bend.from, bend.to);
            if (!fit) fit = ClothoidFit::Find(path[i + 1].at - path[i].at, bend.from, bend.to);  // as it was found
            fit->AppendTo(start, chain);
            start = Point2D(chain.GetEnd());
            isAfterClothoid = true;
            continue;
        }
        if (path[i].sense != 0) {
            auto arc = std::make_unique<Arc2D>(ArcBetween(start, path[i], end));
            start = Point2D(arc->GetEnd());
            chain.AppendElement(std::move(arc));
        } else if (start.Distance(end) > tolerance) {
            if (isAfterClothoid) {
                ExtendByLine(start, end, chain);
            } else {
                chain.AppendElement(std::make_unique<Line2D>(start, end));
            }
            start = end;
        } else {
            continue;
        }
        isAfterClothoid = false;
    }
    return chain;
}

template <>
std::vector<Polygon2D> PolygonsOf(const std::vector<AreaOverlay::Area>& areas) {
    return MakePolygons<Polygon2D>(areas);
}

template <>
std::vector<PolygonCurve2D> PolygonsOf(const std::vector<AreaOverlay::Area>& areas) {
    return MakePolygons<PolygonCurve2D>(areas);
}

}  // namespace Kalvio::Math::detail
