#pragma once

#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/Constants.h"

namespace Kalvio::Math::detail {

/// The record of operations that receive no tolerances: user tolerance 1e-4, system epsilon 1e-10.
inline Tolerances StandardTolerances() { return {standardUserTolerance, numericalZero}; }

/// The record of operations that receive a user tolerance only.
inline Tolerances TolerancesFor(double userTolerance) { return {userTolerance, numericalZero}; }

}  // namespace Kalvio::Math::detail
