# Conditions on an operating system stand in tvk/platform/ alone.

cmake_minimum_required(VERSION 3.25)

set(SYSTEMS "_WIN32|_WIN64|_MSC_VER|__MINGW|__CYGWIN__|__linux|__APPLE__|__unix|__ANDROID__|BSD__")
string(APPEND SYSTEMS "|_POSIX_VERSION|__GLIBC__")

file(GLOB_RECURSE files RELATIVE ${ROOT} ${ROOT}/tvk/*.h ${ROOT}/tvk/*.cpp ${ROOT}/tvk/*.inc
    ${ROOT}/modules/*.h ${ROOT}/modules/*.cpp ${ROOT}/modules/*.inc)
list(FILTER files EXCLUDE REGEX "^tvk/platform/")
foreach(file IN LISTS files)
    file(STRINGS ${ROOT}/${file} lines REGEX "^[ \t]*#[ \t]*(if|elif).*(${SYSTEMS})")
    foreach(line IN LISTS lines)
        message(SEND_ERROR "${file}: a condition on the system outside tvk/platform/: ${line}")
    endforeach()
endforeach()
