// Writes files completely or not at all. Each system has its own source file.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace file_writing {

// The text is one sentence with the file's name and the system's reason, in the local 8-bit encoding.
struct FileWriteError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Some files that belong together. Each is written beside its target and flushed to the disk; after the last one, all
// are renamed to their targets, one after the other. So a target holds either its old content or all of its new one at
// any time, even if the machine stops, and no target changes before all files are written.
//
// If a target is a link, the file that it leads to is replaced. Folders, devices and write-protected files are refused.
// If anything fails, no other file is left, and every target is as it was. There is one exception. If a renaming fails
// after another renaming of the same files has succeeded, a target that was already replaced gets its old file back
// only if the file system has hard links. If the process is killed, it leaves files named .lmlib64-PROCESS-RANDOM.tmp
// (two decimal numbers). The next write to the folder removes them; on Windows, they must also be ten minutes old. If
// the process is killed during the renaming, some of the targets are new and the others are old.
//
// File names are in the local 8-bit encoding. Use each object once, from one thread.
class SafeFiles {
public:
    SafeFiles();
    ~SafeFiles();  // removes what has not been renamed
    SafeFiles(const SafeFiles &) = delete;
    SafeFiles &operator=(const SafeFiles &) = delete;

    // Writes a file beside its target. Throws FileWriteError and std::bad_alloc.
    void write(const std::string &fileName, const std::string &bytes);

    // Renames all files to their targets. Throws FileWriteError and std::bad_alloc.
    void commit();

private:
    struct Replacement;
    std::vector<Replacement> replacements;
};

}  // namespace file_writing
