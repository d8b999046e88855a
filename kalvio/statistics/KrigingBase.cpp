#include "kalvio/statistics/KrigingBase.h"

#include "kalvio/statistics/VariogramModelBase.h"

namespace Kalvio::Math {

KrigingBase::KrigingBase(VariogramModelBase* ownedModel) : model(ownedModel) {}

KrigingBase::~KrigingBase() = default;

}  // namespace Kalvio::Math
