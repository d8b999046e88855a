#include "kalvio/areas/detail/AreaOverlay.h"

#include "kalvio/areas/detail/PlaneVectors.h"
#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/PolygonCurve2D.h"
#include "kalvio/polygons/detail/Ring.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <tuple>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

constexpr double clearance = 16.0;  // of the tolerance
constexpr double motion = 2.0;
constexpr std::size_t longLoop = 16;    // shorter ones have hardly a segment that needs no noding
constexpr double straightness = 0.005;  // of the tolerance: what cut a segment without bending it leaves no corner

bool IsLeftBelow(const PlanePoint& a, const PlanePoint& b) { return a.x < b.x || (a.x == b.x && a.y < b.y); }

// The bits of a number of 16 bits, each followed by a 0.
std::uint32_t Spread(std::uint32_t bits) {
    bits = (bits | (bits << 8)) & 0x00ff00ffU;
    bits = (bits | (bits << 4)) & 0x0f0f0f0fU;
    bits = (bits | (bits << 2)) & 0x33333333U;
    return (bits | (bits << 1)) & 0x55555555U;
}

}  // namespace

bool AreaOverlay::Add(const Polygon2D& area, std::uint32_t layer) {
    BeginMember(layer);
    if (!AddRing(area.GetPoints(), false)) return false;
    for (unsigned int i = 0; i < area.GetNumHoleBoundaries(); ++i) {
        if (!AddRing(area.GetHoleBoundary(i).GetPoints(), true)) return false;
    }
    return true;
}

bool AreaOverlay::Add(const PolygonCurve2D& area, std::uint32_t layer) {
    BeginMember(layer);
    if (!AddRing(area.GetBoundary(), false)) return false;
    for (unsigned int i = 0; i < area.GetNumInnerRings(); ++i) {
        if (!AddRing(area.GetInnerRingAtIndex(i), true)) return false;
    }
    return true;
}

bool AreaOverlay::AddRing(const std::vector<Point2D>& points, bool isHole) {
    BeginRing(isHole);
    BeginLoop();
    const std::size_t count = points.size() > 1 && !HasClosingEdge(points) ? points.size() - 1 : points.size();
    if (vertices.capacity() - vertices.size() <= count) vertices.reserve(2 * vertices.size() + count + 1);
    if (areListed) {
        for (std::size_t i = 0; i < count; ++i) {
            if (!GoTo({points[i].GetX(), points[i].GetY()})) return false;
        }
    } else {
        // Magnitudes stand in the order of their bits, with what is not a number above all others.
        const auto bitsOf = [](double value) { return std::bit_cast<std::uint64_t>(std::abs(value)); };
        std::uint64_t mostX = bitsOf(largest);
        std::uint64_t mostY = 0;
        for (std::size_t i = 0; i < count; ++i) {
            vertices.push_back({points[i].GetX(), points[i].GetY()});
            mostX = std::max(mostX, bitsOf(points[i].GetX()));
            mostY = std::max(mostY, bitsOf(points[i].GetY()));
        }
        largest = std::bit_cast<double>(std::max(mostX, mostY));
        if (!(largest <= largestCoordinate)) return false;
    }
    EndLoop();
    return true;
}

bool AreaOverlay::AddRing(const RingCurve2D& ring, bool isHole) {
    BeginRing(isHole);
    BeginLoop();
    const auto goTo = [this](const Point2D& p) { return GoTo({p.GetX(), p.GetY()}); };
    for (unsigned int i = 0; i < ring.GetSize(); ++i) {
        const IPolyline2DElement& element = ring.GetElementAtIndex(i);
        if (element.GetType() == MathTypes::LineString2D) {
            const std::vector<Point2D>& points = static_cast<const LineString2D&>(element).GetPoints();
            if (!std::all_of(points.begin(), points.end(), goTo)) return false;
        } else if (element.GetType() == MathTypes::Arc2D) {
            const auto& arc = static_cast<const Arc2D&>(element);
            const PlanePoint start{arc.GetStart().GetX(), arc.GetStart().GetY()};
            const PlanePoint center{arc.GetCenter().GetX(), arc.GetCenter().GetY()};
            if (!GoAlong(start, center, arc.GetAngle().GetRadians()) || !goTo(arc.GetEnd())) return false;
        } else if (!goTo(element.GetStart()) || !goTo(element.GetEnd())) {
            return false;
        }
    }
    EndLoop();
    return true;
}

bool AreaOverlay::Add(const std::vector<Ring>& outlines, std::uint32_t layer) {
    BeginMember(layer);
    BeginRing(false);
    for (const Ring& outline : outlines) {
        BeginLoop();
        for (std::size_t i = 0; i < outline.size(); ++i) {
            const Corner& corner = outline[i];
            if (corner.sense == 0) {
                if (!GoTo(corner.at)) return false;
            } else if (!GoAlong(corner.at, corner.center, SweepOf(corner, outline[(i + 1) % outline.size()].at))) {
                return false;
            }
        }
        EndLoop();
    }
    return true;
}

