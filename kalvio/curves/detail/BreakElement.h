#pragma once

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/Point2D.h"

#include <map>
#include <memory>
#include <vector>

namespace Kalvio::Math::detail {

/// A cut of an element: the station from the element's own start and the point there.
struct ElementCut {
    double station = 0.0;
    Point2D point;
};

/// The common contract of `BreakAtPreSorted`: cuts `element` at the stations of `breaks`.
///
/// A cut nearer than the user tolerance to the cut (or start) before it is skipped; cuts at or beyond the end are
/// ignored. The last piece is left out when it is no longer than the tolerance, unless this call puts no other piece
/// into `out`.
///
/// @param startStation  station of the element's start on the scale of `breaks`
/// @param modifyThis    the element becomes the first piece and only the others go to `out`
/// @param makePiece     makes the piece between two cuts of the unchanged element: std::unique_ptr<Element>(cut, cut)
/// @return whether anything was cut; the pieces in `out` are owned by the caller
template <class Element, class MakePiece>
bool BreakElement(Element& element, const std::map<double, const Point2D>& breaks, double startStation,
                  std::vector<IGeometry*>& out, bool modifyThis, double userTolerance, MakePiece&& makePiece) {
    const double length = element.GetLength();
    std::vector<std::unique_ptr<Element>> pieces;
    ElementCut from{0.0, element.GetStart()};
    for (const auto& [station, point] : breaks) {
        const double along = station - startStation;
        if (!(along < length)) break;
        if (!(along - from.station > userTolerance)) continue;
        const ElementCut to{along, point};
        pieces.push_back(makePiece(from, to));
        from = to;
    }
    if (pieces.empty()) return false;
    std::unique_ptr<Element> tail = makePiece(from, ElementCut{length, element.GetEnd()});
    const std::size_t firstOut = modifyThis ? 1 : 0;
    if (tail->GetLength() > userTolerance || pieces.size() == firstOut) pieces.push_back(std::move(tail));
    for (std::size_t i = firstOut; i < pieces.size(); ++i) out.push_back(pieces[i].release());
    if (modifyThis) element = *pieces.front();
    return true;
}

}  // namespace Kalvio::Math::detail
