#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <random>
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

// A new file beside the target that is removed unless it is renamed.
class TemporaryFile {
public:
    TemporaryFile(const std::string &target, const std::string &reportedName) : fileName(reportedName) {
        const std::size_t slash = target.find_last_of('/');
        const std::string folder = slash == std::string::npos ? "" : target.substr(0, slash + 1);
        std::random_device random;
        do {
            // Short and independent of the target's name, which may already be as long as names may be.
            path = folder + ".lmlib64-" + std::to_string(random()) + ".tmp";
            descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        } while (descriptor < 0 && errno == EEXIST);
        if (descriptor < 0) {
            fail(fileName, errno);
        }
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
    std::string fileName;
    std::string path;
    int descriptor = -1;
    bool isRenamed = false;
};

// Makes the rename itself last. The file is already in place and whole, so a failure here is none of the write's.
void flushFolderOf(const std::string &target) {
    const std::size_t slash = target.find_last_of('/');
    const std::string folder = slash == std::string::npos ? "." : target.substr(0, slash + 1);
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        fsync(descriptor);
        close(descriptor);
    }
}

}  // namespace

void writeFileSafely(const std::string &fileName, const std::string &bytes) {
    const std::string target = followLinks(fileName);
    const mode_t permissions = permissionsOf(target, fileName);
    TemporaryFile file(target, fileName);
    file.write(bytes);
    if (permissions != 0) {
        file.setPermissions(permissions);
    }
    file.flushAndClose();
    file.renameTo(target);
    flushFolderOf(target);
}

}  // namespace lmlib64
