#include "kalvio/meshes/IndexedTriangleSet3DCleanUp.h"

#include "kalvio/meshes/detail/TriangleEdges.h"
#include "kalvio/meshes/detail/TriangleNormals.h"
#include "kalvio/meshes/detail/Triangles.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace Kalvio::Math {

WindingValue IndexedTriangleSet3DCleanUp::Get2DWindingOrVertical(const std::vector<Point3D>& vertices,
                                                                 const std::vector<unsigned int>& indexes,
                                                                 unsigned int triangle) {
    const unsigned int* const corners = detail::CornersOf(indexes, vertices.size(), triangle);
    return corners == nullptr ? WindingValue::Vertical : detail::WindingInPlan(vertices, corners);
}

bool IndexedTriangleSet3DCleanUp::FixCoherentTriangleWinding(const std::vector<Point3D>& vertices,
                                                             std::vector<unsigned int>& indexes, bool& isClosed,
                                                             bool& isCoherent) {
    const detail::CoherentParts parts = detail::FindCoherentParts(indexes, vertices.size());
    isClosed = parts.isClosed && parts.count == 1;
    isCoherent = parts.isCoherent;
    return detail::MakeCoherent(indexes, parts);
}

bool IndexedTriangleSet3DCleanUp::FlipEdge(std::vector<unsigned int>& indexes, unsigned int first,
                                           unsigned int second) {
    const std::size_t count = indexes.size() / 3;
    if (first == second || first >= count || second >= count) return false;
    unsigned int* const one = &indexes[3 * std::size_t{first}];
    unsigned int* const two = &indexes[3 * std::size_t{second}];
    if (detail::NamesVertexTwice(one) || detail::NamesVertexTwice(two)) return false;
    int shared = 0;
    unsigned int a = 0, b = 0, c = 0, d = 0;
    for (int i = 0; i < 3; ++i) {
        for (int k = 0; k < 3; ++k) {
            if (one[i] != two[(k + 1) % 3] || one[(i + 1) % 3] != two[k]) continue;
            a = one[i];
            b = two[k];
            c = one[(i + 2) % 3];
            d = two[(k + 2) % 3];
            ++shared;
        }
    }
    if (shared != 1) return false;
    std::copy_n(std::array{a, d, c}.begin(), 3, one);
    std::copy_n(std::array{d, b, c}.begin(), 3, two);
    return true;
}

IndexedTriangleSet3D::ErrorMessage IndexedTriangleSet3DCleanUp::SplitIntoUnconnectedSurfaces(
    const IndexedTriangleSet3D& set, std::vector<IndexedTriangleSet3D>& surfaces) {
    const std::vector<Point3D>& vertices = set.GetVertices();
    const std::vector<unsigned int>& indexes = set.GetIndexes();
    const detail::CoherentParts parts = detail::FindCoherentParts(indexes, vertices.size());
    if (parts.count == 0) return IndexedTriangleSet3D::ErrorMessage::NoTriangles;
    std::vector<IndexedTriangleSet3D> made(parts.count);
    std::vector<std::pair<std::size_t, unsigned int>> names(vertices.size(),
                                                            {detail::nowhere, 0});  // in which set, there
    std::vector<std::vector<std::size_t>> trianglesOf(parts.count);
    for (std::size_t i = 0; i < parts.partOf.size(); ++i) {
        if (parts.partOf[i] != detail::nowhere) trianglesOf[parts.partOf[i]].push_back(i);
    }
    for (std::size_t part = 0; part < parts.count; ++part) {
        made[part].SetCCW(set.IsCCW());
        for (const std::size_t triangle : trianglesOf[part]) {
            for (std::size_t k = 3 * triangle; k < 3 * triangle + 3; ++k) {
                auto& [owner, name] = names[indexes[k]];
                if (owner != part) {
                    owner = part;
                    name = made[part].GetVerticesSize();
                    made[part].AppendVertex(vertices[indexes[k]]);
                }
                made[part].GetIndexes().push_back(name);
            }
        }
    }
    surfaces.insert(surfaces.end(), std::make_move_iterator(made.begin()), std::make_move_iterator(made.end()));
    return IndexedTriangleSet3D::ErrorMessage::NoError;
}

}  // namespace Kalvio::Math
