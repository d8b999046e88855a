#include "kalvio/areas/Offset.h"

#include "kalvio/areas/detail/AreaPolygons.h"
#include "kalvio/areas/detail/BufferOutline.h"
#include "kalvio/areas/detail/ChainPath.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/detail/Ring.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kalvio::Math {

namespace {

using detail::AreaOverlay;

bool IsInRange(double value) { return std::abs(value) <= detail::largestCoordinate; }

bool TakePath(const LineString2D& chain, double, detail::ChainPath& path, detail::Transitions*) {
    return detail::MakePath(chain, path);
}
bool TakePath(const Polyline2D& chain, double tolerance, detail::ChainPath& path, detail::Transitions* transitions) {
    return detail::MakePath(chain, tolerance, path, transitions);
}

template <class ChainType>
bool Prepare(const ChainType& chain, const detail::BufferOutline::Style& style, detail::ChainPath& path,
             detail::Transitions* transitions = nullptr) {
    if (!IsInRange(style.distance) || !IsInRange(style.tolerance) || !(style.shape.mitreLimit > 0.0)) return false;
    if (!TakePath(chain, style.tolerance, path, transitions)) return false;
    return std::any_of(path.begin(), path.end(), [&](const AreaOverlay::Corner& corner) {
        return corner.sense != 0 ||
               std::hypot(corner.at.x - path[0].at.x, corner.at.y - path[0].at.y) > style.tolerance;
    });
}

detail::BufferOutline::Style StyleOf(double distance, const Tolerances& tolerances, Offset::Join join, double limit) {
    return {distance, 0.0, std::abs(tolerances.UserTolerance()), {.join = join, .mitreLimit = limit}};
}

// False where nothing is longer than the tolerance.
bool Give(Polyline2D made, Polyline2D& result) {
    if (made.GetNrOfElements() == 0) return false;
    result = std::move(made);
    return true;
}

template <class ChainType>
bool MakeParallel(const ChainType& chain, const detail::BufferOutline::Style& style, Polyline2D& result) {
    detail::ChainPath path;
    detail::Transitions transitions{style.distance, {}, {}};
    if (!Prepare(chain, style, path, &transitions)) return false;
    path = detail::BufferOutline(style).ParallelOf(path, transitions.bends);
    if (path.empty()) return false;
    const detail::FittedPath whole = detail::WithParallels(path, transitions);
    return Give(detail::ChainOf(whole.path, style.tolerance, whole.clothoids), result);
}

template <class ChainType>
bool MakeTrimmed(const ChainType& chain, detail::BufferOutline::Style style, std::vector<Polyline2D>& result) {
    detail::ChainPath path;
    if (!Prepare(chain, style, path)) return false;
    if (!detail::BufferOutline::IsTold({&path, 1}, style.distance, style.tolerance)) return false;
    std::vector<Polyline2D> made;
    const bool isLeft = style.distance < 0.0;
    if (style.distance == 0.0) {
        made.push_back(detail::ChainOf(path, style.tolerance));
    } else {
        style.distance = std::abs(style.distance);
        detail::BufferOutline outline(style);
        outline.AddChain(path);
        AreaOverlay overlay(style.tolerance, AreaOverlay::Fill::Positive);
        if (!overlay.Add(outline.GetLoops(), 0) || !overlay.Run(true)) return false;
        overlay.CloseThinFaces(true);
        const auto& [from, end] = isLeft ? outline.GetLeft() : outline.GetRight();
        std::vector<AreaOverlay::Ring> stretches = overlay.ExtractStretches(from, end);
        if (isLeft) {
            std::reverse(stretches.begin(), stretches.end());
            for (AreaOverlay::Ring& stretch : stretches) stretch = detail::Reversed(stretch);
        }
        for (const AreaOverlay::Ring& stretch : stretches) made.push_back(detail::ChainOf(stretch, style.tolerance));
        std::erase_if(made, [](const Polyline2D& part) { return part.GetNrOfElements() == 0; });
    }
    result = std::move(made);
    return true;
}

}  // namespace

bool Offset::Parallel(const LineString2D& chain, double distance, Polyline2D& result, const Tolerances& tolerances,
                      Join join, double mitreLimit) {
    return MakeParallel(chain, StyleOf(distance, tolerances, join, mitreLimit), result);
}

bool Offset::Parallel(const Polyline2D& chain, double distance, Polyline2D& result, const Tolerances& tolerances,
                      Join join, double mitreLimit) {
    return MakeParallel(chain, StyleOf(distance, tolerances, join, mitreLimit), result);
}

bool Offset::Parallel(const LineString2D& chain, const std::vector<Width>& widths, Polyline2D& result,
                      const Tolerances& tolerances) {
    Polyline2D whole;
    return whole.AppendElement(chain) && Parallel(whole, widths, result, tolerances);
}

bool Offset::Parallel(const Polyline2D& chain, const std::vector<Width>& widths, Polyline2D& result,
                      const Tolerances& tolerances) {
    const double tolerance = std::abs(tolerances.UserTolerance());
    const auto isUsable = [](const Width& width) { return IsInRange(width.station) && IsInRange(width.distance); };
    const auto isBefore = [](const Width& a, const Width& b) { return a.station < b.station; };
    detail::FittedPath made;
    if (widths.empty() || !IsInRange(tolerance) || !std::all_of(widths.begin(), widths.end(), isUsable) ||
        !std::is_sorted(widths.begin(), widths.end(), isBefore) ||
        !detail::MakeWidened(chain, widths, tolerance, made)) {
        return false;
    }
    return Give(detail::ChainOf(made.path, tolerance, made.clothoids), result);
}

bool Offset::TrimmedParallel(const LineString2D& chain, double distance, std::vector<Polyline2D>& result,
                             const Tolerances& tolerances, Join join, double mitreLimit) {
    return MakeTrimmed(chain, StyleOf(distance, tolerances, join, mitreLimit), result);
}

bool Offset::TrimmedParallel(const Polyline2D& chain, double distance, std::vector<Polyline2D>& result,
                             const Tolerances& tolerances, Join join, double mitreLimit) {
    return MakeTrimmed(chain, StyleOf(distance, tolerances, join, mitreLimit), result);
}

}  // namespace Kalvio::Math
