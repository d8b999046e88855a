# -D PROGRAM=... IMAGES=...: the folder of images holds what the program draws; `pictures docs/images` draws them anew.
execute_process(COMMAND "${PROGRAM}" "${CMAKE_CURRENT_BINARY_DIR}" COMMAND_ERROR_IS_FATAL ANY)
foreach(name signs stations angles tolerances windings)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files "${name}.svg" "${IMAGES}/${name}.svg"
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
