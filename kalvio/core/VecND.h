#pragma once

#include "kalvio/core/IMathObject.h"

#include <concepts>
#include <utility>
#include <vector>

namespace Kalvio::Math {

class Vec2D;
class Vec3D;

/// Free vector of any dimension. Operations on two vectors of different dimension give an empty vector or 0.
///
/// `VecND({1.0, 2.0})` has these coordinates, `VecND(2)` as many: constructors from other than lists are templates,
/// which braces do not match.
class KALVIO_MATH_API VecND final : public IMathObject {
public:
    VecND() = default;
    /// n coordinates, all 0.
    template <std::integral Count>
    explicit VecND(Count n) : coordinates(static_cast<unsigned int>(n), 0.0) {}
    explicit VecND(const std::vector<double>& values) : coordinates(values) {}
    /// From a vector of two or three coordinates.
    template <std::same_as<Vec2D> Plan>
    VecND(const Plan& v) : coordinates{v.GetX(), v.GetY()} {}
    template <std::same_as<Vec3D> Space>
    VecND(const Space& v) : coordinates{v.GetX(), v.GetY(), v.GetZ()} {}

    MathTypes GetType() const override;

    const std::vector<double>& GetCoordinates() const& { return coordinates; }
    std::vector<double> GetCoordinates() && { return std::move(coordinates); }
    void SetCoordinates(const std::vector<double>& values) { coordinates = values; }
    unsigned int GetDimension() const { return static_cast<unsigned int>(coordinates.size()); }
    /// New coordinates are 0.
    void SetDimension(unsigned int n) { coordinates.resize(n, 0.0); }
    /// Unchecked.
    const double& operator[](int index) const { return coordinates[static_cast<std::size_t>(index)]; }
    double& operator[](int index) { return coordinates[static_cast<std::size_t>(index)]; }

    double Length() const { return Norm(); }
    double Norm() const;
    double NormSquared() const;
    /// 0 on different dimensions.
    double DotProduct(const VecND& other) const;
    /// Divides by the length when it is greater than 0.005: a threshold of this class alone.
    VecND& Normalize();

    /// Strict per-coordinate comparison; false on different dimensions.
    bool IsEqualTo(const VecND& other, double tolerance) const;
    /// The same with a `VecND`; false for any other object.
    bool IsEqualTo(const IMathObject& other, double tolerance) const;

    VecND operator-() const;
    /// Nothing changes on different dimensions.
    VecND& operator+=(const VecND& other);
    VecND& operator*=(double factor);
    /// Nothing changes for a divisor of 0 or NaN.
    VecND& operator/=(double divisor);

private:
    std::vector<double> coordinates;
};

KALVIO_MATH_API VecND operator+(const VecND& a, const VecND& b);
KALVIO_MATH_API VecND operator-(const VecND& a, const VecND& b);
KALVIO_MATH_API VecND operator*(VecND v, double factor);
KALVIO_MATH_API VecND operator*(double factor, VecND v);
KALVIO_MATH_API VecND operator/(VecND v, double divisor);

}  // namespace Kalvio::Math
