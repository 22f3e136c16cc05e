# tvk/tvk.h includes every public header of the library but those in detail/, which are there for
# other headers; and a public header, those of modules included, includes public headers and the
# language's alone: the others are not installed.

cmake_minimum_required(VERSION 3.25)

string(REPLACE "," ";" PUBLIC_HEADERS "${PUBLIC_HEADERS}")
set(public)
foreach(header IN LISTS PUBLIC_HEADERS)
    cmake_path(RELATIVE_PATH header BASE_DIRECTORY ${ROOT})
    list(APPEND public ${header})
endforeach()

function(included_by header result)
    file(STRINGS ${ROOT}/${header} lines REGEX "^[ \t]*#[ \t]*include[ \t]*\"")
    set(names)
    foreach(line IN LISTS lines)
        string(REGEX REPLACE "^[^\"]*\"([^\"]*)\".*$" "\\1" name "${line}")
        list(APPEND names ${name})
    endforeach()
    set(${result} ${names} PARENT_SCOPE)
endfunction()

included_by(tvk/tvk.h in_all)
foreach(header IN LISTS public)
    if(header MATCHES "^tvk/" AND NOT header MATCHES "^tvk/tvk\\.h$|/detail/"
            AND NOT header IN_LIST in_all)
        message(SEND_ERROR "tvk/tvk.h does not include ${header}")
    endif()
    included_by(${header} names)
    foreach(name IN LISTS names)
        if(NOT name IN_LIST public)
            message(SEND_ERROR "${header} includes ${name}, which is not installed")
        endif()
    endforeach()
    if(header MATCHES "^modules/")
        file(STRINGS ${ROOT}/${header} foreign REGEX "^[ \t]*#[ \t]*include[ \t]*<[^>]*\\.h>")
        if(foreign)
            message(SEND_ERROR "${header} shows a library that is the module's own: ${foreign}")
        endif()
    endif()
endforeach()
