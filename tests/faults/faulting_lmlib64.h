// A camera library that forwards every call to the real one and lets a chosen call fail.
//
// It has the real library's name and interface; link the CMake target faulting_lmlib64 in its place. A call that
// fails is not forwarded: it sets the result to the chosen code and returns 0 or null. For tests that repeat one
// session many times it also makes two things simpler, neither of which changes which calls a client makes: the
// write that starts a command returns when the command has finished, so that nothing depends on timing, and the
// pictures of previews are small.
//
// All of it is for one thread.
#ifndef TESTS_FAULTS_FAULTING_LMLIB64_H
#define TESTS_FAULTS_FAULTING_LMLIB64_H

#include <cstdint>
#include <optional>
#include <string>

#include "camera_library/lmlib64.h"

namespace faulting_lmlib64 {

struct Fault {
    std::int64_t call = 0;  // which call fails, counted from 1; 0 for none
    std::int32_t code = 0;
};

struct FailedCall {
    std::string function;
    std::string path;
    bool hasResult = false;  // whether the caller asked for the result code
};

// Counts the calls from 1 again and lets those of the fault fail from now on.
LMLIB64_API void setFault(const Fault &fault);

LMLIB64_API std::int64_t callCount();

// The call that the fault met; none where there were not that many calls.
LMLIB64_API std::optional<FailedCall> failedCall();

// Of the real library, past every fault and uncounted.
LMLIB64_API std::int32_t realChildCount(const std::string &path);  // 0 where the node is absent
LMLIB64_API void realFinalize();

}  // namespace faulting_lmlib64

#endif
