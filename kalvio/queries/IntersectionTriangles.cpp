#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/OrientedBoundingBox2D.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/Triangle3D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/detail/RingPlane.h"
#include "kalvio/polygons/detail/SegmentContact.h"
#include "kalvio/queries/Distance.h"
#include "kalvio/queries/Intersection.h"
#include "kalvio/queries/detail/CountAppended.h"
#include "kalvio/queries/detail/PlaneHeights.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace Kalvio::Math {

namespace {

using detail::PlaneHeights;

// The points that bound what two triangles have in common: corners of one in the other, and points in which an edge of
// one passes the other, or meets its edges where it lies in its plane. What is common is convex, so these are its
// corners; each is sought on its own and with the tolerance, so that rounding loses none.
class TriangleContact {
public:
    TriangleContact(const Triangle3D& first, const Triangle3D& second, const Tolerances& givenTolerances)
        : a(first),
          b(second),
          epsilon(givenTolerances.SystemEpsilon()),
          tolerance(std::abs(givenTolerances.UserTolerance())),
          inside(std::max({tolerance, 2.0 * detail::NoiseOf(a, epsilon), 2.0 * detail::NoiseOf(b, epsilon)}), epsilon) {
    }

    IntersectionResult Find() {
        normalOfA = detail::UnitNormalOf(a, epsilon);
        normalOfB = detail::UnitNormalOf(b, epsilon);
        const Heights ofA(a, b.GetPointA(), normalOfB, tolerance);
        const Heights ofB(b, a.GetPointA(), normalOfA, tolerance);
        if (!ofA.areFinite || !ofB.areFinite) return IntersectionResult::NoIntersection;
        if (normalOfA.NormSquared() == 0.0 || normalOfB.NormSquared() == 0.0) return IntersectionResult::Degenerate;
        if (ofA.AreOnOneSide() || ofB.AreOnOneSide()) return IntersectionResult::NoIntersection;
        TakeFrom(a, ofA, b, normalOfB);
        TakeFrom(b, ofB, a, normalOfA);
        SpreadOut();
        if (count == 0) return IntersectionResult::NoIntersection;
        const bool isInOnePlane = ofA.AreOnPlane() || ofB.AreOnPlane();
        return isInOnePlane && IsArea() ? IntersectionResult::Coincident : IntersectionResult::Intersecting;
    }

    /// The ends of the segment, after `Intersecting`.
    Line3D Segment() const {
        const bool isAlong = (points[1] - points[0]).DotProduct(normalOfA.CrossProduct(normalOfB)) >= 0.0;
        const Point3D& second = points[count == 1 ? 0 : 1];
        return isAlong || count == 1 ? Line3D(points[0], second) : Line3D(second, points[0]);
    }

    /// The corners of the area in order, after `Coincident`.
    std::vector<Point3D> Area() const {
        std::vector<Point3D> ring(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(count));
        Vec3D toMean;
        for (const Point3D& p : ring) toMean += (p - ring[0]) / static_cast<double>(count);
        const Point3D center = ring[0] + toMean;
        const detail::PlaneAxes axes(normalOfA);
        const auto direction = [&](const Point3D& p) {
            return std::atan2((p - center).DotProduct(axes.v), (p - center).DotProduct(axes.u));
        };
        std::sort(ring.begin(), ring.end(),
                  [&](const Point3D& p, const Point3D& q) { return direction(p) < direction(q); });
        return ring;
    }

private:
    // Of the corners of one triangle over the plane of the other.
    struct Heights {
        Heights(const Triangle3D& triangle, const Point3D& onPlane, const Vec3D& normal, double tolerance) {
            const PlaneHeights plane(onPlane, normal, tolerance);
            for (int i = 0; i < 3; ++i) {
                height[i] = plane.HeightOf(triangle[i]);
                side[i] = plane.SideOf(height[i]);
                areFinite = areFinite && std::isfinite(height[i]);
            }
        }
        bool AreOnOneSide() const { return side[0] != 0 && side[0] == side[1] && side[1] == side[2]; }
        bool AreOnPlane() const { return side[0] == 0 && side[1] == 0 && side[2] == 0; }

