#pragma once

#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Line2D.h"
#include "kalvio/curves/Polyline2D.h"

#include <cstdint>

namespace Kalvio::Math {

/// Line, clothoid, arc, clothoid, to the left and to the right in turn: about 50 m an element.
inline Polyline2D Road(std::int64_t elements) {
    Polyline2D road;
    Point2D at(385000.0, 6672000.0);
    Vec2D along(1.0, 0.0);
    for (std::int64_t i = 0; i < elements; ++i) {
        const double radius = (i / 4) % 2 == 0 ? 300.0 : -300.0;
        const double parameter = Clothoid::ComputeParameter(300.0, 50.0);
        switch (i % 4) {
            case 0:
                road.AppendElement(new Line2D(at, along * 50.0));
                break;
            case 1:
                road.AppendElement(new Clothoid(0.0, radius, parameter, at, along));
                break;
            case 2:
                road.AppendElement(new Arc2D(at, at + along.GetNormalVector(true) * radius, Angle(50.0 / radius)));
                break;
            default:
                road.AppendElement(new Clothoid(radius, 0.0, parameter, at, along));
        }
        Polyline2D::PolylinePoint sample;
        (void)road.MakePointAndTangentAt(static_cast<int>(i),
                                         road.GetElementAtIndex(static_cast<unsigned int>(i)).GetLength(), sample);
        at = road.GetEnd();
        along = sample.tangent;
    }
    return road;
}

}  // namespace Kalvio::Math
