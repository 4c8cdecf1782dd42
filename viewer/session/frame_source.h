// Provides the frames of a camera, of a video file, or of numbered pictures. It takes long to open a camera and to wait
// for a frame, so use a source on one background thread.
#pragma once

#include <QSize>
#include <QString>
#include <memory>
#include <opencv2/core.hpp>
#include <vector>

namespace cv {
class VideoCapture;
}

struct FrameSourceChoice {
    int camera = 0;  // the system's number of the camera; ignored if `file` is set
    QString file;    // a video, or the first of numbered pictures; empty for a camera
    QSize size;      // the frame size, in pixels, that the camera is asked for; if empty, the camera chooses
};

class FrameSource {
public:
    explicit FrameSource(FrameSourceChoice sourceChoice);
    // Reads the frames from `ownCapture` instead of a new cv::VideoCapture. open() opens `ownCapture` exactly as it
    // opens a new one.
    FrameSource(FrameSourceChoice sourceChoice, std::unique_ptr<cv::VideoCapture> ownCapture);
    ~FrameSource();

    // Opens the source. Returns an empty text, or the reason why there are no frames.
    QString open();
    // Returns the next frame in colour. The frames of a file come at about the rate at which they were recorded; a file
    // with fewer than five frames per second plays at five. Returns an empty frame at the end; endText() then says why.
    cv::Mat next();
    QString endText() const;
    bool isFile() const { return !choice.file.isEmpty(); }

private:
    void waitForItsTime();

    const FrameSourceChoice choice;
    std::unique_ptr<cv::VideoCapture> capture;
    double secondsPerFrame = 0;
    double dueSeconds = 0;  // when the next frame is due, on the steady clock
};

// True if the file's name has the ending of a video format.
bool isVideoName(const QString &path);

struct NamedCamera {
    int number;  // FrameSourceChoice::camera
    QString name;
};

// Returns the cameras in the system's list, which is in this folder, ordered by number. If the list is absent or empty,
// returns the first four numbers with names such as "Camera 1", whether there are such cameras or not.
std::vector<NamedCamera> offeredCameras(const QString &folder = "/sys/class/video4linux");
