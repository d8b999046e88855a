#include "kalvio/Print.h"

#include "kalvio/core/BoundingBox2D.h"
#include "kalvio/core/BoundingBox3D.h"
#include "kalvio/core/BoundingBoxND.h"
#include "kalvio/core/Matrix2D.h"
#include "kalvio/core/OrientedBoundingBox2D.h"
#include "kalvio/core/Plane3D.h"
#include "kalvio/core/Point2DM.h"
#include "kalvio/core/Quaternion.h"
#include "kalvio/core/Tolerances.h"
#include "kalvio/core/Triangle3D.h"
#include "kalvio/core/detail/Digits.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Arc3D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Circle3D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/Polyline3D.h"
#include "kalvio/meshes/GridSurface.h"
#include "kalvio/meshes/IndexedFaceSet2D.h"
#include "kalvio/meshes/IndexedFaceSet3D.h"
#include "kalvio/meshes/IndexedTriangleSet2D.h"
#include "kalvio/meshes/TinSurfacePatch3D.h"
#include "kalvio/meshes/TriangleStrip3D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/Polygon3D.h"
#include "kalvio/polygons/PolygonCurve2D.h"
#include "kalvio/polygons/PolygonCurve3D.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <vector>

namespace Kalvio::Math {

namespace {

/// A text of items with commas between; what is in parentheses starts anew.
class Writer {
public:
    explicit Writer(std::string& target) : text(target) {}

    void Write(const IMathObject& object);

private:
    /// A new item, and what it is called.
    void Start(std::string_view label = {}) {
        if (!text.empty() && text.back() != '(') text += ", ";
        text += label;
        if (!label.empty()) text += ' ';
    }
    template <class... Values>
    void AddRow(Values... values) {
        text += '(';
        (Add(values), ...);
        text += ')';
    }
    void Add(double value) {
        Start();
        detail::AppendDigits(text, value);
    }
    void AddInPlace(const Point2D& p) { AddRow(p.GetX(), p.GetY()); }
    void AddInPlace(const Vec2D& v) { AddRow(v.GetX(), v.GetY()); }
    void AddInPlace(const Point3D& p) { AddRow(p.GetX(), p.GetY(), p.GetZ()); }
    void AddInPlace(const Vec3D& v) { AddRow(v.GetX(), v.GetY(), v.GetZ()); }
    template <class Values>
    void AddInPlace(const Values& values) {  // doubles, points or rows of them
        text += '(';
        for (const auto& value : values) Add(value);
        text += ')';
    }
    template <class Value>
    void Add(const Value& value) {
        Start();
        AddInPlace(value);
    }
    template <class Value>
    void Add(std::string_view label, const Value& value) {
        Start(label);
        AddInPlace(value);
    }
    void AddPair(std::string_view label, double first, double second) {
        Add(label, first);
        text += ' ';
        detail::AppendDigits(text, second);
    }
    void Add(std::string_view label, double value) {
        Start(label);
        detail::AppendDigits(text, value);
    }
    template <class Values>
    void AddAll(const Values& values) {
        for (const auto& value : values) Add(value);
    }
    template <class Matrix>
    void AddMatrix(const Matrix& matrix, int size) {
        if (matrix.IsUndefined()) {
            text += "undefined";
            return;
        }
        for (int row = 0; row < size; ++row) Add(matrix.GetRow(row));
    }
    template <class Chain>
    void AddElements(const Chain& chain) {
        for (unsigned int i = 0; i < chain.GetNrOfElements(); ++i) {
            Start();
            Write(chain.GetElementAtIndex(i));
        }
    }
    template <class Polygon>
    void AddRings(const Polygon& polygon) {
        Add(polygon.GetPoints());
        for (unsigned int i = 0; i < polygon.GetNumHoleBoundaries(); ++i) Add(polygon.GetHoleBoundary(i).GetPoints());
    }
    template <class Polygon>
    void AddCurveRings(const Polygon& polygon) {
        Write(polygon.GetBoundary());
        for (unsigned int i = 0; i < polygon.GetNumInnerRings(); ++i) {
            Start();
            Write(polygon.GetInnerRingAtIndex(i));
        }
    }
    template <class Set>
    void AddFaces(const Set& set, std::string_view label, unsigned int corners) {
        Add("vertices", set.GetVertices());
        const std::vector<unsigned int>& indexes = set.GetIndexes();
        Start(label);
        const std::size_t size = (std::max)(corners, 1U);
        for (std::size_t i = 0; i < indexes.size(); i += size) {
            const auto first = indexes.begin() + static_cast<std::ptrdiff_t>(i);
            const std::size_t rest = (std::min)(size, indexes.size() - i);
            if (i > 0) text += ", ";
            AddInPlace(std::vector<double>(first, first + static_cast<std::ptrdiff_t>(rest)));
        }
        if (indexes.empty()) text += "none";
    }
    void AddContent(const IMathObject& object);

