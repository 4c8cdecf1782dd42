// The chessboard detectors of OpenCV on the benchmark's pictures.
//
// Unlike the reader, they are told the size of the board. Some can run for minutes on a board that they do not find, so
// each runs in a process of its own, which is ended when it has used a given processor time. There is no limit on
// systems where this is not possible. The functions may be called from any thread.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

namespace reader_bench {

using Corners = std::vector<cv::Point2f>;

enum class StockMethod {
    Classic,                // findChessboardCorners alone; the caller may refine the corners with cornerSubPix
    SectorBased,            // findChessboardCornersSB with its default flags
    SectorBasedExhaustive,  // with CALIB_CB_ACCURACY | CALIB_CB_EXHAUSTIVE
};

std::optional<Corners> stockCorners(StockMethod method, const cv::Mat &image, const cv::Size &corners,
                                    unsigned limitSeconds);

// In this process and without a limit, to be timed.
std::optional<Corners> stockCorners(StockMethod method, const cv::Mat &image, const cv::Size &corners);

}  // namespace reader_bench
