#include "kalvio/core/IGeometry.h"

#include "kalvio/core/Geometry.h"

#include <memory>

namespace Kalvio::Math {

namespace {

// Hands the pieces that `cut` appends to a list of plain pointers over to owners.
template <class Cut>
bool CutInto(std::vector<std::unique_ptr<IGeometry>>& out, Cut&& cut) {
    std::vector<IGeometry*> pieces;
    const bool isCut = cut(pieces);
    for (IGeometry* const piece : pieces) out.emplace_back(piece);
    return isCut;
}

}  // namespace

void IGeometry::Reverse() {}

double IGeometry::GetLength() const { return 0.0; }

bool IGeometry::BreakAt(const std::vector<Point2D>&, std::vector<IGeometry*>&, bool, const Tolerances&) {
    return false;
}

bool IGeometry::BreakAtPreSorted(std::map<double, const Point2D>&, double, std::vector<IGeometry*>&, bool,
                                 const Tolerances&) {
    return false;
}

bool IGeometry::IsPointOnGeometry(const Point2D&, const Tolerances&) const { return false; }

bool IGeometry::ExtendStart(const Point2D&, const Tolerances&) { return false; }

bool IGeometry::ExtendEnd(const Point2D&, const Tolerances&) { return false; }

IGeometry* IGeometry::Append(const IGeometry* const) const { return nullptr; }

IGeometry* IGeometry::CloneAsReverse() const {
    IGeometry* const copy = Clone();
    copy->Reverse();
    return copy;
}

bool IGeometry::BreakAt(const std::vector<Point2D>& points, std::vector<IGeometry*>& out,
                        const Tolerances& tolerances) const {
    const std::unique_ptr<IGeometry> copy(Clone());
    return copy->BreakAt(points, out, false, tolerances);
}

bool IGeometry::BreakAt(const std::vector<Point2D>& points, std::vector<std::unique_ptr<IGeometry>>& out,
                        bool modifyThis, const Tolerances& tolerances) {
    return CutInto(out, [&](auto& pieces) { return BreakAt(points, pieces, modifyThis, tolerances); });
}

bool IGeometry::BreakAt(const std::vector<Point2D>& points, std::vector<std::unique_ptr<IGeometry>>& out,
                        const Tolerances& tolerances) const {
    const std::unique_ptr<IGeometry> copy(Clone());
    return copy->BreakAt(points, out, false, tolerances);
}

bool IGeometry::BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                 std::vector<std::unique_ptr<IGeometry>>& out, bool modifyThis,
                                 const Tolerances& tolerances) {
    return CutInto(
        out, [&](auto& pieces) { return BreakAtPreSorted(breaks, startStation, pieces, modifyThis, tolerances); });
}

template <>
bool Geometry::AreEqual(const IGeometry& a, const IGeometry& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
