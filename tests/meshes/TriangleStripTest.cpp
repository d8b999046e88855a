#include "kalvio/core/Geometry.h"
#include "kalvio/meshes/TriangleStrip3D.h"
#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

TEST(TriangleStripTest, TheLadderGivesTwoTrianglesPerQuadWithTheirNormals) {
    // A roof that rises and falls at 45 degrees, clockwise from above, then a quad of no area.
    TriangleStrip3D roof{Point3D(0, 0, 0), Point3D(0, 5, 0), Point3D(2, 0, 2), Point3D(2, 5, 2),
                         Point3D(4, 0, 0), Point3D(4, 5, 0), Point3D(4, 0, 0), Point3D(4, 5, 0)};
    std::vector<unsigned int> corners{7};
    ASSERT_TRUE(roof.ComputeIndexes(corners));
    EXPECT_EQ(corners, (std::vector<unsigned int>{0, 1, 3, 0, 3, 2, 2, 3, 5, 2, 5, 4, 4, 5, 7, 4, 7, 6}));
    for (const bool ccw : {false, true}) {
        roof.SetCCW(ccw);
        const double up = (ccw ? -1.0 : 1.0) * std::sqrt(0.5);
        const Vec3D rise(-up, 0, up), fall(up, 0, up), none;
        const std::vector<Vec3D> faces{rise, rise, fall, fall, none, none};
        const std::vector<Vec3D> sums{rise, rise * 2.0, rise + fall * 2.0, rise * 2.0 + fall, fall, fall * 2.0,
                                      none, none};
        for (const bool perVertex : {false, true}) {
            const std::vector<Vec3D>& expected = perVertex ? sums : faces;
            std::vector<Vec3D> normals(1);
            roof.ComputeNormals(perVertex, normals);
            ASSERT_EQ(normals.size(), expected.size());
            for (std::size_t i = 0; i < expected.size(); ++i) {
                EXPECT_THAT(normals[i], IsNear(Vec3D(expected[i]).Normalize(), 1e-15)) << i;
            }
        }
    }
}

TEST(TriangleStripTest, WhatHasNoTrianglesAndWhatIsEqual) {
    TriangleStrip3D strip;
    for (const bool isLadder : {true, false, true, false}) {
        std::vector<unsigned int> corners{7};
        std::vector<Vec3D> normals(1);
        EXPECT_EQ(strip.ComputeIndexes(corners), isLadder) << strip.GetSize();
        EXPECT_EQ(corners.empty(), isLadder) << "untouched when it fails";
        strip.ComputeNormals(false, normals);
        EXPECT_TRUE(normals.empty());
        strip.AppendVertices({Point3D(1, 2, strip.GetSize())});
    }
    strip.AppendVertices(strip.GetVertices());
    EXPECT_THAT(strip.GetBoundingBox().GetMaxPoint(), IsNear(Point3D(1, 2, 3), 0.0));
    std::vector<Point3D> vertices;
    EXPECT_TRUE(Geometry::GetVertices(strip, vertices) && vertices.size() == 8);
    const std::unique_ptr<TriangleStrip3D> copy(strip.Clone());
    EXPECT_TRUE(copy->GetSize() == 8 && Geometry::AreEqual(strip, *copy, 1e-12) && strip.IsEqualTo(*copy, 1e-12));
    copy->GetVertex(7).SetZ(3.25);
    EXPECT_FALSE(Geometry::AreEqual(strip, *copy, 0.25)) << "strictly";
    copy->SetCCW(true);
    EXPECT_FALSE(strip.IsEqualTo(*copy, 0.5) || strip.IsEqualTo(Point3D(1, 2, 0), 0.5));
}

}  // namespace
}  // namespace Kalvio::Math
