#include "camera_library/pattern_code/window_table.h"

#include <cmath>

#include "camera_library/pattern_code/position_index.h"

namespace pattern_code {
namespace {

using Word = std::uint64_t;

constexpr int slotBits = 18;
constexpr int tileMargin = 4;
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

/** The most disagreeing bits of a window that is visited, by the number of bits compared; -1 for none. */
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

/** Counts ones in 64 columns of bits at once: bit i of level k is the bit of value 2^k of column i's count. */
class ColumnCounts {
public:
    void add(Word bits) {
        // Bits wait in pairs, so that most additions are the short ones.
        if (!isWaiting_) {
            waiting_ = bits;
        } else {
            carry(addThree(levels_[0], waiting_, bits), 1);
        }
        isWaiting_ = !isWaiting_;
    }

    /** The columns whose count is at most the limit. */
    Word atMost(int limit) {
        if (isWaiting_) {
            carry(waiting_, 0);
            isWaiting_ = false;
        }
        Word less = 0;
        Word equal = ~Word{0};
        for (std::size_t level = levels_.size(); level-- > 0;) {
            const Word ofLimit = (limit >> level & 1) != 0 ? ~Word{0} : 0;
            less |= equal & ofLimit & ~levels_[level];
            equal &= ~(ofLimit ^ levels_[level]);
        }
        return less | equal;
    }

private:
    /** Adds two bits to a level and returns what is carried. */
    static Word addThree(Word &level, Word a, Word b) {
        const Word sum = level ^ a;
        const Word carried = (level & a) | (sum & b);
        level = sum ^ b;
        return carried;
    }

    void carry(Word bits, std::size_t level) {
        for (; bits != 0 && level < levels_.size(); ++level) {
            const Word carried = levels_[level] & bits;
            levels_[level] ^= bits;
            bits = carried;
        }
    }

    std::array<Word, 7> levels_{};
    Word waiting_ = 0;
    bool isWaiting_ = false;
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

WindowTable::WindowTable() : keySlots_(std::size_t{1} << slotBits, -1) {
    grids_.push_back(planeGrid());
    for (int tile = 0; tile < tileCount; ++tile) {
        grids_.push_back(tileGrid(tile));
    }
    for (std::size_t i = 0; i < grids_.size(); ++i) {
        const CodeGrid &grid = grids_[i];
        const auto windowAt = [&](int column, int row, int side) {
            return Window{grid.bits.window(column, row, side), grid.position.window(column, row, side),
                          static_cast<std::int16_t>(i), static_cast<std::int16_t>(column),
                          static_cast<std::int16_t>(row)};
        };
        for (int row = 0; row + keySide <= grid.bits.height(); ++row) {
            for (int column = 0; column + keySide <= grid.bits.width(); ++column) {
                const Window window = windowAt(column, row, keySide);
                std::size_t slot = slotOf(window.bits, window.position);
                while (keySlots_[slot] >= 0) {
                    slot = (slot + 1) % keySlots_.size();
                }
                keySlots_[slot] = static_cast<std::int32_t>(keyWindows_.size());
                keyWindows_.push_back(window);
            }
        }
        for (int row = -tileMargin; grid.tile != CodePlace::plane && row < tileSide; ++row) {
            for (int column = -tileMargin; column < tileSide; ++column) {
                tileWindows_.push_back(windowAt(column, row, scanSide));
            }
        }
    }
}

void WindowTable::visitEqual(std::uint64_t bits, const Visit &visit) const {
    static const std::array<Word, 5> masks{keyMask, positionMask(0, 0), positionMask(1, 0), positionMask(0, 1),
                                           positionMask(1, 1)};
    for (const Word mask : masks) {
        for (std::size_t slot = slotOf(bits, mask); keySlots_[slot] >= 0; slot = (slot + 1) % keySlots_.size()) {
            const Window &window = keyWindows_[static_cast<std::size_t>(keySlots_[slot])];
            if (window.position == mask && window.bits == (bits & mask)) {
                visit(grids_[static_cast<std::size_t>(window.grid)], {window.column, window.row});
            }
        }
    }
}

void WindowTable::visitAlike(const SeenWindow &seen, const Visit &visit) const {
    const Limits &limits = disagreementLimits();
    visitAlikeInPlane(seen, limits[static_cast<std::size_t>(onesIn(seen.known))], visit);
    for (const Window &window : tileWindows_) {
        const Word compared = window.position & seen.known;
        const int disagreeing = onesIn((window.bits ^ seen.bits) & compared);
        if (disagreeing <= limits.back() && disagreeing <= limits[static_cast<std::size_t>(onesIn(compared))]) {
            visit(grids_[static_cast<std::size_t>(window.grid)], {window.column, window.row});
        }
    }
}

void WindowTable::visitAlikeInPlane(const SeenWindow &seen, int limit, const Visit &visit) const {
    if (limit < 0) {
        return;
    }
    const CodeGrid &plane = grids_.front();
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

}  // namespace pattern_code