double AreaOverlay::SweepOf(const Corner& corner, const PlanePoint& end) {
    const PlanePoint from = corner.at - corner.center;
    const PlanePoint to = end - corner.center;
    const double sweep = std::atan2(detail::Cross(from, to), Dot(from, to));
    return sweep * corner.sense > 0.0 ? sweep : sweep + 2.0 * pi * corner.sense;
}

void AreaOverlay::BeginLoop() {
    const auto first = static_cast<std::uint32_t>(areListed ? border.size() : vertices.size());
    loops.push_back({first, first, static_cast<std::uint32_t>(rings.size() - 1)});
}

// The piece that begins at the point gets its end by the next one.
bool AreaOverlay::GoTo(const PlanePoint& p, const BorderSource& source) {
    const auto isUsable = [](double value) { return std::abs(value) <= largestCoordinate; };
    if (!isUsable(p.x) || !isUsable(p.y) || !isUsable(source.center.x) || !isUsable(source.center.y)) return false;
    const auto vertex = static_cast<std::uint32_t>(vertices.size());
    vertices.push_back(p);
    largest = std::max({largest, std::abs(p.x), std::abs(p.y)});
    if (!areListed) return true;
    border.push_back({vertex, vertex + 1, static_cast<std::uint32_t>(sources.size())});
    sources.push_back(source);
    return true;
}

// Cut at the extremes of the circle, so that no piece is more than a quarter turn.
bool AreaOverlay::GoAlong(const PlanePoint& start, const PlanePoint& center, double sweep) {
    constexpr double quarter = 1.5707963267948966;
    const double radius = std::hypot(start.x - center.x, start.y - center.y);
    const BorderSource source{static_cast<std::uint32_t>(rings.size() - 1), sweep < 0.0 ? -1 : 1, center};
    hasArcs = true;
    if (!areListed) ListElements();
    if (!GoTo(start, source)) return false;
    const auto number = static_cast<std::uint32_t>(sources.size() - 1);
    // In quarter turns from the direction +x, in the direction of travel.
    const double from = source.sense * std::atan2(start.y - center.y, start.x - center.x) / quarter;
    const double to = from + std::abs(sweep) / quarter;
    for (double k = std::floor(from) + 1.0; k < to; k += 1.0) {
        const int turn = (static_cast<int>(k) % 4 + 4) % 4;
        const double x = turn == 0 ? radius : turn == 2 ? -radius : 0.0;
        const double y = turn == 1 ? radius : turn == 3 ? -radius : 0.0;
        if (!GoTo({center.x + x, center.y + source.sense * y}, source)) return false;
        border.back().source = number;
        sources.pop_back();
    }
    return true;
}

void AreaOverlay::EndLoop() {
    Loop& loop = loops.back();
    loop.end = static_cast<std::uint32_t>(areListed ? border.size() : vertices.size());
    if (loop.end == loop.first) return;
    if (areListed) {
        border.back().to = border[loop.first].from;
    } else {
        vertices.push_back(PlanePoint(vertices[loop.first]));
    }
}

// All segments so far, also those of a loop that has not ended.
void AreaOverlay::ListElements() {
    areListed = true;
    for (Loop& loop : loops) {
        const bool isOpen = &loop == &loops.back() && loop.end == loop.first;
        const auto end = isOpen ? static_cast<std::uint32_t>(vertices.size()) : loop.end;
        const auto first = static_cast<std::uint32_t>(border.size());
        for (std::uint32_t vertex = loop.first; vertex < end; ++vertex) {
            border.push_back({vertex, vertex + 1, static_cast<std::uint32_t>(sources.size())});
            sources.push_back({loop.ring, 0, {}});
        }
        loop.first = first;
        loop.end = static_cast<std::uint32_t>(border.size());
        if (!isOpen && loop.end > first) border.back().to = border[first].from;
    }
}

// Neighbours in the list shall be neighbours in the plane: loops follow a curve through the plane that fills it (G. M.
// Morton, 1966).
void AreaOverlay::SortLoops() {
    constexpr std::size_t fewLoops = 8;
    if (loops.size() <= fewLoops) return;
    Extent extent;
    for (const PlanePoint& p : vertices) extent.Add(Point2D(p.x, p.y));
    const auto cell = [](double value, double low, double high) {
        const double part = high > low ? (value - low) / (high - low) : 0.0;
        return Spread(static_cast<std::uint32_t>(std::clamp(part, 0.0, 1.0) * 65535.0));
    };
    std::vector<std::pair<std::uint32_t, std::uint32_t>> order;
    order.reserve(loops.size());
    for (std::uint32_t loop = 0; loop < loops.size(); ++loop) {
        Extent own;
        for (std::uint32_t k = loops[loop].first; k < loops[loop].end; ++k) {
            const PlanePoint& p = vertices[areListed ? border[k].from : k];
            own.Add(Point2D(p.x, p.y));
        }
        const double x = 0.5 * own.minX + 0.5 * own.maxX;
        const double y = 0.5 * own.minY + 0.5 * own.maxY;
        const std::uint32_t code =
            own.minX <= own.maxX ? cell(x, extent.minX, extent.maxX) | (cell(y, extent.minY, extent.maxY) << 1) : 0;
        order.emplace_back(code, loop);
    }
    std::sort(order.begin(), order.end());
    std::vector<BorderPiece> sorted;
    std::vector<PlanePoint> sortedVertices;
    std::vector<Loop> sortedLoops;
    sorted.reserve(border.size());
    if (!areListed) sortedVertices.reserve(vertices.size());
    sortedLoops.reserve(loops.size());
    for (const auto& [code, number] : order) {
        const Loop& loop = loops[number];
        if (areListed) {
            sorted.insert(sorted.end(), border.begin() + loop.first, border.begin() + loop.end);
        } else if (loop.end > loop.first) {
            const auto first = static_cast<std::uint32_t>(sortedVertices.size());
            sortedVertices.insert(sortedVertices.end(), vertices.begin() + loop.first, vertices.begin() + loop.end + 1);
            sortedLoops.push_back({first, first + (loop.end - loop.first), loop.ring});
        }
    }
    if (areListed) {
        border = std::move(sorted);
    } else {
        vertices = std::move(sortedVertices);
        loops = std::move(sortedLoops);
    }
}

