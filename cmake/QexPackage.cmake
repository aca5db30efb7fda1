# Settings for ./dev package: an archive and a Debian package with library, headers, CMake package, program and documents.

set(CPACK_PACKAGE_NAME qex)
set(CPACK_PACKAGE_VENDOR "the qex authors")
set(CPACK_PACKAGE_CONTACT "the qex authors <qex@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Acclaim skeletons and motion, BVH and glTF: library and command line")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Loaded at run time, so that dpkg-shlibdeps does not find it.
get_property(lHasPng GLOBAL PROPERTY QEX_HAS_PNG)
if(lHasPng)
    set(CPACK_DEBIAN_PACKAGE_DEPENDS "librsvg2-2")
endif()
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/StripArchives.cmake")
include(CPack)
