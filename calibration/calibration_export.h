// Marks the functions and classes that the shared library offers to other projects.
#pragma once

// On Windows, these functions and classes are exported while the DLL itself is built (CALIBRATION_BUILDING), and
// otherwise imported from it. With CALIBRATION_STATIC, they are neither; the build tree defines it for everything that
// links the static library.
#if !defined(_WIN32)
#define CALIBRATION_API __attribute__((visibility("default")))
#elif defined(CALIBRATION_BUILDING)
#define CALIBRATION_API __declspec(dllexport)
#elif defined(CALIBRATION_STATIC)
#define CALIBRATION_API
#else
#define CALIBRATION_API __declspec(dllimport)
#endif
