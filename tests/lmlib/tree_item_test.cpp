#include "lmlib/tree_item.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "lmlib/lm_lib_exception.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"

namespace {

using Lines = std::vector<std::string>;

const char *textOf(bool value) {
    return value ? "true" : "false";
}

class TreeItemTest : public testing::Test {
protected:
    void SetUp() override {
        scripted_lmlib64::reset();
        scripted_lmlib64::setNode(
            "/A", R"({"text": "moin", "number": 7, "real": 0.1, "yes": true, "nothing": null, "list": [1, 2, 3]})");
    }
};

struct Operation {
    std::string call;
    std::string returned;
    std::function<std::string(const TreeItem &)> run;
    std::string child;
};

// Every operation on a child of /A, what it returns as text, and its one call.
std::vector<Operation> operations() {
    return {
        {"lmLibSetString /A/new text", "text", [](const TreeItem &i) { return std::string(i = "text"); }, "new"},
        {"lmLibSetString /A/new", "", [](const TreeItem &i) { return i = std::string(); }, "new"},
        {"lmLibSetString /A/new own", "own", [](const TreeItem &i) { return i = std::string("own"); }, "new"},
        {"lmLibSetInt /A/new -2147483648", "-2147483648",
         [](const TreeItem &i) { return std::to_string(i = INT32_MIN); }, "new"},
        {"lmLibSetDouble /A/new 0.1", "0.100000", [](const TreeItem &i) { return std::to_string(i = 0.1); }, "new"},
        {"lmLibSetDouble /A/new 12", "12.000000", [](const TreeItem &i) { return std::to_string(i = 12.0); }, "new"},
        {"lmLibSetBool /A/new true", "true", [](const TreeItem &i) { return std::string(textOf(i = true)); }, "new"},
        {"lmLibSetBool /A/new false", "false", [](const TreeItem &i) { return std::string(textOf(i = false)); }, "new"},
        {"lmLibSetNull /A/text", "",
         [](const TreeItem &i) {
             i.setNull();
             return std::string();
         },
         "text"},
        {"lmLibGetString /A/text", "moin", [](const TreeItem &i) { return i.asString(); }, "text"},
        {"lmLibGetInt /A/number", "7", [](const TreeItem &i) { return std::to_string(i.asInt()); }, "number"},
        {"lmLibGetDouble /A/real", "0.100000", [](const TreeItem &i) { return std::to_string(i.asDouble()); }, "real"},
        {"lmLibGetBool /A/yes", "true", [](const TreeItem &i) { return std::string(textOf(i.asBool())); }, "yes"},
        {"lmLibGetJson /A/list false 18 true", "[1,2,3]", [](const TreeItem &i) { return i.asJson(false, 18, true); },
         "list"},
        {"lmLibGetJson /A/yes true 6 false", "true", [](const TreeItem &i) { return i.asJson(true, 6, false); }, "yes"},
        {"lmLibGetCount /A/list", "3", [](const TreeItem &i) { return std::to_string(i.count()); }, "list"},
        {"lmLibGetName /A/list", "list", [](const TreeItem &i) { return i.name(); }, "list"},
        {"lmLibGetType /A/list", "true", [](const TreeItem &i) { return std::string(textOf(i.exists())); }, "list"},
        {"lmLibGetType /A/text", "true", [](const TreeItem &i) { return std::string(textOf(i.isString())); }, "text"},
        {"lmLibErase /A/text", "",
         [](const TreeItem &i) {
             i.erase();
             return std::string();
         },
         "text"},
        {"lmLibMakeUniqueItem /A/new base", "/A/new/base1",
         [](const TreeItem &i) { return i.makeUniqueItem("base").path(); }, "new"},
    };
}

TEST_F(TreeItemTest, buildsPathsWithoutAskingTheLibrary) {
    const TreeItem root;
    const TreeItem item("/A");
    TreeItem copy;
    copy = item["B"];
    EXPECT_EQ(root.path(), "");
    EXPECT_EQ(root["Execute"].path(), "/Execute");
    EXPECT_EQ(item[0].path(), "/A/\\0");
    EXPECT_EQ(item[12]["x y"].path(), "/A/\\12/x y");
    EXPECT_EQ(item[-1].path(), "/A/\\-1");
    EXPECT_EQ(item["a/b"][""].path(), "/A/a/b/");
    EXPECT_EQ(copy.path(), "/A/B");
    EXPECT_EQ(scripted_lmlib64::callLines(), Lines());
}

TEST_F(TreeItemTest, makesOneCallPerOperation) {
    for (const Operation &operation : operations()) {
        SetUp();
        EXPECT_EQ(operation.run(TreeItem("/A")[operation.child]), operation.returned) << operation.call;
        EXPECT_EQ(scripted_lmlib64::callLines(), Lines{operation.call});
    }
}

TEST_F(TreeItemTest, throwsEveryCodeWithTheItemsPath) {
    for (const Operation &operation : operations()) {
        SetUp();
        const std::string function = operation.call.substr(0, operation.call.find(' '));
        const std::string path = "/A/" + operation.child;
        scripted_lmlib64::setResult(function, path, LmLibResultTimeout);
        try {
            operation.run(TreeItem(path));
            ADD_FAILURE() << operation.call << " does not throw";
        } catch (const LmLibException &exception) {
            EXPECT_EQ(exception.itemPath, path);
            EXPECT_EQ(exception.errorCode, LmLibResultTimeout);
            EXPECT_EQ(exception.errorName, "Timeout");
            EXPECT_EQ(exception.commandSlot, nullptr);
        }
        EXPECT_EQ(scripted_lmlib64::callLines(),
                  (Lines{operation.call, "lmLibWriteDebugMessage LmLibException Timeout at " + path + " [no result]"}));
    }
}

TEST_F(TreeItemTest, tellsTheTypesApart) {
    const Lines nodes = {"nothing", "number", "text", "yes", ""};
    using TypeTest = bool (TreeItem::*)() const;
    const std::vector<TypeTest> tests = {&TreeItem::isNull, &TreeItem::isNumber, &TreeItem::isString,
                                         &TreeItem::isBoolean, &TreeItem::isObject};
    for (std::size_t node = 0; node < nodes.size(); ++node) {
        const TreeItem item = nodes[node].empty() ? TreeItem("/A") : TreeItem("/A")[nodes[node]];
        for (std::size_t test = 0; test < tests.size(); ++test) {
            EXPECT_EQ((item.*tests[test])(), node == test) << item.path() << ", test " << test;
        }
    }
    for (const TypeTest test : tests) {
        EXPECT_FALSE((TreeItem("/A")["list"].*test)());
        EXPECT_THROW((TreeItem("/absent").*test)(), LmLibException);
    }
}

TEST_F(TreeItemTest, takesAbsenceForNoFailureOfExists) {
    EXPECT_FALSE(TreeItem("/absent").exists());
    EXPECT_TRUE(TreeItem("/A")["nothing"].exists());
    scripted_lmlib64::setResult("lmLibGetType", "/A", LmLibResultOperationSucceeded);
    EXPECT_FALSE(TreeItem("/A").exists()) << "type 0 without a failure";
    EXPECT_EQ(scripted_lmlib64::debugMessages(), Lines());
}

TEST_F(TreeItemTest, readsNullTextsAsEmpty) {
    for (const std::string function : {"lmLibGetString", "lmLibGetJson", "lmLibGetName", "lmLibMakeUniqueItem"}) {
        scripted_lmlib64::setResult(function, "/A/text", LmLibResultOperationSucceeded);
    }
    const TreeItem item = TreeItem("/A")["text"];
    EXPECT_EQ(item.asString(), "");
    EXPECT_EQ(item.asStringUnchecked(), "");
    EXPECT_EQ(item.asJson(false, 0, false), "");
    EXPECT_EQ(item.name(), "");
    EXPECT_EQ(item.makeUniqueItem("x").path(), "");
}

TEST_F(TreeItemTest, readsUncheckedWithoutAResult) {
    EXPECT_EQ(TreeItem("/A")["text"].asStringUnchecked(), "moin");
    EXPECT_EQ(TreeItem("/A")["number"].asStringUnchecked(), "");
    EXPECT_EQ(TreeItem("/absent").asStringUnchecked(), "");
    EXPECT_EQ(scripted_lmlib64::callLines(),
              (Lines{"lmLibGetString /A/text [no result]", "lmLibGetString /A/number [no result]",
                     "lmLibGetString /absent [no result]"}));
}

TEST_F(TreeItemTest, readsDefaultsForWhatIsNotThere) {
    const TreeItem item("/A");
    EXPECT_EQ(asStringOr(item["text"], "default"), "moin");
    EXPECT_EQ(asStringOr(item["absent"], "default"), "default");
    EXPECT_EQ(asStringOr(item["number"], "default"), "default");
    EXPECT_EQ(asDoubleOr(item["real"], 2.5), 0.1);
    EXPECT_EQ(asDoubleOr(item["absent"], 2.5), 2.5);
    EXPECT_EQ(asDoubleOr(item["text"], 2.5), 2.5);
    EXPECT_EQ(scripted_lmlib64::debugMessages(), Lines());

    scripted_lmlib64::setResult("lmLibGetString", "/A/text", LmLibResultTimeout);
    scripted_lmlib64::setResult("lmLibGetDouble", "/A/real", LmLibResultTimeout);
    EXPECT_EQ(asStringOr(item["text"], "default"), "default");
    EXPECT_EQ(asDoubleOr(item["real"], 2.5), 2.5);
}

TEST_F(TreeItemTest, throwsWhereADefaultsQueriesFail) {
    const TreeItem item("/A");
    for (const int query : {1, 2}) {
        SetUp();
        scripted_lmlib64::setResult("lmLibGetType", "/A/*", LmLibResultNotConnected, query);
        EXPECT_THROW(asStringOr(item["text"], ""), LmLibException) << query;
        SetUp();
        scripted_lmlib64::setResult("lmLibGetType", "/A/*", LmLibResultNotConnected, query);
        EXPECT_THROW(asDoubleOr(item["real"], 0), LmLibException) << query;
    }
}

}  // namespace
