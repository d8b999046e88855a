#include "kalvio/polygons/LineString2D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/Point3D.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/detail/BreakElement.h"
#include "kalvio/polygons/detail/LineCrossings.h"
#include "kalvio/polygons/detail/QuietRuns.h"
#include "kalvio/polygons/detail/SegmentBoxes.h"
#include "kalvio/polygons/detail/SegmentContact.h"
#include "kalvio/polygons/detail/SmallestBox.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <set>
#include <utility>

namespace Kalvio::Math {

namespace {

using detail::lengthOf;

// The segments of a string that are looked at for crossings. The string must stay as it is while this object is used.
struct ReducedString {
    ReducedString(const std::vector<Point2D>& string, double userTolerance)
        : tolerance(std::max(std::abs(userTolerance), detail::numericalZero)), original(string) {
        if (IsReducible()) {
            reduced = original;
            detail::ReduceChain(reduced, tolerance, [this](std::size_t i) { kept.push_back(i); });
        }
        isClosed = Points().size() > 2 && Points().front().IsEqualTo(Points().back(), tolerance);
    }

    const std::vector<Point2D>& Points() const { return reduced.empty() ? original : reduced; }

    /// The lengths at the points, before the reduction.
    std::vector<double> GetLengths() const {
        std::vector<double> lengths;
        lengths.reserve(Points().size());
        double length = 0.0;
        std::size_t next = 0;
        for (std::size_t i = 0; i < Points().size(); ++i) {
            const std::size_t place = reduced.empty() ? i : kept[i];
            for (; next < place; ++next) length += original[next].Distance(original[next + 1]);
            lengths.push_back(length);
        }
        return lengths;
    }

    /// Calls visit(i, j, contact) for the crossings of segments i < j until it returns true, and returns whether it
    /// did.
    template <class Visit>
    bool ForEachCrossing(Visit&& visit) const {
        const std::vector<Point2D>& points = Points();
        if (points.size() < 3 || !IsMeasurable()) return false;  // crossings are told by their lengths
        const detail::SegmentBoxes boxes(points);
        const detail::QuietRuns<detail::SegmentBoxes::runSize> quietRuns(points, tolerance);
        const std::size_t last = points.size() - 2;
        return boxes.ForEachPair(
            tolerance, [&quietRuns](std::size_t run) { return quietRuns[run]; },
            [&](std::size_t i, std::size_t j) {
                if (j == i + 1 || (isClosed && i == 0 && j == last)) return false;
                detail::SegmentContact contact;
                return detail::FindContact(points[i], points[i + 1], points[j], points[j + 1], tolerance, contact) &&
                       visit(i, j, contact);
            });
    }

    double tolerance;
    bool isClosed = false;

private:
    bool IsReducible() const {
        bool isApart = true;
        for (std::size_t i = 1; i < original.size(); ++i) {
            isApart = isApart & !((original[i] - original[i - 1]).NormSquared() <= tolerance * tolerance);
        }
        const bool mayClose = original.size() > 3 && original.back().IsEqualTo(original.front(), tolerance);
        return mayClose || !isApart;
    }

    bool IsMeasurable() const {
        constexpr double large = 1e150;  // squares of less are finite
        bool isBounded = true;
        for (const Point2D& p : original) isBounded = isBounded & (std::abs(p.GetX()) + std::abs(p.GetY()) < large);
        return isBounded || std::isfinite(GetLengths().back());
    }

