#include "kalvio/areas/BufferCreator.h"

#include "kalvio/areas/detail/AreaOverlay.h"
#include "kalvio/areas/detail/AreaPolygons.h"
#include "kalvio/areas/detail/BufferOutline.h"
#include "kalvio/areas/detail/ChainPath.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/polygons/detail/Ring.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kalvio::Math {

namespace {

using detail::AreaOverlay;

constexpr double ofCurves = 0.25;  // of the height: how far chords leave the arcs of the source

bool IsInRange(double value) { return std::abs(value) <= detail::largestCoordinate; }

bool IsIn(bool first, bool) { return first; }

bool MakeChords(const RingCurve2D& ring, double height, std::vector<Point2D>& points) {
    Polyline2D chain;
    for (const IPolyline2DElement& element : ring) chain.AppendElement(element);
    detail::ChainPath path;
    points.clear();
    if (chain.GetNrOfElements() > 0 && !detail::MakeChords(chain, height, path)) return false;
    for (const AreaOverlay::Corner& corner : path) points.emplace_back(corner.at.x, corner.at.y);
    return true;
}

bool MakeChords(const PolygonCurve2D& area, double height, Polygon2D& polygon) {
    std::vector<Point2D> points;
    if (!MakeChords(area.GetBoundary(), height, points)) return false;
    polygon = Polygon2D(points);
    for (unsigned int i = 0; i < area.GetNumInnerRings(); ++i) {
        if (!MakeChords(area.GetInnerRingAtIndex(i), height, points)) return false;
        polygon.AppendHoleBoundary(LineString2D(points));
    }
    return true;
}

}  // namespace

struct BufferCreator::Work {
    const Source& source;
    double distance;
    double height;  // 0: true arcs
    double tolerance;
    const Shape& shape;

    // The areas of the source as one, in order.
    bool Unite(std::vector<AreaOverlay::Area>& united) const {
        AreaOverlay overlay(tolerance, AreaOverlay::Fill::NonZero);
        const auto add = [&](const Polygon2D& area) { return overlay.Add(area, 0); };
        const auto addCurve = [&](const PolygonCurve2D& area) {
            Polygon2D chords;
            if (!(height > 0.0)) return overlay.Add(area, 0);
            return MakeChords(area, ofCurves * height, chords) && overlay.Add(chords, 0);
        };
        if (!std::all_of(source.polygons.begin(), source.polygons.end(), add)) return false;
        if (!std::all_of(source.curves.begin(), source.curves.end(), addCurve)) return false;
        if (source.polygons.empty() && source.curves.empty()) return true;
        if (!overlay.Run()) return false;
        united = overlay.Extract(IsIn);
        return true;
    }

    bool AddChains(detail::BufferOutline& outline) const {
        detail::ChainPath path;
        for (const Point2D& p : source.points) {
            if (!IsInRange(p.GetX()) || !IsInRange(p.GetY())) return false;
            if (distance > 0.0) outline.AddPoint({p.GetX(), p.GetY()});
        }
        for (const LineString2D& chain : source.strings) {
            if (chain.GetSize() == 0) continue;
            if (!detail::MakePath(chain, path)) return false;
            if (distance > 0.0) outline.AddChain(path);
        }
        for (const Polyline2D& chain : source.chains) {
            if (chain.GetNrOfElements() == 0) continue;
            const bool isMade = height > 0.0 ? detail::MakeChords(chain, ofCurves * height, path)
                                             : detail::MakePath(chain, tolerance, path);
            if (!isMade) return false;
            if (distance > 0.0) outline.AddChain(path);
        }
        return true;
    }

    template <class Polygon>
    bool Run(std::vector<Polygon>& result) const {
        if (!IsInRange(distance) || !IsInRange(tolerance) || !IsInRange(height) || !(shape.mitreLimit > 0.0)) {
            return false;
        }
        std::vector<AreaOverlay::Area> areas;
        detail::BufferOutline outline({distance, height, tolerance, shape});
        if (!Unite(areas) || !AddChains(outline)) return false;
        if (distance != 0.0) {
            for (AreaOverlay::Area& area : areas) {
                for (AreaOverlay::Ring& ring : area) outline.AddRing(std::move(ring));
            }
            AreaOverlay overlay(tolerance, AreaOverlay::Fill::Positive);
            if (!overlay.Add(outline.GetLoops(), 0) || !overlay.Run()) return false;
            areas = overlay.Extract(IsIn);
        }
        result = detail::PolygonsOf<Polygon>(areas);
        return true;
    }
};

bool BufferCreator::Create(const Source& source, double distance, std::vector<PolygonCurve2D>& result,
                           const Tolerances& tolerances, const Shape& shape) {
    return Work{source, distance, 0.0, std::abs(tolerances.UserTolerance()), shape}.Run(result);
}

bool BufferCreator::Create(const Source& source, double distance, std::vector<PolygonCurve2D>& result,
                           const Tolerances& tolerances) {
    return Create(source, distance, result, tolerances, Shape());
}

bool BufferCreator::Create(const Source& source, double distance, double height, std::vector<Polygon2D>& result,
                           const Tolerances& tolerances, const Shape& shape) {
    return height > 0.0 && Work{source, distance, height, std::abs(tolerances.UserTolerance()), shape}.Run(result);
}

bool BufferCreator::Create(const Source& source, double distance, double height, std::vector<Polygon2D>& result,
                           const Tolerances& tolerances) {
    return Create(source, distance, height, result, tolerances, Shape());
}

}  // namespace Kalvio::Math
