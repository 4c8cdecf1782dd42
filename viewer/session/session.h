// A session: photographs, what was read in them, the settings, and the calibration that follows. It has no widgets.
//
// Data goes one way: photographs -> readings -> calibration. Reading and calibrating run in the background; every
// change of the photographs or settings starts what depends on it again and cancels what is out of date. While many
// photographs are read, a first result is made from those that are read already. All functions return at once. Use it
// on one thread that has an event loop; its signals are emitted there.
#pragma once

#include <QMap>
#include <QObject>
#include <QTimer>
#include <QVector>
#include <atomic>
#include <memory>

#include "viewer/session/background_work.h"
#include "viewer/session/session_file.h"
#include "viewer/session/session_photograph.h"
#include "viewer/session/session_result.h"

class Session : public QObject {
    Q_OBJECT

public:
    // What makes a result from photographs that have been read; runs on a background thread. May throw
    // calibration::Cancelled; other errors belong in the result.
    using Calibrate = std::function<SessionResult(const QVector<SessionPhotograph> &, const SessionSettings &,
                                                  const calibration::CalibrateOptions &)>;

    explicit Session(Calibrate calibrateFunction);
    ~Session() override;

    const QVector<SessionPhotograph> &photographs() const { return list; }
    // Null if there is none with this number.
    const SessionPhotograph *photograph(int id) const;
    const SessionSettings &settings() const { return currentSettings; }
    // The latest result; it stays until the next one is there. Null before the first.
    std::shared_ptr<const SessionResult> result() const { return latest; }

    // Adds files, and the pictures in folders. Files that the session already has are not added again.
    void add(const QStringList &filesAndFolders);
    void setIncluded(const QVector<int> &ids, bool isIncluded);
    void remove(const QVector<int> &ids);
    void setSettings(const SessionSettings &settings);
    // Reads no further; photographs that wait are taken from the session.
    void cancelReading();
    // Calibrates without the previous result to start from, so that models are chosen again.
    void calibrateAnew();

    bool isReading() const { return reading.open() > 0; }
    bool isCalibrating() const { return calibrating.open() > 0; }
    // Photographs added since reading began, and how many of them are done.
    int readingTotal() const { return batchTotal; }
    int readingDone() const { return batchDone; }

    SessionDocument document() const;
    // Replaces everything.
    void open(const SessionDocument &document);

signals:
    void photographsChanged();       // added, removed or all replaced
    void photographChanged(int id);  // read, taken out or put back
    void settingsChanged();
    void progressChanged();  // of reading or calibrating
    void resultChanged();

private:
    SessionPhotograph *find(int id);
    void append(const QVector<SessionEntry> &entries);
    void read(const SessionPhotograph &photograph);
    void readAllAgain();
    void photographRead(const SessionPhotograph &photograph);
    void scheduleCalibration();
    void startCalibration();
    // True if a first result is worth its time although reading goes on.
    bool canShowFirstResult() const;
    void takeResult(SessionResult result, bool isOfAll);

    const Calibrate calibrate;
    QVector<SessionPhotograph> list;
    QMap<int, int> rows;  // in `list`, by id
    int nextId = 1;
    int batchTotal = 0;
    int batchDone = 0;
    SessionSettings currentSettings;
    std::shared_ptr<const SessionResult> latest;
    bool startsFromLatest = true;
    int helpfulInBatch = 0;   // photographs with patterns, read since reading began
    int firstResultFrom = 0;  // of those
    QTimer calibrationTimer;
    BackgroundWork listing{1};
    BackgroundWork reading;
    BackgroundWork calibrating{1};
};
