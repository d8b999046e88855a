// Reads polygons, measures and checks them, classifies points, lays polygons over others, buffers them, draws polygons
// and points.

#include "common/Arguments.h"
#include "common/Csv.h"
#include "common/InputError.h"
#include "common/Svg.h"
#include "parcels/Areas.h"
#include "parcels/Overlay.h"

#include "kalvio/Wkt.h"
#include "kalvio/areas/BufferCreator.h"
#include "kalvio/areas/GeometryClipper.h"
#include "kalvio/areas/GeometrySimplifier.h"
#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/polygons/PointInPolygon.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/PolygonCurve2D.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Kalvio::Examples {

using namespace Kalvio::Math;

namespace {

constexpr const char* kUsage =
    "usage: parcels FILE [--points POINTS.csv] [--raster COUNT] [--check POINTS.csv] [--svg OUT.svg] [--csv OUT.csv]\n"
    "               [--wkt OUT.wkt] [--tolerance LENGTH] [--simplify LENGTH] [--curves LENGTH]\n"
    "               [--overlay OTHER [--pieces OUT.geojson]] [--along CHAIN.csv] [--buffer LENGTH]\n"
    "  FILE         GeoJSON, or a table (.csv): polygon,ring,x,y with ring 0 the outer one, or well-known text "
    "(.wkt),\n"
    "               a polygon or MULTIPOLYGON a line\n"
    "  --points     names the polygons that hold the points of a table: x,y\n"
    "  --along      tells where a chain of points, a table x,y, lies in the polygons, by its stations\n"
    "  --raster     classifies COUNT x COUNT points over the extent\n"
    "  --check      compares with known answers: polygon,x,y,inside,distance with the polygons counted from 0\n"
    "  --svg        draws polygons, holes and points\n"
    "  --csv        writes the measures\n"
    "  --wkt        writes the polygons as well-known text, one a line\n"
    "  --curves     the texts have lines and arcs this near to the borders\n"
    "  --tolerance  a point this near to a border is on it; smallest fault that is reported (1e-9)\n"
    "  --simplify   first leaves out points this near to the lighter borders; common borders stay common\n"
    "  --overlay    tells what the polygons have in common with those of another file, in areas and shares\n"
    "  --buffer     measures and draws what lies within a length of the polygons; negative: deeper inside than it\n"
    "  --pieces     writes the common areas as GeoJSON\n";

constexpr int kDiffers = 1;
constexpr double largestRaster = 5000.0;

struct Options {
    std::string file;
    std::string points;
    std::string along;
    std::string check;
    std::string svg;
    std::string csv;
    std::string wkt;
    std::string overlay;
    std::string pieces;
    double raster = 0.0;
    double tolerance = 1e-9;
    std::optional<double> buffer;
    double simplify = 0.0;
    double curves = 0.0;
};

Arguments ArgumentsOf(Options& options) {
    Arguments arguments;
    arguments.AddWord(options.file);
    arguments.AddText("--points", options.points);
    arguments.AddPositive("--raster", options.raster, largestRaster);
    arguments.AddText("--along", options.along);
    arguments.AddText("--check", options.check);
    arguments.AddText("--svg", options.svg);
    arguments.AddText("--csv", options.csv);
    arguments.AddText("--wkt", options.wkt);
    arguments.AddText("--overlay", options.overlay);
    arguments.AddText("--pieces", options.pieces);
    arguments.AddPositive("--tolerance", options.tolerance);
    arguments.AddNumber("--buffer", options.buffer);
    arguments.AddPositive("--simplify", options.simplify);
    arguments.AddPositive("--curves", options.curves);
    return arguments;
}

/// What the report says of one polygon.
struct Measures {
    Measures(const Area& area, double tolerance)
        : name(area.name),
          vertices(area.polygon.GetTotalSize()),
          holes(area.polygon.GetNumHoleBoundaries()),
          netArea(std::abs(area.polygon.GetArea())),
          perimeter(area.polygon.Perimeter()),
          centroid(area.polygon.GetCentroid()),
          isCounterClockwise(Polygon2D(area.polygon.GetPoints()).GetWinding() == WindingValue::CounterClockwise) {
        if (Point2D where; !area.polygon.Validate(where, true, tolerance)) fault = where;
    }

