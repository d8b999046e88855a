#include "kalvio/core/Geometry.h"

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point2DM.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/Triangle3D.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/Polyline3D.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/meshes/GridSurface.h"
#include "kalvio/meshes/IndexedFaceSet2D.h"
#include "kalvio/meshes/IndexedFaceSet3D.h"
#include "kalvio/meshes/IndexedTriangleSet2D.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"
#include "kalvio/meshes/TriangleStrip3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/Polygon3D.h"

#include <cmath>
#include <vector>

namespace Kalvio::Math {

namespace {

Point3D Lifted(const Point2D& p) { return {p, 0.0}; }
Point3D Lifted(const Point3D& p) { return p; }

bool CollectVertices(const IGeometry& geometry, std::vector<Point3D>& vertices);

template <class Chain>
bool CollectChainVertices(const Chain& chain, std::vector<Point3D>& vertices) {
    for (unsigned int i = 0; i < chain.GetNrOfElements(); ++i) {
        std::vector<Point3D> ofElement;
        if (!CollectVertices(chain.GetElementAtIndex(i), ofElement)) return false;
        const bool joins = i > 0 && !vertices.empty() && !ofElement.empty() &&
                           vertices.back().IsEqualTo(ofElement.front(), detail::standardUserTolerance);
        vertices.insert(vertices.end(), ofElement.begin() + (joins ? 1 : 0), ofElement.end());
    }
    return true;
}

template <class PointType>
void Collect(const std::vector<PointType>& points, std::vector<Point3D>& vertices) {
    for (const PointType& point : points) vertices.push_back(Lifted(point));
}

template <class Polygon>
void CollectRings(const Polygon& polygon, std::vector<Point3D>& vertices) {
    Collect(polygon.GetPoints(), vertices);
    for (unsigned int i = 0; i < polygon.GetNumHoleBoundaries(); ++i) {
        Collect(polygon.GetHoleBoundary(i).GetPoints(), vertices);
    }
}

// Those that no face names included.
template <class Mesh>
bool CollectMesh(const IGeometry& mesh, std::vector<Point3D>& vertices) {
    Collect(static_cast<const Mesh&>(mesh).GetVertices(), vertices);
    return true;
}

// Appends what the geometry has; false, possibly after some, when a part has no vertices.
bool CollectVertices(const IGeometry& geometry, std::vector<Point3D>& vertices) {
    switch (geometry.GetType()) {
        case MathTypes::Point2D:
            vertices.push_back(Lifted(static_cast<const Point2D&>(geometry)));
            return true;
        case MathTypes::Point2DM: {
            const auto& point = static_cast<const Point2DM&>(geometry);
            vertices.emplace_back(point.GetX(), point.GetY(), 0.0);
            return true;
        }
        case MathTypes::Point3D:
            vertices.push_back(static_cast<const Point3D&>(geometry));
            return true;
        case MathTypes::Triangle3D: {
            const auto& triangle = static_cast<const Triangle3D&>(geometry);
            vertices.insert(vertices.end(), {triangle.GetPointA(), triangle.GetPointB(), triangle.GetPointC()});
            return true;
        }
        case MathTypes::LineString2D:
            Collect(static_cast<const LineString2D&>(geometry).GetPoints(), vertices);
            return true;
        case MathTypes::LineString3D:
            Collect(static_cast<const LineString3D&>(geometry).GetPoints(), vertices);
            return true;
        case MathTypes::IndexedFaceSet2D:
            return CollectMesh<IndexedFaceSet2D>(geometry, vertices);
        case MathTypes::IndexedFaceSet3D:
            return CollectMesh<IndexedFaceSet3D>(geometry, vertices);
        case MathTypes::IndexedTriangleSet2D:
            return CollectMesh<IndexedTriangleSet2D>(geometry, vertices);
        case MathTypes::IndexedTriangleSet3D:
            return CollectMesh<IndexedTriangleSet3D>(geometry, vertices);
        case MathTypes::TinSurfacePatch3D:
            Collect(static_cast<const TinSurfacePatch3D&>(geometry).GetTriangles().GetVertices(), vertices);
            return true;
        case MathTypes::GridSurface: {  // those with heights
            const auto& grid = static_cast<const GridSurface&>(geometry);
            for (std::size_t row = 0; row < grid.GetRows(); ++row) {
                for (std::size_t column = 0; column < grid.GetColumns(); ++column) {
                    const Point3D node(grid.GetPlace(column, row), grid.GetHeightOf(column, row));
                    if (!std::isnan(node.GetZ())) vertices.push_back(node);
                }
            }
            return true;
        }
        case MathTypes::TriangleStrip3D:
            return CollectMesh<TriangleStrip3D>(geometry, vertices);
        case MathTypes::Polygon2D:
            CollectRings(static_cast<const Polygon2D&>(geometry), vertices);
            return true;
        case MathTypes::Polygon3D:
            CollectRings(static_cast<const Polygon3D&>(geometry), vertices);
            return true;
        case MathTypes::Polyline2D:
            return CollectChainVertices(static_cast<const Polyline2D&>(geometry), vertices);
        case MathTypes::Polyline3D:
            return CollectChainVertices(static_cast<const Polyline3D&>(geometry), vertices);
        case MathTypes::Arc3D:
        case MathTypes::Line3D: {
            const auto& element = static_cast<const IPolyline3DElement&>(geometry);
            vertices.insert(vertices.end(), {element.GetStart(), element.GetEnd()});
            return true;
        }
        default:
            if (const IPolyline2DElement* const element = detail::AsPlanElement(geometry)) {
                vertices.insert(vertices.end(), {Lifted(element->GetStart()), Lifted(element->GetEnd())});
                return true;
            }
            return false;
    }
}

}  // namespace

bool Geometry::GetVertices(const IGeometry& geometry, std::vector<Point3D>& vertices) {
    std::vector<const IGeometry*> one{&geometry};
    return GetVertices(one, vertices);
}

bool Geometry::GetVertices(std::vector<const IGeometry*>& geometries, std::vector<Point3D>& vertices) {
    std::vector<Point3D> collected;
    for (const IGeometry* const geometry : geometries) {
        if (geometry == nullptr || !CollectVertices(*geometry, collected)) return false;
    }
    vertices.insert(vertices.end(), collected.begin(), collected.end());
    return true;
}

}  // namespace Kalvio::Math
