#include "camera_library/pattern_code/information_block.h"

#include <array>
#include <cassert>
#include <cmath>
#include <vector>

#include "camera_library/pattern_code/bit_count.h"
#include "camera_library/pattern_code/position_code.h"

namespace pattern_code {
namespace {

constexpr std::uint32_t blockVersion = 1;
constexpr std::uint32_t offsetConstant = 0xA5C;
constexpr std::uint32_t assemblyConstant = 0x0B5;

// The more bits are unknown, the fewer wrong bits decoding looks for. Each limit is the greatest number of unknown bits
// with which it still looks for the wrong bits named beside the limit. If decoding tries n sets of wrong bits and u
// bits are unknown, it accepts random bits as a block with a probability of at most n / 2^(32 - u). The checks of
// version, kind and ranges divide this probability by more than 32.
constexpr int unknownBitsWithWrongByte = 4;  // one wrong byte, or two wrong bits
constexpr int unknownBitsWithWrongBit = 10;  // one wrong bit
constexpr int unknownBitsAlone = 16;         // no wrong bit; with more unknown bits, nothing is decoded

constexpr std::uint8_t timesTwo(std::uint8_t value) {
    return static_cast<std::uint8_t>((value << 1) ^ ((value & 0x80) != 0 ? 0x11D : 0));
}

constexpr std::uint8_t times(std::uint8_t a, std::uint8_t b) {
    std::uint8_t product = 0;
    for (; b != 0; b = static_cast<std::uint8_t>(b >> 1), a = timesTwo(a)) {
        product = static_cast<std::uint8_t>(product ^ ((b & 1) != 0 ? a : 0));
    }
    return product;
}

constexpr std::uint8_t byteOf(std::uint64_t block, int byte) {
    return static_cast<std::uint8_t>(block >> (56 - 8 * byte));
}

constexpr std::uint64_t bitMask(int bit) {
    return std::uint64_t{1} << (blockBitCount - 1 - bit);
}

// Returns the syndrome: the values of the word's polynomial at the four roots of the generator. They are all zero for a
// word of the code, and they are linear in the bits of the word.
constexpr std::uint32_t syndromeOf(std::uint64_t word) {
    std::uint32_t syndrome = 0;
    std::uint8_t root = 1;
    for (int i = 0; i < 4; ++i) {
        root = timesTwo(root);
        std::uint8_t value = 0;
        for (int byte = 0; byte < blockByteCount; ++byte) {
            value = static_cast<std::uint8_t>(times(value, root) ^ byteOf(word, byte));
        }
        syndrome = syndrome << 8U | value;
    }
    return syndrome;
}

using Syndromes = std::array<std::uint32_t, blockBitCount>;

constexpr Syndromes makeBitSyndromes() {
    Syndromes made{};
    for (int bit = 0; bit < blockBitCount; ++bit) {
        made[static_cast<std::size_t>(bit)] = syndromeOf(bitMask(bit));
    }
    return made;
}

// The syndrome of each single bit.
constexpr Syndromes bitSyndromes = makeBitSyndromes();

using Polynomial = std::array<std::uint8_t, 5>;

// Returns the product of (x - root) over the four roots in syndromeOf. The coefficient of the highest power comes
// first.
constexpr Polynomial makeGenerator() {
    Polynomial product{1};
    std::uint8_t root = 1;
    for (std::size_t degree = 1; degree < product.size(); ++degree) {
        root = timesTwo(root);
        for (std::size_t i = degree; i > 0; --i) {
            product[i] = static_cast<std::uint8_t>(product[i] ^ times(product[i - 1], root));
        }
    }
    return product;
}

constexpr Polynomial generator = makeGenerator();

// Returns the check bytes that complete the data to a word of the code. They are the remainder of the data's
// polynomial times x^4, divided by the generator. The compiler computes the generator. If it were computed at its
// first use, a fork at that moment could leave the child process with an incomplete generator.
std::uint32_t checkBytesOf(std::uint32_t data) {
    std::uint32_t remainder = 0;
    for (int byte = 3; byte >= 0; --byte) {
        const auto factor =
            static_cast<std::uint8_t>((remainder >> 24U) ^ (data >> (8U * static_cast<unsigned>(byte))));
        remainder <<= 8U;
        for (std::size_t i = 1; i < generator.size(); ++i) {
            remainder ^= std::uint32_t{times(factor, generator[i])} << (32U - 8U * static_cast<unsigned>(i));
        }
    }
    return remainder;
}

std::uint32_t lowestBit(std::uint32_t value) {
    return value & (~value + 1U);
}

// Solves the equations of the code for the unknown bits. It finds the values that these bits must have, and the part of
// a syndrome that no values of these bits can explain.
class UnknownBits {
public:
    // If the syndromes of the unknown bits are linearly dependent, hasUniqueSolution() is false and the other results
    // have no meaning.
    explicit UnknownBits(std::uint64_t unknown) {
        for (int bit = 0; bit < blockBitCount; ++bit) {
            if ((unknown & bitMask(bit)) == 0) {
                continue;
            }
            Row row{bitSyndromes[static_cast<std::size_t>(bit)], bitMask(bit)};
            reduce(row);
            isUnique = isUnique && row.syndrome != 0;
            rows.push_back(row);
        }
    }

