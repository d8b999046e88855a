#pragma once

#include "kalvio/core/IGeometry.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Kalvio::Math {

/// Geometries as well-known text (OGC 06-103r4, curves as in ISO/IEC 13249-3), for exchange with databases and maps.
///
/// | Class | Text |
/// |---|---|
/// | `Point2D`, `Point2DM`, `Point3D` | `POINT (1 2)`, `POINT M (1 2 3)`, `POINT Z (1 2 3)` |
/// | `Line2D`, `LineString2D` | `LINESTRING (1 2, 3 4)` |
/// | `Clothoid`, `Spiral2D`, `Parabola` | `LINESTRING` of samples |
/// | `Arc2D`, `Circle2D` | `CIRCULARSTRING (1 0, 0 1, -1 0)`: start, middle, end |
/// | `Polyline2D` | `COMPOUNDCURVE ((0 0, 1 0), CIRCULARSTRING (1 0, 2 1, 1 2))` |
/// | `Polygon2D` | `POLYGON ((0 0, 9 0, 9 9, 0 0), (6 2, 7 3, 7 2, 6 2))` |
/// | `PolygonCurve2D` | `CURVEPOLYGON (COMPOUNDCURVE (...), (6 2, 7 3, 7 2, 6 2))` |
///
/// and the classes of space alike, with Z; other classes have no text. Points keep their bits. An arc of more than
/// three quarters of a circle is two, and a full circle two halves, since three points near each other tell little. An
/// arc comes back through its three points: in the same place within the rounding of coordinates, with another last
/// digit of centre and sweep.
class KALVIO_MATH_API Wkt {
public:
    /// Why a text was refused.
    struct Error {
        std::size_t offset = 0;   ///< bytes before the place
        std::size_t line = 1;     ///< from 1
        std::size_t column = 1;   ///< bytes in the line up to the place, from 1
        std::string_view reason;  ///< a sentence without its full stop, of a constant
    };

    /// @param text    replaced
    /// @param height  how far the chords of curves that have no text may lie from them; without, such curves fail
    /// @return false, `text` untouched, for a class without a text, coordinates that are not finite, one point as a
    ///         string or two as a ring, an arc without a radius, elements of a chain or ring that start 0.0001 or more
    ///         from the end of the one before, in x, y or z (nearer ones are joined), and a ring that does not close
    [[nodiscard]] static bool Write(const IGeometry& geometry, std::string& text, double height = 0.0);
    /// A set as MULTIPOINT, MULTILINESTRING, MULTICURVE, MULTIPOLYGON, MULTISURFACE, else GEOMETRYCOLLECTION.
    /// @return false also for null pointers, and for geometries of different coordinates: x y, x y z, x y m
    [[nodiscard]] static bool Write(const std::vector<const IGeometry*>& geometries, std::string& text,
                                    double height = 0.0);
    [[nodiscard]] static bool Write(const std::vector<std::unique_ptr<IGeometry>>& geometries, std::string& text,
                                    double height = 0.0);

    /// Reads one geometry or set, in either case of letters, ISO or older style (`POINT Z (1 2 3)`, `POINTZ(1 2 3)`,
    /// `POINT (1 2 3)`).
    ///
    /// Members of sets come one by one, nested ones too, POINT EMPTY as nothing. A string is a line string, also of two
    /// points; in a compound curve these are a line. Rings keep their closing point. Measures are kept by points in
    /// plan and dropped elsewhere. An arc whose points are within 1e-10 of one line is a line.
    /// @param geometries  appended to
    /// @param error       set when the text is refused
    /// @return false, `geometries` untouched, for what is no such text: also for numbers that are not finite, rings
    /// that
    ///         do not close, curves that do not meet, both exactly, and sets nested deeper than 32
    [[nodiscard]] static bool Read(std::string_view text, std::vector<std::unique_ptr<IGeometry>>& geometries,
                                   Error& error);
};

}  // namespace Kalvio::Math
