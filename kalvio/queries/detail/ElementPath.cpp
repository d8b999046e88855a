#include "kalvio/queries/detail/ElementPath.h"

#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/queries/detail/ElementCrossings.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

constexpr double boxRounding = 4e-16;  // of a corner taken from the centre and the size of a box

/// Appends the curves of an element that starts at a station, and returns the station of its end.
double AddPieces(const IPolyline2DElement& element, std::uint32_t index, double from,
                 std::vector<ElementPath::Piece>& pieces) {
    const double to = from + element.GetLength();
    if (const IComplexGeometry* const chain = AsComplexGeometry(element)) {
        const unsigned int count = chain->GetNrOfElements();
        for (unsigned int i = 0; i < count; ++i) from = AddPieces(chain->GetElementAtIndex(i), index, from, pieces);
    } else {
        pieces.push_back({&element, index, from, to});
    }
    return to;  // as its own length has it, whatever the order of the sum
}

double LengthOf(const ElementPath::Piece& piece) { return piece.to - piece.from; }

/// Of pieces not longer than the tolerance, which count as points, leaves out those that are the same point as what
/// comes before.
void DropSamePoints(std::vector<ElementPath::Piece>& pieces, double nearness) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (kept > 0 && i + 1 < pieces.size() && LengthOf(pieces[i]) <= nearness) {
            const ElementPath::Piece& before = pieces[kept - 1];
            const bool isPoint = LengthOf(before) <= nearness;
            const Point2D& last = isPoint ? before.element->GetStart() : before.element->GetEnd();
            if (last.Distance(pieces[i].element->GetStart()) <= nearness) continue;
        }
        pieces[kept++] = pieces[i];
    }
    pieces.resize(kept);
}

std::vector<ElementPath::Piece> PiecesOf(const IPolyline2DElement& geometry, double nearness) {
    std::vector<ElementPath::Piece> pieces;
    const IComplexGeometry* const chain = AsComplexGeometry(geometry);
    if (chain == nullptr) {
        AddPieces(geometry, 0, 0.0, pieces);
        return pieces;
    }
    const unsigned int count = chain->GetNrOfElements();
    pieces.reserve(count);
    double from = 0.0;
    for (unsigned int i = 0; i < count; ++i) from = AddPieces(chain->GetElementAtIndex(i), i, from, pieces);
    DropSamePoints(pieces, nearness);
    return pieces;
}

bool IsLine(const ElementPath::Piece& piece) { return piece.element->GetType() == MathTypes::Line2D; }

/// Finds the contacts of the pieces of two paths, in stations along the paths.
class PieceContacts {
public:
    explicit PieceContacts(const Tolerances& limits) : tolerances(limits), nearness(NearnessOf(limits)) {}

    void Find(const ElementPath::Piece& a, const ElementPath::Piece& b) {
        if (IsLine(a) && IsLine(b)) {
            FindOfLines(a, b);
        } else if (LengthOf(a) <= nearness) {
            FindOfPoint(a, b, false);
        } else if (LengthOf(b) <= nearness) {
            FindOfPoint(b, a, true);
        } else {
            FindOfCurves(a, b);
        }
    }

    void Find(const ElementPath::Piece& a, const Line2D& line) {
        if (LengthOf(a) > nearness) {
            crossings.clear();
            overlaps.clear();
            CrossElements(*a.element, CrossingOperand::InfiniteLine(line), tolerances, crossings, overlaps);
            for (const ElementCrossing& crossing : crossings) {
                Add(crossing, a.from, 0.0, IsAtEnd(crossing.onFirst, a) ? Kind::Touch : Kind::Crossing);
            }
            AddOverlaps(a.from, 0.0);
        } else if (IsPointOnLine(a.element->GetStart(), line.GetStart(), line.GetEnd(), nearness)) {
            const Point2D& start = a.element->GetStart();
            Add({start, 0.0, line.GetDistanceFromStartPoint(start)}, a.from, 0.0, Kind::Touch);
        }
    }

    std::vector<ChainContact> contacts;

private:
    using Kind = ChainContact::Kind;

    bool IsAtEnd(double station, const ElementPath::Piece& piece) const {
        return station <= nearness || station >= LengthOf(piece) - nearness;
    }

    void Add(const ElementCrossing& crossing, double firstStart, double secondStart, Kind kind) {
        const ChainPlace place{crossing.point, firstStart + crossing.onFirst, secondStart + crossing.onSecond};
        contacts.push_back({kind, place, place, place});
    }

    void AddAlong(const ElementCrossing& from, const ElementCrossing& to, double firstStart, double secondStart) {
        Add(from, firstStart, secondStart, Kind::Along);
        contacts.back().to = {to.point, firstStart + to.onFirst, secondStart + to.onSecond};
    }

    void AddOverlaps(double firstStart, double secondStart) {
        for (const ElementOverlap& overlap : overlaps) AddAlong(overlap.from, overlap.to, firstStart, secondStart);
    }

