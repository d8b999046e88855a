#pragma once

#include "kalvio/meshes/TinSurfacePatch3D.h"
#include "kalvio/polygons/detail/ConstrainedTriangulation.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace Kalvio::Math::detail {

inline constexpr double largestOfSurface = 1e70;  // of coordinates: products of four do not overflow

inline bool IsOfSurface(const Point3D& p) {
    return std::abs(p.GetX()) <= largestOfSurface && std::abs(p.GetY()) <= largestOfSurface &&
           std::abs(p.GetZ()) <= largestOfSurface;
}

inline PlanePoint InPlan(const Point2D& p) { return {p.GetX(), p.GetY()}; }
inline PlanePoint InPlan(const Point3D& p) { return {p.GetX(), p.GetY()}; }

/// A triangulation in plan and the heights of its vertices, of which a surface is made.
class SurfaceBuilder {
public:
    using HeightConflict = TinSurfacePatch3D::HeightConflict;

    /// Of points and chains; heights are gathered while edges are required.
    bool Triangulate(const TinSurfacePatch3D::Ground& ground, double userTolerance);
    /// Of as few vertices of a surface as its chains, its border and a tolerance of heights allow.
    /// @param isOfChain  per edge
    bool Thin(const TinSurfacePatch3D& surface, const std::vector<bool>& isOfChain, double heightTolerance);

    /// The triangles inside, along the curve on which the vertices lie, with their neighbours and chains.
    bool Collect(IndexedTriangleSet3D& set, std::vector<unsigned int>& neighbors, std::vector<bool>& isOfChain) const;
    /// The holes of a surface, those of no more than an area in plan: three of its vertices for each triangle in them.
    /// @return false for a surface that lies over itself
    static bool FindHoles(const TinSurfacePatch3D& surface, double largestArea, std::vector<unsigned int>& corners,
                          std::size_t& count);
    const std::vector<HeightConflict>& GetConflicts() const { return conflicts; }

private:
    using Triangulation = ConstrainedTriangulation;

    static constexpr double unset = std::numeric_limits<double>::quiet_NaN();

    Point2D PlaceOf(Triangulation::Index vertex) const;
    void Compare(Triangulation::Index vertex, double height);
    void TakeHeights(const std::vector<double>& given);
    bool Require(std::size_t first, std::size_t count, std::uint8_t marks);
    double HeightAlong(Triangulation::Index from, Triangulation::Index to, const Point2D& place) const;
    void TakeDivisions();
    std::vector<std::uint8_t> FindInside() const;
    void CutRim(std::vector<std::uint8_t>& inside) const;

    double tolerance = 0.0;
    double longestRimEdge = 0.0;
    bool hasBorders = false;
    bool hasRings = false;
    std::vector<HeightConflict> conflicts;
    std::optional<Triangulation> triangulation;
    std::vector<double> heights;  // per vertex
};

}  // namespace Kalvio::Math::detail
