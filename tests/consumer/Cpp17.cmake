# A program of an older standard is told the reason, once, instead of what breaks in the headers.
# -D PREFIX=... COMPILER=... BUILD_DIR=...
file(WRITE "${BUILD_DIR}/cpp17.cpp" "#include <kalvio/Math.h>\n")
execute_process(COMMAND "${COMPILER}" -std=c++17 -fsyntax-only "-I${PREFIX}/include" "${BUILD_DIR}/cpp17.cpp"
  RESULT_VARIABLE result ERROR_VARIABLE errors)
string(REGEX MATCHALL "error: [^\n]*" found "${errors}")
list(LENGTH found count)
if(result EQUAL 0 OR NOT count EQUAL 1 OR NOT found MATCHES "needs C\\+\\+20")
  message(FATAL_ERROR "C++17 gives ${count} errors:\n${errors}")
endif()
file(WRITE "${BUILD_DIR}/cpp17.cpp" "#include <kalvio/curves/Line2D.h>\n")
execute_process(COMMAND "${COMPILER}" -std=c++17 -fsyntax-only "-I${PREFIX}/include" "${BUILD_DIR}/cpp17.cpp"
  ERROR_VARIABLE errors)
string(REGEX MATCH "error: [^\n]*" first "${errors}")
if(NOT first MATCHES "needs C\\+\\+20")
  message(FATAL_ERROR "one header compiled as C++17 gives\n${errors}")
endif()
