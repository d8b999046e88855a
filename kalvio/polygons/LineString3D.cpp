#include "kalvio/polygons/LineString3D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/curves/Line3D.h"
#include "kalvio/polygons/LineString2D.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kalvio::Math {

namespace {

using detail::lengthOf;
using detail::planLengthOf;

}  // namespace

LineString3D::LineString3D(const LineString2D& plan, double z) {
    points.reserve(plan.GetSize());
    for (const Point2D& point : plan.GetPoints()) points.emplace_back(point, z);
}

LineString3D& LineString3D::SetEqualTo(const LineString2D& plan) { return *this = LineString3D(plan, 0.0); }

MathTypes LineString3D::GetType() const { return MathTypes::LineString3D; }

BoundingBox2D LineString3D::GetBoundingBox2D() const { return GetBoundingBox3D().GetBoundingBox2D(); }

BoundingBox3D LineString3D::GetBoundingBox3D() const { return detail::BoxOfPoints<BoundingBox3D>(points); }

bool LineString3D::IsEqualTo(const IGeometry& other, double tolerance) const {
    switch (other.GetType()) {
        case MathTypes::Polyline3D:
            return other.IsEqualTo(*this, tolerance);
        case MathTypes::Line3D: {
            const auto& line = static_cast<const Line3D&>(other);
            return points.size() == 2 && points[0].IsEqualTo(line.GetStart(), tolerance) &&
                   points[1].IsEqualTo(line.GetEnd(), tolerance);
        }
        case MathTypes::LineString3D:
            return IsEqualTo(static_cast<const LineString3D&>(other), tolerance);
        default:
            return false;
    }
}

bool LineString3D::IsEqualTo(const LineString3D& other, double tolerance) const {
    return std::equal(points.begin(), points.end(), other.points.begin(), other.points.end(),
                      [tolerance](const Point3D& a, const Point3D& b) { return a.IsEqualTo(b, tolerance); });
}

LineString3D* LineString3D::Clone() const { return new LineString3D(*this); }

void LineString3D::Reverse() {
    std::reverse(points.begin(), points.end());
    Changed();
}

double LineString3D::GetLength() const { return detail::ChainLength(points, lengthOf); }

const Point3D& LineString3D::GetStart() const { return points.empty() ? Point3D::origo() : points.front(); }

const Point3D& LineString3D::GetEnd() const { return points.empty() ? Point3D::origo() : points.back(); }

Point3D& LineString3D::GetEnd() {
    Changed();
    if (!points.empty()) return points.back();
    spare = Point3D();
    return spare;
}

bool LineString3D::GetLengthFromStartPoint(const Point3D& point, double& length, double tolerance) const {
    return detail::LengthFromStart(points, point, length, tolerance);
}

bool LineString3D::GetLengthFromEndPoint(const Point3D& point, double& length, double tolerance) const {
    return detail::LengthFromEnd(points, point, length, tolerance);
}

const Line3D& LineString3D::GetElementAtIndex(unsigned int index) const {
    const std::vector<Line3D>& segments = elements.Get([this] { return detail::SegmentsOf<Line3D>(points); });
    return segments[index < segments.size() ? index : 0];
}

bool LineString3D::GetPoint(unsigned int index, Point3D& point) const {
    if (index >= points.size()) return false;
    point = points[index];
    return true;
}

bool LineString3D::SetPoint(const Point3D& point, std::uint64_t index) {
    if (index >= points.size()) return false;
    points[index] = point;
    Changed();
    return true;
}

void LineString3D::SetPoints(const std::vector<Point3D>& vertices) {
    points = vertices;
    Changed();
}

bool LineString3D::Insert(unsigned int index, const Point3D& point) {
    Changed();
    return detail::InsertPoint(points, index, point);
}

bool LineString3D::Insert(unsigned int index, const std::list<Point3D>& list) {
    Changed();
    return detail::InsertPoints(points, index, list.begin(), list.end());
}

bool LineString3D::Insert(unsigned int index, const std::vector<Point3D>& vertices) {
    Changed();
    return detail::InsertPoints(points, index, vertices.begin(), vertices.end());
}

bool LineString3D::InsertReverse(unsigned int index, const std::list<Point3D>& list) {
    Changed();
    return detail::InsertPoints(points, index, list.rbegin(), list.rend());
}

