// Marks the functions that the shared library offers to other projects.
#pragma once

#if defined(_WIN32)
#define PATTERN_READER_API
#else
#define PATTERN_READER_API __attribute__((visibility("default")))
#endif
