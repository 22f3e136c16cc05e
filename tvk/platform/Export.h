#pragma once

/// TVK_API marks what the shared library exports: every public class and function, thrown classes
/// and interfaces included, so that their type identity is one across all modules of a process.
#if defined(_WIN32)
#if defined(TVK_BUILDING)
#define TVK_API __declspec(dllexport)
#else
#define TVK_API __declspec(dllimport)
#endif
#else
#define TVK_API __attribute__((visibility("default")))
#endif
