# Compiles SOURCE with what pkg-config says about the installed PACKAGE, and runs it.

cmake_minimum_required(VERSION 3.25)

find_program(PKG_CONFIG pkg-config REQUIRED)
set(ENV{PKG_CONFIG_PATH} ${PC_DIR})

execute_process(COMMAND ${PKG_CONFIG} --modversion ${PACKAGE}
    OUTPUT_VARIABLE version OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(NOT version STREQUAL VERSION)
    message(FATAL_ERROR "${PACKAGE}.pc gives version ${version}, not ${VERSION}")
endif()

execute_process(COMMAND ${PKG_CONFIG} --cflags --libs ${PACKAGE}
    OUTPUT_VARIABLE words OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(words UNIX_COMMAND "${words}")
separate_arguments(flags UNIX_COMMAND "${FLAGS}")
execute_process(
    COMMAND ${COMPILER} -std=c++17 ${flags} ${SOURCE} -o ${OUTPUT} ${words} -Wl,-rpath,${LIB_DIR}
    COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${OUTPUT} ${VERSION} COMMAND_ERROR_IS_FATAL ANY)
