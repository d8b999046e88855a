#include "kalvio/queries/detail/ChainContacts.h"

#include "kalvio/core/detail/Lanes.h"
#include "kalvio/curves/detail/Chain.h"
#include "kalvio/polygons/detail/MergeChains.h"
#include "kalvio/polygons/detail/SegmentContact.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <numeric>
#include <tuple>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

// Contacts of one place reported by different pairs of segments are at most three tolerances apart along a chain: two
// for the feet of two vertices on each other's segments, and one for the point that was kept of several.
constexpr double leadsInto = 4.0;

/// Sets that grow together.
class JoinedSets {
public:
    explicit JoinedSets(std::size_t count) : parents(count) { std::iota(parents.begin(), parents.end(), 0U); }

    std::size_t Find(std::size_t i) {
        while (parents[i] != i) i = parents[i] = parents[parents[i]];
        return i;
    }
    /// The lower one stands for both.
    void Join(std::size_t i, std::size_t j) {
        i = Find(i);
        j = Find(j);
        parents[std::max(i, j)] = std::min(i, j);
    }

private:
    std::vector<std::size_t> parents;
};

/// Stable.
template <class Item, class Before>
void SortUnlessSorted(std::vector<Item>& items, const Before& isBefore) {
    if (!std::is_sorted(items.begin(), items.end(), isBefore)) std::stable_sort(items.begin(), items.end(), isBefore);
}

/// Sorts contacts by their start along the first chain, then by the rest of their stations. They are large: what is
/// sorted is the first of these numbers and where the contact was.
void SortByPlace(std::vector<ChainContact>& contacts) {
    using Entry = std::pair<double, std::size_t>;
    std::vector<Entry> order;
    order.reserve(contacts.size());
    for (std::size_t i = 0; i < contacts.size(); ++i) order.emplace_back(contacts[i].from.onFirst, i);
    const auto rest = [&contacts](const Entry& entry) {
        const ChainContact& contact = contacts[entry.second];
        return std::tie(contact.from.onSecond, contact.to.onFirst, contact.to.onSecond, contact.kind);
    };
    std::sort(order.begin(), order.end(), [&rest](const Entry& a, const Entry& b) {
        return a.first != b.first ? a.first < b.first : rest(a) < rest(b);
    });
    std::vector<ChainContact> sorted;
    sorted.reserve(contacts.size());
    for (const Entry& entry : order) sorted.push_back(contacts[entry.second]);
    contacts = std::move(sorted);
}

/// Which of the contacts, sorted by their start along the first chain, may lead into another: the others need no look.
std::vector<bool> FindCrowded(const std::vector<ChainContact>& contacts, const ChainExtent& first, double reach) {
    std::vector<bool> isCrowded(contacts.size(), false);
    std::size_t furthest = 0;  // of the contacts so far, the one that ends last
    for (std::size_t i = 0; i < contacts.size(); ++i) {
        if (i > 0 && contacts[i].from.onFirst <= contacts[furthest].to.onFirst + reach) {
            isCrowded[i] = isCrowded[furthest] = true;
        }
        if (contacts[i].to.onFirst >= contacts[furthest].to.onFirst) furthest = i;
        if (first.isClosed && (contacts[i].from.onFirst <= reach || contacts[i].to.onFirst >= first.length - reach)) {
            isCrowded[i] = true;
        }
    }
    return isCrowded;
}

/// How far two stations of a chain are apart, over its joint where it is closed.
double Apart(double a, double b, const ChainExtent& chain) {
    const double apart = std::abs(a - b);
    return chain.isClosed ? std::min(apart, std::abs(chain.length - apart)) : apart;
}

/// Calls visit(station) with the stations that a place has, seen from its neighbours: on a closed chain two at the
/// joint.
template <class Visit>
void ForEachStationOf(double station, const ChainExtent& chain, double reach, Visit&& visit) {
    visit(station);
    if (chain.isClosed && station <= reach) visit(station + chain.length);
    if (chain.isClosed && station >= chain.length - reach) visit(station - chain.length);
}

/// Places among which those near another one along both chains are found, over their joints too.
class NearPlaces {
public:
    NearPlaces(const ChainExtent& firstChain, const ChainExtent& secondChain, double distance)
        : first(firstChain), second(secondChain), reach(distance), cells(distance) {}

