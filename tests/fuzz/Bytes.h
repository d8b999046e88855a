#pragma once

#include "kalvio/Math.h"
#include "kalvio/Print.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Kalvio::Math {

/// Turns a fuzzer's bytes into numbers; zeros once the bytes are used up. An odd first byte asks for any bit pattern,
/// an even one for multiples of 1/16 up to 2048, among which geometries meet by chance.
class Bytes {
public:
    Bytes(const std::uint8_t* first, std::size_t count) : data(first), size(count) {
        tame = Take<std::uint8_t>() % 2 == 0;
    }

    bool Empty() const { return size == 0; }
    bool Tame() const { return tame && !edged; }
    template <class T>
    T Take() {
        T value{};
        const std::size_t count = size < sizeof(T) ? size : sizeof(T);
        if (count > 0) std::memcpy(&value, data, count);
        data += count;
        size -= count;
        return value;
    }
    double TakeDouble() { return tame ? Take<std::int16_t>() / 16.0 : Take<double>(); }
    /// The same, now and then a number at the edge of what there is or one taken before; with such it is not tame.
    double TakeAnyDouble() {
        static constexpr double edges[] = {NAN, INFINITY, -INFINITY, 1e308, -1e308, 5e-324, 1e-300, -0.0, 0.0};
        const unsigned int kind = TakeCount(128);
        if (kind - 1 < std::size(edges)) return edged = true, edges[kind - 1];
        if (kind - 16 < std::size(earlier)) return earlier[kind - 16];
        return earlier[kind % std::size(earlier)] = TakeDouble();
    }
    Point2D TakePoint() { return {TakeDouble(), TakeDouble()}; }  // braces keep the order
    Vec2D TakeVector() { return {TakeDouble(), TakeDouble()}; }
    Point3D TakePoint3D() { return {TakePoint(), TakeDouble()}; }
    Vec3D TakeVector3D() { return TakePoint3D() - Point3D(); }
    /// Less than `bound`.
    unsigned int TakeCount(unsigned int bound) { return Take<std::uint8_t>() % bound; }
    template <class Enumeration>
    Enumeration TakeOne(unsigned int bound) {
        return static_cast<Enumeration>(TakeCount(bound));
    }
    /// Less than `bound` of what `take()` gives.
    template <class Take>
    auto TakeSome(unsigned int bound, Take&& take) {
        std::vector<decltype(take())> taken(TakeCount(bound));
        for (auto& each : taken) each = take();
        return taken;
    }
    /// An area, with a hole or without, valid or not.
    Polygon2D TakePolygon(unsigned int least, unsigned int bound) {
        const unsigned int corners = least + TakeCount(bound), holeCorners = TakeCount(6);
        Polygon2D polygon(TakePoints(corners));
        if (holeCorners > 0) polygon.AppendHoleBoundary(LineString2D(TakePoints(holeCorners)));
        return polygon;
    }
    /// At most so many; by default all that is left.
    std::vector<double> TakeDoubles(std::size_t most) { return TakeMany(most, &Bytes::TakeDouble); }
    std::vector<Point2D> TakePoints(std::size_t most = SIZE_MAX) { return TakeMany(most, &Bytes::TakePoint); }
    std::vector<Point3D> TakePoints3D(std::size_t most = SIZE_MAX) { return TakeMany(most, &Bytes::TakePoint3D); }

private:
    template <class T>
    std::vector<T> TakeMany(std::size_t most, T (Bytes::*take)()) {
        std::vector<T> taken;
        while (!Empty() && taken.size() < most) taken.push_back((this->*take)());
        return taken;
    }

    const std::uint8_t* data;
    std::size_t size;
    bool tame = false;
    bool edged = false;
    double earlier[4] = {};
};

/// Where a law of the library is broken.
struct BrokenLaw : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Ends the run of a fuzzer's input, and a fuzzer's run with it, when a law of the library is broken.
inline void Require(bool law, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (!law) throw BrokenLaw("broken law: " + std::string(file) + ':' + std::to_string(line));
}

/// What was computed so far, by file and line: a digest of all bits (FNV-1a), the same from every compiler.
inline std::map<std::pair<std::string_view, int>, std::uint64_t>& Digests() {
    static std::map<std::pair<std::string_view, int>, std::uint64_t> digests;
    return digests;
}
/// Of numbers, points, shapes of points, and lists of them.
template <class T>
void See(const T& seen, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if constexpr (std::is_arithmetic_v<T>) {
        const auto number = static_cast<double>(seen);
        std::uint64_t& digest = Digests()[{std::string_view(file).substr(std::string_view(file).rfind('/') + 1), line}];
        digest = (digest ^ (std::isnan(number) ? 1 : std::bit_cast<std::uint64_t>(number))) * 0x100000001b3U;
    } else if constexpr (requires { seen.GetPoints(); }) {
        See(seen.GetPoints(), file, line);
    } else if constexpr (requires { seen.begin(); }) {
        for (const auto& one : seen) See(one, file, line);
    } else {
        for (int axis = 0; axis < (
                                      requires { seen.GetZ(); } ? 3 : 2);
             ++axis)
            See(seen[axis], file, line);
    }
}
inline void See(std::initializer_list<double> numbers, const char* file = __builtin_FILE(),
                int line = __builtin_LINE()) {
    See<std::initializer_list<double>>(numbers, file, line);
}

/// The law that the number is the expected one, to the tolerance; sees the number.
inline void RequireNear(double number, double expected, double tolerance, const char* file = __builtin_FILE(),
                        int line = __builtin_LINE()) {
    See(number, file, line);
    if (std::abs(number - expected) <= tolerance) return;
    throw BrokenLaw("broken law: " + std::string(file) + ':' + std::to_string(line) + " of " +
                    ToString(VecND({number, expected, tolerance})));
}

/// What each fuzzer calls and requires for one input.
void FuzzAlignment(Bytes& bytes);
void FuzzArea(Bytes& bytes);
void FuzzCore(Bytes& bytes);
void FuzzElement(Bytes& bytes);
void FuzzGround(Bytes& bytes);
void FuzzIndex(Bytes& bytes);
void FuzzMatrix(Bytes& bytes);
void FuzzMesh(Bytes& bytes);
void FuzzPolygon(Bytes& bytes);
void FuzzQuery(Bytes& bytes);
void FuzzRing(Bytes& bytes);
void FuzzSimplification(Bytes& bytes);
void FuzzSpace(Bytes& bytes);
void FuzzStatistics(Bytes& bytes);
void FuzzWkt(Bytes& bytes);

}  // namespace Kalvio::Math
