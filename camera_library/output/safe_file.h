// Writes a file whole or not at all. What must differ by system stands in safe_file_posix.cpp and
// safe_file_windows.cpp.
#pragma once

#include <stdexcept>
#include <string>

namespace lmlib64 {

/// The text names the file and the system's reason, in the local 8-bit encoding, as one sentence.
struct FileWriteError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Writes a new file beside the target, flushes it to the disk and then puts it in the target's place, so that
/// at every moment, even if the machine stops, the target is either what it was or all of `bytes`. Where the
/// target is a link, the file it leads to is replaced. Throws FileWriteError where anything fails; then the
/// target is as it was and no other file is left. What a process leaves that is killed meanwhile, a file named
/// .lmlib64-NUMBER.tmp, is removed by the next write to the folder (not on Windows). Folders, devices and
/// write-protected files are refused. `fileName` is in the local 8-bit encoding.
void writeFileSafely(const std::string &fileName, const std::string &bytes);

}  // namespace lmlib64