    const std::vector<Point2D>& original;
    std::vector<Point2D> reduced;   // empty when it is the original
    std::vector<std::size_t> kept;  // of the original
};

double LengthAt(const std::vector<double>& lengths, std::size_t segment, double parameter) {
    return lengths[segment] + (lengths[segment + 1] - lengths[segment]) * parameter;
}

}  // namespace

MathTypes LineString2D::GetType() const { return MathTypes::LineString2D; }

BoundingBox2D LineString2D::GetBoundingBox2D() const {
    return boundingBox.Get([this] { return detail::BoxOfPoints<BoundingBox2D>(points); });
}

BoundingBox3D LineString2D::GetBoundingBox3D() const { return GetBoundingBox2D().GetBoundingBox3D(); }

OrientedBoundingBox2D LineString2D::GetOrientedBoundingBox2D() const { return detail::SmallestBox(points); }

bool LineString2D::IsEqualTo(const IGeometry& other, double tolerance) const {
    switch (other.GetType()) {
        case MathTypes::Line2D: {
            const auto& line = static_cast<const Line2D&>(other);
            return points.size() == 2 && points[0].IsEqualTo(line.GetStart(), tolerance) &&
                   points[1].IsEqualTo(line.GetEnd(), tolerance);
        }
        case MathTypes::LineString2D:
            return IsEqualTo(static_cast<const LineString2D&>(other), tolerance);
        case MathTypes::Polyline2D: {
            const auto& chain = static_cast<const Polyline2D&>(other);
            return chain.GetNrOfElements() == 1 && chain.GetElementAtIndex(0).GetType() == GetType() &&
                   IsEqualTo(chain.GetElementAtIndex(0), tolerance);
        }
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

bool LineString2D::BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                    std::vector<IGeometry*>& out, bool modifyThis, const Tolerances& tolerances) {
    const double u = tolerances.UserTolerance();
    const double total = GetLength();
    std::size_t next = 1;  // vertex, and the length to it
    double length = points.size() > 1 ? points[0].Distance(points[1]) : 0.0;
    const auto advance = [&] {
        length += points[next].Distance(points[next + 1]);
        ++next;
    };
    return detail::BreakElement(
        *this, breaks, startStation, out, modifyThis, u,
        [&](const detail::ElementCut& from, const detail::ElementCut& to) {
            auto piece = std::make_unique<LineString2D>();
            piece->AppendPoint(from.point);
            // A vertex within the tolerance of a cut gives way to it.
            while (next + 1 < points.size() && from.station > 0.0 && !(length - from.station > u)) advance();
            while (next + 1 < points.size() && !(to.station < total && to.station - length <= u)) {
                piece->AppendPoint(points[next]);
                advance();
            }
            piece->AppendPoint(to.point);
            return piece;
        });
}

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

IGeometry* LineString2D::Append(const IGeometry* const other) const {
    if (other == nullptr) return nullptr;
    auto appended = std::make_unique<LineString2D>(*this);
    switch (other->GetType()) {
        case MathTypes::Line2D:
            appended->AppendPoint(static_cast<const Line2D*>(other)->GetEnd());
            return appended.release();
        case MathTypes::LineString2D: {
            const std::vector<Point2D>& added = static_cast<const LineString2D*>(other)->points;
            if (added.size() > 1) appended->AppendPoints(added.begin() + 1, added.end());
            return appended.release();
        }
        case MathTypes::Arc2D: {
            auto chain = std::make_unique<Polyline2D>();
            chain->AppendElement(appended.release());
            chain->AppendElement(static_cast<const Arc2D*>(other)->Clone());
            return chain.release();
        }
        case MathTypes::Polyline2D: {
            std::unique_ptr<Polyline2D> chain(static_cast<const Polyline2D*>(other)->Clone());
            chain->Insert(0, appended.release());
            return chain.release();
        }
        default:
            return nullptr;
    }
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
    return search.LengthFromStart(points, point, length, tolerance);
}

bool LineString2D::GetLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const {
    return search.LengthFromEnd(points, point, length, tolerance);
}

bool LineString2D::ComputeTangent(const Point2D& point, Vec2D& tangent, const Tolerances& tolerances) const {
    return search.TangentAt(points, point, tolerances.UserTolerance(), tangent);
}

const Point2D LineString2D::GetMiddlePoint() const {
    Point2D middle;
    (void)GetPointOffsetFromStart(GetLength() * 0.5, middle);
    return middle;
}

const Line2D& LineString2D::GetElementAtIndex(unsigned int index) const {
    const std::vector<Line2D>& segments = elements.Get([this] { return detail::SegmentsOf<Line2D>(points); });
    return segments[index < segments.size() ? index : 0];
}

unsigned int LineString2D::GetNrOfElements() const { return static_cast<unsigned int>(detail::SegmentCount(points)); }

void LineString2D::GetLengthsAlongGeometry(const Point2D& point, std::vector<double>& lengths,
                                           const Tolerances& tolerances) const {
    search.LengthsAlong(points, point, tolerances.UserTolerance(), lengths);
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
    Changed();
    return detail::InsertPoint(points, index, point);
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
    detail::ChainFoot<Point2D> foot;
    if (points.size() < 2 || !search.FindNearest(points, point, detail::numericalZero, foot)) return false;
    index = static_cast<unsigned int>(foot.segment);
    return true;
}

bool LineString2D::GetTangentAtPoint(const Point2D& point, Vec2D& tangent) const {
    return ComputeTangent(point, tangent, Tolerances::Standard());
}

bool LineString2D::GetTangentAtLength(double length, Vec2D& tangent, double tolerance) const {
    if (points.size() < 2 || !(length >= -tolerance && length <= GetLength() + tolerance)) return false;
    const auto directionOf = [this](std::size_t i) { return (points[i + 1] - points[i]).Normalize(); };
    const std::size_t last = points.size() - 2;
    std::size_t longEnough = last;  // the very end has the direction of the last segment that has one
    while (longEnough > 0 && !(points[longEnough].Distance(points[longEnough + 1]) > detail::numericalZero))
        --longEnough;
    Vec2D direction = directionOf(longEnough);
    detail::WalkChain(points, lengthOf, [&](std::size_t i, double, double end) {
        if (!(length - tolerance < end)) return false;
        direction = directionOf(i);
        if (!(length + tolerance < end) && i < last) direction += directionOf(i + 1);
        return true;
    });
    if (!std::isfinite(direction.Length())) return false;
    tangent = direction.SetLength(1.0);
    return true;
}

bool LineString2D::InsertAtLength(double length, const Point2D& point) {
    if (!(length >= 0.0)) return false;
    std::size_t index = 0;
    const bool found = detail::WalkChain(points, lengthOf, [&](std::size_t i, double, double end) {
        index = i + 1;
        return end >= length;
    });
    return found && Insert(static_cast<unsigned int>(index), point);
}

void LineString2D::RemoveClosingPoint(double tolerance) {
    while (IsClosed(tolerance)) points.pop_back();
    Changed();
}

void LineString2D::ReducePoints(double tolerance) {
    detail::ReduceChain(points, tolerance, [](std::size_t) {});
    Changed();
}

bool LineString2D::ExtractLineString(double from, double to, LineString2D& out) const {
    return detail::ExtractPart(points, lengthOf, from, to, out.GetPoints());
}

bool LineString2D::MakeLineString(double from, double to, LineString2D& out, double step) const {
    std::vector<Point2D> samples;
    const bool sampled = detail::SampleChain(
        points, from, to, step, [&](const Point2D& point, const Vec2D&, double) { samples.push_back(point); });
    if (sampled) out.AppendPoints(samples);
    return sampled;
}

bool LineString2D::MakePointsAndTangents(double step, std::list<Point2D>& samples, std::list<Vec2D>& tangents) const {
    return MakePointsAndTangents(0.0, GetLength(), step, samples, tangents);
}

bool LineString2D::MakePointsAndTangents(double from, double to, double step, std::list<Point2D>& samples,
                                         std::list<Vec2D>& tangents) const {
    return detail::SampleChain(points, from, to, step, [&](const Point2D& point, const Vec2D& tangent, double) {
        samples.push_back(point);
        tangents.push_back(tangent);
    });
}

bool LineString2D::MakePointsAndTangents(double from, double to, std::vector<PolylineElementPoint>& samples,
                                         double step) const {
    return detail::SampleChain(points, from, to, step, [&](const Point2D& point, const Vec2D& tangent, double length) {
        samples.push_back({point, tangent, length});
    });
}

bool LineString2D::Extend(const LineString2D& target, bool atEnd, double tolerance, bool straight, double maxDistance,
                          const Angle& maxAngle) {
    if (points.size() < 2) return false;
    const Point2D end = atEnd ? points.back() : points.front();
    const Line2D endSegment(atEnd ? points[points.size() - 2] : points[1], end);
    const auto add = [&](const Point2D& point) { return Insert(atEnd ? GetSize() : 0, point); };
    if (straight) {
        std::vector<Point2D> crossings;
        const double length = endSegment.GetLength();
        if (length > detail::numericalZero && length <= detail::largestDouble &&
            target.GetLength() <= detail::largestDouble) {
            crossings = detail::CrossLine(target.points, endSegment.GetStart(), end, tolerance).points;
        }
        const auto nearest = std::min_element(crossings.begin(), crossings.end(), [&](const auto& a, const auto& b) {
            return end.Distance(a) < end.Distance(b);
        });
        if (nearest != crossings.end() && end.Distance(*nearest) <= maxDistance) return add(*nearest);
    }
    detail::ChainFoot<Point2D> foot;
    if (!target.search.FindNearest(target.points, end, tolerance, foot) || !(foot.distance <= maxDistance))
        return false;
    const Vec2D before = endSegment.GetEnd() - endSegment.GetStart();
    const Vec2D after = foot.point - end;
    // A target that the end touches already lies in no direction.
    const bool isTouched = before.Length() * after.Length() <= detail::numericalZero;
    const double turn = isTouched ? 0.0 : std::atan2(std::abs(before.PerpDotProduct(after)), before.DotProduct(after));
    return turn <= maxAngle.GetRadians() && add(foot.point);
}

bool LineString2D::IsSelfCrossing(double tolerance) const {
    return ReducedString(points, tolerance)
        .ForEachCrossing([](std::size_t, std::size_t, const detail::SegmentContact&) { return true; });
}

bool LineString2D::IsSelfCrossing(Point2D& crossing, double tolerance) const {
    const ReducedString reduced(points, tolerance);
    const std::vector<double> lengths = reduced.GetLengths();
    double first = std::numeric_limits<double>::infinity();
    reduced.ForEachCrossing([&](std::size_t i, std::size_t, const detail::SegmentContact& contact) {
        const double length = LengthAt(lengths, i, contact.onFirst);
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
    (void)IsSelfCrossing(found, tolerance);
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
    const std::vector<double> lengths = reduced.GetLengths();
    std::vector<Crossing> found;
    reduced.ForEachCrossing([&](std::size_t i, std::size_t j, const detail::SegmentContact& contact) {
        found.push_back({contact.point, LengthAt(lengths, i, contact.onFirst), LengthAt(lengths, j, contact.onSecond)});
        return false;
    });
    std::stable_sort(found.begin(), found.end(), [](const Crossing& a, const Crossing& b) {
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

LineString2D& LineString2D::Transform(const Matrix2D& matrix) {
    for (Point2D& point : points) point.Transform(matrix);
    Changed();
    return *this;
}

LineString2D LineString2D::Transform(const Matrix2D& matrix) const {
    LineString2D copy(*this);
    return copy.Transform(matrix);
}

void LineString2D::Transform(const Matrix3D& matrix, std::vector<Point3D>& transformed) const {
    transformed.clear();
    transformed.reserve(points.size());
    for (const Point2D& point : points) transformed.push_back(Point3D(point, 0.0).Transform(matrix));
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

template <>
bool Geometry::AreEqual(const Line2D& a, const LineString2D& b, double tolerance) {
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

}  // namespace Kalvio::Math
