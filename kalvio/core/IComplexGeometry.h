#pragma once

#include "kalvio/Export.h"

#include <cstdint>
#include <vector>

namespace Kalvio::Math {

class IPolyline2DElement;
class Point2D;
class Tolerances;

/// Composite curves show their elements through this second interface. Objects are never deleted through it.
class KALVIO_MATH_API IComplexGeometry {
public:
    /// The element stays owned by this geometry; the reference is valid until the geometry changes.
    virtual const IPolyline2DElement& GetElementAtIndex(unsigned int index) const = 0;
    virtual unsigned int GetNrOfElements() const = 0;
    /// Replaces `lengths` by every length along the geometry at which the point lies, in ascending order.
    virtual void GetLengthsAlongGeometry(const Point2D& point, std::vector<double>& lengths,
                                         const Tolerances& tolerances) const = 0;
    /// Appends the indexes of the elements shorter than `minLength`.
    [[nodiscard]] virtual bool FindShortElements(std::vector<std::uint64_t>& indexes, double minLength) const = 0;
    /// Removes the elements of the given ascending indexes; each class says what the flag selects.
    virtual void RemoveElements(const std::vector<std::uint64_t>& indexes, bool flag) = 0;

protected:
    IComplexGeometry() = default;
    IComplexGeometry(const IComplexGeometry&) = default;
    IComplexGeometry& operator=(const IComplexGeometry&) = default;
    ~IComplexGeometry() = default;
};

}  // namespace Kalvio::Math
