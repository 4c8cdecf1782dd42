// A plate as its picture shows it: grey levels at places of the plate, relative to its marks and its paper.
//
// Plate coordinates: grid spacings from the top-left corner of the frame's outer edge; marks at 1 to 7.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "pattern_reader/image_level.h"
#include "pattern_reader/mark_lattice.h"
#include "pattern_reader/place_finder.h"

namespace pattern_reader {

constexpr int marksPerSide = 7;
constexpr double frameMiddle = 0.125;
constexpr double markRadius = 0.25;

// Where a plane's map takes a point.
cv::Point2d transform(const cv::Matx33d &map, cv::Point2d point);

// A plate's picture under one assumption of where in the plate the lattice lies.
class PlateView {
public:
    PlateView(const std::vector<ImageLevel> &levels, const MarkLattice &found, const cv::Matx33d &imageFromCell,
              const LatticeMotion &motion);

    cv::Point2d toImage(cv::Point2d plate) const;
    // Grey level relative to the marks around: 0 as dark as a mark, 1 as light as the paper; false outside the picture.
    bool lightAt(cv::Point2d plate, double &light) const;
    // The same from a sharper picture, for the fine lines of the dots, at a shift in the image.
    bool sharpLightAt(cv::Point2d plate, cv::Point2d shift, double &light) const;
    // Pixels of the sharper picture per grid spacing at a point, the geometric mean of both directions.
    double sharpSpacingAt(cv::Point2d plate) const;
    double sharpScale() const { return sharpLevel_->scale(); }
    cv::Point2d toCell(cv::Point2d plate) const;

private:
    // The grey level as a share of the contrast at a place in the image.
    bool relativeToMarks(cv::Point2d image, double grey, double &light) const;

    cv::Matx33d imageFromCell_;
    LatticeMotion motion_;
    const ImageLevel *level_ = nullptr;
    const ImageLevel *sharpLevel_ = nullptr;
    // Dark level and paper level as planes over the image: level = a + b x + c y.
    cv::Vec3d dark_;
    cv::Vec3d paper_;
};

}  // namespace pattern_reader