bool AreaOverlay::Run(bool hasStretches) {
    constexpr double largestWithArcs = 1e70;  // up to here fourth powers stay finite
    const auto isUsable = [](const PlanePoint& p) { return std::max(std::abs(p.x), std::abs(p.y)) <= largestWithArcs; };
    if (vertices.size() >= none / 2) return false;
    if (hasArcs && (!std::all_of(vertices.begin(), vertices.end(), isUsable) ||
                    !std::all_of(sources.begin(), sources.end(),
                                 [&](const BorderSource& source) { return isUsable(source.center); }))) {
        return false;
    }
    if (hasStretches && !areListed) ListElements();
    SortLoops();
    if (!MakeNodes()) return false;
    MergePieces();
    MakeFaces();
    windings.assign(rings.size(), 0);
    regionOf.assign(faces->GetFaceCount(), none);
    isWalked.assign(faces->GetHalfEdgeCount(), 0);
    placeOf.assign(noding->GetNodes().size(), none);
    return true;
}

// What has nothing within `clearance` keeps out of the noding, as long as that moves no piece farther than `motion`: a
// piece moves only where a node is within 1.42 tolerances of it, and the nodes of all others stay farther from a clear
// one than that. About a common vertex this holds as a wedge that is so wide at both ends of its sides is this narrow
// only near its tip.
bool AreaOverlay::MakeNodes() {
    if (areListed) {
        noding.emplace(vertices, std::move(border), sources, tolerance, largest);
        return noding->Run();
    }
    isLoopEnd.assign(vertices.size(), 0);
    for (const Loop& loop : loops) {
        if (loop.end > loop.first) isLoopEnd[loop.end] = 1;
    }
    if (vertices.size() < longLoop * loops.size()) {
        ListNear(std::vector<char>(vertices.size(), 1));
    } else {
        stretchBoxes.emplace(vertices, isLoopEnd);
        ListNear(LoopSegments::FindNear(*stretchBoxes, clearance * BorderNoding::ToleranceFor(tolerance, largest)));
    }
    const std::vector<BorderPiece> given = chains.empty() ? std::vector<BorderPiece>() : border;
    noding.emplace(places, std::move(border), sources, tolerance, largest);
    if (noding->Run() && HaveStayed(given)) return true;
    if (chains.empty()) return false;
    ListNear(std::vector<char>(vertices.size(), 1));
    noding.emplace(places, std::move(border), sources, tolerance, largest);
    return noding->Run();
}

// Lists segments that are near others, and makes chains of the rest.
void AreaOverlay::ListNear(const std::vector<char>& isNear) {
    places.clear();
    border.clear();
    sources.clear();
    chains.clear();
    detours.clear();
    for (const Loop& loop : loops) {
        if (loop.end > loop.first) JoinLoop(loop, isNear);
    }
    for (const Chain& chain : chains) sources.push_back({chain.ring, 0, {}});
}

// The first and last segment of a loop and those beside a near one are of no chain: chains end in nodes of two edges.
void AreaOverlay::JoinLoop(Loop loop, const std::vector<char>& isNear) {
    const auto isListed = [&](std::uint32_t k) {
        return isNear[k] != 0 || k == loop.first || k + 1 == loop.end || isNear[k - 1] != 0 || isNear[k + 1] != 0;
    };
    const auto firstPlace = static_cast<std::uint32_t>(places.size());
    for (std::uint32_t k = loop.first; k < loop.end;) {
        const auto place = static_cast<std::uint32_t>(places.size());
        places.push_back(vertices[k]);
        if (isListed(k)) {
            const std::uint32_t to = k + 1 == loop.end ? firstPlace : place + 1;
            border.push_back({place, to, static_cast<std::uint32_t>(sources.size())});
            sources.push_back({loop.ring, 0, {}});
            ++k;
            continue;
        }
        PlanarFaces::Detour detour{k + 1, k + 1, none};
        for (; !isListed(detour.end); ++detour.end) {
            if (detour.leftmost == none || IsLeftBelow(vertices[detour.end], vertices[detour.leftmost]))
                detour.leftmost = detour.end;
        }
        k = detour.end;
        chains.push_back({place, place + 1, loop.ring});
        detours.push_back(detour);
    }
}

