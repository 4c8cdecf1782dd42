#include "bench/reader/stock_detectors.h"

#include <opencv2/calib3d.hpp>

#ifndef _WIN32
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace reader_bench {

std::optional<Corners> sectorBasedCorners(const cv::Mat &image, const cv::Size &corners) {
    Corners found;
    if (!cv::findChessboardCornersSB(image, corners, found)) {
        return std::nullopt;
    }
    return found;
}

namespace {

std::optional<Corners> classic(const cv::Mat &image, const cv::Size &corners) {
    Corners found;
    if (!cv::findChessboardCorners(image, corners, found)) {
        return std::nullopt;
    }
    return found;
}

}  // namespace

#ifdef _WIN32

std::optional<Corners> classicCorners(const cv::Mat &image, const cv::Size &corners, double) {
    return classic(image, corners);
}

#else

namespace {

// The child: writes the corners, or nothing, and ends without running anybody's destructors.
[[noreturn]] void answer(int pipeEnd, const cv::Mat &image, const cv::Size &corners) {
    const std::optional<Corners> found = classic(image, corners);
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

std::optional<Corners> classicCorners(const cv::Mat &image, const cv::Size &corners, double limitSeconds) {
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
        answer(ends[1], image, corners);
    }
    ::close(ends[1]);
    Corners found(size_t(corners.area()));
    auto *data = reinterpret_cast<char *>(found.data());
    size_t left = found.size() * sizeof(cv::Point2f);
    pollfd waiting{ends[0], POLLIN, 0};
    while (left > 0 && ::poll(&waiting, 1, int(limitSeconds * 1000)) > 0) {
        const ssize_t count = ::read(ends[0], data, left);
        if (count <= 0) {
            break;
        }
        data += count;
        left -= size_t(count);
    }
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ::close(ends[0]);
    if (left > 0) {
        return std::nullopt;
    }
    return found;
}

#endif

}  // namespace reader_bench
