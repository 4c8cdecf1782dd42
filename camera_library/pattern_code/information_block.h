// The information block: 64 bits in which a pattern tells what it is: its grid spacing and thickness, an
// assembly pattern's grid spacing and number, or a plate's offset. This packs, protects and unpacks them;
// where the bits stand in a pattern is told here too, but nothing is drawn or read from pictures.
//
// Bits. A block is a 64-bit number; bit 0 is its highest bit, bit 63 its lowest. Its byte k, 0 to 7 from the
//   top, holds the bits 8 k to 8 k + 7. A bit of 1 is a mark or dot, 0 is none.
// Data. 32 bits, highest first: 2 bits version (1), 2 bits kind, 28 bits by kind. Spacing and thickness
//   (kind 1): 14 bits grid spacing and 14 bits thickness, both in hundredths of a millimetre. Offset
//   (kind 2): 8 bits x + 128, 8 bits y + 128, in whole grid spacings, and the 12 bits 0xA5C. Assembly (kind
//   3): 14 bits grid spacing, 5 bits number of the pattern, and the 9 bits 0x0B5. Constant bits, and values
//   out of range, are further means of detection.
// Protection. The four data bytes and four check bytes are a word of the Reed-Solomon code RS(8,4) over
//   GF(256) (x^8 + x^4 + x^3 + x^2 + 1, generator roots 2^1 to 2^4, first data byte the highest
//   coefficient), and the constant blockWhitening is added to it bit by bit, so that patterns without or
//   full of marks are far from every block.
// Repair. See decodeBlock.
// Threads. All functions may be called from any thread.
#pragma once

#include <cstdint>
#include <optional>

namespace pattern_code {

constexpr int blockBitCount = 64;
constexpr int blockByteCount = 8;
constexpr std::uint64_t blockWhitening = 0x243F6A8885A308D3U;

// Values a block can hold, lengths in hundredths of a millimetre, offsets in whole grid spacings.
constexpr int leastBlockSpacing = 1;
constexpr int greatestBlockSpacing = 13000;
constexpr int greatestBlockThickness = 10000;
constexpr int leastBlockOffset = -128;
constexpr int greatestBlockOffset = 127;

// What a block tells; the numbers are those in the block.
enum class BlockKind { SpacingAndThickness = 1, Offset = 2, Assembly = 3 };

// What a block holds; the fields that its kind does not name are 0.
struct BlockContent {
    BlockKind kind = BlockKind::SpacingAndThickness;
    int gridSpacing = 0;      // hundredths of a millimetre; SpacingAndThickness and Assembly
    int thickness = 0;        // hundredths of a millimetre; SpacingAndThickness
    int offsetX = 0;          // whole grid spacings; Offset
    int offsetY = 0;          // whole grid spacings; Offset
    int assemblyPattern = 0;  // 0 to 17; Assembly
};

bool operator==(const BlockContent &a, const BlockContent &b);
inline bool operator!=(const BlockContent &a, const BlockContent &b) {
    return !(a == b);
}

// A length in hundredths of a millimetre; nothing when it is not a multiple of 0.01 mm, or no int.
std::optional<int> hundredthsOfMillimetre(double millimetres);

// Whether every value is in its range, so that the content can be encoded.
bool isEncodable(const BlockContent &content);

// The block for a content that is encodable.
std::uint64_t encodeBlock(const BlockContent &content);

// What carries a block; it settles which kinds of content can be in it.
class BlockCarrier {
public:
    // A tile of the position code, 0 to 18: SpacingAndThickness in tile 0, its Assembly pattern in others.
    static constexpr BlockCarrier tile(int number) { return BlockCarrier(number); }
    // A plate with round marks: SpacingAndThickness or Offset.
    static constexpr BlockCarrier plate() { return BlockCarrier(plateNumber); }
    // Whether the carrier can hold the content.
    [[nodiscard]] bool holds(const BlockContent &content) const;

private:
    static constexpr int plateNumber = -1;
    explicit constexpr BlockCarrier(int tileOrPlate) : number(tileOrPlate) {}
    int number;  // of a tile, or plateNumber
};

struct DecodedBlock {
    BlockContent content;
    std::uint64_t block = 0;  // as it was drawn
    int correctedBits = 0;    // bits that were seen wrongly
    int filledBits = 0;       // bits that were unknown
};

// Reads a block. A 1 in unknown stands for a bit that could not be seen clearly, whatever it is in bits.
// Bits are repaired as long as random bits are then taken for a block less often than once in 1,000,000:
// with up to 4 unknown bits one wrong byte, or two wrong bits anywhere; with up to 10 one wrong bit; with up
// to 16 (two lost bytes, or as many bits anywhere) none. What is farther from every block, may be more than
// one block, or cannot be in the carrier, is nothing.
std::optional<DecodedBlock> decodeBlock(std::uint64_t bits, std::uint64_t unknown, BlockCarrier carrier);

// Column and row, 0 to 7, of a bit where a block lies in an 8 x 8 grid; a byte is 2 wide and 4 high.
struct BlockCell {
    int column = 0;
    int row = 0;
};
constexpr BlockCell blockCell(int bit) {
    const int byte = bit / 8;
    return {byte % 4 * 2 + bit % 2, byte / 4 * 4 + bit % 8 / 2};
}

// The tile's square that carries a bit.
constexpr BlockCell blockSquare(int bit) {
    return {blockCell(bit).column * 2, blockCell(bit).row * 2};
}

// The centre of a bit's dot on a plate, in grid spacings from the top left of the frame's outer edge.
struct DotPosition {
    double x = 0;
    double y = 0;
};

// The dots stand amid four marks, or marks and frame; where the corner mark is, a dot amid two marks instead.
constexpr DotPosition dotPosition(int bit) {
    const BlockCell cell = blockCell(bit);
    return cell.column == 0 && cell.row == 0 ? DotPosition{1.5, 1.0} : DotPosition{cell.column + 0.5, cell.row + 0.5};
}

// The radius of a plate's dot, and of the light hole in its centre, in grid spacings. The hole keeps dots from
// being taken for marks by detectors that look for a dark centre; where a dot is too small for it to be seen, it
// is too small to be taken for one.
constexpr double dotRadius = 0.15;
constexpr double dotHoleRadius = 0.11;

}  // namespace pattern_code
