# `cpack` in the build folder makes a Debian package of what `cmake --install` lays out, below /usr.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vx)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DESCRIPTION "VX calculates pieces of images of up to six dimensions, through networks of modules that
are loaded at run time, and keeps them in a cache with a memory limit. The package has the library with its headers, the
standard modules, and vxtile, which runs networks from the command line.")
set(CPACK_PACKAGE_CONTACT "The VX developers <vx@localhost>")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
# What the system's libraries are called is found out, and our own are in the package.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
# Tells the system's loader of the libraries.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
install(FILES LICENSE README.md CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
include(CPack)