        double height[3];
        int side[3];
        bool areFinite = true;
    };

    void Take(const Point3D& p, const Triangle3D& other) {
        if (other.IsPointInside(p, inside)) points[count++] = p;
    }

    void TakeFrom(const Triangle3D& triangle, const Heights& heights, const Triangle3D& other,
                  const Vec3D& otherNormal) {
        for (int i = 0; i < 3; ++i) {
            const int j = (i + 1) % 3;
            const double from = heights.height[i];
            const double to = heights.height[j];
            if (heights.side[i] == 0) Take(triangle[i], other);
            if (heights.side[i] == 0 && heights.side[j] == 0) {
                TakeContacts(triangle[i], triangle[j], other, otherNormal);
            } else if ((from < 0.0 && to > 0.0) || (from > 0.0 && to < 0.0)) {
                Take(triangle[i] + (triangle[j] - triangle[i]) * (from / (from - to)), other);
            }
        }
    }

    // Where an edge in the plane of the other triangle meets its edges.
    void TakeContacts(const Point3D& from, const Point3D& to, const Triangle3D& other, const Vec3D& normal) {
        const detail::PlaneAxes axes(normal);
        const detail::PlaneFrame frame{other.GetPointA(), axes.u, axes.v, normal};
        for (int i = 0; i < 3; ++i) {
            detail::SegmentContact contact;
            if (detail::FindContact(frame.ToPlane(from), frame.ToPlane(to), frame.ToPlane(other[i]),
                                    frame.ToPlane(other[(i + 1) % 3]), tolerance, contact)) {
                Take(from + (to - from) * contact.onFirst, other);
            }
        }
    }

    // Points within the tolerance of an earlier one go; the two furthest apart come first.
    void SpreadOut() {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const auto isNear = [&](const Point3D& p) { return p.Distance(points[i]) <= inside.UserTolerance(); };
            if (std::none_of(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(kept), isNear)) {
                points[kept++] = points[i];
            }
        }
        count = kept;
        std::size_t first = 0;
        std::size_t second = count > 1 ? 1 : 0;
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t j = i + 1; j < count; ++j) {
                if (!(points[i].Distance(points[j]) > points[first].Distance(points[second]))) continue;
                first = i;
                second = j;
            }
        }
        std::swap(points[0], points[first]);
        if (second > 0) std::swap(points[1], points[second]);
    }

    // Wider than the tolerance across the line of the two points furthest apart.
    bool IsArea() const {
        if (count < 3) return false;
        const Vec3D along = (points[1] - points[0]) / points[1].Distance(points[0]);
        return std::any_of(points.begin() + 2, points.begin() + static_cast<std::ptrdiff_t>(count), [&](const auto& p) {
            return (p - points[0]).CrossProduct(along).Length() > inside.UserTolerance();
        });
    }

    const Triangle3D& a;
    const Triangle3D& b;
    double epsilon;
    double tolerance;
    Tolerances inside;  // no less than the noise of computed points
    Vec3D normalOfA;
    Vec3D normalOfB;
    std::array<Point3D, 24> points;  // of each triangle at most 3 corners, and 3 contacts or 1 passage for each edge
    std::size_t count = 0;
};

// Extent of points along a direction.
struct Interval {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    void Add(double value) {
        low = std::min(low, value);
        high = std::max(high, value);
    }
    /// False for NaN.
    bool IsWithin(const Interval& other, double tolerance) const {
        return low <= other.high + tolerance && other.low <= high + tolerance;
    }
};

bool MeetAlong(const Vec2D& axis, const std::vector<Point2D>& a, const std::vector<Point2D>& b, double tolerance) {
    Interval ofA;
    Interval ofB;
    for (const Point2D& p : a) ofA.Add((p - a.front()).DotProduct(axis));
    for (const Point2D& p : b) ofB.Add((p - a.front()).DotProduct(axis));
    return ofA.IsWithin(ofB, tolerance);
}

}  // namespace

