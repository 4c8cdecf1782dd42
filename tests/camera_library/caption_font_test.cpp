// Tests how wide the characters of the captions' font are.
#include "camera_library/output/caption_font.h"

#include <gtest/gtest.h>

#include <utility>

namespace lmlib64 {
namespace {

TEST(CaptionFont, hasTheCharacterWidthsOfDejaVuSans) {
    // Characters and their advance widths in thousandths of the font size. The captions' font lacks 0xe9.
    const std::pair<int, int> advances[]{{' ', 318}, {'!', 401}, {'0', 636},  {'W', 989},  {'i', 278},
                                         {'m', 974}, {'~', 838}, {0xb7, 318}, {0xd7, 838}, {0xe9, 0}};
    for (const auto &[character, advance] : advances) {
        EXPECT_EQ(captionAdvance(static_cast<unsigned char>(character)), advance) << character;
    }
    EXPECT_DOUBLE_EQ(captionWidth("mm", 2.5), 2 * 974 * 2.5 / 1000);
}

}  // namespace
}  // namespace lmlib64
