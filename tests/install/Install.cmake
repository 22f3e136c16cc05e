# cmake -DBUILD_DIR=.. -DPREFIX=.. -P Install.cmake: a fresh installation.

cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${PREFIX})
execute_process(
    COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX}
    COMMAND_ERROR_IS_FATAL ANY)
