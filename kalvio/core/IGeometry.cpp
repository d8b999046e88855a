#include "kalvio/core/IGeometry.h"

#include "kalvio/core/Geometry.h"

#include <memory>

namespace Kalvio::Math {

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

template <>
bool Geometry::AreEqual(const IGeometry& a, const IGeometry& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
