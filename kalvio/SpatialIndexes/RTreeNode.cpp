#include "kalvio/SpatialIndexes/RTreeNode.h"

#include "kalvio/SpatialIndexes/detail/OverlapGrowth.h"
#include "kalvio/SpatialIndexes/detail/Queries.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

// Guttman: R-trees, a dynamic index structure for spatial searching, 1984. Full nodes are cut across one axis as in
// Beckmann, Kriegel, Schneider, Seeger: The R*-tree, 1990; boxes are measured by the volume of the sphere around them,
// so that flat boxes also count.

namespace Kalvio::Math::SpatialIndexes {

using detail::FlatBox;
using detail::Lanes;

namespace {

constexpr unsigned int mostToDivide = RTreeNode::mostBranches + RTreeNode::fewestBranches - 1;

double SphereVolume(double squaredRadius, unsigned int dimension, double unitSphereVolume) {
    if (dimension == 2) return squaredRadius * unitSphereVolume;
    const double radius = std::sqrt(squaredRadius);
    if (dimension == 3) return radius * radius * radius * unitSphereVolume;
    return std::pow(radius, static_cast<double>(dimension)) * unitSphereVolume;
}

/// Volume of the sphere through the corners of a box.
double SphereVolume(const FlatBox& box, double unitSphereVolume) {
    double squaredRadius = 0.0;
    for (unsigned int axis = 0; axis < box.GetDimension(); ++axis) {
        const double half = 0.5 * (box.High(axis) - box.Low(axis));
        squaredRadius += half * half;
    }
    return SphereVolume(squaredRadius, box.GetDimension(), unitSphereVolume);
}

using Order = std::array<unsigned int, mostToDivide>;

/// The places of n numbers in ascending order, equal ones as they come; without branches on the numbers.
void Sort(const std::array<double, mostToDivide>& numbers, unsigned int n, Order& order) {
    Order rank{};
    for (unsigned int i = 0; i < n; ++i) {
        for (unsigned int j = i + 1; j < n; ++j) {
            const bool isAfter = numbers[j] < numbers[i];
            rank[i] += isAfter ? 1 : 0;
            rank[j] += isAfter ? 0 : 1;
        }
    }
    for (unsigned int i = 0; i < n; ++i) order[rank[i]] = i;
}

/// What the two sides of each cut of an order are worth, by the size of the first; axis by axis.
struct Cuts {
    std::array<double, mostToDivide> shared;  // squared radius of the sphere around; negative when they are apart
    std::array<double, mostToDivide> first;   // the same of a side
    std::array<double, mostToDivide> second;

