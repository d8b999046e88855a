// Reads the alignments of a LandXML file, checks and stations them, answers points, draws plan and profile.

#include "alignment/Crossings.h"
#include "alignment/Design.h"
#include "common/Arguments.h"
#include "common/Csv.h"
#include "common/Drawing.h"
#include "common/InputError.h"
#include "common/LandXml.h"
#include "common/LandXmlWriter.h"
#include "common/Svg.h"

#include "kalvio/curves/Line2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/queries/Distance.h"
#include "kalvio/queries/Projection.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <numbers>
#include <string>
#include <vector>

namespace Kalvio::Examples {

using namespace Kalvio::Math;

namespace {

constexpr const char* kUsage =
    "usage: alignment FILE.xml [--step METRES] [--svg OUT.svg] [--csv OUT.csv] [--locate X,Y[,Z] ...] [--cross "
    "OTHER.xml]\n"
    "       [--offsets POINTS.csv [--offsets-csv OUT.csv]] [--space OUT.csv] [--reach METRES]\n"
    "       [--cross-lines OUT.csv [--width METRES]] [--xml OUT.xml]\n"
    "       alignment --design POINTS.csv [--transition NAME] [--without-arcs] [--through X,Y ...] [the same options]\n"
    "       alignment --fit POINTS.csv [--scatter METRES] [--transition NAME] [the same options]\n"
    "       alignment --join FROM --join TO [--radius R | --transition NAME] [the same options]\n"
    "  --step    distance of the stations written to the table (20)\n"
    "  --svg     draws plan, profile and cross slopes, of a design the curvature\n"
    "  --csv     writes station, x, y, height, bearing and curvature\n"
    "  --offsets table of points, x,y: station and offset of each, in the order of the table\n"
    "  --offsets-csv  where they go (standard output)\n"
    "  --locate  station and offset of the point with easting X and northing Y; may be repeated; with a height Z all\n"
    "            places within reach, the nearest first, with the numbers of their stations and the height above them\n"
    "  --reach   how far those may be (100)\n"
    "  --design  instead of a file a table of tangent points: x,y,radius and the lengths of the transitions in and "
    "out\n"
    "  --fit     instead of a file a table of surveyed points, x,y, in their order: straights, arcs and transitions\n"
    "            nearest to them\n"
    "  --scatter standard deviation of those points (0)\n"
    "  --without-arcs  transitions grow, in the ratio of the table, until they meet\n"
    "  --through point that the curve nearest to it is laid through by its radius; may be repeated\n"
    "  --join    a line X,Y,X,Y or a circle X,Y,R (right turn: R negative): all arcs of --radius, or the transitions,\n"
    "            from the first to the second\n"
    "  --transition  Clothoid, Bloss, Sine, Cosine, Biquadratic, Viennese or Cubic (Clothoid)\n"
    "  --space   writes the axis in space, at multiples of the step and wherever it changes: x, y, z, grade, cross\n"
    "            slopes and frame\n"
    "  --cross-lines  writes the lines across the axis at multiples of the step and wherever it changes: ends and\n"
    "            axis, on the surface where there is a profile; the picture shows them\n"
    "  --width   of those to either side (10)\n"
    "  --xml     writes the alignments as LandXML\n"
    "  --cross   all common points with the alignments of another file, with the stations of both and the height\n"
    "            between them, and where they come nearest in space\n";

struct Options {
    std::string file;
    double step = 20.0;
    std::string svg;
    std::string csv;
    std::vector<std::vector<double>> points;
    double reach = 100.0;
    std::string space;
    std::string crossLines;
    double width = 10.0;
    std::string xml;
    DesignWishes design;
    std::string cross;
    std::string offsets;
    std::string offsetsCsv;
};

Arguments ArgumentsOf(Options& options) {
    Arguments arguments;
    arguments.AddOptionalWord(options.file);
    arguments.AddText("--design", options.design.table);
    arguments.AddText("--transition", options.design.transition);
    arguments.AddText("--fit", options.design.fit);
    arguments.AddPositive("--scatter", options.design.scatter);
    arguments.AddFlag("--without-arcs", options.design.hasNoArcs);
    arguments.AddNumbers("--through", 2, options.design.through);
    arguments.AddNumbers("--join", 3, options.design.joins, 4);
    arguments.AddNumber("--radius", options.design.radius);
    arguments.AddPositive("--step", options.step);
    arguments.AddText("--svg", options.svg);
    arguments.AddText("--csv", options.csv);
    arguments.AddText("--offsets", options.offsets);
    arguments.AddText("--offsets-csv", options.offsetsCsv);
    arguments.AddNumbers("--locate", 2, options.points, 3);
    arguments.AddPositive("--reach", options.reach);
    arguments.AddText("--space", options.space);
    arguments.AddText("--cross-lines", options.crossLines);
    arguments.AddPositive("--width", options.width);
    arguments.AddText("--xml", options.xml);
    arguments.AddText("--cross", options.cross);
    return arguments;
}

std::string RadiusText(double radius) { return radius == 0.0 ? "-" : Fixed(radius, 3); }

// Bearing of a direction, clockwise from north, in degrees in [0, 360).
double BearingOf(const Vec2D& direction) {
    Angle bearing(Point2D(), Point2D() + direction);
    const double degrees = bearing.GetDegrees();
    return degrees < 0.0 ? degrees + 360.0 : degrees;
}

void Report(const Alignment& alignment, const std::string& unit) {
    const Polyline2D& plan = alignment.plan;
    std::printf("Alignment %s: %u elements, length %.6f %s", alignment.name.c_str(), plan.GetNrOfElements(),
                plan.GetLength(), unit.c_str());
    if (alignment.statedLength > 0.0) {
        std::printf(" (stated %.6f, difference %.6f)", alignment.statedLength,
                    plan.GetLength() - alignment.statedLength);
    }
    std::printf("\n  %3s  %-11s %13s %13s %11s %11s %12s %12s\n", "#", "type", "station", "length", "R start", "R end",
                "closure", "gap to next");
    double station = alignment.GetStartStation();
    double worstClosure = 0.0;
    double worstGap = 0.0;
    for (unsigned int i = 0; i < plan.GetNrOfElements(); ++i) {
        const IPolyline2DElement& element = plan.GetElementAtIndex(i);
        const StatedElement& stated = alignment.elements[i];
        const double closure = Distance::PointToPoint(element.GetEnd(), stated.statedEnd);
        std::string gapText = "-";
        if (i + 1 < plan.GetNrOfElements()) {
            const double gap = Distance::PointToPoint(element.GetEnd(), plan.GetElementAtIndex(i + 1).GetStart());
            worstGap = std::max(worstGap, gap);
            gapText = Fixed(gap, 8);
        }
        worstClosure = std::max(worstClosure, closure);
        std::printf("  %3u  %-11s %13.6f %13.6f %11s %11s %12.8f %12s\n", i + 1, stated.type.c_str(), station,
                    element.GetLength(), RadiusText(stated.startRadius).c_str(), RadiusText(stated.endRadius).c_str(),
                    closure, gapText.c_str());
        station += element.GetLength();
    }
    std::printf("  ends within %.8f of the stated points, elements within %.8f of each other: %s within 0.0001\n",
                worstClosure, worstGap, plan.IsContinuous(1e-4) ? "continuous" : "NOT continuous");
    if (!alignment.profile.IsEmpty()) {
        std::printf("  design profile: %zu elements from station %.6f to %.6f\n",
                    alignment.profile.GetJoints().size() - 1 - alignment.profile.GetFaults().size(),
                    alignment.GetStartStation() + alignment.profile.GetStart(),
                    alignment.GetStartStation() + alignment.profile.GetEnd());
    }
}

void WarnOfGaps(const Alignment& alignment) {
    for (const Profile::Fault& overlap : alignment.profile.GetFaults()) {
        const double from = alignment.GetStartStation() + overlap.station;
        std::fprintf(stderr, "warning: %s: no height between stations %.3f and %.3f: vertical curves overlap\n",
                     alignment.name.c_str(), from, from + overlap.amount);
    }
}

void CheckStep(const std::vector<Alignment>& alignments, double step) {
    constexpr double mostSamples = 1e7;
    for (const Alignment& alignment : alignments) {
        if (alignment.plan.GetLength() / step > mostSamples)
            throw InputError("the step is too short for the length of the alignment");
    }
}

// Calls emit(sample) every `step` along the chain and at its end.
template <class Emit>
void ForEachSample(const Polyline2D& plan, double step, Emit&& emit) {
    std::vector<Polyline2D::PolylinePoint> samples;
    (void)plan.MakePointsAndTangents(0.0, plan.GetLength(), samples, step, 1e-6);
    for (const Polyline2D::PolylinePoint& sample : samples) emit(sample);
}

bool WriteTable(const std::string& path, const std::vector<Alignment>& alignments, double step) {
    CheckStep(alignments, step);
    std::ofstream file(path, std::ios::binary);
    file << "alignment,station,x,y,height,bearing_deg,curvature\n";
    for (const Alignment& alignment : alignments) {
        const Polyline2D& plan = alignment.plan;
        ForEachSample(plan, step, [&](const Polyline2D::PolylinePoint& sample) {
            const double station = alignment.GetStartStation() + sample.station;
            double height = 0.0;
            const std::string heightText = alignment.GetHeight(station, height) ? Fixed(height, 6) : "";
            double curvature = 0.0;
            (void)plan.GetCurvature(sample.station, curvature);
            file << CsvField(alignment.name) << ',' << Fixed(station, 6) << ',' << Fixed(sample.point.GetX(), 6) << ','
                 << Fixed(sample.point.GetY(), 6) << ',' << heightText << ',' << Fixed(BearingOf(sample.tangent), 8)
                 << ',' << Fixed(curvature, 9) << '\n';
        });
    }
    file.close();
    return !file.fail();
}

// A point beside an alignment: the nearest point of the axis, its station, and the distance, positive to the right.
struct Offset {
    Point2D foot;
    double station = 0.0;
    double value = 0.0;
    bool isPerpendicular = false;  // not beside an end, or off a corner
};

bool FindOffset(const Alignment& alignment, const Point2D& point, Offset& offset) {
    Polyline2D::PolylinePoint nearest;
    if (!Projection::NearestPointOnPolyline(point, alignment.plan, nearest, 1e-4)) return false;
    // At a corner the way on counts as much as the way there.
    Polyline2D::PolylinePoint ahead;
    Vec2D along = nearest.tangent;
    if (alignment.plan.MakePointAndTangentAt(nearest.station, ahead)) along += ahead.tangent;
    const double side = Distance::PointToLine(point, nearest.point, nearest.point + along);
    offset.foot = nearest.point;
    offset.station = alignment.GetStartStation() + nearest.station;
    offset.value = std::copysign(nearest.distance, side);
    offset.isPerpendicular = std::abs((point - nearest.point).DotProduct(nearest.tangent)) <= 1e-4;
    return true;
}

void Locate(const std::vector<Alignment>& alignments, const Point2D& point) {
    std::printf("Point %.3f, %.3f:\n", point.GetX(), point.GetY());
    for (const Alignment& alignment : alignments) {
        Offset offset;
        if (!FindOffset(alignment, point, offset)) {
            std::printf("  %s: not found\n", alignment.name.c_str());
            continue;
        }
        std::printf("  %s: station %.4f, offset %.4f (%s)", alignment.name.c_str(), offset.station, offset.value,
                    offset.value > 0.0   ? "right"
                    : offset.value < 0.0 ? "left"
                                         : "on the axis");
        double height = 0.0;
        if (alignment.GetHeight(offset.station, height)) std::printf(", height %.4f", height);
        std::printf("\n");
    }
}

// With the height of the point: every place beside the axis, by the numbers of its station.
void LocateInSpace(const std::vector<Alignment>& alignments, const Point3D& point, double reach) {
    std::printf("Point %.3f, %.3f, %.3f:\n", point.GetX(), point.GetY(), point.GetZ());
    for (const Alignment& alignment : alignments) {
        const Math::Alignment road = alignment.InSpace();
        std::vector<Math::Alignment::Place> places;
        road.GetPlaces(point, reach, places);
        std::printf("  %s: %zu place(s) within %g\n", alignment.name.c_str(), places.size(), reach);
        for (const Math::Alignment::Place& place : places) {
            double height = 0.0;
            const bool hasHeight = road.GetHeight(place.station, place.offset, height);
            std::printf("    %s, offset %.4f%s%s\n", road.GetStationing().GetText(place.station, 4).c_str(),
                        place.offset, hasHeight ? (", above " + Fixed(place.above, 4)).c_str() : "",
                        place.isPerpendicular ? "" : ", off a corner");
        }
    }
}

// The axis in space, with its frame. Without a profile there is none.
void WriteSpace(std::ostream& out, const std::vector<Alignment>& alignments, double step) {
    out << "alignment,station,length,x,y,z,grade,curvature,profile_curvature,cross_slope_left,cross_slope_right,"
           "direction_x,direction_y,direction_z,up_x,up_y,up_z\n";
    for (const Alignment& alignment : alignments) {
        const Math::Alignment road = alignment.InSpace();
        for (const double station : road.GetStationsByNumber(0.0, road.GetLength(), step)) {
            Math::Alignment::Frame frame;
            if (!road.GetFrame(station, frame)) continue;
            out << CsvField(alignment.name) << ',' << road.GetStationing().GetText(station, 4) << ','
                << Fixed(station, 6);
            for (const double value : {frame.position.GetX(), frame.position.GetY(), frame.position.GetZ()})
                out << ',' << Fixed(value, 6);
            for (const double value : {frame.grade, frame.curvature, frame.profileCurvature, frame.cant.left,
                                       frame.cant.right, frame.direction.GetX(), frame.direction.GetY(),
                                       frame.direction.GetZ(), frame.up.GetX(), frame.up.GetY(), frame.up.GetZ()})
                out << ',' << Fixed(value, 9);
            out << '\n';
        }
    }
}

// From the left to the right; in plan alone the heights stay empty.
void WriteCrossLines(std::ostream& out, const std::vector<Alignment>& alignments, double step, double width) {
    out << "alignment,station,length,offset,x,y,z\n";
    for (const Alignment& alignment : alignments) {
        const Math::Alignment road = alignment.InSpace();
        for (const double station : road.GetStationsByNumber(0.0, road.GetLength(), step)) {
            LineString3D line;
            Line2D inPlan;
            const bool isInSpace = road.GetCrossLine(station, -width, width, line);
            if (!isInSpace) {
                if (!road.GetCrossLine(station, -width, width, inPlan)) continue;
                for (const Point2D& p : {inPlan.GetStart(), inPlan.GetEnd()}) line.AppendPoint(Point3D(p, 0.0));
            }
            double offset = -width;
            for (const Point3D& point : line) {
                out << CsvField(alignment.name) << ',' << road.GetStationing().GetText(station, 4) << ','
                    << Fixed(station, 6) << ',' << Fixed(offset, 4) << ',' << Fixed(point.GetX(), 6) << ','
                    << Fixed(point.GetY(), 6) << ',' << (isInSpace ? Fixed(point.GetZ(), 6) : "") << '\n';
                offset += isInSpace ? width : 2.0 * width;
            }
        }
    }
}

void DrawCrossLines(Svg& svg, const SvgPanel& panel, const Alignment& alignment, double step, double width) {
    const Math::Alignment road = alignment.InSpace();
    for (const double station : road.GetStationsByNumber(0.0, road.GetLength(), step)) {
        Line2D line;
        if (road.GetCrossLine(station, -width, width, line))
            svg.Polyline(panel.ToPage(std::vector{line.GetStart(), line.GetEnd()}), {"#999999", 0.7, "", ""});
    }
}

void WriteOffsets(std::ostream& out, const std::vector<Alignment>& alignments,
                  const std::vector<std::vector<double>>& points) {
    out << "alignment,x,y,station,offset,foot_x,foot_y,perpendicular\n";
    for (const Alignment& alignment : alignments) {
        for (const std::vector<double>& row : points) {
            const Point2D point(row[0], row[1]);
            Offset offset;
            if (!FindOffset(alignment, point, offset)) continue;
            out << CsvField(alignment.name) << ',' << Fixed(point.GetX(), 6) << ',' << Fixed(point.GetY(), 6) << ','
                << Fixed(offset.station, 4) << ',' << Fixed(offset.value, 4) << ',' << Fixed(offset.foot.GetX(), 6)
                << ',' << Fixed(offset.foot.GetY(), 6) << ',' << (offset.isPerpendicular ? "yes" : "no") << '\n';
        }
    }
}

void TabulateOffsets(const Options& options, const std::vector<Alignment>& alignments) {
    const std::vector<std::vector<double>> points = ReadCsv(options.offsets, 2);
    if (options.offsetsCsv.empty()) return WriteOffsets(std::cout, alignments, points);
    std::ofstream file(options.offsetsCsv, std::ios::binary);
    WriteOffsets(file, alignments, points);
    file.close();
    if (file.fail()) throw InputError(options.offsetsCsv + ": cannot be written");
    std::fprintf(stderr, "wrote %s\n", options.offsetsCsv.c_str());
}

void Cross(const std::vector<Alignment>& alignments, const std::vector<Alignment>& others) {
    for (const Alignment& alignment : alignments) {
        for (const Alignment& other : others) {
            const std::vector<Crossing> crossings = FindCrossings(alignment, other);
            std::printf("%s with %s: %zu common point(s)\n", alignment.name.c_str(), other.name.c_str(),
                        crossings.size());
            for (const Crossing& crossing : crossings) {
                std::printf("  station %.4f, other %.4f, at %.4f, %.4f, under %.4f degrees", crossing.station,
                            crossing.otherStation, crossing.point.GetX(), crossing.point.GetY(), crossing.angle);
                if (crossing.hasClearance) std::printf(", the other %.4f above", crossing.clearance);
                std::printf("\n");
            }
            Math::Alignment::Approach nearest;
            if (alignment.InSpace().GetNearestApproach(other.InSpace(), 1e-4, nearest)) {
                std::printf("  nearest in space: station %.4f, other %.4f, %.4f apart\n",
                            alignment.GetStartStation() + nearest.station,
                            other.GetStartStation() + nearest.otherStation, nearest.distance);
            }
        }
    }
}

const std::map<std::string, std::string> kColors = {
    {"Line", "#3b6ea5"},  {"Arc", "#d1495b"},         {"Clothoid", "#2e8b57"},
    {"Bloss", "#8a5fbf"}, {"Sine", "#c77d1e"},        {"Cosine", "#b0a01a"},
    {"Cubic", "#1c9aa0"}, {"Biquadratic", "#a0522d"}, {"Viennese", "#c2407e"}};

const std::string& ColorOf(const std::string& type) {
    static const std::string black = "#000000";
    const auto found = kColors.find(type);
    return found == kColors.end() ? black : found->second;
}

BoundingBox2D BoxOfPlans(const std::vector<Alignment>& alignments) {
    BoundingBox2D box = alignments.front().plan.GetBoundingBox();
    for (const Alignment& alignment : alignments) box += alignment.plan.GetBoundingBox();
    return box;
}

// The chain element by element in its colour, with a tick and the station at every multiple of `labelStep`.
void DrawPlan(Svg& svg, const SvgPanel& panel, const Alignment& alignment, double labelStep) {
    const Polyline2D& plan = alignment.plan;
    for (unsigned int i = 0; i < plan.GetNrOfElements(); ++i) {
        constexpr int pieces = 48;
        std::vector<Point2D> points;
        for (int k = 0; k <= pieces; ++k) {
            Polyline2D::PolylinePoint sample;
            const double along = plan.GetElementAtIndex(i).GetLength() * k / pieces;
            if (plan.MakePointAndTangentAt(static_cast<int>(i), along, sample)) points.push_back(sample.point);
        }
        svg.Polyline(panel.ToPage(points), {ColorOf(alignment.elements[i].type), 2.6, "", ""});
        svg.Circle(panel.ToPage(plan.GetElementAtIndex(i).GetStart()), 2.2, {"#333333", 0.8, "white", ""});
    }
    svg.Circle(panel.ToPage(plan.GetEnd()), 2.2, {"#333333", 0.8, "white", ""});

    const double first = std::ceil(alignment.GetStartStation() / labelStep) * labelStep;
    std::vector<Polyline2D::PolylinePoint> samples;
    (void)plan.MakePointsAndTangents(first - alignment.GetStartStation(), plan.GetLength(), samples, labelStep, 1e-6);
    for (const Polyline2D::PolylinePoint& sample : samples) {
        const double station = alignment.GetStartStation() + sample.station;
        if (std::abs(std::remainder(station, labelStep)) > 1e-3) continue;  // the end of the chain
        const Vec2D right = sample.tangent.GetNormalVector(false);
        const Point2D at = panel.ToPage(sample.point);
        const Vec2D across(right.GetX(), -right.GetY());
        svg.Polyline({at - across * 5.0, at + across * 5.0}, {"#333333", 0.9, "", ""});
        double turn = std::atan2(across.GetY(), across.GetX()) * 180.0 / std::numbers::pi;
        const bool flip = turn > 90.0 || turn < -90.0;
        if (flip) turn += 180.0;
        svg.Text(at + across * 9.0, Fixed(station, 0), 10, "#333333", flip ? SvgAnchor::End : SvgAnchor::Start, turn);
    }
}

void DrawProfile(Svg& svg, double left, double top, double width, double height, const Alignment& alignment,
                 const std::string& unit) {
    std::vector<std::vector<Point2D>> curves;
    constexpr int samples = 600;
    const double from = alignment.GetStartStation() + std::max(0.0, alignment.profile.GetStart());
    const double to = alignment.GetStartStation() + std::min(alignment.plan.GetLength(), alignment.profile.GetEnd());
    bool open = false;
    for (int k = 0; k <= samples; ++k) {
        const double station = from + (to - from) * k / samples;
        double z = 0.0;
        if (!alignment.GetHeight(station, z)) {
            open = false;
            continue;
        }
        if (!open) curves.emplace_back();
        open = true;
        curves.back().emplace_back(station, z);
    }
    if (curves.empty()) return;
    BoundingBox2D world(curves.front().front(), curves.front().front());
    for (const auto& curve : curves) {
        for (const Point2D& p : curve) world += BoundingBox2D(p, p);
    }
    const SvgPanel panel = DrawSectionGrid(
        svg, left, top, width, height,
        BoundingBox2D(Point2D(from, world.GetMinPoint().GetY()), Point2D(to, world.GetMaxPoint().GetY())));
    for (const auto& curve : curves) svg.Polyline(panel.ToPage(curve), {"#3b6ea5", 2.0, "", ""});
    // Where one profile element ends and the next begins.
    std::vector<double> joints = alignment.profile.GetJoints();
    joints.pop_back();
    for (const double joint : joints) {
        const double station = alignment.GetStartStation() + joint;
        double z = 0.0;
        if (station < from || station > to || !alignment.GetHeight(station, z)) continue;
        svg.Circle(panel.ToPage(Point2D(station, z)), 2.0, {"#333333", 0.8, "white", ""});
    }
    svg.Text(Point2D(left, top - 10),
             "Profile of " + alignment.name + ", heights " + Fixed(panel.GetScaleY() / panel.GetScaleX(), 0) +
                 " times exaggerated [" + unit + "]",
             12, "#222222");
}

// What valueAt(station, value) tells, on both sides of every change and between them.
template <class ValueAt>
std::vector<Point2D> BandOf(const Alignment& alignment, ValueAt&& valueAt) {
    std::vector<Point2D> band{Point2D(0.0, 0.0)};
    const double length = alignment.plan.GetLength();
    constexpr double beside = 1e-9;  // both sides of a joint
    for (const double change : alignment.InSpace().GetChanges(0.0, length)) {
        for (const double station : {change - beside, change + beside}) {
            double value = 0.0;
            if (!valueAt(station, value)) continue;
            if (const double from = band.back().GetX(); station - from > 1.0) {
                for (int k = 1; k < 24; ++k) {
                    double between = 0.0;
                    const double at = from + (station - from) * k / 24;
                    if (valueAt(at, between)) band.emplace_back(at, between);
                }
            }
            band.emplace_back(station, value);
        }
    }
    band.emplace_back(length, 0.0);
    return band;
}

double MostOf(const std::vector<Point2D>& band) {
    double most = 0.0;
    for (const Point2D& p : band) most = std::max(most, std::abs(p.GetY()));
    return most;
}

SvgPanel BandPanel(double left, double top, double width, double height, double length, double most) {
    return {left, top, width, height, BoundingBox2D(Point2D(0.0, -most), Point2D(length, most)), false};
}

// Curvature by station, to the left upward, over a box of the page.
void DrawCurvature(Svg& svg, double left, double top, double width, double height, const Alignment& alignment) {
    const double length = alignment.plan.GetLength();
    const std::vector<Point2D> band = BandOf(
        alignment, [&](double station, double& curvature) { return alignment.plan.GetCurvature(station, curvature); });
    const double most = MostOf(band);
    if (most == 0.0) return;
    const SvgPanel panel = BandPanel(left, top, width, height, length, most);
    svg.Area({panel.ToPage(band)}, {"#d1495b", 1.4, "#f3d3d7", ""});
    svg.Polyline(panel.ToPage(std::vector{Point2D(0.0, 0.0), Point2D(length, 0.0)}), {"#333333", 0.8, "", ""});
    svg.Text(Point2D(left, top - 10),
             "Curvature by station, left curves upward, smallest radius " + Fixed(1.0 / most, 3), 12, "#222222");
}

// Cross slopes by station, upward where the right side is higher.
void DrawCant(Svg& svg, double left, double top, double width, double height, const Alignment& alignment) {
    const double length = alignment.plan.GetLength();
    std::vector<Point2D> bands[2];
    for (const bool isRight : {false, true}) {
        bands[isRight ? 1 : 0] = BandOf(alignment, [&](double station, double& slope) {
            const Cant::Place place = alignment.cant.GetPlace(station);
            slope = isRight ? place.right : place.left;
            return true;
        });
    }
    const double most = std::max(MostOf(bands[0]), MostOf(bands[1]));
    if (most == 0.0) return;
    const SvgPanel panel = BandPanel(left, top, width, height, length, most);
    svg.Area({panel.ToPage(bands[1])}, {"#2e8b57", 1.4, "#d5e8dd", ""});
    svg.Polyline(panel.ToPage(bands[0]), {"#c77d1e", 1.4, "", ""});
    svg.Polyline(panel.ToPage(std::vector{Point2D(0.0, 0.0), Point2D(length, 0.0)}), {"#333333", 0.8, "", ""});
    svg.Text(Point2D(left, top - 10),
             "Cross slopes of " + alignment.name + ", left (line) and right (area) of the axis, at most " +
                 Fixed(100.0 * most, 2) + " %",
             12, "#222222");
}

bool DrawPicture(const Options& options, const std::vector<Alignment>& alignments, const std::string& unit) {
    const bool hasCurvature = options.file.empty();
    constexpr double width = 1100.0;
    constexpr double margin = 60.0;
    constexpr double planHeight = 560.0;
    constexpr double profileHeight = 190.0;
    const auto withProfile =
        std::find_if(alignments.begin(), alignments.end(), [](const Alignment& a) { return !a.profile.IsEmpty(); });
    const bool hasProfile = withProfile != alignments.end();
    const auto withCant = std::find_if(alignments.begin(), alignments.end(),
                                       [](const Alignment& a) { return !a.cant.GetKnots().empty(); });
    const bool hasCant = withCant != alignments.end();
    const int bands = (hasProfile ? 1 : 0) + (hasCurvature ? 1 : 0) + (hasCant ? 1 : 0);
    const double height = margin + planHeight + margin + bands * (profileHeight + margin);
    Svg svg(width, height);
    const SvgPanel panel(margin, margin, width - 2.0 * margin, planHeight, BoxOfPlans(alignments), true);
    double longest = 0.0;
    for (const Alignment& alignment : alignments) longest = std::max(longest, alignment.plan.GetLength());
    std::map<std::string, bool> used;
    for (const Alignment& alignment : alignments) {
        if (!options.crossLines.empty()) DrawCrossLines(svg, panel, alignment, options.step, options.width);
        DrawPlan(svg, panel, alignment, NiceStep(longest, 14));
        for (const StatedElement& element : alignment.elements) used[element.type] = true;
    }
    svg.Text(Point2D(margin, 28),
             alignments.size() == 1 ? alignments.front().name : std::to_string(alignments.size()) + " alignments", 15,
             "#222222");
    double x = margin;
    for (const auto& [type, isUsed] : used) {
        svg.Polyline({Point2D(x, 46), Point2D(x + 24, 46)}, {ColorOf(type), 3.0, "", ""});
        svg.Text(Point2D(x + 30, 50), type, 11, "#333333");
        x += 48.0 + 7.0 * static_cast<double>(type.size());
    }
    DrawScaleBar(svg, width - margin - 260.0, 50.0, panel.GetScaleX(), unit);
    DrawNorthArrow(svg, width - 40.0, 62.0);
    double top = 2.0 * margin + planHeight;
    const auto draw = [&](bool isWanted, auto&& drawBand) {
        if (!isWanted) return;
        drawBand();
        top += profileHeight + margin;
    };
    const double inner = width - 2.0 * margin;
    draw(hasProfile, [&] { DrawProfile(svg, margin, top, inner, profileHeight, *withProfile, unit); });
    draw(hasCurvature, [&] { DrawCurvature(svg, margin, top, inner, profileHeight, alignments.front()); });
    draw(hasCant, [&] { DrawCant(svg, margin, top, inner, profileHeight, *withCant); });
    return svg.Write(options.svg);
}

LandXmlFile Load(const Options& options) {
    const int inputs = (options.file.empty() ? 0 : 1) + (options.design.table.empty() ? 0 : 1) +
                       (options.design.fit.empty() ? 0 : 1) + (options.design.joins.empty() ? 0 : 1);
    if (inputs != 1) throw InputError("one file, one table of tangent points or surveyed ones, or one join");
    if (!options.file.empty()) return LoadLandXml(options.file);
    LandXmlFile designed;
    designed.alignments = Design(options.design);
    return designed;
}

int Run(const Options& options) {
    const LandXmlFile file = Load(options);
    const std::string unit = UnitText(file.linearUnit);
    std::string source = options.file + options.design.table + options.design.fit;
    if (source.empty()) source = "join";
    std::fprintf(stderr, "%s: %zu alignment(s)\n", source.c_str(), file.alignments.size());
    for (const Alignment& alignment : file.alignments) {
        Report(alignment, unit);
        WarnOfGaps(alignment);
    }
    for (const std::vector<double>& point : options.points) {
        if (point.size() == 2) {
            Locate(file.alignments, Point2D(point[0], point[1]));
        } else {
            LocateInSpace(file.alignments, Point3D(point[0], point[1], point[2]), options.reach);
        }
    }
    if (!options.cross.empty()) Cross(file.alignments, LoadLandXml(options.cross).alignments);
    if (!options.offsets.empty()) TabulateOffsets(options, file.alignments);
    if (!options.csv.empty()) {
        if (!WriteTable(options.csv, file.alignments, options.step))
            throw InputError(options.csv + ": cannot be written");
        std::fprintf(stderr, "wrote %s\n", options.csv.c_str());
    }
    const auto write = [](const std::string& path, auto&& fill) {
        std::ofstream out(path, std::ios::binary);
        fill(out);
        out.close();
        if (out.fail()) throw InputError(path + ": cannot be written");
        std::fprintf(stderr, "wrote %s\n", path.c_str());
    };
    if (!options.space.empty() || !options.crossLines.empty()) CheckStep(file.alignments, options.step);
    if (!options.space.empty())
        write(options.space, [&](std::ostream& out) { WriteSpace(out, file.alignments, options.step); });
    if (!options.crossLines.empty()) {
        write(options.crossLines,
              [&](std::ostream& out) { WriteCrossLines(out, file.alignments, options.step, options.width); });
    }
    if (!options.xml.empty()) {
        WriteLandXml(options.xml, file.linearUnit, file.alignments, {});
        std::fprintf(stderr, "wrote %s\n", options.xml.c_str());
    }
    if (!options.svg.empty()) {
        if (!DrawPicture(options, file.alignments, unit)) throw InputError(options.svg + ": cannot be written");
        std::fprintf(stderr, "wrote %s\n", options.svg.c_str());
    }
    return 0;
}

}  // namespace
}  // namespace Kalvio::Examples

int main(int argc, char** argv) {
    using namespace Kalvio::Examples;
    Options options;
    return RunProgram("alignment", kUsage, ArgumentsOf(options), argc, argv, [&options] { return Run(options); });
}
