#include "kalvio/core/Geometry.h"

#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/Polyline3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/detail/MergeChains.h"

#include <list>
#include <utility>
#include <vector>

namespace Kalvio::Math {

namespace {

Point3D Lifted(const Point2D& p) { return {p, 0.0}; }
Point3D Lifted(const Point3D& p) { return p; }
void Assign(const Point3D& from, Point3D& to) { to = from; }
void Assign(const Point3D& from, Point2D& to) { to = from.GetPoint2D(); }

// Start or end of the types that have one, as a 3D point; one rule for both ends and both dimensions. An empty line
// string has none.
template <class PointType>
bool GetTerminal(const IGeometry& geometry, bool atStart, PointType& point) {
    const auto terminal = [&](const auto& curve) {
        Assign(Lifted(atStart ? curve.GetStart() : curve.GetEnd()), point);
        return true;
    };
    switch (geometry.GetType()) {
        case MathTypes::Point2D:
            Assign(Lifted(static_cast<const Point2D&>(geometry)), point);
            return true;
        case MathTypes::Point3D:
            Assign(static_cast<const Point3D&>(geometry), point);
            return true;
        case MathTypes::Arc2D:
        case MathTypes::Line2D:
        case MathTypes::Polyline2D:
            return terminal(static_cast<const IPolyline2DElement&>(geometry));
        case MathTypes::Arc3D:
        case MathTypes::Line3D:
        case MathTypes::Polyline3D:
            return terminal(static_cast<const IPolyline3DElement&>(geometry));
        case MathTypes::LineString2D: {
            const auto& lineString = static_cast<const LineString2D&>(geometry);
            return lineString.GetSize() > 0 && terminal(lineString);
        }
        case MathTypes::LineString3D: {
            const auto& lineString = static_cast<const LineString3D&>(geometry);
            return lineString.GetSize() > 0 && terminal(lineString);
        }
        default:
            return false;
    }
}

template <class Chain>
const IGeometry* TerminalElement(const IGeometry& geometry, bool atStart) {
    const auto& chain = static_cast<const Chain&>(geometry);
    const unsigned int count = chain.GetNrOfElements();
    return count == 0 ? nullptr : &chain.GetElementAtIndex(atStart ? 0 : count - 1);
}

const IGeometry* GetTerminalSegment(const IGeometry& geometry, bool atStart) {
    const IGeometry* segment = &geometry;
    while (segment != nullptr) {
        switch (segment->GetType()) {
            case MathTypes::Arc2D:
            case MathTypes::Arc3D:
            case MathTypes::Line2D:
            case MathTypes::Line3D:
                return segment;
            case MathTypes::LineString2D:
                segment = TerminalElement<LineString2D>(*segment, atStart);
                break;
            case MathTypes::LineString3D:
                segment = TerminalElement<LineString3D>(*segment, atStart);
                break;
            case MathTypes::Polyline2D:
                segment = TerminalElement<Polyline2D>(*segment, atStart);
                break;
            case MathTypes::Polyline3D:
                segment = TerminalElement<Polyline3D>(*segment, atStart);
                break;
            default:
                return nullptr;
        }
    }
    return nullptr;
}

}  // namespace

bool Geometry::GetStartPoint(const IGeometry& geometry, Point2D& point) { return GetTerminal(geometry, true, point); }

bool Geometry::GetStartPoint(const IGeometry& geometry, Point3D& point) { return GetTerminal(geometry, true, point); }

bool Geometry::GetEndPoint(const IGeometry& geometry, Point2D& point) { return GetTerminal(geometry, false, point); }

bool Geometry::GetEndPoint(const IGeometry& geometry, Point3D& point) { return GetTerminal(geometry, false, point); }

const IGeometry* Geometry::GetStartSegment(const IGeometry& geometry) { return GetTerminalSegment(geometry, true); }

const IGeometry* Geometry::GetEndSegment(const IGeometry& geometry) { return GetTerminalSegment(geometry, false); }

void Geometry::MergeLineStrings(std::vector<LineString2D>& lineStrings, double tolerance) {
    detail::MergeChains(
        lineStrings, [tolerance](const Point2D& a, const Point2D& b) { return a.IsEqualTo(b, tolerance); }, tolerance);
}

void Geometry::MergeLineStrings(std::vector<LineString3D>& lineStrings, double tolerance) {
    detail::MergeChains(
        lineStrings, [tolerance](const Point3D& a, const Point3D& b) { return a.IsEqualTo(b, tolerance); }, tolerance);
}

void Geometry::MergeLineStringsAs2D(std::vector<LineString3D>& lineStrings, double tolerance) {
    detail::MergeChains(
        lineStrings, [tolerance](const Point3D& a, const Point3D& b) { return a.IsEqualTo2d(b, tolerance); },
        tolerance);
}

bool Geometry::MergeLineStrings(LineString3D& lineString, const LineString3D& other, double tolerance) {
    std::vector<LineString3D> both{lineString, other};
    MergeLineStrings(both, tolerance);
    if (both.size() != 1) return false;
    lineString = both.front();
    return true;
}

void Geometry::LineSegmentsToLineStrings(const std::list<std::pair<Point3D, Point3D>>& segments,
                                         std::vector<LineString3D>& lineStrings, double tolerance) {
    std::vector<LineString3D> chains;
    chains.reserve(segments.size());
    for (const auto& [from, to] : segments) chains.emplace_back(std::vector<Point3D>{from, to});
    MergeLineStrings(chains, tolerance);
    lineStrings.insert(lineStrings.end(), chains.begin(), chains.end());
}

}  // namespace Kalvio::Math
