#include "kalvio/areas/detail/BorderNoding.h"

#include "kalvio/core/detail/Constants.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

constexpr double reachOverTolerance = 1.01;     // what is left apart is so by more than the tolerance
constexpr double distinctOverTolerance = 1.42;  // more than sqrt(2), and than 2 / sqrt(3) times the reach
constexpr double roundings = 32.0;              // of the largest coordinate that a tolerance spans at least
constexpr std::size_t mostRounds = 10000;       // far more than ever seen
constexpr std::size_t fewFresh = 4;             // one piece in so many fresh: each is compared by itself

PlanePoint operator-(const PlanePoint& a, const PlanePoint& b) { return {a.x - b.x, a.y - b.y}; }
double Dot(const PlanePoint& a, const PlanePoint& b) { return a.x * b.x + a.y * b.y; }
double Cross(const PlanePoint& a, const PlanePoint& b) { return a.x * b.y - a.y * b.x; }
double Square(const PlanePoint& a) { return Dot(a, a); }

double LargestCoordinate(const std::vector<PlanePoint>& points) {
    double largest = 0.0;
    for (const PlanePoint& p : points) largest = std::max({largest, std::abs(p.x), std::abs(p.y)});
    return largest;
}

}  // namespace

BorderNoding::BorderNoding(const std::vector<PlanePoint>& vertices, std::vector<BorderPiece> border,
                           const std::vector<BorderSource>& borderSources, double tolerance)
    : sources(borderSources),
      kept(std::max({std::abs(tolerance), numericalZero,
                     roundings * std::numeric_limits<double>::epsilon() * LargestCoordinate(vertices)})),
      reach(reachOverTolerance * kept),
      distinct(distinctOverTolerance * kept) {
    std::vector<Spot> spots;
    spots.reserve(vertices.size());
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        spots.push_back(SpotOf(vertices[i], static_cast<std::uint32_t>(i)));
    }
    const std::vector<std::uint32_t> nodeOf = FindOrAddNodes(spots);
    pieces = std::move(border);
    for (BorderPiece& piece : pieces) {
        piece.from = nodeOf[piece.from];
        piece.to = nodeOf[piece.to];
    }
    std::erase_if(pieces, [](const BorderPiece& piece) { return piece.from == piece.to; });
    isFresh.assign(pieces.size(), 1);
    freshCount = pieces.size();
}

BorderNoding::Spot BorderNoding::SpotOf(const PlanePoint& p, std::uint32_t index) const {
    return {std::floor(p.x / distinct), p, index};
}

bool BorderNoding::IsBefore(const Spot& a, const Spot& b) {
    if (a.strip != b.strip) return a.strip < b.strip;
    return a.at.y < b.at.y || (a.at.y == b.at.y && a.at.x < b.at.x);
}

// The nearest node within reach of each spot, by its index; where there is none the spot becomes one.
std::vector<std::uint32_t> BorderNoding::FindOrAddNodes(std::vector<Spot>& spots) {
    std::sort(spots.begin(), spots.end(), IsBefore);
    std::vector<std::uint32_t> nodeOf(spots.size());
    std::vector<Spot> added;
    std::size_t before = 0;   // the first added spot of the strip before that is not too low
    std::size_t current = 0;  // the first added spot of this strip
    double strip = -std::numeric_limits<double>::infinity();
    for (const Spot& spot : spots) {
        if (spot.strip != strip) {
            before = spot.strip == strip + 1.0 ? current : added.size();
            current = added.size();
            strip = spot.strip;
        }
        const double low = spot.at.y - distinct;
        const double high = spot.at.y + distinct;
        double nearest = distinct * distinct;
        std::uint32_t node = none;
        const auto offer = [&](const Spot& candidate) {
            const double squared = Square(candidate.at - spot.at);
            if (!(squared < nearest) && !(squared == nearest && node == none)) return;
            nearest = squared;
            node = candidate.index;
        };
        if (!placed.empty()) {
            for (const double column : {strip - 1.0, strip, strip + 1.0}) {
                auto candidate = std::lower_bound(
                    placed.begin(), placed.end(), Spot{column, {spot.at.x, low}, 0}, [](const Spot& a, const Spot& b) {
                        return a.strip < b.strip || (a.strip == b.strip && a.at.y < b.at.y);
                    });
                for (; candidate != placed.end() && candidate->strip == column && candidate->at.y <= high;
                     ++candidate) {
                    offer(*candidate);
                }
            }
        }
        while (before < current && added[before].at.y < low) ++before;
        for (std::size_t k = before; k < current && added[k].at.y <= high; ++k) offer(added[k]);
        for (std::size_t k = added.size(); k > current && added[k - 1].at.y >= low; --k) offer(added[k - 1]);
        if (node == none) {
            node = static_cast<std::uint32_t>(nodes.size());
            nodes.push_back(spot.at);
            added.push_back({strip, spot.at, node});
        }
        nodeOf[spot.index] = node;
    }
    const auto middle = static_cast<std::ptrdiff_t>(placed.size());
    placed.insert(placed.end(), added.begin(), added.end());
    std::inplace_merge(placed.begin(), placed.begin() + middle, placed.end(), IsBefore);
    return nodeOf;
}

