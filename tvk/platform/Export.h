#pragma once

/// TVK_EXPORT and TVK_IMPORT: how a shared library of this system offers a class or function, and how
/// its users name it.
#if defined(_WIN32)
#define TVK_EXPORT __declspec(dllexport)
#define TVK_IMPORT __declspec(dllimport)
#else
#define TVK_EXPORT __attribute__((visibility("default")))
#define TVK_IMPORT __attribute__((visibility("default")))
#endif

/// TVK_API marks what the shared library exports: every public class and function, thrown classes
/// and interfaces included, so that their type identity is one across all modules of a process.
#if defined(TVK_BUILDING)
#define TVK_API TVK_EXPORT
#else
#define TVK_API TVK_IMPORT
#endif

/// Marks an inline member of an exported class of which the library keeps a symbol, for programs that
/// were built when it was none. Windows has that from the mark of the class.
#if defined(_WIN32)
#define TVK_API_INLINE
#else
#define TVK_API_INLINE TVK_API
#endif
