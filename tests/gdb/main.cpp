#include <kalvio/Math.h>

using namespace Kalvio::Math;

// gdb stops here and prints the arguments.
void Stop(const Point2D& point, const Vec3D& vector, const Angle& angle, const BoundingBox2D& box,
          const BoundingBoxND& boxND, const LineString3D& string, const Polygon2D& polygon, const Line2D& line);
void Stop(const Point2D& point, const Vec3D& vector, const Angle& angle, const BoundingBox2D& box,
          const BoundingBoxND& boxND, const LineString3D& string, const Polygon2D& polygon, const Line2D& line) {
    static_cast<void>(point.GetX() + vector.GetX() + angle.GetRadians() + box.GetArea() + boxND.GetArea() +
                      string.GetLength() + polygon.GetArea() + line.GetLength());
}

int main() {
    Polygon2D polygon{{0, 0}, {1, 0}, {1, 1}};
    polygon.AppendHoleBoundary({{0.5, 0.1}, {0.6, 0.1}});
    const BoundingBox2D box(Point2D(0, 0), Point2D(10, 20));
    Stop(Point2D(385000, 6672000.25), Vec3D(0.1, -0.0, 1e-300), Angle(0.5), box, BoundingBoxND(box),
         {{0, 0, 1}, {1, 0, 2}}, polygon, Line2D(Point2D(1, 2), Point2D(3, 4)));
    return 0;
}
