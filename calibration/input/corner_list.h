// Corners that another detector found, from a text file with one corner per line:
//
//   # filename x y level
//   left01.jpg 244.45 94.13 0
//   left01.jpg 274.62 92.16 -
//   left02.jpg - -
//
// Each photograph has all inner corners of its board, row by row; "-" in any of the columns x, y and level means that a
// corner was not seen, and a single such line that the whole board was not. The level is the number of times the
// picture was halved before the corner was measured, which doubles its standard deviation each time; it may be absent.
// What follows # is a comment. Pixels: the centre of the top-left pixel is (0, 0).
#pragma once

#include <string>
#include <vector>

#include "calibration/input/photograph_observations.h"

namespace calibration {

struct ListedCorner {
    bool isSeen = false;
    Eigen::Vector2d image = Eigen::Vector2d::Zero();
    int level = 0;
};

struct ListedPhotograph {
    std::string name;  // as in the list
    std::vector<ListedCorner> corners;
    std::string camera;  // the user's name for the camera, or empty
    int width = 0;       // pixels; must be set before collectObservations
    int height = 0;
};

// Throws std::runtime_error with a sentence that names the file, and the line if it is wrong.
std::vector<ListedPhotograph> loadCornerList(const std::string &path);

// The size of the picture that a list names, looked for in the list's folder too. 0 x 0 if there is none.
void findPictureSize(ListedPhotograph &photograph, const std::string &listPath);

// Standard deviation of a corner of level 0, in pixels along one axis. Only its ratio to that of other corners matters.
constexpr double listedSigma = 0.1;

struct ListedBoard {
    int columns = 0;
    int rows = 0;
    double square = 0;  // mm
};

// As from photographs. Photographs whose number of corners is not that of the board are left out.
CollectedObservations collectObservations(const std::vector<ListedPhotograph> &photographs, const ListedBoard &board,
                                          bool isRig);

}  // namespace calibration