    void Add(const ChainPlace& place) {
        cells.Add(place.onFirst, place.onSecond, stations.size());
        stations.emplace_back(place.onFirst, place.onSecond);
    }
    /// Calls visit(number of the place, how far apart), some twice.
    template <class Visit>
    void ForEachNear(const ChainPlace& place, Visit&& visit) {
        ForEachStationOf(place.onFirst, first, reach, [&](double onFirst) {
            ForEachStationOf(place.onSecond, second, reach, [&](double onSecond) {
                cells.FindLowest(
                    onFirst, onSecond, [](std::size_t) { return false; },
                    [&](std::size_t i) {
                        const double apart =
                            std::max(std::abs(stations[i].first - onFirst), std::abs(stations[i].second - onSecond));
                        if (apart <= reach) visit(i, apart);
                        return false;
                    });
            });
        });
    }

private:
    const ChainExtent& first;
    const ChainExtent& second;
    double reach;
    ChainEnds cells;
    std::vector<std::pair<double, double>> stations;
};

/// Joins those of the crowded contacts of which an end of one is near an end of the other along both chains.
JoinedSets JoinContacts(const std::vector<ChainContact>& contacts, const std::vector<bool>& isCrowded,
                        const ChainExtent& first, const ChainExtent& second, double tolerance) {
    const double reach = leadsInto * tolerance;
    JoinedSets sets(contacts.size());
    NearPlaces ends(first, second, reach);
    std::vector<std::size_t> contactOf;
    const auto enter = [&](const ChainPlace& place, std::size_t contact) {
        bool isKnown = false;
        ends.ForEachNear(place, [&](std::size_t i, double apart) {
            sets.Join(contactOf[i], contact);
            isKnown = isKnown || apart <= tolerance;
        });
        if (isKnown) return;  // one end stands for all beside it
        ends.Add(place);
        contactOf.push_back(contact);
    };
    for (std::size_t i = 0; i < contacts.size(); ++i) {
        if (!isCrowded[i]) continue;
        enter(contacts[i].from, i);
        enter(contacts[i].to, i);
    }
    return sets;
}

/// Appends the ends of the parts of one chain that the contacts cover, seen along that chain.
/// @return whether they cover all of it
bool AppendOuterEnds(const std::vector<ChainContact>& contacts, double ChainPlace::*along, const ChainExtent& chain,
                     double reach, std::vector<ChainPlace>& places) {
    struct Part {
        const ChainPlace* from;
        const ChainPlace* to;
    };
    std::vector<Part> parts;
    for (const ChainContact& contact : contacts) {
        const bool isForward = contact.from.*along <= contact.to.*along;
        parts.push_back({isForward ? &contact.from : &contact.to, isForward ? &contact.to : &contact.from});
    }
    std::stable_sort(parts.begin(), parts.end(),
                     [along](const Part& a, const Part& b) { return a.from->*along < b.from->*along; });
    std::size_t last = 0;
    for (std::size_t i = 1; i < parts.size(); ++i) {
        if (parts[i].from->*along > parts[last].to->*along + reach) {
            parts[++last] = parts[i];
        } else if (parts[i].to->*along > parts[last].to->*along) {
            parts[last].to = parts[i].to;
        }
    }
    const bool reachesBoth = parts.front().from->*along <= reach && parts[last].to->*along >= chain.length - reach;
    const bool goesAround = chain.isClosed && reachesBoth;
    for (std::size_t i = 0; i <= last; ++i) {
        if (!goesAround || i > 0) places.push_back(*parts[i].from);
        if (!goesAround || i < last) places.push_back(*parts[i].to);
    }
    return reachesBoth && last == 0;
}

/// Contacts that lead into each other.
class JoinedContacts {
public:
    JoinedContacts(const ChainExtent& firstChain, const ChainExtent& secondChain, double nearness)
        : first(firstChain), second(secondChain), tolerance(nearness) {}

