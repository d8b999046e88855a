#include "kalvio/curves/Polyline2D.h"

#include "kalvio/core/Geometry.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/BoxHierarchy.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Spiral2D.h"
#include "kalvio/curves/detail/ChainSampling.h"
#include "kalvio/curves/detail/PlanElements.h"
#include "kalvio/polygons/LineString2D.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>

namespace Kalvio::Math {

namespace {

// An element's own tests round coordinates a few times; a box widened by this much of them never rejects what such a
// test accepts.
constexpr double boxRounding = 16.0 * std::numeric_limits<double>::epsilon();

constinit const Line2D noElement;

constexpr double shortestPart = 1e-9;  // a length: less of an element is not cut off, and rounding far along a chain

// The part of an element between two stations along it; null where it cannot be cut.
std::unique_ptr<IPolyline2DElement> PartOf(const IPolyline2DElement& element, double length, double from, double to) {
    std::map<double, const Point2D> cuts;
    for (const double station : {from, to}) {
        detail::ElementPoint cut;
        if (!(station > shortestPart && station < length - shortestPart)) continue;
        if (!detail::EvaluateElement(element, station, cut)) return nullptr;
        cuts.emplace(station, cut.point);
    }
    if (cuts.empty()) return detail::ElementChain<IPolyline2DElement>::CloneOf(element);
    std::vector<std::unique_ptr<IGeometry>> pieces;
    const std::size_t wanted = from > shortestPart ? 1 : 0;
    if (!element.BreakAtPreSorted(cuts, 0.0, pieces, Tolerances(detail::numericalZero)) || pieces.size() <= wanted) {
        return nullptr;
    }
    return std::unique_ptr<IPolyline2DElement>(static_cast<IPolyline2DElement*>(pieces[wanted].release()));
}

bool IsMovable(const IPolyline2DElement& element) {
    return element.GetType() == MathTypes::Line2D || element.GetType() == MathTypes::LineString2D;
}

}  // namespace

struct Polyline2D::Index {
    explicit Index(const detail::ElementChain<IPolyline2DElement>& elements) : boxes(BoxesOf(elements)) {}

    static std::vector<detail::Extent> BoxesOf(const detail::ElementChain<IPolyline2DElement>& elements) {
        std::vector<detail::Extent> extents(elements.Size());
        for (std::size_t i = 0; i < elements.Size(); ++i) {
            const BoundingBox2D box = elements[i].GetBoundingBox2D();
            const Point2D low = box.GetMinPoint();
            const Point2D high = box.GetMaxPoint();
            const double padX = boxRounding * (std::abs(low.GetX()) + std::abs(high.GetX()));
            const double padY = boxRounding * (std::abs(low.GetY()) + std::abs(high.GetY()));
            detail::Extent& extent = extents[i];
            extent.minX = low.GetX() - padX;
            extent.minY = low.GetY() - padY;
            extent.maxX = high.GetX() + padX;
            extent.maxY = high.GetY() + padY;
            if (std::isnan(extent.minX + extent.maxX + extent.minY + extent.maxY))
                extent = Everything();  // hides nothing
        }
        return extents;
    }
    static detail::Extent Everything() {
        detail::Extent extent;
        std::swap(extent.minX, extent.maxX);
        std::swap(extent.minY, extent.maxY);
        return extent;
    }

    static detail::Extent Around(const Point2D& p) {
        detail::Extent extent;
        extent.Add(p);
        return extent;
    }
    static double ReachOf(double tolerance) {
        const double reach = std::abs(tolerance) + detail::numericalZero;
        return std::isnan(reach) ? std::numeric_limits<double>::infinity() : reach;
    }
    // Calls visit(i) in ascending order for the elements that may hold the point, until it returns true.
    template <class Visit>
    bool VisitNear(const Point2D& p, double tolerance, Visit&& visit) const {
        return boxes.ForEachNear(Around(p), ReachOf(tolerance), visit);
    }

