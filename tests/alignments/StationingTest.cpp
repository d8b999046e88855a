#include "kalvio/alignments/Alignment.h"

#include "support/Testing.h"

namespace Kalvio::Math {
namespace {

TEST(StationingTest, TextsNameLengthsOverGapsAndRepeats) {
    Stationing road(12000.0);
    ASSERT_TRUE(road.AppendEquation(12400.0, 12380.0));  // repeats 20 m
    ASSERT_TRUE(road.AppendEquation(12700.0, 13000.0));  // leaves 300 m out
    EXPECT_FALSE(road.AppendEquation(12999.0, 0.0));     // ends before it starts
    const std::pair<double, const char*> rows[] = {
        {-5.5, "11+994.500"},      {0.0, "12+000.000"},     {380.0, "12+380.000/0"},
        {399.999, "12+399.999/0"}, {400.0, "12+380.000/1"}, {420.5, "12+400.500"},
        {719.999, "12+699.999"},   {720.0, "13+000.000"},   {400.0 - 1e-7, "12+400.000/0"}};
    Stationing::Place place;
    for (const auto& [length, text] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(road.GetText(length, 3), text);
        ASSERT_TRUE(road.Parse(text, place));
        EXPECT_NEAR(place.length, length, 1e-6);
        EXPECT_EQ(place.zone, road.GetPlace(length).zone);
    }
    for (const char* const none : {"12+390.000", "12+800", "12+390/2", "12+39", "12+390.", "", "-", "+390", "1 2",
                                   "1e3", "12+390/", "12+390.0/0x", "1234567890123456789"}) {
        EXPECT_FALSE(road.Parse(none, place)) << none;
    }
    std::vector<Stationing::Place> places;
    road.GetPlaces(12390.0, places);
    ASSERT_EQ(places.size(), 2U);
    EXPECT_EQ(places[0].length, 390.0);
    EXPECT_EQ(places[1].length, 410.0);
    EXPECT_EQ(road.GetEquation(1).back, 12700.0);
    EXPECT_EQ(road.GetEquation(1).length, 720.0);
    // Pegs at the multiples of 50, in each zone, and at the equations.
    Polyline2D straight;
    straight.AppendElement(Line2D(Point2D(0, 0), Point2D(800, 0)));
    std::string pegs;
    for (const double peg : Alignment(straight, {}, {}, road).GetStationsByNumber(210.0, 800.0, 50.0)) {
        pegs += road.GetText(peg, 0) + ' ';
    }
    EXPECT_EQ(pegs,
              "12+210 12+250 12+300 12+350 12+380/1 12+400/1 12+450 12+500 12+550 12+600 12+650 13+000 13+050 13+080 ");
    Stationing source(road);
    const Stationing moved(std::move(source));
    EXPECT_EQ(source.GetStart(), moved.GetStart()) << "a moved-from object still has a zone";
}

TEST(StationingTest, NumbersAreRoundedBeforeTheyAreCut) {
    EXPECT_EQ(Stationing::FormatNumber(999.9996, 3), "1+000.000");
    EXPECT_EQ(Stationing::FormatNumber(-0.0004, 3), "0+000.000");
    EXPECT_EQ(Stationing::FormatNumber(-12.5, 1, 100), "-0+12.5");
    EXPECT_EQ(Stationing::FormatNumber(12345.678, 2, 100), "123+45.68");
    double number = 0.0;
    EXPECT_TRUE(Stationing::ParseNumber("-123+45.678", number, 100));
    EXPECT_EQ(number, -12345.678);
}

}  // namespace
}  // namespace Kalvio::Math
