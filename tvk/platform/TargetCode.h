#pragma once

// TVK_BEGIN_TARGET("avx2,bmi") to TVK_END_TARGET: what is defined in between, templates included,
// is built for processors with these features, and may only be reached behind a test for them.
//
// Headers are included before. What comes from them, and is shared with other sources, is then
// still built for every processor, so it does not matter whose copy the linker keeps; it may be
// inlined into the code in between nevertheless. What is defined in between has internal linkage.
// A compiler without such a switch takes the instructions anywhere.

#if defined(__clang__)
#define TVK_BEGIN_TARGET(features) \
    TVK_TARGET_PRAGMA(clang attribute push(__attribute__((target(features))), apply_to = function))
#define TVK_END_TARGET TVK_TARGET_PRAGMA(clang attribute pop)
#elif defined(__GNUC__)
#define TVK_BEGIN_TARGET(features) \
    TVK_TARGET_PRAGMA(GCC push_options) TVK_TARGET_PRAGMA(GCC target(features))
#define TVK_END_TARGET TVK_TARGET_PRAGMA(GCC pop_options)
#else
#define TVK_BEGIN_TARGET(features)
#define TVK_END_TARGET
#endif

#define TVK_TARGET_PRAGMA(text) _Pragma(#text)

// TVK_AS_IF_UNKNOWN(value): the compiler computes nothing from a vector's value beforehand.
// TVK_INLINE: part of a loop where each instruction counts, inlined in any case.
// TVK_NOINLINE: rarely called there, and better out of the way.
#if defined(__GNUC__)
#define TVK_AS_IF_UNKNOWN(value) __asm__("" : "+x"(value))
#define TVK_INLINE inline __attribute__((always_inline))
#define TVK_NOINLINE __attribute__((noinline))
#else
#define TVK_AS_IF_UNKNOWN(value) static_cast<void>(value)
#define TVK_INLINE inline
#define TVK_NOINLINE
#endif
