#include <kalvio/Math.h>

#include <iostream>
#include <memory>

using namespace Kalvio::Math;

int main() {
    const Point2D from(385000.0, 6672000.0);
    const Point2D to(385003.0, 6672004.0);
    const std::unique_ptr<IGeometry> box(BoundingBox2D(from, to).Clone());
    const bool works = from.Distance(to) == 5.0 && box->GetType() == MathTypes::BoundingBox2D &&
                       Numbers::Combination(5, 2) == 10 && Point2D::origo() == Point2D();
    std::cout << (works ? "the library works\n" : "wrong results\n");
    return works ? 0 : 1;
}
