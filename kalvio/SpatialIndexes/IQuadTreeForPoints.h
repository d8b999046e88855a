#pragma once

#include "kalvio/Export.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Kalvio::Math {
class BoundingBox2D;
class Point2D;
class Point3D;
}  // namespace Kalvio::Math

namespace Kalvio::Math::SpatialIndexes {

/// Points with heights, found by circles in plan. A cell that holds more points than its capacity is quartered.
///
/// Any number of threads may search at once while none inserts.
class KALVIO_MATH_API IQuadTreeForPoints {
public:
    virtual ~IQuadTreeForPoints() = default;

    /// An empty index.
    /// @param nodeCapacity  points that a cell holds before it is quartered; 0 counts as 1. Points at one place share a
    ///                      cell, however many they are.
    /// @param box           where the points are expected; others are taken, too, but slow the searches down
    [[nodiscard]] static std::unique_ptr<IQuadTreeForPoints> Create(unsigned int nodeCapacity,
                                                                    const BoundingBox2D& box);

    /// @return false, and nothing changes, when x or y is not finite
    virtual bool Insert(const Point3D& point) = 0;
    /// Appends every point whose plan distance from the centre is at most the radius (closed, as `Point2D::Distance`
    /// computes it), in no particular order.
    /// @return number of points found; 0 for a negative radius or NaN
    virtual std::uint64_t Search(const Point2D& center, double radius, std::vector<Point3D>& points) const = 0;
    virtual std::uint64_t GetNrOfPoints() const = 0;

protected:
    IQuadTreeForPoints() = default;
    IQuadTreeForPoints(const IQuadTreeForPoints&) = default;
    IQuadTreeForPoints& operator=(const IQuadTreeForPoints&) = default;
};

}  // namespace Kalvio::Math::SpatialIndexes
