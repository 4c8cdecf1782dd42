#include "pattern_reader/window_table.h"

#include <cmath>

#include "camera_library/pattern_code/bit_count.h"
#include "pattern_reader/position_index.h"

namespace pattern_reader {

namespace {

using pattern_code::carriesPosition;
using pattern_code::onesIn;
using pattern_code::planeBit;
using pattern_code::planeSide;
using pattern_code::tileBit;
using pattern_code::tileCount;
using pattern_code::tileSide;

using Word = std::uint64_t;

constexpr int slotBits = 18;
constexpr int tileMargin = 4;
// If the seen bits are random, at most this many windows are visited on average, in all four orientations together.
constexpr double randomVisits = 100;

Word positionMask(int columnParity, int rowParity) {
    Word mask = 0;
    for (int row = 0; row < WindowTable::keySide; ++row) {
        for (int column = 0; column < WindowTable::keySide; ++column) {
            mask |= Word{carriesPosition(column + columnParity, row + rowParity) ? 1U : 0U} << (8 * row + column);
        }
    }
    return mask;
}

std::size_t slotOf(Word bits, Word mask) {
    const Word key = (bits & mask) ^ mask << 24U;
    return static_cast<std::size_t>((key * 0x9E3779B97F4A7C15U) >> (64 - slotBits));
}

CodeGrid planeGrid() {
    CodeGrid grid{CodePlace::plane, BitGrid(planeSide, planeSide), BitGrid(planeSide, planeSide)};
    for (int row = 0; row < planeSide; ++row) {
        for (int column = 0; column < planeSide; ++column) {
            grid.position.set(column, row);
            if (planeBit(column, row)) {
                grid.bits.set(column, row);
            }
        }
    }
    return grid;
}

CodeGrid tileGrid(int tile) {
    CodeGrid grid{tile, BitGrid(tileSide, tileSide), BitGrid(tileSide, tileSide)};
    for (int row = 0; row < tileSide; ++row) {
        for (int column = 0; column < tileSide; ++column) {
            if (carriesPosition(column, row)) {
                grid.position.set(column, row);
                if (tileBit(tile, column, row)) {
                    grid.bits.set(column, row);
                }
            }
        }
    }
    return grid;
}

using Limits = std::array<int, WindowTable::scanSide * WindowTable::scanSide + 1>;

// Returns an array `limits`. If n bits of a window are compared, the window is visited if at most limits[n] bits
// disagree. If n bits are so few that even full agreement says too little, limits[n] is -1.
const Limits &disagreementLimits() {
    static const Limits limits = [] {
        Limits made{};
        for (int count = 0; count < static_cast<int>(made.size()); ++count) {
            int limit = -1;
            while (2 * limit < count && chanceLog10(count, limit + 1) <= std::log10(randomVisits / placeCount)) {
                ++limit;
            }
            made[static_cast<std::size_t>(count)] = limit;
        }
        return made;
    }();
    return limits;
}

// Counts the ones in 64 columns of bits at once. The bits of a count are spread over the levels: bit k of the count of
// column i is bit i of levels[k].
class ColumnCounts {
public:
    void add(Word bits) {
        // Bits are added in pairs, because that takes fewer operations than adding them one by one.
        if (!isWaiting) {
            waiting = bits;
        } else {
            carry(addThree(levels[0], waiting, bits), 1);
        }
        isWaiting = !isWaiting;
    }

    // Returns a word with a one for every column whose count is at most the limit.
    Word atMost(int limit) {
        if (isWaiting) {
            carry(waiting, 0);
            isWaiting = false;
        }
        Word less = 0;
        Word equal = ~Word{0};
        for (std::size_t level = levels.size(); level-- > 0;) {
            const Word ofLimit = (limit >> level & 1) != 0 ? ~Word{0} : 0;
            less |= equal & ofLimit & ~levels[level];
            equal &= ~(ofLimit ^ levels[level]);
        }
        return less | equal;
    }

private:
    // Adds two bits per column to a level and returns the carries.
    static Word addThree(Word &level, Word a, Word b) {
        const Word sum = level ^ a;
        const Word carried = (level & a) | (sum & b);
        level = sum ^ b;
        return carried;
    }

    void carry(Word bits, std::size_t level) {
        for (; bits != 0 && level < levels.size(); ++level) {
            const Word carried = levels[level] & bits;
            levels[level] ^= bits;
            bits = carried;
        }
    }

