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

# tvk_without_vptr_check(target a.cpp ...): for sources that call a MessageTypeDefImpl through a pointer to
# MessageTypeDef. It stands beside that class with the same virtual operations, which works, and which
# the sanitizer's check of virtual tables rightly calls no object of it.
function(tvk_without_vptr_check target)
    set_source_files_properties(${ARGN}
        TARGET_DIRECTORY ${target}
        PROPERTIES COMPILE_OPTIONS -fno-sanitize=vptr)
endfunction()
