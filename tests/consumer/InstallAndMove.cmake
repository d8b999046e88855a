# Installs the library to one prefix and moves the whole tree to another, which is the one that the consumers use.
# -D BUILD_DIR=... SOURCE_DIR=... PREFIX=...
file(REMOVE_RECURSE "${PREFIX}" "${PREFIX}-before")
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${PREFIX}-before"
  COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
file(RENAME "${PREFIX}-before" "${PREFIX}")

file(GLOB_RECURSE texts "${PREFIX}/*.cmake" "${PREFIX}/*.pc")
list(LENGTH texts count)
if(count LESS 4)
  message(FATAL_ERROR "package files are missing: ${texts}")
endif()
foreach(text IN LISTS texts)
  file(READ "${text}" content)
  foreach(path IN ITEMS "${PREFIX}" "${SOURCE_DIR}" KalvioOptions)
    string(FIND "${content}" "${path}" position)
    if(NOT position EQUAL -1)
      message(FATAL_ERROR "${text} names ${path}")
    endif()
  endforeach()
endforeach()
