#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "support/Near.h"

#include <gtest/gtest.h>

#include <list>
#include <utility>
#include <vector>

namespace Kalvio::Math {
namespace {

const Tolerances kTolerances(0.0001, 1e-10);

template <class String>
std::vector<double> Abscissae(const String& string) {
    std::vector<double> x;
    for (const auto& point : string.GetPoints()) x.push_back(point.GetX());
    return x;
}

TEST(LineStringTest, EditsInsertInOrderRefuseWhatIsOutsideAndMayTakeTheirOwnPoints) {
    const auto check = [](auto string, const auto& make) {
        using Point = decltype(make(0.0));
        using X = std::vector<double>;
        string.AppendPoints(std::vector<Point>{make(1), make(4)});
        EXPECT_TRUE(string.Insert(1, std::list<Point>{make(2), make(3)}));
        EXPECT_TRUE(string.InsertReverse(4, std::vector<Point>{make(6), make(5)}));
        EXPECT_TRUE(string.Insert(0, make(0)));
        EXPECT_EQ(Abscissae(string), (X{0, 1, 2, 3, 4, 5, 6}));
        EXPECT_FALSE(string.Insert(8, make(9)));
        EXPECT_FALSE(string.InsertReverse(8, std::list<Point>{make(9)}));
        EXPECT_FALSE(string.RemovePoint(-1));
        EXPECT_FALSE(string.RemovePoint(7));
        EXPECT_TRUE(string.RemovePoint(6));
        EXPECT_TRUE(string.Insert(1, string.GetPoints()));
        string.AppendPoints(string.GetPoints());
        EXPECT_EQ(string.GetSize(), 24U);
        EXPECT_EQ(string.GetPoint(23).GetX(), 5.0);
        Point point = make(-1);
        EXPECT_FALSE(string.GetPoint(24, point));
        EXPECT_EQ(point.GetX(), -1.0);
        string.RemoveAllPoints();
        string.GetEnd() = make(7);
        EXPECT_EQ(string.GetEnd().GetX(), 0.0) << "the end of an empty string is nobody's point";
        EXPECT_EQ(std::as_const(string).GetStart().GetX(), 0.0);
        EXPECT_EQ(string.GetSize(), 0U);
    };
    check(LineString2D(), [](double x) { return Point2D(x, 0.0); });
    check(LineString3D(), [](double x) { return Point3D(x, 0.0, 0.0); });
    EXPECT_EQ(LineString2D(3).GetSize(), 3U);
    EXPECT_THAT(LineString3D(LineString2D{Point2D(1, 2)}, 3.0).GetPoint(0), IsNear(Point3D(1, 2, 3), 0.0));
}

TEST(LineStringTest, BoxAndSegmentsFollowEveryKindOfEdit) {
    LineString2D string{Point2D(0, 0), Point2D(1, 1)};
    const auto reaches = [&string](double x) {
        const bool box = string.GetBoundingBox().GetMaxPoint() == Point2D(x, x);
        const unsigned int last = string.GetNrOfElements() - 1;
        return box && string.GetElementAtIndex(last).GetEnd() == Point2D(x, x);
    };
    EXPECT_TRUE(reaches(1));
    string.AppendPoint(Point2D(2, 2));
    EXPECT_TRUE(reaches(2));
    string.GetPoint(2) = Point2D(3, 3);
    EXPECT_TRUE(reaches(3));
    string.GetEnd() = Point2D(4, 4);
    EXPECT_TRUE(reaches(4));
    string.GetPoints().emplace_back(5, 5);
    EXPECT_TRUE(reaches(5));
    string.ExtendEnd(Point2D(6, 6), kTolerances);
    EXPECT_TRUE(reaches(6));
    string.Translate(Vec2D(1, 1));
    EXPECT_TRUE(reaches(7));
    string.RemovePoint(3);
    EXPECT_TRUE(reaches(5));
    string = LineString2D{Point2D(0, 0), Point2D(8, 8)};
    EXPECT_TRUE(reaches(8));
    const LineString2D taken = std::move(string);
    EXPECT_EQ(string.GetBoundingBox().GetMaxPoint(), Point2D(0, 0)) << "what was moved from is empty";
    EXPECT_EQ(taken.GetElementAtIndex(1).GetEnd(), Point2D(8, 8)) << "any other index is the first segment";
    EXPECT_EQ(LineString2D().GetElementAtIndex(0).GetLength(), 0.0);
    LineString3D spatial{Point3D(0, 0, 0), Point3D(0, 0, 1)};
    EXPECT_EQ(spatial.GetElementAtIndex(0).GetEnd().GetZ(), 1.0);
    spatial[1].SetZ(2.0);
    EXPECT_EQ(spatial.GetElementAtIndex(7).GetEnd().GetZ(), 2.0);
    EXPECT_EQ(spatial.GetBoundingBox3D().GetMaxPoint().GetZ(), 2.0);
}

}  // namespace
}  // namespace Kalvio::Math
