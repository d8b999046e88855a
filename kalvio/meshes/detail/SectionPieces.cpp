#include "kalvio/meshes/detail/SectionPieces.h"

#include "kalvio/core/detail/Constants.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

bool IsSame(const Point3D& a, const Point3D& b) {
    return a.GetX() == b.GetX() && a.GetY() == b.GetY() && a.GetZ() == b.GetZ();
}

double LargestOf(const Point3D& p) { return std::max({std::abs(p.GetX()), std::abs(p.GetY()), std::abs(p.GetZ())}); }

// Places with the links between them, walked so that each link is passed once. The places that would be ends of a walk
// (those of an odd number of links) are paired by links that are cut again afterwards. Where walks meet, each goes on
// in the sense of its links, from first to second or back.
class Walks {
public:
    struct Step {
        std::size_t place;
        std::size_t link;  // that leads here
    };

    Walks(std::size_t placeCount, std::vector<std::pair<std::size_t, std::size_t>> placeLinks)
        : links(std::move(placeLinks)), firstLink(placeCount + 1, 0), realLinks(links.size()) {
        std::vector<std::size_t> degree(placeCount, 0);
        for (const auto& [from, to] : links) {
            ++degree[from];
            ++degree[to];
        }
        std::size_t open = placeCount;
        for (std::size_t place = 0; place < placeCount; ++place) {
            if (degree[place] % 2 == 0) continue;
            if (open < placeCount) links.emplace_back(open, place);
            open = open < placeCount ? placeCount : place;
        }
        for (std::size_t place = 0; place < placeCount; ++place) {
            firstLink[place + 1] = firstLink[place] + degree[place] + degree[place] % 2;
        }
        linksAt.resize(firstLink.back());
        firstBackward.assign(firstLink.begin(), firstLink.end());
        for (std::size_t link = 0; link < links.size(); ++link) linksAt[firstBackward[links[link].first]++] = link;
        std::vector<std::size_t> next(firstBackward);
        for (std::size_t link = 0; link < links.size(); ++link) linksAt[next[links[link].second]++] = link;
        isUsed.assign(links.size(), false);
    }

    /// Calls take(steps) for every walk; nothing leads to its first step.
    template <class Take>
    void ForEach(Take&& take) {
        nextForward = firstLink;
        nextBackward = firstBackward;
        // Walks with two ends first, each begun on the link that pairs its ends.
        for (std::size_t i = 0; i < links.size(); ++i) {
            const std::size_t link = i < links.size() - realLinks ? realLinks + i : i - (links.size() - realLinks);
            if (!isUsed[link]) Cut(Circuit(link), take);
        }
    }

private:
    // All links that hang together with the first one, passed once each. The first step has the first link.
    std::vector<Step> Circuit(std::size_t first) {
        std::vector<Step> stack{{links[first].second, first}};
        std::vector<Step> circuit;
        isUsed[first] = true;
        while (!stack.empty()) {
            const auto [place, last] = stack.back();
            const std::size_t link = NextLink(place, links[last].second == place);
            if (link == links.size()) {
                circuit.push_back(stack.back());
                stack.pop_back();
            } else {
                isUsed[link] = true;
                stack.push_back({links[link].first == place ? links[link].second : links[link].first, link});
            }
        }
        std::reverse(circuit.begin(), circuit.end());
        return circuit;
    }

    // One that leads on from a place, in the same sense if there is one; the number of links if there is none.
    std::size_t NextLink(std::size_t place, bool isForward) {
        for (const bool isForwardTried : {isForward, !isForward}) {
            std::size_t& next = isForwardTried ? nextForward[place] : nextBackward[place];
            const std::size_t end = isForwardTried ? firstBackward[place] : firstLink[place + 1];
            while (next < end && isUsed[linksAt[next]]) ++next;
            if (next < end) return linksAt[next];
        }
        return links.size();
    }

    template <class Take>
    void Cut(const std::vector<Step>& circuit, Take& take) {
        std::vector<Step> steps;
        const auto finish = [&] {
            if (steps.size() > 1) take(steps);
            steps.clear();
        };
        const std::size_t first = circuit.front().link;
        if (first < realLinks) steps.push_back({links[first].first, first});
        for (const Step& step : circuit) {
            if (step.link >= realLinks) finish();
            steps.push_back(step);
        }
        finish();
    }

    std::vector<std::pair<std::size_t, std::size_t>> links;
    std::vector<std::size_t> firstLink;  // of each place, in linksAt
    std::vector<std::size_t> firstBackward;
    std::vector<std::size_t> linksAt;  // of each place those that start there, then those that end there
    std::vector<std::size_t> nextForward;
    std::vector<std::size_t> nextBackward;
    std::vector<bool> isUsed;
    std::size_t realLinks;
};

