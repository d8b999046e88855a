#include "kalvio/areas/detail/BorderNoding.h"

#include "kalvio/areas/detail/PlaneVectors.h"
#include "kalvio/core/detail/Constants.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

constexpr double reachOverTolerance = 1.01;     // what is left apart is so by more than the tolerance
constexpr double distinctOverTolerance = 1.42;  // more than sqrt(2), and than 2 / sqrt(3) times the reach
constexpr double roundings = 32.0;              // of the largest coordinate that a tolerance spans at least
constexpr double manyRoundings = 1024.0;        // the same for a tolerance beside which crossings lie on their pieces
constexpr double clearance = 1.1;               // of the reach: farther off stays so where pieces move by roundings
constexpr double flatness = 0.25;               // of the tolerance: a piece that leaves its chord by less is its chord
constexpr double shortness = 4.0;               // of the distance of nodes: the same for a piece no longer
constexpr std::size_t mostRounds = 10000;       // far more than ever seen
constexpr std::size_t fewPoints = 16;           // sorted sooner than put in cells
constexpr std::size_t mostPieces = 16;          // by a crossing: to look at more is no quicker than another round
constexpr std::size_t fewFresh = 4;             // one piece in so many fresh: each is compared by itself
constexpr double leeway = 8.0;         // of the distance of nodes: parts of pieces leave the extents of these by less
constexpr std::size_t mostClose = 64;  // for a piece: to look at them again is no quicker than to list more
constexpr std::size_t mostTries = 16;  // for a close pair or a piece: to find close parts among more, boxes are quicker

}  // namespace

BorderNoding::BorderNoding(const std::vector<PlanePoint>& vertices, std::vector<BorderPiece> border,
                           const std::vector<BorderSource>& borderSources, double tolerance, double largest)
    : sources(borderSources),
      kept(ToleranceFor(tolerance, largest)),
      reach(reachOverTolerance * kept),
      distinct(distinctOverTolerance * kept) {
    nodeOfVertex = FindOrAddNodes(vertices);
    pieces = std::move(border);
    for (BorderPiece& piece : pieces) {
        piece.from = nodeOfVertex[piece.from];
        piece.to = nodeOfVertex[piece.to];
    }
    std::erase_if(pieces, [](const BorderPiece& piece) { return piece.from == piece.to; });
    isCoarse = kept >= manyRoundings * std::numeric_limits<double>::epsilon() * largest;
    hasArcs = std::any_of(sources.begin(), sources.end(), [](const BorderSource& source) { return source.sense != 0; });
    isFresh.assign(pieces.size(), 1);
    freshCount = pieces.size();
    if (!hasArcs) return;
    bows.reserve(pieces.size());
    for (const BorderPiece& piece : pieces) bows.push_back(BowOf(piece));
}

double BorderNoding::ToleranceFor(double tolerance, double largest) {
    return std::max({std::abs(tolerance), numericalZero, roundings * std::numeric_limits<double>::epsilon() * largest});
}

BorderNoding::Spot BorderNoding::SpotOf(const PlanePoint& p, std::uint32_t index) const {
    return {std::floor(p.x / distinct), p, index};
}

bool BorderNoding::IsBefore(const Spot& a, const Spot& b) {
    if (a.strip != b.strip) return a.strip < b.strip;
    return a.at.y < b.at.y || (a.at.y == b.at.y && a.at.x < b.at.x);
}

// The nearest node within reach of each point, by its number; where there is none the point becomes one. Only among
// points that lie near each other, and are not the same, does it take an order to tell which.
std::vector<std::uint32_t> BorderNoding::FindOrAddNodes(const std::vector<PlanePoint>& points) {
    IndexNodes();
    const auto known = static_cast<std::uint32_t>(nodes.size());
    const bool areFew = points.size() < fewPoints;
    PointGrid pointGrid;
    if (!areFew) pointGrid = PointGrid(points, distinct);
    const bool areCrowded = areFew || pointGrid.IsUneven();
    std::vector<Spot> crowded;
    std::vector<std::uint32_t> nodeOf(points.size(), none);
    for (std::uint32_t i = 0; i < points.size(); ++i) {
        bool isCrowded = areCrowded;
        std::uint32_t first = i;
        if (!isCrowded) {
            pointGrid.ForEachNear(points[i], [&](std::uint32_t other) {
                if (points[other].x == points[i].x && points[other].y == points[i].y) {
                    first = std::min(first, other);
                } else {
                    isCrowded = isCrowded || IsNear(points[i], points[other]);
                }
            });
        }
        if (isCrowded) {
            crowded.push_back(SpotOf(points[i], i));
        } else {
            const std::uint32_t node = FindNode(points[i]);
            nodeOf[i] = node == none ? known + first : node;
        }
    }
    SortOut(crowded, known, nodeOf);

    // New nodes are in the order of the points.
    std::vector<std::uint32_t> numberOf(points.size(), none);
    for (std::uint32_t i = 0; i < points.size(); ++i) {
        if (nodeOf[i] != known + i) continue;
        numberOf[i] = static_cast<std::uint32_t>(nodes.size());
        nodes.push_back(points[i]);
    }
    for (std::uint32_t& node : nodeOf) node = node < known ? node : numberOf[node - known];
    batches.push_back(static_cast<std::uint32_t>(nodes.size()));
    if (known == 0 && !areCrowded && nodes.size() == points.size()) {
        grid = std::move(pointGrid);
        inGrid = nodes.size();
    }
    return nodeOf;
}

