#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Geometry.h"
#include "kalvio/core/Matrix3D.h"
#include "kalvio/meshes/IndexedFaceSet2D.h"
#include "kalvio/meshes/IndexedFaceSet3D.h"
#include "kalvio/meshes/IndexedTriangleSet2D.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

template <class Set, class PointType>
Set Filled(Set set, const std::vector<PointType>& corners) {
    set.AppendVertices(corners);
    set.AppendVertices(set.GetVertices());
    set.AppendIndexes({0, 1, 2});
    return set;
}

template <class Set>
void CheckObject(const Set& set, MathTypes type) {
    EXPECT_EQ(set.GetType(), type);
    EXPECT_EQ(set.GetTopologicalDimension(), 2U);
    EXPECT_EQ(set.GetVerticesSize(), 6U);
    const std::unique_ptr<Set> copy(set.Clone());
    EXPECT_TRUE(copy->IsEqualTo(static_cast<const IGeometry&>(set), 1e-12));
    copy->GetVertex(2).SetX(0.25);
    EXPECT_FALSE(copy->IsEqualTo(set, 0.25)) << "strict";
    EXPECT_TRUE(copy->IsEqualTo(set, 0.3));
    copy->SetCCW(true);
    EXPECT_FALSE(copy->IsEqualTo(set, 0.3)) << "the flag counts";
    *copy = set;
    copy->AppendIndexes({0});
    EXPECT_FALSE(copy->IsEqualTo(set, 0.3));
    EXPECT_FALSE(set.IsEqualTo(Point2D(), 1.0));
}

TEST(MeshTest, EverySetIsAGeometry) {
    const std::vector<Point2D> plan = {{0, 0}, {4, 0}, {0, 2}};
    const std::vector<Point3D> space = {{0, 0, 1}, {4, 0, 1}, {0, 2, 9}};
    const auto faces = Filled(IndexedFaceSet3D(3), space);
    CheckObject(Filled(IndexedFaceSet2D(3), plan), MathTypes::IndexedFaceSet2D);
    CheckObject(faces, MathTypes::IndexedFaceSet3D);
    CheckObject(Filled(IndexedTriangleSet2D(), plan), MathTypes::IndexedTriangleSet2D);
    CheckObject(Filled(IndexedTriangleSet3D(), space), MathTypes::IndexedTriangleSet3D);
    EXPECT_FALSE(Geometry::AreEqual(faces, Filled(IndexedFaceSet3D(4), space), 1.0)) << "the face size counts";
    EXPECT_THAT(faces.GetBoundingBox().GetCenter(), IsNear(Point3D(2, 1, 5), 0.0));
    EXPECT_THAT(faces.GetBoundingBox3D().GetSize(), IsNear(Vec3D(4, 2, 8), 0.0));
    EXPECT_THAT(faces.Translate(Vec3D(1, 2, 3)).GetVertex(1), IsNear(Point3D(5, 2, 4), 0.0));

    IndexedTriangleSet3D lifted;
    Filled(IndexedTriangleSet2D(), plan).Transform(Matrix3D(Matrix3D::TranslateType::Translation, 1, 2, 3), lifted);
    EXPECT_THAT(lifted.GetVertex(1), IsNear(Point3D(5, 2, 3), 0.0));
    EXPECT_EQ(lifted.GetTrianglesCount(), 1U);
}

}  // namespace
}  // namespace Kalvio::Math
