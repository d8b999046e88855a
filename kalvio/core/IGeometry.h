#pragma once

#include "kalvio/core/IMathObject.h"

#include <map>
#include <memory>
#include <vector>

namespace Kalvio::Math {

class BoundingBox2D;
class BoundingBox3D;
class Point2D;
class Tolerances;

/// A shape with a place in space.
///
/// Editing hooks that a class does not support keep the defaults below (nothing happens; false or null is returned), so
/// callers test the result. Concrete classes are told apart by `GetType`.
///
/// Ownership: every `IGeometry*` that `Clone`, `CloneAsReverse`, `Append` and the break operations hand out is a new
/// object owned by the caller, who deletes it.
class KALVIO_MATH_API IGeometry : public IMathObject {
public:
    constexpr IGeometry() = default;

    virtual BoundingBox2D GetBoundingBox2D() const = 0;
    virtual BoundingBox3D GetBoundingBox3D() const = 0;
    /// Number of coordinates of a point of this geometry: 2, 3 or N.
    virtual unsigned int GetDimension() const = 0;
    /// 0 for a point, 1 for a curve, 2 for a surface.
    virtual unsigned int GetTopologicalDimension() const = 0;
    /// True when the other geometry is of a comparable class and every coordinate agrees within the tolerance,
    /// strictly: exactly `tolerance` apart is different.
    virtual bool IsEqualTo(const IGeometry& other, double tolerance) const = 0;
    /// @return a copy owned by the caller, never null
    [[nodiscard]] virtual IGeometry* Clone() const = 0;
    /// Turns the direction of travel. Default: nothing.
    virtual void Reverse();
    /// Length of a curve. Default: 0.
    virtual double GetLength() const;
    /// Cuts this geometry at those of the points that lie on it.
    /// @param out         receives the pieces, owned by the caller
    /// @param modifyThis  true: this geometry becomes the first piece and only the others go to `out`
    /// @return whether anything was cut. Default: false
    [[nodiscard]] virtual bool BreakAt(const std::vector<Point2D>& points, std::vector<IGeometry*>& out,
                                       bool modifyThis, const Tolerances& tolerances);
    /// `BreakAt` for points whose stations are known.
    /// @param breaks        points by ascending station
    /// @param startStation  station of this geometry's start on the scale of `breaks`
    [[nodiscard]] virtual bool BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                                std::vector<IGeometry*>& out, bool modifyThis,
                                                const Tolerances& tolerances);
    /// True when the point lies on this geometry within the user tolerance. Default: false.
    virtual bool IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const;
    /// Moves the start (end) to the point. Default: false. Some classes change and still answer false; they say so.
    virtual bool ExtendStart(const Point2D& point, const Tolerances& tolerances);
    virtual bool ExtendEnd(const Point2D& point, const Tolerances& tolerances);
    /// @return this geometry followed by the other as one new geometry owned by the caller; null when the two classes
    ///         cannot be joined (default)
    [[nodiscard]] virtual IGeometry* Append(const IGeometry* const other) const;

    /// @return a reversed copy owned by the caller, never null
    [[nodiscard]] IGeometry* CloneAsReverse() const;
    /// Cuts a copy: this geometry stays as it is and all pieces go to `out`.
    [[nodiscard]] bool BreakAt(const std::vector<Point2D>& points, std::vector<IGeometry*>& out,
                               const Tolerances& tolerances) const;

    /// The break operations with pieces that own themselves.
    [[nodiscard]] bool BreakAt(const std::vector<Point2D>& points, std::vector<std::unique_ptr<IGeometry>>& out,
                               bool modifyThis, const Tolerances& tolerances);
    [[nodiscard]] bool BreakAt(const std::vector<Point2D>& points, std::vector<std::unique_ptr<IGeometry>>& out,
                               const Tolerances& tolerances) const;
    [[nodiscard]] bool BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                        std::vector<std::unique_ptr<IGeometry>>& out, bool modifyThis,
                                        const Tolerances& tolerances);
};

}  // namespace Kalvio::Math
