#pragma once

#include <cstddef>
#include <memory>
#include <type_traits>

namespace Kalvio::Math::SpatialIndexes {
class ISpatialIndexData;
}

namespace Kalvio::Math::SpatialIndexes::detail {

/// Takes what a search finds, many items a call. It refers to the callable that it is made of.
struct ItemSink {
    void (*take)(void* context, ISpatialIndexData* const* items, std::size_t n);
    void* context;

    template <class Found>
    static ItemSink To(Found& found) {
        return {[](void* callable, ISpatialIndexData* const* items, std::size_t n) {
                    for (std::size_t i = 0; i < n; ++i) (*static_cast<Found*>(callable))(items[i]);
                },
                const_cast<void*>(static_cast<const void*>(std::addressof(found)))};
    }
};

}  // namespace Kalvio::Math::SpatialIndexes::detail
