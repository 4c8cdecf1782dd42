// Inputs that no one would send in earnest: large, deep, many, not text at all, not numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "camera_library/lmlib64.h"

namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20U;

class HostileInput : public testing::Test {
protected:
    void TearDown() override {
        lmLibFinalize(&result);
        EXPECT_EQ(result, LmLibResultOperationSucceeded);
    }

    // What the command says of the parameters; empty where it succeeds.
    std::string run(const char *command, const std::string &parameters) {
        lmLibSetJson(&result, "/Execute/S/Parameters", parameters.c_str());
        EXPECT_EQ(result, LmLibResultOperationSucceeded) << parameters.substr(0, 200);
        return start(command);
    }
    std::string start(const char *command) {
        lmLibSetString(&result, "/Execute/S/Command", command);
        lmLibWaitForType(&result, "/Execute/S/Command", LmLibTypeNull, 1);
        EXPECT_EQ(result, LmLibResultOperationSucceeded);
        const char *text = lmLibGetString(nullptr, "/Execute/S/Result/ErrorText");
        return text == nullptr ? "" : text;
    }

    std::int32_t result = 0;
};

TEST_F(HostileInput, textsOfOneMebibyte) {
    const std::string large(mebibyte, 'x');
    lmLibSetString(&result, "/T", large.c_str());
    EXPECT_EQ(lmLibGetString(&result, "/T"), large);
    const std::string path = "/" + large;
    lmLibSetString(&result, path.c_str(), "a name can be as long");
    EXPECT_EQ(result, LmLibResultOperationSucceeded);
    EXPECT_EQ(lmLibGetName(&result, path.c_str()), large);
    EXPECT_EQ(lmLibMakeUniqueItem(&result, "/Items", large.c_str()), "/Items/" + large + "1");
    lmLibWriteDebugMessage(&result, large.c_str());
    EXPECT_EQ(result, LmLibResultDebugMessageOverflow);
    lmLibSetJson(&result, "/J", ("[\"" + large + "\"]").c_str());
    EXPECT_EQ(lmLibGetCount(&result, "/J"), 1);
    EXPECT_GT(std::string(lmLibGetJson(&result, "", 1, 18, 0)).size(), 4 * mebibyte);
}

TEST_F(HostileInput, jsonUpToItsLimitAndNoFurther) {
    std::string json = "[\"" + std::string(LMLIB_MAXIMUM_JSON_SIZE - 4, 'x') + "\"]";
    lmLibSetJson(&result, "/J", json.c_str());
    EXPECT_EQ(result, LmLibResultOperationSucceeded);
    json.insert(2, 1, 'x');
    lmLibSetJson(&result, "/J", json.c_str());
    EXPECT_EQ(result, LmLibResultCouldNotInterpretJsonText);
}

TEST_F(HostileInput, tenThousandNodes) {
    for (int i = 0; i < 10000; ++i) {
        lmLibSetInt(&result, ("/A/\\" + std::to_string(i)).c_str(), i);
        ASSERT_EQ(result, LmLibResultOperationSucceeded);
        lmLibMakeUniqueItem(&result, "/O", "");
        ASSERT_EQ(result, LmLibResultOperationSucceeded);
    }
    EXPECT_EQ(lmLibGetCount(&result, "/A"), 10000);
    EXPECT_EQ(lmLibGetInt(&result, "/A/\\9999"), 9999);
    EXPECT_EQ(lmLibGetCount(&result, "/O"), 10000);
    const std::string json = lmLibGetJson(&result, "/A", 0, 0, 1);
    lmLibSetJson(&result, "/B", json.c_str());
    EXPECT_EQ(lmLibGetJson(&result, "/B", 0, 0, 1), json);
    for (int i = 0; i < 10000; ++i) {
        lmLibErase(&result, "/A/\\0");
    }
    EXPECT_EQ(lmLibGetCount(&result, "/A"), 0);
}

TEST_F(HostileInput, depthUpToItsLimit) {
    std::string path;
    for (int depth = 1; depth <= LMLIB_MAXIMUM_DEPTH + 1; ++depth) {
        path += depth % 2 == 1 ? "/N" : "/\\0";
        lmLibSetInt(&result, path.c_str(), depth);
        const bool isAllowed = depth <= LMLIB_MAXIMUM_DEPTH;
        EXPECT_EQ(result, isAllowed ? LmLibResultOperationSucceeded : LmLibResultNestingLimitReached) << depth;
        lmLibErase(&result, "/N");
    }
    lmLibSetJson(&result, "/N", std::string(LMLIB_MAXIMUM_JSON_SIZE, '[').c_str());
    EXPECT_EQ(result, LmLibResultNestingLimitReached);
}