// Nodes that are few beside those in the grid are kept in order, so that it is not laid anew for them.
void BorderNoding::IndexNodes() {
    const std::size_t indexed = inGrid + placed.size();
    if (nodes.size() == indexed) return;
    if (nodes.size() > inGrid + inGrid / 4 && nodes.size() >= fewPoints) {
        grid = PointGrid(nodes, distinct);
        inGrid = nodes.size();
        placed.clear();
        if (!grid.IsUneven()) return;
        grid = PointGrid();
        inGrid = 0;
    }
    const auto middle = static_cast<std::ptrdiff_t>(placed.size());
    for (std::size_t node = inGrid + placed.size(); node < nodes.size(); ++node) {
        placed.push_back(SpotOf(nodes[node], static_cast<std::uint32_t>(node)));
    }
    std::sort(placed.begin() + middle, placed.end(), IsBefore);
    std::inplace_merge(placed.begin(), placed.begin() + middle, placed.end(), IsBefore);
}

bool BorderNoding::IsNear(const PlanePoint& a, const PlanePoint& b) const {
    return Square(a - b) <= distinct * distinct;
}

// The nearest node within reach, of those as near the first one in the order of coordinates.
std::uint32_t BorderNoding::FindNode(const PlanePoint& p) const {
    double nearest = distinct * distinct;
    std::uint32_t found = none;
    const auto offer = [&](std::uint32_t node) {
        const double squared = Square(nodes[node] - p);
        const bool isTied = squared == nearest && (found == none || Precedes(nodes[node], nodes[found]));
        if (!(squared < nearest) && !isTied) return;
        nearest = squared;
        found = node;
    };
    grid.ForEachNear(p, offer);
    if (placed.empty()) return found;
    const double strip = std::floor(p.x / distinct);
    for (const double column : {strip - 1.0, strip, strip + 1.0}) {
        auto candidate = std::lower_bound(
            placed.begin(), placed.end(), Spot{column, {p.x, p.y - distinct}, 0},
            [](const Spot& a, const Spot& b) { return a.strip < b.strip || (a.strip == b.strip && a.at.y < b.at.y); });
        for (; candidate != placed.end() && candidate->strip == column && candidate->at.y <= p.y + distinct;
             ++candidate) {
            offer(candidate->index);
        }
    }
    return found;
}

// Of spots that lie near others: each in turn is led to a node, or to one before it, which it counts from `known` on.
void BorderNoding::SortOut(std::vector<Spot>& spots, std::uint32_t known, std::vector<std::uint32_t>& nodeOf) const {
    std::sort(spots.begin(), spots.end(), IsBefore);
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
        std::uint32_t node = FindNode(spot.at);
        double nearest = node == none ? distinct * distinct : Square(nodes[node] - spot.at);
        const auto offer = [&](const Spot& candidate) {
            const double squared = Square(candidate.at - spot.at);
            if (!(squared < nearest) && !(squared == nearest && node == none)) return;
            nearest = squared;
            node = known + candidate.index;
        };
        while (before < current && added[before].at.y < low) ++before;
        for (std::size_t k = before; k < current && added[k].at.y <= high; ++k) offer(added[k]);
        for (std::size_t k = added.size(); k > current && added[k - 1].at.y >= low; --k) offer(added[k - 1]);
        if (node == none) {
            node = known + spot.index;
            added.push_back(spot);
        }
        nodeOf[spot.index] = node;
    }
}

// The order of coordinates.
inline bool BorderNoding::Precedes(const PlanePoint& a, const PlanePoint& b) const {
    if (std::abs(a.x - b.x) > 2.0 * distinct) return a.x < b.x;
    return IsBefore(SpotOf(a, 0), SpotOf(b, 0));
}