    std::string& text;
};

void Writer::Write(const IMathObject& object) {
    text += GetName(object.GetType());
    text += '(';
    AddContent(object);
    text += ')';
}

template <class Class>
const Class& As(const IMathObject& object) {
    return static_cast<const Class&>(object);
}

void Writer::AddContent(const IMathObject& object) {
    switch (object.GetType()) {
        case MathTypes::Angle:
            return Add(As<Angle>(object).GetRadians());
        case MathTypes::Arc2D: {
            const auto& arc = As<Arc2D>(object);
            Add("start", arc.GetStart());
            Add("center", arc.GetCenter());
            return Add("sweep", arc.GetAngle().GetRadians());
        }
        case MathTypes::Arc3D: {
            const auto& arc = As<Arc3D>(object);
            Add("start", arc.GetStart());
            Add("center", arc.GetCenter());
            Add("sweep", arc.GetAngle().GetRadians());
            return Add("normal", arc.GetPlane().GetNormal());
        }
        case MathTypes::Circle2D:
            Add("center", As<Circle2D>(object).GetCenter());
            return Add("radius", As<Circle2D>(object).GetRadius());
        case MathTypes::Circle3D: {
            const auto& circle = As<Circle3D>(object);
            Add("center", circle.GetCenter());
            Add("radius", circle.GetRadius());
            return Add("normal", circle.GetPlane().GetNormal());
        }
        case MathTypes::Line2D:
            Add(As<Line2D>(object).GetStart());
            return Add(As<Line2D>(object).GetEnd());
        case MathTypes::Line3D:
            Add(As<Line3D>(object).GetStart());
            return Add(As<Line3D>(object).GetEnd());
        case MathTypes::Matrix2D:
            return AddMatrix(As<Matrix2D>(object), 3);
        case MathTypes::Matrix3D:
            return AddMatrix(As<Matrix3D>(object), 4);
        case MathTypes::MatrixNM:
            for (unsigned int row = 0; row < As<MatrixNM>(object).GetNumRows(); ++row) {
                Add(As<MatrixNM>(object)[row].GetCoordinates());
            }
            return;
        case MathTypes::Plane3D: {
            double a = 0.0, b = 0.0, c = 0.0, d = 0.0;
            As<Plane3D>(object).GetParameters(a, b, c, d);
            return AddAll(std::initializer_list<double>{a, b, c, d});
        }
        case MathTypes::Point2D: {
            const auto& p = As<Point2D>(object);
            return AddAll(std::initializer_list<double>{p.GetX(), p.GetY()});
        }
        case MathTypes::Point2DM: {
            const auto& p = As<Point2DM>(object);
            return AddAll(std::initializer_list<double>{p.GetX(), p.GetY(), p.GetM()});
        }
        case MathTypes::Point3D: {
            const auto& p = As<Point3D>(object);
            return AddAll(std::initializer_list<double>{p.GetX(), p.GetY(), p.GetZ()});
        }
        case MathTypes::PointND:
            return AddAll(As<PointND>(object).GetCoordinates());
        case MathTypes::Vec2D: {
            const auto& v = As<Vec2D>(object);
            return AddAll(std::initializer_list<double>{v.GetX(), v.GetY()});
        }
        case MathTypes::Vec3D: {
            const auto& v = As<Vec3D>(object);
            return AddAll(std::initializer_list<double>{v.GetX(), v.GetY(), v.GetZ()});
        }
        case MathTypes::VecND:
            return AddAll(As<VecND>(object).GetCoordinates());
        case MathTypes::Quaternion: {
            const auto& q = As<Quaternion>(object);
            return AddAll(std::initializer_list<double>{q[0], q[1], q[2], q[3]});
        }
        case MathTypes::Polygon2D:
            return AddRings(As<Polygon2D>(object));
        case MathTypes::Polygon3D:
            return AddRings(As<Polygon3D>(object));
        case MathTypes::PolygonCurve2D:
            return AddCurveRings(As<PolygonCurve2D>(object));
        case MathTypes::PolygonCurve3D:
            return AddCurveRings(As<PolygonCurve3D>(object));
        case MathTypes::LineString2D:
            return AddAll(As<LineString2D>(object).GetPoints());
        case MathTypes::LineString3D:
            return AddAll(As<LineString3D>(object).GetPoints());
        case MathTypes::Clothoid: {
            const auto& clothoid = As<Clothoid>(object);
            Add("start", clothoid.GetStart());
            Add("tangent", clothoid.GetStartTangent());
            AddPair("radii", clothoid.GetStartRadius(), clothoid.GetEndRadius());
            return Add("parameter", clothoid.GetParameter());
        }
        case MathTypes::Parabola: {
            const auto& parabola = As<Parabola>(object);
            double a = 0.0, b = 0.0, c = 0.0;
            parabola.GetParameters(a, b, c);
            Add("start", parabola.GetStart());
            Add("end", parabola.GetEnd());
            return AddAll(std::initializer_list<double>{a, b, c});
        }
        case MathTypes::Polyline2D:
            return AddElements(As<Polyline2D>(object));
        case MathTypes::Polyline3D:
            return AddElements(As<Polyline3D>(object));
        case MathTypes::BoundingBox2D:
            Add(As<BoundingBox2D>(object).GetMinPoint());
            return Add(As<BoundingBox2D>(object).GetMaxPoint());
        case MathTypes::BoundingBox3D:
            Add(As<BoundingBox3D>(object).GetMinPoint());
            return Add(As<BoundingBox3D>(object).GetMaxPoint());
        case MathTypes::BoundingBoxND:
            Add(As<BoundingBoxND>(object).GetMinPoint().GetCoordinates());
            return Add(As<BoundingBoxND>(object).GetMaxPoint().GetCoordinates());
        case MathTypes::TriangleStrip3D:
            return AddAll(As<TriangleStrip3D>(object).GetVertices());
        case MathTypes::IndexedTriangleSet2D:
            return AddFaces(As<IndexedTriangleSet2D>(object), "triangles", 3);
        case MathTypes::IndexedTriangleSet3D:
            return AddFaces(As<IndexedTriangleSet3D>(object), "triangles", 3);
        case MathTypes::TinSurfacePatch3D:
            return AddFaces(As<TinSurfacePatch3D>(object).GetTriangles(), "triangles", 3);
        case MathTypes::GridSurface: {
            const auto& grid = As<GridSurface>(object);
            Add("first", grid.GetPlace(0, 0));
            Add("step", grid.GetStep());
            Start("rows");
            for (std::size_t row = 0; row < grid.GetRows(); ++row) {
                std::vector<double> heights;
                for (std::size_t i = 0; i < grid.GetColumns(); ++i) heights.push_back(grid.GetHeightOf(i, row));
                if (row > 0) text += ", ";
                AddInPlace(heights);
            }
            if (grid.GetRows() == 0) text += "none";
            return;
        }
        case MathTypes::Triangle3D: {
            const auto& triangle = As<Triangle3D>(object);
            return AddAll(std::array{triangle.GetPointA(), triangle.GetPointB(), triangle.GetPointC()});
        }
        case MathTypes::RingCurve2D:
            return AddElements(As<RingCurve2D>(object));
        case MathTypes::RingCurve3D:
            return AddElements(As<RingCurve3D>(object));
        case MathTypes::IndexedFaceSet2D:
            return AddFaces(As<IndexedFaceSet2D>(object), "faces", As<IndexedFaceSet2D>(object).GetFaceSize());
        case MathTypes::IndexedFaceSet3D:
            return AddFaces(As<IndexedFaceSet3D>(object), "faces", As<IndexedFaceSet3D>(object).GetFaceSize());
        case MathTypes::OrientedBoundingBox2D: {
            const auto& box = As<OrientedBoundingBox2D>(object);
            Vec2D first, second;
            box.GetAxes(first, second);
            Add("center", box.GetCenter());
            Add("size", box.GetSize());
            Add("axes", first);
            text += ' ';
            return AddInPlace(second);
        }
        case MathTypes::Spiral2D: {
            const auto& spiral = As<Spiral2D>(object);
            Start();
            text += GetName(spiral.GetSpiralType());
            Add("start", spiral.GetStart());
            Add("tangent", spiral.GetStartTangent());
            AddPair("radii", spiral.GetStartRadius(), spiral.GetEndRadius());
            return Add("length", spiral.GetLength());
        }
        case MathTypes::Tolerances: {
            const auto& t = As<Tolerances>(object);
            return AddAll(
                std::initializer_list<double>{t.UserTolerance(), t.AngleTolerance().GetRadians(), t.SystemEpsilon()});
        }
        case MathTypes::BezierCurve2D:  // codes of no class of this library
        case MathTypes::BSpline2D:
        case MathTypes::Nurbs2D:
        case MathTypes::Nurbs3D:
        case MathTypes::Box:
        case MathTypes::Sphere:
        case MathTypes::CardinalSpline2D:
        case MathTypes::CardinalSpline3D:
        case MathTypes::Pyramid:
        case MathTypes::Polyhedron:
        case MathTypes::Extrusion:
        case MathTypes::Parallelogram3D:
        case MathTypes::NurbsSurface:
        case MathTypes::BSplineSurface:
        case MathTypes::TSpline:
            return;
    }
}

}  // namespace

std::string ToString(const IMathObject& object) {
    std::string text;
    Writer(text).Write(object);
    return text;
}

// Switches without a default: the compiler names what a new code lacks.

std::string_view GetName(AlignmentDesign::FaultKind code) {
    using enum AlignmentDesign::FaultKind;
    switch (code) {
        case None:
            return "None";
        case NotFinite:
            return "NotFinite";
        case SamePoint:
            return "SamePoint";
        case NotACurve:
            return "NotACurve";
        case TurnsBack:
            return "TurnsBack";
        case Transitions:
            return "Transitions";
        case Tangent:
            return "Tangent";
    }
    return "?";
}

std::string_view GetName(MathTypes code) {
    using enum MathTypes;
    switch (code) {
        case Angle:
            return "Angle";
        case Arc2D:
            return "Arc2D";
        case Arc3D:
            return "Arc3D";
        case Circle2D:
            return "Circle2D";
        case Circle3D:
            return "Circle3D";
        case Line2D:
            return "Line2D";
        case Line3D:
            return "Line3D";
        case Matrix2D:
            return "Matrix2D";
        case Matrix3D:
            return "Matrix3D";
        case MatrixNM:
            return "MatrixNM";
        case Plane3D:
            return "Plane3D";
        case Point2D:
            return "Point2D";
        case Point2DM:
            return "Point2DM";
        case Point3D:
            return "Point3D";
        case PointND:
            return "PointND";
        case Vec2D:
            return "Vec2D";
        case Vec3D:
            return "Vec3D";
        case VecND:
            return "VecND";
        case Quaternion:
            return "Quaternion";
        case Polygon2D:
            return "Polygon2D";
        case Polygon3D:
            return "Polygon3D";
        case PolygonCurve2D:
            return "PolygonCurve2D";
        case PolygonCurve3D:
            return "PolygonCurve3D";
        case LineString2D:
            return "LineString2D";
        case LineString3D:
            return "LineString3D";
        case Clothoid:
            return "Clothoid";
        case Parabola:
            return "Parabola";
        case Polyline2D:
            return "Polyline2D";
        case Polyline3D:
            return "Polyline3D";
        case BezierCurve2D:
            return "BezierCurve2D";
        case BSpline2D:
            return "BSpline2D";
        case Nurbs2D:
            return "Nurbs2D";
        case Nurbs3D:
            return "Nurbs3D";
        case Box:
            return "Box";
        case BoundingBox2D:
            return "BoundingBox2D";
        case BoundingBox3D:
            return "BoundingBox3D";
        case BoundingBoxND:
            return "BoundingBoxND";
        case Sphere:
            return "Sphere";
        case TriangleStrip3D:
            return "TriangleStrip3D";
        case IndexedTriangleSet2D:
            return "IndexedTriangleSet2D";
        case IndexedTriangleSet3D:
            return "IndexedTriangleSet3D";
        case CardinalSpline2D:
            return "CardinalSpline2D";
        case CardinalSpline3D:
            return "CardinalSpline3D";
        case Pyramid:
            return "Pyramid";
        case Polyhedron:
            return "Polyhedron";
        case Extrusion:
            return "Extrusion";
        case Triangle3D:
            return "Triangle3D";
        case Parallelogram3D:
            return "Parallelogram3D";
        case RingCurve2D:
            return "RingCurve2D";
        case RingCurve3D:
            return "RingCurve3D";
        case IndexedFaceSet2D:
            return "IndexedFaceSet2D";
        case IndexedFaceSet3D:
            return "IndexedFaceSet3D";
        case OrientedBoundingBox2D:
            return "OrientedBoundingBox2D";
        case GridSurface:
            return "GridSurface";
        case NurbsSurface:
            return "NurbsSurface";
        case BSplineSurface:
            return "BSplineSurface";
        case TSpline:
            return "TSpline";
        case TinSurfacePatch3D:
            return "TinSurfacePatch3D";
        case Spiral2D:
            return "Spiral2D";
        case Tolerances:
            return "Tolerances";
    }
    return "?";
}

std::string_view GetName(AngleUnit code) {
    using enum AngleUnit;
    switch (code) {
        case Radians:
            return "Radians";
        case DegreeSecond:
            return "DegreeSecond";
        case DecimalDegree:
            return "DecimalDegree";
    }
    return "?";
}

std::string_view GetName(BufferCreator::End code) {
    using enum BufferCreator::End;
    switch (code) {
        case Round:
            return "Round";
        case Flat:
            return "Flat";
        case Square:
            return "Square";
    }
    return "?";
}

std::string_view GetName(BufferCreator::Join code) {
    using enum BufferCreator::Join;
    switch (code) {
        case Round:
            return "Round";
        case Mitred:
            return "Mitred";
        case Bevelled:
            return "Bevelled";
    }
    return "?";
}

std::string_view GetName(BufferCreator::Side code) {
    using enum BufferCreator::Side;
    switch (code) {
        case Both:
            return "Both";
        case Right:
            return "Right";
        case Left:
            return "Left";
    }
    return "?";
}

std::string_view GetName(Cant::Pivot code) {
    using enum Cant::Pivot;
    switch (code) {
        case Axis:
            return "Axis";
        case Left:
            return "Left";
        case Right:
            return "Right";
        case Inner:
            return "Inner";
        case Outer:
            return "Outer";
    }
    return "?";
}

std::string_view GetName(ExperimentalVariogram::Shape code) {
    using enum ExperimentalVariogram::Shape;
    switch (code) {
        case Exponential:
            return "Exponential";
        case Gaussian:
            return "Gaussian";
        case Power:
            return "Power";
        case Linear:
            return "Linear";
    }
    return "?";
}

std::string_view GetName(IndexedTriangleSet3D::ErrorMessage code) {
    using enum IndexedTriangleSet3D::ErrorMessage;
    switch (code) {
        case NoError:
            return "NoError";
        case NoTriangles:
            return "NoTriangles";
    }
    return "?";
}

std::string_view GetName(IntersectionExt::PointLocation code) {
    using enum IntersectionExt::PointLocation;
    switch (code) {
        case Interior:
            return "Interior";
        case Start:
            return "Start";
        case End:
            return "End";
        case BeforeStart:
            return "BeforeStart";
        case BeyondEnd:
            return "BeyondEnd";
    }
    return "?";
}

std::string_view GetName(IntersectionResult code) {
    using enum IntersectionResult;
    switch (code) {
        case NoIntersection:
            return "NoIntersection";
        case Intersecting:
            return "Intersecting";
        case Coincident:
            return "Coincident";
        case Degenerate:
            return "Degenerate";
    }
    return "?";
}

std::string_view GetName(LUDecompositionMethod code) {
    using enum LUDecompositionMethod;
    switch (code) {
        case Crout:
            return "Crout";
        case Doolittle:
            return "Doolittle";
        case Cholesky:
            return "Cholesky";
    }
    return "?";
}

std::string_view GetName(Matrix3D::RotateType code) {
    using enum Matrix3D::RotateType;
    switch (code) {
        case Rotation:
            return "Rotation";
    }
    return "?";
}

std::string_view GetName(Matrix3D::ScaleType code) {
    using enum Matrix3D::ScaleType;
    switch (code) {
        case Scaling:
            return "Scaling";
    }
    return "?";
}

std::string_view GetName(Matrix3D::SpecialMatrix code) {
    using enum Matrix3D::SpecialMatrix;
    switch (code) {
        case Identity:
            return "Identity";
        case Zero:
            return "Zero";
        case Undefined:
            return "Undefined";
    }
    return "?";
}

std::string_view GetName(Matrix3D::TranslateType code) {
    using enum Matrix3D::TranslateType;
    switch (code) {
        case Translation:
            return "Translation";
    }
    return "?";
}

std::string_view GetName(Numbers::CompareOperator code) {
    using enum Numbers::CompareOperator;
    switch (code) {
        case Equal:
            return "Equal";
        case LessOrEqual:
            return "LessOrEqual";
        case GreaterOrEqual:
            return "GreaterOrEqual";
        case Less:
            return "Less";
        case Greater:
            return "Greater";
    }
    return "?";
}

std::string_view GetName(PointInPolygon::Position code) {
    using enum PointInPolygon::Position;
    switch (code) {
        case Inside:
            return "Inside";
        case Outside:
            return "Outside";
        case Border:
            return "Border";
        case Undefined:
            return "Undefined";
    }
    return "?";
}

std::string_view GetName(Polygon2D::PositionResult code) {
    using enum Polygon2D::PositionResult;
    switch (code) {
        case Outside:
            return "Outside";
        case OnOuterBorder:
            return "OnOuterBorder";
        case Inside:
            return "Inside";
        case OnHoleBorder:
            return "OnHoleBorder";
        case InsideHole:
            return "InsideHole";
    }
    return "?";
}

std::string_view GetName(PolygonsBooleanOperation::FillRule code) {
    using enum PolygonsBooleanOperation::FillRule;
    switch (code) {
        case NonZero:
            return "NonZero";
        case EvenOdd:
            return "EvenOdd";
    }
    return "?";
}

std::string_view GetName(Profile::Curve code) {
    using enum Profile::Curve;
    switch (code) {
        case Corner:
            return "Corner";
        case Parabola:
            return "Parabola";
        case Arc:
            return "Arc";
        case Clothoids:
            return "Clothoids";
    }
    return "?";
}

std::string_view GetName(Profile::FaultKind code) {
    using enum Profile::FaultKind;
    switch (code) {
        case NotFinite:
            return "NotFinite";
        case NotAscending:
            return "NotAscending";
        case NotACurve:
            return "NotACurve";
        case CurveAtEnd:
            return "CurveAtEnd";
        case Overlap:
            return "Overlap";
        case TooLong:
            return "TooLong";
    }
    return "?";
}

std::string_view GetName(ProjectionPlane code) {
    using enum ProjectionPlane;
    switch (code) {
        case XY:
            return "XY";
        case YZ:
            return "YZ";
        case XZ:
            return "XZ";
    }
    return "?";
}

std::string_view GetName(SpatialIndexes::SpatialIndexNodeTypes code) {
    using enum SpatialIndexes::SpatialIndexNodeTypes;
    switch (code) {
        case RTreeNode:
            return "RTreeNode";
        case RStarTreeNode:
            return "RStarTreeNode";
        case QuadTreeNode:
            return "QuadTreeNode";
        case IntervalTreeNode:
            return "IntervalTreeNode";
    }
    return "?";
}

std::string_view GetName(SpatialIndexes::SpatialIndexTypes code) {
    using enum SpatialIndexes::SpatialIndexTypes;
    switch (code) {
        case RTree:
            return "RTree";
        case RStarTree:
            return "RStarTree";
        case QuadTree:
            return "QuadTree";
        case IntervalTree:
            return "IntervalTree";
    }
    return "?";
}

std::string_view GetName(Spiral2D::Spiral2DType code) {
    using enum Spiral2D::Spiral2DType;
    switch (code) {
        case Clothoid:
            return "Clothoid";
        case Bloss:
            return "Bloss";
        case Sine:
            return "Sine";
        case Cosine:
            return "Cosine";
        case Biquadratic:
            return "Biquadratic";
        case Cubic:
            return "Cubic";
        case Viennese:
            return "Viennese";
    }
    return "?";
}

std::string_view GetName(WindingValue code) {
    using enum WindingValue;
    switch (code) {
        case Clockwise:
            return "Clockwise";
        case CounterClockwise:
            return "CounterClockwise";
        case Vertical:
            return "Vertical";
    }
    return "?";
}

}  // namespace Kalvio::Math
