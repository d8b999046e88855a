#include "terrain/Measures.h"

#include "kalvio/meshes/IndexedTriangleSet2D.h"
#include "kalvio/polygons/Polygon2D.h"

#include <utility>
#include <vector>

namespace Kalvio::Examples {

using namespace Math;

namespace {

double RingLength(const LineString2D& ring) { return Polygon2D(ring).Perimeter(); }

}  // namespace

void TurnUpward(IndexedTriangleSet3D& surface) {
    std::vector<unsigned int>& indexes = surface.GetIndexes();
    for (unsigned int i = 0; i < surface.GetTrianglesCount(); ++i) {
        if (surface.GetWinding2D(i) == WindingValue::Clockwise) std::swap(indexes[3 * i], indexes[3 * i + 1]);
    }
    surface.SetCCW(true);
}

Measures::Measures(const IndexedTriangleSet3D& surface, const std::optional<double>& reference)
    : lowest(surface.GetBoundingBox().GetMinPoint().GetZ()),
      highest(surface.GetBoundingBox().GetMaxPoint().GetZ()),
      base(reference.value_or(lowest)),
      volume(surface.GetVolume(base)) {
    Point3D a;
    Point3D b;
    Point3D c;
    for (std::uint64_t i = 0; surface.GetTriangleAt(i, a, b, c); ++i) {
        const Vec3D doubled = (b - a).CrossProduct(c - a);
        planArea += 0.5 * doubled.GetZ();
        surfaceArea += 0.5 * doubled.Length();
    }

    IndexedTriangleSet2D plan;
    std::vector<Point2D> places;
    for (const Point3D& vertex : surface.GetVertices()) places.push_back(vertex.GetPoint2D());
    plan.AppendVertices(places);
    plan.AppendIndexes(surface.GetIndexes());
    std::vector<Polygon2D> areas;
    (void)plan.GetBoundaries(areas, true);
    outerRings = areas.size();
    for (const Polygon2D& area : areas) {
        holes += area.GetNumHoleBoundaries();
        perimeter += area.Perimeter();
        for (unsigned int h = 0; h < area.GetNumHoleBoundaries(); ++h) perimeter += RingLength(area.GetHoleBoundary(h));
    }
}

}  // namespace Kalvio::Examples