// Nodes that were added earlier before later ones, then by coordinates: an order that does not hang on that of the
// pieces.
inline bool BorderNoding::IsLower(std::uint32_t a, std::uint32_t b) const {
    const std::uint32_t first = batches.front();
    if ((a < first) != (b < first)) return a < b;
    if (a >= first && batches.size() > 2) {
        const auto batchOf = [this](std::uint32_t node) {
            return std::upper_bound(batches.begin(), batches.end(), node);
        };
        if (batchOf(a) != batchOf(b)) return a < b;
    }
    return Precedes(nodes[a], nodes[b]);
}

std::pair<std::uint32_t, std::uint32_t> BorderNoding::EndsOf(const BorderPiece& piece) const {
    return IsLower(piece.to, piece.from) ? std::pair(piece.to, piece.from) : std::pair(piece.from, piece.to);
}

bool BorderNoding::IsLower(const std::pair<std::uint32_t, std::uint32_t>& a,
                           const std::pair<std::uint32_t, std::uint32_t>& b) const {
    return a.first == b.first ? IsLower(a.second, b.second) : IsLower(a.first, b.first);
}

Extent BorderNoding::ExtentOf(std::size_t i) const {
    const PlanePoint& a = nodes[pieces[i].from];
    const PlanePoint& b = nodes[pieces[i].to];
    Extent extent;
    extent.minX = std::min(a.x, b.x);
    extent.minY = std::min(a.y, b.y);
    extent.maxX = std::max(a.x, b.x);
    extent.maxY = std::max(a.y, b.y);
    if (hasArcs && bows[i].isCurved) extent.Add(Point2D(bows[i].apex.x, bows[i].apex.y));
    return extent;
}

std::vector<Extent> BorderNoding::ExtentsOfPieces() const {
    std::vector<Extent> all;
    all.reserve(pieces.size());
    for (std::size_t i = 0; i < pieces.size(); ++i) all.push_back(ExtentOf(i));
    return all;
}

void BorderNoding::BuildBoxes() { boxes.emplace(ExtentsOfPieces()); }

// Parts of pieces are close only where these were, as far as they do not leave their extents. False where too many are.
bool BorderNoding::ListClose() {
    if (ListCloseParts()) return true;
    extents = ExtentsOfPieces();
    closeness = clearance * reach + leeway * distinct;
    close.clear();
    const std::size_t most = mostClose * pieces.size();
    const auto list = [&](std::size_t i, std::size_t j) {
        close.emplace_back(static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(j));
        return close.size() > most;
    };
    if (!ExtentBoxes(extents).ForEachPair(closeness, list)) return true;
    extents = {};
    close = {};
    return false;
}

// False where there is no list to take them from, they leave their extents too far, or are too many.
bool BorderNoding::ListCloseParts() {
    if (partsOf.size() != extents.size() + 1) return false;
    const auto countOf = [this](std::uint32_t i) { return std::size_t{partsOf[i + 1] - partsOf[i]}; };
    std::vector<Extent> partExtents = ExtentsOfPieces();
    double beyond = 0.0;
    std::size_t tries = 0;
    for (std::uint32_t i = 0; i < extents.size(); ++i) {
        const Extent& whole = extents[i];
        tries += countOf(i) * countOf(i);
        for (std::uint32_t part = partsOf[i]; part < partsOf[i + 1]; ++part) {
            const Extent& own = partExtents[part];
            beyond = std::max(
                {beyond, whole.minX - own.minX, whole.minY - own.minY, own.maxX - whole.maxX, own.maxY - whole.maxY});
        }
    }
    for (const auto& [i, j] : close) tries += countOf(i) * countOf(j);
    const double left = closeness - 2.0 * beyond;
    if (!(left >= clearance * reach) || tries > mostTries * (partExtents.size() + close.size())) return false;

    // Which ones are close shows no pattern: each is written down, and overwritten if it is not.
    std::vector<std::pair<std::uint32_t, std::uint32_t>> closeParts(close.size() + 2 * partExtents.size());
    const std::size_t most = mostClose * partExtents.size();
    std::size_t count = 0;
    const auto pairUp = [&](std::uint32_t part, std::uint32_t from, std::uint32_t end) {
        const Extent around = partExtents[part].Widened(left);
        if (closeParts.size() - count < end - from) closeParts.resize(2 * closeParts.size() + (end - from));
        for (std::uint32_t other = from; other < end; ++other) {
            const Extent& own = partExtents[other];
            closeParts[count] = {part, other};
            count += static_cast<std::size_t>((around.minX <= own.maxX) & (own.minX <= around.maxX) &
                                              (around.minY <= own.maxY) & (own.minY <= around.maxY));
        }
    };
    for (std::uint32_t i = 0; i < extents.size(); ++i) {
        for (std::uint32_t part = partsOf[i]; part + 1 < partsOf[i + 1]; ++part) pairUp(part, part + 1, partsOf[i + 1]);
    }
    for (const auto& [i, j] : close) {
        for (std::uint32_t part = partsOf[i]; part < partsOf[i + 1]; ++part) pairUp(part, partsOf[j], partsOf[j + 1]);
        if (count > most) return false;
    }
    closeParts.resize(count);
    extents = std::move(partExtents);
    close = std::move(closeParts);
    closeness = left;
    return true;
}

