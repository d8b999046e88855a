#pragma once

#include "common/LandXml.h"

#include "kalvio/core/Point2D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace Kalvio::Examples {

/// The ground under the axis of an alignment. Stations are those of the alignment's file.
class LongSection {
public:
    /// A line of the table.
    struct Row {
        double station;
        Math::Point2D place;
        std::optional<double> ground;  // none off the surface
        std::optional<double> design;  // none where the file has no profile
    };

    /// The ground over a stretch without gaps: x station, ascending, y height, at the axis' own points and wherever an
    /// edge of the surface crosses.
    using Run = std::vector<Math::Point2D>;

    /// Cuts the surface along chords that lie within 0.001 of the axis and meet it at the table's stations, so that the
    /// heights there are exact.
    /// @param step  distance of the table's stations, counted from the start of the axis
    /// @throws InputError for a step of less than a millionth of the length
    LongSection(const Math::IndexedTriangleSet3D& surface, const Alignment& source, double step);

    const Alignment& GetAlignment() const { return *alignment; }
    const std::vector<Run>& GetRuns() const { return runs; }
    const std::vector<Row>& GetRows() const { return rows; }
    /// Length of the stretches that have ground.
    double GetGroundLength() const;
    std::optional<double> GetGround(double station) const;
    std::optional<double> GetDesign(double station) const;

private:
    using Samples = std::vector<Math::Polyline2D::PolylinePoint>;

    void Cut(const Math::IndexedTriangleSet3D& surface, const Samples& axis);

    const Alignment* alignment;
    std::vector<Run> runs;
    std::vector<Row> rows;
};

}  // namespace Kalvio::Examples
