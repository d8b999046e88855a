#pragma once

#include "kalvio/core/IGeometry.h"
#include "kalvio/core/VecND.h"

#include <concepts>
#include <utility>
#include <vector>

namespace Kalvio::Math {

class BoundingBoxND;
class Point2D;
class Point3D;

/// Position in any dimension. Operations on two dimensions that differ give an empty result. Constructed as a `VecND`.
class KALVIO_MATH_API PointND final : public IGeometry {
public:
    PointND() = default;
    /// n coordinates, all 0.
    template <std::integral Count>
    explicit PointND(Count n) : coordinates(static_cast<unsigned int>(n), 0.0) {}
    explicit PointND(const std::vector<double>& values) : coordinates(values) {}
    /// From a point of two or three coordinates.
    template <std::same_as<Point2D> Plan>
    PointND(const Plan& p) : coordinates{p.GetX(), p.GetY()} {}
    template <std::same_as<Point3D> Space>
    PointND(const Space& p) : coordinates{p.GetX(), p.GetY(), p.GetZ()} {}

    MathTypes GetType() const override;
    /// Boxes of the first two (three) coordinates; missing ones are 0.
    BoundingBox2D GetBoundingBox2D() const override;
    BoundingBox3D GetBoundingBox3D() const override;
    BoundingBoxND GetBoundingBoxND() const;
    unsigned int GetDimension() const override { return static_cast<unsigned int>(coordinates.size()); }
    unsigned int GetTopologicalDimension() const override { return 0; }
    /// Comparable with a `PointND`, `Point2D` or `Point3D` of the same dimension.
    bool IsEqualTo(const IGeometry& other, double tolerance) const override;
    [[nodiscard]] PointND* Clone() const override;

    const std::vector<double>& GetCoordinates() const& { return coordinates; }
    std::vector<double> GetCoordinates() && { return std::move(coordinates); }
    void SetCoordinates(const std::vector<double>& values) { coordinates = values; }
    /// Unchecked.
    void SetCoordinate(unsigned int index, double value) { coordinates[index] = value; }
    /// New coordinates are 0.
    void SetDimension(unsigned int n) { coordinates.resize(n, 0.0); }
    /// Unchecked.
    const double& operator[](int index) const { return coordinates[static_cast<std::size_t>(index)]; }
    double& operator[](int index) { return coordinates[static_cast<std::size_t>(index)]; }

    /// Euclidean distance over all coordinates; 0 on different dimensions.
    double Distance(const PointND& other) const;
    /// Strict per-coordinate comparison; false on different dimensions.
    bool IsEqualTo(const PointND& other, double tolerance) const;

    /// Nothing changes on different dimensions.
    PointND& operator+=(const PointND& other);
    PointND& operator+=(const VecND& v);
    PointND& operator*=(double factor);
    /// Nothing changes for a divisor of 0 or NaN.
    PointND& operator/=(double divisor);

private:
    std::vector<double> coordinates;
};

KALVIO_MATH_API VecND operator-(const PointND& a, const PointND& b);
KALVIO_MATH_API PointND operator+(const PointND& p, const VecND& v);
KALVIO_MATH_API PointND operator-(const PointND& p, const VecND& v);
KALVIO_MATH_API PointND operator+(const PointND& a, const PointND& b);
KALVIO_MATH_API PointND operator*(PointND p, double factor);
KALVIO_MATH_API PointND operator*(double factor, PointND p);

}  // namespace Kalvio::Math