IntersectionResult Intersection::TriangleTriangle(const Triangle3D& a, const Triangle3D& b, Line3D& out,
                                                  const Tolerances& tolerances) {
    TriangleContact contact(a, b, tolerances);
    const IntersectionResult result = contact.Find();
    if (result == IntersectionResult::Intersecting) out = contact.Segment();
    return result;
}

int Intersection::TriangleTriangle(const Triangle3D& a, const Triangle3D& b, Line3D& out, double tolerance) {
    return TriangleTriangle(a, b, out, Tolerances(tolerance)) == IntersectionResult::Intersecting ? 1 : 0;
}

IntersectionResult Intersection::TriangleTriangle(const Triangle3D& a, const Triangle3D& b, std::vector<Point3D>& out,
                                                  const Tolerances& tolerances) {
    TriangleContact contact(a, b, tolerances);
    const IntersectionResult result = contact.Find();
    if (result == IntersectionResult::Intersecting) {
        const Line3D segment = contact.Segment();
        out.push_back(segment.GetStart());
        if (segment.GetLength() > 0.0) out.push_back(segment.GetEnd());
    } else if (result == IntersectionResult::Coincident) {
        const std::vector<Point3D> area = contact.Area();
        out.insert(out.end(), area.begin(), area.end());
    }
    return result;
}

int Intersection::TriangleTriangle(const Triangle3D& a, const Triangle3D& b, std::vector<Point3D>& out,
                                   double tolerance) {
    return detail::CountAppended(out, tolerance, [&](const Tolerances& t) { TriangleTriangle(a, b, out, t); });
}

bool Intersection::Collides(const Triangle3D& a, const Triangle3D& b, double tolerance) {
    const Tolerances tolerances(tolerance);
    const IntersectionResult result = TriangleContact(a, b, tolerances).Find();
    return result == IntersectionResult::Intersecting || result == IntersectionResult::Coincident;
}

// Nearest to a triangle a segment is at an end, at an edge of the triangle, or where it passes the plane.
bool Intersection::Collides(const Line3D& segment, const Triangle3D& triangle, double tolerance) {
    const Tolerances tolerances(std::abs(tolerance));
    const auto isInside = [&](const Point3D& p) { return triangle.IsPointInside(p, tolerances); };
    if (isInside(segment.GetStart()) || isInside(segment.GetEnd())) return true;
    const Tolerances anyLength(0.0, tolerances.SystemEpsilon());
    for (int i = 0; i < 3; ++i) {
        if (Distance::PointToLineSegment(segment, triangle[i], 0.0) <= tolerances.UserTolerance()) return true;
        Line3D shortest;
        const Line3D edge(triangle[i], triangle[(i + 1) % 3]);
        if (ShortestLineBetweenLineSegments(segment, edge, shortest, anyLength) == IntersectionResult::Intersecting &&
            shortest.GetLength() <= tolerances.UserTolerance()) {
            return true;
        }
    }
    const Vec3D normal = detail::UnitNormalOf(triangle, detail::numericalZero);
    const PlaneHeights heights(triangle.GetPointA(), normal, tolerance);
    const double from = heights.HeightOf(segment.GetStart());
    const double to = heights.HeightOf(segment.GetEnd());
    if (!((from < 0.0 && to > 0.0) || (from > 0.0 && to < 0.0))) return false;
    // Away from the edges, so no more than the rounding of this point can matter.
    const Point3D passage = segment.GetStart() + (segment.GetEnd() - segment.GetStart()) * (from / (from - to));
    const double noise = 4.0 * detail::NoiseOf(triangle, detail::numericalZero);
    return triangle.IsPointInside(passage, Tolerances(std::max(tolerances.UserTolerance(), noise)));
}

