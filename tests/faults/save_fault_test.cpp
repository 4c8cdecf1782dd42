// Tests saving a pattern when something goes wrong with the file: a bad target, a full disk, a failing rename, a file
// of another user, or a killed process. After each failure, the old file must be unchanged, the error must name the
// file and the reason, no other file may be left, and the next save must work. Only a process that is killed reports
// nothing and leaves a temporary file, which the next save must remove. Also tests permissions, links, and several
// processes that save into one folder.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <functional>
#include <vector>

#include "camera_library/lmlib64.h"
#include "camera_library/output/file_formats.h"
#include "file_writing/safe_file.h"
#include "tests/camera_library/temporary_folder.h"

namespace {

// Determines what happens when the new file is complete and is about to replace the old one.
enum class AtRename { Goes, Fails, FailsOnce, KillsTheProcess };
AtRename atRename = AtRename::Goes;
int renamesBefore = 0;  // the number of renames that succeed before atRename applies
std::function<void()> beforeFailure = [] {};

}  // namespace

// The linker's option --wrap requires these names.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" int __real_rename(const char *from, const char *to);
extern "C" int __wrap_rename(const char *from, const char *to) {
    if (atRename != AtRename::Goes && renamesBefore-- > 0) {
        return __real_rename(from, to);
    }
    if (atRename == AtRename::KillsTheProcess) {
        raise(SIGKILL);
    }
    if (atRename == AtRename::Fails || atRename == AtRename::FailsOnce) {
        atRename = atRename == AtRename::FailsOnce ? AtRename::Goes : atRename;
        beforeFailure();
        errno = EIO;
        return -1;
    }
    return __real_rename(from, to);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

const char *const oldContents = "the file of an earlier save";

constexpr const char *onePattern = R"([{"Type":"Flexible","GridSize":[7,5],"GridSpacing":9}])";

// Saves patterns. Returns the command's error symbol and text; empty if it succeeded.
std::string save(const std::string &fileName, const char *patterns = onePattern) {
    lmLibSetString(nullptr, "/Execute/S/Parameters/Filename", fileName.c_str());
    lmLibSetInt(nullptr, "/Execute/S/Parameters/Resolution", 50);
    lmLibSetJson(nullptr, "/Execute/S/Parameters/Patterns", patterns);
    std::int32_t result = 0;
    lmLibSetString(&result, "/Execute/S/Command", "GenerateCalibrationPattern");
    lmLibWaitForType(&result, "/Execute/S/Command", LmLibTypeNull, 1);
    if (lmLibGetString(&result, "/Execute/S/Result/ErrorSymbol") == nullptr) {
        return "";
    }
    const std::string symbol = lmLibGetString(nullptr, "/Execute/S/Result/ErrorSymbol");
    return symbol + ": " + lmLibGetString(nullptr, "/Execute/S/Result/ErrorText");
}

// Runs the action in a process of its own. Returns the status with which the process ended.
int inOtherProcess(const std::function<void()> &action) {
    const pid_t child = fork();
    if (child == 0) {
        action();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

std::vector<std::string> endings() {
    std::vector<std::string> all;
    for (const lmlib64::FileFormat &format : lmlib64::FileFormats()) {
        all.emplace_back(format.ending);
    }
    return all;
}

class SaveFault : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        target = folder.file("pattern" + GetParam());
        writeBytes(target, oldContents);
        chmod(folder.path().c_str(), 0777);
        chmod(target.c_str(), 0666);
    }

    // Expects that saving to this file fails with this reason, and that no file is changed, added or removed.
    void expectFailure(const std::string &fileName, const std::string &reason) {
        const std::size_t files = folder.entryCount();
        EXPECT_EQ(save(fileName),
                  "FileNotWritten: The file \"" + fileName + "\" could not be written: " + reason + ".");
        EXPECT_EQ(readBytes(target), oldContents);
        EXPECT_EQ(folder.entryCount(), files);
    }

    void expectNextSaveWorks() {
        EXPECT_EQ(save(target), "");
        EXPECT_NE(readBytes(target), oldContents);
    }

    TemporaryFolder folder;
    std::string target;
};

INSTANTIATE_TEST_SUITE_P(All, SaveFault, testing::ValuesIn(endings()),
                         [](const auto &test) { return test.param.substr(1); });

TEST_P(SaveFault, badTarget) {
    const std::string ending = GetParam();
    std::filesystem::create_directory(folder.file("folder" + ending));
    writeBytes(folder.file("protected" + ending), "p");
    chmod(folder.file("protected" + ending).c_str(), 0444);
    ASSERT_EQ(mkfifo(folder.file("pipe" + ending).c_str(), 0600), 0);
    expectFailure(folder.file("missing/pattern" + ending), "No such file or directory");
    expectFailure(target + "/pattern" + ending, "Not a directory");
    expectFailure(folder.file("folder" + ending), "Is a directory");
    expectFailure(folder.file("protected" + ending), "Permission denied");
    expectFailure(folder.file("pipe" + ending), "Invalid argument");
    expectFailure(folder.file(std::string(260, 'n') + ending), "File name too long");
    expectFailure(folder.file(std::string(5000, 'n') + ending), "File name too long");
    EXPECT_EQ(readBytes(folder.file("protected" + ending)), "p");
    EXPECT_TRUE(std::filesystem::is_fifo(folder.file("pipe" + ending)));
    // A name of the maximum length works, because the temporary file's name does not contain it.
    EXPECT_EQ(save(folder.file(std::string(255 - ending.size(), 'n') + ending)), "");
    expectNextSaveWorks();
}

unsigned permissionsOf(const std::string &fileName) {
    struct stat status {};
    return lstat(fileName.c_str(), &status) == 0 ? status.st_mode & 07777U : 0U;
}

TEST_P(SaveFault, keepsPermissionsAndLinks) {
    chmod(target.c_str(), 0640);
    expectNextSaveWorks();
    EXPECT_EQ(permissionsOf(target), 0640U);
    const std::string fresh = folder.file(std::string("fresh") + GetParam());
    const mode_t oldMask = umask(027);
    EXPECT_EQ(save(fresh), "");
    umask(oldMask);
    EXPECT_EQ(permissionsOf(fresh), 0640U);

    const std::string link = folder.file(std::string("link") + GetParam());
    std::filesystem::create_directory(folder.file("elsewhere"));
    writeBytes(folder.file("elsewhere/real"), oldContents);
    std::filesystem::create_symlink("elsewhere/real", link);
    EXPECT_EQ(save(link), "");
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(readBytes(folder.file("elsewhere/real")), readBytes(fresh));
    std::filesystem::remove(folder.file("elsewhere/real"));
    EXPECT_NE(save(link), "");
    EXPECT_TRUE(std::filesystem::is_symlink(link));
}

TEST_P(SaveFault, fullDisk) {
    // A limit on the size of files has the same effect as a full disk; the limit of 0 refuses the first byte.
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited{};
    getrlimit(RLIMIT_FSIZE, &unlimited);
    for (const rlim_t size : {rlim_t{0}, rlim_t{1}, rlim_t{500}}) {
        rlimit limit = unlimited;
        limit.rlim_cur = size;
        setrlimit(RLIMIT_FSIZE, &limit);
        const std::string said = save(target);
        setrlimit(RLIMIT_FSIZE, &unlimited);
        EXPECT_EQ(said, "FileNotWritten: The file \"" + target + "\" could not be written: File too large.");
        EXPECT_EQ(readBytes(target), oldContents);
        EXPECT_EQ(folder.entryCount(), 1U);
    }
    std::signal(SIGXFSZ, oldHandler);
    expectNextSaveWorks();
}

TEST_P(SaveFault, renameFails) {
    atRename = AtRename::Fails;
    expectFailure(target, "Input/output error");
    atRename = AtRename::Goes;
    expectNextSaveWorks();
}

TEST_P(SaveFault, permissionsOfAnotherUser) {
    chmod(target.c_str(), 0644);
    const auto failsAsOtherUser = [this] {
        return inOtherProcess([this] {
            constexpr uid_t nobody = 65534;
            if (geteuid() == 0 && setuid(nobody) != 0) {
                _exit(2);
            }
            const std::string said = save(target);
            _exit(said.find("FileNotWritten") == 0 && said.find("Permission denied") != std::string::npos ? 0 : 1);
        });
    };
    // Case 1: the file belongs to another user, and the saving user may not write to it. Case 2: the saving user may
    // not create files in the folder. Permissions do not stop the superuser. So if the superuser runs the test, the
    // child process saves as another user. Only the superuser can set up case 1.
    if (geteuid() == 0) {
        EXPECT_EQ(failsAsOtherUser(), 0);
    }
    chmod(target.c_str(), 0666);
    chmod(folder.path().c_str(), 0555);
    EXPECT_EQ(failsAsOtherUser(), 0);
    chmod(folder.path().c_str(), 0777);
    EXPECT_EQ(readBytes(target), oldContents);
    EXPECT_EQ(folder.entryCount(), 1U);
    expectNextSaveWorks();
}

TEST_P(SaveFault, killedBeforeTheRename) {
    const int status = inOtherProcess([this] {
        atRename = AtRename::KillsTheProcess;
        save(target);
    });
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    EXPECT_EQ(readBytes(target), oldContents);
    EXPECT_EQ(folder.entryCount(), 2U);  // a killed process cannot remove its file
    // The next save must not remove these files. The first three do not have the name of a temporary file; the last one
    // belongs to process 1, which still runs.
    const std::vector<std::string> others{".lmlib64-notes.tmp", ".lmlib64-7.tmp", ".lmlib64-7-notes.tmp",
                                          ".lmlib64-1-7.tmp"};
    for (const std::string &name : others) {
        writeBytes(folder.file(name), name);
    }
    expectNextSaveWorks();  // this also removes the file of the killed process
    for (const std::string &name : others) {
        EXPECT_TRUE(std::filesystem::remove(folder.file(name))) << name;
    }
    EXPECT_EQ(folder.entryCount(), 1U);
}

// If only the owner may read the old file, only the owner may read the temporary file, even while it is being written.
TEST_P(SaveFault, bytesOfAPrivateFileAreNeverInAReadableOne) {
    chmod(target.c_str(), 0600);
    const int status = inOtherProcess([this] {
        umask(0);
        const rlimit limit{1, 1};
        setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, [](int) { _exit(3); });  // ends the process after the first byte was written
        save(target);
    });
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 3);
    EXPECT_EQ(folder.entryCount(), 2U);
    for (const auto &file : std::filesystem::directory_iterator(folder.path())) {
        EXPECT_EQ(file.status().permissions(), std::filesystem::perms{0600}) << file.path();
    }
}

