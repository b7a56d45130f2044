# What `cmake --install` lays out: libraries, headers, the CMake package VX and the pkg-config files. No path of the
# tree is absolute, so that it may be moved as a whole.

include(CMakePackageConfigHelpers)

set(vx_include_dir "${CMAKE_INSTALL_INCLUDEDIR}/VX")
set(vx_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/VX")
set(vx_pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

set_target_properties(VXUtils PROPERTIES EXPORT_NAME Utils)
# Voxels of the type int8 are `char`, also for whoever includes the headers.
target_compile_options(VXUtils INTERFACE -fsigned-char)

install(TARGETS VXUtils VX EXPORT VXTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  INCLUDES DESTINATION "${vx_include_dir}")
install(DIRECTORY utils/include/ include/ misc/vxLinearAlgebra/ DESTINATION "${vx_include_dir}"
  FILES_MATCHING PATTERN "*.h")

# CMake package.
install(EXPORT VXTargets NAMESPACE VX:: DESTINATION "${vx_package_dir}")
configure_package_config_file(cmake/VXConfig.cmake.in "${PROJECT_BINARY_DIR}/VXConfig.cmake"
  INSTALL_DESTINATION "${vx_package_dir}" NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/VXConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/VXConfig.cmake" "${PROJECT_BINARY_DIR}/VXConfigVersion.cmake"
              cmake/VXModuleLibrary.cmake
  DESTINATION "${vx_package_dir}")

# pkg-config, with the prefix as seen from the file itself.
file(RELATIVE_PATH vx_prefix_from_pkgconfig "/prefix/${vx_pkgconfig_dir}" "/prefix")
string(REGEX REPLACE "/$" "" vx_prefix_from_pkgconfig "${vx_prefix_from_pkgconfig}")
foreach(name IN ITEMS vx vx-utils)
  configure_file("cmake/${name}.pc.in" "${PROJECT_BINARY_DIR}/${name}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${name}.pc" DESTINATION "${vx_pkgconfig_dir}")
endforeach()