bool AreaOverlay::HaveStayed(const std::vector<BorderPiece>& given) const {
    if (chains.empty()) return true;
    const auto at = [](const PlanePoint& p) { return Point2D(p.x, p.y); };
    const double limit = motion * noding->GetTolerance();
    return std::all_of(noding->GetPieces().begin(), noding->GetPieces().end(), [&](const BorderPiece& piece) {
        const BorderPiece& whole = given[piece.source];
        const Point2D from = at(places[whole.from]);
        const Point2D to = at(places[whole.to]);
        const auto hasStayed = [&](std::uint32_t node) {
            return SegmentFoot(at(noding->GetNodes()[node]), from, to, 0.0).squaredDistance <= limit * limit;
        };
        return hasStayed(piece.from) && hasStayed(piece.to);
    });
}

// Pieces between the same nodes become one edge with all their sources, unless these cancel out.
void AreaOverlay::MergePieces() {
    const std::vector<BorderPiece>& pieces = noding->GetPieces();
    struct Entry {
        std::uint32_t high;
        std::uint32_t piece;
    };
    std::vector<std::uint32_t> first(noding->GetNodes().size() + 1, 0);
    for (const BorderPiece& piece : pieces) ++first[std::min(piece.from, piece.to) + 1];
    for (std::size_t node = 1; node < first.size(); ++node) first[node] += first[node - 1];
    std::vector<Entry> entries(pieces.size());
    std::vector<std::uint32_t> filled(first.begin(), first.end() - 1);
    for (std::uint32_t k = 0; k < pieces.size(); ++k) {
        entries[filled[std::min(pieces[k].from, pieces[k].to)]++] = {std::max(pieces[k].from, pieces[k].to), k};
    }
    edgeOfPiece.assign(pieces.size(), none);
    runs.reserve(pieces.size());
    for (std::uint32_t low = 0; low + 1 < first.size(); ++low) {
        const auto from = entries.begin() + first[low];
        const auto to = entries.begin() + first[low + 1];
        std::sort(from, to, [&](const Entry& a, const Entry& b) {
            const std::uint32_t source = pieces[a.piece].source;
            const std::uint32_t other = pieces[b.piece].source;
            return a.high < b.high ||
                   (a.high == b.high && std::tie(sources[source].ring, source) < std::tie(sources[other].ring, other));
        });
        for (auto entry = from; entry != to;) {
            const std::uint32_t high = entry->high;
            const std::size_t begin = runs.size();
            auto last = entry;
            for (; last != to && last->high == high; ++last) {
                const BorderPiece& piece = pieces[last->piece];
                runs.push_back({piece.source, piece.from == low ? 1 : -1});
            }
            if (IsIdle(begin, runs.size())) {
                runs.resize(begin);
            } else {
                for (auto same = entry; same != last; ++same) {
                    edgeOfPiece[same->piece] = static_cast<std::uint32_t>(edges.size());
                }
                firstRun.push_back(static_cast<std::uint32_t>(begin));
                edges.push_back({low, high});
            }
            entry = last;
        }
    }
    auto source = static_cast<std::uint32_t>(sources.size() - chains.size());
    for (const Chain& chain : chains) {
        firstRun.push_back(static_cast<std::uint32_t>(runs.size()));
        runs.push_back({source++, 1});
        edges.push_back({noding->NodeOf(chain.from), noding->NodeOf(chain.to)});
    }
    firstRun.push_back(static_cast<std::uint32_t>(runs.size()));
}

void AreaOverlay::MakeFaces() {
    const auto forEachNear = [this](const Extent& extent, const PlanarFaces::VisitSegment& visit) {
        const std::vector<PlanePoint>& nodes = noding->GetNodes();
        noding->GetBoxes().ForEachNear(extent, 0.0, [&](std::size_t piece) {
            const std::uint32_t edge = edgeOfPiece[piece];
            if (edge != none) visit(2 * edge, nodes[edges[edge].low], nodes[edges[edge].high]);
            return false;
        });
        if (detours.empty()) return;
        const auto visitSegment = [&](std::size_t segment) {
            const auto after =
                std::upper_bound(detours.begin(), detours.end(), segment,
                                 [](std::size_t k, const PlanarFaces::Detour& detour) { return k < detour.end; });
            if (after == detours.end() || segment + 1 < after->first) return;
            const auto edge = edges.size() - static_cast<std::size_t>(detours.end() - after);
            visit(static_cast<std::uint32_t>(2 * edge), vertices[segment], vertices[segment + 1]);
        };
        stretchBoxes->ForEachNear(extent, 0.0, [&](std::size_t stretch) {
            stretchBoxes->ForEachOf(stretch, visitSegment);
            return false;
        });
    };
    faces.emplace(noding->GetNodes(), edges, vertices, detours, forEachNear);
}

// Calls visit(p) for the vertices of a chain that a half-edge passes, in its direction.
template <class Visit>
void AreaOverlay::ForEachBetween(std::uint32_t half, Visit&& visit) const {
    const PlanarFaces::Detour* detour = faces->DetourOf(half);
    if (detour == nullptr) return;
    const bool isBack = (half & 1U) != 0;
    for (std::uint32_t k = detour->first; k < detour->end; ++k)
        visit(vertices[isBack ? detour->first + detour->end - 1 - k : k]);
}

