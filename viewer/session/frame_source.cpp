#include "viewer/session/frame_source.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <chrono>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>
#include <thread>

#include "viewer/session/session_photograph.h"

namespace {

constexpr double usualRate = 25;  // frames per second, for a file that does not state its own
// Seconds. The source waits at most this long before it reads a frame of a file. A source that is late reads its frames
// without any wait, until it is on time again. If it is late by more than this, it catches up only by this much.
constexpr double greatestWait = 0.2;
constexpr int cameraTries = 5;  // per frame, because a camera may lose single frames
constexpr int camerasWithoutList = 4;
constexpr auto timeBetweenTries = std::chrono::milliseconds(100);

QString tr(const char *text) {
    return QCoreApplication::translate("FrameSource", text);
}

// Converts a frame to 8-bit colour. A source can be a series of picture files, whose frames can have another depth and
// other channels.
cv::Mat inColour(const cv::Mat &frame) {
    cv::Mat bytes = frame;
    if (!frame.empty() && frame.depth() != CV_8U) {
        frame.convertTo(bytes, CV_8U, frame.depth() == CV_16U ? 1 / 257.0 : 1);
    }
    if (bytes.channels() == 3 || bytes.empty()) {
        return bytes;
    }
    cv::Mat colour;
    cv::cvtColor(bytes, colour, bytes.channels() == 1 ? cv::COLOR_GRAY2BGR : cv::COLOR_BGRA2BGR);
    return colour;
}

double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

FrameSource::FrameSource(FrameSourceChoice sourceChoice, std::unique_ptr<cv::VideoCapture> ownCapture)
    : choice(std::move(sourceChoice)), capture(std::move(ownCapture)) {}

FrameSource::FrameSource(FrameSourceChoice sourceChoice)
    : FrameSource(std::move(sourceChoice), std::make_unique<cv::VideoCapture>()) {}

FrameSource::~FrameSource() = default;

QString FrameSource::open() {
    if (isFile()) {
        if (QFileInfo::exists(choice.file)) {
            capture->open(QFile::encodeName(choice.file).toStdString(),
                          isPictureName(choice.file) ? cv::CAP_IMAGES : cv::CAP_ANY);
        }
        const double rate = capture->isOpened() ? capture->get(cv::CAP_PROP_FPS) : 0;
        secondsPerFrame = 1 / (rate >= 1 && rate <= 1000 ? rate : usualRate);
        return capture->isOpened() ? QString()
                                   : tr("%1 cannot be read as a video.").arg(QDir::toNativeSeparators(choice.file));
    }
    capture->open(choice.camera);
    if (!capture->isOpened()) {
        return tr("The camera cannot be opened. It may be unplugged, or in use by another program.");
    }
    if (!choice.size.isEmpty()) {
        // Most cameras send their large pictures fast enough only if they compress them.
        capture->set(cv::CAP_PROP_FOURCC, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'));
        capture->set(cv::CAP_PROP_FRAME_WIDTH, choice.size.width());
        capture->set(cv::CAP_PROP_FRAME_HEIGHT, choice.size.height());
    }
    capture->set(cv::CAP_PROP_BUFFERSIZE, 1);  // a frame that waited in the buffer shows the target at an old place
    return {};
}

void FrameSource::waitForItsTime() {
    dueSeconds = std::max(dueSeconds, now() - greatestWait);
    std::this_thread::sleep_for(std::chrono::duration<double>(std::clamp(dueSeconds - now(), 0.0, greatestWait)));
    dueSeconds += secondsPerFrame;
}

cv::Mat FrameSource::next() {
    cv::Mat frame;
    if (isFile()) {
        waitForItsTime();
        capture->read(frame);
        return inColour(frame);
    }
    for (int i = 0; i < cameraTries && !capture->read(frame); ++i) {
        frame.release();
        std::this_thread::sleep_for(timeBetweenTries);
    }
    return inColour(frame);
}

QString FrameSource::endText() const {
    return isFile() ? tr("The video has ended.")
                    : tr("The camera no longer sends pictures. It may have been unplugged.");
}

bool isVideoName(const QString &path) {
    static const QStringList endings{"avi", "mp4", "mkv", "mov", "webm", "m4v", "mpg", "ogv"};
    return endings.contains(QFileInfo(path).suffix().toLower());
}

std::vector<NamedCamera> offeredCameras(const QString &folder) {
    const QString beginning = "video";
    std::vector<NamedCamera> cameras;
    // The numbers can have gaps: if a camera is unplugged, the other cameras keep their numbers.
    for (const QString &entry : QDir(folder).entryList({beginning + "*"}, QDir::Dirs)) {
        bool isNumber = false;
        const int number = entry.mid(beginning.size()).toInt(&isNumber);
        QFile name(folder + "/" + entry + "/name");
        if (isNumber && name.open(QIODevice::ReadOnly)) {
            cameras.push_back({number, QString::fromUtf8(name.readAll()).trimmed()});
        }
    }
    std::sort(cameras.begin(), cameras.end(),
              [](const NamedCamera &a, const NamedCamera &b) { return a.number < b.number; });
    if (cameras.empty()) {
        for (int i = 0; i < camerasWithoutList; ++i) {
            cameras.push_back({i, tr("Camera %1").arg(i + 1)});
        }
    }
    return cameras;
}
