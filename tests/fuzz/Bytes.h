#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Vec2D.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace Kalvio::Math {

/// Turns a fuzzer's bytes into numbers, any bit pattern included; zeros once the bytes are used up.
class Bytes {
public:
    Bytes(const std::uint8_t* first, std::size_t count) : data(first), size(count) {}

    bool Empty() const { return size == 0; }
    template <class T>
    T Take() {
        T value{};
        const std::size_t count = size < sizeof(T) ? size : sizeof(T);
        if (count > 0) std::memcpy(&value, data, count);
        data += count;
        size -= count;
        return value;
    }
    double TakeDouble() { return Take<double>(); }
    Point2D TakePoint() {
        const double x = TakeDouble();
        return {x, TakeDouble()};
    }
    Vec2D TakeVector() {
        const double x = TakeDouble();
        return {x, TakeDouble()};
    }
    /// All that is left.
    std::vector<Point2D> TakePoints() {
        std::vector<Point2D> points;
        while (!Empty()) points.push_back(TakePoint());
        return points;
    }

private:
    const std::uint8_t* data;
    std::size_t size;
};

/// Ends the fuzzer's run when a law of the library is broken.
inline void Require(bool law) {
    if (!law) std::abort();
}

}  // namespace Kalvio::Math
