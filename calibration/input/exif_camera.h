// Reads the camera's name from a photograph's EXIF data.
#pragma once

#include <string>

namespace calibration {

// Returns maker, model and serial number of the camera, as far as the file has them: "Canon EOS R5 012345". The text is
// empty if the file has none of them or cannot be read. `path` is in the system's narrow encoding.
std::string exifCamera(const std::string &path);

}  // namespace calibration
