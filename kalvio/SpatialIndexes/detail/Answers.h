#pragma once

#include "kalvio/SpatialIndexes/ISpatialIndexVisit.h"
#include "kalvio/SpatialIndexes/detail/ItemSink.h"
#include "kalvio/SpatialIndexes/detail/Queries.h"

#include <array>
#include <cstdint>
#include <list>

namespace Kalvio::Math::SpatialIndexes::detail {

/// What a search has found, on its way to a sink.
class Hits {
public:
    explicit Hits(const ItemSink& itemSink) : sink(itemSink) {}

    void operator()(ISpatialIndexData* item) { TakeIf(item, true); }
    void TakeIf(ISpatialIndexData* item, bool isHit) {
        items[held] = item;
        held += isHit ? 1 : 0;
        if (held == items.size()) Flush();
    }
    /// To be called at the end.
    void Flush() {
        sink.take(sink.context, items.data(), held);
        count += static_cast<int>(held);
        held = 0;
    }
    int GetCount() const { return count; }

private:
    ItemSink sink;
    std::array<ISpatialIndexData*, 128> items;
    std::size_t held = 0;
    int count = 0;
};

/// The searches of an index, from one: `walk(nodeQuery, itemQuery, hits)` hands over its hits. `where` is a point, or a
/// box and the overlap flag.
template <class Walk, class... Where>
int SinkAnswers(const Walk& walk, const ItemSink& sink, unsigned int dimension, const Where&... where) {
    Hits hits(sink);
    WithQueries(where..., dimension,
                [&](const auto& nodeQuery, const auto& itemQuery) { walk(nodeQuery, itemQuery, hits); });
    hits.Flush();
    return hits.GetCount();
}

template <class Walk, class... Where>
int VisitAnswers(const Walk& walk, const ISpatialIndexVisit& visitor, unsigned int dimension, const Where&... where) {
    const auto visit = [&visitor](ISpatialIndexData* item) { visitor.Visit(item); };
    return SinkAnswers(walk, ItemSink::To(visit), dimension, where...);
}

template <class Walk, class... Where>
std::uint64_t ListAnswers(const Walk& walk, std::list<ISpatialIndexData*>& items, unsigned int dimension,
                          const Where&... where) {
    const auto append = [&items](ISpatialIndexData* item) { items.push_back(item); };
    SinkAnswers(walk, ItemSink::To(append), dimension, where...);
    return items.size();
}

}  // namespace Kalvio::Math::SpatialIndexes::detail