    void AppendPlaces(CommonPlaces& common) {
        std::vector<ChainPlace> places = FindCrossings();
        if (AreRun(places)) {
            places.clear();
            const double reach = leadsInto * tolerance;
            const bool coversFirst = AppendOuterEnds(contacts, &ChainPlace::onFirst, first, reach, places);
            const bool coversSecond = AppendOuterEnds(contacts, &ChainPlace::onSecond, second, reach, places);
            if (places.empty()) places.push_back(contacts.front().from);
            if (!coversFirst || !coversSecond) AppendTips(places);
            common.coversFirst = common.coversFirst || coversFirst;
            common.isSame = common.isSame || (coversFirst && coversSecond);
        } else if (places.empty()) {
            places.push_back(contacts.front().at);
        }
        std::vector<ChainPlace> distinct;
        for (const ChainPlace& place : places) AddDistinct(place, distinct);
        common.places.insert(common.places.end(), distinct.begin(), distinct.end());
    }

    std::vector<ChainContact> contacts;

private:
    // At most three: more are not told apart.
    std::vector<ChainPlace> FindCrossings() const {
        std::vector<ChainPlace> crossings;
        for (const ChainContact& contact : contacts) {
            if (contact.kind == ChainContact::Kind::Crossing) AddDistinct(contact.at, crossings);
            if (crossings.size() > 2) break;
        }
        return crossings;
    }

    /// Where both chains turn back on themselves, the stretch that they share ends though both run on. There contacts
    /// go all four ways: backwards and forwards along the first, and along the second.
    void AppendTips(std::vector<ChainPlace>& places) const {
        constexpr unsigned int allWays = 15;
        const auto isAlong = [](const ChainContact& c) { return c.kind == ChainContact::Kind::Along; };
        const auto runsAlike = [](const ChainContact& c) { return c.from.onSecond <= c.to.onSecond; };
        const auto isEither = [&](bool alike) {
            return std::any_of(contacts.begin(), contacts.end(),
                               [&](const ChainContact& c) { return isAlong(c) && runsAlike(c) == alike; });
        };
        if (!isEither(true) || !isEither(false)) return;
        NearPlaces ends(first, second, leadsInto * tolerance);
        std::vector<unsigned int> wayOf;
        for (const ChainContact& contact : contacts) {
            if (!isAlong(contact)) continue;
            ends.Add(contact.from);
            wayOf.push_back(runsAlike(contact) ? 1 : 2);
            ends.Add(contact.to);
            wayOf.push_back(runsAlike(contact) ? 4 : 8);
        }
        for (const ChainContact& contact : contacts) {
            if (!isAlong(contact) || !runsAlike(contact)) continue;
            unsigned int ways = 0;
            ends.ForEachNear(contact.to, [&](std::size_t i, double) { ways |= wayOf[i]; });
            if (ways == allWays) places.push_back(contact.to);
        }
    }

    bool AreRun(const std::vector<ChainPlace>& crossings) const {
        constexpr double longestTouch = 8.0;  // in tolerances
        if (crossings.size() > 2) return true;
        double low = contacts.front().from.onFirst;
        double high = low;
        for (const ChainContact& contact : contacts) {
            if (contact.kind == ChainContact::Kind::Along) return true;
            low = std::min(low, contact.from.onFirst);
            high = std::max(high, contact.to.onFirst);
        }
        return crossings.empty() && Apart(high, low, first) > longestTouch * tolerance;
    }

    void AddDistinct(const ChainPlace& place, std::vector<ChainPlace>& places) const {
        const bool isKnown = std::any_of(places.begin(), places.end(), [&](const ChainPlace& known) {
            return Apart(place.onFirst, known.onFirst, first) <= 2.0 * tolerance &&
                   Apart(place.onSecond, known.onSecond, second) <= 2.0 * tolerance;
        });
        if (!isKnown) places.push_back(place);
    }

    const ChainExtent& first;
    const ChainExtent& second;
    double tolerance;
};

/// Interleaves the bits of two numbers: the order of a Z curve.
std::uint32_t ZOrder(double x, double y) {
    const auto spread = [](double value) {
        auto bits = static_cast<std::uint32_t>(value > 0.0 ? std::min(value, 1.0) * 65535.0 : 0.0);
        bits = (bits | (bits << 8U)) & 0x00FF00FFU;
        bits = (bits | (bits << 4U)) & 0x0F0F0F0FU;
        bits = (bits | (bits << 2U)) & 0x33333333U;
        return (bits | (bits << 1U)) & 0x55555555U;
    };
    return spread(x) | (spread(y) << 1U);
}

}  // namespace

