# Settings that every target of the project shares.

if(PROJECT_IS_TOP_LEVEL)
    if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
        set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
    endif()
    find_program(TVK_CCACHE ccache)
    if(TVK_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
        set(CMAKE_CXX_COMPILER_LAUNCHER ${TVK_CCACHE})
    endif()
    set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
endif()

# Private to the build: nothing of this reaches a project that links tvk::tvk.
add_library(tvk_build_flags INTERFACE)
target_compile_options(tvk_build_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    $<$<BOOL:${TVK_WERROR}>:-Werror>)
if(TVK_SANITIZE)
    target_compile_options(tvk_build_flags INTERFACE
        -fsanitize=${TVK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(tvk_build_flags INTERFACE -fsanitize=${TVK_SANITIZE})
endif()
if(TVK_FUZZ_ENGINE)
    target_compile_options(tvk_build_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(TVK_COVERAGE)
    target_compile_options(tvk_build_flags INTERFACE --coverage)
    target_link_options(tvk_build_flags INTERFACE --coverage)
endif()
