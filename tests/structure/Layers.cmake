# Includes below tvk/ point down only, and to nothing but tvk/, the C++ library and, in platform/,
# the operating system. A module stands on what tvk/ shows of itself, its own folder, its own library
# and what the modules named here show of themselves. docs/architecture.md draws the same map for readers.

cmake_minimum_required(VERSION 3.25)

set(MAY_INCLUDE_platform "")
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

set(LIBRARY_OF_expat "^expat\\.h$")
set(LIBRARY_OF_asio "^(asio(/[a-z0-9_/]+)?\\.hpp|openssl/[a-z0-9_]+\\.h)$")
set(LIBRARY_OF_services "^$")  # none

set(MODULES_OF_services expat)

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

function(check_include_of_module file module line)
    if(line MATCHES "include[ \t]*\"modules/([a-z]+)/")
        set(other ${CMAKE_MATCH_1})
        if(NOT other STREQUAL module AND NOT other IN_LIST MODULES_OF_${module})
            message(SEND_ERROR "${file}: ${module} does not stand on ${other}: ${line}")
        elseif(NOT other STREQUAL module AND line MATCHES "/detail/")
            message(SEND_ERROR "${file}: what is in a detail/ of ${other} stays there: ${line}")
        endif()
    elseif(line MATCHES "include[ \t]*\"tvk/")
        if(line MATCHES "/detail/")
            message(SEND_ERROR "${file}: what is in a detail/ of tvk/ stays there: ${line}")
        endif()
    elseif(line MATCHES "include[ \t]*<([^>]*)>")
        set(header ${CMAKE_MATCH_1})
        if(NOT header MATCHES "${LANGUAGE_HEADER}" AND NOT header MATCHES "${LIBRARY_OF_${module}}")
            message(SEND_ERROR "${file}: neither the language's nor the module's own library: ${line}")
        endif()
    else()
        message(SEND_ERROR "${file}: includes are \"tvk/..\", \"modules/${module}/..\" or <header>: ${line}")
    endif()
endfunction()

# check_includes(top place check): calls check(file folder line) for each include below each folder of
# top, and wants the variable <place><folder> to be defined.
function(check_includes top place check)
    file(GLOB folders RELATIVE ${ROOT}/${top} LIST_DIRECTORIES true ${ROOT}/${top}/*)
    foreach(folder IN LISTS folders)
        set(path ${ROOT}/${top}/${folder})
        if(NOT IS_DIRECTORY ${path})
            continue()
        endif()
        if(NOT DEFINED ${place}${folder})
            message(SEND_ERROR "${top}/${folder}/ has no place among the layers")
        endif()
        file(GLOB_RECURSE files RELATIVE ${ROOT} ${path}/*.h ${path}/*.cpp ${path}/*.inc)
        foreach(file IN LISTS files)
            file(STRINGS ${ROOT}/${file} lines REGEX "^[ \t]*#[ \t]*include")
            foreach(line IN LISTS lines)
                cmake_language(CALL ${check} ${file} ${folder} "${line}")
            endforeach()
        endforeach()
    endforeach()
endfunction()

check_includes(tvk MAY_INCLUDE_ check_include)
check_includes(modules LIBRARY_OF_ check_include_of_module)
