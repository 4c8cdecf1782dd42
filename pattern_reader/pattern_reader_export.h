// Marks the functions that the shared library offers to other projects.
#pragma once

// On Windows, these functions are exported if PATTERN_READER_BUILDING is defined, which is so only while the library
// itself is built. Otherwise, they are imported from the DLL unless PATTERN_READER_STATIC is defined. The build tree
// defines PATTERN_READER_STATIC for everything that links the static library.
#if !defined(_WIN32)
#define PATTERN_READER_API __attribute__((visibility("default")))
#elif defined(PATTERN_READER_BUILDING)
#define PATTERN_READER_API __declspec(dllexport)
#elif defined(PATTERN_READER_STATIC)
#define PATTERN_READER_API
#else
#define PATTERN_READER_API __declspec(dllimport)
#endif
