// Puts boxes of a table into a spatial index, answers windows and points, draws boxes, windows and hits.

#include "common/Arguments.h"
#include "common/Csv.h"
#include "common/InputError.h"
#include "common/Svg.h"

#include "kalvio/SpatialIndexes/ISpatialIndexData.h"
#include "kalvio/SpatialIndexes/QuadTree.h"
#include "kalvio/SpatialIndexes/RStarTree.h"
#include "kalvio/SpatialIndexes/RTree.h"
#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBoxND.h"
#include "kalvio/core/PointND.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <list>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Kalvio::Examples {

using namespace Kalvio::Math;
using namespace Kalvio::Math::SpatialIndexes;

namespace {

constexpr const char* kUsage =
    "usage: assets INDEX BOXES.csv [--window X,Y,X,Y ...] [--point X,Y ...] [--check WINDOWS.csv] [--svg OUT.svg]\n"
    "  INDEX      rstar, rtree or quadtree\n"
    "  BOXES.csv  id,min_x,min_y,max_x,max_y below a line of titles\n"
    "  --window   boxes that touch or overlap the window, and those inside it; may be repeated\n"
    "  --point    boxes that hold the point or lie within 0.005 of it; may be repeated\n"
    "  --check    compares with known answers: min_x,min_y,max_x,max_y, number touching, number inside, and the sums\n"
    "             of the ids of both\n"
    "  --svg      draws all boxes, the windows and points, and what they hit\n"
    "  --y-down   y grows downward in the picture\n";

constexpr int kDiffers = 1;

constexpr double largestId = 9007199254740992.0;  // 2^53; ids of the table are whole numbers below it

class Asset final : public ISpatialIndexData {
public:
    explicit Asset(const std::vector<double>& row)
        : id(static_cast<long long>(std::clamp(row[0], -largestId, largestId))),
          box(PointND(std::vector<double>{row[1], row[2]}), PointND(std::vector<double>{row[3], row[4]})) {}

    void GetEnvelope(BoundingBoxND& envelope) const override { envelope = box; }
    long long GetId() const { return id; }
    const BoundingBoxND& GetBox() const { return box; }

private:
    long long id;
    BoundingBoxND box;
};

struct Options {
    std::string index;
    std::string file;
    std::vector<std::vector<double>> windows;
    std::vector<std::vector<double>> points;
    std::string check;
    std::string svg;
    bool isYDown = false;
};

Arguments ArgumentsOf(Options& options) {
    Arguments arguments;
    arguments.AddWord(options.index);
    arguments.AddWord(options.file);
    arguments.AddNumbers("--window", 4, options.windows);
    arguments.AddNumbers("--point", 2, options.points);
    arguments.AddText("--check", options.check);
    arguments.AddText("--svg", options.svg);
    arguments.AddFlag("--y-down", options.isYDown);
    return arguments;
}

std::unique_ptr<ISpatialIndex> MakeIndex(const std::string& name) {
    if (name == "rstar") return std::make_unique<RStarTree>(false);
    if (name == "rtree") return std::make_unique<RTree>();
    if (name == "quadtree") return std::make_unique<QuadTree>();
    return nullptr;
}

BoundingBoxND WindowOf(const std::vector<double>& numbers) {
    return {PointND(std::vector<double>{numbers[0], numbers[1]}), PointND(std::vector<double>{numbers[2], numbers[3]})};
}

double Microseconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

struct Answer {
    std::vector<const Asset*> assets;
    double microseconds = 0.0;

    long long GetSumOfIds() const {
        long long sum = 0;
        for (const Asset* asset : assets) sum += asset->GetId();
        return sum;
    }
};

/// `where` is a point, or a box and the overlap flag.
template <class... Where>
Answer Ask(const ISpatialIndex& index, const Where&... where) {
    std::list<ISpatialIndexData*> found;
    Answer answer;
    answer.microseconds = Microseconds([&] { index.Search(where..., found); });
    for (const ISpatialIndexData* item : found) answer.assets.push_back(static_cast<const Asset*>(item));
    return answer;
}

/// @return number of windows whose answers differ from the known ones
int Check(const ISpatialIndex& index, const std::string& path) {
    int differences = 0;
    double microseconds = 0.0;
    const std::vector<std::vector<double>> rows = ReadCsv(path, 8);
    for (const std::vector<double>& row : rows) {
        for (const bool overlap : {true, false}) {
            const Answer answer = Ask(index, WindowOf(row), overlap);
            microseconds += answer.microseconds;
            const std::size_t column = overlap ? 4 : 5;
            if (static_cast<double>(answer.assets.size()) == row[column] &&
                static_cast<double>(answer.GetSumOfIds()) == row[column + 2]) {
                continue;
            }
            std::printf("window %g,%g,%g,%g: %zu boxes %s, known are %g\n", row[0], row[1], row[2], row[3],
                        answer.assets.size(), overlap ? "touch" : "inside", row[column]);
            ++differences;
        }
    }
    std::printf("%zu windows checked, %d answers differ, %.2f us per search\n", rows.size(), differences,
                rows.empty() ? 0.0 : microseconds / (2.0 * static_cast<double>(rows.size())));
    return differences;
}

class Picture {
public:
    Picture(const BoundingBox2D& world, bool yDown) : isYDown(yDown), panel(40, 40, 1020, 720, Turned(world), true) {}

