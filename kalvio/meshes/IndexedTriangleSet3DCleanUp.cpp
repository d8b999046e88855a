#include "kalvio/meshes/IndexedTriangleSet3DCleanUp.h"

#include "kalvio/meshes/detail/TriangleNormals.h"
#include "kalvio/meshes/detail/Triangles.h"

namespace Kalvio::Math {

WindingValue IndexedTriangleSet3DCleanUp::Get2DWindingOrVertical(const std::vector<Point3D>& vertices,
                                                                 const std::vector<unsigned int>& indexes,
                                                                 unsigned int triangle) {
    const unsigned int* const corners = detail::CornersOf(indexes, vertices.size(), triangle);
    return corners == nullptr ? WindingValue::Vertical : detail::WindingInPlan(vertices, corners);
}

}  // namespace Kalvio::Math
