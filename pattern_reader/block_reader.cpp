#include "pattern_reader/block_reader.h"

namespace pattern_reader {

namespace {

constexpr float clearEnough = 0.35F;  // certainty of a square whose bit is not treated as lost

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

void SeenBlock::see(int bit, bool set) {
    const std::uint64_t mask = std::uint64_t(1) << (pattern_code::blockBitCount - 1 - bit);
    unknown &= ~mask;
    bits = set ? bits | mask : bits & ~mask;
}

SeenBlock blockOfTile(const std::vector<SquareReading> &readings, const LatticeMotion &motion) {
    SeenBlock seen;
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
