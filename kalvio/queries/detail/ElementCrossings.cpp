#include "kalvio/queries/detail/ElementCrossings.h"

#include "kalvio/core/Tolerances.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/queries/detail/CurveContacts.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <tuple>

namespace Kalvio::Math::detail {

namespace {

// Rounding of differences of coordinates, and of points computed along a curve.
constexpr double coordinateRounding = 2.0 * std::numeric_limits<double>::epsilon();
constexpr double curveRounding = 8.0 * std::numeric_limits<double>::epsilon();

const Point2D& OriginOf(const CrossingOperand& operand) {
    return operand.GetCircle() != nullptr ? operand.GetCircle()->GetCenter() : operand.GetElement()->GetStart();
}

bool IsLongerThan(const CrossingOperand& operand, double minimum) {
    const double length = operand.GetLength();
    return length > minimum && length <= largestDouble;
}

double RoundingOf(const Point2D& origin, const CrossingOperand& a, const CrossingOperand& b) {
    const double coordinates = std::max(std::abs(origin.GetX()), std::abs(origin.GetY()));
    return coordinateRounding * coordinates + curveRounding * (a.GetLength() + b.GetLength());
}

bool HasClosedForm(const PlanCurve& curve) { return curve.AsStraight() != nullptr || curve.AsRound() != nullptr; }

/// The common points of two curves, from their contacts.
class Crossings {
public:
    Crossings(const PlanCurve& firstCurve, const PlanCurve& secondCurve, const ContactLimits& contactLimits,
              double parallel)
        : first(firstCurve), second(secondCurve), limits(contactLimits), angle(parallel) {}

    void Find();
    void Report(const Point2D& origin, std::vector<ElementCrossing>& crossings,
                std::vector<ElementOverlap>& overlaps) const;

private:
    struct Stretch {
        CurveContact from;
        CurveContact to;
    };

    void FindStretches();
    bool IsStretch(const CurveContact& a, const CurveContact& b) const;
    bool AreParallel(const CurveContact& contact, double length) const;
    bool IsOnStretch(const CurveContact& contact) const;
    void Merge();
    bool AreOne(const CurveContact& a, const CurveContact& b) const;
    bool StaysWithin(double limit, const CurveContact& a, double onFirst, double onSecond) const;
    ElementCrossing CrossingAt(const CurveContact& contact, const Point2D& origin) const;

