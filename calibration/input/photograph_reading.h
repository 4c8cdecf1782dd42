// Reads the patterns in photographs, several photographs at a time. It knows no millimetres and no cameras yet;
// photograph_observations.h does.
//
// Paths are in the system's narrow encoding. A photograph that cannot be read is no exception: its `error` says why.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "pattern_reader/pattern_reader.h"

namespace calibration {

struct PhotographFile {
    std::string path;
    // The name of the camera that took it; if empty, photographs are grouped by size and by the name in their EXIF.
    std::string camera;
};

// What was read in one photograph.
struct ReadPhotograph {
    PhotographFile file;
    std::string exifCamera;  // maker and model as EXIF has them; empty if it has none
    int width = 0;           // pixels, as the picture is stored
    int height = 0;
    bool isTruncated = false;  // the file ends before its picture does
    std::vector<pattern_reader::PatternReading> readings;
    std::string error;      // a sentence; empty if the picture was loaded
    std::string thumbnail;  // a small JPEG file, as bytes; empty if not asked for
};

ReadPhotograph readPhotographFile(const PhotographFile &file, const pattern_reader::ReadingOptions &options,
                                  bool makeThumbnail = false);

struct PhotographsOptions {
    pattern_reader::ReadingOptions reading;
    unsigned jobs = 0;  // photographs read at the same time; 0: one for each processor
    bool makeThumbnails = false;
    // Called after each photograph, by any of the reading threads but by only one at a time, with the photograph's
    // index in the list and the number of photographs done so far.
    std::function<void(std::size_t index, const ReadPhotograph &photograph, std::size_t done)> onPhotograph;
};

// All photographs, in the order of the list. Ends early and with empty entries once options.reading.isCancelled, which
// several threads may ask at the same time, returns true. An exception of onPhotograph is passed on.
// While it runs, OpenCV uses one thread for each photograph.
std::vector<ReadPhotograph> readPhotographs(const std::vector<PhotographFile> &files,
                                            const PhotographsOptions &options);

}  // namespace calibration
