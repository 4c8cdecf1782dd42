// The parts of the library, put together; the C interface works on the one there is in a process.
#pragma once

#include "camera_library/commands/command_executor.h"
#include "camera_library/debug_log.h"
#include "camera_library/tree/tree.h"

namespace lmlib64 {

struct Library {
    /// The process's library, made on the first call. It is never destroyed, so that calls from the
    /// destructors of a program's static objects still find it; at the exit of the process its thread ends.
    static Library &instance();

    /// As lmLibFinalize.
    void finalize();

    Tree tree;
    CommandExecutor executor;
    DebugLog debugLog;

private:
    Library();
};

}  // namespace lmlib64