TEST_F(HostileInput, namesThatAreNotUtf8) {
    for (const char *name : {"\xff", "\xc3\x28", "\xed\xa0\x80", "\xf0\x9f\x98", "\x01\x7f", "\xe4\xf6\xfc"}) {
        const std::string path = std::string("/") + name;
        lmLibSetString(&result, path.c_str(), name);
        EXPECT_EQ(result, LmLibResultOperationSucceeded);
        EXPECT_STREQ(lmLibGetString(&result, path.c_str()), name);
        EXPECT_STREQ(lmLibGetName(&result, path.c_str()), name);
        // What cannot be written in JSON is replaced, so that the text is JSON all the same.
        const std::string json = lmLibGetJson(&result, "", 0, 0, 1);
        lmLibSetJson(&result, "/Copy", json.c_str());
        EXPECT_EQ(result, LmLibResultOperationSucceeded) << json;
        lmLibErase(&result, "/Copy");
    }
}

TEST_F(HostileInput, numbersThatNoParameterCanBe) {
    const double infinity = std::numeric_limits<double>::infinity();
    const std::vector<double> numbers{std::nan(""), infinity, -infinity, 1e308, -1e308, 5e-324, -1.0, 2147483648.0};
    const std::vector<std::pair<std::string, std::string>> places{{"ImageSize", "/ImageSize"},
                                                                  {"GridSize", "/Patterns/\\0/GridSize/\\0"},
                                                                  {"GridSize", "/Patterns/\\0/GridSize/\\1"},
                                                                  {"GridSpacing", "/Patterns/\\0/GridSpacing"},
                                                                  {"Thickness", "/Patterns/\\0/Thickness"},
                                                                  {"Offset", "/Patterns/\\0/Offset/\\0"},
                                                                  {"Offset", "/Patterns/\\0/Offset/\\1"}};
    for (const auto &[name, place] : places) {
        for (const double number : numbers) {
            lmLibSetJson(
                &result, "/Execute/S/Parameters",
                R"({"Encoding":false,"ImageSize":16,"Patterns":[{"Type":"Flexible","GridSize":[3,3],"GridSpacing":9,)"
                R"("Thickness":1,"Offset":[0,0]}]})");
            lmLibSetDouble(&result, ("/Execute/S/Parameters" + place).c_str(), number);
            const std::string said = start("GenerateCalibrationPattern");
            const bool isInRange =
                (name == "Offset" && std::fabs(number) < 9999.0) || (name == "Thickness" && number == 5e-324);
            EXPECT_EQ(said.empty(), isInRange) << place << " " << number << ": " << said;
            EXPECT_EQ(said.find(name) == std::string::npos, isInRange) << place << " " << number << ": " << said;
        }
    }
}

TEST_F(HostileInput, parametersOfAllTypesAndSizes) {
    const std::string large(mebibyte, 'x');
    const std::vector<std::string> rows{
        "null",
        "[]",
        "\"text\"",
        "1",
        R"({"Patterns":{}})",
        R"({"Patterns":[]})",
        R"({"Patterns":[[]],"ImageSize":16})",
        R"({"Patterns":[{"Type":{"Type":"Flexible"}}],"ImageSize":16})",
        R"({"ImageSize":[16]})",
        R"({"ListCalTabs":"true"})",
        R"({")" + large + R"(":1})",
        R"({"ImageSize":16,"Patterns":[{"GridSpacing":9,"Type":")" + large + R"("}]})",
        R"({"Filename":")" + large + R"(.pdf","Patterns":[{"GridSpacing":9}]})",
        R"({"Filename":")" + std::string(5000, '/') + R"(x.json","Patterns":[{"GridSpacing":9,"Encoding":1}]})",
    };
    for (const std::string &row : rows) {
        const std::string said = run("GenerateCalibrationPattern", row);
        EXPECT_FALSE(said.empty()) << row.substr(0, 200);
        EXPECT_EQ(said.back(), '.') << row.substr(0, 200);
    }
    EXPECT_NE(run("GetModelInfo", R"({"ListCalTabs":"true"})"), "");
    EXPECT_NE(run(large.c_str(), "{}"), "");
    EXPECT_EQ(run("GetModelInfo", R"({"ListCalTabs":true})"), "");
}

}  // namespace