// Whether every ring runs forth as often as back. Passages are in the order of their rings.
bool AreaOverlay::IsIdle(std::size_t from, std::size_t to) const {
    while (from < to) {
        const std::uint32_t ring = sources[runs[from].source].ring;
        int sum = 0;
        for (; from < to && sources[runs[from].source].ring == ring; ++from) sum += runs[from].sense;
        if (sum != 0) return false;
    }
    return true;
}

template <class Visit>
void AreaOverlay::WalkFaces(Visit&& visit) {
    struct Step {
        std::uint32_t crossed;  // on the way into the face
        std::uint32_t ahead;    // the half-edge of the face that is looked at next
    };
    std::vector<char> isVisited(faces->GetFaceCount(), 0);
    std::vector<Step> way{{none, faces->FirstOfFace(0)}};
    isVisited[0] = 1;
    visit(0U);
    while (!way.empty()) {
        const std::uint32_t half = way.back().ahead;
        if (half == none) {
            const std::uint32_t crossed = way.back().crossed;
            way.pop_back();
            if (crossed != none) Cross(PlanarFaces::Twin(crossed));
            continue;
        }
        way.back().ahead = faces->NextOfFace(half);
        const std::uint32_t face = faces->Face(PlanarFaces::Twin(half));
        if (isVisited[face]) continue;
        isVisited[face] = 1;
        Cross(half);
        visit(face);
        way.push_back({half, faces->FirstOfFace(face)});
    }
}

// From the left of a half-edge to its right.
void AreaOverlay::Cross(std::uint32_t half) {
    const std::uint32_t edge = half / 2;
    const int direction = (half & 1U) == 0 ? -1 : 1;
    const auto isIn = [this](int winding) {
        return fill == Fill::NonZero ? winding != 0 : fill == Fill::EvenOdd ? (winding & 1) != 0 : winding > 0;
    };
    for (std::uint32_t k = firstRun[edge]; k < firstRun[edge + 1]; ++k) {
        const BorderRing& ring = rings[sources[runs[k].source].ring];
        int& winding = windings[sources[runs[k].source].ring];
        const bool wasIn = isIn(winding);
        winding += direction * runs[k].sense;
        if (isIn(winding) == wasIn) continue;
        Member& member = members[ring.member];
        const bool wasInside = member.isInOuter && member.holes == 0;
        if (ring.isHole) {
            member.holes += wasIn ? -1 : 1;
        } else {
            member.isInOuter = !wasIn;
        }
        Turn(member, wasInside);
    }
}

void AreaOverlay::Turn(Member& member, bool wasInside) {
    const bool isInside = member.isInOuter && member.holes == 0;
    if (isInside == wasInside) return;
    std::vector<std::uint32_t>& numbers = inside[member.layer];
    if (isInside) {
        ++insideCount[member.layer];
        numbers.push_back(member.number);
        return;
    }
    --insideCount[member.layer];
    // What was entered last is mostly left first.
    const auto found = std::find(numbers.rbegin(), numbers.rend(), member.number);
    *found = numbers.back();
    numbers.pop_back();
}

std::vector<AreaOverlay::Area> AreaOverlay::Extract(bool (*keep)(bool, bool)) {
    std::vector<std::uint32_t> kept;
    WalkFaces([&](std::uint32_t face) {
        if (IsKept(face, keep(insideCount[0] > 0, insideCount[1] > 0))) kept.push_back(face);
    });
    return BuildAreas(kept);
}

void AreaOverlay::CloseFacesIn(const Discs& discs) {
    if (discs.centers.empty()) return;
    discRadius = discs.radius;
    std::vector<Extent> extents(discs.centers.size());
    for (std::size_t i = 0; i < extents.size(); ++i) extents[i].Add(Point2D(discs.centers[i].x, discs.centers[i].y));
    discCenters.emplace(std::move(extents));
}

bool AreaOverlay::IsInDisc(const PlanePoint& p) const {
    bool isFound = false;
    double squaredReach = discRadius * discRadius;
    const auto found = [&](std::size_t) {
        isFound = true;
        squaredReach = -1.0;
    };
    if (discCenters) discCenters->ForEachNearest(Point2D(p.x, p.y), squaredReach, found);
    return isFound;
}

bool AreaOverlay::IsKept(std::uint32_t face, bool isKept) const {
    const bool wanted = thin == Thin::Inside;
    if (thin == Thin::AsIs || isKept == wanted || face == 0) return isKept;
    const PlanePoint& origin = noding->GetNodes()[faces->Origin(faces->FirstOfFace(face))];
    if (IsInDisc(origin)) return wanted;
    double doubleArea = 0.0;
    double length = 0.0;
    faces->ForEachHalfEdge(face, [&](std::uint32_t half) {
        PlanePoint from = noding->GetNodes()[faces->Origin(half)] - origin;
        const auto goTo = [&](const PlanePoint& p) {
            const PlanePoint to = p - origin;
            doubleArea += detail::Cross(from, to);
            length += std::sqrt(Square(to - from));
            from = to;
        };
        ForEachBetween(half, goTo);
        goTo(noding->GetNodes()[faces->Origin(PlanarFaces::Twin(half))]);
        if (hasArcs) doubleArea += DoubleAreaBeside(half);
    });
    return 0.5 * doubleArea <= noding->GetTolerance() * length ? wanted : isKept;
}

