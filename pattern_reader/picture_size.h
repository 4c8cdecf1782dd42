// How large a picture file says its picture is, read from its first bytes: what is too large is refused before any
// memory is taken for it. Knows PNG, JPEG, TIFF and PNM; says nothing of the rest, nor of whether a picture is intact.
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

// Reads from the start of the stream, which must be seekable. Nothing for another format, or where the size is not
// found.
std::optional<PictureSize> declaredSize(std::istream &file);

}  // namespace pattern_reader
