#pragma once

#include "kalvio/Export.h"
#include "kalvio/SpatialIndexes/SpatialIndexNodeTypes.h"
#include "kalvio/SpatialIndexes/SpatialIndexTypes.h"
#include "kalvio/alignments/AlignmentDesign.h"
#include "kalvio/alignments/Cant.h"
#include "kalvio/alignments/Profile.h"
#include "kalvio/areas/BufferCreator.h"
#include "kalvio/areas/PolygonsBooleanOperation.h"
#include "kalvio/core/Angle.h"
#include "kalvio/core/IMathObject.h"
#include "kalvio/core/MathTypes.h"
#include "kalvio/core/Matrix3D.h"
#include "kalvio/core/MatrixNM.h"
#include "kalvio/core/Numbers.h"
#include "kalvio/core/ProjectionPlane.h"
#include "kalvio/core/WindingValue.h"
#include "kalvio/curves/Spiral2D.h"
#include "kalvio/meshes/IndexedTriangleSet3D.h"
#include "kalvio/polygons/PointInPolygon.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/queries/IntersectionExt.h"
#include "kalvio/queries/IntersectionResult.h"
#include "kalvio/statistics/ExperimentalVariogram.h"

#include <concepts>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <version>
#ifdef __cpp_lib_format
#include <format>
#endif

/// Objects and codes as text, by `operator<<` and, where the standard library has it, `std::format`. Not part of
/// `kalvio/Math.h`: it brings streams along.
namespace Kalvio::Math {

/// The object as its class name and, in parentheses, what it was made of; numbers in the fewest digits that read back
/// to the same double, angles in radians, nothing left out however long.
///
///     Point2D(385000, 6672000.25)                  PointND, vectors, quaternions alike; Point2DM with its measure
///     Tolerances(0.0001, 0.0001, 1e-10)            user, angle, system
///     BoundingBox2D((0, 0), (10, 20))              lowest and highest corner
///     OrientedBoundingBox2D(center (5, 5), size (4, 2), axes (1, 0) (0, 1))
///     Matrix2D((1, 0, 0), (0, 1, 0), (5, 6, 1))    rows; "undefined" for a matrix that is none
///     Plane3D(0, 0, 1, -5)                         a, b, c, d of a x + b y + c z + d = 0
///     Line2D((0, 0), (1, 2))                       triangles and strips alike: their points
///     Circle3D(center (0, 0, 5), radius 2, normal (0, 0, 1))
///     Arc2D(start (1, 0), center (0, 0), sweep 1.5)
///     Clothoid(start (0, 0), tangent (1, 0), radii 0 300, parameter 150)
///     Spiral2D(Bloss, start (0, 0), tangent (1, 0), radii 0 300, length 75)
///     Parabola(start (0, 2), end (200, 0), 0.0001, -0.03, 2)    a, b, c of a x^2 + b x + c
///     LineString2D((0, 0), (1, 0), (1, 1))         Polyline2D(Line2D(...), Arc2D(...)), rings alike
///     Polygon2D(((0, 0), (1, 0), (1, 1)), ((0.5, 0.1), ...))    outer ring, then holes
///     IndexedTriangleSet3D(vertices (...), triangles (0, 1, 2), (2, 1, 3))    surfaces alike; face sets: faces
///
/// Of a class of the caller's own, the name of its code alone.
[[nodiscard]] KALVIO_MATH_API std::string ToString(const IMathObject& object);

/// Names of codes, as they are spelled: `GetName(MathTypes::Arc2D)` is "Arc2D". "?" for a value without one.
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(AlignmentDesign::FaultKind code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(MathTypes code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(AngleUnit code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(BufferCreator::End code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(BufferCreator::Join code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(BufferCreator::Side code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(Cant::Pivot code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(ExperimentalVariogram::Shape code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(IndexedTriangleSet3D::ErrorMessage code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(IntersectionExt::PointLocation code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(IntersectionResult code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(LUDecompositionMethod code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(Matrix3D::RotateType code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(Matrix3D::ScaleType code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(Matrix3D::SpecialMatrix code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(Matrix3D::TranslateType code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(Numbers::CompareOperator code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(PointInPolygon::Position code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(Polygon2D::PositionResult code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(PolygonsBooleanOperation::FillRule code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(Profile::Curve code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(Profile::FaultKind code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(ProjectionPlane code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(SpatialIndexes::SpatialIndexNodeTypes code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(SpatialIndexes::SpatialIndexTypes code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(Spiral2D::Spiral2DType code);
[[nodiscard]] KALVIO_MATH_API std::string_view GetName(WindingValue code);

/// A code that has a name.
template <class Code>
concept NamedCode = std::is_enum_v<Code> && requires(Code code) {
    { GetName(code) } -> std::same_as<std::string_view>;
};

/// `ToString`; width and adjustment as for a string.
inline std::ostream& operator<<(std::ostream& out, const IMathObject& object) { return out << ToString(object); }
/// `GetName`, alike.
template <NamedCode Code>
std::ostream& operator<<(std::ostream& out, Code code) {
    return out << GetName(code);
}

/// What argument-dependent lookup finds for the codes of this namespace.
namespace SpatialIndexes {
using Math::GetName;
using Math::operator<<;
}  // namespace SpatialIndexes

}  // namespace Kalvio::Math

#ifdef __cpp_lib_format
/// `ToString`; width, alignment and precision as for a string.
template <std::derived_from<Kalvio::Math::IMathObject> Object>
struct std::formatter<Object, char> : std::formatter<std::string_view, char> {
    template <class Context>
    auto format(const Object& object, Context& context) const {
        return std::formatter<std::string_view, char>::format(Kalvio::Math::ToString(object), context);
    }
};
/// `GetName`, alike.
template <Kalvio::Math::NamedCode Code>
struct std::formatter<Code, char> : std::formatter<std::string_view, char> {
    template <class Context>
    auto format(Code code, Context& context) const {
        return std::formatter<std::string_view, char>::format(GetName(code), context);
    }
};
#endif
