#pragma once

#include "kalvio/core/BoundingBoxND.h"
#include "kalvio/core/detail/Constants.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace Kalvio::Math::SpatialIndexes::detail {

/// Box as plain numbers, without an allocation up to three axes: the working form of `BoundingBoxND` in the indexes.
///
/// It begins empty as by `BoundingBoxND::Reset`.
class FlatBox {
public:
    explicit FlatBox(unsigned int axes = 0) : dimension(axes) {
        if (dimension > localAxes) more.resize(std::size_t{2} * dimension);
        for (unsigned int axis = 0; axis < dimension; ++axis)
            Set(axis, Math::detail::largestDouble, -Math::detail::largestDouble);
    }
    /// A box sized to a dimension: further axes are dropped, missing ones are 0 ... 0. Bounds are kept as they are.
    FlatBox(const BoundingBoxND& box, unsigned int axes) : FlatBox(axes) {
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            const bool known = axis < box.GetDimension();
            Set(axis, known ? box.GetMin(axis) : 0.0, known ? box.GetMax(axis) : 0.0);
        }
    }

    /// A point with as many axes or more.
    FlatBox(const PointND& point, unsigned int axes) : FlatBox(axes) {
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            const double value = point[static_cast<int>(axis)];
            Set(axis, value, value);
        }
    }

    unsigned int GetDimension() const { return dimension; }
    double Low(unsigned int axis) const { return Values()[std::size_t{2} * axis]; }
    double High(unsigned int axis) const { return Values()[std::size_t{2} * axis + 1]; }
    void Set(unsigned int axis, double low, double high) {
        double* const values = Values() + std::size_t{2} * axis;
        values[0] = low;
        values[1] = high;
    }
    bool HasNaN() const {
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            if (!(Low(axis) <= High(axis) || Low(axis) > High(axis))) return true;
        }
        return false;
    }
    bool Intersects(const FlatBox& other) const {
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            if (!(other.Low(axis) <= High(axis) && Low(axis) <= other.High(axis))) return false;
        }
        return true;
    }
    bool Contains(const FlatBox& other) const {
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            if (!(Low(axis) <= other.Low(axis) && other.High(axis) <= High(axis))) return false;
        }
        return true;
    }
    /// The same, without touching the border.
    bool HoldsInside(const FlatBox& other) const {
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            if (!(Low(axis) < other.Low(axis) && other.High(axis) < High(axis))) return false;
        }
        return true;
    }

    /// Widens the box to hold both corners of another, in whatever order they are: what overlaps, or is inside, an
    /// inverted box also overlaps the cover of its corners, so covers may prune a search for boxes of every kind.
    void Cover(const FlatBox& other) {
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            Set(axis, (std::min)({Low(axis), other.Low(axis), other.High(axis)}),
                (std::max)({High(axis), other.Low(axis), other.High(axis)}));
        }
    }

    double Area() const {
        double area = 1.0;
        for (unsigned int axis = 0; axis < dimension; ++axis) area *= High(axis) - Low(axis);
        return area;
    }
    double EdgesLengthSum() const {
        double sum = 0.0;
        for (unsigned int axis = 0; axis < dimension; ++axis) sum += High(axis) - Low(axis);
        return sum;
    }

    BoundingBoxND ToBoundingBox() const {
        PointND low(dimension);
        PointND high(dimension);
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            low.SetCoordinate(axis, Low(axis));
            high.SetCoordinate(axis, High(axis));
        }
        return {low, high};
    }

private:
    static constexpr unsigned int localAxes = 3;

    const double* Values() const { return dimension <= localAxes ? local.data() : more.data(); }
    double* Values() { return dimension <= localAxes ? local.data() : more.data(); }

    std::array<double, std::size_t{2} * localAxes> local{};  // low and high, axis by axis
    std::vector<double> more;                                // the same when there are more axes
    unsigned int dimension;
};

/// Overlap of two boxes: their volume in common, 0 when disjoint.
inline double OverlapArea(const FlatBox& a, const FlatBox& b) {
    double area = 1.0;
    for (unsigned int axis = 0; axis < a.GetDimension(); ++axis) {
        const double low = a.Low(axis) > b.Low(axis) ? a.Low(axis) : b.Low(axis);
        const double high = a.High(axis) < b.High(axis) ? a.High(axis) : b.High(axis);
        if (!(low < high)) return 0.0;
        area *= high - low;
    }
    return area;
}

}  // namespace Kalvio::Math::SpatialIndexes::detail
