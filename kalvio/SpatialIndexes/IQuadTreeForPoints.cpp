#include "kalvio/SpatialIndexes/IQuadTreeForPoints.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/Point3D.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kalvio::Math::SpatialIndexes {

namespace {

constexpr unsigned int deepestLevel = 60;  // cells are then smaller than the spacing of coordinates beside their size

struct Cell {
    double centerX;
    double centerY;
    double halfWidth;
    double halfHeight;
    unsigned int level;
    unsigned int firstChild = 0;  // of four neighbours in the list of cells; 0: no children
    std::vector<Point3D> points = {};
    // What the points of this cell and below cover: exact for pruning, wherever the points lie.
    double minX = std::numeric_limits<double>::infinity();
    double minY = std::numeric_limits<double>::infinity();
    double maxX = -std::numeric_limits<double>::infinity();
    double maxY = -std::numeric_limits<double>::infinity();

    void Cover(const Point3D& p) {
        minX = std::min(minX, p.GetX());
        minY = std::min(minY, p.GetY());
        maxX = std::max(maxX, p.GetX());
        maxY = std::max(maxY, p.GetY());
    }
    unsigned int ChildFor(const Point3D& p) const {
        return firstChild + (p.GetX() > centerX ? 1U : 0U) + (p.GetY() > centerY ? 2U : 0U);
    }
};

class QuadTreeForPoints final : public IQuadTreeForPoints {
public:
    QuadTreeForPoints(unsigned int nodeCapacity, const BoundingBox2D& box) : capacity(std::max(nodeCapacity, 1U)) {
        const auto orZero = [](double value) { return std::isfinite(value) ? value : 0.0; };
        cells.push_back({orZero(box.GetCenter().GetX()), orZero(box.GetCenter().GetY()),
                         std::abs(orZero(box.GetSize().GetX())) * 0.5, std::abs(orZero(box.GetSize().GetY())) * 0.5,
                         0});
    }

    bool Insert(const Point3D& point) override {
        if (!std::isfinite(point.GetX()) || !std::isfinite(point.GetY())) return false;
        unsigned int i = 0;
        for (;;) {
            cells[i].Cover(point);
            if (cells[i].firstChild == 0) break;
            i = cells[i].ChildFor(point);
        }
        cells[i].points.push_back(point);
        ++count;
        if (cells[i].points.size() > capacity) Quarter(i);
        return true;
    }

    std::uint64_t Search(const Point2D& center, double radius, std::vector<Point3D>& points) const override {
        const std::size_t before = points.size();
        if (radius >= 0.0) Search(0, center, radius, points);
        return points.size() - before;
    }

    std::uint64_t GetNrOfPoints() const override { return count; }

private:
    void Quarter(unsigned int i) {
        const bool onePlace = cells[i].minX == cells[i].maxX && cells[i].minY == cells[i].maxY;
        if (onePlace || cells[i].level == deepestLevel) return;
        const auto first = static_cast<unsigned int>(cells.size());
        for (unsigned int quadrant = 0; quadrant < 4; ++quadrant) {
            const double halfWidth = cells[i].halfWidth * 0.5;
            const double halfHeight = cells[i].halfHeight * 0.5;
            cells.push_back({cells[i].centerX + (quadrant % 2 == 0 ? -halfWidth : halfWidth),
                             cells[i].centerY + (quadrant < 2 ? -halfHeight : halfHeight), halfWidth, halfHeight,
                             cells[i].level + 1});
        }
        std::vector<Point3D> points = std::move(cells[i].points);
        cells[i].points = {};
        cells[i].firstChild = first;
        for (const Point3D& point : points) {
            Cell& child = cells[cells[i].ChildFor(point)];
            child.Cover(point);
            child.points.push_back(point);
        }
        for (unsigned int child = first; child < first + 4; ++child) {
            if (cells[child].points.size() > capacity) Quarter(child);
        }
    }

    void Search(unsigned int i, const Point2D& center, double radius, std::vector<Point3D>& points) const {
        const Cell& cell = cells[i];
        // Differences of doubles are monotone, so the rounded test lets no point within the radius go. Of those below
        // 2^-511 the squares are lost, and the distance with them.
        const double reach = std::max(radius, 0x1p-511);
        const bool apart = cell.minX - center.GetX() > reach || center.GetX() - cell.maxX > reach ||
                           cell.minY - center.GetY() > reach || center.GetY() - cell.maxY > reach;
        if (apart) return;
        for (const Point3D& point : cell.points) {
            if (center.Distance({point.GetX(), point.GetY()}) <= radius) points.push_back(point);
        }
        if (cell.firstChild == 0) return;
        for (unsigned int child = cell.firstChild; child < cell.firstChild + 4; ++child) {
            Search(child, center, radius, points);
        }
    }

    std::vector<Cell> cells;
    std::size_t capacity;
    std::uint64_t count = 0;
};

}  // namespace

std::unique_ptr<IQuadTreeForPoints> IQuadTreeForPoints::Create(unsigned int nodeCapacity, const BoundingBox2D& box) {
    return std::make_unique<QuadTreeForPoints>(nodeCapacity, box);
}

}  // namespace Kalvio::Math::SpatialIndexes
