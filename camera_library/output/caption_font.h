// The font for the texts of a page: DejaVu Sans, reduced to the characters that captionText keeps. The font file is
// compiled into the library, so PDF and PNG pages look the same on every machine, and no font has to be installed.
//
// Texts in this font have one byte per character, in the encoding that PDF calls WinAnsiEncoding.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lmlib64 {

constexpr unsigned char firstCaptionCharacter = 0x20;
constexpr unsigned char lastCaptionCharacter = 0xd7;

// Converts a UTF-8 text to the font's encoding: printable ASCII, U+00B7 and U+00D7. Any other character becomes a "?".
std::string captionText(std::string_view utf8);

// Returns the advance width of the character in thousandths of the font size; 0 if the font does not have the
// character.
int captionAdvance(unsigned char character);

// Returns the width of a text in the font size `size`. The width has the same unit as the size.
double captionWidth(std::string_view text, double size);

// A point of a closed curve of a character. The unit is 1/2048 of the font size; x runs to the right and y up from the
// start of the character's baseline. A point off the curve is the control point of a quadratic Bezier curve. If two
// control points follow each other, the point in the middle between them is on the curve.
struct GlyphPoint {
    int x = 0;
    int y = 0;
    bool isOnCurve = true;
};

// Returns the closed curves of the character. The curves do not cross; fill them by the non-zero rule. The result is
// empty if the character is blank or the font does not have it.
std::vector<std::vector<GlyphPoint>> captionGlyph(unsigned char character);

constexpr int glyphUnitsPerSize = 2048;

// Returns the content of the font's TrueType file.
std::string_view captionFontFile();

}  // namespace lmlib64
