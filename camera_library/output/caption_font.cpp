#include "camera_library/output/caption_font.h"

#include <cstddef>
#include <stdexcept>

namespace lmlib64 {

namespace {

constexpr unsigned char middleDot = 0xb7;
constexpr unsigned char multiplicationSign = 0xd7;
constexpr unsigned char lastOfAscii = 0x7e;

// The file's glyphs are in the order of the characters, after one for missing characters.
constexpr int glyphOf(unsigned char character) {
    if (character >= firstCaptionCharacter && character <= lastOfAscii) {
        return character - firstCaptionCharacter + 1;
    }
    constexpr int firstBehindAscii = lastOfAscii - firstCaptionCharacter + 2;
    if (character == middleDot) {
        return firstBehindAscii;
    }
    return character == multiplicationSign ? firstBehindAscii + 1 : 0;
}

unsigned wordAt(std::string_view file, std::size_t position) {
    return static_cast<unsigned char>(file.at(position)) * 256U + static_cast<unsigned char>(file.at(position + 1));
}

// The table of a TrueType file with this name.
std::string_view tableOf(std::string_view file, std::string_view name) {
    constexpr std::size_t headerSize = 12;
    constexpr std::size_t entrySize = 16;
    const std::size_t count = wordAt(file, 4);
    for (std::size_t entry = headerSize; entry < headerSize + count * entrySize; entry += entrySize) {
        if (file.substr(entry, name.size()) == name) {
            const std::size_t start = wordAt(file, entry + 8) * std::size_t{65536} + wordAt(file, entry + 10);
            return file.substr(start);
        }
    }
    throw std::logic_error("The captions' font has no table \"" + std::string(name) + "\".");
}

// True for every byte of a UTF-8 character but the first.
bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xc0U) == 0x80U;
}

}  // namespace

std::string captionText(std::string_view utf8) {
    std::string text;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        if (isContinuation(utf8[i])) {
            continue;  // belongs to a character that has been handled
        }
        const auto byte = static_cast<unsigned char>(utf8[i]);
        unsigned character = byte < 0x80 ? byte : 0;
        if ((byte == 0xc2 || byte == 0xc3) && i + 1 < utf8.size() && isContinuation(utf8[i + 1])) {
            character = (byte - 0xc2U) * 0x40U + static_cast<unsigned char>(utf8[i + 1]);  // U+0080 to U+00FF
        }
        text += glyphOf(static_cast<unsigned char>(character)) == 0 ? '?' : static_cast<char>(character);
    }
    return text;
}

int captionAdvance(unsigned char character) {
    const int glyph = glyphOf(character);
    if (glyph == 0) {
        return 0;
    }
    constexpr unsigned unitsPerSize = 2048;
    const unsigned advance = wordAt(tableOf(captionFontFile(), "hmtx"), static_cast<std::size_t>(glyph) * 4);
    return static_cast<int>((advance * 1000 + unitsPerSize / 2) / unitsPerSize);
}

double captionWidth(std::string_view text, double size) {
    int width = 0;
    for (const char character : text) {
        width += captionAdvance(static_cast<unsigned char>(character));
    }
    return width * size / 1000.0;
}

}  // namespace lmlib64
