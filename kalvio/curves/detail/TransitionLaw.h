#pragma once

#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/Spiral2D.h"

#include <cmath>

namespace Kalvio::Math::detail {

/// f(t) of a law, from 0 at t = 0 to 1 at t = 1; straight for `Cubic`, which is a law of positions.
inline double TransitionShape(Spiral2D::Spiral2DType type, double t) {
    using Type = Spiral2D::Spiral2DType;
    switch (type) {
        case Type::Bloss:
            return t * t * (3.0 - 2.0 * t);
        case Type::Sine:
            return t - std::sin(twoPi * t) / twoPi;
        case Type::Cosine:
            return 0.5 * (1.0 - std::cos(pi * t));
        case Type::Biquadratic:
            return t < 0.5 ? 2.0 * t * t : 1.0 - 2.0 * (1.0 - t) * (1.0 - t);
        case Type::Viennese:
            return t * t * t * t * (35.0 - t * (84.0 - t * (70.0 - 20.0 * t)));
        case Type::Clothoid:
        case Type::Cubic:
            break;
    }
    return t;
}

}  // namespace Kalvio::Math::detail
