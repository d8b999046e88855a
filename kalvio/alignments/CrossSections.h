#pragma once

#include "kalvio/Export.h"
#include "kalvio/core/Point2D.h"

#include <vector>

namespace Kalvio::Math {

class Alignment;
class TinSurfacePatch3D;

/// Sections of the ground and of a design across an axis, and the earthwork between them by mean end areas: what is
/// done by hand, for sheets and mass curves. `TinSurfacePatch3D::GetVolumes` is exact.
///
///     std::vector<CrossSections::Section> sections;
///     std::vector<CrossSections::Mass> masses;
///     const std::vector<double> stations = road.GetStationsByStep(0.0, road.GetLength(), 20.0);
///     if (!CrossSections::Make(road, stations, -15.0, 15.0, ground, design, sections)) return false;
///     if (CrossSections::GetMasses(sections, masses)) total = masses.back();
class KALVIO_MATH_API CrossSections final {
public:
    /// Heights across the axis without a gap: x the offset, positive to the right and ascending, y the height.
    using Line = std::vector<Point2D>;

    /// What is cut and what is filled.
    struct Earth {
        double cut = 0.0;   ///< where the ground is the higher one
        double fill = 0.0;  ///< where it is the lower one
    };

    /// The surfaces across the axis at a station.
    struct Section {
        double station = 0.0;      ///< along the plan
        std::vector<Line> ground;  ///< empty where the section leaves the surface
        std::vector<Line> design;  ///< the same
        Earth area;                ///< between the two, where both are
        /// Of volume along the axis: the areas, each part of them times 1 + curvature * offset, the way that it makes
        /// along the curve for a unit of the axis; beyond the center of the curve that is negative. Source: Pappus of
        /// Alexandria, about 320.
        Earth rate;
    };

    /// The volumes from the first section to a station. The mass curve is their cut less their fill.
    struct Mass {
        double station = 0.0;  ///< along the plan
        Earth volume;          ///< up to there
    };

    /// Replaces `sections` by those at the stations, between two offsets. The root of the number of triangles each.
    /// @param from, to  offsets, positive to the right
    /// @return false, `sections` untouched, for a station out of the plan, offsets that do not ascend or lie
    ///         beyond 1e70, and when one of the surfaces is empty
    [[nodiscard]] static bool Make(const Alignment& axis, const std::vector<double>& stations, double from, double to,
                                   const TinSurfacePatch3D& ground, const TinSurfacePatch3D& design,
                                   std::vector<Section>& sections);
    /// Replaces `masses` by the volumes up to each section: the mean of two rates times the way between them.
    /// @return false, `masses` untouched, when there are no sections and when stations descend or are not finite
    [[nodiscard]] static bool GetMasses(const std::vector<Section>& sections, std::vector<Mass>& masses);
};

}  // namespace Kalvio::Math
