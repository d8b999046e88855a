#include "kalvio/statistics/NuggetVariogramModel.h"

namespace Kalvio::Math {

NuggetVariogramModel::NuggetVariogramModel(double nuggetValue, VariogramModelBase* ownedModel)
    : VariogramModelBase(ownedModel->GetSill(), ownedModel->GetRange()),
      nugget(nuggetValue),
      isVariogram(ownedModel->Evaluate(0.0) == 0.0),
      model(ownedModel) {}

double NuggetVariogramModel::Evaluate(double h) const {
    return model->Evaluate(h) + ((h != 0.0) == isVariogram ? nugget : 0.0);
}

}  // namespace Kalvio::Math
