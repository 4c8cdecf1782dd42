#include "calibration/input/exif_camera.h"

#include <libexif/exif-data.h>
#include <libexif/exif-loader.h>

#include <array>
#include <fstream>
#include <memory>

namespace calibration {

namespace {

constexpr ExifTag serialNumber = ExifTag(0xA431);  // BodySerialNumber; old versions of libexif have no name for it

using Data = std::unique_ptr<ExifData, void (*)(ExifData *)>;

Data load(std::istream &file) {
    const std::unique_ptr<ExifLoader, void (*)(ExifLoader *)> loader(exif_loader_new(), exif_loader_unref);
    std::array<char, 4096> bytes{};
    // EXIF data has at most 64 KiB and is near the start of the file, so the first 256 KiB are enough.
    for (int block = 0; loader && block < 64 && file; block++) {
        file.read(bytes.data(), std::streamsize(bytes.size()));
        auto *start = reinterpret_cast<unsigned char *>(bytes.data());
        if (exif_loader_write(loader.get(), start, unsigned(file.gcount())) == 0) {
            break;
        }
    }
    return {loader ? exif_loader_get_data(loader.get()) : nullptr, exif_data_unref};
}

// Returns the text of a tag. Characters that are not printable ASCII become spaces. Spaces at the ends are dropped.
std::string textOf(ExifData &data, ExifTag tag) {
    const ExifEntry *entry = exif_data_get_entry((&data), tag);
    if (entry == nullptr || entry->format != EXIF_FORMAT_ASCII) {
        return {};
    }
    std::string text;
    for (unsigned i = 0; i < entry->size && entry->data[i] != 0; i++) {
        text += entry->data[i] >= 0x20 && entry->data[i] < 0x7F ? char(entry->data[i]) : ' ';
    }
    const size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

std::string exifCamera(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    const Data data = load(file);
    std::string name;
    if (data) {
        for (const ExifTag tag : {EXIF_TAG_MAKE, EXIF_TAG_MODEL, serialNumber}) {
            const std::string text = textOf(*data, tag);
            name += name.empty() || text.empty() ? text : " " + text;
        }
    }
    return name;
}

}  // namespace calibration
