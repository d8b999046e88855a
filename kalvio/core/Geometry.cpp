#include "kalvio/core/Geometry.h"

#include "kalvio/core/Angle.h"
#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/BoundingBoxND.h"
#include "kalvio/core/Matrix2D.h"
#include "kalvio/core/Plane3D.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/core/Point2DM.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/PointND.h"
#include "kalvio/core/Triangle3D.h"
#include "kalvio/core/Vec2D.h"
#include "kalvio/core/Vec3D.h"
#include "kalvio/core/VecND.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Arc3D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Circle3D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/Polyline3D.h"
#include "kalvio/curves/Spiral2D.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/meshes/IndexedFaceSet2D.h"
#include "kalvio/meshes/IndexedFaceSet3D.h"
#include "kalvio/meshes/TriangleStrip3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/Polygon3D.h"
#include "kalvio/polygons/PolygonCurve2D.h"
#include "kalvio/polygons/PolygonCurve3D.h"
#include "kalvio/polygons/detail/MergeChains.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <memory>

namespace Kalvio::Math {

namespace {

Point3D Lifted(const Point2D& p) { return {p, 0.0}; }
Point3D Lifted(const Point3D& p) { return p; }
void Assign(const Point3D& from, Point3D& to) { to = from; }
void Assign(const Point3D& from, Point2D& to) { to = from.GetPoint2D(); }

bool IsChain(MathTypes type) {
    return type == MathTypes::LineString2D || type == MathTypes::LineString3D || type == MathTypes::Polyline2D ||
           type == MathTypes::Polyline3D;
}

// Start or end of the types that have one, as a 3D point; one rule for both ends and both dimensions. An empty chain
// has none.
template <class PointType>
bool GetTerminal(const IGeometry& geometry, bool atStart, PointType& point) {
    const auto terminal = [&](const auto& curve) {
        Assign(Lifted(atStart ? curve.GetStart() : curve.GetEnd()), point);
        return true;
    };
    const auto ofChain = [&](const auto& chain) {
        const unsigned int count = chain.GetNrOfElements();
        if (count == 0) return false;
        const auto& last = chain.GetElementAtIndex(atStart ? 0 : count - 1);
        return GetTerminal(last, atStart, point) || (!IsChain(last.GetType()) && terminal(last));
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
            return terminal(static_cast<const IPolyline2DElement&>(geometry));
        case MathTypes::Arc3D:
        case MathTypes::Line3D:
            return terminal(static_cast<const IPolyline3DElement&>(geometry));
        case MathTypes::LineString2D: {
            const auto& lineString = static_cast<const LineString2D&>(geometry);
            return lineString.GetSize() > 0 && terminal(lineString);
        }
        case MathTypes::LineString3D: {
            const auto& lineString = static_cast<const LineString3D&>(geometry);
            return lineString.GetSize() > 0 && terminal(lineString);
        }
        case MathTypes::Polyline2D:
            return ofChain(static_cast<const Polyline2D&>(geometry));
        case MathTypes::Polyline3D:
            return ofChain(static_cast<const Polyline3D&>(geometry));
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

bool CollectVertices(const IGeometry& geometry, std::vector<Point3D>& vertices);

template <class Chain>
bool CollectChainVertices(const Chain& chain, std::vector<Point3D>& vertices) {
    for (unsigned int i = 0; i < chain.GetNrOfElements(); ++i) {
        std::vector<Point3D> ofElement;
        if (!CollectVertices(chain.GetElementAtIndex(i), ofElement)) return false;
        const bool joins = i > 0 && !vertices.empty() && !ofElement.empty() &&
                           vertices.back().IsEqualTo(ofElement.front(), detail::standardUserTolerance);
        vertices.insert(vertices.end(), ofElement.begin() + (joins ? 1 : 0), ofElement.end());
    }
    return true;
}

template <class Polygon>
void CollectRings(const Polygon& polygon, std::vector<Point3D>& vertices) {
    const auto collect = [&vertices](const auto& points) {
        for (const auto& point : points) vertices.push_back(Lifted(point));
    };
    collect(polygon.GetPoints());
    for (unsigned int i = 0; i < polygon.GetNumHoleBoundaries(); ++i) collect(polygon.GetHoleBoundary(i).GetPoints());
}

// Appends what the geometry has; false, possibly after some, when a part has no vertices.
bool CollectVertices(const IGeometry& geometry, std::vector<Point3D>& vertices) {
    switch (geometry.GetType()) {
        case MathTypes::Point2D:
            vertices.push_back(Lifted(static_cast<const Point2D&>(geometry)));
            return true;
        case MathTypes::Point2DM: {
            const auto& point = static_cast<const Point2DM&>(geometry);
            vertices.emplace_back(point.GetX(), point.GetY(), 0.0);
            return true;
        }
        case MathTypes::Point3D:
            vertices.push_back(static_cast<const Point3D&>(geometry));
            return true;
        case MathTypes::Triangle3D: {
            const auto& triangle = static_cast<const Triangle3D&>(geometry);
            vertices.insert(vertices.end(), {triangle.GetPointA(), triangle.GetPointB(), triangle.GetPointC()});
            return true;
        }
        case MathTypes::LineString2D:
            for (const Point2D& point : static_cast<const LineString2D&>(geometry).GetPoints()) {
                vertices.push_back(Lifted(point));
            }
            return true;
        case MathTypes::LineString3D: {
            const auto& points = static_cast<const LineString3D&>(geometry).GetPoints();
            vertices.insert(vertices.end(), points.begin(), points.end());
            return true;
        }
        case MathTypes::Polygon2D:
            CollectRings(static_cast<const Polygon2D&>(geometry), vertices);
            return true;
        case MathTypes::Polygon3D:
            CollectRings(static_cast<const Polygon3D&>(geometry), vertices);
            return true;
        case MathTypes::Polyline2D:
            return CollectChainVertices(static_cast<const Polyline2D&>(geometry), vertices);
        case MathTypes::Polyline3D:
            return CollectChainVertices(static_cast<const Polyline3D&>(geometry), vertices);
        case MathTypes::Arc3D:
        case MathTypes::Line3D: {
            const auto& element = static_cast<const IPolyline3DElement&>(geometry);
            vertices.insert(vertices.end(), {element.GetStart(), element.GetEnd()});
            return true;
        }
        default:
            if (const IPolyline2DElement* const element = detail::AsPlanElement(geometry)) {
                vertices.insert(vertices.end(), {Lifted(element->GetStart()), Lifted(element->GetEnd())});
                return true;
            }
            return false;
    }
}

// Graham scan over points whose measure is free to hold the polar angle about the pivot.
void GrahamScan(std::vector<Point2DM> points, Polygon2D& hull) {
    std::erase_if(points, [](const Point2DM& p) { return !std::isfinite(p.GetX()) || !std::isfinite(p.GetY()); });
    hull.Clear();
    if (points.empty()) return;

    const auto isBefore = [](const Point2DM& a, const Point2DM& b) {
        return std::abs(a.GetY() - b.GetY()) < detail::numericalZero ? a.GetX() < b.GetX() : a.GetY() < b.GetY();
    };
    std::size_t lowest = 0;
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (isBefore(points[i], points[lowest])) lowest = i;
    }
    std::swap(points.front(), points[lowest]);
    const Point2DM pivot = points.front();

    for (Point2DM& p : points) p.SetM(std::atan2(p.GetY() - pivot.GetY(), p.GetX() - pivot.GetX()));
    std::sort(points.begin() + 1, points.end(),
              [](const Point2DM& a, const Point2DM& b) { return a.GetM() < b.GetM(); });

    // Of points in one direction from the pivot the farthest stays; copies of the pivot go.
    std::vector<Point2DM> directions;
    for (std::size_t i = 1; i < points.size(); ++i) {
        const Point2DM& p = points[i];
        const double distance = p.Distance(pivot);
        if (distance < detail::numericalZero) continue;
        if (directions.empty() || !(std::abs(p.GetM() - directions.back().GetM()) < detail::numericalZero)) {
            directions.push_back(p);
        } else if (directions.back().Distance(pivot) < distance) {
            directions.back() = p;
        }
    }

    std::vector<Point2D> stack{Point2D(pivot.GetX(), pivot.GetY())};
    for (const Point2DM& p : directions) {
        const Point2D next(p.GetX(), p.GetY());
        while (stack.size() > 1 && !Geometry::ArePointsCCW(stack[stack.size() - 2], stack.back(), next)) {
            stack.pop_back();
        }
        stack.push_back(next);
    }
    hull.AppendPoints(stack);
}

template <class Points>
std::vector<Point2DM> WithMeasure(const Points& points) {
    std::vector<Point2DM> result;
    result.reserve(points.size());
    for (const Point2D& p : points) result.emplace_back(p.GetX(), p.GetY(), 0.0);
    return result;
}

// The portable generator of the C standard (ISO/IEC 9899, 7.22.2), draws 0 ... 32767, with a state of its own:
// concurrent calls do not disturb each other or the host's generator.
class Draws {
public:
    explicit Draws(std::uint32_t seed) : state(seed) {}
    int Next() {
        state = state * 1103515245U + 12345U;
        return static_cast<int>((state / 65536U) % 32768U);
    }

private:
    std::uint32_t state;
};

}  // namespace

template <>
bool Geometry::AreEqual(const double& a, const double& b, double tolerance) {
    return std::abs(a - b) < tolerance;
}

template <>
bool Geometry::AreEqual(const double& a, const int& b, double tolerance) {
    return AreEqual(a, static_cast<double>(b), tolerance);
}

template <>
bool Geometry::AreEqual(const Angle& a, const Angle& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Arc2D& a, const Arc2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Arc2D& a, const Polyline2D& b, double tolerance) {
    return b.IsEqualTo(a, tolerance);
}

template <>
bool Geometry::AreEqual(const Arc3D& a, const Arc3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const BoundingBox2D& a, const BoundingBox2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const BoundingBox3D& a, const BoundingBox3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const BoundingBoxND& a, const BoundingBoxND& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Circle2D& a, const Circle2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Circle3D& a, const Circle3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Clothoid& a, const Clothoid& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Clothoid& a, const Polyline2D& b, double tolerance) {
    return b.IsEqualTo(a, tolerance);
}

template <>
bool Geometry::AreEqual(const IGeometry& a, const IGeometry& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const IndexedFaceSet2D& a, const IndexedFaceSet2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const IndexedFaceSet3D& a, const IndexedFaceSet3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Line2D& a, const Line2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Line2D& a, const LineString2D& b, double tolerance) {
    return b.IsEqualTo(a, tolerance);
}

template <>
bool Geometry::AreEqual(const Line2D& a, const Polyline2D& b, double tolerance) {
    return b.IsEqualTo(a, tolerance);
}

template <>
bool Geometry::AreEqual(const Line3D& a, const Line3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Line3D& a, const LineString3D& b, double tolerance) {
    return b.IsEqualTo(a, tolerance);
}

template <>
bool Geometry::AreEqual(const LineString2D& a, const LineString2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const LineString2D& a, const Polyline2D& b, double tolerance) {
    return b.IsEqualTo(a, tolerance);
}

template <>
bool Geometry::AreEqual(const LineString3D& a, const LineString3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Matrix2D& a, const Matrix2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Point2D& a, const Point2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Point2DM& a, const Point2DM& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Point3D& a, const Point3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const PointND& a, const PointND& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Polygon2D& a, const Polygon2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Polygon3D& a, const Polygon3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const PolygonCurve2D& a, const PolygonCurve2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const PolygonCurve3D& a, const PolygonCurve3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Polyline2D& a, const Polyline2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Polyline3D& a, const Polyline3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Spiral2D& a, const Polyline2D& b, double tolerance) {
    return b.IsEqualTo(a, tolerance);
}

template <>
bool Geometry::AreEqual(const Spiral2D& a, const Spiral2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Vec2D& a, const Vec2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Vec3D& a, const Vec3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const VecND& a, const VecND& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Parabola& a, const Parabola& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Parabola& a, const Polyline2D& b, double tolerance) {
    return b.IsEqualTo(a, tolerance);
}

template <>
bool Geometry::AreEqual(const Plane3D& a, const Plane3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Triangle3D& a, const Triangle3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const TriangleStrip3D& a, const TriangleStrip3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

bool Geometry::AreEqual2D(const Point3D& a, const Point3D& b, double tolerance) { return a.IsEqualTo2d(b, tolerance); }

bool Geometry::AreEqualEitherWay(const IGeometry& a, const IGeometry& b, double tolerance) {
    if (AreEqual(a, b, tolerance)) return true;
    const std::unique_ptr<IGeometry> reversed(b.CloneAsReverse());
    return AreEqual(a, *reversed, tolerance);
}

bool Geometry::ArePointsCCW(const Point2D& a, const Point2D& b, const Point2D& c) {
    return detail::ArePointsCCW(a, b, c);
}

bool Geometry::ArePointsCCW(const Point2DM& a, const Point2DM& b, const Point2DM& c) {
    return detail::ArePointsCCW(a, b, c);
}

bool Geometry::GetStartPoint(const IGeometry& geometry, Point2D& point) { return GetTerminal(geometry, true, point); }

bool Geometry::GetStartPoint(const IGeometry& geometry, Point3D& point) { return GetTerminal(geometry, true, point); }

bool Geometry::GetEndPoint(const IGeometry& geometry, Point2D& point) { return GetTerminal(geometry, false, point); }

bool Geometry::GetEndPoint(const IGeometry& geometry, Point3D& point) { return GetTerminal(geometry, false, point); }

const IGeometry* Geometry::GetStartSegment(const IGeometry& geometry) { return GetTerminalSegment(geometry, true); }

const IGeometry* Geometry::GetEndSegment(const IGeometry& geometry) { return GetTerminalSegment(geometry, false); }

bool Geometry::GetVertices(const IGeometry& geometry, std::vector<Point3D>& vertices) {
    std::vector<const IGeometry*> one{&geometry};
    return GetVertices(one, vertices);
}

bool Geometry::GetVertices(std::vector<const IGeometry*>& geometries, std::vector<Point3D>& vertices) {
    std::vector<Point3D> collected;
    for (const IGeometry* const geometry : geometries) {
        if (geometry == nullptr || !CollectVertices(*geometry, collected)) return false;
    }
    vertices.insert(vertices.end(), collected.begin(), collected.end());
    return true;
}

void Geometry::ConvexHull(const std::vector<Point2D>& points, Polygon2D& hull) {
    GrahamScan(WithMeasure(points), hull);
}

void Geometry::ConvexHull(const std::list<Point2D>& points, Polygon2D& hull) { GrahamScan(WithMeasure(points), hull); }

void Geometry::ConvexHull(std::vector<Point2DM>& points, Polygon2D& hull) { GrahamScan(points, hull); }

void Geometry::RandomPoints(const Point2D& min, const Point2D& max, unsigned int count, std::list<Point2D>& out) {
    constexpr double most = 32767.0;
    const double spanX = std::abs(max.GetX() - min.GetX()) - 1.0;
    const double spanY = std::abs(max.GetY() - min.GetY()) - 1.0;
    Draws draws(static_cast<std::uint32_t>(std::time(nullptr)));
    for (unsigned int i = 0; i < count; ++i) {
        const int r1 = draws.Next();
        const int r2 = draws.Next();
        const int r3 = draws.Next();
        const int r4 = draws.Next();
        const int wholeX = r2 / 32767;  // 1 only for the largest draw
        const int wholeY = r4 / 32767;
        out.emplace_back(min.GetX() + r1 * spanX / most + wholeX, min.GetY() + r3 * spanY / most + wholeY);
    }
}

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

bool Geometry::ComputeStartEndLengthOnElement(double elementStart, double elementEnd, double from, double to,
                                              double& start, double& end, double tolerance) {
    const double clippedStart = std::max(elementStart, from);
    const double clippedEnd = std::min(elementEnd, to);
    if (!(from <= to) || !(clippedEnd - clippedStart > tolerance)) return false;
    start = clippedStart;
    end = clippedEnd;
    return true;
}

}  // namespace Kalvio::Math
