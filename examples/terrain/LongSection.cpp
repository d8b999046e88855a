#include "terrain/LongSection.h"

#include "common/InputError.h"

#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"

#include <algorithm>
#include <cmath>

namespace Kalvio::Examples {

using namespace Math;

namespace {

constexpr double chordHeight = 1e-3;
constexpr double stationMerge = 1e-6;  // stations this near to each other are one
constexpr double mostRows = 1e6;
constexpr double placeRounding = 1e-5;  // cut points lie this near to their chord, far from the origin too

using Sample = Polyline2D::PolylinePoint;

bool IsBefore(const Sample& a, const Sample& b) { return a.station < b.station; }

// The station of a point that lies on the chords of the axis. Points come mostly in order, so the search goes on from
// the chord where the one before was found: an axis that crosses itself keeps its stations apart.
class Stationing {
public:
    explicit Stationing(const std::vector<Sample>& axisPoints) : axis(axisPoints) {}

    std::optional<double> Find(const Point2D& p) {
        const std::size_t count = axis.size() - 1;
        for (std::size_t k = 0; k < count; ++k) {
            const std::size_t i = (chord + k) % count;
            const Vec2D along = axis[i + 1].point - axis[i].point;
            const Vec2D to = p - axis[i].point;
            const double t = std::clamp(to.DotProduct(along) / along.DotProduct(along), 0.0, 1.0);
            if ((to - along * t).Length() > placeRounding) continue;
            chord = i;
            return axis[i].station + t * (axis[i + 1].station - axis[i].station);
        }
        return std::nullopt;
    }

private:
    const std::vector<Sample>& axis;
    std::size_t chord = 0;
};

}  // namespace

LongSection::LongSection(const IndexedTriangleSet3D& surface, const Alignment& source, double step)
    : alignment(&source) {
    const Polyline2D& plan = source.plan;
    if (plan.GetLength() / step > mostRows) throw InputError("the step is too short for the length of " + source.name);
    Samples table;
    (void)plan.MakePointsAndTangents(0.0, plan.GetLength(), table, step, stationMerge);
    Samples axis = table;
    (void)plan.MakePointsAndTangentsUsingHeight(0.0, plan.GetLength(), axis, chordHeight, stationMerge);
    std::stable_sort(axis.begin(), axis.end(), IsBefore);
    const auto isSame = [](const Sample& a, const Sample& b) { return b.station - a.station <= stationMerge; };
    axis.erase(std::unique(axis.begin(), axis.end(), isSame), axis.end());
    if (axis.size() >= 2) Cut(surface, axis);

    for (const Sample& sample : table) {
        const double station = source.GetStartStation() + sample.station;
        rows.push_back({station, sample.point, GetGround(station), GetDesign(station)});
    }
}

void LongSection::Cut(const IndexedTriangleSet3D& surface, const Samples& axis) {
    LineString2D line;
    for (const Sample& sample : axis) line.AppendPoint(sample.point);
    std::vector<LineString3D> pieces;
    surface.GetSections(line, pieces);
    Stationing stationing(axis);
    std::vector<Run> found;
    for (const LineString3D& piece : pieces) {
        Run run;
        for (const Point3D& p : piece.GetPoints()) {
            if (const auto station = stationing.Find(p.GetPoint2D())) {
                run.emplace_back(alignment->GetStartStation() + *station, p.GetZ());
            }
        }
        if (run.empty() || std::abs(run.back().GetX() - run.front().GetX()) <= stationMerge) continue;  // touches only
        if (run.front().GetX() > run.back().GetX()) std::reverse(run.begin(), run.end());
        found.push_back(std::move(run));
    }
    std::sort(found.begin(), found.end(),
              [](const Run& a, const Run& b) { return a.front().GetX() < b.front().GetX(); });
    for (Run& run : found) {
        const bool isJoined = !runs.empty() && std::abs(run.front().GetX() - runs.back().back().GetX()) <= stationMerge;
        if (isJoined) {
            runs.back().insert(runs.back().end(), run.begin(), run.end());
        } else {
            runs.push_back(std::move(run));
        }
    }
}

double LongSection::GetGroundLength() const {
    double length = 0.0;
    for (const Run& run : runs) length += run.back().GetX() - run.front().GetX();
    return length;
}

std::optional<double> LongSection::GetGround(double station) const {
    for (const Run& run : runs) {
        if (station < run.front().GetX() - stationMerge || station > run.back().GetX() + stationMerge) continue;
        const auto after = std::lower_bound(run.begin(), run.end(), station,
                                            [](const Point2D& p, double value) { return p.GetX() < value; });
        if (after == run.begin()) return run.front().GetY();
        if (after == run.end()) return run.back().GetY();
        const Point2D& a = *(after - 1);
        return a.GetY() + (after->GetY() - a.GetY()) * (station - a.GetX()) / (after->GetX() - a.GetX());
    }
    return std::nullopt;
}

std::optional<double> LongSection::GetDesign(double station) const {
    double height = 0.0;
    return alignment->GetHeight(station, height) ? std::optional(height) : std::nullopt;
}

}  // namespace Kalvio::Examples
