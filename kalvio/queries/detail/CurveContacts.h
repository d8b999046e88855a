#pragma once

#include "kalvio/queries/detail/PlanCurve.h"

#include <vector>

/// Places where two curves meet or come near each other, before those that belong together are merged.
namespace Kalvio::Math::detail {

struct CurveContact {
    double onFirst = 0.0;  // parameters
    double onSecond = 0.0;
    Vec2D point;
    double gap = 0.0;  // distance of the curves there
    bool isEnd = false;
};

/// What counts as zero. Both are lengths.
struct ContactLimits {
    double reach = 0.0;  // curves this near to each other touch: the user tolerance, or the noise where that is larger
    double noise = 0.0;  // closer than that, rounding decides: the system epsilon or the rounding of the coordinates
};

/// Appends the contacts of two curves, of which at least one is bounded.
void FindContacts(const PlanCurve& first, const PlanCurve& second, const ContactLimits& limits,
                  std::vector<CurveContact>& contacts);

/// Appends the ends of each curve that lie within the reach of the other. The seam of a full circle, which is no end
/// (`isEnd` is false), comes with them.
void FindEndContacts(const PlanCurve& first, const PlanCurve& second, double reach,
                     std::vector<CurveContact>& contacts);

/// The parameter, near `guess`, of the point of the curve nearest to a point near it.
double NearestParameter(const PlanCurve& curve, const Vec2D& point, double guess);

}  // namespace Kalvio::Math::detail