    detail::ExtentBoxes boxes;
};

MathTypes Polyline2D::GetType() const { return MathTypes::Polyline2D; }

BoundingBox2D Polyline2D::GetBoundingBox2D() const {
    if (elements.IsEmpty()) return {};
    BoundingBox2D box = elements.Front().GetBoundingBox2D();
    for (std::size_t i = 1; i < elements.Size(); ++i) box += elements[i].GetBoundingBox2D();
    return box;
}

BoundingBox3D Polyline2D::GetBoundingBox3D() const { return GetBoundingBox2D().GetBoundingBox3D(); }

bool Polyline2D::IsEqualTo(const IGeometry& other, double tolerance) const {
    if (other.GetType() == MathTypes::Polyline2D) {
        return elements.IsEqualTo(static_cast<const Polyline2D&>(other).elements, tolerance);
    }
    return elements.Size() == 1 && elements.Front().GetType() == other.GetType() &&
           elements.Front().IsEqualTo(other, tolerance);
}

Polyline2D* Polyline2D::Clone() const { return new Polyline2D(*this); }

void Polyline2D::Reverse() {
    elements.Reverse();
    Changed();
}

double Polyline2D::GetLength() const { return elements.LengthOf(0, elements.Size()); }

bool Polyline2D::BreakAtPreSorted(std::map<double, const Point2D>& breaks, double startStation,
                                  std::vector<IGeometry*>& out, bool modifyThis, const Tolerances& tolerances) {
    const double u = tolerances.UserTolerance();
    const std::vector<double>& stations = elements.GetStations().start;
    std::vector<std::map<double, const Point2D>> cuts(elements.Size());
    std::vector<bool> cutBefore(elements.Size() + 1, false);
    double last = 0.0;
    for (const auto& [station, point] : breaks) {
        const double along = station - startStation;
        if (!(along < stations.back())) break;
        if (!(along - last > u)) continue;
        last = along;
        const auto next = std::upper_bound(stations.begin(), stations.end(), along);
        const auto i = static_cast<std::size_t>(next - stations.begin()) - 1;
        if (!(along - stations[i] > u)) {
            cutBefore[i] = true;
        } else if (!(stations[i + 1] - along > u)) {
            cutBefore[i + 1] = true;
        } else {
            cuts[i].emplace(along, point);
        }
    }

    std::vector<std::unique_ptr<Polyline2D>> pieces;
    const auto startPiece = [&pieces] { pieces.push_back(std::make_unique<Polyline2D>()); };
    for (std::size_t i = 0; i < elements.Size(); ++i) {
        if (i == 0 || cutBefore[i]) startPiece();
        std::vector<IGeometry*> parts;
        if (cuts[i].empty() || !elements[i].BreakAtPreSorted(cuts[i], stations[i], parts, tolerances)) {
            pieces.back()->elements.AppendClone(elements[i]);
            continue;
        }
        for (std::size_t k = 0; k < parts.size(); ++k) {
            if (k > 0) startPiece();
            pieces.back()->elements.Append(
                std::unique_ptr<IPolyline2DElement>(static_cast<IPolyline2DElement*>(parts[k])));
        }
    }
    if (pieces.size() < 2) return false;
    const std::size_t firstOut = modifyThis ? 1 : 0;
    for (std::size_t i = firstOut; i < pieces.size(); ++i) out.push_back(pieces[i].release());
    if (modifyThis) *this = *pieces.front();
    return true;
}

template <class Visit>
bool Polyline2D::VisitNear(const Point2D& point, double tolerance, Visit&& visit) const {
    if (!questions.Ask()) return GetIndex().VisitNear(point, tolerance, visit);
    for (std::size_t i = 0; i < elements.Size(); ++i) {
        if (visit(i)) return true;
    }
    return false;
}

bool Polyline2D::IsPointOnGeometry(const Point2D& point, const Tolerances& tolerances) const {
    return VisitNear(point, tolerances.UserTolerance(),
                     [&](std::size_t i) { return elements[i].IsPointOnGeometry(point, tolerances); });
}

bool Polyline2D::ExtendStart(const Point2D& point, const Tolerances& tolerances) {
    if (elements.IsEmpty()) return false;
    elements.Change(0).ExtendStart(point, tolerances);
    Changed();
    return true;
}

bool Polyline2D::ExtendEnd(const Point2D& point, const Tolerances& tolerances) {
    if (elements.IsEmpty()) return false;
    elements.Change(elements.Size() - 1).ExtendEnd(point, tolerances);
    Changed();
    return true;
}

IGeometry* Polyline2D::Append(const IGeometry* const other) const {
    return other == nullptr ? nullptr : detail::AppendElements(*this, *other);
}

const Point2D& Polyline2D::GetStart() const {
    return elements.IsEmpty() ? Point2D::origo() : elements.Front().GetStart();
}

const Point2D& Polyline2D::GetEnd() const { return elements.IsEmpty() ? Point2D::origo() : elements.Back().GetEnd(); }

bool Polyline2D::GetLengthFromStartPoint(const Point2D& point, double& length, double tolerance) const {
    length = 0.0;
    return VisitNear(point, tolerance, [&](std::size_t i) {
        double onElement = 0.0;
        return elements[i].GetLengthFromStartPoint(point, onElement, tolerance) &&
               detail::Store(elements.GetStations().start[i] + onElement, length);
    });
}

bool Polyline2D::GetLengthFromEndPoint(const Point2D& point, double& length, double tolerance) const {
    std::vector<std::size_t> near;
    VisitNear(point, tolerance, [&near](std::size_t i) {
        near.push_back(i);
        return false;
    });
    for (auto at = near.rbegin(); at != near.rend(); ++at) {
        const std::size_t i = *at;
        if (double onElement = 0.0; elements[i].GetLengthFromEndPoint(point, onElement, tolerance)) {
            const std::vector<double>& stations = elements.GetStations().start;
            if (detail::Store(stations.back() - stations[i + 1] + onElement, length)) return true;
        }
    }
    length = 0.0;
    return false;
}

bool Polyline2D::ComputeTangent(const Point2D& point, Vec2D& tangent, const Tolerances& tolerances) const {
    bool found = false;
    VisitNear(point, tolerances.UserTolerance(), [&](std::size_t i) {
        if (!elements[i].IsPointOnGeometry(point, tolerances)) return false;
        found = elements[i].ComputeTangent(point, tangent, tolerances);
        return true;
    });
    return found;
}

template <class Answer>
bool Polyline2D::FindNearest(const Point2D& point, Answer&& answer, PolylinePoint& nearest) const {
    detail::ElementPoint best;
    double bestDistance = std::numeric_limits<double>::infinity();
    double squaredReach = bestDistance;
    std::size_t bestElement = elements.Size();
    if (!std::isfinite(point.GetX()) || !std::isfinite(point.GetY())) return false;
    const auto offer = [&](std::size_t i) {
        detail::ElementPoint candidate;
        if (!answer(elements[i], candidate)) return;
        const double distance = candidate.point.Distance(point);
        if (!std::isfinite(distance)) return;
        if (!(distance < bestDistance || (distance == bestDistance && i < bestElement))) return;
        best = candidate;
        bestDistance = distance;
        bestElement = i;
        squaredReach = detail::WidenedSquare(distance * distance, detail::numericalZero);
    };
    const bool isScan = questions.Ask();
    if (isScan) {
        for (std::size_t i = 0; i < elements.Size(); ++i) offer(i);
    } else {
        GetIndex().boxes.ForEachNearest(point, squaredReach, offer);
    }
    if (bestElement == elements.Size()) return false;
    const double start = isScan ? elements.LengthOf(0, bestElement) : elements.GetStations().start[bestElement];
    PolylinePoint found = detail::PlacedOn<PolylinePoint>(bestElement, start, best);
    found.distance = bestDistance;
    return detail::Store(found, nearest);
}

Point2D Polyline2D::GetNearestPoint(const Point2D& point, const Tolerances& tolerances) const {
    PolylinePoint nearest;
    return GetNearestPoint(point, nearest, tolerances) ? nearest.point : point;
}

bool Polyline2D::GetNearestPoint(const Point2D& point, PolylinePoint& nearest, const Tolerances& tolerances) const {
    return FindNearest(
        point,
        [&](const IPolyline2DElement& element, detail::ElementPoint& sample) {
            return detail::FindNearestOnElement(element, point, tolerances, sample);
        },
        nearest);
}

bool Polyline2D::GetNormalPoint(const Point2D& point, double tolerance, PolylinePoint& foot) const {
    return FindNearest(
        point,
        [&](const IPolyline2DElement& element, detail::ElementPoint& sample) {
            return detail::FootOnElement(element, point, tolerance, sample);
        },
        foot);
}

const IPolyline2DElement& Polyline2D::GetElementAtIndex(unsigned int i) const {
    if (elements.IsEmpty()) return noElement;
    return elements[i < elements.Size() ? i : 0];
}

IPolyline2DElement& Polyline2D::GetElementAtIndex(unsigned int i) {
    Changed();
    if (elements.IsEmpty()) return spare = Line2D();
    return elements.Change(i < elements.Size() ? i : 0);
}

void Polyline2D::GetLengthsAlongGeometry(const Point2D& point, std::vector<double>& lengths,
                                         const Tolerances& tolerances) const {
    const double u = tolerances.UserTolerance();
    std::vector<double> found;
    VisitNear(point, u, [&](std::size_t i) {
        std::vector<double> onElement;
        if (const IComplexGeometry* const chain = detail::AsComplexGeometry(elements[i])) {
            chain->GetLengthsAlongGeometry(point, onElement, tolerances);
        } else if (double length = 0.0; elements[i].GetLengthFromStartPoint(point, length, u)) {
            onElement.push_back(length);
        }
        for (const double length : onElement) {
            const double station = elements.GetStations().start[i] + length;
            if (found.empty() || station - found.back() > 4.0 * std::abs(u)) found.push_back(station);
        }
        return false;
    });
    lengths = std::move(found);
}

bool Polyline2D::FindShortElements(std::vector<std::uint64_t>& indexes, double minLength) const {
    return elements.FindShort(indexes, minLength);
}

void Polyline2D::RemoveElements(const std::vector<std::uint64_t>& indexes, bool deleteElements) {
    const Tolerances standard = Tolerances::Standard();
    const std::vector<std::uint64_t> removed = elements.KnownIndexes(indexes);
    std::vector<std::pair<std::size_t, std::size_t>> runs;  // [first, last), ascending
    for (std::size_t i = 0; i < removed.size();) {
        const std::size_t last = GetLastConsecutiveIndex(removed, i);
        runs.emplace_back(removed[i], removed[last] + 1);
        i = last + 1;
    }
    for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
        const auto [first, last] = *run;
        if (first == 0 || last == elements.Size()) continue;
        IPolyline2DElement& before = elements.Change(first - 1);
        IPolyline2DElement& behind = elements.Change(last);
        if (IsMovable(behind)) {
            behind.ExtendStart(Point2D(before.GetEnd()), standard);
        } else if (IsMovable(before)) {
            before.ExtendEnd(Point2D(behind.GetStart()), standard);
        }
    }
    elements.Remove(removed, !deleteElements);
    Changed();
}

