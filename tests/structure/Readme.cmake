# The example in README.md is, byte for byte, a passage of the program that is built and run.

cmake_minimum_required(VERSION 3.25)

file(READ ${ROOT}/README.md readme)
file(READ ${ROOT}/examples/quickstart.cpp program)
if(NOT readme MATCHES "```cpp\n([^`]*)```")
    message(FATAL_ERROR "README.md shows no C++ example")
endif()
string(FIND "${program}" "${CMAKE_MATCH_1}" place)
if(place EQUAL -1)
    message(FATAL_ERROR "the example of README.md is not in examples/quickstart.cpp:\n"
        "${CMAKE_MATCH_1}")
endif()
