#include "kalvio/core/VecND.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/Vec2D.h"
#include "kalvio/core/Vec3D.h"
#include "kalvio/core/detail/Coordinates.h"

#include <numeric>

namespace Kalvio::Math {

namespace {

constexpr double shortestNormalized = 0.005;  // a length

}  // namespace

MathTypes VecND::GetType() const { return MathTypes::VecND; }

double VecND::Norm() const { return std::sqrt(NormSquared()); }

double VecND::NormSquared() const { return detail::SquaredNorm(coordinates); }

double VecND::DotProduct(const VecND& other) const {
    if (coordinates.size() != other.coordinates.size()) return 0.0;
    return std::inner_product(coordinates.begin(), coordinates.end(), other.coordinates.begin(), 0.0);
}

VecND& VecND::Normalize() {
    const double length = Length();
    if (length > shortestNormalized) *this /= length;
    return *this;
}

bool VecND::IsEqualTo(const VecND& other, double tolerance) const {
    return detail::AreCoordinatesEqual(coordinates, other.coordinates, tolerance);
}

bool VecND::IsEqualTo(const IMathObject& other, double tolerance) const {
    return other.GetType() == MathTypes::VecND && IsEqualTo(static_cast<const VecND&>(other), tolerance);
}

VecND VecND::operator-() const { return *this * -1.0; }

VecND& VecND::operator+=(const VecND& other) {
    if (coordinates.size() == other.coordinates.size()) {
        coordinates = detail::SumOfCoordinates(coordinates, 1.0, other.coordinates);
    }
    return *this;
}

VecND& VecND::operator*=(double factor) {
    detail::Scale(coordinates, factor);
    return *this;
}

VecND& VecND::operator/=(double divisor) {
    detail::Divide(coordinates, divisor);
    return *this;
}

VecND operator+(const VecND& a, const VecND& b) {
    return VecND(detail::SumOfCoordinates(a.GetCoordinates(), 1.0, b.GetCoordinates()));
}

VecND operator-(const VecND& a, const VecND& b) {
    return VecND(detail::SumOfCoordinates(a.GetCoordinates(), -1.0, b.GetCoordinates()));
}

VecND operator*(VecND v, double factor) { return v *= factor; }

VecND operator*(double factor, VecND v) { return v *= factor; }

VecND operator/(VecND v, double divisor) { return v /= divisor; }

template <>
bool Geometry::AreEqual(const VecND& a, const VecND& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
