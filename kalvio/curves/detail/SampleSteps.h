#pragma once

#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/detail/ArcSampling.h"
#include "kalvio/curves/detail/Stations.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

/// Sampling offsets along a curve, relative to the first station. Both builders clear the list first and leave it empty
/// for a step (height) that is not positive, for NaN, and where more than `mostSamples` would come out.
namespace Kalvio::Math::detail {

/// 0, step, 2 step ... and the span to - from itself, so that the last sample always falls on `to`.
inline void BuildConstantSteps(std::vector<double>& steps, double from, double to, double step) {
    steps.clear();
    const double span = to - from;
    steps.reserve(static_cast<std::size_t>(NumberOfParts(std::abs(span), step)) + 1);
    if (ForEachStationTo(0.0, std::abs(span), step, [&steps](double offset) { steps.push_back(offset); })) {
        steps.back() = span;
    }
}

/// Turns the offsets of a range into its stations, the last one exactly `to`.
inline void MakeStations(std::vector<double>& offsets, double from, double to) {
    for (double& offset : offsets) offset = std::min(from + offset, to);
    if (!offsets.empty()) offsets.back() = to;
}

/// Clips the range [from, to] to the curve [0, length]. @return false for an empty range, from > to included, or NaN
inline bool ClipStations(double length, double& from, double& to) {
    if (!(from <= to) || !(from <= length + numericalZero) || !(to >= 0.0)) return false;
    from = std::clamp(from, 0.0, length);
    to = std::clamp(to, 0.0, length);
    return true;
}

/// Offsets such that no chord lies further than `height` from the curve, and none spans more than a quarter turn: over
/// a step d with curvature at most k the height of the arc is at most k d^2 / 8.
///
/// @param curvature  curvature at a station of [from, to]; its magnitude must be largest at an end of any interval
template <class Curvature>
void BuildStepsForHeight(std::vector<double>& steps, double from, double to, double height, Curvature&& curvature) {
    constexpr double mostTurn = 0.5 * pi;
    steps.clear();
    const double span = to - from;
    if (!(height > 0.0) || !(span >= 0.0)) return;
    const auto stepFor = [height](double k) { return std::min(std::sqrt(8.0 * height / k), mostTurn / k); };
    const double atEnds = std::max(std::abs(curvature(from)), std::abs(curvature(to)));
    if (!(span / stepFor(atEnds) < mostSamples)) return;
    for (double offset = 0.0; offset < span;) {
        if (!(static_cast<double>(steps.size()) < mostSamples)) return steps.clear();
        steps.push_back(offset);
        const double here = std::abs(curvature(from + offset));
        const auto fitting = [&](double step) {
            const double there = std::abs(curvature(from + std::min(offset + step, span)));
            return stepFor(std::max(here, there));
        };
        // fitting() falls with its argument: of any step and its image the smaller fits. Their mean soon meets it.
        double step = fitting(span - offset);
        for (int i = 0; i < 4; ++i) {
            const double longer = fitting(step);
            if (!(longer > step)) break;
            const double middle = 0.5 * (step + std::min(longer, span - offset));
            step = std::min(middle, fitting(middle));
        }
        offset += step;
    }
    if (span > 0.0 && span - steps.back() <= numericalZero && steps.size() > 1) steps.pop_back();
    steps.push_back(span);
}

}  // namespace Kalvio::Math::detail
