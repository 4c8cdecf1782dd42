// Reads the patterns in every frame of a camera or a video. Saves a frame as a PNG file if it is worth keeping, or if
// the user asks for it. Reading and saving happen on one background thread.
//
// Use this object on one thread that has an event loop; its signals are emitted there. All functions return at once,
// except that the destructor waits until the background thread has ended.
#pragma once

#include <QImage>
#include <QObject>
#include <QStringList>
#include <memory>
#include <mutex>
#include <vector>

#include "viewer/session/background_work.h"
#include "viewer/session/frame_source.h"
#include "viewer/session/live_decision.h"
#include "viewer/session/session_settings.h"

struct LiveFrame {
    QImage picture;                                   // for display; a large frame is made smaller
    QSize size;                                       // pixels, of the frame
    std::shared_ptr<const PatternReadings> readings;  // in pixels of the frame
    LiveState state = LiveState::NoPattern;
    std::optional<double> blur;  // pixels
};

Q_DECLARE_METATYPE(LiveFrame)

class LiveCapture : public QObject {
    Q_OBJECT

public:
    LiveCapture();
    ~LiveCapture() override;

    // Starts a run: reads this source until it ends, or until stop() or start() is called. Pictures are saved in the
    // folder under names that no file has. The folder is made if needed.
    void start(const FrameSourceChoice &choice, const QString &folder, const SessionSettings &settings);
    void stop();
    bool isRunning() const { return work.open() > 0; }

    // Saves the next frame, whatever it shows.
    void takePicture();
    // Turns the automatic saving of frames that are worth keeping on or off. At first, it is on.
    void setTakesByItself(bool takes);
    // Sets the photographs that the session has. A frame that is similar to one of them is not saved automatically.
    void setPhotographs(std::vector<TargetView> views);
    // `isEnough` is true if another photograph would hardly improve the calibration. Then no frame is saved
    // automatically.
    void setEnough(bool isEnough);

signals:
    // If frames are read faster than they can be shown, some are not shown.
    void frameShown(const LiveFrame &frame);
    void pictureTaken(const QString &file);
    // The run ended by itself, and not by stop() or start(). `reason` is a sentence that says why. `isProblem` is false
    // if the video came to its end, and true otherwise, for example if a picture could not be saved.
    void ended(const QString &reason, bool isProblem);

protected:
    void customEvent(QEvent *event) override;

private:
    // The data that both threads use.
    struct Exchange {
        std::mutex mutex;
        int run = 0;  // number of the present run; frames of earlier runs are not shown
        // Set by the owner's thread.
        bool takesByItself = true;
        bool takesNext = false;
        bool hasEnough = false;
        std::shared_ptr<const std::vector<TargetView>> photographs = std::make_shared<std::vector<TargetView>>();
        // Set by the background thread.
        std::optional<LiveFrame> frame;
        QStringList files;
    };

    struct End {
        QString reason;  // empty if the run was cancelled
        bool isProblem = true;
    };

    // Reads frames until the run ends.
    End run(int number, const FrameSourceChoice &choice, const QString &folder, const SessionSettings &settings,
            const BackgroundWork::IsCancelled &isCancelled);
    void deliver(int run, const LiveFrame &frame, const QString &file);

    Exchange exchange;
    BackgroundWork work{1};  // the last member, so that its thread has ended before `exchange` is destroyed
};
