// Reads the patterns in photographs, several photographs at a time. It neither converts to millimetres nor groups the
// photographs by camera; photograph_observations.h does both.
//
// Paths are in the system's narrow encoding. No exception is thrown for a photograph that cannot be read; its `error`
// says why.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "pattern_reader/pattern_reader.h"

namespace calibration {

struct PhotographFile {
    std::string path;
    // The user's name for the camera, or empty. Photographs without such a name are grouped by size and by the camera's
    // name in their EXIF data.
    std::string camera;
};

// The information in the file of one photograph, and the patterns that were read in the photograph.
struct ReadPhotograph {
    PhotographFile file;
    std::string exifCamera;  // maker, model and serial number from the EXIF data; empty if there are none
    int width = 0;           // pixels, as the picture is stored
    int height = 0;
    bool isTruncated = false;  // the file is cut off before the end of its picture
    std::vector<pattern_reader::PatternReading> readings;
    std::string error;  // a sentence; empty if the photograph was loaded and searched for patterns without a failure
    std::string thumbnail;  // the bytes of a small JPEG file; empty if not asked for
};

ReadPhotograph readPhotographFile(const PhotographFile &file, const pattern_reader::ReadingOptions &options,
                                  bool makeThumbnail = false);

struct PhotographsOptions {
    pattern_reader::ReadingOptions reading;
    unsigned jobs = 0;  // how many photographs are read at the same time; if 0, one for each processor
    bool makeThumbnails = false;
    // Called after each photograph, with its index in the list and the number of photographs read so far. The call
    // comes from one of the reading threads; two calls never run at the same time.
    std::function<void(std::size_t index, const ReadPhotograph &photograph, std::size_t done)> onPhotograph;
};

// Reads all photographs and returns them in the order of the list. Once options.reading.isCancelled returns true, the
// function ends early. A photograph whose reading has not started by that time has an empty entry. A photograph whose
// reading is in progress at that time has an entry without readings. Several threads may call isCancelled at the same
// time. An exception that onPhotograph throws is passed on. While the function runs, OpenCV's own number of threads is
// 1 in the whole process.
std::vector<ReadPhotograph> readPhotographs(const std::vector<PhotographFile> &files,
                                            const PhotographsOptions &options);

}  // namespace calibration
