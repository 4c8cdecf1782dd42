#include "viewer/session/session.h"

#include <QSet>
#include <QThread>
#include <algorithm>

namespace {

// Normally there is one reader for each processor. But reading a colour photograph of 12 megapixels needs about 90 MB,
// so memory limits the number of readers, too.
constexpr int mostReaders = 8;
// Several changes start only one calibration if each follows the one before within this time.
constexpr int calibrationDelayMs = 20;
// A first calibration is tried before all photographs have been read. It is tried if patterns have been found in at
// least this many photographs and at least this many photographs are left to read. After a failed attempt, the next one
// needs patterns in twice as many photographs as the failed one had (see firstResultFrom).
constexpr int fewestForFirstResult = 12;

}  // namespace

Session::Session(Calibrate calibrateFunction)
    : calibrate(std::move(calibrateFunction)), reading(qBound(1, QThread::idealThreadCount(), mostReaders)) {
    calibrationTimer.setSingleShot(true);
    calibrationTimer.setInterval(calibrationDelayMs);
    connect(&calibrationTimer, &QTimer::timeout, this, [this] {
        if (!isReading()) {  // otherwise the calibration starts when all photographs have been read
            startCalibration();
        }
    });
}

Session::~Session() = default;

const SessionPhotograph *Session::photograph(int id) const {
    const auto row = rows.find(id);
    return row == rows.end() ? nullptr : &list[*row];
}

SessionPhotograph *Session::find(int id) {
    const auto row = rows.find(id);
    return row == rows.end() ? nullptr : &list[*row];
}

void Session::add(const QStringList &filesAndFolders) {
    listing.add([this, filesAndFolders](const BackgroundWork::IsCancelled &) {
        QVector<SessionEntry> entries;
        for (const QString &path : photographFilesIn(filesAndFolders)) {
            entries.append({path, true});
        }
        return [this, entries] { append(entries); };
    });
}

void Session::append(const QVector<SessionEntry> &entries) {
    QSet<QString> known;
    for (const SessionPhotograph &photograph : qAsConst(list)) {
        known.insert(photograph.path);
    }
    for (const SessionEntry &entry : entries) {
        if (known.contains(entry.path)) {
            continue;
        }
        known.insert(entry.path);
        SessionPhotograph photograph;
        photograph.id = nextId++;
        photograph.path = entry.path;
        photograph.isIncluded = entry.isIncluded;
        rows[photograph.id] = list.size();
        list.append(photograph);
        read(photograph);
    }
    emit photographsChanged();
    emit progressChanged();
}

void Session::read(const SessionPhotograph &photograph) {
    if (!isReading()) {
        batchTotal = 0;
        batchDone = 0;
        helpfulInBatch = 0;
        firstResultFrom = fewestForFirstResult;
    }
    ++batchTotal;
    reading.add([this, photograph, settings = currentSettings](const BackgroundWork::IsCancelled &isCancelled) {
        SessionPhotograph read = photograph;
        readFromFile(read, settings, isCancelled);
        return [this, read] { photographRead(read); };
    });
}

void Session::readAllAgain() {
    reading.cancel();
    for (SessionPhotograph &photograph : list) {
        photograph.state = PhotographState::Waiting;
        photograph.readings = nullptr;
        photograph.problem.clear();
        read(photograph);
    }
    emit photographsChanged();
    emit progressChanged();
}

void Session::photographRead(const SessionPhotograph &read) {
    ++batchDone;
    if (SessionPhotograph *photograph = find(read.id)) {
        helpfulInBatch += read.readings && !read.readings->empty() ? 1 : 0;
        const bool isIncluded = photograph->isIncluded;  // the user may have changed this meanwhile
        *photograph = read;
        photograph->isIncluded = isIncluded;
        emit photographChanged(read.id);
    }
    emit progressChanged();
    if (!isReading()) {
        scheduleCalibration();
    } else if (canShowFirstResult()) {
        firstResultFrom = 2 * helpfulInBatch;  // if these are too few, the next attempt waits for twice as many
        startCalibration();
    }
}

bool Session::canShowFirstResult() const {
    return (!latest || !latest->calibration) && !isCalibrating() && helpfulInBatch >= firstResultFrom &&
           reading.open() >= fewestForFirstResult;
}

void Session::setIncluded(const QVector<int> &ids, bool isIncluded) {
    for (const int id : ids) {
        SessionPhotograph *photograph = find(id);
        if (photograph != nullptr && photograph->isIncluded != isIncluded) {
            photograph->isIncluded = isIncluded;
            emit photographChanged(id);
        }
    }
    scheduleCalibration();
}

void Session::remove(const QVector<int> &ids) {
    const auto isRemoved = [&ids](const SessionPhotograph &photograph) { return ids.contains(photograph.id); };
    list.erase(std::remove_if(list.begin(), list.end(), isRemoved), list.end());
    rows.clear();
    for (int row = 0; row < list.size(); ++row) {
        rows[list[row].id] = row;
    }
    emit photographsChanged();
    scheduleCalibration();
}

void Session::setSettings(const SessionSettings &settings) {
    if (settings == currentSettings) {
        return;
    }
    const bool mustReadAgain = settings.board != currentSettings.board;
    currentSettings = settings;
    emit settingsChanged();
    if (mustReadAgain) {
        readAllAgain();
    }
    scheduleCalibration();
}

void Session::cancelReading() {
    listing.cancel();
    reading.cancel();
    QVector<int> waiting;
    for (const SessionPhotograph &photograph : qAsConst(list)) {
        if (photograph.state == PhotographState::Waiting) {
            waiting.append(photograph.id);
        }
    }
    remove(waiting);
    emit progressChanged();
}

void Session::calibrateAnew() {
    startsFromLatest = false;
    scheduleCalibration();
}

void Session::scheduleCalibration() {
    calibrating.cancel();  // its result would be out of date
    calibrationTimer.start();
}

void Session::startCalibration() {
    calibration::CalibrateOptions options;
    if (startsFromLatest && latest) {
        options.previous = latest->calibration;
    }
    calibrating.add([this, options, photographs = list, settings = currentSettings, isOfAll = !isReading()](
                        const BackgroundWork::IsCancelled &isCancelled) mutable -> BackgroundWork::Delivery {
        options.isCancelled = isCancelled;
        try {
            const auto result = std::make_shared<SessionResult>(calibrate(photographs, settings, options));
            return [this, result, isOfAll] { takeResult(std::move(*result), isOfAll); };
        } catch (const calibration::Cancelled &) {
            return [] {};
        }
    });
    emit progressChanged();
}

void Session::takeResult(SessionResult result, bool isOfAll) {
    if (!isOfAll && !result.calibration) {
        return;  // the photographs that are still being read may make a calibration possible
    }
    // If only some of the photographs had been read, the next calibration chooses the lens models again.
    startsFromLatest = isOfAll;
    latest = std::make_shared<const SessionResult>(std::move(result));
    emit resultChanged();
    emit progressChanged();
}

SessionDocument Session::document() const {
    SessionDocument document;
    for (const SessionPhotograph &photograph : list) {
        document.photographs.append({photograph.path, photograph.isIncluded});
    }
    document.settings = currentSettings;
    return document;
}

void Session::open(const SessionDocument &document) {
    listing.cancel();
    reading.cancel();
    calibrating.cancel();
    list.clear();
    rows.clear();
    latest = nullptr;
    currentSettings = document.settings;
    emit settingsChanged();
    emit resultChanged();
    append(document.photographs);
    scheduleCalibration();
}
