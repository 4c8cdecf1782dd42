#include "pattern_reader/block_reader.h"

#include <algorithm>
#include <bitset>

namespace pattern_reader {

namespace {

constexpr float clearEnough = 0.35F;  // squares whose reading is less certain are not used

PatternValues valuesOf(const pattern_code::BlockContent &content) {
    PatternValues values;
    values.version = 1;
    switch (content.kind) {
        case pattern_code::BlockKind::SpacingAndThickness:
            values.gridSpacing = content.gridSpacing / 100.0;
            values.thickness = content.thickness / 100.0;
            break;
        case pattern_code::BlockKind::Offset:
            values.offset = cv::Point(content.offsetX, content.offsetY);
            break;
        case pattern_code::BlockKind::Assembly:
            values.gridSpacing = content.gridSpacing / 100.0;
            values.assemblyPattern = content.assemblyPattern;
            break;
    }
    return values;
}

}  // namespace

namespace {

// All blocks of one kind, stored as a first block and a list of differences (XOR) from it. Because the code is linear,
// flipping a given bit of the content always flips the same bits of the block. The word with these bits set is called
// the difference of the content's bit. The list must contain the difference of every bit of the content that can vary
// within the kind, or several entries whose XOR is this difference. Then every block of the kind is the XOR of the
// first block and some entries of the list.
struct BlockFamily {
    std::uint64_t first = 0;
    std::vector<std::uint64_t> differences;

    void add(const pattern_code::BlockContent &content) {
        differences.push_back(pattern_code::encodeBlock(content) ^ first);
    }
};

BlockFamily spacingFamily() {
    BlockFamily family;
    pattern_code::BlockContent content;
    content.kind = pattern_code::BlockKind::SpacingAndThickness;
    // A spacing of 0 cannot be encoded, so the first block has the spacing 2, in which only bit 1 is set.
    content.gridSpacing = 2;
    family.first = pattern_code::encodeBlock(content);
    for (int bit = 0; bit < 14; bit++) {
        pattern_code::BlockContent other = content;
        other.thickness = 1 << bit;
        family.add(other);
        if (bit != 1) {
            other = content;
            other.gridSpacing |= 1 << bit;
            family.add(other);
        }
    }
    // The difference of bit 1 is still missing, because all blocks so far have bit 1 of the spacing set. The spacing 1
    // differs from the first block in bits 0 and 1, so its entry is the XOR of the differences of bits 0 and 1. The XOR
    // of this entry and the difference of bit 0, which is also in the list, is the difference of bit 1.
    content.gridSpacing = 1;
    family.add(content);
    return family;
}

BlockFamily offsetFamily() {
    BlockFamily family;
    pattern_code::BlockContent content;
    content.kind = pattern_code::BlockKind::Offset;
    content.offsetX = pattern_code::leastBlockOffset;
    content.offsetY = pattern_code::leastBlockOffset;
    family.first = pattern_code::encodeBlock(content);
    for (int bit = 0; bit < 8; bit++) {
        pattern_code::BlockContent other = content;
        other.offsetX += 1 << bit;
        family.add(other);
        other = content;
        other.offsetY += 1 << bit;
        family.add(other);
    }
    return family;
}

// Finds the smallest word that can result from combining a word with some of a family's differences by XOR. The result
// is 0 if and only if the word is itself a combination of differences. In the differences, the bits outside `known` are
// ignored. In the word, the caller must have cleared them.
class Remainder {
public:
    Remainder(const BlockFamily &family, std::uint64_t known) {
        for (const std::uint64_t difference : family.differences) {
            const std::uint64_t word = of(difference & known);
            if (word != 0) {
                basis.push_back(word);
                // The largest difference comes first, so that it is enough to go through the list once.
                std::sort(basis.rbegin(), basis.rend());
            }
        }
    }

    [[nodiscard]] std::uint64_t of(std::uint64_t word) const {
        for (const std::uint64_t other : basis) {
            word = std::min(word, word ^ other);
        }
        return word;
    }

