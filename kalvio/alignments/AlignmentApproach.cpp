#include "kalvio/alignments/Alignment.h"
#include "kalvio/alignments/detail/AlignmentCurves.h"
#include "kalvio/core/detail/SegmentDistance.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Kalvio::Math {

namespace {

using detail::AlignmentCurves;

constexpr double leastTolerance = 1e-9;  // a length: what points at survey coordinates are rounded to
constexpr int mostPairs = 20'000'000;    // of stretches, some seconds

// The line of a profile over its plan with two derivatives by the station, from a local origin.
struct State {
    Vec3D position;
    Vec3D first;
    Vec3D second;
};

// A stretch of an axis over one curve of the plan and one piece of the profile. No point of it lies further than
// `sag` from the place of its station on the chord.
struct Stretch {
    std::size_t piece = 0;
    double from = 0.0;
    double to = 0.0;
    Vec3D start;
    Vec3D end;
    double sag = 0.0;
};

struct Box {
    void Add(const Vec3D& p) {
        for (int i = 0; i < 3; ++i) {
            low[i] = std::min(low[i], p[i]);
            high[i] = std::max(high[i], p[i]);
        }
    }
    double Distance(const Box& other) const {
        Vec3D gap;
        for (int i = 0; i < 3; ++i) gap[i] = std::max({low[i] - other.high[i], other.low[i] - high[i], 0.0});
        return gap.Length();
    }

    Vec3D low;
    Vec3D high;
};

// The axis in pieces, and boxes around runs of them: one tree, whose node k has the halves 2 k and 2 k + 1.
class Axis {
public:
    Axis(const AlignmentCurves& planCurves, const Profile& heights, const Point3D& localOrigin)
        : plan(planCurves), profile(heights), origin(localOrigin) {
        std::vector<double> cuts = plan.GetStarts();
        for (const double joint : profile.GetJoints()) {
            if (joint > 0.0 && joint < plan.GetLength()) cuts.push_back(joint);
        }
        std::sort(cuts.begin(), cuts.end());
        for (std::size_t i = 1; i < cuts.size(); ++i) Append(cuts[i - 1], cuts[i]);
        if (pieces.empty()) return;
        boxes.resize(4 * pieces.size());
        Build(1, 0, pieces.size());
    }

    std::size_t size() const { return pieces.size(); }
    bool IsFinite() const { return isFinite; }
    const Stretch& GetPiece(std::size_t i) const { return pieces[i].whole; }
    const Box& GetBox(std::size_t node) const { return boxes[node]; }

    Vec3D PositionAt(std::size_t piece, double station) const {
        const AlignmentCurves::Curve& c = plan.GetCurves()[pieces[piece].curve];
        double height = 0.0;
        (void)profile.GetHeight(station, height);
        return Vec3D((c.origin - origin.GetPoint2D()) + c.curve.At(AlongOf(piece, station)).position,
                     height - origin.GetZ());
    }
    /// Pieces that join without a gap. At a gap a station stands for both its sides, but in a run for one of them.
    struct Run {
        std::size_t first;
        std::size_t last;
        double from;
        double to;
    };

    State At(const Run& run, double station) const {
        const auto start = pieces.begin() + static_cast<std::ptrdiff_t>(run.first);
        const auto end = pieces.begin() + static_cast<std::ptrdiff_t>(run.last) + 1;
        const auto next = std::upper_bound(start + 1, end, station,
                                           [](double s, const Piece& piece) { return s < piece.whole.from; });
        const auto piece = static_cast<std::size_t>(next - pieces.begin()) - 1;
        const detail::PlanCurve& curve = plan.GetCurves()[pieces[piece].curve].curve;
        const double along = AlongOf(piece, station);
        const Vec2D tangent = curve.At(along).velocity;
        Profile::Place place;
        (void)profile.GetPlace(station, place);
        const double q = 1.0 + place.grade * place.grade;
        return {PositionAt(piece, station), Vec3D(tangent, place.grade),
                Vec3D(tangent.GetNormalVector(true) * curve.GetCurvature(along), place.curvature * q * std::sqrt(q))};
    }
    Stretch Between(std::size_t piece, double from, double to, const Vec3D& start, const Vec3D& end) const {
        return {piece, from, to, start, end, pieces[piece].bend * (to - from) * (to - from) / 8.0};
    }
    Run GetRun(std::size_t piece) const {
        std::size_t first = piece;
        std::size_t last = piece;
        while (first > 0 && FollowsOn(first)) --first;
        while (last + 1 < pieces.size() && FollowsOn(last + 1)) ++last;
        return {first, last, pieces[first].whole.from, pieces[last].whole.to};
    }

private:
    struct Piece {
        Stretch whole;
        std::size_t curve;
        double bend;  // bound of the second derivative
    };

