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
