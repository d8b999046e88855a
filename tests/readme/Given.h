#pragma once

#include <kalvio/Math.h>

/// What the examples in the comments of the headers take as given.
namespace Given {

using namespace Kalvio::Math;
using namespace Kalvio::Math::SpatialIndexes;

inline const Tolerances tolerances = Tolerances::Standard();
inline const Point2D peg, p;
inline const Clothoid transition;
inline const Polygon2D polygon;
inline const std::vector<Point3D> samples;
inline const std::vector<Point2D> grid, survey;
inline const Line2D border;
inline Line2D kerb;
inline double value = 0.0, variance = 0.0;
inline const Polyline2D plan;
inline const Profile profile;
inline const TinSurfacePatch3D surface, ground, design;
inline const Alignment road;
inline CrossSections::Mass total;
inline const std::vector<Polygon2D> parcels;
inline void Draw(const std::vector<Polygon2D>&) {}
inline void Show(double) {}
inline const struct Pipe : ISpatialIndexData {
    void GetEnvelope(BoundingBoxND& box) const override { box = BoundingBoxND(2); }
} pipe;

}  // namespace Given