    void Draw(const BoundingBoxND& box, const SvgStyle& style) { svg.Area({CornersOf(box)}, style); }
    void Draw(const Point2D& point, const SvgStyle& style) { svg.Circle(panel.ToPage(Turned(point)), 4.0, style); }
    void Title(const std::string& text) { svg.Text(Point2D(40, 26), text, 14, "#222222"); }
    bool Write(const std::string& path) const { return svg.Write(path); }

private:
    Point2D Turned(const Point2D& p) const { return {p.GetX(), isYDown ? -p.GetY() : p.GetY()}; }
    BoundingBox2D Turned(const BoundingBox2D& box) const { return {Turned(box.GetCenter()), box.GetSize()}; }
    std::vector<Point2D> CornersOf(const BoundingBoxND& box) const {
        std::vector<Point2D> corners;
        for (const auto& [highX, highY] : {std::pair(false, false), {true, false}, {true, true}, {false, true}}) {
            corners.push_back(
                panel.ToPage(Turned({highX ? box.GetMax(0) : box.GetMin(0), highY ? box.GetMax(1) : box.GetMin(1)})));
        }
        return corners;
    }

    bool isYDown;
    Svg svg{1100, 800};
    SvgPanel panel;
};

int Run(const Options& options) {
    const std::unique_ptr<ISpatialIndex> index = MakeIndex(options.index);
    if (index == nullptr) throw InputError(options.index + ": no such index");
    std::vector<Asset> assets;
    for (const std::vector<double>& row : ReadCsv(options.file, 5)) {
        if (row[1] > row[3] || row[2] > row[4]) {
            throw InputError(options.file + ": the box of " + std::to_string(row[0]) + " is inside out");
        }
        assets.emplace_back(row);
    }
    if (assets.empty()) throw InputError(options.file + ": no boxes");
    const double filling = Microseconds([&] {
        for (const Asset& asset : assets) index->Insert(&asset);
    });
    std::printf("%zu boxes into %s, %.2f us each\n", assets.size(), options.index.c_str(),
                filling / static_cast<double>(assets.size()));

    std::set<const Asset*> hits;
    std::set<const Asset*> insiders;
    for (const std::vector<double>& numbers : options.windows) {
        const Answer touching = Ask(*index, WindowOf(numbers), true);
        const Answer inside = Ask(*index, WindowOf(numbers), false);
        std::printf("window %.10g,%.10g,%.10g,%.10g: %zu boxes touch (%.2f us), %zu inside (%.2f us)\n", numbers[0],
                    numbers[1], numbers[2], numbers[3], touching.assets.size(), touching.microseconds,
                    inside.assets.size(), inside.microseconds);
        hits.insert(touching.assets.begin(), touching.assets.end());
        insiders.insert(inside.assets.begin(), inside.assets.end());
    }
    for (const std::vector<double>& numbers : options.points) {
        const Answer answer = Ask(*index, PointND(numbers));
        std::printf("point %.10g,%.10g: %zu boxes (%.2f us)", numbers[0], numbers[1], answer.assets.size(),
                    answer.microseconds);
        for (const Asset* asset : answer.assets) std::printf(" %lld", asset->GetId());
        std::printf("\n");
        hits.insert(answer.assets.begin(), answer.assets.end());
    }
    const int differences = options.check.empty() ? 0 : Check(*index, options.check);

    if (!options.svg.empty()) {
        BoundingBoxND world = assets.front().GetBox();
        for (const Asset& asset : assets) world += asset.GetBox();
        Picture picture(world.GetBoundingBox2D(), options.isYDown);
        picture.Title(std::to_string(assets.size()) + " boxes, " + std::to_string(hits.size()) + " hit, " +
                      std::to_string(insiders.size()) + " inside");
        for (const Asset& asset : assets) {
            const char* const fill = insiders.count(&asset) > 0 ? "#e8743b" : hits.count(&asset) > 0 ? "#f6c89f" : "";
            picture.Draw(asset.GetBox(), {*fill == '\0' ? "#9aa5b1" : "#8c3b12", 0.5, fill, ""});
        }
        for (const std::vector<double>& numbers : options.windows) {
            picture.Draw(WindowOf(numbers), {"#1b4f9c", 1.6, "", "6 4"});
        }
        for (const std::vector<double>& numbers : options.points) {
            picture.Draw(Point2D(numbers[0], numbers[1]), {"#1b4f9c", 1.2, "#ffffff", ""});
        }
        if (!picture.Write(options.svg)) throw InputError(options.svg + ": cannot be written");
    }
    return differences == 0 ? 0 : kDiffers;
}

}  // namespace
}  // namespace Kalvio::Examples

int main(int argc, char** argv) {
    using namespace Kalvio::Examples;
    Options options;
    return RunProgram("assets", kUsage, ArgumentsOf(options), argc, argv, [&options] { return Run(options); });
}
