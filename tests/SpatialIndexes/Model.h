#pragma once

#include "SpatialIndexes/Structure.h"

#include <deque>

namespace Kalvio::Math::SpatialIndexes {

/// A tree and a plain list that are asked the same, of what the bytes tell.
template <class Tree>
class Model {
public:
    Model(const Bytes& source, unsigned int axes) : bytes(source), dimension(axes) {
        tree.SetDimension(static_cast<int>(axes));
    }

    void Insert(bool again) {
        if (!again || !removed.empty()) Require(tree.Insert(Take(again)));
    }
    /// Some come back, the others are new.
    void InsertMany(int n) {
        std::vector<const ISpatialIndexData*> many;
        for (; n > 0; --n) many.push_back(Take(n % 3 == 0 && !removed.empty()));
        Require(tree.Insert(many));
        many.push_back(nullptr);
        Require(!tree.Insert(many));
    }
    void Remove() {
        if (inside.empty()) return;
        const auto i = static_cast<std::size_t>(Integer(0, static_cast<int>(inside.size()) - 1));
        Item* const item = inside[i];
        inside[i] = inside.back();
        inside.pop_back();
        Require(tree.Remove(item) && !tree.Remove(item));
        removed.push_back(item);
    }
    void CheckSearches() {
        BoundingBoxND window = Next();
        if (Integer(0, 1) > 0) window += Next();
        Check([&](const BoundingBoxND& box) { return box.Intersects(window); }, window, true);
        Check([&](const BoundingBoxND& box) { return window.Contains(box); }, window, false);
        PointND point = Next().GetMinPoint();
        const double steps[]{0.0, 0.004, 0.006, -0.004};
        point.SetCoordinate(0, point[0] + steps[Integer(0, 3)]);
        Check([&](const BoundingBoxND& box) { return box.IsPointInside(point, 0.005); }, point);
        if (Integer(0, 3) > 0) return;  // costs more
        const std::uint64_t most = std::uint64_t{1} << Integer(0, 8);
        const double reaches[]{HUGE_VAL, 40.0, 0.5, 0.0};
        const double within = reaches[Integer(0, 3)];
        CheckNearest(point, BoundingBoxND(point, point), most, within);
        CheckNearest(window, window, most, within);
    }
    void CheckStructureOf(const Tree& of) const {
        const auto nrOfUnplaced = std::ranges::count_if(inside, [](const Item* i) { return HasNaN(i->box); });
        CheckStructure(of, static_cast<std::size_t>(nrOfUnplaced), inside.size());
    }

    int Integer(int first, int last) {
        const int count = last - first + 1;
        return first + (count > 256 ? bytes.Take<std::uint16_t>() : bytes.Take<std::uint8_t>()) % count;
    }

    Bytes bytes;
    Tree tree;
    std::vector<Item*> inside;

private:
    /// A box of any kind that may arrive, many of them equal or touching.
    BoundingBoxND Next() {
        PointND low(dimension), high(dimension);
        const int kind = Integer(0, 24);
        for (unsigned int axis = 0; axis < dimension; ++axis) {
            if (kind > 20 && !items.empty()) {  // beside the last one
                low.SetCoordinate(axis, items.back().box.GetMin(axis) + (axis == 0 ? 1.0 : 0.0));
                high.SetCoordinate(axis, items.back().box.GetMax(axis) + (axis == 0 ? kind - 20 : 0.0));
                continue;
            }
            const double place = Integer(-400, 400) * 0.5, fine = bytes.Take<std::int16_t>() * 0.00611;
            double from = place, to = place + Integer(0, 3);  // degenerate points and lines among them, touching others
            if (kind == 0) from = to = 12.5;                  // always the same point
            if (kind == 1) from = -(to = Integer(0, 5));      // on the axes
            if (kind == 2) from = -1e300, to = fine * 1e299;
            if (kind == 3) to = std::nextafter(from = fine + 385000.0, HUGE_VAL);  // as small as can be
            if (kind == 4) to = (from = 1e-300 * Integer(0, 9)) * 2.0;
            if (kind == 5) from = 0.3 * kLargest, to = (0.5 + 0.001 * Integer(0, 9)) * kLargest;
            if (kind == 6 && axis == 0) to = HUGE_VAL;
            if (kind == 7 && axis == 0) (Integer(0, 1) == 0 ? from : to) = NAN;
            if (kind == 8) std::swap(from, to);
            if (kind == 9) from = to = 1e17 + fine;  // half a minimum extent is lost beside it
            if (kind == 10) from = Integer(6672000, 6672002), to = std::nextafter(from, Integer(0, 1) * 1e7);
            if (kind == 11) from = bytes.TakeDouble(), to = bytes.TakeDouble();  // any, of wild bytes
            if (kind > 14) to = (from = fine) + 0.01 * Integer(0, 99);
            low.SetCoordinate(axis, from);
            high.SetCoordinate(axis, to);
        }
        return {low, high};
    }
    Item* Take(bool again) {
        inside.push_back(again ? removed.back() : &items.emplace_back(Next()));
        if (again) removed.pop_back();
        return inside.back();
    }
    void Check(const auto& matches, const auto&... where) const {
        Found expected, called;
        for (const Item* item : inside) {
            if (matches(item->box)) expected.push_back(item);
        }
        Require(Search(tree, where...) == Sorted(expected));
        const int count = static_cast<int>(expected.size());
        Collector visitor;
        Require(tree.SearchAndVisit(where..., visitor) == count && Sorted(visitor.found) == Sorted(expected));
        Require(tree.Search(where..., [&called](ISpatialIndexData* item) { called.push_back(item); }) == count);
        Require(called == visitor.found);
        for (const ISpatialIndexData* item : called) See(static_cast<const Item*>(item)->box.GetMin(0));
    }
    void CheckNearest(const auto& where, const BoundingBoxND& from, std::uint64_t most, double within) const {
        std::vector<std::tuple<double, std::vector<double>, std::vector<double>, const ISpatialIndexData*>> expected;
        for (const Item* item : inside) {
            double sum = 0.0;
            for (unsigned int axis = 0; axis < from.GetDimension(); ++axis) {
                const double below = item->box.GetMin(axis) - from.GetMax(axis);
                const double above = from.GetMin(axis) - item->box.GetMax(axis);
                const double gap = below > 0.0 || above > 0.0 ? std::fmax(below, above) : 0.0;
                sum += gap * gap;
            }
            if (HasNaN(item->box) || HasNaN(from) || !std::isfinite(sum) || std::sqrt(sum) > within) continue;
            const PointND low = item->box.GetMinPoint(), high = item->box.GetMaxPoint();
            expected.emplace_back(sum, low.GetCoordinates(), high.GetCoordinates(), item);
        }
        std::sort(expected.begin(), expected.end());
        expected.resize(std::min<std::size_t>(expected.size(), most));
        std::vector<ISpatialIndexData*> found(1, nullptr);  // a search appends
        Require(tree.SearchNearest(where, most, within, found) == expected.size());
        Require(found.size() == expected.size() + 1);
        for (std::size_t i = 0; i < expected.size(); ++i) Require(found[i + 1] == std::get<3>(expected[i]));
    }

    unsigned int dimension;
    std::deque<Item> items;
    std::vector<Item*> removed;
};

}  // namespace Kalvio::Math::SpatialIndexes
