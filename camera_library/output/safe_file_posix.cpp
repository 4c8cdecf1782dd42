#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <random>
#include <string_view>
#include <system_error>

#include "camera_library/output/safe_file.h"

namespace lmlib64 {

namespace {

[[noreturn]] void fail(const std::string &fileName, int error) {
    throw FileWriteError("The file \"" + fileName +
                         "\" could not be written: " + std::generic_category().message(error) + ".");
}

// The file that a link leads to; the name itself where it is no link or where there is no file yet.
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

// Permissions of the file to be replaced, or those of a new file. Refuses what a rename would wrongly replace.
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
    // The superuser may write to any file, but a write-protected one is protected from slips of the pen too.
    if ((status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0 || access(target.c_str(), W_OK) != 0) {
        fail(fileName, EACCES);
    }
    return status.st_mode & 07777;
}

// The folder that the file is in, with its slash; empty for the current one.
std::string folderOf(const std::string &target) {
    const std::size_t slash = target.find_last_of('/');
    return slash == std::string::npos ? "" : target.substr(0, slash + 1);
}

// Short and independent of the target's name, which may already be as long as names may be.
constexpr std::string_view temporaryBeginning = ".lmlib64-";
constexpr std::string_view temporaryEnding = ".tmp";

// Every temporary file is locked by the process that writes it, until it is renamed. One that nobody has locked was
// left by a process that came to its end before that, and is in nobody's way but the user's.
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
        const std::string_view name(entry->d_name);
        const bool isTemporary = name.size() > temporaryBeginning.size() + temporaryEnding.size() &&
                                 name.substr(0, temporaryBeginning.size()) == temporaryBeginning &&
                                 name.substr(name.size() - temporaryEnding.size()) == temporaryEnding;
        if (isTemporary) {
            removeIfAbandoned(folder + std::string(name));
        }
    }
}

// A new file beside the target that is removed unless it is renamed.
class TemporaryFile {
public:
    TemporaryFile(const std::string &folder, const std::string &reportedName) : fileName(reportedName) {
        std::random_device random;
        do {
            path = folder;
            path.append(temporaryBeginning).append(std::to_string(random())).append(temporaryEnding);
        } while (!create());
        // What is locked is the open file, by whichever descriptor; this one is closed after the renaming only.
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
        // Some file systems tell only here that the disk is full. Closed it is in any case.
        const int closing = descriptor;
        descriptor = -1;
        if (close(closing) != 0) {
            fail(fileName, errno);
        }
    }

    void renameTo(const std::string &target) {
        if (rename(path.c_str(), target.c_str()) != 0) {
            fail(fileName, errno);
        }
        isRenamed = true;
    }

private:
    // False where the name is taken, or another process has taken the file for abandoned before it was locked.
    bool create() {
        descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        if (descriptor < 0 && errno != EEXIST) {
            fail(fileName, errno);
        }
        struct stat status {};
        // Waits for a process that is about to remove it. Where the file system knows no locks, none is ever found
        // abandoned.
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

// Makes the rename itself last. The file is already in place and whole, so a failure here is none of the write's.
void flushFolder(const std::string &folder) noexcept {
    const int descriptor = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        fsync(descriptor);
        close(descriptor);
    }
}

}  // namespace

void writeFileSafely(const std::string &fileName, const std::string &bytes) {
    const std::string target = followLinks(fileName);
    const std::string folder = folderOf(target);  // made before the rename, after which nothing may fail
    const mode_t permissions = permissionsOf(target, fileName);
    removeAbandonedFiles(folder);
    TemporaryFile file(folder, fileName);
    file.write(bytes);
    if (permissions != 0) {
        file.setPermissions(permissions);
    }
    file.flushAndClose();
    file.renameTo(target);
    flushFolder(folder);
}

}  // namespace lmlib64