Extent BorderNoding::ExtentOf(const BorderPiece& piece) const {
    const PlanePoint& a = nodes[piece.from];
    const PlanePoint& b = nodes[piece.to];
    Extent extent;
    extent.minX = std::min(a.x, b.x);
    extent.minY = std::min(a.y, b.y);
    extent.maxX = std::max(a.x, b.x);
    extent.maxY = std::max(a.y, b.y);
    return extent;
}

void BorderNoding::BuildBoxes() {
    std::vector<Extent> extents;
    extents.reserve(pieces.size());
    for (const BorderPiece& piece : pieces) extents.push_back(ExtentOf(piece));
    boxes.emplace(std::move(extents));
}

bool BorderNoding::Run() {
    for (std::size_t round = 0; round < mostRounds; ++round) {
        BuildBoxes();
        FindMeetings();
        if (cuts.empty() && crossings.empty()) return true;
        if (!CutCrossings()) return false;
        ApplyCuts();
    }
    return false;
}

void BorderNoding::FindMeetings() {
    const auto count = static_cast<std::uint32_t>(pieces.size());
    if (freshCount * fewFresh > count) {
        boxes->ForEachPair(reach, [&](std::size_t i, std::size_t j) {
            if (isFresh[i] || isFresh[j]) Compare(static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(j));
            return false;
        });
        return;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        if (!isFresh[i]) continue;
        boxes->ForEachNear(boxes->GetExtent(i), reach, [&](std::size_t j) {
            if (j != i && !(isFresh[j] && j < i)) Compare(i, static_cast<std::uint32_t>(j));
            return false;
        });
    }
}

// Takes down what two pieces have to do with each other. They cross only if no end of one lies on the other: after a
// cut there they are compared again.
void BorderNoding::Compare(std::uint32_t i, std::uint32_t j) {
    const BorderPiece& a = pieces[i];
    const BorderPiece& b = pieces[j];
    const bool hasFrom = a.from == b.from || a.from == b.to;
    const bool hasTo = a.to == b.from || a.to == b.to;
    if (hasFrom && hasTo) return;
    bool isCut = false;
    for (const std::uint32_t node : {b.from, b.to}) {
        if (node != a.from && node != a.to) isCut = CutNear(i, node) || isCut;
    }
    if (!hasFrom) isCut = CutNear(j, a.from) || isCut;
    if (!hasTo) isCut = CutNear(j, a.to) || isCut;
    if (!isCut && !hasFrom && !hasTo) FindCrossing(i, j);
}

bool BorderNoding::CutNear(std::uint32_t piece, std::uint32_t node) {
    const PlanePoint& a = nodes[pieces[piece].from];
    const PlanePoint chord = nodes[pieces[piece].to] - a;
    const PlanePoint arm = nodes[node] - a;
    const double along = Dot(chord, arm);
    const double square = Square(chord);
    if (!(along > 0.0 && along < square)) return false;
    const double off = Cross(chord, arm);
    return off * off <= reach * reach * square && AddCut(piece, node);
}

// Cuts only make pieces shorter.
bool BorderNoding::AddCut(std::uint32_t piece, std::uint32_t node) {
    const PlanePoint& a = nodes[pieces[piece].from];
    const PlanePoint& b = nodes[pieces[piece].to];
    const PlanePoint& p = nodes[node];
    const double square = Square(b - a);
    if (!(Square(p - a) < square && Square(p - b) < square)) return false;
    cuts.push_back({piece, Dot(b - a, p - a) / square, node});
    return true;
}

