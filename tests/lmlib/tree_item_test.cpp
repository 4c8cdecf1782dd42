#include "lmlib/tree_item.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "lmlib/error_codes.h"
#include "lmlib/lm_lib_exception.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"

namespace {

using Lines = std::vector<std::string>;
using Item = const TreeItem &;

std::string textOf(bool value) {
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

// Returns the number of lines that were written to the debug log. Every LmLibException writes one line when it is made.
std::ptrdiff_t loggedCount() {
    const Lines lines = scripted_lmlib64::callLines();
    return std::count_if(lines.begin(), lines.end(), [](auto &line) { return line.rfind("lmLibWriteDebug", 0) == 0; });
}

struct Operation {
    const char *function, *child, *arguments;
    std::string returned;
    std::function<std::string(Item)> run;
};

// Returns all operations on children of /A. For each operation, the list has the one library call that the operation
// makes (function, child and arguments), and the value that the operation returns, as text.
std::vector<Operation> operations() {
    const auto none = [](auto operation) {
        return [operation](Item i) {
            (i.*operation)();
            return std::string();
        };
    };
    return {
        {"SetString", "new", " text", "text", [](Item i) { return std::string(i = "text"); }},
        {"SetString", "new", "", "", [](Item i) { return i = std::string(); }},
        {"SetString", "new", " own", "own", [](Item i) { return i = std::string("own"); }},
        {"SetInt", "new", " -2147483648", "-2147483648", [](Item i) { return std::to_string(i = INT32_MIN); }},
        {"SetDouble", "new", " 0.1", "0.100000", [](Item i) { return std::to_string(i = 0.1); }},
        {"SetBool", "new", " false", "false", [](Item i) { return textOf(i = false); }},
        {"SetNull", "text", "", "", none(&TreeItem::setNull)},
        {"GetString", "text", "", "moin", [](Item i) { return i.asString(); }},
        {"GetInt", "number", "", "7", [](Item i) { return std::to_string(i.asInt()); }},
        {"GetDouble", "real", "", "0.100000", [](Item i) { return std::to_string(i.asDouble()); }},
        {"GetBool", "yes", "", "true", [](Item i) { return textOf(i.asBool()); }},
        {"GetJson", "list", " false 18 true", "[1,2,3]", [](Item i) { return i.asJson(false, 18, true); }},
        {"GetJson", "yes", " true 6 false", "true", [](Item i) { return i.asJson(true, 6, false); }},
        {"GetCount", "list", "", "3", [](Item i) { return std::to_string(i.count()); }},
        {"GetName", "list", "", "list", [](Item i) { return i.name(); }},
        {"GetType", "text", "", "true", [](Item i) { return textOf(i.isString()); }},
        {"Erase", "text", "", "", none(&TreeItem::erase)},
        {"MakeUniqueItem", "new", " base", "/A/new/base1", [](Item i) { return i.makeUniqueItem("base").path(); }},
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

TEST_F(TreeItemTest, makesOneCallPerOperationAndThrowsTheCallsResultCodeWithThePath) {
    for (const Operation &operation : operations()) {
        const std::string function = std::string("lmLib") + operation.function;
        const std::string path = std::string("/A/") + operation.child;
        std::string call = function;
        call.append(" ").append(path).append(operation.arguments);
        SetUp();
        EXPECT_EQ(operation.run(TreeItem("/A")[operation.child]), operation.returned) << call;
        EXPECT_EQ(scripted_lmlib64::callLines(), Lines{call});
        SetUp();
        scripted_lmlib64::setResult(function, path, LmLibResultTimeout);
        try {
            operation.run(TreeItem(path));
            ADD_FAILURE() << call << " does not throw";
        } catch (const LmLibException &exception) {
            EXPECT_EQ(exception.itemPath, path);
            EXPECT_EQ(exception.errorCode, LmLibResultTimeout);
            EXPECT_EQ(exception.commandSlot, nullptr);
        }
        EXPECT_EQ(scripted_lmlib64::callLines(),
                  (Lines{call, "lmLibWriteDebugMessage LmLibException Timeout at " + path + " [no result]"}));
    }
}

TEST_F(TreeItemTest, tellsTheTypesApart) {
    const Lines nodes = {"nothing", "number", "text", "yes", "", "list"};
    using TypeTest = bool (TreeItem::*)() const;
    const std::vector<TypeTest> tests = {&TreeItem::isNull, &TreeItem::isNumber, &TreeItem::isString,
                                         &TreeItem::isBoolean, &TreeItem::isObject};
    for (std::size_t test = 0; test < tests.size(); ++test) {
        for (std::size_t node = 0; node < nodes.size(); ++node) {
            const TreeItem item = nodes[node].empty() ? TreeItem("/A") : TreeItem("/A")[nodes[node]];
            EXPECT_EQ((item.*tests[test])(), node == test) << item.path() << ", test " << test;
        }
        EXPECT_THROW((TreeItem("/absent").*tests[test])(), LmLibException);
    }
}

TEST_F(TreeItemTest, logsNoErrorWhenAskedWhetherANodeExists) {
    EXPECT_FALSE(TreeItem("/absent").exists());
    EXPECT_TRUE(TreeItem("/A")["nothing"].exists());
    scripted_lmlib64::setResult("lmLibGetType", "/A", LmLibResultOperationSucceeded);
    EXPECT_FALSE(TreeItem("/A").exists()) << "lmLibGetType reports success but returns 0";
    EXPECT_EQ(loggedCount(), 0);
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

TEST_F(TreeItemTest, readsUncheckedTextsWithoutAskingForTheResultCode) {
    EXPECT_EQ(TreeItem("/A")["text"].asStringUnchecked(), "moin");
    EXPECT_EQ(TreeItem("/A")["number"].asStringUnchecked(), "");
    EXPECT_EQ(TreeItem("/absent").asStringUnchecked(), "");
    EXPECT_EQ(scripted_lmlib64::callLines(),
              (Lines{"lmLibGetString /A/text [no result]", "lmLibGetString /A/number [no result]",
                     "lmLibGetString /absent [no result]"}));
}

TEST_F(TreeItemTest, returnsTheDefaultForAMissingValueButThrowsIfTheTypeQueryFails) {
    const TreeItem item("/A");
    EXPECT_EQ(asStringOr(item["text"], "default"), "moin");
    EXPECT_EQ(asStringOr(item["absent"], "default"), "default");
    EXPECT_EQ(asStringOr(item["number"], "default"), "default");
    EXPECT_EQ(asDoubleOr(item["real"], 2.5), 0.1);
    EXPECT_EQ(asDoubleOr(item["absent"], 2.5), 2.5);
    EXPECT_EQ(asDoubleOr(item["text"], 2.5), 2.5);
    EXPECT_EQ(loggedCount(), 0);

    scripted_lmlib64::setResult("lmLibGetString", "/A/text", LmLibResultTimeout);
    scripted_lmlib64::setResult("lmLibGetDouble", "/A/real", LmLibResultTimeout);
    EXPECT_EQ(asStringOr(item["text"], "default"), "default");
    EXPECT_EQ(asDoubleOr(item["real"], 2.5), 2.5);
    for (const int query : {1, 2}) {
        SetUp();
        scripted_lmlib64::setResult("lmLibGetType", "/A/text", LmLibResultNotConnected, query);
        scripted_lmlib64::setResult("lmLibGetType", "/A/real", LmLibResultNotConnected, query);
        EXPECT_THROW(asStringOr(item["text"], ""), LmLibException) << query;
        EXPECT_THROW(asDoubleOr(item["real"], 0), LmLibException) << query;
    }
}

TEST(LmLibExceptionTest, writesOneDebugLineAlsoIfItIsCopied) {
    scripted_lmlib64::reset();
    const LmLibException exception("/A", LmLibResultItemInexistent, nullptr);
    const LmLibException copy = exception;
    EXPECT_EQ(copy.itemPath, "/A");
    EXPECT_EQ(copy.errorCode, 3);
    EXPECT_EQ(copy.errorName, "ItemInexistent");
    EXPECT_EQ(LmLibException("", -5, nullptr).errorName, "");
    EXPECT_EQ(scripted_lmlib64::callLines(),
              (Lines{"lmLibWriteDebugMessage LmLibException ItemInexistent at /A [no result]",
                     "lmLibWriteDebugMessage LmLibException  at  [no result]"}));
}

// The name of a code is the name of the interface's constant without the prefix LmLibResult.
TEST(ErrorCodes, haveExactlyTheNamesOfTheInterface) {
    std::ifstream header(INTERFACE_HEADER);
    const std::string prefix = "LmLibResult";
    std::int32_t count = 0;
    std::string constant;
    std::string equals;
    std::int32_t code = 0;
    for (std::string line; std::getline(header, line);) {
        std::istringstream words(line);
        if (words >> constant >> equals >> code && equals == "=" && constant.compare(0, prefix.size(), prefix) == 0) {
            EXPECT_EQ(errorName(code), constant.substr(prefix.size()));
            ++count;
        }
    }
    EXPECT_EQ(count, 29);
    using Limits = std::numeric_limits<std::int32_t>;
    for (const std::int32_t noCode : {29, -1, Limits::min(), Limits::max()}) {
        EXPECT_STREQ(errorName(noCode), "") << noCode;
    }
}

}  // namespace
