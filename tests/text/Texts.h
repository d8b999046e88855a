#pragma once

#include <string>

namespace Kalvio::Math {

/// One text of each kind of geometry, as it is written.
inline const std::string texts[] = {
    "POINT (1 2)",
    "POINT Z (0.1 -0 1e-300)",
    "POINT M (1 2 6672000.123456789)",
    "LINESTRING (0 0, 1 1)",
    "LINESTRING Z (0 0 5, 1 1 5, 2 1 5)",
    "LINESTRING EMPTY",
    "LINESTRING Z EMPTY",
    "CIRCULARSTRING (0 0, 1 1, 2 0)",
    "CIRCULARSTRING Z (0 0 3, 1 0 4, 2 0 3)",
    "COMPOUNDCURVE EMPTY",
    "COMPOUNDCURVE ((0 0, 1 1), (1 1, 2 0, 3 0), CIRCULARSTRING (3 0, 4 -1, 5 0))",
    "COMPOUNDCURVE Z ((0 0 1, 1 1 1), CIRCULARSTRING Z (1 1 1, 2 2 1, 3 1 1))",
    "POLYGON EMPTY",
    "POLYGON ((0 0, 9 0, 9 9, 0 0), (6 2, 7 3, 7 2, 6 2))",
    "POLYGON Z ((0 0 1, 9 0 2, 9 9 3, 0 0 1))",
    "CURVEPOLYGON (COMPOUNDCURVE ((0 0, 2 0), CIRCULARSTRING (2 0, 1 1, 0 0)), (0.9 0.1, 1.1 0.1, 1 0.2, 0.9 0.1))",
    "CURVEPOLYGON Z ((0 0 1, 9 0 1, 9 9 1, 0 0 1))",
    "MULTIPOINT ((1 2), (3 4))",
    "MULTIPOINT Z ((1 2 3))",
    "MULTILINESTRING ((0 0, 1 1), EMPTY)",
    "MULTICURVE ((0 0, 1 1), CIRCULARSTRING (0 0, 1 1, 2 0), COMPOUNDCURVE ((0 0, 1 1)))",
    "MULTIPOLYGON (((0 0, 9 0, 9 9, 0 0)), ((6 2, 7 3, 7 2, 6 2)))",
    "MULTISURFACE (((0 0, 9 0, 9 9, 0 0)), CURVEPOLYGON ((6 2, 7 3, 7 2, 6 2)))",
    "GEOMETRYCOLLECTION Z (POINT Z (1 2 3), LINESTRING Z (0 0 0, 1 1 1))",
    "GEOMETRYCOLLECTION EMPTY",
};

}  // namespace Kalvio::Math
