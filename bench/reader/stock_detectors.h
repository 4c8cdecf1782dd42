// The chessboard detectors of OpenCV on the benchmark's pictures.
//
// They are told the size of the board, which the reader is not. findChessboardCorners can run for minutes on a board it
// does not find, so it runs in a process of its own with a time limit; where there are no such processes the limit is
// not kept.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

namespace reader_bench {

using Corners = std::vector<cv::Point2f>;

std::optional<Corners> sectorBasedCorners(const cv::Mat &image, const cv::Size &corners);

// findChessboardCorners alone; cornerSubPix is the caller's.
std::optional<Corners> classicCorners(const cv::Mat &image, const cv::Size &corners, double limitSeconds);

}  // namespace reader_bench
