// Flat targets as the synthetic camera sees them: how light the paper is at a point.
//
// The unit of length is one lattice pitch (a checkerboard's square side, half the grid spacing of a plate). The
// origin is the pattern's top-left outer corner, x to the right, y down. Lightness is 1 for the dark ink and 0 for the
// paper, so that ink and paper levels are the camera's business.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace reader_bench {

class SyntheticTarget {
public:
    virtual ~SyntheticTarget() = default;

    // 1 where the point is inked, 0 where it is paper. Points outside the pattern are quiet zone: paper.
    virtual float ink(double x, double y) const = 0;
    // Outer size of the pattern in pitches.
    virtual cv::Size2d size() const = 0;
    // The points a reader is asked for: inner corners or mark centres.
    virtual std::vector<cv::Point2d> points() const = 0;
};

// A checkerboard of cells, each with or without a centred mark of the opposite colour and a third of the side.
class CheckerTarget : public SyntheticTarget {
public:
    // marks holds columns × rows values 0 or 1, row by row. darkFirst: the top-left square is inked.
    CheckerTarget(int columns, int rows, std::vector<int> marks, bool darkFirst);

    float ink(double x, double y) const override;
    cv::Size2d size() const override { return {double(columns_), double(rows_)}; }
    std::vector<cv::Point2d> points() const override;

    int columns() const { return columns_; }
    int rows() const { return rows_; }

private:
    int columns_;
    int rows_;
    std::vector<int> marks_;
    bool darkFirst_;
};

// A circle of a plate: a mark, or a code dot, which is open in its middle.
struct InkDisc {
    cv::Point2d centre;
    double radius = 0;
    double holeRadius = 0;
};

// A 7 × 7 plate: discs inside a frame, with a triangle in one corner of the frame's inside.
class PlateTarget : public SyntheticTarget {
public:
    // dots are the code dots, in pitches; corner the triangle's three points.
    PlateTarget(const std::vector<InkDisc> &dots, const std::vector<cv::Point2d> &triangle);

    float ink(double x, double y) const override;
    cv::Size2d size() const override { return {16, 16}; }
    std::vector<cv::Point2d> points() const override;

private:
    std::vector<std::vector<InkDisc>> discsByCell_;
    std::vector<cv::Point2d> triangle_;
};

}  // namespace reader_bench
