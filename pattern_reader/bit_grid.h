// A rectangle of bits from which many bits can be read at once: 64 bits of a row, or a window of up to 8 x 8 bits as
// one word. Bits outside the rectangle are 0.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace pattern_reader {

class BitGrid {
public:
    BitGrid(int columns, int rows)
        : columnCount(columns),
          rowCount(rows),
          wordsPerRow(std::size_t(columns / wordBits) + 3),
          words(wordsPerRow * std::size_t(rows)) {}

    [[nodiscard]] int width() const { return columnCount; }
    [[nodiscard]] int height() const { return rowCount; }

    void set(int column, int row) {
        const std::uint64_t bit = std::uint64_t{1} << (column % wordBits);
        words[std::size_t(row) * wordsPerRow + 1 + std::size_t(column / wordBits)] |= bit;
    }

    // Returns 64 bits of a row. The lowest bit is that of the given column.
    [[nodiscard]] std::uint64_t rowBits(int column, int row) const {
        if (row < 0 || row >= rowCount || column <= -wordBits || column >= columnCount) {
            return 0;
        }
        // Each row has one empty word before it and at least one after it.
        const int at = column + wordBits;
        const std::uint64_t *word = words.data() + std::size_t(row) * wordsPerRow + std::size_t(at / wordBits);
        const int shift = at % wordBits;
        return shift == 0 ? word[0] : word[0] >> shift | word[1] << (wordBits - shift);
    }

    // Returns the bits of a square window. `column` and `row` are those of its top-left bit, and `side` is at most 8.
    // The window's bit in column c and row r becomes bit 8*r+c of the result.
    [[nodiscard]] std::uint64_t window(int column, int row, int side) const {
        std::uint64_t bits = 0;
        for (int i = 0; i < side; ++i) {
            bits |= (rowBits(column, row + i) & ((1U << side) - 1)) << (8 * i);
        }
        return bits;
    }

private:
    static constexpr int wordBits = 64;

    int columnCount;
    int rowCount;
    std::size_t wordsPerRow;
    std::vector<std::uint64_t> words;
};

}  // namespace pattern_reader
