#pragma once

#include <compare>
#include <cstddef>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

namespace Kalvio::Math::detail {

/// Random-access iterator over what `owner[0]`, `owner[1]` ... give: references, or values made on the way. It refers
/// to the owner, not to its storage.
template <class Owner>
class IndexIterator {
public:
    using reference = decltype(std::declval<const Owner&>()[std::size_t{}]);
    using value_type = std::remove_cvref_t<reference>;
    using difference_type = std::ptrdiff_t;
    using iterator_concept = std::random_access_iterator_tag;
    using iterator_category = std::conditional_t<std::is_reference_v<reference>, std::random_access_iterator_tag,
                                                 std::input_iterator_tag>;  // values are no references

    IndexIterator() = default;
    IndexIterator(const Owner& of, std::size_t at) : owner(&of), index(static_cast<difference_type>(at)) {}

    reference operator*() const { return (*owner)[static_cast<std::size_t>(index)]; }
    auto operator->() const requires std::is_reference_v<reference> { return std::addressof(**this); }
    reference operator[](difference_type n) const { return *(*this + n); }

    IndexIterator& operator+=(difference_type n) {
        index += n;
        return *this;
    }
    IndexIterator& operator-=(difference_type n) { return *this += -n; }
    IndexIterator& operator++() { return *this += 1; }
    IndexIterator& operator--() { return *this -= 1; }
    IndexIterator operator++(int) { return (*this += 1) - 1; }
    IndexIterator operator--(int) { return (*this -= 1) + 1; }
    friend IndexIterator operator+(IndexIterator i, difference_type n) { return i += n; }
    friend IndexIterator operator+(difference_type n, IndexIterator i) { return i += n; }
    friend IndexIterator operator-(IndexIterator i, difference_type n) { return i -= n; }
    friend difference_type operator-(const IndexIterator& a, const IndexIterator& b) { return a.index - b.index; }
    friend bool operator==(const IndexIterator& a, const IndexIterator& b) { return a.index == b.index; }
    friend auto operator<=>(const IndexIterator& a, const IndexIterator& b) { return a.index <=> b.index; }

private:
    const Owner* owner = nullptr;
    difference_type index = 0;
};

}  // namespace Kalvio::Math::detail