    double AlongOf(std::size_t piece, double station) const {
        const std::size_t curve = pieces[piece].curve;
        return std::clamp(station - plan.GetStarts()[curve], 0.0, plan.GetCurves()[curve].length);
    }
    void Append(double from, double to) {
        double height = 0.0;
        const double middle = from + 0.5 * (to - from);
        if (!(to > from) || !profile.GetHeight(middle, height)) return;
        const std::size_t curve = plan.CurveAt(middle);
        const double bend =
            std::hypot(plan.GetMostCurvature(curve, from, to), profile.GetMostSecondDerivative(from, to));
        pieces.push_back({{}, curve, bend});
        const std::size_t i = pieces.size() - 1;
        const Stretch whole = Between(i, from, to, PositionAt(i, from), PositionAt(i, to));
        isFinite = isFinite && std::isfinite(whole.start.NormSquared() + whole.end.NormSquared() + whole.sag);
        pieces[i].whole = whole;
    }
    bool FollowsOn(std::size_t i) const {
        return pieces[i].whole.from == pieces[i - 1].whole.to &&
               (pieces[i].curve == pieces[i - 1].curve || plan.GetCurves()[pieces[i].curve].followsOn);
    }
    void Build(std::size_t node, std::size_t from, std::size_t to) {
        if (to - from == 1) {
            const Stretch& whole = pieces[from].whole;
            const Vec3D pad = Vec3D(1.0, 1.0, 1.0) * whole.sag;
            boxes[node] = {whole.start - pad, whole.start + pad};
            boxes[node].Add(whole.end - pad);
            boxes[node].Add(whole.end + pad);
            return;
        }
        const std::size_t middle = from + (to - from) / 2;
        Build(2 * node, from, middle);
        Build(2 * node + 1, middle, to);
        boxes[node] = boxes[2 * node];
        boxes[node].Add(boxes[2 * node + 1].low);
        boxes[node].Add(boxes[2 * node + 1].high);
    }

    const AlignmentCurves& plan;
    const Profile& profile;
    Point3D origin;
    bool isFinite = true;
    std::vector<Piece> pieces;
    std::vector<Box> boxes;
};

// Shares of two segments where they come nearest to each other.
struct Nearest {
    double first = 0.0;
    double second = 0.0;
    double distance = 0.0;
};

Nearest NearestOf(const Stretch& a, const Stretch& b) {
    const Vec3D u = a.end - a.start;
    const Vec3D v = b.end - b.start;
    const Vec3D w = b.start - a.start;
    const double uu = u.NormSquared();
    const double uv = u.DotProduct(v);
    const double vv = v.NormSquared();
    const double cross = uu * vv - uv * uv;
    const double p = (w.DotProduct(u) * vv - w.DotProduct(v) * uv) / cross;
    const double q = (w.DotProduct(u) * uv - w.DotProduct(v) * uu) / cross;
    if (p >= 0.0 && p <= 1.0 && q >= 0.0 && q <= 1.0) return {p, q, (w + v * q - u * p).Length()};
    // Else an end is one of the two places.
    Nearest nearest{0.0, 0.0, std::numeric_limits<double>::infinity()};
    const auto offer = [&](double first, double second) {
        const double distance = (w + v * second - u * first).Length();
        if (distance < nearest.distance) nearest = {first, second, distance};
    };
    const auto share = [](double along, double squared) {
        return squared > 0.0 ? std::clamp(along / squared, 0.0, 1.0) : 0.0;
    };
    offer(0.0, share(-w.DotProduct(v), vv));
    offer(1.0, share((u - w).DotProduct(v), vv));
    offer(share(w.DotProduct(u), uu), 0.0);
    offer(share((w + v).DotProduct(u), uu), 1.0);
    return nearest;
}

// Halves pairs of boxes, then of stretches, until none can be nearer than the nearest pair of points by more than the
// tolerance.
class Search {
public:
    Search(const Axis& firstAxis, const Axis& secondAxis, double allowed)
        : first(firstAxis), second(secondAxis), tolerance(std::max(allowed, leastTolerance)) {}

