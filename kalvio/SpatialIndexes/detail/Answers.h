#pragma once

#include "kalvio/SpatialIndexes/ISpatialIndexVisit.h"
#include "kalvio/SpatialIndexes/detail/Queries.h"

#include <cstdint>
#include <list>

namespace Kalvio::Math::SpatialIndexes::detail {

/// The four searches of an index, from one: `walk(nodeQuery, itemQuery, found)` calls `found(item)` per hit.
/// `where` is a point, or a box and the overlap flag.
template <class Walk, class... Where>
int VisitAnswers(const Walk& walk, const ISpatialIndexVisit& visitor, unsigned int dimension, const Where&... where) {
    int count = 0;
    WithQueries(where..., dimension, [&](const auto& nodeQuery, const auto& itemQuery) {
        auto found = [&](ISpatialIndexData* item) {
            visitor.Visit(item);
            ++count;
        };
        walk(nodeQuery, itemQuery, found);
    });
    return count;
}

template <class Walk, class... Where>
std::uint64_t ListAnswers(const Walk& walk, std::list<ISpatialIndexData*>& items, unsigned int dimension,
                          const Where&... where) {
    WithQueries(where..., dimension, [&](const auto& nodeQuery, const auto& itemQuery) {
        auto found = [&](ISpatialIndexData* item) { items.push_back(item); };
        walk(nodeQuery, itemQuery, found);
    });
    return items.size();
}

}  // namespace Kalvio::Math::SpatialIndexes::detail
