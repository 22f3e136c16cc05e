# Includes below tvk/ point down only, and to nothing but tvk/, the C++ library and, in platform/,
# the operating system. docs/architecture.md draws the same map for readers.

cmake_minimum_required(VERSION 3.25)

set(MAY_INCLUDE_platform)
set(MAY_INCLUDE_values platform)
set(MAY_INCLUDE_errors platform values)
set(MAY_INCLUDE_text platform values errors)
set(MAY_INCLUDE_json platform values errors text)
set(MAY_INCLUDE_definitions platform values errors text)
set(MAY_INCLUDE_xml platform values errors text)
set(MAY_INCLUDE_inet platform values errors text)
set(MAY_INCLUDE_chart platform values)
set(MAY_INCLUDE_cipher platform)
set(MAY_INCLUDE_agent platform values errors text json definitions xml inet chart)

# Headers of the C++ library have no dot; the C ones are wanted under their C++ names. Vector
# instructions are the compiler's, not a system's.
set(LANGUAGE_HEADER "^([a-z0-9_]+|[a-z0-9]+intrin\\.h|arm_neon\\.h)$")

function(check_include file folder line)
    if(line MATCHES "include[ \t]*\"tvk/([a-z]+)/")
        set(target ${CMAKE_MATCH_1})
        if(NOT target STREQUAL folder AND NOT target IN_LIST MAY_INCLUDE_${folder})
            message(SEND_ERROR "${file}: ${folder}/ may not include ${target}/: ${line}")
        endif()
    elseif(line MATCHES "include[ \t]*<([^>]*)>")
        if(NOT folder STREQUAL "platform" AND NOT CMAKE_MATCH_1 MATCHES "${LANGUAGE_HEADER}")
            message(SEND_ERROR "${file}: not a header of the language: ${line}")
        endif()
    else()
        message(SEND_ERROR "${file}: includes are \"tvk/<folder>/..\" or <header>: ${line}")
    endif()
endfunction()

file(GLOB folders RELATIVE ${ROOT}/tvk LIST_DIRECTORIES true ${ROOT}/tvk/*)
foreach(folder IN LISTS folders)
    if(NOT IS_DIRECTORY ${ROOT}/tvk/${folder})
        continue()
    endif()
    if(NOT DEFINED MAY_INCLUDE_${folder} AND NOT folder STREQUAL "platform")
        message(SEND_ERROR "tvk/${folder}/ has no place among the layers")
    endif()
    file(GLOB_RECURSE files RELATIVE ${ROOT} ${ROOT}/tvk/${folder}/*.h ${ROOT}/tvk/${folder}/*.cpp
        ${ROOT}/tvk/${folder}/*.inc)
    foreach(file IN LISTS files)
        file(STRINGS ${ROOT}/${file} lines REGEX "^[ \t]*#[ \t]*include")
        foreach(line IN LISTS lines)
            check_include(${file} ${folder} "${line}")
        endforeach()
    endforeach()
endforeach()
