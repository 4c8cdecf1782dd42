#include "calibration/input/corner_list.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/camera_library/temporary_folder.h"

namespace calibration {
namespace {

class CornerList : public testing::Test {
protected:
    std::string write(const std::string &text) {
        const std::string path = folder.file("corners.vnl");
        std::ofstream(path) << text;
        return path;
    }

    TemporaryFolder folder;
};

TEST_F(CornerList, readsLevelsAndCornersThatWereNotSeen) {
    std::string text = "# filename x y level\n## made by hand\nb.jpg - -\nc.jpg 1 2\n";
    for (int i = 0; i < 12; i++) {
        const std::string level = i == 5 ? "-" : i == 6 ? "2" : "0";
        text += "a.jpg " + std::to_string(i) + ".25 1e1 " + level + (i == 7 ? " # a note\r\n" : "\n");
    }
    auto photographs = loadCornerList(write(text));
    ASSERT_EQ(photographs.size(), 3U);
    for (ListedPhotograph &photograph : photographs) {
        photograph.width = 100;
        photograph.height = 80;
    }
    photographs.push_back(photographs[2]);
    photographs.back().corners[0].image.x() = 101;
    const auto collected = collectObservations(photographs, {4, 3, 25}, false);
    ASSERT_EQ(collected.unused.size(), 3U);
    EXPECT_EQ(collected.unused[0].reason, "No board was found in it.");
    EXPECT_EQ(collected.unused[1].reason, "It has 1 corner in the list, but the board has 12.");
    EXPECT_EQ(collected.unused[2].reason, "A corner lies outside the picture of 100 x 80 pixels.");
    const Observations &observations = collected.observations;
    ASSERT_EQ(observations.sightings.size(), 1U);
    const std::vector<SeenCorner> &corners = observations.sightings[0].corners;
    ASSERT_EQ(corners.size(), 11U);
    EXPECT_EQ(corners[5].point, 6);
    EXPECT_EQ(corners[5].image, Eigen::Vector2d(6.25, 10));
    EXPECT_DOUBLE_EQ(corners[5].sigma, 4 * corners[0].sigma);
    EXPECT_EQ(observations.prints[0].points[6], Eigen::Vector2d(50, 25));
}

TEST_F(CornerList, findsTheMomentsOfARigAndPicturesBesideTheList) {
    std::string text;
    for (const char *name : {"l/1.pgm", "l/2.pgm", "r/2.pgm", "r/1.pgm"}) {
        for (int i = 0; i < 12; i++) {
            const std::string level = i == 0 ? "-1" : i == 1 ? "21" : "20";
            text += std::string(name) + " " + std::to_string(10 * i) + " 70 " + level + "\n";
        }
    }
    const std::string list = write(text);
    std::filesystem::create_directory(folder.file("r"));
    writeBytes(folder.file("1.pgm"), "P5 200 100 255\n");  // in the folder of the list itself
    writeBytes(folder.file("2.pgm"), "P5 200 100 255\n");
    writeBytes(folder.file("r/1.pgm"), "P5 300 150 255\n");  // preferred to 1.pgm in the list's own folder
    writeBytes(folder.file("r/2.pgm"), "P5 300 150 255\n");
    auto photographs = loadCornerList(list);
    for (ListedPhotograph &photograph : photographs) {
        photograph.camera = photograph.name.substr(0, 1);
        findPictureSize(photograph, list);
    }
    const auto collected = collectObservations(photographs, {4, 3, 25}, true);
    const Observations &observations = collected.observations;
    ASSERT_EQ(observations.cameras.size(), 2U);
    EXPECT_EQ(observations.cameras[0].width, 200);
    EXPECT_EQ(observations.cameras[0].height, 100);
    EXPECT_EQ(observations.cameras[1].width, 300);
    std::vector<int> moments;
    for (const Photograph &photograph : observations.photographs) {
        moments.push_back(photograph.moment);
    }
    EXPECT_EQ(moments, (std::vector<int>{0, 1, 1, 0}));
    for (const Sighting &sighting : observations.sightings) {
        EXPECT_EQ(sighting.corners.size(), 10U) << "levels below 0 and above 20 do not count";
        EXPECT_EQ(sighting.corners[0].point, 2);
    }
}

TEST_F(CornerList, namesTheWrongLine) {
    for (const char *text : {"a 1 1 0\na 1 x 0\n", "a 1 1 0\na 1\n", "a 1 1 0\na nan 1 0\n", "#\na 1 1 0 7\n"}) {
        try {
            loadCornerList(write(text));
            ADD_FAILURE() << text;
        } catch (const std::runtime_error &error) {
            EXPECT_NE(std::string(error.what()).find("is wrong in line 2: "), std::string::npos) << error.what();
        }
    }
    EXPECT_THROW(loadCornerList(write("# nothing\n")), std::runtime_error);
    EXPECT_THROW(loadCornerList(folder.file("absent")), std::runtime_error);
}

}  // namespace
}  // namespace calibration
