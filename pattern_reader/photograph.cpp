#include "pattern_reader/photograph.h"

#include <libexif/exif-data.h>
#include <libexif/exif-loader.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <opencv2/imgproc.hpp>

#include "pattern_reader/image_file.h"
#include "pattern_reader/picture_header.h"

namespace pattern_reader {

namespace {

using Bytes = std::vector<unsigned char>;

bool isMirrored(int orientation) {
    return orientation == 2 || orientation == 4 || orientation == 5 || orientation == 7;
}

// Returns all bytes of the file if it is a JPEG file; otherwise empty.
Bytes jpegContent(std::istream &file) {
    file.clear();
    file.seekg(0);
    if (file.get() != 0xFF || file.get() != 0xD8) {
        return {};
    }
    file.seekg(0);
    return {std::istreambuf_iterator<char>(file), {}};
}

int exifOrientation(const Bytes &bytes) {
    const std::unique_ptr<ExifLoader, void (*)(ExifLoader *)> loader(exif_loader_new(), exif_loader_unref);
    if (!loader) {
        return 1;
    }
    // The cast is safe because the loader does not change the bytes. It stops by itself after the header.
    exif_loader_write(loader.get(), const_cast<unsigned char *>(bytes.data()), unsigned(bytes.size()));
    const std::unique_ptr<ExifData, void (*)(ExifData *)> data(exif_loader_get_data(loader.get()), exif_data_unref);
    if (!data) {
        return 1;
    }
    const ExifEntry *entry = exif_data_get_entry(data.get(), EXIF_TAG_ORIENTATION);
    if (entry == nullptr || entry->format != EXIF_FORMAT_SHORT || entry->size < 2) {
        return 1;
    }
    const int orientation = exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
    return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

// True if a JPEG file ends before the end marker of its picture. The segments are skipped as a whole, because a
// thumbnail inside a segment has an end marker, too.
bool endsBeforeItsPicture(const Bytes &bytes) {
    constexpr unsigned char endOfImage = 0xD9;
    const auto standsAlone = [](unsigned char marker) { return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8); };
    size_t at = 2;
    while (at + 1 < bytes.size()) {
        if (bytes[at] != 0xFF) {
            // Skips compressed data up to the next FF byte. This byte begins a marker unless a zero byte follows it.
            const void *next = std::memchr(&bytes[at], 0xFF, bytes.size() - at);
            if (next == nullptr) {
                return true;
            }
            at = size_t(static_cast<const unsigned char *>(next) - bytes.data());
            continue;
        }
        const unsigned char marker = bytes[at + 1];
        if (marker == endOfImage) {
            return false;
        }
        if (marker == 0xFF) {
            at++;
        } else if (marker == 0 || standsAlone(marker)) {
            at += 2;
        } else if (at + 3 < bytes.size()) {
            at += 2 + (size_t(bytes[at + 2]) << 8 | bytes[at + 3]);
        } else {
            return true;
        }
    }
    return true;
}

// OpenCV turns TIFF pictures upright. This function turns them back.
cv::Mat asStored(const cv::Mat &upright, int orientation) {
    cv::Mat stored;
    switch (orientation) {
        case 2:
            cv::flip(upright, stored, 1);
            return stored;
        case 3:
            cv::rotate(upright, stored, cv::ROTATE_180);
            return stored;
        case 4:
            cv::flip(upright, stored, 0);
            return stored;
        case 5:
            return upright.t();
        case 6:
            cv::rotate(upright, stored, cv::ROTATE_90_COUNTERCLOCKWISE);
            return stored;
        case 7:
            cv::flip(upright.t(), stored, -1);
            return stored;
        case 8:
            cv::rotate(upright, stored, cv::ROTATE_90_CLOCKWISE);
            return stored;
        default:
            return upright;
    }
}

// Returns the angle that a direction has after the picture is mirrored left to right, in degrees from -180 to 180.
double mirroredAngle(double angle) {
    return std::remainder(180 - angle, 360);
}

}  // namespace

Photograph loadPhotograph(const std::string &path) {
    Photograph photograph;
    photograph.grey = loadGreyImage(path);
    std::ifstream file(path, std::ios::binary);
    if (const std::optional<int> orientation = tiffOrientation(file)) {
        photograph.orientation = *orientation;
        photograph.grey = asStored(photograph.grey, *orientation);
        return photograph;
    }
    const Bytes bytes = jpegContent(file);
    if (!bytes.empty()) {
        photograph.orientation = exifOrientation(bytes);
        photograph.truncated = endsBeforeItsPicture(bytes);
    }
    return photograph;
}

std::vector<PatternReading> readPhotograph(const Photograph &photograph, const ReadingOptions &options) {
    if (!isMirrored(photograph.orientation)) {
        return readPatterns(photograph.grey, options);
    }
    cv::Mat turned;
    cv::flip(photograph.grey, turned, 1);
    ReadingOptions turnedOptions = options;
    turnedOptions.region.x = turned.cols - options.region.x - options.region.width;
    std::vector<PatternReading> readings = readPatterns(turned, turnedOptions);
    for (PatternReading &reading : readings) {
        for (PatternCorner &corner : reading.corners) {
            corner.image.x = float(turned.cols - 1) - corner.image.x;
        }
        reading.angle = mirroredAngle(reading.angle);
        reading.quarterTurns = (int(std::lround(reading.angle / 90)) + 4) % 4;
    }
    return readings;
}

}  // namespace pattern_reader
