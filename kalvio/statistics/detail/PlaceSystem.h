#pragma once

#include "kalvio/core/Point3D.h"
#include "kalvio/core/detail/Elimination.h"
#include "kalvio/statistics/VariogramModelBase.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

/// The linear systems of kriging.
namespace Kalvio::Math::detail {

/// Model values between all samples, into the first rows and columns. The matrix is at least as large.
inline void FillCovariances(const VariogramModelBase& model, const std::vector<Point3D>& samples, Elimination& m) {
    const double atZero = model.Evaluate(0.0);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        double* const row = m.Row(i);
        for (std::size_t j = 0; j < i; ++j) row[j] = samples[i].Distance2D(samples[j]);
        for (std::size_t j = 0; j < i; ++j) m.Row(j)[i] = row[j] = model.Evaluate(row[j]);
        row[i] = atZero;
    }
}

/// Model values between p and the samples.
inline void FillCovariances(const VariogramModelBase& model, const Point2D& p, const std::vector<Point3D>& samples,
                            double* b) {
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double dx = samples[i].GetX() - p.GetX();
        const double dy = samples[i].GetY() - p.GetY();
        b[i] = model.Evaluate(std::sqrt(dx * dx + dy * dy));
    }
}

/// The condition that the weights add up to one: ones in the last row and column, 0 in the corner.
inline void FillSumOfWeights(std::size_t last, Elimination& m) {
    for (std::size_t i = 0; i < last; ++i) m.Row(i)[last] = m.Row(last)[i] = 1.0;
    m.Row(last)[last] = 0.0;
}

/// Planes over the samples, with the sum of weights before: what is left of a linear trend. Coordinates are relative to
/// the first sample, as their differences hardly round there and samples on one line stay on one, and of the size of
/// the model values.
struct LinearTrend {
    explicit LinearTrend(const std::vector<Point3D>& samples) : center(samples.front().GetPoint2D()) {
        double reach = 0.0;
        for (const Point3D& sample : samples) reach = std::max(reach, sample.Distance2D(Point3D(center, 0.0)));
        if (reach > 0.0) scale = 1.0 / reach;
    }
    /// Into the two rows and columns after that of the sum.
    void Fill(const std::vector<Point3D>& samples, Elimination& m) const {
        const std::size_t last = samples.size();
        for (std::size_t i = 0; i < last; ++i) {
            m.Row(i)[last + 1] = m.Row(last + 1)[i] = (samples[i].GetX() - center.GetX()) * scale;
            m.Row(i)[last + 2] = m.Row(last + 2)[i] = (samples[i].GetY() - center.GetY()) * scale;
        }
    }
    /// The two rows for a place.
    void Fill(const Point2D& p, double* b) const {
        b[0] = (p.GetX() - center.GetX()) * scale;
        b[1] = (p.GetY() - center.GetY()) * scale;
    }

    Point2D center;
    double scale = 1.0;
};

/// Multiplies m by the power of two that brings its largest element into [1, 2), and returns that power: without any
/// rounding, so that the scale of the sill decides nothing. 0 when an element is not finite.
inline double Normalize(Elimination& m, std::size_t size) {
    double largest = 0.0;
    for (std::size_t i = 0; i < size; ++i) {
        for (std::size_t j = 0; j < size; ++j) {
            if (!std::isfinite(m.Row(i)[j])) return 0.0;
            largest = std::max(largest, std::abs(m.Row(i)[j]));
        }
    }
    if (largest == 0.0) return 1.0;  // a variogram and a single place
    const double factor = std::ldexp(1.0, -std::ilogb(largest));
    for (std::size_t i = 0; i < size; ++i) {
        for (std::size_t j = 0; j < size; ++j) m.Row(i)[j] *= factor;
    }
    return factor;
}

/// A pivot within this bound means that changes of the elements by it make the matrix singular.
inline bool IsSingular(const Elimination& elimination, std::size_t size) {
    const double rounding = static_cast<double>(size) * std::numeric_limits<double>::epsilon();
    for (std::size_t k = 0; k < size; ++k) {
        if (!(std::abs(elimination.Pivot(k)) > rounding)) return true;
    }
    return false;
}

/// The system M lambda = b of one place, on the stack for few samples.
class PlaceSystem {
public:
    explicit PlaceSystem(std::size_t rows) : size(rows), m(rows, 1), b(rows), lambda(rows) {}

    Elimination& Matrix() { return m; }
    double* RightSide() { return b.Get(); }
    const double* RightSide() const { return b.Get(); }
    const double* Lambda() const { return lambda.Get(); }
    /// @return false for a matrix that `MatrixNM::GetInverse` does not invert; to be called once
    bool Solve() {
        for (std::size_t i = 0; i < size; ++i) m.Row(i)[size] = b.Get()[i];
        if (!IsInvertible(m.RunForDeterminant())) return false;
        m.Solve(lambda.Get());
        return true;
    }

private:
    std::size_t size;
    Elimination m;
    Workspace<double, 20> b;
    Workspace<double, 20> lambda;
};

}  // namespace Kalvio::Math::detail
