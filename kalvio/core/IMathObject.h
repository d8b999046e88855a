#pragma once

#include "kalvio/Export.h"
#include "kalvio/core/MathTypes.h"

namespace Kalvio::Math {

/// Root of every value class: tells the concrete class by its code. It holds nothing; copies copy nothing.
class KALVIO_MATH_API IMathObject {
public:
    constexpr IMathObject() = default;
    IMathObject(const IMathObject&) = default;
    IMathObject& operator=(const IMathObject&) = default;
    // Not defaulted: a destructor usable in constant expressions makes GCC 12 refuse braced lists of such objects.
    virtual ~IMathObject() {}  // NOLINT(modernize-use-equals-default)

    virtual MathTypes GetType() const = 0;
};

}  // namespace Kalvio::Math