    std::array<Word, 7> levels{};
    Word waiting = 0;
    bool isWaiting = false;
};

}  // namespace

double chanceLog10(int count, int disagreeing) {
    double sum = 0;
    double term = 1;
    int exponent = 0;
    for (int i = 0; i <= disagreeing; ++i) {
        sum += term;
        term *= static_cast<double>(count - i) / (i + 1);
        if (sum > 1e200) {
            sum *= 1e-200;
            term *= 1e-200;
            exponent += 200;
        }
    }
    return std::log10(sum) + exponent - count * std::log10(2.0);
}

WindowTable::WindowTable() : keySlots(std::size_t{1} << slotBits, -1) {
    grids.push_back(planeGrid());
    for (int tile = 0; tile < tileCount; ++tile) {
        grids.push_back(tileGrid(tile));
    }
    for (std::size_t i = 0; i < grids.size(); ++i) {
        const CodeGrid &grid = grids[i];
        const auto windowAt = [&](int column, int row, int side) {
            return Window{grid.bits.window(column, row, side), grid.position.window(column, row, side),
                          static_cast<std::int16_t>(i), static_cast<std::int16_t>(column),
                          static_cast<std::int16_t>(row)};
        };
        for (int row = 0; row + keySide <= grid.bits.height(); ++row) {
            for (int column = 0; column + keySide <= grid.bits.width(); ++column) {
                const Window window = windowAt(column, row, keySide);
                std::size_t slot = slotOf(window.bits, window.position);
                while (keySlots[slot] >= 0) {
                    slot = (slot + 1) % keySlots.size();
                }
                keySlots[slot] = static_cast<std::int32_t>(keyWindows.size());
                keyWindows.push_back(window);
            }
        }
        for (int row = -tileMargin; grid.tile != CodePlace::plane && row < tileSide; ++row) {
            for (int column = -tileMargin; column < tileSide; ++column) {
                tileWindows.push_back(windowAt(column, row, scanSide));
            }
        }
    }
}

void WindowTable::visitEqual(std::uint64_t bits, const Visit &visit) const {
    static const std::array<Word, 5> masks{keyMask, positionMask(0, 0), positionMask(1, 0), positionMask(0, 1),
                                           positionMask(1, 1)};
    for (const Word mask : masks) {
        for (std::size_t slot = slotOf(bits, mask); keySlots[slot] >= 0; slot = (slot + 1) % keySlots.size()) {
            const Window &window = keyWindows[static_cast<std::size_t>(keySlots[slot])];
            if (window.position == mask && window.bits == (bits & mask)) {
                visit(grids[static_cast<std::size_t>(window.grid)], {window.column, window.row});
            }
        }
    }
}

void WindowTable::visitAlike(const SeenWindow &seen, const Visit &visit) const {
    const Limits &limits = disagreementLimits();
    visitAlikeInPlane(seen, limits[static_cast<std::size_t>(onesIn(seen.known))], visit);
    for (const Window &window : tileWindows) {
        const Word compared = window.position & seen.known;
        const int disagreeing = onesIn((window.bits ^ seen.bits) & compared);
        if (disagreeing <= limits.back() && disagreeing <= limits[static_cast<std::size_t>(onesIn(compared))]) {
            visit(grids[static_cast<std::size_t>(window.grid)], {window.column, window.row});
        }
    }
}

void WindowTable::visitAlikeInPlane(const SeenWindow &seen, int limit, const Visit &visit) const {
    if (limit < 0) {
        return;
    }
    const CodeGrid &plane = grids.front();
    for (int row = 0; row < planeSide; ++row) {
        for (int column = 0; column < planeSide; column += 64) {
            ColumnCounts counts;
            for (int i = 0; i < scanSide * scanSide; ++i) {
                if ((seen.known >> i & 1U) != 0) {
                    const Word inverted = (seen.bits >> i & 1U) != 0 ? ~Word{0} : 0;
                    counts.add(plane.bits.rowBits(column + i % scanSide, row + i / scanSide) ^ inverted);
                }
            }
            Word alike = counts.atMost(limit);
            for (int bit = 0; alike != 0; ++bit, alike >>= 1U) {
                if ((alike & 1U) != 0 && column + bit < planeSide) {
                    visit(plane, {column + bit, row});
                }
            }
        }
    }
}

}  // namespace pattern_reader
