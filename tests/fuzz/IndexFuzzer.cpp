#include "SpatialIndexes/Model.h"
#include "fuzz/Bytes.h"

using namespace Kalvio::Math;
using namespace Kalvio::Math::SpatialIndexes;

namespace {

// Items come and go, one by one or many at once, so that nodes split and join.
template <class Tree>
void CheckTree(const Bytes& bytes, unsigned int dimension) {
    Model<Tree> model(bytes, dimension);
    while (!model.bytes.Empty()) {
        const int what = model.Integer(0, 11);
        if (what == 0) model.InsertMany(model.Integer(0, 150));
        for (int i = what == 1 ? model.Integer(0, 150) : what < 4 ? 1 : 0; i > 0; --i) model.Remove();
        if (what == 4) model.CheckSearches();
        if (what > 4) model.Insert(what == 5);
    }
    model.CheckSearches();
    model.CheckStructureOf(model.tree);
    model.CheckStructureOf(Tree(model.tree));
}

void CheckPoints(Bytes bytes) {
    const unsigned int capacity = bytes.TakeCount(5);
    const Point2D low = bytes.TakePoint(), center = bytes.TakePoint();
    const double radius = bytes.TakeDouble();
    const auto index = IQuadTreeForPoints::Create(capacity, BoundingBox2D(low, center));
    std::vector<Point3D> found(1), expected(1);  // a search appends
    std::uint64_t count = 0;
    for (const Point3D& p : bytes.TakePoints3D()) {
        if (!index->Insert(p)) continue;
        ++count;
        if (p.GetPoint2D().Distance(center) <= radius) expected.push_back(p);
    }
    Require(index->GetNrOfPoints() == count && index->Search(center, radius, found) == expected.size() - 1);
    const auto isSame = [](const Point3D& p, const Point3D& q) {
        return std::memcmp(static_cast<const void*>(&p), static_cast<const void*>(&q), sizeof p) == 0;
    };
    Require(std::ranges::is_permutation(found, expected, isSame));
}

}  // namespace

void Kalvio::Math::FuzzIndex(Bytes& bytes) {
    const unsigned int dimension = 1 + bytes.TakeCount(4);
    CheckTree<QuadTree>(bytes, 2);
    CheckTree<RTree>(bytes, dimension);
    CheckTree<RStarTree>(bytes, dimension);
    CheckPoints(bytes);
}
