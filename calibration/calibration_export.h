// Marks the functions and classes that the shared library offers to other projects.
#pragma once

// On Windows, these functions and classes are exported if CALIBRATION_BUILDING is defined, which is so only while the
// library itself is built. Otherwise, they are imported from the DLL unless CALIBRATION_STATIC is defined. The build
// tree defines CALIBRATION_STATIC for everything that links the static library.
#if !defined(_WIN32)
#define CALIBRATION_API __attribute__((visibility("default")))
#elif defined(CALIBRATION_BUILDING)
#define CALIBRATION_API __declspec(dllexport)
#elif defined(CALIBRATION_STATIC)
#define CALIBRATION_API
#else
#define CALIBRATION_API __declspec(dllimport)
#endif
