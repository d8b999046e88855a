# Configures, builds and runs the consumer project. Where it has the library inside, it is installed and run again, and
# the results of that library are compared with those of the tests' build.
# -D BUILD_DIR=... GENERATOR=... COMPILER=... LAUNCHER=... FLAGS=... KALVIO_FROM=... and PREFIX=... for an installed
# library, KALVIO_SOURCE_DIR=... DIGEST=... for one inside the project, with GIT=... to fetch it
function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(where "-DCMAKE_PREFIX_PATH=${PREFIX}")
if(KALVIO_FROM STREQUAL "pkg-config")
  file(GLOB_RECURSE pc "${PREFIX}/*/kalvio-math.pc")
  cmake_path(GET pc PARENT_PATH directory)
  set(ENV{PKG_CONFIG_PATH} "${directory}")
elseif(KALVIO_FROM STREQUAL "subdirectory")
  set(where "-DKALVIO_SOURCE_DIR=${KALVIO_SOURCE_DIR}")
elseif(KALVIO_FROM STREQUAL "fetch") # from a repository that holds the library as it is now, committed or not
  set(repository "${BUILD_DIR}-repository")
  file(REMOVE_RECURSE "${repository}/kalvio" "${repository}/cmake")
  foreach(part IN ITEMS CMakeLists.txt cmake kalvio)
    file(COPY "${KALVIO_SOURCE_DIR}/${part}" DESTINATION "${repository}")
  endforeach()
  run("${GIT}" -C "${repository}" init --quiet --initial-branch=main)
  run("${GIT}" -C "${repository}" add --all)
  run("${GIT}" -C "${repository}" -c user.name=stranger -c user.email=stranger@localhost -c commit.gpgsign=false
    commit --quiet --allow-empty --message=library)
  set(where "-DKALVIO_SOURCE_DIR=${repository}")
endif()
run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}" -B "${BUILD_DIR}" -G "${GENERATOR}" "-DCMAKE_CXX_COMPILER=${COMPILER}"
  "-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}" "-DCMAKE_CXX_FLAGS=${FLAGS}" "-DKALVIO_FROM=${KALVIO_FROM}" "${where}"
  "-DKALVIO_WARNINGS_AS_ERRORS=$ENV{CI}")
run("${CMAKE_COMMAND}" --build "${BUILD_DIR}" --parallel 2)
run("${BUILD_DIR}/consumer")
if(KALVIO_SOURCE_DIR)
  file(REMOVE_RECURSE "${BUILD_DIR}/installed")
  run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${BUILD_DIR}/installed")
  run("${BUILD_DIR}/installed/bin/consumer")

  execute_process(COMMAND "${DIGEST}" OUTPUT_VARIABLE expected COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND "${BUILD_DIR}/digest" OUTPUT_VARIABLE found COMMAND_ERROR_IS_FATAL ANY)
  if(NOT found STREQUAL expected)
    string(REPLACE "\n" ";" found "${found}")
    string(REPLACE "\n" ";" expected "${expected}")
    list(REMOVE_ITEM found ${expected})
    message(FATAL_ERROR "results differ from the build of the tests: with ${COMPILER} ${FLAGS}, those seen at\n${found}")
  endif()
endif()
