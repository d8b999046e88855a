#pragma once

#include <atomic>
#include <mutex>

namespace Kalvio::Math::detail {

/// A derived value that is built on first use, under a lock, and kept until its owner changes.
///
/// Any number of threads may call `Get` at once; the first builds, the others wait. `Invalidate` is a change of the
/// owner and needs exclusive access like every other change. A copy starts unbuilt: it is rebuilt from its own owner.
template <class T>
class Lazy {
public:
    Lazy() = default;
    Lazy(const Lazy&) noexcept : Lazy() {}
    Lazy(Lazy&& other) noexcept : Lazy() { other.Invalidate(); }  // the owner's data have gone
    Lazy& operator=(const Lazy&) noexcept {
        Invalidate();
        return *this;
    }
    Lazy& operator=(Lazy&& other) noexcept {
        Invalidate();
        other.Invalidate();
        return *this;
    }
    ~Lazy() = default;

    /// @return the value made by `build()`; the reference is valid until the next `Invalidate`
    template <class Build>
    const T& Get(Build&& build) const {
        if (!built.load(std::memory_order_acquire)) {
            const std::lock_guard<std::mutex> lock(mutex);
            if (!built.load(std::memory_order_relaxed)) {
                value = build();
                built.store(true, std::memory_order_release);
            }
        }
        return value;
    }

    void Invalidate() noexcept { built.store(false, std::memory_order_relaxed); }

private:
    mutable std::atomic<bool> built{false};
    mutable std::mutex mutex;
    mutable T value{};
};

}  // namespace Kalvio::Math::detail
