// A session: the photographs, the patterns read in them, the settings, and the resulting calibration. It has no
// widgets.
//
// Data goes one way: photographs -> readings -> calibration. Reading and calibrating run in the background. Every
// change of the photographs or settings leads to a new calibration, which starts when all photographs have been read. A
// calibration that is still running is cancelled, because its result would be out of date. If SessionSettings::board
// changes, all photographs are read again first. If there is no calibration yet and many photographs are still being
// read, a first result is made from those that are ready. All functions return at once, except that the destructor
// waits until the work in progress has ended. Use a session on one thread that has an event loop; its signals are
// emitted there.
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
    // Makes a result from photographs that have been read. This function runs on a background thread. It may throw
    // calibration::Cancelled, and it reports every other error in the result.
    using Calibrate = std::function<SessionResult(const QVector<SessionPhotograph> &, const SessionSettings &,
                                                  const calibration::CalibrateOptions &)>;

    explicit Session(Calibrate calibrateFunction);
    ~Session() override;

    const QVector<SessionPhotograph> &photographs() const { return list; }
    // Returns null if the session has no photograph with this id.
    const SessionPhotograph *photograph(int id) const;
    const SessionSettings &settings() const { return currentSettings; }
    // Returns the latest result; null before the first one and after open(). It stays until the next one is complete.
    std::shared_ptr<const SessionResult> result() const { return latest; }

    // Adds these files, and the pictures in these folders and in all folders below them, except files that the session
    // already has.
    void add(const QStringList &filesAndFolders);
    void setIncluded(const QVector<int> &ids, bool isIncluded);
    void remove(const QVector<int> &ids);
    void setSettings(const SessionSettings &settings);
    // Stops reading, and removes the photographs that have not been read yet from the session.
    void cancelReading();
    // Calibrates again without starting from the previous result, so that the models are chosen again.
    void calibrateAnew();

    bool isReading() const { return reading.open() > 0; }
    bool isCalibrating() const { return calibrating.open() > 0; }
    // Return the number of photographs in the present run of reading, and the number of those that have been read. A
    // run ends when no photograph waits any longer. Both numbers then stay until the next run begins.
    int readingTotal() const { return batchTotal; }
    int readingDone() const { return batchDone; }

    SessionDocument document() const;
    // Replaces all photographs and settings.
    void open(const SessionDocument &document);

signals:
    void photographsChanged();       // photographs were added, removed or all replaced
    void photographChanged(int id);  // this photograph was read, or setIncluded() changed it
    void settingsChanged();
    void progressChanged();  // reading or calibrating began, went on or ended
    void resultChanged();

private:
    SessionPhotograph *find(int id);
    void append(const QVector<SessionEntry> &entries);
    void read(const SessionPhotograph &photograph);
    void readAllAgain();
    void photographRead(const SessionPhotograph &photograph);
    void scheduleCalibration();
    void startCalibration();
    // True if a first result should be made although photographs are still being read.
    bool canShowFirstResult() const;
    void takeResult(SessionResult result, bool isOfAll);

    const Calibrate calibrate;
    QVector<SessionPhotograph> list;
    QMap<int, int> rows;  // the index in `list` of each id
    int nextId = 1;
    int batchTotal = 0;
    int batchDone = 0;
    SessionSettings currentSettings;
    std::shared_ptr<const SessionResult> latest;
    bool startsFromLatest = true;
    int helpfulInBatch = 0;   // number of photographs in which patterns were found since reading began
    int firstResultFrom = 0;  // a first result is tried when `helpfulInBatch` reaches this
    QTimer calibrationTimer;
    BackgroundWork listing{1};
    BackgroundWork reading;
    BackgroundWork calibrating{1};
};