CommonPlaces GatherContacts(std::vector<ChainContact> contacts, const ChainExtent& first, const ChainExtent& second,
                            double tolerance) {
    std::erase_if(contacts, [](const ChainContact& contact) {
        const ChainPlace* const places[] = {&contact.from, &contact.to, &contact.at};
        return std::any_of(std::begin(places), std::end(places), [](const ChainPlace* place) {
            return !std::isfinite(place->onFirst) || !std::isfinite(place->onSecond);
        });
    });
    SortByPlace(contacts);
    const std::vector<bool> isCrowded = FindCrowded(contacts, first, leadsInto * tolerance);
    const bool areAlone = std::find(isCrowded.begin(), isCrowded.end(), true) == isCrowded.end();
    std::vector<std::pair<std::size_t, std::size_t>> order;  // set, contact
    order.reserve(contacts.size());
    if (areAlone) {
        for (std::size_t i = 0; i < contacts.size(); ++i) order.emplace_back(i, i);
    } else {
        JoinedSets sets = JoinContacts(contacts, isCrowded, first, second, tolerance);
        for (std::size_t i = 0; i < contacts.size(); ++i) order.emplace_back(sets.Find(i), i);
        std::sort(order.begin(), order.end());
    }

    CommonPlaces common;
    common.places.reserve(contacts.size());
    JoinedContacts joined(first, second, tolerance);
    for (std::size_t k = 0, end = 0; k < order.size(); k = end) {
        while (end < order.size() && order[end].first == order[k].first) ++end;
        const ChainContact& contact = contacts[order[k].second];
        if (end - k == 1 && contact.kind == ChainContact::Kind::Crossing) {
            common.places.push_back(contact.at);
            continue;
        }
        joined.contacts.clear();
        for (std::size_t i = k; i < end; ++i) joined.contacts.push_back(contacts[order[i].second]);
        joined.AppendPlaces(common);
    }
    SortUnlessSorted(common.places, [](const ChainPlace& a, const ChainPlace& b) { return a.onFirst < b.onFirst; });
    return common;
}

namespace {

/// An extent of which both coordinates are compared at once.
struct Box {
    Box() = default;
    explicit Box(const Extent& extent)
        : low(Lanes::Of(extent.minX, extent.minY)), high(Lanes::Of(extent.maxX, extent.maxY)) {}

    bool Meets(const Box& other) const { return ((low <= other.high) & (other.low <= high)).Bits() == 3; }

    Lanes low, high;
};

/// True when the ends of both segments surely lie further than `tolerance` from the line of the other, whatever the
/// rounding: where the segments cross, they meet there alone.
bool AreEndsAway(const SegmentSides& sides, const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2,
                 double tolerance) {
    constexpr double squaredRounding = 0x1p-80;
    const double a = (a2 - a1).NormSquared();
    const double b = (b2 - b1).NormSquared();
    const double squaredReach = 8.0 * tolerance * tolerance + squaredRounding * (a + b + (b1 - a1).NormSquared());
    const auto isAway = [squaredReach](double side, double length) {
        return side * side > squaredReach * length && side * side <= largestDouble;
    };
    return isAway(sides.b1Side, a) && isAway(sides.b2Side, a) && isAway(sides.a1Side, b) && isAway(sides.a2Side, b);
}

}  // namespace

