#include "kalvio/SpatialIndexes/RTreeNode.h"

#include "kalvio/SpatialIndexes/detail/Queries.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

// Guttman: R-trees, a dynamic index structure for spatial searching, 1984, with the quadratic split; boxes are measured
// by the volume of the sphere around them, so that flat boxes also count.

namespace Kalvio::Math::SpatialIndexes {

using detail::FlatBox;
using detail::Lanes;

namespace {

constexpr unsigned int overflowing = RTreeNode::mostBranches + 1;

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

/// That around two boxes with their corners in order.
double UnionVolume(const FlatBox& a, const FlatBox& b, double unitSphereVolume) {
    constexpr double largest = std::numeric_limits<double>::max();
    double squaredRadius = 0.0;
    for (unsigned int axis = 0; axis < a.GetDimension(); ++axis) {
        const double low = std::min(std::min(a.Low(axis), a.High(axis)), std::min(b.Low(axis), b.High(axis)));
        const double high = std::max(std::max(a.Low(axis), a.High(axis)), std::max(b.Low(axis), b.High(axis)));
        const double half = 0.5 * (std::max(high, -largest) - std::min(low, largest));
        squaredRadius += half * half;
    }
    return SphereVolume(squaredRadius, a.GetDimension(), unitSphereVolume);
}

}  // namespace

RTreeNode::RTreeNode(unsigned int nodeLevel, unsigned int dimension)
    : level(nodeLevel), entries(nodeLevel == 0, dimension, overflowing) {}

RTreeNode& RTreeNode::operator=(const RTreeNode& other) {
    if (this == &other) return *this;
    detail::NodeEntries<RTreeNode> copy(other.entries);  // first: the other node may lie below this one
    level = other.level;
    entries = std::move(copy);
    return *this;
}

RTreeNode::~RTreeNode() = default;

SpatialIndexNodeTypes RTreeNode::GetType() const { return SpatialIndexNodeTypes::RTreeNode; }

std::unique_ptr<RTreeNode> RTreeNode::Insert(Branch& branch, const FlatBox& box, unsigned int branchLevel,
                                             double unitSphereVolume) {
    if (level == branchLevel) {
        entries.Append(std::move(branch));
    } else {
        const unsigned int i = ChooseBranch(box, unitSphereVolume);
        RTreeNode& child = entries.Child(i);
        std::unique_ptr<RTreeNode> sibling = child.Insert(branch, box, branchLevel, unitSphereVolume);
        if (sibling == nullptr) {
            FlatBox cover = entries.GetBox(i);
            if (!cover.Contains(box)) {
                cover.Cover(box);
                entries.SetBox(i, cover);
            }
        } else {
            entries.SetBox(i, child.entries.Cover());
            const FlatBox siblingBox = sibling->entries.Cover();
            entries.Append({siblingBox, std::move(sibling), nullptr});
        }
    }
    return GetNrOfBranches() > mostBranches ? Split(unitSphereVolume) : nullptr;
}

bool RTreeNode::Remove(const FlatBox& box, const ISpatialIndexData* item, std::vector<Orphan>& orphans) {
    if (level == 0) {
        for (unsigned int i = 0; i < GetNrOfBranches(); ++i) {
            if (entries.Item(i) != item) continue;
            entries.Erase(i);
            return true;
        }
        return false;
    }
    std::uint64_t on = entries.Boxes().Match(detail::OverlapQuery{box}, 0, GetNrOfBranches());
    for (; on != 0; on &= on - 1) {
        const auto i = static_cast<unsigned int>(std::countr_zero(on));
        RTreeNode& child = entries.Child(i);
        if (!child.Remove(box, item, orphans)) continue;
        if (child.GetNrOfBranches() >= fewestBranches) {
            entries.SetBox(i, child.entries.Cover());
            return true;
        }
        const std::unique_ptr<RTreeNode> emptied = entries.TakeChild(i);
        for (Branch& branch : emptied->entries.TakeAll()) orphans.push_back({std::move(branch), emptied->level});
        return true;
    }
    return false;
}

unsigned int RTreeNode::ChooseBranch(const FlatBox& box, double unitSphereVolume) const {
    const unsigned int n = GetNrOfBranches();
    const detail::BoxPairs boxes = entries.Boxes();
    FlatBox added(boxes.GetDimension());
    added.Cover(box);
    std::array<double, overflowing + 1> radii;  // squared, of the branches
    std::array<double, overflowing + 1> grown;  // of the branches with the box
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
    unsigned int best = 0;
    double leastGrowth = std::numeric_limits<double>::infinity();
    double leastVolume = leastGrowth;
    for (unsigned int i = 0; i < n; ++i) {
        const double volume = SphereVolume(radii[i], boxes.GetDimension(), unitSphereVolume);
        const double growth = SphereVolume(grown[i], boxes.GetDimension(), unitSphereVolume) - volume;
        if (growth < leastGrowth || (growth == leastGrowth && volume < leastVolume)) {
            best = i;
            leastGrowth = growth;
            leastVolume = volume;
        }
    }
    return best;
}

std::unique_ptr<RTreeNode> RTreeNode::Split(double unitSphereVolume) {
    const unsigned int dimension = entries.Boxes().GetDimension();
    std::vector<Branch> rest = entries.TakeAll();
    auto sibling = std::make_unique<RTreeNode>(level, dimension);

    // Seeds: the two branches that would waste most in one node.
    std::size_t seeds[]{0, 1};
    double mostWaste = -std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < rest.size(); ++i) {
        for (std::size_t j = i + 1; j < rest.size(); ++j) {
            const double waste = UnionVolume(rest[i].box, rest[j].box, unitSphereVolume) -
                                 SphereVolume(rest[i].box, unitSphereVolume) -
                                 SphereVolume(rest[j].box, unitSphereVolume);
            if (!(waste > mostWaste)) continue;
            mostWaste = waste;
            seeds[0] = i;
            seeds[1] = j;
        }
    }
    RTreeNode* const nodes[]{this, sibling.get()};
    FlatBox covers[]{FlatBox(dimension), FlatBox(dimension)};
    const auto give = [&](std::size_t i, unsigned int group) {
        covers[group].Cover(rest[i].box);
        nodes[group]->entries.Append(std::move(rest[i]));
        rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(i));
    };
    give(seeds[1], 1);  // the later first: the other keeps its place
    give(seeds[0], 0);

    while (!rest.empty()) {
        // Who needs all that is left to reach the fewest branches gets it.
        for (const unsigned int group : {0U, 1U}) {
            while (!rest.empty() && nodes[group]->GetNrOfBranches() + rest.size() <= fewestBranches) give(0, group);
        }
        if (rest.empty()) break;
        // The branch that prefers one group most clearly goes there; ties to the smaller volume, then to fewer
        // branches.
        std::size_t next = 0;
        double clearest = -1.0;
        double difference = 0.0;
        const double held[]{SphereVolume(covers[0], unitSphereVolume), SphereVolume(covers[1], unitSphereVolume)};
        for (std::size_t i = 0; i < rest.size(); ++i) {
            double growth[2];
            for (const unsigned int group : {0U, 1U}) {
                growth[group] = UnionVolume(covers[group], rest[i].box, unitSphereVolume) - held[group];
            }
            if (!(std::abs(growth[0] - growth[1]) > clearest)) continue;
            next = i;
            difference = growth[0] - growth[1];
            clearest = std::abs(difference);
        }
        if (difference == 0.0) difference = held[0] - held[1];
        const bool isSecondSmaller = nodes[1]->GetNrOfBranches() < nodes[0]->GetNrOfBranches();
        give(next, difference > 0.0 || (!(difference < 0.0) && isSecondSmaller) ? 1 : 0);
    }
    return sibling;
}

}  // namespace Kalvio::Math::SpatialIndexes
