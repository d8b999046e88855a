#include "kalvio/curves/detail/PlanElements.h"

#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/PointOnLine.h"
#include "kalvio/core/detail/SegmentDistance.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/Spiral2D.h"
#include "kalvio/curves/detail/Chain.h"
#include "kalvio/curves/detail/WalkPoints.h"
#include "kalvio/polygons/LineString2D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Kalvio::Math::detail {

namespace {

// Calls `visit` with the element as its own class; false for a class that is not the library's.
template <class Visit>
bool WithClass(const IPolyline2DElement& element, Visit&& visit) {
    switch (element.GetType()) {
        case MathTypes::Arc2D:
            return visit(static_cast<const Arc2D&>(element));
        case MathTypes::Clothoid:
            return visit(static_cast<const Clothoid&>(element));
        case MathTypes::Line2D:
            return visit(static_cast<const Line2D&>(element));
        case MathTypes::LineString2D:
            return visit(static_cast<const LineString2D&>(element));
        case MathTypes::Parabola:
            return visit(static_cast<const Parabola&>(element));
        case MathTypes::Polyline2D:
            return visit(static_cast<const Polyline2D&>(element));
        case MathTypes::Spiral2D:
            return visit(static_cast<const Spiral2D&>(element));
        default:
            return false;
    }
}

struct Evaluate {
    double station;
    ElementPoint& result;

    template <class Element>
    bool operator()(const Element& element) const {
        return element.MakePointAndTangentAt(station, result);
    }
    bool operator()(const LineString2D& lineString) const {
        return WalkPoints<ElementPoint>(lineString.GetPoints(), std::span(&station, 1),
                                        [this](const ElementPoint& sample) { result = sample; });
    }
    bool operator()(const Polyline2D& polyline) const {
        Polyline2D::PolylinePoint sample;
        if (!polyline.MakePointAndTangentAt(station, sample)) return false;
        result = {sample.point, sample.tangent, sample.station};
        return true;
    }
};

struct CurvatureAt {
    double station;
    double& curvature;

    template <class Curve>
    bool operator()(const Curve& curve) const {
        curvature = curve.GetCurvature(station);
        return true;
    }
    bool operator()(const Arc2D& arc) const {
        curvature = 1.0 / arc.GetSignedRadius();
        return true;
    }
    bool operator()(const Line2D&) const { return IsStraight(); }
    bool operator()(const LineString2D&) const { return IsStraight(); }
    bool operator()(const Parabola& parabola) const {
        ElementPoint at;
        if (!parabola.MakePointAndTangentAt(station, at)) return false;
        double a = 0.0;
        double b = 0.0;
        double c = 0.0;
        parabola.GetParameters(a, b, c);
        const double run = at.tangent.GetX();  // 1 / sqrt(1 + u^2) with the sign of the way
        curvature = 2.0 * a * run * run * run;
        return true;
    }
    bool operator()(const Polyline2D& polyline) const { return polyline.GetCurvature(station, curvature); }

    bool IsStraight() const {
        curvature = 0.0;
        return true;
    }
};

// Point, tangent and station `along` (0 to 1) a segment that starts at the station `from`.
ElementPoint OnSegment(const Point2D& a, const Point2D& b, double along, double from) {
    const Vec2D direction = b - a;
    const Point2D point = along == 1.0 ? b : a + direction * along;
    return {point, UnitDirection(direction), from + along * direction.Length()};
}

struct NearestOn {
    const Point2D& point;
    const Tolerances& tolerances;
    ElementPoint& nearest;

