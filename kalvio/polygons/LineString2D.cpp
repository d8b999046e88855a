#include "kalvio/polygons/LineString2D.h"

#include "kalvio/core/Point3D.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"
#include "kalvio/polygons/detail/SegmentContact.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

namespace Kalvio::Math {

namespace {

using detail::lengthOf;

// The segments of a string that are looked at for crossings, with the lengths at its points before the reduction.
struct ReducedString {
    ReducedString(const std::vector<Point2D>& original, double userTolerance)
        : points(original), tolerance(std::max(std::abs(userTolerance), detail::numericalZero)) {
        lengths.reserve(points.size());
        double length = 0.0;
        std::size_t next = 0;
        detail::ReduceChain(points, std::abs(userTolerance), [&](std::size_t kept) {
            for (; next < kept; ++next) length += original[next].Distance(original[next + 1]);
            lengths.push_back(length);
        });
        isClosed = points.size() > 2 && points.front().IsEqualTo(points.back(), tolerance);
    }

    double LengthAt(std::size_t segment, double parameter) const {
        return lengths[segment] + (lengths[segment + 1] - lengths[segment]) * parameter;
    }

    /// Calls visit(i, j, contact) for the crossings of segments i < j until it returns true, and returns whether it
    /// did.
    template <class Visit>
    bool ForEachCrossing(Visit&& visit) const {
        const detail::SegmentBoxes boxes(points);
        const std::size_t last = points.size() - 2;
        return boxes.ForEachPair(tolerance, [&](std::size_t i, std::size_t j) {
            if (j == i + 1 || (isClosed && i == 0 && j == last)) return false;
            detail::SegmentContact contact;
            return detail::FindContact(points[i], points[i + 1], points[j], points[j + 1], tolerance, contact) &&
                   visit(i, j, contact);
        });
    }

