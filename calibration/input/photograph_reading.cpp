#include "calibration/input/photograph_reading.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <thread>

#include "calibration/input/exif_camera.h"
#include "pattern_reader/photograph.h"

namespace calibration {

namespace {

// Sets OpenCV's number of threads. The destructor restores the earlier number.
class OpenCvThreads {
public:
    explicit OpenCvThreads(int count) : before(cv::getNumThreads()) { cv::setNumThreads(count); }
    OpenCvThreads(const OpenCvThreads &) = delete;
    OpenCvThreads &operator=(const OpenCvThreads &) = delete;
    ~OpenCvThreads() { cv::setNumThreads(before); }

private:
    int before;
};

constexpr int thumbnailSide = 240;  // pixels; the longer side of a thumbnail
constexpr int thumbnailQuality = 70;

std::string thumbnailOf(const cv::Mat &grey) {
    const double scale = std::min(1.0, double(thumbnailSide) / std::max(grey.cols, grey.rows));
    const cv::Size size(std::max(1, int(grey.cols * scale)), std::max(1, int(grey.rows * scale)));
    cv::Mat small;
    cv::resize(grey, small, size, 0, 0, cv::INTER_AREA);
    std::vector<unsigned char> bytes;
    cv::imencode(".jpg", small, bytes, {cv::IMWRITE_JPEG_QUALITY, thumbnailQuality});
    return {bytes.begin(), bytes.end()};
}

bool isCancelled(const PhotographsOptions &options) {
    return options.reading.isCancelled && options.reading.isCancelled();
}

}  // namespace

ReadPhotograph readPhotographFile(const PhotographFile &file, const pattern_reader::ReadingOptions &options,
                                  bool makeThumbnail) {
    ReadPhotograph read;
    read.file = file;
    try {
        const pattern_reader::Photograph photograph = pattern_reader::loadPhotograph(file.path);
        read.width = photograph.grey.cols;
        read.height = photograph.grey.rows;
        read.isTruncated = photograph.truncated;
        read.exifCamera = exifCamera(file.path);
        read.thumbnail = makeThumbnail ? thumbnailOf(photograph.grey) : "";
        read.readings = pattern_reader::readPhotograph(photograph, options);
    } catch (const std::exception &error) {
        read.error = error.what();
    }
    return read;
}

std::vector<ReadPhotograph> readPhotographs(const std::vector<PhotographFile> &files,
                                            const PhotographsOptions &options) {
    const unsigned processors = std::max(1U, std::thread::hardware_concurrency());
    const size_t jobs = std::min<size_t>(options.jobs != 0 ? options.jobs : processors, files.size());
    const OpenCvThreads oneThreadEach(1);
    std::vector<ReadPhotograph> photographs(files.size());
    std::atomic<size_t> next{0};
    size_t done = 0;
    std::mutex reporting;
    std::exception_ptr failure;
    const auto work = [&] {
        try {
            for (size_t i = next++; i < files.size() && !isCancelled(options); i = next++) {
                photographs[i] = readPhotographFile(files[i], options.reading, options.makeThumbnails);
                const std::lock_guard lock(reporting);
                done++;
                if (options.onPhotograph) {
                    options.onPhotograph(i, photographs[i], done);
                }
            }
        } catch (...) {
            next = files.size();
            const std::lock_guard lock(reporting);
            failure = std::current_exception();
        }
    };
    std::vector<std::thread> threads;
    for (size_t i = 1; i < jobs; i++) {
        threads.emplace_back(work);
    }
    work();
    for (std::thread &thread : threads) {
        thread.join();
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
    return photographs;
}

}  // namespace calibration
