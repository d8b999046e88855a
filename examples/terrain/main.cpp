// Reads terrain surfaces, measures them, cuts the long section of an alignment, kriges a grid, draws it all.

#include "common/Arguments.h"
#include "common/Csv.h"
#include "common/InputError.h"
#include "common/LandXml.h"
#include "common/LandXmlSurface.h"
#include "common/LandXmlWriter.h"
#include "common/Svg.h"
#include "terrain/BuiltGround.h"
#include "terrain/Earthwork.h"
#include "terrain/KrigedGrid.h"
#include "terrain/LongSection.h"
#include "terrain/Measures.h"
#include "terrain/Picture.h"
#include "terrain/VariogramStudy.h"

#include "kalvio/Print.h"
#include "kalvio/areas/GeometryClipper.h"
#include "kalvio/core/Angle.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/meshes/GridSurface.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/Polygon2D.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Kalvio::Examples {

using namespace Kalvio::Math;

namespace {

constexpr const char* kUsage =
    "usage: terrain [SURFACE.xml] [--points P.csv] [--breaklines B.csv] [--border R.csv] [--heights Q.csv]\n"
    "               [--fill AREA] [--thin TOLERANCE] [--clip C.csv] [--contours INTERVAL] [--smooth CUTS]\n"
    "               [--against SURFACE2.xml] [--design NAME] [--sections LENGTH] [--width WIDTH] [--sheet SHEET.svg]\n"
    "               [--surface NAME] [--over HEIGHT] [--along ALIGNMENT.xml] [--step LENGTH] [--csv OUT.csv]\n"
    "               [--krige POINTS.csv] [--grid SPACING] [--sill S] [--range R] [--trend] [--fit FIT.svg] [--nodes "
    "OUT.csv] "
    "[--svg OUT.svg] [--xml OUT.xml]\n"
    "  --points, --breaklines, --border  build a surface named Built: tables of x,y,height, of chain,x,y,height, and\n"
    "             of x,y,height around it\n"
    "  --heights  writes the heights at the places of a table x,y\n"
    "  --fill     closes the holes of the surface that are no larger\n"
    "  --thin     leaves out the points of the surface that change no height by more\n"
    "  --clip     leaves what lies inside a ring of corners x,y\n"
    "  --contours counts the contours at the multiples of an interval, which the picture shows\n"
    "  --smooth   how often their corners are cut, 8 times at most\n"
    "  --against  cut and fill from the surface to one of another file, where both are; the picture is shaded by them\n"
    "  --design   which one (the first)\n"
    "  --sections cross-sections of both along the alignments, so far from each other, and the volumes and the mass\n"
    "             curve that follow by mean end areas\n"
    "  --width    how far the sections go to both sides (20)\n"
    "  --sheet    draws the sections of the first alignment and its mass curve\n"
    "  --surface  the surface that is cut and drawn (Built, or the first of the file)\n"
    "  --over     height that volumes are taken over (that of the lowest vertex)\n"
    "  --along    cuts the surface along the alignments of a file\n"
    "  --step     distance of the stations in the table (20)\n"
    "  --csv      where the table goes instead of the standard output: station, ground height, design height, and "
    "fill\n"
    "             (cut is negative)\n"
    "  --krige    kriges heights from the points of a table: x,y,height\n"
    "  --grid     distance of the kriged nodes (50); without --krige, of a grid with the heights of the surface\n"
    "  --sill, --range  of the exponential variogram (variance of the heights, a third of the extent's diagonal)\n"
    "  --trend    kriges with a plane as the mean, for points on a slope\n"
    "  --fit      fits variograms to the points, draws them with their lags as a picture and kriges with the best\n"
    "  --nodes    writes the nodes: x,y,height, kriged ones with their standard deviation\n"
    "  --xml      writes the surfaces, turned upward, and the alignments as LandXML\n"
    "  --svg      draws the shaded plan with the alignments, the long section and the kriged grid\n";

struct Options {
    std::string file;
    GroundTables ground;
    std::string heights;
    std::optional<double> fill;
    std::optional<double> thin;
    std::string clip;
    std::optional<double> contours;
    std::optional<double> smooth;
    std::string against;
    std::string design;
    std::optional<double> sections;
    double width = 20.0;
    std::string sheet;
    std::string surface;
    std::optional<double> over;
    std::string along;
    double step = 20.0;
    std::string csv;
    std::string krige;
    std::optional<double> grid;
    std::optional<double> sill;
    std::optional<double> range;
    bool trend = false;
    std::string fit;
    std::string nodes;
    std::string svg;
    std::string xml;
};

Arguments ArgumentsOf(Options& options) {
    Arguments arguments;
    arguments.AddOptionalWord(options.file);
    arguments.AddText("--points", options.ground.points);
    arguments.AddText("--breaklines", options.ground.breaklines);
    arguments.AddText("--border", options.ground.border);
    arguments.AddText("--heights", options.heights);
    arguments.AddPositive("--fill", options.fill);
    arguments.AddPositive("--thin", options.thin);
    arguments.AddText("--clip", options.clip);
    arguments.AddPositive("--contours", options.contours);
    arguments.AddPositive("--smooth", options.smooth, 8.0);
    arguments.AddText("--against", options.against);
    arguments.AddText("--design", options.design);
    arguments.AddPositive("--sections", options.sections);
    arguments.AddPositive("--width", options.width);
    arguments.AddText("--sheet", options.sheet);
    arguments.AddText("--surface", options.surface);
    arguments.AddNumber("--over", options.over);
    arguments.AddText("--along", options.along);
    arguments.AddPositive("--step", options.step);
    arguments.AddText("--csv", options.csv);
    arguments.AddText("--krige", options.krige);
    arguments.AddPositive("--grid", options.grid);
    arguments.AddPositive("--sill", options.sill);
    arguments.AddPositive("--range", options.range);
    arguments.AddFlag("--trend", options.trend);
    arguments.AddText("--fit", options.fit);
    arguments.AddText("--nodes", options.nodes);
    arguments.AddText("--svg", options.svg);
    arguments.AddText("--xml", options.xml);
    return arguments;
}

std::string StatedText(double value, const std::optional<double>& stated) {
    if (!stated) return "";
    return " (stated " + Fixed(*stated, 4) + ", difference " + Fixed(value - *stated, 6) + ")";
}

void Report(const Surface& surface, const Measures& measures, const std::string& unit) {
    std::printf("  plan area     %16.4f %s2%s\n", measures.planArea, unit.c_str(),
                StatedText(measures.planArea, surface.statedPlanArea).c_str());
    std::printf("  surface area  %16.4f %s2%s\n", measures.surfaceArea, unit.c_str(),
                StatedText(measures.surfaceArea, surface.statedSurfaceArea).c_str());
    std::printf("  heights       %16.4f to %.4f %s\n", measures.lowest, measures.highest, unit.c_str());
    std::printf("  volume        %16.4f %s3 over the height %.4f\n", measures.volume, unit.c_str(), measures.base);
    std::printf("  boundary      %zu outer ring(s), %zu hole(s), %.4f %s round\n", measures.outerRings, measures.holes,
                measures.perimeter, unit.c_str());
}

// Reports a surface as the file has it, then turned upward.
void ReportAndTurn(Surface& surface, const std::string& unit, const std::optional<double>& over) {
    IndexedTriangleSet3D& mesh = surface.mesh;
    const std::uint64_t unused = mesh.RemoveUnusedVertices();
    std::printf("Surface %s: %u vertices (%llu more in no visible face), %llu triangles (%zu invisible left out)\n",
                surface.name.c_str(), mesh.GetVerticesSize(), static_cast<unsigned long long>(unused),
                static_cast<unsigned long long>(mesh.GetTrianglesCount()), surface.invisibleFaces);
    unsigned int counterClockwise = 0;
    unsigned int clockwise = 0;
    unsigned int vertical = 0;
    mesh.GetTotalWindings2D(counterClockwise, clockwise, vertical);
    std::printf("  windings      %u counter-clockwise, %u clockwise, %u vertical\n", counterClockwise, clockwise,
                vertical);
    TurnUpward(mesh);
    Report(surface, Measures(mesh, over), unit);
}

std::string HeightText(const std::optional<double>& height) { return height ? Fixed(*height, 4) : ""; }

void WriteTable(std::ostream& out, const std::vector<LongSection>& sections) {
    out << "alignment,station,x,y,ground,design,fill\n";
    for (const LongSection& section : sections) {
        for (const LongSection::Row& row : section.GetRows()) {
            const bool hasFill = row.ground && row.design;
            out << CsvField(section.GetAlignment().name) << ',' << Fixed(row.station, 4) << ','
                << Fixed(row.place.GetX(), 4) << ',' << Fixed(row.place.GetY(), 4) << ',' << HeightText(row.ground)
                << ',' << HeightText(row.design) << ',' << (hasFill ? Fixed(*row.design - *row.ground, 4) : "") << '\n';
        }
    }
}

// Writes a file and says so. @throws InputError when that fails
template <class Write>
void WriteFile(const std::string& path, Write&& write) {
    std::ofstream file(path, std::ios::binary);
    write(file);
    file.close();
    if (file.fail()) throw InputError(path + ": cannot be written");
    std::fprintf(stderr, "wrote %s\n", path.c_str());
}

void Report(const LongSection& section) {
    std::printf("Along %s:%s", section.GetAlignment().name.c_str(), section.GetRuns().empty() ? " no ground" : "");
    const char* separator = " ";
    for (const LongSection::Run& run : section.GetRuns()) {
        std::printf("%sground from station %.4f to %.4f", separator, run.front().GetX(), run.back().GetX());
        separator = ", ";
    }
    std::optional<Point2D> deepest;  // station, fill
    std::optional<Point2D> highest;
    for (const LongSection::Run& run : section.GetRuns()) {
        for (const Point2D& p : run) {
            const std::optional<double> design = section.GetDesign(p.GetX());
            if (!design) continue;
            const Point2D fill(p.GetX(), *design - p.GetY());
            if (!deepest || fill.GetY() < deepest->GetY()) deepest = fill;
            if (!highest || fill.GetY() > highest->GetY()) highest = fill;
        }
    }
    constexpr double leastDepth = 5e-5;  // what the report rounds away
    if (deepest && deepest->GetY() < -leastDepth) {
        std::printf(", cut up to %.4f at %.4f", -deepest->GetY(), deepest->GetX());
    }
    if (highest && highest->GetY() > leastDepth) {
        std::printf(", fill up to %.4f at %.4f", highest->GetY(), highest->GetX());
    }
    std::printf("\n");
}

std::vector<Point3D> ReadSamples(const std::string& path) {
    std::vector<Point3D> samples;
    for (const std::vector<double>& row : ReadCsv(path, 3)) samples.emplace_back(row[0], row[1], row[2]);
    return samples;
}

void Report(const KrigedGrid& grid, std::size_t samples, const ExperimentalVariogram::Fit& model,
            const std::string& unit) {
    const BoundingBox3D extent = grid.heights.GetBoundingBox3D();
    std::printf(
        "Kriged %zu x %zu nodes from %zu points (sill %.4g %s2, range %.4g %s): heights %.4f to %.4f, standard "
        "deviation up to %.4f %s\n",
        grid.heights.GetColumns(), grid.heights.GetRows(), samples, model.sill, unit.c_str(), model.range, unit.c_str(),
        extent.GetMinPoint().GetZ(), extent.GetMaxPoint().GetZ(),
        grid.deviations.GetBoundingBox3D().GetMaxPoint().GetZ(), unit.c_str());
}

void Report(const VariogramStudy& study, const std::string& unit) {
    std::printf("Variogram: distance, semivariance, pairs\n");
    for (const ExperimentalVariogram::Lag& lag : study.variogram.GetLags()) {
        std::printf("  %12.3f %12.5g %8llu\n", lag.distance, lag.semivariance,
                    static_cast<unsigned long long>(lag.pairs));
    }
    for (const ExperimentalVariogram::Fit& fit : study.fits) {
        std::printf("  %-11s nugget %.4g %s2, sill %.4g %s2, range %.4g %s", std::string(GetName(fit.shape)).c_str(),
                    fit.nugget, unit.c_str(), fit.sill, unit.c_str(), fit.range, unit.c_str());
        if (fit.shape == ExperimentalVariogram::Shape::Power) std::printf(", exponent %.3f", fit.exponent);
        std::printf(", misfit %.4g\n", fit.misfit);
    }
    double sum = 0.0;
    double squares = 0.0;
    double variances = 0.0;
    const double count = static_cast<double>(std::max<std::size_t>(study.residuals.size(), 1));
    for (const LocalKriging::Residual& residual : study.residuals) {
        sum += residual.error / count;
        squares += residual.error * residual.error / count;
        variances += residual.variance / count;
    }
    std::printf("  %zu points left out one by one: mean error %.4f %s, standard deviation %.4f %s, expected %.4f %s\n",
                study.residuals.size(), sum, unit.c_str(), std::sqrt(squares), unit.c_str(), std::sqrt(variances),
                unit.c_str());
}

// Those with heights.
void WriteNodes(std::ostream& out, const GridSurface& heights, const GridSurface* deviations) {
    out << "x,y,height" << (deviations != nullptr ? ",deviation\n" : "\n");
    for (std::size_t row = 0; row < heights.GetRows(); ++row) {
        for (std::size_t column = 0; column < heights.GetColumns(); ++column) {
            const double z = heights.GetHeightOf(column, row);
            if (std::isnan(z)) continue;
            const Point2D place = heights.GetPlace(column, row);
            out << Fixed(place.GetX(), 4) << ',' << Fixed(place.GetY(), 4) << ',' << Fixed(z, 4);
            if (deviations != nullptr) out << ',' << Fixed(deviations->GetHeightOf(column, row), 4);
            out << '\n';
        }
    }
}

// The surface as a grid, and what lies between the two.
GridSurface MakeGrid(const TinSurfacePatch3D& surface, double step, const std::string& unit) {
    GridSurface grid;
    TinSurfacePatch3D ofGrid;
    if (!grid.SetOver(surface.GetBoundingBox2D(), step)) throw InputError("the grid's step is too narrow");
    unsigned int triangle = TinSurfacePatch3D::noTriangle;
    grid.Fill([&](const Point2D& place, double& z) { return surface.GetHeight(place, z, triangle); });
    TinSurfacePatch3D::Volumes volumes;
    if (!grid.MakeTin(ofGrid) || !surface.GetVolumes(ofGrid, volumes)) throw InputError("the grid's step is too wide");
    double steepest = 0.0;
    for (std::size_t row = 0; row < grid.GetRows(); ++row) {
        for (std::size_t column = 0; column < grid.GetColumns(); ++column) {
            double slope = 0.0;
            Angle fall;
            if (grid.GetSlope(grid.GetPlace(column, row), slope, fall)) steepest = std::max(steepest, slope);
        }
    }
    std::printf(
        "Grid of %zu x %zu nodes every %g %s, %u of them on the surface: slopes up to %.2f %%, surface to grid "
        "cut %.4f, fill %.4f %s3 on %.4f %s2\n",
        grid.GetColumns(), grid.GetRows(), step, unit.c_str(), ofGrid.GetTriangles().GetVerticesSize(),
        100.0 * steepest, volumes.cut, volumes.fill, unit.c_str(), volumes.area, unit.c_str());
    return grid;
}

// @param name  none for the first
Surface& Chosen(SurfaceFile& file, const std::string& path, const std::string& name) {
    if (name.empty()) return file.surfaces.front();
    for (Surface& surface : file.surfaces) {
        if (surface.name == name) return surface;
    }
    throw InputError(path + ": no surface named " + name);
}

void WriteHeights(const std::string& path, const TinSurfacePatch3D& surface) {
    std::printf("x,y,height\n");
    std::vector<Point2D> places;
    for (const std::vector<double>& row : ReadCsv(path, 2)) places.emplace_back(row[0], row[1]);
    std::vector<double> heights;
    surface.GetHeights(places, heights);
    for (std::size_t i = 0; i < places.size(); ++i) {
        const std::string height = std::isnan(heights[i]) ? "" : Fixed(heights[i], 4);
        std::printf("%.4f,%.4f,%s\n", places[i].GetX(), places[i].GetY(), height.c_str());
    }
}

void ReportContours(double interval, unsigned int cuts, const TinSurfacePatch3D& surface, const std::string& unit) {
    std::vector<LineString3D> contours;
    if (!surface.GetContours(interval, contours, cuts)) throw InputError("too many contours");
    double length = 0.0;
    for (const LineString3D& contour : contours) length += contour.GetLength2D();
    std::printf("Contours every %g %s: %zu lines, %.4f %s long\n", interval, unit.c_str(), contours.size(), length,
                unit.c_str());
}

// The other surface that volumes are taken to.
struct Design {
    std::string name;
    TinSurfacePatch3D surface;
};

Design ReadDesign(const Options& options, const std::string& unit) {
    SurfaceFile file = ReadLandXmlSurfaces(options.against);
    if (UnitText(file.linearUnit) != unit) throw InputError(options.against + ": not in " + unit);
    const Surface& design = Chosen(file, options.against, options.design);
    return {design.name, SurfaceOf(design.mesh, design.name)};
}

void ReportVolumes(const TinSurfacePatch3D& surface, const Design& design, const std::string& unit) {
    TinSurfacePatch3D::Volumes volumes;
    if (!surface.GetVolumes(design.surface, volumes)) throw InputError(design.name + ": no surface");
    std::printf("Against %s: cut %.4f %s3, fill %.4f %s3 on %.4f %s2\n", design.name.c_str(), volumes.cut, unit.c_str(),
                volumes.fill, unit.c_str(), volumes.area, unit.c_str());
}

void Report(const Earthwork& work, double step, const std::string& unit) {
    const CrossSections::Earth& sum = work.masses.back().volume;
    std::printf("Sections of %s every %g %s: cut %.4f %s3, fill %.4f %s3 by mean end areas", work.name.c_str(), step,
                unit.c_str(), sum.cut, unit.c_str(), sum.fill, unit.c_str());
    if (work.exact) {
        std::printf(", exactly %.4f and %.4f %s3", work.exact->cut, work.exact->fill, unit.c_str());
    }
    std::printf("\nstation,cut area,fill area,cut,fill,mass\n");
    for (std::size_t i = 0; i < work.sections.size(); ++i) {
        const CrossSections::Section& section = work.sections[i];
        const CrossSections::Earth& volume = work.masses[i].volume;
        std::printf("%.4f,%.4f,%.4f,%.4f,%.4f,%.4f\n", work.startStation + section.station, section.area.cut,
                    section.area.fill, volume.cut, volume.fill, volume.cut - volume.fill);
    }
}

void Thin(TinSurfacePatch3D& surface, const std::string& name, double tolerance, const std::string& unit) {
    const unsigned int before = surface.GetTriangles().GetVerticesSize();
    if (!surface.Thin(tolerance)) throw InputError("surface " + name + " lies over itself");
    std::printf("Thinned %s to %g %s: %u of %u vertices stay\n", name.c_str(), tolerance, unit.c_str(),
                surface.GetTriangles().GetVerticesSize(), before);
}

// Fills and thins as the options ask.
void Edit(TinSurfacePatch3D& surface, const std::string& name, const Options& options, const std::string& unit) {
    std::size_t holes = 0;
    if (options.fill) {
        if (!surface.FillHoles(*options.fill, holes)) throw InputError("surface " + name + " lies over itself");
        std::printf("Filled %zu hole(s) of %s\n", holes, name.c_str());
    }
    if (options.thin) Thin(surface, name, *options.thin, unit);
}

void Clip(Surface& surface, const std::string& path) {
    constexpr double userTolerance = 0.001;
    std::vector<Point2D> corners;
    for (const std::vector<double>& row : ReadCsv(path, 2)) corners.emplace_back(row[0], row[1]);
    IndexedTriangleSet3D inside;
    if (!GeometryClipper::Clip(surface.mesh, Polygon2D(corners), inside, Tolerances(userTolerance))) {
        throw InputError(path + ": cannot clip surface " + surface.name);
    }
    std::printf("Clipped %s: %zu triangles, %zu before\n", surface.name.c_str(), inside.size(), surface.mesh.size());
    surface.mesh = std::move(inside);
    surface.statedPlanArea.reset();
    surface.statedSurfaceArea.reset();
}

SurfaceFile ReadSurfaces(const Options& options) {
    SurfaceFile file;
    if (options.file.empty() && options.ground.IsEmpty()) throw InputError("a surface or its points are missing");
    if (!options.file.empty()) file = ReadLandXmlSurfaces(options.file);
    if (!options.file.empty()) std::fprintf(stderr, "%s: %zu surface(s)\n", options.file.c_str(), file.surfaces.size());
    if (!options.ground.IsEmpty()) {
        Surface built;
        built.name = "Built";
        TinSurfacePatch3D surface = BuildGround(options.ground);
        Edit(surface, built.name, options, UnitText(file.linearUnit));
        built.mesh = surface.GetTriangles();
        file.surfaces.insert(file.surfaces.begin(), std::move(built));
    }
    return file;
}

void ReportSections(const std::vector<Alignment>& alignments, const TinSurfacePatch3D& ground, const Design& design,
                    const Options& options, const std::string& unit) {
    for (const Alignment& alignment : alignments) {
        std::fprintf(stderr, "sections along %s\n", alignment.name.c_str());
        const Earthwork work(alignment, ground, design.surface, *options.sections, options.width);
        Report(work, *options.sections, unit);
        if (options.sheet.empty() || &alignment != &alignments.front()) continue;
        if (!DrawSheet(options.sheet, work, unit)) throw InputError(options.sheet + ": cannot be written");
        std::fprintf(stderr, "wrote %s\n", options.sheet.c_str());
    }
}

int Run(const Options& options) {
    SurfaceFile file = ReadSurfaces(options);
    const std::string unit = UnitText(file.linearUnit);
    Surface& chosen = Chosen(file, options.file, options.surface);
    const bool isBuilt = !options.ground.IsEmpty() && &chosen == &file.surfaces.front();
    if ((options.fill || options.thin) && !isBuilt) {
        TinSurfacePatch3D surface = SurfaceOf(chosen.mesh, chosen.name);
        Edit(surface, chosen.name, options, unit);
        chosen.mesh = surface.GetTriangles();
    }
    if (!options.clip.empty()) Clip(chosen, options.clip);
    for (Surface& surface : file.surfaces) ReportAndTurn(surface, unit, options.over);

    if (options.sections && (options.against.empty() || options.along.empty())) {
        throw InputError("--sections needs --against and --along");
    }
    const auto cuts = static_cast<unsigned int>(options.smooth.value_or(0.0));
    const bool isGridOfSurface = options.grid && options.krige.empty();
    TinSurfacePatch3D surface;
    std::optional<Design> design;
    if (options.contours || !options.against.empty() || !options.heights.empty() || isGridOfSurface) {
        surface = SurfaceOf(chosen.mesh, chosen.name);
        if (options.contours) ReportContours(*options.contours, cuts, surface, unit);
        if (!options.against.empty()) ReportVolumes(surface, design.emplace(ReadDesign(options, unit)), unit);
        if (!options.heights.empty()) WriteHeights(options.heights, surface);
        if (isGridOfSurface) {
            const GridSurface grid = MakeGrid(surface, *options.grid, unit);
            if (!options.nodes.empty()) {
                WriteFile(options.nodes, [&](std::ostream& out) { WriteNodes(out, grid, nullptr); });
            }
        }
    }

    std::vector<Alignment> alignments;
    std::vector<LongSection> sections;
    if (!options.along.empty()) {
        LandXmlFile road = LoadLandXml(options.along);
        if (UnitText(road.linearUnit) != unit) {
            std::fprintf(stderr, "warning: the surface is in %s, the alignment in %s\n", unit.c_str(),
                         UnitText(road.linearUnit).c_str());
        }
        alignments = std::move(road.alignments);
        for (const Alignment& alignment : alignments) {
            std::fprintf(stderr, "cutting %s along %s\n", chosen.name.c_str(), alignment.name.c_str());
            sections.emplace_back(chosen.mesh, alignment, options.step);
            Report(sections.back());
        }
        if (options.csv.empty()) {
            WriteTable(std::cout, sections);
        } else {
            WriteFile(options.csv, [&](std::ostream& out) { WriteTable(out, sections); });
        }
    }
    if (options.sections) ReportSections(alignments, surface, *design, options, unit);

    if (!options.xml.empty()) {
        WriteLandXml(options.xml, file.linearUnit, alignments, file.surfaces);
        std::fprintf(stderr, "wrote %s\n", options.xml.c_str());
    }

    std::optional<KrigedGrid> grid;
    std::vector<Point3D> samples;
    if (!options.krige.empty()) {
        samples = ReadSamples(options.krige);
        std::fprintf(stderr, "kriging from %zu points\n", samples.size());
        ExperimentalVariogram::Fit model;
        if (options.fit.empty()) {
            model = GuessModel(samples, options.sill, options.range);
        } else {
            const VariogramStudy study(samples);
            Report(study, unit);
            if (!study.DrawPicture(options.fit, unit)) throw InputError(options.fit + ": cannot be written");
            std::fprintf(stderr, "wrote %s\n", options.fit.c_str());
            model = study.fits.front();
        }
        grid.emplace(samples, options.grid.value_or(50.0), model, options.trend);
        Report(*grid, samples.size(), model, unit);
        if (!options.nodes.empty()) {
            WriteFile(options.nodes, [&](std::ostream& out) { WriteNodes(out, grid->heights, &grid->deviations); });
        }
    }

    if (!options.svg.empty()) {
        const auto section = std::max_element(
            sections.begin(), sections.end(),
            [](const LongSection& a, const LongSection& b) { return a.GetGroundLength() < b.GetGroundLength(); });
        PictureParts parts{"Surface " + chosen.name, unit, &chosen.mesh, &alignments, nullptr, nullptr, &samples,
                           options.contours};
        if (section != sections.end() && !section->GetRuns().empty()) parts.section = &*section;
        parts.contourCuts = cuts;
        if (grid) parts.grid = &*grid;
        if (design) {
            parts.ground = &surface;
            parts.design = &design->surface;
        }
        if (!DrawPicture(options.svg, parts)) throw InputError(options.svg + ": cannot be written");
        std::fprintf(stderr, "wrote %s\n", options.svg.c_str());
    }
    return 0;
}

}  // namespace
}  // namespace Kalvio::Examples

int main(int argc, char** argv) {
    using namespace Kalvio::Examples;
    Options options;
    return RunProgram("terrain", kUsage, ArgumentsOf(options), argc, argv, [&options] { return Run(options); });
}