    [[nodiscard]] int freeBits() const { return int(basis.size()); }

private:
    std::vector<std::uint64_t> basis;
};

BlockAgreement compare(const SeenBlock &seen, const BlockFamily &family) {
    const std::uint64_t known = ~seen.unknown;
    const Remainder remainder(family, known);
    BlockAgreement agreement;
    agreement.checks = int(std::bitset<64>(known).count()) - remainder.freeBits();
    const std::uint64_t rest = remainder.of((seen.bits ^ family.first) & known);
    // Remainders are linear: the rest is the sum (XOR) of the remainders of the wrong bits. `ones` contains the
    // remainders of single bits, and `twos` the sums of two of them. If at most four bits are wrong, the rest is 0, is
    // in one of the lists, or is the sum of two entries.
    std::vector<std::uint64_t> ones;
    for (int bit = 0; bit < pattern_code::blockBitCount; bit++) {
        const std::uint64_t mask = std::uint64_t(1) << bit;
        if ((known & mask) != 0) {
            ones.push_back(remainder.of(mask));
        }
    }
    std::vector<std::uint64_t> twos;
    for (size_t i = 0; i < ones.size(); i++) {
        for (size_t j = 0; j < i; j++) {
            twos.push_back(ones[i] ^ ones[j]);
        }
    }
    std::sort(ones.begin(), ones.end());
    std::sort(twos.begin(), twos.end());
    const auto has = [](const std::vector<std::uint64_t> &sums, std::uint64_t word) {
        return std::binary_search(sums.begin(), sums.end(), word);
    };
    const auto hasSum = [&](const std::vector<std::uint64_t> &first, const std::vector<std::uint64_t> &second) {
        return std::any_of(first.begin(), first.end(), [&](std::uint64_t one) { return has(second, rest ^ one); });
    };
    agreement.wrongBits = rest == 0            ? 0
                          : has(ones, rest)    ? 1
                          : has(twos, rest)    ? 2
                          : hasSum(ones, twos) ? 3
                          : hasSum(twos, twos) ? 4
                                               : BlockAgreement::tooMany;
    return agreement;
}

}  // namespace

BlockAgreement comparePlateBlock(const SeenBlock &seen) {
    static const BlockFamily spacings = spacingFamily();
    static const BlockFamily offsets = offsetFamily();
    const BlockAgreement spacing = compare(seen, spacings);
    const BlockAgreement offset = compare(seen, offsets);
    const bool better =
        offset.wrongBits != spacing.wrongBits ? offset.wrongBits < spacing.wrongBits : offset.checks > spacing.checks;
    return better ? offset : spacing;
}

SeenBlock mirrorPlateBlock(const SeenBlock &seen) {
    SeenBlock mirrored;
    // The dot of bit 0 is left out. It does not lie in the grid of the other dots, so its mirror image is not the place
    // of a dot.
    for (int bit = 1; bit < pattern_code::blockBitCount; bit++) {
        const std::uint64_t mask = std::uint64_t(1) << (pattern_code::blockBitCount - 1 - bit);
        const pattern_code::BlockCell cell = pattern_code::blockCell(bit);
        for (int other = 1; other < pattern_code::blockBitCount; other++) {
            const pattern_code::BlockCell there = pattern_code::blockCell(other);
            if ((seen.unknown & mask) == 0 && there.column == cell.row && there.row == cell.column) {
                mirrored.see(other, (seen.bits & mask) != 0);
            }
        }
    }
    return mirrored;
}

void SeenBlock::see(int bit, bool set) {
    const std::uint64_t mask = std::uint64_t(1) << (pattern_code::blockBitCount - 1 - bit);
    unknown &= ~mask;
    bits = set ? bits | mask : bits & ~mask;
}

SeenBlock blockOfTile(const std::vector<SquareReading> &readings, const LatticeMotion &motion) {
    SeenBlock seen;
    // Squares that may in fact be an object in front of the pattern (SquareReading::maybeCover) are used, too, because
    // the block's check bits detect errors.
    for (const SquareReading &reading : readings) {
        const cv::Point square = motion.square(reading.cell);
        if (reading.certainty < clearEnough || square.x % 2 != 0 || square.y % 2 != 0) {
            continue;
        }
        for (int bit = 0; bit < pattern_code::blockBitCount; bit++) {
            const pattern_code::BlockCell cell = pattern_code::blockSquare(bit);
            if (cell.column == square.x && cell.row == square.y) {
                seen.see(bit, reading.marked);
            }
        }
    }
    return seen;
}

void readBlock(const SeenBlock &seen, pattern_code::BlockCarrier carrier, PatternReading &reading) {
    const auto decoded = pattern_code::decodeBlock(seen.bits, seen.unknown, carrier);
    if (!decoded) {
        return;
    }
    reading.values = valuesOf(decoded->content);
    reading.correctedBits = decoded->correctedBits;
    reading.filledBits = decoded->filledBits;
    reading.blockBytes.clear();
    for (int byte = 0; byte < pattern_code::blockByteCount; byte++) {
        const int shift = 8 * (pattern_code::blockByteCount - 1 - byte);
        reading.blockBytes.push_back(std::uint8_t(decoded->block >> shift & 0xFF));
    }
}

}  // namespace pattern_reader
