// Tests what the reader does with damaged files, extreme pictures, all file formats and its options.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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
#include "pattern_reader/photograph.h"
#include "tests/camera_library/temporary_folder.h"

namespace {

using namespace pattern_reader;

TEST(ReaderInput, refusesImagesAndBoardSizesThatItCannotRead) {
    EXPECT_THROW(readPatterns(cv::Mat()), std::invalid_argument);
    EXPECT_THROW(readPatterns(cv::Mat(50, 50, CV_8UC2)), std::invalid_argument);
    ReadingOptions options;
    options.board = cv::Size(9, 2);
    EXPECT_THROW(readPatterns(cv::Mat(50, 50, CV_8U), options), std::invalid_argument);
    EXPECT_THROW(readPatterns(cv::Mat(10001, 15000, CV_8U)), std::invalid_argument);
}

TEST(ReaderInput, survivesExtremePictures) {
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(3, 700), cv::Size(16, 16), cv::Size(17, 4000),
                                cv::Size(25, 24), cv::Size(4000, 31), cv::Size(47, 49), cv::Size(129, 65)}) {
        cv::Mat picture(size, CV_8U, cv::Scalar(0));
        EXPECT_TRUE(readPatterns(picture).empty()) << size;
        // Next, the picture becomes a checkerboard with squares of one pixel. Last, it gets random grey levels.
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

// The greatest distance, in pixels, between corners with the same lattice coordinates in two readings of one pattern.
float farthest(const PatternReading &a, const PatternReading &b) {
    EXPECT_EQ(a.corners.size(), b.corners.size());
    float distance = 0;
    for (size_t i = 0; i < std::min(a.corners.size(), b.corners.size()); i++) {
        EXPECT_EQ(a.corners[i].lattice, b.corners[i].lattice);
        distance = std::max(distance, float(cv::norm(a.corners[i].image - b.corners[i].image)));
    }
    return distance;
}

TEST(ReaderInput, readsWhatTheOptionsAskFor) {
    const cv::Mat image = reader_bench::makeScene(0).image;
    const auto expected = readPatterns(image);
    ASSERT_EQ(expected.size(), 1U);
    cv::Mat twice;
    cv::cvtColor(image, twice, cv::COLOR_GRAY2BGR);
    cv::hconcat(twice, twice, twice);
    EXPECT_EQ(readPatterns(twice).size(), 2U);

    ReadingOptions options;
    options.region = cv::Rect({image.cols, 0}, image.size());
    const auto inRegion = readPatterns(twice, options);
    ASSERT_EQ(inRegion.size(), 1U);
    PatternReading moved = expected.front();
    for (PatternCorner &corner : moved.corners) {
        corner.image.x += float(image.cols);
    }
    EXPECT_LT(farthest(inRegion.front(), moved), 1e-3);

    options.leastConfidence = 1.1;
    EXPECT_TRUE(readPatterns(twice, options).empty());
    // In the first round, only the first call of isCancelled returns true; in the second round, only the second call;
    // and so on.
    for (int patience = 0; patience < 6; patience++) {
        ReadingOptions cancelled;
        int asked = 0;
        cancelled.isCancelled = [&] { return asked++ == patience; };
        EXPECT_TRUE(readPatterns(twice, cancelled).empty()) << patience;
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
    // A few hot pixels in a dark picture.
    cv::Mat hot = deep / 40;
    hot(cv::Rect(0, 0, 3, 3)) = 65535;
    // Black ink: only the alpha channel shows where it is.
    cv::Mat ink(image.size(), CV_8UC4, cv::Scalar::all(0));
    cv::insertChannel(255 - image, ink, 3);
    const std::pair<const char *, cv::Mat> files[] = {
        {"a.png", image},       {"b.jpg", image},    {"c.tiff", image},   {"d.pgm", image}, {"deep.png", deep},
        {"colour.png", colour}, {"deep.tiff", deep}, {"real.tiff", real}, {"hot.png", hot}, {"ink.png", ink}};
    for (const auto &[name, picture] : files) {
        ASSERT_TRUE(cv::imwrite(folder.file(name), picture)) << name;
        const auto readings = readPatterns(loadGreyImage(folder.file(name)));
        ASSERT_EQ(readings.size(), 1U) << name;
        EXPECT_EQ(readings[0].tile, expected[0].tile) << name;
        EXPECT_EQ(readings[0].blockBytes, expected[0].blockBytes) << name;
    }
}

// Returns the error message for a file; empty if the file is read.
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
    write(folder.file("moving.gif"), "GIF89a\1");
    for (const std::string name : {"words.png", "empty.jpg", "absent.png", "folder.png", "moving.gif"}) {
        EXPECT_NE(refusal(folder.file(name)).find(name), std::string::npos) << name;
    }
    EXPECT_NE(refusal(folder.file("moving.gif")).find("GIF files are not supported"), std::string::npos);
}

std::string contentOf(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Writes a JPEG or TIFF file with this orientation tag.
void writeTagged(const std::string &path, const cv::Mat &image, int orientation) {
    ASSERT_TRUE(cv::imwrite(path, image, {cv::IMWRITE_JPEG_QUALITY, 98}));
    std::string content = contentOf(path);
    const std::string value(1, char(orientation));
    if (content[0] == 'I') {
        // In a TIFF file, the entry with the tag PlanarConfiguration is replaced by one with the tag Orientation.
        const size_t entry = content.find(std::string("\x1C\x01\x03\0\x01\0\0\0", 8));
        ASSERT_NE(entry, std::string::npos);
        content.replace(entry, 9, std::string("\x12\x01\x03\0\x01\0\0\0", 8) + value);
    } else {
        const std::string exif(
            "\xFF\xE1\0\x22"
            "Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0",
            28);
        content.insert(2, exif + value + std::string(7, '\0'));
    }
    write(path, content);
}

TEST(ReaderInput, givesPositionsInTheStoredPictureWhateverItsOrientationTag) {
    const TemporaryFolder folder;
    const cv::Mat image = reader_bench::makeScene(0).image;
    const auto upright = readPatterns(image);
    ASSERT_EQ(upright.size(), 1U);
    for (const std::string name : {"a.jpg", "b.tiff"}) {
        for (int orientation = 1; orientation <= 8; orientation++) {
            SCOPED_TRACE(name + " " + std::to_string(orientation));
            const bool isMirrored = orientation == 2 || orientation == 4 || orientation == 5 || orientation == 7;
            PatternReading expected = upright.front();
            cv::Mat stored = image.clone();
            if (isMirrored) {
                cv::flip(image, stored, 1);
                for (PatternCorner &corner : expected.corners) {
                    corner.image.x = float(image.cols - 1) - corner.image.x;
                }
            }
            writeTagged(folder.file(name), stored, orientation);
            const Photograph photograph = loadPhotograph(folder.file(name));
            EXPECT_EQ(photograph.orientation, orientation);
            const auto readings = readPhotograph(photograph);
            ASSERT_EQ(readings.size(), 1U);
            EXPECT_LT(farthest(readings.front(), expected), 0.3);
            const double angle = isMirrored ? 180 - upright.front().angle : upright.front().angle;
            EXPECT_NEAR(std::remainder(readings.front().angle - angle, 360), 0, 0.1);
        }
    }
}

TEST(ReaderInput, recognisesJpegFilesThatEndTooSoon) {
    const TemporaryFolder folder;
    writeTagged(folder.file("whole.jpg"), reader_bench::makeScene(0).image, 1);
    const std::string content = contentOf(folder.file("whole.jpg"));
    EXPECT_FALSE(loadPhotograph(folder.file("whole.jpg")).truncated);
    write(folder.file("more.jpg"), content + "something else");
    EXPECT_FALSE(loadPhotograph(folder.file("more.jpg")).truncated);
    for (const size_t length : {content.size() - 2, content.size() * 2 / 3}) {
        write(folder.file("cut.jpg"), content.substr(0, length));
        EXPECT_TRUE(loadPhotograph(folder.file("cut.jpg")).truncated) << length;
    }
}

// Reads a damaged file. The reader must refuse the file with a message that names it, read the right pattern, or find
// no pattern.
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
        // The file is cut off at every length below 40 bytes, and at about forty greater lengths.
        for (size_t length = 0; length < content.size(); length += length < 40 ? 1 : content.size() / 40) {
            readDamaged(folder.file("cut" + ending), content.substr(0, length), whole.front());
        }
        for (int i = 0; i < 60; i++) {
            std::string damaged = content;
            // Half of the files are damaged only in their first 200 bytes, which contain the size and the format of the
            // picture. In a TIFF file, they contain the position of the directory, which has the size and the format.
            const size_t range = i % 2 == 0 ? std::min<size_t>(200, content.size()) : content.size();
            for (int k = 0; k < 3; k++) {
                damaged[random() % range] = char(random() & 0xFF);
            }
            readDamaged(folder.file("damaged" + ending), damaged, whole.front());
        }
    }
}

TEST(ReaderInput, refusesPicturesWhoseHeaderStatesTooManyPixels) {
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
    // If a picture has exactly the greatest size that is allowed, its header is no reason to refuse it.
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