bool BorderNoding::Run() {
    for (std::size_t round = 0; round < mostRounds; ++round) {
        boxes.reset();
        if (!hasArcs || !ListClose()) BuildBoxes();
        FindMeetings();
        if (cuts.empty() && crossings.empty() && unparted.empty()) return true;
        const bool mayBeLast = round == 0 && isCoarse && !hasArcs && cuts.empty() && !isAnyClose;
        const std::vector<Crossing> found = mayBeLast ? crossings : std::vector<Crossing>();
        if (!CutCrossings()) return false;
        const std::vector<char> areClear = FindClear(found);
        PartBows();
        CutHalves();
        ApplyCuts(areClear);
        if (freshCount > 0) continue;
        boxes.reset();
        return true;
    }
    return false;
}

// Of the pieces, whether each crossing in the list that lies on one has become a node of its own, far enough from all
// pieces but its two. Then the next round has nothing to find there: parts of pieces that did not come close lie where
// these did. Nothing if too many pieces lie near crossings.
std::vector<char> BorderNoding::FindClear(const std::vector<Crossing>& found) const {
    if (found.empty() || cuts.size() != 2 * found.size()) return {};
    std::vector<std::uint32_t> crossingCount(nodes.size() - batches.front(), 0);
    // Both cuts of a crossing follow each other.
    for (std::size_t k = 0; k < found.size(); ++k) {
        if (cuts[2 * k].node >= batches.front()) ++crossingCount[cuts[2 * k].node - batches.front()];
    }
    std::vector<char> areClear(pieces.size(), 1);
    std::size_t left = mostPieces * found.size();
    for (std::size_t k = 0; k < found.size(); ++k) {
        const Crossing& crossing = found[k];
        const std::uint32_t node = cuts[2 * k].node;
        const bool isOwn = node >= batches.front() && crossingCount[node - batches.front()] == 1;
        if (isOwn) {
            Extent place;
            place.Add(Point2D(crossing.at.x, crossing.at.y));
            const bool isNear = boxes->ForEachNear(place, clearance * reach, [&](std::size_t i) {
                if (left-- == 0) return true;
                return i != crossing.first && i != crossing.second &&
                       IsBeside(pieces[i], crossing.at, clearance * reach);
            });
            if (left > mostPieces * found.size()) return {};
            if (!isNear) continue;
        }
        areClear[crossing.first] = areClear[crossing.second] = 0;
    }
    return areClear;
}

