#pragma once

#include "common/LandXml.h"

#include "kalvio/core/Point2D.h"

#include <vector>

namespace Kalvio::Examples {

/// A common point of two alignments.
struct Crossing {
    Math::Point2D point;
    double station;       // of the first, on the scale of its file
    double otherStation;  // of the other
    double angle;         // from the first's direction to the other's, positive to the left [degrees], in [-180, 180]
    double clearance;     // height of the other above the first
    bool hasClearance;    // both have heights there
};

/// All common points, where the alignments come within 0.0001 of each other, in order along the first; of a stretch
/// where they run together its ends. A place that the other alignment passes twice is there twice.
std::vector<Crossing> FindCrossings(const Alignment& first, const Alignment& other);

}  // namespace Kalvio::Examples
