#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <optional>
#include <random>
#include <system_error>
#include <utility>

#include "file_writing/safe_file.h"
#include "file_writing/temporary_name.h"

namespace file_writing {

namespace {

[[noreturn]] void fail(const std::string &fileName, int error) {
    throw FileWriteError("The file \"" + fileName +
                         "\" could not be written: " + std::generic_category().message(error) + ".");
}

// Returns the name of the file that a link leads to. Returns `fileName` if it is not a link or if there is no file yet.
// Throws FileWriteError if the link leads nowhere.
std::string followLinks(const std::string &fileName) {
    struct stat status {};
    if (lstat(fileName.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
        return fileName;
    }
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(fileName.c_str(), nullptr), &std::free);
    if (!resolved) {
        fail(fileName, errno);
    }
    return resolved.get();
}

// Returns the permissions of the file to be replaced; 0 if there is no such file yet. Throws FileWriteError if the
// target is not a regular file or is write-protected.
mode_t permissionsOf(const std::string &target, const std::string &fileName) {
    struct stat status {};
    if (stat(target.c_str(), &status) != 0) {
        if (errno == ENOENT) {
            return 0;
        }
        fail(fileName, errno);
    }
    if (S_ISDIR(status.st_mode)) {
        fail(fileName, EISDIR);
    }
    if (!S_ISREG(status.st_mode)) {
        fail(fileName, EINVAL);
    }
    // A write-protected file is refused even if the user is the superuser, who could write to it: the protection is
    // also meant against mistakes.
    if ((status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0 || access(target.c_str(), W_OK) != 0) {
        fail(fileName, EACCES);
    }
    return status.st_mode & 07777;
}

// Returns the folder that the file is in, with a slash at the end. The result is empty if the folder is the current
// one.
std::string folderOf(const std::string &target) {
    const std::size_t slash = target.find_last_of('/');
    return slash == std::string::npos ? "" : target.substr(0, slash + 1);
}

ProcessNumber thisProcess() {
    return static_cast<ProcessNumber>(getpid());
}

// True if no process has this number. Also true for this process's own number, because a file with that number in its
// name may be from an earlier process. The temporary files of this process are locked, so they are not removed.
bool isGone(ProcessNumber number) {
    const auto process = static_cast<pid_t>(number);
    return process == getpid() || (process > 0 && kill(process, 0) != 0 && errno == ESRCH);
}

// Removes a temporary file whose process is gone, unless the file is locked. A process keeps each of its temporary
// files locked until it has renamed or removed the file. So a file without a lock was left behind when its process
// ended.
void removeIfAbandoned(const std::string &path) {
    const int descriptor = open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor >= 0) {
        if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
            unlink(path.c_str());
        }
        close(descriptor);
    }
}

struct CloseFolder {
    void operator()(DIR *folder) const { closedir(folder); }
};

void removeAbandonedFiles(const std::string &folder) {
    const std::unique_ptr<DIR, CloseFolder> entries(opendir(folder.empty() ? "." : folder.c_str()));
    while (const dirent *entry = entries ? readdir(entries.get()) : nullptr) {
        const std::optional<ProcessNumber> writer = writerOf(entry->d_name);
        if (writer && isGone(*writer)) {
            removeIfAbandoned(folder + entry->d_name);
        }
    }
}

// A new file beside the target. It is removed unless it is renamed.
class TemporaryFile {
public:
    // Creates the file with these permissions, without those that the process's umask takes away. If `permissions` is
    // 0, the file gets the usual permissions of a new file.
    TemporaryFile(const std::string &folder, const std::string &reportedName, mode_t permissions)
        : fileName(reportedName) {
        std::random_device random;
        do {
            path = folder + newTemporaryName(thisProcess(), random);
        } while (!create(permissions));
        // A lock lasts until all descriptors of the open file are closed. This second descriptor is closed only after
        // the renaming.
        lock = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    ~TemporaryFile() {
        if (descriptor >= 0) {
            close(descriptor);
        }
        if (!isRenamed) {
            unlink(path.c_str());
        }
        if (lock >= 0) {
            close(lock);
        }
    }

    void write(const std::string &bytes) {
        std::size_t written = 0;
        while (written < bytes.size()) {
            const ssize_t count = ::write(descriptor, bytes.data() + written, bytes.size() - written);
            if (count < 0 && errno != EINTR) {
                fail(fileName, errno);
            }
            written += count > 0 ? static_cast<std::size_t>(count) : 0;
        }
    }

    void setPermissions(mode_t mode) {
        if (fchmod(descriptor, mode) != 0) {
            fail(fileName, errno);
        }
    }

    void flushAndClose() {
        if (fsync(descriptor) != 0) {
            fail(fileName, errno);
        }
        // Some file systems report only here that the disk is full. The file is closed either way.
        const int closing = descriptor;
        descriptor = -1;
        if (close(closing) != 0) {
            fail(fileName, errno);
        }
    }

    // Returns 0 or the system's error. Allocates nothing.
    int renameTo(const std::string &target) noexcept {
        if (rename(path.c_str(), target.c_str()) != 0) {
            return errno;
        }
        isRenamed = true;
        return 0;
    }

    [[noreturn]] void failBecauseOf(int error) const { fail(fileName, error); }

private:
    // False if the name is taken. Also false if another thread or process found the new file without a lock, and
    // removed it as abandoned.
    bool create(mode_t permissions) {
        descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                          permissions == 0 ? mode_t{0666} : permissions);
        if (descriptor < 0 && errno != EEXIST) {
            fail(fileName, errno);
        }
        struct stat status {};
        // If another thread or process has locked the file in order to remove it, lockFile() waits until it is removed.
        // If the file system has no locks, nobody removes the file, because removeIfAbandoned() needs a lock.
        if (descriptor >= 0 && lockFile() && fstat(descriptor, &status) == 0 && status.st_nlink == 0) {
            close(descriptor);
            descriptor = -1;
        }
        return descriptor >= 0;
    }

