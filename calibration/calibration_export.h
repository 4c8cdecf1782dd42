// Marks the functions and classes that the shared library offers to other projects.
#pragma once

#if defined(_WIN32)
#define CALIBRATION_API
#else
#define CALIBRATION_API __attribute__((visibility("default")))
#endif