// Saves three pages as three files. The first and the last file exist already. If the save fails, both must keep their
// old contents; if it succeeds, both must be replaced.
TEST(SaveFault, replacesTheFilesOfAllPagesOrNone) {
    const TemporaryFolder folder;
    const std::vector<std::string> files{folder.file("page-00.svg"), folder.file("page-01.svg"),
                                         folder.file("page-02.svg")};
    const auto savePages = [&] {
        return save(folder.file("page.svg"), R"([{"GridSpacing":9},{"GridSpacing":8},{"GridSpacing":7}])");
    };
    const auto expectOldFiles = [&](const std::string &complaint, const std::string &named) {
        EXPECT_EQ(complaint.rfind("FileNotWritten: The file \"" + named + "\"", 0), 0U) << complaint;
        EXPECT_EQ(readBytes(files[0]), oldContents);
        EXPECT_EQ(readBytes(files[2]), oldContents);
        EXPECT_FALSE(std::filesystem::is_regular_file(files[1]));
    };
    writeBytes(files[0], oldContents);
    writeBytes(files[2], oldContents);
    // During the renaming, each old file also has a temporary name (a hard link), from which it can be restored.
    // Another save of this process, which looks for leftover files in the folder, must not remove these names.
    beforeFailure = [&] {
        file_writing::SafeFiles other;
        other.write(folder.file("other"), "");
        other.commit();
        std::filesystem::remove(folder.file("other"));
    };
    for (int failing = 0; failing < 3; ++failing) {
        atRename = AtRename::FailsOnce;  // so the renames that bring back the old files succeed
        renamesBefore = failing;
        expectOldFiles(savePages(), files[static_cast<std::size_t>(failing)]);
        EXPECT_EQ(folder.entryCount(), 2U);
    }
    beforeFailure = [] {};
    std::filesystem::create_directory(files[1]);
    expectOldFiles(savePages(), files[1]);
    EXPECT_EQ(folder.entryCount(), 3U);
    std::filesystem::remove(files[1]);
    EXPECT_EQ(savePages(), "");
    EXPECT_EQ(folder.entryCount(), 3U);
    for (const std::string &file : files) {
        EXPECT_EQ(readBytes(file).compare(0, 5, "<?xml"), 0) << file;
    }
}

// Each process looks for leftover files in the folder while the other processes create their temporary files. No
// process may remove a temporary file of another process.
TEST(SaveFault, manyProcessesSaveIntoOneFolder) {
    constexpr int processes = 8;
    const TemporaryFolder folder;
    for (int process = 0; process < processes; ++process) {
        if (fork() == 0) {
            bool fails = false;
            for (int saves = 0; saves < 1500 && !fails; ++saves) {
                fails = !save(folder.file(std::to_string(process) + ".json")).empty();
            }
            _exit(fails ? 1 : 0);
        }
    }
    for (int process = 0; process < processes; ++process) {
        int status = 0;
        wait(&status);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(folder.entryCount(), std::size_t{processes});
}

}  // namespace