    template <class Curve>
    bool operator()(const Curve& curve) const {
        if (!curve.GetNearestPoint(point, 0.0, curve.GetLength(), nearest)) nearest = {curve.GetStart(), Vec2D(), 0.0};
        return true;
    }
    bool operator()(const Arc2D& arc) const {
        nearest = arc.GetNearestPoint(point);
        return true;
    }
    bool operator()(const Parabola& parabola) const {
        nearest = parabola.GetNearestPoint(point);
        return true;
    }
    bool operator()(const Line2D& line) const {
        const double along = NearestParameter(point, line.GetStart(), line.GetEnd(), tolerances.SystemEpsilonSquared());
        nearest = OnSegment(line.GetStart(), line.GetEnd(), along, 0.0);
        return true;
    }
    bool operator()(const LineString2D& lineString) const {
        const std::vector<Point2D>& points = lineString.GetPoints();
        ChainFoot<Point2D> foot;
        const SegmentSearch& search = SearchAccess::Of(lineString);
        if (!search.FindNearest(points, point, numericalZero, foot)) return false;
        nearest = {foot.point, Vec2D(), 0.0};
        if (points.size() == 1) return true;
        (*this)(Line2D(points[foot.segment], points[foot.segment + 1]));
        nearest.station += search.LengthTo(points, foot.segment);
        return true;
    }
    bool operator()(const Polyline2D& polyline) const {
        Polyline2D::PolylinePoint found;
        if (!polyline.GetNearestPoint(point, found, tolerances)) return false;
        nearest = {found.point, found.tangent, found.station};
        return true;
    }
};

struct FootOn {
    const Point2D& point;
    double tolerance;
    ElementPoint& foot;

    template <class Curve>
    bool operator()(const Curve& curve) const {
        return curve.GetNormalPoint(point, 0.0, curve.GetLength(), tolerance, foot);
    }
    bool operator()(const Arc2D& arc) const { return arc.GetNormalPoint(point, tolerance, foot); }
    bool operator()(const Parabola& parabola) const { return parabola.GetNormalPoint(point, tolerance, foot); }
    bool operator()(const Line2D& line) const {
        const SegmentFoot onLine(point, line.GetStart(), line.GetEnd(), tolerance);
        if (!onLine.isFoot) return false;
        foot = OnSegment(line.GetStart(), line.GetEnd(), std::clamp(onLine.parameter, 0.0, 1.0), 0.0);
        return true;
    }
    bool operator()(const LineString2D& lineString) const {
        double best = std::numeric_limits<double>::infinity();
        WalkChain(lineString.GetPoints(), lengthOf, [&](std::size_t i, double from, double) {
            const Point2D& a = lineString.GetPoints()[i];
            const Point2D& b = lineString.GetPoints()[i + 1];
            const SegmentFoot onSegment(point, a, b, tolerance);
            if (!onSegment.isFoot || !(onSegment.squaredDistance < best)) return false;
            const ElementPoint candidate = OnSegment(a, b, std::clamp(onSegment.parameter, 0.0, 1.0), from);
            const double squared = (candidate.point - point).NormSquared();
            if (squared < best) foot = candidate;
            best = std::min(best, squared);
            return false;
        });
        return best < std::numeric_limits<double>::infinity();
    }
    bool operator()(const Polyline2D& polyline) const {
        Polyline2D::PolylinePoint found;
        if (!polyline.GetNormalPoint(point, tolerance, found)) return false;
        foot = {found.point, found.tangent, found.station};
        return true;
    }
};

constexpr int piecesPerCurve =
    64;  // between which a sign change of x - abscissa, or of the x of the tangent, is looked for
constexpr int mostBisections = 200;

// The station in [low, high] at which value(sample) changes sign.
template <class Value>
double Bisect(const IPolyline2DElement& element, double low, double high, Value&& value, ElementPoint& sample) {
    EvaluateElement(element, low, sample);
    const bool rises = value(sample) < 0.0;
    for (int i = 0; i < mostBisections; ++i) {
        const double middle = 0.5 * (low + high);
        if (middle <= low || middle >= high) break;
        EvaluateElement(element, middle, sample);
        ((value(sample) < 0.0) == rises ? low : high) = middle;
    }
    EvaluateElement(element, high, sample);
    return high;
}

// A curve that may turn back in x is cut where its tangent is vertical; each piece passes an abscissa at most once.
int PointOnCurveAtAbscissa(const IPolyline2DElement& element, double x, ElementPoint& result) {
    const auto ahead = [x](const ElementPoint& p) { return p.point.GetX() - x; };
    const auto run = [](const ElementPoint& p) { return p.tangent.GetX(); };
    const auto crossing = [&](double from, double to) {
        ElementPoint a;
        ElementPoint b;
        if (!EvaluateElement(element, from, a) || !EvaluateElement(element, to, b)) return false;
        if (ahead(a) == 0.0) {
            result = a;
            return true;
        }
        if (!((ahead(a) < 0.0) != (ahead(b) < 0.0))) return false;
        Bisect(element, from, to, ahead, result);
        return true;
    };
    const double length = element.GetLength();
    for (int i = 0; i < piecesPerCurve; ++i) {
        const double from = length * i / piecesPerCurve;
        const double to = i + 1 == piecesPerCurve ? length : length * (i + 1) / piecesPerCurve;
        ElementPoint a;
        ElementPoint b;
        if (!EvaluateElement(element, from, a) || !EvaluateElement(element, to, b)) return 0;
        if (run(a) * run(b) < 0.0) {
            ElementPoint turn;
            const double middle = Bisect(element, from, to, run, turn);
            if (crossing(from, middle) || crossing(middle, to)) return 1;
        } else if (crossing(from, to)) {
            return 1;
        }
    }
    return 0;
}

int PointOnLineAtAbscissa(const Line2D& line, double x, double tolerance, ElementPoint& result) {
    const double dx = line.GetEnd().GetX() - line.GetStart().GetX();
    if (std::abs(dx) <= numericalZero) {
        if (!(std::abs(x - line.GetStart().GetX()) <= tolerance)) return 0;
        result = {line.GetStart(), line.GetDirection(), 0.0};
        return 2;
    }
    const double t = (x - line.GetStart().GetX()) / dx;
    return t >= 0.0 && t <= 1.0 && EvaluateElement(line, t * line.GetLength(), result) ? 1 : 0;
}

}  // namespace