    [[nodiscard]] bool hasUniqueSolution() const { return isUnique; }

    // Returns the part of the syndrome that the unknown bits cannot explain; zero if a word of the code is possible.
    [[nodiscard]] std::uint32_t remainder(std::uint32_t syndrome) const {
        Row row{syndrome, 0};
        reduce(row);
        return row.syndrome;
    }

    // Returns the unknown bits that must be flipped to explain the syndrome. The syndrome must leave no remainder.
    [[nodiscard]] std::uint64_t solution(std::uint32_t syndrome) const {
        Row row{syndrome, 0};
        reduce(row);
        return row.bits;
    }

private:
    struct Row {
        std::uint32_t syndrome;
        std::uint64_t bits;
    };

    void reduce(Row &row) const {
        for (const Row &other : rows) {
            if ((row.syndrome & lowestBit(other.syndrome)) != 0) {
                row.syndrome ^= other.syndrome;
                row.bits ^= other.bits;
            }
        }
    }

    std::vector<Row> rows;
    bool isUnique = true;
};

// Returns the content of a word of the code; empty if version, kind, constants or ranges are wrong.
std::optional<BlockContent> contentOf(std::uint64_t word) {
    const auto data = static_cast<std::uint32_t>(word >> 32U);
    const auto field = [data](unsigned shift, unsigned width) {
        return static_cast<int>((data >> shift) & ((1U << width) - 1));
    };
    BlockContent content;
    std::uint32_t constant = 0;
    switch (field(28, 2)) {
        case 1:
            content.kind = BlockKind::SpacingAndThickness;
            content.gridSpacing = field(14, 14);
            content.thickness = field(0, 14);
            break;
        case 2:
            content.kind = BlockKind::Offset;
            content.offsetX = field(20, 8) + leastBlockOffset;
            content.offsetY = field(12, 8) + leastBlockOffset;
            constant = (data & 0xFFFU) ^ offsetConstant;
            break;
        case 3:
            content.kind = BlockKind::Assembly;
            content.gridSpacing = field(14, 14);
            content.assemblyPattern = field(9, 5);
            constant = (data & 0x1FFU) ^ assemblyConstant;
            break;
        default:
            return std::nullopt;
    }
    if (field(30, 2) != static_cast<int>(blockVersion) || constant != 0 || !isEncodable(content)) {
        return std::nullopt;
    }
    return content;
}

std::uint32_t dataOf(const BlockContent &content) {
    const auto bits = [](int value) { return static_cast<std::uint32_t>(value); };
    const std::uint32_t head = blockVersion << 30U | bits(static_cast<int>(content.kind)) << 28U;
    switch (content.kind) {
        case BlockKind::SpacingAndThickness:
            return head | bits(content.gridSpacing) << 14U | bits(content.thickness);
        case BlockKind::Offset:
            return head | bits(content.offsetX - leastBlockOffset) << 20U |
                   bits(content.offsetY - leastBlockOffset) << 12U | offsetConstant;
        case BlockKind::Assembly:
            break;
    }
    return head | bits(content.gridSpacing) << 14U | bits(content.assemblyPattern) << 9U | assemblyConstant;
}

// Decodes a block by trying sets of wrong bits. The result is empty if no set gives a block, or if different sets give
// different blocks.
class BlockSearch {
public:
    BlockSearch(std::uint64_t seenWord, std::uint64_t unknownBits, BlockCarrier blockCarrier)
        : word(seenWord),
          unknown(unknownBits),
          carrier(blockCarrier),
          solver(unknownBits),
          syndrome(syndromeOf(seenWord)) {
        for (int bit = 0; bit < blockBitCount; ++bit) {
            const std::size_t at = static_cast<std::size_t>(bit);
            remainders[at] = solver.remainder(bitSyndromes[at]);
        }
        remainder = solver.remainder(syndrome);
    }

    std::optional<DecodedBlock> run() {
        const int unknownCount = onesIn(unknown);
        if (unknownCount > unknownBitsAlone || !solver.hasUniqueSolution()) {
            return std::nullopt;
        }
        if (remainder == 0) {
            keep(0);
        }
        if (unknownCount <= unknownBitsWithWrongBit) {
            tryBits(unknownCount <= unknownBitsWithWrongByte);
        }
        if (unknownCount <= unknownBitsWithWrongByte) {
            tryBytes();
        }
        return isAmbiguous ? std::nullopt : found;
    }

private:
    [[nodiscard]] bool isKnown(int bit) const { return (unknown & bitMask(bit)) == 0; }

