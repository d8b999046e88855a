#include "kalvio/polygons/detail/ExactPredicates.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace Kalvio::Math::detail {

namespace {

// The value of a sum or product and its rounding error, exactly.
struct Exact {
    double value;
    double error;
};

Exact SumOf(double a, double b) {
    const double sum = a + b;
    const double part = sum - a;
    return {sum, (a - (sum - part)) + (b - part)};
}

Exact ProductOf(double a, double b) {
    const double product = a * b;
    return {product, std::fma(a, b, -product)};
}

// A sum of doubles that do not overlap, in ascending magnitude, without zeros.
template <std::size_t Capacity>
class Expansion {
public:
    Expansion() = default;
    explicit Expansion(const Exact& pair) {
        Push(pair.error);
        Push(pair.value);
    }

    void Push(double value) {
        if (value != 0.0) parts[size++] = value;
    }
    std::size_t GetSize() const { return size; }
    double operator[](std::size_t i) const { return parts[i]; }
    double Estimate() const {
        double sum = 0.0;
        for (std::size_t i = 0; i < size; ++i) sum += parts[i];
        return sum;
    }

private:
    std::array<double, Capacity> parts;
    std::size_t size = 0;
};

// Fast-Expansion-Sum: the parts of both by magnitude, added up from the smallest.
template <std::size_t Result, std::size_t N, std::size_t M>
void Add(const Expansion<N>& e, const Expansion<M>& f, Expansion<Result>& sum) {
    sum = {};
    std::size_t i = 0;
    std::size_t j = 0;
    const auto take = [&] {
        const bool isFirst = j == f.GetSize() || (i < e.GetSize() && std::abs(e[i]) < std::abs(f[j]));
        return isFirst ? e[i++] : f[j++];
    };
    const std::size_t count = e.GetSize() + f.GetSize();
    if (count == 0) return;
    double carry = take();
    for (std::size_t k = 1; k < count; ++k) {
        const Exact next = SumOf(carry, take());
        sum.Push(next.error);
        carry = next.value;
    }
    sum.Push(carry);
}

template <std::size_t N, std::size_t M>
Expansion<N + M> operator+(const Expansion<N>& e, const Expansion<M>& f) {
    Expansion<N + M> sum;
    Add(e, f, sum);
    return sum;
}

template <std::size_t N>
Expansion<2 * N> operator*(const Expansion<N>& e, double factor) {
    Expansion<2 * N> product;
    if (e.GetSize() == 0) return product;
    const Exact first = ProductOf(e[0], factor);
    product.Push(first.error);
    double carry = first.value;
    for (std::size_t i = 1; i < e.GetSize(); ++i) {
        const Exact part = ProductOf(e[i], factor);
        const Exact low = SumOf(carry, part.error);
        const Exact high = SumOf(part.value, low.value);
        product.Push(low.error);
        product.Push(high.error);
        carry = high.value;
    }
    product.Push(carry);
    return product;
}

template <std::size_t N, std::size_t M>
Expansion<2 * N * M> operator*(const Expansion<N>& e, const Expansion<M>& f) {
    std::array<Expansion<2 * N * M>, 2> sums;
    for (std::size_t i = 0; i < f.GetSize(); ++i) Add(sums[i % 2], e * f[i], sums[(i + 1) % 2]);
    return sums[f.GetSize() % 2];
}

// The difference of two coordinates, as a whole.
Expansion<2> Difference(double a, double b) { return Expansion<2>(SumOf(a, -b)); }

template <std::size_t N>
Expansion<N> operator-(const Expansion<N>& e) {
    Expansion<N> negative;
    for (std::size_t i = 0; i < e.GetSize(); ++i) negative.Push(-e[i]);
    return negative;
}

// The in-circle determinant of differences that are single numbers or expansions.
template <class X>
double Determinant(const X& ux, const X& uy, const X& vx, const X& vy, const X& wx, const X& wy) {
    const auto lifted = [](const X& x, const X& y, const X& px, const X& py, const X& qx, const X& qy) {
        return (x * x + y * y) * (px * qy + -(qx * py));
    };
    return (lifted(ux, uy, vx, vy, wx, wy) + lifted(vx, vy, wx, wy, ux, uy) + lifted(wx, wy, ux, uy, vx, vy))
        .Estimate();
}

// A difference without a tail, as an operand of Determinant.
struct Single {
    double value;
    Expansion<2> operator*(const Single& other) const { return Expansion<2>(ProductOf(value, other.value)); }
};

// Whether the in-circle determinant of these differences is computed without rounding: all are multiples of one power
// of two, and below 2^12 times it. That holds between the nodes of most grids.
bool IsExactDeterminant(const std::array<double, 6>& differences) {
    double largest = 0.0;
    for (const double d : differences) largest = std::max(largest, std::abs(d));
    if (!(largest > 0.0)) return true;
    const double scale = std::ldexp(1.0, 11 - std::ilogb(largest));
    return std::all_of(differences.begin(), differences.end(), [scale](double d) {
        constexpr double rounding = 6755399441055744.0;  // 1.5 * 2^52: adding it rounds to an integer
        const double scaled = d * scale;
        return (scaled + rounding) - rounding == scaled;
    });
}

}  // namespace

