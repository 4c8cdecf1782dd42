// Tests which files of a folder are photographs, and what their EXIF data say about the camera.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "calibration/input/exif_camera.h"
#include "calibration/input/photograph_list.h"
#include "tests/camera_library/temporary_folder.h"

namespace calibration {
namespace {

TEST(PhotographList, findsPicturesInAFolderOrByWildcard) {
    const TemporaryFolder folder;
    for (const char *name : {"left10.PNG", "left2.png", "right1.jpg", "notes.txt", "b.Tiff"}) {
        writeBytes(folder.file(name), "");
    }
    std::filesystem::create_directory(folder.path() / "folder.png");
    struct Row {
        std::string asked;
        std::vector<std::string> found;
    };
    for (const Row &row : {
             Row{"", {"b.Tiff", "left10.PNG", "left2.png", "right1.jpg"}},
             Row{"left*", {"left10.PNG", "left2.png"}},
             Row{"left?.p*", {"left2.png"}},
             Row{"?????10.PNG", {}},
             Row{"*t1*", {"left10.PNG", "right1.jpg"}},
             Row{"*.png", {"left2.png"}},  // not the folder folder.png
             Row{"notes.txt", {"notes.txt"}},
             Row{"absent.png", {"absent.png"}},
             Row{"x*.png", {}},
         }) {
        std::vector<std::string> found;
        for (const std::string &path :
             findPhotographs(row.asked.empty() ? folder.path().string() : (folder.path() / row.asked).string())) {
            EXPECT_EQ(std::filesystem::path(path).parent_path(), folder.path());
            found.push_back(std::filesystem::path(path).filename().string());
        }
        EXPECT_EQ(found, row.found) << row.asked;
    }
}

std::string littleEndian(size_t number, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; i++) {
        text += char(number >> (8 * i) & 0xFF);
    }
    return text;
}

struct Tag {
    int number = 0;
    std::string text;
};

// Makes a TIFF directory that begins at `offset`. It contains the texts of the tags. If `pointer` is not 0, it also
// contains a pointer to another directory.
std::string directory(const std::vector<Tag> &tags, size_t offset, size_t pointer) {
    const size_t count = tags.size() + (pointer > 0 ? 1 : 0);
    std::string entries = littleEndian(count, 2);
    std::string texts;
    const size_t textsAt = offset + 2 + 12 * count + 4;
    // Each text here has more than 4 bytes. TIFF stores such texts behind the entries.
    for (const Tag &tag : tags) {
        entries += littleEndian(size_t(tag.number), 2) + littleEndian(2, 2) + littleEndian(tag.text.size() + 1, 4) +
                   littleEndian(textsAt + texts.size(), 4);
        texts += tag.text + std::string(1, '\0');
    }
    if (pointer > 0) {
        entries += littleEndian(0x8769, 2) + littleEndian(4, 2) + littleEndian(1, 4) + littleEndian(pointer, 4);
    }
    return entries + littleEndian(0, 4) + texts;
}

std::string jpegWith(const std::string &maker, const std::string &model, const std::string &serialNumber) {
    const std::vector<Tag> general{{0x010F, maker}, {0x0110, model}};
    const size_t exifAt = 8 + directory(general, 8, 1).size();
    const std::string tiff =
        "II*" + std::string(1, '\0') + littleEndian(8, 4) + directory(general, 8, exifAt) +
        directory(serialNumber.empty() ? std::vector<Tag>() : std::vector<Tag>{{0xA431, serialNumber}}, exifAt, 0);
    const std::string data = "Exif" + std::string(2, '\0') + tiff;
    const size_t length = data.size() + 2;
    return std::string("\xFF\xD8\xFF\xE1") + char(length >> 8) + char(length & 0xFF) + data + "\xFF\xD9";
}

TEST(ExifCamera, tellsTwoCamerasOfTheSameModelApart) {
    const TemporaryFolder folder;
    const std::string path = folder.file("a.jpg");
    struct Row {
        std::string maker, model, serialNumber, name;
    };
    for (const Row &row :
         {Row{"Maker", "Model 5", "001122", "Maker Model 5 001122"},
          Row{"Maker", "Model 5", "001123", "Maker Model 5 001123"}, Row{"Maker", "Model 5", "", "Maker Model 5"},
          Row{"     ",
              " Model\x01"
              "5  ",
              "", "Model 5"}}) {
        writeBytes(path, jpegWith(row.maker, row.model, row.serialNumber));
        EXPECT_EQ(exifCamera(path), row.name);
    }
    writeBytes(path, "\xFF\xD8\xFF\xD9");
    EXPECT_EQ(exifCamera(path), "");
    EXPECT_EQ(exifCamera(folder.file("absent.jpg")), "");
}

}  // namespace
}  // namespace calibration