    void Add(const std::array<double, mostToDivide>& lows, const std::array<double, mostToDivide>& highs,
             const Order& order, unsigned int n) {
        std::array<double, mostToDivide> lowAfter{};
        std::array<double, mostToDivide> highAfter{};
        double low = lows[order[n - 1]];
        double high = highs[order[n - 1]];
        for (unsigned int i = n; i-- > 0;) {
            lowAfter[i] = low = std::min(low, lows[order[i]]);
            highAfter[i] = high = std::max(high, highs[order[i]]);
        }
        low = lows[order[0]];
        high = highs[order[0]];
        for (unsigned int size = 1; size < n; ++size) {
            low = std::min(low, lows[order[size - 1]]);
            high = std::max(high, highs[order[size - 1]]);
            const double length = std::min(high, highAfter[size]) - std::max(low, lowAfter[size]);
            shared[size] = length > 0.0 && shared[size] >= 0.0 ? shared[size] + 0.25 * length * length : -1.0;
            const double half = 0.5 * (high - low);
            const double halfAfter = 0.5 * (highAfter[size] - lowAfter[size]);
            first[size] += half * half;
            second[size] += halfAfter * halfAfter;
        }
    }
};

}  // namespace

RTreeNode::RTreeNode(unsigned int nodeLevel, unsigned int dimension, detail::EntryBlock::Shelf* shelf)
    : level(nodeLevel), entries(nodeLevel == 0, dimension, mostBranches, shelf) {}

RTreeNode& RTreeNode::operator=(const RTreeNode& other) {
    if (this == &other) return *this;
    detail::NodeEntries<RTreeNode> copy(other.entries);  // first: the other node may lie below this one
    level = other.level;
    entries = std::move(copy);
    return *this;
}

RTreeNode::~RTreeNode() = default;

SpatialIndexNodeTypes RTreeNode::GetType() const { return SpatialIndexNodeTypes::RTreeNode; }

std::unique_ptr<RTreeNode> RTreeNode::Insert(Branch& branch, const FlatBox& box, double unitSphereVolume) {
    if (level == 0) return Add(std::move(branch), unitSphereVolume);
    const unsigned int i = ChooseBranch(box, unitSphereVolume);
    entries.FetchChild(i);
    RTreeNode& child = entries.Child(i);
    std::unique_ptr<RTreeNode> sibling = child.Insert(branch, box, unitSphereVolume);
    if (sibling != nullptr) {
        entries.SetBox(i, child.entries.Cover());
        const FlatBox siblingBox = sibling->entries.Cover();
        return Add({siblingBox, std::move(sibling), nullptr}, unitSphereVolume);
    }
    FlatBox cover = entries.GetBox(i);
    if (!cover.Contains(box)) {
        cover.Cover(box);
        entries.SetBox(i, cover);
    }
    return nullptr;
}

std::unique_ptr<RTreeNode> RTreeNode::Add(Branch branch, double unitSphereVolume) {
    if (GetNrOfBranches() < mostBranches) {
        entries.Append(std::move(branch));
        return nullptr;
    }
    std::vector<Branch> all = entries.TakeAll(1);
    all.push_back(std::move(branch));
    auto sibling = std::make_unique<RTreeNode>(level, entries.Boxes().GetDimension());
    Divide(all, *sibling, unitSphereVolume);
    return sibling;
}

bool RTreeNode::Remove(const FlatBox& box, const ISpatialIndexData* item, double unitSphereVolume) {
    if (level == 0) {
        for (unsigned int i = 0; i < GetNrOfBranches(); ++i) {
            if (entries.Item(i) != item) continue;
            entries.Erase(i);
            return true;
        }
        return false;
    }
    std::uint64_t on = entries.Boxes().Match(detail::CoverQuery{box}, 0, GetNrOfBranches());
    for (std::uint64_t ahead = on; ahead != 0; ahead &= ahead - 1) {
        entries.FetchChild(static_cast<unsigned int>(std::countr_zero(ahead)));
    }
    for (; on != 0; on &= on - 1) {
        const auto i = static_cast<unsigned int>(std::countr_zero(on));
        RTreeNode& child = entries.Child(i);
        if (!child.Remove(box, item, unitSphereVolume)) continue;
        if (!entries.GetBox(i).HoldsInside(box)) entries.SetBox(i, child.entries.Cover());
        if (child.GetNrOfBranches() < fewestBranches) Refill(i, unitSphereVolume);
        return true;
    }
    return false;
}

void RTreeNode::Refill(unsigned int i, double unitSphereVolume) {
    unsigned int nearest = i;
    double leastGrowth = std::numeric_limits<double>::infinity();
    for (unsigned int j = 0; j < GetNrOfBranches(); ++j) {
        if (j == i) continue;
        FlatBox both = entries.GetBox(j);
        const double volume = SphereVolume(both, unitSphereVolume);
        both.Cover(entries.GetBox(i));
        const double growth = SphereVolume(both, unitSphereVolume) - volume;
        if (nearest != i && !(growth < leastGrowth)) continue;
        nearest = j;
        leastGrowth = growth;
    }
    RTreeNode& from = entries.Child(i);
    RTreeNode& to = entries.Child(nearest);
    std::vector<Branch> moved = from.entries.TakeAll();
    if (to.GetNrOfBranches() + moved.size() > mostBranches) {
        std::vector<Branch> all = to.entries.TakeAll(static_cast<unsigned int>(moved.size()));
        std::move(moved.begin(), moved.end(), std::back_inserter(all));
        to.Divide(all, from, unitSphereVolume);
        entries.SetBox(i, from.entries.Cover());
    } else {
        for (Branch& branch : moved) to.entries.Append(std::move(branch));
    }
    entries.SetBox(nearest, to.entries.Cover());
    if (from.GetNrOfBranches() == 0) entries.TakeChild(i);
}

unsigned int RTreeNode::ChooseBranch(const FlatBox& box, double unitSphereVolume) const {
    const unsigned int n = GetNrOfBranches();
    const detail::BoxPairs boxes = entries.Boxes();
    FlatBox added(boxes.GetDimension());
    added.Cover(box);
    std::array<double, mostBranches> radii;  // squared, of the branches
    std::array<double, mostBranches> grown;  // of the branches with the box
    for (unsigned int pair = 0; 2 * pair < n; ++pair) {
        Lanes radius = Lanes::Repeat(0.0);
        Lanes widened = radius;
        for (unsigned int axis = 0; axis < boxes.GetDimension(); ++axis) {
            const Lanes low = boxes.Lows(axis, pair);
            const Lanes high = boxes.Highs(axis, pair);
            const Lanes half = Lanes::Repeat(0.5) * (high - low);
            const Lanes least = Min(Min(low, high), Lanes::Repeat(added.Low(axis)));
            const Lanes most = Max(Max(low, high), Lanes::Repeat(added.High(axis)));
            const Lanes wide = Lanes::Repeat(0.5) * (most - least);
            radius = radius + half * half;
            widened = widened + wide * wide;
        }
        Store(radius, radii.data() + std::size_t{2} * pair);
        Store(widened, grown.data() + std::size_t{2} * pair);
    }
    // The least growth of overlap wins, of equal ones the least growth, then the smallest. No growth of overlap cannot
    // be beaten: mostly the branch that grows least settles it.
    struct Rank {
        double growth;
        double volume;
        bool operator<(const Rank& other) const {
            return growth < other.growth || (growth == other.growth && volume < other.volume);
        }
    };
    std::array<Rank, mostBranches> ranks;
    for (unsigned int i = 0; i < n; ++i) {
        const double volume = SphereVolume(radii[i], boxes.GetDimension(), unitSphereVolume);
        const double widened = SphereVolume(grown[i], boxes.GetDimension(), unitSphereVolume);
        ranks[i] = {detail::Ranked(widened - volume), volume};
    }
    auto best = static_cast<unsigned int>(std::min_element(ranks.begin(), ranks.begin() + n) - ranks.begin());
    double least = detail::OverlapGrowth(boxes, n, best, added, std::numeric_limits<double>::infinity());
    if (least == 0.0) return best;
    const unsigned int first = best;
    for (unsigned int i = 0; i < n; ++i) {
        if (i == first || (least == 0.0 && ranks[best] < ranks[i])) continue;
        const double growth = detail::OverlapGrowth(boxes, n, i, added, least);
        if (!(growth < least || (growth == least && ranks[i] < ranks[best]))) continue;
        best = i;
        least = growth;
    }
    return best;
}

void RTreeNode::Divide(std::vector<Branch>& all, RTreeNode& sibling, double unitSphereVolume) {
    const auto n = static_cast<unsigned int>(all.size());
    const unsigned int dimension = entries.Boxes().GetDimension();
    Order best{};
    unsigned int bestSize = 0;  // of the first group
    double leastShared = 0.0;
    double leastVolume = 0.0;
    std::array<double, mostToDivide> lows{};
    std::array<double, mostToDivide> highs{};
    const auto read = [&](unsigned int axis) {
        for (unsigned int i = 0; i < n; ++i) {
            lows[i] = std::min(all[i].box.Low(axis), all[i].box.High(axis));
            highs[i] = std::max(all[i].box.Low(axis), all[i].box.High(axis));
        }
    };
    Order order{};
    for (unsigned int axis = 0; axis < dimension; ++axis) {
        for (const bool byLow : {true, false}) {
            read(axis);
            Sort(byLow ? lows : highs, n, order);
            Cuts cuts;
            cuts.shared.fill(0.0);
            cuts.first.fill(0.0);
            cuts.second.fill(0.0);
            for (unsigned int other = 0; other < dimension; ++other) {
                read(other);
                cuts.Add(lows, highs, order, n);
            }
            for (unsigned int size = fewestBranches; size + fewestBranches <= n; ++size) {
                double volume = SphereVolume(cuts.first[size], dimension, unitSphereVolume) +
                                SphereVolume(cuts.second[size], dimension, unitSphereVolume);
                if (volume != volume) volume = std::numeric_limits<double>::infinity();  // bounds at infinity
                const double shared =
                    cuts.shared[size] < 0.0 ? 0.0 : SphereVolume(cuts.shared[size], dimension, unitSphereVolume);
                if (bestSize > 0 && !(shared < leastShared || (shared == leastShared && volume < leastVolume)))
                    continue;
                best = order;
                bestSize = size;
                leastShared = shared;
                leastVolume = volume;
            }
        }
    }
    for (unsigned int i = 0; i < n; ++i) {
        (i < bestSize ? *this : sibling).entries.Append(std::move(all[best[i]]));
    }
}

}  // namespace Kalvio::Math::SpatialIndexes
