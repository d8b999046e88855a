#include "kalvio/queries/Intersection.h"

#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/curves/detail/PointOnArc.h"
#include "kalvio/queries/detail/CountAppended.h"
#include "kalvio/queries/detail/ElementCrossings.h"

#include <algorithm>
#include <cmath>

namespace Kalvio::Math {

namespace {

bool LieOnOneLine(const Line2D& a, const Line2D& b, double tolerance) {
    return (detail::IsPointOnLine(a.GetStart(), b.GetStart(), b.GetEnd(), tolerance) &&
            detail::IsPointOnLine(a.GetEnd(), b.GetStart(), b.GetEnd(), tolerance)) ||
           (detail::IsPointOnLine(b.GetStart(), a.GetStart(), a.GetEnd(), tolerance) &&
            detail::IsPointOnLine(b.GetEnd(), a.GetStart(), a.GetEnd(), tolerance));
}

// The stations of the ends of b along a, in that order.
struct Stations {
    Stations(const Line2D& a, const Line2D& b) {
        const Vec2D along = a.GetDirection();
        low = (b.GetStart() - a.GetStart()).DotProduct(along);
        high = (b.GetEnd() - a.GetStart()).DotProduct(along);
        isReversed = high < low;
        if (isReversed) std::swap(low, high);
    }

