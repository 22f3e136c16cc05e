# The installed version file must accept its own minor version alone.

cmake_minimum_required(VERSION 3.25)

function(expect wanted outcome)
    set(PACKAGE_FIND_VERSION ${wanted})
    string(REPLACE "." ";" numbers ${wanted})
    list(GET numbers 0 PACKAGE_FIND_VERSION_MAJOR)
    list(GET numbers 1 PACKAGE_FIND_VERSION_MINOR)
    set(PACKAGE_VERSION_COMPATIBLE FALSE)
    include(${PACKAGE_DIR}/tvkConfigVersion.cmake)
    if(NOT PACKAGE_VERSION_COMPATIBLE STREQUAL outcome)
        message(SEND_ERROR "asked for ${wanted}: compatible is ${PACKAGE_VERSION_COMPATIBLE}")
    endif()
endfunction()

math(EXPR next_major "${MAJOR} + 1")
math(EXPR next_minor "${MINOR} + 1")
expect(${MAJOR}.${MINOR} TRUE)
expect(${MAJOR}.${next_minor} FALSE)
expect(${next_major}.0 FALSE)
