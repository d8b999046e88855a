#include "fuzz/Bytes.h"

using namespace Kalvio::Math;

void Kalvio::Math::FuzzGround(Bytes& bytes) {
    const bool tame = bytes.Tame();
    TinSurfacePatch3D::Ground ground;
    const double tolerance = bytes.TakeCount(2) == 0 ? 1e-4 : 1e-2;
    ground.points = bytes.TakePoints3D(bytes.TakeCount(12));
    for (auto* const chains : {&ground.breaklines, &ground.borders, &ground.holes}) {
        *chains = bytes.TakeSome(3, [&] { return LineString3D(bytes.TakePoints3D(bytes.TakeCount(8))); });
    }
    if (bytes.TakeCount(2) == 0) ground.longestRimEdge = bytes.TakeDouble();
    const std::vector<Point2D> places = bytes.TakePoints();
    TinSurfacePatch3D surface, design, ofGrid;
    std::vector<TinSurfacePatch3D::HeightConflict> conflicts;
    const bool isBuilt = surface.Build(ground, Tolerances(tolerance), conflicts);
    Require(isBuilt == (surface.GetTrianglesCount() > 0));
    const bool hasChains = !ground.breaklines.empty() || !ground.borders.empty() || !ground.holes.empty();
    unsigned int triangle = 0;
    std::vector<double> heights;
    surface.GetHeights(places, heights);
    for (const Point2D& place : places) {
        double z = 0.0, hinted = 0.0, slope = 0.0;
        const bool isInside = surface.GetHeight(place, z);
        Require(isInside == surface.GetHeight(place, hinted, triangle));
        Require(isInside != std::isnan(heights[static_cast<std::size_t>(&place - places.data())]));
        if (!isInside) continue;
        if (tame) Require(std::abs(z) <= 2048.0 && std::abs(hinted - z) <= 1e-3 * (1.0 + std::abs(z)));
        See(z);
        Vec3D normal;
        Angle fall;
        Require(surface.GetNormal(place, normal) && surface.GetSlope(place, slope, fall));
        Point3D nearest(place, z + 1.0);
        if (tame) Require(surface.GetNearestPoint(nearest) && nearest.Distance(Point3D(place, z)) <= 2.0 + 1e-6);
    }
    std::vector<LineString3D> contours;
    Require(surface.GetContours(std::vector{0.0, 1.0, 0.0625}, contours));
    See(contours);
    for (const LineString3D& contour : contours) Require(contour.GetSize() > 1);
    TinSurfacePatch3D::Volumes whole, there, back;
    TinSurfacePatch3D::Ground shifted{ground.points, {}, {}, {}, 0.0};
    for (Point3D& p : shifted.points) p = Point3D(p.GetY(), p.GetX(), -p.GetZ());
    const bool hasDesign = design.Build(shifted, Tolerances(tolerance));
    (void)surface.GetVolumes(1.0, Polygon2D(places), there);
    if (surface.GetVolumes(0.0, whole) && tame) RequireNear(whole.area, surface.GetPlanArea(), 1e-3);
    if (isBuilt && hasDesign) {
        Require(surface.GetVolumes(design, there) && design.GetVolumes(surface, back));
        See({there.cut, there.fill, there.area});
        if (tame)
            Require(std::abs(there.cut - back.fill) <= 1e-6 * (1.0 + there.cut) && there.area <= whole.area + 1e-3);
    }
    Polyline2D plan;
    for (std::size_t i = 1; i < places.size(); ++i) plan.AppendElement(new Line2D(places[i - 1], places[i]));
    std::vector<CrossSections::Section> sections;
    std::vector<CrossSections::Mass> masses;
    const bool isCut = CrossSections::Make(Alignment(plan), {0.0, 9.0}, -3.0, 5.0, surface, design, sections);
    Require(isCut == CrossSections::GetMasses(sections, masses));
    for (const CrossSections::Section& section : sections) {
        Require(!(section.area.cut < 0.0 || section.area.fill < 0.0));
        if (tame) Require(section.area.cut + section.area.fill <= 8.0 * 4096.0 + 1e-3);
    }
    TinSurfacePatch3D edited = surface, thin = surface, whole3D = surface;
    std::vector<unsigned int> numbers, stayed;
    const bool isEdited = edited.AddPoints(shifted.points, Tolerances(tolerance), numbers);
    std::erase(numbers, TinSurfacePatch3D::noVertex);
    Require((isEdited || !tame || !isBuilt) && edited.RemoveVertices(numbers, stayed));
    // A division moves the border by the tolerance at most.
    if (tame) Require(std::abs(edited.GetPlanArea() - surface.GetPlanArea()) <= tolerance * 12 * 6000.0);
    const bool isThin = thin.Thin(0.5);
    Require(isThin || !tame || !isBuilt || hasChains);
    See(thin.GetTriangles().GetIndexes());
    std::size_t holes = 0;
    if (whole3D.FillHoles(1e9, holes)) {
        Require(whole3D.GetTrianglesCount() >= surface.GetTrianglesCount() + holes);
        if (tame) Require(whole3D.FillHoles(1e9, holes) && holes == 0);
    }
    GridSurface grid;
    const BoundingBox2D extent = surface.GetBoundingBox2D();
    const Vec2D size = extent.GetMaxPoint() - extent.GetMinPoint();  // 2^31 nodes would be too many here
    if (size.GetX() < 6400.0 && size.GetY() < 6400.0 && grid.SetOver(extent, 64.0)) {
        grid.Fill([&surface](const Point2D& place, double& z) { return surface.GetHeight(place, z); });
        const bool isTin = grid.MakeTin(ofGrid);
        for (const Point2D& place : places) {
            double z = 0.0, bilinear = 0.0, slope = 0.0;
            Angle fall;
            const bool isInside = grid.GetTriangleHeight(place, z);
            Require(!isInside || isTin);
            if (tame) Require(isInside == ofGrid.IsInside(place));
            if (tame && grid.GetHeight(place, bilinear)) RequireNear(bilinear, 0.0, 2048.0 + 1e-9);
            (void)grid.GetSlope(place, slope, fall);
        }
    }
    std::vector<LineString3D> draped;
    (void)surface.Drape(places, draped);
}
