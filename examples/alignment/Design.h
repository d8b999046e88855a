#pragma once

#include "common/LandXml.h"

#include "kalvio/alignments/AlignmentDesign.h"

#include <optional>
#include <string>
#include <vector>

namespace Kalvio::Examples {

/// What the user asks of a design.
struct DesignWishes {
    std::string table;                         ///< of tangent points; may be empty
    std::string transition = "Clothoid";       ///< name of the law of all transitions, as the pictures have it
    bool hasNoArcs = false;                    ///< transitions grow until they meet
    std::vector<std::vector<double>> through;  ///< points; each moves the curve of the corner nearest to it
    /// From what to what: a line by two points (x, y, x, y) or a circle (x, y, signed radius).
    std::vector<std::vector<double>> joins;
    std::string fit;               ///< table of points, x, y, in their order along an alignment; may be empty
    double scatter = 0.0;          ///< standard deviation of the points
    std::optional<double> radius;  ///< of the arc that joins them, signed; without it they are joined by transitions
};

/// The alignment through the tangent points of a table: x, y, radius, length of the transition in and out; or the
/// alignment nearest to surveyed points, with a word about their offsets on the standard output; or the curves that
/// join two lines or circles, each as an alignment.
/// @throws InputError for a table that cannot be read, and where the curves do not fit: which line and column of the
///         table, and what is missing
std::vector<Alignment> Design(const DesignWishes& wishes);

}  // namespace Kalvio::Examples
