# Installs libraries, headers, the CMake package, pkg-config files, documents and samples. The rules for the program are in
# apps/asf/CMakeLists.txt.

include(CMakePackageConfigHelpers)

set(lPackageDir "${CMAKE_INSTALL_LIBDIR}/cmake/qex")

get_property(lLayers GLOBAL PROPERTY QEX_LAYERS)
foreach(lLayer IN LISTS lLayers)
    install(TARGETS qex_${lLayer} EXPORT qexTargets
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
    install(FILES "${PROJECT_BINARY_DIR}/pkgconfig/qex-${lLayer}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endforeach()

get_property(lHeaders GLOBAL PROPERTY QEX_HEADERS)
foreach(lHeader IN LISTS lHeaders)
    get_filename_component(lFolder "${lHeader}" DIRECTORY)
    install(FILES "${PROJECT_SOURCE_DIR}/${lHeader}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${lFolder}")
endforeach()

install(EXPORT qexTargets NAMESPACE qex:: DESTINATION "${lPackageDir}")

list(JOIN lLayers " " QEX_LAYERS)
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/qexConfig.cmake.in" "${PROJECT_BINARY_DIR}/qexConfig.cmake"
    INSTALL_DESTINATION "${lPackageDir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/qexConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/qexConfig.cmake" "${PROJECT_BINARY_DIR}/qexConfigVersion.cmake"
    DESTINATION "${lPackageDir}")

install(FILES "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${PROJECT_SOURCE_DIR}/SECURITY.md"
    DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${CMAKE_INSTALL_DOCDIR}" RENAME copyright)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" "${PROJECT_SOURCE_DIR}/samples" DESTINATION "${CMAKE_INSTALL_DOCDIR}"
    FILES_MATCHING REGEX "\\.(md|svg|png|asf|amc|bvh|cxx|py|ipynb|sbatch)$|CMakeLists\\.txt$")
