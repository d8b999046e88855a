#pragma once

#include "kalvio/core/Point3D.h"
#include "kalvio/statistics/ExperimentalVariogram.h"
#include "kalvio/statistics/LocalKriging.h"

#include <string>
#include <vector>

namespace Kalvio::Examples {

/// How heights differ with their distance, the models that fit that, and what the best one is worth.
struct VariogramStudy {
    /// Of distances to half the diagonal of the extent.
    /// @throws InputError where no model fits
    explicit VariogramStudy(const std::vector<Math::Point3D>& samples);

    /// @return false when the file cannot be written
    bool DrawPicture(const std::string& path, const std::string& unit) const;

    Math::ExperimentalVariogram variogram;
    std::vector<Math::ExperimentalVariogram::Fit> fits;   // the one with the least misfit first
    std::vector<Math::LocalKriging::Residual> residuals;  // of the best one; empty when it cannot be validated
};

}  // namespace Kalvio::Examples