    void FindOfLines(const ElementPath::Piece& a, const ElementPath::Piece& b) {
        ChainContact contact;
        if (!FindCommon(a.element->GetStart(), a.element->GetEnd(), b.element->GetStart(), b.element->GetEnd(),
                        nearness, contact)) {
            return;
        }
        for (ChainPlace* const place : {&contact.from, &contact.to, &contact.at}) {
            place->onFirst = a.from + place->onFirst * LengthOf(a);
            place->onSecond = b.from + place->onSecond * LengthOf(b);
        }
        contacts.push_back(contact);
    }

    // A piece not longer than the tolerance is its start.
    void FindOfPoint(const ElementPath::Piece& shortOne, const ElementPath::Piece& other, bool isSecond) {
        const Point2D& point = shortOne.element->GetStart();
        const ElementPoint foot = NearestOnElement(*other.element, point, tolerances);
        if (!(foot.point.Distance(point) <= nearness)) return;
        const double station = foot.station;
        Add({point, isSecond ? station : 0.0, isSecond ? 0.0 : station}, isSecond ? other.from : shortOne.from,
            isSecond ? shortOne.from : other.from, Kind::Touch);
    }

    void FindOfCurves(const ElementPath::Piece& a, const ElementPath::Piece& b) {
        const std::vector<Arc2D> halves = HalvesOf(a);
        const std::vector<Arc2D> otherHalves = HalvesOf(b);
        if (!IsClosed(a, halves) && !IsClosed(b, otherHalves)) {
            Cross(a, b);
            if (overlaps.empty() || (halves.empty() && otherHalves.empty())) {
                AddFound(a, b);
                return;
            }
        }
        // Arcs of at most half a circle have no seam, at which two stations are one place, and run along each other
        // once at most.
        ForEachPart(a, halves, [&](const ElementPath::Piece& partOfA) {
            ForEachPart(b, otherHalves, [&](const ElementPath::Piece& partOfB) {
                Cross(partOfA, partOfB);
                AddFound(partOfA, partOfB);
            });
        });
    }

    /// None of an arc up to half a circle, and of other curves.
    static std::vector<Arc2D> HalvesOf(const ElementPath::Piece& piece) {
        if (piece.element->GetType() != MathTypes::Arc2D) return {};
        const auto& arc = static_cast<const Arc2D&>(*piece.element);
        const double sweep = arc.GetAngle().GetRadians();
        if (!(std::abs(sweep) > pi)) return {};
        const Arc2D half(arc.GetStart(), arc.GetCenter(), Angle(0.5 * sweep));
        return {half, Arc2D(half.GetEnd(), arc.GetCenter(), Angle(0.5 * sweep))};
    }

    bool IsClosed(const ElementPath::Piece& piece, const std::vector<Arc2D>& halves) const {
        return !halves.empty() && piece.element->GetStart().Distance(piece.element->GetEnd()) <= nearness;
    }

    template <class Visit>
    static void ForEachPart(const ElementPath::Piece& piece, const std::vector<Arc2D>& halves, Visit&& visit) {
        if (halves.empty()) {
            visit(piece);
            return;
        }
        const double middle = piece.from + 0.5 * LengthOf(piece);
        visit(ElementPath::Piece{&halves[0], piece.index, piece.from, middle});
        visit(ElementPath::Piece{&halves[1], piece.index, middle, piece.to});
    }

    void Cross(const ElementPath::Piece& a, const ElementPath::Piece& b) {
        crossings.clear();
        overlaps.clear();
        CrossElements(*a.element, *b.element, tolerances, crossings, overlaps);
    }

    void AddFound(const ElementPath::Piece& a, const ElementPath::Piece& b) {
        const std::size_t before = contacts.size();
        for (const ElementCrossing& crossing : crossings) {
            const bool isTouch = IsAtEnd(crossing.onFirst, a) || IsAtEnd(crossing.onSecond, b);
            Add(crossing, a.from, b.from, isTouch ? Kind::Touch : Kind::Crossing);
        }
        if (contacts.size() > before) {
            ReachToEnd(a.element->GetStart(), {{}, a.from, 0.0}, b, &ChainPlace::onFirst, before);
            ReachToEnd(a.element->GetEnd(), {{}, a.to, 0.0}, b, &ChainPlace::onFirst, before);
            ReachToEnd(b.element->GetStart(), {{}, 0.0, b.from}, a, &ChainPlace::onSecond, before);
            ReachToEnd(b.element->GetEnd(), {{}, 0.0, b.to}, a, &ChainPlace::onSecond, before);
        }
        AddOverlaps(a.from, b.from);
    }

