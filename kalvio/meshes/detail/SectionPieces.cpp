#include "kalvio/meshes/detail/SectionPieces.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

bool IsLess(const Point3D& a, const Point3D& b) {
    return std::tuple(a.GetX(), a.GetY(), a.GetZ()) < std::tuple(b.GetX(), b.GetY(), b.GetZ());
}

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

// Along the direction; a closed string is turned until it starts first.
void Direct(std::vector<Point3D>& points, const Vec3D& direction) {
    const auto isBefore = [&](const Point3D& a, const Point3D& b) { return (b - a).DotProduct(direction) > 0.0; };
    if (!IsSame(points.front(), points.back())) {
        if (isBefore(points.back(), points.front())) std::reverse(points.begin(), points.end());
        return;
    }
    points.pop_back();
    std::rotate(points.begin(), std::min_element(points.begin(), points.end(), isBefore), points.end());
    points.push_back(points.front());
}

}  // namespace

Point3D EdgeCrossing(const CutCorner& a, const CutCorner& b) {
    if (IsLess(b.point, a.point)) return EdgeCrossing(b, a);
    return a.point + (b.point - a.point) * (a.height / (a.height - b.height));
}

TriangleCut::TriangleCut(const std::array<CutCorner, 3>& corners) {
    int cornersOnPlane = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const CutCorner& a = corners[i];
        const CutCorner& b = corners[i == 2 ? 0 : i + 1];
        if (a.side == 0) {
            if (count < 2) ends[static_cast<std::size_t>(count)] = a.point;
            ++count;
            ++cornersOnPlane;
        } else if (a.side * b.side < 0) {
            ends[static_cast<std::size_t>(count++)] = EdgeCrossing(a, b);
        }
    }
    isEdge = cornersOnPlane == 2;
}

void SectionPieces::Add(const std::array<CutCorner, 3>& corners) {
    const TriangleCut cut(corners);
    if (cut.count == 3) {
        for (std::size_t i = 0; i < 3; ++i) AddEdge(corners[i].point, corners[i == 2 ? 0 : i + 1].point, true);
    } else if (cut.isEdge) {
        AddEdge(cut.ends[0], cut.ends[1], false);
    } else if (cut.count == 2) {
        AddPiece(cut.ends[0], cut.ends[1]);
    } else if (cut.count == 1 && touches == Touches::Keep) {
        points.push_back(cut.ends[0]);
    }
}

void SectionPieces::AddPiece(const Point3D& from, const Point3D& to) {
    const Vec3D way = to - from;
    const double sum = way.GetX() + way.GetY() + way.GetZ();
    if (!IsSame(from, to) && std::isfinite(sum)) pieces.push_back({from, to});
}

void SectionPieces::AddEdge(const Point3D& a, const Point3D& b, bool isOfFlatTriangle) {
    edges.push_back({IsLess(b, a) ? Piece{b, a} : Piece{a, b}, isOfFlatTriangle});
}

void SectionPieces::TakeEdges() {
    std::sort(edges.begin(), edges.end(), [](const PlaneEdge& a, const PlaneEdge& b) {
        return IsLess(a.piece.from, b.piece.from) ||
               (IsSame(a.piece.from, b.piece.from) && IsLess(a.piece.to, b.piece.to));
    });
    for (auto first = edges.begin(); first != edges.end();) {
        const auto isOther = [&](const PlaneEdge& edge) {
            return !IsSame(edge.piece.from, first->piece.from) || !IsSame(edge.piece.to, first->piece.to);
        };
        const auto end = std::find_if(first, edges.end(), isOther);
        const auto flat = std::count_if(first, end, [](const PlaneEdge& edge) { return edge.isOfFlatTriangle; });
        if (flat % 2 != 0 || flat != end - first) AddPiece(first->piece.from, first->piece.to);
        first = end;
    }
    edges.clear();
}

void SectionPieces::TakePoints() {
    std::vector<Point3D> ends;
    for (const Piece& piece : pieces) ends.insert(ends.end(), {piece.from, piece.to});
    std::sort(ends.begin(), ends.end(), IsLess);
    std::sort(points.begin(), points.end(), IsLess);
    points.erase(std::unique(points.begin(), points.end(), IsSame), points.end());
    std::erase_if(points, [&](const Point3D& p) { return std::binary_search(ends.begin(), ends.end(), p, IsLess); });
}

void SectionPieces::Chain(const Vec3D& direction, std::vector<LineString3D>& out) {
    TakeEdges();
    TakePoints();
    // The ends of pieces in order: the same place has a run of them.
    std::vector<std::size_t> order(2 * pieces.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto end = [this](std::size_t i) -> const Point3D& {
        return i % 2 == 0 ? pieces[i / 2].from : pieces[i / 2].to;
    };
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return IsLess(end(a), end(b)); });
    std::vector<std::pair<std::size_t, std::size_t>> links(pieces.size());
    std::vector<Point3D> places;
    for (const std::size_t i : order) {
        if (places.empty() || !IsSame(places.back(), end(i))) places.push_back(end(i));
        (i % 2 == 0 ? links[i / 2].first : links[i / 2].second) = places.size() - 1;
    }

    std::vector<std::vector<Point3D>> strings;
    Walks(places.size(), std::move(links)).ForEach([&](const std::vector<std::size_t>& walk) {
        std::vector<Point3D>& string = strings.emplace_back();
        for (const std::size_t place : walk) string.push_back(places[place]);
        Direct(string, direction);
    });
    for (const Point3D& point : points) strings.push_back({point, point});
    if (strings.empty()) return;
    const Point3D origin = strings.front().front();
    std::stable_sort(strings.begin(), strings.end(), [&](const auto& a, const auto& b) {
        return (a.front() - origin).DotProduct(direction) < (b.front() - origin).DotProduct(direction);
    });
    for (std::vector<Point3D>& string : strings) out.emplace_back(std::move(string));
    pieces.clear();
    points.clear();
}

}  // namespace Kalvio::Math::detail
