// The information block is 64 bits that encode properties of a pattern. It holds the grid spacing and the thickness, or
// the grid spacing and the number of an assembly pattern, or the offset of a plate. This file encodes, protects and
// decodes the block and determines the places of its bits in a pattern. It neither draws the bits nor reads them from
// pictures.
//
// Bits. A block is a 64-bit number; bit 0 is its highest bit, bit 63 its lowest. Byte k, 0 to 7 from the top, has the
//   bits 8 k to 8 k + 7. A bit is 1 if there is a mark or dot, and 0 if there is none.
// Data. The data has 32 bits, from the highest to the lowest: 2 bits for the version (1), 2 bits for the kind, and 28
//   bits that depend on the kind. Kind 1, spacing and thickness, has 14 bits for the grid spacing and 14 bits for the
//   thickness, both in hundredths of a millimetre. Kind 2, offset, has 8 bits for x + 128 and 8 bits for y + 128, in
//   whole grid spacings, and the 12 bits 0xA5C. Kind 3, assembly, has 14 bits for the grid spacing, 5 bits for the
//   number of the pattern, and the 9 bits 0x0B5. The constant bits and the ranges of the values help to detect errors.
// Protection. The four data bytes and four check bytes are a word of the Reed-Solomon code RS(8,4) over GF(256). The
//   field polynomial is x^8 + x^4 + x^3 + x^2 + 1, the generator has the roots 2^1 to 2^4, and the first data byte is
//   the coefficient of the highest power. The word is XORed with the constant blockWhitening. So 64 zeros (a
//   pattern without marks) and 64 ones differ from every block in many bits.
// Repair. See decodeBlock.
// Threads. All functions may be called from any thread.
#pragma once

#include <cstdint>
#include <optional>

namespace pattern_code {

constexpr int blockBitCount = 64;
constexpr int blockByteCount = 8;
constexpr std::uint64_t blockWhitening = 0x243F6A8885A308D3U;

// The ranges of the values in a block. Lengths are in hundredths of a millimetre, offsets in whole grid spacings.
constexpr int leastBlockSpacing = 1;
constexpr int greatestBlockSpacing = 13000;
constexpr int greatestBlockThickness = 10000;
constexpr int leastBlockOffset = -128;
constexpr int greatestBlockOffset = 127;

// The kinds of content. The numbers are those that the block contains.
enum class BlockKind { SpacingAndThickness = 1, Offset = 2, Assembly = 3 };

// The content of a block. Fields that its kind does not use are 0.
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

// Converts a length to hundredths of a millimetre. Empty if it differs by more than 1e-6 mm from the nearest multiple
// of 0.01 mm, or if it is 10 km or more.
std::optional<int> hundredthsOfMillimetre(double millimetres);

// True if every value is in its range, so that the content can be encoded.
bool isEncodable(const BlockContent &content);

// Returns the block for a content, which must be encodable.
std::uint64_t encodeBlock(const BlockContent &content);

// The carrier of a block determines the kinds of content that the block can have.
class BlockCarrier {
public:
    // A tile of the position code, 0 to 18. Tile 0 holds SpacingAndThickness; any other tile holds Assembly with its
    // own pattern number.
    static constexpr BlockCarrier tile(int number) { return BlockCarrier(number); }
    // A plate with round marks: SpacingAndThickness or Offset.
    static constexpr BlockCarrier plate() { return BlockCarrier(plateNumber); }
    // True if the carrier can hold the content.
    [[nodiscard]] bool holds(const BlockContent &content) const;

private:
    static constexpr int plateNumber = -1;
    explicit constexpr BlockCarrier(int tileOrPlate) : number(tileOrPlate) {}
    int number;  // of a tile, or plateNumber
};

struct DecodedBlock {
    BlockContent content;
    std::uint64_t block = 0;  // as it was drawn
    int correctedBits = 0;    // bits that were read wrongly
    int filledBits = 0;       // bits that were unknown
};

// Reads a block. A 1 in `unknown` marks a bit that could not be seen clearly; its value in `bits` is ignored. Unknown
// bits are filled in and wrong bits are repaired:
// - Up to 4 unknown bits, and one wrong byte or any two wrong bits.
// - Up to 10 unknown bits, and one wrong bit.
// - Up to 16 unknown bits (such as two lost bytes), and no wrong bit.
// Within these limits, random bits are accepted as a block less than once in 1,000,000 times. A repair counts only if
// the carrier can hold the content of the repaired block. The result is empty if no repair counts, if repairs that
// count give different blocks, or if the known bits leave several values for the unknown ones.
std::optional<DecodedBlock> decodeBlock(std::uint64_t bits, std::uint64_t unknown, BlockCarrier carrier);

// The column and row, 0 to 7, of a bit in the 8 x 8 grid of a block. A byte is 2 columns wide and 4 rows high.
struct BlockCell {
    int column = 0;
    int row = 0;
};
constexpr BlockCell blockCell(int bit) {
    const int byte = bit / 8;
    return {byte % 4 * 2 + bit % 2, byte / 4 * 4 + bit % 8 / 2};
}

// Returns the square that carries a bit, as its column and row in a tile.
constexpr BlockCell blockSquare(int bit) {
    return {blockCell(bit).column * 2, blockCell(bit).row * 2};
}

// The centre of a bit's dot on a plate, in grid spacings from the top-left corner of the frame's outer edge.
struct DotPosition {
    double x = 0;
    double y = 0;
};

// A dot lies in the middle between four marks, or between marks and the frame. The dot of bit 0 would lie in the
// triangle in the frame's corner, so it is between two marks instead.
constexpr DotPosition dotPosition(int bit) {
    const BlockCell cell = blockCell(bit);
    return cell.column == 0 && cell.row == 0 ? DotPosition{1.5, 1.0} : DotPosition{cell.column + 0.5, cell.row + 0.5};
}

// The radius of a dot of a plate, and of the light hole in its centre, in grid spacings. Because of the hole, detectors
// that look for a dark centre do not mistake dots for marks. If a dot is so small in a picture that its hole cannot be
// seen, it is also too small to be mistaken for a mark.
constexpr double dotRadius = 0.15;
constexpr double dotHoleRadius = 0.11;

}  // namespace pattern_code
