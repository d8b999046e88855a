#include "kalvio/meshes/detail/SectionPieces.h"

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

// Places with the links between them, walked so that each link is passed once. The places that would be ends of a walk
// (those of an odd number of links) are paired by links that are cut again afterwards.
class Walks {
public:
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
        std::vector<std::size_t> next(firstLink);
        for (std::size_t link = 0; link < links.size(); ++link) {
            linksAt[next[links[link].first]++] = link;
            linksAt[next[links[link].second]++] = link;
        }
        isUsed.assign(links.size(), false);
    }

    /// Calls take(places) for every walk.
    template <class Take>
    void ForEach(Take&& take) {
        std::vector<std::size_t> next(firstLink);
        // Walks with two ends first, each begun on the link that pairs its ends.
        for (std::size_t i = 0; i < links.size(); ++i) {
            const std::size_t link = i < links.size() - realLinks ? realLinks + i : i - (links.size() - realLinks);
            if (!isUsed[link]) Cut(Circuit(link, next), take);
        }
    }

private:
    struct Step {
        std::size_t place;
        std::size_t link;  // that leads here
    };

    // All links that hang together with the first one, passed once each. The first step has the first link.
    std::vector<Step> Circuit(std::size_t first, std::vector<std::size_t>& next) {
        std::vector<Step> stack{{links[first].first, first}};
        std::vector<Step> circuit;
        isUsed[first] = true;
        while (!stack.empty()) {
            const std::size_t place = stack.back().place;
            while (next[place] < firstLink[place + 1] && isUsed[linksAt[next[place]]]) ++next[place];
            if (next[place] == firstLink[place + 1]) {
                circuit.push_back(stack.back());
                stack.pop_back();
            } else {
                const std::size_t link = linksAt[next[place]];
                isUsed[link] = true;
                stack.push_back({links[link].first == place ? links[link].second : links[link].first, link});
            }
        }
        std::reverse(circuit.begin(), circuit.end());
        return circuit;
    }

    template <class Take>
    void Cut(const std::vector<Step>& circuit, Take& take) {
        std::vector<std::size_t> places;
        const auto finish = [&] {
            if (places.size() > 1) take(places);
            places.clear();
        };
        if (circuit.front().link < realLinks) places.push_back(links[circuit.front().link].second);
        for (const Step& step : circuit) {
            if (step.link >= realLinks) finish();
            places.push_back(step.place);
        }
        finish();
    }

    std::vector<std::pair<std::size_t, std::size_t>> links;
    std::vector<std::size_t> firstLink;  // of each place, in linksAt
    std::vector<std::size_t> linksAt;
    std::vector<bool> isUsed;
    std::size_t realLinks;
};

using End = SectionPieces::End;

bool IsFinite(const End& end) {
    const Point3D& p = end.point;
    return std::isfinite(p.GetX()) && std::isfinite(p.GetY()) && std::isfinite(p.GetZ()) && std::isfinite(end.station);
}

// In the direction of ascending stations; a closed string is turned until it starts at the least.
void Direct(std::vector<End>& string) {
    if (!IsSame(string.front().point, string.back().point)) {
        if (string.back().station < string.front().station) std::reverse(string.begin(), string.end());
        return;
    }
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
    if (cut.isEdge) Add(cut.ends[0].first->point, cut.ends[1].first->point, false);
    if (cut.count != 3) return cut.isEdge;
    for (std::size_t i = 0; i < 3; ++i) Add(corners[i].point, corners[i == 2 ? 0 : i + 1].point, true);
    return true;
}

bool PlaneEdges::IsSame(const Edge& a, const Edge& b) {
    return detail::IsSame(a.from, b.from) && detail::IsSame(a.to, b.to);
}

void PlaneEdges::Add(const Point3D& a, const Point3D& b, bool isOfFlatTriangle) {
    const bool isOrdered = IsLess(a, b);
    edges.push_back({isOrdered ? a : b, isOrdered ? b : a, isOfFlatTriangle});
}

void PlaneEdges::Sort() {
    std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) {
        return IsLess(a.from, b.from) || (detail::IsSame(a.from, b.from) && IsLess(a.to, b.to));
    });
}

void SectionPieces::AddPiece(const End& from, const End& to) {
    if (!IsSame(from.point, to.point) && IsFinite(from) && IsFinite(to)) pieces.push_back({from, to});
}

void SectionPieces::AddPoint(const End& end) {
    if (IsFinite(end)) points.push_back(end);
}

void SectionPieces::Chain(std::vector<LineString3D>& out) {
    // The ends of pieces in order: those of one place follow each other.
    std::vector<std::size_t> order(2 * pieces.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto end = [this](std::size_t i) -> const End& { return i % 2 == 0 ? pieces[i / 2].from : pieces[i / 2].to; };
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return IsLess(end(a).point, end(b).point) || (IsSame(end(a).point, end(b).point) && a < b);
    });
    std::vector<std::pair<std::size_t, std::size_t>> links(pieces.size());
    std::vector<End> places;
    for (const std::size_t i : order) {
        if (places.empty() || !IsSame(places.back().point, end(i).point)) places.push_back(end(i));
        places.back().station = std::min(places.back().station, end(i).station);
        (i % 2 == 0 ? links[i / 2].first : links[i / 2].second) = places.size() - 1;
    }

    std::vector<std::vector<End>> strings;
    Walks(places.size(), std::move(links)).ForEach([&](const std::vector<std::size_t>& walk) {
        std::vector<End>& string = strings.emplace_back();
        for (const std::size_t place : walk) string.push_back(places[place]);
        Direct(string);
    });
    const auto isLess = [](const End& a, const End& b) { return IsLess(a.point, b.point); };
    std::sort(points.begin(), points.end(), isLess);
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
