#pragma once

#include <cstdint>

namespace Kalvio::Math {

/// One of several answers to a query: a geometry, how far it is, and the segment (or element) that gave it.
template <class GeometryType>
struct GeometryDistancePair {
    GeometryType geometry;    ///< the answer, a point for example
    double distance = 0.0;    ///< from the query
    std::uint64_t index = 0;  ///< segment or element that gave the answer
};

}  // namespace Kalvio::Math
