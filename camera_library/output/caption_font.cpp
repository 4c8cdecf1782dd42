#include "camera_library/output/caption_font.h"

#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace lmlib64 {

namespace {

constexpr unsigned char middleDot = 0xb7;
constexpr unsigned char multiplicationSign = 0xd7;
constexpr unsigned char lastOfAscii = 0x7e;

// Returns the index of the character's glyph in the font file; 0 if the font does not have the character. The first
// glyph stands for missing characters. The other glyphs follow in the order of their character codes.
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

// Finds the table with this name in a TrueType file.
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

// Reads the description of a glyph from front to back.
class GlyphReader {
public:
    explicit GlyphReader(std::string_view glyph) : rest(glyph) {}

    unsigned byte() {
        const auto value = static_cast<unsigned char>(rest.at(0));
        rest.remove_prefix(1);
        return value;
    }
    unsigned word() {
        const unsigned high = byte();
        return high * 256U + byte();
    }
    int signedWord() { return static_cast<std::int16_t>(word()); }
    void skip(std::size_t bytes) { rest.remove_prefix(bytes); }

private:
    std::string_view rest;
};

// The bits of a point's flags.
constexpr unsigned onCurveFlag = 1;
constexpr unsigned repeatFlag = 8;
struct CoordinateFlags {
    unsigned isByte;
    unsigned isSameOrPositive;
};
constexpr CoordinateFlags xFlags{2, 16};
constexpr CoordinateFlags yFlags{4, 32};

std::vector<unsigned> readFlags(GlyphReader &reader, std::size_t count) {
    std::vector<unsigned> flags;
    flags.reserve(count);
    while (flags.size() < count) {
        const unsigned flag = reader.byte();
        flags.insert(flags.end(), 1 + ((flag & repeatFlag) != 0 ? reader.byte() : 0), flag);
    }
    return flags;
}

// Reads the x or the y of the step from the previous point.
int readStep(GlyphReader &reader, unsigned flags, CoordinateFlags meaning) {
    const bool isSameOrPositive = (flags & meaning.isSameOrPositive) != 0;
    if ((flags & meaning.isByte) != 0) {
        const int step = static_cast<int>(reader.byte());
        return isSameOrPositive ? step : -step;
    }
    return isSameOrPositive ? 0 : reader.signedWord();
}

std::string_view glyphData(int glyph) {
    const std::string_view offsets = tableOf(captionFontFile(), "loca");
    const auto place = static_cast<std::size_t>(glyph) * 2;
    const std::size_t start = wordAt(offsets, place) * std::size_t{2};
    const std::size_t end = wordAt(offsets, place + 2) * std::size_t{2};
    return tableOf(captionFontFile(), "glyf").substr(start, end - start);
}

// True for every byte of a UTF-8 character except the first.
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
    constexpr unsigned unitsPerSize = glyphUnitsPerSize;
    const unsigned advance = wordAt(tableOf(captionFontFile(), "hmtx"), static_cast<std::size_t>(glyph) * 4);
    return static_cast<int>((advance * 1000 + unitsPerSize / 2) / unitsPerSize);
}

std::vector<std::vector<GlyphPoint>> captionGlyph(unsigned char character) {
    const int glyph = glyphOf(character);
    const std::string_view data = glyph == 0 ? std::string_view() : glyphData(glyph);
    if (data.empty()) {
        return {};
    }
    GlyphReader reader(data);
    const int count = reader.signedWord();
    if (count < 0) {
        throw std::logic_error("The captions' font has a glyph that is made of other glyphs.");
    }
    reader.skip(8);  // the bounding box
    std::vector<std::vector<GlyphPoint>> curves(static_cast<std::size_t>(count));
    std::size_t points = 0;
    for (std::vector<GlyphPoint> &curve : curves) {
        const std::size_t end = reader.word() + std::size_t{1};
        curve.resize(end - points);
        points = end;
    }
    reader.skip(reader.word());  // instructions
    const std::vector<unsigned> flags = readFlags(reader, points);
    const auto readCoordinates = [&](CoordinateFlags meaning, int GlyphPoint::*coordinate) {
        int position = 0;
        auto flag = flags.begin();
        for (std::vector<GlyphPoint> &curve : curves) {
            for (GlyphPoint &point : curve) {
                position += readStep(reader, *flag, meaning);
                point.*coordinate = position;
                point.isOnCurve = (*flag++ & onCurveFlag) != 0;
            }
        }
    };
    readCoordinates(xFlags, &GlyphPoint::x);
    readCoordinates(yFlags, &GlyphPoint::y);
    return curves;
}

double captionWidth(std::string_view text, double size) {
    int width = 0;
    for (const char character : text) {
        width += captionAdvance(static_cast<unsigned char>(character));
    }
    return width * size / 1000.0;
}

}  // namespace lmlib64
