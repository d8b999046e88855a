#pragma once

#include "kalvio/areas/detail/PlaneVectors.h"
#include "kalvio/curves/Clothoid.h"

#include <optional>

namespace Kalvio::Math {
class Polyline2D;
}

namespace Kalvio::Math::detail {

/// The clothoid without inflection between two points with given directions (D. J. Walton, D. S. Meek, G1 interpolation
/// with a single Cornu spiral segment, 2009); where even one that is straight at an end bends too early, a line leads
/// into it.
class ClothoidFit {
public:
    /// @param chord  from the start to the end; the directions, unit, are those there
    /// @return nothing where the directions lie on one side of the chord, turn by more than the series of `Clothoid`
    ///         serves, or are next to those of an arc
    static std::optional<ClothoidFit> Find(const PlanePoint& chord, const PlanePoint& from, const PlanePoint& to);

    /// How far a place, seen from the start, lies beside the fit. @param share  of the length, about where it is
    double Off(const PlanePoint& place, double share) const;
    /// Appends it from the end of the chain; a line in its direction there becomes longer.
    void AppendTo(const Point2D& start, Polyline2D& chain) const;

private:
    PlanePoint direction;     // at the start
    PlanePoint endDirection;  // at the end
    double before = 0.0;      // length of a line
    double behind = 0.0;
    Clothoid curve;  // from (0, 0)
};

/// Appends a line, but for the end of the chain where that is a line of the same direction: it becomes longer.
void ExtendByLine(const Point2D& start, const Point2D& end, Polyline2D& chain);

}  // namespace Kalvio::Math::detail
