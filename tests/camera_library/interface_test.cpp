// Tests the rules that lmlib64.h states, by calling the library's C functions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "camera_library/lmlib64.h"

namespace {

std::string repeated(const std::string &text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

class Interface : public testing::Test {
public:
    ~Interface() override { lmLibFinalize(nullptr); }

protected:
    // Returns the node as JSON. If it cannot be read, returns "code " and the result code; 3 means that it is absent.
    std::string json(const std::string &path) {
        const char *text = lmLibGetJson(&result, path.c_str(), 0, 0, 0);
        return text == nullptr ? "code " + std::to_string(result) : text;
    }
    void setJson(const char *path, const char *text) {
        lmLibSetJson(&result, path, text);
        ASSERT_EQ(result, LmLibResultOperationSucceeded) << text;
    }

    // Starts the command in the slot and waits until it has ended.
    void run(const std::string &slot, const char *command) {
        lmLibSetString(&result, (slot + "/Command").c_str(), command);
        lmLibWaitForType(&result, (slot + "/Command").c_str(), LmLibTypeNull, 1);
        EXPECT_EQ(result, LmLibResultOperationSucceeded) << slot;
    }

    std::int32_t result = -1;
};

TEST_F(Interface, keepsTheTextOfAThreadWhileOthersReadTextsAndEnd) {
    setJson("/Texts", R"({"Mine": "the text of this thread", "Theirs": "the text of the other threads"})");
    const char *mine = lmLibGetString(&result, "/Texts/Mine");
    for (int i = 0; i < 20; ++i) {
        std::thread([] {
            const char *theirs = lmLibGetString(nullptr, "/Texts/Theirs");
            EXPECT_STREQ(theirs, "the text of the other threads");
        }).join();
    }
    EXPECT_STREQ(mine, "the text of this thread");
}

TEST_F(Interface, distinguishesInvalidPathsFromPathsOfAbsentNodes) {
    const std::pair<int, std::vector<std::string>> rows[] = {
        {LmLibResultOperationSucceeded, {"", "/Path"}},
        {LmLibResultItemInexistent,
         {"/absent", "/absent/\\0/\\12", "/ with blanks, \xC3\xA4 and \xFF", "/absent/\\99999999999999999999999999",
          repeated("/a", LMLIB_MAXIMUM_DEPTH)}},
        {LmLibResultItemTypeNotCompatible, {"/\\0"}},
        {LmLibResultItemPathInvalid,
         {"/", "Path", "\\0", "//Path", "/Path/", "/a\\b", "/\\", "/\\-1", "/\\00", "/\\1a", "/\\\\0"}},
        {LmLibResultNestingLimitReached, {repeated("/a", LMLIB_MAXIMUM_DEPTH + 1), repeated("/a", 1000000)}}};
    for (const auto &[code, paths] : rows) {
        for (const std::string &path : paths) {
            EXPECT_EQ(lmLibGetType(&result, path.c_str()) != LmLibTypeAbsent, code == LmLibResultOperationSucceeded);
            EXPECT_EQ(result, code) << path.substr(0, 100);
        }
    }
}

TEST_F(Interface, writesWhatTheRulesAllowAndNothingElse) {
    const char *before = R"({"Array":[1,[2]],"Null":null,"Object":{"Number":1.5},"Text":"a"})";
    const std::vector<std::pair<const char *, const char *>> written{
        {"/T/Text", R"({"Array":[1,[2]],"Null":null,"Object":{"Number":1.5},"Text":7})"},
        {"/T/Object", R"({"Array":[1,[2]],"Null":null,"Object":7,"Text":"a"})"},
        {"/T", "7"},
        {"/T/Object/New", R"({"Array":[1,[2]],"Null":null,"Object":{"New":7,"Number":1.5},"Text":"a"})"},
        {"/T/A/\\0/\\0/B", R"({"A":[[{"B":7}]],"Array":[1,[2]],"Null":null,"Object":{"Number":1.5},"Text":"a"})"},
        {"/T/Array/\\1/\\1", R"({"Array":[1,[2,7]],"Null":null,"Object":{"Number":1.5},"Text":"a"})"},
        {"/T/Array/\\2/X", R"({"Array":[1,[2],{"X":7}],"Null":null,"Object":{"Number":1.5},"Text":"a"})"},
    };
    for (const auto &[path, after] : written) {
        setJson("/T", before);
        lmLibSetInt(&result, path, 7);
        EXPECT_EQ(result, LmLibResultOperationSucceeded) << path;
        EXPECT_EQ(json("/T"), after) << path;
    }
    const std::pair<int, std::vector<const char *>> refused[] = {
        {LmLibResultItemPathInvalid,
         {"/T/Array/\\3", "/T/Array/\\18446744073709551617", "/T/A/\\1", "/T/A/B/\\0/\\1", "/T/Array/\\2/\\0/X/\\1",
          "/T/"}},
        {LmLibResultItemTypeNotCompatible,
         {"/T/Array/X", "/T/Object/\\0", "/T/Text/X", "/T/Null/X", "/T/Object/Number/\\0"}}};
    setJson("/T", before);
    for (const auto &[code, paths] : refused) {
        for (const char *path : paths) {
            lmLibSetInt(&result, path, 7);
            EXPECT_EQ(result, code) << path;
            EXPECT_EQ(json("/T"), before) << path;
        }
    }
}

TEST_F(Interface, erasesNodesAndLeavesNoGapInArrays) {
    setJson("/T", R"({"Array":[1,2,{"a":3}],"Leaf":4})");
    const std::vector<std::pair<const char *, int>> rows{
        {"/T/Array/\\3", LmLibResultItemInexistent},       {"/T/Absent/X", LmLibResultItemInexistent},
        {"/T/Leaf/X", LmLibResultItemTypeNotCompatible},   {"/T/Array/\\0", LmLibResultOperationSucceeded},
        {"/T/Array/\\1/a", LmLibResultOperationSucceeded}, {"/T/Leaf", LmLibResultOperationSucceeded},
    };
    for (const auto &[path, code] : rows) {
        lmLibErase(&result, path);
        EXPECT_EQ(result, code) << path;
    }
    EXPECT_EQ(json("/T"), R"({"Array":[2,{}]})");
}

TEST_F(Interface, readsOnlyValuesOfTheRightType) {
    setJson("/T", R"({"1":null,"2":2,"3":"text","4":true,"5":{"a":1,"b":2},"6":[1,2,3]})");
    for (int type = LmLibTypeNull; type <= LmLibTypeArray; ++type) {
        const std::string path = "/T/" + std::to_string(type);
        EXPECT_EQ(lmLibGetType(&result, path.c_str()), type);
        const auto expectType = [&](bool right, const char *read) {
            EXPECT_EQ(result, right ? LmLibResultOperationSucceeded : LmLibResultItemTypeNotCompatible)
                << read << " of " << path;
        };
        EXPECT_EQ(lmLibGetInt(&result, path.c_str()), type == LmLibTypeNumber ? 2 : 0);
        expectType(type == LmLibTypeNumber, "int");
        EXPECT_EQ(lmLibGetDouble(&result, path.c_str()), type == LmLibTypeNumber ? 2.0 : 0.0);
        expectType(type == LmLibTypeNumber, "double");
        EXPECT_EQ(lmLibGetBool(&result, path.c_str()), type == LmLibTypeBoolean ? 1 : 0);
        expectType(type == LmLibTypeBoolean, "bool");
        EXPECT_STREQ(lmLibGetString(&result, path.c_str()), type == LmLibTypeString ? "text" : nullptr);
        expectType(type == LmLibTypeString, "string");
        EXPECT_EQ(lmLibGetCount(&result, path.c_str()), type == LmLibTypeObject ? 2 : type == LmLibTypeArray ? 3 : 0);
        expectType(type == LmLibTypeObject || type == LmLibTypeArray, "count");
        std::int32_t width = -1;
        lmLibGetBinaryInfo(&result, path.c_str(), &width, nullptr, nullptr, nullptr, nullptr, nullptr);
        expectType(false, "binary");
        EXPECT_EQ(width, 0);
    }
    EXPECT_STREQ(lmLibGetName(&result, "/T/6/\\2"), "2");
    EXPECT_STREQ(lmLibGetName(&result, ""), "");
    EXPECT_EQ(lmLibGetName(&result, "/T/absent"), nullptr);
    EXPECT_EQ(lmLibGetDouble(&result, "/T/absent"), 0.0);
    EXPECT_EQ(result, LmLibResultItemInexistent);
}

TEST_F(Interface, givesIntegersOnlyForWholeNumbersInRange) {
    const double least = std::numeric_limits<std::int32_t>::min();
    const double greatest = std::numeric_limits<std::int32_t>::max();
    const std::vector<std::pair<double, bool>> rows{
        {least, true},           {greatest, true},  {-0.0, true},       {least - 1, false}, {greatest + 1, false},
        {greatest - 0.5, false}, {INFINITY, false}, {-INFINITY, false}, {NAN, false},       {1e300, false},
    };
    for (const auto &[number, whole] : rows) {
        lmLibSetDouble(&result, "/n", number);
        const double got = lmLibGetInt(&result, "/n");
        EXPECT_EQ(result, whole ? LmLibResultOperationSucceeded : LmLibResultItemTypeNotCompatible) << number;
        EXPECT_EQ(got, whole ? number : 0.0);
        const double back = lmLibGetDouble(&result, "/n");
        EXPECT_TRUE(back == number || (std::isnan(back) && std::isnan(number)));
    }
}

TEST_F(Interface, protectsTheRootAndTheNodeNamedPath) {
    using Change = std::function<void(std::int32_t *, const char *)>;
    const std::vector<Change> changes{
        [](std::int32_t *code, const char *path) { lmLibSetString(code, path, "x"); },
        [](std::int32_t *code, const char *path) { lmLibSetInt(code, path, 1); },
        [](std::int32_t *code, const char *path) { lmLibSetDouble(code, path, 1); },
        [](std::int32_t *code, const char *path) { lmLibSetBool(code, path, 1); },
        [](std::int32_t *code, const char *path) { lmLibSetNull(code, path); },
        [](std::int32_t *code, const char *path) { lmLibSetJson(code, path, "{}"); },
        [](std::int32_t *code, const char *path) { lmLibErase(code, path); },
    };
    const std::string before = json("");
    for (const Change &change : changes) {
        for (const char *path : {"", "/Path", "/Path/Manual", "/Path/New/\\0"}) {
            change(&result, path);
            EXPECT_EQ(result, LmLibResultItemProtected) << path;
        }
    }
    lmLibMakeUniqueItem(&result, "/Path/Application", "");
    EXPECT_EQ(result, LmLibResultItemProtected);
    EXPECT_EQ(json(""), before);
    lmLibSetInt(&result, "/Pathway", 1);
    EXPECT_EQ(result, LmLibResultOperationSucceeded);
}

TEST_F(Interface, makesItemsWithNamesThatWereNeverUsedBefore) {
    lmLibSetInt(&result, "/U/2", 0);
    lmLibSetInt(&result, "/U/A3", 0);
    std::vector<std::string> made;
    std::vector<const char *> baseNames{"", "", "A1_", "", nullptr};
    for (int i = 0; i < 30; ++i) {
        // The library appends a number to the base name. The name made from "A1" and the number 8 must differ from the
        // name made from "A" and the number 18.
        baseNames.push_back(i % 3 == 1 ? "A1" : "A");
    }
    for (const char *baseName : baseNames) {
        const char *path = lmLibMakeUniqueItem(&result, "/U", baseName);
        ASSERT_EQ(result, LmLibResultOperationSucceeded);
        made.emplace_back(path);
        // A text that the library returned may be passed as the path of the next call.
        const char *name = lmLibGetName(&result, path);
        EXPECT_EQ("/U/" + std::string(name), made.back());
        EXPECT_EQ(std::string(name).rfind(baseName == nullptr ? "" : baseName, 0), 0U);
        EXPECT_EQ(json(made.back()), "{}");
        lmLibErase(&result, made.back().c_str());
        EXPECT_EQ(result, LmLibResultOperationSucceeded);
    }
    std::sort(made.begin(), made.end());
    EXPECT_EQ(std::unique(made.begin(), made.end()), made.end());
    EXPECT_EQ(json("/U"), R"({"2":0,"A3":0})");

    const std::vector<std::tuple<const char *, const char *, int>> refused{
        {"/U", "a/b", LmLibResultItemPathInvalid},  {"/U", "\\0", LmLibResultItemPathInvalid},
        {"U", "", LmLibResultItemPathInvalid},      {"/U/2", "", LmLibResultItemTypeNotCompatible},
        {"/V/\\1", "", LmLibResultItemPathInvalid},
    };
    for (const auto &[parent, baseName, code] : refused) {
        EXPECT_EQ(lmLibMakeUniqueItem(&result, parent, baseName), nullptr);
        EXPECT_EQ(result, code) << parent << " " << baseName;
    }
    EXPECT_EQ(json("/V"), "code 3");
    const char *top = lmLibMakeUniqueItem(&result, "", "top");
    ASSERT_NE(top, nullptr);
    const std::string parent = top;
    EXPECT_EQ(std::string(lmLibMakeUniqueItem(&result, top, "")).rfind(parent + "/", 0), 0U);
}

TEST_F(Interface, boundsTheDepthOfTheTree) {
    const std::string deepest = repeated("/\\0", LMLIB_MAXIMUM_DEPTH - 2);
    lmLibSetJson(&result, ("/D" + deepest).c_str(), "[1]");
    EXPECT_EQ(result, LmLibResultOperationSucceeded);
    lmLibSetJson(&result, ("/E" + deepest).c_str(), "[[1]]");
    EXPECT_EQ(result, LmLibResultNestingLimitReached);
    lmLibMakeUniqueItem(&result, ("/E" + deepest + "/\\0").c_str(), "");
    EXPECT_EQ(result, LmLibResultNestingLimitReached);
    lmLibSetJson(&result, "/E", repeated("[", 1000000).c_str());
    EXPECT_EQ(result, LmLibResultNestingLimitReached);
    EXPECT_EQ(json("/E"), "code 3");
}

TEST_F(Interface, acceptsNullPointersAndRefusesWrongNumbers) {
    lmLibSetString(nullptr, "/S", nullptr);
    EXPECT_STREQ(lmLibGetString(nullptr, "/S"), "");
    EXPECT_EQ(lmLibGetString(nullptr, "/absent"), nullptr);
    EXPECT_EQ(lmLibGetType(&result, nullptr), LmLibTypeObject);
    lmLibSetJson(&result, "/S", nullptr);
    EXPECT_EQ(result, LmLibResultCouldNotInterpretJsonText);
    lmLibWaitForType(&result, "/S", 8, 1);
    EXPECT_EQ(result, LmLibResultInvalidParameters);
    for (const int precision : {-1, 19}) {
        EXPECT_EQ(lmLibGetJson(&result, "/S", 0, precision, 0), nullptr);
        EXPECT_EQ(result, LmLibResultInvalidParameters);
    }
}

TEST_F(Interface, startsNoCommandThroughJsonOrOutsideASlot) {
    setJson("/Execute/a/Command", R"("GetModelInfo")");
    for (const char *path : {"/Execute/Command", "/Execute/b/c/Command", "/Other/b/Command"}) {
        lmLibSetString(&result, path, "GetModelInfo");
        EXPECT_EQ(result, LmLibResultOperationSucceeded);
    }
    run("/Execute/d", "GetModelInfo");
    EXPECT_EQ(json("/Execute/d"), R"({"Command":null,"Result":{}})");
    for (const char *path : {"/Execute/a", "/Execute/b/c", "/Other/b"}) {
        EXPECT_EQ(json(path), R"({"Command":"GetModelInfo"})");
    }
}

TEST_F(Interface, copiesBinaryOnlyIntoBuffersThatAreLargeEnough) {
    setJson("/Execute/i/Parameters",
            R"({"ImageSize":40,"Patterns":[{"Type":"Flexible","GridSize":[3,5],"GridSpacing":10},)"
            R"({"Type":"Flexible","GridSize":[5,3],"GridSpacing":10}]})");
    run("/Execute/i", "GenerateCalibrationPattern");
    const char *image = "/Execute/i/Result/Patterns/\\0";
    ASSERT_EQ(lmLibGetType(&result, image), LmLibTypeBinary) << json("/Execute/i");
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t channels = 0;
    std::int32_t elementBytes = 0;
    std::int32_t isFloat = -1;
    double made = 0.0;
    lmLibGetBinaryInfo(&result, "/Execute/i/Result/Patterns/\\1", &width, nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(width, 40);
    lmLibGetBinaryInfo(&result, image, &width, &height, &channels, &elementBytes, &isFloat, &made);
    EXPECT_EQ(width, 30);
    EXPECT_EQ(height, 40);
    EXPECT_GT(made, 1.7e9);  // seconds since 1970
    const std::int32_t count = lmLibGetCount(&result, image);
    EXPECT_EQ(count, width * height * channels * elementBytes);
    EXPECT_EQ(isFloat, 0);

    const std::pair<std::int32_t, int> rows[] = {{-1, LmLibResultInvalidBufferSize},
                                                 {0, LmLibResultBufferTooSmall},
                                                 {count - 1, LmLibResultBufferTooSmall},
                                                 {count, LmLibResultOperationSucceeded},
                                                 {count + 1, LmLibResultOperationSucceeded}};
    for (const auto &[size, code] : rows) {
        std::vector<unsigned char> buffer(static_cast<std::size_t>(count) + 1, 77);
        std::int32_t copied = -1;
        double timestamp = -1.0;
        lmLibGetBinary(&result, image, buffer.data(), size, &copied, &timestamp);
        EXPECT_EQ(result, code) << size;
        const bool whole = code == LmLibResultOperationSucceeded;
        EXPECT_EQ(timestamp, whole ? made : 0.0);
        EXPECT_EQ(copied, whole ? count : 0);
        EXPECT_EQ(buffer.front() == 77, !whole);
        EXPECT_EQ(buffer.back(), 77);
    }
    lmLibGetBinary(&result, image, nullptr, count, nullptr, nullptr);
    EXPECT_EQ(result, LmLibResultInvalidParameters);
    EXPECT_NE(json(image).find("\"ByteCount\":" + std::to_string(count)), std::string::npos);
}

TEST_F(Interface, keepsTheNewestLinesOfTheDebugLog) {
    EXPECT_EQ(lmLibGetDebugBuffer(&result), nullptr);
    EXPECT_EQ(result, LmLibResultNoDebugData);
    lmLibWriteDebugMessage(&result, std::string(65536, 'x').c_str());
    EXPECT_EQ(result, LmLibResultDebugMessageOverflow);
    // Writes more than three times as much as the buffer keeps.
    std::string written;
    for (int i = 0; i < 20000; ++i) {
        const std::string line = "line " + std::to_string(i);
        lmLibWriteDebugMessage(&result, line.c_str());
        written += line + "\n";
    }
    const std::string kept = lmLibGetDebugBuffer(&result);
    EXPECT_LE(kept.size(), 65536U);
    EXPECT_GT(kept.size(), 65500U);
    EXPECT_EQ(kept.rfind("line ", 0), 0U);
    EXPECT_EQ(written.substr(written.size() - kept.size()), kept);
    lmLibWriteDebugMessage(&result, std::string(65535, 'x').c_str());
    EXPECT_EQ(lmLibGetDebugBuffer(&result), std::string(65535, 'x') + "\n");
}

TEST_F(Interface, returnsToItsFirstStateWhenFinalized) {
    const std::string fresh = json("");
    const std::string first = lmLibMakeUniqueItem(&result, "/Execute", "");
    lmLibSetString(&result, (first + "/Command").c_str(), "GetModelInfo");
    lmLibWriteDebugMessage(&result, "a line");
    for (int time = 0; time < 2; ++time) {
        lmLibFinalize(&result);
        EXPECT_EQ(result, LmLibResultOperationSucceeded);
        EXPECT_EQ(json(""), fresh);
        EXPECT_EQ(lmLibGetDebugBuffer(&result), nullptr);
    }
    EXPECT_EQ(lmLibMakeUniqueItem(&result, "/Execute", ""), first);
    run(first, "GetModelInfo");
}

TEST_F(Interface, listsThePlatesOfTheCatalogue) {
    lmLibSetBool(&result, "/Execute/m/Parameters/ListCalTabs", 1);
    run("/Execute/m", "GetModelInfo");
    const std::string plates = "/Execute/m/Result/CalTabs";
    const int count = lmLibGetCount(&result, plates.c_str());
    ASSERT_GE(count, 8);
    double last = 0.0;
    for (int i = 0; i < count; ++i) {
        const std::string plate = plates + "/\\" + std::to_string(i);
        const double spacing = lmLibGetDouble(&result, (plate + "/GridSpacing").c_str());
        EXPECT_GT(spacing, last);
        last = spacing;
        // The name begins with the outer size. Each side is as long as sixteen squares, and a square's side is half the
        // grid spacing.
        const std::string size = std::to_string(static_cast<int>(16 * spacing / 2)) + " mm";
        const std::string name = lmLibGetString(&result, (plate + "/Name").c_str());
        EXPECT_EQ(name.rfind(std::string(size).append(" x ").append(size), 0), 0U) << name;
    }
    EXPECT_EQ(last, 96.0);
    lmLibSetBool(&result, "/Execute/m/Parameters/ListCalTabs", 0);
    run("/Execute/m", "GetModelInfo");
    EXPECT_EQ(json("/Execute/m/Result"), "{}");
    lmLibSetString(&result, "/Execute/m/Parameters/ListCalTabs", "yes");
    run("/Execute/m", "GetModelInfo");
    EXPECT_STREQ(lmLibGetString(&result, "/Execute/m/Result/ErrorSymbol"), "InvalidParameter");
}

}  // namespace
