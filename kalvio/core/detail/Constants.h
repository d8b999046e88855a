#pragma once

#include <limits>

/// The tolerances and factors that the whole library shares, each with what it bounds.
namespace Kalvio::Math::detail {

inline constexpr double numericalZero = 1e-10;         // absolute; lengths, determinants, denominators
inline constexpr double standardUserTolerance = 1e-4;  // a length: two points this near are one point
inline constexpr double stationMerge = 1e-4;           // stations at most this far apart are one map key
inline constexpr double windingMargin = 4e-10;         // a doubled area: flatter turns are not counter-clockwise
inline constexpr double boxExtremeTolerance = 0.005;   // a length: an arc reaches an extreme of its circle
inline constexpr double looseStationTolerance = 0.01;  // a length: station look-up of a foot that was computed

inline constexpr double pi = 3.141592653589793;
inline constexpr double twoPi = 6.283185307179586;
inline constexpr double degreesPerRadian = 57.29577951308232;
inline constexpr double radiansPerDegree = 0.017453292519943295;
inline constexpr double secondsPerDegree = 3600.0;

inline constexpr double largestDouble = (std::numeric_limits<double>::max)();

}  // namespace Kalvio::Math::detail