using End = SectionPieces::End;

bool IsFinite(const End& end) {
    const Point3D& p = end.point;
    return std::isfinite(p.GetX()) && std::isfinite(p.GetY()) && std::isfinite(p.GetZ()) && std::isfinite(end.station);
}

// One place, passed once: a chain that comes back to it has another station, at a bend another bend.
bool IsOnePass(const End& a, const End& b) {
    return IsSame(a.point, b.point) && a.bend == b.bend && (a.bend != SectionPieces::noBend || a.station == b.station);
}

bool IsPassLess(const End& a, const End& b) {
    if (!IsSame(a.point, b.point)) return IsLess(a.point, b.point);
    return a.bend < b.bend || (a.bend == b.bend && a.bend == SectionPieces::noBend && a.station < b.station);
}

// In the direction in which the stations advance; a closed string is turned until it starts at the least.
void Direct(std::vector<End>& string, double advance, bool isClosed) {
    if (advance < 0.0) std::reverse(string.begin(), string.end());
    if (!isClosed) return;
    string.pop_back();
    const auto isBefore = [](const End& a, const End& b) { return a.station < b.station; };
    std::rotate(string.begin(), std::min_element(string.begin(), string.end(), isBefore), string.end());
    string.push_back(string.front());
}

}  // namespace

bool IsLess(const Point3D& a, const Point3D& b) {
    return std::tuple(a.GetX(), a.GetY(), a.GetZ()) < std::tuple(b.GetX(), b.GetY(), b.GetZ());
}

Point3D CutEnd::GetPoint() const {
    if (first == second) return first->point;
    const bool isOrdered = IsLess(first->point, second->point);
    const CutCorner& a = isOrdered ? *first : *second;
    const CutCorner& b = isOrdered ? *second : *first;
    return a.point + (b.point - a.point) * (a.height / (a.height - b.height));
}

TriangleCut::TriangleCut(const std::array<CutCorner, 3>& corners) {
    int cornersOnPlane = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const CutCorner& a = corners[i];
        const CutCorner& b = corners[i == 2 ? 0 : i + 1];
        if (a.side != 0 && a.side * b.side >= 0) continue;
        if (count < 2) ends[static_cast<std::size_t>(count)] = {&a, a.side == 0 ? &a : &b};
        ++count;
        cornersOnPlane += a.side == 0 ? 1 : 0;
    }
    isEdge = cornersOnPlane == 2;
}

bool PlaneEdges::Take(const std::array<CutCorner, 3>& corners, const TriangleCut& cut) {
    if (cut.isEdge) Add(cut.ends[0].first->point, cut.ends[1].first->point, nullptr);
    if (cut.count != 3) return cut.isEdge;
    for (std::size_t i = 0; i < 3; ++i) Add(corners[i].point, corners[(i + 1) % 3].point, &corners[(i + 2) % 3].point);
    return true;
}

void PlaneEdges::TakeSliver(const std::array<CutCorner, 3>& corners) {
    std::size_t longest = 0;
    double length = 0.0;
    for (std::size_t i = 0; i < 3; ++i) {
        const Point3D& a = corners[i].point;
        const Point3D& b = corners[(i + 1) % 3].point;
        Add(a, b, nullptr);
        if (a.Distance2D(b) > length) {
            length = a.Distance2D(b);
            longest = i;
        }
    }
    edges[edges.size() - 3 + longest].isLeftOut = true;
}

bool PlaneEdges::IsSame(const Edge& a, const Edge& b) {
    return detail::IsSame(a.from, b.from) && detail::IsSame(a.to, b.to);
}

void PlaneEdges::Add(const Point3D& a, const Point3D& b, const Point3D* third) {
    const bool isOrdered = IsLess(a, b);
    Edge edge{isOrdered ? a : b, isOrdered ? b : a, third != nullptr, Vec3D()};
    if (third != nullptr) {
        // The cross product points to one side of the plane or the other, and is as long as the corner is high.
        const Vec3D along = edge.to - edge.from;
        const Vec3D rise = along.CrossProduct(*third - edge.from) / along.Length();
        const double noise = std::max(numericalZero, 4.0 * std::numeric_limits<double>::epsilon() * LargestOf(a));
        if (rise.Length() > noise) edge.rise = rise;
    }
    edges.push_back(edge);
}

