#pragma once

#include "support/RandomCurves.h"
#include "support/Rings.h"

namespace Kalvio::Math {

inline std::vector<std::vector<Point2D>> RingsOf(const Polygon2D& area) {
    std::vector<std::vector<Point2D>> rings{area.GetPoints()};
    for (unsigned int i = 0; i < area.GetNumHoleBoundaries(); ++i) rings.push_back(area.GetHoleBoundary(i).GetPoints());
    return rings;
}

inline std::vector<RingCurve2D> RingsOf(const PolygonCurve2D& area) {
    std::vector<RingCurve2D> rings{area.GetBoundary()};
    for (unsigned int i = 0; i < area.GetNumInnerRings(); ++i) rings.push_back(area.GetInnerRingAtIndex(i));
    return rings;
}

inline std::vector<Arc2D> ArcsOf(const RingCurve2D& ring) {
    std::vector<Arc2D> arcs;
    for (const IPolyline2DElement& element : ring) {
        if (element.GetType() == MathTypes::Arc2D) arcs.push_back(static_cast<const Arc2D&>(element));
    }
    return arcs;
}

// Positive where the rings of the outside are counter-clockwise and, of curves, those of the holes clockwise.
inline double AreaOf(const Polygon2D& area) { return area.GetArea(); }
inline double AreaOf(const PolygonCurve2D& area) {
    double sum = 0.0;
    for (const RingCurve2D& ring : RingsOf(area)) sum += ring.GetArea();
    return sum;
}
template <class Area>
double AreaOf(const std::vector<Area>& areas) {
    double sum = 0.0;
    for (const Area& area : areas) sum += AreaOf(area);
    return sum;
}

// `PolygonCurve2D::IsPointInside` counts several arcs beside a point once: chords tell more of areas with arcs.
inline Polygon2D ChordsOf(const PolygonCurve2D& area, double height) {
    Polygon2D chords;
    for (const RingCurve2D& ring : RingsOf(area)) {
        Polyline2D chain;
        LineString2D points;
        for (const IPolyline2DElement& element : ring) EXPECT_TRUE(chain.AppendElement(element));
        EXPECT_TRUE(chain.MakeLineStringUsingHeight(0.0, chain.GetLength(), points, height, 1e-6));
        chords.GetSize() == 0 ? void(chords = Polygon2D(points)) : chords.AppendHoleBoundary(points);
    }
    return chords;
}

inline double FromBorder(const Polygon2D& area, const Point2D& p) {
    double least = kInfinity;
    for (const std::vector<Point2D>& ring : RingsOf(area)) {
        least = std::min(least, std::abs(Distance::PointToPolygon(p, ring)));
    }
    return least;
}

}  // namespace Kalvio::Math