    const PlanCurve& first;
    const PlanCurve& second;
    ContactLimits limits;
    double angle;  // [rad]
    std::vector<CurveContact> contacts;
    std::vector<Stretch> stretches;
};

void Crossings::Find() {
    FindEndContacts(first, second, limits.reach, contacts);
    FindStretches();
    std::erase_if(contacts, [](const CurveContact& contact) { return !contact.isEnd; });
    // Curves that leave each other may cross elsewhere. Transition curves along each other would take long to search.
    if (stretches.empty() || (HasClosedForm(first) && HasClosedForm(second)))
        FindContacts(first, second, limits, contacts);
    std::erase_if(contacts, [](const CurveContact& contact) { return !std::isfinite(contact.point.NormSquared()); });
    Merge();
}

// Curves that lie along each other do so from an end of one to an end of one.
void Crossings::FindStretches() {
    std::stable_sort(contacts.begin(), contacts.end(),
                     [](const CurveContact& a, const CurveContact& b) { return a.onFirst < b.onFirst; });
    for (std::size_t i = 0, next = 1; next < contacts.size(); ++next) {
        if (contacts[next].onFirst - contacts[i].onFirst <= limits.reach) continue;  // the same place
        if (IsStretch(contacts[i], contacts[next])) {
            if (!stretches.empty() && stretches.back().to.onFirst >= contacts[i].onFirst) {
                stretches.back().to = contacts[next];
            } else {
                stretches.push_back({contacts[i], contacts[next]});
            }
        }
        i = next;
    }
    if (stretches.size() < 2 || !first.IsClosed()) return;
    if (stretches.front().from.onFirst > first.GetFrom() || stretches.back().to.onFirst < first.GetTo()) return;
    stretches.back().to = stretches.front().to;  // across the seam
    stretches.erase(stretches.begin());
}

bool Crossings::IsStretch(const CurveContact& a, const CurveContact& b) const {
    const double length = b.onFirst - a.onFirst;
    return AreParallel(a, length) && AreParallel(b, length) &&
           StaysWithin(limits.reach, a, length, b.onSecond - a.onSecond);
}

bool Crossings::AreParallel(const CurveContact& contact, double length) const {
    const Vec2D v = first.At(contact.onFirst).velocity;
    const Vec2D w = second.At(contact.onSecond).velocity;
    return std::abs(v.PerpDotProduct(w)) <= std::max(angle, limits.noise / length) * v.Length() * w.Length();
}

bool Crossings::IsOnStretch(const CurveContact& contact) const {
    return std::any_of(stretches.begin(), stretches.end(), [&](const Stretch& stretch) {
        const bool isAfter = contact.onFirst >= stretch.from.onFirst - limits.reach;
        const bool isBefore = contact.onFirst <= stretch.to.onFirst + limits.reach;
        return stretch.from.onFirst <= stretch.to.onFirst ? isAfter && isBefore : isAfter || isBefore;
    });
}

// Keeps the best of those that are one, true common points before near misses, and of these the ends first.
void Crossings::Merge() {
    const auto rank = [this](const CurveContact& contact) { return contact.gap <= limits.noise ? 0.0 : contact.gap; };
    std::erase_if(contacts, [this](const CurveContact& contact) { return IsOnStretch(contact); });
    std::sort(contacts.begin(), contacts.end(), [&](const CurveContact& a, const CurveContact& b) {
        return std::make_tuple(rank(a), !a.isEnd, a.onFirst, a.onSecond) <
               std::make_tuple(rank(b), !b.isEnd, b.onFirst, b.onSecond);
    });
    std::size_t kept = 0;
    for (const CurveContact& contact : contacts) {
        const auto end = contacts.begin() + static_cast<std::ptrdiff_t>(kept);
        const bool isKnown =
            std::any_of(contacts.begin(), end, [&](const CurveContact& k) { return AreOne(k, contact); });
        if (!isKnown) contacts[kept++] = contact;
    }
    contacts.resize(kept);
    std::stable_sort(contacts.begin(), contacts.end(),
                     [](const CurveContact& a, const CurveContact& b) { return a.onFirst < b.onFirst; });
}

// Contacts are one where the curves stay together between them.
bool Crossings::AreOne(const CurveContact& a, const CurveContact& b) const {
    const auto along = [this](const PlanCurve& curve, double difference) {
        const RoundCurve* const arc = curve.AsRound();
        if (arc == nullptr) return difference;
        const double perimeter = twoPi * arc->GetRadius();
        const bool endsWhereItStarts = perimeter - (curve.GetTo() - curve.GetFrom()) <= limits.reach;
        return endsWhereItStarts ? std::remainder(difference, perimeter) : difference;
    };
    const double onFirst = along(first, b.onFirst - a.onFirst);
    const double onSecond = along(second, b.onSecond - a.onSecond);
    const double near = 2.0 * limits.reach;
    if (std::abs(onFirst) <= near && std::abs(onSecond) <= near && (b.point - a.point).Length() <= limits.reach)
        return true;
    const bool areTrue = a.gap <= limits.noise && b.gap <= limits.noise;
    return StaysWithin(areTrue ? limits.noise : limits.reach, a, onFirst, onSecond);
}

bool Crossings::StaysWithin(double limit, const CurveContact& a, double onFirst, double onSecond) const {
    for (const double share : {0.5, 0.25, 0.75, 0.125, 0.375, 0.625, 0.875}) {
        const Vec2D point = first.At(a.onFirst + share * onFirst).position;
        const double q = NearestParameter(second, point, a.onSecond + share * onSecond);
        if (!((second.At(q).position - point).Length() <= limit)) return false;
    }
    return true;
}

ElementCrossing Crossings::CrossingAt(const CurveContact& contact, const Point2D& origin) const {
    return {origin + contact.point, first.StationOf(contact.onFirst), second.StationOf(contact.onSecond)};
}

void Crossings::Report(const Point2D& origin, std::vector<ElementCrossing>& crossings,
                       std::vector<ElementOverlap>& overlaps) const {
    for (const CurveContact& contact : contacts) crossings.push_back(CrossingAt(contact, origin));
    for (const Stretch& stretch : stretches) {
        const bool isAllAround = (stretch.to.point - stretch.from.point).Length() <= limits.reach;
        overlaps.push_back({CrossingAt(stretch.from, origin), CrossingAt(stretch.to, origin), isAllAround});
    }
}

// By discs that hold the curves, before anything is copied: no curve leads further from the middle of its ends than
// half its length.
bool AreFarApart(const CrossingOperand& a, const CrossingOperand& b, double reach) {
    if (a.IsInfinite() || b.IsInfinite()) return false;
    const auto centerOf = [](const CrossingOperand& operand) {
        if (const Circle2D* const circle = operand.GetCircle()) return circle->GetCenter();
        const Point2D& start = operand.GetElement()->GetStart();
        return start + (operand.GetElement()->GetEnd() - start) * 0.5;
    };
    const auto radiusOf = [](const CrossingOperand& operand) {
        const Circle2D* const circle = operand.GetCircle();
        return circle != nullptr ? std::abs(circle->GetRadius()) : 0.5 * operand.GetElement()->GetLength();
    };
    return centerOf(a).Distance(centerOf(b)) > radiusOf(a) + radiusOf(b) + reach;
}

}  // namespace

CrossingOperand CrossingOperand::InfiniteLine(const Line2D& line) {
    CrossingOperand operand(line);
    operand.isInfinite = true;
    return operand;
}

double CrossingOperand::GetLength() const { return circle != nullptr ? circle->GetLength() : element->GetLength(); }

IntersectionResult CrossElements(const CrossingOperand& first, const CrossingOperand& second,
                                 const Tolerances& tolerances, std::vector<ElementCrossing>& crossings,
                                 std::vector<ElementOverlap>& overlaps) {
    const double user = std::abs(tolerances.UserTolerance());
    if (!IsLongerThan(first, user) || !IsLongerThan(second, user)) return IntersectionResult::Degenerate;
    const Point2D origin = OriginOf(first.IsInfinite() ? second : first);
    ContactLimits limits;
    limits.noise = std::max(std::abs(tolerances.SystemEpsilon()), RoundingOf(origin, first, second));
    limits.reach = std::max(user, limits.noise);
    if (AreFarApart(first, second, limits.reach)) return IntersectionResult::NoIntersection;

    std::optional<PlanCurve> a = PlanCurve::Make(first, origin);
    std::optional<PlanCurve> b = PlanCurve::Make(second, origin);
    if (!a || !b) return IntersectionResult::Degenerate;
    if (a->IsInfinite() && !b->IsInfinite()) a->ClipTo(b->GetDiscCenter(), b->GetDiscRadius() + limits.reach);
    if (b->IsInfinite() && !a->IsInfinite()) b->ClipTo(a->GetDiscCenter(), a->GetDiscRadius() + limits.reach);

    Crossings found(*a, *b, limits, std::abs(tolerances.AngleTolerance().GetRadians()));
    found.Find();
    const std::size_t crossingsBefore = crossings.size();
    const std::size_t overlapsBefore = overlaps.size();
    found.Report(origin, crossings, overlaps);
    if (overlaps.size() > overlapsBefore) return IntersectionResult::Coincident;
    return crossings.size() > crossingsBefore ? IntersectionResult::Intersecting : IntersectionResult::NoIntersection;
}

}  // namespace Kalvio::Math::detail
