#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/Polyline3D.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"
#include "kalvio/meshes/TriangleStrip3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/PolygonCurve2D.h"
#include "kalvio/polygons/RingCurve2D.h"
#include "kalvio/polygons/RingCurve3D.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <ctime>
#include <functional>
#include <iterator>
#include <list>
#include <map>
#include <memory>
#include <vector>

// How the cost of chains grows: every row runs with n and with 4 n and prints the exponent e of time ~ n^e between the
// two. Near 1 is linear, up to 1.15 allows for caches and a logarithm; 2 is a fault.
namespace Kalvio::Math {
namespace {

using Work = std::function<void()>;
using Pieces = std::vector<std::unique_ptr<IGeometry>>;

const Tolerances kTolerances(1e-4, 1e-10);

Point2D Corner(std::size_t i) { return {static_cast<double>(i), static_cast<double>(i % 2)}; }
Point3D CornerInSpace(std::size_t i) { return {Corner(i), 5.0}; }
Line2D* NewLine(std::size_t i) { return new Line2D(Corner(i), Corner(i + 1)); }
Line3D* NewLineInSpace(std::size_t i) { return new Line3D(CornerInSpace(i), CornerInSpace(i + 1)); }

template <class Chain, class Make>
Chain ChainOf(std::size_t n, Make&& make) {
    Chain chain;
    for (std::size_t i = 0; i < n; ++i) chain.AppendElement(make(i));
    return chain;
}
Polyline2D Lines(std::size_t n) { return ChainOf<Polyline2D>(n, NewLine); }
Polyline3D LinesInSpace(std::size_t n) { return ChainOf<Polyline3D>(n, NewLineInSpace); }

template <class String, class Corners>
String StringOf(std::size_t n, Corners&& corner) {
    String string;
    for (std::size_t i = 0; i < n; ++i) string.AppendPoint(corner(i));
    return string;
}
LineString2D String(std::size_t n) { return StringOf<LineString2D>(n, Corner); }
LineString3D StringInSpace(std::size_t n) { return StringOf<LineString3D>(n, CornerInSpace); }

std::vector<std::uint64_t> EverySecond(std::size_t n) {
    std::vector<std::uint64_t> indexes;
    for (std::size_t i = 1; i < n; i += 2) indexes.push_back(i);
    return indexes;
}

// n cuts, none on a joint or vertex.
std::map<double, const Point2D> Cuts(std::size_t n) {
    std::map<double, const Point2D> cuts;
    for (std::size_t i = 0; i < n; ++i) {
        const double share = 0.4;
        cuts.emplace((static_cast<double>(i) + share) * std::sqrt(2.0),
                     Corner(i) + (Corner(i + 1) - Corner(i)) * share);
    }
    return cuts;
}

template <class Geometry>
Work Breaking(Geometry geometry, std::size_t n) {
    return [geometry, cuts = Cuts(n)]() mutable {
        std::vector<IGeometry*> out;
        (void)geometry.BreakAtPreSorted(cuts, 0.0, out, false, kTolerances);
        benchmark::DoNotOptimize(Pieces(out.begin(), out.end()).size());
    };
}

// What a chain of n elements, in plan or in space, is asked by station.
template <class Chain>
Work Evaluating(Chain chain, std::size_t n) {
    return [chain, n] {
        typename Chain::PolylinePoint sample;
        const double step = chain.GetLength() / static_cast<double>(n);
        for (std::size_t i = 0; i < n; ++i) (void)chain.MakePointAndTangentAt(static_cast<double>(i) * step, sample);
        benchmark::DoNotOptimize(sample);
    };
}
template <class Chain>
Work Sampling(Chain chain, std::size_t n, bool byHeight) {
    return [chain, n, byHeight] {
        std::vector<typename Chain::PolylinePoint> samples;
        const double length = chain.GetLength();
        if (byHeight) {
            (void)chain.MakePointsAndTangentsUsingHeight(0.0, length, samples, 0.01, 1e-9);
        } else {
            (void)chain.MakePointsAndTangents(0.0, length, samples, length / static_cast<double>(n), 1e-9);
        }
        benchmark::DoNotOptimize(samples.data());
    };
}

// A road grows element by element, each starting as the one before it ends.
template <class Chain, class Make>
Work Growing(std::size_t n, Make make) {
    return [n, make] {
        Chain chain;
        typename Chain::PolylinePoint sample;
        for (std::size_t i = 0; i < n; ++i) {
            chain.AppendElement(make(i));
            const auto last = static_cast<unsigned int>(i);
            (void)chain.MakePointAndTangentAt(static_cast<int>(i), chain.GetElementAtIndex(last).GetLength(), sample);
        }
        benchmark::DoNotOptimize(sample);
    };
}

struct Row {
    const char* name;
    std::size_t n;
    Work (*prepare)(std::size_t n);
};

const Row rows[] = {
    {"Polyline2D/AppendElement", 20000, [](std::size_t n) -> Work { return [n] { Lines(n); }; }},
    {"Polyline2D/Insert", 20000,
     [](std::size_t n) -> Work {
         return [n] {
             Polyline2D chain;
             for (std::size_t i = 0; i < n; i += 4) {
                 std::vector<IPolyline2DElement*> some{NewLine(i), NewLine(i + 1), NewLine(i + 2), NewLine(i + 3)};
                 chain.Insert(chain.GetSize(), some);
             }
         };
     }},
    {"Polyline2D/AppendElement, each evaluated", 5000, [](std::size_t n) { return Growing<Polyline2D>(n, NewLine); }},
    {"Polyline2D/GetLength", 20000,
     [](std::size_t n) -> Work { return [chain = Lines(n)] { benchmark::DoNotOptimize(chain.GetLength()); }; }},
    {"Polyline2D/Reverse", 20000,
     [](std::size_t n) -> Work { return [chain = Lines(n)]() mutable { chain.Reverse(); }; }},
    {"Polyline2D/MakePointAndTangentAt", 20000, [](std::size_t n) { return Evaluating(Lines(n), n); }},
    {"Polyline2D/MakePointsAndTangents", 20000, [](std::size_t n) { return Sampling(Lines(n), n, false); }},
    {"Polyline2D/MakePointsAndTangentsUsingHeight", 20000, [](std::size_t n) { return Sampling(Lines(n), n, true); }},
    {"Polyline2D/MakePointsAndTangents, into one list", 2000,
     [](std::size_t n) -> Work {
         return [chain = Lines(1), n] {
             std::vector<Polyline2D::PolylinePoint> samples;
             for (std::size_t i = 0; i < n; ++i) (void)chain.MakePointsAndTangents(0.0, 1.0, samples, 0.1, 1e-9);
             benchmark::DoNotOptimize(samples.data());
         };
     }},
    {"Polyline2D/MakeLineString, into one string", 2000,
     [](std::size_t n) -> Work {
         return [chain = Lines(1), n] {
             LineString2D string;
             for (std::size_t i = 0; i < n; ++i) (void)chain.MakeLineString(0.0, 1.0, string, 0.1, 1e-9);
             benchmark::DoNotOptimize(string.GetSize());
         };
     }},
    {"Polyline2D/nested, MakePointAndTangentAt", 5000,
     [](std::size_t n) {
         Polyline2D outer;
         outer.AppendElement(Lines(n).Clone());
         return Evaluating(outer, n);
     }},
    {"Polyline2D/nested, MakePointsAndTangents", 5000,
     [](std::size_t n) {
         Polyline2D outer;
         outer.AppendElement(Lines(n).Clone());
         return Sampling(outer, n, false);
     }},
    {"Polyline2D/BreakAtPreSorted", 5000, [](std::size_t n) { return Breaking(Lines(n), n); }},
    {"Polyline2D/RemoveElements", 20000,
     [](std::size_t n) -> Work {
         return [n] {
             Polyline2D chain = Lines(n);
             chain.RemoveElements(EverySecond(n), true);
         };
     }},
    {"Polyline2D/FindShortElements", 20000,
     [](std::size_t n) -> Work {
         return [chain = Lines(n)] {
             std::vector<std::uint64_t> indexes;
             benchmark::DoNotOptimize(chain.FindShortElements(indexes, 2.0));
         };
     }},
    {"Polyline2D/Append", 20000,
     [](std::size_t n) -> Work { return [chain = Lines(n)] { std::unique_ptr<IGeometry>(chain.Append(&chain)); }; }},
    {"Line2D/BreakAtPreSorted, into one list", 5000,
     [](std::size_t n) -> Work {
         return [cuts = Cuts(1), n]() mutable {
             std::vector<IGeometry*> out;
             for (std::size_t i = 0; i < n; ++i) {
                 (void)Line2D(Corner(0), Corner(1)).BreakAtPreSorted(cuts, 0.0, out, false, kTolerances);
             }
             benchmark::DoNotOptimize(Pieces(out.begin(), out.end()).size());
         };
     }},
    {"Line2D/MakePoints", 20000,
     [](std::size_t n) -> Work {
         return [line = Line2D(Corner(0), Corner(n)), n] {
             std::vector<Point2D> points;
             (void)line.MakePoints(0.0, static_cast<double>(n), 1.0, points, true);
             benchmark::DoNotOptimize(points.data());
         };
     }},
    {"Arc2D/MakeLineStringUsingHeight, into one string", 2000,
     [](std::size_t n) -> Work {
         return [arc = Arc2D(Point2D(10.0, 0.0), Point2D(), Angle(1.0)), n] {
             LineString2D string;
             for (std::size_t i = 0; i < n; ++i) (void)arc.MakeLineStringUsingHeight(0.0, 10.0, string, 0.01);
             benchmark::DoNotOptimize(string.GetSize());
         };
     }},
    {"Polyline3D/AppendElement", 20000, [](std::size_t n) -> Work { return [n] { LinesInSpace(n); }; }},
    {"Polyline3D/AppendElement, each evaluated", 5000,
     [](std::size_t n) { return Growing<Polyline3D>(n, NewLineInSpace); }},
    {"Polyline3D/MakePointAndTangentAt", 20000, [](std::size_t n) { return Evaluating(LinesInSpace(n), n); }},
    {"Polyline3D/MakePointsAndTangents", 20000, [](std::size_t n) { return Sampling(LinesInSpace(n), n, false); }},
    {"Polyline3D/MakePointsAndTangentsUsingHeight", 20000,
     [](std::size_t n) { return Sampling(LinesInSpace(n), n, true); }},
    {"Polyline3D/RemoveElements", 20000,
     [](std::size_t n) -> Work {
         return [n] {
             Polyline3D chain = LinesInSpace(n);
             chain.RemoveElements(EverySecond(n), true);
         };
     }},
    {"LineString2D/AppendPoint", 20000, [](std::size_t n) -> Work { return [n] { String(n); }; }},
    {"LineString2D/AppendPoints", 20000,
     [](std::size_t n) -> Work {
         return [n] {
             LineString2D string;
             for (std::size_t i = 0; i < n; i += 4) {
                 string.AppendPoints(std::vector<Point2D>{Corner(i), Corner(i + 1), Corner(i + 2), Corner(i + 3)});
             }
             benchmark::DoNotOptimize(string.GetSize());
         };
     }},
    {"LineString2D/GetElementAtIndex", 20000,
     [](std::size_t n) -> Work {
         return [n] {
             const LineString2D string = String(n);
             double length = 0.0;
             for (unsigned int i = 0; i + 1 < string.GetSize(); ++i) length += string.GetElementAtIndex(i).GetLength();
             benchmark::DoNotOptimize(length);
         };
     }},
    {"LineString2D/MakePointsAndTangents", 20000,
     [](std::size_t n) -> Work {
         return [string = String(n), n] {
             std::list<Point2D> points;
             std::list<Vec2D> tangents;
             (void)string.MakePointsAndTangents(string.GetLength() / static_cast<double>(n), points, tangents);
             benchmark::DoNotOptimize(points.size());
         };
     }},
    {"LineString2D/ExtractLineString", 20000,
     [](std::size_t n) -> Work {
         return [string = String(n)] {
             LineString2D part;
             (void)string.ExtractLineString(0.5, 1e9, part);
             benchmark::DoNotOptimize(part.GetSize());
         };
     }},
    {"LineString2D/BreakAtPreSorted", 5000, [](std::size_t n) { return Breaking(String(n), n); }},
    {"LineString2D/RemoveElements", 20000,
     [](std::size_t n) -> Work {
         return [string = String(n), n] {
             LineString2D copy(string);
             copy.RemoveElements(EverySecond(n), false);
             benchmark::DoNotOptimize(copy.GetSize());
         };
     }},
    {"LineString2D/IsSelfCrossing", 20000,
     [](std::size_t n) -> Work {
         return [string = String(n)] { benchmark::DoNotOptimize(string.IsSelfCrossing(1e-6)); };
     }},
    {"LineString3D/AppendPoint", 20000, [](std::size_t n) -> Work { return [n] { StringInSpace(n); }; }},
    {"LineString3D/MakePointsAndTangents", 20000,
     [](std::size_t n) -> Work {
         return [string = StringInSpace(n), n] {
             std::list<Point3D> points;
             std::list<Vec3D> tangents;
             (void)string.MakePointsAndTangents(string.GetLength() / static_cast<double>(n), points, tangents);
             benchmark::DoNotOptimize(points.size());
         };
     }},
    {"LineString3D/ExtractLineString", 20000,
     [](std::size_t n) -> Work {
         return [string = StringInSpace(n)] {
             LineString3D part;
             (void)string.ExtractLineString(0.5, 1e9, part);
             benchmark::DoNotOptimize(part.GetSize());
         };
     }},
    {"RingCurve2D/AppendElement", 20000,
     [](std::size_t n) -> Work { return [n] { ChainOf<RingCurve2D>(n, NewLine); }; }},
    {"RingCurve2D/RemoveElements", 20000,
     [](std::size_t n) -> Work {
         return [n] { ChainOf<RingCurve2D>(n, NewLine).RemoveElements(EverySecond(n), true); };
     }},
    {"RingCurve3D/AppendElement", 20000,
     [](std::size_t n) -> Work { return [n] { ChainOf<RingCurve3D>(n, NewLineInSpace); }; }},
    {"RingCurve3D/RemoveElements", 20000,
     [](std::size_t n) -> Work {
         return [n] { ChainOf<RingCurve3D>(n, NewLineInSpace).RemoveElements(EverySecond(n), true); };
     }},
    {"PolygonCurve2D/AppendInnerRing", 5000,
     [](std::size_t n) -> Work {
         return [ring = ChainOf<RingCurve2D>(3, NewLine), n] {
             PolygonCurve2D polygon;
             for (std::size_t i = 0; i < n; ++i) polygon.AppendInnerRing(ring.Clone());
             benchmark::DoNotOptimize(polygon.GetNumInnerRings());
         };
     }},
    {"Polygon2D/AppendHoleBoundary", 5000,
     [](std::size_t n) -> Work {
         return [hole = String(4), n] {
             Polygon2D polygon;
             for (std::size_t i = 0; i < n; ++i) polygon.AppendHoleBoundary(hole);
             benchmark::DoNotOptimize(polygon.GetPoints().data());
         };
     }},
    {"IndexedTriangleSet3D/AddTriangle", 20000,
     [](std::size_t n) -> Work {
         return [n] {
             IndexedTriangleSet3D set;
             for (std::size_t i = 0; i < n; ++i) {
                 set.AddTriangle(CornerInSpace(i), CornerInSpace(i + 1), CornerInSpace(i + 2), false, false);
             }
             benchmark::DoNotOptimize(set.GetTrianglesCount());
         };
     }},
    {"IndexedTriangleSet3D/Merge", 5000,
     [](std::size_t n) -> Work {
         return [n] {
             IndexedTriangleSet3D one, set;
             one.AddTriangle(CornerInSpace(0), CornerInSpace(1), CornerInSpace(2), false, false);
             for (std::size_t i = 0; i < n; ++i) set.Merge(one, false, 1e-6);
             benchmark::DoNotOptimize(set.GetTrianglesCount());
         };
     }},
    {"TriangleStrip3D/ComputeIndexes", 5000,
     [](std::size_t n) -> Work {
         return [n] {
             const TriangleStrip3D strip{std::vector<Point3D>(n)};
             std::vector<unsigned int> indexes;
             benchmark::DoNotOptimize(strip.ComputeIndexes(indexes));
             benchmark::DoNotOptimize(indexes.data());
         };
     }},
};

void Measure(benchmark::State& state, const Row& row, double& timeOfSmaller) {
    const auto n = static_cast<std::size_t>(state.range(0));
    const Work work = row.prepare(n);
    const std::clock_t begin = std::clock();  // of the processor: other programs do not matter
    for (auto _ : state) work();
    const double time = static_cast<double>(std::clock() - begin) / static_cast<double>(state.iterations());
    state.SetItemsProcessed(state.iterations() * state.range(0));
    if (n == row.n) {
        timeOfSmaller = time;
    } else {
        state.counters["exponent"] = std::log(time / timeOfSmaller) / std::log(4.0);
    }
}

const bool areRegistered = [] {
    static double timesOfSmaller[std::size(rows)];
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const auto n = static_cast<std::int64_t>(rows[i].n);
        benchmark::RegisterBenchmark(rows[i].name,
                                     [i](benchmark::State& state) { Measure(state, rows[i], timesOfSmaller[i]); })
            ->Arg(n)
            ->Arg(4 * n)
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}();

}  // namespace
}  // namespace Kalvio::Math