    std::vector<Point2D> points;
    std::vector<double> lengths;
    double tolerance;
    bool isClosed;
};

}  // namespace

MathTypes LineString2D::GetType() const { return MathTypes::LineString2D; }

BoundingBox2D LineString2D::GetBoundingBox2D() const {
    return boundingBox.Get([this] { return detail::BoxOfPoints<BoundingBox2D>(points); });
}

BoundingBox3D LineString2D::GetBoundingBox3D() const { return GetBoundingBox2D().GetBoundingBox3D(); }

bool LineString2D::IsEqualTo(const IGeometry& other, double tolerance) const {
    switch (other.GetType()) {
        case MathTypes::Line2D: {
            const auto& line = static_cast<const Line2D&>(other);
            return points.size() == 2 && points[0].IsEqualTo(line.GetStart(), tolerance) &&
                   points[1].IsEqualTo(line.GetEnd(), tolerance);
        }
        case MathTypes::LineString2D:
            return IsEqualTo(static_cast<const LineString2D&>(other), tolerance);
        default:
            return false;
    }
}

bool LineString2D::IsEqualTo(const LineString2D& other, double tolerance) const {
    return std::equal(points.begin(), points.end(), other.points.begin(), other.points.end(),
                      [tolerance](const Point2D& a, const Point2D& b) { return a.IsEqualTo(b, tolerance); });
}

LineString2D* LineString2D::Clone() const { return new LineString2D(*this); }

void LineString2D::Reverse() {
    std::reverse(points.begin(), points.end());
    Changed();
}

double LineString2D::GetLength() const { return detail::ChainLength(points, lengthOf); }

bool LineString2D::IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const {
    double length = 0.0;
    return GetLengthFromStartPoint(point, length, tolerances.UserTolerance());
}

bool LineString2D::ExtendStart(const Point2D& point, const Tolerances&) {
    if (points.empty()) return false;
    points.front() = point;
    Changed();
    return true;
}

bool LineString2D::ExtendEnd(const Point2D& point, const Tolerances&) {
    if (points.empty()) return false;
    points.back() = point;
    Changed();
    return true;
}

const Point2D& LineString2D::GetStart() const { return points.empty() ? Point2D::origo() : points.front(); }

const Point2D& LineString2D::GetEnd() const { return points.empty() ? Point2D::origo() : points.back(); }

Point2D& LineString2D::GetEnd() {
    Changed();
    if (!points.empty()) return points.back();
    spare = Point2D();
    return spare;
}

bool LineString2D::GetLengthFromStartPoint(const Point2D& point, double& length, double tolerance) const {
    return detail::LengthFromStart(points, point, length, tolerance);
}

bool LineString2D::GetLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const {
    return detail::LengthFromEnd(points, point, length, tolerance);
}

bool LineString2D::ComputeTangent(const Point2D& point, Vec2D& tangent, const Tolerances& tolerances) const {
    for (std::size_t i = 1; i < points.size(); ++i) {
        const Point2D& a = points[i - 1];
        const Point2D& b = points[i];
        if (!detail::IsPointOnSegment(point, a, b, tolerances.UserTolerance())) continue;
        if (!((b - a).Length() > detail::numericalZero)) continue;
        tangent = (b - a).Normalize();
        return true;
    }
    return false;
}

const Point2D LineString2D::GetMiddlePoint() const {
    Point2D middle;
    GetPointOffsetFromStart(GetLength() * 0.5, middle);
    return middle;
}

const Line2D& LineString2D::GetElementAtIndex(unsigned int index) const {
    const std::vector<Line2D>& segments = elements.Get([this] { return detail::SegmentsOf<Line2D>(points); });
    return segments[index < segments.size() ? index : 0];
}

unsigned int LineString2D::GetNrOfElements() const { return static_cast<unsigned int>(detail::SegmentCount(points)); }

void LineString2D::GetLengthsAlongGeometry(const Point2D& point, std::vector<double>& lengths,
                                           const Tolerances& tolerances) const {
    const double tolerance = std::abs(tolerances.UserTolerance());
    lengths.clear();
    detail::WalkChain(points, lengthOf, [&](std::size_t i, double from, double) {
        if (detail::IsPointOnSegment(point, points[i], points[i + 1], tolerance)) {
            const double length = from + points[i].Distance(point);
            // Beside a vertex both of its segments hold the point, measured up to 2 sqrt(3) tolerances apart.
            if (lengths.empty() || length - lengths.back() > 4.0 * tolerance) lengths.push_back(length);
        }
        return false;
    });
}

bool LineString2D::FindShortElements(std::vector<std::uint64_t>& indexes, double minLength) const {
    if (points.size() < 2 || GetLength() < minLength) return true;
    const std::size_t before = indexes.size();
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (points[i - 1].Distance(points[i]) < minLength) indexes.push_back(i - 1);
    }
    return indexes.size() > before;
}

void LineString2D::RemoveElements(const std::vector<std::uint64_t>& indexes, bool protect) {
    std::vector<bool> removed(points.size(), false);
    for (const std::uint64_t segment : indexes) {
        if (segment < detail::SegmentCount(points) && !(protect && segment == 0)) removed[segment + 1] = true;
    }
    std::size_t kept = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (!removed[i]) points[kept++] = points[i];
    }
    points.resize(kept);
    Changed();
}

bool LineString2D::GetPoint(int index, Point2D& point) const {
    if (index < 0 || static_cast<std::size_t>(index) >= points.size()) return false;
    point = points[static_cast<std::size_t>(index)];
    return true;
}

bool LineString2D::Insert(unsigned int index, const Point2D& point) {
    return Insert(index, std::vector<Point2D>{point});
}

bool LineString2D::Insert(unsigned int index, const std::list<Point2D>& list) {
    Changed();
    return detail::InsertPoints(points, index, list.begin(), list.end());
}

bool LineString2D::Insert(unsigned int index, const std::vector<Point2D>& vertices) {
    Changed();
    return detail::InsertPoints(points, index, vertices.begin(), vertices.end());
}

