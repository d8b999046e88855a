#include "kalvio/core/Tolerances.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/Polygon2D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace Kalvio::Math {

namespace {

// A convex polygon in plan: a triangle that two others have cut, and a level line.
class ConvexPiece {
public:
    ConvexPiece() = default;
    explicit ConvexPiece(const std::array<Point2D, 3>& triangle) {
        for (const Point2D& p : triangle) Push(p);
    }

    std::size_t GetSize() const { return size; }
    const Point2D& operator[](std::size_t i) const { return corners[i]; }
    void Push(const Point2D& p) {
        if (size < corners.size()) corners[size++] = p;
    }

    // The part where a linear function that has these values at the corners is not negative.
    ConvexPiece Part(const std::array<double, 12>& values) const {
        ConvexPiece part;
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t next = i + 1 < size ? i + 1 : 0;
            if (values[i] >= 0.0) part.Push(corners[i]);
            if ((values[i] > 0.0 && values[next] < 0.0) || (values[i] < 0.0 && values[next] > 0.0)) {
                part.Push(corners[i] + (corners[next] - corners[i]) * (values[i] / (values[i] - values[next])));
            }
        }
        return part;
    }
    template <class Function>
    std::array<double, 12> ValuesOf(Function&& function) const {
        std::array<double, 12> values{};
        for (std::size_t i = 0; i < size; ++i) values[i] = function(corners[i]);
        return values;
    }
    // The part inside a triangle, counter-clockwise.
    ConvexPiece Within(const std::array<Point2D, 3>& triangle) const {
        ConvexPiece part = *this;
        for (std::size_t i = 0; i < 3 && part.size > 2; ++i) {
            const Point2D& from = triangle[i];
            const Vec2D along = triangle[i == 2 ? 0 : i + 1] - from;
            part = part.Part(part.ValuesOf([&](const Point2D& p) { return along.PerpDotProduct(p - from); }));
        }
        return part;
    }
    double GetArea() const {
        double sum = 0.0;
        for (std::size_t i = 2; i < size; ++i) {
            sum += (corners[i - 1] - corners[0]).PerpDotProduct(corners[i] - corners[0]);
        }
        return 0.5 * sum;
    }
    // Over the piece, of a linear function.
    template <class Function>
    double Integrate(Function&& function) const {
        double sum = 0.0;
        for (std::size_t i = 2; i < size; ++i) {
            sum += (corners[i - 1] - corners[0]).PerpDotProduct(corners[i] - corners[0]) *
                   (function(corners[0]) + function(corners[i - 1]) + function(corners[i]));
        }
        return sum / 6.0;
    }

private:
    std::array<Point2D, 12> corners;
    std::size_t size = 0;
};

// A triangle near the origin of its piece, and its height there.
struct PlanTriangle {
    PlanTriangle(const IndexedTriangleSet3D& set, std::size_t triangle, const Vec2D& shift) {
        Point3D a;
        Point3D b;
        Point3D c;
        if (!set.GetTriangleAt(triangle, a, b, c)) return;
        corners = {a.GetPoint2D() - shift, b.GetPoint2D() - shift, c.GetPoint2D() - shift};
        const Vec3D normal = (b - a).CrossProduct(c - a);
        height = a.GetZ();
        // One whose width is rounding has no volume.
        if (normal.GetZ() > 0.0) slope = Vec2D(-normal.GetX() / normal.GetZ(), -normal.GetY() / normal.GetZ());
    }
    double HeightAt(const Point2D& p) const { return height + slope.DotProduct(p - corners[0]); }

    std::array<Point2D, 3> corners;
    double height = 0.0;
    Vec2D slope;
};

}  // namespace

// The triangles of a surface that may overlap others, each once for each of those.
class TinSurfacePatch3D::Overlaps {
public:
    explicit Overlaps(const TinSurfacePatch3D& other) : surface(other), seenIn(other.GetTrianglesCount()) {}