bool PlaneEdges::Counts(std::size_t first, std::size_t end) const {
    const auto isLeftOut = [](const Edge& edge) { return edge.isLeftOut; };
    const auto range = edges.begin() + static_cast<std::ptrdiff_t>(first);
    if (std::any_of(range, range + static_cast<std::ptrdiff_t>(end - first), isLeftOut)) return false;
    // The area is on one side when all triangles are; where one has no area to tell, by their parity.
    bool isOneSided = true;
    bool isSliver = false;
    for (std::size_t i = first; i < end; ++i) {
        if (!edges[i].isOfFlatTriangle) return true;
        isOneSided = isOneSided && edges[i].rise.DotProduct(edges[first].rise) > 0.0;
        isSliver = isSliver || !(edges[i].rise.NormSquared() > 0.0);
    }
    return isSliver ? (end - first) % 2 != 0 : isOneSided;
}

void PlaneEdges::Sort() {
    std::stable_sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) {
        return IsLess(a.from, b.from) || (detail::IsSame(a.from, b.from) && IsLess(a.to, b.to));
    });
}

void SectionPieces::AddPiece(const End& from, const End& to) {
    if (!IsSame(from.point, to.point) && IsFinite(from) && IsFinite(to)) pieces.push_back({from, to});
}

void SectionPieces::AddPoint(const End& end) {
    if (IsFinite(end)) points.push_back(end);
}

void SectionPieces::UniteAtBends() {
    std::vector<End*> ends;
    for (Piece& piece : pieces) {
        for (End* const end : {&piece.from, &piece.to}) {
            if (end->bend != noBend) ends.push_back(end);
        }
    }
    std::stable_sort(ends.begin(), ends.end(), [](const End* a, const End* b) {
        return a->bend < b->bend || (a->bend == b->bend && a->point.GetZ() < b->point.GetZ());
    });
    for (auto first = ends.begin(); first != ends.end();) {
        const auto isApart = [lowest = *first](const End* end) {
            const double noise = std::max(end->heightNoise, lowest->heightNoise);
            return end->bend != lowest->bend || end->point.GetZ() - lowest->point.GetZ() > noise;
        };
        const auto last = std::find_if(first, ends.end(), isApart);
        const auto isSurer = [](const End* a, const End* b) { return a->heightNoise < b->heightNoise; };
        const Point3D point = (*std::min_element(first, last, isSurer))->point;
        for (; first != last; ++first) (*first)->point = point;
    }
    pieces.erase(std::remove_if(pieces.begin(), pieces.end(),
                                [](const Piece& piece) { return IsSame(piece.from.point, piece.to.point); }),
                 pieces.end());
}

void SectionPieces::Chain(std::vector<LineString3D>& out) {
    UniteAtBends();
    // The ends of pieces in order: those of one pass over a place follow each other.
    std::vector<std::size_t> order(2 * pieces.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto end = [this](std::size_t i) -> const End& { return i % 2 == 0 ? pieces[i / 2].from : pieces[i / 2].to; };
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return IsPassLess(end(a), end(b)) || (IsOnePass(end(a), end(b)) && a < b);
    });
    std::vector<std::pair<std::size_t, std::size_t>> links(pieces.size());
    std::vector<End> places;
    for (const std::size_t i : order) {
        if (places.empty() || !IsOnePass(places.back(), end(i))) places.push_back(end(i));
        places.back().station = std::min(places.back().station, end(i).station);
        (i % 2 == 0 ? links[i / 2].first : links[i / 2].second) = places.size() - 1;
    }

    std::vector<std::vector<End>> strings;
    Walks(places.size(), links).ForEach([&](const std::vector<Walks::Step>& walk) {
        std::vector<End>& string = strings.emplace_back();
        // Stations start anew where a closed chain ends: they are told apart along the pieces only.
        double advance = 0.0;
        for (const Walks::Step& step : walk) {
            if (!string.empty()) {
                const Piece& piece = pieces[step.link];
                const double gain = piece.to.station - piece.from.station;
                advance += links[step.link].second == step.place ? gain : -gain;
            }
            string.push_back(places[step.place]);
        }
        Direct(string, advance, walk.front().place == walk.back().place);
    });
    const auto isLess = [](const End& a, const End& b) { return IsLess(a.point, b.point); };
    std::stable_sort(points.begin(), points.end(), isLess);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const bool isRepeated = i > 0 && IsSame(points[i].point, points[i - 1].point);
        if (isRepeated || std::binary_search(places.begin(), places.end(), points[i], isLess)) continue;
        strings.push_back({points[i], points[i]});
    }
    std::stable_sort(strings.begin(), strings.end(),
                     [](const auto& a, const auto& b) { return a.front().station < b.front().station; });
    for (const std::vector<End>& string : strings) {
        std::vector<Point3D> line;
        line.reserve(string.size());
        for (const End& place : string) line.push_back(place.point);
        out.emplace_back(std::move(line));
    }
    pieces.clear();
    points.clear();
}

}  // namespace Kalvio::Math::detail