void BorderNoding::FindCrossing(std::uint32_t i, std::uint32_t j) {
    // In the order of the nodes, so that the point does not hang on that of the pieces.
    std::pair<std::uint32_t, std::uint32_t> first = std::minmax(pieces[i].from, pieces[i].to);
    std::pair<std::uint32_t, std::uint32_t> second = std::minmax(pieces[j].from, pieces[j].to);
    if (second < first) std::swap(first, second);
    const PlanePoint a1 = nodes[first.first];
    const PlanePoint a2 = nodes[first.second];
    const PlanePoint b1 = nodes[second.first];
    const PlanePoint b2 = nodes[second.second];
    const auto areOpposite = [](double u, double v) { return (u < 0.0 && v > 0.0) || (u > 0.0 && v < 0.0); };
    if (!areOpposite(ExactTurn(a1, a2, b1), ExactTurn(a1, a2, b2))) return;
    const double startSide = ExactTurn(b1, b2, a1);
    const double endSide = ExactTurn(b1, b2, a2);
    if (!areOpposite(startSide, endSide)) return;
    const double along = startSide / (startSide - endSide);
    crossings.push_back({i, j, {a1.x + (a2.x - a1.x) * along, a1.y + (a2.y - a1.y) * along}});
}

bool BorderNoding::CutCrossings() {
    std::vector<Spot> spots;
    spots.reserve(crossings.size());
    for (std::size_t k = 0; k < crossings.size(); ++k) {
        spots.push_back(SpotOf(crossings[k].at, static_cast<std::uint32_t>(k)));
    }
    const std::vector<std::uint32_t> nodeOf = FindOrAddNodes(spots);
    for (std::size_t k = 0; k < crossings.size(); ++k) {
        bool isCut = false;
        for (const std::uint32_t i : {crossings[k].first, crossings[k].second}) {
            const bool isEnd = nodeOf[k] == pieces[i].from || nodeOf[k] == pieces[i].to;
            if (!isEnd) isCut = AddCut(i, nodeOf[k]) || isCut;
        }
        if (!isCut) return false;
    }
    crossings.clear();
    return true;
}

void BorderNoding::ApplyCuts() {
    std::sort(cuts.begin(), cuts.end(), [](const Cut& a, const Cut& b) {
        if (a.piece != b.piece) return a.piece < b.piece;
        return a.along < b.along || (a.along == b.along && a.node < b.node);
    });
    std::vector<BorderPiece> parts;
    std::vector<char> areFresh;
    parts.reserve(pieces.size() + cuts.size());
    areFresh.reserve(pieces.size() + cuts.size());
    freshCount = 0;
    std::vector<std::uint32_t> chain;
    auto cut = cuts.begin();
    for (std::uint32_t i = 0; i < pieces.size(); ++i) {
        const BorderPiece& piece = pieces[i];
        if (cut == cuts.end() || cut->piece != i) {
            parts.push_back(piece);
            areFresh.push_back(0);
            continue;
        }
        const PlanePoint& a = nodes[piece.from];
        const PlanePoint chord = nodes[piece.to] - a;
        const double square = Square(chord);
        std::uint32_t nearest = cut->node;
        double least = std::numeric_limits<double>::infinity();
        chain.assign(1, piece.from);
        bool isShorter = true;
        const auto append = [&](std::uint32_t node) {
            isShorter = isShorter && Square(nodes[node] - nodes[chain.back()]) < square;
            chain.push_back(node);
        };
        for (; cut != cuts.end() && cut->piece == i; ++cut) {
            if (cut->node == chain.back()) continue;
            const double off = std::abs(Cross(chord, nodes[cut->node] - a));
            if (off < least || (off == least && cut->node < nearest)) {
                least = off;
                nearest = cut->node;
            }
            append(cut->node);
        }
        append(piece.to);
        if (!isShorter) chain = {piece.from, nearest, piece.to};
        for (std::size_t k = 1; k < chain.size(); ++k) {
            parts.push_back({chain[k - 1], chain[k], piece.source});
            areFresh.push_back(1);
            ++freshCount;
        }
    }
    cuts.clear();
    pieces = std::move(parts);
    isFresh = std::move(areFresh);
}

}  // namespace Kalvio::Math::detail
