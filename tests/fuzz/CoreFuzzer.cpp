#include "fuzz/Bytes.h"

using namespace Kalvio::Math;

namespace {

void CheckAngles(double value) {
    const double stored = Angle(value).GetRadians();
    const double signedHalf = Angle::NormalizeAnglePiMinusPi(value);
    const double positive = Angle::NormalizeZero2Pi(value);
    See({stored, signedHalf, positive, Angle(value).GetDegrees()});
    if (!std::isfinite(value)) return;
    Require(stored > -detail::twoPi && stored <= detail::twoPi);
    Require(signedHalf > -detail::pi && signedHalf <= detail::pi);
    Require(positive >= 0.0 && positive <= detail::twoPi);
    Require(Angle::NormalizeAngle(stored) == stored);
}

void CheckBoxes(const Point2D& a, const Point2D& b, const Point2D& c, const Point2D& d) {
    const BoundingBox2D first(a, b), second(c, d), both = first + second;
    (void)both.IsPointInside(a, 0.0);
    const double overlap = first.GetIntersectionArea(second);
    const BoundingBoxND firstND(first), secondND(second);
    const bool touching = firstND.Intersects(secondND);
    (void)(firstND + secondND).GetArea();
    if (first.GetDiagonalLength() + second.GetDiagonalLength() + both.GetDiagonalLength() < detail::largestDouble) {
        Require(overlap >= 0.0 && overlap == second.GetIntersectionArea(first));
        Require(touching == secondND.Intersects(firstND));
    }
    See((OrientedBoundingBox2D(a, b - a, c - b, d - c) + OrientedBoundingBox2D(second))
            .GetBoundingBox2D()
            .GetMinPoint());
}

void CheckVectors(const std::vector<double>& values, double tolerance) {
    VecND v(values);
    const PointND p(values);
    const bool isFinite = std::isfinite(v.NormSquared());
    Require(!isFinite || v.NormSquared() >= 0.0);
    Require(v.IsEqualTo(v + v - v, tolerance) || !(std::abs(tolerance) > 1e-9 * v.Norm()) || !isFinite ||
            tolerance < 0);
    const double length = v.Norm();
    Require(!isFinite || !(length > 0.005) || std::abs(v.Normalize().Norm() - 1.0) <= 1e-9);
    (void)p.IsEqualTo(PointND(Point2D(tolerance, length)), tolerance);
    const Point2DM measured(tolerance, length, length);
    (void)measured.IsEqualTo(measured, tolerance);
    const Tolerances tolerances(tolerance, length);
    Require(!(tolerances.SystemEpsilon() > tolerances.UserTolerance()));
    const bool isEqual = Numbers::Compare(tolerance, Numbers::CompareOperator::Equal, length, 1.0);
    Require(isEqual == Numbers::Compare(length, Numbers::CompareOperator::Equal, tolerance, 1.0));
}

// Of tame vectors.
void CheckProducts(const Vec3D& a, const Vec3D& b) {
    const Vec3D normal = a.CrossProduct(b);
    const double lengths = a.Length() * b.Length(), cosine = a.Vec3DCosAngle(b);
    RequireNear(normal.DotProduct(a), 0.0, 1e-14 * lengths * a.Length());
    Require((normal + b.CrossProduct(a)).Length() == 0.0 && normal.GetZ() == a.PerpDotProduct(b));
    RequireNear(normal.NormSquared(), lengths * lengths * (1.0 - cosine * cosine), 1e-14 * lengths * lengths);
    const Vec2D plan(a.GetX(), a.GetY()), left = plan.GetNormalVector(true), right = plan.GetNormalVector(false);
    Require(plan.DotProduct(left) == 0.0 && plan.PerpDotProduct(left) == plan.NormSquared());
    Require(plan.PerpDotProduct(right) == -plan.NormSquared());
    int first = -1, second = -1;  // the two major axes keep the sense of a triangle seen against its normal
    normal.Find2MajorAxisForProjection(first, second);
    Require(a[first] * b[second] - a[second] * b[first] > 0.0 || normal.Length() == 0.0);
}

}  // namespace

void Kalvio::Math::FuzzCore(Bytes& bytes) {
    CheckAngles(bytes.TakeDouble());
    const int n = bytes.Take<int>(), k = bytes.Take<int>();
    (void)Numbers::Combination(n, k);
    (void)Numbers::Permutations(n, k);
    (void)Numbers::GetNumberOfDigits(bytes.TakeDouble());
    const Point2D a = bytes.TakePoint(), b = bytes.TakePoint(), c = bytes.TakePoint();
    CheckBoxes(a, b, c, bytes.TakePoint());
    const Vec2D v = bytes.TakeVector();
    const double between = v.GetAngle(bytes.TakeVector(), WindingValue::CounterClockwise).GetRadians();
    See(between);
    Require(!(between < 0.0 || between > detail::twoPi));
    CheckVectors(bytes.TakeDoubles(9), a.GetX());
    const Vec3D first = bytes.TakeVector3D(), second = bytes.TakeVector3D();
    if (bytes.Tame()) CheckProducts(first, second);
}
