// A file is replaced whole or stays as it was, whatever goes wrong.
#include "camera_library/output/safe_file.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/camera_library/temporary_folder.h"

namespace lmlib64 {
namespace {

std::string failureOf(const std::string &fileName, const std::string &bytes) {
    try {
        writeFileSafely(fileName, bytes);
        return "";
    } catch (const FileWriteError &error) {
        return error.what();
    }
}

bool contains(const std::string &text, const std::string &part) {
    return text.find(part) != std::string::npos;
}

// Lets files grow to a few bytes only, as a full disk would.
class SmallFilesOnly {
public:
    explicit SmallFilesOnly(rlim_t bytes) {
        oldHandler = signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &oldLimit);
        rlimit limit = oldLimit;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    SmallFilesOnly(const SmallFilesOnly &) = delete;
    SmallFilesOnly &operator=(const SmallFilesOnly &) = delete;
    ~SmallFilesOnly() {
        setrlimit(RLIMIT_FSIZE, &oldLimit);
        signal(SIGXFSZ, oldHandler);
    }

private:
    rlimit oldLimit{};
    sighandler_t oldHandler = SIG_DFL;
};

TEST(SafeFile, replacesAFileWholeAndKeepsItsPermissions) {
    const TemporaryFolder folder;
    const std::string name = folder.file("pattern.pdf");
    writeBytes(name, "old");
    chmod(name.c_str(), 0640);
    const std::string bytes = std::string(300000, 'a') + '\0' + "end";
    writeFileSafely(name, bytes);
    EXPECT_EQ(readBytes(name), bytes);
    struct stat status {};
    stat(name.c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
    EXPECT_EQ(folder.entryCount(), 1U);
}

TEST(SafeFile, givesANewFileTheUsersPermissions) {
    const TemporaryFolder folder;
    const mode_t oldMask = umask(027);
    writeFileSafely(folder.file("new.json"), "{}");
    umask(oldMask);
    struct stat status {};
    stat(folder.file("new.json").c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST(SafeFile, keepsTheOldFileAndLeavesNoOtherWhenTheDiskIsFull) {
    const TemporaryFolder folder;
    const std::string name = folder.file("pattern.pdf");
    writeBytes(name, "old");
    std::string failure;
    {
        const SmallFilesOnly limit(1000);
        failure = failureOf(name, std::string(5000, 'x'));
    }
    EXPECT_TRUE(contains(failure, name) && contains(failure, "File too large")) << failure;
    EXPECT_EQ(readBytes(name), "old");
    EXPECT_EQ(folder.entryCount(), 1U);
}

TEST(SafeFile, refusesWhatARenameWouldWronglyReplace) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.file("folder.pdf"));
    EXPECT_TRUE(contains(failureOf(folder.file("folder.pdf"), "x"), "Is a directory"));

    ASSERT_EQ(mkfifo(folder.file("pipe.pdf").c_str(), 0600), 0);
    EXPECT_NE(failureOf(folder.file("pipe.pdf"), "x"), "");
    EXPECT_TRUE(std::filesystem::is_fifo(folder.file("pipe.pdf")));

    writeBytes(folder.file("protected.pdf"), "old");
    chmod(folder.file("protected.pdf").c_str(), 0444);
    EXPECT_TRUE(contains(failureOf(folder.file("protected.pdf"), "x"), "Permission denied"));
    EXPECT_EQ(readBytes(folder.file("protected.pdf")), "old");

    EXPECT_EQ(folder.entryCount(), 3U);
}

TEST(SafeFile, namesTheFileAndTheReasonWhereTheFolderWillNotDo) {
    const TemporaryFolder folder;
    const std::string inMissing = folder.file("missing/pattern.pdf");
    const std::string missing = failureOf(inMissing, "x");
    EXPECT_TRUE(contains(missing, inMissing) && contains(missing, "No such file or directory")) << missing;

    writeBytes(folder.file("file"), "x");
    EXPECT_TRUE(contains(failureOf(folder.file("file/pattern.pdf"), "x"), "Not a directory"));
    EXPECT_TRUE(contains(failureOf(folder.file(std::string(300, 'n') + ".pdf"), "x"), "File name too long"));
    EXPECT_EQ(folder.entryCount(), 1U);
    // The temporary file's name does not add to a name that is as long as names may be.
    EXPECT_EQ(failureOf(folder.file(std::string(251, 'n') + ".pdf"), "x"), "");

    if (geteuid() != 0) {
        chmod(folder.path().c_str(), 0555);
        EXPECT_TRUE(contains(failureOf(folder.file("pattern.pdf"), "x"), "Permission denied"));
        chmod(folder.path().c_str(), 0755);
    }
}

TEST(SafeFile, replacesTheFileThatALinkLeadsTo) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.file("elsewhere"));
    writeBytes(folder.file("elsewhere/real.pdf"), "old");
    std::filesystem::create_symlink("elsewhere/real.pdf", folder.file("link.pdf"));
    writeFileSafely(folder.file("link.pdf"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link.pdf")));
    EXPECT_EQ(readBytes(folder.file("elsewhere/real.pdf")), "new");

    std::filesystem::create_symlink("nowhere/real.pdf", folder.file("broken.pdf"));
    EXPECT_TRUE(contains(failureOf(folder.file("broken.pdf"), "x"), "No such file or directory"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("broken.pdf")));
}

}  // namespace
}  // namespace lmlib64