    template <class Visit>
    void ForEach(const std::array<Point2D, 3>& corners, Visit&& visit) {
        ++asked;
        surface.GetLocator().grid.ForEachNear(corners, [&](std::uint32_t t) {
            if (seenIn[t] == asked) return;
            seenIn[t] = asked;
            visit(t);
        });
    }

private:
    const TinSurfacePatch3D& surface;
    std::vector<std::uint64_t> seenIn;  // number of the question
    std::uint64_t asked = 0;
};

bool TinSurfacePatch3D::AddVolumes(const TinSurfacePatch3D* design, double height, const Polygon2D* area,
                                   Volumes& volumes) const {
    if (neighbors.empty() || (design != nullptr && design->neighbors.empty()) || !std::isfinite(height)) return false;
    std::optional<TinSurfacePatch3D> inside;
    std::optional<Overlaps> areas;
    if (area != nullptr) {
        Ground ground;
        ground.borders.emplace_back(area->GetPoints(), 0.0);
        for (unsigned int i = 0; i < area->GetNumHoleBoundaries(); ++i) {
            ground.holes.emplace_back(area->GetHoleBoundary(i), 0.0);
        }
        if (!inside.emplace().Build(ground, Tolerances(noise))) return false;
        areas.emplace(*inside);
    }
    std::optional<Overlaps> designs;
    if (design != nullptr) designs.emplace(*design);

    Volumes sum;
    for (unsigned int t = 0; t < neighbors.size() / 3; ++t) {
        const std::array<Point2D, 3> corners = CornersOf(t);
        const Vec2D shift = corners[0] - Point2D();
        const PlanTriangle ground(triangles, t, shift);
        const auto add = [&](const ConvexPiece& piece, auto&& depthAt) {
            if (piece.GetSize() < 3) return;
            const std::array<double, 12> depths = piece.ValuesOf(depthAt);
            std::array<double, 12> opposite{};
            for (std::size_t i = 0; i < depths.size(); ++i) opposite[i] = -depths[i];
            sum.cut += std::max(piece.Part(depths).Integrate(depthAt), 0.0);
            sum.fill -= std::min(piece.Part(opposite).Integrate(depthAt), 0.0);
            sum.area += piece.GetArea();
        };
        const auto compare = [&](const ConvexPiece& piece) {
            if (!designs) {
                add(piece, [&](const Point2D& p) { return ground.HeightAt(p) - height; });
                return;
            }
            designs->ForEach(corners, [&](std::uint32_t other) {
                const PlanTriangle above(design->triangles, other, shift);
                add(piece.Within(above.corners),
                    [&](const Point2D& p) { return ground.HeightAt(p) - above.HeightAt(p); });
            });
        };
        if (!areas) {
            compare(ConvexPiece(ground.corners));
            continue;
        }
        std::vector<ConvexPiece> pieces;
        areas->ForEach(corners, [&](std::uint32_t part) {
            const ConvexPiece piece =
                ConvexPiece(ground.corners).Within(PlanTriangle(inside->triangles, part, shift).corners);
            if (piece.GetSize() > 2) pieces.push_back(piece);
        });
        for (const ConvexPiece& piece : pieces) compare(piece);
    }
    volumes = sum;
    return true;
}

bool TinSurfacePatch3D::GetVolumes(const TinSurfacePatch3D& design, Volumes& volumes) const {
    return AddVolumes(&design, 0.0, nullptr, volumes);
}

bool TinSurfacePatch3D::GetVolumes(const TinSurfacePatch3D& design, const Polygon2D& area, Volumes& volumes) const {
    return AddVolumes(&design, 0.0, &area, volumes);
}

bool TinSurfacePatch3D::GetVolumes(double height, Volumes& volumes) const {
    return AddVolumes(nullptr, height, nullptr, volumes);
}

bool TinSurfacePatch3D::GetVolumes(double height, const Polygon2D& area, Volumes& volumes) const {
    return AddVolumes(nullptr, height, &area, volumes);
}

}  // namespace Kalvio::Math
