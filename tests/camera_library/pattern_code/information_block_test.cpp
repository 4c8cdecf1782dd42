#include "camera_library/pattern_code/information_block.h"

#include <gtest/gtest.h>

#include <array>
#include <bitset>
#include <cstdint>
#include <random>

namespace {

using namespace pattern_code;

std::uint64_t bitMask(int bit) {
    return std::uint64_t{1} << (63 - bit);
}

struct ContentCase {
    BlockContent content;
    BlockCarrier carrier;
};

const ContentCase contentCases[] = {
    {{BlockKind::SpacingAndThickness, 1200, 0, 0, 0, 0}, BlockCarrier::tile(0)},
    {{BlockKind::SpacingAndThickness, 1, 10000, 0, 0, 0}, BlockCarrier::tile(0)},
    {{BlockKind::SpacingAndThickness, 12500, 325, 0, 0, 0}, BlockCarrier::plate()},
    {{BlockKind::Offset, 0, 0, -128, 127, 0}, BlockCarrier::plate()},
    {{BlockKind::Offset, 0, 0, 3, -5, 0}, BlockCarrier::plate()},
    {{BlockKind::Assembly, 9600, 0, 0, 0, 17}, BlockCarrier::tile(18)},
    {{BlockKind::Assembly, 150, 0, 0, 0, 0}, BlockCarrier::tile(1)},
};

void expectRead(const ContentCase &each, std::uint64_t seen, std::uint64_t unknown, int corrected) {
    const std::optional<DecodedBlock> read = decodeBlock(seen, unknown, each.carrier);
    ASSERT_TRUE(read) << std::hex << seen << " with the unknown bits " << unknown;
    EXPECT_EQ(read->content, each.content);
    EXPECT_EQ(read->block, encodeBlock(each.content));
    EXPECT_EQ(read->correctedBits, corrected);
    EXPECT_EQ(read->filledBits, static_cast<int>(std::bitset<64>(unknown).count()));
}

// The bits are frozen, because printed patterns cannot be changed. The numbers come from an independently written
// encoder.
TEST(InformationBlock, isThatOfVersionOne) {
    EXPECT_EQ(encodeBlock(contentCases[0].content), 0x75136A8807FF389AU);
    EXPECT_EQ(encodeBlock(contentCases[2].content), 0x780A6BCD9ED570DAU);
    EXPECT_EQ(encodeBlock(contentCases[4].content), 0x4C08D0D478302B50U);
    EXPECT_EQ(encodeBlock(contentCases[5].content), 0x5D5F483D61BC459EU);
    // A byte is 2 cells wide and 4 high, so that only two bytes are lost if a quadrant of the pattern is hidden.
    for (const auto &[bit, column, row] : {std::array{0, 0, 0}, std::array{13, 6, 4}, std::array{63, 14, 14}}) {
        EXPECT_EQ(blockSquare(bit).column, column);
        EXPECT_EQ(blockSquare(bit).row, row);
    }
}

TEST(InformationBlock, repairsAnyWrongByteOrAnyTwoWrongBitsOrAnyTwoLostBytes) {
    std::mt19937_64 random(7);
    for (const ContentCase &each : contentCases) {
        const std::uint64_t block = encodeBlock(each.content);
        expectRead(each, block, 0, 0);
        for (int byte = 0; byte < 8; ++byte) {
            for (unsigned wrong = 1; wrong < 256; ++wrong) {
                expectRead(each, block ^ std::uint64_t{wrong} << (8 * byte), 0,
                           static_cast<int>(std::bitset<8>(wrong).count()));
            }
        }
        for (int first = 0; first < 64; ++first) {
            for (int second = first + 1; second < 64; ++second) {
                expectRead(each, block ^ bitMask(first) ^ bitMask(second), 0, 2);
            }
        }
        for (int first = 0; first < 8; ++first) {
            for (int second = 0; second < 8; ++second) {
                const std::uint64_t lost = std::uint64_t{0xFF} << (8 * first) | std::uint64_t{0xFF} << (8 * second);
                expectRead(each, block ^ (random() & lost), lost, 0);
            }
        }
    }
}

// The given number of different bits, chosen at random.
std::uint64_t randomBits(int count, std::mt19937_64 &random) {
    std::uint64_t bits = 0;
    while (static_cast<int>(std::bitset<64>(bits).count()) < count) {
        bits |= bitMask(static_cast<int>(random() % 64));
    }
    return bits;
}

struct DamageCase {
    int unknown;      // bits
    int wrong;        // bits
    bool isRepaired;  // true if decodeBlock repairs this damage, except in rare cases
};

TEST(InformationBlock, neverReadsAWrongValueFromADamagedBlock) {
    // If more than one repair is possible, the block is refused. So a few blocks whose damage can normally be repaired
    // are not read, but none is read wrongly.
    const DamageCase cases[] = {{16, 0, true},  {10, 1, true}, {4, 2, true},  {17, 0, false},
                                {11, 1, false}, {5, 2, false}, {0, 4, false}, {4, 3, false}};
    std::mt19937_64 random(11);
    constexpr int tries = 3000;
    for (const DamageCase &damage : cases) {
        int readRight = 0;
        int readWrong = 0;
        for (int i = 0; i < tries; ++i) {
            const ContentCase &each = contentCases[static_cast<std::size_t>(i) % std::size(contentCases)];
            const std::uint64_t unknown = randomBits(damage.unknown, random);
            std::uint64_t wrong = 0;
            do {
                wrong = randomBits(damage.wrong, random);
            } while ((wrong & unknown) != 0);
            const auto read =
                decodeBlock(encodeBlock(each.content) ^ wrong ^ (unknown & random()), unknown, each.carrier);
            readRight += read && read->content == each.content ? 1 : 0;
            readWrong += read && read->content != each.content ? 1 : 0;
        }
        EXPECT_EQ(readWrong, 0) << damage.unknown << " unknown, " << damage.wrong << " wrong";
        if (damage.isRepaired) {
            EXPECT_GE(readRight, tries - tries / 200) << damage.unknown << " unknown, " << damage.wrong << " wrong";
        } else {
            EXPECT_LE(readRight, tries / 50) << damage.unknown << " unknown, " << damage.wrong << " wrong";
        }
    }
}

TEST(InformationBlock, isReadFromRandomBitsLessThanOnceInAMillion) {
    // decodeBlock fills in up to 16 unknown bits. If at most 10 bits are unknown, it also repairs one wrong bit. If at
    // most 4 bits are unknown, it also repairs one wrong byte or two wrong bits. Exactly at these limits of 4, 10 and
    // 16 unknown bits, decodeBlock is most likely to mistake random bits for a block. If one try in a million
    // succeeded, 100,000 tries would give 0.1 successes on average.
    std::mt19937_64 random(5);
    constexpr int tries = 100000;
    for (const int unknownCount : {0, 4, 10, 16}) {
        int read = 0;
        for (int i = 0; i < tries; ++i) {
            const std::uint64_t unknown = unknownCount == 16 ? 0xFF0000FF00000000U : randomBits(unknownCount, random);
            read += decodeBlock(random(), unknown, BlockCarrier::plate()) ? 1 : 0;
        }
        EXPECT_LT(read, 2) << unknownCount << " unknown bits";
    }
}

TEST(InformationBlock, isNotReadFromACarrierThatCannotHoldIt) {
    for (const ContentCase &each : contentCases) {
        const std::uint64_t block = encodeBlock(each.content);
        EXPECT_EQ(decodeBlock(block, 0, BlockCarrier::plate()).has_value(), each.content.kind != BlockKind::Assembly);
        EXPECT_EQ(decodeBlock(block, 0, BlockCarrier::tile(0)).has_value(),
                  each.content.kind == BlockKind::SpacingAndThickness);
        EXPECT_FALSE(decodeBlock(block, 0, BlockCarrier::tile(5)));
    }
}

}  // namespace
