// What the reader does with pictures that are wrong, extreme or of another kind.
#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

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
    EXPECT_THROW(readPatterns(cv::Mat(8001, 8001, CV_8U)), std::invalid_argument);
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

TEST(ReaderInput, namesTheFileItCannotRead) {
    const TemporaryFolder folder;
    std::ofstream(folder.file("words.png")) << "no picture";
    std::ofstream(folder.file("empty.jpg")).close();
    for (const std::string name : {"words.png", "empty.jpg", "absent.png"}) {
        try {
            loadGreyImage(folder.file(name));
            ADD_FAILURE() << name;
        } catch (const std::runtime_error &error) {
            EXPECT_NE(std::string(error.what()).find(name), std::string::npos);
        }
    }
}

}  // namespace
