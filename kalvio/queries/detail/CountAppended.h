#include "kalvio/core/Tolerances.h"
#pragma once

#include <cstddef>
#include <vector>

namespace Kalvio::Math::detail {

/// The forms with a plain tolerance take it as the user tolerance, and answer how many items `form(tolerances)`
/// appends.
template <class Item, class Form>
int CountAppended(std::vector<Item>& out, double tolerance, Form&& form) {
    const std::size_t before = out.size();
    form(Tolerances(tolerance));
    return static_cast<int>(out.size() - before);
}

}  // namespace Kalvio::Math::detail
