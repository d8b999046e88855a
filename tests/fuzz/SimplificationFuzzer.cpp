#include "fuzz/Bytes.h"

using namespace Kalvio::Math;

// Valid areas stay valid and run as they did, simple chains stay simple, and lines and arcs keep
// to the points that they stand for.
void Kalvio::Math::FuzzSimplification(Bytes& bytes) {
    const bool tame = bytes.Tame();
    const bool byArea = bytes.TakeCount(2) == 0;
    const double limit = bytes.TakeDouble();
    const auto areas = bytes.TakeSome(4, [&bytes] { return bytes.TakePolygon(0, 16); });
    std::vector<Polygon2D> made;
    const bool isMade = byArea ? GeometrySimplifier::SimplifyByArea(areas, limit, made)
                               : GeometrySimplifier::SimplifyByDistance(areas, limit, made);
    See(made);
    Require(isMade ? made.size() == areas.size() : made.empty());
    Require(isMade == (limit >= 0.0) || !tame);
    for (std::size_t i = 0; isMade && i < areas.size(); ++i) {
        Point2D where;
        Require(made[i].GetTotalSize() <= areas[i].GetTotalSize());
        if (!tame || !areas[i].Validate(where, true, 0.0)) continue;
        Require(made[i].Validate(where, true, 0.0));
        Require(made[i].GetWinding() == areas[i].GetWinding());
    }
    const LineString2D chain(bytes.TakePoints(16));
    LineString2D simple;
    const bool isSimple = byArea ? GeometrySimplifier::SimplifyByArea(chain, limit, simple, true)
                                 : GeometrySimplifier::SimplifyByDistance(chain, limit, simple, true);
    if (isSimple && tame && !chain.IsSelfCrossing(0.0)) Require(!simple.IsSelfCrossing(0.0));
    Polyline2D curves;
    if (GeometrySimplifier::ToLinesAndArcs(chain, limit, curves) && tame) {
        See(curves.GetLength());
        Require(curves.GetNrOfElements() < chain.GetSize() && curves.IsContinuous(1e-6));
        for (const Point2D& p : chain.GetPoints()) {
            Require(p.Distance(Projection::NearestPointOnPolyline(p, curves, 0.0)) <= limit + 1e-6);
        }
    }
    if (GeometryWeeder::WeedBySpacing(chain, limit, simple)) {
        for (unsigned int i = 1; i + 1 < simple.GetSize(); ++i) {
            Require(!(simple.GetPoints()[i].Distance(simple.GetPoints()[i - 1]) < limit));
        }
        Require(GeometryWeeder::WeedByAngle(chain, Angle(1.0), simple) && simple.GetSize() <= chain.GetSize());
    }
    LineString3D inSpace(bytes.TakePoints3D());
    const unsigned int size = inSpace.GetSize();
    if (GeometrySimplifier::SimplifyByDistance(inSpace, limit, inSpace)) Require(inSpace.GetSize() <= size);
}
