#include "kalvio/areas/BufferCreator.h"

#include "kalvio/areas/detail/AreaOverlay.h"
#include "kalvio/areas/detail/AreaPolygons.h"
#include "kalvio/areas/detail/BufferOutline.h"
#include "kalvio/areas/detail/ChainPath.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/polygons/detail/Ring.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Kalvio::Math {

namespace {

using detail::AreaOverlay;

constexpr double ofCurves = 0.25;     // of the height: how far chords leave the arcs of the source
constexpr double ofParts = 0.015625;  // of the tolerance: that of buffers that are not the last one

bool IsInRange(double value) { return std::abs(value) <= detail::largestCoordinate; }

bool IsIn(bool first, bool) { return first; }

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
            return detail::MakeChords(area, distance != 0.0 ? ofCurves * height : height, chords) &&
                   overlay.Add(chords, 0);
        };
        if (!std::all_of(source.polygons.begin(), source.polygons.end(), add)) return false;
        if (!std::all_of(source.curves.begin(), source.curves.end(), addCurve)) return false;
        if (source.polygons.empty() && source.curves.empty()) return true;
        if (!overlay.Run()) return false;
        united = overlay.Extract(IsIn);
        return true;
    }

    // Chains and points, these as chains of one corner.
    bool MakePaths(std::vector<detail::ChainPath>& paths) const {
        detail::ChainPath path;
        const auto take = [&](bool isMade) {
            if (isMade && distance > 0.0) paths.push_back(path);
            return isMade;
        };
        for (const Point2D& p : source.points) {
            path = {{{p.GetX(), p.GetY()}, 0, {}}};
            if (!take(IsInRange(p.GetX()) && IsInRange(p.GetY()))) return false;
        }
        for (const LineString2D& chain : source.strings) {
            if (chain.GetSize() > 0 && !take(detail::MakePath(chain, path))) return false;
        }
        for (const Polyline2D& chain : source.chains) {
            if (chain.GetNrOfElements() == 0) continue;
            const bool isMade = height > 0.0 ? detail::MakeChords(chain, ofCurves * height, path)
                                             : detail::MakePath(chain, tolerance, path);
            if (!take(isMade)) return false;
        }
        return true;
    }

    // Whether so large a distance leaves the shape: in parts that of the last one, which is as long as the buffer is
    // wide.
    bool IsTold(const std::vector<AreaOverlay::Area>& areas, const std::vector<detail::ChainPath>& paths) const {
        if (IsRound(paths)) {
            const double rounding = std::numeric_limits<double>::epsilon() * std::abs(distance);
            return rounding <= std::max(tolerance, detail::numericalZero);
        }
        std::vector<AreaOverlay::Ring> all = paths;
        for (const AreaOverlay::Area& area : areas) all.insert(all.end(), area.begin(), area.end());
        return detail::BufferOutline::IsTold(all, distance, tolerance);
    }

    bool IsRound(const std::vector<detail::ChainPath>& paths) const {
        return shape.join == Join::Round && (paths.empty() || (shape.end == End::Round && shape.side == Side::Both));
    }

    // What discs make can be made by smaller discs one after the other. As long as the elements are short against the
    // distance that takes less: each buffer is simpler than the one before. No part is so short that its buffer
    // vanishes.
    double NextPart(const std::vector<AreaOverlay::Area>& areas, const std::vector<detail::ChainPath>& paths,
                    double done) const {
        constexpr double elements = 4.0;  // that a part of the distance spans
        constexpr double most = 1e6;      // of the rest to a part
        constexpr double mostOfRest = 0.5;
        constexpr double finest = 1e-12;  // of the largest coordinate: well above what the overlay tells apart
        const double rest = std::abs(distance) - done;
        if (!IsRound(paths)) return rest;
        double length = 0.0;
        double count = 1.0;
        double largest = 0.0;
        const auto add = [&](const AreaOverlay::Ring& path) {
            for (const AreaOverlay::Corner& corner : path) {
                largest = std::max({largest, std::abs(corner.at.x), std::abs(corner.at.y)});
            }
            for (std::size_t i = 1; i < path.size(); ++i) {
                length += std::hypot(path[i].at.x - path[i - 1].at.x, path[i].at.y - path[i - 1].at.y);
            }
            count += static_cast<double>(path.size());
        };
        for (const AreaOverlay::Area& area : areas) std::for_each(area.begin(), area.end(), add);
        std::for_each(paths.begin(), paths.end(), add);
        const double part = std::max({elements * length / count, done, rest / most, tolerance, finest * largest});
        return length > 0.0 && part < mostOfRest * rest ? part : rest;
    }

    // Chords would fill the cusps between borders that touch, and so move what lies within the distance of these.
    template <class Polygon>
    bool RunByArcs(std::vector<Polygon>& result) const {
        std::vector<PolygonCurve2D> curved;
        if (!Work{source, distance, 0.0, tolerance, shape}.Run(curved)) return false;
        return Work{curved, 0.0, height, tolerance, shape}.Run(result);
    }

    template <class Polygon>
    bool Run(std::vector<Polygon>& result) const {
        if (!IsInRange(distance) || !IsInRange(tolerance) || !IsInRange(height) || !(shape.mitreLimit > 0.0)) {
            return false;
        }
        if (height > 0.0 && distance < 0.0 && !source.curves.empty()) return RunByArcs(result);
        std::vector<AreaOverlay::Area> areas;
        std::vector<detail::ChainPath> paths;
        if (!Unite(areas) || !MakePaths(paths) || !IsTold(areas, paths)) return false;
        for (double done = 0.0; done < std::abs(distance);) {
            const double part = NextPart(areas, paths, done);
            const bool isLast = !(done + part < std::abs(distance));
            const double kept = isLast ? tolerance : ofParts * tolerance;
            const double own = height > 0.0 ? std::max(height * (part / std::abs(distance)), kept) : 0.0;
            detail::BufferOutline outline({std::copysign(part, distance), own, kept, shape});
            for (AreaOverlay::Area& area : areas) {
                for (AreaOverlay::Ring& ring : area) outline.AddRing(std::move(ring));
            }
            for (const detail::ChainPath& path : paths) outline.AddChain(path);
            AreaOverlay::Discs discs;
            if (IsRound(paths)) discs = outline.LeaveOut();
            AreaOverlay overlay(kept, AreaOverlay::Fill::Positive);
            if (!overlay.Add(outline.GetLoops(), 0) || !overlay.Run()) return false;
            overlay.CloseThinFaces(distance > 0.0);
            overlay.CloseFacesIn(discs);
            areas = overlay.Extract(IsIn);
            paths.clear();
            done = isLast ? std::abs(distance) : done + part;
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
    const double tolerance = std::abs(tolerances.UserTolerance());
    return height > 0.0 && Work{source, distance, std::max(height, tolerance), tolerance, shape}.Run(result);
}

bool BufferCreator::Create(const Source& source, double distance, double height, std::vector<Polygon2D>& result,
                           const Tolerances& tolerances) {
    return Create(source, distance, height, result, tolerances, Shape());
}

}  // namespace Kalvio::Math