const IPolyline2DElement* AsPlanElement(const IGeometry& geometry) {
    switch (geometry.GetType()) {
        case MathTypes::Arc2D:
        case MathTypes::Clothoid:
        case MathTypes::Line2D:
        case MathTypes::LineString2D:
        case MathTypes::Parabola:
        case MathTypes::Polyline2D:
        case MathTypes::Spiral2D:
            return static_cast<const IPolyline2DElement*>(&geometry);
        default:
            return nullptr;
    }
}

const IComplexGeometry* AsComplexGeometry(const IPolyline2DElement& element) {
    switch (element.GetType()) {
        case MathTypes::LineString2D:
            return &static_cast<const LineString2D&>(element);
        case MathTypes::Polyline2D:
            return &static_cast<const Polyline2D&>(element);
        default:
            return nullptr;
    }
}

IGeometry* AppendElements(const IGeometry& first, const IGeometry& second) {
    if (first.GetType() == MathTypes::Line2D && second.GetType() == MathTypes::Line2D) {
        const auto& line = static_cast<const Line2D&>(first);
        return new LineString2D({line.GetStart(), line.GetEnd(), static_cast<const Line2D&>(second).GetEnd()});
    }
    return JoinElements<Polyline2D>(first, second, AsPlanElement);
}

bool FindNearestOnElement(const IPolyline2DElement& element, const Point2D& point, const Tolerances& tolerances,
                          ElementPoint& nearest) {
    if (AsPlanElement(element) != nullptr) return WithClass(element, NearestOn{point, tolerances, nearest});
    nearest = {element.GetNearestPoint(point, tolerances), Vec2D(), 0.0};
    (void)element.GetLengthFromStartPoint(nearest.point, nearest.station, tolerances.UserTolerance());
    (void)element.ComputeTangent(nearest.point, nearest.tangent, tolerances);
    return true;
}

ElementPoint NearestOnElement(const IPolyline2DElement& element, const Point2D& point, const Tolerances& tolerances) {
    ElementPoint nearest{element.GetStart(), Vec2D(), 0.0};
    FindNearestOnElement(element, point, tolerances, nearest);
    return nearest;
}

bool FootOnElement(const IPolyline2DElement& element, const Point2D& point, double tolerance, ElementPoint& foot) {
    return WithClass(element, FootOn{point, tolerance, foot});
}

