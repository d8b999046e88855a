# A plain configuration, and the preset of the README, on a machine that has a compiler and CMake only.
# -D SOURCE_DIR=... BUILD_DIR=... GENERATOR=... COMPILER=...
set(bare "-DCMAKE_CXX_COMPILER=${COMPILER}")
foreach(package IN ITEMS GTest benchmark nlohmann_json pugixml PkgConfig Git)
  list(APPEND bare -DCMAKE_DISABLE_FIND_PACKAGE_${package}=ON)
endforeach()
foreach(way IN ITEMS "-G;${GENERATOR}" "--preset=release")
  file(REMOVE_RECURSE "${BUILD_DIR}")
  execute_process(COMMAND "${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${BUILD_DIR}" ${way} ${bare}
    COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
  file(STRINGS "${BUILD_DIR}/CMakeCache.txt" cache REGEX "^(CMAKE_BUILD_TYPE|BUILD_SHARED_LIBS|KALVIO_.*):")
  foreach(line IN ITEMS CMAKE_BUILD_TYPE:[A-Z]+=Release BUILD_SHARED_LIBS:BOOL=ON KALVIO_INSTALL:BOOL=ON
      KALVIO_WARNINGS_AS_ERRORS:BOOL=OFF)
    if(NOT cache MATCHES "(^|;)${line}(;|$)")
      message(FATAL_ERROR "${way} does not give ${line} but ${cache}")
    endif()
  endforeach()
endforeach()
