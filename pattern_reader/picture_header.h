// Reads a picture's size and orientation from the header of its file. This way, a picture that is too large can be
// refused before any memory is allocated for it. Supports PNG, JPEG, TIFF and PNM. Does not check whether a picture is
// intact.
//
// Each function reads from a seekable stream. The stream's current position does not matter. The result is empty if the
// function does not support the file's format, or if the header contains no valid value for the function to return.
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
