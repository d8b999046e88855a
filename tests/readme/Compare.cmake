# -D PROGRAM=... EXPECTED=...: the program's output is the file's content.
execute_process(COMMAND "${PROGRAM}" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
file(READ "${EXPECTED}" expected)
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "README.md says\n${expected}\nthe program prints\n${output}")
endif()