bool LineString3D::InsertReverse(unsigned int index, const std::vector<Point3D>& vertices) {
    Changed();
    return detail::InsertPoints(points, index, vertices.rbegin(), vertices.rend());
}

bool LineString3D::RemovePoint(int index) {
    Changed();
    return detail::RemovePointAt(points, index);
}

void LineString3D::RemoveAllPoints() {
    points.clear();
    Changed();
}

LineString2D LineString3D::GetLineString2D() const {
    LineString2D plan;
    std::vector<Point2D>& vertices = plan.GetPoints();
    vertices.reserve(points.size());
    for (const Point3D& point : points) vertices.push_back(point.GetPoint2D());
    return plan;
}

double LineString3D::GetLength2D() const { return detail::ChainLength(points, planLengthOf); }

bool LineString3D::GetPointOffsetFromStart(double length, Point3D& point) const {
    return detail::PointAtLength(points, lengthOf, length, point);
}

bool LineString3D::GetClosestSegment(const Point3D& point, unsigned int& index) const {
    detail::ChainFoot<Point3D> foot;
    if (points.size() < 2 || !detail::FindNearest(points, point, detail::numericalZero, foot)) return false;
    index = static_cast<unsigned int>(foot.segment);
    return true;
}

bool LineString3D::GetTangentAtPoint(const Point3D& point, Vec3D& tangent) const {
    return detail::TangentAt(points, point, detail::standardUserTolerance, tangent);
}

void LineString3D::ReducePoints(double tolerance) {
    detail::ReduceChain(points, tolerance, [](std::size_t) {});
    Changed();
}

bool LineString3D::MakePointsAndTangents(double from, double to, double step, std::list<Point3D>& samples,
                                         std::list<Vec3D>& tangents) const {
    return detail::SampleChain(points, from, to, step, [&](const Point3D& point, const Vec3D& tangent, double) {
        samples.push_back(point);
        tangents.push_back(tangent);
    });
}

bool LineString3D::MakePointsAndTangents(double step, std::list<Point3D>& samples, std::list<Vec3D>& tangents) const {
    return MakePointsAndTangents(0.0, GetLength(), step, samples, tangents);
}

bool LineString3D::ExtractLineString(double from, double to, LineString3D& out) const {
    return detail::ExtractPart(points, lengthOf, from, to, out.GetPoints());
}

bool LineString3D::ExtractLineString2DLengths(double from, double to, LineString3D& out) const {
    return detail::ExtractPart(points, planLengthOf, from, to, out.GetPoints());
}

bool LineString3D::ExtractLineString(std::uint64_t first, std::uint64_t last, LineString3D& out) const {
    if (first > last || last >= points.size()) return false;
    out = LineString3D(std::vector<Point3D>(points.begin() + static_cast<std::ptrdiff_t>(first),
                                            points.begin() + static_cast<std::ptrdiff_t>(last) + 1));
    return true;
}

void LineString3D::GetAccumulatedDistances(std::vector<double>& distances, double& average) const {
    distances = detail::LengthsAtPoints(points, lengthOf);
    average = points.empty() ? 0.0 : distances.back() / static_cast<double>(points.size());
}

void LineString3D::GetMinMaxGrades(double& minGrade, double& maxGrade) const {
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -1.0;
    for (std::size_t i = 1; i < points.size(); ++i) {
        const double rise = std::abs(points[i].GetZ() - points[i - 1].GetZ());
        const double grade = rise / points[i - 1].Distance2D(points[i]);
        if (std::isnan(grade)) continue;
        lowest = std::min(lowest, grade);
        highest = std::max(highest, grade);
    }
    if (highest < 0.0) return;
    minGrade = lowest;
    maxGrade = highest;
}

bool LineString3D::GetZ(const Point2D& p, double& z, double tolerance) const {
    for (std::size_t i = 1; i < points.size(); ++i) {
        const Point3D& a = points[i - 1];
        const Point3D& b = points[i];
        if (!detail::IsPointOnSegment(p, a.GetPoint2D(), b.GetPoint2D(), tolerance)) continue;
        return detail::Store(detail::HeightOnSegment(p, a, b), z);
    }
    return false;
}

