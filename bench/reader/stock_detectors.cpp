#include "bench/reader/stock_detectors.h"

#include <opencv2/calib3d.hpp>

#ifndef _WIN32
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace reader_bench {

std::optional<Corners> stockCorners(StockMethod method, const cv::Mat &image, const cv::Size &corners) {
    Corners found;
    bool all = false;
    switch (method) {
        case StockMethod::Classic:
            all = cv::findChessboardCorners(image, corners, found);
            break;
        case StockMethod::SectorBased:
            all = cv::findChessboardCornersSB(image, corners, found);
            break;
        case StockMethod::SectorBasedExhaustive:
            all = cv::findChessboardCornersSB(image, corners, found, cv::CALIB_CB_ACCURACY | cv::CALIB_CB_EXHAUSTIVE);
            break;
    }
    return all ? std::optional(found) : std::nullopt;
}

#ifdef _WIN32

std::optional<Corners> stockCorners(StockMethod method, const cv::Mat &image, const cv::Size &corners, unsigned) {
    return stockCorners(method, image, corners);
}

#else

namespace {

// Runs in the child process. Writes the corners to the pipe if all of them were found. The system ends the process when
// it has used `limitSeconds` of processor time. The process exits without running destructors, which would act on a
// copy of the parent's objects.
[[noreturn]] void answer(int pipeEnd, StockMethod method, const cv::Mat &image, const cv::Size &corners,
                         unsigned limitSeconds) {
    const rlimit limit{limitSeconds, limitSeconds};
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CPU, &limit);
    ::setrlimit(RLIMIT_CORE, &noCore);
    const std::optional<Corners> found = stockCorners(method, image, corners);
    if (found) {
        const char *data = reinterpret_cast<const char *>(found->data());
        size_t left = found->size() * sizeof(cv::Point2f);
        while (left > 0) {
            const ssize_t written = ::write(pipeEnd, data, left);
            if (written <= 0) {
                break;
            }
            data += written;
            left -= size_t(written);
        }
    }
    ::_exit(0);
}

}  // namespace

std::optional<Corners> stockCorners(StockMethod method, const cv::Mat &image, const cv::Size &corners,
                                    unsigned limitSeconds) {
    int ends[2];
    if (::pipe(ends) != 0) {
        return std::nullopt;
    }
    const pid_t child = ::fork();
    if (child < 0) {
        ::close(ends[0]);
        ::close(ends[1]);
        return std::nullopt;
    }
    if (child == 0) {
        ::close(ends[0]);
        answer(ends[1], method, image, corners, limitSeconds);
    }
    ::close(ends[1]);
    Corners found(size_t(corners.area()));
    auto *data = reinterpret_cast<char *>(found.data());
    size_t left = found.size() * sizeof(cv::Point2f);
    while (left > 0) {
        const ssize_t count = ::read(ends[0], data, left);
        if (count <= 0) {
            break;
        }
        data += count;
        left -= size_t(count);
    }
    ::close(ends[0]);
    ::waitpid(child, nullptr, 0);
    return left > 0 ? std::nullopt : std::optional(found);
}

#endif

}  // namespace reader_bench