    bool Find() {
        VisitNodes({1, 0, first.size()}, {1, 0, second.size()});
        return std::isfinite(best) && pairs < mostPairs;
    }
    void Refine();

    double best = std::numeric_limits<double>::infinity();
    double firstStation = 0.0;
    double secondStation = 0.0;
    Vec3D firstPosition;
    Vec3D secondPosition;

private:
    void Descend(const Axis::Run& run, const Axis::Run& otherRun);

    struct Node {
        Node GetHalf(bool isSecond) const {
            const std::size_t middle = from + (to - from) / 2;
            return isSecond ? Node{2 * index + 1, middle, to} : Node{2 * index, from, middle};
        }
        std::size_t size() const { return to - from; }

        std::size_t index;
        std::size_t from;
        std::size_t to;
    };

    bool CanBeNearer(double bound) const { return bound < best - tolerance && pairs < mostPairs; }
    double DistanceOf(const Node& a, const Node& b) const {
        return first.GetBox(a.index).Distance(second.GetBox(b.index));
    }
    void VisitNodes(const Node& a, const Node& b) {
        if (a.size() == 1 && b.size() == 1) return Visit(first.GetPiece(a.from), second.GetPiece(b.from));
        const bool halvesFirst = a.size() >= b.size();
        const Node halves[] = {(halvesFirst ? a : b).GetHalf(false), (halvesFirst ? a : b).GetHalf(true)};
        double distances[2];
        for (const int i : {0, 1}) distances[i] = halvesFirst ? DistanceOf(halves[i], b) : DistanceOf(a, halves[i]);
        const int nearer = distances[1] < distances[0] ? 1 : 0;
        for (const int i : {nearer, 1 - nearer}) {
            if (!CanBeNearer(distances[i])) continue;
            if (halvesFirst) {
                VisitNodes(halves[i], b);
            } else {
                VisitNodes(a, halves[i]);
            }
        }
    }
    void Visit(const Stretch& a, const Stretch& b) {
        ++pairs;
        const Nearest nearest = NearestOf(a, b);
        const double bound = std::max(0.0, nearest.distance - (a.sag + b.sag));
        if (!CanBeNearer(bound)) return;
        const double s = a.from + nearest.first * (a.to - a.from);
        const double t = b.from + nearest.second * (b.to - b.from);
        const double distance = (second.PositionAt(b.piece, t) - first.PositionAt(a.piece, s)).Length();
        if (distance < best) {
            best = distance;
            firstStation = s;
            secondStation = t;
            firstPiece = a.piece;
            secondPiece = b.piece;
        }
        if (!CanBeNearer(bound)) return;
        const bool halvesFirst = a.sag >= b.sag;
        const Stretch& whole = halvesFirst ? a : b;
        const Axis& axis = halvesFirst ? first : second;
        const double middle = whole.from + 0.5 * (whole.to - whole.from);
        if (!(middle > whole.from && middle < whole.to)) return;
        const Vec3D at = axis.PositionAt(whole.piece, middle);
        const Stretch halves[] = {axis.Between(whole.piece, whole.from, middle, whole.start, at),
                                  axis.Between(whole.piece, middle, whole.to, at, whole.end)};
        const int nearer = (halvesFirst ? nearest.first : nearest.second) > 0.5 ? 1 : 0;
        for (const int i : {nearer, 1 - nearer}) {
            if (halvesFirst) {
                Visit(halves[i], b);
            } else {
                Visit(a, halves[i]);
            }
        }
    }

