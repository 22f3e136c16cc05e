#pragma once

#include <cstdio>

/// States a property inside a fuzz target: when `condition` does not hold, prints it with its
/// place and traps, so that the engine keeps the input and a debugger stops at the line.
#define FUZZ_CHECK(condition)                                                                     \
    do {                                                                                          \
        if (!(condition)) {                                                                       \
            std::fprintf(stderr, "%s:%d: property broken: %s\n", __FILE__, __LINE__, #condition); \
            std::fflush(stderr);                                                                  \
            __builtin_trap();                                                                     \
        }                                                                                         \
    } while (false)
