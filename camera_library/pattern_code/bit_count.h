// Counts bits.
#pragma once

#include <cstdint>

namespace pattern_code {

// Returns the number of bits that are 1. The compiler's built-in function is not used: it is fast only if the program
// is compiled for processors that have an instruction for counting bits.
constexpr int onesIn(std::uint64_t word) {
    word -= (word >> 1U) & 0x5555555555555555U;
    word = (word & 0x3333333333333333U) + ((word >> 2U) & 0x3333333333333333U);
    word = (word + (word >> 4U)) & 0x0F0F0F0F0F0F0F0FU;
    return static_cast<int>((word * 0x0101010101010101U) >> 56U);
}

}  // namespace pattern_code