// Twice the area between the chord of a half-edge and the arc along it, positive where that lies right of the chord: a
// face between a long arc and its chord has no width by chords.
double AreaOverlay::DoubleAreaBeside(std::uint32_t half) const {
    std::vector<std::uint32_t> ways;
    for (std::uint32_t run = firstRun[half / 2]; run < firstRun[half / 2 + 1]; ++run) {
        ways.push_back(WayOf(runs[run], half));
    }
    Corner corner = CornerOf(ways);
    corner.at = noding->GetNodes()[faces->Origin(half)];
    const double sweep =
        corner.sense == 0 ? 0.0 : SweepOf(corner, noding->GetNodes()[faces->Origin(PlanarFaces::Twin(half))]);
    if (std::abs(sweep) > pi) return 0.0;  // nodes have moved past each other
    return Square(corner.at - corner.center) * (sweep - std::sin(sweep));
}

std::vector<AreaOverlay::Common> AreaOverlay::ExtractCommon() {
    struct Entry {
        std::uint32_t first;
        std::uint32_t second;
        std::uint32_t face;
    };
    std::vector<Entry> entries;
    WalkFaces([&](std::uint32_t face) {
        for (const std::uint32_t first : inside[0]) {
            for (const std::uint32_t second : inside[1]) entries.push_back({first, second, face});
        }
    });
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        if (a.first != b.first) return a.first < b.first;
        return a.second < b.second || (a.second == b.second && a.face < b.face);
    });
    std::vector<Common> common;
    std::vector<std::uint32_t> kept;
    for (std::size_t from = 0, to = 0; from < entries.size(); from = to) {
        kept.clear();
        for (; to < entries.size() && entries[to].first == entries[from].first &&
               entries[to].second == entries[from].second;
             ++to) {
            kept.push_back(entries[to].face);
        }
        common.push_back({entries[from].first, entries[from].second, BuildAreas(kept)});
    }
    return common;
}

std::vector<AreaOverlay::Ring> AreaOverlay::ExtractStretches(std::uint32_t from, std::uint32_t end) {
    WalkFaces([&](std::uint32_t face) { regionOf[face] = IsKept(face, insideCount[0] > 0) ? 0 : none; });
    const std::vector<PlanePoint>& nodes = noding->GetNodes();
    std::vector<Ring> stretches;
    std::uint32_t lastNode = none;
    std::uint32_t lastSource = none;
    for (std::size_t k = 0; k < edgeOfPiece.size(); ++k) {
        const BorderPiece& piece = noding->GetPieces()[k];
        const std::uint32_t edge = edgeOfPiece[k];
        if (piece.source < from || piece.source >= end || edge == none) continue;
        const std::uint32_t half = edges[edge].low == piece.from ? 2 * edge : 2 * edge + 1;
        if (isWalked[half] || !IsBorder(half)) continue;
        isWalked[half] = 1;
        const bool goesOn = piece.from == lastNode;
        if (!goesOn) stretches.push_back({{nodes[piece.from], 0, {}}});
        Ring& stretch = stretches.back();
        if (goesOn && piece.source == lastSource) {
            stretch.back().at = nodes[piece.to];
        } else {
            stretch.back().sense = sources[piece.source].sense;
            stretch.back().center = sources[piece.source].center;
            stretch.push_back({nodes[piece.to], 0, {}});
        }
        lastNode = piece.to;
        lastSource = piece.source;
    }
    const auto isSame = [](const PlanePoint& a, const PlanePoint& b) { return a.x == b.x && a.y == b.y; };
    if (stretches.size() > 1 && isSame(stretches.back().back().at, stretches.front().front().at)) {
        stretches.back().pop_back();
        stretches.back().insert(stretches.back().end(), stretches.front().begin(), stretches.front().end());
        stretches.front() = std::move(stretches.back());
        stretches.pop_back();
    }
    return stretches;
}