bool EvaluateElement(const IPolyline2DElement& element, double station, ElementPoint& result) {
    return WithClass(element, Evaluate{station, result});
}

bool CurvatureOfElement(const IPolyline2DElement& element, double station, double& curvature) {
    return WithClass(element, CurvatureAt{station, curvature});
}

bool SampleElement(const IPolyline2DElement& element, std::span<const double> stations,
                   std::vector<ElementPoint>& samples) {
    if (element.GetType() == MathTypes::LineString2D) {
        return WalkPoints(static_cast<const LineString2D&>(element).GetPoints(), stations, samples);
    }
    if (element.GetType() == MathTypes::Clothoid) {
        return static_cast<const Clothoid&>(element).MakePointsAndTangentsAt(stations, samples);
    }
    return WithClass(element, [&](const auto& curve) {
        for (const double station : stations) {
            ElementPoint sample;
            if (!Evaluate{station, sample}(curve)) return false;
            samples.push_back(sample);
        }
        return true;
    });
}

bool SampleElementUsingHeight(const IPolyline2DElement& element, double from, double to, double height,
                              std::vector<ElementPoint>& samples) {
    switch (element.GetType()) {
        case MathTypes::Arc2D:
            return static_cast<const Arc2D&>(element).MakePointsAndTangentsUsingHeight(from, to, samples, height);
        case MathTypes::Clothoid:
            return static_cast<const Clothoid&>(element).MakePointsAndTangentsUsingHeight(from, to, samples, height);
        case MathTypes::LineString2D:
            return WalkVertices(static_cast<const LineString2D&>(element).GetPoints(), from, to, samples);
        case MathTypes::Parabola: {
            ElementPoint first;
            ElementPoint last;
            return EvaluateElement(element, from, first) && EvaluateElement(element, to, last) &&
                   static_cast<const Parabola&>(element).MakePointsAndTangentsUsingHeight(
                       first.point.GetX(), last.point.GetX(), samples, height);
        }
        case MathTypes::Polyline2D: {
            std::vector<Polyline2D::PolylinePoint> points;
            if (!static_cast<const Polyline2D&>(element).MakePointsAndTangentsUsingHeight(from, to, points, height,
                                                                                          numericalZero)) {
                return false;
            }
            for (const Polyline2D::PolylinePoint& p : points) samples.push_back({p.point, p.tangent, p.station});
            return true;
        }
        case MathTypes::Spiral2D:
            return static_cast<const Spiral2D&>(element).MakePointsAndTangentsUsingHeight(from, to, samples, height);
        default:
            return SampleElement(element, std::array{from, to}, samples);
    }
}

int PointAtAbscissa(const IPolyline2DElement& element, double x, double tolerance, ElementPoint& result) {
    int found = 0;
    if (element.GetType() == MathTypes::Line2D) {
        found = PointOnLineAtAbscissa(static_cast<const Line2D&>(element), x, tolerance, result);
    } else if (const IComplexGeometry* const chain = AsComplexGeometry(element)) {
        double before = 0.0;
        for (unsigned int i = 0; i < chain->GetNrOfElements() && found == 0; ++i) {
            const IPolyline2DElement& part = chain->GetElementAtIndex(i);
            found = PointAtAbscissa(part, x, tolerance, result);
            if (found != 0) result.station += before;
            before += part.GetLength();
        }
        return found;
    } else if (element.GetType() == MathTypes::Parabola) {
        found = static_cast<const Parabola&>(element).MakePointAndTangentAtAbscissa(x, result) ? 1 : 0;
    } else {
        found = PointOnCurveAtAbscissa(element, x, result);
    }
    if (found != 0) return found;
    // Just beyond an end.
    for (const double station : {0.0, element.GetLength()}) {
        ElementPoint end;
        if (EvaluateElement(element, station, end) && std::abs(end.point.GetX() - x) <= tolerance) {
            result = end;
            return 1;
        }
    }
    return 0;
}

}  // namespace Kalvio::Math::detail
