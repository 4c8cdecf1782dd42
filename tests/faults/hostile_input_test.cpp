// Tests inputs that no reasonable client sends: huge texts, JSON beyond its size limit, names that are not UTF-8, and
// numbers such as infinity, NaN and 1e308.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "camera_library/lmlib64.h"

namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20U;

class HostileInput : public testing::Test {
protected:
    void TearDown() override {
        lmLibFinalize(&result);
        EXPECT_EQ(result, LmLibResultOperationSucceeded);
    }

    std::int32_t result = 0;
};

TEST_F(HostileInput, keepsTextsOfOneMebibyte) {
    const std::string large(mebibyte, 'x');
    lmLibSetString(&result, "/T", large.c_str());
    EXPECT_EQ(lmLibGetString(&result, "/T"), large);
    const std::string path = "/" + large;
    lmLibSetString(&result, path.c_str(), "a name can be as long as a text");
    EXPECT_EQ(result, LmLibResultOperationSucceeded);
    EXPECT_EQ(lmLibGetName(&result, path.c_str()), large);
    EXPECT_EQ(lmLibMakeUniqueItem(&result, "/Items", large.c_str()), "/Items/" + large + "1");
    lmLibWriteDebugMessage(&result, large.c_str());
    EXPECT_EQ(result, LmLibResultDebugMessageOverflow);
    lmLibSetJson(&result, "/J", ("[\"" + large + "\"]").c_str());
    EXPECT_EQ(lmLibGetCount(&result, "/J"), 1);
    EXPECT_GT(std::string(lmLibGetJson(&result, "", 1, 18, 0)).size(), 4 * mebibyte);
}

TEST_F(HostileInput, acceptsJsonUpToItsSizeLimit) {
    std::string json = "[\"" + std::string(LMLIB_MAXIMUM_JSON_SIZE - 4, 'x') + "\"]";
    lmLibSetJson(&result, "/J", json.c_str());
    EXPECT_EQ(result, LmLibResultOperationSucceeded);
    json.insert(2, 1, 'x');
    lmLibSetJson(&result, "/J", json.c_str());
    EXPECT_EQ(result, LmLibResultCouldNotInterpretJsonText);
}

TEST_F(HostileInput, keepsNamesThatAreNotUtf8) {
    for (const char *name : {"\xff", "\xc3\x28", "\xed\xa0\x80", "\xf0\x9f\x98", "\x01\x7f", "\xe4\xf6\xfc"}) {
        const std::string path = std::string("/") + name;
        lmLibSetString(&result, path.c_str(), name);
        EXPECT_EQ(result, LmLibResultOperationSucceeded);
        EXPECT_STREQ(lmLibGetString(&result, path.c_str()), name);
        EXPECT_STREQ(lmLibGetName(&result, path.c_str()), name);
        // Bytes that JSON cannot represent are replaced, so that the text is valid JSON.
        const std::string json = lmLibGetJson(&result, "", 0, 0, 1);
        lmLibSetJson(&result, "/Copy", json.c_str());
        EXPECT_EQ(result, LmLibResultOperationSucceeded) << json;
        lmLibErase(&result, "/Copy");
    }
}

TEST_F(HostileInput, refusesNumbersOutOfRangeForEachParameter) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const char *parameter : {"ImageSize", "Patterns/\\0/GridSize/\\1", "Patterns/\\0/GridSpacing",
                                  "Patterns/\\0/Thickness", "Patterns/\\0/Offset/\\0"}) {
        for (const double number : {std::nan(""), infinity, -infinity, 1e308, -1e308}) {
            lmLibSetJson(&result, "/Execute/S/Parameters",
                         R"({"ImageSize":16,"Patterns":[{"Type":"Flexible","GridSize":[3,3],"GridSpacing":9,)"
                         R"("Thickness":1,"Offset":[0,0]}]})");
            lmLibSetDouble(&result, ("/Execute/S/Parameters/" + std::string(parameter)).c_str(), number);
            lmLibSetString(&result, "/Execute/S/Command", "GenerateCalibrationPattern");
            lmLibWaitForType(&result, "/Execute/S/Command", LmLibTypeNull, 1);
            EXPECT_STREQ(lmLibGetString(nullptr, "/Execute/S/Result/ErrorSymbol"), "InvalidParameter")
                << parameter << " " << number;
        }
    }
}

}  // namespace