int LineString3D::GetHeightAtPoint(const std::vector<Point3D>& ring, int index, const Point2D& p, double& zFirst,
                                   double& zLast, double tolerance) {
    const std::size_t size = ring.size();
    const auto isAt = [&](std::size_t i) { return ring[i].GetPoint2D().IsEqualTo(p, tolerance); };
    if (index < 0 || static_cast<std::size_t>(index) >= size) return 0;
    const auto first = static_cast<std::size_t>(index);
    if (!isAt(first)) return 0;
    zFirst = ring[first].GetZ();
    zLast = zFirst;
    std::size_t next = first + 1;
    for (; next < 2 * size && isAt(next % size); ++next) zLast = ring[next % size].GetZ();
    if (next == 1) {
        for (std::size_t i = size - 1; i > 0 && isAt(i); --i) zFirst = ring[i].GetZ();
    }
    return std::abs(zFirst - zLast) < tolerance ? 1 : 2;
}

int LineString3D::GetHeightAtLine(const std::vector<Point3D>& ring, int index, const Point2D& p, double& z,
                                  double tolerance) {
    if (index < 0 || static_cast<std::size_t>(index) >= ring.size()) return 0;
    const auto from = static_cast<std::size_t>(index);
    const Point3D& a = ring[from];
    const Point3D& b = ring[(from + 1) % ring.size()];
    const Line2D edge(a.GetPoint2D(), b.GetPoint2D());
    if (!edge.IsPointOnGeometry(p, Tolerances(tolerance))) return 0;
    const double length = edge.GetLength();
    if (!(tolerance <= length)) {
        z = a.GetZ();
        return 2;
    }
    const double part = edge.GetStart().Distance(p) / length;
    z = (1.0 - part) * a.GetZ() + part * b.GetZ();
    return 1;
}

int LineString3D::GetHeightAtBorder(const Point2D& p, double& z, double tolerance, int takeLast) const {
    const auto size = static_cast<int>(points.size());
    for (int i = 0; i < size; ++i) {
        double zFirst = 0.0;
        double zLast = 0.0;
        const int result = GetHeightAtPoint(points, i, p, zFirst, zLast, tolerance);
        if (result == 0) continue;
        z = takeLast != 0 ? zLast : zFirst;
        return result;
    }
    for (int i = 0; i < size; ++i) {
        if (const int result = GetHeightAtLine(points, i, p, z, tolerance); result != 0) return result;
    }
    return 0;
}

double LineString3D::CalculateNormalizedSegmentLength(double length, double segmentLength) const {
    if (!(length > 0.0) || !(segmentLength > 0.0) || !std::isfinite(length) || !std::isfinite(segmentLength))
        return 0.0;
    return length / std::max(1.0, std::round(length / segmentLength));
}

bool LineString3D::GetAveraged(LineString3D& averaged, std::vector<int>& indexes, double segmentLength) const {
    const std::vector<double> lengths = detail::LengthsAtPoints(points, lengthOf);
    const double total = lengths.empty() ? 0.0 : lengths.back();
    const double part = CalculateNormalizedSegmentLength(total, segmentLength);
    if (!(part > 0.0) || !(total / part < detail::mostSamples)) return false;
    const auto parts = static_cast<std::size_t>(std::round(total / part));
    std::vector<Point3D> means;
    std::vector<int> segments;
    std::size_t first = 0;  // segment where the window begins
    for (std::size_t k = 0; k <= parts; ++k) {
        const double length = total * static_cast<double>(k) / static_cast<double>(parts);
        const double from = length - 0.5 * part;
        const double to = length + 0.5 * part;
        while (first + 2 < points.size() && lengths[first + 1] <= from) ++first;
        Vec3D sum;  // relative to the point at `first`
        std::size_t middle = first;
        for (std::size_t i = first; i + 1 < points.size() && lengths[i] < to; ++i) {
            if (lengths[i] < length) middle = i;
            const double low = std::max(from, lengths[i]);
            const double high = std::min(to, lengths[i + 1]);
            if (!(high > low)) continue;
            const double ratio = (0.5 * (low + high) - lengths[i]) / (lengths[i + 1] - lengths[i]);
            sum += ((points[i] - points[first]) + (points[i + 1] - points[i]) * ratio) * (high - low);
        }
        means.push_back(points[first] + sum * (1.0 / part));
        segments.push_back(static_cast<int>(middle));
    }
    means.front() = points.front();
    means.back() = points.back();
    averaged = LineString3D(std::move(means));
    indexes = std::move(segments);
    return true;
}

