// What the reader does with pictures that are wrong, extreme or of another kind.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <random>

#include "bench/reader/scenes.h"
#include "pattern_reader/image_file.h"
#include "pattern_reader/pattern_reader.h"
#include "tests/camera_library/temporary_folder.h"

namespace {

using namespace pattern_reader;

TEST(ReaderInput, refusesOtherKindsOfImages) {
    EXPECT_THROW(readPatterns(cv::Mat()), std::invalid_argument);
    EXPECT_THROW(readPatterns(cv::Mat(50, 50, CV_8UC3)), std::invalid_argument);
    EXPECT_THROW(readPatterns(cv::Mat(50, 50, CV_16U)), std::invalid_argument);
    EXPECT_THROW(readPatterns(cv::Mat(10001, 15000, CV_8U)), std::invalid_argument);
}

TEST(ReaderInput, survivesExtremePictures) {
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(3, 700), cv::Size(16, 16), cv::Size(17, 4000),
                                cv::Size(25, 24), cv::Size(4000, 31), cv::Size(47, 49), cv::Size(129, 65)}) {
        cv::Mat picture(size, CV_8U, cv::Scalar(0));
        EXPECT_TRUE(readPatterns(picture).empty()) << size;
        // The finest checkerboard there is, and every grey level at random.
        for (int y = 0; y < size.height; y++) {
            for (int x = 0; x < size.width; x++) {
                picture.at<uchar>(y, x) = (x + y) % 2 != 0 ? 255 : 0;
            }
        }
        EXPECT_TRUE(readPatterns(picture).empty()) << size;
        cv::RNG(3).fill(picture, cv::RNG::UNIFORM, 0, 256);
        EXPECT_TRUE(readPatterns(picture).empty()) << size;
    }
}

TEST(ReaderInput, readsAPartOfALargerPictureInPlace) {
    const reader_bench::Scene scene = reader_bench::makeScene(0);
    const auto expected = readPatterns(scene.image);
    cv::Mat larger(scene.image.rows + 20, scene.image.cols + 30, CV_8U, cv::Scalar(90));
    const cv::Mat part = larger(cv::Rect(10, 10, scene.image.cols, scene.image.rows));
    scene.image.copyTo(part);
    const auto readings = readPatterns(part);
    ASSERT_EQ(readings.size(), expected.size());
    for (size_t i = 0; i < readings.size(); i++) {
        EXPECT_EQ(readings[i].corners.size(), expected[i].corners.size());
    }
}

TEST(ReaderInput, readsTheSameFromEveryFileFormat) {
    const TemporaryFolder folder;
    const cv::Mat image = reader_bench::makeScene(0).image;
    const auto expected = readPatterns(image);
    ASSERT_EQ(expected.size(), 1U);
    cv::Mat deep;
    image.convertTo(deep, CV_16U, 257);
    cv::Mat colour;
    cv::cvtColor(image, colour, cv::COLOR_GRAY2BGRA);
    cv::Mat real;
    image.convertTo(real, CV_32F, 1 / 255.0);
    real.at<float>(0, 0) = std::numeric_limits<float>::quiet_NaN();
    const std::pair<const char *, cv::Mat> files[] = {{"a.png", image},    {"b.jpg", image},   {"c.tiff", image},
                                                      {"d.pgm", image},    {"deep.png", deep}, {"colour.png", colour},
                                                      {"deep.tiff", deep}, {"real.tiff", real}};
    for (const auto &[name, picture] : files) {
        ASSERT_TRUE(cv::imwrite(folder.file(name), picture)) << name;
        const auto readings = readPatterns(loadGreyImage(folder.file(name)));
        ASSERT_EQ(readings.size(), 1U) << name;
        EXPECT_EQ(readings[0].tile, expected[0].tile) << name;
        EXPECT_EQ(readings[0].blockBytes, expected[0].blockBytes) << name;
    }
}

// The message with which a file is refused; empty when it is read.
std::string refusal(const std::string &path) {
    try {
        readPatterns(loadGreyImage(path));
        return "";
    } catch (const std::runtime_error &error) {
        return error.what();
    }
}

void write(const std::string &path, const std::string &content) {
    std::ofstream(path, std::ios::binary) << content;
}