    // An end near the other piece that is no place of its own belongs to the crossing beside it, which so leads into
    // the contacts of the next piece.
    void ReachToEnd(const Point2D& end, ChainPlace place, const ElementPath::Piece& other, double ChainPlace::*along,
                    std::size_t first) {
        ChainContact* nearest = nullptr;
        const auto distance = [&](const ChainContact& contact) { return std::abs(contact.at.*along - place.*along); };
        for (std::size_t i = first; i < contacts.size(); ++i) {
            if (nearest == nullptr || distance(contacts[i]) < distance(*nearest)) nearest = &contacts[i];
        }
        if (distance(*nearest) <= nearness) return;
        const ElementPoint foot = NearestOnElement(*other.element, end, tolerances);
        if (!(foot.point.Distance(end) <= nearness)) return;
        const double station = other.from + foot.station;
        (along == &ChainPlace::onFirst ? place.onSecond : place.onFirst) = station;
        place.point = end;
        (place.onFirst < nearest->at.onFirst ? nearest->from : nearest->to) = place;
    }

    const Tolerances& tolerances;
    double nearness;
    std::vector<ElementCrossing> crossings;
    std::vector<ElementOverlap> overlaps;
};

}  // namespace

ElementPath::ElementPath(const IPolyline2DElement& geometry, const Tolerances& tolerances)
    : pieces(PiecesOf(geometry, NearnessOf(tolerances))), boxes(ExtentsOf(pieces)) {
    const double nearness = NearnessOf(tolerances);
    extent.length = pieces.empty() ? 0.0 : pieces.back().to;
    isUsable = extent.length > nearness && extent.length <= largestDouble;
    extent.isClosed =
        isUsable && pieces.front().element->GetStart().IsEqualTo(pieces.back().element->GetEnd(), nearness);
}

std::vector<Extent> ElementPath::ExtentsOf(const std::vector<Piece>& pieces) {
    std::vector<Extent> extents(pieces.size());
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (IsLine(pieces[i])) {
            extents[i].Add(pieces[i].element->GetStart());
            extents[i].Add(pieces[i].element->GetEnd());
            continue;
        }
        const BoundingBox2D box = pieces[i].element->GetBoundingBox2D();
        const Point2D low = box.GetMinPoint();
        const Point2D high = box.GetMaxPoint();
        const double most = std::max(std::max(std::abs(low.GetX()), std::abs(high.GetX())),
                                     std::max(std::abs(low.GetY()), std::abs(high.GetY())));
        extents[i].Add(low);
        extents[i].Add(high);
        extents[i] = extents[i].Widened(boxRounding * most);
    }
    return extents;
}

Polyline2D::PolylinePoint ElementPath::At(const Point2D& point, double station) const {
    Polyline2D::PolylinePoint result;
    result.point = point;
    result.station = station;
    const auto next = std::upper_bound(pieces.begin(), pieces.end(), station,
                                       [](double s, const Piece& piece) { return s < piece.from; });
    std::size_t i = next == pieces.begin() ? 0 : static_cast<std::size_t>(next - pieces.begin()) - 1;
    while (i > 0 && !(pieces[i].to > pieces[i].from)) --i;  // pieces of no length have no tangent
    result.elementIndex = pieces[i].index;
    ElementPoint sample;
    const double along = std::clamp(station - pieces[i].from, 0.0, pieces[i].element->GetLength());
    if (EvaluateElement(*pieces[i].element, along, sample)) {
        result.tangent = sample.tangent;
    }
    return result;
}

CommonPlaces FindCommonPlaces(const ElementPath& first, const ElementPath& second, const Tolerances& tolerances) {
    if (!first.IsUsable() || !second.IsUsable()) return {};
    PieceContacts found(tolerances);
    first.GetBoxes().ForEachPair(second.GetBoxes(), NearnessOf(tolerances), [&](std::size_t i, std::size_t j) {
        found.Find(first.GetPieces()[i], second.GetPieces()[j]);
        return false;
    });
    return GatherContacts(std::move(found.contacts), first.GetExtent(), second.GetExtent(), NearnessOf(tolerances));
}

bool ComesNear(const Line2D& line, const Extent& extent, double nearness) {
    const Point2D middle(0.5 * (extent.minX + extent.maxX), 0.5 * (extent.minY + extent.maxY));
    const Vec2D along = line.GetDirection();
    const double reach = 0.5 * ((extent.maxX - extent.minX) * std::abs(along.GetY()) +
                                (extent.maxY - extent.minY) * std::abs(along.GetX()));
    const double rounding = boxRounding * middle.Distance(line.GetStart());
    return !(std::abs(SignedDistanceToLine(middle, line.GetStart(), line.GetEnd())) > reach + nearness + rounding);
}

CommonPlaces FindCommonPlaces(const ElementPath& path, const Line2D& line, const Tolerances& tolerances) {
    const double nearness = NearnessOf(tolerances);
    if (!path.IsUsable() || !(line.GetLength() > nearness)) return {};
    PieceContacts found(tolerances);
    for (std::size_t i = 0; i < path.GetPieces().size(); ++i) {
        if (ComesNear(line, path.GetBoxes().GetExtent(i), nearness)) found.Find(path.GetPieces()[i], line);
    }
    return GatherContacts(std::move(found.contacts), path.GetExtent(), {largestDouble, false}, nearness);
}

}  // namespace Kalvio::Math::detail
