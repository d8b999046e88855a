#pragma once

#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// Takes over temporaries for as long as any copy lives; what it answers refers to them.
class Kept {
public:
    template <class T>
    std::span<const T> TakeOne(T&& one) {
        auto taken = std::make_shared<const T>(std::move(one));
        const std::span<const T> seen(taken.get(), 1);
        owned = std::move(taken);
        return seen;
    }
    template <class T>
    std::span<const T> TakeAll(std::vector<T>&& many) {
        auto taken = std::make_shared<const std::vector<T>>(std::move(many));
        const std::span<const T> seen(*taken);
        owned = std::move(taken);
        return seen;
    }

private:
    std::shared_ptr<const void> owned;
};

}  // namespace Kalvio::Math::detail