// The faces that hang together by more than nodes are a region, and a region is an area.
std::vector<AreaOverlay::Area> AreaOverlay::BuildAreas(const std::vector<std::uint32_t>& kept) {
    constexpr std::uint32_t unseen = none - 1;
    for (const std::uint32_t face : kept) regionOf[face] = unseen;
    std::vector<Area> areas;
    std::vector<std::uint32_t> open;
    for (const std::uint32_t face : kept) {
        if (regionOf[face] != unseen) continue;
        const auto region = static_cast<std::uint32_t>(areas.size());
        Area& area = areas.emplace_back();
        regionOf[face] = region;
        open.assign(1, face);
        while (!open.empty()) {
            const std::uint32_t current = open.back();
            open.pop_back();
            faces->ForEachHalfEdge(current, [&](std::uint32_t half) {
                std::uint32_t& beyond = regionOf[faces->Face(PlanarFaces::Twin(half))];
                if (beyond == unseen) {
                    beyond = region;
                    open.push_back(faces->Face(PlanarFaces::Twin(half)));
                } else if (beyond == none && isWalked[half] == 0) {
                    WalkBorder(half, area);
                }
            });
        }
    }
    for (const std::uint32_t half : walked) isWalked[half] = 0;
    walked.clear();
    for (const std::uint32_t face : kept) regionOf[face] = none;

    const auto isBeforeCorner = [](const Corner& a, const Corner& b) {
        const auto keyOf = [](const Corner& c) { return std::tuple(c.at.x, c.at.y, c.sense, c.center.x, c.center.y); };
        return keyOf(a) < keyOf(b);
    };
    const auto isBeforeRing = [&](const Ring& a, const Ring& b) {
        return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), isBeforeCorner);
    };
    std::vector<std::pair<PlanePoint, std::size_t>> order;  // by first corners, before all others are looked at
    order.reserve(areas.size());
    for (Area& area : areas) {
        std::sort(area.begin() + 1, area.end(), isBeforeRing);
        order.emplace_back(area.front().front().at, order.size());
    }
    std::sort(order.begin(), order.end(), [&](const auto& a, const auto& b) {
        if (a.first.x != b.first.x || a.first.y != b.first.y) return IsLeftBelow(a.first, b.first);
        const Area& area = areas[a.second];
        const Area& other = areas[b.second];
        return std::lexicographical_compare(area.begin(), area.end(), other.begin(), other.end(), isBeforeRing);
    });
    std::vector<Area> sorted;
    sorted.reserve(areas.size());
    for (const auto& [corner, number] : order) sorted.push_back(std::move(areas[number]));
    return sorted;
}

bool AreaOverlay::IsBorder(std::uint32_t half) const {
    return regionOf[faces->Face(half)] != none && regionOf[faces->Face(PlanarFaces::Twin(half))] == none;
}

// Follows a border with its region on the left, turning through the region at every node, and parts it into loops that
// pass no node twice. That has one answer: at a node that the border passes again, the loops lie side by side.
void AreaOverlay::WalkBorder(std::uint32_t first, Area& area) {
    const auto cutLoop = [&](std::size_t from) {
        const std::span<std::uint32_t> loop = std::span(walk).subspan(from);
        for (const std::uint32_t half : loop) placeOf[faces->Origin(half)] = none;
        const Leftmost leftmost = LeftmostOf(loop);
        const bool isOuter = IsOuter(loop, leftmost);
        area.insert(isOuter ? area.begin() : area.end(), MakeRing(loop, leftmost.place));
        walk.resize(from);
    };
    std::uint32_t half = first;
    do {
        const std::uint32_t node = faces->Origin(half);
        if (placeOf[node] != none) cutLoop(placeOf[node]);
        placeOf[node] = static_cast<std::uint32_t>(walk.size());
        walk.push_back(half);
        walked.push_back(half);
        isWalked[half] = 1;
        half = faces->Next(half);
        while (!IsBorder(half)) half = faces->Next(PlanarFaces::Twin(half));
    } while (half != first);
    cutLoop(0);
}

AreaOverlay::Leftmost AreaOverlay::LeftmostOf(std::span<const std::uint32_t> loop) const {
    Leftmost leftmost{0, none};
    PlanePoint best = noding->GetNodes()[faces->Origin(loop.front())];
    const auto offer = [&](const PlanePoint& p, const Leftmost& place) {
        if (!IsLeftBelow(p, best)) return;
        best = p;
        leftmost = place;
    };
    for (std::size_t k = 0; k < loop.size(); ++k) {
        offer(noding->GetNodes()[faces->Origin(loop[k])], {k, none});
        const PlanarFaces::Detour* detour = faces->DetourOf(loop[k]);
        if (detour != nullptr && detour->leftmost != none) offer(vertices[detour->leftmost], {k, detour->leftmost});
    }
    return leftmost;
}

// By the turn at the leftmost (lowest) vertex.
bool AreaOverlay::IsOuter(std::span<const std::uint32_t> loop, const Leftmost& leftmost) const {
    const auto [place, vertex] = leftmost;
    const std::uint32_t half = loop[place];
    if (vertex != none) return faces->TurnsLeft(half);
    const std::uint32_t before = loop[(place + loop.size() - 1) % loop.size()];
    return ExactTurn(faces->VertexAfter(PlanarFaces::Twin(before)), noding->GetNodes()[faces->Origin(half)],
                     faces->VertexAfter(half)) > 0.0;
}