    double low, high;
    bool isReversed;
};

// Parallel within the angle tolerance, and where they overlap, or meet, within the user tolerance of each other.
bool AreCollinear(const Line2D& a, const Line2D& b, const Tolerances& tolerances) {
    const double user = std::abs(tolerances.UserTolerance());
    const double lengthA = a.GetLength();
    const double lengthB = b.GetLength();
    if (!(lengthA > user) || !(lengthB > user)) return false;
    const Vec2D along = a.GetDirection();
    const Vec2D alongB = b.GetDirection();
    const double cross = along.PerpDotProduct(alongB);
    if (!(std::abs(cross) <= std::abs(tolerances.AngleTolerance().GetRadians()))) return false;
    const Stations onA(a, b);
    const double from = std::max(0.0, onA.low);
    const double to = std::min(lengthA, onA.high);
    const double atStart = along.PerpDotProduct(b.GetStart() - a.GetStart());
    const double startOnA = onA.isReversed ? onA.high : onA.low;
    const double slope = onA.isReversed ? -cross : cross;
    const auto isNear = [&](double station) { return std::abs(atStart + slope * (station - startOnA)) <= user; };
    return from - to <= user && isNear(from) && isNear(to);
}

}  // namespace

IntersectionResult Intersection::LineLine(const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2,
                                          Point2D& out, const Tolerances& tolerances) {
    return LineLine(Line2D(a1, a2), Line2D(b1, b2), out, tolerances);
}

IntersectionResult Intersection::LineLine(const Line2D& a, const Line2D& b, Point2D& out,
                                          const Tolerances& tolerances) {
    const double user = tolerances.UserTolerance();
    const double epsilon = tolerances.SystemEpsilon();
    const Vec2D along = a.GetEnd() - a.GetStart();
    const Vec2D other = b.GetEnd() - b.GetStart();
    if (along.NormSquared() <= user * user || other.NormSquared() <= user * user) return IntersectionResult::Degenerate;
    if (std::max(along.NormSquared(), other.NormSquared()) > detail::largestDouble) {
        return IntersectionResult::Degenerate;
    }

    // Two short lines at a small angle pass any test over their own length: the longer length decides as well.
    const double length = along.Length();
    const double otherLength = other.Length();
    const Line2D stretched(a.GetStart(), length < otherLength ? along * (otherLength / length) : along);
    const Line2D otherStretched(b.GetStart(), otherLength < length ? other * (length / otherLength) : other);
    if (LieOnOneLine(a, b, epsilon) && LieOnOneLine(stretched, otherStretched, epsilon)) {
        return IntersectionResult::Coincident;
    }
    const double cross = along.PerpDotProduct(other);
    if (std::abs(cross) >= epsilon) {
        // Relative to a line's start, so that survey coordinates lose nothing.
        const Point2D common = a.GetStart() + along * ((b.GetStart() - a.GetStart()).PerpDotProduct(other) / cross);
        if (!std::isfinite(common.GetX()) || !std::isfinite(common.GetY())) return IntersectionResult::NoIntersection;
        out = common;
        return IntersectionResult::Intersecting;
    }
    return detail::IsPointOnLine(a.GetStart(), b.GetStart(), b.GetEnd(), user) ? IntersectionResult::Coincident
                                                                               : IntersectionResult::NoIntersection;
}

IntersectionResult Intersection::LineLine(const Point2D& a, const Vec2D& alongA, const Point2D& b, const Vec2D& alongB,
                                          Point2D& out, const Tolerances& tolerances) {
    return LineLine(Line2D(a, alongA), Line2D(b, alongB), out, tolerances);
}

int Intersection::LineLine(const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2, Point2D& out,
                           double tolerance) {
    return LineLine(Line2D(a1, a2), Line2D(b1, b2), out, tolerance);
}

int Intersection::LineLine(const Point2D& a, const Vec2D& alongA, const Point2D& b, const Vec2D& alongB, Point2D& out,
                           double tolerance) {
    return LineLine(Line2D(a, alongA), Line2D(b, alongB), out, tolerance);
}

int Intersection::LineLine(const Line2D& a, const Line2D& b, Point2D& out, double tolerance) {
    return LineLine(a, b, out, Tolerances(tolerance)) == IntersectionResult::Intersecting ? 1 : 0;
}

IntersectionResult Intersection::LineSegmentLineSegment(const Line2D& a, const Line2D& b, std::vector<Point2D>& out,
                                                        const Tolerances& tolerances) {
    if (AreCollinear(a, b, tolerances)) return LineSegmentLineSegmentAddOverlapPoints(a, b, out, tolerances);
    std::vector<detail::ElementCrossing> crossings;
    std::vector<detail::ElementOverlap> overlaps;
    const IntersectionResult result = detail::CrossElements(a, b, tolerances, crossings, overlaps);
    if (result == IntersectionResult::Coincident) return LineSegmentLineSegmentAddOverlapPoints(a, b, out, tolerances);
    for (const detail::ElementCrossing& crossing : crossings) out.push_back(crossing.point);
    return result;
}

int Intersection::LineSegmentLineSegment(const Line2D& a, const Line2D& b, std::vector<Point2D>& out,
                                         double tolerance) {
    return detail::CountAppended(out, tolerance, [&](const Tolerances& t) { LineSegmentLineSegment(a, b, out, t); });
}

IntersectionResult Intersection::LineSegmentLineSegment(const Point2D& a1, const Point2D& a2, const Point2D& b1,
                                                        const Point2D& b2, std::vector<Point2D>& out,
                                                        const Tolerances& tolerances) {
    return LineSegmentLineSegment(Line2D(a1, a2), Line2D(b1, b2), out, tolerances);
}

int Intersection::LineSegmentLineSegment(const Point2D& a1, const Point2D& a2, const Point2D& b1, const Point2D& b2,
                                         std::vector<Point2D>& out, double tolerance) {
    return LineSegmentLineSegment(Line2D(a1, a2), Line2D(b1, b2), out, tolerance);
}

IntersectionResult Intersection::LineSegmentLine(const Line2D& segment, const Line2D& line, Point2D& out,
                                                 const Tolerances& tolerances) {
    std::vector<detail::ElementCrossing> crossings;
    std::vector<detail::ElementOverlap> overlaps;
    const IntersectionResult result =
        detail::CrossElements(segment, detail::CrossingOperand::InfiniteLine(line), tolerances, crossings, overlaps);
    if (result == IntersectionResult::Intersecting) out = crossings.front().point;
    return result;
}

int Intersection::LineSegmentLine(const Line2D& segment, const Line2D& line, Point2D& out, double tolerance) {
    return LineSegmentLine(segment, line, out, Tolerances(tolerance)) == IntersectionResult::Intersecting ? 1 : 0;
}

IntersectionResult Intersection::AddOverlapPoints(std::vector<Point2D>& out, const Line2D& a, const Line2D& b,
                                                  double a1, double a2, double b1, double b2,
                                                  const Tolerances& tolerances) {
    const double user = std::abs(tolerances.UserTolerance());
    const double from = std::max(a1, b1);
    const double to = std::min(a2, b2);
    const bool areSame = std::abs(a1 - b1) <= user && std::abs(a2 - b2) <= user;
    const bool areTouching = to == from || std::abs(to - from) < user;
    if (from > to && !areTouching) return IntersectionResult::NoIntersection;
    out.push_back(b1 > a1 ? b.GetStart() : a.GetStart());
    if (areTouching && !areSame) return IntersectionResult::Intersecting;
    out.push_back(b2 < a2 ? b.GetEnd() : a.GetEnd());
    return areSame ? IntersectionResult::Coincident : IntersectionResult::Intersecting;
}

IntersectionResult Intersection::LineSegmentLineSegmentAddOverlapPoints(const Line2D& a, const Line2D& b,
                                                                        std::vector<Point2D>& out,
                                                                        const Tolerances& tolerances) {
    const Stations onA(a, b);
    const Line2D ordered = onA.isReversed ? Line2D(b.GetEnd(), b.GetStart()) : b;
    return AddOverlapPoints(out, a, ordered, 0.0, a.GetLength(), onA.low, onA.high, tolerances);
}

bool Intersection::IsPointInsideLineBounds(const Point2D& point, const Line2D& line, double tolerance) {
    return IsPointInsideLineBounds(point, line.GetStart(), line.GetEnd(), tolerance);
}

bool Intersection::IsPointInsideLineBounds(const Point2D& point, const Point2D& a, const Point2D& b, double tolerance) {
    const double t = std::abs(tolerance);
    const auto isBetween = [t](double value, double first, double second) {
        return value >= std::min(first, second) - t && value <= std::max(first, second) + t;
    };
    return isBetween(point.GetX(), a.GetX(), b.GetX()) && isBetween(point.GetY(), a.GetY(), b.GetY());
}

bool Intersection::PointOnArc(const Point2D& point, const Arc2D& arc, double tolerance) {
    return detail::IsPointOnArc(point, arc, tolerance);
}

bool Intersection::PointOnLine(const Point2D& point, const Line2D& line, double tolerance) {
    return detail::IsPointOnLine(point, line.GetStart(), line.GetEnd(), tolerance);
}

bool Intersection::PointOnLine(const Point2D& point, const Point2D& a, const Point2D& b, double tolerance) {
    return detail::IsPointOnLine(point, a, b, tolerance);
}

bool Intersection::PointOnLine(const Point2D& point, const Line3D& line, double tolerance) {
    return detail::IsPointOnLine(point, line.GetStart().GetPoint2D(), line.GetEnd().GetPoint2D(), tolerance);
}

bool Intersection::PointOnLineSegment(const Point2D& point, const Line2D& line, double tolerance) {
    return detail::IsPointOnSegment(point, line.GetStart(), line.GetEnd(), tolerance);
}

bool Intersection::PointOnLineSegment(const Point2D& point, const Point2D& a, const Point2D& b, double tolerance) {
    return detail::IsPointOnSegment(point, a, b, tolerance);
}

bool Intersection::PointOnLineSegment(const Point2D& point, const Line3D& line, double tolerance) {
    return detail::IsPointOnSegment(point, line.GetStart().GetPoint2D(), line.GetEnd().GetPoint2D(), tolerance);
}

}  // namespace Kalvio::Math