bool FindCommon(const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2, double tolerance,
                ChainContact& contact) {
    const SegmentSides sides(a1, a2, b1, b2);
    const auto areBeyond = [](double u, double v, double limit) {
        return u * v > 0.0 && u * u > limit && v * v > limit;
    };
    const double squaredTolerance = tolerance * tolerance;
    if (areBeyond(sides.b1Side, sides.b2Side, squaredTolerance * (a2 - a1).NormSquared()) ||
        areBeyond(sides.a1Side, sides.a2Side, squaredTolerance * (b2 - b1).NormSquared())) {
        return false;
    }
    const auto placeOf = [](const SegmentContact& c) { return ChainPlace{c.point, c.onFirst, c.onSecond}; };
    const bool isCrossing = sides.AreCrossing();
    if (isCrossing && AreEndsAway(sides, a1, a2, b1, b2, tolerance)) {
        const ChainPlace at = placeOf(sides.Crossing(a1, a2));
        contact = {ChainContact::Kind::Crossing, at, at, at};
        return true;
    }
    bool found = false;
    SegmentContact first;
    SegmentContact last;
    ForEachTouchingEnd(a1, a2, b1, b2, tolerance, [&](const SegmentContact& end) {
        if (!found || end.onFirst < first.onFirst) first = end;
        if (!found || end.onFirst > last.onFirst) last = end;
        found = true;
    });
    if (!found && !isCrossing) return false;

    ChainContact result;
    if ((last.point - first.point).NormSquared() > 4.0 * squaredTolerance) {
        // Whether they cross on the way says nothing: noise decides.
        result.kind = ChainContact::Kind::Along;
        result.at = placeOf(first);
    } else if (isCrossing) {
        const SegmentContact crossing = sides.Crossing(a1, a2);
        if (!found || crossing.onFirst < first.onFirst) first = crossing;
        if (!found || crossing.onFirst > last.onFirst) last = crossing;
        result.kind = ChainContact::Kind::Crossing;
        result.at = placeOf(crossing);
    } else {
        result.at = placeOf(first);
    }
    result.from = placeOf(first);
    result.to = placeOf(last);
    contact = result;
    return true;
}

double ChainSet::Add(const std::vector<Point2D>& points, ChainSegments::Closing closing) {
    static const std::vector<Point2D> none;
    Chain chain{ChainSegments(points, closing), {0.0}, false};
    const std::size_t count = chain.segments.GetCount();
    chain.lengths.reserve(count + 1);
    double shortest = largestDouble;
    for (std::size_t i = 0; i < count; ++i) {
        const double length = chain.segments.GetStart(i).Distance(chain.segments.GetEnd(i));
        shortest = std::min(shortest, length);
        chain.lengths.push_back(chain.lengths.back() + length);
    }
    const double length = chain.lengths.back();
    if (length > tolerance && length <= largestDouble) {
        if (shortest <= tolerance) Reduce(chain, points, closing);
        chain.isClosed = closing == ChainSegments::Closing::Ring || points.front().IsEqualTo(points.back(), tolerance);
    } else {
        chain = {ChainSegments(none), {0.0}, false};
    }
    chains.push_back(std::move(chain));
    return length;
}

void ChainSet::Reduce(Chain& chain, const std::vector<Point2D>& points, ChainSegments::Closing closing) {
    std::vector<Point2D>& kept = reduced.emplace_back(points);
    std::vector<double> lengths;
    ReduceChain(kept, tolerance, [&](std::size_t i) { lengths.push_back(chain.lengths[i]); });
    if (kept.size() == 1) {
        kept.push_back(points.back());
        lengths.push_back(0.0);
    }
    // A chain keeps its end.
    kept.back() = points.back();
    lengths.back() = chain.lengths[points.size() - 1];
    if (closing == ChainSegments::Closing::Ring) lengths.push_back(chain.lengths.back());
    chain.lengths = std::move(lengths);
    chain.segments = ChainSegments(kept, closing);
}

