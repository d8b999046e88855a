#pragma once

#include "kalvio/curves/detail/UnitDirection.h"

#include <cstddef>
#include <span>
#include <vector>

namespace Kalvio::Math::detail {

/// The sample at a station of the segment a -> b in the plane or in space. @return false, `sample` untouched, for a
/// segment without a finite length and out of its length by more than 1e-10
template <class PointType, class Sample>
bool SampleSegment(const PointType& a, const PointType& b, double station, Sample& sample) {
    const double length = a.Distance(b);
    if (!(length > 0.0 && length <= largestDouble)) return false;
    if (!(station >= -numericalZero && station <= length + numericalZero)) return false;
    sample = {a + (b - a) * (station / length), UnitDirection(b - a), station};
    return true;
}

/// Calls emit(Sample{point, tangent, station}) for a chain of points, in plan or space, at ascending stations: one walk
/// for all of them. At a vertex the segment that starts there gives the tangent, at the end the last one that has a
/// length.
/// @return false, without any call, for fewer than two points
template <class Sample, class PointType, class Emit>
bool WalkPoints(const std::vector<PointType>& points, std::span<const double> stations, Emit&& emit) {
    if (points.size() < 2) return false;
    std::size_t last = points.size() - 2;
    while (last > 0 && points[last].Distance(points[last + 1]) == 0.0) --last;
    std::size_t i = 0;
    double start = 0.0;
    double length = points[0].Distance(points[1]);
    for (const double station : stations) {
        while (i < last && !(station < start + length)) {
            start += length;
            ++i;
            length = points[i].Distance(points[i + 1]);
        }
        const auto along = points[i + 1] - points[i];
        const double t = length > 0.0 ? (station - start) / length : 0.0;
        emit(Sample{points[i] + along * t, UnitDirection(along), station});
    }
    return true;
}

/// The same, appended to `samples`.
template <class PointType, class Sample>
bool WalkPoints(const std::vector<PointType>& points, std::span<const double> stations, std::vector<Sample>& samples) {
    return WalkPoints<Sample>(points, stations, [&samples](const Sample& sample) { samples.push_back(sample); });
}

/// Appends the samples at `from`, at the vertices between and at `to`.
template <class PointType, class Sample>
bool WalkVertices(const std::vector<PointType>& points, double from, double to, std::vector<Sample>& samples) {
    std::vector<double> stations{from};
    double station = 0.0;
    for (std::size_t i = 1; i < points.size() && station < to; ++i) {
        station += points[i - 1].Distance(points[i]);
        if (station > from + numericalZero && station < to - numericalZero) stations.push_back(station);
    }
    if (to > from) stations.push_back(to);
    return WalkPoints(points, stations, samples);
}

}  // namespace Kalvio::Math::detail
