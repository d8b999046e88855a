#pragma once

#include "kalvio/curves/Arc3D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/RingCurve3D.h"

#include <vector>

namespace Kalvio::Math::detail {

/// Points along the ring that span its plane: the ends of its elements, the points of its line strings, and two points
/// inside each arc, so that an arc spans the plane with its chord.
inline std::vector<Point3D> CornersOf(const RingCurve3D& ring) {
    std::vector<Point3D> corners;
    for (unsigned int i = 0; i < ring.GetNrOfElements(); ++i) {
        const IPolyline3DElement& element = ring.GetElementAtIndex(i);
        if (element.GetType() == MathTypes::LineString3D) {
            const std::vector<Point3D>& points = static_cast<const LineString3D&>(element).GetPoints();
            corners.insert(corners.end(), points.begin(), points.end());
            continue;
        }
        corners.push_back(element.GetStart());
        if (element.GetType() == MathTypes::Arc3D) {
            const auto& arc = static_cast<const Arc3D&>(element);
            for (const double part : {1.0 / 3.0, 2.0 / 3.0}) {
                Point3D point;
                if (arc.GetPointOffsetFromStart(arc.GetLength() * part, point)) corners.push_back(point);
            }
        }
        corners.push_back(element.GetEnd());
    }
    return corners;
}

}  // namespace Kalvio::Math::detail
