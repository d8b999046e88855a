#include "kalvio/Math.h"
#include "support/Testing.h"

#include <complex>

namespace Kalvio::Math {
namespace {

// The rules of docs/bad-input.md, each asked with NaN, infinities and more where the row says so.
struct Rule {
    const char* says;
    bool (*holds)(double bad);
};

const LineString2D chain{Point2D(0, 0), Point2D(3, 0), Point2D(3, 4)};
const Polygon2D square(LineString2D{Point2D(0, 0), Point2D(4, 0), Point2D(4, 4), Point2D(0, 4)});
const std::vector<Point3D> samples{Point3D(0, 0, 1), Point3D(3, 0, 2), Point3D(0, 4, 3)};

Polygon2D Beside(double x) { return LineString2D{Point2D(0, 0), Point2D(x, 0), Point2D(4, 4), Point2D(0, 4)}; }

const Rule notFinite[] = {
    {"equals nothing", [](double x) { return !Point2D(x, 0).IsEqualTo(Point2D(1, 0), 1e-4); }},
    {"passes through angles", [](double x) { return !std::isfinite(Angle(x).GetRadians()); }},
    {"gives no inverse",
     [](double x) {
         MatrixNM matrix(2, 2), inverse(1, 1);
         matrix[0] = VecND({x, 1.0});
         matrix[1] = VecND({1.0, 1.0});
         return !matrix.GetInverse(inverse) && inverse.GetNumRows() == 1;
     }},
    {"has no roots",
     [](double x) {
         std::vector<std::complex<double>> found;
         double roots[3];
         return CubicFunction(1, x, 1, 0).GetRoots(roots) == 0 &&
                Polynomial{x, 1, 1}.FindQuadraticEquationRoots(found) == 0 && found.empty();
     }},
    {"has no common points",
     [](double x) {
         std::vector<Point2D> points;
         const Line2D bad(Point2D(x, 0), Point2D(1, 1)), line(Point2D(0, 1), Point2D(2, 1));
         (void)Intersection::LineSegmentLineSegment(bad, line, points, kTolerances);
         return points.empty();
     }},
    {"is as far as can be",
     [](double x) {
         return Distance::PointToLineString(chain, Point2D(x, 0), 1e-4) == std::numeric_limits<double>::max();
     }},
    {"is the fault of a polygon",
     [](double x) {
         Point2D where;
         return !Beside(x).Validate(where, true, 1e-4) && !std::isfinite(where.GetX());
     }},
    {"lies outside", [](double x) { return !PointInPolygon(square, 8, 1e-4).IsPointInside(Point2D(x, 1), 1e-4); }},
    {"makes no area",
     [](double x) {
         std::vector<Polygon2D> areas(1);
         Polygon2D simple;
         return !PolygonsBooleanOperation::Union(square, Beside(x), areas, kTolerances) && areas.size() == 1 &&
                !GeometrySimplifier::SimplifyByDistance(Beside(x), 1.0, simple) && simple.GetSize() == 0;
     }},
    {"makes no surface",
     [](double x) {
         TinSurfacePatch3D surface;
         TinSurfacePatch3D::Ground ground;
         ground.points = samples;
         ground.points.emplace_back(3, 4, x);
         return !surface.Build(ground, kTolerances);
     }},
    {"is refused by the index of points",
     [](double x) {
         const auto index = SpatialIndexes::IQuadTreeForPoints::Create(4, BoundingBox2D());
         return !index->Insert(Point3D(x, 0, 0)) && index->GetNrOfPoints() == 0;
     }},
    {"is not kriged",
     [](double x) {
         const OrdinaryKriging kriging(new SphericalVariogramModel(1.0, 10.0));
         double value = 7.0;
         std::vector<Point3D> bad = samples;
         bad[1] = Point3D(1, 1, x);
         return !kriging.Interpolate(Point2D(1, 1), bad, value) &&
                !kriging.Interpolate(Point2D(x, 1), samples, value) && value == 7.0;
     }},
    {"makes no profile, cant or plan",
     [](double x) {
         using Vertex = Profile::Vertex;
         const Cant::Knot knots[] = {{0.0, x, 0.0}, {9.0, 0.0, 0.0}};
         Profile profile;
         Cant cant;
         return !profile.Set(std::vector{Vertex::Corner(0, 0), Vertex::Corner(9, x)}) &&
                profile.GetFaults()[0].vertex == 1 && !cant.Set(knots, Cant::Pivot::Axis, 0.0);
     }},
    {"has no text",
     [](double x) {
         std::string text = "kept";
         return !Wkt::Write(LineString2D{Point2D(x, 0), Point2D(1, 1)}, text) && text == "kept";
     }},
};

const Rule empty[] = {
    {"boxes are the point box at the origin",
     [](double) {
         const BoundingBox2D box;
         return LineString2D().GetBoundingBox2D().IsEqualTo(box, 0.1) &&
                Polygon2D().GetBoundingBox2D().IsEqualTo(box, 0.1) &&
                Polyline2D().GetBoundingBox2D().IsEqualTo(box, 0.1) &&
                IndexedTriangleSet3D().GetBoundingBox2D().IsEqualTo(box, 0.1);
     }},
    {"lengths, areas and volumes are 0",
     [](double) {
         return LineString2D().GetLength() == 0.0 && Polyline2D().GetLength() == 0.0 && Polygon2D().GetArea() == 0.0 &&
                IndexedTriangleSet3D().GetVolume(5.0) == 0.0;
     }},
    {"the centroid is the origin", [](double) { return Polygon2D().GetCentroid().IsEqualTo(Point2D(), 1e-300); }},
    {"hulls are empty",
     [](double) {
         Polygon2D hull = square;
         Geometry::ConvexHull(std::vector<Point2D>(), hull);
         return hull.GetSize() == 0;
     }},
};

const Rule degenerate[] = {
    {"no point lies on a line of no length",
     [](double) { return !Line2D(Point2D(), Point2D()).IsPointOnGeometry(Point2D(), kTolerances); }},
    {"no point lies on a plane without normal",
     [](double) { return !Plane3D(Point3D(), Point3D(), Point3D()).IsPointOnGeometry(Point3D(), kTolerances); }},
    {"a ring without area is clockwise", [](double) { return Polygon2D().GetWinding() == WindingValue::Clockwise; }},
    {"two samples at one place are not kriged",
     [](double) {
         double value = 7.0;
         return !OrdinaryKriging(new SphericalVariogramModel(1.0, 10.0))
                     .Interpolate(Point2D(1, 1), {samples[0], samples[0]}, value) &&
                value == 7.0;
     }},
};

TEST(BadInputTest, IsAnsweredAsTold) {
    for (const double bad : {kNan, kInfinity, -kInfinity}) {
        for (const Rule& rule : notFinite) EXPECT_TRUE(rule.holds(bad)) << bad << ' ' << rule.says;
    }
    for (const Rule& rule : empty) EXPECT_TRUE(rule.holds(0.0)) << "empty: " << rule.says;
    for (const Rule& rule : degenerate) EXPECT_TRUE(rule.holds(0.0)) << rule.says;
}

}  // namespace
}  // namespace Kalvio::Math
