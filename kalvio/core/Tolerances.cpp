#include "kalvio/core/Tolerances.h"

namespace Kalvio::Math {

MathTypes Tolerances::GetType() const { return MathTypes::Tolerances; }

}  // namespace Kalvio::Math
