// Writes files completely or not at all. Each system has its own source file.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace file_writing {

// what() returns one sentence with the file's name and the system's reason, in the local 8-bit encoding.
struct FileWriteError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Writes several files that belong together. Each call of write() writes one file beside its target and flushes it to
// the disk. Then commit() renames all files to their targets, one after the other. So at any time, even if the machine
// stops, a target has either its old content or all of its new content. No target changes before all files are written.
//
// If a target is a link, the file that it leads to is replaced. Folders, devices and write-protected files are refused.
// If anything fails, the files beside the targets are removed. If it is a renaming that fails, the renamings before it
// are undone: a file that is new is removed, and a file that was replaced comes back. So after a failure, every target
// is as it was, with two exceptions: on a file system without hard links, a replaced file cannot come back, and the
// undoing of a renaming can itself fail. In both cases, the target keeps its new content.
//
// If the process is killed, it leaves files named .lmlib64-PROCESS-RANDOM.tmp, where PROCESS and RANDOM are decimal
// numbers. If it is killed during the renaming, some of the targets are new and the others are old. The first write()
// of each object removes such files of ended processes from the folder of its target; on Windows, only files that are
// more than ten minutes old.
//
// File names are in the local 8-bit encoding. Use each object once, from one thread.
class SafeFiles {
public:
    SafeFiles();
    ~SafeFiles();  // removes the files that have not been renamed
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
