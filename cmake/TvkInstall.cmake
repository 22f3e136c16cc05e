# What `cmake --install` puts in place: the library, its public headers, the CMake package that gives
# tvk::tvk, and tvk.pc for pkg-config.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tvk)
install(TARGETS tvk EXPORT tvkTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT tvkTargets NAMESPACE tvk:: DESTINATION ${package_dir})

configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/tvkConfig.cmake.in ${PROJECT_BINARY_DIR}/tvkConfig.cmake
    INSTALL_DESTINATION ${package_dir}
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tvkConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
        ${PROJECT_BINARY_DIR}/tvkConfig.cmake
        ${PROJECT_BINARY_DIR}/tvkConfigVersion.cmake
    DESTINATION ${package_dir})

# Relative to the file itself, so that an installation that is moved, or installed with another
# --prefix, keeps working.
set(pkgconfig_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pkgconfig_to_include ${pkgconfig_dir} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(${PROJECT_SOURCE_DIR}/cmake/tvk.pc.in ${PROJECT_BINARY_DIR}/tvk.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tvk.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