// Thirteen axes separate a box and a triangle: the box's, the normal, and the products of the box's and the edges'
// (T. Akenine-Moeller, 2001).
bool Intersection::Collides(const Triangle3D& triangle, const BoundingBox3D& box, double tolerance) {
    const Vec3D half = box.GetSize() * 0.5 + Vec3D(tolerance, tolerance, tolerance);
    const Vec3D corners[] = {triangle.GetPointA() - box.GetCenter(), triangle.GetPointB() - box.GetCenter(),
                             triangle.GetPointC() - box.GetCenter()};
    const auto meetAlong = [&](const Vec3D& axis) {
        Interval ofTriangle;
        Interval ofBox;
        for (const Vec3D& corner : corners) ofTriangle.Add(corner.DotProduct(axis));
        const double reach = half.GetX() * std::abs(axis.GetX()) + half.GetY() * std::abs(axis.GetY()) +
                             half.GetZ() * std::abs(axis.GetZ());
        ofBox.Add(reach);
        ofBox.Add(-reach);
        return ofTriangle.IsWithin(ofBox, 0.0);
    };
    const Vec3D axes[] = {Vec3D(1.0, 0.0, 0.0), Vec3D(0.0, 1.0, 0.0), Vec3D(0.0, 0.0, 1.0)};
    bool meet = meetAlong((corners[1] - corners[0]).CrossProduct(corners[2] - corners[0]));
    for (const Vec3D& axis : axes) {
        meet = meet && meetAlong(axis);
        for (int i = 0; i < 3; ++i) meet = meet && meetAlong(axis.CrossProduct(corners[(i + 1) % 3] - corners[i]));
    }
    return meet;
}

bool Intersection::Collides(const BoundingBox3D& a, const BoundingBox3D& b, double tolerance) {
    for (int axis = 0; axis < 3; ++axis) {
        const double gap =
            std::abs(b.GetCenter()[axis] - a.GetCenter()[axis]) - 0.5 * (a.GetSize()[axis] + b.GetSize()[axis]);
        if (!(gap <= tolerance)) return false;
    }
    return true;
}

bool Intersection::Collides(const BoundingBox2D& a, const BoundingBox2D& b, double tolerance) {
    return Collides(a.GetBoundingBox3D(), b.GetBoundingBox3D(), tolerance);
}

bool Intersection::Collides(const OrientedBoundingBox2D& a, const OrientedBoundingBox2D& b, double tolerance) {
    std::vector<Point2D> corners;
    std::vector<Point2D> others;
    a.GetCornerPoints(corners);
    b.GetCornerPoints(others);
    Vec2D axes[4];
    a.GetAxes(axes[0], axes[1]);
    b.GetAxes(axes[2], axes[3]);
    return std::all_of(std::begin(axes), std::end(axes),
                       [&](const Vec2D& axis) { return MeetAlong(axis, corners, others, tolerance); });
}

bool Intersection::Collides(const OrientedBoundingBox2D& a, const BoundingBox2D& b, double tolerance) {
    return Collides(a, OrientedBoundingBox2D(b), tolerance);
}

bool Intersection::Collides(const Polygon2D& a, const Polygon2D& b, double tolerance) {
    std::vector<Point2D> points;
    const IntersectionResult result = PolygonPolygon(a, b, points, Tolerances(tolerance));
    return result == IntersectionResult::Intersecting || result == IntersectionResult::Coincident;
}

bool Intersection::IsPointInsideTriangle(const Point2D& point, const Point2D& a, const Point2D& b, const Point2D& c,
                                         double tolerance) {
    return IsPointInsideTriangle(Point3D(point, 0.0), Point3D(a, 0.0), Point3D(b, 0.0), Point3D(c, 0.0), tolerance);
}

bool Intersection::IsPointInsideTriangle(const Point3D& point, const Point3D& a, const Point3D& b, const Point3D& c,
                                         double tolerance) {
    return IsPointInsideTriangle(point, Triangle3D(a, b, c), tolerance);
}

bool Intersection::IsPointInsideTriangle(const Point3D& point, const Triangle3D& triangle, double tolerance) {
    return triangle.IsPointInside(point, Tolerances(tolerance));
}

}  // namespace Kalvio::Math