void BorderNoding::FindMeetings() {
    if (!boxes) {
        for (const auto& [i, j] : close) {
            if (AreToCompare(i, j) && extents[i].Widened(clearance * reach).Meets(extents[j])) Compare(i, j);
        }
        return;
    }
    const auto count = static_cast<std::uint32_t>(pieces.size());
    if (freshCount * fewFresh > count) {
        boxes->ForEachPair(clearance * reach, [&](std::size_t i, std::size_t j) {
            if (AreToCompare(i, j)) Compare(static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(j));
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
    if (hasArcs && (bows[i].isCurved || bows[j].isCurved)) return CompareBows(i, j);
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

// Whether the point lies between the ends of the piece, within the distance of its chord.
bool BorderNoding::IsBeside(const BorderPiece& piece, const PlanePoint& p, double distance) const {
    const PlanePoint& a = nodes[piece.from];
    const PlanePoint chord = nodes[piece.to] - a;
    const PlanePoint arm = p - a;
    const double along = Dot(chord, arm);
    const double square = Square(chord);
    if (!(along > 0.0 && along < square)) return false;
    const double off = Cross(chord, arm);
    return off * off <= distance * distance * square;
}

bool BorderNoding::CutNear(std::uint32_t piece, std::uint32_t node) {
    if (!IsBeside(pieces[piece], nodes[node], clearance * reach)) return false;
    isAnyClose = true;
    return IsBeside(pieces[piece], nodes[node], reach) && AddCut(piece, node);
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
    const auto areOpposite = [this](std::uint32_t piece, std::uint32_t other) {
        const PlanePoint& a = nodes[pieces[piece].from];
        const PlanePoint& b = nodes[pieces[piece].to];
        const double u = ExactTurn(a, b, nodes[pieces[other].from]);
        const double v = ExactTurn(a, b, nodes[pieces[other].to]);
        return (u < 0.0 && v > 0.0) || (u > 0.0 && v < 0.0);
    };
    if (!areOpposite(i, j) || !areOpposite(j, i)) return;
    // In the order of the nodes, so that the point does not hang on that of the pieces.
    std::pair<std::uint32_t, std::uint32_t> first = EndsOf(pieces[i]);
    std::pair<std::uint32_t, std::uint32_t> second = EndsOf(pieces[j]);
    if (IsLower(second, first)) std::swap(first, second);
    const PlanePoint& from = nodes[first.first];
    const PlanePoint& to = nodes[first.second];
    const double startSide = ExactTurn(nodes[second.first], nodes[second.second], from);
    const double endSide = ExactTurn(nodes[second.first], nodes[second.second], to);
    const double along = startSide / (startSide - endSide);
    crossings.push_back({i, j, {from.x + (to.x - from.x) * along, from.y + (to.y - from.y) * along}});
}

std::vector<PlanePoint> BorderNoding::PlacesOf(const std::vector<Crossing>& found) {
    std::vector<PlanePoint> places;
    places.reserve(found.size());
    for (const Crossing& crossing : found) places.push_back(crossing.at);
    return places;
}

bool BorderNoding::CutCrossings() {
    const std::vector<std::uint32_t> nodeOf = FindOrAddNodes(PlacesOf(crossings));
    for (std::size_t k = 0; k < crossings.size(); ++k) {
        bool isCut = false;
        for (const std::uint32_t i : {crossings[k].first, crossings[k].second}) {
            const bool isEnd = nodeOf[k] == pieces[i].from || nodeOf[k] == pieces[i].to;
            if (!isEnd) isCut = AddCut(i, nodeOf[k]) || isCut;
        }
        if (isCut) continue;
        const std::size_t known = halves.size();
        for (const std::uint32_t i : {crossings[k].first, crossings[k].second}) Halve(i);
        if (halves.size() == known) return false;
    }
    crossings.clear();
    return true;
}

void BorderNoding::CutHalves() {
    const std::vector<std::uint32_t> nodeOf = FindOrAddNodes(PlacesOf(halves));
    for (std::size_t k = 0; k < halves.size(); ++k) (void)AddCut(halves[k].first, nodeOf[k]);
    halves.clear();
}

// Computed from the lower node, so that it does not hang on the direction of the piece.
BorderNoding::Bow BorderNoding::BowOf(const BorderPiece& piece) const {
    const BorderSource& source = sources[piece.source];
    if (source.sense == 0) {
        Bow segment;
        segment.start = nodes[piece.from];
        segment.end = nodes[piece.to];
        return segment;
    }
    const std::pair<std::uint32_t, std::uint32_t> ends = EndsOf(piece);
    const bool isLeft = (source.sense > 0) == (piece.from == ends.first);
    return BowBetween(nodes[ends.first], nodes[ends.second], source.center, isLeft);
}

// An arc has its centre on the side that is told.
BorderNoding::Bow BorderNoding::BowBetween(const PlanePoint& start, const PlanePoint& end, const PlanePoint& center,
                                           bool isLeft) const {
    Bow bow;
    bow.start = start;
    bow.end = end;
    const PlanePoint chord = end - start;
    const double square = Square(chord);
    if (!(square > shortness * shortness * distinct * distinct)) return bow;
    const double length = std::sqrt(square);
    const double side = Cross(chord, center - start) / length;
    const double half = 0.5 * length;
    // A quarter turn has its centre half a chord away; nearer, or on the other side, it is by the motion of nodes.
    if (!(isLeft ? side > 0.5 * half : side < -0.5 * half)) return bow;
    bow.radius = std::sqrt(side * side + half * half);
    const double sagitta = half * half / (bow.radius + std::abs(side));
    if (!(sagitta > flatness * kept)) return bow;
    bow.isCurved = true;
    bow.side = side;
    const PlanePoint normal{-chord.y / length, chord.x / length};
    const PlanePoint foot{0.5 * chord.x, 0.5 * chord.y};
    const double out = side > 0.0 ? -sagitta : sagitta;
    const double apex = -half * half / side;
    bow.toCenter = {foot.x + normal.x * side, foot.y + normal.y * side};
    bow.middle = {bow.start.x + foot.x + normal.x * out, bow.start.y + foot.y + normal.y * out};
    bow.apex = {bow.start.x + foot.x + normal.x * apex, bow.start.y + foot.y + normal.y * apex};
    return bow;
}

bool BorderNoding::IsNode(const PlanePoint& p, std::uint32_t node) const { return IsNear(p, nodes[node]); }

// Of a point of the circle (of the line): whether it lies on the piece.
bool BorderNoding::IsBetweenEnds(const Bow& bow, const PlanePoint& p) {
    const PlanePoint chord = bow.end - bow.start;
    const PlanePoint arm = p - bow.start;
    const double along = Dot(chord, arm);
    if (!(along > 0.0 && along < Square(chord))) return false;
    return !bow.isCurved || (Cross(chord, arm) < 0.0) == (bow.side > 0.0);
}

// What parts the triangles leaves no crossing to look for.
void BorderNoding::CompareBows(std::uint32_t i, std::uint32_t j) {
    const BorderPiece& p = pieces[i];
    const BorderPiece& q = pieces[j];
    const bool hasFrom = p.from == q.from || p.from == q.to;
    const bool hasTo = p.to == q.from || p.to == q.to;
    if (hasFrom && hasTo) {
        // One and the same, or a gap between.
        const auto middleOf = [](const Bow& bow) {
            return bow.isCurved ? bow.middle
                                : PlanePoint{0.5 * (bow.start.x + bow.end.x), 0.5 * (bow.start.y + bow.end.y)};
        };
        if (Square(middleOf(bows[i]) - middleOf(bows[j])) > reach * reach) unparted.emplace_back(i, j);
        return;
    }
    bool isCut = false;
    for (const std::uint32_t node : {q.from, q.to}) {
        if (node != p.from && node != p.to) isCut = CutNearBow(i, node) || isCut;
    }
    if (!hasFrom) isCut = CutNearBow(j, p.from) || isCut;
    if (!hasTo) isCut = CutNearBow(j, p.to) || isCut;
    if (!isCut && !AreParted(bows[i], bows[j]) && !FindBowCrossings(i, j)) unparted.emplace_back(i, j);
}

bool BorderNoding::CutNearBow(std::uint32_t piece, std::uint32_t node) {
    const Bow& bow = bows[piece];
    if (!bow.isCurved) return CutNear(piece, node);
    const PlanePoint arm = nodes[node] - bow.start;
    // From the circle, by the power of the point: no square of the radius is taken away.
    const double power = Square(arm) - 2.0 * Dot(arm, bow.toCenter);
    // Farther off without taking a root.
    if (!(std::abs(power) <= clearance * reach * (2.0 * bow.radius + reach))) return false;
    const double off = power / (bow.radius + std::sqrt(Square(arm - bow.toCenter)));
    if (!(std::abs(off) <= reach)) return false;
    // Between the radii of the ends.
    const PlanePoint outward = arm - bow.toCenter;
    const PlanePoint toEnd = bow.end - bow.start - bow.toCenter;
    const PlanePoint toStart{-bow.toCenter.x, -bow.toCenter.y};
    const double turn = bow.side > 0.0 ? 1.0 : -1.0;
    if (!(turn * Cross(toStart, outward) > 0.0 && turn * Cross(outward, toEnd) > 0.0)) return false;
    return AddCut(piece, node);
}

// The points of a circle on a line are the roots of a square equation along the line, those of two circles lie on their
// radical line. All is taken from the start of the arc, not from its centre, which may be far away.
bool BorderNoding::FindBowCrossings(std::uint32_t i, std::uint32_t j) {
    const Bow& a = bows[i];
    const Bow& b = bows[j];
    // In the order of the nodes, as for segments.
    const bool isFirstArc = a.isCurved && (!b.isCurved || !IsLower(EndsOf(pieces[j]), EndsOf(pieces[i])));
    const Bow& arc = isFirstArc ? a : b;
    const Bow& other = isFirstArc ? b : a;
    PlanePoint from = other.start - arc.start;
    PlanePoint along = other.end - other.start;
    if (other.isCurved) {
        const PlanePoint apart{from.x + other.toCenter.x - arc.toCenter.x, from.y + other.toCenter.y - arc.toCenter.y};
        const double square = Square(apart);
        if (!(square > 0.0)) return false;
        const double level = 0.5 * (Square(from) + 2.0 * Dot(from, other.toCenter)) / square;
        from = {apart.x * level, apart.y * level};
        along = {-apart.y, apart.x};
    }
    const double square = Square(along);
    const double linear = Dot(along, from - arc.toCenter);
    const double constant = Square(from) - 2.0 * Dot(from, arc.toCenter);
    const double discriminant = linear * linear - square * constant;
    if (!(discriminant > 0.0)) return false;
    const double sum = -(linear + std::copysign(std::sqrt(discriminant), linear));
    bool found = false;
    for (const double t : {sum / square, constant / sum}) {
        const PlanePoint at{arc.start.x + from.x + along.x * t, arc.start.y + from.y + along.y * t};
        if (!std::isfinite(at.x) || !std::isfinite(at.y) || !IsBetweenEnds(arc, at) || !IsBetweenEnds(other, at))
            continue;
        const BorderPiece& p = pieces[i];
        const BorderPiece& q = pieces[j];
        bool isCommon = false;  // a node of both: they meet there anyway
        for (const std::uint32_t node : {p.from, p.to}) {
            isCommon = isCommon || ((node == q.from || node == q.to) && IsNode(at, node));
        }
        if (isCommon) continue;
        crossings.push_back({i, j, at});
        found = true;
    }
    return found;
}

void BorderNoding::Halve(std::uint32_t piece) {
    if (bows[piece].isCurved) halves.push_back({piece, piece, bows[piece].middle});
}

// Pieces that are cut anyway are left to the next round.
void BorderNoding::PartBows() {
    if (unparted.empty()) return;
    std::vector<char> isCut(pieces.size(), 0);
    for (const Cut& cut : cuts) isCut[cut.piece] = 1;
    for (const auto& [i, j] : unparted) {
        if (isCut[i] == 0 && isCut[j] == 0) Part(i, j);
    }
    unparted.clear();
}

// Halves the longer one of two pieces, and goes on with the parts until triangles are parted or these have become so
// many that the next round shall compare them with others too.
void BorderNoding::Part(std::uint32_t i, std::uint32_t j) {
    constexpr std::size_t mostPairs = 16;
    const auto sizeOf = [](const Bow& bow) { return bow.isCurved ? Square(bow.end - bow.start) : 0.0; };
    const auto halve = [this](std::uint32_t piece, const Bow& bow) -> std::array<Bow, 2> {
        halves.push_back({piece, piece, bow.middle});
        const PlanePoint& center = sources[pieces[piece].source].center;
        const bool isLeft = bow.side > 0.0;
        return {BowBetween(bow.start, bow.middle, center, isLeft), BowBetween(bow.middle, bow.end, center, isLeft)};
    };
    std::vector<std::pair<Bow, Bow>> open{{bows[i], bows[j]}};
    std::vector<std::pair<Bow, Bow>> next;
    next.reserve(mostPairs);
    for (; !open.empty() && open.size() <= mostPairs; open.swap(next)) {
        next.clear();
        for (const auto& [a, b] : open) {
            std::array<Bow, 2> parts{a};
            std::array<Bow, 2> others{b};
            const bool isHalved = sizeOf(a) >= sizeOf(b);
            const bool isOtherHalved = sizeOf(b) >= sizeOf(a);
            if (isHalved) parts = halve(i, a);
            if (isOtherHalved) others = halve(j, b);
            for (const Bow& part : std::span(parts).first(isHalved ? 2 : 1)) {
                for (const Bow& other : std::span(others).first(isOtherHalved ? 2 : 1)) {
                    if ((part.isCurved || other.isCurved) && !AreParted(part, other)) next.emplace_back(part, other);
                }
            }
        }
    }
}

// Of pieces with at most one node in common: whether a line along a side of one of the triangles (segments) parts them.
bool BorderNoding::AreParted(const Bow& a, const Bow& b) {
    const auto isEnd = [&b](const PlanePoint& p) {
        return (p.x == b.start.x && p.y == b.start.y) || (p.x == b.end.x && p.y == b.end.y);
    };
    const bool isStart = isEnd(a.start);
    if (isStart && isEnd(a.end)) return false;
    return isStart || isEnd(a.end) ? ArePartedAt(isStart ? a.start : a.end, a, b) : AreApart(a, b);
}

// Whether a line along a side of one of the triangles (segments) parts them. A triangle has its apex where its centre
// is not, by many roundings.
bool BorderNoding::AreApart(const Bow& a, const Bow& b) {
    const auto isParted = [](const Bow& p, const Bow& q) {
        const auto isLeftOf = [&q](const PlanePoint& from, const PlanePoint& to) {
            return ExactTurn(from, to, q.start) > 0.0 && ExactTurn(from, to, q.end) > 0.0 &&
                   (!q.isCurved || ExactTurn(from, to, q.apex) > 0.0);
        };
        if (!p.isCurved) return isLeftOf(p.start, p.end) || isLeftOf(p.end, p.start);
        const bool isLeft = p.side > 0.0;
        const PlanePoint& first = isLeft ? p.start : p.end;
        const PlanePoint& last = isLeft ? p.end : p.start;
        return isLeftOf(first, last) || isLeftOf(last, p.apex) || isLeftOf(p.apex, first);
    };
    return isParted(a, b) || isParted(b, a);
}

// Whether a line along a side of one of the triangles (segments) parts them but for the node that they share.
bool BorderNoding::ArePartedAt(const PlanePoint& node, const Bow& a, const Bow& b) {
    const auto isNode = [&node](const PlanePoint& p) { return p.x == node.x && p.y == node.y; };
    const auto isParted = [&](const Bow& p, const Bow& q) {
        const bool isFromStart = isNode(p.start);
        const PlanePoint& end = isFromStart ? p.end : p.start;
        const PlanePoint& otherEnd = isNode(q.start) ? q.end : q.start;
        const auto isBeyond = [&](const PlanePoint& to, bool isLeft) {
            const double sign = isLeft ? 1.0 : -1.0;
            return sign * ExactTurn(node, to, otherEnd) > 0.0 &&
                   (!q.isCurved || sign * ExactTurn(node, to, q.apex) > 0.0);
        };
        if (!p.isCurved) return isBeyond(end, true) || isBeyond(end, false);
        const bool isCenterLeft = (p.side > 0.0) == isFromStart;
        return isBeyond(end, isCenterLeft) || isBeyond(p.apex, !isCenterLeft);
    };
    return isParted(a, b) || isParted(b, a);
}

// By pieces, on each by the way along it.
void BorderNoding::SortCuts() {
    std::vector<std::uint32_t> ends(pieces.size() + 1, 0);
    for (const Cut& cut : cuts) ++ends[cut.piece + 1];
    for (std::size_t i = 1; i < ends.size(); ++i) ends[i] += ends[i - 1];
    std::vector<Cut> sorted(cuts.size());
    for (const Cut& cut : cuts) sorted[ends[cut.piece]++] = cut;
    cuts = std::move(sorted);
    std::size_t from = 0;
    for (const std::uint32_t end : ends) {
        if (end > from + 1) {
            std::sort(cuts.begin() + from, cuts.begin() + end, [this](const Cut& a, const Cut& b) {
                return a.along < b.along || (a.along == b.along && a.node != b.node && IsLower(a.node, b.node));
            });
        }
        from = end;
    }
}

// Parts of pieces whose crossings are clear are not compared again.
void BorderNoding::ApplyCuts(const std::vector<char>& areClear) {
    SortCuts();
    std::vector<BorderPiece> parts;
    std::vector<char> areFresh;
    std::vector<Bow> partBows;
    parts.reserve(pieces.size() + cuts.size());
    areFresh.reserve(pieces.size() + cuts.size());
    if (hasArcs) {
        partBows.reserve(pieces.size() + cuts.size());
        partsOf.clear();
        partsOf.reserve(pieces.size() + 1);
    }
    freshCount = 0;
    std::vector<std::uint32_t> chain;
    auto cut = cuts.begin();
    for (std::uint32_t i = 0; i < pieces.size(); ++i) {
        const BorderPiece& piece = pieces[i];
        if (hasArcs) partsOf.push_back(static_cast<std::uint32_t>(parts.size()));
        if (cut == cuts.end() || cut->piece != i) {
            parts.push_back(piece);
            areFresh.push_back(0);
            if (hasArcs) partBows.push_back(bows[i]);
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
            if (off < least || (off == least && IsLower(cut->node, nearest))) {
                least = off;
                nearest = cut->node;
            }
            append(cut->node);
        }
        append(piece.to);
        if (!isShorter) chain = {piece.from, nearest, piece.to};
        const bool isClear = isShorter && !areClear.empty() && areClear[i] != 0;
        for (std::size_t k = 1; k < chain.size(); ++k) {
            parts.push_back({chain[k - 1], chain[k], piece.source});
            areFresh.push_back(isClear ? 0 : 1);
            if (hasArcs) partBows.push_back(BowOf(parts.back()));
            freshCount += isClear ? 0 : 1;
        }
    }
    if (hasArcs) partsOf.push_back(static_cast<std::uint32_t>(parts.size()));
    cuts.clear();
    pieces = std::move(parts);
    isFresh = std::move(areFresh);
    bows = std::move(partBows);
}

}  // namespace Kalvio::Math::detail
