#pragma once

/// TVK_LOADED_FIRST before the definition of an object, with TVK_LOAD_FIRST once in its file: the
/// object is initialised before those of every other file of the library.
#if defined(_WIN32)
#define TVK_LOAD_FIRST __pragma(warning(disable : 4073)) __pragma(init_seg(lib))
#define TVK_LOADED_FIRST
#else
#define TVK_LOAD_FIRST
#define TVK_LOADED_FIRST __attribute__((init_priority(101)))
#endif