bool LineString2D::InsertReverse(unsigned int index, const std::list<Point2D>& list) {
    Changed();
    return detail::InsertPoints(points, index, list.rbegin(), list.rend());
}

bool LineString2D::InsertReverse(unsigned int index, const std::vector<Point2D>& vertices) {
    Changed();
    return detail::InsertPoints(points, index, vertices.rbegin(), vertices.rend());
}

bool LineString2D::RemovePoint(int index) {
    Changed();
    return detail::RemovePointAt(points, index);
}

void LineString2D::RemoveAllPoints() {
    points.clear();
    Changed();
}

bool LineString2D::IsClosed(double tolerance) const {
    return !points.empty() && points.front().IsEqualTo(points.back(), tolerance);
}

bool LineString2D::GetPointOffsetFromStart(double length, Point2D& point) const {
    return detail::PointAtLength(points, lengthOf, length, point);
}

bool LineString2D::GetClosestSegment(const Point2D& point, unsigned int& index) const {
    return detail::ClosestSegment(points, point, index);
}

bool LineString2D::IsSelfCrossing(double tolerance) const {
    return ReducedString(points, tolerance)
        .ForEachCrossing([](std::size_t, std::size_t, const detail::SegmentContact&) { return true; });
}

bool LineString2D::IsSelfCrossing(Point2D& crossing, double tolerance) const {
    const ReducedString reduced(points, tolerance);
    double first = std::numeric_limits<double>::infinity();
    reduced.ForEachCrossing([&](std::size_t i, std::size_t, const detail::SegmentContact& contact) {
        const double length = reduced.LengthAt(i, contact.onFirst);
        if (length < first) {
            first = length;
            crossing = contact.point;
        }
        return false;
    });
    return first < std::numeric_limits<double>::infinity();
}

bool LineString2D::IsSelfCrossing(std::vector<Point2D>& crossings, double tolerance) const {
    std::vector<std::pair<Point2D, double>> found;
    IsSelfCrossing(found, tolerance);
    crossings.clear();
    crossings.reserve(found.size());
    for (const auto& [point, length] : found) crossings.push_back(point);
    return !crossings.empty();
}

bool LineString2D::IsSelfCrossing(std::vector<std::pair<Point2D, double>>& crossings, double tolerance) const {
    struct Crossing {
        Point2D point;
        double first;
        double later;
    };
    const ReducedString reduced(points, tolerance);
    std::vector<Crossing> found;
    reduced.ForEachCrossing([&](std::size_t i, std::size_t j, const detail::SegmentContact& contact) {
        found.push_back({contact.point, reduced.LengthAt(i, contact.onFirst), reduced.LengthAt(j, contact.onSecond)});
        return false;
    });
    std::sort(found.begin(), found.end(), [](const Crossing& a, const Crossing& b) {
        return a.first < b.first || (a.first == b.first && a.later < b.later);
    });
    // At a shared vertex up to four pairs of segments meet, their feet at most two tolerances apart; and of three
    // passages of a point every two are a pair. A crossing is new when none of its two passages is one of a crossing
    // before.
    const double same = 2.0 * reduced.tolerance;
    std::set<double> passages;
    const auto isPassed = [&](double length) {
        const auto passage = passages.lower_bound(length - same);
        return passage != passages.end() && *passage <= length + same;
    };
    crossings.clear();
    for (const Crossing& crossing : found) {
        if (!isPassed(crossing.first) && !isPassed(crossing.later)) {
            crossings.emplace_back(crossing.point, crossing.first);
        }
        passages.insert({crossing.first, crossing.later});
    }
    return !crossings.empty();
}

LineString2D& LineString2D::Translate(const Vec2D& v) {
    for (Point2D& point : points) point += v;
    Changed();
    return *this;
}

LineString2D LineString2D::Translate(const Vec2D& v) const {
    LineString2D copy(*this);
    return copy.Translate(v);
}

}  // namespace Kalvio::Math
