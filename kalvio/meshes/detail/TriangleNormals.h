#pragma once

#include "kalvio/core/Point3D.h"
#include "kalvio/core/Vec3D.h"
#include "kalvio/core/WindingValue.h"
#include "kalvio/meshes/detail/Triangles.h"

#include <cstddef>
#include <vector>

/// Normals of triangle sets. Every function replaces what the vector held; a triangle whose vertices do not exist has
/// the normal 0 and gives nothing to any vertex.
namespace Kalvio::Math::detail {

inline constexpr double verticalSine = 1e-11;    // z of a unit normal: faces this steep have no winding in plan
inline constexpr double creaseRounding = 1e-12;  // a difference of cosines: normals this near to the crease are within

/// Twice the area as a vector: from its tip the triangle runs counter-clockwise.
inline Vec3D DoubledVectorArea(const std::vector<Point3D>& vertices, const unsigned int* corners) {
    const Point3D& a = vertices[corners[0]];
    return (vertices[corners[1]] - a).CrossProduct(vertices[corners[2]] - a);
}

inline WindingValue WindingInPlan(const std::vector<Point3D>& vertices, const unsigned int* corners) {
    const Vec3D normal = DoubledVectorArea(vertices, corners);
    const double least = verticalSine * normal.Length();
    if (normal.GetZ() > least) return WindingValue::CounterClockwise;
    return normal.GetZ() < -least ? WindingValue::Clockwise : WindingValue::Vertical;
}

inline Vec3D FaceNormal(const std::vector<Point3D>& vertices, const unsigned int* corners, bool ccw) {
    const Point3D& b = vertices[corners[1]];
    const Vec3D normal = (b - vertices[corners[0]]).CrossProduct(vertices[corners[2]] - b).Normalize();
    return ccw ? normal : -normal;
}

/// One per triangle.
inline void ComputeFaceNormals(const std::vector<Point3D>& vertices, const std::vector<unsigned int>& indexes, bool ccw,
                               std::vector<Vec3D>& normals) {
    normals.assign(indexes.size() / 3, Vec3D());
    ForEachTriangle(indexes, vertices.size(), [&](const unsigned int* corners, std::size_t triangle) {
        normals[triangle] = FaceNormal(vertices, corners, ccw);
    });
}

/// One per vertex.
inline void ComputeVertexNormals(const std::vector<Point3D>& vertices, const std::vector<unsigned int>& indexes,
                                 bool ccw, std::vector<Vec3D>& normals) {
    normals.assign(vertices.size(), Vec3D());
    ForEachTriangle(indexes, vertices.size(), [&](const unsigned int* corners, std::size_t) {
        const Vec3D normal = FaceNormal(vertices, corners, ccw);
        for (int k = 0; k < 3; ++k) normals[corners[k]] += normal;
    });
    for (Vec3D& normal : normals) normal.Normalize();
}

/// One per corner, in the order of the indexes.
inline void ComputeCornerNormals(const std::vector<Point3D>& vertices, const std::vector<unsigned int>& indexes,
                                 bool ccw, double cosineOfCrease, std::vector<Vec3D>& normals) {
    std::vector<Vec3D> faces;
    ComputeFaceNormals(vertices, indexes, ccw, faces);
    const TrianglesAround around(indexes, vertices.size());
    normals.assign(3 * faces.size(), Vec3D());
    ForEachTriangle(indexes, vertices.size(), [&](const unsigned int* corners, std::size_t triangle) {
        for (std::size_t k = 0; k < 3; ++k) {
            Vec3D sum;
            for (const std::size_t other : around.Of(corners[k])) {
                const bool isWithin = faces[other].Vec3DCosAngle(faces[triangle]) >= cosineOfCrease - creaseRounding;
                if (other == triangle || isWithin) sum += faces[other];
            }
            normals[3 * triangle + k] = sum.Normalize();
        }
    });
}

}  // namespace Kalvio::Math::detail
