// Looks up the grey levels of a picture at places on a plate. The result is relative to the grey levels of the marks
// and of the paper near that place.
//
// Plate coordinates are in grid spacings from the top-left corner of the frame's outer edge. The marks are at 1 to 7.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "pattern_reader/image_level.h"
#include "pattern_reader/mark_lattice.h"
#include "pattern_reader/mark_map.h"
#include "pattern_reader/place_finder.h"

namespace pattern_reader {

constexpr int marksPerSide = 7;
constexpr double frameMiddle = 0.125;  // from the frame's outer edge to the middle of its dark line
constexpr double markRadius = 0.25;

// The marks of a lattice that may be a plate. It is not yet known which of the plate's marks they are.
struct PlatePicture {
    PlatePicture(const std::vector<ImageLevel> &levels, const MarkLattice &found, const MarkMap &imageFromCell);

    // Grey levels of a mark and of the paper around it.
    struct Contrast {
        double dark = 0;
        double paper = 0;
    };
    // The contrast of the marks around a place; outside the lattice, that of the nearest marks.
    Contrast contrastAt(cv::Point2d cell) const;

    // The contrast where there is no reflection, estimated as the upper quartile over all cells, in grey levels.
    double fullContrast() const { return usual; }

    const MarkLattice &marks;
    const MarkMap &map;
    // The finest level in which a grid spacing has at most 26 pixels; the coarsest level if there is none.
    const ImageLevel *level = nullptr;
    const ImageLevel *sharpLevel = nullptr;  // the next finer level; if `level` is the finest, the same level

private:
    cv::Rect extent;  // of the lattice
    std::vector<Contrast> contrasts;
    double usual = 0;
};

// A plate's picture under one assumption about where on the plate the lattice lies.
class PlateView {
public:
    PlateView(const PlatePicture &seen, const LatticeMotion &assumed) : picture(seen), motion(assumed) {}

    cv::Point2d toImage(cv::Point2d plate) const { return picture.map.at(toCell(plate)); }
    cv::Point2d toCell(cv::Point2d plate) const;
    // True if a mark was found at these plate coordinates.
    bool hasMark(cv::Point plate) const;
    // Determines the grey level relative to the marks nearby: 0 is as dark as a mark, 1 is as light as the paper. False
    // outside the picture, or if the marks nearby have too little contrast.
    bool lightAt(cv::Point2d plate, double &light) const;
    // Like lightAt, but reads sharpLevel. The dots of the code between the marks are rings with thin lines, and these
    // lines are blurred in the level that lightAt reads.
    bool sharpLightAt(cv::Point2d plate, double &light) const;
    // True if a reflection makes the paper nearly as light as a picture can show, so that fine lines on it may be lost.
    bool isBleached(cv::Point2d plate) const;
    // The square root of the area of one grid cell at a point, in pixels of sharpLevel.
    double sharpSpacingAt(cv::Point2d plate) const;
    double sharpScale() const { return picture.sharpLevel->scale(); }

private:
    // Converts a grey level to a share of the contrast at a place. False if the contrast is too low.
    bool relativeToMarks(cv::Point2d cell, double grey, double &light) const;

    const PlatePicture &picture;
    LatticeMotion motion;
};

}  // namespace pattern_reader
