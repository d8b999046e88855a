# Headers, library, CMake package and pkg-config file. Every path in them is relative to the file itself: the installed
# tree may be moved.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/KalvioMath")
install(TARGETS KalvioMath EXPORT KalvioMathTargets FILE_SET HEADERS FILE_SET generated)
install(EXPORT KalvioMathTargets NAMESPACE Kalvio:: DESTINATION "${package_dir}")

set(package_build_dir "${PROJECT_BINARY_DIR}/package")
configure_package_config_file(cmake/KalvioMathConfig.cmake.in "${package_build_dir}/KalvioMathConfig.cmake"
  INSTALL_DESTINATION "${package_dir}" NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${package_build_dir}/KalvioMathConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion) # like the SOVERSION
install(FILES "${package_build_dir}/KalvioMathConfig.cmake" "${package_build_dir}/KalvioMathConfigVersion.cmake"
  DESTINATION "${package_dir}")

# pkg-config: ${pcfiledir} is where the file is found, the prefix is reached from there.
set(pkgconfig_dir "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig")
set(pc_prefix "${CMAKE_INSTALL_PREFIX}")
cmake_path(RELATIVE_PATH pc_prefix BASE_DIRECTORY "${pkgconfig_dir}")
set(pc_libdir "${CMAKE_INSTALL_FULL_LIBDIR}")
cmake_path(RELATIVE_PATH pc_libdir BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
set(pc_includedir "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
cmake_path(RELATIVE_PATH pc_includedir BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
set(pc_cflags "")
get_target_property(library_type KalvioMath TYPE)
if(library_type STREQUAL "STATIC_LIBRARY")
  set(pc_cflags " -DKALVIO_MATH_STATIC_DEFINE")
endif()
configure_file(cmake/kalvio-math.pc.in "${package_build_dir}/kalvio-math.pc" @ONLY)
install(FILES "${package_build_dir}/kalvio-math.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
