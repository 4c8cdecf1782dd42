// The camera's name in a photograph's EXIF data.
#pragma once

#include <string>

namespace calibration {

// Maker and model of the camera, and its serial number if the file has one: "Canon EOS R5 012345". Empty if the file
// has no such data or cannot be read. `path` is in the system's narrow encoding.
std::string exifCamera(const std::string &path);

}  // namespace calibration
