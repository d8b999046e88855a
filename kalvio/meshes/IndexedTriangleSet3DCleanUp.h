#pragma once

#include "kalvio/core/WindingValue.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"

#include <vector>

namespace Kalvio::Math {

/// Static operations on the arrays of triangle sets, as `IndexedTriangleSet3D` holds them and by its rules.
///
/// Neighbours are triangles that name the same two vertices. A triangle that names a vertex twice has none: it is no
/// part of any surface.
class KALVIO_MATH_API IndexedTriangleSet3DCleanUp {
public:
    /// The winding of a triangle in plan, by the z component of its normal at unit length: counter-clockwise above
    /// 1e-11, clockwise below -1e-11, else `Vertical`, also for a triangle without area and where there is none.
    static WindingValue Get2DWindingOrVertical(const std::vector<Point3D>& vertices,
                                               const std::vector<unsigned int>& indexes, unsigned int triangle);
    /// Reverses triangles until neighbours run against each other along the edge they share, breadth first from the
    /// first triangle of each surface, which keeps its winding. A surface ends at edges of one triangle and at edges of
    /// three or more, across which no winding is carried. Near linear.
    /// @param isClosed    set to whether the triangles are one surface and every edge has exactly two triangles
    /// @param isCoherent  set to whether all neighbours agree now; a surface with one side only (a Moebius strip) stays
    ///                    with a seam
    /// @return whether any triangle was reversed
    static bool FixCoherentTriangleWinding(const std::vector<Point3D>& vertices, std::vector<unsigned int>& indexes,
                                           bool& isClosed, bool& isCoherent);
    /// Replaces the edge that two triangles share by the other diagonal of their quadrilateral a, d, b, c: (a, b, c)
    /// and (b, a, d) become (a, d, c) and (d, b, c). Whether the quadrilateral is convex is the caller's business.
    /// @return false, nothing changed, for triangles that do not exist, do not share exactly one edge, or do not run
    ///         against each other along it
    static bool FlipEdge(std::vector<unsigned int>& indexes, unsigned int first, unsigned int second);
    /// Appends one set per surface, the parts that hang together by edges of exactly two triangles, in the order of
    /// their first triangles, with the vertices they name.
    /// @return `NoTriangles`, nothing appended, when no triangle has an area between three vertices
    static IndexedTriangleSet3D::ErrorMessage SplitIntoUnconnectedSurfaces(const IndexedTriangleSet3D& set,
                                                                           std::vector<IndexedTriangleSet3D>& surfaces);
};

}  // namespace Kalvio::Math
