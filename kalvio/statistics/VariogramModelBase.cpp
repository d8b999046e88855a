#include "kalvio/statistics/VariogramModelBase.h"

namespace Kalvio::Math {

VariogramModelBase::~VariogramModelBase() = default;

}  // namespace Kalvio::Math
