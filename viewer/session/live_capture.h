// A live source: reads the patterns in every frame and keeps frames that are worth it as PNG files. All of that happens
// on one background thread.
//
// Use it on one thread that has an event loop; all functions return at once, and signals are emitted there. The
// destructor waits for the frame that is being read.
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
    QImage picture;                                   // for showing; smaller than the frame if that is large
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

    // Pictures are kept in the folder, which is made if needed, under names that no file has. Ends what runs.
    void start(const FrameSourceChoice &choice, const QString &folder, const SessionSettings &settings);
    void stop();
    bool isRunning() const { return work.open() > 0; }

    // Keeps the next frame, whatever it shows.
    void takePicture();
    void setTakesByItself(bool takes);
    // What the session has, so that the same view is not kept again.
    void setPhotographs(std::vector<TargetView> views);
    // The calibration would hardly gain from another photograph.
    void setEnough(bool isEnough);

signals:
    // Frames that arrive faster than they are shown are left out.
    void frameShown(const LiveFrame &frame);
    void pictureTaken(const QString &file);
    // The source ended by itself; the text says why in a sentence.
    void ended(const QString &reason);

protected:
    void customEvent(QEvent *event) override;

private:
    // What both threads use.
    struct Exchange {
        std::mutex mutex;
        int run = 0;  // frames of an earlier one are not shown
        // To the thread.
        bool takesByItself = true;
        bool takesNext = false;
        bool hasEnough = false;
        std::shared_ptr<const std::vector<TargetView>> photographs = std::make_shared<std::vector<TargetView>>();
        // From the thread.
        std::optional<LiveFrame> frame;
        QStringList files;
    };

    // All of one run; returns why it ended.
    QString run(int number, const FrameSourceChoice &choice, const QString &folder, const SessionSettings &settings,
                const BackgroundWork::IsCancelled &isCancelled);
    void deliver(int run, const LiveFrame &frame, const QString &file);

    Exchange exchange;
    BackgroundWork work{1};  // the last member, because its thread uses the other one
};
