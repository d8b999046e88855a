#pragma once

#include "kalvio/Export.h"
#include "kalvio/areas/detail/Kept.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/PolygonCurve2D.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace Kalvio::Math {

/// Union, intersection, difference and symmetric difference of areas in plan, and the overlay of two layers of areas.
///
///     const Polygon2D parcel{Point2D(0, 0), Point2D(40, 0), Point2D(40, 30), Point2D(0, 30)};
///     const Polygon2D road{Point2D(-5, 12), Point2D(45, 12), Point2D(45, 18), Point2D(-5, 18)};
///     std::vector<Polygon2D> common;                                             // 40 x 6
///     if (PolygonsBooleanOperation::Intersection(parcel, road, common, Tolerances(0.001, 1e-10))) Draw(common);
///
/// An operand is one area or many; many stand for their union, which costs no more than one pass over all borders.
/// Nothing is asked of the borders: rings run either way, touch, overlap, cross themselves and each other, repeat
/// points. What is inside an area: the inside of its outer ring less that of its holes, by the fill rule. Areas
/// thinner than the tolerance may vanish.
///
/// What comes out is valid by `Polygon2D::Validate` at the user tolerance: outer rings counter-clockwise, holes
/// clockwise, without closing points, starting at the leftmost (lowest) corner and in the order of these; areas that
/// touch in points are separate. It does not hang on the order of operands, members and points. Corners of the input
/// are kept as they are but for those that lie within 1.42 user tolerances of each other, the diagonal of the square in
/// which points count as equal: these become one of them. Edges move to corners, and are cut by them, that lie within
/// the user tolerance; where corners lie as thick as that, more than once. What is finer than 32 roundings of the
/// largest coordinate cannot be told apart; a smaller user tolerance counts as that.
///
/// For n corners and k crossings about n log n + k steps, whatever the number of areas. All functions answer false, and
/// leave the result as it was, for coordinates that are not finite (or beyond 1e100, with arcs 1e70), and should the
/// cutting of borders not end.
///
/// Source: data normalisation (V. J. Milenkovic, 1988) with exact turns, then winding numbers of the faces; see
/// `detail/BorderNoding.h`.
class KALVIO_MATH_API PolygonsBooleanOperation {
public:
    /// What the inside of a ring is.
    enum class FillRule : std::uint32_t {
        NonZero = 0,  ///< what the ring winds around, in whatever direction
        EvenOdd = 1,  ///< what it winds around an odd number of times
    };

    /// One area or many, those with segments before those with arcs; refers to them, but takes over temporaries that
    /// are not given as spans.
    class Operand {
    public:
        Operand(const Polygon2D& area) : polygons(&area, 1) {}
        Operand(const PolygonCurve2D& area) : curves(&area, 1) {}
        Operand(const std::vector<Polygon2D>& members) : polygons(members) {}
        Operand(const std::vector<PolygonCurve2D>& members) : curves(members) {}
        Operand(Polygon2D&& area) : polygons(kept.TakeOne(std::move(area))) {}
        Operand(PolygonCurve2D&& area) : curves(kept.TakeOne(std::move(area))) {}
        Operand(std::vector<Polygon2D>&& members) : polygons(kept.TakeAll(std::move(members))) {}
        Operand(std::vector<PolygonCurve2D>&& members) : curves(kept.TakeAll(std::move(members))) {}
        Operand(std::span<const Polygon2D> straight, std::span<const PolygonCurve2D> curved = {})
            : polygons(straight), curves(curved) {}

        std::span<const Polygon2D> GetPolygons() const { return polygons; }
        std::span<const PolygonCurve2D> GetCurves() const { return curves; }

    private:
        detail::Kept kept;
        std::span<const Polygon2D> polygons;
        std::span<const PolygonCurve2D> curves;
    };

    /// What an area of the first layer and one of the second have in common.
    template <class Polygon>
    struct Common {
        std::size_t first = 0;       ///< number in the first layer
        std::size_t second = 0;      ///< number in the second layer
        std::vector<Polygon> areas;  ///< of the pair
    };
    /// Bounded by chords.
    using CommonArea = Common<Polygon2D>;
    /// Bounded by lines and arcs.
    using CommonCurveArea = Common<PolygonCurve2D>;

    // For operands without arcs; false where there is one. The members of an operand count as one area.

    /// What lies in any member.
    [[nodiscard]] static bool Union(const Operand& members, std::vector<Polygon2D>& result,
                                    const Tolerances& tolerances, FillRule rule = FillRule::NonZero);
    [[nodiscard]] static bool Union(const Operand& first, const Operand& second, std::vector<Polygon2D>& result,
                                    const Tolerances& tolerances, FillRule rule = FillRule::NonZero);
    /// What lies in both.
    [[nodiscard]] static bool Intersection(const Operand& first, const Operand& second, std::vector<Polygon2D>& result,
                                           const Tolerances& tolerances, FillRule rule = FillRule::NonZero);
    /// What lies in the first and not in the second.
    [[nodiscard]] static bool Difference(const Operand& first, const Operand& second, std::vector<Polygon2D>& result,
                                         const Tolerances& tolerances, FillRule rule = FillRule::NonZero);
    /// What lies in one of both.
    [[nodiscard]] static bool SymmetricDifference(const Operand& first, const Operand& second,
                                                  std::vector<Polygon2D>& result, const Tolerances& tolerances,
                                                  FillRule rule = FillRule::NonZero);
    /// All pairs of members that have an area in common, by their numbers, first before second. Members of a layer may
    /// overlap: each counts for itself.
    [[nodiscard]] static bool Overlay(const Operand& first, const Operand& second, std::vector<CommonArea>& result,
                                      const Tolerances& tolerances, FillRule rule = FillRule::NonZero);

    // The same for any operands. Arcs stay arcs of their circles: the centre moves only as far as corners did that were
    // drawn together. Rings consist of `Line2D` and `Arc2D`, and meet to the rounding of coordinates.

    [[nodiscard]] static bool Union(const Operand& members, std::vector<PolygonCurve2D>& result,
                                    const Tolerances& tolerances, FillRule rule = FillRule::NonZero);
    [[nodiscard]] static bool Union(const Operand& first, const Operand& second, std::vector<PolygonCurve2D>& result,
                                    const Tolerances& tolerances, FillRule rule = FillRule::NonZero);
    [[nodiscard]] static bool Intersection(const Operand& first, const Operand& second,
                                           std::vector<PolygonCurve2D>& result, const Tolerances& tolerances,
                                           FillRule rule = FillRule::NonZero);
    [[nodiscard]] static bool Difference(const Operand& first, const Operand& second,
                                         std::vector<PolygonCurve2D>& result, const Tolerances& tolerances,
                                         FillRule rule = FillRule::NonZero);
    [[nodiscard]] static bool SymmetricDifference(const Operand& first, const Operand& second,
                                                  std::vector<PolygonCurve2D>& result, const Tolerances& tolerances,
                                                  FillRule rule = FillRule::NonZero);
    [[nodiscard]] static bool Overlay(const Operand& first, const Operand& second, std::vector<CommonCurveArea>& result,
                                      const Tolerances& tolerances, FillRule rule = FillRule::NonZero);
};

}  // namespace Kalvio::Math
