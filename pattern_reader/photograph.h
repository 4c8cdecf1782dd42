// Loads a photograph from a file: its grey levels, its orientation, and whether the file is complete. It never writes
// files.
//
// Coordinates are those of the picture as it is stored: column 0 of row 0 of the file's data is the top-left pixel,
// whatever the orientation tag says. Several threads may call the functions at the same time. Paths are in the system's
// narrow encoding.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "pattern_reader/pattern_reader.h"

namespace pattern_reader {

struct Photograph {
    cv::Mat grey;  // 8 bits, one channel
    // The orientation tag of a JPEG (EXIF) or TIFF file, 1 to 8; 1 if there is none. It says how to turn or mirror the
    // stored picture so that it is upright. 2, 4, 5 and 7 mean that it is stored mirrored.
    int orientation = 1;
    bool truncated = false;  // true if a JPEG file is cut off before the end of its picture; the missing part is grey
};

// Loads PNG, JPEG, TIFF, PGM and all other formats that OpenCV reads. If the file cannot be read or its picture is too
// large, throws std::runtime_error with a sentence that names the file.
PATTERN_READER_API Photograph loadPhotograph(const std::string &path);

// Reads the patterns as readPatterns does. A picture that is stored mirrored is mirrored back for reading, but corners,
// angle and options.region always refer to the stored picture.
PATTERN_READER_API std::vector<PatternReading> readPhotograph(const Photograph &photograph,
                                                              const ReadingOptions &options = {});

}  // namespace pattern_reader
