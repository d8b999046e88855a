#pragma once

#include "kalvio/Export.h"

#include <cstdint>
#include <vector>

namespace Kalvio::Math {

class Angle;
class Point3D;
class VariogramModelBase;

/// How samples differ with the distance between them, and the model that fits it.
///
///     ExperimentalVariogram variogram;
///     ExperimentalVariogram::Fit fit;
///     if (!variogram.Build(samples, 25.0, 12)) return false;
///     if (!variogram.FitModel(ExperimentalVariogram::Shape::Exponential, fit)) return false;
///     const OrdinaryKriging kriging(fit.MakeModel());
class KALVIO_MATH_API ExperimentalVariogram final {
public:
    /// The pairs of samples whose distance in plan is within a step.
    struct Lag {
        double distance = 0.0;      ///< mean of theirs
        double semivariance = 0.0;  ///< half the mean of their squared differences (G. Matheron, 1963)
        std::uint64_t pairs = 0;    ///< their number
    };
    /// Models to fit.
    enum class Shape : std::uint32_t {
        Exponential = 0,  ///< `ExponentialVariogramModel`
        Gaussian = 1,     ///< `GaussianVariogramModel`
        Power = 2,        ///< `PowerVariogramModel`; its range is the distance of the last lag
        Linear = 3,       ///< the same with the exponent 1
    };
    /// A model, and how well it fits.
    struct Fit {
        Shape shape = Shape::Exponential;  ///< of the model
        double nugget = 0.0;               ///< semivariance just beside a sample
        double sill = 0.0;                 ///< without the nugget
        double range = 0.0;                ///< of the model, in plan
        double exponent = 1.0;             ///< of `Power`
        double misfit = 0.0;  ///< what was made least: the sum over lags of pairs (semivariance / model - 1)^2

        double Evaluate(double h) const;
        /// A new model, in a `NuggetVariogramModel` when there is a nugget.
        /// @return owned by the caller, who mostly gives it to an estimator; null for a shape that does not exist
        [[nodiscard]] VariogramModelBase* MakeModel() const;
    };

    /// Gathers the pairs of samples in all directions, those of distances in [0, step) in the first lag, in [step, 2
    /// step) in the second. The cost grows with the number of pairs that are near.
    /// @return false, everything untouched, for a step that is not positive, no count or one above 1e6, samples that
    ///         are not finite, and when no pair is near enough
    [[nodiscard]] bool Build(const std::vector<Point3D>& samples, double step, unsigned int count);
    /// The pairs in a direction and against it alone.
    /// @param bearing    clockwise from +Y
    /// @param tolerance  the greatest angle between it and a pair; a quarter turn takes all. Pairs at one place have
    ///                   all directions
    [[nodiscard]] bool Build(const std::vector<Point3D>& samples, double step, unsigned int count, const Angle& bearing,
                             const Angle& tolerance);

    /// By distance; those without pairs are left out.
    const std::vector<Lag>& GetLags() const { return lags; }

    /// Fits nugget, sill and the range, of a power the exponent, by least squares with weights that grow with the pairs
    /// and fall with the model: N. Cressie, Fitting Variogram Models by Weighted Least Squares, 1985. Nugget and sill
    /// are not negative, the range is a tenth of the first distance to ten times the last one, the exponent from 0.05
    /// to 1.95.
    /// @return false, `fit` untouched, for fewer than three lags at distances above 0 and when all samples are equal
    [[nodiscard]] bool FitModel(Shape shape, Fit& fit) const;

private:
    std::vector<Lag> lags;
};

}  // namespace Kalvio::Math