ChainSet::Runs::Runs(const ChainSet& set) {
    constexpr std::size_t runSize = Runs::longest;
    constexpr std::size_t blockSize = 12;  // runs that stay together
    struct Block {
        std::size_t from;
        std::size_t to;
        Extent extent;
        std::uint32_t order = 0;
    };
    std::vector<Run> inOrder;
    std::vector<Extent> extentsInOrder;
    std::vector<Block> blocks;
    std::size_t most = 0;
    for (const Chain& chain : set.chains) most += chain.segments.GetCount() / runSize + 1;
    inOrder.reserve(most);
    extentsInOrder.reserve(most);
    Extent all;
    for (std::size_t i = 0; i < set.chains.size(); ++i) {
        const ChainSegments& segments = set.chains[i].segments;
        for (std::size_t from = 0; from < segments.GetCount(); from += runSize) {
            if (from % (runSize * blockSize) == 0) blocks.push_back({inOrder.size(), inOrder.size(), {}});
            inOrder.push_back({i, from, std::min(segments.GetCount(), from + runSize)});
            extentsInOrder.push_back(segments.GetExtent(from, inOrder.back().to));
            blocks.back().to = inOrder.size();
            blocks.back().extent.Add(extentsInOrder.back());
            all.Add(extentsInOrder.back());
        }
    }
    if (set.chains.size() < 2) {  // one chain is a good order already
        runs = std::move(inOrder);
        extents = std::move(extentsInOrder);
        return;
    }
    const auto place = [](double low, double high, double from, double to) {
        return ((low - from) + (high - from)) / (2.0 * (to - from));
    };
    for (Block& block : blocks) {
        block.order = ZOrder(place(block.extent.minX, block.extent.maxX, all.minX, all.maxX),
                             place(block.extent.minY, block.extent.maxY, all.minY, all.maxY));
    }
    std::stable_sort(blocks.begin(), blocks.end(), [](const Block& a, const Block& b) { return a.order < b.order; });
    runs.reserve(inOrder.size());
    extents.reserve(inOrder.size());
    for (const Block& block : blocks) {
        for (std::size_t i = block.from; i < block.to; ++i) {
            runs.push_back(inOrder[i]);
            extents.push_back(extentsInOrder[i]);
        }
    }
}

Extent ChainSet::Runs::GetExtent(std::size_t from, std::size_t to) const {
    Extent extent;
    for (std::size_t i = from; i < to; ++i) extent.Add(extents[i]);
    return extent;
}

void ChainSet::FindContacts(const ChainSet& first, const Run& run, const Extent& extent, const ChainSet& second,
                            const Run& otherRun, const Extent& otherExtent, std::vector<PairContact>& contacts) {
    const Chain& a = first.chains[run.chain];
    const Chain& b = second.chains[otherRun.chain];
    const Box reach(extent.Widened(first.tolerance));
    const Box otherReach(otherExtent.Widened(first.tolerance));
    struct Near {
        std::size_t segment;
        Box box;
    };
    std::array<Near, Runs::longest> near;
    std::size_t nearCount = 0;
    for (std::size_t j = otherRun.from; j < otherRun.to; ++j) {
        near[nearCount] = {j, Box(b.segments.GetExtent(j, j + 1))};
        nearCount += reach.Meets(near[nearCount].box) ? 1 : 0;
    }
    if (nearCount == 0) return;
    PairContact pair{run.chain, otherRun.chain, {}};
    for (std::size_t i = run.from; i < run.to; ++i) {
        const Extent segment = a.segments.GetExtent(i, i + 1);
        if (!Box(segment).Meets(otherReach)) continue;
        const Box widened(segment.Widened(first.tolerance));
        for (std::size_t k = 0; k < nearCount; ++k) {
            if (!widened.Meets(near[k].box)) continue;
            const std::size_t j = near[k].segment;
            if (!FindCommon(a.segments.GetStart(i), a.segments.GetEnd(i), b.segments.GetStart(j), b.segments.GetEnd(j),
                            first.tolerance, pair.contact)) {
                continue;
            }
            for (ChainPlace* place : {&pair.contact.from, &pair.contact.to, &pair.contact.at}) {
                place->onFirst = a.lengths[i] + (a.lengths[i + 1] - a.lengths[i]) * place->onFirst;
                place->onSecond = b.lengths[j] + (b.lengths[j + 1] - b.lengths[j]) * place->onSecond;
            }
            contacts.push_back(pair);
        }
    }
}