double TurnByExpansion(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c) {
    const Expansion<2> ux = Difference(a.x, c.x);
    const Expansion<2> uy = Difference(a.y, c.y);
    const Expansion<2> vx = Difference(b.x, c.x);
    const Expansion<2> vy = Difference(b.y, c.y);
    return (ux * vy + -(uy * vx)).Estimate();
}

double InCircleByExpansion(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c, const PlanePoint& d) {
    const Exact ux = SumOf(a.x, -d.x);
    const Exact uy = SumOf(a.y, -d.y);
    const Exact vx = SumOf(b.x, -d.x);
    const Exact vy = SumOf(b.y, -d.y);
    const Exact wx = SumOf(c.x, -d.x);
    const Exact wy = SumOf(c.y, -d.y);
    const double uu = ux.value * ux.value + uy.value * uy.value;
    const double vv = vx.value * vx.value + vy.value * vy.value;
    const double ww = wx.value * wx.value + wy.value * wy.value;
    const double vw = vx.value * wy.value - wx.value * vy.value;
    const double wu = wx.value * uy.value - ux.value * wy.value;
    const double uv = ux.value * vy.value - vx.value * uy.value;
    const bool hasTails =
        ux.error != 0.0 || uy.error != 0.0 || vx.error != 0.0 || vy.error != 0.0 || wx.error != 0.0 || wy.error != 0.0;
    if (!hasTails && IsExactDeterminant({ux.value, uy.value, vx.value, vy.value, wx.value, wy.value})) {
        return uu * vw + vv * wu + ww * uv;
    }
    double determinant = Determinant(Single{ux.value}, Single{uy.value}, Single{vx.value}, Single{vy.value},
                                     Single{wx.value}, Single{wy.value});
    if (!hasTails) return determinant;

    // The tails to first order, and the bound of what is left out.
    constexpr double e = 1.1102230246251565e-16;
    const auto tailOf = [](double square, const Exact& x, const Exact& y, double cross, const Exact& px,
                           const Exact& py, const Exact& qx, const Exact& qy) {
        return square * ((px.value * qy.error + qy.value * px.error) - (py.value * qx.error + qx.value * py.error)) +
               2.0 * (x.value * x.error + y.value * y.error) * cross;
    };
    determinant += tailOf(uu, ux, uy, vw, vx, vy, wx, wy) + tailOf(vv, vx, vy, wu, wx, wy, ux, uy) +
                   tailOf(ww, wx, wy, uv, ux, uy, vx, vy);
    const double magnitude = uu * (std::abs(vx.value * wy.value) + std::abs(wx.value * vy.value)) +
                             vv * (std::abs(wx.value * uy.value) + std::abs(ux.value * wy.value)) +
                             ww * (std::abs(ux.value * vy.value) + std::abs(vx.value * uy.value));
    const double bound = (44.0 + 576.0 * e) * e * e * magnitude + (3.0 + 8.0 * e) * e * std::abs(determinant);
    if (std::abs(determinant) > bound) return determinant;
    return Determinant(Expansion<2>(ux), Expansion<2>(uy), Expansion<2>(vx), Expansion<2>(vy), Expansion<2>(wx),
                       Expansion<2>(wy));
}

}  // namespace Kalvio::Math::detail
