// Writes a file completely or not at all. One source file per system.
#pragma once

#include <stdexcept>
#include <string>

namespace lmlib64 {

// The text is one sentence with the file's name and the system's reason, in the local 8-bit encoding.
struct FileWriteError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Writes a new file beside the target, flushes it to the disk and then renames it to the target. The target therefore
// holds either its old content or all of `bytes` at any time, even if the machine stops. If the target is a link, the
// file that it leads to is replaced. Folders, devices and write-protected files are refused. Throws FileWriteError if
// anything fails; the target is then unchanged and no other file is left. If the process is killed meanwhile, it leaves
// a file named .lmlib64-PROCESS-RANDOM.tmp (two decimal numbers), which the next write to the folder removes (not on
// Windows). `fileName` is in the local 8-bit encoding.
void writeFileSafely(const std::string &fileName, const std::string &bytes);

}  // namespace lmlib64
