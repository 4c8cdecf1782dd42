#include "camera_library/installation.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

TEST(Installation, findsItsRootByTheNamesOfFolders) {
    const std::vector<std::pair<std::string, std::string>> rows{
        {"/opt/LmCalTab/lib/libLmLib64.so", "/opt/LmCalTab"},
        {"/usr/lib/x86_64-linux-gnu/libLmLib64.so", "/usr"},
        {"/usr/lib64/libLmLib64.so", "/usr"},
        {"/lib/libLmLib64.so", ""},
        {"/srv/lib/some program/lib/libLmLib64.so", "/srv/lib/some program"},
        {"C:/Program Files/LmCalTab/Bin/x64/LmLib64.dll", "C:/Program Files/LmCalTab"},
        {"/home/a/build/tests/libLmLib64.so", "/home/a/build"},
        {"/home/a/libraries/debug/libLmLib64.so", "/home/a/libraries"},
    };
    for (const auto &[file, root] : rows) {
        EXPECT_EQ(lmlib64::installationRoot(file), root) << file;
    }
}

}  // namespace
