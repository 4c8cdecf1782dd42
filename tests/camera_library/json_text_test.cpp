#include "camera_library/tree/json_text.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using lmlib64::Node;
using lmlib64::NodeArray;
using lmlib64::NodeObject;

std::string numberText(double number, int precision, bool allowScientific) {
    std::string text;
    lmlib64::appendJsonNumber(text, number, {false, precision, allowScientific});
    return text;
}

constexpr double infinity = std::numeric_limits<double>::infinity();

std::string textOf(const Node &node, bool pretty = false) {
    std::string text;
    lmlib64::appendJson(text, node, {pretty, 0, false});
    return text;
}

TEST(JsonText, writesNumbersInTheAskedForm) {
    struct Row {
        double number;
        int precision;
        const char *plain;
        const char *scientific;  // null if it is the same as plain
    };
    const std::vector<Row> rows{
        {0.0, 0, "0", nullptr},
        {-0.0, 0, "-0.0", nullptr},
        {12.5, 0, "12.5", nullptr},
        {-0.1, 0, "-0.1", nullptr},
        {100000.0, 3, "100000", nullptr},
        {123456789.0, 3, "123456789", nullptr},
        {1234.5678, 6, "1234.57", nullptr},
        {1234.5678, 2, "1200", nullptr},
        {9.996, 3, "10", nullptr},
        {0.5, 18, "0.5", nullptr},
        {0.1, 18, "0.100000000000000006", nullptr},
        {1.0 / 3.0, 1, "0.3", nullptr},
        {0.00001, 0, "0.00001", nullptr},
        {0.0000025, 0, "0.0000025", "2.5e-6"},
        {9007199254740993.0, 0, "9007199254740992", nullptr},
        {-1e17, 0, "-100000000000000000", "-1e17"},
        {1e22, 2, "10000000000000000000000", "1e22"},
        {1.25e-16, 0, "0.000000000000000125", "1.25e-16"},
        {infinity, 0, "null", nullptr},
        {-infinity, 5, "null", nullptr},
        {std::numeric_limits<double>::quiet_NaN(), 0, "null", nullptr},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(numberText(row.number, row.precision, false), row.plain);
        EXPECT_EQ(numberText(row.number, row.precision, true), row.scientific == nullptr ? row.plain : row.scientific);
    }
}

TEST(JsonText, writesTextsAsValidUtf8) {
    const std::string bad = "\xEF\xBF\xBD";
    const std::vector<std::pair<std::string, std::string>> rows{
        {"a\"b\\c/d", "a\\\"b\\\\c/d"},
        {"\n\r\t\x01\x1F\x7F", "\\n\\r\\t\\u0001\\u001f\x7F"},
        {"\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80", "\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80"},
        {"\xFC", bad},
        {"a\x80z", "a" + bad + "z"},
        {"\xC0\xAF", bad + bad},
        {"\xED\xA0\x80", bad + bad + bad},
        {"\xF4\x90\x80\x80", bad + bad + bad + bad},
        {"\xE2\x82", bad + bad},
        {"\xE2\"", bad + "\\\""},
    };
    for (const auto &[text, json] : rows) {
        EXPECT_EQ(textOf(Node(text)), "\"" + json + "\"");
        EXPECT_EQ(textOf(NodeObject{{text, Node()}}), "{\"" + json + "\":null}");
    }
}

TEST(JsonText, writesContainersOnOneLineOrMany) {
    const Node node = NodeObject{{"a", NodeArray{1, NodeArray(), NodeObject()}}, {"b", true}};
    EXPECT_EQ(textOf(node), R"({"a":[1,[],{}],"b":true})");
    EXPECT_EQ(textOf(node, true), "{\n    \"a\": [\n        1,\n        [],\n        {}\n    ],\n    \"b\": true\n}");
}

TEST(JsonText, keepsTheLastOfTwoMembersWithTheSameName) {
    Node node;
    ASSERT_EQ(lmlib64::parseJson(R"( {"a":1, "a":[2]} )", 64, node), LmLibResultOperationSucceeded);
    EXPECT_EQ(textOf(node), R"({"a":[2]})");
}

TEST(JsonText, refusesMalformedTextAndContentThatANodeCannotHold) {
    // clang-format off
    const std::vector<std::string> refused{
        "", " ", "{", "[1,]", "[1 2]", "1 2", "nul", "'a'", "{\"a\" 1}", "{1:2}", "// c\n1", "01", "NaN", "1e999",
        "\"\xFF\"", "\"a", "\"\\ud800\"", "\"a\\u0000b\"", "{\"\":1}", "{\"a/b\":1}", "{\"a\\\\b\":1}",
        "{\"a\\u0000\":1}"};
    // clang-format on
    for (const std::string &text : refused) {
        Node node(7);
        EXPECT_EQ(lmlib64::parseJson(text, 64, node), LmLibResultCouldNotInterpretJsonText) << text.substr(0, 20);
        EXPECT_EQ(textOf(node), "7");
    }
}

}  // namespace