    bool lockFile() const {
        int result = 0;
        do {
            result = flock(descriptor, LOCK_EX);
        } while (result != 0 && errno == EINTR);
        return result == 0;
    }

    std::string fileName;
    std::string path;
    int descriptor = -1;
    int lock = -1;
    bool isRenamed = false;
};

// A second name (a hard link) of a file that is to be replaced. The old file exists as long as it has this name.
class OldFile {
public:
    // Null if the file cannot get a second name, for example because the file system has no hard links.
    static std::unique_ptr<OldFile> keep(const std::string &target, const std::string &folder) {
        std::random_device random;
        auto kept = std::make_unique<OldFile>();
        // A lock belongs to the file and not to its name, so this lock also protects the second name. Without it,
        // another thread could remove the second name as an abandoned temporary file.
        kept->lock = open(target.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (kept->lock >= 0) {
            flock(kept->lock, LOCK_SH | LOCK_NB);
        }
        do {
            kept->path = folder + newTemporaryName(thisProcess(), random);
        } while (link(target.c_str(), kept->path.c_str()) != 0 && errno == EEXIST);
        struct stat status {};
        kept->isThere = lstat(kept->path.c_str(), &status) == 0;
        return kept->isThere ? std::move(kept) : nullptr;
    }
    OldFile() = default;
    OldFile(const OldFile &) = delete;
    OldFile &operator=(const OldFile &) = delete;
    ~OldFile() {
        if (isThere) {
            unlink(path.c_str());
        }
        if (lock >= 0) {
            close(lock);
        }
    }

    void restore(const std::string &target) noexcept { isThere = rename(path.c_str(), target.c_str()) != 0; }

private:
    std::string path;
    int lock = -1;
    bool isThere = false;
};

// Makes the renaming itself permanent. The file is already complete and in place, so a failure here does not make the
// write fail.
void flushFolder(const std::string &folder) noexcept {
    const int descriptor = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        fsync(descriptor);
        close(descriptor);
    }
}

}  // namespace

// One file, and what is needed to undo its renaming.
struct SafeFiles::Replacement {
    std::string target;
    std::string folder;
    std::unique_ptr<TemporaryFile> file;
    bool replacesFile = false;
    std::unique_ptr<OldFile> oldFile;  // null if there is none, if it cannot be kept, or if nothing has to be undone

    // Brings back what was there before the renaming: the old file, or no file. If the old file could not be kept, the
    // new file stays. The new file also stays if this function fails, because nothing more can be done then.
    void undo() const noexcept {
        if (oldFile) {
            oldFile->restore(target);
        } else if (!replacesFile) {
            unlink(target.c_str());
        }
    }
};

SafeFiles::SafeFiles() = default;
SafeFiles::~SafeFiles() = default;

void SafeFiles::write(const std::string &fileName, const std::string &bytes) {
    Replacement &replacement = replacements.emplace_back();
    replacement.target = followLinks(fileName);
    replacement.folder = folderOf(replacement.target);
    const mode_t permissions = permissionsOf(replacement.target, fileName);
    replacement.replacesFile = permissions != 0;
    if (replacements.size() == 1) {
        removeAbandonedFiles(replacement.folder);
    }
    replacement.file = std::make_unique<TemporaryFile>(replacement.folder, fileName, permissions);
    if (permissions != 0) {
        // Adds the permissions that the umask took away when the file was created.
        replacement.file->setPermissions(permissions);
    }
    replacement.file->write(bytes);
    replacement.file->flushAndClose();
}

void SafeFiles::commit() {
    // If there is only one file, nothing has to be undone when its renaming fails, so its old file is not kept.
    for (Replacement &replacement : replacements) {
        if (replacements.size() > 1 && replacement.replacesFile) {
            replacement.oldFile = OldFile::keep(replacement.target, replacement.folder);
        }
    }
    for (std::size_t done = 0; done < replacements.size(); ++done) {
        if (const int error = replacements[done].file->renameTo(replacements[done].target); error != 0) {
            for (std::size_t i = 0; i < done; ++i) {
                replacements[i].undo();
            }
            replacements[done].file->failBecauseOf(error);
        }
    }
    for (const Replacement &replacement : replacements) {
        if (&replacement == &replacements.front() || replacement.folder != replacements.front().folder) {
            flushFolder(replacement.folder);
        }
    }
}

}  // namespace file_writing
