#include "kalvio/curves/Line2D.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace Kalvio::Math {
namespace {

// Hills over squares of side 1, at survey coordinates; about as many triangles as asked for.
IndexedTriangleSet3D Terrain(std::int64_t triangles, unsigned int& side) {
    side = static_cast<unsigned int>(std::sqrt(0.5 * static_cast<double>(triangles)));
    IndexedTriangleSet3D set;
    for (unsigned int y = 0; y <= side; ++y) {
        for (unsigned int x = 0; x <= side; ++x) {
            set.AppendVertex(Point3D(385000.0 + x, 6672000.0 + y, 9.0 * std::sin(0.05 * x) * std::cos(0.07 * y)));
            if (x == side || y == side) continue;
            const unsigned int i = y * (side + 1) + x;
            set.AppendIndexes({i, i + 1, i + side + 2, i, i + side + 2, i + side + 1});
        }
    }
    return set;
}

template <class Cut>
void Run(benchmark::State& state, Cut&& cut) {
    unsigned int side = 0;
    const IndexedTriangleSet3D terrain = Terrain(state.range(0), side);
    std::vector<LineString3D> sections;
    for (auto _ : state) {
        sections.clear();
        cut(terrain, static_cast<double>(side), sections);
    }
    std::size_t points = 0;
    for (const LineString3D& section : sections) points += section.GetSize();
    state.counters["points"] = static_cast<double>(points);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(terrain.GetTrianglesCount()));
}

void BM_SectionLine(benchmark::State& state) {
    Run(state, [](const IndexedTriangleSet3D& terrain, double side, std::vector<LineString3D>& sections) {
        terrain.GetSections(Line2D(Point2D(385000.0, 6672000.3), Point2D(385000.0 + side, 6672000.0 + 0.7 * side)),
                            sections);
    });
}
BENCHMARK(BM_SectionLine)->ArgName("triangles")->RangeMultiplier(10)->Range(10000, 1000000);

void BM_SectionLineSegment(benchmark::State& state) {
    Run(state, [](const IndexedTriangleSet3D& terrain, double side, std::vector<LineString3D>& sections) {
        terrain.GetSectionsLineSegment(
            Line2D(Point2D(385000.0 + 0.2 * side, 6672000.3), Point2D(385000.0 + 0.4 * side, 6672000.0 + 0.7 * side)),
            sections);
    });
}
BENCHMARK(BM_SectionLineSegment)->ArgName("triangles")->Arg(1000000);

// An alignment of a thousand points that winds through the whole terrain.
void BM_SectionAlignment(benchmark::State& state) {
    Run(state, [](const IndexedTriangleSet3D& terrain, double side, std::vector<LineString3D>& sections) {
        LineString2D alignment;
        for (int i = 0; i <= 1000; ++i) {
            const double along = 0.001 * i;
            alignment.AppendPoint(Point2D(385000.0 + side * (0.05 + 0.9 * along),
                                          6672000.0 + side * (0.5 + 0.4 * std::sin(5.0 * std::numbers::pi * along))));
        }
        terrain.GetSections(alignment, sections);
    });
}
BENCHMARK(BM_SectionAlignment)->ArgName("triangles")->RangeMultiplier(10)->Range(10000, 1000000);

}  // namespace
}  // namespace Kalvio::Math
