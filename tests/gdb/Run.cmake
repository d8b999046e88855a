# -D GDB=... PRINTERS=... PROGRAM=...: gdb stops in the program and prints its values in the words of the printers.
set(expected
  "Point2D(385000, 6672000.25)"
  "Vec3D(0.1, -0, 1e-300)"
  "Angle(0.5 rad, 28.647890 deg)"
  "BoundingBox2D((0, 0), (10, 20))"
  "BoundingBoxND((0, 0), (10, 20))"
  "LineString3D of 2 points = {[0] = Point3D(0, 0, 1), [1] = Point3D(1, 0, 2)}"
  "Polygon2D of 3 points, holes: 1 = {[0] = Point2D(0, 0), [1] = Point2D(1, 0), [2] = Point2D(1, 1), hole 0 = LineString2D of 2 points = {[0] = Point2D(0.5, 0.1), [1] = Point2D(0.6, 0.1)}}"
  "Line2D((1, 2), (3, 4))")
execute_process(COMMAND "${GDB}" -nx -batch -ex "source ${PRINTERS}" -ex "break Stop" -ex run
  -ex "print point" -ex "print vector" -ex "print angle" -ex "print box" -ex "print boxND" -ex "print string"
  -ex "print polygon" -ex "print line" "${PROGRAM}" OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(NOT output MATCHES "Breakpoint 1[.0-9]*, Stop")
  message(NOTICE "skipped: gdb cannot run programs here\n${errors}")
  return()
endif()
set(printed 0)
foreach(value IN LISTS expected)
  math(EXPR printed "${printed} + 1")
  string(FIND "${output}" "$${printed} = ${value}\n" place)
  if(place EQUAL -1)
    message(FATAL_ERROR "expected ${value}\n${output}${errors}")
  endif()
endforeach()
