# -D PAGE=... PROGRAM=... BLOCK=... EXPECTED=...: the block of the page runs and prints the file's content, if there is one.
execute_process(COMMAND "${PROGRAM}" ${BLOCK} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
if(EXPECTED)
  file(READ "${EXPECTED}" expected)
  if(NOT output STREQUAL expected)
    message(FATAL_ERROR "${PAGE} says of its block ${BLOCK}\n${expected}\nit prints\n${output}")
  endif()
endif()
