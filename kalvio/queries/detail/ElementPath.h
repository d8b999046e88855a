#pragma once

#include "kalvio/core/detail/BoxHierarchy.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/queries/detail/ChainContacts.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Kalvio::Math {
class Line2D;
class Tolerances;
}  // namespace Kalvio::Math

namespace Kalvio::Math::detail {

/// A plan element taken apart into its lines, arcs and curves in the order of travel: those of the line strings and
/// polylines in it too. It refers to the element, which must stay as it is.
class ElementPath {
public:
    struct Piece {
        const IPolyline2DElement* element;  // a single curve
        std::uint32_t index;  // element of the polyline, or segment of the line string, that it is part of
        double from;          // stations along the path
        double to;
    };

    ElementPath(const IPolyline2DElement& geometry, const Tolerances& tolerances);

    /// Longer than the tolerance and finite: others have nothing in common with anything.
    bool IsUsable() const { return isUsable; }
    const ChainExtent& GetExtent() const { return extent; }
    const std::vector<Piece>& GetPieces() const { return pieces; }
    const ExtentBoxes& GetBoxes() const { return boxes; }
    /// Tangent and index of the element at a station; at a joint of the element that starts there.
    Polyline2D::PolylinePoint At(const Point2D& point, double station) const;

private:
    static std::vector<Extent> ExtentsOf(const std::vector<Piece>& pieces);

    std::vector<Piece> pieces;
    ChainExtent extent;
    bool isUsable = false;
    ExtentBoxes boxes;
};

/// What two paths have in common. Pieces that cannot come near each other are rejected by a hierarchy of boxes.
CommonPlaces FindCommonPlaces(const ElementPath& first, const ElementPath& second, const Tolerances& tolerances);

/// Whether an infinite line comes that near to an extent.
bool ComesNear(const Line2D& line, const Extent& extent, double nearness);

/// What a path has in common with an infinite line, on which stations before its start are negative.
CommonPlaces FindCommonPlaces(const ElementPath& path, const Line2D& line, const Tolerances& tolerances);

}  // namespace Kalvio::Math::detail
