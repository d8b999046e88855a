// Prints one line for each family of the library: its name and a digest over
// the bits of some 10^4 results on random input. Programs of different
// compilers and optimisations print the same.
#include <kalvio/Math.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <list>
#include <memory>
#include <vector>

using namespace Kalvio::Math;

namespace {

const Tolerances tolerances(1e-4, 1e-10);
constexpr double tolerance = 1e-4;

// SplitMix64: the distributions of the standard library differ among its
// makers.
class Random {
public:
    std::uint64_t Bits() {
        state += 0x9e3779b97f4a7c15U;
        std::uint64_t z = (state ^ (state >> 30U)) * 0xbf58476d1ce4e5b9U;
        z = (z ^ (z >> 27U)) * 0x94d049bb133111ebU;
        return z ^ (z >> 31U);
    }
    double In(double low, double high) { return low + (high - low) * (static_cast<double>(Bits() >> 11U) * 0x1p-53); }
    std::size_t Below(std::size_t count) { return Bits() % count; }
    // Statements of their own, here and below: the order in which arguments are
    // evaluated is the compiler's choice.
    Point2D Point(double reach) {
        const double x = 385000.0 + In(-reach, reach), y = 6672000.0 + In(-reach, reach);
        return {x, y};
    }
    Vec2D Vector() {
        const double x = In(-1.0, 1.0), y = In(-1.0, 1.0);
        return {x, y};
    }

private:
    std::uint64_t state = 20261122;
};

// FNV-1a over the bits of what it is given, in order.
class Digest {
public:
    void Add(std::uint64_t bits) { value = (value ^ bits) * 0x100000001b3U; }
    void Add(double number) { Add(std::isnan(number) ? 1 : std::bit_cast<std::uint64_t>(number)); }
    void Add(bool flag) { Add(std::uint64_t{flag}); }
    void Add(int number) { Add(static_cast<std::uint64_t>(number)); }
    void Add(unsigned int number) { Add(std::uint64_t{number}); }
    void Add(const Point2D& p) { Add(p.GetX(), p.GetY()); }
    void Add(const Vec2D& v) { Add(v.GetX(), v.GetY()); }
    void Add(const Point3D& p) { Add(p.GetX(), p.GetY(), p.GetZ()); }
    void Add(const std::complex<double>& number) { Add(number.real(), number.imag()); }
    template <class... Values>
    requires(sizeof...(Values) > 1) void Add(const Values&... values) { (Add(values), ...); }
    template <class T>
    void Add(const std::vector<T>& list) {
        Add(std::uint64_t{list.size()});
        for (const T& item : list) Add(item);
    }
    std::uint64_t Get() const { return value; }

private:
    std::uint64_t value = 0xcbf29ce484222325U;
};

std::unique_ptr<IPolyline2DElement> MakeElement(Random& random) {
    const Point2D start = random.Point(100.0);
    const Vec2D direction = random.Vector().Normalize();
    const double length = random.In(10.0, 200.0), radius = random.In(100.0, 400.0);
    const double other = random.Below(3) == 0 ? 0.0 : radius * random.In(2.0, 5.0);
    const std::size_t kind = random.Below(10);
    if (kind == 0) return std::make_unique<Line2D>(start, start + direction * length);
    if (kind == 1) return std::make_unique<Arc2D>(start, start + direction * radius, Angle(length / 60.0));
    if (kind == 2) {
        const double a = 1.0 / radius, b = random.In(-0.5, 0.5) - 2.0 * a * start.GetX();
        const double c = start.GetY() - (a * start.GetX() + b) * start.GetX(), x = start.GetX() + length;
        return std::make_unique<Parabola>(start, Point2D(x, (a * x + b) * x + c), a, b, c);
    }
    if (kind == 3) return std::make_unique<Clothoid>(other, radius, std::sqrt(length * radius), start, direction);
    return std::make_unique<Spiral2D>(static_cast<Spiral2D::Spiral2DType>(kind - 4), other, radius, length, start,
                                      direction);
}

Polygon2D MakePolygon(Random& random) {
    const Point2D center = random.Point(50.0);
    std::vector<Point2D> ring;
    const std::size_t count = 5 + random.Below(30);
    for (std::size_t i = 0; i < count; ++i) {
        const double turn = 6.283185307179586 * static_cast<double>(i) / static_cast<double>(count);
        ring.push_back(center + Vec2D(std::cos(turn), std::sin(turn)) * random.In(10.0, 100.0));
    }
    return ring;
}

IndexedTriangleSet3D MakeSurface(Random& random) {
    IndexedTriangleSet3D surface;
    constexpr unsigned int side = 12;
    for (unsigned int i = 0; i < side * side; ++i) {
        const Vec2D jitter = random.Vector() * 0.3;
        const Vec2D place(10.0 * (i % side), 10.0 * (i / side));
        surface.AppendVertex(Point3D(Point2D(385000.0, 6672000.0) + place + jitter, random.In(0.0, 8.0)));
        if (i % side + 1 == side || i / side + 1 == side) continue;
        surface.AppendIndexes({i, i + 1, i + side + 1, i, i + side + 1, i + side});
    }
    return surface;
}

void DigestNumbers(Random& random, Digest& digest) {
    const Vec2D v = random.Vector() * 1000.0;
    Angle turn(random.In(-20.0, 20.0));
    digest.Add(turn.GetRadians(), turn.GetDegrees(), v.GetAngle().GetRadians());
    Matrix2D plane;
    Matrix3D space;
    MatrixNM system(5, 5), inverse;
    VecND right(5), x;
    for (unsigned int row = 0; row < 5; ++row) {
        for (unsigned int column = 0; column < 5; ++column) {
            const double value = random.In(-5.0, 5.0);
            system[row][column] = value;
            if (row < 4 && column < 4) space.Set(static_cast<int>(row), static_cast<int>(column), value);
            if (row < 3 && column < 3) plane.Set(static_cast<int>(row), static_cast<int>(column), value);
        }
        right[row] = random.In(-5.0, 5.0);
    }
    std::array<std::complex<double>, 4> values;
    if (space.GetEigenValues(values)) digest.Add(values[0], values[1], values[2], values[3]);
    Matrix2D u, s, w;
    if (plane.SingularValueDecomposition(u, s, w)) digest.Add(Point2D(s.Get(0, 0), u.Get(1, 2) + w.Get(2, 1)));
    if (system.SolveLinearSystem(right, x, LUDecompositionMethod::Crout)) digest.Add(x[2]);
    if (system.GetInverse(inverse)) digest.Add(inverse[3][1]);
    double determinant = 0.0;
    if (system.Determinant(determinant)) digest.Add(determinant);
    Polynomial rest;
    std::vector<Polynomial> factors;
    const Polynomial quintic{right[0], right[1], right[2], right[3], right[4], 1.0};
    digest.Add(quintic.FindQuadraticFactors(rest, factors));
    for (const Polynomial& factor : factors) digest.Add(factor[0], factor[1]);
}

void DigestCurves(Random& random, Digest& digest) {
    Polyline2D chain;
    for (int i = 0; i < 4; ++i) chain.AppendElement(MakeElement(random).release());
    const Point2D query = random.Point(200.0);
    for (unsigned int i = 0; i < chain.GetNrOfElements(); ++i) {
        const IPolyline2DElement& element = chain.GetElementAtIndex(i);
        digest.Add(element.GetLength(), element.GetEnd(), element.GetMiddlePoint());
        digest.Add(element.GetNearestPoint(query, tolerances), element.GetBoundingBox2D().GetMaxPoint());
        double station = 0.0;
        digest.Add(element.GetLengthFromStartPoint(element.GetMiddlePoint(), station, tolerance), station);
    }
    std::vector<Polyline2D::PolylinePoint> samples;
    digest.Add(chain.MakePointsAndTangents(0.0, chain.GetLength(), samples, 25.0, tolerance));
    for (const Polyline2D::PolylinePoint& sample : samples) digest.Add(sample.point, sample.tangent);
}

void DigestPolygons(Random& random, Digest& digest) {
    const Polygon2D polygon = MakePolygon(random);
    digest.Add(polygon.GetArea(), polygon.GetCentroid(), polygon.GetMaxWidth(tolerance));
    Point2D place;
    digest.Add(polygon.GetOrientedBoundingBox2D().GetCenter(), polygon.GetPointInsideBoundary(place, tolerance), place);
    for (int i = 0; i < 10; ++i) digest.Add(polygon.IsPointInside(random.Point(100.0), tolerance));
    std::vector<Polygon2D> pieces;
    const double low = polygon.GetCentroid().GetY();
    PointInPolygon::PolygonClipHoriStrip(polygon, pieces, low, low + 20.0, tolerance);
    for (const Polygon2D& piece : pieces) digest.Add(piece.GetPoints());
    Polygon3D area;
    for (const Point2D& p : polygon.GetPoints()) area.AppendPoint(Point3D(p, 0.1 * p.GetX() - 0.2 * p.GetY()));
    std::vector<unsigned int> corners;
    digest.Add(area.Triangulate(corners, tolerance));
    for (const unsigned int corner : corners) digest.Add(corner);
}

void DigestQueries(Random& random, Digest& digest) {
    const std::unique_ptr<IPolyline2DElement> first = MakeElement(random), second = MakeElement(random);
    std::vector<IntersectionExt::IntersectionPoint<Point2D>> common;
    digest.Add(static_cast<int>(IntersectionExt::Intersect(*first, *second, common, tolerances)));
    for (const auto& place : common) digest.Add(place.point, place.firstStation, place.secondStation);
    Polyline2D chain;
    chain.AppendElement(*first);
    chain.AppendElement(*second);
    Polyline2D::PolylinePoint foot;
    const Point2D query = random.Point(200.0);
    digest.Add(Projection::NormalPointOnPolyline2(query, chain, foot, tolerance), foot.point);
    digest.Add(Distance::PointToLine(query, first->GetStart(), first->GetEnd()));
    std::vector<Point2D> crossings;
    const Polygon2D one = MakePolygon(random), other = MakePolygon(random);
    digest.Add(Projection::NearestPointOnPolygon(query, one, tolerance));
    const LineString2D string(one.GetPoints()), otherString(other.GetPoints());
    digest.Add(static_cast<int>(Intersection::LineStringLineString(string, otherString, crossings, tolerances)));
    digest.Add(crossings);
}

void DigestMeshes(Random& random, Digest& digest) {
    IndexedTriangleSet3D surface = MakeSurface(random);
    digest.Add(surface.GetVolume(0.0));
    std::vector<LineString3D> sections;
    const Point2D from = random.Point(60.0);
    surface.GetSections(Line2D(from, from + random.Vector() * 100.0), sections);
    for (const LineString3D& section : sections) digest.Add(section.GetPoints());
    std::vector<Vec3D> normals;
    surface.ComputeNormals(true, normals);
    for (const Vec3D& normal : normals) digest.Add(normal.GetZ());
    digest.Add(surface.CollapsePoints(9.8));
    for (const unsigned int index : surface.GetIndexes()) digest.Add(index);
}

void DigestIndexes(Random& random, Digest& digest) {
    struct Item : SpatialIndexes::ISpatialIndexData {
        void GetEnvelope(BoundingBoxND& envelope) const override { envelope = BoundingBoxND(box); }
        BoundingBox2D box;
        std::uint64_t number = 0;
    };
    std::vector<Item> items(300);
    SpatialIndexes::RStarTree star(false);
    SpatialIndexes::RTree tree;
    SpatialIndexes::QuadTree quads;
    const std::vector<SpatialIndexes::ISpatialIndex*> indexes{&star, &tree, &quads};
    for (Item& item : items) {
        const Point2D corner = random.Point(100.0);
        item.box = BoundingBox2D(corner, corner + random.Vector() * 10.0);
        item.number = static_cast<std::uint64_t>(&item - items.data());
        for (SpatialIndexes::ISpatialIndex* index : indexes) index->Insert(&item);
    }
    for (int i = 0; i < 10; ++i) {
        const Point2D corner = random.Point(100.0);
        const BoundingBoxND window(BoundingBox2D(corner, corner + random.Vector() * 40.0));
        for (const SpatialIndexes::ISpatialIndex* index : indexes) {
            std::list<SpatialIndexes::ISpatialIndexData*> found;
            digest.Add(index->Search(window, true, found));
            for (const auto* item : found) digest.Add(static_cast<const Item*>(item)->number);
        }
    }
}

void DigestStatistics(Random& random, Digest& digest) {
    std::vector<Point3D> samples;
    for (int i = 0; i < 20; ++i) {
        const Point2D place = random.Point(100.0);
        samples.emplace_back(place, random.In(0.0, 10.0));
    }
    KrigingSystem system;
    digest.Add(system.Build(OrdinaryKriging(new ExponentialVariogramModel(500.0, 300.0)), samples));
    for (int i = 0; i < 20; ++i) {
        double value = 0.0, variance = 0.0;
        digest.Add(system.Interpolate(random.Point(100.0), value, variance), value, variance);
    }
}

}  // namespace

int main() {
    struct Family {
        const char* name;
        int rounds;
        void (*run)(Random&, Digest&);
    };
    for (const Family& family : {Family{"numbers", 700, DigestNumbers}, Family{"curves", 200, DigestCurves},
                                 Family{"polygons", 200, DigestPolygons}, Family{"queries", 700, DigestQueries},
                                 Family{"meshes", 20, DigestMeshes}, Family{"indexes", 20, DigestIndexes},
                                 Family{"statistics", 200, DigestStatistics}}) {
        Random random;
        Digest digest;
        for (int i = 0; i < family.rounds; ++i) family.run(random, digest);
        std::printf("%s %016llx\n", family.name, static_cast<unsigned long long>(digest.Get()));
    }
    return 0;
}
