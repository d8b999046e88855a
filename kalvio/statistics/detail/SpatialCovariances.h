#pragma once

#include "kalvio/core/MatrixNM.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/statistics/VariogramModelBase.h"

#include <cstddef>
#include <vector>

/// The linear systems of kriging.
namespace Kalvio::Math::detail {

/// Model values between all samples, into the first rows and columns. The matrix is at least as large.
inline void FillCovariances(const VariogramModelBase& model, const std::vector<Point3D>& samples, MatrixNM& m) {
    const double atZero = model.Evaluate(0.0);
    for (unsigned int i = 0; i < samples.size(); ++i) {
        VecND& row = m[i];
        for (unsigned int j = 0; j < i; ++j) {
            row[static_cast<int>(j)] = model.Evaluate(samples[i].Distance2D(samples[j]));
            m[j][static_cast<int>(i)] = row[static_cast<int>(j)];
        }
        row[static_cast<int>(i)] = atZero;
    }
}

/// Model values between p and the samples, into the first coordinates. The vector is at least as large.
inline void FillCovariances(const VariogramModelBase& model, const Point2D& p, const std::vector<Point3D>& samples,
                            VecND& b) {
    for (std::size_t i = 0; i < samples.size(); ++i) {
        b[static_cast<int>(i)] = model.Evaluate(p.Distance(samples[i].GetPoint2D()));
    }
}

/// The condition that the weights add up to one: ones in the last row and column, 0 in the corner.
inline void FillSumOfWeights(MatrixNM& m) {
    const unsigned int last = m.GetNumRows() - 1;
    for (unsigned int i = 0; i < last; ++i) {
        m[i][static_cast<int>(last)] = 1.0;
        m[last][static_cast<int>(i)] = 1.0;
    }
    m[last][static_cast<int>(last)] = 0.0;
}

}  // namespace Kalvio::Math::detail
