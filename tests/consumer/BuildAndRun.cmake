# Configures, builds and runs the consumer project.
# -D SOURCE_DIR=... BUILD_DIR=... GENERATOR=... COMPILER=... KALVIO_FROM=... and PREFIX=... or KALVIO_SOURCE_DIR=...
if(KALVIO_FROM STREQUAL "pkg-config")
  file(GLOB_RECURSE pc "${PREFIX}/*/kalvio-math.pc")
  cmake_path(GET pc PARENT_PATH directory)
  set(ENV{PKG_CONFIG_PATH} "${directory}")
endif()
set(where "-DCMAKE_PREFIX_PATH=${PREFIX}")
if(KALVIO_FROM STREQUAL "subdirectory")
  set(where "-DKALVIO_SOURCE_DIR=${KALVIO_SOURCE_DIR}")
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${BUILD_DIR}" -G "${GENERATOR}"
    "-DCMAKE_CXX_COMPILER=${COMPILER}" -DCMAKE_BUILD_TYPE=Debug "-DKALVIO_FROM=${KALVIO_FROM}" "${where}"
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${BUILD_DIR}" --parallel 2 COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${BUILD_DIR}/consumer" COMMAND_ERROR_IS_FATAL ANY)