TEST(ReaderInput, namesTheFileItCannotRead) {
    const TemporaryFolder folder;
    write(folder.file("words.png"), "no picture");
    write(folder.file("empty.jpg"), "");
    std::filesystem::create_directory(folder.file("folder.png"));
    for (const std::string name : {"words.png", "empty.jpg", "absent.png", "folder.png"}) {
        EXPECT_NE(refusal(folder.file(name)).find(name), std::string::npos) << name;
    }
}

std::string contentOf(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Reads a damaged file: it is refused by name, or what is still in it is read as it was.
void readDamaged(const std::string &path, const std::string &content, const PatternReading &whole) {
    write(path, content);
    try {
        for (const PatternReading &reading : readPatterns(loadGreyImage(path))) {
            EXPECT_EQ(reading.tile, whole.tile) << path;
            EXPECT_TRUE(!reading.values || reading.blockBytes == whole.blockBytes) << path;
        }
    } catch (const std::runtime_error &error) {
        EXPECT_NE(std::string(error.what()).find(path), std::string::npos);
    }
}

TEST(ReaderInput, survivesCutAndDamagedFilesOfEveryFormat) {
    const TemporaryFolder folder;
    const cv::Mat image = reader_bench::makeScene(0).image;
    const auto whole = readPatterns(image);
    ASSERT_EQ(whole.size(), 1U);
    std::mt19937 random(5);
    for (const std::string ending : {".png", ".jpg", ".tiff", ".pgm"}) {
        const std::string path = folder.file("whole" + ending);
        ASSERT_TRUE(cv::imwrite(path, image));
        const std::string content = contentOf(path);
        // Every length through the header, then about forty more.
        for (size_t length = 0; length < content.size(); length += length < 40 ? 1 : content.size() / 40) {
            readDamaged(folder.file("cut" + ending), content.substr(0, length), whole.front());
        }
        for (int i = 0; i < 60; i++) {
            std::string damaged = content;
            // Half of the damage where the size and the kind of picture stand.
            const size_t range = i % 2 == 0 ? std::min<size_t>(200, content.size()) : content.size();
            for (int k = 0; k < 3; k++) {
                damaged[random() % range] = char(random() & 0xFF);
            }
            readDamaged(folder.file("damaged" + ending), damaged, whole.front());
        }
    }
}

TEST(ReaderInput, refusesTooManyPixelsByTheHeader) {
    const TemporaryFolder folder;
    const std::string jpegFrame("\xFF\xC0\x00\x0B\x08\x32\xC8\x32\xC8\x01\x01\x11\x00", 13);
    const std::string tiffTags(
        "II*\0\x08\0\0\0\x02\0\0\x01\x03\0\x01\0\0\0\xC8\x32\0\0\x01\x01\x04\0\x01\0\0\0\xC8\x32\0\0", 34);
    const std::pair<const char *, std::string> headers[] = {
        {"a.png", std::string("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\x32\xC8\0\0\x32\xC8\x08\0\0\0\0", 29)},
        {"b.jpg", "\xFF\xD8\xFF\xE0" + std::string("\0\x04xx", 4) + jpegFrame},
        {"c.tiff", tiffTags},
        {"d.pgm", "P5 # thirteen thousand\n13000 13000\n255\n"},
        {"huge.pgm", "P5 4294967296 4294967296 255\n"}};
    for (const auto &[name, header] : headers) {
        write(folder.file(name), header);
        EXPECT_NE(refusal(folder.file(name)).find("at most 150 million can be read"), std::string::npos) << name;
    }
    // Exactly at the limit the header is no reason to refuse.
    write(folder.file("limit.pgm"), "P5 15000 10000 255\n");
    EXPECT_EQ(refusal(folder.file("limit.pgm")).find("at most"), std::string::npos);
}

TEST(ReaderInput, readsThinAndEmptyPicturesFromFiles) {
    const TemporaryFolder folder;
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(1, 20000), cv::Size(20000, 1)}) {
        for (const int type : {CV_8UC1, CV_16UC1, CV_8UC4}) {
            for (const double level : {0.0, 255.0}) {
                ASSERT_TRUE(cv::imwrite(folder.file("thin.png"), cv::Mat(size, type, cv::Scalar::all(level))));
                EXPECT_TRUE(readPatterns(loadGreyImage(folder.file("thin.png"))).empty()) << size;
            }
        }
    }
}

}  // namespace
