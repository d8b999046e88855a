#include <kalvio/core/Point2D.h>

double HostReach(const Kalvio::Math::Point2D& point) { return point.Distance(Kalvio::Math::Point2D()); }
