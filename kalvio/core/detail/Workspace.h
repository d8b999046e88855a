#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace Kalvio::Math::detail {

/// Room for `count` values, left unset: on the stack up to `Few` of them, allocated for more.
template <class Value, std::size_t Few>
class Workspace {
public:
    explicit Workspace(std::size_t count) {
        if (count > Few) onHeap.resize(count);
    }
    Value* Get() { return onHeap.empty() ? onStack.data() : onHeap.data(); }
    const Value* Get() const { return onHeap.empty() ? onStack.data() : onHeap.data(); }

private:
    std::array<Value, Few> onStack;
    std::vector<Value> onHeap;
};

}  // namespace Kalvio::Math::detail