std::size_t Polyline2D::GetLastConsecutiveIndex(const std::vector<std::uint64_t>& indexes, std::size_t position) {
    while (position + 1 < indexes.size() && indexes[position + 1] == indexes[position] + 1) ++position;
    return position;
}

bool Polyline2D::AppendElement(IPolyline2DElement* element) {
    if (element == nullptr || element == this) return false;
    elements.Append(std::unique_ptr<IPolyline2DElement>(element));
    Changed();
    return true;
}

bool Polyline2D::Insert(unsigned int position, IPolyline2DElement* element) {
    std::vector<IPolyline2DElement*> added{element};
    return Insert(position, added);
}

bool Polyline2D::Insert(unsigned int position, std::vector<IPolyline2DElement*>& added) {
    if (std::find(added.begin(), added.end(), this) != added.end()) return false;
    if (!elements.Insert(position, added)) return false;
    Changed();
    return true;
}

void Polyline2D::DeleteElements() {
    elements.Clear();
    Changed();
}

const Polyline2D::Index& Polyline2D::GetIndex() const {
    return *index.Get([this] { return std::make_shared<const Index>(elements); });
}

Point2D Polyline2D::GetMidPoint() const {
    PolylinePoint middle;
    return MakePointAndTangentAt(elements.GetStations().start.back() * 0.5, middle) ? middle.point : GetStart();
}