    void tryBits(bool alsoPairs) {
        for (int first = 0; first < blockBitCount; ++first) {
            if (!isKnown(first)) {
                continue;
            }
            const std::uint32_t rest = remainder ^ remainders[static_cast<std::size_t>(first)];
            if (rest == 0) {
                keep(bitMask(first));
            }
            for (int second = first + 1; alsoPairs && second < blockBitCount; ++second) {
                if (rest == remainders[static_cast<std::size_t>(second)] && isKnown(second)) {
                    keep(bitMask(first) | bitMask(second));
                }
            }
        }
    }

    void tryBytes() {
        for (int byte = 0; byte < blockByteCount; ++byte) {
            std::array<std::uint32_t, 256> rests{remainder};
            for (std::size_t error = 1; error < rests.size(); ++error) {
                int lowest = 0;
                while ((error >> lowest & 1U) == 0) {
                    ++lowest;
                }
                const int bit = 8 * byte + 7 - lowest;
                rests[error] = rests[error & (error - 1)] ^ remainders[static_cast<std::size_t>(bit)];
                const std::uint64_t wrong = std::uint64_t{error} << (56 - 8 * byte);
                if (rests[error] == 0 && (wrong & unknown) == 0) {
                    keep(wrong);
                }
            }
        }
    }

    void keep(std::uint64_t wrong) {
        const std::uint64_t repaired = word ^ wrong ^ solver.solution(syndrome ^ syndromeOf(wrong));
        const std::optional<BlockContent> content = contentOf(repaired);
        if (!content || !carrier.holds(*content)) {
            return;
        }
        const std::uint64_t block = repaired ^ blockWhitening;
        if (found && found->block != block) {
            isAmbiguous = true;
        } else if (!found) {
            found = DecodedBlock{*content, block, onesIn(wrong), onesIn(unknown)};
        }
    }

    std::uint64_t word;
    std::uint64_t unknown;
    BlockCarrier carrier;
    UnknownBits solver;
    std::uint32_t syndrome;
    std::uint32_t remainder = 0;
    Syndromes remainders{};
    std::optional<DecodedBlock> found;
    bool isAmbiguous = false;
};

bool isWithin(int value, int least, int greatest) {
    return value >= least && value <= greatest;
}

}  // namespace

bool operator==(const BlockContent &a, const BlockContent &b) {
    return a.kind == b.kind && a.gridSpacing == b.gridSpacing && a.thickness == b.thickness && a.offsetX == b.offsetX &&
           a.offsetY == b.offsetY && a.assemblyPattern == b.assemblyPattern;
}

std::optional<int> hundredthsOfMillimetre(double millimetres) {
    const double hundredths = std::round(millimetres * 100);
    if (!(std::abs(hundredths) < 1e9) || std::abs(hundredths / 100 - millimetres) > 1e-6) {
        return std::nullopt;
    }
    return static_cast<int>(hundredths);
}

bool isEncodable(const BlockContent &content) {
    const bool hasSpacing = isWithin(content.gridSpacing, leastBlockSpacing, greatestBlockSpacing);
    switch (content.kind) {
        case BlockKind::SpacingAndThickness:
            return hasSpacing && isWithin(content.thickness, 0, greatestBlockThickness);
        case BlockKind::Offset:
            return isWithin(content.offsetX, leastBlockOffset, greatestBlockOffset) &&
                   isWithin(content.offsetY, leastBlockOffset, greatestBlockOffset);
        case BlockKind::Assembly:
            return hasSpacing && isWithin(content.assemblyPattern, 0, assemblyPatternCount - 1);
    }
    return false;
}

bool BlockCarrier::holds(const BlockContent &content) const {
    switch (content.kind) {
        case BlockKind::SpacingAndThickness:
            return number == plateNumber || number == singleTile;
        case BlockKind::Offset:
            return number == plateNumber;
        case BlockKind::Assembly:
            return number == tileOfAssemblyPattern(content.assemblyPattern);
    }
    return false;
}

std::uint64_t encodeBlock(const BlockContent &content) {
    assert(isEncodable(content));
    const std::uint32_t data = dataOf(content);
    return (std::uint64_t{data} << 32U | checkBytesOf(data)) ^ blockWhitening;
}

std::optional<DecodedBlock> decodeBlock(std::uint64_t bits, std::uint64_t unknown, BlockCarrier carrier) {
    return BlockSearch(bits ^ blockWhitening, unknown, carrier).run();
}

}  // namespace pattern_code
