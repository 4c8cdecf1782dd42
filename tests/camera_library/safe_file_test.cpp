// What becomes of permissions and links when a file is replaced. What can go wrong is in tests/faults.
#include "camera_library/output/safe_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/camera_library/temporary_folder.h"

namespace lmlib64 {
namespace {

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

TEST(SafeFile, replacesTheFileThatALinkLeadsTo) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.file("elsewhere"));
    writeBytes(folder.file("elsewhere/real.pdf"), "old");
    std::filesystem::create_symlink("elsewhere/real.pdf", folder.file("link.pdf"));
    writeFileSafely(folder.file("link.pdf"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link.pdf")));
    EXPECT_EQ(readBytes(folder.file("elsewhere/real.pdf")), "new");

    std::filesystem::create_symlink("nowhere/real.pdf", folder.file("broken.pdf"));
    EXPECT_THROW(writeFileSafely(folder.file("broken.pdf"), "x"), FileWriteError);
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("broken.pdf")));
}

}  // namespace
}  // namespace lmlib64