// A node inside an element of the input is no corner, unless a segment was bent there.
AreaOverlay::Ring AreaOverlay::MakeRing(std::span<std::uint32_t> loop, std::size_t leftmost) {
    const std::vector<PlanePoint>& nodes = noding->GetNodes();
    const auto at = [&](std::uint32_t half) -> const PlanePoint& { return nodes[faces->Origin(half)]; };
    const auto waysOf = [&](std::uint32_t half) {
        alongAll.clear();
        for (std::uint32_t k = firstRun[half / 2]; k < firstRun[half / 2 + 1]; ++k) {
            alongAll.push_back(WayOf(runs[k], half));
        }
    };
    // Starts at a corner.
    std::rotate(loop.begin(), loop.begin() + static_cast<std::ptrdiff_t>(leftmost), loop.end());
    std::size_t start = 0;
    for (; start < loop.size(); ++start) {
        waysOf(loop[(start + loop.size() - 1) % loop.size()]);
        if (!HasCommonWay(loop[start], alongAll)) break;
    }
    if (start < loop.size()) std::rotate(loop.begin(), loop.begin() + static_cast<std::ptrdiff_t>(start), loop.end());

    std::size_t most = loop.size();
    for (const std::uint32_t half : loop) {
        const PlanarFaces::Detour* detour = faces->DetourOf(half);
        if (detour != nullptr) most += detour->end - detour->first;
    }
    Ring ring;
    ring.reserve(most);
    isCorner.assign(loop.size(), 0);
    for (std::size_t from = 0, to = 0; from < loop.size(); from = to) {
        waysOf(loop[from]);
        to = from + 1;
        while (to < loop.size() && HasCommonWay(loop[to], alongAll)) ++to;
        const Corner corner = CornerOf(alongAll);
        isCorner[from] = 1;
        if (corner.sense == 0) KeepBends(loop, from, to);
        if (corner.sense != 0 && to - from == loop.size()) isCorner[loop.size() / 2] = 1;  // two halves of a circle
        // A piece that does not go forward about the centre, among nodes as thick as the tolerance, is its chord.
        bool wasForward = true;
        for (std::size_t k = from; k < to; ++k) {
            const bool isForward =
                corner.sense == 0 ||
                corner.sense * ExactTurn(corner.center, at(loop[k]), at(loop[(k + 1) % loop.size()])) > 0.0;
            if (isCorner[k] || !isForward || !wasForward) {
                ring.push_back({at(loop[k]), isForward ? corner.sense : 0, corner.center});
            }
            ForEachBetween(loop[k], [&ring](const PlanePoint& p) { ring.push_back({p, 0, {}}); });
            wasForward = isForward;
        }
    }
    std::rotate(ring.begin(),
                std::min_element(ring.begin(), ring.end(),
                                 [](const Corner& a, const Corner& b) { return IsLeftBelow(a.at, b.at); }),
                ring.end());
    return ring;
}

// The first arc of the ways, if there is one: by its centre, as numbers hang on the order of the operands.
AreaOverlay::Corner AreaOverlay::CornerOf(const std::vector<std::uint32_t>& ways) const {
    Corner corner;
    for (const std::uint32_t way : ways) {
        const BorderSource& source = sources[way / 2];
        if (source.sense == 0 || (corner.sense != 0 && !IsLeftBelow(source.center, corner.center))) continue;
        corner.sense = way % 2 == 0 ? source.sense : -source.sense;
        corner.center = source.center;
    }
    return corner;
}

// A source and the direction in which it runs along the half-edge: where borders lie as thick as the tolerance, it may
// come back the other way.
std::uint32_t AreaOverlay::WayOf(const Passage& passage, std::uint32_t half) {
    const bool isBack = (passage.sense > 0) != ((half & 1U) == 0);
    return 2 * passage.source + (isBack ? 1U : 0U);
}

// Leaves those of the ways that lead along the half-edge too, if there are any.
bool AreaOverlay::HasCommonWay(std::uint32_t half, std::vector<std::uint32_t>& common) const {
    const auto from = runs.begin() + firstRun[half / 2];
    const auto to = runs.begin() + firstRun[half / 2 + 1];
    const auto isAlong = [&](std::uint32_t way) {
        return std::any_of(from, to, [way, half](const Passage& passage) { return WayOf(passage, half) == way; });
    };
    if (std::none_of(common.begin(), common.end(), isAlong)) return false;
    std::erase_if(common, [&](std::uint32_t way) { return !isAlong(way); });
    return true;
}

// Keeps corners between two of a loop until no other one is off the segment between its neighbours.
void AreaOverlay::KeepBends(std::span<const std::uint32_t> loop, std::size_t from, std::size_t to) {
    if (to - from < 2) return;
    const std::vector<PlanePoint>& nodes = noding->GetNodes();
    std::vector<std::pair<std::size_t, std::size_t>> open{{from, to}};
    while (!open.empty()) {
        const auto [low, high] = open.back();
        open.pop_back();
        const PlanePoint& a = nodes[faces->Origin(loop[low])];
        const PlanePoint& b = nodes[faces->Origin(loop[high % loop.size()])];
        const Point2D start(a.x, a.y);
        const Point2D end(b.x, b.y);
        const double limit = straightness * noding->GetTolerance();
        double most = 0.0;
        std::size_t bend = low;
        for (std::size_t k = low + 1; k < high; ++k) {
            const PlanePoint& p = nodes[faces->Origin(loop[k])];
            const double off = SegmentFoot(Point2D(p.x, p.y), start, end, 0.0).squaredDistance;
            if (off > most) {
                most = off;
                bend = k;
            }
        }
        if (!(most > limit * limit)) continue;
        isCorner[bend] = 1;
        open.emplace_back(low, bend);
        open.emplace_back(bend, high);
    }
}

}  // namespace Kalvio::Math::detail
