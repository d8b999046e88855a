# Objects and codes go into std::format where the standard library has it, with the format strings checked.
# -D PREFIX=... BUILD_DIR=... COMPILER=... one with libc++, as the library of the tests' compiler may not have it
file(WRITE "${BUILD_DIR}/format.cpp" [[
#include <kalvio/Math.h>
#include <kalvio/Print.h>
using namespace Kalvio::Math;
std::string Text(const Point2D& point, WindingValue winding, SpatialIndexes::SpatialIndexTypes index);
std::string Text(const Point2D& point, WindingValue winding, SpatialIndexes::SpatialIndexTypes index) {
    return std::format("{:>14}|{:<9}|{:.3}", point, winding, index);
}
]])
execute_process(COMMAND "${COMPILER}" -std=c++20 -stdlib=libc++ -Wall -Wextra -Werror -fsyntax-only
  "-I${PREFIX}/include" "${BUILD_DIR}/format.cpp" COMMAND_ERROR_IS_FATAL ANY)