    std::string name;
    unsigned int vertices;
    unsigned int holes;
    double netArea;
    double perimeter;
    Point2D centroid;
    bool isCounterClockwise;
    std::optional<Point2D> fault;
};

void Report(const std::vector<Measures>& rows) {
    std::printf("%-24s %8s %5s %16s %14s %16s %16s  %-9s %s\n", "name", "vertices", "holes", "area", "perimeter",
                "centroid x", "centroid y", "winding", "fault");
    for (const Measures& row : rows) {
        std::printf("%-24s %8u %5u %16.6f %14.6f %16.6f %16.6f  %-9s ", row.name.c_str(), row.vertices, row.holes,
                    row.netArea, row.perimeter, row.centroid.GetX(), row.centroid.GetY(),
                    row.isCounterClockwise ? "left" : "right");
        row.fault ? std::printf("at %.6f,%.6f\n", row.fault->GetX(), row.fault->GetY()) : std::printf("none\n");
    }
}

void WriteTable(const std::vector<Measures>& rows, const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    file << "name,vertices,holes,area,perimeter,centroid_x,centroid_y,winding,fault_x,fault_y\n";
    for (const Measures& row : rows) {
        std::string name = row.name;
        for (std::size_t quote = name.find('"'); quote != std::string::npos; quote = name.find('"', quote + 2)) {
            name.insert(quote, 1, '"');
        }
        file << '"' << name << "\"," << row.vertices << ',' << row.holes << ',' << Fixed(row.netArea, 9) << ','
             << Fixed(row.perimeter, 9) << ',' << Fixed(row.centroid.GetX(), 9) << ',' << Fixed(row.centroid.GetY(), 9)
             << ',' << (row.isCounterClockwise ? "left" : "right") << ','
             << (row.fault ? Fixed(row.fault->GetX(), 9) : "") << ',' << (row.fault ? Fixed(row.fault->GetY(), 9) : "")
             << '\n';
    }
    file.close();
    if (file.fail()) throw InputError(path + ": cannot be written");
}

/// A ring as lines and arcs.
bool MakeCurves(LineString2D ring, double tolerance, RingCurve2D& curves) {
    if (ring.GetSize() > 0 && ring.GetStart().Distance(ring.GetEnd()) > 0.0) ring.AppendPoint(Point2D(ring.GetStart()));
    Polyline2D chain;
    if (!GeometrySimplifier::ToLinesAndArcs(ring, tolerance, chain)) return false;
    for (unsigned int i = 0; i < chain.GetNrOfElements(); ++i) {
        curves.AppendElement(chain.GetElementAtIndex(i).Clone());
    }
    return true;
}

bool MakeCurves(const Polygon2D& polygon, double tolerance, PolygonCurve2D& curves) {
    if (!MakeCurves(LineString2D(polygon.GetPoints()), tolerance, curves.GetBoundary())) return false;
    for (unsigned int i = 0; i < polygon.GetNumHoleBoundaries(); ++i) {
        auto ring = std::make_unique<RingCurve2D>();
        if (!MakeCurves(polygon.GetHoleBoundary(i), tolerance, *ring)) return false;
        curves.AppendInnerRing(ring.release());
    }
    return true;
}

/// @param curves  how near lines and arcs lie to the borders; 0 writes the borders as they are
void WriteTexts(const std::vector<Area>& areas, const std::string& path, double curves) {
    std::ofstream file(path, std::ios::binary);
    for (const Area& area : areas) {
        std::string text;
        PolygonCurve2D curved;
        const bool isWritten = curves > 0.0 ? MakeCurves(area.polygon, curves, curved) && Wkt::Write(curved, text)
                                            : Wkt::Write(area.polygon, text);
        if (!isWritten) throw InputError(path + ": polygon " + area.name + " has no text");
        file << text << '\n';
    }
    file.close();
    if (file.fail()) throw InputError(path + ": cannot be written");
}

class Map {
public:
    Map(const std::vector<Area>& source, double borderTolerance) : areas(source), tolerance(borderTolerance) {
        for (const Area& area : areas) {
            const double rows = 2.0 * std::sqrt(static_cast<double>(area.polygon.GetTotalSize()));
            testers.emplace_back(area.polygon, static_cast<std::uint64_t>(rows), tolerance);
        }
        extent = areas.front().polygon.GetBoundingBox();
        for (const Area& area : areas) extent += area.polygon.GetBoundingBox();
    }

