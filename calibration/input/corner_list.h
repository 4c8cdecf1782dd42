// Reads a text file with the corners that another detector found, one corner per line:
//
//   # filename x y level
//   left01.jpg 244.45 94.13 0
//   left01.jpg 274.62 92.16 -
//   left02.jpg - -
//
// Each photograph has all inner corners of its board, row by row. "-" in any of the columns x, y and level means that
// the corner was not seen. If the only line of a photograph has "-", the board was not seen at all. The level says how
// many times the picture's size was halved before the corner was measured. Each halving doubles the corner's standard
// deviation. The level may be absent; it then counts as 0. A corner with a level below 0 or above 20 counts as not
// seen. The rest of a line after # is a comment. x and y are in pixels; the centre of the top-left pixel is (0, 0).
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
    std::string name;  // the file's name as it stands in the list
    std::vector<ListedCorner> corners;
    std::string camera;  // the user's name for the camera, or empty
    int width = 0;       // pixels; must be set before collectObservations() is called
    int height = 0;
};

// Throws std::runtime_error if the file cannot be opened, has no corners or has a wrong line. The text is a sentence
// that names the file and the wrong line.
std::vector<ListedPhotograph> loadCornerList(const std::string &path);

// Sets the photograph's size to that of its picture file. Three paths are tried in this order: the listed name relative
// to the current folder, the listed name relative to the list's folder, and the listed name without its folders, also
// relative to the list's folder. The first file that is a picture and does not have too many pixels is used. If there
// is none, the size stays as it is.
void findPictureSize(ListedPhotograph &photograph, const std::string &listPath);

// The standard deviation of a corner of level 0, in pixels along one axis. calibrate() multiplies the standard
// deviations of each camera's corners by a common factor, so only the ratios between them matter.
constexpr double listedSigma = 0.1;

struct ListedBoard {
    int columns = 0;
    int rows = 0;
    double square = 0;  // mm
};

// Makes observations from corner lists, as photograph_observations.h does from photographs; `isRig` has the same
// meaning as there. A photograph is left out if its size is not known, if groupByCamera() leaves it out, if no corner
// was seen in it, if it has another number of corners than the board, or if a corner lies outside the picture.
CollectedObservations collectObservations(const std::vector<ListedPhotograph> &photographs, const ListedBoard &board,
                                          bool isRig);

}  // namespace calibration
