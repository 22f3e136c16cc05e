# What `cmake --install` puts in place: the library, its public headers, the CMake package that gives
# tvk::tvk, and tvk.pc for pkg-config; and the same for each module that is built.

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

# tvk_install_module(name module...): the module tvk_<name>, as the component <name> of the package,
# and tvk-<name>.pc. Both ask for the other modules named. Its headers stand below a folder of their own, since they are included as
# "modules/<name>/..", which is too plain a name to put beside the headers of others.
function(tvk_install_module name)
    set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tvk)
    set(headers ${CMAKE_INSTALL_INCLUDEDIR}/tvk-modules)
    install(TARGETS tvk_${name} EXPORT tvk_${name}_targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        FILE_SET HEADERS DESTINATION ${headers})
    install(EXPORT tvk_${name}_targets NAMESPACE tvk:: FILE tvk-${name}-targets.cmake
        DESTINATION ${package_dir})
    set(module ${name})
    set(needed_modules ${ARGN})
    configure_file(${PROJECT_SOURCE_DIR}/cmake/tvk-module.cmake.in
        ${PROJECT_BINARY_DIR}/tvk-${name}.cmake @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/tvk-${name}.cmake DESTINATION ${package_dir})

    list(TRANSFORM needed_modules REPLACE "(.+)" ", tvk-\\1 = ${PROJECT_VERSION}")
    list(JOIN needed_modules "" requires_modules)
    cmake_path(ABSOLUTE_PATH headers BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX})
    file(RELATIVE_PATH pkgconfig_to_include ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${headers})
    configure_file(${PROJECT_SOURCE_DIR}/cmake/tvk-module.pc.in
        ${PROJECT_BINARY_DIR}/tvk-${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/tvk-${name}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