ChainSet::Common ChainSet::Gather(std::vector<PairContact> contacts, const ChainSet& first, const ChainSet& second) {
    struct Place {
        std::size_t chain;
        ChainPlace place;
    };
    const auto isBefore = [](const PairContact& a, const PairContact& b) {
        return std::tie(a.first, a.second) < std::tie(b.first, b.second);
    };
    if (!std::is_sorted(contacts.begin(), contacts.end(), isBefore)) {
        std::sort(contacts.begin(), contacts.end(), isBefore);  // what comes of a pair does not hang on their order
    }
    Common common;
    std::vector<Place> places;
    places.reserve(contacts.size());
    for (std::size_t k = 0; k < contacts.size();) {
        const std::size_t a = contacts[k].first;
        const std::size_t b = contacts[k].second;
        std::size_t end = k;
        while (end < contacts.size() && contacts[end].first == a && contacts[end].second == b) ++end;
        std::vector<ChainContact> ofPair;
        ofPair.reserve(end - k);
        for (; k < end; ++k) ofPair.push_back(contacts[k].contact);
        const CommonPlaces ofBoth =
            GatherContacts(std::move(ofPair), {first.chains[a].lengths.back(), first.chains[a].isClosed},
                           {second.chains[b].lengths.back(), second.chains[b].isClosed}, first.tolerance);
        for (const ChainPlace& place : ofBoth.places) places.push_back({a, place});
        common.pairsOfSame += ofBoth.isSame ? 1 : 0;
    }
    SortUnlessSorted(places, [](const Place& a, const Place& b) {
        return std::tie(a.chain, a.place.onFirst) < std::tie(b.chain, b.place.onFirst);
    });
    common.points.reserve(places.size());
    for (const Place& place : places) common.points.push_back(place.place.point);
    return common;
}

ChainSet::Common ChainSet::FindCommonWith(const ChainSet& other) const {
    const BoxHierarchy<Runs> boxes(*this);
    const BoxHierarchy<Runs> otherBoxes(other);
    std::vector<PairContact> contacts;
    boxes.ForEachPair(otherBoxes, tolerance, [&](std::size_t i, std::size_t j) {
        FindContacts(*this, boxes.runs[i], boxes.extents[i], other, otherBoxes.runs[j], otherBoxes.extents[j],
                     contacts);
        return false;
    });
    return Gather(std::move(contacts), *this, other);
}

ChainSet::Common ChainSet::FindCommonWithin() const {
    const BoxHierarchy<Runs> boxes(*this);
    std::vector<PairContact> contacts;
    boxes.ForEachPair(tolerance, [&](std::size_t i, std::size_t j) {
        if (boxes.runs[i].chain == boxes.runs[j].chain) return false;
        if (boxes.runs[i].chain > boxes.runs[j].chain) std::swap(i, j);
        FindContacts(*this, boxes.runs[i], boxes.extents[i], *this, boxes.runs[j], boxes.extents[j], contacts);
        return false;
    });
    return Gather(std::move(contacts), *this, *this);
}

void AppendDistinct(const std::vector<Point2D>& added, std::vector<Point2D>& points, std::size_t from,
                    double equality) {
    if (added.size() < 2 && points.size() == from) {
        points.insert(points.end(), added.begin(), added.end());
        return;
    }
    // Points alone in their column need no look at the others.
    struct Column {
        double x;
        std::size_t point;
    };
    std::vector<Column> columns;
    columns.reserve(points.size() - from + added.size());
    for (std::size_t i = from; i < points.size(); ++i) columns.push_back({points[i].GetX(), columns.size()});
    for (const Point2D& point : added) columns.push_back({point.GetX(), columns.size()});
    std::sort(columns.begin(), columns.end(), [](const Column& a, const Column& b) { return a.x < b.x; });
    std::vector<char> isAlone(columns.size(), 1);
    for (std::size_t i = 1; i < columns.size(); ++i) {
        const bool areApart = columns[i - 1].x < columns[i].x - equality && columns[i].x > columns[i - 1].x + equality;
        if (!areApart) isAlone[columns[i - 1].point] = isAlone[columns[i].point] = 0;
    }
    ChainEnds cells(equality);
    const auto enter = [&](const Point2D& point, std::size_t index) { cells.Add(point.GetX(), point.GetY(), index); };
    std::size_t place = 0;
    for (std::size_t i = from; i < points.size(); ++i) {
        if (isAlone[place++] == 0) enter(points[i], i);
    }
    for (const Point2D& point : added) {
        if (isAlone[place++] == 0) {
            const auto isEqual = [&](std::size_t i) { return points[i].IsEqualTo(point, equality); };
            const auto isForgotten = [](std::size_t) { return false; };
            if (cells.FindLowest(point.GetX(), point.GetY(), isForgotten, isEqual) != ChainEnds::none) continue;
            enter(point, points.size());
        }
        points.push_back(point);
    }
}

}  // namespace Kalvio::Math::detail
