# Optional modules: each a shared library of its own, on a library of somebody else.

# tvk_module(name LIBRARIES a::b ... MODULES c ... SOURCES a.cpp ... HEADERS a.h ...): the module in the
# current folder, modules/<name>. HEADERS are the public ones; LIBRARIES stay its own affair, and so do
# the other MODULES that it stands on, which are made before it. Makes
#   tvk_<name>, tvk::<name>     the library that ships
#   tvk_<name>_internals        the same objects, for tests and fuzz targets
# and installs it as the component <name> of the package: find_package(tvk COMPONENTS <name>).
function(tvk_module name)
    cmake_parse_arguments(PARSE_ARGV 1 module "" "" "LIBRARIES;MODULES;SOURCES;HEADERS")
    list(TRANSFORM module_MODULES PREPEND tvk_ OUTPUT_VARIABLE modules)
    list(TRANSFORM modules APPEND _internals OUTPUT_VARIABLE internals)
    string(TOUPPER ${name} upper)
    set(target tvk_${name})

    add_library(${target}_objects OBJECT ${module_SOURCES})
    target_compile_features(${target}_objects PRIVATE cxx_std_20)
    target_compile_definitions(${target}_objects PRIVATE TVK_${upper}_BUILDING)
    target_include_directories(${target}_objects PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${target}_objects PRIVATE tvk_build_flags ${module_LIBRARIES})
    set_target_properties(${target}_objects PROPERTIES
        POSITION_INDEPENDENT_CODE ON
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        CXX_EXTENSIONS OFF)

    add_library(${target} SHARED $<TARGET_OBJECTS:${target}_objects>)
    add_library(tvk::${name} ALIAS ${target})
    target_sources(${target}
        PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${module_HEADERS})
    target_link_libraries(${target}
        PUBLIC tvk
        PRIVATE ${modules} $<BUILD_INTERFACE:tvk_build_flags>
            $<BUILD_INTERFACE:${module_LIBRARIES}>)
    set_target_properties(${target} PROPERTIES
        EXPORT_NAME ${name}
        LINKER_LANGUAGE CXX
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
    if(modules)
        # They lie beside it, and the path of a program does not serve the libraries of a library.
        set_target_properties(${target} PROPERTIES INSTALL_RPATH $ORIGIN)
    endif()

    add_library(${target}_internals STATIC EXCLUDE_FROM_ALL $<TARGET_OBJECTS:${target}_objects>)
    target_include_directories(${target}_internals PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${target}_internals PUBLIC
        ${internals} tvk_internals ${module_LIBRARIES})
    set_target_properties(${target}_internals PROPERTIES LINKER_LANGUAGE CXX)

    tvk_install_module(${name} ${module_MODULES})
    set_property(GLOBAL APPEND PROPERTY TVK_MODULES ${name})
endfunction()
