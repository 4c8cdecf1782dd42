// The frames of a camera, of a video file, or of numbered pictures. Opening a camera and waiting for a frame take long;
// use it on one background thread.
#pragma once

#include <QSize>
#include <QString>
#include <memory>
#include <opencv2/core.hpp>

namespace cv {
class VideoCapture;
}

struct FrameSourceChoice {
    int camera = 0;  // as the system counts them; of no effect if there is a file
    QString file;    // a video, or the first of numbered pictures; empty for a camera
    QSize size;      // that the camera is asked for; its own choice if empty
};

class FrameSource {
public:
    explicit FrameSource(FrameSourceChoice sourceChoice);
    ~FrameSource();

    // Returns an empty text, or why there are no frames.
    QString open();
    // The next frame, in colour, at the speed of the source. Empty at the end; endText() then says why.
    cv::Mat next();
    QString endText() const;
    bool isFile() const { return !choice.file.isEmpty(); }

private:
    void waitForItsTime();

    const FrameSourceChoice choice;
    std::unique_ptr<cv::VideoCapture> capture;
    double secondsPerFrame = 0;
    double dueSeconds = 0;  // of the next frame, on the steady clock
};

// True if the file's name ends like that of a video.
bool isVideoName(const QString &path);

// The cameras that the system lists by name; empty where it has no list.
QStringList cameraNames();
