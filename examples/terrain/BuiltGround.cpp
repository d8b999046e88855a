#include "terrain/BuiltGround.h"

#include "common/Csv.h"
#include "common/InputError.h"

#include "kalvio/core/Tolerances.h"
#include "kalvio/polygons/LineString3D.h"

#include <cstdio>
#include <vector>

namespace Kalvio::Examples {

using namespace Math;

namespace {

constexpr double userTolerance = 0.001;  // points and lines this near in plan are in one place

std::vector<Point3D> ReadPlaces(const std::string& path) {
    std::vector<Point3D> places;
    if (path.empty()) return places;
    for (const std::vector<double>& row : ReadCsv(path, 3)) places.emplace_back(row[0], row[1], row[2]);
    return places;
}

std::vector<LineString3D> ReadChains(const std::string& path) {
    std::vector<LineString3D> chains;
    if (path.empty()) return chains;
    double number = 0.0;
    for (const std::vector<double>& row : ReadCsv(path, 4)) {
        if (chains.empty() || row[0] != number) chains.emplace_back();
        number = row[0];
        chains.back().AppendPoint({row[1], row[2], row[3]});
    }
    return chains;
}

}  // namespace

TinSurfacePatch3D BuildGround(const GroundTables& tables) {
    TinSurfacePatch3D::Ground ground;
    ground.points = ReadPlaces(tables.points);
    ground.breaklines = ReadChains(tables.breaklines);
    if (!tables.border.empty()) ground.borders.emplace_back(ReadPlaces(tables.border));
    TinSurfacePatch3D surface;
    std::vector<TinSurfacePatch3D::HeightConflict> conflicts;
    if (!surface.Build(ground, Tolerances(userTolerance), conflicts)) {
        throw InputError("the points and lines enclose no surface");
    }
    for (const TinSurfacePatch3D::HeightConflict& conflict : conflicts) {
        std::fprintf(stderr, "warning: two heights at %.3f, %.3f: %.3f stays, %.3f goes\n", conflict.kept.GetX(),
                     conflict.kept.GetY(), conflict.kept.GetZ(), conflict.other);
    }
    return surface;
}

TinSurfacePatch3D SurfaceOf(const IndexedTriangleSet3D& triangles, const std::string& name) {
    TinSurfacePatch3D surface;
    if (!surface.SetTriangles(triangles)) throw InputError("surface " + name + " lies over itself");
    return surface;
}

}  // namespace Kalvio::Examples
