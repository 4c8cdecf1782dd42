// A rectangle of bits, read many at a time: 64 to the right of a place, or 8 x 8 of them as one word. Beyond
// its edges every bit is 0.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace pattern_code {

/** The number of ones. Spelled out, because the library's count is a call where the processor has none. */
inline int onesIn(std::uint64_t word) {
    word -= (word >> 1U) & 0x5555555555555555U;
    word = (word & 0x3333333333333333U) + ((word >> 2U) & 0x3333333333333333U);
    word = (word + (word >> 4U)) & 0x0F0F0F0F0F0F0F0FU;
    return static_cast<int>((word * 0x0101010101010101U) >> 56U);
}

class BitGrid {
public:
    BitGrid(int columns, int rows)
        : width_(columns),
          height_(rows),
          stride_(std::size_t(columns / wordBits) + 3),
          words_(stride_ * std::size_t(rows)) {}

    [[nodiscard]] int width() const { return width_; }
    [[nodiscard]] int height() const { return height_; }

    void set(int column, int row) {
        const std::uint64_t bit = std::uint64_t{1} << (column % wordBits);
        words_[std::size_t(row) * stride_ + 1 + std::size_t(column / wordBits)] |= bit;
    }

    /** 64 bits of a row, the given column's the lowest. */
    [[nodiscard]] std::uint64_t rowBits(int column, int row) const {
        if (row < 0 || row >= height_ || column <= -wordBits || column >= width_) {
            return 0;
        }
        // There is an empty word before the row and two behind it.
        const int at = column + wordBits;
        const std::uint64_t *word = words_.data() + std::size_t(row) * stride_ + std::size_t(at / wordBits);
        const int shift = at % wordBits;
        return shift == 0 ? word[0] : word[0] >> shift | word[1] << (wordBits - shift);
    }

    /** The square of so many columns and rows, 8 at most, at the place: column c, row r is the bit 8 r + c. */
    [[nodiscard]] std::uint64_t window(int column, int row, int side) const {
        std::uint64_t bits = 0;
        for (int i = 0; i < side; ++i) {
            bits |= (rowBits(column, row + i) & ((1U << side) - 1)) << (8 * i);
        }
        return bits;
    }

private:
    static constexpr int wordBits = 64;

    int width_;
    int height_;
    std::size_t stride_;
    std::vector<std::uint64_t> words_;
};

}  // namespace pattern_code
