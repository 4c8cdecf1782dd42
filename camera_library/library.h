// Holds the parts of the library. A process has one such object, which the C interface uses.
#pragma once

#include "camera_library/commands/command_executor.h"
#include "camera_library/debug_log.h"
#include "camera_library/tree/tree.h"

namespace lmlib64 {

struct Library {
    // Returns the process's library, made by the first call. The library is never destroyed, so that destructors of a
    // program's static objects can still call it. Its thread ends when the process exits. A child process made by
    // fork() gets a library of its own.
    static Library &instance();

    // Does the work of lmLibFinalize.
    void finalize();

    Tree tree;
    CommandExecutor executor;
    DebugLog debugLog;

private:
    Library();
    static Library &make();
};

}  // namespace lmlib64
