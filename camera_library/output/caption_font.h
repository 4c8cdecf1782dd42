// The font for the texts of a page: DejaVu Sans, reduced to the characters below. It is part of the library, so that a
// page looks the same on every machine and no fonts have to be found.
//
// Its texts have one byte per character, in the encoding that PDF calls WinAnsiEncoding.
#pragma once

#include <string>
#include <string_view>

namespace lmlib64 {

constexpr unsigned char firstCaptionCharacter = 0x20;
constexpr unsigned char lastCaptionCharacter = 0xd7;

// Converts a UTF-8 text to the font's encoding: printable ASCII, U+00B7 and U+00D7. Any other character becomes a "?".
std::string captionText(std::string_view utf8);

// The advance width of the character in thousandths of the font size; 0 if the font does not have it.
int captionAdvance(unsigned char character);

// The width of a text in this font size, in the unit of the size.
double captionWidth(std::string_view text, double size);

// The TrueType file.
std::string_view captionFontFile();

}  // namespace lmlib64
