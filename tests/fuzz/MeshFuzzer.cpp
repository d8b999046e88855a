#include "fuzz/Bytes.h"

using namespace Kalvio::Math;

namespace {

IndexedTriangleSet3D TakeSet(Bytes& bytes) {
    IndexedTriangleSet3D set;
    const unsigned int count = 3 + bytes.TakeCount(16);
    set.AppendVertices(bytes.TakePoints3D(count));
    set.SetCCW(bytes.TakeCount(2) == 0);
    set.AppendIndexes(bytes.TakeSome(255, [&] { return bytes.TakeCount(count + 1); }));  // one of them does not exist
    return set;
}

void CheckEdits(IndexedTriangleSet3D set, double tolerance, bool tame) {
    const double volume = set.GetVolume(0.0);
    See(volume);
    set.InvertAllTriangles();
    if (tame) RequireNear(set.GetVolume(0.0) + volume, 0.0, 1e-6 * (1.0 + std::abs(volume)));
    (void)set.FlipEdge(0, 1);
    bool isClosed = false, isCoherent = false;
    (void)IndexedTriangleSet3DCleanUp::FixCoherentTriangleWinding(set.GetVertices(), set.GetIndexes(), isClosed,
                                                                  isCoherent);
    Require(set.IsTriangleNeighborWindingCoherent() == isCoherent);
    for (const bool isDone : {false, true}) {  // a second edit changes nothing
        Require(!(set.CollapsePoints(tolerance) && isDone));
        Require(!(set.RemoveDuplicatedTriangles() && isDone));
        Require(!(set.RemoveUnusedVertices() > 0 && isDone));
    }
    std::vector<IndexedTriangleSet3D> surfaces;
    (void)set.SplitIntoUnconnectedSurfaces(surfaces);
    std::uint64_t triangles = 0;
    for (const IndexedTriangleSet3D& surface : surfaces) triangles += surface.GetTrianglesCount();
    Require(triangles <= set.GetTrianglesCount());
    (void)set.CollapsePoints2D(tolerance);
    See(set.GetIndexes());
    (void)set.AdjustVerticesToClosest({Point3D(1, 2, 3), Point3D(-4, 5, -6)});
}

// Against the sums over all indexes that name the same vertex.
void CheckNormals(const IndexedTriangleSet3D& set, double crease, bool tame) {
    const std::vector<unsigned int>& indexes = set.GetIndexes();
    std::vector<Vec3D> faces(1), vertices(1), corners(1);
    set.ComputeNormals(false, faces);
    set.ComputeNormals(true, vertices);
    set.ComputeNormals(true, corners, Angle(crease));
    See(corners);
    Require(faces.size() == indexes.size() / 3 && vertices.size() == set.GetVertices().size());
    Require(corners.size() == indexes.size() / 3 * 3);
    for (std::size_t k = 0; k < corners.size() && tame; ++k) {
        Point3D a, b, c;
        if (!set.GetTriangleAt(k / 3, a, b, c)) continue;
        const Vec3D normal = (b - a).CrossProduct(c - a).Normalize();
        Require((faces[k / 3] - (set.IsCCW() ? normal : -normal)).Length() <= 1e-14);
        Vec3D sum, within;
        for (std::size_t i = 0; i < corners.size(); ++i) {
            if (indexes[i] != indexes[k]) continue;
            const bool isNear = i / 3 == k / 3 || faces[i / 3].DotProduct(faces[k / 3]) > std::cos(crease) - 1e-12;
            sum += faces[i / 3];
            within += isNear ? faces[i / 3] : Vec3D();
        }
        if (sum.Length() > 1e-2) Require((vertices[indexes[k]] - sum.Normalize()).Length() <= 1e-12);
        if (within.Length() > 1e-2) Require((corners[k] - within.Normalize()).Length() <= 1e-12);
    }
}

void CheckQueries(const IndexedTriangleSet3D& set) {
    unsigned int windings[3] = {};
    set.GetTotalWindings2D(windings[0], windings[1], windings[2]);
    Require(windings[0] + windings[1] + windings[2] <= set.GetTrianglesCount());
    (void)set.IsOneClosedVolume();
    std::vector<LineString3D> borders;
    Require(set.GetBoundaries(borders) == !borders.empty());
    for (const LineString3D& border : borders) {
        const Vec3D closing = border.GetEnd() - border.GetStart();
        See(border);
        Require(border.GetSize() > 3 && !(closing.NormSquared() > 0.0));
    }
}

// Sections keep to the extent, and what cannot be cut takes no part in them.
void CheckSections(const IndexedTriangleSet3D& set, const Line2D& line, bool tame) {
    std::vector<LineString3D> sections;
    set.GetSections(line, sections);
    set.GetSectionsLineSegment(line, sections);
    set.GetSections(LineString2D{line.GetStart(), line.GetEnd(), Point2D(0.0, 0.0), line.GetStart()}, sections);
    Point3D low, high;
    set.GetBoundingBox().GetMinMaxPoints(low, high);
    for (const LineString3D& section : sections) {
        See(section);
        Require(section.GetSize() > 1);
        for (const Point3D& p : section.GetPoints()) {
            for (int axis = 0; axis < 3; ++axis) {
                Require(tame ? p[axis] >= low[axis] - 1e-6 && p[axis] <= high[axis] + 1e-6 : std::isfinite(p[axis]));
            }
        }
    }
}

void CheckPlan(const IndexedTriangleSet3D& set, bool tame) {
    IndexedTriangleSet2D plan;
    std::vector<Point2D> corners;
    for (const Point3D& vertex : set.GetVertices()) corners.push_back(vertex.GetPoint2D());
    plan.AppendVertices(corners);
    plan.AppendIndexes(set.GetIndexes());
    IndexedFaceSet3D faces(4);
    IndexedFaceSet2D flatFaces(4);
    faces.AppendVertices(set.GetVertices());
    flatFaces.AppendVertices(corners);
    (void)faces.IsEqualTo(std::as_const(faces).Translate(Vec3D(1, 2, 3)), 1.0);
    Require(flatFaces.GetBoundingBox().GetMinPoint() == faces.GetBoundingBox2D().GetMinPoint() || !tame);
    std::vector<Polygon2D> areas;
    (void)plan.GetBoundaries(areas, true);
    Require(!plan.CollapsePoints(0.125) || !plan.CollapsePoints(0.125));
}

}  // namespace

void Kalvio::Math::FuzzMesh(Bytes& bytes) {
    const bool tame = bytes.Tame();
    const Line2D line{bytes.TakePoint(), bytes.TakePoint()};
    const double tolerance = bytes.TakeDouble() / 256.0;
    const IndexedTriangleSet3D set = TakeSet(bytes);
    for (const double crease : {0.0, 0.5, 2.0}) CheckNormals(set, crease, tame);
    CheckQueries(set);
    CheckSections(set, line, tame);
    CheckPlan(set, tame);
    CheckEdits(set, tolerance, tame);
}
