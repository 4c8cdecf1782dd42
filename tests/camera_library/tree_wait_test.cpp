#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "camera_library/tree/tree.h"

namespace {

using lmlib64::Node;
using lmlib64::NodeObject;
using lmlib64::Tree;

// Starts a wait on a thread of its own, and returns as soon as that thread waits.
std::future<LmLibResult> startWait(Tree &tree, const std::string &path, LmLibType type) {
    const std::size_t before = tree.waitCount();
    auto wait = std::async(std::launch::async, [&tree, path, type] { return tree.waitForType(path, type, true); });
    while (tree.waitCount() == before) {
        std::this_thread::yield();
    }
    return wait;
}

TEST(TreeWait, answersAtOnceIfThereIsNothingToWaitFor) {
    Tree tree({});
    tree.write("/a/n", 1);
    struct Row {
        const char *path;
        LmLibType type;
        bool waitForChange;
        LmLibResult code;
    };
    const std::vector<Row> rows{
        {"/a/n", LmLibTypeNumber, true, LmLibResultOperationSucceeded},
        {"/a/n", LmLibTypeNumber, false, LmLibResultOperationSucceeded},
        {"/a/n", LmLibTypeNull, false, LmLibResultTimeout},
        {"/a/x", LmLibTypeNull, true, LmLibResultItemInexistent},
        {"/a/x", LmLibTypeAbsent, true, LmLibResultOperationSucceeded},
        {"/a/n/x", LmLibTypeNull, true, LmLibResultItemTypeNotCompatible},
        {"a", LmLibTypeNull, true, LmLibResultItemPathInvalid},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(tree.waitForType(row.path, row.type, row.waitForChange), row.code) << row.path;
    }
}

TEST(TreeWait, endsWithTheFirstChangeThatSettlesIt) {
    Tree tree({});
    const auto write = [&tree](const char *path, Node value) { EXPECT_EQ(tree.write(path, std::move(value)), 0); };
    struct Row {
        LmLibType type;
        std::function<void()> change;
        LmLibResult code;
    };
    const std::vector<Row> rows{
        {LmLibTypeNull, [&] { write("/a/b/n", Node()); }, LmLibResultOperationSucceeded},
        {LmLibTypeString,
         [&] {
             write("/a/b", NodeObject{{"n", "text"}});
         },
         LmLibResultOperationSucceeded},
        {LmLibTypeNull, [&] { tree.erase("/a/b/n"); }, LmLibResultItemInexistent},
        {LmLibTypeNull, [&] { tree.erase("/a"); }, LmLibResultItemInexistent},
        {LmLibTypeNull, [&] { write("/a/b", 5); }, LmLibResultItemInexistent},
        {LmLibTypeAbsent, [&] { tree.erase("/a/b"); }, LmLibResultOperationSucceeded},
        {LmLibTypeAbsent, [&] { write("/a/b", 5); }, LmLibResultOperationSucceeded},
        {LmLibTypeNull, [&] { tree.cancelWaits(); }, LmLibResultOperationCanceled},
        {LmLibTypeNull, [&] { tree.reset(); }, LmLibResultOperationCanceled},
    };
    for (const Row &row : rows) {
        write("/a", NodeObject{{"b", NodeObject{{"n", 1}}}});
        auto wait = startWait(tree, "/a/b/n", row.type);
        write("/a/b/n", 2);
        write("/a/b/other", 2);
        EXPECT_EQ(tree.waitCount(), 1U);
        row.change();
        EXPECT_EQ(wait.get(), row.code) << &row - rows.data();
        EXPECT_EQ(tree.waitCount(), 0U);
    }
}

TEST(TreeWait, noticesChangesThatLastOnlyAMoment) {
    Tree tree({});
    tree.write("/a/n", 1);
    auto forNull = startWait(tree, "/a/n", LmLibTypeNull);
    tree.write("/a/n", Node());
    tree.write("/a/n", 1);
    EXPECT_EQ(forNull.get(), LmLibResultOperationSucceeded);

    auto forText = startWait(tree, "/a/n", LmLibTypeString);
    tree.erase("/a");
    tree.write("/a/n", "text");
    EXPECT_EQ(forText.get(), LmLibResultItemInexistent);
}

TEST(TreeUniqueItems, failWhenAllNumbersAreUsed) {
    Tree tree({}, 2);
    std::string path;
    tree.write("/u/1", 0);
    EXPECT_EQ(tree.makeUniqueItem("/u", "", path), LmLibResultOperationSucceeded);
    EXPECT_EQ(path, "/u/2");
    EXPECT_EQ(tree.makeUniqueItem("/u", "", path), LmLibResultItemMaximumUniqueCountReached);
    tree.reset();
    EXPECT_EQ(tree.makeUniqueItem("/u", "", path), LmLibResultOperationSucceeded);
    EXPECT_EQ(path, "/u/1");
}

}  // namespace
