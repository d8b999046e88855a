#pragma once

#include "kalvio/core/detail/Lanes.h"

namespace Kalvio::Math::detail {

/// Asks for a cache line that will be read soon.
inline void Prefetch([[maybe_unused]] const void* address) {
#ifdef KALVIO_LANES_SSE2
    _mm_prefetch(static_cast<const char*>(address), _MM_HINT_T0);
#endif
}

}  // namespace Kalvio::Math::detail
