// Runs the chessboard detectors of OpenCV.
//
// Unlike the reader, these detectors need the size of the board. Some of them can run for minutes on a board that they
// do not find. So the function with the parameter `limitSeconds` runs the detector in a process of its own. The system
// ends this process after `limitSeconds` seconds of processor time. On Windows, both functions run the detector in the
// caller's process and without a limit. Both functions may be called from any thread.
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

// Returns the corners of a board with corners.width x corners.height corners; nothing if the detector does not find all
// of them within the limit, or if its process cannot be started.
std::optional<Corners> stockCorners(StockMethod method, const cv::Mat &image, const cv::Size &corners,
                                    unsigned limitSeconds);

// Does the same in the caller's process and without a limit, so that the caller can measure the time.
std::optional<Corners> stockCorners(StockMethod method, const cv::Mat &image, const cv::Size &corners);

}  // namespace reader_bench