int Polyline2D::GetPointUsingLengthAlongXAxis(double length, PolylinePoint& result, double tolerance) const {
    const detail::ExtentBoxes& boxes = GetIndex().boxes;
    const double x = GetStart().GetX() + length;
    const double t = std::abs(tolerance);
    for (std::size_t i = 0; i < elements.Size(); ++i) {
        if (x < boxes.GetExtent(i).minX - t || x > boxes.GetExtent(i).maxX + t) continue;
        detail::ElementPoint sample;
        const int found = detail::PointAtAbscissa(elements[i], x, t, sample);
        if (found == 0) continue;
        result = detail::PlacedOn<PolylinePoint>(i, elements.GetStations().start[i], sample);
        return found;
    }
    return 0;
}

int Polyline2D::GetYUsingLengthAlongXAxis(double length, double& y) const {
    PolylinePoint sample;
    const int found = GetPointUsingLengthAlongXAxis(length, sample, detail::numericalZero);
    if (found != 0) y = sample.point.GetY();
    return found;
}

bool Polyline2D::MakePointAndTangentAt(double station, PolylinePoint& result) const {
    return detail::SampleAt(elements, station, result);
}

bool Polyline2D::MakePointAndTangentAt(int elementIndex, double station, PolylinePoint& result) const {
    if (elementIndex < 0 || static_cast<std::size_t>(elementIndex) >= elements.Size()) return false;
    return detail::SampleAt(elements, static_cast<std::size_t>(elementIndex), station, result);
}

