// The font in which a page's texts are set: DejaVu Sans with the characters below and no others. It is a part of the
// library, so that a page looks the same wherever it was made, and no fonts are looked for.
//
// Its texts have one byte per character, in the encoding that PDF calls WinAnsiEncoding.
#pragma once

#include <string>
#include <string_view>

namespace lmlib64 {

constexpr unsigned char firstCaptionCharacter = 0x20;
constexpr unsigned char lastCaptionCharacter = 0xd7;

// The font's text for one in UTF-8: printable ASCII, U+00B7 and U+00D7. Any other character becomes a "?".
std::string captionText(std::string_view utf8);

// How far the character moves the pen, in thousandths of the font's size; 0 where the font does not have it.
int captionAdvance(unsigned char character);

// The width of a text that is set in this size, in the size's unit.
double captionWidth(std::string_view text, double size);

// The TrueType file.
std::string_view captionFontFile();

}  // namespace lmlib64
