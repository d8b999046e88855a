#pragma once

#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/detail/ElementChain.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/curves/detail/SpaceElements.h"
#include "kalvio/curves/detail/Stations.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Evaluation and sampling by station of polylines in plan and in space, whose record `Point` is their `PolylinePoint`.
namespace Kalvio::Math::detail {

template <class Point, class Sample>
Point PlacedOn(std::size_t element, double start, const Sample& sample) {
    return {sample.point, sample.tangent, static_cast<std::uint32_t>(element), 0.0, start + sample.station};
}

/// The sample at a length along one element. @return false, `result` untouched, out of the element by more than 1e-10
/// and where a degenerate element cannot be evaluated
template <class Element, class Point>
bool SampleAt(const ElementChain<Element>& chain, std::size_t i, double along, Point& result) {
    const double length = chain.GetStations().length[i];
    if (!(along >= -numericalZero && along <= length + numericalZero)) return false;
    typename Element::PolylineElementPoint sample;
    if (!EvaluateElement(chain[i], std::clamp(along, 0.0, length), sample)) return false;
    return Store(PlacedOn<Point>(i, chain.GetStations().start[i], sample), result);
}

/// The same at a station of the chain.
template <class Element, class Point>
bool SampleAt(const ElementChain<Element>& chain, double station, Point& result) {
    const auto& [start, length] = chain.GetStations();
    if (chain.IsEmpty() || !(station >= -numericalZero && station <= start.back() + numericalZero)) return false;
    const std::size_t i = chain.ElementAt(station);
    // Far along a chain its stations are coarser than the tolerance of its elements.
    return SampleAt(chain, i, std::min(station - start[i], length[i]), result);
}

/// Clips a range of stations to the chain; false when nothing is left.
template <class Element>
bool ClipToChain(const ElementChain<Element>& chain, double& from, double& to) {
    from = std::max(from, 0.0);
    to = std::min(to, chain.GetStations().start.back());
    return !chain.IsEmpty() && from <= to;
}

/// `MakePointsAndTangents` of a polyline: one walk, each element sampled at all its stations at once.
template <class Element, class Point>
bool SampleChainBySteps(const ElementChain<Element>& chain, double from, double to, double step, double tolerance,
                        std::vector<Point>& points) {
    if (!ClipToChain(chain, from, to) || !(step > 0.0) || !((to - from) / step < mostSamples)) return false;
    const auto& [start, length] = chain.GetStations();
    const std::size_t known = points.size();
    const auto count = static_cast<std::size_t>((to - from) / step) + 1;
    if (known == 0) points.reserve(count + 1);
    const auto stationOf = [&](std::size_t k) {
        return std::min(from + Steps(static_cast<std::int64_t>(k), step), to);
    };
    std::vector<double> local;
    std::vector<typename Element::PolylineElementPoint> ofElement;
    for (std::size_t k = 0; k < count;) {
        const std::size_t i = chain.ElementAt(stationOf(k));
        const bool isLast = i + 1 == chain.Size();
        local.clear();
        for (; k < count && (isLast || local.empty() || stationOf(k) < start[i + 1]); ++k) {
            local.push_back(std::min(stationOf(k) - start[i], length[i]));
        }
        ofElement.clear();
        if (!SampleElement(chain[i], local, ofElement)) {
            points.resize(known);
            return false;
        }
        for (const auto& sample : ofElement) points.push_back(PlacedOn<Point>(i, start[i], sample));
    }
    while (points.size() > known + 1 && to - points.back().station < std::abs(tolerance)) points.pop_back();
    Point last;
    if (to > points.back().station && SampleAt(chain, to, last)) points.push_back(last);
    return true;
}

/// `MakePointsAndTangentsUsingHeight` of a polyline.
template <class Element, class Point>
bool SampleChainByHeight(const ElementChain<Element>& chain, double from, double to, double height, double tolerance,
                         std::vector<Point>& points) {
    if (!ClipToChain(chain, from, to) || !(height > 0.0)) return false;
    const auto& [start, length] = chain.GetStations();
    std::vector<Point> samples;
    std::vector<typename Element::PolylineElementPoint> ofElement;
    double placeStart = 0.0;  // samples at most the tolerance on from here are one place, which so cannot creep along
    const std::size_t last = chain.ElementAt(to);
    for (std::size_t i = chain.ElementAt(from); i <= last; ++i) {
        const double localFrom = std::clamp(from - start[i], 0.0, length[i]);
        const double localTo = std::clamp(to - start[i], 0.0, length[i]);
        if (!samples.empty() && !(localTo > localFrom)) continue;
        ofElement.clear();
        if (!SampleElementUsingHeight(chain[i], localFrom, localTo, height, ofElement)) return false;
        if (!(static_cast<double>(samples.size() + ofElement.size()) < mostSamples)) return false;
        for (const auto& sample : ofElement) {
            const double station = start[i] + sample.station;
            if (samples.empty() || !(station - placeStart <= std::abs(tolerance))) {
                placeStart = station;
            } else {
                // One sample for a joint: the element that starts there, as everywhere.
                if (i == samples.back().elementIndex || samples.size() == 1) continue;
                samples.pop_back();
            }
            samples.push_back(PlacedOn<Point>(i, start[i], sample));
        }
    }
    Point end;
    if (!samples.empty() && to - samples.back().station > numericalZero && SampleAt(chain, to, end)) {
        while (samples.size() > 1 && to - samples.back().station < std::abs(tolerance)) samples.pop_back();
        samples.push_back(end);
    }
    points.insert(points.end(), samples.begin(), samples.end());
    return true;
}

}  // namespace Kalvio::Math::detail
