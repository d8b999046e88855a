#pragma once

#include <utility>

namespace Kalvio::Math::detail {

/// A number kept beside a container: once moved from it is 0, as the container is empty.
template <class Number>
class MovedNumber {
public:
    MovedNumber(Number value = 0) : number(value) {}
    MovedNumber(const MovedNumber&) = default;
    MovedNumber(MovedNumber&& other) noexcept : number(std::exchange(other.number, Number(0))) {}
    MovedNumber& operator=(const MovedNumber&) = default;
    MovedNumber& operator=(MovedNumber&& other) noexcept {
        number = std::exchange(other.number, Number(0));
        return *this;
    }
    ~MovedNumber() = default;
    operator Number() const { return number; }

private:
    Number number;
};

}  // namespace Kalvio::Math::detail