    const Axis& first;
    const Axis& second;
    double tolerance;
    std::size_t firstPiece = 0;
    std::size_t secondPiece = 0;
    int pairs = 0;
};

void Search::Refine() {
    const Axis::Run run = first.GetRun(firstPiece);
    const Axis::Run otherRun = second.GetRun(secondPiece);
    Descend(run, otherRun);
    firstPosition = first.At(run, firstStation).position;
    secondPosition = second.At(otherRun, secondStation).position;
}

// Newton's method on half the squared distance, kept where the axes have no gaps.
void Search::Descend(const Axis::Run& run, const Axis::Run& otherRun) {
    constexpr int mostSteps = 50;
    constexpr double negligible = 1e-11;  // a length along the plan
    for (int k = 0; k < mostSteps; ++k) {
        const State p = first.At(run, firstStation);
        const State q = second.At(otherRun, secondStation);
        const Vec3D gap = p.position - q.position;
        const double gs = gap.DotProduct(p.first);
        const double gt = -gap.DotProduct(q.first);
        const double ss = p.first.NormSquared() + gap.DotProduct(p.second);
        const double st = -p.first.DotProduct(q.first);
        const double tt = q.first.NormSquared() - gap.DotProduct(q.second);
        const double determinant = ss * tt - st * st;
        double ds = -gs / p.first.NormSquared();
        double dt = 0.0;
        if (ss > 0.0 && determinant > 1e-12 * ss * std::abs(tt)) {
            ds = (st * gt - tt * gs) / determinant;
            dt = (st * gs - ss * gt) / determinant;
        } else if (k % 2 == 1) {  // alike along a valley: one place, then the other
            ds = 0.0;
            dt = -gt / q.first.NormSquared();
        }
        // An end holds one of them; the other goes on by itself.
        const double s = std::clamp(firstStation + ds, run.from, run.to);
        if (s != firstStation + ds && tt > 0.0) dt = -(gt + st * (s - firstStation)) / tt;
        const double t = std::clamp(secondStation + dt, otherRun.from, otherRun.to);
        if (t != secondStation + dt && ss > 0.0) ds = -(gs + st * (t - secondStation)) / ss;
        ds = std::clamp(firstStation + ds, run.from, run.to) - firstStation;
        dt = t - secondStation;
        if (!(std::abs(ds) + std::abs(dt) > negligible) && (determinant > 0.0 || k % 2 == 1)) return;
        double share = 1.0;
        for (; share > 1e-6; share *= 0.5) {
            const double reached = (first.At(run, firstStation + share * ds).position -
                                    second.At(otherRun, secondStation + share * dt).position)
                                       .Length();
            if (reached <= best) {
                best = reached;
                break;
            }
        }
        if (!(share > 1e-6)) return;
        firstStation += share * ds;
        secondStation += share * dt;
    }
}

}  // namespace

bool Alignment::GetNearestApproach(const Alignment& other, double tolerance, Approach& approach) const {
    const AlignmentCurves& curvesHere = GetCurves();
    const AlignmentCurves& curvesThere = other.GetCurves();
    if (!(tolerance > 0.0) || curvesHere.IsEmpty() || curvesThere.IsEmpty()) return false;
    double height = 0.0;
    (void)profile.GetHeight(profile.GetStart(), height);
    const Point3D origin(curvesHere.GetCurves().front().origin, height);
    const Axis axis(curvesHere, profile, origin);
    const Axis otherAxis(curvesThere, other.profile, origin);
    if (axis.size() == 0 || otherAxis.size() == 0 || !axis.IsFinite() || !otherAxis.IsFinite()) return false;
    Search search(axis, otherAxis, tolerance);
    if (!search.Find()) return false;
    search.Refine();
    approach = {search.firstStation, search.secondStation, origin + search.firstPosition,
                origin + search.secondPosition, search.best};
    return true;
}

}  // namespace Kalvio::Math
