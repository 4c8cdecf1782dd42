// The chessboard detectors of OpenCV on the benchmark's pictures.
//
// They are told the size of the board, unlike the reader. Some can run for minutes on a board that they do not find, so
// each runs in a process of its own, which is ended after a limit of processor time. On systems without such processes
// there is no limit. May be called from any thread.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

namespace reader_bench {

using Corners = std::vector<cv::Point2f>;

enum class StockMethod {
    Classic,                // findChessboardCorners alone; cornerSubPix is the caller's
    SectorBased,            // findChessboardCornersSB as called by default
    SectorBasedExhaustive,  // with CALIB_CB_ACCURACY | CALIB_CB_EXHAUSTIVE
};

std::optional<Corners> stockCorners(StockMethod method, const cv::Mat &image, const cv::Size &corners,
                                    unsigned limitSeconds);

// In this process and without a limit, to be timed.
std::optional<Corners> stockCorners(StockMethod method, const cv::Mat &image, const cv::Size &corners);

}  // namespace reader_bench
