# The shared library offers the names of its own namespace, and none of the standard library's templates.
# -D NM=... LIBRARY=...
execute_process(COMMAND "${NM}" -D --defined-only "${LIBRARY}" OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^ \n]+\n" names "${symbols}")
set(own ${names})
list(FILTER own INCLUDE REGEX "^_Z(T[VIST]|T[hvc].*_)?NK?[RO]?6Kalvio")
list(FILTER names EXCLUDE REGEX "^_Z(T[VIST]|T[hvc].*_)?NK?[RO]?6Kalvio")
list(LENGTH own count)
if(names OR count LESS 1000)
  message(FATAL_ERROR "${count} names of Kalvio and these:\n${names}")
endif()
