#pragma once

#include <atomic>

namespace Kalvio::Math::detail {

/// Tells the first three questions from later ones: those pay for what a search prepares, a single question does not.
/// Any number of threads may ask at once; a copy, and what was changed, is asked anew.
class FewQuestions {
public:
    FewQuestions() = default;
    FewQuestions(const FewQuestions&) noexcept : FewQuestions() {}
    FewQuestions& operator=(const FewQuestions&) noexcept {
        Reset();
        return *this;
    }
    ~FewQuestions() = default;

    /// Counts a question. @return whether it is one of the first three
    bool Ask() const {
        return asked.load(std::memory_order_relaxed) < few && asked.fetch_add(1, std::memory_order_relaxed) < few;
    }
    /// Whether those have been asked.
    bool AreOver() const { return asked.load(std::memory_order_relaxed) >= few; }
    void Reset() noexcept { asked.store(0, std::memory_order_relaxed); }

private:
    static constexpr unsigned int few = 3;

    mutable std::atomic<unsigned int> asked{0};
};

}  // namespace Kalvio::Math::detail