bool Polyline2D::GetPoint(double station, double offset, Point2D& point) const {
    PolylinePoint axis;
    if (!MakePointAndTangentAt(station, axis)) return false;
    const Point2D beside = axis.point + axis.tangent.GetNormalVector(false) * offset;
    if (!std::isfinite(beside.GetX()) || !std::isfinite(beside.GetY())) return false;
    point = beside;
    return true;
}

bool Polyline2D::GetStationAndOffset(const Point2D& point, double& station, double& offset, double tolerance) const {
    PolylinePoint foot;
    if (!GetNormalPoint(point, tolerance, foot)) return false;
    station = foot.station;
    offset = (point - foot.point).DotProduct(foot.tangent.GetNormalVector(false));
    return true;
}

bool Polyline2D::GetCurvature(double station, double& curvature) const {
    const auto& [start, length] = elements.GetStations();
    PolylinePoint axis;
    if (!MakePointAndTangentAt(station, axis)) return false;
    const std::size_t i = axis.elementIndex;
    return detail::CurvatureOfElement(elements[i], std::clamp(station - start[i], 0.0, length[i]), curvature);
}

bool Polyline2D::ExtractPolyline(double from, double to, Polyline2D& part) const {
    const auto& [start, length] = elements.GetStations();
    if (!(from >= -detail::numericalZero && to <= start.back() + detail::numericalZero)) return false;
    from = std::max(from, 0.0);
    to = std::min(to, start.back());
    if (!(from < to && to <= detail::largestDouble)) return false;
    Polyline2D found;
    for (std::size_t i = elements.ElementAt(from); i < elements.Size() && start[i] < to; ++i) {
        const double first = std::max(from - start[i], 0.0);
        const double last = std::min(to - start[i], length[i]);
        const bool isCut = first > 0.0 || last < length[i];
        if (isCut && !(last - first > shortestPart)) continue;
        std::unique_ptr<IPolyline2DElement> piece = PartOf(elements[i], length[i], first, last);
        if (piece == nullptr) return false;
        found.elements.Append(std::move(piece));
    }
    if (found.elements.IsEmpty()) return false;
    part = std::move(found);
    return true;
}

bool Polyline2D::MakePointsAndTangents(double from, double to, std::vector<PolylinePoint>& points, double step,
                                       double tolerance) const {
    return detail::SampleChainBySteps(elements, from, to, step, tolerance, points);
}

bool Polyline2D::MakePointsAndTangentsUsingHeight(double from, double to, std::vector<PolylinePoint>& points,
                                                  double height, double tolerance) const {
    return detail::SampleChainByHeight(elements, from, to, height, tolerance, points);
}

bool Polyline2D::MakeLineString(double from, double to, LineString2D& lineString, double step, double tolerance) const {
    std::vector<PolylinePoint> samples;
    if (!MakePointsAndTangents(from, to, samples, step, tolerance)) return false;
    for (const PolylinePoint& sample : samples) lineString.AppendPoint(sample.point);
    return true;
}

bool Polyline2D::MakeLineStringUsingHeight(double from, double to, LineString2D& lineString, double height,
                                           double tolerance) const {
    std::vector<PolylinePoint> samples;
    if (!MakePointsAndTangentsUsingHeight(from, to, samples, height, tolerance)) return false;
    for (const PolylinePoint& sample : samples) lineString.AppendPoint(sample.point);
    return true;
}

template <>
bool Geometry::AreEqual(const Arc2D& a, const Polyline2D& b, double tolerance) {
    return b.IsEqualTo(a, tolerance);
}

template <>
bool Geometry::AreEqual(const Clothoid& a, const Polyline2D& b, double tolerance) {
    return b.IsEqualTo(a, tolerance);
}

template <>
bool Geometry::AreEqual(const Line2D& a, const Polyline2D& b, double tolerance) {
    return b.IsEqualTo(a, tolerance);
}

template <>
bool Geometry::AreEqual(const Polyline2D& a, const Polyline2D& b, double tolerance) {
    return a.IsEqualTo(b, tolerance);
}

template <>
bool Geometry::AreEqual(const Spiral2D& a, const Polyline2D& b, double tolerance) {
    return b.IsEqualTo(a, tolerance);
}

template <>
bool Geometry::AreEqual(const Parabola& a, const Polyline2D& b, double tolerance) {
    return b.IsEqualTo(a, tolerance);
}

}  // namespace Kalvio::Math
