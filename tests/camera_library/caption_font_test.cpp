// The captions' font: how it encodes texts, and which widths it gives its characters.
#include "camera_library/output/caption_font.h"

#include <gtest/gtest.h>

#include <utility>

namespace lmlib64 {
namespace {

TEST(CaptionFont, hasTheWidthsOfTheFontItIsCutFrom) {
    const std::pair<int, int> advances[]{{' ', 318}, {'!', 401}, {'0', 636},  {'W', 989},  {'i', 278},
                                         {'m', 974}, {'~', 838}, {0xb7, 318}, {0xd7, 838}, {0xe9, 0}};
    for (const auto &[character, advance] : advances) {
        EXPECT_EQ(captionAdvance(static_cast<unsigned char>(character)), advance) << character;
    }
    EXPECT_DOUBLE_EQ(captionWidth("mm", 2.5), 2 * 974 * 2.5 / 1000);
}

TEST(CaptionFont, replacesWhatItDoesNotHave) {
    const std::pair<const char *, const char *> texts[]{
        {"9 \xc3\x97 6 \xc2\xb7 mm", "9 \xd7 6 \xb7 mm"},
        {"caf\xc3\xa9, \xe2\x82\xac, \xf0\x9f\x93\x90, tab\t", "caf?, ?, ?, tab?"},
        {"\xd7\x90, cut off \xc3", "?, cut off ?"},
        {"stray \x97", "stray "},
    };
    for (const auto &[utf8, text] : texts) {
        EXPECT_EQ(captionText(utf8), text);
    }
}

}  // namespace
}  // namespace lmlib64
