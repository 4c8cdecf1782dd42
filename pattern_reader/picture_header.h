// What a picture file says of its picture in its first bytes: how large it is, so that what is too large is refused
// before any memory is taken for it, and how it is to be turned. Knows PNG, JPEG, TIFF and PNM; does not tell whether a
// picture is intact.
//
// Each function reads from a seekable stream, wherever that stands. Nothing for another format, or if the file does not
// say.
#pragma once

#include <cstdint>
#include <istream>
#include <optional>

namespace pattern_reader {

struct PictureSize {
    std::uint64_t width = 0;
    std::uint64_t height = 0;

    bool exceeds(std::uint64_t pixels) const { return width != 0 && height > pixels / width; }
};

std::optional<PictureSize> declaredSize(std::istream &file);

// The orientation tag of a TIFF file, 1 to 8.
std::optional<int> tiffOrientation(std::istream &file);

}  // namespace pattern_reader