    const BoundingBox2D& GetExtent() const { return extent; }
    bool Holds(std::size_t i, const Point2D& p) const { return testers[i].IsPointInside(p, tolerance); }
    std::vector<std::size_t> FindHolders(const Point2D& p) const {
        std::vector<std::size_t> holders;
        for (std::size_t i = 0; i < areas.size(); ++i) {
            if (testers[i].GetBoundingBox().IsPointInside(p, 2.0 * tolerance) && Holds(i, p)) holders.push_back(i);
        }
        return holders;
    }

private:
    const std::vector<Area>& areas;
    double tolerance;
    std::vector<PointInPolygon> testers;
    BoundingBox2D extent;
};

/// A point for the picture.
struct Mark {
    Point2D point;
    bool isHeld;
};

void NameHolders(const Map& map, const std::vector<Area>& areas, const std::string& path, std::vector<Mark>& marks) {
    for (const std::vector<double>& row : ReadCsv(path, 2)) {
        const Point2D p(row[0], row[1]);
        const std::vector<std::size_t> holders = map.FindHolders(p);
        std::printf("point %.10g,%.10g:", p.GetX(), p.GetY());
        for (const std::size_t holder : holders) std::printf(" %s", areas[holder].name.c_str());
        std::printf(holders.empty() ? " nowhere\n" : "\n");
        marks.push_back({p, !holders.empty()});
    }
}

void TellAlong(const std::vector<Area>& areas, const std::string& path, double tolerance) {
    LineString2D chain;
    for (const std::vector<double>& row : ReadCsv(path, 2)) chain.AppendPoint(Point2D(row[0], row[1]));
    for (const Area& area : areas) {
        std::vector<GeometryClipper::Part<LineString2D>> parts;
        if (!GeometryClipper::Clip(chain, area.polygon, parts, Tolerances(tolerance, 1e-10))) {
            throw InputError(path + ": needs points with finite coordinates");
        }
        for (const auto& part : parts) {
            if (part.isInside) std::printf("along %.3f to %.3f: %s\n", part.from, part.to, area.name.c_str());
        }
    }
}

void ClassifyRaster(const Map& map, int count, std::vector<Mark>& marks) {
    const Point2D low = map.GetExtent().GetMinPoint();
    const Vec2D step = map.GetExtent().GetSize() * (1.0 / count);
    const auto start = std::chrono::steady_clock::now();
    const std::size_t known = marks.size();
    for (int row = 0; row < count; ++row) {
        for (int column = 0; column < count; ++column) {
            const Point2D p = low + Vec2D(step.GetX() * (column + 0.5), step.GetY() * (row + 0.5));
            marks.push_back({p, !map.FindHolders(p).empty()});
        }
    }
    const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
    const auto held = std::count_if(marks.begin() + static_cast<std::ptrdiff_t>(known), marks.end(),
                                    [](const Mark& mark) { return mark.isHeld; });
    std::printf("raster of %d x %d points: %td in polygons, area about %.6g, %.0f ns per point\n", count, count, held,
                static_cast<double>(held) * step.GetX() * step.GetY(),
                time.count() / static_cast<double>(marks.size() - known));
}

/// @return number of points whose answers differ from the known ones
int Check(const Map& map, std::size_t polygons, const std::string& path, std::vector<Mark>& marks) {
    int count = 0;
    int differences = 0;
    for (const std::vector<double>& row : ReadCsv(path, 5)) {
        if (!(row[0] >= 0.0 && row[0] < static_cast<double>(polygons))) {
            throw InputError(path + ": there is no polygon " + std::to_string(row[0]));
        }
        const Point2D p(row[1], row[2]);
        const bool isHeld = map.Holds(static_cast<std::size_t>(row[0]), p);
        marks.push_back({p, isHeld});
        ++count;
        if (isHeld == (row[3] != 0.0)) continue;
        std::printf("point %.10g,%.10g is %s polygon %g, known is the opposite\n", p.GetX(), p.GetY(),
                    isHeld ? "in" : "not in", row[0]);
        ++differences;
    }
    std::printf("%d points checked, %d answers differ\n", count, differences);
    return differences;
}

/// The buffer of all areas together, by chords.
std::vector<Polygon2D> Buffer(const std::vector<Area>& areas, double distance, double tolerance) {
    constexpr double heightOverDistance = 0.001;
    std::vector<Polygon2D> polygons;
    for (const Area& area : areas) polygons.push_back(area.polygon);
    std::vector<Polygon2D> buffer;
    const double height = std::max(heightOverDistance * std::abs(distance), tolerance);
    if (!BufferCreator::Create(polygons, distance, height, buffer, Tolerances(tolerance))) {
        throw InputError("--buffer: length and coordinates must be finite");
    }
    double size = 0.0;
    for (const Polygon2D& part : buffer) size += part.GetArea();
    std::printf("buffer of %g: %zu parts, area %.3f\n", distance, buffer.size(), size);
    return buffer;
}

void Draw(const std::vector<Area>& areas, const std::vector<Measures>& rows, const Map& map, const CommonAreas& pieces,
          const std::vector<Polygon2D>& buffer, const std::vector<Mark>& marks, const std::string& path) {
    Svg svg(1100, 800);
    const SvgPanel panel(40, 40, 1020, 720, map.GetExtent(), true);
    const auto drawArea = [&](const Polygon2D& polygon, const SvgStyle& style) {
        std::vector<std::vector<Point2D>> rings{panel.ToPage(polygon.GetPoints())};
        for (unsigned int h = 0; h < polygon.GetNumHoleBoundaries(); ++h) {
            rings.push_back(panel.ToPage(polygon.GetHoleBoundary(h).GetPoints()));
        }
        svg.Area(rings, style);
    };
    for (const Polygon2D& part : buffer) drawArea(part, {"#8a7fb0", 0.6, "#e6e2f2", ""});
    for (std::size_t i = 0; i < areas.size(); ++i) {
        drawArea(areas[i].polygon, {"#4a6741", 0.8, rows[i].fault ? "#f3c6b8" : "#d9e6cf", ""});
    }
    for (const auto& piece : pieces) {
        for (const Polygon2D& polygon : piece.areas) drawArea(polygon, {"#1b4f9c", 0.6, "#a9c4e6", ""});
    }
    const double radius = std::clamp(120.0 / std::sqrt(static_cast<double>(marks.size()) + 1.0), 0.8, 3.0);
    for (const Mark& mark : marks) {
        svg.Circle(panel.ToPage(mark.point), radius, {"", 0.0, mark.isHeld ? "#1b4f9c" : "#c9a227", ""});
    }
    for (std::size_t i = 0; i < areas.size(); ++i) {
        Point2D inside = rows[i].centroid;
        (void)areas[i].polygon.GetPointInsideBoundary(inside, 0.0);  // else the centroid
        svg.Text(panel.ToPage(inside), areas[i].name, 11, "#222222", SvgAnchor::Middle);
        if (rows[i].fault) svg.Circle(panel.ToPage(*rows[i].fault), 6.0, {"#c0392b", 1.6, "", ""});
    }
    if (!svg.Write(path)) throw InputError(path + ": cannot be written");
}

void Simplify(std::vector<Area>& areas, double tolerance) {
    std::vector<Polygon2D> polygons;
    for (const Area& area : areas) polygons.push_back(area.polygon);
    std::vector<Polygon2D> lighter;
    if (!GeometrySimplifier::SimplifyByDistance(polygons, tolerance, lighter)) {
        throw InputError("--simplify: coordinates must be finite");
    }
    unsigned int before = 0;
    unsigned int after = 0;
    for (std::size_t i = 0; i < areas.size(); ++i) {
        before += areas[i].polygon.GetTotalSize();
        after += lighter[i].GetTotalSize();
        areas[i].polygon = std::move(lighter[i]);
    }
    std::printf("%u of %u points stay\n", after, before);
}

int Run(const Options& options) {
    std::vector<Area> areas = ReadAreas(options.file);
    if (options.simplify > 0.0) Simplify(areas, options.simplify);
    std::vector<Measures> rows;
    for (const Area& area : areas) rows.emplace_back(area, options.tolerance);
    Report(rows);
    if (!options.csv.empty()) WriteTable(rows, options.csv);
    if (!options.wkt.empty()) WriteTexts(areas, options.wkt, options.curves);

    CommonAreas pieces;
    if (!options.overlay.empty()) {
        const std::vector<Area> others = ReadAreas(options.overlay);
        pieces = LayOver(areas, others, options.tolerance);
        ReportOverlay(areas, others, pieces);
        if (!options.pieces.empty()) WriteGeoJson(areas, others, pieces, options.pieces);
    }

    std::vector<Polygon2D> buffer;
    if (options.buffer) buffer = Buffer(areas, *options.buffer, options.tolerance);

    const Map map(areas, options.tolerance);
    std::vector<Mark> marks;
    if (!options.points.empty()) NameHolders(map, areas, options.points, marks);
    if (!options.along.empty()) TellAlong(areas, options.along, options.tolerance);
    const int differences = options.check.empty() ? 0 : Check(map, areas.size(), options.check, marks);
    if (const int count = static_cast<int>(options.raster); count > 0) ClassifyRaster(map, count, marks);
    if (!options.svg.empty()) Draw(areas, rows, map, pieces, buffer, marks, options.svg);
    return differences == 0 ? 0 : kDiffers;
}

}  // namespace
}  // namespace Kalvio::Examples

int main(int argc, char** argv) {
    using namespace Kalvio::Examples;
    Options options;
    return RunProgram("parcels", kUsage, ArgumentsOf(options), argc, argv, [&options] { return Run(options); });
}
