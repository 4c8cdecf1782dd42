#include "pattern_reader/picture_header.h"

#include <array>
#include <cctype>
#include <string>

namespace pattern_reader {

namespace {

// Reads unsigned numbers at offsets from the start of a file. A number beyond the file's end is read as 0, which is not
// a valid size.
class Bytes {
public:
    explicit Bytes(std::istream &source) : file(source) {}

    bool littleEndian = false;

    std::uint64_t number(std::uint64_t offset, int count) {
        std::array<char, 4> bytes{};
        file.clear();
        file.seekg(std::streamoff(offset));
        file.read(bytes.data(), count);
        if (!file) {
            return 0;
        }
        std::uint64_t value = 0;
        for (int i = 0; i < count; i++) {
            const auto byte = static_cast<unsigned char>(bytes[size_t(i)]);
            value |= std::uint64_t(byte) << 8 * (littleEndian ? i : count - 1 - i);
        }
        return value;
    }

private:
    std::istream &file;
};

// Goes through the segments of a JPEG file up to the one that describes the frame, and returns the frame's size.
PictureSize jpegSize(Bytes &bytes) {
    constexpr int segmentLimit = 1000;
    std::uint64_t at = 2;
    for (int i = 0; i < segmentLimit && bytes.number(at, 1) == 0xFF; i++) {
        const std::uint64_t marker = bytes.number(at + 1, 1);
        const bool isFrame = marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (isFrame) {
            return {bytes.number(at + 7, 2), bytes.number(at + 5, 2)};
        }
        // Any number of FF bytes may stand before a marker to fill up space.
        at += marker == 0xFF ? 1 : 2 + bytes.number(at + 2, 2);
    }
    return {};
}

bool isTiff(std::uint64_t start) {
    return start == 0x49492A00 || start == 0x4D4D002A;
}

// Returns the value of a field in the first directory of a TIFF file; 0 if the field is absent. Each entry of the
// directory takes twelve bytes.
std::uint64_t tiffValue(Bytes &bytes, std::uint64_t tag) {
    constexpr std::uint64_t shortType = 3;
    bytes.littleEndian = false;
    bytes.littleEndian = bytes.number(0, 2) == 0x4949;
    const std::uint64_t directory = bytes.number(4, 4);
    const std::uint64_t entries = bytes.number(directory, 2);
    for (std::uint64_t i = 0; i < entries; i++) {
        const std::uint64_t entry = directory + 2 + 12 * i;
        if (bytes.number(entry, 2) == tag) {
            return bytes.number(entry + 8, bytes.number(entry + 2, 2) == shortType ? 2 : 4);
        }
    }
    return 0;
}

PictureSize tiffSize(Bytes &bytes) {
    constexpr std::uint64_t widthTag = 256;
    constexpr std::uint64_t heightTag = 257;
    return {tiffValue(bytes, widthTag), tiffValue(bytes, heightTag)};
}

// Returns the next number of a PNM header. It skips comments, which run from # to the end of their line.
std::uint64_t headerNumber(std::istream &file) {
    while (file && (std::isspace(file.peek()) != 0 || file.peek() == '#')) {
        if (file.get() == '#') {
            std::string comment;
            std::getline(file, comment);
        }
    }
    std::uint64_t value = 0;
    return file >> value ? value : 0;
}

PictureSize pnmSize(std::istream &file) {
    file.clear();
    file.seekg(2);
    PictureSize size;
    size.width = headerNumber(file);
    size.height = headerNumber(file);
    return size;
}

}  // namespace

std::optional<PictureSize> declaredSize(std::istream &file) {
    Bytes bytes(file);
    const std::uint64_t start = bytes.number(0, 4);
    PictureSize size;
    if (start == 0x89504E47) {
        size = {bytes.number(16, 4), bytes.number(20, 4)};
    } else if (start >> 16 == 0xFFD8) {
        size = jpegSize(bytes);
    } else if (isTiff(start)) {
        size = tiffSize(bytes);
    } else if (start >> 24 == 'P' && (start >> 16 & 0xFF) >= '1' && (start >> 16 & 0xFF) <= '6') {
        size = pnmSize(file);
    }
    return size.width != 0 && size.height != 0 ? std::optional<PictureSize>(size) : std::nullopt;
}

std::optional<int> tiffOrientation(std::istream &file) {
    constexpr std::uint64_t orientationTag = 274;
    Bytes bytes(file);
    if (!isTiff(bytes.number(0, 4))) {
        return std::nullopt;
    }
    const std::uint64_t orientation = tiffValue(bytes, orientationTag);
    return orientation >= 1 && orientation <= 8 ? std::optional<int>(int(orientation)) : std::nullopt;
}

}  // namespace pattern_reader