Vec3D LineString3D::GetInterpolatedTangent(const std::vector<int>& indexes, int index, double ratio) const {
    if (index < 0 || static_cast<std::size_t>(index) >= indexes.size()) return {};
    const int segment = indexes[static_cast<std::size_t>(index)];
    if (segment < 0 || static_cast<std::size_t>(segment) >= detail::SegmentCount(points)) return {};
    const auto tangentAt = [this](std::size_t i) {
        Vec3D sum;
        if (i > 0) sum += (points[i] - points[i - 1]).Normalize();
        if (i + 1 < points.size()) sum += (points[i + 1] - points[i]).Normalize();
        return sum.Normalize();
    };
    const auto k = static_cast<std::size_t>(segment);
    const double t = ratio > 0.0 ? std::min(ratio, 1.0) : 0.0;
    return (tangentAt(k) * (1.0 - t) + tangentAt(k + 1) * t).Normalize();
}

bool LineString3D::GetSplineLineString(LineString3D& spline, int parts) const {
    std::vector<Point3D> knots = points;
    detail::ReduceChain(knots, detail::numericalZero, [](std::size_t) {});
    if (knots.size() < 2 || parts < 1) return false;
    if (!(static_cast<double>(knots.size()) * static_cast<double>(parts) < detail::mostSamples)) return false;
    const std::size_t last = knots.size() - 1;
    const bool isClosed = last > 2 && knots.front().IsEqualTo(knots.back(), detail::numericalZero);

    // Derivative at b of the segment b -> c by its unit parameter, with the vertex a before b; d are roots of lengths.
    const auto derivative = [](const Point3D& a, const Point3D& b, const Point3D& c) {
        const double ab = std::sqrt(a.Distance(b));
        const double bc = std::sqrt(b.Distance(c));
        return ((b - a) * (1.0 / ab) - (c - a) * (1.0 / (ab + bc)) + (c - b) * (1.0 / bc)) * bc;
    };
    std::vector<Point3D> dense;
    for (std::size_t i = 0; i < last; ++i) {
        const Point3D& p = knots[i];
        const Point3D& q = knots[i + 1];
        const Vec3D chord = q - p;
        const bool hasBefore = isClosed || i > 0;
        const bool hasAfter = isClosed || i + 1 < last;
        const Vec3D leaving = hasBefore ? derivative(i > 0 ? knots[i - 1] : knots[last - 1], p, q) : chord;
        const Vec3D arriving = hasAfter ? -derivative(i + 1 < last ? knots[i + 2] : knots[1], q, p) : chord;
        dense.push_back(p);
        for (int j = 1; j < parts; ++j) {
            const double t = static_cast<double>(j) / static_cast<double>(parts);
            const double rest = 1.0 - t;
            dense.push_back(p + chord * (t * t * (3.0 - 2.0 * t)) + leaving * (t * rest * rest) -
                            arriving * (t * t * rest));
        }
    }
    dense.push_back(knots.back());
    Point3D finite;
    if (!std::all_of(dense.begin(), dense.end(), [&](const Point3D& p) { return detail::Store(p, finite); }))
        return false;
    spline = LineString3D(std::move(dense));
    return true;
}

bool LineString3D::IsPointOnGeometry(const Point3D& point, const Tolerances& tolerances) const {
    double length = 0.0;
    return GetLengthFromStartPoint(point, length, tolerances.UserTolerance());
}

LineString3D& LineString3D::Transform(const Matrix3D& matrix) {
    for (Point3D& point : points) point.Transform(matrix);
    Changed();
    return *this;
}

LineString3D LineString3D::Transform(const Matrix3D& matrix) const {
    LineString3D copy(*this);
    return copy.Transform(matrix);
}

LineString3D& LineString3D::Translate(const Vec3D& v) {
    for (Point3D& point : points) point += v;
    Changed();
    return *this;
}

LineString3D LineString3D::Translate(const Vec3D& v) const {
    LineString3D copy(*this);
    return copy.Translate(v);
}

template <>
bool Geometry::AreEqual(const Line3D& a, const LineString3D& b, double tolerance) {
    return b.IsEqualTo(a, tolerance);
}

template <>
bool Geometry::AreEqual(const LineString3D& a, const LineString3D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

}  // namespace Kalvio::Math
